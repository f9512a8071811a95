#include "shell/window/MainWindow.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QToolBar>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>

#include "filter/FFFilter.h"
#include "filter/FilterEnv.h"
#include "base/Paths.h"
#include "filter/TextFormats.h"
#include "picture/Module2.h"
#include "settings/Conversions.h"
#include "settings/FolderHistory.h"
#include "base/FolderIdentity.h"
#include "settings/SettingsStore.h"
#include "shell/pane/FileListModel.h"
#include "shell/pane/FileListView.h"
#include "shell/pluginview/PluginViewController.h"
#include "shell/window/Splash.h"
#include "shell/window/StatusArea.h"
#include "shell/dialogs/TipDialog.h"

namespace trel {

namespace {

// Which commands the views allow; Switchit applies it. A command not listed
// here is enabled in every view once it is built.
struct ViewRule {
  const char* name;
  std::array<bool, 3> views;  // File View, Plugin View, FFL View
};
constexpr ViewRule kViewRules[] = {
    {"mnuBrowser", {true, true, false}},    {"mnuBatchProcessing", {true, true, false}},
    {"mnuEnable", {true, true, false}},     {"mnuChangeCat", {false, true, false}},
    {"mnuRename", {true, false, false}},    {"mnuFilecopy", {true, true, false}},
    {"mnuMove", {true, true, false}},       {"mnuKill2", {true, true, false}},
    {"mnuFileInformation", {true, true, false}}, {"mnuZipit", {true, false, false}},
    {"mnuUnzipit", {true, false, false}},   {"mnuUnzipInstall", {true, false, false}},
    {"mnuPlugInfo", {true, true, false}},   {"mnuPluginAbout", {true, true, false}},
    {"mnuInvoke", {true, true, false}},     {"mnuMakeDir", {true, false, false}},
};
// The command buttons follow the menu entries they stand for.
constexpr const char* kButtonCommands[6] = {"cmdConvert", "mnuBrowser", "mnuBatchProcessing",
                                            "mnuEnable", "mnuChangeCat", "mnuCreateLibrary"};
constexpr const char* kButtonCaptions[6] = {"&Convert", "&Browse", "Ba&tch", "En/&Disable", "C&hange Cat",
                                            "Create FF&L"};

bool AllowedInView(const QString& name, int view) {
  for (const ViewRule& rule : kViewRules)
    if (name == rule.name) return view >= 1 && view <= 3 && rule.views[static_cast<size_t>(view - 1)];
  return true;
}

}  // namespace

MainWindow::MainWindow(SettingsStore& store, std::string programFolder, QWidget* parent)
    : QMainWindow(parent), store_(store), programFolder_(std::move(programFolder)), messages_(this) {
  setObjectName("Form1");
  shared_.prefs = &settings_.values();
  leftButtonDown_ = [] { return (QGuiApplication::mouseButtons() & Qt::LeftButton) != 0; };
  shellOpener_ = [](const QString& path) { return QDesktopServices::openUrl(QUrl::fromLocalFile(path)); };
  txtSourceTest_ = [](const QString& path) {
    // A text file is a filter source when the text reader accepts it.
    FFFilter probe;
    FilterEnv env;
    const std::string full = path.toStdString();
    return ReadTXT(probe, FolderOf(full), FileNameOf(full), false, false, env);
  };
  timer2_.setObjectName("Timer2");
  timer2_.setInterval(50);
  connect(&timer2_, &QTimer::timeout, this, [this] {
    if (leftButtonDown_()) return;
    timer2_.stop();
    Form_Resize();
  });
  BuildCentral();
  BuildMenus();
  InstallCommandGroups();
  setWindowTitle(QString::fromStdString(ProgramTitle(kVersionMajor, kVersionMinor)));
  resize(960, 640);  // the design size
}

MainWindow::~MainWindow() {
  // A scan still running reads the window's Esc flag: it stops before the
  // window's members go.
  if (parts_.pluginView) parts_.pluginView->StopScans();
  if (splash_) delete splash_;
}

void MainWindow::BuildCentral() {
  host_ = new QWidget(this);
  host_->setObjectName("Frame1");
  host_->installEventFilter(this);
  setCentralWidget(host_);
  content_ = new QWidget(host_);
  content_->setObjectName("Content");
  auto* column = new QVBoxLayout(content_);
  column->setContentsMargins(4, 4, 4, 4);
  column->setSpacing(4);

  auto* panesRow = new QHBoxLayout;
  for (int i = 0; i < 2; ++i) {
    panes_[static_cast<size_t>(i)] = new FilePane(i, shared_, content_);
    // Equal stretch: the panes keep their share of the width at any size.
    panesRow->addWidget(panes_[static_cast<size_t>(i)], 1);
    ConnectPane(panes_[static_cast<size_t>(i)]);
  }
  column->addLayout(panesRow, 1);

  auto* commandRow = new QHBoxLayout;
  toolbar_ = new QToolBar(content_);
  toolbar_->setObjectName("Toolbar1");
  toolbar_->setIconSize(QSize(16, 16));
  QAction* preview = toolbar_->addAction(style()->standardIcon(QStyle::SP_FileDialogContentsView), "Preview");
  preview->setObjectName("tbPreview");
  previewToggle_ = preview;
  preview->setCheckable(true);
  preview->setToolTip("Preview the selected plugin or picture");
  commandRow->addWidget(toolbar_, 0, Qt::AlignVCenter);
  commandRow->addStretch(1);
  for (int i = 0; i < 6; ++i) {
    auto* button = new QPushButton(kButtonCaptions[i], content_);
    button->setObjectName(QString("Command1_%1").arg(i));
    button->setEnabled(false);
    commandButtons_[static_cast<size_t>(i)] = button;
    commandRow->addWidget(button, 0, Qt::AlignVCenter);
  }
  column->addLayout(commandRow);

  statusArea_ = new StatusArea(content_);
  auto* statusRow = new QHBoxLayout(statusArea_);
  statusRow->setContentsMargins(2, 0, 2, 0);
  label3_ = new QLabel(statusArea_);
  label3_->setObjectName("Label3");
  label4_ = new QLabel(statusArea_);
  label4_->setObjectName("Label4");
  label3_->setMinimumWidth(120);
  statusRow->addWidget(label3_);
  statusRow->addStretch(1);
  statusRow->addWidget(label4_);
  statusArea_->setMinimumHeight(label3_->sizeHint().height() + 2);
  column->addWidget(statusArea_);
  content_->setGeometry(host_->rect());
}

QAction* MainWindow::AddCommand(QMenu* menu, const char* objectName, const QString& caption, bool available,
                                QList<QKeySequence> keys) {
  QAction* action = menu->addAction(caption);
  action->setObjectName(objectName);
  action->setShortcuts(keys);
  action->setShortcutContext(Qt::WindowShortcut);
  action->setEnabled(available);
  commands_.insert(objectName, action);
  built_.insert(objectName, available);
  return action;
}

QAction* MainWindow::command(const QString& objectName) const {
  QAction* action = commands_.value(objectName);
  if (!action) qFatal("The window has no command named %s", qPrintable(objectName));
  return action;
}

void MainWindow::AddToCommands(QAction* action) { commands_.insert(action->objectName(), action); }

void MainWindow::SetCommandAvailable(const QString& objectName, bool available) {
  built_.insert(objectName, available);
  const bool allowed = available && AllowedInView(objectName, pane(activePane_)->paneView());
  if (QAction* action = commands_.value(objectName)) action->setEnabled(allowed);
  for (size_t i = 0; i < commandButtons_.size(); ++i)
    if (objectName == kButtonCommands[i] && commandButtons_[i]) commandButtons_[i]->setEnabled(allowed);
}

bool MainWindow::IsCommandAllowed(const QString& objectName) const {
  return built_.value(objectName) && AllowedInView(objectName, pane(activePane_)->paneView());
}

void MainWindow::BuildMenus() {
  QMenuBar* bar = menuBar();
  QMenu* file = bar->addMenu("&File");
  file->setObjectName("mnuFile");
  AddCommand(file, "mnuOptions", "Preferences...", false);
  AddCommand(file, "mnuClearTmp", "Gain Harddisc Space", false);
  file->addSeparator();
  picturesMenu_ = file->addMenu("&Pictures");
  picturesMenu_->setObjectName("mnuPicturesMenu");
  file->addSeparator();
  QAction* exit = AddCommand(file, "mnuExiting", "E&xit", true);
  connect(exit, &QAction::triggered, this, &QWidget::close);

  QMenu* commands = bar->addMenu("Co&mmands");
  commands->setObjectName("mnuCommands");
  commandsMenu_ = commands;
  AddCommand(commands, "mnuBrowser", "&Browse Plugins", false, {QKeySequence("Ctrl+Shift+B")});
  AddCommand(commands, "mnuBatchProcessing", "Ba&tch Processing", false, {QKeySequence("Ctrl+Shift+T")});
  AddCommand(commands, "mnuCreateLibrary", "Create FF&L", false);
  commands->addSeparator();
  AddCommand(commands, "mnuEnable", "En/&Disable", false, {Qt::CTRL | Qt::Key_D});
  AddCommand(commands, "mnuChangeCat", "C&hange Category", false);
  AddCommand(commands, "mnuPlugInfo", "Plugin &Information", false);
  AddCommand(commands, "mnuPlugInList", "Plugin &List...", false, {QKeySequence("Ctrl+Shift+L")});
  AddCommand(commands, "mnuPluginAbout", "Plugin &About", false, {QKeySequence("Ctrl+Shift+A")});
  AddCommand(commands, "mnuInvoke", "In&voke Plugin", false, {QKeySequence("Ctrl+Shift+I")});
  commands->addSeparator();
  AddCommand(commands, "mnuFilecopy", "&Copy", false, {Qt::Key_F5});
  AddCommand(commands, "mnuMove", "&Move", false, {Qt::Key_F6});
  AddCommand(commands, "mnuRename", "&Rename", false, {Qt::SHIFT | Qt::Key_F6});
  AddCommand(commands, "mnuDelete", "De&lete", false, {Qt::Key_F8, Qt::Key_Delete});
  AddCommand(commands, "mnuKill2", "&Kill", false, {Qt::SHIFT | Qt::Key_Delete});
  AddCommand(commands, "mnuFileInformation", "Properties", false, {Qt::Key_F3});
  commands->addSeparator();
  AddCommand(commands, "mnuMakeDir", "Create &Folder", false, {Qt::Key_F7});
  AddCommand(commands, "mnuRenameFolder", "Rename Folder", false);
  AddCommand(commands, "mnuSearch", "Find...", false);
  AddCommand(commands, "mnuSelectAll", "Select &All", false, {Qt::CTRL | Qt::Key_A});
  AddCommand(commands, "mnuToggleselect", "&Toggle Selection", false, {Qt::CTRL | Qt::Key_T});
  commands->addSeparator();
  AddCommand(commands, "mnuUnzipit", "Unzip", false);
  AddCommand(commands, "mnuUnzipInstall", "Unzip and Run", false);
  AddCommand(commands, "mnuZipit", "Zip...", false);

  QMenu* zip = bar->addMenu("&Zip");
  zip->setObjectName("mnuZip");
  AddCommand(zip, "mnuViewZip", "View Zip", false);
  AddCommand(zip, "mnuUnzip", "Unzip", false);
  AddCommand(zip, "mnuAddtoZip", "Add to Zip...", false);
  AddCommand(zip, "mnuTestZip", "Test Zip", false);
  AddCommand(zip, "mnuRepairZip", "Repair Zip", false);
  AddCommand(zip, "mnuRescueZip", "Rescue Zip", false);

  QMenu* view = bar->addMenu("&View");
  view->setObjectName("mnuView");
  viewMenu_ = view;
  viewModeMenu_ = view->addMenu("File View &Mode");
  viewModeMenu_->setObjectName("mnuFileViewMenu");
  auto* group = new QActionGroup(this);
  const char* modes[5] = {"Large Icons", "Small Icons", "List", "Details", "Classic"};
  for (int i = 0; i < 5; ++i) {
    QAction* action = viewModeMenu_->addAction(modes[i]);
    action->setObjectName(QString("mnuFileViewMode_%1").arg(i));
    action->setCheckable(true);
    group->addAction(action);
    connect(action, &QAction::triggered, this, [this, i] { mnuFileViewMode_Click(i); });
    viewModeActions_[static_cast<size_t>(i)] = action;
  }
  // The three views of the active pane, reachable without the mouse.
  const char* views[3] = {"&File View", "&Plugin View", "FF&L View"};
  for (int v = 1; v <= 3; ++v) {
    QAction* entry = AddCommand(view, QString("mnuPaneView_%1").arg(v).toLatin1().constData(), views[v - 1], true);
    entry->setShortcut(QKeySequence(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_0 + v)));
    connect(entry, &QAction::triggered, this, [this, v] { pane(activePane_)->SelectTab(v); });
  }
  view->addSeparator();
  QAction* refresh = AddCommand(view, "mnuRefresh", "&Refresh", true);
  // F5 copies, as in two-pane file managers; refresh is Ctrl+R.
  refresh->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_R));
  connect(refresh, &QAction::triggered, this, &MainWindow::mnuRefresh_Click);
  view->addSeparator();
  AddCommand(view, "mnuPluginPreview", "Plugin &Preview", false, {QKeySequence("Ctrl+Shift+P")});
  AddCommand(view, "mnuUpdateCache", "&Update Cache", false, {QKeySequence("Ctrl+Shift+U")});
  AddCommand(view, "mnuRandomize", "Rando&mize", false, {QKeySequence("Ctrl+Shift+R")});
  AddCommand(view, "mnuSavePreview", "&Save Preview...", false, {QKeySequence("Ctrl+Shift+S")});
  AddCommand(view, "mnuClearCache", "Clear Cac&he...", false);
  AddCommand(view, "mnuFilterDownload", "Filter &Download...", false);
  AddCommand(view, "mnuPicView", "Picture &Editor", false, {QKeySequence("Ctrl+Shift+E")});
  AddCommand(view, "mnuFFE", "FF &Editor", false, {QKeySequence("Ctrl+E")});

  folderMenu_ = bar->addMenu("F&olders");
  folderMenu_->setObjectName("mnuFolders");
  AddCommand(folderMenu_, "mnuEditFolders", "Edit Folders...", false);
  folderMenu_->addSeparator();

  appsMenu_ = bar->addMenu("&Apps");
  appsMenu_->setObjectName("mnuAppsMenu");
  AddCommand(appsMenu_, "mnuEditApps", "Edit Apps...", false);
  appsMenu_->addSeparator();

  QMenu* help = bar->addMenu("Hel&p");
  help->setObjectName("mnuHelpMenu");
  helpMenu_ = help;
  QAction* helpEntry = AddCommand(help, "mnuHelp", "&Help", false);
  helpEntry->setShortcut(QKeySequence(Qt::Key_F1));
  QAction* tip = AddCommand(help, "mnuTip", "&Tip of the Day", true);
  connect(tip, &QAction::triggered, this, &MainWindow::mnuTip_Click);
  help->addSeparator();
  QAction* about = AddCommand(help, "mnuAbout", "&About Trel...", true);
  connect(about, &QAction::triggered, this, &MainWindow::ShowAbout);
}

