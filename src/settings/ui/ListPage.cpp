#include <QCheckBox>
#include <QDir>
#include <QEvent>
#include <QFileDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QStyle>

#include "front/UserMessages.h"
#include "settings/Conversions.h"
#include "settings/ui/PreferencesPages.h"

namespace trel {

namespace {

const char* const kCaptions[3] = {"Folders", "Images", "Apps"};
const char* const kAutoAddTips[3] = {"Automatically add all folders that are accessed to the Folders menu",
                                     "Automatically add all pictures that are opened to the File menu",
                                     "Automatically add all applications that are run to the Apps menu"};

}  // namespace

ListPage::ListPage(const PageContext& context, Kind kind, QWidget* parent)
    : PreferencesPage(context, parent), kind_(kind) {
  const int n = static_cast<int>(kind);
  setObjectName(QString("Frame1_%1").arg(3 + n));
  auto* grid = new QGridLayout(this);
  list_ = new QListWidget(this);
  list_->setObjectName(QString("List1_%1").arg(n));
  list_->setAccessibleName(kCaptions[n]);
  list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  list_->installEventFilter(this);
  grid->addWidget(list_, 0, 0, 8, 1);
  QPushButton* add = MakeButton(this, QString("Command3_%1").arg(n), "Add", "");
  connect(add, &QPushButton::clicked, this, &ListPage::Add);
  QPushButton* remove = MakeButton(this, QString("Command6_%1").arg(n), "Remove", "");
  connect(remove, &QPushButton::clicked, this, &ListPage::RemoveSelected);
  QPushButton* all = MakeButton(this, QString("Command7_%1").arg(n), "Select All", "");
  connect(all, &QPushButton::clicked, this, &ListPage::SelectAll);
  QPushButton* up = MakeButton(this, QString("Command9_%1").arg(n), "", "Move the entry up (Alt+Up)");
  up->setIcon(style()->standardIcon(QStyle::SP_ArrowUp));
  connect(up, &QPushButton::clicked, this, [this] { Move(-1); });
  QPushButton* down = MakeButton(this, QString("Command10_%1").arg(n), "", "Move the entry down (Alt+Down)");
  down->setIcon(style()->standardIcon(QStyle::SP_ArrowDown));
  connect(down, &QPushButton::clicked, this, [this] { Move(1); });
  grid->addWidget(add, 0, 1);
  grid->addWidget(remove, 1, 1);
  grid->addWidget(all, 2, 1);
  grid->addWidget(up, 3, 1);
  grid->addWidget(down, 4, 1);
  autoAdd_ = MakeCheck(this, QString("Check10_%1").arg(n), "Auto Add", kAutoAddTips[n]);
  grid->addWidget(autoAdd_, 8, 0);
  if (kind == kFolders) {
    check19_ = MakeCheck(this, "Check19", "Auto Top", "New and visited folders go to the top of the list");
    text1_ = new QLineEdit(this);
    text1_->setObjectName("Text1");
    text1_->setAccessibleName("Limit to entries");
    text1_->setMaximumWidth(60);
    text1_->installEventFilter(this);
    auto* limit = new QHBoxLayout;
    limit->addWidget(check19_);
    limit->addStretch(1);
    limit->addWidget(new QLabel("Limit to", this));
    limit->addWidget(text1_);
    limit->addWidget(new QLabel("entries", this));
    grid->addLayout(limit, 9, 0, 1, 2);
  }
  if (kind == kApps) {
    QPushButton* add1 = MakeButton(this, "Command11", "Add %1", "The application gets the selected file");
    connect(add1, &QPushButton::clicked, this, &ListPage::AddFileArgument);
    QPushButton* remove1 = MakeButton(this, "Command12", "Remove %1", "The application starts without a file");
    connect(remove1, &QPushButton::clicked, this, &ListPage::RemoveFileArgument);
    grid->addWidget(add1, 5, 1);
    grid->addWidget(remove1, 6, 1);
  }
  chooseEntry = [this] { return DefaultChoose(); };
}

void ListPage::Load(const PreferenceSet& set) {
  const Preferences& p = set.prefs;
  SetItems(kind_ == kFolders ? set.folders : kind_ == kImages ? p.pics : p.apps);
  SetCheck(autoAdd_, p.autoAdd[static_cast<size_t>(kind_)]);
  if (kind_ == kFolders) {
    SetCheck(check19_, p.autoTop);
    text1_->setText(QString::fromStdString(p.folderItemLimit));
  }
}

void ListPage::Store(PreferenceSet& set) const {
  Preferences& p = set.prefs;
  (kind_ == kFolders ? set.folders : kind_ == kImages ? p.pics : p.apps) = Items();
  p.autoAdd[static_cast<size_t>(kind_)] = CheckOf(autoAdd_);
  if (kind_ == kFolders) {
    p.autoTop = CheckOf(check19_);
    p.folderItemLimit = text1_->text().toStdString();
  }
}

std::vector<std::string> ListPage::Items() const {
  std::vector<std::string> items;
  for (int i = 0; i < list_->count(); ++i) items.push_back(list_->item(i)->text().toStdString());
  return items;
}

void ListPage::SetItems(const std::vector<std::string>& items) {
  const int current = list_->currentRow();  // showing the list again keeps the user's place
  list_->setUpdatesEnabled(false);
  list_->clear();
  for (const std::string& item : items) list_->addItem(QString::fromStdString(item));
  if (current >= 0 && current < list_->count()) list_->setCurrentRow(current);
  list_->setUpdatesEnabled(true);
  AdaptListWidth(list_);
}

void ListPage::Changed() {
  AdaptListWidth(list_);
  emit listChanged(static_cast<int>(kind_), Items());
}

// The Folders list also has the limit the user typed.
bool ListPage::LimitReached() {
  int limit = kMaxListEntries;
  if (kind_ == kFolders) {
    const int typed = LenientInt(text1_->text().toStdString());
    if (typed > 0) limit = std::min(limit, typed);
  }
  if (list_->count() < limit) return false;
  context_.hooks.MsgBox("Limit of entries was reached.", MsgButtons::Ok, MsgIcon::Exclamation, "Trel");
  return true;
}

std::string ListPage::DefaultChoose() {
  QString path;
  if (kind_ == kFolders) {
    path = QFileDialog::getExistingDirectory(this, "Please select a plugin folder ...", QDir::rootPath());
  } else if (kind_ == kImages) {
    path = QFileDialog::getOpenFileName(this, "Select Picture", {},
                                        "Pictures (*.bmp *.jpg *.jpeg *.png *.gif *.tif *.tiff *.tga *.pcx "
                                        "*.wmf *.emf *.psd *.ico)");
  } else {
    path = QFileDialog::getOpenFileName(this, "Select Executable", {}, "Executables (*)");
  }
  return path.toStdString();
}

bool ListPage::AddEntry(const std::string& value) {
  if (value.empty() || LimitReached()) return false;
  if (!list_->findItems(QString::fromStdString(value), Qt::MatchExactly | Qt::MatchCaseSensitive).isEmpty())
    return false;
  list_->addItem(QString::fromStdString(value));
  Changed();
  return true;
}

void ListPage::Add() {
  // Asking is pointless when the answer can't be taken.
  if (kind_ == kFolders && LimitReached()) return;
  std::string value = chooseEntry();
  if (value.empty()) return;
  if (kind_ == kFolders && value.back() != '/') value += '/';
  AddEntry(value);
}

void ListPage::RemoveSelected() {
  for (int i = list_->count() - 1; i >= 0; --i)
    if (list_->item(i)->isSelected()) delete list_->takeItem(i);
  list_->setFocus();
  Changed();
}

void ListPage::SelectAll() { list_->selectAll(); }

void ListPage::Move(int direction) {
  const int row = list_->currentRow();
  const int other = row + direction;
  if (row < 0 || other < 0 || other >= list_->count()) return;
  QListWidgetItem* item = list_->takeItem(row);
  list_->insertItem(other, item);
  list_->clearSelection();
  list_->setCurrentRow(other);
  Changed();
}

void ListPage::AddFileArgument() {
  for (int i = 0; i < list_->count(); ++i) {
    QListWidgetItem* item = list_->item(i);
    if (item->isSelected() && !item->text().endsWith(" %1")) item->setText(item->text() + " %1");
  }
  Changed();
}

void ListPage::RemoveFileArgument() {
  for (int i = 0; i < list_->count(); ++i) {
    QListWidgetItem* item = list_->item(i);
    if (item->isSelected() && item->text().endsWith(" %1")) item->setText(item->text().chopped(3));
  }
  Changed();
}

bool ListPage::eventFilter(QObject* watched, QEvent* event) {
  if (watched == list_ && event->type() == QEvent::KeyPress) {
    auto* key = static_cast<QKeyEvent*>(event);
    if ((key->modifiers() & Qt::AltModifier) && (key->key() == Qt::Key_Up || key->key() == Qt::Key_Down)) {
      Move(key->key() == Qt::Key_Up ? -1 : 1);
      return true;
    }
  }
  if (watched == text1_ && event->type() == QEvent::FocusIn)
    QMetaObject::invokeMethod(text1_, &QLineEdit::selectAll, Qt::QueuedConnection);
  return PreferencesPage::eventFilter(watched, event);
}

}  // namespace trel
