#include "filter/FFL.h"

#include <filesystem>

#include "FilterKit.h"
#include "filter/BatchConvert.h"
#include "filter/CodeRewrite.h"
#include "filter/Dispatch.h"

namespace trel {
namespace {

using namespace test;
namespace fs = std::filesystem;

// The 29 lines of an entry, written out by hand so that the readers are not
// tested against our own writer.
struct RawEntry {
  std::string filename = "f.8bf", category = "Cat", title = "Title", author = "Au", copyright = "Co";
  std::string maps[4] = {"", "", "", ""};
  std::string ctls[8] = {"Amount", "", "", "", "", "", "", ""};
  std::string values[8] = {"12", "0", "0", "0", "0", "0", "0", "0"};
  std::string codes[4] = {"r", "g", "b", "a"};

  std::string Text() const {
    std::string t;
    for (const auto* s : {&filename, &category, &title, &author, &copyright}) t += *s + "\r\n";
    for (const auto& s : maps) t += s + "\r\n";
    for (const auto& s : ctls) t += s + "\r\n";
    for (const auto& s : values) t += s + "\r\n";
    for (const auto& s : codes) t += s + "\r\n";
    return t;
  }
};

RawEntry Named(const std::string& filename, const std::string& title) {
  return RawEntry{.filename = filename, .title = title};
}
const std::vector<RawEntry> kABC = {Named("a.8bf", "A"), Named("b.8bf", "B"), Named("c.8bf", "C")};

std::string Library(const std::vector<RawEntry>& entries, std::string count = "") {
  if (count.empty()) count = std::string(5 - std::to_string(entries.size()).size(), ' ') + std::to_string(entries.size());
  std::string t = "FFL1.0\r\n" + count + "\r\n";
  for (const auto& e : entries) t += e.Text();
  return t;
}

// A library with entry 2 struck out as the program does it: "//", 0, 0.
std::string WithSecondDeleted(const std::vector<RawEntry>& entries, const std::string& count = "") {
  std::string library = Library(entries, count);
  library.replace(library.find("\r\n", 8) + 2 + entries[0].Text().size(), 4, std::string("//\0\0", 4));
  return library;
}

class FFLTest : public FilterTest {
 protected:
  FFLTest() { env.options.programFolder = dir.path(); }
  Names FilesIn(const std::string& sub) const { return FilesBelow(dir.file(sub)); }
  Names Titles(const std::string& path) {
    Names titles;
    EXPECT_TRUE(ReadFFLLibrary(path, lib));
    for (const auto& item : lib.items) titles.push_back(item.title);
    return titles;
  }
  // The entries of a text up to the first that is not one, whose answer stays in `last`.
  std::vector<FFFilter> EntriesOf(const std::string& text) {
    auto in = FFLTextReader::Open(dir.Write("e.ffl", text));
    std::vector<FFFilter> entries;
    for (FFFilter e; (last = ReadFFLEntry(e, *in, problem)) == FFLRead::Entry;) entries.push_back(e);
    return entries;
  }
  FFLLibrary lib;
  std::string problem;
  FFLRead last = FFLRead::Entry;
};

TEST_F(FFLTest, EntryRulesForCopyrightSignAndRepeatedCodes) {
  RawEntry sign;
  sign.copyright = "\xA9 2001 Someone";
  sign.codes[0] = "r*2";
  sign.codes[1] = sign.codes[2] = "\"";
  RawEntry chained;
  chained.codes[1] = "g/2";
  chained.codes[2] = "\"";  // repeats codeG, not codeR
  chained.codes[3] = "\"";  // codeA has no short form
  const auto entries = EntriesOf(sign.Text() + chained.Text());
  EXPECT_EQ(last, FFLRead::EndOfFile);
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(entries[0].copyright + " " + Codes(entries[0]), "Copyright \xA9 2001 Someone r*2|r*2|r*2|a");
  EXPECT_EQ(entries[0].ctlName[1] + " " + std::to_string(entries[0].ctlValue[1]), "Amount 12");
  EXPECT_EQ(entries[1].copyright + " " + Codes(entries[1]), "Co r|g/2|g/2|\"");
}

TEST_F(FFLTest, BrokenEntriesAreToldNotGuessed) {
  RawEntry wide;
  wide.values[3] = "256";
  const std::pair<std::string, std::string> cases[] = {
      {wide.Text(), "out of range"},
      {RawEntry{}.Text().substr(0, 40), "of 29 lines"},
      {std::string(FFLTextReader::kMaxLine + 5, 'x'), "too long"},
  };
  for (const auto& [text, told] : cases) {
    EXPECT_TRUE(EntriesOf(text).empty());
    EXPECT_EQ(last, FFLRead::Broken) << told;
    EXPECT_NE(problem.find(told), std::string::npos) << problem;
  }
  // Blank lines behind the last entry are no entry at all.
  EXPECT_EQ(EntriesOf(RawEntry{}.Text() + "\r\n\r\n").size(), 1u);
  EXPECT_EQ(last, FFLRead::EndOfFile);
}

TEST_F(FFLTest, WrittenEntriesReadBackWithTheShortFormAndWholeLines) {
  FFFilter original = SampleFilter();
  original.mapName[2] = "Map Two";
  original.codeR = original.codeG = original.codeB = "src(x,y,z)";
  const std::string text = FFLEntryText(original);
  EXPECT_NE(text.find("src(x,y,z)\r\n\"\r\n\"\r\na\r\n"), std::string::npos);
  FFFilter chained = original;
  chained.codeR = "r";  // G and B equal each other but not R
  FFFilter broken = original;  // line breaks inside fields do not shift the library
  broken.title = "two\r\nlines";
  broken.codeR = "r\r+1";
  const auto back = EntriesOf(text + FFLEntryText(chained) + FFLEntryText(broken) + text);
  ASSERT_EQ(back.size(), 4u);
  EXPECT_EQ(back[0], original);
  EXPECT_EQ(back[1], chained);
  EXPECT_EQ(back[2].title, "two  lines");
  EXPECT_EQ(back[3], original);
}

TEST_F(FFLTest, CodeIsStoredInTheDialectItsNamePromises) {
  // Premiere code under a Photoshop name would come back as Photoshop code.
  FFFilter prm = SampleFilter();
  prm.isPhotoshop = false;
  prm.codeG = "src(x,y,1)";
  EXPECT_NE(FFLEntryText(prm).find(Correctprmcode("src(x,y,1)") + "\r\n"), std::string::npos);
  prm.filename = "sample.prm";  // the name says Premiere: kept as it is
  EXPECT_NE(FFLEntryText(prm).find("\r\nsrc(x,y,1)\r\n"), std::string::npos);
  prm.filename = "//x.8bf";  // a name that would read as a deleted entry is not stored as one
  EXPECT_EQ(FFLEntryText(prm).rfind("__x.8bf\r\n", 0), 0u);
}

TEST_F(FFLTest, DeletedEntriesKeepTheirNumbersButAreNotListedOrFound) {
  ASSERT_TRUE(ReadFFLLibrary(dir.Write("lib.ffl", WithSecondDeleted(kABC)), lib));
  EXPECT_EQ(lib.version + " " + std::to_string(lib.declaredCount), "FFL1.0 3");
  EXPECT_EQ(lib.positions.size(), 3u);
  EXPECT_EQ(lib.positions[0], 16);
  ASSERT_EQ(lib.items.size(), 2u);
  EXPECT_EQ(std::to_string(lib.items[1].number) + lib.items[1].title, "3C");
  EXPECT_EQ(lib.PositionOf(4), 0);
  EXPECT_TRUE(lib.problem.empty());
  // The search looks at title, category, author and code, not copyright.
  std::vector<RawEntry> entries(4);
  entries[0].title = "Blue Sky";
  entries[1].category = "Sky things";
  entries[2].codes[3] = "put(SKY,0)";
  entries[3].copyright = "sky";
  EXPECT_EQ(*cmd_SearchFFL(dir.Write("s.ffl", Library(entries)), "sKy"), (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(*cmd_SearchFFL(dir.Write("d.ffl", WithSecondDeleted(entries)), "sky"), (std::vector<int>{1, 3}));
}

// Listing, searching and converting a library all take the same heads for one
// and tell the others alike; a line ends at a CR, never at a lone LF.
TEST_F(FFLTest, EveryReaderTellsALibraryByTheSameHead) {
  const std::string entry = Named("a.8bf", "Sky").Text();
  const std::pair<std::string, bool> heads[] = {
      {"FFL1.0\r\n    1\r\n", true}, {"FFL1.1\r\n    1\r\n", true}, {"FFL1.0\r    1\r", true},
      {"FFL1.2\r\n    1\r\n", false}, {"ffl1.0\r\n    1\r\n", false}, {" FFL1.0\r\n    1\r\n", false},
      {"FFL1.0 \r\n    1\r\n", false}, {"FFL1.0\n    1\n", false}, {"", false},
      {std::string("\x00\xff\x13\x10garbage", 11), false}};
  for (const auto& [head, isLibrary] : heads) {
    SCOPED_TRACE(head);
    const std::string path = dir.Write("h.ffl", head + (head.empty() ? "" : entry));
    const Expected<void> read = ReadFFLLibrary(path, lib);
    const Expected<std::vector<int>> found = cmd_SearchFFL(path, "sky");
    const Expected<void> converted = Convertffl(f, path, dir.file("out"), OutputFormat::TXT, env);
    EXPECT_EQ(bool(read), isLibrary);
    EXPECT_EQ(found ? found->size() : 0u, isLibrary ? 1u : 0u);
    EXPECT_EQ(bool(converted), isLibrary);
    for (const Error* error : {read ? nullptr : &read.error(), found ? nullptr : &found.error(),
                               converted ? nullptr : &converted.error()}) {
      if (!error) continue;
      EXPECT_EQ(error->kind, ErrorKind::Warning);
      EXPECT_EQ(error->reason, path + " is not a Filter Factory Library File!");
      EXPECT_EQ(error->title + "|" + error->path, "Format Violation|" + path);
    }
    if (isLibrary) {
      EXPECT_EQ(lib.declaredCount, 1);
    }
  }
  EXPECT_EQ(FilesIn("out"), Names{"a.txt"});  // nothing written from the others
  EXPECT_EQ(ReadFFLLibrary(dir.file("missing.ffl"), lib).error().kind, ErrorKind::Gone);
  EXPECT_EQ(cmd_SearchFFL(dir.file("missing.ffl"), "x").error().kind, ErrorKind::Gone);
  // Nothing reached the shell: telling is the caller's part.
  EXPECT_TRUE(shell.boxes.empty() && shell.errors.empty());
  EXPECT_EQ(shell.refreshes, 0);
}

TEST_F(FFLTest, DeleteStrikesOutWholeNameLinesOnly) {
  const std::string path = dir.Write("lib.ffl", Library({Named("a.8bf", "A"), Named("b.8bf", "B")}));
  ASSERT_TRUE(ReadFFLLibrary(path, lib));
  const std::string before = dir.Read("lib.ffl");
  // Not the start of a line, the header, behind the end.
  for (int64_t at : {lib.positions[1] + 1, int64_t{9}, int64_t{1} << 20}) EXPECT_FALSE(DeleteFFLEntry(path, at)) << at;
  EXPECT_EQ(dir.Read("lib.ffl"), before);
  ASSERT_TRUE(DeleteFFLEntry(path, lib.positions[1]));
  const std::string after = dir.Read("lib.ffl");
  EXPECT_EQ(after.size(), before.size());
  EXPECT_EQ(after.substr(static_cast<size_t>(lib.positions[1] - 1), 7), std::string("//\0\0f\r\n", 7));
  EXPECT_EQ(Titles(path), Names{"A"});
  EXPECT_EQ(lib.declaredCount, 2);
  // A name line shorter than the mark is never eaten into.
  const std::string shortNames = dir.Write("s.ffl", Library({Named("a", "A"), Named("bc", "B")}));
  ASSERT_TRUE(ReadFFLLibrary(shortNames, lib));
  EXPECT_FALSE(DeleteFFLEntry(shortNames, lib.positions[0]));
  ASSERT_TRUE(DeleteFFLEntry(shortNames, lib.positions[1]));
  EXPECT_EQ(Titles(shortNames), Names{"A"});
  EXPECT_EQ(lib.positions.size(), 2u);
  // The FFL View's delete goes from the last to the first.
  const std::string three = dir.Write("three.ffl", Library(kABC));
  ASSERT_TRUE(ReadFFLLibrary(three, lib));
  EXPECT_TRUE(DeleteFFLItems(lib, {}).empty());
  EXPECT_EQ(DeleteFFLItems(lib, {1, 3, 7}), (std::vector<int>{3, 1}));
  EXPECT_TRUE(shell.boxes.empty());
  EXPECT_EQ(Titles(three), Names{"B"});
}

TEST_F(FFLTest, CountIsPatchedRightAlignedInFiveCharacters) {
  const std::string path = dir.Write("lib.ffl", Library({RawEntry{}}));
  ASSERT_TRUE(FFLNumWrite(path, 42));
  EXPECT_EQ(dir.Read("lib.ffl").substr(0, 15), "FFL1.0\r\n   42\r\n");
  ASSERT_TRUE(FFLNumWrite(path, 1234567));
  EXPECT_EQ(dir.Read("lib.ffl").substr(8, 7), "99999\r\n");
  // A header of other widths or no library at all is left alone.
  const std::string odd = Library({RawEntry{}}, "1");
  EXPECT_FALSE(FFLNumWrite(dir.Write("odd.ffl", odd), 2));
  EXPECT_EQ(dir.Read("odd.ffl"), odd);
  EXPECT_FALSE(FFLNumWrite(dir.file("none.ffl"), 2));
  EXPECT_FALSE(dir.Exists("none.ffl"));
}

TEST_F(FFLTest, ConvertWalksToTheEndWhateverTheCountAndSkipsDeletedEntries) {
  ASSERT_TRUE(Convertffl(f, dir.Write("lib.ffl", Library(kABC, "    1")), dir.file("out"), OutputFormat::TXT, env));
  EXPECT_EQ(FilesIn("out"), (Names{"a.txt", "b.txt", "c.txt"}));
  EXPECT_EQ(shell.statuses, (Names{"1 of 1", "2 of 1", "3 of 1", ""}));
  ConvertReport report;
  ASSERT_TRUE(Convertffl(f, dir.Write("del.ffl", WithSecondDeleted(kABC)), dir.file("del"), OutputFormat::AFS, env, &report));
  EXPECT_EQ(FilesIn("del"), (Names{"a.afs", "c.afs"}));
  EXPECT_EQ(shell.statuses[6], "3 of 3");  // the deleted entry is counted
  EXPECT_EQ(report.read, 2);
  EXPECT_EQ(report.written.size(), 2u);
  // Escape stops between entries.
  shell.escapeAfterPolls = shell.escapePolls + 2;
  ConvertReport stopped;
  ASSERT_TRUE(Convertffl(f, dir.file("lib.ffl"), dir.file("esc"), OutputFormat::TXT, env, &stopped));
  EXPECT_EQ(FilesIn("esc"), (Names{"a.txt", "b.txt"}));
  EXPECT_TRUE(stopped.stopped);
}

TEST_F(FFLTest, ConvertReplacesExistingFilesAndLeavesDialectAlone) {
  const std::string path = dir.Write("lib.ffl", Library({Named("a.8bf", "A")}));
  fs::create_directory(dir.file("out"));
  dir.Write("out/a.txt", "old");
  f.isPhotoshop = false;
  SkipExistingTargets skip;  // entries aren't handed to it in the program
  ASSERT_TRUE(Convertffl(f, path, dir.file("out"), OutputFormat::TXT, env, nullptr, &skip));
  EXPECT_NE(dir.Read("out/a.txt"), "old");
  EXPECT_FALSE(f.isPhotoshop);
  // The command line hands entries to its check.
  dir.Write("out/a.txt", "old");
  ConvertReport report;
  ASSERT_TRUE(Convertffl(f, path, dir.file("out"), OutputFormat::TXT, env, &report, &skip, true));
  EXPECT_EQ(dir.Read("out/a.txt"), "old");
  EXPECT_EQ(report.skipped, 1);
}

TEST_F(FFLTest, ConvertOfBadLibrariesGivesAMessageAndWritesNothingWrong) {
  // Good entries before a broken one are written; then the general error.
  const std::string cut = Library({Named("a.8bf", "A"), Named("b.8bf", "B")});
  const std::string cutPath = dir.Write("cut.ffl", cut.substr(0, cut.size() - 30));
  const Expected<void> broken = Convertffl(f, cutPath, dir.file("out"), OutputFormat::TXT, env);
  EXPECT_EQ(FilesIn("out"), Names{"a.txt"});
  ASSERT_FALSE(broken);
  EXPECT_EQ(broken.error().kind, ErrorKind::Fault);
  EXPECT_EQ(broken.error().reason.rfind(cutPath + ": ", 0), 0u);
  EXPECT_NE(broken.error().reason.find("of 29 lines"), std::string::npos);
  EXPECT_GT(broken.error().line, 31);  // inside the second entry
  // Junk after a valid header: one error, no crash.
  dir.Write("bin.ffl", "FFL1.1\r\n    9\r\n" + std::string(5000, '\0') + "\xff\r\x01");
  EXPECT_FALSE(Convertffl(f, dir.file("bin.ffl"), dir.file("out"), OutputFormat::TXT, env));
  EXPECT_TRUE(shell.errors.empty() && shell.boxes.empty());
  // Entry names cannot lead out of the target folder.
  ASSERT_TRUE(Convertffl(f, dir.Write("evil.ffl", Library({Named("../../evil.8bf", "E")})), dir.file("a/b/out"),
                         OutputFormat::TXT, env));
  EXPECT_EQ(FilesIn("a/b/out"), Names{".._.._evil.txt"});
  EXPECT_FALSE(dir.Exists("evil.txt"));
  EXPECT_FALSE(dir.Exists("a/evil.txt"));
}

// Library -> text -> back through the batch reader: every field of the entry
// arrives (what the other writers keep is the text formats' round trip).
TEST_F(FFLTest, ConvertedEntriesKeepEveryField) {
  RawEntry e = Named("round.8bf", "Round");
  e.maps[1] = "Map";
  e.ctls[1] = "Second";
  e.values[1] = "99";
  e.codes[0] = "r*ctl(0)/255";
  e.codes[2] = "\"";
  ASSERT_TRUE(Convertffl(f, dir.Write("lib.ffl", Library({e})), dir.file("out"), OutputFormat::TXT, env));
  FFFilter back;
  ASSERT_TRUE(ReadFFfile(back, dir.file("out/round.txt"), env));
  EXPECT_EQ(back.filename + " " + Texts(back), "round.8bf Cat|Round|Au|Co");
  EXPECT_EQ(Maps(back) + " " + Controls(back), "|Map|| Amount|Second||||||");
  EXPECT_EQ(Values(back) + " " + Codes(back), "12|99|0|0|0|0|0|0 r*ctl(0)/255|g|g|a");
}

std::string AfsWithTail(const std::string& title) {
  return "%RGB-1.0\r10\r0\r0\r0\r0\r0\r0\r0\rr\r\rg\r\rb\r\ra\r\rCat\r\r" + title +
         "\r\rAuthor\r\rCopy\r\r1: Amount\r\r2: \r\r3: \r\r4: \r\r5: \r\r6: \r\r7: \r\r8: \r\r";
}

TEST_F(FFLTest, CreateMakesALibraryOfTheReadableFilters) {
  const std::string a = dir.Write("a.afs", AfsWithTail("First")), b = dir.Write("b.afs", AfsWithTail("Second"));
  const std::string path = dir.file("new.ffl");
  env.options.writeFFL10 = true;
  const FFLAddResult r = cmd_CreateFFL(path, {a, dir.Write("t.afs", kBareAfs), dir.file("gone.txt"), b}, env);
  EXPECT_TRUE(r.ok);
  EXPECT_EQ(r.added, 2);
  EXPECT_EQ(r.unreadable.size(), 2u);
  EXPECT_EQ(dir.Read("new.ffl").substr(0, 15), "FFL1.0\r\n    2\r\n");
  EXPECT_EQ(Titles(path), (Names{"First", "Second"}));
  EXPECT_EQ(lib.items[1].filename, "b.8bf");
  env.options.writeFFL10 = false;
  ASSERT_TRUE(cmd_CreateFFL(path, {a}, env).ok);
  EXPECT_EQ(dir.Read("new.ffl").substr(0, 15), "FFL1.1\r\n    1\r\n");
}

TEST_F(FFLTest, AddAppendsAndCorrectsTheCountDeletedEntriesIncluded) {
  std::string text = WithSecondDeleted({Named("a.8bf", "A"), Named("b.8bf", "B")}, "3");  // odd count width
  text.resize(text.size() - 2);  // no line end at the end
  const std::string path = dir.Write("lib.ffl", text);
  const FFLAddResult r = cmd_Add2FFL(path, {dir.Write("c.afs", AfsWithTail("Third"))}, env);
  ASSERT_TRUE(r.ok);
  EXPECT_EQ(r.added, 1);
  EXPECT_EQ(Titles(path), (Names{"A", "Third"}));
  EXPECT_TRUE(lib.problem.empty()) << lib.problem;
  EXPECT_EQ(lib.declaredCount, 3);
  EXPECT_EQ(lib.positions.size(), 3u);
  EXPECT_EQ(dir.Read("lib.ffl").substr(8, 7), "    3\r\n");
}

TEST_F(FFLTest, AddRefusesBrokenOrForeignLibrariesUnchanged) {
  const std::string c = dir.Write("c.afs", AfsWithTail("Third"));
  const std::tuple<std::string, std::string, ErrorKind, std::string> rows[] = {
      {"cut.ffl", Library({RawEntry{}}).substr(0, 60), ErrorKind::Fault, ": "},
      {"other.ffl", "hello", ErrorKind::Warning, " is not a Filter Factory Library File!"}};
  for (const auto& [name, text, kind, told] : rows) {
    const FFLAddResult r = cmd_Add2FFL(dir.Write(name, text), {c}, env);
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(dir.Read(name), text);
    ASSERT_TRUE(r.error);
    EXPECT_EQ(r.error->kind, kind);
    EXPECT_EQ(r.error->reason.rfind(dir.file(name) + told, 0), 0u) << r.error->reason;
  }
  EXPECT_TRUE(cmd_Add2FFL(dir.file("none.ffl"), {c}, env).error->kind == ErrorKind::Gone);
  EXPECT_FALSE(dir.Exists("none.ffl"));
}

}  // namespace
}  // namespace trel
