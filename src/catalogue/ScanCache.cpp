#include "catalogue/ScanCache.h"

#include <charconv>
#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "filter/Paths.h"
#include "filter/SafeTarget.h"

namespace trel {
namespace {

constexpr const char* kMagic = "TRELSCAN2";
// A cache file is small next to the plugins it describes; anything bigger is
// not ours and is not read into memory.
constexpr int64_t kMaxCacheFile = int64_t{512} << 20;

uint64_t Fnv1a(const std::string& text) {
  uint64_t h = 1469598103934665603ull;
  for (unsigned char c : text) {
    h ^= c;
    h *= 1099511628211ull;
  }
  return h;
}

// Field texts come from plugin files and may hold any byte: tabs, line ends
// and the escape itself are escaped so that one record stays one line.
std::string Escape(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    switch (c) {
      case '\\': out += "\\\\"; break;
      case '\t': out += "\\t"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      default: out += c;
    }
  }
  return out;
}

bool Unescape(const std::string& text, std::string& out) {
  out.clear();
  out.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      out += text[i];
      continue;
    }
    if (++i >= text.size()) return false;
    switch (text[i]) {
      case '\\': out += '\\'; break;
      case 't': out += '\t'; break;
      case 'n': out += '\n'; break;
      case 'r': out += '\r'; break;
      default: return false;
    }
  }
  return true;
}

std::vector<std::string> SplitTabs(const std::string& line) {
  std::vector<std::string> fields;
  size_t from = 0;
  while (true) {
    const size_t to = line.find('\t', from);
    fields.push_back(line.substr(from, to == std::string::npos ? std::string::npos : to - from));
    if (to == std::string::npos) break;
    from = to + 1;
  }
  return fields;
}

// A whole decimal number and nothing else (the standard parser stops at the
// first other character, so the end must be the text's end).
bool ParseInt(const std::string& text, int64_t& value) {
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && stop == end && !text.empty();
}

bool StatFile(const std::string& path, int64_t& size, int64_t& mtime) {
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return false;
  size = static_cast<int64_t>(st.st_size);
  mtime = static_cast<int64_t>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
  return true;
}

}  // namespace

ScanCache::ScanCache(std::string cacheFolder, const std::string& scannedFolder, const ScanOptions& options,
                     const PluginTypeTable& table) {
  // Everything that changes what a file yields is part of the key: a scan
  // with other options must not be answered from this one.
  std::ostringstream key;
  key << ToLower(WithTrailingSeparator(scannedFolder)) << '\t' << (options.subFolders ? 1 : 0)
      << (options.includeSources ? 1 : 0) << (options.ScanFFOnly ? 1 : 0) << '\t' << table.PluginTypePattern;
  header_ = std::string(kMagic) + "\t" + Escape(key.str());
  char name[64];
  std::snprintf(name, sizeof name, "scan-%016llx.cache", static_cast<unsigned long long>(Fnv1a(key.str())));
  file_ = WithTrailingSeparator(std::move(cacheFolder)) + name;
}

