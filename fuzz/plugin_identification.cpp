// Identifying a plugin file without loading it: the scanner's dispatch by
// suffix, and each reader on its own (PE resources with PiPL, PIMI and _8BFM,
// the Premiere signatures, the type table, version strings). The first byte
// picks the suffix and the scan options; the rest is the file.
#include <iterator>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "catalogue/PluginIdentification.h"
#include "catalogue/PluginScanner.h"

namespace {

const char* const kNames[] = {"in.8bf", "in.prm", "in.bin", "in._bf", "in.aex", "in.8bi",
                              "in.8be", "in.plg", "in.txt", "in.afs", "in.dll", "in_prm"};

const trel::PluginTypeTable& Table() {
  static const trel::PluginTypeTable table = [] {
    trel::PluginTypeList rows;
    for (const auto& text : trel::DefaultPluginTypeRows()) rows.push_back({text, true});
    trel::PluginTypeTable t;
    trel::GetPlugTypes(rows, t);
    return t;
  }();
  return table;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  trel::fuzz::Input in(data, size);
  const uint8_t choice = in.Byte();
  const std::string name = kNames[(choice & 0x0F) % std::size(kNames)];
  const std::string path = trel::fuzz::WriteScratch(name, in.Rest());
  trel::FilterEnv env;
  trel::ScanOptions options;
  options.includeSources = choice & 0x10;
  options.ScanFFOnly = choice & 0x20;
  std::vector<trel::PluginEntry> found;
  trel::IdentifyFile(trel::fuzz::ScratchFolder(), name, options, Table(), env, found);

  trel::ResourceProbe probe;
  trel::ReadCom8bf(path, probe, env);
  std::string category, title;
  int32_t offset = 0, room = 0;
  trel::ReadComprm(path, category, title, offset, room);
  category.clear();
  title.clear();
  trel::ReadOther8b(path, Table(), category, title);
  for (int mode = 0; mode < 3; ++mode) trel::ReadVersionRessource(path, mode);
  return 0;
}
