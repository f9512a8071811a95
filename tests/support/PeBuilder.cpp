#include "support/PeBuilder.h"

#include <algorithm>
#include <map>
#include <stdexcept>

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
std::string Reversed(std::string s) {
  std::reverse(s.begin(), s.end());
  return s;
}
std::string Upper(std::string s) {
  for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return s;
}

// The resource section: directories, then names, then the data.
std::string ResourceSection(const std::vector<PeResource>& resources, uint32_t sectionVA) {
  struct Type {
    std::string name;
    uint16_t id;
    std::vector<const PeResource*> items;
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
    it->items.push_back(&r);
  }
  std::stable_sort(types.begin(), types.end(), [](const Type& a, const Type& b) {
    if (a.name.empty() != b.name.empty()) return !a.name.empty();
    if (!a.name.empty()) return Upper(a.name) < Upper(b.name);
    return a.id < b.id;
  });
  for (Type& t : types) {
    std::stable_sort(t.items.begin(), t.items.end(),
                     [](const PeResource* a, const PeResource* b) { return a->id < b->id; });
  }

  size_t named = 0;
  for (const Type& t : types) named += t.name.empty() ? 0 : 1;
  // Offsets of every part.
  size_t at = 16 + 8 * types.size();
  std::vector<size_t> typeDir(types.size());
  for (size_t i = 0; i < types.size(); ++i) {
    typeDir[i] = at;
    at += 16 + 8 * types[i].items.size();
  }
  std::vector<std::vector<size_t>> langDir(types.size()), dataEntry(types.size()), dataAt(types.size());
  for (size_t i = 0; i < types.size(); ++i) {
    for (size_t k = 0; k < types[i].items.size(); ++k) {
      langDir[i].push_back(at);
      at += 24;
    }
  }
  for (size_t i = 0; i < types.size(); ++i) {
    for (size_t k = 0; k < types[i].items.size(); ++k) {
      dataEntry[i].push_back(at);
      at += 16;
    }
  }
  std::vector<size_t> nameAt(types.size(), 0);
  for (size_t i = 0; i < types.size(); ++i) {
    if (types[i].name.empty()) continue;
    nameAt[i] = at;
    at += 2 + 2 * types[i].name.size();
  }
  at = (at + 7) / 8 * 8;
  for (size_t i = 0; i < types.size(); ++i) {
    for (const PeResource* r : types[i].items) {
      dataAt[i].push_back(at);
      at = (at + r->data.size() + 7) / 8 * 8;
    }
  }

  std::string s(at, '\0');
  Put16(s, 12, static_cast<uint32_t>(named));
  Put16(s, 14, static_cast<uint32_t>(types.size() - named));
  for (size_t i = 0; i < types.size(); ++i) {
    const size_t entry = 16 + 8 * i;
    Put32(s, entry, types[i].name.empty() ? types[i].id : (0x80000000u | static_cast<uint32_t>(nameAt[i])));
    Put32(s, entry + 4, 0x80000000u | static_cast<uint32_t>(typeDir[i]));
    Put16(s, typeDir[i] + 14, static_cast<uint32_t>(types[i].items.size()));
    for (size_t k = 0; k < types[i].items.size(); ++k) {
      const size_t e = typeDir[i] + 16 + 8 * k;
      Put32(s, e, types[i].items[k]->id);
      Put32(s, e + 4, 0x80000000u | static_cast<uint32_t>(langDir[i][k]));
      Put16(s, langDir[i][k] + 14, 1);
      Put32(s, langDir[i][k] + 16, 0x409);
      Put32(s, langDir[i][k] + 20, static_cast<uint32_t>(dataEntry[i][k]));
      Put32(s, dataEntry[i][k], sectionVA + static_cast<uint32_t>(dataAt[i][k]));
      Put32(s, dataEntry[i][k] + 4, static_cast<uint32_t>(types[i].items[k]->data.size()));
      s.replace(dataAt[i][k], types[i].items[k]->data.size(), types[i].items[k]->data);
    }
    if (!types[i].name.empty()) {
      Put16(s, nameAt[i], static_cast<uint32_t>(types[i].name.size()));
      for (size_t c = 0; c < types[i].name.size(); ++c) {
        Put16(s, nameAt[i] + 2 + 2 * c, static_cast<unsigned char>(types[i].name[c]));
      }
    }
  }
  return s;
}

