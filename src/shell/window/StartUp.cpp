// The start-up and shutdown orders of the main window. Every step of the start
// runs with its failures passed over: a broken value, a folder that is gone or
// a window position off the screen leave the default and the start goes on.
#include <cstdio>

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QScreen>
#include <QTabWidget>
#include <QWindow>

#include "base/Paths.h"
#include "picture/Module2.h"
#include "settings/Conversions.h"
#include "settings/ListFiles.h"
#include "settings/SettingsStore.h"
#include "shell/pane/FileListModel.h"
#include "shell/window/MainWindow.h"
#include "shell/pane/FilePane.h"
#include "shell/pluginview/PluginViewController.h"
#include "shell/pluginview/PluginViewPage.h"
#include "shell/window/Splash.h"
#include "shell/dialogs/TipDialog.h"

namespace trel {

namespace {

const char* kFolderListFile = "FolderList.log";

// A file of the program folder by its name compared lower-cased, as the names
// of the shipped files were never kept in one case.
QString FindInFolder(const std::string& folder, const QString& name) {
  const QDir dir(QString::fromStdString(folder));
  for (const QString& entry : dir.entryList(QDir::Files))
    if (entry.compare(name, Qt::CaseInsensitive) == 0) return dir.filePath(entry);
  return {};
}

}  // namespace

void MainWindow::SplashStatus(const QString& text) {
  // After a first run has closed the splash, a later stage brings it back.
  if (!splash_) {
    splash_ = new Splash(QString::fromStdString(ProgramTitle(kVersionMajor, kVersionMinor)));
    splash_->show();
  }
  splash_->SetStatus(text);
}

void MainWindow::UnloadSplash() {
  if (!splash_) return;
  splash_->close();
  delete splash_;
}

void MainWindow::Form_Initialize() {
  QApplication::setOverrideCursor(Qt::WaitCursor);
  splash_ = new Splash(QString::fromStdString(ProgramTitle(kVersionMajor, kVersionMinor)));
  splash_->show();
  splash_->repaint();
  QApplication::restoreOverrideCursor();
  pane(0)->SelectTab(FilePane::kFileView);
  pane(1)->SelectTab(FilePane::kFileView);
  // Both panes start in the process's folder; a stored folder replaces it.
  const std::string here = WithTrailingSeparator(QDir::currentPath().toStdString());
  pane(0)->ChangeFolder(here);
  pane(1)->ChangeFolder(here);
}

namespace {

// TREL_START_VIEW=plugin (the run script on the demo collection): the left pane
// starts in Plugin View and, once its scan is done, the first filter is
// selected with the preview on, as a collector would look at a folder.
void StartInPluginView(MainWindow& window) {
  FilePane* left = window.pane(0);
  PluginViewPage* page = left->findChild<PluginViewPage*>();
  if (PluginViewController* controller = window.parts().pluginView; controller && page) {
    QObject::connect(
        controller, &PluginViewController::scanFinished, &window,
        [&window, page](int pane, int) {
          if (pane != 0 || page->filterList()->count() == 0) return;
          page->filterList()->setCurrentRow(0);
          QAction* preview = window.command("mnuPluginPreview");
          if (preview && !preview->isChecked()) preview->trigger();
        },
        Qt::SingleShotConnection);
  }
  left->SelectTab(FilePane::kPluginView);
}

}  // namespace

void MainWindow::Form_Load(const QString& commandLine) {
  setEnabled(false);
  SplashStatus("Checking for FF Editor ...");
  LookforInterface();
  interfaceFile_ = store_.Get(kSectionSettings, "Interface");
  if (interfaceFile_.empty()) interfaceFile_ = "Interfc4.des";
  SelectInterfaceEntry();

  for (FilePane* p : panes_) {
    const QSignalBlocker quiet(p->maskBox());
    p->maskBox()->setCurrentIndex(0);
  }

  const QString photo30 = FindInFolder(programFolder_, "Photo30.dll");
  if (!photo30.isEmpty()) {
    const QString temp = QString::fromStdString(programFolder_ + "temp.dll");
    QFile::remove(temp);
    if (QFile::copy(photo30, temp)) ToggleFFUI(temp.toStdString());
  }

  SplashStatus("Loading Registry Settings ...");
  {
    Preferences loaded;
    LoadPreferences(store_, loaded);
    settings_.Replace(std::move(loaded));
  }
  ApplyPluginTypes(InitialPluginTypeList(programFolder_, [this](const std::string& key) {
    return store_.Get(kSectionSettings, key);
  }));
  if (auto folders = LoadList(programFolder_ + kFolderListFile, false)) {
    folderList_.clear();
    for (const ListEntry& entry : *folders) folderList_.push_back(entry.text);
  }
  for (int list = 0; list < 3; ++list) ListToMenu(list);

  for (int i = 0; i < 2; ++i) {
    FilePane* p = pane(i);
    p->SetSortColumn(LenientInt(store_.Get(kSectionFolders, NumberedKey("Sortkey", i))));
    const std::string direction = store_.Get(kSectionFolders, NumberedKey("SortDirection", i));
    bool& ascending = shared_.columnSortAscending[static_cast<size_t>(p->sortColumn())];
    if (direction.empty()) {
      ascending = true;
    } else if (auto value = ParseBool(direction)) {
      ascending = *value;
    }
  }

  for (int i = 0; i < 2; ++i) {
    FilePane* p = pane(i);
    const std::string pattern = store_.Get(kSectionFolders, NumberedKey("Pattern", i + 1));
    if (!pattern.empty() && pattern[0] == '-') {
      p->SetTypedMask(QString::fromStdString(pattern.substr(1)));
      p->Combo1_KeyPress(13);
    } else {
      const int entry = LenientInt(pattern);
      if (entry >= 0 && entry < kMaskEntryCount) p->Combo1_Click(entry);
    }
  }

  for (int i = 1; i >= 0; --i) {
    activePane_ = i;
    const std::string mode = store_.Get(kSectionSettings, NumberedKey("FileViewMode", i));
    mnuFileViewMode_Click(mode.empty() ? 3 : LenientInt(mode));
  }

  bool skipFill = false;
  for (int i = 1; i >= 0; --i) {
    std::string folder = store_.Get(kSectionFolders, NumberedKey("Folder", i));
    if (folder.empty()) {
      if (i == 0) {
        firstRun_ = true;
        messages_.MsgBox(WelcomeText(), MsgButtons::Ok, MsgIcon::Information, "Trel");
        UnloadSplash();
        QApplication::processEvents();
        for (FilePane* p : panes_) {
          p->Dir1_Change();
        }
        skipFill = true;
      }
      continue;
    }
    folder = WithTrailingSeparator(folder);
    if (IsFolder(folder) && pane(i)->ChangeFolder(folder)) pane(i)->Dir1_Change();
  }

  if (!skipFill) {
    for (int i = 0; i < 2; ++i) {
      const int mode = LenientInt(store_.Get(kSectionSettings, NumberedKey("FileViewMode", i)));
      if (mode < FilePane::kClassic && pane(i)->model()->rowCount() == 0)
        pane(i)->FillDirList(pane(i)->folder());
    }
  }

  SplashStatus("Adjusting Main Window ...");
  setEnabled(true);
  Form_Resize();
  setEnabled(false);
  ApplyPlacement();

  Switchit(0);
  SplashStatus("Finished ...");
  GetIcons();
  AttachMenuBitmaps();
  if (prefs().fullStartUp == 1) {
    SplashStatus("Loading FF Editor ...");
    LoadFFEditorHidden();
  }
  UnloadSplash();
  pane(0)->DrawDirLabel();
  pane(1)->DrawDirLabel();
  setEnabled(true);
  setWindowTitle(QString::fromStdString(ProgramTitle(kVersionMajor, kVersionMinor)));
  show();
  QApplication::processEvents();
  pane(0)->DrawDirLabel();
  pane(1)->DrawDirLabel();

  if (CheckValue(store_.Get(kSectionOptions, "Show Tips at Startup", "1")).value_or(0) == 1) mnuTip_Click();
  if (!commandLine.isEmpty()) StartWithFile(commandLine);
  if (qEnvironmentVariable("TREL_START_VIEW") == "plugin") StartInPluginView(*this);
  for (FilePane* p : panes_) p->SelectTab(p->paneView());
  pane(0)->FocusList();
}

void MainWindow::ApplyPlacement() {
  if (store_.Get(kSectionFolders, "Maximize") == "True") {
    setWindowState(windowState() | Qt::WindowMaximized);
    return;
  }
  const std::string width = store_.Get(kSectionSettings, "Width");
  if (!width.empty()) {
    const int w = LenientInt(width);
    const int h = LenientInt(store_.Get(kSectionSettings, "Height"));
    // A size that can't be a window keeps the design size.
    if (w > 0 && h > 0 && w < 100000 && h < 100000) resize(w, h);
  }
  const QScreen* screen = QGuiApplication::primaryScreen();
  const QRect area = screen ? screen->geometry() : QRect(0, 0, 1024, 768);
  const std::string lastX = store_.Get(kSectionFolders, "LastX");
  if (!lastX.empty()) {
    const int x = LenientInt(lastX);
    const int y = LenientInt(store_.Get(kSectionFolders, "LastY"));
    if (PositionOnScreen(x, y, area.width(), area.height())) move(x, y);
  } else {
    move(static_cast<int>((area.width() - frameGeometry().width()) / 2.0),
         static_cast<int>((area.height() - frameGeometry().height()) / 2.0));
  }
}

void MainWindow::StartWithFile(const QString& commandLine) {
  const std::string path = commandLine.toStdString();
  // A folder on the command line opens in the left pane, with or without its
  // trailing separator.
  if (IsFolder(path)) {
    FilePane* p = pane(0);
    if (p->ChangeFolder(WithTrailingSeparator(path))) {
      QDir::setCurrent(QString::fromStdString(p->folder()));
      p->DrawDirLabel();
    }
    return;
  }
  const std::string name = ToLower(FileNameOf(path));
  const std::string folder = FolderOf(path);
  FilePane* p = pane(0);
  if (!folder.empty() && p->ChangeFolder(folder)) {
    RefreshFile1(0);
    p->DrawDirLabel();  // the caption was drawn for the stored folder before this
  }
  p->Combo1_Click(0);
  p->SelectListItem(QString::fromStdString(name));
  if (p->SelectInFile1(QString::fromStdString(name))) {
    QApplication::setOverrideCursor(Qt::WaitCursor);
    File1_DblClick(0);
    QApplication::restoreOverrideCursor();
  }
}

void MainWindow::Form_Unload() {
  if (unloaded_) return;
  unloaded_ = true;
  for (int i = 0; i < 2; ++i) {
    const int column = pane(i)->sortColumn();
    store_.Save(kSectionFolders, NumberedKey("Sortkey", i), std::to_string(column));
    store_.Save(kSectionFolders, NumberedKey("SortDirection", i),
                BoolText(shared_.columnSortAscending[static_cast<size_t>(column)]));
  }
  for (int i = 0; i < 2; ++i) store_.Save(kSectionFolders, NumberedKey("Folder", i), pane(i)->folder());
  for (int i = 0; i < 2; ++i) {
    const int entry = pane(i)->maskEntry();
    store_.Save(kSectionFolders, NumberedKey("Pattern", i + 1),
                entry >= 0 ? std::to_string(entry) : "-" + pane(i)->maskText().toStdString());
  }
  for (size_t i = 0; i < folderList_.size(); ++i)
    store_.Save(kSectionFolders, std::to_string(i), folderList_[i]);
  for (int i = 0; i < 2; ++i)
    store_.Save(kSectionSettings, NumberedKey("FileViewMode", i), std::to_string(pane(i)->DetermineFileViewMode()));
  if (isMaximized()) {
    store_.Save(kSectionFolders, "Maximize", "True");
  } else if (isMinimized()) {
    store_.Save(kSectionFolders, "Maximize", "False");
  } else {
    store_.Save(kSectionSettings, "Height", std::to_string(height()));
    store_.Save(kSectionSettings, "Width", std::to_string(width()));
    store_.Save(kSectionFolders, "Maximize", "False");
  }
  store_.Save(kSectionFolders, "LastX", std::to_string(pos().x()));
  store_.Save(kSectionFolders, "LastY", std::to_string(pos().y()));
  if (!store_.Flush())
    std::fprintf(stderr, "Trel: the settings could not be written to %s\n", store_.path().c_str());
  ClosePreviewImages();
  // The preferences keep their lists current even when never confirmed.
  std::vector<ListEntry> folders;
  for (const std::string& f : folderList_) folders.push_back({f, false});
  SaveList(programFolder_ + kFolderListFile, folders, false);
  UnloadSplash();
}

// The artwork steps: icons of the toolbar and bitmaps of the menu entries come
// with the style; the toolbar and the command row share one line by layout.
void MainWindow::GetIcons() {}
void MainWindow::AttachMenuBitmaps() {}

}  // namespace trel