bool ScanCache::Load() {
  known_.clear();
  loaded_ = false;
  const int64_t length = FileLength(file_);
  if (length <= 0 || length > kMaxCacheFile) return false;
  std::ifstream in(file_, std::ios::binary);
  if (!in) return false;
  std::string line;
  if (!std::getline(in, line) || line != header_) return false;

  std::unordered_map<std::string, Known> read;
  int64_t records = 0;
  bool ended = false;
  while (std::getline(in, line)) {
    const std::vector<std::string> f = SplitTabs(line);
    if (f[0] == "END") {
      int64_t count = -1;
      if (f.size() != 2 || !ParseInt(f[1], count) || count != records) return false;
      ended = true;
      break;
    }
    // F <size> <mtime> <produced> <entry count> <path>
    int64_t size = 0, mtime = 0, produced = 0, count = 0;
    std::string path;
    if (f.size() != 6 || f[0] != "F" || !ParseInt(f[1], size) || !ParseInt(f[2], mtime) ||
        !ParseInt(f[3], produced) || !ParseInt(f[4], count) || count < 0 || count > 100000 ||
        !Unescape(f[5], path) || path.empty()) {
      return false;
    }
    Known k;
    k.size = size;
    k.mtime = mtime;
    k.produced = produced != 0;
    for (int64_t i = 0; i < count; ++i) {
      // E <offset> <room> <category> <title>
      if (!std::getline(in, line)) return false;
      const std::vector<std::string> e = SplitTabs(line);
      int64_t offset = 0, room = 0;
      PluginEntry entry;
      if (e.size() != 5 || e[0] != "E" || !ParseInt(e[1], offset) || !ParseInt(e[2], room) ||
          offset < INT32_MIN || offset > INT32_MAX || room < 0 || room > 255 ||
          !Unescape(e[3], entry.category) || !Unescape(e[4], entry.title)) {
        return false;
      }
      entry.path = path;
      entry.categoryOffset = static_cast<int32_t>(offset);
      entry.maxCategoryLength = static_cast<uint8_t>(room);
      k.entries.push_back(std::move(entry));
    }
    if (k.produced && k.entries.empty()) return false;
    read[ToLower(path)] = std::move(k);
    ++records;
  }
  if (!ended) return false;  // cut short: trust none of it
  known_ = std::move(read);
  loaded_ = true;
  return true;
}

bool ScanCache::Save() const {
  if (loaded_ && misses_ == 0 && static_cast<size_t>(hits_) == known_.size()) return true;  // nothing new
  std::string text = header_ + "\n";
  int64_t records = 0;
  for (const auto& [key, k] : known_) {
    if (!k.used) continue;
    const std::string path = k.entries.empty() ? key : k.entries.front().path;
    text += "F\t" + std::to_string(k.size) + "\t" + std::to_string(k.mtime) + "\t" + (k.produced ? "1" : "0") +
            "\t" + std::to_string(k.entries.size()) + "\t" + Escape(path) + "\n";
    for (const PluginEntry& e : k.entries) {
      text += "E\t" + std::to_string(e.categoryOffset) + "\t" + std::to_string(e.maxCategoryLength) + "\t" +
              Escape(e.category) + "\t" + Escape(e.title) + "\n";
    }
    ++records;
  }
  text += "END\t" + std::to_string(records) + "\n";
  std::error_code ec;
  std::filesystem::create_directories(std::filesystem::path(file_).parent_path(), ec);
  return WriteWholeFile(file_, text);
}

bool ScanCache::Identify(const std::string& folder, const std::string& name, const ScanOptions& options,
                         const PluginTypeTable& table, const FilterEnv& env, std::vector<PluginEntry>& out) {
  const std::string path = WithTrailingSeparator(folder) + name;
  int64_t size = -1, mtime = 0;
  const bool stated = StatFile(path, size, mtime);
  const std::string key = ToLower(path);
  if (stated) {
    auto it = known_.find(key);
    if (it != known_.end() && it->second.size == size && it->second.mtime == mtime) {
      Known& k = it->second;
      k.used = true;
      ++hits_;
      for (const PluginEntry& e : k.entries) {
        out.push_back(e);
        out.back().path = path;  // the true spelling of today
      }
      return k.produced;
    }
  }
  ++misses_;
  const size_t first = out.size();
  const bool produced = IdentifyFile(folder, name, options, table, env, out);
  if (stated) {
    Known k;
    k.size = size;
    k.mtime = mtime;
    k.produced = produced;
    k.used = true;
    if (produced) k.entries.assign(out.begin() + static_cast<std::ptrdiff_t>(first), out.end());
    // The time was taken before the read: a file written while it was read
    // has a newer time by now, so the next scan reads it again.
    if (!produced || !k.entries.empty()) known_[key] = std::move(k);
    else known_.erase(key);
  }
  return produced;
}

ScanCallbacks ScanCache::Wrap(ScanCallbacks callbacks, const ScanOptions& options, const PluginTypeTable& table,
                              const FilterEnv& env) {
  callbacks.identify = [this, options, &table, &env](const std::string& folder, const std::string& name,
                                                     std::vector<PluginEntry>& out) {
    return Identify(folder, name, options, table, env, out);
  };
  return callbacks;
}

}  // namespace trel
