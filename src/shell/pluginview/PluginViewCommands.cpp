#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QMenuBar>
#include <QTabBar>
#include <QTabWidget>
#include <cctype>
#include <memory>

#include "catalogue/CategoryChange.h"
#include "catalogue/PluginReports.h"
#include "catalogue/PluginScanner.h"
#include "catalogue/ScanCache.h"
#include "base/Paths.h"
#include "base/FolderIdentity.h"
#include "shell/dialogs/CategoryDialog.h"
#include "shell/window/CommandGroups.h"
#include "shell/window/MainWindow.h"
#include "shell/pluginview/PluginScanJob.h"
#include "shell/pluginview/PluginViewController.h"
#include "shell/pluginview/PluginViewPage.h"
#include "shell/pane/Selection.h"

namespace trel {

namespace {

constexpr const char* kControllerName = "PluginViewController";

// The room a plugin has for its category, in characters; 0 when nothing
// limits it here (a filter source is written anew).
int CategoryRoom(const PluginEntry& entry) {
  std::string end = entry.path.size() >= 4 ? entry.path.substr(entry.path.size() - 4) : entry.path;
  for (char& c : end) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  if (end == ".afs" || end == ".pff" || end == ".txt") return 0;
  if (entry.categoryOffset == 0) return 255;  // a Filter Factory plugin: what its count byte can say
  return entry.categoryOffset > 0 ? entry.maxCategoryLength : 0;
}

// One line for each selected plugin that can't hold `target`.
std::string CategoryTooLong(const PaneCatalogue& catalogue, const std::vector<FilterRow>& rows,
                            const std::string& target) {
  std::string lines;
  for (const FilterRow& row : rows) {
    if (!row.selected || !catalogue.plugins.Valid(row.entry)) continue;
    const PluginEntry& entry = catalogue.plugins[row.entry];
    const int room = CategoryRoom(entry);
    if (room <= 0 || static_cast<int>(target.size()) <= room) continue;
    std::string name = entry.path.substr(entry.path.find_last_of('/') + 1);
    lines += "\n" + name + ": the file has room for a category of " + std::to_string(room) +
             " characters; \"" + target + "\" has " + std::to_string(target.size()) + ".";
  }
  return lines.empty() ? lines : lines.substr(1);
}

// The full path of a selected item: Plugin View hands full paths, File View
// bare names in the pane's folder.
std::string FullPath(const std::string& item, const std::string& folder) {
  if (!item.empty() && item.front() == '/') return item;
  return WithTrailingSeparator(folder) + item;
}

}  // namespace

PluginViewController::PluginViewController(MainWindow& window) : QObject(&window), window_(window) {
  setObjectName(kControllerName);
  window.parts().pluginView = this;
  cacheWriter_.setMaxThreadCount(1);
}

void PluginViewController::FinishCacheWrites() { cacheWriter_.waitForDone(); }

PluginViewController* PluginViewController::Of(const MainWindow& window) {
  return window.parts().pluginView;
}

UserMessages& PluginViewController::hooks() const { return hooks_ ? *hooks_ : window_.messages(); }

void PluginViewController::Scan(int index, bool ffOnly) {
  FilePane* pane = window_.pane(index);
  PluginViewPage* page = pane->pluginView();
  if (page->busy()) return;  // the pane's busy flag: further clicks wait
  const std::string folder = WithTrailingSeparator(pane->folder());

  page->SetTypeTable(&window_.pluginTypes());
  page->SetBusy(true);
  pane->tabs()->tabBar()->setEnabled(false);
  window_.SetPluginViewFresh(index, true);
  page->SetFolderText(folder);
  page->ClearLists();
  window_.Progressbar(0);

  PluginScanRequest request;
  request.folder = folder;
  request.options.subFolders = window_.prefs().scanSubDirs == 1;
  request.options.includeSources = includeSources_;
  request.options.ScanFFOnly = ffOnly;
  request.table = window_.pluginTypes();
  request.pacer = pacer_;
  if (cacheEnabled_) {
    FinishCacheWrites();  // the last scan's file is whole before it is read
    request.cache = std::make_shared<ScanCache>(window_.programFolder() + "cache", folder, request.options,
                                                request.table);
    request.cache->Load();
  }
  auto* job = new PluginScanJob(std::move(request), hooks(), window_.EscapeFlag(), this);
  scans_[static_cast<size_t>(index & 1)] = job;
  connect(job, &PluginScanJob::progressed, this, [this, page](const QString& label, int percent) {
    page->SetScanLabel(label);
    window_.Progressbar(percent);
  });
  connect(job, &PluginScanJob::finished, this, [this, index, job] { ScanFinished(index, *job); });
  job->Start();
}

void PluginViewController::ScanFinished(int index, PluginScanJob& job) {
  scans_[static_cast<size_t>(index & 1)] = nullptr;
  job.deleteLater();
  const PluginViewEntry entry = job.entry();
  if (const std::shared_ptr<ScanCache>& cache = job.request().cache) {
    cacheHits_ = cache->hits();
    cacheMisses_ = cache->misses();
    // The lists need not wait for the cache file: it is written meanwhile.
    if (entry == PluginViewEntry::Scanned) cacheWriter_.start([cache] { cache->Save(); });
  }
  if (entry == PluginViewEntry::NothingFound) hooks().Report(NoPluginsFound());

  FilePane* pane = window_.pane(index);
  PluginViewPage* page = pane->pluginView();
  page->SetScanLabel({});
  pane->tabs()->tabBar()->setEnabled(true);
  page->SetBusy(false);
  const int found = job.catalogue().plugins.Count();
  // The finished scan leaves the status row empty for the next work.
  window_.StatusDisplayClear();
  if (entry == PluginViewEntry::Scanned) {
    page->SetCatalogue(std::move(job.catalogue()));
    window_.Switchit(index);
    page->categoryList()->setFocus();
  } else {
    window_.SetPluginViewFresh(index, false);
    page->SetCatalogue({});
    pane->SelectTab(FilePane::kFileView);
  }
  emit scanFinished(index, entry == PluginViewEntry::Scanned ? found : 0);
}

void PluginViewController::StopScans() {
  for (PluginScanJob*& job : scans_) {
    delete job;
    job = nullptr;
  }
}

void PluginViewController::cmd_ChangeCategory(bool dropped) {
  const int index = window_.ActivePane();
  FilePane* pane = window_.pane(index);
  PluginViewPage* page = pane->pluginView();
  FilterEnv env;
  env.shell = &hooks();
  std::vector<FilterRow> rows = page->Rows();
  const bool anySelected = std::any_of(rows.begin(), rows.end(), [](const FilterRow& r) { return r.selected; });
  if (pane->paneView() != FilePane::kPluginView || !anySelected) {
    // The core gives the refusals their words.
    PaneCatalogue none;
    const ChangeCategoryResult refused = trel::cmd_ChangeCategory(pane->paneView(), none, rows, {}, dropped, env);
    if (refused.error) hooks().Report(*refused.error);
    return;
  }
  std::string target;
  if (dropped) {
    const std::vector<std::string> selected = page->SelectedCategories();
    if (selected.empty()) return;
    target = selected.front();
  } else {
    while (true) {
      const std::vector<std::string> choices = CategoryChoices(page->catalogue());
      const std::optional<std::string> answer =
          categoryPrompt_ ? categoryPrompt_(choices) : AskCategory(choices, &window_);
      if (!answer) return;
      if (CategoryInputNeedsRetry(page->catalogue(), *answer)) continue;
      target = *answer;
      break;
    }
  }
  // What the window knows of the plugins' room goes under the core's count of
  // failures, so that the user reads the cause.
  const std::string causes = CategoryTooLong(page->catalogue(), rows, target);
  const ChangeCategoryResult result = page->ChangeCategory(target, dropped, env);
  if (result.error) {
    Error told = *result.error;
    if (result.failures > 0 && !causes.empty()) told.reason += "\n" + causes;
    hooks().Report(told);
  }
}

void PluginViewController::ShowInformation(const std::string& path) {
  FilterEnv env;
  env.shell = &hooks();
  hooks().Report(
      trel::cmd_PlugInInformation(window_.pane(window_.ActivePane())->paneView(), {path}, window_.pluginTypes(), env));
}

void PluginViewController::cmd_PlugInInformation() {
  FilePane* pane = window_.pane(window_.ActivePane());
  const SingleItem item = GetSingleItem(*pane);
  std::vector<std::string> selection;
  if (!item.name.empty()) selection.push_back(FullPath(item.name, item.folder));
  FilterEnv env;
  env.shell = &hooks();
  hooks().Report(trel::cmd_PlugInInformation(pane->paneView(), selection, window_.pluginTypes(), env));
}

void PluginViewController::cmd_PlugInList() {
  const int index = window_.ActivePane();
  FilePane* pane = window_.pane(index);
  const SelectedItems selected = GetSelectedItems(*pane);
  std::vector<std::string> paths;
  for (const std::string& item : selected.items) paths.push_back(FullPath(item, selected.folder));
  FilterEnv env;
  env.shell = &hooks();
  std::string text;
  if (paths.empty()) {
    // The core gives the refusal of an empty selection its words.
    if (const Expected<void> refused = trel::cmd_PlugInList(paths, {}, true, {}, text, env); !refused)
      hooks().Report(refused.error());
    return;
  }
  const std::optional<PlugInListChoice> choice = listPrompt_ ? listPrompt_() : AskPlugInList(&window_);
  if (!choice) return;
  if (!choice->toClipboard && choice->fileName.empty()) return;
  const std::string output =
      choice->toClipboard ? std::string() : FullPath(choice->fileName, WithTrailingSeparator(pane->folder()));
  if (const Expected<void> made = trel::cmd_PlugInList(paths, choice->options, choice->toClipboard, output, text, env);
      !made) {
    hooks().Report(made.error());
    return;
  }
  if (choice->toClipboard) {
    QApplication::clipboard()->clear();
    QApplication::clipboard()->setText(QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size())));
  }
  window_.RefreshFile1(index);
}

