#include <QAbstractButton>
#include <QAction>
#include <QPushButton>
#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QImageReader>
#include <QMenu>
#include <QTime>
#include <QTimer>
#include <cstdlib>
#include <filesystem>

#include "base/Paths.h"
#include "base/PluginKinds.h"
#include "host/ContactSheet.h"
#include "host/PreviewPipeline.h"
#include "picture/Module2.h"
#include "picture/PicView.h"
#include "base/FolderIdentity.h"
#include "shell/dialogs/BrowseDialog.h"
#include "shell/window/CommandGroups.h"
#include "shell/pane/FilePane.h"
#include "shell/window/MainWindow.h"
#include "shell/preview/BatchJob.h"
#include "shell/commander/FileCommander.h"
#include "shell/preview/PreviewController.h"
#include "shell/preview/PreviewWindow.h"
#include "shell/pane/Selection.h"

namespace trel {

namespace {

bool IsPicture(const std::string& path) {
  return !QImageReader::imageFormat(QString::fromLocal8Bit(path.c_str())).isEmpty();
}

std::vector<std::string> SelectedPaths(MainWindow& window) {
  const SelectedItems sel = GetSelectedItems(*window.pane(window.ActivePane()));
  std::vector<std::string> paths;
  for (const std::string& item : sel.items)
    paths.push_back(QFileInfo(QString::fromLocal8Bit(item.c_str())).isAbsolute() ? item : sel.folder + item);
  return paths;
}


}  // namespace

void InstallPreviewCommands(MainWindow& window) {
  auto* preview = new PreviewController(window);

  QAction* tb = window.previewToggle();
  if (tb) QObject::connect(tb, &QAction::triggered, preview, &PreviewController::tbPreview_Click);
  if (QAction* menu = window.command("mnuPluginPreview")) {
    menu->setCheckable(true);
    // The menu entry and the toolbar button switch together, then act alike.
    QObject::connect(menu, &QAction::triggered, preview, [preview, tb](bool on) {
      if (tb) tb->setChecked(on);
      preview->tbPreview_Click(on);
    });
    window.SetCommandAvailable("mnuPluginPreview", true);
  }
  // The preview's own commands follow it in the View menu.
  QObject::connect(window.command("mnuUpdateCache"), &QAction::triggered, preview,
                   &PreviewController::mnuUpdateCache_Click);
  QObject::connect(window.command("mnuRandomize"), &QAction::triggered, preview,
                   &PreviewController::mnuRandomize_Click);
  QObject::connect(window.command("mnuSavePreview"), &QAction::triggered, preview,
                   [preview] { preview->cmd_SavePreview({}); });
  QObject::connect(window.command("mnuClearCache"), &QAction::triggered, preview,
                   [preview] { preview->ClearCache(true); });
  for (const char* name : {"mnuUpdateCache", "mnuRandomize", "mnuSavePreview", "mnuClearCache"})
    window.SetCommandAvailable(name, true);

  // The Pictures menu: a fixed entry for the shipped picture, then the list.
  if (QMenu* pictures = window.picturesMenu()) {
    QAction* test = pictures->addAction(QString::fromLocal8Bit((window.programFolder() + "Test.bmp").c_str()));
    test->setObjectName("mnuPicturesTest");
    test->setCheckable(true);
    QObject::connect(test, &QAction::triggered, preview, [preview, test] { preview->mnuPictures_Click(test->text()); });
    pictures->addSeparator();
    QObject::connect(pictures, &QMenu::aboutToShow, preview, [preview, pictures] {
      for (QAction* entry : pictures->actions()) {
        if (!entry->objectName().startsWith("mnuPictures_") || entry->property("trelHooked").toBool()) continue;
        entry->setProperty("trelHooked", true);
        entry->setEnabled(true);
        entry->setCheckable(true);
        QObject::connect(entry, &QAction::triggered, preview,
                         [preview, entry] { preview->mnuPictures_Click(entry->text()); });
      }
      const QString current = QString::fromLocal8Bit(preview->PreviewPicture().c_str());
      for (QAction* entry : pictures->actions())
        if (entry->objectName().startsWith("mnuPictures"))
          entry->setChecked(entry->text().compare(current, Qt::CaseInsensitive) == 0);
    });
  }

  const struct {
    const char* name;
    void (PreviewController::*run)();
  } commands[] = {
      {"mnuInvoke", &PreviewController::cmd_Invoke},
      {"mnuPluginAbout", &PreviewController::cmd_About},
      {"mnuBrowser", &PreviewController::mnuBrowser_Click},
      {"mnuBatchProcessing", &PreviewController::mnuBatchProcessing_Click},
  };
  for (const auto& c : commands) {
    QAction* action = window.command(c.name);
    QObject::connect(action, &QAction::triggered, preview, c.run);
    window.SetCommandAvailable(c.name, true);
  }
  // The buttons of the command row that carry these commands.
  for (const auto& [index, name] : {std::pair{1, "mnuBrowser"}, std::pair{2, "mnuBatchProcessing"}}) {
    QAbstractButton* b = window.commandButton(index);
    QAction* action = window.command(name);
    QObject::connect(b, &QAbstractButton::clicked, action, &QAction::trigger);
    QObject::connect(action, &QAction::changed, b, [b, action] { b->setEnabled(action->isEnabled()); });
    b->setEnabled(action->isEnabled());
  }

  // Switching views may bring other lists; their selections drive the preview too.
  for (int i = 0; i < 2; ++i)
    if (FilePane* pane = window.pane(i))
      QObject::connect(pane, &FilePane::viewChanged, preview, [preview] { preview->HookSelections(); });
  preview->HookSelections();

  // "Load all components on startup" prepares the picture before it is needed.
  QTimer::singleShot(0, preview, [preview, &window] {
    if (window.prefs().fullStartUp == 1 && preview->PreviewPicture().empty()) preview->PreparePreviewPic();
  });

  // For unattended runs under a virtual display: TREL_PREVIEW_PLUGIN=FILE takes
  // FILE as the selection and switches the preview on as the button does;
  // TREL_PREVIEW_SHOT=FILE.bmp then keeps the preview's pixels and a picture
  // of the Preview window beside it (FILE.bmp.png).
  if (const char* plugin = std::getenv("TREL_PREVIEW_PLUGIN"); plugin && *plugin) {
    QTimer::singleShot(0, preview, [preview, tb, path = std::string(plugin)] {
      preview->SetSelectedFileProvider([path] { return path; });
      if (tb) tb->trigger();
      if (const char* shot = std::getenv("TREL_PREVIEW_SHOT"); shot && *shot) {
        PreviewWindow* w = preview->previewWindow();
        w->shown().save(QString::fromLocal8Bit(shot));
        QTimer::singleShot(300, w, [w, file = QString::fromLocal8Bit(shot) + ".png"] { w->grab().save(file, "PNG"); });
      }
    });
  }
}

// The preview keeps two images open; closing the window closes them.
void MainWindow::ClosePreviewImages() {
  if (PreviewController* preview = PreviewController::Of(*this)) preview->CloseImages();
}

void PreviewController::mnuBrowser_Click() {
  std::vector<std::string> plugins;
  for (const std::string& p : SelectedPaths(window_))
    if (IsPhotoshopFilterName(p)) plugins.push_back(p);
  if (plugins.empty()) {
    shell().MsgBox("Please select one or more plugins to browse.", MsgButtons::Ok,
                              MsgIcon::Exclamation, "Trel");
    return;
  }
  if (!prepared_) PreparePreviewPic();
  const QImage* thumb = lib_->image(thumb_);
  if (!thumb) {
    shell().MsgBox("Couldn't open " + previewPicture_, MsgButtons::Ok, MsgIcon::Exclamation, "Trel");
    return;
  }
  ContactSheetOptions options;
  options.useCache = cacheEnabled();
  options.programFolder = window_.programFolder();
  options.quality = jpgQuality();
  auto* dialog = new BrowseDialog(std::move(plugins), *thumb, options, &window_);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  // What the engine can't run is tried through the host, on this thread.
  // Each tile is a run of its own; the dialog's Esc ends the remaining ones.
  dialog->SetFallback([this, image = *thumb](const std::string& plugin, std::string& why) {
    window_.BeginWork();
    return RunThroughHost(plugin, image, nullptr, &why);
  });
  connect(dialog, &BrowseDialog::pluginActivated, this, [this](const QString& path) {
    PreviewPlugin(path.toLocal8Bit().toStdString());
    previewWindow()->show();
    previewWindow()->raise();
  });
  dialog->show();
  window_.BeginWork();  // an earlier Esc must not stop the host runs
  dialog->Start();
}

void PreviewController::mnuBatchProcessing_Click() {
  const std::vector<std::string> selected = SelectedPaths(window_);
  std::string plugin;
  std::vector<std::string> pictures;
  for (const std::string& p : selected) {
    if (IsPhotoshopFilterName(p)) {
      if (plugin.empty()) plugin = p;
    } else if (IsPicture(p)) {
      pictures.push_back(p);
    }
  }
  if (plugin.empty()) plugin = SelectedFile();
  if (!IsPhotoshopFilterName(plugin)) {
    shell().MsgBox("Please select the plugin to apply.", MsgButtons::Ok, MsgIcon::Exclamation, "Trel");
    return;
  }
  FilePane* passive = window_.pane(1 - window_.ActivePane());
  std::string target = WithTrailingSeparator(passive->folder());
  if (pictures.empty()) {
    // Every picture of the passive pane's folder.
    const QDir dir(QString::fromLocal8Bit(target.c_str()));
    for (const QFileInfo& info : dir.entryInfoList(QDir::Files, QDir::Name))
      if (IsPicture(info.filePath().toLocal8Bit().toStdString()))
        pictures.push_back(info.filePath().toLocal8Bit().toStdString());
  }
  if (pictures.empty()) {
    shell().MsgBox("There are no pictures to process.", MsgButtons::Ok, MsgIcon::Exclamation, "Trel");
    return;
  }
  // Pictures that lie in the target folder would be written over themselves:
  // their results go into a folder named after the plugin, beside them.
  for (const std::string& picture : pictures) {
    if (!SameFolder(FolderOf(picture), target)) continue;
    std::string name = FileNameOf(plugin);
    if (const auto dot = name.rfind('.'); dot != std::string::npos && dot > 0) name.resize(dot);
    target = WithTrailingSeparator(target + name);
    std::error_code ec;
    std::filesystem::create_directories(target, ec);
    if (ec) {
      shell().MsgBox(target + " couldn't be created: " + ec.message(), MsgButtons::Ok, MsgIcon::Exclamation,
                     "Batch");
      return;
    }
    break;
  }
  RunBatch(plugin, pictures, target);
}

void PreviewController::RunBatch(const std::string& plugin, const std::vector<std::string>& pictures,
                                 const std::string& targetFolder) {
  if (batch_) return;
  window_.BeginWork();  // the plugin's check is part of this run already
  FileCommander* files = FileCommander::Of(window_);
  files->SetBusy(true);
  const double start = QTime::currentTime().msecsSinceStartOfDay() / 1000.0;
  batch_ = new BatchJob({plugin, pictures, targetFolder, window_.programFolder(), state_.mainWindow}, shell(),
                        window_.EscapeFlag(), this);
  connect(batch_, &BatchJob::progressed, this,
          [this, start](int done, int total) { window_.StatusDisplay(done, total, start); });
  connect(batch_, &BatchJob::finished, this, [this, files, targetFolder] {
    BatchJob* job = std::exchange(batch_, nullptr);
    job->deleteLater();
    files->SetBusy(false);
    window_.StatusDisplayClear();
    if (job->refused()) return;  // said already
    lastBatch_ = job->result();
    window_.RefreshBoth();
    const BatchResult& result = lastBatch_;
    std::string report = std::to_string(result.written) + " picture(s) written to " + targetFolder;
    if (result.skipped) report += "\n" + std::to_string(result.skipped) + " skipped";
    if (result.stopped) report += "\nStopped.";
    for (size_t i = 0; i < result.errors.size() && i < 10; ++i) report += "\n" + result.errors[i];
    shell().MsgBox(report, MsgButtons::Ok, result.errors.empty() ? MsgIcon::Information : MsgIcon::Exclamation,
                   "Batch");
  });
  batch_->Start();
}

}  // namespace trel
