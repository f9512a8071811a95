#include "shell/preview/PreviewController.h"

#include <QScopeGuard>
#include <algorithm>

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QImageReader>
#include <QItemSelectionModel>
#include <QListView>
#include <QMenu>
#include <chrono>
#include <random>

#include "base/Paths.h"
#include "base/PluginKinds.h"
#include "front/UserMessages.h"
#include "host/ContactSheet.h"
#include "host/ImageWrappers.h"
#include "host/PreviewPipeline.h"
#include "host/PreviewRender.h"
#include "picture/PicView.h"
#include "picture/PreviewPicture.h"
#include "settings/SettingsStore.h"
#include "shell/dialogs/BrowseDialog.h"
#include "shell/pane/FileListView.h"
#include "shell/preview/BatchJob.h"
#include "shell/commander/FileCommander.h"
#include "shell/pane/FilePane.h"
#include "shell/window/MainWindow.h"
#include "shell/pluginview/PluginViewPage.h"
#include "shell/preview/PreviewWindow.h"
#include "shell/pane/Selection.h"
#include "shell/dialogs/Dialogs.h"

namespace trel {

namespace {

constexpr int kPreviewDelayMs = 250;

bool IsPictureFile(const std::string& path) {
  return !QImageReader::imageFormat(QString::fromLocal8Bit(path.c_str())).isEmpty();
}

QString NameOf(const std::string& path) {
  return QFileInfo(QString::fromLocal8Bit(path.c_str())).fileName();
}

// A picture box that only has a size: the preview is shown by its window.
class SizeBox : public PictureBox {
 public:
  SizeBox(int w, int h) : w_(w), h_(h) {}
  int width() const override { return w_; }
  int height() const override { return h_; }
  void resize(int w, int h) override { w_ = w, h_ = h; }
  QPaintDevice* device() override { return nullptr; }

