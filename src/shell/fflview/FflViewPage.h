// FFL View of a pane: the entries of one Filter Factory Library (ListView2)
// with the columns "Category", "Filter Name", "Author". Each row carries its
// entry number as tag; the pane keeps the library's table of entry positions.
#pragma once

#include <QWidget>
#include <string>
#include <vector>

#include "filter/FFL.h"
#include "filter/LoadIt.h"

class QLabel;
class QTreeWidget;

namespace trel {

class UserMessages;

class FflViewPage : public QWidget {
  Q_OBJECT
 public:
  FflViewPage(int pane, QWidget* parent = nullptr);

  // The library shown, empty when none.
  std::string libraryPath() const { return library_.path; }
  // Select All (true) or Toggle Selection (false) over the entries.
  void SelectAllEntries(bool all);

  int pane() const { return pane_; }
  // Reads the library and fills the list; false (the reader has said why) when
  // it is no library. A library cut short shows what could be read.
  bool OpenLibrary(const std::string& path, const FilterEnv& env);
  // Reads the shown library again, keeping the selection by entry number.
  bool Reload(const FilterEnv& env);
  void Close();
  const FFLLibrary& library() const { return library_; }

  int count() const;
  // Entry numbers of the selected rows, in list order.
  std::vector<int> SelectedNumbers() const;
  // Entry number of the row at the list cursor, 0 when none.
  int CurrentNumber() const;
  int CurrentIndex() const;
  // The entry number of list row `index`, 0 when there is none.
  int NumberAt(int index) const;
  void SelectNumbers(const std::vector<int>& numbers);
  // The row texts (category, filter name, author) of list row `index`.
  std::vector<std::string> RowTexts(int index) const;

  // Deletes the selected entries in place after the question; returns how many.
  int DeleteSelected(UserMessages& messages);

  // What LoadIt needs of this pane, with the pane's view given by the caller.
  class Access : public PaneAccess {
   public:
    explicit Access(const FflViewPage& page) : page_(page) {}
    PaneView ViewKind() const override { return PaneView::FFL; }
    bool SelectedItem(std::string&, std::string&) const override { return false; }
    std::string FFLPath() const override { return page_.libraryPath(); }
    bool FFLItemTag(int listIndex, int& entryNumber) const override;
    bool FFLEntryPosition(int entryNumber, int64_t& position) const override;

   private:
    const FflViewPage& page_;
  };

  QTreeWidget* list() const { return list_; }

 signals:
  void activated(int pane);
  void entryOpened(int pane, int listIndex);  // a double click or Return
  void deleteRequested(int pane);             // the Del key
  void searchRequested(int pane);             // Ctrl+F
  void filesDropped(int pane, const std::vector<std::string>& paths);
  void contextMenuRequested(int pane, QPoint globalPos);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Fill();

  int pane_;
  FFLLibrary library_;
  QLabel* label_ = nullptr;
  QTreeWidget* list_ = nullptr;
};

}  // namespace trel
