// Options that the program reads from its dialogs and the preferences. The core
// takes them as plain data, so the command line and the tests can set them.
#pragma once

#include <string>

namespace trel {

// The frame "Photoshop FF Compilation" of the preferences.
enum class CompileTemplate {
  FilterFactory30,   // "Filter Factory 3.0": photo30.dll, shift 0
  FilterFactory304,  // "Filter Factory 3.04 (needs plugin.dll from Adobe)": photo304.dll, shift -7168
  CustomPath,        // a template chosen by path; its size gives the shift
  Macintosh,         // "Macintosh FF (Mac Binary)": shift 19308
};

struct CompileOptions {
  CompileTemplate templateChoice = CompileTemplate::FilterFactory30;
  std::string templatePath;   // for CustomPath; empty means photo30.dll
  bool allModes = false;      // "All Modes"
  bool editorPlugin = false;  // "Editor Plugin"
  bool bigPreview = false;    // "Big Preview"
  bool megaPreview = false;   // "Mega Preview"
  bool demoPlugin = false;    // "Demo Plugin"
  bool encrypted = false;     // "Encrypted"
  // The frame "Premiere FF Compilation": the user's chosen templates; empty
  // means the generated ones in the program folder.
  std::string premiereFFTemplate;
  std::string premiereTFTemplate;
};

struct FilterOptions {
  bool noFFOptimize = false;        // "No FF Code Optimization"
  bool macFFAdaption = false;       // "Mac FF Adaption" of the Convert dialog
  bool writeFFL10 = false;          // "Write FFL 1.0 Files (recommended)"
  bool useFilterNameAsFileName = false;  // "Use Filter Name as File Name"
  CompileOptions compile;
  // The per-user program folder (templates, temp.dll, Temp.txt); ends in a separator.
  std::string programFolder;
};

}  // namespace trel