 private:
  int w_, h_;
};

// Only Photoshop-compatible plugins are run; asks about one without extension.
bool MayRun(UserMessages& shell, const std::string& path) {
  if (path.empty()) {
    shell.MsgBox("Please select a plugin or other supported file.", MsgButtons::Ok, MsgIcon::Exclamation, "Trel");
    return false;
  }
  const PluginName plugin = ClassifyPluginName(path);
  if (plugin.kind == PluginKind::Photoshop && plugin.withoutExtension)
    return shell.MsgBox(
               "Photoshop-compatible plugins without a file extension can cause a crash\n"
               "when you try to execute them. To avoid this risk please use the En/Disable \n"
               "command to add a .8bf or ._bf extension to the plugin file.\n"
               "\n"
               "Do you want to execute this plugin anyway?",
               MsgButtons::YesNo, MsgIcon::Exclamation, "Warning") == MsgResult::Yes;
  if (plugin.kind != PluginKind::Photoshop) {
    shell.MsgBox("Please select a Photoshop-compatible plugin to execute this function.", MsgButtons::Ok,
                 MsgIcon::Exclamation, "Trel");
    return false;
  }
  return true;
}

}  // namespace

PreviewController::PreviewController(MainWindow& window)
    : QObject(&window), window_(window) {
  window.parts().preview = this;
  forward_.target = &window.messages();
  lib_ = std::make_unique<ImageLibrary>(forward_);
  setObjectName("PreviewController");
  state_.mainWindow = reinterpret_cast<WindowHandle>(&window);
  lib_->setCancel([this] { return window_.EscapeFlag().load(); });
  timer1_.setObjectName("Timer1");
  timer1_.setSingleShot(true);
  timer1_.setInterval(kPreviewDelayMs);
  connect(&timer1_, &QTimer::timeout, this, &PreviewController::cmd_Preview);
  cacheWriter_.setMaxThreadCount(1);
}

PreviewController::~PreviewController() {
  delete batch_;  // stops it and waits for its thread
  cacheWriter_.waitForDone();
  CloseImages();
}

PreviewController* PreviewController::Of(MainWindow& window) {
  return window.parts().preview;
}

// --- the preview picture -------------------------------------------------------

void PreviewController::PreparePreviewPic() {
  previewPicture_ = PreviewPicturePath(window_.store(), window_.programFolder());
  prepared_ = true;
  CreateThumb();
  CheckPictureEntry();
}

bool PreviewController::cacheEnabled() const { return window_.prefs().previewCache == 1; }
// The slider says how much the cache's JPEGs are compressed: 100 % is the
// smallest file, so the writer's quality is what is left of it.
int PreviewController::jpgQuality() const {
  return std::clamp(100 - window_.prefs().jpgCompression, 1, 100);
}

bool PreviewController::CreateThumb() {
  // A picture that doesn't open leaves the former thumbnail in place.
  const bool made =
      trel::CreateThumb(*lib_, previewPicture_, previewBox.width(), previewBox.height(), thumb_, aspect_);
  if (made) ++thumbGeneration_;
  return made;
}

std::string PreviewController::PictureKey() const {
  return previewPicture_ + '\n' + std::to_string(thumbGeneration_);
}

void PreviewController::CheckPictureEntry() {
  QMenu* menu = window_.picturesMenu();
  if (!menu) return;
  const QString current = QString::fromLocal8Bit(previewPicture_.c_str());
  for (QAction* a : menu->actions()) {
    if (!a->objectName().startsWith("mnuPictures")) continue;
    a->setCheckable(true);
    a->setChecked(a->text().compare(current, Qt::CaseInsensitive) == 0);
  }
}

void PreviewController::mnuPictures_Click(const QString& caption) {
  previewPicture_ = caption.toLocal8Bit().toStdString();
  window_.settings().Change([this](Preferences& p) { p.previewPicture = previewPicture_; });
  prepared_ = true;
  CheckPictureEntry();
  CreateThumb();
  if (previewOn()) cmd_Preview();
}

// --- the preview ----------------------------------------------------------------

bool PreviewController::previewOn() const {
  QAction* tb = window_.previewToggle();
  return tb && tb->isChecked();
}

void PreviewController::mnuPluginPreview_Click() {
  QAction* tb = window_.previewToggle();
  const bool on = !(tb && tb->isChecked());
  if (tb) tb->setChecked(on);
  if (QAction* menu = window_.command("mnuPluginPreview")) menu->setChecked(on);
  tbPreview_Click(on);
}

void PreviewController::tbPreview_Click(bool on) {
  if (QAction* menu = window_.command("mnuPluginPreview")) menu->setChecked(on);
  if (!on) {
    timer1_.stop();
    if (preview_) preview_->hide();
    return;
  }
  HookSelections();
  if (!prepared_) PreparePreviewPic();
  PreviewWindow* w = previewWindow();
  w->show();
  w->raise();
  cmd_Preview();
}

void PreviewController::SelectionChanged() {
  // Moving quickly through a list runs one preview, after the last move.
  timer1_.stop();
  if (previewOn()) timer1_.start();
}

void PreviewController::HookSelections() {
  for (int i = 0; i < 2; ++i) {
    FilePane* pane = window_.pane(i);
    if (!pane) continue;
    std::vector<QAbstractItemView*> views;
    if (pane->listView())
      for (QAbstractItemView* v : pane->listView()->findChildren<QAbstractItemView*>()) views.push_back(v);
    if (pane->file1()) views.push_back(pane->file1());
    if (PluginViewPage* page = pane->pluginView()) {
      // The filter list; the category list beside it only changes what is listed.
      for (QAbstractItemView* v : page->findChildren<QAbstractItemView*>())
        if (!v->objectName().startsWith("List2")) views.push_back(v);
    }
    for (QAbstractItemView* v : views) {
      QItemSelectionModel* model = v->selectionModel();
      if (!model) continue;
      bool known = false;
      for (const QPointer<QItemSelectionModel>& h : hooked_) known = known || h == model;
      if (known) continue;
      hooked_.emplace_back(model);
      connect(model, &QItemSelectionModel::currentChanged, this, &PreviewController::SelectionChanged);
      connect(model, &QItemSelectionModel::selectionChanged, this, &PreviewController::SelectionChanged);
    }
  }
}

std::string PreviewController::SelectedFile() const {
  if (selectedFile_) return selectedFile_();
  FilePane* pane = window_.pane(window_.ActivePane());
  if (!pane) return {};
  const SingleItem item = GetSingleItem(*pane);
  if (item.name.empty()) return {};
  if (QFileInfo(QString::fromLocal8Bit(item.name.c_str())).isAbsolute()) return item.name;
  return item.folder + item.name;
}

PreviewWindow* PreviewController::previewWindow(bool create) {
  if (!preview_ && create) {
    preview_ = new PreviewWindow(&window_);
    connect(preview_, &PreviewWindow::updateCacheRequested, this, &PreviewController::mnuUpdateCache_Click);
    connect(preview_, &PreviewWindow::randomizeRequested, this, &PreviewController::mnuRandomize_Click);
    connect(preview_, &PreviewWindow::savePreviewRequested, this, [this] { cmd_SavePreview({}); });
    connect(preview_, &PreviewWindow::clearCacheRequested, this, [this] { ClearCache(true); });
    // Closing the window switches the preview off, as the button would.
    connect(preview_, &PreviewWindow::closed, this, [this] {
      window_.previewToggle()->setChecked(false);
      tbPreview_Click(false);
    });
  }
  return preview_;
}

void PreviewController::ShowPreviewImage(const QString& name, const QString& note) {
  PreviewWindow* w = previewWindow();
  const QImage* img = lib_->image(state_.PreviewImage);
  if (!img) {
    w->ShowMessage("No preview");
    return;
  }
  w->ShowPicture(*img, name, note);
  if (previewOn() && !w->isVisible()) w->show();
}

void PreviewController::cmd_Preview() {
  if (userRun_) return;  // the host is busy with the user's own run
  const std::string path = SelectedFile();
  if (path.empty()) return;
  window_.BeginWork();
  if (IsPhotoshopFilterName(path)) PreviewPlugin(path);
  else if (IsPictureFile(path)) PreviewPictureFile(path);
}

bool PreviewController::PreviewPlugin(const std::string& pluginPath) {
  if (!prepared_) PreparePreviewPic();
  shownPlugin_ = pluginPath;
  const QString name = NameOf(pluginPath);
  const std::string cacheFile = PreviewCacheFile(window_.programFolder(), pluginPath);
  // A preview found in the cache is drawn without a host: from memory when it
  // was shown lately, from its JPEG only when memory has none.
  const bool caching = cacheEnabled();
  const std::string memoryKey = caching ? PreviewMemory::KeyOf(pluginPath, PictureKey()) : std::string();
  if (caching) {
    QImage cached = memory_.Find(memoryKey);
    // A file still being written is waited for, so that a plugin of the same
    // name shown right after finds the entry as it would have before.
    if (cached.isNull()) cacheWriter_.waitForDone();
    if (cached.isNull() && FileExists(cacheFile)) {
      cached = ReadPreviewCache(cacheFile);
      memory_.Put(memoryKey, cached);
    }
    if (!cached.isNull()) {
      CloseImage(*lib_, state_.PreviewImage);
      state_.PreviewImage = lib_->Adopt(std::move(cached));
      ShowPreviewImage(name, "cached");
      return true;
    }
  }
  if (thumb_ == 0) {
    previewWindow()->ShowMessage("Couldn't open " + QString::fromLocal8Bit(previewPicture_.c_str()));
    return false;
  }
  int w = 0, h = 0;
  if (!CopyImageSized(*lib_, w, h, thumb_, state_.PreviewImage)) return false;
  WindowHandle parent = 0;
  bool result = false;
  ++previewRuns_;
  // An Esc pressed before (to close a box) must not stop this run.
  window_.BeginWork();
  QApplication::setOverrideCursor(Qt::WaitCursor);
  PluginFailure why;
  PluginInvoke(*lib_, state_, shell(), window_.programFolder(), pluginPath, nullptr, false, parent,
               result, &why);
  QApplication::restoreOverrideCursor();
  if (!result) {
    // The cause, in the words Browse and Batch use too.
    previewWindow()->ShowMessage("No preview of " + name +
                                 (why.text.empty() ? QString() : "\n" + QString::fromStdString(why.text)));
    return false;
  }
  ShowPreviewImage(name);
  if (caching) {
    if (const QImage* img = lib_->image(state_.PreviewImage)) {
      memory_.Put(memoryKey, *img);
      WriteCacheInBackground(*img, cacheFile);
    }
  }
  return true;
}

// Encoding the JPEG costs about as much as making a small preview; the picture
// is on show already, so the file is written on a worker, in order. A failure
// comes back to the window's thread as a queued call.
void PreviewController::WriteCacheInBackground(const QImage& picture, const std::string& path) {
  const int quality = jpgQuality();
  cacheWriter_.start([this, picture, path, quality] {
    if (WritePreviewCache(picture, path, quality)) return;
    QMetaObject::invokeMethod(this, [this, path] { CacheWriteFailed(path); }, Qt::QueuedConnection);
  });
}

void PreviewController::FinishCacheWrites() {
  cacheWriter_.waitForDone();
  QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
}

void PreviewController::CacheWriteFailed(const std::string& path) {
  // Said once a run: the preview itself is on show, only the cache is missing.
  if (cacheWarned_) return;
  cacheWarned_ = true;
  shell().MsgBox("Couldn't write the preview cache file " + path +
                                "\nPreviews go on without the cache (is the disk full or read-only?).",
                            MsgButtons::Ok, MsgIcon::Exclamation, "Trel");
}

bool PreviewController::PreviewPictureFile(const std::string& path) {
  SizeBox box(previewBox.width(), previewBox.height());
  if (!LoadIntoPictureBox(*lib_, shell(), box, path, true, state_.PreviewImage)) {
    previewWindow()->ShowMessage("Couldn't open " + QString::fromLocal8Bit(path.c_str()));
    return false;
  }
  shownPlugin_.clear();
  ShowPreviewImage(NameOf(path));
  return true;
}

void PreviewController::mnuUpdateCache_Click() {
  std::string path = SelectedFile();
  if (path.empty() || !IsPhotoshopFilterName(path)) path = shownPlugin_;
  if (path.empty()) return;
  const std::string cacheFile = PreviewCacheFile(window_.programFolder(), path);
  FinishCacheWrites();
  if (FileExists(cacheFile)) QFile::remove(QString::fromLocal8Bit(cacheFile.c_str()));
  memory_.Forget(path);
  PreviewPlugin(path);
}

bool PreviewController::ClearCache(bool ask) {
  if (ask && shell().MsgBox("Do you really want to clear the preview cache?", MsgButtons::YesNo,
                                       MsgIcon::Question, "Trel") != MsgResult::Yes)
    return false;
  memory_.Clear();
  FinishCacheWrites();
  QApplication::setOverrideCursor(Qt::WaitCursor);
  const bool ok = ClearPreviewCache(window_.programFolder());
  QApplication::restoreOverrideCursor();
  if (!ok)
    shell().MsgBox("Couldn't clear the preview cache folder " +
                                  PreviewCacheFolder(window_.programFolder()),
                              MsgButtons::Ok, MsgIcon::Exclamation, "Trel");
  return ok;
}

void PreviewController::mnuRandomize_Click() {
  FFFilter& f = window_.filter();
  if (f.title.empty()) return;
  std::mt19937 random(static_cast<uint32_t>(std::chrono::steady_clock::now().time_since_epoch().count()));
  RandomizeControls(f, random);
  // The filter in hand shows its new values on the preview picture.
  if (!prepared_) PreparePreviewPic();
  const QImage* thumb = lib_->image(thumb_);
  if (!thumb) return;
  const PreparedFilter prepared = PrepareFilter(f);
  QImage result = RenderWith(prepared, *thumb);
  if (result.isNull()) {
    previewWindow()->ShowMessage(QString::fromStdString(prepared.ok() ? "No preview" : prepared.error));
    return;
  }
  CloseImage(*lib_, state_.PreviewImage);
  state_.PreviewImage = lib_->Adopt(std::move(result));
  ShowPreviewImage(QString::fromLatin1(f.title.c_str()), "random");
}

bool PreviewController::cmd_SavePreview(const std::string& path) {
  if (state_.PreviewImage == 0) return false;
  std::string target = path;
  if (target.empty()) {
    const QString chosen = TheDialogs().PickSaveFile(previewWindow(), "Save Preview", QString(),
                                                     "Pictures (*.jpg *.png *.bmp *.tif);;All files (*)");
    if (chosen.isEmpty()) return false;
    target = chosen.toLocal8Bit().toStdString();
  }
  if (lib_->ImgXWriteImage(target, "", state_.PreviewImage, state_.mainWindow) != IMG_OK) {
    lib_->ImgErrBox(state_.mainWindow);
    return false;
  }
  return true;
}

// --- running plugins ---------------------------------------------------------------

void PreviewController::cmd_Invoke() {
  if (userRun_) return;
  const std::string path = SelectedFile();
  if (!MayRun(shell(), path)) return;
  // A plugin run on purpose shows its own dialog; previews run without one.
  const auto alive = KeepWindowAlive();
  lib_->setPluginDialogs(true);
  const auto quiet = qScopeGuard([this] { lib_->setPluginDialogs(false); });
  // An open Picture Editor is the target of a plugin run from the window.
  if (picView_ && picView_->isVisible() && !picView_->Picture().isNull()) {
    ImgHandle h = lib_->Adopt(picView_->Picture());
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const bool changed = ApplyFilter(*lib_, h, path, state_.mainWindow);
    QApplication::restoreOverrideCursor();
    if (changed) picView_->SetPicture(*lib_->image(h));
    else if (lib_->ImgGetStatus() != IMG_ERR_CANCELLED) lib_->ImgErrBox(state_.mainWindow);
    lib_->ImgClose(h);
    return;
  }
  if (!prepared_) PreparePreviewPic();
  int w = 0, h = 0;
  if (!CopyImageSized(*lib_, w, h, thumb_, state_.PreviewImage)) {
    shell().MsgBox("Couldn't open " + previewPicture_, MsgButtons::Ok, MsgIcon::Exclamation, "Trel");
    return;
  }
  WindowHandle parent = 0;
  bool result = false;
  QApplication::setOverrideCursor(Qt::WaitCursor);
  PluginFailure why;
  PluginInvoke(*lib_, state_, shell(), window_.programFolder(), path, nullptr, false, parent, result, &why);
  QApplication::restoreOverrideCursor();
  if (!result) {
    // A cancelled dialog is the user's choice; anything else says its cause.
    if (why.status != IMG_OK && why.status != IMG_ERR_CANCELLED && !why.text.empty())
      shell().MsgBox(why.text, MsgButtons::Ok, MsgIcon::Exclamation, "Trel");
    return;
  }
  shownPlugin_ = path;
  ShowPreviewImage(NameOf(path));
  // Without a Picture Editor the run goes to the preview picture; the window
  // says so, or the user looks for a changed picture that isn't there.
  PreviewWindow* shown = previewWindow();
  const QString where = "Ran " + NameOf(path) + " on the preview picture: no picture is open in the Picture Editor";
  shown->setWindowTitle("Preview - " + where);
  shown->picture1()->setAccessibleDescription(where);
  shown->show();
  shown->raise();
}

std::shared_ptr<void> PreviewController::KeepWindowAlive() {
  userRun_ = true;
  timer1_.stop();
  window_.BeginWork();
  // Input is held back only while waiting for the host, so that the run's
  // own messages afterwards can be answered.
  lib_->setWhileWaiting([this] {
    FileCommander* commander = FileCommander::Of(window_);
    const bool wasBusy = commander && commander->busy();
    if (commander) commander->SetBusy(true);
    QCoreApplication::processEvents();
    if (commander) commander->SetBusy(wasBusy);
  });
  return std::shared_ptr<void>(nullptr, [this](void*) {
    lib_->setWhileWaiting(nullptr);
    userRun_ = false;
  });
}

void PreviewController::cmd_About() {
  if (userRun_) return;
  const std::string file = SelectedFile();
  const AboutCheck check = CheckAboutTarget(file);
  if (check.refusal) {
    shell().Report(*check.refusal);
    return;
  }
  if (check.question && shell().MsgBox(check.question->reason, MsgButtons::YesNo, MsgIcon::Exclamation,
                                       check.question->title) != MsgResult::Yes)
    return;
  const auto alive = KeepWindowAlive();
  QApplication::setOverrideCursor(Qt::WaitCursor);
  cmd_AboutDialog(*lib_, state_, shell(), file);
  QApplication::restoreOverrideCursor();
}

// --- Picture Editor ------------------------------------------------------------------

PicView* PreviewController::picView(bool create) {
  if (!picView_ && create) {
    picView_ = new PicView(&window_, &forward_);
    picView_->setWindowFlag(Qt::Window, true);
    // "Auto Add" of the Pictures list takes every picture opened here.
    connect(picView_, &PicView::pictureOpened, this, [this](const QString& path) {
      if (window_.prefs().autoAdd[1] != 1) return;
      const std::string file = path.toLocal8Bit().toStdString();
      for (const std::string& p : window_.prefs().pics)
        if (QString::fromLocal8Bit(p.c_str()).compare(path, Qt::CaseInsensitive) == 0) return;
      window_.settings().Change([&file](Preferences& p) { p.pics.push_back(file); });  // the menu follows
    });
    picView_->SetHelpFolder(QString::fromLocal8Bit((window_.programFolder() + "help/").c_str()));
    picView_->SetApplyFilter([this](const QImage& picture) -> QImage {
      // The selected plugin of the window, or else the filter in hand.
      const std::string selected = SelectedFile();
      const PreparedFilter filter =
          IsPhotoshopFilterName(selected) ? PrepareFilter(selected) : PrepareFilter(window_.filter());
      if (!filter.ok() || (!IsPhotoshopFilterName(selected) && window_.filter().title.empty() &&
                           window_.filter().codeR.empty())) {
        shell().MsgBox(filter.ok() ? "Please select a filter first." : filter.error, MsgButtons::Ok,
                                  MsgIcon::Exclamation, "Picture Editor");
        return {};
      }
      window_.BeginWork();
      return RenderWith(filter, picture, [this] { return window_.EscapeFlag().load(); });
    });
  }
  return picView_;
}

void PreviewController::LoadintoPicView(const QString& path) {
  PicView* view = picView();
  if (!view->OpenFile(path)) return;
  view->show();
  view->raise();
}

QImage PreviewController::RunThroughHost(const std::string& plugin, const QImage& picture, int32_t* status,
                                         std::string* why) {
  return lib_->RunPlugInOnce(window_.programFolder(), plugin, picture, state_.mainWindow, status, why);
}

void PreviewController::CloseImages() {
  if (!lib_) return;
  CloseImage(*lib_, thumb_);
  CloseImage(*lib_, state_.PreviewImage);
  CloseImage(*lib_, state_.PictureImage);
}

}  // namespace trel
