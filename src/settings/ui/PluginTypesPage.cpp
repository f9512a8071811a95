#include <QDialog>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>
#include <algorithm>

#include "front/UserMessages.h"
#include "settings/ui/PreferencesPages.h"

namespace trel {

namespace {

QString Q(const std::string& s) { return QString::fromStdString(s); }

// The plugin type dialog: "Add Plugin Type" or "Edit Plugin Type".
bool RunPluginTypeDialog(QWidget* parent, UserMessages& hooks, bool edit, std::string& name, std::string& extension,
                         std::string& digit) {
  QDialog dialog(parent);
  dialog.setObjectName("FrmPluginType");
  dialog.setWindowTitle(edit ? "Edit Plugin Type" : "Add Plugin Type");
  auto* grid = new QGridLayout(&dialog);
  auto* caption = new QLabel(edit ? "Edit Plugin Type" : "Add Plugin Type", &dialog);
  grid->addWidget(caption, 0, 0, 1, 2);
  auto* text1 = new QLineEdit(Q(name), &dialog);
  text1->setObjectName("Text1");
  text1->setAccessibleName("Plugin Type:");
  auto* text2 = new QLineEdit(Q(extension), &dialog);
  text2->setObjectName("Text2");
  text2->setAccessibleName("File Extension:");
  grid->addWidget(new QLabel("Plugin Type:", &dialog), 1, 0);
  grid->addWidget(text1, 1, 1);
  grid->addWidget(new QLabel("File Extension:", &dialog), 2, 0);
  grid->addWidget(text2, 2, 1);
  auto* frame = new QGroupBox("Get Plugin Name from", &dialog);
  auto* options = new QVBoxLayout(frame);
  // Digits 3, 2, 1, 0 in the order the dialog lists them.
  const std::pair<const char*, const char*> sources[4] = {
      {"File Name", "3"}, {"Product Name", "2"}, {"Internal Name", "1"}, {"Description", "0"}};
  std::vector<QRadioButton*> radios;
  for (const auto& [text, d] : sources) {
    auto* radio = new QRadioButton(text, frame);
    radio->setObjectName(QString("Option1_%1").arg(d));
    radio->setChecked(digit == d);
    options->addWidget(radio);
    radios.push_back(radio);
  }
  if (std::none_of(radios.begin(), radios.end(), [](QRadioButton* r) { return r->isChecked(); }))
    radios.front()->setChecked(true);
  grid->addWidget(frame, 3, 0, 1, 2);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
  grid->addWidget(buttons, 4, 0, 1, 2);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, [&] {
    std::string ext = text2->text().toStdString();
    const std::string message = CheckPluginTypeInput(text1->text().toStdString(), ext);
    if (!message.empty()) {
      hooks.MsgBox(message, MsgButtons::Ok, MsgIcon::Exclamation, "Trel");
      (text1->text().isEmpty() ? text1 : text2)->setFocus();
      return;
    }
    text2->setText(Q(ext));
    dialog.accept();
  });
  if (dialog.exec() != QDialog::Accepted) return false;
  name = text1->text().toStdString();
  extension = text2->text().toStdString();
  for (size_t i = 0; i < 4; ++i)
    if (radios[i]->isChecked()) digit = sources[i].second;
  return true;
}

}  // namespace

PluginTypesPage::PluginTypesPage(const PageContext& context, QWidget* parent) : PreferencesPage(context, parent) {
  setObjectName("Frame1_6");
  auto* grid = new QGridLayout(this);
  list_ = new QListWidget(this);
  list_->setObjectName("List1_3");
  list_->setAccessibleName("Plugin Types");
  list_->setSelectionMode(QAbstractItemView::SingleSelection);
  list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  grid->addWidget(list_, 0, 0, 8, 1);
  const struct {
    const char* name;
    const char* caption;
    const char* tip;
    void (PluginTypesPage::*run)();
  } buttons[] = {{"Command3_3", "Add", "Add new plugin type", &PluginTypesPage::Add},
                 {"Command6_3", "Remove", "Remove plugin type", &PluginTypesPage::Remove},
                 {"Command15", "Edit", "Edit a plugin type", &PluginTypesPage::Edit},
                 {"Command16", "Reset", "Restore the default plugin types", &PluginTypesPage::Reset},
                 {"Command17", "Toggle", "Turn all items on or off", &PluginTypesPage::Toggle}};
  int row = 0;
  for (const auto& b : buttons) {
    QPushButton* button = MakeButton(this, b.name, b.caption, b.tip);
    connect(button, &QPushButton::clicked, this, b.run);
    grid->addWidget(button, row++, 1);
  }
  askPluginType = [this](bool edit, std::string& name, std::string& ext, std::string& digit) {
    return RunPluginTypeDialog(this, context_.hooks, edit, name, ext, digit);
  };
}

void PluginTypesPage::Load(const PreferenceSet& set) { SetRows(set.pluginTypes); }

void PluginTypesPage::Store(PreferenceSet& set) const { set.pluginTypes = Rows(); }

PluginTypeList PluginTypesPage::Rows() const {
  PluginTypeList rows;
  for (int i = 0; i < list_->count(); ++i)
    rows.push_back({list_->item(i)->text().toStdString(), list_->item(i)->checkState() == Qt::Checked});
  return rows;
}

void PluginTypesPage::SetRows(const PluginTypeList& rows) {
  const int current = list_->currentRow();  // showing the table again keeps the user's place
  list_->setUpdatesEnabled(false);
  list_->clear();
  for (const PluginTypeRow& row : rows) {
    auto* item = new QListWidgetItem(Q(row.text), list_);
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    item->setCheckState(row.checked ? Qt::Checked : Qt::Unchecked);
  }
  if (current >= 0 && current < list_->count()) list_->setCurrentRow(current);
  list_->setUpdatesEnabled(true);
  AdaptListWidth(list_);
}

void PluginTypesPage::Add() {
  std::string name, ext, digit = "3";
  if (!askPluginType(false, name, ext, digit) || name.empty()) return;
  PluginTypeList rows = Rows();
  if (rows.size() >= static_cast<size_t>(kMaxListEntries)) {
    context_.hooks.MsgBox("Limit of entries was reached.", MsgButtons::Ok, MsgIcon::Exclamation, "Trel");
    return;
  }
  AddPluginType(rows, name, ext, digit);
  SetRows(rows);
  list_->setCurrentRow(static_cast<int>(rows.size()) - 1);
}

void PluginTypesPage::Remove() {
  PluginTypeList rows = Rows();
  const int row = list_->currentRow();
  if (row < 0 || !RemovePluginType(rows, static_cast<size_t>(row))) return;
  SetRows(rows);
  list_->setCurrentRow(std::min(row, list_->count() - 1));
}

void PluginTypesPage::Edit() {
  const int row = list_->currentRow();
  if (row < 0) return;
  PluginTypeList rows = Rows();
  std::string name, ext, digit;
  SplitPluginTypeRow(rows[static_cast<size_t>(row)].text, name, ext, digit);
  if (!askPluginType(true, name, ext, digit) || name.empty()) return;
  EditPluginType(rows, static_cast<size_t>(row), name, ext, digit);
  SetRows(rows);
  list_->setCurrentRow(row);
}

void PluginTypesPage::Reset() {
  PluginTypeList rows = Rows();
  ResetPluginTypes(rows);
  SetRows(rows);
}

void PluginTypesPage::Toggle() {
  PluginTypeList rows = Rows();
  TogglePluginTypes(rows);
  SetRows(rows);
}

}  // namespace trel
