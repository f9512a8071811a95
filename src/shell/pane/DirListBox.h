// Dir1 of a pane: the folder box. It shows the way from the root down to the
// folder, then the folder's sub-folders; a double click or Return on an entry
// goes there. Its sub-folders are the folder entries of the file list.
#pragma once

#include <QListWidget>
#include <string>
#include <vector>

#include "base/DirectoryListing.h"

namespace trel {

class DirListBox : public QListWidget {
  Q_OBJECT
 public:
  DirListBox(const QString& objectName, QWidget* parent = nullptr);

  const std::string& path() const { return path_; }  // with a trailing separator
  // Shows `folder` with its sub-folders; false (and no change) when it isn't a
  // folder. Emits pathChanged when the folder differs from the last one.
  bool SetPath(const std::string& folder, const std::vector<DirEntry>& subfolders);
  const std::vector<DirEntry>& subfolders() const { return subfolders_; }
  // The full path of the entry of a row, with a trailing separator.
  std::string EntryPath(int row) const;
  int CurrentRow() const { return currentRow_; }  // the row of the folder itself

 signals:
  void entryChosen(const QString& path);  // the user picked an entry
  void gotFocus();

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;

 private:
  std::string path_;
  std::vector<DirEntry> subfolders_;
  int currentRow_ = -1;
};

}  // namespace trel
