#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QKeyEvent>
#include <QMenu>
#include <QMenuBar>
#include <QMutex>
#include <QPointer>
#include <QTabBar>
#include <QTabWidget>
#include <QThread>
#include <atomic>
#include <cctype>
#include <memory>

#include "catalogue/CategoryChange.h"
#include "catalogue/PluginReports.h"
#include "catalogue/PluginScanner.h"
#include "catalogue/ScanCache.h"
#include "base/Paths.h"
#include "settings/FolderIdentity.h"
#include "shell/dialogs/CategoryDialog.h"
#include "shell/window/CommandGroups.h"
#include "shell/window/MainWindow.h"
#include "shell/pluginview/PluginViewController.h"
#include "shell/pluginview/PluginViewPage.h"
#include "shell/pane/Selection.h"

namespace trel {

namespace {

constexpr const char* kControllerName = "PluginViewController";

// What the scan asks of the shell from its own thread: Esc is the window's
// flag, messages are shown by the window's thread while the scan waits, so
// their order stays that of the files.
class ScanThreadHooks : public UserMessages {
 public:
  ScanThreadHooks(QObject* context, UserMessages& ui, std::atomic<bool>& escape)
      : context_(context), ui_(ui), escape_(escape) {}

  MsgResult MsgBox(const std::string& text, MsgButtons buttons, MsgIcon icon, const std::string& title) override {
    MsgResult result = MsgResult::Cancel;
    OnUiThread([&] { result = ui_.MsgBox(text, buttons, icon, title); });
    return result;
  }
  void ErrorMessage(const std::string& description) override {
    OnUiThread([&] { ui_.ErrorMessage(description); });
  }
  bool ErrorMessage2(const std::string& description) override {
    bool result = false;
    OnUiThread([&] { result = ui_.ErrorMessage2(description); });
    return result;
  }
  bool EscapePressed() override { return escape_.load(); }

 private:
  void OnUiThread(const std::function<void()>& call) {
    if (QThread::currentThread() == context_->thread()) call();
    else QMetaObject::invokeMethod(context_, call, Qt::BlockingQueuedConnection);
  }

  QObject* context_;
  UserMessages& ui_;
  std::atomic<bool>& escape_;
};

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

// Esc anywhere in the program stops the scan, whichever control has the focus
// (the lists of the pane are disabled meanwhile).
class EscapeWatcher : public QObject {
 public:
  explicit EscapeWatcher(std::atomic<bool>& flag) : flag_(flag) {}

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
      flag_.store(true);
    }
    return QObject::eventFilter(watched, event);
  }

 private:
  std::atomic<bool>& flag_;
};

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

  ScanOptions options;
  options.subFolders = window_.prefs().scanSubDirs == 1;
  options.includeSources = includeSources_;
  options.ScanFFOnly = ffOnly;
  const PluginTypeTable table = window_.pluginTypes();  // the thread's own copy
  std::atomic<bool>& escape = window_.EscapeFlag();
  escape.store(false);
  ScanThreadHooks threadHooks(this, hooks(), escape);
  FilterEnv env;
  env.shell = &threadHooks;

  // Progress and the scan label reach the window at most every 40 ms, so a
  // fast scan doesn't flood the event queue and a slow one still shows life.
  struct Shared {
    QMutex mutex;
    QString label;
    int percent = 0;
    bool posted = false;
  };
  auto shared = std::make_shared<Shared>();
  QPointer<PluginViewPage> pagePtr(page);
  QPointer<MainWindow> windowPtr(&window_);
  QElapsedTimer sinceLast;
  sinceLast.start();
  const auto post = [this, shared, pagePtr, windowPtr] {
    QMetaObject::invokeMethod(
        this,
        [shared, pagePtr, windowPtr] {
          QString label;
          int percent = 0;
          {
            QMutexLocker lock(&shared->mutex);
            label = shared->label;
            percent = shared->percent;
            shared->posted = false;
          }
          if (pagePtr) pagePtr->SetScanLabel(label);
          if (windowPtr) windowPtr->Progressbar(percent);
        },
        Qt::QueuedConnection);
  };
  const auto publish = [&, shared](const QString* label, const int* percent) {
    bool due = false;
    {
      QMutexLocker lock(&shared->mutex);
      if (label) shared->label = *label;
      if (percent) shared->percent = *percent;
      if (!shared->posted && sinceLast.elapsed() >= 40) {
        shared->posted = true;
        due = true;
        sinceLast.restart();
      }
    }
    if (due) post();
  };
  ScanCallbacks callbacks;
  const auto pacer = pacer_;
  callbacks.scanLabel = [&, pacer](const std::string& text) {
    if (pacer && !text.empty()) pacer(text);
    const QString label = QString::fromLocal8Bit(text.c_str());
    publish(&label, nullptr);
  };
  callbacks.progress = [&](int percent) { publish(nullptr, &percent); };

  std::shared_ptr<ScanCache> cache;
  if (cacheEnabled_) {
    FinishCacheWrites();  // the last scan's file is whole before it is read
    cache = std::make_shared<ScanCache>(window_.programFolder() + "cache", folder, options, table);
    cache->Load();
    callbacks = cache->Wrap(callbacks, options, table, env);
  }

  PaneCatalogue scanned;
  PluginViewEntry entry = PluginViewEntry::NothingFound;
  QThread* worker = QThread::create([&] {
    entry = EnterPluginView(scanned, folder, options, table, env, callbacks);
  });
  worker->setObjectName("PluginScan");
  QEventLoop loop;
  connect(worker, &QThread::finished, &loop, &QEventLoop::quit);
  EscapeWatcher watcher(escape);
  qApp->installEventFilter(&watcher);
  worker->start();
  loop.exec();
  qApp->removeEventFilter(&watcher);
  worker->wait();
  delete worker;
  if (cache) {
    cacheHits_ = cache->hits();
    cacheMisses_ = cache->misses();
    // The lists need not wait for the cache file: it is written meanwhile.
    if (entry == PluginViewEntry::Scanned) cacheWriter_.start([cache] { cache->Save(); });
  }
  if (!windowPtr || !pagePtr) return;  // the window went away meanwhile
  if (entry == PluginViewEntry::NothingFound) hooks().Report(NoPluginsFound());

  page->SetScanLabel({});
  pane->tabs()->tabBar()->setEnabled(true);
  page->SetBusy(false);
  const int found = scanned.plugins.Count();
  // The finished scan leaves the status row empty for the next work.
  window_.StatusDisplayClear();
  if (entry == PluginViewEntry::Scanned) {
    page->SetCatalogue(std::move(scanned));
    window_.Switchit(index);
    page->categoryList()->setFocus();
  } else {
    window_.SetPluginViewFresh(index, false);
    page->SetCatalogue({});
    pane->SelectTab(FilePane::kFileView);
  }
  emit scanFinished(index, entry == PluginViewEntry::Scanned ? found : 0);
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
  // The plugin list export has no entry of the window's own menus yet: it
  // joins the Commands menu behind Plugin Information.
  if (QMenu* commands = window.commandsMenu()) {
    auto* list = new QAction("Plugin &List...", commands);
    list->setObjectName("mnuPlugInList");
    list->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_L));
    QAction* before = window.command("mnuPluginAbout");
    commands->insertAction(before, list);
    QObject::connect(list, &QAction::triggered, controller, [controller] { controller->cmd_PlugInList(); });
  }
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
