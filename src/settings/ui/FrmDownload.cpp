#include "settings/ui/FrmDownload.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QScrollBar>
#include <QTabBar>
#include <QVBoxLayout>
#include <algorithm>

#include "front/UserMessages.h"
#include "settings/ui/DesktopServices.h"

namespace trel {

FrmDownload::FrmDownload(std::string programFolder, UserMessages& hooks, QWidget* parent)
    : QDialog(parent), programFolder_(std::move(programFolder)), hooks_(hooks) {
  setObjectName("frmDownload");
  setWindowTitle("FX Download");
  auto* column = new QVBoxLayout(this);
  auto* bar = new QMenuBar(this);
  QMenu* entry = bar->addMenu("&Entry");
  const auto add = [this](QMenu* menu, const char* name, const QString& text, QKeySequence key,
                          std::function<void()> run) {
    QAction* action = menu->addAction(text);
    action->setObjectName(name);
    if (!key.isEmpty()) action->setShortcut(key);
    connect(action, &QAction::triggered, this, std::move(run));
  };
  add(entry, "mnuConnect", "&Open in Browser", QKeySequence(Qt::Key_Return), [this] { mnuConnect_Click(); });
  add(entry, "mnuCopyURL", "&Copy URL", QKeySequence::Copy, [this] { mnuCopyURL_Click(); });
  entry->addSeparator();
  add(entry, "mnuAdd", "&Add...", QKeySequence(Qt::Key_Insert), [this] { mnuAdd_Click(); });
  add(entry, "mnuName_0", "Edit &Name...", QKeySequence(Qt::Key_F2), [this] { mnuName_Click(0); });
  add(entry, "mnuName_1", "Edit &URL...", QKeySequence(Qt::SHIFT | Qt::Key_F2), [this] { mnuName_Click(1); });
  add(entry, "mnuDelete", "&Delete", {}, [this] { mnuDelete_Click(); });
  add(entry, "mnuMove", "&Move", {}, [this] { mnuMove_Click(); });
  QMenu* listMenu = bar->addMenu("&List");
  add(listMenu, "mnuSave", "&Save", QKeySequence::Save, [this] { mnuSave_Click(); });
  add(listMenu, "mnuShareList", "&Where is the list?", {}, [this] { mnuShareList_Click(); });
  QMenu* help = bar->addMenu("&Help");
  add(help, "mnuHelp", "&Help", QKeySequence(Qt::Key_F1), [this] { emit helpRequested("menu_View.htm"); });
  column->setMenuBar(bar);

  tabs_ = new QTabBar(this);
  tabs_->setObjectName("TabStrip1");
  for (const LinkListTab& t : kLinkListTabs) tabs_->addTab(t.listName);
  connect(tabs_, &QTabBar::currentChanged, this, &FrmDownload::TabStrip1_Click);
  column->addWidget(tabs_);
  list1_ = new QListWidget(this);
  list1_->setObjectName("List1");
  list1_->setAccessibleName("Addresses");
  list1_->installEventFilter(this);
  connect(list1_, &QListWidget::currentRowChanged, this, [this] { List1_Click(); });
  connect(list1_, &QListWidget::itemDoubleClicked, this, [this] { mnuConnect_Click(); });
  column->addWidget(list1_, 1);
  label2_ = new QLabel(this);
  label2_->setObjectName("Label2");
  label2_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  column->addWidget(label2_);

  inputBox = [this](const QString& title, const QString& prompt, QString& text) {
    bool ok = false;
    const QString answer = QInputDialog::getText(this, title, prompt, QLineEdit::Normal, text, &ok);
    if (!ok) return false;
    text = answer;
    return true;
  };
  resize(420, 360);
  LoadLinks(0);
}

std::string FrmDownload::FileOf(int tab) const {
  return programFolder_ + kLinkListTabs[std::clamp(tab, 0, 1)].file;
}

void FrmDownload::ShowList() {
  list1_->clear();
  int widest = 0;
  const QFontMetrics metrics(list1_->font());
  for (const std::string& name : links_.names) {
    list1_->addItem(QString::fromStdString(name));
    widest = std::max(widest, metrics.horizontalAdvance(QString::fromStdString(name) + "  "));
  }
  list1_->setProperty("scrollExtent", widest);
  if (list1_->count() > 0) list1_->setCurrentRow(0);
  List1_Click();
  list1_->setFocus();
}

void FrmDownload::LoadLinks(int tab) {
  LinkList fresh;
  if (!trel::LoadLinks(FileOf(tab), fresh)) fresh = {};  // a missing file is an empty list
  links_ = std::move(fresh);
  ShowList();
}

bool FrmDownload::SaveLinks(int tab, bool ask) {
  const LinkListTab& t = kLinkListTabs[std::clamp(tab, 0, 1)];
  if (ask && hooks_.MsgBox(std::string("Do you want to save the changes in the ") + t.listName + " List ?",
                           MsgButtons::YesNo, MsgIcon::Question, "FX Download") != MsgResult::Yes) {
    links_.changed = false;
    return true;
  }
  if (trel::SaveLinks(FileOf(tab), links_)) return true;
  hooks_.MsgBox("The list could not be written to\n" + FileOf(tab), MsgButtons::Ok, MsgIcon::Exclamation,
                "FX Download");
  return false;
}

void FrmDownload::TabStrip1_Click(int tab) {
  if (tab == tab_ || tab < 0 || tab > 1) return;
  if (links_.changed) SaveLinks(tab_, true);
  tab_ = tab;
  if (tabs_->currentIndex() != tab) {
    const QSignalBlocker quiet(tabs_);
    tabs_->setCurrentIndex(tab);
  }
  LoadLinks(tab);
}

void FrmDownload::List1_Click() {
  const int row = list1_->currentRow();
  label2_->setText(row >= 0 && static_cast<size_t>(row) < links_.size()
                       ? QString::fromStdString(links_.urls[static_cast<size_t>(row)])
                       : QString());
}

void FrmDownload::MoveItem(int direction) {
  const int row = list1_->currentRow();
  if (row < 0 || !MoveLink(links_, static_cast<size_t>(row), direction)) return;
  const int other = row + direction;
  list1_->item(row)->setText(QString::fromStdString(links_.names[static_cast<size_t>(row)]));
  list1_->item(other)->setText(QString::fromStdString(links_.names[static_cast<size_t>(other)]));
  list1_->setCurrentRow(other);
}

void FrmDownload::mnuConnect_Click() {
  const int row = list1_->currentRow();
  if (row < 0 || static_cast<size_t>(row) >= links_.size()) return;
  const std::string& url = links_.urls[static_cast<size_t>(row)];
  if (!url.empty()) ShowURL(hooks_, QString::fromStdString(url));
}

void FrmDownload::mnuCopyURL_Click() {
  const int row = list1_->currentRow();
  if (row < 0 || static_cast<size_t>(row) >= links_.size()) return;
  QApplication::clipboard()->setText(QString::fromStdString(links_.urls[static_cast<size_t>(row)]));
}

void FrmDownload::mnuAdd_Click() {
  QString name;
  if (!inputBox("Add item name", "Please enter the name of the new item:", name) || name.isEmpty()) return;
  QString url;
  if (!inputBox("Add item URL", "Please enter the URL of the new entry:", url) || url.isEmpty()) return;
  AddLink(links_, name.toStdString(), url.toStdString());
  list1_->addItem(name);
  list1_->setCurrentRow(list1_->count() - 1);
}

void FrmDownload::mnuName_Click(int which) {
  const int row = list1_->currentRow();
  if (row < 0 || static_cast<size_t>(row) >= links_.size()) return;
  std::string& field = which == 0 ? links_.names[static_cast<size_t>(row)] : links_.urls[static_cast<size_t>(row)];
  QString text = QString::fromStdString(field);
  if (!inputBox("Edit item", "Please enter a new name.", text) || text.isEmpty()) return;
  field = text.toStdString();
  if (which == 0) list1_->item(row)->setText(text);
  links_.changed = true;
  List1_Click();
}

void FrmDownload::mnuDelete_Click() {
  const int row = list1_->currentRow();
  if (row < 0 || !DeleteLink(links_, static_cast<size_t>(row))) return;
  delete list1_->takeItem(row);
  list1_->setCurrentRow(std::min(row, list1_->count() - 1));
  List1_Click();
}

void FrmDownload::mnuMove_Click() {
  hooks_.MsgBox("Use the Alt + Cursor keys to move the entries!", MsgButtons::Ok, MsgIcon::Information,
                "FX Download");
}

void FrmDownload::mnuShareList_Click() {
  hooks_.MsgBox("The URLs of this tab sheet are saved under\n\n" + FileOf(tab_), MsgButtons::Ok,
                MsgIcon::Information, "FX Download");
}

void FrmDownload::mnuSave_Click() {
  if (links_.changed) SaveLinks(tab_, true);
}

void FrmDownload::reject() {
  mnuSave_Click();
  QDialog::reject();
}

void FrmDownload::closeEvent(QCloseEvent* event) {
  mnuSave_Click();
  event->accept();
}

bool FrmDownload::eventFilter(QObject* watched, QEvent* event) {
  if (watched == list1_ && event->type() == QEvent::KeyPress) {
    auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() == Qt::Key_Delete) {
      mnuDelete_Click();
      return true;
    }
    if ((key->modifiers() & Qt::AltModifier) && (key->key() == Qt::Key_Up || key->key() == Qt::Key_Down)) {
      MoveItem(key->key() == Qt::Key_Up ? -1 : 1);
      return true;
    }
  }
  return QDialog::eventFilter(watched, event);
}

}  // namespace trel
