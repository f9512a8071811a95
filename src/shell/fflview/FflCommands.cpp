#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QTreeWidget>

#include "filter/BatchConvert.h"
#include "filter/FFL.h"
#include "filter/LoadIt.h"
#include "base/Paths.h"
#include "front/UserMessages.h"
#include "shell/window/CommandGroups.h"
#include "shell/fflview/FflViewController.h"
#include "shell/fflview/FflViewPage.h"
#include "shell/window/MainWindow.h"
#include "shell/pane/Selection.h"
#include "shell/dialogs/Dialogs.h"

namespace trel {

namespace {

constexpr const char* kControllerName = "FflController";
constexpr const char* kFormatNames[6] = {"Photoshop FF Plugin", "Premiere FF Plugin", "Premiere TF Plugin",
                                         "AFS File", "PFF File", "Text File"};

std::string FullPath(const std::string& item, const std::string& folder) {
  if (!item.empty() && item.front() == '/') return item;
  return WithTrailingSeparator(folder) + item;
}

std::string Joined(const std::vector<std::string>& names, size_t limit) {
  std::string text;
  for (size_t i = 0; i < names.size() && i < limit; ++i) {
    const size_t slash = names[i].find_last_of('/');
    text += "\n" + (slash == std::string::npos ? names[i] : names[i].substr(slash + 1));
  }
  if (names.size() > limit) text += "\n...";
  return text;
}

}  // namespace

FflController::FflController(MainWindow& window) : QObject(&window), window_(window) {
  setObjectName(kControllerName);
  window.parts().ffl = this;
}

FflController* FflController::Of(const MainWindow& window) {
  return window.parts().ffl;
}

UserMessages& FflController::hooks() const { return hooks_ ? *hooks_ : window_.messages(); }

FilterEnv FflController::Env() const {
  FilterEnv env;
  env.shell = &hooks();
  env.options.programFolder = window_.programFolder();
  env.options.writeFFL10 = window_.prefs().ffl10 == 1;
  env.options.noFFOptimize = window_.prefs().noFFOptimize == 1;
  return env;
}

bool FflController::Open(const std::string& path) {
  const int index = window_.ActivePane();
  FilePane* pane = window_.pane(index);
  QApplication::setOverrideCursor(Qt::WaitCursor);
  const bool ok = pane->fflView()->OpenLibrary(path, Env());
  QApplication::restoreOverrideCursor();
  if (!ok) return false;
  pane->SelectTab(FilePane::kFFLView);
  window_.Switchit(index);
  pane->fflView()->list()->setFocus();
  return true;
}

bool FflController::OpenEntry(int index, int listIndex) {
  FflViewPage* page = window_.pane(index)->fflView();
  if (listIndex < 0) return false;
  const FflViewPage::Access access(*page);
  FilterEnv env = Env();
  if (!LoadIt(window_.filter(), listIndex, access, env)) return false;
  if (entryHandler_) entryHandler_(index);
  else ShowEntryInformation(index);
  return true;
}

void FflController::ShowEntryInformation(int index) {
  (void)index;
  const FFFilter& f = window_.filter();
  std::string text = "Title: " + f.title + "\nCategory: " + f.category + "\nAuthor: " + f.author +
                     "\nCopyright: " + f.copyright + "\nFile name: " + f.filename;
  hooks().MsgBox(text, MsgButtons::Ok, MsgIcon::Information, "FFL Entry");
}

int FflController::Delete(int index) {
  FflViewPage* page = window_.pane(index)->fflView();
  if (page->libraryPath().empty()) return 0;
  return page->DeleteSelected(hooks());
}

int FflController::Search(int index) {
  std::optional<std::string> text;
  if (searchPrompt_) {
    text = searchPrompt_();
  } else if (const auto typed = TheDialogs().AskText(&window_, "Search FFL", "Find entries containing:")) {
    text = typed->toLatin1().toStdString();
  }
  if (!text || text->empty()) return 0;
  return Search(index, *text);
}

int FflController::Search(int index, const std::string& text) {
  FflViewPage* page = window_.pane(index)->fflView();
  if (page->libraryPath().empty()) return 0;
  const Expected<std::vector<int>> search = cmd_SearchFFL(page->libraryPath(), text);
  if (!search) hooks().Report(search.error());
  const std::vector<int> found = search ? *search : std::vector<int>{};
  page->SelectNumbers(found);
  for (int i = 0; i < page->count(); ++i) {
    if (!found.empty() && page->NumberAt(i) == found.front()) {
      page->list()->setCurrentItem(page->list()->topLevelItem(i), 0, QItemSelectionModel::NoUpdate);
      page->list()->scrollToItem(page->list()->topLevelItem(i));
      break;
    }
  }
  if (found.empty()) hooks().MsgBox("No entry holds \"" + text + "\".", MsgButtons::Ok, MsgIcon::Information, "Search FFL");
  return static_cast<int>(found.size());
}

int FflController::Extract(int index, OutputFormat format) {
  FflViewPage* page = window_.pane(index)->fflView();
  const std::vector<int> selected = page->SelectedNumbers();
  if (page->libraryPath().empty() || selected.empty()) {
    hooks().MsgBox("Please select one or more files.", MsgButtons::Ok, MsgIcon::Exclamation, "Attention");
    return 0;
  }
  const std::string target = WithTrailingSeparator(window_.pane(index ^ 1)->folder());
  SkipExistingTargets keep;  // an existing file is never replaced behind the user's back
  ConvertReport report;
  QApplication::setOverrideCursor(Qt::WaitCursor);
  const Expected<void> done = cmd_Extract(window_.filter(), page->library(), selected, format, target, keep, Env(), report);
  QApplication::restoreOverrideCursor();
  if (!done) hooks().Report(done.error());
  if (report.skipped > 0 || report.failed > 0) {
    hooks().MsgBox(std::to_string(report.written.size()) + " written, " + std::to_string(report.skipped) +
                       " left alone because the file exists, " + std::to_string(report.failed) + " failed.",
                   MsgButtons::Ok, MsgIcon::Information, "Extract");
  }
  window_.RefreshFile1(index ^ 1);
  return static_cast<int>(report.written.size());
}

int FflController::AddFiles(int index, const std::vector<std::string>& paths) {
  FflViewPage* page = window_.pane(index)->fflView();
  if (page->libraryPath().empty() || paths.empty()) return 0;
  QApplication::setOverrideCursor(Qt::WaitCursor);
  const FFLAddResult result = cmd_Add2FFL(page->libraryPath(), paths, Env());
  QApplication::restoreOverrideCursor();
  if (result.error) hooks().Report(*result.error);
  if (!result.unreadable.empty()) {
    hooks().MsgBox("These files are no filters and were not added:" + Joined(result.unreadable, 10),
                   MsgButtons::Ok, MsgIcon::Exclamation, "Add to FFL");
  }
  if (result.ok) page->Reload(Env());
  else if (result.added > 0 || result.unreadable.empty())
    hooks().MsgBox("The library could not be written:\n" + page->libraryPath(), MsgButtons::Ok, MsgIcon::Critical,
                   "Add to FFL");
  return result.ok ? result.added : 0;
}

int FflController::AddFilesAsked(int index) {
  FflViewPage* page = window_.pane(index)->fflView();
  if (page->libraryPath().empty()) return 0;
  const std::string folder = WithTrailingSeparator(window_.pane(index ^ 1)->folder());
  std::vector<std::string> paths;
  if (filesPrompt_) {
    paths = filesPrompt_(folder);
  } else {
    for (const QString& p : TheDialogs().PickFiles(&window_, "Add to FFL", QString::fromStdString(folder),
                                                   "Filters (*.afs *.pff *.txt *.ffx *.8bf *.prm *.bin);;All files (*)"))
      paths.push_back(p.toStdString());
  }
  return AddFiles(index, paths);
}

bool FflController::CreateFromSelection() {
  const int index = window_.ActivePane();
  FilePane* pane = window_.pane(index);
  const SelectedItems selected = GetSelectedItems(*pane);
  if (!selected.HasSelectionFlag) {
    hooks().MsgBox("Please select one or more files.", MsgButtons::Ok, MsgIcon::Exclamation, "Attention");
    return false;
  }
  std::vector<std::string> sources;
  for (const std::string& item : selected.items) sources.push_back(FullPath(item, selected.folder));
  const std::string folder = WithTrailingSeparator(pane->folder());
  std::optional<std::string> library;
  if (libraryPrompt_) {
    library = libraryPrompt_(folder);
  } else {
    const QString chosen = TheDialogs().PickSaveFile(&window_, "Create FFL", QString::fromStdString(folder + "New.ffl"),
                                                     "Filter Factory Library (*.ffl)");
    if (!chosen.isEmpty()) library = chosen.toStdString();
  }
  if (!library || library->empty()) return false;
  if (LastFour(*library) != ".ffl") *library += ".ffl";
  QApplication::setOverrideCursor(Qt::WaitCursor);
  const FFLAddResult result = cmd_CreateFFL(*library, sources, Env());
  QApplication::restoreOverrideCursor();
  if (result.error) hooks().Report(*result.error);
  if (!result.unreadable.empty()) {
    hooks().MsgBox("These files are no filters and were left out:" + Joined(result.unreadable, 10), MsgButtons::Ok,
                   MsgIcon::Exclamation, "Create FFL");
  }
  if (!result.ok) {
    if (result.added > 0)
      hooks().MsgBox("The library could not be written:\n" + *library, MsgButtons::Ok, MsgIcon::Critical, "Create FFL");
    return false;
  }
  window_.RefreshBoth();
  return true;
}

void InstallFflCommands(MainWindow& window) {
  auto* controller = new FflController(window);
  for (int i = 0; i < 2; ++i) {
    FflViewPage* page = window.pane(i)->fflView();
    const auto activate = [&window](int index) {
      if (index != window.ActivePane()) window.Switchit(index);
    };
    QObject::connect(page, &FflViewPage::activated, controller, activate);
    QObject::connect(page, &FflViewPage::entryOpened, controller,
                     [controller](int index, int listIndex) { controller->OpenEntry(index, listIndex); });
    QObject::connect(page, &FflViewPage::deleteRequested, controller, [controller](int index) { controller->Delete(index); });
    QObject::connect(page, &FflViewPage::searchRequested, controller, [controller](int index) { controller->Search(index); });
    QObject::connect(page, &FflViewPage::filesDropped, controller,
                     [controller](int index, const std::vector<std::string>& paths) { controller->AddFiles(index, paths); });
    QObject::connect(page, &FflViewPage::contextMenuRequested, controller,
                     [controller, page, &window](int index, QPoint at) {
                       if (index != window.ActivePane()) window.Switchit(index);
                       QMenu menu(page);
                       menu.setObjectName("FflContextMenu");
                       QAction* open = menu.addAction("&Open Entry");
                       open->setEnabled(page->CurrentIndex() >= 0);
                       QObject::connect(open, &QAction::triggered, controller,
                                        [controller, page, index] { controller->OpenEntry(index, page->CurrentIndex()); });
                       QMenu* extract = menu.addMenu("E&xtract to the Other Pane");
                       for (OutputFormat format : kOutputFormats) {
                         QAction* as = extract->addAction(kFormatNames[ConvertListIndex(format)]);
                         QObject::connect(as, &QAction::triggered, controller,
                                          [controller, index, format] { controller->Extract(index, format); });
                       }
                       QObject::connect(menu.addAction("&Find Entries...\tCtrl+F"), &QAction::triggered, controller,
                                        [controller, index] { controller->Search(index); });
                       QObject::connect(menu.addAction("&Add Files..."), &QAction::triggered, controller,
                                        [controller, index] { controller->AddFilesAsked(index); });
                       menu.addSeparator();
                       QObject::connect(menu.addAction("&Delete Entries\tDel"), &QAction::triggered, controller,
                                        [controller, index] { controller->Delete(index); });
                       menu.exec(at);
                     });
  }
  if (QAction* create = window.command("mnuCreateLibrary")) {
    QObject::connect(create, &QAction::triggered, controller, [controller] { controller->CreateFromSelection(); });
    window.SetCommandAvailable("mnuCreateLibrary", true);
  }
}

void MainWindow::ConvertFFL(const QString& path) {
  emit routeTaken("Convert", path);
  if (FflController* controller = FflController::Of(*this)) controller->Open(path.toStdString());
}

}  // namespace trel
