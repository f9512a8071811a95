// What the scanner learnt about each file of a folder, kept between visits and
// between runs so that entering the Plugin View again reads only the files
// that changed. A file is known by its path, its size and its modification
// time; anything else about it is read afresh. The cache is a hint, never a
// source of truth: a file of the wrong version, for other scan options, cut
// short or garbled is dropped as a whole and rebuilt by the next scan.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "catalogue/PluginScanner.h"

namespace trel {

class ScanCache {
 public:
  // `cacheFolder` holds the cache files (created when saving). The key names
  // the folder scanned and the options that change what a file yields.
  ScanCache(std::string cacheFolder, const std::string& scannedFolder, const ScanOptions& options,
            const PluginTypeTable& table);
  ~ScanCache();
  ScanCache(const ScanCache&) = delete;
  ScanCache& operator=(const ScanCache&) = delete;

  // Reads the cache file. False (and an empty cache) when there is none or it
  // can't be trusted.
  bool Load();
  // Writes what the last scan used, replacing the old file only when complete.
  // Files not seen by the scan are left out, so deleted files leave the cache.
  // A scan that found the cache exactly right writes nothing.
  bool Save() const;

  // The scanner's identify step through the cache: a file whose size and time
  // match is answered from memory, any other is read with IdentifyFile and
  // remembered. Call from one thread at a time.
  bool Identify(const std::string& folder, const std::string& name, const ScanOptions& options,
                const PluginTypeTable& table, const FilterEnv& env, std::vector<PluginEntry>& out);
  // Callbacks whose identify step goes through this cache.
  ScanCallbacks Wrap(ScanCallbacks callbacks, const ScanOptions& options, const PluginTypeTable& table,
                     const FilterEnv& env);

  const std::string& path() const { return file_; }
  int hits() const { return hits_; }
  int misses() const { return misses_; }
  size_t size() const { return distinct_ + static_cast<size_t>(freshCount_); }

 private:
  // The file is kept as read, in one piece; records and entries are offsets
  // into it, found through an open-addressed table of the lower-cased paths.
  // A visit thus costs no allocation per file beyond what the scan hands out.
  struct Text {
    uint32_t at = 0;
    uint32_t length = 0;
    bool escaped = false;  // holds a backslash sequence
  };
  struct Record {
    uint64_t hash = 0;
    int64_t size = -1;
    int64_t mtime = 0;  // nanoseconds of the file clock
    Text path;
    uint32_t linesAt = 0, linesEnd = 0;  // its lines in the file, written back as they are
    uint32_t firstEntry = 0, entryCount = 0;
    bool produced = false;
    bool used = false;  // seen by this scan
  };
  struct Entry {
    int32_t offset = 0;
    uint8_t room = 0;
    Text category, title;
  };

  std::string Field(const Text& text) const;
  const Record* Find(const std::string& path, uint64_t hash) const;
  bool StatInFolder(const std::string& folder, const std::string& name, const std::string& path, int64_t& size,
                    int64_t& mtime);
  void Clear();

  std::string file_;
  std::string header_;
  std::string bytes_;
  std::vector<Record> records_;
  std::vector<Entry> entries_;
  std::vector<uint32_t> slots_;  // record index + 1; 0 is free
  size_t distinct_ = 0;
  size_t nextGuess_ = 0;  // the record expected to be asked about next
  std::string fresh_;  // the records this scan read afresh, in the file's own lines
  int64_t freshCount_ = 0;
  std::string statFolder_;  // the folder statFd_ is open on
  int statFd_ = -1;
  int hits_ = 0;
  int misses_ = 0;
  bool loaded_ = false;
};

}  // namespace trel
