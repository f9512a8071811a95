// What the scanner learnt about each file of a folder, kept between visits and
// between runs so that entering the Plugin View again reads only the files
// that changed. A file is known by its path, its size and its modification
// time; anything else about it is read afresh. The cache is a hint, never a
// source of truth: a file of the wrong version, for other scan options, cut
// short or garbled is dropped as a whole and rebuilt by the next scan.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "catalogue/PluginScanner.h"

namespace trel {

class ScanCache {
 public:
  // `cacheFolder` holds the cache files (created when saving). The key names
  // the folder scanned and the options that change what a file yields.
  ScanCache(std::string cacheFolder, const std::string& scannedFolder, const ScanOptions& options,
            const PluginTypeTable& table);

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
  size_t size() const { return known_.size(); }

 private:
  struct Known {
    int64_t size = -1;
    int64_t mtime = 0;  // nanoseconds of the file clock
    bool produced = false;
    bool used = false;  // seen by this scan
    std::vector<PluginEntry> entries;
  };

  std::string file_;
  std::string header_;
  std::unordered_map<std::string, Known> known_;
  int hits_ = 0;
  int misses_ = 0;
  bool loaded_ = false;
};

}  // namespace trel
