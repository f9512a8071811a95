// The Plugin View's side of the main window: entering the view scans the
// pane's folder on a worker thread (progress, Esc, the cache in the program
// folder), and the commands of the view (Change Category, Plugin Information,
// Plugin List) run on the lists of the active pane.
#pragma once

#include <QObject>
#include <QThreadPool>
#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "front/UserMessages.h"
#include "shell/dialogs/PluginListDialog.h"

namespace trel {

class MainWindow;
class PluginScanJob;

class PluginViewController : public QObject {
  Q_OBJECT
 public:
  explicit PluginViewController(MainWindow& window);

  // The window's controller, made by InstallPluginViewCommands.
  static PluginViewController* Of(const MainWindow& window);

  // "include txt, afs and pff files": a choice for this run only.
  void SetIncludeSources(bool on) { includeSources_ = on; }
  bool includeSources() const { return includeSources_; }
  void SetCacheEnabled(bool on) { cacheEnabled_ = on; }

  // The messages of the commands; the window's boxes unless replaced (tests).
  UserMessages& hooks() const;
  void SetHooks(UserMessages* hooks) { hooks_ = hooks; }
  // Replaces Form3 and Form4 (tests answer for the user).
  void SetCategoryPrompt(std::function<std::optional<std::string>(const std::vector<std::string>&)> prompt) {
    categoryPrompt_ = std::move(prompt);
  }
  void SetListPrompt(std::function<std::optional<PlugInListChoice>()> prompt) { listPrompt_ = std::move(prompt); }
  // Called on the scanning thread before each file (tests press Esc from it).
  void SetScanPacer(std::function<void(const std::string&)> pacer) { pacer_ = std::move(pacer); }

  // Entering the Plugin View of a pane: starts the scan and returns; the
  // lists are shown and scanFinished is emitted when it is over.
  void Scan(int pane, bool ffOnly);
  // Stops the scans still running, without showing their lists (the window
  // closes).
  void StopScans();
  // The cache of a scan is written after its lists are shown, on a thread of
  // its own; this waits for that (the next scan does so before it reads).
  void FinishCacheWrites();
  int lastCacheHits() const { return cacheHits_; }
  int lastCacheMisses() const { return cacheMisses_; }

  void cmd_ChangeCategory(bool dropped);
  void cmd_PlugInInformation();
  void ShowInformation(const std::string& path);
  void cmd_PlugInList();

 signals:
  void scanFinished(int pane, int entries);

 private:
  void ScanFinished(int pane, PluginScanJob& job);

  MainWindow& window_;
  std::array<PluginScanJob*, 2> scans_{};  // the running scan of each pane
  UserMessages* hooks_ = nullptr;
  bool includeSources_ = false;
  bool cacheEnabled_ = true;
  int cacheHits_ = 0;
  int cacheMisses_ = 0;
  std::function<std::optional<std::string>(const std::vector<std::string>&)> categoryPrompt_;
  std::function<std::optional<PlugInListChoice>()> listPrompt_;
  std::function<void(const std::string&)> pacer_;
  QThreadPool cacheWriter_;  // one thread: writes of the scan cache, in order
};

}  // namespace trel