void MainWindow::ConnectPane(FilePane* p) {
  connect(p, &FilePane::activated, this, [this](int index) {
    if (index != activePane_) Switchit(index);
  });
  connect(p, &FilePane::viewChanged, this, &MainWindow::SSTab1_Click);
  connect(p, &FilePane::fileDblClicked, this, &MainWindow::File1_DblClick);
  connect(p, &FilePane::fileInformationRequested, this, [this](int index) {
    if (index != activePane_) Switchit(index);
    mnuFileInformation_Click();
  });
  connect(p, &FilePane::folderChanged, this, &MainWindow::FolderVisited);
  connect(p, &FilePane::synchronizeRequested, this, &MainWindow::Image4_Click);
  connect(p, &FilePane::fixedFolderRequested, this, &MainWindow::Image6_Click);
  connect(p, &FilePane::viewModeMenuRequested, this, &MainWindow::ShowViewModeMenu);
  connect(p, &FilePane::folderMenuRequested, this, [this](int index, QPoint globalPos) {
    if (index != activePane_) Switchit(index);
    folderMenu_->popup(globalPos);
  });
}

void MainWindow::SSTab1_Click(int index) {
  Switchit(index);
  if (pane(index)->paneView() == FilePane::kPluginView && !pluginViewFresh_[static_cast<size_t>(index & 1)])
    ScanForPluginView(index);
}

