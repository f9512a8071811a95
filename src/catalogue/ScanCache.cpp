#include "catalogue/ScanCache.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdio>
#include <filesystem>
#include <sstream>
#include <string_view>

#include "base/Paths.h"
#include "base/PluginKinds.h"
#include "base/SafeTarget.h"

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

// A whole decimal number and nothing else (the standard parser stops at the
// first other character, so the end must be the text's end).
bool ParseInt(std::string_view text, int64_t& value) {
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && stop == end && !text.empty();
}

// The next tab-separated field of a line; false past the line's last field.
bool NextField(std::string_view& line, std::string_view& field, bool& more) {
  if (!more) return false;
  const size_t tab = line.find('\t');
  field = line.substr(0, tab);
  more = tab != std::string_view::npos;
  line = more ? line.substr(tab + 1) : std::string_view();
  return true;
}

// Whether every backslash starts a sequence Escape writes.
bool EscapesValid(std::string_view text, bool& escaped) {
  escaped = false;
  for (size_t i = text.find('\\'); i != std::string_view::npos; i = text.find('\\', i + 2)) {
    escaped = true;
    if (i + 1 >= text.size()) return false;
    const char c = text[i + 1];
    if (c != '\\' && c != 't' && c != 'n' && c != 'r') return false;
  }
  return true;
}

// Paths are told apart without case, as the catalogue has always matched
// them; the letters of the cache's own look-up are ASCII ones.
inline unsigned char Lower(char c) {
  const auto u = static_cast<unsigned char>(c);
  return u >= 'A' && u <= 'Z' ? static_cast<unsigned char>(u | 0x20) : u;
}

uint64_t LowerHash(std::string_view text) {
  uint64_t h = 1469598103934665603ull;
  for (char c : text) {
    h ^= Lower(c);
    h *= 1099511628211ull;
  }
  return h;
}

bool SameIgnoringCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (a[i] != b[i] && Lower(a[i]) != Lower(b[i])) return false;
  return true;
}

bool StatPath(const std::string& path, int64_t& size, int64_t& mtime) {
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return false;
  size = static_cast<int64_t>(st.st_size);
  mtime = static_cast<int64_t>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
  return true;
}

bool ReadWhole(const std::string& path, std::string& bytes) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  struct stat st {};
  bool ok = ::fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_size > 0 && st.st_size <= kMaxCacheFile;
  if (ok) {
    bytes.resize(static_cast<size_t>(st.st_size));
    size_t got = 0;
    while (got < bytes.size()) {
      const ssize_t n = ::read(fd, bytes.data() + got, bytes.size() - got);
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) break;
      got += static_cast<size_t>(n);
    }
    ok = got == bytes.size();
  }
  ::close(fd);
  return ok;
}

