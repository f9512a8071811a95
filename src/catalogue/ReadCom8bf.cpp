// The resource walk of a Windows plugin. The walk reproduces the program's
// arithmetic exactly, odd spots included, because the scanner, the category
// patch and the information box depend on the numbers it produces.
#include <algorithm>
#include <optional>
#include <string_view>

#include "catalogue/ByteView.h"
#include "catalogue/PluginIdentification.h"
#include "catalogue/FileWindow.h"
#include "filter/CompiledReaders.h"
#include "base/Paths.h"
#include "base/PluginKinds.h"

namespace trel {
namespace {

constexpr int64_t kHeaderWindowPosition = 374;
constexpr int64_t kHeaderWindowSize = 1000;

// The resource section as read: buffer index 0 holds section offset 2, because
// the read starts two bytes into an aligned section.
struct Section {
  ByteView view;
  std::optional<uint32_t> u8(int64_t off) const { return view.u8(off - 2); }
  std::optional<uint32_t> u16(int64_t off) const { return view.u16le(off - 2); }
  std::optional<uint32_t> u24(int64_t off) const { return view.u24le(off - 2); }
};

enum class ResType { None, PIMI, PIPL, BFM };

// A UTF-16 name of the resource directory, compared by the low bytes only.
bool NameIs(const Section& s, int64_t off, std::string_view text) {
  const auto length = s.u16(off);
  if (!length || *length != text.size()) return false;
  for (size_t k = 0; k < text.size(); ++k) {
    const auto c = s.u8(off + 2 + 2 * static_cast<int64_t>(k));
    if (!c || *c != static_cast<uint8_t>(text[k])) return false;
  }
  return true;
}

std::string CutAtNul(const std::string& text) { return text.substr(0, text.find('\0')); }

void InterpretPipl(const ByteView& d, int64_t readPosition, int64_t dataOffset, ProbeElement& e) {
  // The property list isn't walked: the keys are searched. Counting d from 1,
  // a key at d[p + 4] has its count at d[p + 16]; here, counting from 0, the
  // key stands at k = p + 3. The vendor code before the key isn't tested.
  const std::string_view all = d.chars();
  size_t from = 4;
  for (;;) {
    const size_t name = all.find("eman", from);
    const size_t catg = all.find("gtac", from);
    const size_t k = std::min(name, catg);
    if (k == std::string_view::npos) return;
    const int64_t p = static_cast<int64_t>(k) - 3;
    if (k == name) {
      if (e.title.empty()) {
        uint32_t count = 0;
        e.title = d.pascal(p + 15, count);
      }
      if (!e.category.empty()) return;
    } else {
      // Position of the category's first character in the file.
      e.categoryOffset = static_cast<int32_t>(p + readPosition + dataOffset + 16);
      uint32_t count = 0;
      e.category = d.pascal(p + 15, count);
      e.maximumLength = static_cast<int32_t>(count) + d.zerosAfter(p + count + 16);
      if (!e.title.empty()) return;
    }
    from = k + 1;
  }
}

}  // namespace

bool ReadCom8bf(const std::string& path, ResourceProbe& probe, const FilterEnv& env, FileFacts* facts) {
  probe.elements.assign(1, ProbeElement{});
  if (ClassifyPluginName(path).kind == PluginKind::MacFilterFactory) {
    const int64_t length = FileLength(path);
    if (length == 99712 || length == 99840) {
      std::string folder, name;
      SplitPath(path, folder, name);
      FFFilter f;
      if (!Read8bf(f, folder, name, true, false, env)) return false;
      probe.elements[0] = {f.category, f.title, 0, static_cast<int32_t>(f.category.size())};
      return true;
    }
  }

  const FileWindow file(path);
  if (!file.IsOpen()) return false;
  const int64_t fileLength = file.Length();
  if (facts) *facts = {true, fileLength, file.ModificationTime()};
  std::string head = file.Read(kHeaderWindowPosition - 1, kHeaderWindowSize);
  head.resize(kHeaderWindowSize, '\0');
  const ByteView h(head);

  // The section name ".rsrc" starts on a four-byte boundary, so its "r" sits at
  // 1-based indices 1, 5, 9, ... of the window.
  int64_t r = -1;
  for (int64_t i = 1; i <= kHeaderWindowSize; i += 4) {
    if (h.matches(i - 1, "rsrc")) {
      r = i;
      break;
    }
  }
  if (r < 0) return false;
  const auto va = h.u24le(r + 11 - 1);
  const auto rawSize = h.u24le(r + 15 - 1);
  const auto rawPosition = h.u24le(r + 19 - 1);
  if (!va || !rawSize || !rawPosition || *rawSize == 0) return false;

  const int64_t sectionVA = *va;
  const int64_t readPosition = *rawPosition + 3 - (*rawPosition % 4);
  int64_t readLength = static_cast<int64_t>(*rawSize) + 1;
  if (readPosition + readLength - 1 > fileLength) readLength = fileLength - readPosition;
  if (readLength <= 0) return false;
  const std::string bytes = file.Read(readPosition - 1, readLength);
  const Section s{ByteView(bytes)};

  // Named entries, or else the numbered ones read with their bytes swapped: a
  // root of numbered types only thus walks far, until the bounds end it.
  int64_t count = 0;
  if (const auto named = s.u16(12)) count = *named;
  if (count == 0) {
    const auto hi = s.u8(14), lo = s.u8(15);
    if (!hi || !lo) return false;
    count = *hi * 256 + *lo;
  }

  bool foundPIMI = false, foundPIPL = false, found8BFM = false;
  const auto result = [&probe] {
    return probe.Count() >= 1 && !probe[1].category.empty() && !probe[1].title.empty();
  };

  // Each pass walks the root directory for a type not yet handled; PIMI and
  // _8BFM meet in the same elements over two passes. At most three passes.
  for (;;) {
    ResType hit = ResType::None;
    int64_t typeDirectory = 0;
    for (int64_t e = 0; e < count; ++e) {
      const int64_t entry = 16 + 8 * e;
      const auto nameField = s.u24(entry);
      if (!nameField) return false;
      const int64_t nameOffset = *nameField;
      if (nameOffset - 1 < 1 || nameOffset - 1 > fileLength) return false;
      if (!foundPIMI && NameIs(s, nameOffset, "PIMI")) {
        hit = ResType::PIMI;
      } else if (NameIs(s, nameOffset, "PIPL")) {
        hit = ResType::PIPL;
      } else if (!found8BFM && NameIs(s, nameOffset, "_8BFM")) {
        hit = ResType::BFM;
      }
      if (hit != ResType::None) {
        const auto dataField = s.u24(entry + 4);  // the subdirectory flag (bit 31) falls away
        if (!dataField) return false;
        typeDirectory = *dataField;
        break;
      }
    }
    if (hit == ResType::None) return result();

    const auto filters = s.u8(typeDirectory + 14);
    if (!filters) return result();
    if (hit != ResType::BFM) probe.elements.assign(*filters, ProbeElement{});
    const int resources = std::min<int>(static_cast<int>(*filters), probe.Count());

    // A directory that announces more resources than it holds ends the walk;
    // the filters found so far are what the file has to say.
    const auto endEarly = [&](int k) {
      if (hit != ResType::BFM) probe.elements.resize(static_cast<size_t>(k - 1));
      return result();
    };
    for (int k = 1; k <= resources; ++k) {
      const int64_t entry = typeDirectory + 16 + 8 * (k - 1);
      const auto language = s.u24(entry + 4);
      if (!language) return endEarly(k);
      const auto dataEntry = s.u24(*language + 16 + 4);
      if (!dataEntry) return endEarly(k);
      const auto rva = s.u24(*dataEntry);
      const auto size = s.u24(*dataEntry + 4);
      if (!rva || !size) return endEarly(k);
      const int64_t dataOffset = static_cast<int64_t>(*rva) - sectionVA;
      // d[1] is the resource's third byte: the read started two bytes in.
      if (dataOffset < 0 || !s.view.contains(dataOffset, *size)) return endEarly(k);
      const ByteView d(bytes.data() + dataOffset, *size);
      ProbeElement& el = probe[k];

      switch (hit) {
        case ResType::PIMI:
          if (el.category.empty()) {
            el.category = d.zstring(0, d.size()).value_or("");
            // A difference, not a sum, on purpose: the odd or negative value
            // marks the old-style plugin for the scanner and the report.
            el.categoryOffset = static_cast<int32_t>(readPosition - dataOffset);
            if (*size > 19) el.maximumLength = static_cast<int32_t>(*size - 19);
          }
          break;
        case ResType::BFM:
          el.title = d.zstring(0, d.size()).value_or("");
          break;
        case ResType::PIPL:
          InterpretPipl(d, readPosition, dataOffset, el);
          break;
        case ResType::None:
          break;
      }
      el.category = CutAtNul(el.category);
      el.title = CutAtNul(el.title);
    }

    if (hit == ResType::PIMI) foundPIMI = true;
    if (hit == ResType::PIPL) foundPIPL = true;
    if (hit == ResType::BFM) found8BFM = true;
    if ((foundPIMI && found8BFM) || foundPIPL) return result();
  }
}

}  // namespace trel
