#include "support/PeBuilder.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>
#include <utility>

namespace trel::test {
namespace {

void Put16(std::string& b, size_t at, uint32_t v) {
  if (b.size() < at + 2) b.resize(at + 2, '\0');
  b[at] = static_cast<char>(v & 0xFF);
  b[at + 1] = static_cast<char>((v >> 8) & 0xFF);
}
void Put32(std::string& b, size_t at, uint32_t v) {
  Put16(b, at, v & 0xFFFF);
  Put16(b, at + 2, v >> 16);
}
void Append16(std::string& b, uint32_t v) { Put16(b, b.size(), v); }
void Append32(std::string& b, uint32_t v) { Put32(b, b.size(), v); }
void PadTo(std::string& b, size_t multiple) {
  while (b.size() % multiple) b += '\0';
}
size_t RoundUp(size_t n, size_t multiple) { return (n + multiple - 1) / multiple * multiple; }
std::string Upper(std::string s) {
  for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return s;
}
// UTF-16 little endian, zero-terminated.
std::string Wide(const std::string& s) {
  std::string w;
  for (char c : s) Append16(w, static_cast<unsigned char>(c));
  Append16(w, 0);
  return w;
}

// The resource section: root directory, type directories, language
// directories, data entries, type names, then the data, each aligned to 8.
std::string ResourceSection(const std::vector<PeResource>& resources, uint32_t sectionVA) {
  struct Item {
    const PeResource* r;
    size_t lang = 0, entry = 0, data = 0;
  };
  struct Type {
    std::string name;
    uint16_t id;
    std::vector<Item> items;
    size_t dir = 0, nameAt = 0;
  };
  std::vector<Type> types;
  for (const PeResource& r : resources) {
    auto it = std::find_if(types.begin(), types.end(), [&](const Type& t) {
      return r.typeName.empty() ? (t.name.empty() && t.id == r.typeId) : t.name == r.typeName;
    });
    if (it == types.end()) {
      types.push_back({r.typeName, r.typeId, {}});
      it = types.end() - 1;
    }
    it->items.push_back({&r});
  }
  // Named types first, by upper-case name; numbered ones by id; items by id.
  std::stable_sort(types.begin(), types.end(), [](const Type& a, const Type& b) {
    if (a.name.empty() != b.name.empty()) return !a.name.empty();
    return a.name.empty() ? a.id < b.id : Upper(a.name) < Upper(b.name);
  });
  for (Type& t : types) {
    std::stable_sort(t.items.begin(), t.items.end(), [](const Item& a, const Item& b) { return a.r->id < b.r->id; });
  }

  size_t at = 16 + 8 * types.size();
  const auto reserve = [&](size_t n) { return std::exchange(at, at + n); };
  for (Type& t : types) t.dir = reserve(16 + 8 * t.items.size());
  for (Type& t : types)
    for (Item& i : t.items) i.lang = reserve(24);
  for (Type& t : types)
    for (Item& i : t.items) i.entry = reserve(16);
  size_t named = 0;
  for (Type& t : types) {
    if (t.name.empty()) continue;
    ++named;
    t.nameAt = reserve(2 + 2 * t.name.size());
  }
  at = RoundUp(at, 8);
  for (Type& t : types)
    for (Item& i : t.items) i.data = std::exchange(at, RoundUp(at + i.r->data.size(), 8));

  std::string s(at, '\0');
  Put16(s, 12, static_cast<uint32_t>(named));
  Put16(s, 14, static_cast<uint32_t>(types.size() - named));
  for (size_t n = 0; n < types.size(); ++n) {
    const Type& t = types[n];
    Put32(s, 16 + 8 * n, t.name.empty() ? t.id : (0x80000000u | static_cast<uint32_t>(t.nameAt)));
    Put32(s, 16 + 8 * n + 4, 0x80000000u | static_cast<uint32_t>(t.dir));
    Put16(s, t.dir + 14, static_cast<uint32_t>(t.items.size()));
    for (size_t k = 0; k < t.items.size(); ++k) {
      const Item& i = t.items[k];
      Put32(s, t.dir + 16 + 8 * k, i.r->id);
      Put32(s, t.dir + 16 + 8 * k + 4, 0x80000000u | static_cast<uint32_t>(i.lang));
      Put16(s, i.lang + 14, 1);
      Put32(s, i.lang + 16, 0x409);
      Put32(s, i.lang + 20, static_cast<uint32_t>(i.entry));
      Put32(s, i.entry, sectionVA + static_cast<uint32_t>(i.data));
      Put32(s, i.entry + 4, static_cast<uint32_t>(i.r->data.size()));
      s.replace(i.data, i.r->data.size(), i.r->data);
    }
    if (t.name.empty()) continue;
    Put16(s, t.nameAt, static_cast<uint32_t>(t.name.size()));
    for (size_t c = 0; c < t.name.size(); ++c) Put16(s, t.nameAt + 2 + 2 * c, static_cast<unsigned char>(t.name[c]));
  }
  return s;
}

// A node of a version resource: header, key, padding, value, padding, children.
std::string VersionNode(const std::string& key, const std::string& value, uint16_t valueLength,
                        uint16_t type, const std::vector<std::string>& children) {
  std::string n(6, '\0');
  n += Wide(key);
  PadTo(n, 4);
  n += value;
  PadTo(n, 4);
  for (const std::string& child : children) {
    n += child;
    PadTo(n, 4);
  }
  Put16(n, 0, static_cast<uint32_t>(n.size()));
  Put16(n, 2, valueLength);
  Put16(n, 4, type);
  return n;
}

struct Layout {
  size_t sectionTable, headersEnd;
  uint32_t headersSize, rsrcRaw;
};
Layout LayoutOf(const PeOptions& o) {
  Layout l;
  l.sectionTable = o.peHeaderOffset + 24 + (o.pe32plus ? 240 : 224);
  l.headersEnd = l.sectionTable + 40 * static_cast<size_t>(o.sectionsBefore + 1);
  l.headersSize = static_cast<uint32_t>(RoundUp(l.headersEnd, 0x200));
  l.rsrcRaw = o.rsrcRawOffset ? o.rsrcRawOffset : l.headersSize + 0x200 * static_cast<uint32_t>(o.sectionsBefore);
  return l;
}

// A signature stored reversed, then a 32-bit one.
std::string Signature(const char* reversed) {
  std::string s = reversed;
  Append32(s, 1);
  return s;
}

// A 16-bit version, then zero-terminated text.
std::string VersionedText(const std::string& text) {
  std::string d;
  Append16(d, 1);
  return d + text + '\0';
}

}  // namespace

std::string BuildPe(const std::vector<PeResource>& resources, const PeOptions& o) {
  const Layout l = LayoutOf(o);
  const std::string rsrc = ResourceSection(resources, o.rsrcVirtualAddress);
  if (l.rsrcRaw < l.headersEnd) throw std::invalid_argument("resource section overlaps the headers");

  std::string b(l.rsrcRaw, '\0');
  b.replace(0, 2, "MZ");
  Put32(b, 0x3C, o.peHeaderOffset);
  const size_t pe = o.peHeaderOffset;
  b.replace(pe, 4, std::string("PE\0\0", 4));
  Put16(b, pe + 4, o.pe32plus ? 0x8664 : 0x14C);
  Put16(b, pe + 6, static_cast<uint32_t>(o.sectionsBefore + 1));
  Put16(b, pe + 20, o.pe32plus ? 240 : 224);
  Put16(b, pe + 22, 0x2022);  // executable, large addresses, DLL
  const size_t opt = pe + 24;
  Put16(b, opt, o.pe32plus ? 0x20B : 0x10B);
  Put32(b, opt + 32, 0x1000);  // section alignment
  Put32(b, opt + 36, 0x200);   // file alignment
  Put32(b, opt + 60, l.headersSize);
  const size_t directories = opt + (o.pe32plus ? 112 : 96);
  Put32(b, directories - 4, 16);
  Put32(b, directories + 8 * 2, o.rsrcVirtualAddress);
  Put32(b, directories + 8 * 2 + 4, static_cast<uint32_t>(rsrc.size()));

  static const char* const kNames[] = {".text", ".rdata", ".data", ".pdata", ".tls", ".gfids", ".idata"};
  for (int k = 0; k <= o.sectionsBefore; ++k) {
    const size_t h = l.sectionTable + 40 * static_cast<size_t>(k);
    const bool isRsrc = k == o.sectionsBefore;
    const std::string name = isRsrc ? ".rsrc" : kNames[k % 7];
    b.replace(h, name.size(), name);
    // virtual size, address, raw size, raw position, characteristics
    const uint32_t fields[] = {
        isRsrc ? static_cast<uint32_t>(rsrc.size()) : 0x200u,
        isRsrc ? o.rsrcVirtualAddress : 0x1000u * static_cast<uint32_t>(k + 1),
        isRsrc ? static_cast<uint32_t>(RoundUp(rsrc.size(), 0x200)) : 0x200u,
        isRsrc ? l.rsrcRaw : l.headersSize + 0x200 * static_cast<uint32_t>(k),
    };
    for (size_t f = 0; f < 4; ++f) Put32(b, h + 8 + 4 * f, fields[f]);
    Put32(b, h + 36, isRsrc ? 0x40000040 : 0x60000020);
  }
  b.resize(l.rsrcRaw, static_cast<char>(o.filler));
  b += rsrc;
  b.resize(RoundUp(b.size(), 0x200), '\0');
  if (o.fileSize) {
    if (o.fileSize < b.size()) throw std::invalid_argument("file size below the built size");
    b.resize(o.fileSize, static_cast<char>(o.filler));
  }
  return b;
}

std::string BuildPeWithTextAt(const std::vector<PeResource>& resources, PeOptions options,
                              const std::string& text, size_t position) {
  // The text keeps its distance from the section start; the section moves.
  const uint32_t raw = LayoutOf(options).rsrcRaw;
  const size_t found = BuildPe(resources, options).find(text, raw);
  if (found == std::string::npos) throw std::invalid_argument("text not in the resources");
  const size_t within = found - raw;
  if (position - 1 < within) throw std::invalid_argument("position too early for the section");
  options.rsrcRawOffset = static_cast<uint32_t>(position - 1 - within);
  return BuildPe(resources, options);
}

std::string PiplPlugin(const std::string& category, const std::string& title, const PeOptions& options) {
  return BuildPe({Pipl({category, title})}, options);
}

std::string PiplProperty(const std::string& key, const std::string& text, int extraPadding) {
  std::string data(1, static_cast<char>(text.size()));
  data += text;
  PadTo(data, 4);
  data.append(static_cast<size_t>(extraPadding), '\0');
  std::string p = "MIB8" + std::string(key.rbegin(), key.rend());
  Append32(p, 0);
  Append32(p, static_cast<uint32_t>(data.size()));
  return p + data;
}

std::string PiplData(const PiplFilter& f) {
  std::vector<std::string> props;
  props.push_back("MIB8dnik");
  Append32(props.back(), 0);
  Append32(props.back(), 4);
  props.back() += "MFB8";
  std::vector<std::string> texts;
  const auto pascal = [&](bool with, const std::string& key, const std::string& text) {
    if (!with) return;
    texts.push_back(PiplProperty(key, text, f.extraPadding));
    if (f.countIncludesPadding) texts.back()[16] = static_cast<char>(texts.back().size() - 17);
  };
  pascal(f.withName, "name", f.title);
  pascal(f.withCategory, "catg", f.category);
  if (!f.nameFirst) std::reverse(texts.begin(), texts.end());
  props.insert(props.end(), texts.begin(), texts.end());
  std::string point = "PluginMain";
  point += '\0';
  PadTo(point, 4);
  props.push_back("MIB84668");
  Append32(props.back(), 0);
  Append32(props.back(), static_cast<uint32_t>(point.size()));
  props.back() += point;

  std::string d;
  Append16(d, 1);
  Append32(d, 0);
  Append32(d, static_cast<uint32_t>(props.size()));
  for (const std::string& p : props) d += p;
  return d;
}

std::string PimiData(const std::string& category) { return VersionedText(category); }
std::string Bfm8Data(const std::string& title) { return VersionedText(title); }

std::string VersionData(const std::vector<std::pair<std::string, std::string>>& strings) {
  std::vector<std::string> children;
  for (const auto& [key, value] : strings) {
    children.push_back(VersionNode(key, Wide(value), static_cast<uint16_t>(value.size() + 1), 1, {}));
  }
  const std::string table = VersionNode("040904b0", "", 0, 1, children);
  const std::string stringInfo = VersionNode("StringFileInfo", "", 0, 1, {table});
  std::string fixed;
  Append32(fixed, 0xFEEF04BD);
  Append32(fixed, 0x00010000);
  fixed.resize(52, '\0');
  return VersionNode("VS_VERSION_INFO", fixed, 52, 0, {stringInfo});
}

PeResource Pipl(const PiplFilter& filter, uint16_t id) { return {"PIPL", 0, id, PiplData(filter)}; }
PeResource Pimi(const std::string& category, uint16_t id) { return {"PIMI", 0, id, PimiData(category)}; }
PeResource Bfm8(const std::string& title, uint16_t id) { return {"_8BFM", 0, id, Bfm8Data(title)}; }
PeResource Version(const std::vector<std::pair<std::string, std::string>>& strings) {
  return {"", 16, 1, VersionData(strings)};
}

std::string PlaceBytes(size_t size, const std::vector<std::pair<size_t, std::string>>& placements,
                       uint8_t filler) {
  std::string b(size, static_cast<char>(filler));
  for (const auto& [at, bytes] : placements) {
    if (at + bytes.size() > size) throw std::invalid_argument("placement beyond the file");
    b.replace(at, bytes.size(), bytes);
  }
  return b;
}

std::string PremiereVideo(const std::string& title, uint8_t version) {
  std::string s = Signature("tlFV") + static_cast<char>(version);
  s.resize(version < 3 ? 16 : 8, '\0');
  return s + title + '\0';
}

std::string PremiereAudio(const std::string& title) { return Signature("tlFA") + title + '\0'; }

std::string PremiereTransition(const std::string& firstName, const std::string& secondName,
                               size_t zerosBetween) {
  return Signature("XFPS") + firstName + std::string(zerosBetween + 1, '\0') + secondName + '\0';
}

}  // namespace trel::test