// One record as the cache file holds it: the F line and an E line per entry.
void AppendRecord(std::string& text, const std::string& path, int64_t size, int64_t mtime, bool produced,
                  const PluginEntry* entries, size_t count) {
  const auto number = [&text](int64_t value) {
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    text.append(digits, end);
  };
  const auto escaped = [&text](const std::string& field) {
    if (field.find_first_of("\\\t\n\r") == std::string::npos) text += field;
    else text += Escape(field);
  };
  text += "F\t";
  number(size);
  text += '\t';
  number(mtime);
  text += produced ? "\t1\t" : "\t0\t";
  number(static_cast<int64_t>(count));
  text += '\t';
  escaped(path);
  text += '\n';
  for (size_t i = 0; i < count; ++i) {
    const PluginEntry& e = entries[i];
    text += "E\t";
    number(e.categoryOffset);
    text += '\t';
    number(e.maxCategoryLength);
    text += '\t';
    escaped(e.category);
    text += '\t';
    escaped(e.title);
    text += '\n';
  }
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

ScanCache::~ScanCache() {
  if (statFd_ >= 0) ::close(statFd_);
}

void ScanCache::Clear() {
  bytes_.clear();
  records_.clear();
  entries_.clear();
  slots_.clear();
  distinct_ = 0;
  nextGuess_ = 0;
  loaded_ = false;
}

bool ScanCache::Load() {
  Clear();
  fresh_.clear();
  freshCount_ = 0;
  const auto fail = [this] {
    Clear();
    return false;
  };
  if (!ReadWhole(file_, bytes_)) return fail();
  const std::string_view all(bytes_);
  size_t at = 0;
  // One line from `at`, without its end; the last line may lack one.
  const auto nextLine = [&](std::string_view& line) {
    if (at >= all.size()) return false;
    const size_t end = all.find('\n', at);
    line = all.substr(at, end == std::string_view::npos ? std::string_view::npos : end - at);
    at = end == std::string_view::npos ? all.size() : end + 1;
    return true;
  };
  // Most cache files hold no escape at all; then no field needs a look.
  const bool anyEscape = all.find('\\') != std::string_view::npos;
  const auto textOf = [&](std::string_view field, Text& text) {
    text.at = static_cast<uint32_t>(field.data() - all.data());
    text.length = static_cast<uint32_t>(field.size());
    return !anyEscape || EscapesValid(field, text.escaped);
  };

  std::string_view line;
  if (!nextLine(line) || line != header_) return fail();
  bool ended = false;
  while (!ended) {
    const uint32_t lineStart = static_cast<uint32_t>(at);
    if (!nextLine(line)) break;
    std::string_view f[6];
    size_t n = 0;
    bool more = true;
    std::string_view rest = line;
    while (n < 6 && NextField(rest, f[n], more)) ++n;
    if (more) return fail();  // more fields than any line has
    if (n == 2 && f[0] == "END") {
      int64_t count = -1;
      if (!ParseInt(f[1], count) || count != static_cast<int64_t>(records_.size())) return fail();
      ended = true;
      break;
    }
    // F <size> <mtime> <produced> <entry count> <path>
    Record r;
    int64_t produced = 0, count = 0;
    if (n != 6 || f[0] != "F" || !ParseInt(f[1], r.size) || !ParseInt(f[2], r.mtime) ||
        !ParseInt(f[3], produced) || !ParseInt(f[4], count) || count < 0 || count > 100000 || f[5].empty() ||
        !textOf(f[5], r.path)) {
      return fail();
    }
    r.produced = produced != 0;
    r.linesAt = lineStart;
    r.firstEntry = static_cast<uint32_t>(entries_.size());
    r.entryCount = static_cast<uint32_t>(count);
    for (int64_t i = 0; i < count; ++i) {
      // E <offset> <room> <category> <title>
      if (!nextLine(line)) return fail();
      std::string_view e[5];
      size_t m = 0;
      bool eMore = true;
      std::string_view eRest = line;
      while (m < 5 && NextField(eRest, e[m], eMore)) ++m;
      int64_t offset = 0, room = 0;
      Entry entry;
      if (eMore || m != 5 || e[0] != "E" || !ParseInt(e[1], offset) || !ParseInt(e[2], room) ||
          offset < INT32_MIN || offset > INT32_MAX || room < 0 || room > 255 || !textOf(e[3], entry.category) ||
          !textOf(e[4], entry.title)) {
        return fail();
      }
      entry.offset = static_cast<int32_t>(offset);
      entry.room = static_cast<uint8_t>(room);
      entries_.push_back(entry);
    }
    if (r.produced && count == 0) return fail();
    r.linesEnd = static_cast<uint32_t>(at);
    if (r.path.escaped) {
      std::string path;
      if (!Unescape(std::string(f[5]), path)) return fail();
      r.hash = LowerHash(path);
    } else {
      r.hash = LowerHash(f[5]);
    }
    records_.push_back(r);
  }
  if (!ended) return fail();  // cut short: trust none of it

  size_t slots = 16;
  while (slots < 2 * records_.size()) slots *= 2;
  slots_.assign(slots, 0);
  for (uint32_t i = 0; i < records_.size(); ++i) {
    const std::string path = records_[i].path.escaped ? Field(records_[i].path) : std::string();
    for (size_t s = records_[i].hash & (slots - 1);; s = (s + 1) & (slots - 1)) {
      if (slots_[s] == 0) {
        slots_[s] = i + 1;
        ++distinct_;
        break;
      }
      const Record& other = records_[slots_[s] - 1];
      // The same path twice: the later record stands, as a rewrite would.
      if (other.hash == records_[i].hash &&
          SameIgnoringCase(path.empty() ? std::string_view(bytes_).substr(records_[i].path.at, records_[i].path.length)
                                        : std::string_view(path),
                           Field(other.path))) {
        slots_[s] = i + 1;
        break;
      }
    }
  }
  loaded_ = true;
  return true;
}

std::string ScanCache::Field(const Text& text) const {
  std::string raw = bytes_.substr(text.at, text.length);
  if (!text.escaped) return raw;
  std::string out;
  Unescape(raw, out);  // checked on loading
  return out;
}

const ScanCache::Record* ScanCache::Find(const std::string& path, uint64_t hash) const {
  if (slots_.empty()) return nullptr;
  const size_t mask = slots_.size() - 1;
  for (size_t s = hash & mask; slots_[s] != 0; s = (s + 1) & mask) {
    const Record& r = records_[slots_[s] - 1];
    if (r.hash != hash) continue;
    if (r.path.escaped ? SameIgnoringCase(Field(r.path), path)
                       : SameIgnoringCase(std::string_view(bytes_).substr(r.path.at, r.path.length), path)) {
      return &r;
    }
  }
  return nullptr;
}

bool ScanCache::Save() const {
  if (loaded_ && misses_ == 0 && static_cast<size_t>(hits_) == distinct_) return true;  // nothing new
  std::string text;
  text.reserve(bytes_.size() + fresh_.size() + header_.size() + 32);
  text += header_;
  text += '\n';
  int64_t records = 0;
  for (const Record& r : records_) {
    if (!r.used) continue;
    text.append(bytes_, r.linesAt, r.linesEnd - r.linesAt);
    if (text.back() != '\n') text += '\n';
    ++records;
  }
  text += fresh_;
  records += freshCount_;
  text += "END\t" + std::to_string(records) + "\n";
  std::error_code ec;
  std::filesystem::create_directories(std::filesystem::path(file_).parent_path(), ec);
  return WriteWholeFile(file_, text);
}

bool ScanCache::StatInFolder(const std::string& folder, const std::string& name, const std::string& path,
                             int64_t& size, int64_t& mtime) {
  // The folder stays open while its files are asked about, so each file costs
  // one look-up of its name and no walk of the whole path.
  if (folder != statFolder_) {
    if (statFd_ >= 0) ::close(statFd_);
    statFd_ = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    statFolder_ = folder;
  }
  if (statFd_ < 0 || name.find('/') != std::string::npos) return StatPath(path, size, mtime);
  struct stat st {};
  if (::fstatat(statFd_, name.c_str(), &st, 0) != 0 || !S_ISREG(st.st_mode)) return false;
  size = static_cast<int64_t>(st.st_size);
  mtime = static_cast<int64_t>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
  return true;
}

bool ScanCache::Identify(const std::string& folder, const std::string& name, const ScanOptions& options,
                         const PluginTypeTable& table, const FilterEnv& env, std::vector<PluginEntry>& out) {
  std::string path;
  path.reserve(folder.size() + name.size() + 1);
  path = folder;
  if (path.empty() || path.back() != '/') path = WithTrailingSeparator(std::move(path));
  path += name;
  int64_t size = -1, mtime = 0;
  bool stated = false;
  // The cache lists the files in the order of the scan that wrote it, which
  // is the order they are asked about: the record after the last one found is
  // tried first, and only a file out of turn costs a hash and a look-up.
  const Record* found = nullptr;
  if (nextGuess_ < records_.size()) {
    const Record& guess = records_[nextGuess_];
    if (!guess.path.escaped &&
        SameIgnoringCase(std::string_view(bytes_).substr(guess.path.at, guess.path.length), path)) {
      found = &guess;
    }
  }
  if (!found) found = Find(path, LowerHash(path));
  if (found) {
    nextGuess_ = static_cast<size_t>(found - records_.data()) + 1;
    stated = StatInFolder(folder, name, path, size, mtime);
    if (stated && found->size == size && found->mtime == mtime) {
      Record& r = records_[static_cast<size_t>(found - records_.data())];
      r.used = true;
      ++hits_;
      for (uint32_t i = 0; i < r.entryCount; ++i) {
        const Entry& e = entries_[r.firstEntry + i];
        // The true spelling of today; the last entry takes the path itself.
        out.push_back({i + 1 == r.entryCount ? std::move(path) : path, Field(e.category), Field(e.title), e.offset,
                       e.room});
      }
      return r.produced;
    }
  }
  ++misses_;
  // The size and time must be taken before the read: a file written while it
  // is read has a newer time by now, so the next scan reads it again. A file
  // the cache doesn't know at all costs no look of its own where the reader
  // tells what it found on opening the file.
  const bool readerTells = IsAdobePluginName(name);
  if (!stated && !readerTells) stated = StatInFolder(folder, name, path, size, mtime);
  FileFacts facts;
  const size_t first = out.size();
  const bool produced = IdentifyFile(folder, name, options, table, env, out, stated ? nullptr : &facts);
  if (!stated) {
    if (facts.known) {
      size = facts.size;
      mtime = facts.mtime;
      stated = true;
    } else {
      // Not opened (a size the options pass over, or no access): nothing of
      // the file was read, so its look now is as good as one before.
      stated = StatInFolder(folder, name, path, size, mtime);
    }
  }
  if (stated && (!produced || out.size() > first)) {
    // Written out at once as the file will hold it; Save only appends it.
    AppendRecord(fresh_, path, size, mtime, produced, produced ? out.data() + first : nullptr,
                 produced ? out.size() - first : 0);
    ++freshCount_;
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