// A node of a version resource: header, key, padding, value, padding, children.
std::string VersionNode(const std::string& key, const std::string& value, uint16_t valueLength,
                        uint16_t type, const std::vector<std::string>& children) {
  std::string n(6, '\0');
  for (char c : key) Append16(n, static_cast<unsigned char>(c));
  Append16(n, 0);
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

uint32_t HeadersSize(const PeOptions& o, size_t& sectionTable, size_t& headersEnd) {
  const uint32_t optionalSize = o.pe32plus ? 240 : 224;
  sectionTable = o.peHeaderOffset + 24 + optionalSize;
  headersEnd = sectionTable + 40 * static_cast<size_t>(o.sectionsBefore + 1);
  return static_cast<uint32_t>((headersEnd + 0x1FF) / 0x200 * 0x200);
}

uint32_t DefaultRsrcRaw(const PeOptions& o) {
  size_t table = 0, end = 0;
  return HeadersSize(o, table, end) + 0x200 * static_cast<uint32_t>(o.sectionsBefore);
}

}  // namespace

std::string BuildPe(const std::vector<PeResource>& resources, const PeOptions& o) {
  const uint32_t optionalSize = o.pe32plus ? 240 : 224;
  const int sections = o.sectionsBefore + 1;
  size_t sectionTable = 0, headersEnd = 0;
  const uint32_t headersSize = HeadersSize(o, sectionTable, headersEnd);
  const std::string rsrc = ResourceSection(resources, o.rsrcVirtualAddress);
  const uint32_t rsrcRaw = o.rsrcRawOffset ? o.rsrcRawOffset : DefaultRsrcRaw(o);
  if (rsrcRaw < headersEnd) throw std::invalid_argument("resource section overlaps the headers");

  std::string b(rsrcRaw, '\0');
  b[0] = 'M';
  b[1] = 'Z';
  Put32(b, 0x3C, o.peHeaderOffset);
  const size_t pe = o.peHeaderOffset;
  b.replace(pe, 4, std::string("PE\0\0", 4));
  Put16(b, pe + 4, o.pe32plus ? 0x8664 : 0x14C);
  Put16(b, pe + 6, static_cast<uint32_t>(sections));
  Put16(b, pe + 20, optionalSize);
  Put16(b, pe + 22, 0x2022);  // executable, large addresses, DLL
  const size_t opt = pe + 24;
  Put16(b, opt, o.pe32plus ? 0x20B : 0x10B);
  Put32(b, opt + 32, 0x1000);  // section alignment
  Put32(b, opt + 36, 0x200);   // file alignment
  Put32(b, opt + 60, headersSize);
  const size_t directories = opt + (o.pe32plus ? 112 : 96);
  Put32(b, directories - 4, 16);
  Put32(b, directories + 8 * 2, o.rsrcVirtualAddress);
  Put32(b, directories + 8 * 2 + 4, static_cast<uint32_t>(rsrc.size()));

  static const char* const kNames[] = {".text", ".rdata", ".data", ".pdata", ".tls", ".gfids", ".idata"};
  for (int k = 0; k < sections; ++k) {
    const size_t h = sectionTable + 40 * static_cast<size_t>(k);
    const bool isRsrc = k == o.sectionsBefore;
    const std::string name = isRsrc ? ".rsrc" : kNames[k % 7];
    b.replace(h, name.size(), name);
    if (isRsrc) {
      Put32(b, h + 8, static_cast<uint32_t>(rsrc.size()));
      Put32(b, h + 12, o.rsrcVirtualAddress);
      Put32(b, h + 16, static_cast<uint32_t>((rsrc.size() + 0x1FF) / 0x200 * 0x200));
      Put32(b, h + 20, rsrcRaw);
      Put32(b, h + 36, 0x40000040);
    } else {
      Put32(b, h + 8, 0x200);
      Put32(b, h + 12, 0x1000 * static_cast<uint32_t>(k + 1));
      Put32(b, h + 16, 0x200);
      Put32(b, h + 20, headersSize + 0x200 * static_cast<uint32_t>(k));
      Put32(b, h + 36, 0x60000020);
    }
  }
  b.resize(rsrcRaw, static_cast<char>(o.filler));
  b += rsrc;
  b.resize((b.size() + 0x1FF) / 0x200 * 0x200, '\0');
  if (o.fileSize) {
    if (o.fileSize < b.size()) throw std::invalid_argument("file size below the built size");
    b.resize(o.fileSize, static_cast<char>(o.filler));
  }
  return b;
}