void MainWindow::Switchit(int index) {
  activePane_ = index & 1;
  FilePane* active = pane(activePane_);
  if (!active->folder().empty()) QDir::setCurrent(QString::fromStdString(active->folder()));
  pane(0)->SetActiveLook(activePane_ == 0);
  pane(1)->SetActiveLook(activePane_ == 1);
  const int view = active->paneView();
  for (auto it = commands_.cbegin(); it != commands_.cend(); ++it)
    it.value()->setEnabled(built_.value(it.key()) && AllowedInView(it.key(), view));
  for (int i = 0; i < 6; ++i) {
    const QString name = kButtonCommands[i];
    commandButtons_[static_cast<size_t>(i)]->setEnabled(built_.value(name) && AllowedInView(name, view));
  }
}

void MainWindow::RefreshFile1(int index) {
  FilePane* p = pane(index);
  FilePane* twin = pane(index ^ 1);
  p->Refresh(true);
  if (SameFolder(twin->folder(), p->folder())) twin->Refresh(true);
}

void MainWindow::RefreshFile1C(int index) { RefreshFile1(index ^ 1); }

void MainWindow::RefreshBoth() {
  pane(0)->Refresh(true);
  pane(1)->Refresh(true);
}

void MainWindow::Image4_Click(int index) {
  FilePane* from = pane(index);
  FilePane* other = pane(index ^ 1);
  if (!other->ChangeFolder(from->folder())) return;
  QDir::setCurrent(QString::fromStdString(from->folder()));
  other->DrawDirLabel();
  RefreshFile1C(index);
}

