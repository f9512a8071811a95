#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "front/UserMessages.h"
#include "settings/ui/Form2.h"
#include "settings/ui/PreferencesPages.h"

namespace trel {

InterfacePage::InterfacePage(const PageContext& context, QWidget* parent) : PreferencesPage(context, parent) {
  setObjectName("Frame1_2");
  auto* column = new QVBoxLayout(this);
  column->addWidget(new QLabel("Interface of the FF Editor:", this));
  combo1_ = new QComboBox(this);
  combo1_->setObjectName("Combo1");
  combo1_->setAccessibleName("Interface of the FF Editor");
  connect(combo1_, &QComboBox::activated, this, &InterfacePage::Choose);
  column->addWidget(combo1_);
  label5_ = new QLabel(this);
  label5_->setObjectName("Label5");
  label5_->setWordWrap(true);
  column->addWidget(label5_);
  column->addStretch(1);
}

void InterfacePage::Load(const PreferenceSet& set) {
  interfaceFile_ = set.prefs.interfaceFile;
  ShowChosen();
}

void InterfacePage::Store(PreferenceSet& set) const { set.prefs.interfaceFile = interfaceFile_; }

// The box shows the chosen skin when it is listed.
void InterfacePage::ShowChosen() {
  if (combo1_->count() == 0) return;
  int entry = 0;
  if (interfaceFile_ != "OFF")
    for (int i = 1; i < combo1_->count(); ++i)
      if (combo1_->itemText(i).endsWith(QString::fromStdString(interfaceFile_), Qt::CaseInsensitive)) entry = i;
  combo1_->setCurrentIndex(entry);
}

void InterfacePage::LookforInterface(bool report) {
  const QSignalBlocker quiet(combo1_);
  combo1_->clear();
  combo1_->addItem("Original FF Editor!");
  QDir folder;
  bool found = false;
  for (const char* name : {"interface", "interfac"}) {
    folder = QDir(QString::fromStdString(context_.programFolder + name));
    if (!folder.entryList({"*.des"}, QDir::Files).isEmpty()) {
      found = true;
      break;
    }
  }
  if (!found) {
    label5_->setText("Can't find FF Editor interface files.");
    if (report)
      context_.hooks.MsgBox("Can't find FF Editor interface files.\nThe FF Editor won't be usable.",
                            MsgButtons::Ok, MsgIcon::Exclamation, "Trel");
    return;
  }
  for (const QString& file : folder.entryList({"*.des"}, QDir::Files, QDir::Name)) {
    std::string title = InterfaceTitle(folder.filePath(file).toStdString());
    if (title.empty()) title = "(no title)";
    combo1_->addItem(QString::fromStdString(title) + " - " + file);
  }
  label5_->setText("Skins from " + folder.absolutePath());
  ShowChosen();
}

void InterfacePage::Choose(int entry) {
  // Only a choice the user made in the shown dialog counts.
  if (!window()->isVisible()) return;
  if (entry <= 0) {
    interfaceFile_ = "OFF";
  } else {
    // The file name is the entry's last 12 characters, as the names were short.
    const QString text = combo1_->itemText(entry);
    interfaceFile_ = text.right(12).toStdString();
    const qsizetype dash = text.lastIndexOf(" - ");
    if (dash >= 0) interfaceFile_ = text.mid(dash + 3).toStdString();  // longer names stay whole
  }
  emit interfaceChosen(QString::fromStdString(interfaceFile_));
}

}  // namespace trel
