// The list files of the program folder: PlugTypes.ini (rows and check marks,
// parsed into the type table the scanner uses) and FolderList.log (the folder
// history). The first byte picks the file and whether it has state lines.
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "catalogue/PluginScanner.h"
#include "catalogue/PluginTypes.h"
#include "settings/FolderHistory.h"
#include "settings/ListFiles.h"

namespace {

void PluginTypesFile(const std::string& path, bool withState) {
  trel::PluginTypeList rows;
  trel::LoadList(path, rows, withState);
  for (const auto& row : rows) {
    std::string name, extension, digit;
    if (trel::SplitPluginTypeRow(row.text, name, extension, digit)) trel::CheckPluginTypeInput(name, extension);
  }
  trel::PluginTypeTable table;
  trel::GetPlugTypes(rows, table);
  trel::PluginScanMask(table, withState);
  for (const char* name : {"a.8bf", "x/plug.8bi", "f._8b", "noext", ".", ""}) trel::MatchPluginType(table, name);
  trel::MatchPluginTypeBySuffix(table, ".8bi");
  trel::ResetPluginTypes(rows);
  trel::TogglePluginTypes(rows);
  // The preferences open with the file of the program folder.
  trel::InitialPluginTypeList(trel::fuzz::ScratchFolder(), [](const std::string&) { return std::string(); });
}

void FolderListFile(const std::string& path, bool withState) {
  const auto entries = trel::LoadList(path, withState);
  if (!entries) return;
  std::vector<std::string> history;
  for (const auto& entry : *entries) history.push_back(entry.text);
  trel::FolderHistoryOptions options{true, withState, 10};
  trel::UpdateFolderHistory(history, "/tmp/", options);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  trel::fuzz::Input in(data, size);
  const uint8_t choice = in.Byte();
  const bool withState = choice & 0x02;
  trel::InputItems(std::string(in.Rest()));
  if (choice & 0x01) {
    FolderListFile(trel::fuzz::WriteScratch("FolderList.log", in.Rest()), withState);
  } else {
    PluginTypesFile(trel::fuzz::WriteScratch("PlugTypes.ini", in.Rest()), withState);
  }
  return 0;
}
