// Compiled Filter Factory plugins. The readers recognise a plugin by its exact
// size, so the first byte picks one of the sizes they accept (or none: the
// input as it is) and the rest is padded with zeros or cut to that size.
#include <cstdint>
#include <iterator>
#include <string>

#include "FuzzSupport.h"
#include "filter/CompiledReaders.h"
#include "filter/Dispatch.h"

namespace {

struct Form {
  int64_t size;  // 0: the input's own size
  const char* name;
};
// The Photoshop sizes, the Macintosh form, the Premiere Filter Factory sizes
// and Transition Factory, which has no fixed size.
constexpr Form kForms[] = {
    {49152, "in.8bf"}, {49664, "in.8bf"}, {50176, "in.8bf"}, {53760, "in.8bf"}, {57344, "in.8bf"},
    {99712, "in.bin"}, {99840, "in.bin"}, {50176, "in.prm"}, {50688, "in.prm"}, {53248, "in.prm"},
    {0, "in.prm"},     {0, "in.8bf"},
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  trel::fuzz::Input in(data, size);
  const uint8_t choice = in.Byte();
  const Form& form = kForms[(choice & 0x0F) % std::size(kForms)];
  std::string bytes(in.Rest());
  if (form.size) bytes.resize(static_cast<size_t>(form.size), '\0');
  const std::string path = trel::fuzz::WriteScratch(form.name, bytes);
  const std::string& folder = trel::fuzz::ScratchFolder();
  trel::FilterEnv env;
  env.options.noFFOptimize = choice & 0x10;
  const bool headerOnly = choice & 0x20;
  trel::FFFilter f;
  trel::Read8bf(f, folder, form.name, headerOnly, !env.options.noFFOptimize, env);
  trel::Readprm(f, folder, form.name, headerOnly, !env.options.noFFOptimize, env);
  trel::ReadTF(f, folder, form.name, headerOnly, env);
  trel::FFFilter viaEditor;
  trel::LoadItFile(viaEditor, folder, form.name, env);
  trel::FFFilter viaBatch;
  trel::ReadFFfile(viaBatch, path, env);
  return 0;
}
