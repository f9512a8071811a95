// The editor's skin files (.des) and the FX Download link lists: text files of
// the program folder that users share and edit by hand. The first byte picks
// the file; skins are read from memory and from a file, and the interface
// folder is listed with the input as its one skin.
#include <filesystem>
#include <string>

#include "FuzzSupport.h"
#include "editor/DesReader.h"
#include "settings/LinkList.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  trel::fuzz::Input in(data, size);
  const uint8_t choice = in.Byte();
  const std::string text(in.Rest());
  if (choice & 0x01) {
    trel::LinkList list;
    if (trel::LoadLinks(trel::fuzz::WriteScratch("FilterURLs.txt", text), list)) {
      trel::LinksText(list);
      if (list.size() > 1) trel::MoveLink(list, list.size() - 1, -1);
      trel::DeleteLink(list, 0);
    }
    return 0;
  }
  trel::ParseDes(text);
  const std::string& folder = trel::fuzz::ScratchFolder();
  std::filesystem::create_directories(folder + "interface");
  trel::DesSkin skin;
  trel::ReadDesFile(trel::fuzz::WriteScratch("interface/Interfc4.des", text), skin);
  trel::LookforInterfaceFiles(folder);
  return 0;
}
