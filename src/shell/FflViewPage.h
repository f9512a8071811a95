// FFL View of a pane: the entries of one Filter Factory Library (ListView2).
#pragma once

#include <QWidget>
#include <string>

namespace trel {

class FflViewPage : public QWidget {
  Q_OBJECT
 public:
  FflViewPage(int pane, QWidget* parent = nullptr);

  // The library shown, empty when none.
  std::string libraryPath() const { return library_; }
  // Select All (true) or Toggle Selection (false) over the entries.
  void SelectAllEntries(bool all);

 private:
  int pane_;
  std::string library_;
};

}  // namespace trel
