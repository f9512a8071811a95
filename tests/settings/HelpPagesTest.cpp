// The help pages the program opens are shipped, and their links lead somewhere.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace {

namespace fs = std::filesystem;

const fs::path kHelp = fs::path(TREL_SHIPPED_DATA_DIR) / "help";

TEST(HelpPagesTest, EveryPageTheWindowsOpenIsShipped) {
  const char* pages[] = {"Help.htm", "Prefs_General.htm", "Prefs_FFTF.htm", "Prefs_Interface.htm",
                         "Prefs_FPA.htm", "Prefs_PluginTypes.htm", "menu_View.htm", "menu_Command.htm",
                         "menu_Help.htm", "buttonbar.htm", "buttonbar_Convert.htm", "buttonbar_ChangeCat.htm",
                         "ffe.htm", "pictureeditor.htm", "ff_language.htm", "tuts/tutorials.htm"};
  for (const char* page : pages) EXPECT_TRUE(fs::is_regular_file(kHelp / page)) << page;
}

TEST(HelpPagesTest, EveryLinkBetweenPagesResolves) {
  int links = 0;
  for (const auto& entry : fs::recursive_directory_iterator(kHelp)) {
    if (entry.path().extension() != ".htm") continue;
    std::ifstream in(entry.path());
    std::stringstream text;
    text << in.rdbuf();
    const std::string html = text.str();
    EXPECT_NE(html.find("<title>"), std::string::npos) << entry.path();
    // Local links only: no scheme, no fragment.
    for (size_t at = html.find("href=\""); at != std::string::npos; at = html.find("href=\"", at + 1)) {
      const size_t start = at + 6;
      const std::string target = html.substr(start, html.find('"', start) - start);
      if (target.find_first_of(":#") != std::string::npos) continue;
      ++links;
      EXPECT_TRUE(fs::exists(entry.path().parent_path() / target)) << entry.path() << " -> " << target;
    }
  }
  EXPECT_GT(links, 50);
}

}  // namespace
