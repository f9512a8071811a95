#include "shell/window/PreferencesCommands.h"

#include <QAbstractItemView>
#include <QAction>
#include <QComboBox>
#include <QDesktopServices>
#include <QDir>
#include <QEvent>
#include <QHeaderView>
#include <QLabel>
#include <QListView>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QStandardPaths>
#include <QTimer>
#include <QTreeView>
#include <QUrl>

#include "settings/ui/DesktopServices.h"
#include "settings/ui/Form2.h"
#include "settings/ui/FrmDownload.h"
#include "shell/window/CommandGroups.h"
#include "shell/pane/DirListBox.h"
#include "shell/pane/FileListView.h"
#include "shell/pane/FilePane.h"
#include "shell/window/MainWindow.h"
#include "shell/preview/PreviewController.h"
#include "shell/pane/Selection.h"
#include "shell/dialogs/Dialogs.h"

namespace trel {

namespace {

// The entries of a list's menu by number. Entries the window replaced may still
// exist until the event loop deletes them, so only those in the menu count.
QAction* MenuEntry(MainWindow& window, int list, size_t index) {
  QMenu* menu = list == 1 ? window.picturesMenu() : window.appsMenu();
  if (!menu) return nullptr;
  const QString name = QString(list == 1 ? "mnuPictures_%1" : "mnuApps_%1").arg(index);
  for (QAction* action : menu->actions())
    if (action->objectName() == name) return action;
  return nullptr;
}

// The product's web site and support address, for the Help menu.
const char* const kSiteName = "Trel";
const char* const kSiteUrl = "https://github.com/topics/photoshop-plugin";
const char* const kSupportAddress = "trel-support@users.noreply.github.com";

// Selects the row under the mouse after it has rested there for a second.
class HoverSelector : public QObject {
 public:
  explicit HoverSelector(QAbstractItemView* view) : QObject(view), view_(view) {
    setObjectName("HoverSelector");
    timer_.setSingleShot(true);
    timer_.setInterval(1000);
    connect(view, &QAbstractItemView::entered, this, [this](const QModelIndex& index) {
      index_ = index;
      timer_.start();
    });
    connect(&timer_, &QTimer::timeout, this, [this] {
      if (!enabled_ || !index_.isValid()) return;
      view_->selectionModel()->setCurrentIndex(index_,
                                               QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    });
  }
  void setEnabled(bool on) {
    enabled_ = on;
    if (!on) timer_.stop();
  }
  QTimer& timer() { return timer_; }

 private:
  QAbstractItemView* view_;
  QTimer timer_;
  QPersistentModelIndex index_;
  bool enabled_ = false;
};

QFont FontOf(const FontChoice& choice, const QFont& base) {
  QFont font = base;
  font.setFamily(QString::fromStdString(choice.name));
  font.setPointSizeF(choice.size);
  font.setBold(choice.bold);
  font.setItalic(choice.italic);
  return font;
}

void ApplyListOptions(QAbstractItemView* view, const Preferences& prefs) {
  const bool hover = prefs.fileview[0] == 1;
  const bool flat = prefs.fileview[1] == 1;
  const bool grid = prefs.fileview[2] == 1;
  const bool fullRow = prefs.fileview[3] == 1;
  const bool hot = prefs.fileview[4] == 1;
  auto* selector = view->findChild<HoverSelector*>("HoverSelector", Qt::FindDirectChildrenOnly);
  if (!selector && hover) selector = new HoverSelector(view);
  if (selector) selector->setEnabled(hover);
  view->setMouseTracking(hover || hot);
  view->setProperty("hoverSelection", hover);
  view->setProperty("hotTracking", hot);
  view->setProperty("gridlines", grid);
  view->setProperty("flatScrollbar", flat);
  QString sheet;
  if (grid) sheet += "QTreeView::item { border-right: 1px solid palette(mid); border-bottom: 1px solid palette(mid); }\n";
  if (hot) sheet += "QAbstractItemView::item:hover { color: palette(link); text-decoration: underline; }\n";
  // A rule for the items takes their whole drawing over, the selection's
  // colours too: without these a selected name is drawn in the colour of its
  // own background.
  if (grid || hot)
    sheet += "QAbstractItemView::item:selected { background: palette(highlight); color: palette(highlighted-text); }\n";
  if (flat)
    sheet += "QScrollBar { border: none; background: palette(base); }\n"
             "QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; border: none; }\n";
  view->setStyleSheet(sheet);
  if (auto* tree = qobject_cast<QTreeView*>(view)) {
    tree->setSelectionBehavior(fullRow ? QAbstractItemView::SelectRows : QAbstractItemView::SelectItems);
    tree->setAllColumnsShowFocus(fullRow);
  }
  view->viewport()->update();
}

}  // namespace

void ApplyPaneOptions(FilePane& pane, const Preferences& prefs) {
  FileListView* list = pane.listView();
  ApplyListOptions(list->details(), prefs);
  ApplyListOptions(list->icons(), prefs);
  ApplyListOptions(pane.file1(), prefs);
  if (prefs.AutoColumnWidth() && list->view() == FileListView::kDetails) list->OptimalWidth();
  const FontChoice& font = prefs.fonts[0];
  if (font.set) {
    const QFont f = FontOf(font, list->font());
    for (QWidget* w : std::initializer_list<QWidget*>{list->details(), list->icons(), pane.file1(),
                                                      pane.dirBox(), pane.pluginViewPage(), pane.fflViewPage()})
      if (w) w->setFont(f);
  }
}

void ApplyOtherFont(MainWindow& window, const Preferences& prefs) {
  const FontChoice& font = prefs.fonts[1];
  if (!font.set) return;
  const QFont f = FontOf(font, window.font());
  for (int i = 0; i < 2; ++i) {
    window.pane(i)->maskBox()->setFont(f);
    window.pane(i)->caption()->setFont(f);
  }
  window.label3()->setFont(f);
  window.label4()->setFont(f);
  for (int i = 0; i < 6; ++i) window.commandButton(i)->setFont(f);
}

PreferencesController* FindPreferencesController(MainWindow& window) {
  return window.parts().preferences;
}

PreferencesController::PreferencesController(MainWindow& window) : QObject(&window), window_(window) {
  setObjectName("PreferencesController");
  window.parts().preferences = this;
  form2_ = new Form2(window.store(), window.programFolder(), window.messages(), &window);
  form2_->hide();
  connect(form2_, &Form2::committed, this, &PreferencesController::Take);
  connect(form2_, &Form2::reverted, this, &PreferencesController::Take);
  // These edits show in the window before OK; Cancel takes them back.
  SettingsState& settings = window.settings();
  connect(form2_, &Form2::listChanged, this, [this, &settings](int list, const std::vector<std::string>& items) {
    if (list == 0) {
      window_.FolderListForEdit() = items;
      window_.ListToMenu(0);
    }
    if (list == 1) settings.Change([&items](Preferences& p) { p.pics = items; });
    if (list == 2) settings.Change([&items](Preferences& p) { p.apps = items; });
  });
  connect(form2_, &Form2::listOptionChanged, this, [&settings](int index, int value) {
    settings.Change([=](Preferences& p) { p.fileview[static_cast<size_t>(index)] = value; });
  });
  connect(form2_, &Form2::fontChanged, this, [&settings](int which, const FontChoice& font) {
    settings.Change([&](Preferences& p) { p.fonts[static_cast<size_t>(which)] = font; });
  });
  connect(form2_, &Form2::interfaceChosen, this, [&settings](const QString& file) {
    settings.Change([&file](Preferences& p) { p.interfaceFile = file.toStdString(); });
  });
  connect(&settings, &SettingsState::changed, this, &PreferencesController::Follow);
  connect(form2_, &Form2::helpRequested, this, &PreferencesController::ShowHelpPage);
  // The start-up loads the options after the window is built; they reach the
  // panes when the window first shows.
  window.installEventFilter(this);
}

bool PreferencesController::eventFilter(QObject* watched, QEvent* event) {
  if (watched == &window_ && event->type() == QEvent::Show && !shown_) {
    shown_ = true;
    followed_ = window_.prefs();
    ApplyToPanes();
    WireMenuEntries();
  }
  // The plugin type list is kept current in its file even without an OK.
  if (watched == &window_ && event->type() == QEvent::Close && !window_.pluginTypeRows().empty())
    SaveList(window_.programFolder() + "PlugTypes.ini", window_.pluginTypeRows(), true);
  return QObject::eventFilter(watched, event);
}

FrmDownload* PreferencesController::download() {
  if (!download_) {
    download_ = new FrmDownload(window_.programFolder(), window_.messages(), &window_);
    connect(download_, &FrmDownload::helpRequested, this, &PreferencesController::ShowHelpPage);
  }
  return download_;
}

void PreferencesController::SyncToDialog() {
  if (!interfacesListed_) {
    // The start-up already told the user when no skins were found.
    form2_->LookforInterface(false);
    interfacesListed_ = true;
  }
  PreferenceSet set{window_.prefs(), window_.folderList(), window_.pluginTypeRows()};
  if (set.pluginTypes.empty()) set.pluginTypes = form2_->Edited().pluginTypes;
  form2_->Edit(set);
}

void PreferencesController::Take(const PreferenceSet& set) {
  window_.FolderListForEdit() = set.folders;
  window_.ApplyPluginTypes(set.pluginTypes);
  // Every list and pane again below, not only those that changed (OK also fits
  // the columns afresh), so Follow has nothing left to do.
  followed_ = set.prefs;
  window_.settings().Replace(set.prefs);
  for (int list = 0; list < 3; ++list) window_.ListToMenu(list);
  WireMenuEntries();
  ApplyToPanes();
}

void PreferencesController::Follow(const Preferences& now) {
  // Before the first show the panes wait for it; the menus follow at once.
  const bool panes = shown_ && (now.fileview != followed_.fileview || now.fonts != followed_.fonts);
  const bool pictures = now.pics != followed_.pics;
  const bool apps = now.apps != followed_.apps;
  followed_ = now;
  if (pictures) window_.ListToMenu(1);
  if (apps) window_.ListToMenu(2);
  if (pictures || apps) WireMenuEntries();
  if (panes) ApplyToPanes();
}

void PreferencesController::ApplyToPanes() {
  for (int i = 0; i < 2; ++i) ApplyPaneOptions(*window_.pane(i), window_.prefs());
  ApplyOtherFont(window_, window_.prefs());
}

bool PreferencesController::Open(int page) {
  SyncToDialog();
  return form2_->Open(page);
}

void PreferencesController::ShowHelpPage(const QString& page) {
  ShowHelp(window_.messages(), QString::fromStdString(window_.programFolder()), page);
}

// The window builds the entries of the Pictures and Apps menus; here they get
// their commands.
void PreferencesController::WireMenuEntries() {
  for (int list = 1; list <= 2; ++list) {
    const std::vector<std::string>& items = list == 1 ? window_.prefs().pics : window_.prefs().apps;
    for (size_t i = 0; i < items.size(); ++i) {
      QAction* action = MenuEntry(window_, list, i);
      if (!action || action->property("wired").toBool()) continue;
      action->setProperty("wired", true);
      action->setEnabled(true);
      const int index = static_cast<int>(i);
      if (list == 1) {
        action->setCheckable(true);
        action->setChecked(window_.prefs().previewPicture == items[i]);
        // The preview hooks its own entries; only an entry it did not see is ours.
        if (!PreviewController::Of(window_))
          connect(action, &QAction::triggered, this, [this, index] { ChoosePicture(index); });
      } else {
        connect(action, &QAction::triggered, this, [this, index] { RunApp(index); });
      }
    }
  }
}

void PreferencesController::RunApp(int index) {
  const std::vector<std::string>& apps = window_.prefs().apps;
  if (index < 0 || static_cast<size_t>(index) >= apps.size() || apps[static_cast<size_t>(index)].empty()) {
    Open(Form2::kApps);
    return;
  }
  const SingleItem item = GetSingleItem(*window_.pane(window_.ActivePane()));
  const std::string file = item.name.empty() ? std::string() : item.folder + item.name;
  if (!trel::RunApp(apps[static_cast<size_t>(index)], file))
    window_.messages().MsgBox("The program could not be started:\n" + apps[static_cast<size_t>(index)],
                              MsgButtons::Ok, MsgIcon::Exclamation, "Trel");
}

void PreferencesController::ChoosePicture(int index) {
  const std::vector<std::string>& pics = window_.prefs().pics;
  if (index < 0 || static_cast<size_t>(index) >= pics.size()) return;
  const std::string picture = pics[static_cast<size_t>(index)];
  window_.settings().Change([&picture](Preferences& p) { p.previewPicture = picture; });
  if (PreviewController* preview = PreviewController::Of(window_)) {
    preview->mnuPictures_Click(QString::fromStdString(picture));
    return;
  }
  for (size_t i = 0; i < pics.size(); ++i)
    if (QAction* action = MenuEntry(window_, 1, i))
      action->setChecked(static_cast<int>(i) == index);
}

void InstallPreferencesCommands(MainWindow& window) {
  auto* controller = new PreferencesController(window);
  const auto wire = [&window](const char* name, auto run) {
    if (QAction* action = window.command(name)) {
      QObject::connect(action, &QAction::triggered, &window, run);
      window.SetCommandAvailable(name, true);
    }
  };
  wire("mnuOptions", [&window] { window.ShowPreferences(Form2::kGeneral); });
  wire("mnuEditFolders", [&window] { window.ShowPreferences(Form2::kFolders); });
  wire("mnuEditApps", [&window] { window.ShowPreferences(Form2::kApps); });
  wire("mnuHelp", [controller] { controller->ShowHelpPage("Help.htm"); });
  wire("mnuFilterDownload", [controller] {
    FrmDownload* download = controller->download();
    download->show();
    download->raise();
  });
  wire("mnuFileInformation", [&window] { window.mnuFileInformation_Click(); });

  // The Pictures menu gets its edit entry like the other two lists.
  if (QMenu* pictures = window.picturesMenu()) {
    QAction* edit = pictures->addAction("Edit Pictures...");
    edit->setObjectName("mnuEditImageList");
    QObject::connect(edit, &QAction::triggered, &window, [&window] { window.ShowPreferences(Form2::kImages); });
    pictures->addSeparator();
    QObject::connect(pictures, &QMenu::aboutToShow, controller, [controller] { controller->WireMenuEntries(); });
  }
  if (QMenu* apps = window.appsMenu())
    QObject::connect(apps, &QMenu::aboutToShow, controller, [controller] { controller->WireMenuEntries(); });

  // Mail, the web site and its shortcuts in the Help menu.
  if (QMenu* help = window.helpMenu()) {
    QAction* before = window.command("mnuAbout");
    const auto add = [&](const char* name, const QString& text, auto run) {
      auto* action = new QAction(text, help);
      action->setObjectName(name);
      help->insertAction(before, action);
      QObject::connect(action, &QAction::triggered, &window, run);
    };
    add("mnuHelpLanguage", "Filter Factory &Language", [controller] { controller->ShowHelpPage("ff_language.htm"); });
    add("mnuHelpTutorials", "T&utorials", [controller] { controller->ShowHelpPage("tuts/tutorials.htm"); });
    add("mnuEmailAuthor", "Send &Feedback...", [&window] {
      SendEmail(window.messages(), kSupportAddress, "Feedback on " + window.windowTitle(), {});
    });
    add("mnuEmailTechSupport", "Ask for &Help...", [&window] {
      SendEmail(window.messages(), kSupportAddress, "I need help with " + window.windowTitle(), {});
    });
    add("mnuAddURL_0", "Add URL to Favorites", [&window] {
      CreateInternetShortcut(kSiteUrl, kSiteName, QString::fromStdString(window.programFolder()) + "Favorites");
    });
    add("mnuAddURL_1", "Add URL on Desktop", [] {
      CreateInternetShortcut(kSiteUrl, kSiteName, QStandardPaths::writableLocation(QStandardPaths::DesktopLocation));
    });
    help->insertSeparator(before);
  }

  // A file the desktop can't open goes to Open With.
  window.SetShellOpener([&window](const QString& path) {
    // xdg-open reports a start even when nothing takes the file; the question
    // is asked first, so that such a file reaches Open With.
    const QUrl file = QUrl::fromLocalFile(path);
    if (HasHandlerFor(file) && QDesktopServices::openUrl(file)) return true;
    // Open With tells the user itself when nothing is registered.
    OpenWith(path, &window, window.messages());
    return true;
  });
}

// Opens the preferences on a page (0 the first); the Convert dialog's
// "Output Settings" opens the compile options.
void MainWindow::ShowPreferences(int page) {
  if (PreferencesController* controller = FindPreferencesController(*this)) controller->Open(page);
}

void MainWindow::mnuFileInformation_Click() {
  FilePane* p = pane(activePane_);
  const SingleItem item = GetSingleItem(*p);
  const std::string path = item.name.empty() ? GetSingleFolder(*p, false) : item.folder + item.name;
  emit routeTaken("mnuFileInformation_Click", QString::fromStdString(path));
  if (path.empty()) return;
  PropertiesDialog dialog(QString::fromStdString(path), this);
  TheDialogs().Exec(dialog, QDialog::Rejected);
}

}  // namespace trel
