// The FFL View's side of the main window: opening a library in a pane, the
// entry's double click, and the library commands (delete in place, search,
// extract to the passive pane, add files, create a library, drops).
#pragma once

#include <QObject>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "filter/FilterEnv.h"
#include "filter/OutputFormat.h"
#include "front/UserMessages.h"

namespace trel {

class MainWindow;

class FflController : public QObject {
  Q_OBJECT
 public:
  explicit FflController(MainWindow& window);
  static FflController* Of(const MainWindow& window);

  UserMessages& hooks() const;
  void SetHooks(UserMessages* hooks) { hooks_ = hooks; }
  // Tests answer for the user: the search text, the new library's path, the
  // files to add.
  void SetSearchPrompt(std::function<std::optional<std::string>()> p) { searchPrompt_ = std::move(p); }
  void SetLibraryPrompt(std::function<std::optional<std::string>(const std::string& folder)> p) {
    libraryPrompt_ = std::move(p);
  }
  void SetFilesPrompt(std::function<std::vector<std::string>(const std::string& folder)> p) {
    filesPrompt_ = std::move(p);
  }
  // What opening an entry does with the filter now in the window's record;
  // by default its information. The editor takes this over.
  void SetEntryHandler(std::function<void(int pane)> handler) { entryHandler_ = std::move(handler); }

  FilterEnv Env() const;

  // Shows the library in the active pane's FFL View.
  bool Open(const std::string& path);
  // Reads list row `listIndex` of a pane's library into the window's filter,
  // then hands it on (OpenLoadedEntry).
  bool OpenEntry(int pane, int listIndex);
  void ShowEntryInformation(int pane);
  int Delete(int pane);
  // Selects the entries whose texts or code hold the text; returns how many.
  int Search(int pane);
  int Search(int pane, const std::string& text);
  // Writes the selected entries in `format` into the passive pane's folder.
  int Extract(int pane, OutputFormat format);
  int AddFiles(int pane, const std::vector<std::string>& paths);
  int AddFilesAsked(int pane);
  // "Create FFL": a new library of the active pane's selected filters.
  bool CreateFromSelection();

 private:
  MainWindow& window_;
  UserMessages* hooks_ = nullptr;
  std::function<std::optional<std::string>()> searchPrompt_;
  std::function<std::optional<std::string>(const std::string&)> libraryPrompt_;
  std::function<std::vector<std::string>(const std::string&)> filesPrompt_;
  std::function<void(int)> entryHandler_;
};

}  // namespace trel