void MainWindow::Image6_Click(int index) {
  // A fixed folder by design: the desktop of the user.
  const QString desktop = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
  FilePane* p = pane(index);
  if (!p->ChangeFolder(WithTrailingSeparator(desktop.toStdString()))) return;
  QDir::setCurrent(desktop);
  p->DrawDirLabel();
  RefreshFile1(index);
}

void MainWindow::mnuFileViewMode_Click(int mode) {
  pane(activePane_)->SetViewMode(mode);
}

void MainWindow::mnuRefresh_Click() {
  pane(activePane_)->Refresh(true);
}

void MainWindow::ShowViewModeMenu(int index, QPoint globalPos) {
  if (index != activePane_) Switchit(index);
  const int mode = pane(index)->DetermineFileViewMode();
  for (int i = 0; i < 5; ++i) viewModeActions_[static_cast<size_t>(i)]->setChecked(i == mode);
  viewModeMenu_->popup(globalPos);
}

void MainWindow::File1_DblClick(int index) {
  FilePane* p = pane(index);
  const QString name = p->File1Current();
  if (name.isEmpty()) return;
  QDir::setCurrent(QString::fromStdString(p->folder()));
  const QString path = QString::fromStdString(p->folder()) + name;
  QApplication::setOverrideCursor(Qt::WaitCursor);
  DblClickRoute route = RouteOfFile(name.toStdString(), pluginTypeExtensions_);
  if (route == DblClickRoute::TxtSource) {
    route = txtSourceTest_ && txtSourceTest_(path) ? DblClickRoute::FFEditor
                                                   : RouteOfFile(name.toStdString(), pluginTypeExtensions_, true);
  }
  QApplication::restoreOverrideCursor();
  switch (route) {
    case DblClickRoute::PicView: LoadintoPicView(path); break;
    case DblClickRoute::ConvertFFL: ConvertFFL(path); break;
    case DblClickRoute::FFEditor: LoadintoFFEditor(path); break;
    case DblClickRoute::PluginInformation: cmd_PlugInInformation(path); break;
    case DblClickRoute::TxtSource:
    case DblClickRoute::Shell: ShellOpen(path); break;
  }
}

