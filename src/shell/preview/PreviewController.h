// Preview and Picture Editor: the state behind the preview of plugins (the
// image library, the thumbnail and preview images, the delay timer, the disk
// cache), Invoke and About, the Picture Editor window, Browse and Batch. One
// lives beside the main window as its child; PreviewController::Of finds it.
#pragma once

#include <QObject>
#include <QPointer>
#include <QSize>
#include <QThreadPool>
#include <QTimer>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "front/UserMessages.h"
#include "host/ContactSheet.h"
#include "host/ImageLibrary.h"
#include "host/PluginHost.h"
#include "host/PreviewPipeline.h"

class QAction;
class QItemSelectionModel;

namespace trel {

class MainWindow;
class PicView;
class PreviewWindow;

class BatchJob;
class PreviewController : public QObject {
  Q_OBJECT
 public:
  explicit PreviewController(MainWindow& window);
  ~PreviewController() override;
  static PreviewController* Of(MainWindow& window);

  ImageLibrary& library() { return *lib_; }
  HostState& host() { return state_; }

  // --- options of the preferences that last for the run (read live)
  bool cacheEnabled() const;
  int jpgQuality() const;
  // The box previews are fitted into.
  QSize previewBox{400, 300};

  // --- the preview picture
  const std::string& PreviewPicture() const { return previewPicture_; }
  float aspect() const { return aspect_; }
  ImgHandle thumbnail() const { return thumb_; }
  void PreparePreviewPic();
  bool CreateThumb();
  void mnuPictures_Click(const QString& caption);

  // --- the preview
  bool previewOn() const;
  void mnuPluginPreview_Click();   // toggles, as the toolbar button does
  void tbPreview_Click(bool on);
  void SelectionChanged();         // restarts Timer1 while the preview is on
  QTimer& Timer1() { return timer1_; }
  void cmd_Preview();              // the selected plugin or picture
  // Previews one plugin; true when pixels are on show.
  bool PreviewPlugin(const std::string& pluginPath);
  bool PreviewPictureFile(const std::string& path);
  void mnuUpdateCache_Click();
  bool ClearCache(bool ask);
  void mnuRandomize_Click();
  bool cmd_SavePreview(const std::string& path);  // "" asks for a file
  int previewRuns() const { return previewRuns_; }   // plugin runs, for tests
  // Recent previews, decoded; the disk cache is read only when they miss.
  PreviewMemory& previewMemory() { return memory_; }
  // Waits for the cache files still being written and shows what failed.
  void FinishCacheWrites();
  PreviewWindow* previewWindow(bool create = true);

  // --- running plugins from the window
  void cmd_Invoke();
  void cmd_About();
  // The path of the active pane's single selected file; empty when none.
  std::string SelectedFile() const;
  // Tests (and other selections) may say what is selected instead.
  void SetSelectedFileProvider(std::function<std::string()> provider) { selectedFile_ = std::move(provider); }
  // Messages of the preview, the host and the Picture Editor; the window's
  // by default, a recorder in tests.
  UserMessages& shell() { return forward_; }
  void SetShell(UserMessages* shell) { forward_.target = shell; }

  // --- Picture Editor
  PicView* picView(bool create = true);
  void LoadintoPicView(const QString& path);

  // --- Browse and Batch
  void mnuBrowser_Click();
  void mnuBatchProcessing_Click();
  // Starts applying a plugin to pictures, results into the folder; asks
  // before replacing. The window goes on meanwhile, taking only Esc; the
  // report box ends the run.
  void RunBatch(const std::string& plugin, const std::vector<std::string>& pictures,
                const std::string& targetFolder);
  bool batchRunning() const { return batch_ != nullptr; }
  // What the last run that got past its plugin's check did.
  const BatchResult& lastBatch() const { return lastBatch_; }

  // Runs a plugin through the host over a copy of a picture, quietly; null
  // when the host couldn't, and then `status` says why.
  // `why` receives the cause of a failure on one line, as every window shows it.
  QImage RunThroughHost(const std::string& plugin, const QImage& picture, int32_t* status = nullptr,
                        std::string* why = nullptr);

  void CloseImages();
  // Hooks the selection models of the panes' lists (again, after a view change).
  void HookSelections();

 private:
  void ShowPreviewImage(const QString& name, const QString& note = {});
  void CacheWriteFailed(const std::string& path);
  void WriteCacheInBackground(const QImage& picture, const std::string& path);
  void CheckPictureEntry();
  // What the previews in memory were made on: the picture and its thumbnail.
  std::string PictureKey() const;
  // For a plugin run the user started, which may show the plugin's own dialog
  // for as long as the user likes: the window paints and hears Esc meanwhile,
  // but starts nothing else. Returns the guard that ends it.
  [[nodiscard]] std::shared_ptr<void> KeepWindowAlive();

  // Passes every message on to the current target.
  struct ForwardShell : UserMessages {
    UserMessages* target = nullptr;
    MsgResult MsgBox(const std::string& text, MsgButtons buttons, MsgIcon icon,
                     const std::string& title) override {
      return target->MsgBox(text, buttons, icon, title);
    }
    void ErrorMessage(const std::string& description) override { target->ErrorMessage(description); }
    bool ErrorMessage2(const std::string& description) override { return target->ErrorMessage2(description); }
  };

  MainWindow& window_;
  ForwardShell forward_;
  std::function<std::string()> selectedFile_;
  std::unique_ptr<ImageLibrary> lib_;
  HostState state_;
  std::string previewPicture_;
  bool prepared_ = false;
  float aspect_ = 1.0f;
  ImgHandle thumb_ = 0;
  std::string shownPlugin_;
  QTimer timer1_;
  int previewRuns_ = 0;
  int thumbGeneration_ = 0;  // counts the thumbnails made
  PreviewMemory memory_;
  bool userRun_ = false;  // a run from KeepWindowAlive is under way
  bool cacheWarned_ = false;
  // Writes the JPEG cache files one after another, off the window's thread.
  QThreadPool cacheWriter_;
  QPointer<PreviewWindow> preview_;
  QPointer<PicView> picView_;
  std::vector<QPointer<QItemSelectionModel>> hooked_;
  BatchJob* batch_ = nullptr;
  BatchResult lastBatch_;
};

}  // namespace trel
