// Loading a plugin in trel-plughost.exe: its entry point from its PiPL
// resource for this architecture, and when the loader refuses it, why, in
// words: the DLL or the function it imports that is missing.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "PlugHost.h"

namespace trel::plughost {

// --- plugins -------------------------------------------------------------------------
std::map<std::string, LoadedPlugin> g_plugins;

#ifdef _WIN64
constexpr uint32_t kEntryKey = PI_CODE('8', '6', '6', '4');
#else
constexpr uint32_t kEntryKey = PI_CODE('w', 'x', '8', '6');
#endif

// The entry point named in the plugin's PiPL for this architecture, "" if none.
BOOL CALLBACK VisitPiPL(HMODULE m, LPCSTR type, LPSTR name, LONG_PTR param) {
  HRSRC res = FindResourceA(m, name, type);
  HGLOBAL loaded = res ? LoadResource(m, res) : nullptr;
  const auto* p = static_cast<const unsigned char*>(loaded ? LockResource(loaded) : nullptr);
  const DWORD size = res ? SizeofResource(m, res) : 0;
  if (!p || size < 10) return TRUE;
  const uint32_t count = Le32(p + 6);
  size_t at = 10;
  for (uint32_t i = 0; i < count && at + 16 <= size; ++i) {
    const uint32_t key = Le32(p + at + 4), length = Le32(p + at + 12);
    const size_t dataAt = at + 16;
    if (length > size - dataAt) break;
    if (key == kEntryKey) {
      const char* text = reinterpret_cast<const char*>(p + dataAt);
      reinterpret_cast<std::string*>(param)->assign(text, strnlen(text, length));
      return FALSE;
    }
    at = dataAt + ((length + 3) & ~3u);
  }
  return TRUE;
}

std::string EntryFromPiPL(HMODULE module) {
  std::string name;
  EnumResourceNamesA(module, "PIPL", VisitPiPL, reinterpret_cast<LONG_PTR>(&name));
  return name;
}

// --- why a DLL does not load ---------------------------------------------------------
// What a PE file imports, read from the file's bytes: each DLL with the
// functions taken from it by name ("#n" for one taken by number). Empty when
// the file is no PE file; whatever lies outside the file is passed over.
struct Import {
  std::string dll;
  std::vector<std::string> functions;
};

std::vector<Import> ImportsOf(const std::string& path) {
  std::vector<Import> imports;
  FILE* f = Open(path, L"rb");
  if (!f) return imports;
  std::vector<unsigned char> b;
  unsigned char chunk[65536];
  size_t n;
  while ((n = std::fread(chunk, 1, sizeof chunk, f)) > 0 && b.size() < (size_t(64) << 20))
    b.insert(b.end(), chunk, chunk + n);
  std::fclose(f);
  auto u16 = [&](size_t at) -> uint32_t { return at + 2 <= b.size() ? uint32_t(b[at] | b[at + 1] << 8) : 0; };
  auto u32 = [&](size_t at) -> uint32_t { return at + 4 <= b.size() ? Le32(&b[at]) : 0; };
  auto text = [&](size_t at) {
    std::string t;
    for (size_t k = at; k < b.size() && b[k] && t.size() < 260; ++k) t += char(b[k]);
    return t;
  };
  if (b.size() < 64 || b[0] != 'M' || b[1] != 'Z') return imports;
  const size_t pe = u32(60);
  if (pe > b.size() || u32(pe) != 0x00004550) return imports;
  const size_t sections = u16(pe + 6), optSize = u16(pe + 20), opt = pe + 24;
  const bool wide = u16(opt) == 0x20B;  // PE32+: 8-byte thunks
  const uint32_t importRva = u32(opt + (wide ? 112 : 96) + 8);  // data directory 1
  // The file offset of a relative virtual address, through the section table.
  auto fileAt = [&](uint32_t rva) -> size_t {
    const size_t table = opt + optSize;
    for (size_t i = 0; i < sections && i < 96; ++i) {
      const size_t sec = table + 40 * i;
      const uint32_t va = u32(sec + 12), vsize = std::max(u32(sec + 8), u32(sec + 16)), raw = u32(sec + 20);
      if (rva >= va && rva - va < vsize) return size_t(raw) + (rva - va);
    }
    return size_t(-1);
  };
  size_t desc = importRva ? fileAt(importRva) : size_t(-1);
  for (int i = 0; i < 256 && desc != size_t(-1) && desc + 20 <= b.size(); ++i, desc += 20) {
    const uint32_t nameRva = u32(desc + 12);
    if (nameRva == 0) break;
    Import imp;
    const size_t at = fileAt(nameRva);
    if (at < b.size()) imp.dll = text(at);
    if (imp.dll.empty()) continue;
    const uint32_t thunkRva = u32(desc) ? u32(desc) : u32(desc + 16);
    size_t thunk = thunkRva ? fileAt(thunkRva) : size_t(-1);
    const size_t step = wide ? 8 : 4;
    for (int k = 0; k < 4096 && thunk != size_t(-1) && thunk + step <= b.size(); ++k, thunk += step) {
      const uint32_t lo = u32(thunk), hi = wide ? u32(thunk + 4) : 0;
      if (lo == 0 && hi == 0) break;
      const bool byNumber = wide ? (hi & 0x80000000u) != 0 : (lo & 0x80000000u) != 0;
      if (byNumber) {
        imp.functions.push_back("#" + std::to_string(lo & 0xFFFF));
      } else {
        const size_t hint = fileAt(lo & 0x7FFFFFFFu);
        if (hint != size_t(-1) && hint + 2 < b.size()) imp.functions.push_back(text(hint + 2));
      }
    }
    imports.push_back(std::move(imp));
  }
  return imports;
}

std::string FolderOf(const std::string& path) {
  const size_t slash = path.find_last_of("\\/");
  return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

// Where the loader would find `dll` for a module in `folder`: that folder,
// then the search path (our stand-ins' folder, the system folders). "" if
// nowhere.
std::string Locate(const std::string& dll, const std::string& folder) {
  const std::wstring inFolder = Wide(folder + dll);
  if (GetFileAttributesW(inFolder.c_str()) != INVALID_FILE_ATTRIBUTES) return folder + dll;
  wchar_t found[MAX_PATH];
  const DWORD n = SearchPathW(nullptr, Wide(dll).c_str(), nullptr, MAX_PATH, found, nullptr);
  if (n == 0 || n >= MAX_PATH) return {};
  const int len = WideCharToMultiByte(CP_UTF8, 0, found, int(n), nullptr, 0, nullptr, nullptr);
  std::string utf8(size_t(len > 0 ? len : 0), '\0');
  if (len > 0) WideCharToMultiByte(CP_UTF8, 0, found, int(n), &utf8[0], len, nullptr, nullptr);
  return utf8;
}

// Why the module at `path` does not load, as the rest of a sentence that
// starts with its name ("needs MSVCRT10.dll, which is not installed"); "" if
// each DLL it imports loads and has each function it takes. A DLL that is
// there but does not load is looked into in turn.
std::string WhyNotLoaded(const std::string& path, int depth) {
  const std::string folder = FolderOf(path);
  for (const Import& imp : ImportsOf(path)) {
    const std::string file = Locate(imp.dll, folder);
    HMODULE m = file.empty() ? nullptr
                             : LoadLibraryExW(Wide(file).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (!m) m = LoadLibraryW(Wide(imp.dll).c_str());
    if (!m) {
      if (file.empty()) return "needs " + imp.dll + ", which is not installed";
      if (depth < 4) {
        const std::string deeper = WhyNotLoaded(file, depth + 1);
        if (!deeper.empty()) return "needs " + imp.dll + ", which " + deeper;
      }
      return "needs " + imp.dll + ", which does not load here";
    }
    for (const std::string& fn : imp.functions) {
      const bool byNumber = !fn.empty() && fn[0] == '#';
      FARPROC proc = byNumber ? GetProcAddress(m, MAKEINTRESOURCEA(std::atoi(fn.c_str() + 1)))
                              : GetProcAddress(m, fn.c_str());
      if (!proc) {
        FreeLibrary(m);
        return "needs " + fn + " from " + imp.dll + ", which the installed " + imp.dll + " does not have";
      }
    }
    FreeLibrary(m);
  }
  return {};
}

Failure Load(const std::string& path, LoadedPlugin*& out) {
  auto it = g_plugins.find(path);
  if (it != g_plugins.end()) {
    out = &it->second;
    return {};
  }
  // A Linux folder name may hold a line break or a tab; Wine cannot open such
  // a path, and the loader's own word for it ("module not found") misleads.
  for (unsigned char c : path)
    if (c < 0x20 || c == 0x7F)
      return {HostError::LoadFailed,
              "the plugin's path holds a control character (such as a line break or a tab), "
              "which Windows paths cannot hold"};
  HMODULE module = LoadLibraryExW(Wide(path).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (!module) {
    const DWORD error = GetLastError();
    if (error == ERROR_MOD_NOT_FOUND || error == ERROR_PROC_NOT_FOUND || error == ERROR_DLL_INIT_FAILED) {
      const std::string why = WhyNotLoaded(path, 0);
      if (!why.empty()) return {HostError::MissingDll, "the plugin " + why};
    }
    if (error == ERROR_BAD_EXE_FORMAT)
      return {HostError::LoadFailed, "the plugin is no Windows DLL for this architecture"};
    return {HostError::LoadFailed, "the plugin could not be loaded (Windows error " + std::to_string(error) + ")"};
  }
  // Wine loads a DLL whose import names a function its DLL lacks, and only
  // the call fails; Windows refuses it at once. Refused here as Windows does,
  // with the name of what is missing.
  if (const std::string why = WhyNotLoaded(path, 0); !why.empty()) {
    FreeLibrary(module);
    return {HostError::MissingDll, "the plugin " + why};
  }
  const std::string entryName = EntryFromPiPL(module);
  if (entryName.empty()) {
    FreeLibrary(module);
    return {HostError::NoEntryPoint, "the plugin names no entry point for this architecture"};
  }
  auto entry = reinterpret_cast<PIFilterEntry>(reinterpret_cast<void*>(GetProcAddress(module, entryName.c_str())));
  if (!entry) {
    FreeLibrary(module);
    return {HostError::NoEntryPoint, "the plugin has no entry point " + entryName};
  }
  LoadedPlugin& p = g_plugins[path];
  p.module = module;
  p.entry = entry;
  out = &p;
  return {};
}

}  // namespace trel::plughost
