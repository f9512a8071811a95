// Plugin View of a pane: the category list and the filter list of the
// pane's PluginList.
#pragma once

#include <QWidget>
#include <string>
#include <vector>

namespace trel {

class PluginViewPage : public QWidget {
  Q_OBJECT
 public:
  PluginViewPage(int pane, QWidget* parent = nullptr);

  // Full paths of the selected filters (List3), in list order.
  std::vector<std::string> SelectedPaths() const;
  // The path of the current filter, empty when there is none.
  std::string CurrentPath() const;
  // Select All (true) or Toggle Selection (false) over the filter list.
  void SelectAllFilters(bool all);

 private:
  int pane_;
};

}  // namespace trel
