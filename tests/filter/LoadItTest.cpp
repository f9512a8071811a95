#include "filter/LoadIt.h"

#include <map>
#include <tuple>

#include "FilterKit.h"
#include "filter/Dispatch.h"
#include "filter/TextFormats.h"

namespace trel {
namespace {

using namespace test;

// A pane as the shell keeps it: a selected file, or a library with its list
// (tags by row) and its table of positions.
class FakePane : public PaneAccess {
 public:
  PaneView view = PaneView::File;
  std::string folder, name, library;
  std::vector<int> tags;              // list row -> entry number
  std::map<int, int64_t> positions;  // entry number -> position

  PaneView ViewKind() const override { return view; }
  bool SelectedItem(std::string& f, std::string& n) const override {
    f = folder;
    n = name;
    return !name.empty();
  }
  std::string FFLPath() const override { return library; }
  bool FFLItemTag(int listIndex, int& number) const override {
    const bool there = listIndex >= 0 && static_cast<size_t>(listIndex) < tags.size();
    if (there) number = tags[static_cast<size_t>(listIndex)];
    return there;
  }
  bool FFLEntryPosition(int number, int64_t& position) const override {
    const bool there = positions.count(number) != 0;
    if (there) position = positions.at(number);
    return there;
  }
  // Shows a library as the FFL View does: deleted entries have no row.
  void Show(const FFLLibrary& lib) {
    view = PaneView::FFL;
    library = lib.path;
    tags.clear();
    for (const auto& item : lib.items) tags.push_back(item.number);
    for (size_t i = 0; i < lib.positions.size(); ++i) positions[static_cast<int>(i + 1)] = lib.positions[i];
  }
};

class LoadItPane : public FilterTest {
 protected:
  FakePane pane;
  FFLLibrary lib;
};

TEST_F(LoadItPane, FileViewsUseTheInteractiveRules) {
  dir.Write("bare.afs", kBareAfs);  // the editor takes it, a batch would not
  pane.folder = dir.path();
  pane.name = "bare.afs";
  for (PaneView view : {PaneView::File, PaneView::Plugin}) {
    pane.view = view;
    ASSERT_TRUE(LoadIt(f, 0, pane, env));
    EXPECT_EQ(f.filename, "bare.afs");
  }
  pane.name.clear();
  EXPECT_FALSE(LoadIt(f, 0, pane, env));
  // In the FFL View the selected file name means nothing: a row of the library is read.
  pane.view = PaneView::FFL;
  pane.name = "bare.afs";
  EXPECT_FALSE(LoadIt(f, 0, pane, env));
}

TEST_F(LoadItPane, FFLViewLoadsTheEntryOfTheRowsTagAndRefusesATableThatDoesNotFit) {
  const std::string path = dir.Write("lib.ffl", FflOf({Entry("a.8bf", "A"), Entry("b.8bf", "B"), Entry("c.PRM", "C")}));
  ASSERT_TRUE(ReadFFLLibrary(path, lib));
  ASSERT_TRUE(DeleteFFLEntry(path, lib.PositionOf(2)));
  ASSERT_TRUE(ReadFFLLibrary(path, lib));
  pane.Show(lib);
  f.isPhotoshop = true;
  ASSERT_TRUE(LoadIt(f, 1, pane, env));  // row 1 is entry 3 now, Premiere by its name
  EXPECT_EQ(f.title + std::to_string(f.isPhotoshop), "C0");
  ASSERT_TRUE(LoadIt(f, 0, pane, env));
  EXPECT_EQ(f.title + std::to_string(f.isPhotoshop), "A1");
  EXPECT_FALSE(LoadIt(f, 2, pane, env));
  // A table that does not fit the file is refused.
  for (int64_t wrong : {int64_t{1}, int64_t{1} << 30}) {  // inside the header, far behind the end
    pane.positions[1] = wrong;
    EXPECT_FALSE(LoadIt(f, 0, pane, env)) << wrong;
  }
  pane.positions[1] = lib.PositionOf(1);
  dir.Write("lib.ffl", dir.Read("lib.ffl").substr(0, 40));  // cut short since
  EXPECT_FALSE(LoadIt(f, 0, pane, env));
  pane.library = dir.file("gone.ffl");
  EXPECT_FALSE(LoadIt(f, 0, pane, env));
}

using Dispatch = FilterTest;

TEST(GetFilname, ExchangesTheExtensionByFormat) {
  FilterOptions options;
  const std::tuple<OutputFormat, const char*, const char*> cases[] = {
      {OutputFormat::AFS, "abc", "abcafs"},  // no dot: glued on as it is
      {static_cast<OutputFormat>(9), "a.txt", "a.txt"}, {OutputFormat::Plugin8bf, "a.b.afs", "a.8bf"},
      {OutputFormat::PremierePlugin, "f.afs", "f.prm"}, {OutputFormat::TransitionPlugin, "f.afs", "f.prm"},
      {OutputFormat::PFF, "f.txt", "f.pff"}, {OutputFormat::TXT, "f.8bf", "f.txt"}};
  for (auto [format, name, target] : cases) EXPECT_EQ(GetFilname(format, name, options), target) << name;
  options.compile.templateChoice = CompileTemplate::Macintosh;
  EXPECT_EQ(GetFilname(OutputFormat::Plugin8bf, "f.afs", options), "f.bin");
}

TEST_F(Dispatch, EditorAndBatchRulesForTheSourceFormats) {
  // An AFS file without its tail loads but is no batch source.
  dir.Write("bare.afs", kBareAfs);
  EXPECT_TRUE(LoadItFile(f, dir.path(), "bare.afs", env));
  EXPECT_EQ(f.filename, "bare.afs");
  EXPECT_FALSE(ReadFFfile(f, dir.file("bare.afs"), env));
  // TXT keeps the stem of its Filename line; the batch path leaves it alone.
  dir.Write("t.txt", "Filename: other.8bf\n" + kRgbTxt);
  ASSERT_TRUE(LoadItFile(f, dir.path(), "t.txt", env));
  EXPECT_EQ(f.filename, "other.txt");
  ASSERT_TRUE(ReadFFfile(f, dir.file("t.txt"), env));
  EXPECT_EQ(f.filename, "other.8bf");
  // Extensions compare in any case.
  dir.Write("UP.TXT", kRgbTxt);
  EXPECT_TRUE(LoadItFile(f, dir.path(), "UP.TXT", env));
  EXPECT_EQ(f.filename, "-NoName.txt");
  // Unknown kinds leave the record alone.
  dir.Write("x.doc", kRgbTxt);
  EXPECT_FALSE(LoadItFile(f, dir.path(), "x.doc", env));
  EXPECT_FALSE(ReadFFfile(f, dir.file("x.doc"), env));
  EXPECT_EQ(f.filename, "-NoName.txt");
}

TEST_F(Dispatch, PffComesIntoPhotoshopDialectOnlyForTheEditor) {
  FFFilter g = Entry("p.8bf", "P");
  g.codeR = "r*T/D";
  g.codeG = g.codeB = g.codeA = "p";
  g.isPhotoshop = false;
  Writeafspff(g, dir.path(), 1, env);  // Premiere code written as it is
  ASSERT_TRUE(LoadItFile(f, dir.path(), "p.pff", env));
  EXPECT_EQ(f.codeR + " " + f.codeG + " " + f.filename, "r*total/512 z p.pff");
  EXPECT_FALSE(f.isPhotoshop);  // the dialect flag still tells where it came from
  ASSERT_TRUE(ReadFFfile(f, dir.file("p.pff"), env));
  EXPECT_EQ(f.codeR, "r*total/D");  // the optimizer's T; the D stays for the writers
}

}  // namespace
}  // namespace trel
