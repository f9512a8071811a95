// Filter sources (AFS, PFF, FFX, TXT) through both reading paths: the editor's
// LoadItFile and the batch conversion's ReadFFfile. The first byte picks the
// suffix and the options; the rest is the file.
#include <iterator>

#include "FuzzSupport.h"
#include "filter/Dispatch.h"

namespace {
const char* const kNames[] = {"in.afs", "in.pff", "in.ffx", "in.txt", "IN.AFS", "IN.TXT"};
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  trel::fuzz::Input in(data, size);
  const uint8_t choice = in.Byte();
  const std::string name = kNames[(choice & 0x0F) % std::size(kNames)];
  const std::string path = trel::fuzz::WriteScratch(name, in.Rest());
  trel::FilterEnv env;
  env.options.noFFOptimize = choice & 0x10;
  env.options.macFFAdaption = choice & 0x20;
  trel::FFFilter editor;
  trel::LoadItFile(editor, trel::fuzz::ScratchFolder(), name, env);
  trel::FFFilter batch;
  trel::ReadFFfile(batch, path, env);
  return 0;
}