void MainWindow::ShellOpen(const QString& path) {
  emit routeTaken(RouteName(DblClickRoute::Shell), path);
  if (path.endsWith(".exe", Qt::CaseInsensitive) && prefs().autoAdd[2] == 1) {
    const std::string app = path.toStdString();
    const std::vector<std::string>& apps = prefs().apps;
    if (std::find(apps.begin(), apps.end(), app) == apps.end())
      settings_.Change([&app](Preferences& p) { p.apps.push_back(app); });  // the Apps menu follows
  }
  if (shellOpener_ && !shellOpener_(path)) {
    messages_.MsgBox("No application is set to open\n" + path.toStdString(), MsgButtons::Ok,
                     MsgIcon::Exclamation, "Trel");
  }
}

void MainWindow::ApplyPluginTypes(const PluginTypeList& rows) {
  pluginTypeList_ = rows;
  pluginTypeTable_ = {};
  GetPlugTypes(pluginTypeList_, pluginTypeTable_);
  shared_.pluginTypePattern = pluginTypeTable_.PluginTypePattern;
  pluginTypeExtensions_.clear();
  for (const PluginType& type : pluginTypeTable_.PluginTypes)
    if (!type.empty()) pluginTypeExtensions_.push_back(type.extension);
}

void MainWindow::FolderVisited(int index) {
  FolderHistoryOptions options;
  options.autoAdd = prefs().autoAdd[0] == 1;
  options.autoTop = prefs().autoTop == 1;
  options.limit = LenientInt(prefs().folderItemLimit);
  if (UpdateFolderHistory(folderList_, pane(index)->folder(), options)) ListToMenu(0);
}

