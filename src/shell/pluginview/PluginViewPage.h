// Plugin View of a pane: the category list (List2) and the filter list (List3)
// of the pane's PluginList, the "Photoshop Mode" check box (Check1), the folder
// label, the scan label and the status line of the current filter.
#pragma once

#include <QListWidget>
#include <QWidget>
#include <string>
#include <vector>

#include "catalogue/PluginList.h"
#include "catalogue/PluginTypes.h"

class QCheckBox;
class QLabel;

namespace trel {

struct ChangeCategoryResult;
struct FilterEnv;
struct ToggleResult;

// The filters the host contains, by category, in the host's menu order.
struct BuiltinCategory {
  const char* category;
  std::vector<const char*> filters;
};
const std::vector<BuiltinCategory>& BuiltinFilterTable();

// The text of a filter row for an entry, or nothing when the row is not shown
// (a disabled or non-Photoshop filter in Photoshop Mode).
bool FilterRowText(const PluginEntry& entry, bool photoshopMode, const PluginTypeTable& table,
                   std::string& text);

// The MIME type of filters dragged out of a filter list: the pane, then one
// entry index per line.
inline constexpr const char* kFilterDragMime = "application/x-trel-plugin-rows";

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

  int pane() const { return pane_; }
  PaneCatalogue& catalogue() { return catalogue_; }
  const PaneCatalogue& catalogue() const { return catalogue_; }
  // Takes a scan's result and shows it: the first category is selected.
  void SetCatalogue(PaneCatalogue catalogue);
  // Empties both lists (a scan starts, or found nothing).
  void ClearLists();
  void SetTypeTable(const PluginTypeTable* table) { table_ = table; }
  void SetFolderText(const std::string& folder);
  void SetScanLabel(const QString& text);
  bool busy() const { return busy_; }
  void SetBusy(bool busy);

  // The category list's rows as shown (Photoshop Mode shows the host's menu).
  std::vector<std::string> CategoryRows() const;
  std::vector<std::string> SelectedCategories() const;
  // Selects exactly the category rows with these texts.
  void SelectCategories(const std::vector<std::string>& categories);
  // The filter list's rows as shown, each with its entry and selection.
  std::vector<FilterRow> Rows() const;
  // Selects exactly the filter rows whose entries are given.
  void SelectEntries(const std::vector<int>& entries);
  QString statusLine() const;

  bool PhotoshopMode() const { return photoshopMode_; }
  void SetPhotoshopMode(bool on);

  void List2_Click();
  void List3_Click();
  void Check1_Click();
  void CheckPhotoshopMode();

  // The category change over the selected rows, with the list updates that
  // follow it: moved rows leave, the target is selected and its filters shown.
  ChangeCategoryResult ChangeCategory(const std::string& target, bool dropped, const FilterEnv& env);
  // En/Disable over the selected rows: one rename per file, marks updated.
  ToggleResult EnableDisable(const PluginTypeTable& table, const FilterEnv& env);

  QListWidget* categoryList() const { return list2_; }
  QListWidget* filterList() const { return list3_; }
  QCheckBox* photoshopCheck() const { return check1_; }

 signals:
  // Filters of this pane were dropped on the category row now selected.
  void filtersDroppedOnCategory(int pane);
  // Filters of the other pane were dropped here.
  void filtersDroppedFromOtherPane(int pane, int sourcePane);
  void activated(int pane);
  void informationRequested(int pane);  // a double click or Alt+Return on a filter

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void FillCategoryList(const std::vector<std::string>& rows);
  void FillFilterRows(std::vector<FilterRow> rows);

  int pane_;
  PaneCatalogue catalogue_;
  const PluginTypeTable* table_ = nullptr;
  bool photoshopMode_ = false;
  bool busy_ = false;
  bool filling_ = false;
  std::string folder_;
  QLabel* folderLabel_ = nullptr;
  QLabel* scanLabel_ = nullptr;
  QLabel* status_ = nullptr;
  QCheckBox* check1_ = nullptr;
  QListWidget* list2_ = nullptr;
  QListWidget* list3_ = nullptr;
};

}  // namespace trel
