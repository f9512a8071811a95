#include "filter/BatchConvert.h"

#include <filesystem>

#include "FilterKit.h"
#include "base/Paths.h"

namespace trel {
namespace {

using namespace test;
namespace fs = std::filesystem;

// A text source; the batch reader takes its file name from the Filename line.
std::string Txt(const std::string& title, std::string filename = "") {
  if (filename.empty()) filename = ToLower(title) + ".8bf";
  return "Category: Batch\r\nTitle: " + title + "\r\nFilename: " + filename +
         "\r\n\r\nR: r\r\n\r\nG: g\r\n\r\nB: b\r\n\r\nA: a\r\n\r\n";
}

std::string Library(int n, const std::string& prefix = "e") {
  std::vector<FFFilter> entries;
  for (int i = 1; i <= n; ++i) entries.push_back(Entry(prefix + std::to_string(i) + ".8bf", "Entry " + std::to_string(i)));
  return FflOf(entries);
}

// A report in one line: read/written/unreadable/skipped/failed, then "stopped".
std::string Counts(const ConvertReport& r) {
  std::string s;
  for (size_t n : {size_t(r.read), r.written.size(), size_t(r.unreadable), size_t(r.skipped), size_t(r.failed)})
    s += std::to_string(n) + "/";
  return s.substr(0, s.size() - 1) + (r.stopped ? " stopped" : "");
}

// Answers from a script and records what it was asked.
class ScriptedCheck : public OverwriteChecker {
 public:
  std::vector<OverwriteAnswer> answers;  // consumed front to back; then go
  Names asked;
  int resets = 0;
  OverwriteAnswer OverwriteCheck(const std::string& source, const std::string& target) override {
    if (source.empty() && target.empty()) { ++resets; return OverwriteAnswer::Write; }
    asked.push_back(fs::path(target).filename().string());
    if (answers.empty()) return OverwriteAnswer::Write;
    const OverwriteAnswer a = answers.front();
    answers.erase(answers.begin());
    return a;
  }
};

class BatchConvert : public FilterTest {
 protected:
  BatchConvert() {
    fs::create_directory(dir.file("prog"));
    fs::create_directory(dir.file("out"));
    env.options.programFolder = dir.file("prog/");
    request.targetFolder = dir.file("out");
    request.format = OutputFormat::AFS;
  }
  Names Files() const { return FilesBelow(dir.file("out")); }
  // Sources a.txt, b.txt, ... of the given titles.
  void Select(const Names& titles) {
    for (const auto& t : titles) request.selection.push_back(dir.Write(ToLower(t) + ".txt", Txt(t)));
  }
  ConvertReport Run() { return cmd_Convert(f, request, check, env); }
  ConvertReport Run(OverwriteChecker& other) { return cmd_Convert(f, request, other, env); }
  ScriptedCheck check;
  ConvertRequest request;
};

TEST_F(BatchConvert, SelectionIsReadAndWrittenAndTheCheckResetAroundTheRun) {
  request.selection = {dir.Write("a.txt", Txt("A")), dir.Write("b.txt", Txt("B", "bee.8bf")),
                       dir.Write("n.doc", "no filter")};
  const ConvertReport r = Run();
  EXPECT_EQ(r.written, (Names{dir.file("out/a.afs"), dir.file("out/bee.afs")}));
  EXPECT_EQ(Counts(r), "2/2/1/0/0");
  EXPECT_EQ(check.resets, 2);
  EXPECT_EQ(check.asked, (Names{"a.afs", "bee.afs"}));
  EXPECT_EQ(shell.statuses, (Names{"1 of 3", "2 of 3", "3 of 3", ""}));
  EXPECT_TRUE(shell.boxes.empty() && shell.errors.empty());
}

TEST_F(BatchConvert, OverwriteAnswersTheDefaultCheckAndEscapeEndOrShortenTheRun) {
  Select({"A", "B", "C"});
  check.answers = {OverwriteAnswer::Skip, OverwriteAnswer::Write, OverwriteAnswer::Stop};
  EXPECT_EQ(Counts(Run()), "3/1/0/1/0 stopped");  // C is read before its question
  EXPECT_EQ(Files(), Names{"b.afs"});
  EXPECT_EQ(check.resets, 2);
  dir.Write("out/a.afs", "mine");
  SkipExistingTargets keep;
  EXPECT_EQ(Counts(Run(keep)), "3/1/0/2/0");
  EXPECT_EQ(dir.Read("out/a.afs"), "mine");
  EXPECT_EQ(Files(), (Names{"a.afs", "b.afs", "c.afs"}));
  // Escape leaves the files written so far.
  fs::remove_all(dir.file("out"));
  fs::create_directory(dir.file("out"));
  shell.escapeAfterPolls = shell.escapePolls + 2;
  EXPECT_TRUE(Run().stopped);
  EXPECT_EQ(Files(), (Names{"a.afs", "b.afs"}));
  EXPECT_EQ(check.resets, 4);  // reset before and after each of its two runs
}

TEST_F(BatchConvert, SameTitleWithFilterNameAsFileNameOverwritesWithoutAQuestion) {
  env.options.useFilterNameAsFileName = true;
  request.selection = {dir.Write("a.txt", Txt("My Filter")),
                       dir.Write("b.txt", "Author: Second\r\n" + Txt("My Filter", "b2.8bf"))};
  request.format = OutputFormat::TXT;
  SkipExistingTargets keep;
  // The question saw a.txt and b2.txt, neither there; both wrote MyFilter.txt.
  EXPECT_EQ(Run(keep).written.size(), 2u);
  EXPECT_EQ(Files(), Names{"MyFilter.txt"});
  EXPECT_NE(dir.Read("out/MyFilter.txt").find("Author: Second"), std::string::npos);
}

TEST_F(BatchConvert, LibrariesGetSubFoldersThatNest) {
  request.format = OutputFormat::TXT;
  request.createSubFolders = true;
  request.selection = {dir.Write("One.FFL", Library(2)), dir.Write("two.ffl", Library(1, "t")),
                       dir.Write("late.txt", Txt("Late"))};
  EXPECT_EQ(Counts(Run()), "4/4/0/0/0");
  EXPECT_EQ(Files(), (Names{"One", "One/e1.txt", "One/e2.txt", "One/two", "One/two/late.txt", "One/two/t1.txt"}));
  // Without sub-folders the entries land in the target folder itself.
  fs::remove_all(dir.file("out"));
  fs::create_directory(dir.file("out"));
  request.createSubFolders = false;
  request.selection.resize(1);
  Run();
  EXPECT_EQ(Files(), (Names{"e1.txt", "e2.txt"}));
}

TEST_F(BatchConvert, TheFFLViewExtractsTheSelectedEntries) {
  FFLLibrary lib;
  ASSERT_TRUE(ReadFFLLibrary(dir.Write("lib.ffl", Library(4)), lib));
  request.activeView = 3;
  request.library = &lib;
  request.selectedEntries = {4, 2};
  Select({"A"});  // not the source in this view
  request.format = OutputFormat::PFF;
  EXPECT_EQ(Run().read, 2);
  EXPECT_EQ(Files(), (Names{"e2.pff", "e4.pff"}));
  EXPECT_EQ(check.asked, (Names{"e2.pff", "e4.pff"}));
}

TEST_F(BatchConvert, ClipboardTextGoesThroughTempTxt) {
  request.useClipboard = true;
  Select({"A"});  // not the source when the clipboard is chosen
  EXPECT_TRUE(Run().clipboardOptionOn);  // no text: nothing done, the option stays
  EXPECT_TRUE(Files().empty());
  EXPECT_TRUE(shell.boxes.empty() && shell.errors.empty());
  EXPECT_FALSE(dir.Exists("prog/Temp.txt"));
  request.clipboardText = Txt("Clip", "clip.8bf");
  EXPECT_FALSE(Run().clipboardOptionOn);
  EXPECT_EQ(Files(), Names{"clip.afs"});
  EXPECT_FALSE(dir.Exists("prog/Temp.txt"));
  EXPECT_EQ(check.asked, Names{"clip.afs"});
  // Cancelled at the question: nothing new written, Temp.txt stays, the box stays on.
  request.clipboardText = Txt("Other");
  check.answers = {OverwriteAnswer::Stop};
  EXPECT_TRUE(Run().clipboardOptionOn);
  EXPECT_EQ(Files(), Names{"clip.afs"});
  EXPECT_TRUE(dir.Exists("prog/Temp.txt"));
}

TEST_F(BatchConvert, AFailingWriterLeavesTheOldFileInPlace) {
  dir.Write("out/a.8bf", "the good old plugin");
  request.format = OutputFormat::Plugin8bf;  // no template in the program folder: the compiler reports an error
  Select({"A"});
  EXPECT_EQ(Counts(Run()), "1/0/0/0/1");
  EXPECT_EQ(dir.Read("out/a.8bf"), "the good old plugin");
  EXPECT_EQ(Files(), Names{"a.8bf"});  // no scratch left behind
  EXPECT_FALSE(shell.errors.empty());
}

TEST_F(BatchConvert, AnUnusableTargetFolderAsksWhetherToGoOn) {
  request.targetFolder = dir.file("missing/deeper");
  Select({"A", "B"});
  shell.continueAnyway = false;
  const ConvertReport r = Run();
  EXPECT_EQ(shell.questions.size(), 1u);
  EXPECT_TRUE(r.stopped);
  EXPECT_EQ(r.read, 1);
}

}  // namespace
}  // namespace trel
