#include "filter/FFL.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "filter/BatchConvert.h"
#include "filter/CodeRewrite.h"
#include "filter/Dispatch.h"
#include "support/RecordingShell.h"
#include "support/TempDir.h"

namespace trel {
namespace {

using test::RecordingShell;
using test::TempDir;
namespace fs = std::filesystem;

// The 29 lines of an entry, written out by hand so that the readers are not
// tested against our own writer.
struct RawEntry {
  std::string filename = "f.8bf", category = "Cat", title = "Title", author = "Au",
              copyright = "Co";
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
  RawEntry e;
  e.filename = filename;
  e.title = title;
  return e;
}

std::string Library(const std::vector<RawEntry>& entries, const std::string& count = "",
                    const std::string& magic = "FFL1.0") {
  std::string t = magic + "\r\n" + (count.empty() ? std::string(5 - std::to_string(entries.size()).size(), ' ') +
                                                        std::to_string(entries.size())
                                                  : count) +
                  "\r\n";
  for (const auto& e : entries) t += e.Text();
  return t;
}

// A library with entry 2 struck out as the program does it: "//", 0, 0.
std::string WithSecondDeleted(std::string library, const std::vector<RawEntry>& entries) {
  const size_t at = library.find("\r\n", 8) + 2 + entries[0].Text().size();
  library.replace(at, 4, std::string("//\0\0", 4));
  return library;
}

struct Fixture {
  TempDir dir;
  RecordingShell shell;
  FilterEnv env;
  FFFilter f;
  Fixture() {
    env.shell = &shell;
    env.options.programFolder = dir.path();
  }
  std::vector<std::string> FilesIn(const std::string& folder) const {
    std::vector<std::string> names;
    for (const auto& e : fs::directory_iterator(folder)) names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }
};

// ---------------------------------------------------------------- reading entries

TEST(FFLRead, EntryRulesForCopyrightSignAndRepeatedCodes) {
  Fixture fx;
  RawEntry sign;
  sign.copyright = "\xA9 2001 Someone";
  sign.codes[0] = "r*2";
  sign.codes[1] = "\"";
  sign.codes[2] = "\"";
  RawEntry chained;
  chained.codes[0] = "r";
  chained.codes[1] = "g/2";
  chained.codes[2] = "\"";  // repeats codeG, not codeR
  chained.codes[3] = "\"";  // codeA has no short form
  auto in = FFLTextReader::Open(fx.dir.Write("a.ffl", sign.Text() + chained.Text()));
  std::string problem;

  ASSERT_EQ(ReadFFLEntry(fx.f, *in, problem), FFLRead::Entry);
  EXPECT_EQ(fx.f.copyright, "Copyright \xA9 2001 Someone");
  EXPECT_EQ(fx.f.codeG, "r*2");
  EXPECT_EQ(fx.f.codeB, "r*2");
  EXPECT_EQ(fx.f.ctlName[1], "Amount");
  EXPECT_EQ(fx.f.ctlValue[1], 12);

  ASSERT_EQ(ReadFFLEntry(fx.f, *in, problem), FFLRead::Entry);
  EXPECT_EQ(fx.f.copyright, "Co");
  EXPECT_EQ(fx.f.codeB, "g/2");
  EXPECT_EQ(fx.f.codeA, "\"");
  EXPECT_EQ(ReadFFLEntry(fx.f, *in, problem), FFLRead::EndOfFile);
}

TEST(FFLRead, BrokenEntriesAreToldNotGuessed) {
  Fixture fx;
  std::string problem;
  RawEntry wide;
  wide.values[3] = "256";
  auto in = FFLTextReader::Open(fx.dir.Write("v.ffl", wide.Text()));
  EXPECT_EQ(ReadFFLEntry(fx.f, *in, problem), FFLRead::Broken);
  EXPECT_NE(problem.find("out of range"), std::string::npos);

  const std::string cut = RawEntry{}.Text().substr(0, 40);
  in = FFLTextReader::Open(fx.dir.Write("c.ffl", cut));
  EXPECT_EQ(ReadFFLEntry(fx.f, *in, problem), FFLRead::Broken);
  EXPECT_NE(problem.find("of 29 lines"), std::string::npos);

  in = FFLTextReader::Open(fx.dir.Write("l.ffl", std::string(FFLTextReader::kMaxLine + 5, 'x')));
  EXPECT_EQ(ReadFFLEntry(fx.f, *in, problem), FFLRead::Broken);
  EXPECT_NE(problem.find("too long"), std::string::npos);

  // Blank lines behind the last entry are no entry at all.
  in = FFLTextReader::Open(fx.dir.Write("b.ffl", RawEntry{}.Text() + "\r\n\r\n"));
  EXPECT_EQ(ReadFFLEntry(fx.f, *in, problem), FFLRead::Entry);
  EXPECT_EQ(ReadFFLEntry(fx.f, *in, problem), FFLRead::EndOfFile);
}

TEST(FFLRead, EntryByPositionSetsDialectFromTheName) {
  Fixture fx;
  std::vector<RawEntry> entries = {Named("one.8bf", "One"), Named("two.PRM", "Two")};
  fx.dir.Write("lib.ffl", Library(entries));
  FFLLibrary lib;
  ASSERT_TRUE(ReadFFLLibrary(fx.dir.file("lib.ffl"), lib, fx.env));
  auto file = BinFile::Open(fx.dir.file("lib.ffl"), BinFile::Mode::Read);

  file->Seek(lib.PositionOf(2));
  fx.f.isPhotoshop = true;
  ASSERT_TRUE(ReadFFLEntryII(fx.f, *file));
  EXPECT_EQ(fx.f.title, "Two");
  EXPECT_FALSE(fx.f.isPhotoshop);

  file->Seek(lib.PositionOf(1));
  ASSERT_TRUE(ReadFFLEntryII(fx.f, *file));
  EXPECT_EQ(fx.f.title, "One");
  EXPECT_TRUE(fx.f.isPhotoshop);

  // An entry cut off by the end of the file is no entry.
  auto cut = BinFile::Open(fx.dir.Write("cut.ffl", Library(entries).substr(0, 60)), BinFile::Mode::Read);
  cut->Seek(lib.PositionOf(1));
  EXPECT_FALSE(ReadFFLEntryII(fx.f, *cut));
}

// ---------------------------------------------------------------- writing entries

FFFilter SampleFilter() {
  FFFilter f;
  f.filename = "sample.8bf";
  f.category = "Tests";
  f.title = "Sample";
  f.author = "Someone";
  f.copyright = "Copyright \xA9 2024";
  f.mapName[2] = "Map Two";
  f.ctlName[1] = "Radius";
  f.ctlName[8] = "Last";
  f.ctlValue[1] = 200;
  f.ctlValue[8] = 7;
  f.codeR = "src(x,y,z)";
  f.codeG = "src(x,y,z)";
  f.codeB = "src(x,y,z)";
  f.codeA = "a";
  return f;
}

TEST(FFLWrite, EntryReadsBackAndUsesTheShortForm) {
  Fixture fx;
  const FFFilter original = SampleFilter();
  const std::string text = FFLEntryText(original);
  EXPECT_NE(text.find("src(x,y,z)\r\n\"\r\n\"\r\na\r\n"), std::string::npos);

  FFFilter chained = original;
  chained.codeR = "r";  // G and B equal each other but not R
  const std::string both = text + FFLEntryText(chained);
  auto in = FFLTextReader::Open(fx.dir.Write("w.ffl", both));
  std::string problem;
  FFFilter back;
  ASSERT_EQ(ReadFFLEntry(back, *in, problem), FFLRead::Entry);
  EXPECT_EQ(back, original);
  ASSERT_EQ(ReadFFLEntry(back, *in, problem), FFLRead::Entry);
  EXPECT_EQ(back, chained);
}

TEST(FFLWrite, LineBreaksInsideFieldsDoNotShiftTheLibrary) {
  Fixture fx;
  FFFilter broken = SampleFilter();
  broken.title = "two\r\nlines";
  broken.codeR = "r\r+1";
  FFFilter next = SampleFilter();
  next.title = "Next";
  auto in = FFLTextReader::Open(fx.dir.Write("w.ffl", FFLEntryText(broken) + FFLEntryText(next)));
  std::string problem;
  FFFilter back;
  ASSERT_EQ(ReadFFLEntry(back, *in, problem), FFLRead::Entry);
  EXPECT_EQ(back.title, "two  lines");
  ASSERT_EQ(ReadFFLEntry(back, *in, problem), FFLRead::Entry);
  EXPECT_EQ(back.title, "Next");
}

TEST(FFLWrite, CodeIsStoredInTheDialectItsNamePromises) {
  // Premiere code under a Photoshop name would come back as Photoshop code.
  FFFilter prm = SampleFilter();
  prm.isPhotoshop = false;
  prm.codeR = "r+1";
  prm.codeG = "src(x,y,1)";
  const std::string text = FFLEntryText(prm);
  EXPECT_NE(text.find(Correctprmcode("src(x,y,1)") + "\r\n"), std::string::npos);

  FFFilter named = prm;
  named.filename = "sample.prm";  // the name says Premiere: kept as it is
  EXPECT_NE(FFLEntryText(named).find("\r\nsrc(x,y,1)\r\n"), std::string::npos);

  // A name that would read as a deleted entry is not stored as one.
  named.filename = "//x.8bf";
  EXPECT_EQ(FFLEntryText(named).rfind("__x.8bf\r\n", 0), 0u);
}

// ---------------------------------------------------------------- the library table

TEST(FFLLibraryTable, DeletedEntriesKeepTheirNumbersButAreNotListed) {
  Fixture fx;
  std::vector<RawEntry> entries = {Named("a.8bf", "A"), Named("b.8bf", "B"), Named("c.8bf", "C")};
  fx.dir.Write("lib.ffl", WithSecondDeleted(Library(entries), entries));
  FFLLibrary lib;
  ASSERT_TRUE(ReadFFLLibrary(fx.dir.file("lib.ffl"), lib, fx.env));
  EXPECT_EQ(lib.version, "FFL1.0");
  EXPECT_EQ(lib.declaredCount, 3);
  EXPECT_EQ(lib.positions.size(), 3u);
  EXPECT_EQ(lib.positions[0], 16);
  ASSERT_EQ(lib.items.size(), 2u);
  EXPECT_EQ(lib.items[1].number, 3);
  EXPECT_EQ(lib.items[1].title, "C");
  EXPECT_EQ(lib.PositionOf(4), 0);
  EXPECT_TRUE(lib.problem.empty());
}

TEST(FFLLibraryTable, NotALibraryIsAFormatViolation) {
  Fixture fx;
  FFLLibrary lib;
  EXPECT_FALSE(ReadFFLLibrary(fx.dir.Write("x.ffl", "FFL2.0\r\n    1\r\n"), lib, fx.env));
  ASSERT_EQ(fx.shell.boxes.size(), 1u);
  EXPECT_EQ(fx.shell.boxes[0].title, "Format Violation");
  EXPECT_EQ(fx.shell.boxes[0].text, fx.dir.file("x.ffl") + " is not a Filter Factory Library File!");
  EXPECT_EQ(fx.shell.boxes[0].icon, MsgIcon::Exclamation);

  EXPECT_FALSE(ReadFFLLibrary(fx.dir.file("missing.ffl"), lib, fx.env));
  EXPECT_EQ(fx.shell.refreshes, 1);
}

TEST(FFLLibraryTable, SearchLooksAtTitleCategoryAuthorAndCode) {
  Fixture fx;
  std::vector<RawEntry> entries(4);
  entries[0].title = "Blue Sky";
  entries[1].category = "Sky things";
  entries[2].codes[3] = "put(SKY,0)";
  entries[3].copyright = "sky";  // not searched
  fx.dir.Write("lib.ffl", Library(entries));
  EXPECT_EQ(cmd_SearchFFL(fx.dir.file("lib.ffl"), "sKy", fx.env), (std::vector<int>{1, 2, 3}));

  fx.dir.Write("del.ffl", WithSecondDeleted(Library(entries), entries));
  EXPECT_EQ(cmd_SearchFFL(fx.dir.file("del.ffl"), "sky", fx.env), (std::vector<int>{1, 3}));
}

// ---------------------------------------------------------------- in-place changes

TEST(FFLInPlace, DeleteStrikesOutTheNameLine) {
  Fixture fx;
  std::vector<RawEntry> entries = {Named("a.8bf", "A"), Named("b.8bf", "B")};
  const std::string path = fx.dir.Write("lib.ffl", Library(entries));
  FFLLibrary lib;
  ReadFFLLibrary(path, lib, fx.env);
  const std::string before = fx.dir.Read("lib.ffl");

  EXPECT_FALSE(DeleteFFLEntry(path, lib.positions[1] + 1));  // not the start of a line
  EXPECT_FALSE(DeleteFFLEntry(path, 9));                     // the header
  EXPECT_FALSE(DeleteFFLEntry(path, 1 << 20));
  EXPECT_EQ(fx.dir.Read("lib.ffl"), before);

  ASSERT_TRUE(DeleteFFLEntry(path, lib.positions[1]));
  const std::string after = fx.dir.Read("lib.ffl");
  EXPECT_EQ(after.size(), before.size());
  EXPECT_EQ(after.substr(static_cast<size_t>(lib.positions[1] - 1), 7), std::string("//\0\0f\r\n", 7));
  ReadFFLLibrary(path, lib, fx.env);
  EXPECT_EQ(lib.declaredCount, 2);
  ASSERT_EQ(lib.items.size(), 1u);
  EXPECT_EQ(lib.items[0].title, "A");
}

TEST(FFLInPlace, DeleteNeverEatsTheEndOfAShortNameLine) {
  Fixture fx;
  std::vector<RawEntry> entries = {Named("a", "A"), Named("bc", "B")};
  const std::string path = fx.dir.Write("lib.ffl", Library(entries));
  FFLLibrary lib;
  ReadFFLLibrary(path, lib, fx.env);
  EXPECT_FALSE(DeleteFFLEntry(path, lib.positions[0]));
  ASSERT_TRUE(DeleteFFLEntry(path, lib.positions[1]));
  ReadFFLLibrary(path, lib, fx.env);
  EXPECT_EQ(lib.positions.size(), 2u);
  ASSERT_EQ(lib.items.size(), 1u);
  EXPECT_EQ(lib.items[0].title, "A");
}

TEST(FFLInPlace, CountIsPatchedRightAlignedInFiveCharacters) {
  Fixture fx;
  const std::string path = fx.dir.Write("lib.ffl", Library({RawEntry{}}));
  ASSERT_TRUE(FFLNumWrite(path, 42));
  EXPECT_EQ(fx.dir.Read("lib.ffl").substr(0, 15), "FFL1.0\r\n   42\r\n");
  ASSERT_TRUE(FFLNumWrite(path, 1234567));
  EXPECT_EQ(fx.dir.Read("lib.ffl").substr(8, 7), "99999\r\n");

  // A header of other widths or no library at all is left alone.
  const std::string odd = fx.dir.Write("odd.ffl", "FFL1.0\r\n1\r\n" + RawEntry{}.Text());
  EXPECT_FALSE(FFLNumWrite(odd, 2));
  EXPECT_EQ(fx.dir.Read("odd.ffl"), "FFL1.0\r\n1\r\n" + RawEntry{}.Text());
  EXPECT_FALSE(FFLNumWrite(fx.dir.file("none.ffl"), 2));
  EXPECT_FALSE(fx.dir.Exists("none.ffl"));
}

TEST(FFLInPlace, DeletingItemsAsksFirst) {
  Fixture fx;
  std::vector<RawEntry> entries = {Named("a.8bf", "A"), Named("b.8bf", "B"), Named("c.8bf", "C")};
  const std::string path = fx.dir.Write("lib.ffl", Library(entries));
  FFLLibrary lib;
  ReadFFLLibrary(path, lib, fx.env);
  fx.shell.nextAnswer = MsgResult::No;
  EXPECT_TRUE(DeleteFFLItems(lib, {1, 3}, fx.env).empty());
  ASSERT_EQ(fx.shell.boxes.size(), 1u);
  EXPECT_EQ(fx.shell.boxes[0].text, "Do you want to delete these/this FFL item(s)?");
  EXPECT_EQ(fx.shell.boxes[0].title, "Delete FFL Item");
  EXPECT_EQ(fx.shell.boxes[0].buttons, MsgButtons::YesNo);

  fx.shell.nextAnswer = MsgResult::Yes;
  EXPECT_EQ(DeleteFFLItems(lib, {1, 3}, fx.env), (std::vector<int>{3, 1}));
  ReadFFLLibrary(path, lib, fx.env);
  ASSERT_EQ(lib.items.size(), 1u);
  EXPECT_EQ(lib.items[0].title, "B");
}

// ---------------------------------------------------------------- Convertffl

TEST(Convertffl, WalksToTheEndOfTheFileWhateverTheCount) {
  Fixture fx;
  std::vector<RawEntry> entries = {Named("a.8bf", "A"), Named("b.8bf", "B"), Named("c.8bf", "C")};
  const std::string path = fx.dir.Write("lib.ffl", Library(entries, "    1"));
  ASSERT_TRUE(Convertffl(fx.f, path, fx.dir.file("out"), kFormatTXT, fx.env));
  EXPECT_EQ(fx.FilesIn(fx.dir.file("out")), (std::vector<std::string>{"a.txt", "b.txt", "c.txt"}));
  EXPECT_EQ(fx.shell.statuses,
            (std::vector<std::string>{"1 of 1", "2 of 1", "3 of 1", ""}));
}

TEST(Convertffl, DeletedEntryIsCountedButNotWritten) {
  Fixture fx;
  std::vector<RawEntry> entries = {Named("a.8bf", "A"), Named("b.8bf", "B"), Named("c.8bf", "C")};
  const std::string path = fx.dir.Write("lib.ffl", WithSecondDeleted(Library(entries), entries));
  ConvertReport report;
  ASSERT_TRUE(Convertffl(fx.f, path, fx.dir.file("out"), kFormatAFS, fx.env, &report));
  EXPECT_EQ(fx.FilesIn(fx.dir.file("out")), (std::vector<std::string>{"a.afs", "c.afs"}));
  EXPECT_EQ(fx.shell.statuses[2], "3 of 3");
  EXPECT_EQ(report.read, 2);
  EXPECT_EQ(report.written.size(), 2u);
}

TEST(Convertffl, ReplacesExistingFilesAndLeavesDialectAlone) {
  Fixture fx;
  RawEntry e = Named("a.8bf", "A");
  const std::string path = fx.dir.Write("lib.ffl", Library({e}));
  fs::create_directory(fx.dir.file("out"));
  fx.dir.Write("out/a.txt", "old");
  fx.f.isPhotoshop = false;
  SkipExistingTargets skip;  // entries aren't handed to it in the program
  ASSERT_TRUE(Convertffl(fx.f, path, fx.dir.file("out"), kFormatTXT, fx.env, nullptr, &skip));
  EXPECT_NE(fx.dir.Read("out/a.txt"), "old");
  EXPECT_FALSE(fx.f.isPhotoshop);

  // The command line hands entries to its check.
  fx.dir.Write("out/a.txt", "old");
  ConvertReport report;
  ASSERT_TRUE(Convertffl(fx.f, path, fx.dir.file("out"), kFormatTXT, fx.env, &report, &skip, true));
  EXPECT_EQ(fx.dir.Read("out/a.txt"), "old");
  EXPECT_EQ(report.skipped, 1);
}

TEST(Convertffl, BadLibrariesGiveAMessageAndWriteNothingWrong) {
  Fixture fx;
  const std::string junk = fx.dir.Write("junk.ffl", std::string("\x00\xff\x13\x10garbage", 11));
  EXPECT_FALSE(Convertffl(fx.f, junk, fx.dir.file("out"), kFormatTXT, fx.env));
  ASSERT_EQ(fx.shell.boxes.size(), 1u);
  EXPECT_EQ(fx.shell.boxes[0].text, junk + " is not a Filter Factory Library File!");
  EXPECT_TRUE(fx.FilesIn(fx.dir.file("out")).empty());

  // Good entries before a broken one are written; then the general error.
  std::vector<RawEntry> entries = {Named("a.8bf", "A"), Named("b.8bf", "B")};
  const std::string cut = Library(entries);
  const std::string path = fx.dir.Write("cut.ffl", cut.substr(0, cut.size() - 30));
  EXPECT_FALSE(Convertffl(fx.f, path, fx.dir.file("out"), kFormatTXT, fx.env));
  EXPECT_EQ(fx.FilesIn(fx.dir.file("out")), (std::vector<std::string>{"a.txt"}));
  ASSERT_EQ(fx.shell.errors.size(), 1u);
  EXPECT_NE(fx.shell.errors[0].find("of 29 lines"), std::string::npos);

  // Junk after a valid header: one error, no crash.
  fx.dir.Write("bin.ffl", "FFL1.1\r\n    9\r\n" + std::string(5000, '\0') + "\xff\r\x01");
  EXPECT_FALSE(Convertffl(fx.f, fx.dir.file("bin.ffl"), fx.dir.file("out"), kFormatTXT, fx.env));
  EXPECT_EQ(fx.shell.errors.size(), 2u);
}

TEST(Convertffl, EntryNamesCannotLeadOutOfTheTargetFolder) {
  Fixture fx;
  const std::string path = fx.dir.Write("lib.ffl", Library({Named("../../evil.8bf", "E")}));
  ASSERT_TRUE(Convertffl(fx.f, path, fx.dir.file("a/b/out"), kFormatTXT, fx.env));
  EXPECT_EQ(fx.FilesIn(fx.dir.file("a/b/out")), (std::vector<std::string>{".._.._evil.txt"}));
  EXPECT_FALSE(fx.dir.Exists("evil.txt"));
  EXPECT_FALSE(fx.dir.Exists("a/evil.txt"));
}

TEST(Convertffl, EscapeStopsBetweenEntries) {
  Fixture fx;
  std::vector<RawEntry> entries = {Named("a.8bf", "A"), Named("b.8bf", "B"), Named("c.8bf", "C")};
  const std::string path = fx.dir.Write("lib.ffl", Library(entries));
  fx.shell.escapeAfterPolls = 2;
  ConvertReport report;
  ASSERT_TRUE(Convertffl(fx.f, path, fx.dir.file("out"), kFormatTXT, fx.env, &report));
  EXPECT_EQ(fx.FilesIn(fx.dir.file("out")), (std::vector<std::string>{"a.txt", "b.txt"}));
  EXPECT_TRUE(report.stopped);
}

// Library -> each source format -> back through the batch reader.
TEST(Convertffl, SourceFormatsRoundTrip) {
  Fixture fx;
  RawEntry e = Named("round.8bf", "Round");
  e.maps[1] = "Map";
  e.ctls[0] = "Amount";
  e.ctls[1] = "Second";
  e.values[1] = "99";
  e.codes[0] = "r*ctl(0)/255";
  e.codes[1] = "g";
  e.codes[2] = "b+ctl(1)";
  const std::string path = fx.dir.Write("lib.ffl", Library({e}));
  FFLLibrary lib;
  ASSERT_TRUE(ReadFFLLibrary(path, lib, fx.env));
  auto file = BinFile::Open(path, BinFile::Mode::Read);
  file->Seek(lib.PositionOf(1));
  FFFilter expected;
  ASSERT_TRUE(ReadFFLEntryII(expected, *file));
  OptimizeCode(expected, fx.env.options);

  for (int format : {kFormatAFS, kFormatPFF, kFormatTXT}) {
    SCOPED_TRACE(format);
    const std::string out = fx.dir.file("out" + std::to_string(format));
    fx.f.isPhotoshop = true;
    ASSERT_TRUE(Convertffl(fx.f, path, out, format, fx.env));
    FFFilter back;
    const std::string written = out + "/" + GetFilname(format, "round.x", fx.env.options);
    ASSERT_TRUE(ReadFFfile(back, written, fx.env));
    if (format == kFormatPFF) {
      for (auto* code : {&back.codeR, &back.codeG, &back.codeB, &back.codeA})
        *code = Correctprmcode(*code);
    }
    EXPECT_EQ(back.title, expected.title);
    EXPECT_EQ(back.category, expected.category);
    EXPECT_EQ(back.author, expected.author);
    EXPECT_EQ(back.copyright, expected.copyright);
    EXPECT_EQ(back.codeR, expected.codeR);
    EXPECT_EQ(back.codeG, expected.codeG);
    EXPECT_EQ(back.codeB, expected.codeB);
    EXPECT_EQ(back.codeA, expected.codeA);
    EXPECT_EQ(back.ctlValue, expected.ctlValue);
    if (format == kFormatTXT) {
      EXPECT_EQ(back.mapName, expected.mapName);
    }
  }
}

// ---------------------------------------------------------------- making libraries

std::string AfsWithTail(const std::string& title) {
  return "%RGB-1.0\r10\r0\r0\r0\r0\r0\r0\r0\rr\r\rg\r\rb\r\ra\r\rCat\r\r" + title +
         "\r\rAuthor\r\rCopy\r\r1: Amount\r\r2: \r\r3: \r\r4: \r\r5: \r\r6: \r\r7: \r\r8: \r\r";
}

TEST(FFLCreate, LibraryOfTheReadableFiltersReadsBack) {
  Fixture fx;
  const std::string a = fx.dir.Write("a.afs", AfsWithTail("First"));
  const std::string b = fx.dir.Write("b.afs", AfsWithTail("Second"));
  const std::string tailless = fx.dir.Write("t.afs", "%RGB-1.0\r0\r0\r0\r0\r0\r0\r0\r0\rr\r\rg\r\rb\r\ra\r\r");
  const std::string lib = fx.dir.file("new.ffl");
  fx.env.options.writeFFL10 = true;
  const FFLAddResult r = cmd_CreateFFL(lib, {a, tailless, fx.dir.file("gone.txt"), b}, fx.env);
  EXPECT_TRUE(r.ok);
  EXPECT_EQ(r.added, 2);
  EXPECT_EQ(r.unreadable.size(), 2u);
  EXPECT_EQ(fx.dir.Read("new.ffl").substr(0, 15), "FFL1.0\r\n    2\r\n");

  FFLLibrary table;
  ASSERT_TRUE(ReadFFLLibrary(lib, table, fx.env));
  ASSERT_EQ(table.items.size(), 2u);
  EXPECT_EQ(table.items[0].title, "First");
  EXPECT_EQ(table.items[1].title, "Second");
  EXPECT_EQ(table.items[1].filename, "b.8bf");

  fx.env.options.writeFFL10 = false;
  ASSERT_TRUE(cmd_CreateFFL(lib, {a}, fx.env).ok);
  EXPECT_EQ(fx.dir.Read("new.ffl").substr(0, 15), "FFL1.1\r\n    1\r\n");
}

TEST(FFLAdd, AppendsAndCorrectsTheCountDeletedEntriesIncluded) {
  Fixture fx;
  std::vector<RawEntry> entries = {Named("a.8bf", "A"), Named("b.8bf", "B")};
  std::string text = WithSecondDeleted(Library(entries, "3"), entries);  // odd count width
  text.resize(text.size() - 2);                                          // no line end at the end
  const std::string lib = fx.dir.Write("lib.ffl", text);
  const FFLAddResult r = cmd_Add2FFL(lib, {fx.dir.Write("c.afs", AfsWithTail("Third"))}, fx.env);
  ASSERT_TRUE(r.ok);
  EXPECT_EQ(r.added, 1);

  FFLLibrary table;
  ASSERT_TRUE(ReadFFLLibrary(lib, table, fx.env));
  EXPECT_TRUE(table.problem.empty()) << table.problem;
  EXPECT_EQ(table.declaredCount, 3);
  EXPECT_EQ(fx.dir.Read("lib.ffl").substr(8, 7), "    3\r\n");
  EXPECT_EQ(table.positions.size(), 3u);
  ASSERT_EQ(table.items.size(), 2u);
  EXPECT_EQ(table.items[0].title, "A");
  EXPECT_EQ(table.items[1].title, "Third");
}

TEST(FFLAdd, RefusesBrokenOrForeignLibrariesUnchanged) {
  Fixture fx;
  const std::string c = fx.dir.Write("c.afs", AfsWithTail("Third"));
  const std::string cut = Library({RawEntry{}}).substr(0, 60);
  fx.dir.Write("cut.ffl", cut);
  EXPECT_FALSE(cmd_Add2FFL(fx.dir.file("cut.ffl"), {c}, fx.env).ok);
  EXPECT_EQ(fx.dir.Read("cut.ffl"), cut);
  EXPECT_EQ(fx.shell.errors.size(), 1u);

  fx.dir.Write("other.ffl", "hello");
  EXPECT_FALSE(cmd_Add2FFL(fx.dir.file("other.ffl"), {c}, fx.env).ok);
  EXPECT_EQ(fx.dir.Read("other.ffl"), "hello");
  EXPECT_EQ(fx.shell.boxes.back().title, "Format Violation");
}

}  // namespace
}  // namespace trel