void InstallPluginViewCommands(MainWindow& window) {
  auto* controller = new PluginViewController(window);
  for (int i = 0; i < 2; ++i) {
    FilePane* pane = window.pane(i);
    PluginViewPage* page = pane->pluginView();
    page->SetTypeTable(&window.pluginTypes());
    QObject::connect(page, &PluginViewPage::activated, &window, [&window](int index) {
      if (index != window.ActivePane()) window.Switchit(index);
    });
    QObject::connect(page, &PluginViewPage::filtersDroppedOnCategory, controller, [&window, controller](int index) {
      if (index != window.ActivePane()) window.Switchit(index);
      controller->cmd_ChangeCategory(true);
    });
    QObject::connect(page, &PluginViewPage::informationRequested, controller, [&window, controller](int index) {
      if (index != window.ActivePane()) window.Switchit(index);
      controller->cmd_PlugInInformation();
    });
    // A folder other than the one scanned makes the list stale.
    QObject::connect(pane, &FilePane::folderChanged, controller, [&window](int index) {
      FilePane* p = window.pane(index);
      const PaneCatalogue& c = p->pluginView()->catalogue();
      if (!SameFolder(p->folder(), c.scannedFolder))
        window.SetPluginViewFresh(index, false);
    });
  }
  if (QAction* change = window.command("mnuChangeCat")) {
    QObject::connect(change, &QAction::triggered, controller, [controller] { controller->cmd_ChangeCategory(false); });
    window.SetCommandAvailable("mnuChangeCat", true);
  }
  if (QAction* info = window.command("mnuPlugInfo")) {
    QObject::connect(info, &QAction::triggered, controller, [controller] { controller->cmd_PlugInInformation(); });
    window.SetCommandAvailable("mnuPlugInfo", true);
  }
  QObject::connect(window.command("mnuPlugInList"), &QAction::triggered, controller,
                   [controller] { controller->cmd_PlugInList(); });
  window.SetCommandAvailable("mnuPlugInList", true);
}

// Entering Plugin View with a stale list scans the pane's folder. Shift held
// keeps only the Filter Factory plugins.
void MainWindow::ScanForPluginView(int index) {
  PluginViewController* controller = PluginViewController::Of(*this);
  if (!controller) return;
  const bool ffOnly = (QGuiApplication::queryKeyboardModifiers() & Qt::ShiftModifier) != 0;
  controller->Scan(index, ffOnly);
}

void MainWindow::cmd_PlugInInformation(const QString& path) {
  emit routeTaken("cmd_PlugInInformation", path);
  if (PluginViewController* controller = PluginViewController::Of(*this)) controller->ShowInformation(path.toStdString());
}

}  // namespace trel
