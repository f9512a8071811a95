#include "shell/pane/Selection.h"

#include <QListView>
#include <QStringListModel>

#include "base/Paths.h"
#include "shell/pane/DirListBox.h"
#include "shell/fflview/FflViewPage.h"
#include "shell/pane/FileListModel.h"
#include "shell/pane/FileListView.h"
#include "shell/pane/FilePane.h"
#include "shell/pane/PaneRules.h"
#include "shell/pluginview/PluginViewPage.h"

namespace trel {

namespace {

// Rows of ListView1 in the order they are shown (the model is kept sorted).
template <typename Visit>
void ForEachSelectedRow(const FilePane& pane, Visit visit) {
  const QItemSelectionModel* selection = pane.listView()->selection();
  const FileListModel* model = pane.model();
  for (int row = 0; row < model->rowCount(); ++row)
    if (selection->isRowSelected(row, {}) && !visit(model->item(row))) return;
}

// The entry of the folder box that the user moved to without entering it.
std::string PickedInFolderBox(const FilePane& pane) {
  const DirListBox* box = pane.dirBox();
  const int row = box->currentRow();
  if (row < 0 || row == box->CurrentRow()) return {};
  return box->EntryPath(row);
}

}  // namespace

SelectedItems GetSelectedItems(const FilePane& pane) {
  SelectedItems result;
  result.folder = WithTrailingSeparator(pane.folder());
  switch (pane.paneView()) {
    case FilePane::kFileView:
      if (pane.listViewShown()) {
        ForEachSelectedRow(pane, [&](const LvItem& item) {
          if (IsFileIcon(item.icon)) result.items.push_back(item.text.toStdString());
          return true;
        });
      } else {
        const QItemSelectionModel* selection = pane.file1()->selectionModel();
        const QAbstractItemModel* model = pane.file1()->model();
        for (int row = 0; row < model->rowCount(); ++row)
          if (selection->isRowSelected(row, {})) result.items.push_back(model->index(row, 0).data().toString().toStdString());
      }
      break;
    case FilePane::kPluginView: result.items = pane.pluginView()->SelectedPaths(); break;
    default: break;
  }
  result.HasSelectionFlag = !result.items.empty();
  return result;
}

SingleItem GetSingleItem(const FilePane& pane) {
  SingleItem result;
  result.folder = WithTrailingSeparator(pane.folder());
  switch (pane.paneView()) {
    case FilePane::kFileView:
      if (pane.listViewShown()) {
        ForEachSelectedRow(pane, [&](const LvItem& item) {
          if (!IsFileIcon(item.icon)) return true;
          result.name = item.text.toStdString();
          return false;
        });
      } else {
        result.name = pane.File1Current().toStdString();
      }
      break;
    case FilePane::kPluginView: result.name = pane.pluginView()->CurrentPath(); break;
    default: break;
  }
  return result;
}

SelectedFolders GetSelectedFolders(const FilePane& pane) {
  SelectedFolders result;
  if (pane.paneView() != FilePane::kFileView) return result;
  const std::string folder = WithTrailingSeparator(pane.folder());
  if (pane.listViewShown()) {
    ForEachSelectedRow(pane, [&](const LvItem& item) {
      if (item.icon == kIconFolder) result.folders.push_back(folder + item.text.mid(1).toStdString() + kPathSeparator);
      return true;
    });
  } else if (std::string picked = PickedInFolderBox(pane); !picked.empty()) {
    result.folders.push_back(WithTrailingSeparator(picked));
  }
  result.HasSelectionFlag = !result.folders.empty();
  return result;
}

std::string GetSingleFolder(const FilePane& pane, bool allowParent) {
  std::string found;
  if (pane.paneView() == FilePane::kFileView) {
    if (pane.listViewShown()) {
      ForEachSelectedRow(pane, [&](const LvItem& item) {
        if (item.icon == kIconParent) {
          found = "..";
          return false;
        }
        if (item.icon == kIconFolder) {
          found = WithTrailingSeparator(pane.folder()) + item.text.mid(1).toStdString();
          return false;
        }
        return true;
      });
      if (found == "..") return found;
    } else {
      found = PickedInFolderBox(pane);
    }
  }
  if (found.empty() && !allowParent) found = pane.folder();
  return found.empty() ? found : WithTrailingSeparator(found);
}

}  // namespace trel
