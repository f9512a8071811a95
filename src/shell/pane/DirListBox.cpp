#include "shell/pane/DirListBox.h"

#include <QApplication>
#include <QKeyEvent>
#include <QStyle>

#include "base/Paths.h"

namespace trel {

namespace {
constexpr int kPathRole = Qt::UserRole + 1;
}

DirListBox::DirListBox(const QString& objectName, QWidget* parent) : QListWidget(parent) {
  setObjectName(objectName);
  setUniformItemSizes(true);
  setIconSize(QSize(16, 16));
  connect(this, &QListWidget::itemDoubleClicked, this, [this](QListWidgetItem* item) {
    if (item) emit entryChosen(item->data(kPathRole).toString());
  });
}

bool DirListBox::SetPath(const std::string& folder, const std::vector<DirEntry>& subfolders) {
  if (!IsFolder(folder)) return false;
  path_ = WithTrailingSeparator(folder);
  subfolders_ = subfolders;
  clear();
  const QIcon open = QApplication::style()->standardIcon(QStyle::SP_DirOpenIcon);
  const QIcon closed = QApplication::style()->standardIcon(QStyle::SP_DirIcon);
  // The way down from the root, one indent a level.
  std::vector<std::string> way;
  for (std::string f = path_;; f = ParentFolder(f)) {
    way.insert(way.begin(), f);
    if (IsRootFolder(f) || ParentFolder(f) == f) break;
  }
  int depth = 0;
  for (const std::string& f : way) {
    std::string name = f;
    if (name.size() > 1) name.pop_back();
    const auto cut = name.rfind(kPathSeparator);
    if (cut != std::string::npos && name.size() > 1) name = name.substr(cut + 1);
    auto* item = new QListWidgetItem(open, QString(depth * 2, ' ') + QString::fromStdString(name));
    item->setData(kPathRole, QString::fromStdString(f));
    addItem(item);
    ++depth;
  }
  currentRow_ = count() - 1;
  for (const DirEntry& sub : subfolders_) {
    auto* item = new QListWidgetItem(closed, QString(depth * 2, ' ') + QString::fromStdString(sub.name));
    item->setData(kPathRole, QString::fromStdString(path_ + sub.name + kPathSeparator));
    addItem(item);
  }
  setCurrentRow(currentRow_);
  return true;
}

std::string DirListBox::EntryPath(int row) const {
  const QListWidgetItem* it = item(row);
  return it ? it->data(kPathRole).toString().toStdString() : std::string();
}

void DirListBox::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
    if (QListWidgetItem* it = currentItem()) emit entryChosen(it->data(kPathRole).toString());
    return;
  }
  if (event->key() == Qt::Key_Backspace) {
    // One level up: the entry above the folder itself.
    if (currentRow_ > 0) emit entryChosen(item(currentRow_ - 1)->data(kPathRole).toString());
    return;
  }
  QListWidget::keyPressEvent(event);
}

void DirListBox::focusInEvent(QFocusEvent* event) {
  emit gotFocus();
  QListWidget::focusInEvent(event);
}

void DirListBox::mousePressEvent(QMouseEvent* event) {
  emit gotFocus();
  QListWidget::mousePressEvent(event);
}

}  // namespace trel
