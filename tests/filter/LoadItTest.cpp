#include "filter/LoadIt.h"

#include <gtest/gtest.h>

#include <map>

#include "filter/FFL.h"
#include "support/RecordingShell.h"
#include "support/TempDir.h"

namespace trel {
namespace {

using test::RecordingShell;
using test::TempDir;

// A pane as the shell keeps it: a selected file, or a library with its list
// (tags by row) and its table of positions.
class FakePane : public PaneAccess {
 public:
  int view = 1;
  std::string folder, name;
  std::string library;
  std::vector<int> tags;                 // list row -> entry number
  std::map<int, int64_t> positions;      // entry number -> position

  int ViewKind() const override { return view; }
  bool SelectedItem(std::string& f, std::string& n) const override {
    f = folder;
    n = name;
    return !name.empty();
  }
  std::string FFLPath() const override { return library; }
  bool FFLItemTag(int listIndex, int& number) const override {
    if (listIndex < 0 || static_cast<size_t>(listIndex) >= tags.size()) return false;
    number = tags[static_cast<size_t>(listIndex)];
    return true;
  }
  bool FFLEntryPosition(int number, int64_t& position) const override {
    const auto it = positions.find(number);
    if (it == positions.end()) return false;
    position = it->second;
    return true;
  }

  // Shows a library as the FFL View does: deleted entries have no row.
  void Show(const FFLLibrary& lib) {
    view = 3;
    library = lib.path;
    tags.clear();
    for (const auto& item : lib.items) tags.push_back(item.number);
    for (size_t i = 0; i < lib.positions.size(); ++i) positions[static_cast<int>(i + 1)] = lib.positions[i];
  }
};

std::string LibraryOf(const std::vector<FFFilter>& filters) {
  std::string t = "FFL1.1\r\n" + std::string(4, ' ') + std::to_string(filters.size()) + "\r\n";
  for (const auto& f : filters) t += FFLEntryText(f);
  return t;
}

FFFilter Entry(const std::string& filename, const std::string& title) {
  FFFilter f;
  f.filename = filename;
  f.title = title;
  f.isPhotoshop = filename.size() < 4 || filename.substr(filename.size() - 4) != ".prm";
  f.codeR = "r";
  f.codeG = "g";
  f.codeB = "b";
  f.codeA = "a";
  return f;
}

struct Fixture {
  TempDir dir;
  RecordingShell shell;
  FilterEnv env;
  FakePane pane;
  FFFilter f;
  Fixture() { env.shell = &shell; }
};

TEST(LoadIt, FileViewsUseTheInteractiveRules) {
  Fixture fx;
  // Header, values and code only: the editor takes it, a batch would not.
  fx.dir.Write("bare.afs", "%RGB-1.0\r0\r0\r0\r0\r0\r0\r0\r0\rr\r\rg\r\rb\r\ra\r\r");
  fx.pane.folder = fx.dir.path();
  fx.pane.name = "bare.afs";
  for (int view : {1, 2}) {
    fx.pane.view = view;
    ASSERT_TRUE(LoadIt(fx.f, 0, fx.pane, fx.env));
    EXPECT_EQ(fx.f.filename, "bare.afs");
  }
  fx.pane.name.clear();
  EXPECT_FALSE(LoadIt(fx.f, 0, fx.pane, fx.env));
  fx.pane.view = 4;
  fx.pane.name = "bare.afs";
  EXPECT_FALSE(LoadIt(fx.f, 0, fx.pane, fx.env));
}

TEST(LoadIt, FFLViewLoadsTheEntryOfTheRowsTag) {
  Fixture fx;
  const std::string path = fx.dir.Write(
      "lib.ffl", LibraryOf({Entry("a.8bf", "A"), Entry("b.8bf", "B"), Entry("c.prm", "C")}));
  FFLLibrary lib;
  ASSERT_TRUE(ReadFFLLibrary(path, lib, fx.env));
  ASSERT_TRUE(DeleteFFLEntry(path, lib.PositionOf(2)));
  ASSERT_TRUE(ReadFFLLibrary(path, lib, fx.env));
  fx.pane.Show(lib);

  fx.f.isPhotoshop = true;
  ASSERT_TRUE(LoadIt(fx.f, 1, fx.pane, fx.env));  // row 1 is entry 3 now
  EXPECT_EQ(fx.f.title, "C");
  EXPECT_FALSE(fx.f.isPhotoshop);
  ASSERT_TRUE(LoadIt(fx.f, 0, fx.pane, fx.env));
  EXPECT_EQ(fx.f.title, "A");
  EXPECT_TRUE(fx.f.isPhotoshop);
  EXPECT_FALSE(LoadIt(fx.f, 2, fx.pane, fx.env));
}

TEST(LoadIt, FFLViewRefusesATableThatDoesNotFitTheFile) {
  Fixture fx;
  const std::string path = fx.dir.Write("lib.ffl", LibraryOf({Entry("a.8bf", "A")}));
  FFLLibrary lib;
  ASSERT_TRUE(ReadFFLLibrary(path, lib, fx.env));
  fx.pane.Show(lib);

  fx.pane.positions[1] = 1;  // inside the header
  EXPECT_FALSE(LoadIt(fx.f, 0, fx.pane, fx.env));
  fx.pane.positions[1] = 1 << 30;  // far behind the end
  EXPECT_FALSE(LoadIt(fx.f, 0, fx.pane, fx.env));
  fx.pane.positions[1] = lib.PositionOf(1);
  fx.dir.Write("lib.ffl", LibraryOf({Entry("a.8bf", "A")}).substr(0, 40));  // cut short since
  EXPECT_FALSE(LoadIt(fx.f, 0, fx.pane, fx.env));
  fx.pane.library = fx.dir.file("gone.ffl");
  EXPECT_FALSE(LoadIt(fx.f, 0, fx.pane, fx.env));
}

}  // namespace
}  // namespace trel
