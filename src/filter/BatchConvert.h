// Batch conversion: selected filter files, FFL libraries or filter text from
// the clipboard written out in one of six formats. UI-free: the dialog's
// choices arrive as a request, the overwrite question through an interface,
// Esc and progress through the shell hooks.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/OverwriteAnswer.h"
#include "filter/FFFilter.h"
#include "filter/FFL.h"
#include "filter/FilterEnv.h"
#include "filter/OutputFormat.h"

namespace trel {

// Asked before each target is written. Two empty names reset a standing choice
// ("Overwrite All", "Skip All"); every run starts and ends that way.
class OverwriteChecker {
 public:
  virtual ~OverwriteChecker() = default;
  virtual OverwriteAnswer OverwriteCheck(const std::string& sourcePath, const std::string& targetPath) = 0;
};
// Writes when the target is missing and skips it otherwise.
class SkipExistingTargets : public OverwriteChecker {
 public:
  OverwriteAnswer OverwriteCheck(const std::string& sourcePath, const std::string& targetPath) override;
};
// Always writes.
class OverwriteAllTargets : public OverwriteChecker {
 public:
  OverwriteAnswer OverwriteCheck(const std::string&, const std::string&) override { return OverwriteAnswer::Write; }
};

struct ConvertRequest {
  OutputFormat format = OutputFormat::Plugin8bf;
  std::string targetFolder;  // the passive pane's folder
  // "Use Clipboard as Source": read `clipboardText` (nullopt when the clipboard
  // holds no text) instead of the selection.
  bool useClipboard = false;
  std::optional<std::string> clipboardText;
  // The active pane: its view kind (1 File, 2 Plugin, 3 FFL) and selection.
  int activeView = 1;
  std::vector<std::string> selection;  // full paths, for views below 3
  const FFLLibrary* library = nullptr;  // the FFL View's library, for view 3
  std::vector<int> selectedEntries;     // entry numbers, for view 3
  bool createSubFolders = false;  // "Automatically create sub folder(s)"
  // Library entries replace existing files without a question in the program;
  // the command line hands them to the overwrite check like every other file.
  bool askForLibraryEntries = false;
};

struct ConvertReport {
  std::vector<std::string> written;  // target paths, in order
  int read = 0;                      // sources (or library entries) read
  int unreadable = 0;                // sources skipped as no filter fit for conversion
  int skipped = 0;                   // targets left alone by the overwrite question
  int failed = 0;                    // writes that reported an error; the old file stays
  bool stopped = false;              // Esc or "Cancel" ended the run early
  bool clipboardOptionOn = false;    // what the dialog's clipboard box shows afterwards
};

// The work behind the Convert button. The target folder must exist (the
// dialog creates it); sub folders for libraries are made here.
ConvertReport cmd_Convert(FFFilter& f, const ConvertRequest& request, OverwriteChecker& check,
                          const FilterEnv& env);

enum class WriteOutcome {
  Written,       // the new file is in place
  WriterFailed,  // the writer reported an error or wrote nothing; an old file stays
  FolderFailed,  // nothing can be written into the folder at all
};
// Writes records into one folder in a format. Whatever a writer does, an
// existing file is replaced only by a complete new one: the writer works in a
// scratch folder inside the target folder (made on the first write, removed
// with this object) and its result is then moved into place. That also keeps
// the writers inside the folder and tells which files they made: the paths
// go to `report`, failures are counted there. A writer's error reaches the
// shell; FolderFailed is left to the caller.
class TargetWriter {
 public:
  TargetWriter(const std::string& folder, const FilterEnv& env, ConvertReport* report);
  ~TargetWriter();
  TargetWriter(const TargetWriter&) = delete;
  TargetWriter& operator=(const TargetWriter&) = delete;

  WriteOutcome Write(FFFilter& f, OutputFormat format);

 private:
  WriteOutcome Fail(WriteOutcome outcome);

  std::string folder_;
  std::string stage_;
  const FilterEnv& env_;
  ConvertReport* report_;
};

// One record through a TargetWriter of its own.
WriteOutcome WriteByFormat(FFFilter& f, const std::string& folder, OutputFormat format,
                           const FilterEnv& env, ConvertReport* report);

// The description of a FolderFailed outcome, for the caller's message.
std::string UnusableFolder(const std::string& folder);

// "Use Filter Name as File Name": the file name is made from the title.
void ApplyNameRule(FFFilter& f, const FilterOptions& options);
// Creates the folder (and the folders above it) when missing.
bool MakeFolder(const std::string& folder);

// The file name of an entry or a source made safe to join to a folder: a
// separator inside it would lead the writer out of the target folder.
std::string ConfinedFilename(const std::string& filename);

}  // namespace trel
