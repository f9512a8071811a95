#include "filter/Dispatch.h"

#include "filter/CodeRewrite.h"
#include "filter/CompiledReaders.h"
#include "base/Paths.h"
#include "base/PluginKinds.h"
#include "filter/TextFormats.h"

namespace trel {
namespace {

enum class SourceKind { Plugin8bf, PluginPrm, AFS, PFF, FFX, TXT, Unknown };

// Kinds by the name: plugins in any of their forms, sources by extension.
SourceKind KindOf(const std::string& name) {
  switch (ClassifyPluginName(name).kind) {
    case PluginKind::Photoshop:
    case PluginKind::MacFilterFactory: return SourceKind::Plugin8bf;
    case PluginKind::Premiere: return SourceKind::PluginPrm;
    default: break;
  }
  const std::string ext = LastFour(name);
  if (ext == ".afs") return SourceKind::AFS;
  if (ext == ".pff") return SourceKind::PFF;
  if (ext == ".ffx") return SourceKind::FFX;
  if (ext == ".txt") return SourceKind::TXT;
  return SourceKind::Unknown;
}

bool ReadPremierePlugin(FFFilter& f, const std::string& folder, const std::string& name,
                        const FilterEnv& env) {
  return Readprm(f, folder, name, false, true, env) || ReadTF(f, folder, name, false, env);
}

// The record shows the source format it came from: "abc.8bf" read from a
// source file becomes "abc.afs".
void ExchangeExtension(FFFilter& f, const char* extension) {
  f.filename = f.filename.substr(0, f.filename.size() >= 4 ? f.filename.size() - 4 : 0) + extension;
}

}  // namespace

bool LoadItFile(FFFilter& f, const std::string& folder, const std::string& name,
                const FilterEnv& env) {
  switch (KindOf(name)) {
    case SourceKind::Plugin8bf:
      return Read8bf(f, folder, name, false, true, env);
    case SourceKind::FFX:
      return ReadFFX(f, folder, name, env);
    case SourceKind::PluginPrm: {
      // The editor always works in Photoshop dialect; isPhotoshop stays false.
      const bool read = ReadPremierePlugin(f, folder, name, env);
      if (read) CorrectprmcodeAll(f);
      return read;
    }
    case SourceKind::TXT: {
      const bool read = ReadTXT(f, folder, name, false, true, env);
      ExchangeExtension(f, ".txt");
      return read;
    }
    case SourceKind::AFS: {
      const bool read = ReadAFS(f, folder, name, env);
      ExchangeExtension(f, ".afs");
      return read;
    }
    case SourceKind::PFF: {
      const bool read = ReadPFF(f, folder, name, env);
      CorrectprmcodeAll(f);
      ExchangeExtension(f, ".pff");
      return read;
    }
    case SourceKind::Unknown:
      break;
  }
  return false;
}

bool ReadFFfile(FFFilter& f, const std::string& fullPath, const FilterEnv& env) {
  std::string folder, name;
  SplitPath(fullPath, folder, name);
  bool read = false;
  switch (KindOf(name)) {
    case SourceKind::Plugin8bf:
      return Read8bf(f, folder, name, false, true, env);
    case SourceKind::PluginPrm:
      return ReadPremierePlugin(f, folder, name, env);
    case SourceKind::TXT:
      return ReadTXT(f, folder, name, false, false, env);
    case SourceKind::AFS:
      read = ReadAFS(f, folder, name, env);
      break;
    case SourceKind::PFF:
      read = ReadPFF(f, folder, name, env);
      break;
    case SourceKind::FFX:
      read = ReadFFX(f, folder, name, env);
      break;
    case SourceKind::Unknown:
      return false;
  }
  // A source without its metadata tail has its file name for a title; such a
  // file is not converted in a batch.
  return read && f.filename != f.title;
}

std::string GetFilname(OutputFormat format, const std::string& name, const FilterOptions& options) {
  std::string extension;
  switch (format) {
    case OutputFormat::Plugin8bf:
      extension = options.compile.templateChoice == CompileTemplate::Macintosh ? "bin" : "8bf";
      break;
    case OutputFormat::PremierePlugin:
    case OutputFormat::TransitionPlugin:
      extension = "prm";
      break;
    case OutputFormat::AFS:
      extension = "afs";
      break;
    case OutputFormat::PFF:
      extension = "pff";
      break;
    case OutputFormat::TXT:
      extension = "txt";
      break;
    default:
      return name;
  }
  // Without a dot the extension is glued on as it is: such names come from a
  // `filename:` line of a text source.
  const auto dot = name.find('.');
  if (dot == std::string::npos) return name + extension;
  return name.substr(0, dot + 1) + extension;
}

}  // namespace trel
