// Filter Factory Library (FFL) files: many filters as source in one text file.
// Line 1 is the version, line 2 the entry count in five right-aligned
// characters (so it can be patched in place at position 9), then entries of 29
// lines each. A deleted entry stays in the file with its name line struck out.
// Libraries come from anywhere: every reader here is bounded and reports a
// broken file instead of guessing.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/BinFile.h"
#include "base/Error.h"
#include "filter/FFFilter.h"
#include "filter/FilterEnv.h"
#include "filter/OutputFormat.h"

namespace trel {

class OverwriteChecker;
struct ConvertReport;

constexpr int kFFLEntryLines = 29;
constexpr int64_t kFFLCountPosition = 9;  // behind "FFL1.x" CR LF
constexpr int kFFLMaxCount = 99999;       // what five characters can hold
constexpr int64_t kMaxLibraryTable = int64_t{256} << 20;

// Reads a library as text, line by line, with CR LF or a lone CR as line end
// (a lone LF is part of the line). Knows the 1-based position of the next
// line, which is how entries are found again later.
class FFLTextReader {
 public:
  // Lines longer than this mark the file as broken instead of eating memory.
  static constexpr size_t kMaxLine = 1 << 20;

  static std::unique_ptr<FFLTextReader> Open(const std::string& path);
  ~FFLTextReader();
  FFLTextReader(const FFLTextReader&) = delete;
  FFLTextReader& operator=(const FFLTextReader&) = delete;

  // False at the end of the file or when the line is too long (TooLong()).
  bool ReadLine(std::string& line);
  bool AtEnd();
  int64_t Position() const { return consumed_ + 1; }  // of the next byte
  bool TooLong() const { return tooLong_; }
  int64_t LineNumber() const { return lines_; }  // lines read so far

 private:
  explicit FFLTextReader(std::FILE* file) : file_(file) {}
  int Peek();
  int Get();

  std::FILE* file_;
  std::vector<char> buffer_ = std::vector<char>(1 << 16);
  size_t at_ = 0, size_ = 0;
  int64_t consumed_ = 0;
  int64_t lines_ = 0;
  bool tooLong_ = false;
};

enum class FFLRead { Entry, EndOfFile, Broken };

// One entry from the current line of a library opened as text. Fills every
// field but isPhotoshop (the record is not cleared first). At the end of the
// file, or with only blank lines left, EndOfFile; an entry cut short, an
// over-long line or a value outside 0..255 is Broken and `problem` says why.
FFLRead ReadFFLEntry(FFFilter& f, FFLTextReader& in, std::string& problem);
// One entry from the current position of a file opened for bytes; sets
// isPhotoshop from the file name (.prm means Premiere code). False when the
// file ends before the entry's last line or a value is out of range.
bool ReadFFLEntryII(FFFilter& f, BinFile& file);
// The 29 lines of the record, CR LF each; `"` stands for a code equal to the
// one before. The code goes out in the dialect its file name promises (.prm:
// Premiere, else Photoshop), so that the readers' isPhotoshop rule holds.
std::string FFLEntryText(const FFFilter& f);
bool WriteFFLEntry(const FFFilter& f, BinFile& file);  // at the current position

// The count as five right-aligned characters at position 9. False when the
// file is not a library or can't be written.
bool FFLNumWrite(const std::string& libraryPath, long count);
// The entry numbers of a selection, zero-padded to five digits and sorted, so
// that the selection can be handled from its end to its front.
std::vector<std::string> AddtoArrayList(const std::vector<int>& selectedNumbers);
// Strikes out entry `position` in place (its name line begins "//", 0, 0).
// False when the position does not start a name line of at least two bytes.
bool DeleteFFLEntry(const std::string& libraryPath, int64_t position);

struct FFLLibrary;
// The FFL View's delete, once the user has agreed: strikes the selected
// entries out, from the last to the first. Returns the numbers struck out.
std::vector<int> DeleteFFLItems(const FFLLibrary& library, const std::vector<int>& selected);

// What a pane shows of a library: entries are numbered from 1 in file order,
// deleted ones included, so numbers and positions stay valid after a delete.
struct FFLListItem {
  int number = 0;  // the tag of the list item
  std::string filename, category, title, author;
};
struct FFLLibrary {
  std::string path;
  std::string version;             // "FFL1.0" or "FFL1.1"
  long declaredCount = 0;          // line 2; serves only progress texts
  std::vector<int64_t> positions;  // positions[number - 1]: first byte of the entry
  std::vector<FFLListItem> items;  // entries not deleted, in file order
  std::string problem;             // why the walk stopped early, empty when it didn't

  // Position of an entry number, 0 when there is none.
  int64_t PositionOf(int number) const;
};

// Reads the table of a library. A missing file is Gone, a wrong magic the
// "Format Violation" warning; a broken entry ends the table and is told in
// `problem`. The table is kept in memory, so a file above kMaxLibraryTable
// bytes is read only that far and told as a problem too.
Expected<void> ReadFFLLibrary(const std::string& libraryPath, FFLLibrary& library);
// Entry numbers whose title, category, author or code holds `text`, any case;
// the errors as ReadFFLLibrary's.
Expected<std::vector<int>> cmd_SearchFFL(const std::string& libraryPath, const std::string& text);

// Writes every entry not deleted in `format`
// into targetFolder, creating it. Entries replace existing files without a
// question unless askForEntries hands them to `overwrite`, whose standing
// choice is reset at the end either way. isPhotoshop is not set: the writers
// see the previous filter's dialect. An error when the library could not be
// read or the target folder is unusable; the writers' own errors go to the
// env's shell as they happen, in order with the overwrite questions.
Expected<void> Convertffl(FFFilter& f, const std::string& libraryPath, std::string targetFolder,
                          OutputFormat format, const FilterEnv& env, ConvertReport* report = nullptr,
                          OverwriteChecker* overwrite = nullptr, bool askForEntries = false);
// Writes the selected entries (numbers) of an opened library in a format.
Expected<void> cmd_Extract(FFFilter& f, const FFLLibrary& library, const std::vector<int>& selected,
                           OutputFormat format, const std::string& targetFolder, OverwriteChecker& check,
                           const FilterEnv& env, ConvertReport& report);

// What a library command did with its sources.
struct FFLAddResult {
  int added = 0;
  std::vector<std::string> unreadable;  // sources that are no filter fit for a library
  bool ok = false;                      // the library was written
  std::optional<Error> error;           // why it was not, when there is something to tell
};
// A new library of the filters read from `sources` (the batch reading rules).
// Nothing is written when none of them is a filter; an existing file is
// replaced only once the new one is complete.
FFLAddResult cmd_CreateFFL(const std::string& libraryPath, const std::vector<std::string>& sources,
                           const FilterEnv& env);
// Appends the filters to an existing library and corrects its count. The old
// library stays as it was if anything goes wrong.
FFLAddResult cmd_Add2FFL(const std::string& libraryPath, const std::vector<std::string>& sources,
                         const FilterEnv& env);

}  // namespace trel