void MainWindow::ListToMenu(int list) {
  if (list == 1 || list == 2) {
    // The entries show; running an app or choosing a picture comes with the
    // preferences and the preview, so they stay disabled until then.
    QMenu* menu = list == 1 ? picturesMenu_ : appsMenu_;
    std::vector<QAction*>& entries = list == 1 ? pictureEntries_ : appEntries_;
    const std::vector<std::string>& items = list == 1 ? prefs().pics : prefs().apps;
    for (QAction* entry : entries) {
      menu->removeAction(entry);
      entry->deleteLater();
    }
    entries.clear();
    for (size_t i = 0; i < items.size(); ++i) {
      QAction* entry = menu->addAction(QString::fromStdString(items[i]));
      entry->setObjectName(QString(list == 1 ? "mnuPictures_%1" : "mnuApps_%1").arg(i));
      entry->setEnabled(false);
      entries.push_back(entry);
    }
    return;
  }
  if (list != 0) return;
  for (QAction* entry : folderEntries_) {
    folderMenu_->removeAction(entry);
    entry->deleteLater();
  }
  folderEntries_.clear();
  for (size_t i = 0; i < folderList_.size(); ++i) {
    QAction* entry = folderMenu_->addAction(QString::fromStdString(folderList_[i]));
    entry->setObjectName(QString("mnuDirectorys_%1").arg(i));
    connect(entry, &QAction::triggered, this, [this, i] { mnuDirectorys_Click(static_cast<int>(i)); });
    folderEntries_.push_back(entry);
  }
}

void MainWindow::mnuDirectorys_Click(int index) {
  if (index < 0 || static_cast<size_t>(index) >= folderList_.size()) return;
  const std::string folder = WithTrailingSeparator(folderList_[static_cast<size_t>(index)]);
  if (folder.size() <= 1) return;  // the empty menu: the list is edited in the preferences
  if (!IsFolder(folder)) {
    messages_.MsgBox(folder + "  doesn't exist anymore.", MsgButtons::Ok, MsgIcon::Exclamation, "Trel");
    folderList_.erase(folderList_.begin() + index);
    ListToMenu(0);
    return;
  }
  FilePane* p = pane(activePane_);
  if (!p->ChangeFolder(folder)) return;
  QDir::setCurrent(QString::fromStdString(folder));
  p->DrawDirLabel();
}

void MainWindow::mnuTip_Click() {
  TipDialog tip(store_, programFolder_ + "TipOfDay.txt", this);
  tip.ShowModal();
}

void MainWindow::ShowAbout() {
  QMessageBox::about(this, "About Trel",
                     QString::fromStdString(ProgramTitle(kVersionMajor, kVersionMinor)) +
                         "\nA workbench for image-editor plugins and Filter Factory filters.");
}

void MainWindow::Form_Resize() {
  // While the frame is dragged nothing is laid out; Timer2 does it once the
  // button is up.
  if (leftButtonDown_ && leftButtonDown_()) {
    if (!timer2_.isActive()) timer2_.start();
    return;
  }
  if (isMinimized()) return;
  if (content_->geometry() == host_->rect()) return;
  content_->setGeometry(host_->rect());
  ++layoutCount_;
  for (FilePane* p : panes_) {
    if (prefs().AutoColumnWidth() && p->listViewShown() && p->listView()->view() == FileListView::kDetails)
      p->listView()->OptimalWidth();
  }
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
  if (watched == host_ && event->type() == QEvent::Resize) Form_Resize();
  return QMainWindow::eventFilter(watched, event);
}

void MainWindow::closeEvent(QCloseEvent* event) {
  Form_Unload();
  event->accept();
}

}  // namespace trel