std::string BuildPeWithTextAt(const std::vector<PeResource>& resources, PeOptions options,
                              const std::string& text, size_t position) {
  const std::string first = BuildPe(resources, options);
  const size_t found = first.find(text, DefaultRsrcRaw(options));
  if (found == std::string::npos) throw std::invalid_argument("text not in the resources");
  // The text keeps its distance from the section start; the section moves.
  const size_t within = found - (options.rsrcRawOffset ? options.rsrcRawOffset : DefaultRsrcRaw(options));
  if (position - 1 < within) throw std::invalid_argument("position too early for the section");
  options.rsrcRawOffset = static_cast<uint32_t>(position - 1 - within);
  return BuildPe(resources, options);
}

std::string PiplProperty(const std::string& key, const std::string& text, int extraPadding) {
  std::string data(1, static_cast<char>(text.size()));
  data += text;
  PadTo(data, 4);
  data.append(static_cast<size_t>(extraPadding), '\0');
  std::string p = "MIB8" + Reversed(key);
  Append32(p, 0);
  Append32(p, static_cast<uint32_t>(data.size()));
  return p + data;
}

std::string PiplData(const PiplFilter& f) {
  std::vector<std::string> props;
  {
    std::string kind = "MIB8dnik";
    Append32(kind, 0);
    Append32(kind, 4);
    kind += "MFB8";
    props.push_back(kind);
  }
  const auto pascal = [&](const std::string& key, const std::string& text) {
    std::string p = PiplProperty(key, text, f.extraPadding);
    if (f.countIncludesPadding) p[16] = static_cast<char>(p.size() - 17);
    return p;
  };
  if (f.nameFirst) {
    if (f.withName) props.push_back(pascal("name", f.title));
    if (f.withCategory) props.push_back(pascal("catg", f.category));
  } else {
    if (f.withCategory) props.push_back(pascal("catg", f.category));
    if (f.withName) props.push_back(pascal("name", f.title));
  }
  {
    std::string entry = "MIB84668";
    Append32(entry, 0);
    std::string point = "PluginMain";
    point += '\0';
    PadTo(point, 4);
    Append32(entry, static_cast<uint32_t>(point.size()));
    props.push_back(entry + point);
  }
  std::string d;
  Append16(d, 1);
  Append32(d, 0);
  Append32(d, static_cast<uint32_t>(props.size()));
  for (const std::string& p : props) d += p;
  return d;
}

std::string PimiData(const std::string& category) {
  std::string d;
  Append16(d, 1);
  return d + category + '\0';
}

std::string Bfm8Data(const std::string& title) {
  std::string d;
  Append16(d, 1);
  return d + title + '\0';
}

std::string VersionData(const std::vector<std::pair<std::string, std::string>>& strings) {
  std::vector<std::string> children;
  for (const auto& [key, value] : strings) {
    std::string v;
    for (char c : value) Append16(v, static_cast<unsigned char>(c));
    Append16(v, 0);
    children.push_back(VersionNode(key, v, static_cast<uint16_t>(value.size() + 1), 1, {}));
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
  std::string s = "tlFV";
  Append32(s, 1);
  s += static_cast<char>(version);
  s.resize(version < 3 ? 16 : 8, '\0');
  return s + title + '\0';
}

std::string PremiereAudio(const std::string& title) {
  std::string s = "tlFA";
  Append32(s, 1);
  return s + title + '\0';
}

std::string PremiereTransition(const std::string& firstName, const std::string& secondName,
                               size_t zerosBetween) {
  std::string s = "XFPS";
  Append32(s, 1);
  s += firstName;
  s.append(zerosBetween + 1, '\0');
  return s + secondName + '\0';
}

}  // namespace trel::test
