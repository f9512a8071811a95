#include "filter/BatchConvert.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "filter/Paths.h"
#include "support/RecordingShell.h"
#include "support/TempDir.h"

namespace trel {
namespace {

using test::RecordingShell;
using test::TempDir;
namespace fs = std::filesystem;

// A text source; the batch reader takes its file name from the Filename line.
std::string Txt(const std::string& title, std::string filename = "") {
  if (filename.empty()) filename = ToLower(title) + ".8bf";
  std::string t = "Category: Batch\r\nTitle: " + title + "\r\nFilename: " + filename + "\r\n";
  return t + "\r\nR: r\r\n\r\nG: g\r\n\r\nB: b\r\n\r\nA: a\r\n\r\n";
}

// A library of `n` entries named e1.8bf ... by our own writer.
std::string Library(int n, const std::string& prefix = "e") {
  std::string t = "FFL1.0\r\n" + std::string(5 - std::to_string(n).size(), ' ') + std::to_string(n) + "\r\n";
  for (int i = 1; i <= n; ++i) {
    FFFilter f;
    f.filename = prefix + std::to_string(i) + ".8bf";
    f.title = "Entry " + std::to_string(i);
    f.codeR = "r";
    f.codeG = "g";
    f.codeB = "b";
    f.codeA = "a";
    t += FFLEntryText(f);
  }
  return t;
}

// Answers from a script and records what it was asked.
class ScriptedCheck : public OverwriteChecker {
 public:
  std::vector<int> answers;  // consumed front to back; then 0
  std::vector<std::string> asked;
  int resets = 0;
  int OverwriteCheck(const std::string& source, const std::string& target) override {
    if (source.empty() && target.empty()) {
      ++resets;
      return kOverwriteGo;
    }
    asked.push_back(fs::path(target).filename().string());
    if (answers.empty()) return kOverwriteGo;
    const int a = answers.front();
    answers.erase(answers.begin());
    return a;
  }
};

struct Fixture {
  TempDir dir;
  RecordingShell shell;
  FilterEnv env;
  FFFilter f;
  ScriptedCheck check;
  ConvertRequest request;
  Fixture() {
    env.shell = &shell;
    fs::create_directory(dir.file("prog"));
    fs::create_directory(dir.file("out"));
    env.options.programFolder = dir.file("prog/");
    request.targetFolder = dir.file("out");
    request.format = kFormatAFS;
  }
  std::vector<std::string> Files(const std::string& sub = "out") const {
    std::vector<std::string> names;
    for (const auto& e : fs::recursive_directory_iterator(dir.file(sub)))
      names.push_back(fs::relative(e.path(), dir.file(sub)).string());
    std::sort(names.begin(), names.end());
    return names;
  }
  ConvertReport Run() { return cmd_Convert(f, request, check, env); }
};

TEST(BatchConvert, SelectionIsReadAndWrittenAndTheCheckResetAroundTheRun) {
  Fixture fx;
  fx.request.selection = {fx.dir.Write("a.txt", Txt("A")), fx.dir.Write("b.txt", Txt("B", "bee.8bf")),
                          fx.dir.Write("n.doc", "no filter")};
  const ConvertReport r = fx.Run();
  EXPECT_EQ(fx.Files(), (std::vector<std::string>{"a.afs", "bee.afs"}));
  EXPECT_EQ(r.written, (std::vector<std::string>{fx.dir.file("out/a.afs"), fx.dir.file("out/bee.afs")}));
  EXPECT_EQ(r.read, 2);
  EXPECT_EQ(r.unreadable, 1);
  EXPECT_EQ(fx.check.resets, 2);
  EXPECT_EQ(fx.check.asked, (std::vector<std::string>{"a.afs", "bee.afs"}));
  EXPECT_EQ(fx.shell.statuses, (std::vector<std::string>{"1 of 3", "2 of 3", "3 of 3", ""}));
  EXPECT_TRUE(fx.shell.boxes.empty());
  EXPECT_TRUE(fx.shell.errors.empty());
}

TEST(BatchConvert, SourcesTheBatchReaderRefusesAreSkippedSilently) {
  Fixture fx;
  // An AFS file without its tail has its file name for a title.
  fx.request.selection = {fx.dir.Write("bare.afs", "%RGB-1.0\r0\r0\r0\r0\r0\r0\r0\r0\rr\r\rg\r\rb\r\ra\r\r")};
  fx.request.format = kFormatTXT;
  const ConvertReport r = fx.Run();
  EXPECT_TRUE(fx.Files().empty());
  EXPECT_EQ(r.unreadable, 1);
  EXPECT_TRUE(fx.shell.boxes.empty());
}

TEST(BatchConvert, OverwriteAnswersSkipAndStop) {
  Fixture fx;
  fx.request.selection = {fx.dir.Write("a.txt", Txt("A")), fx.dir.Write("b.txt", Txt("B")),
                          fx.dir.Write("c.txt", Txt("C"))};
  fx.check.answers = {kOverwriteSkip, kOverwriteGo, kOverwriteStop};
  const ConvertReport r = fx.Run();
  EXPECT_EQ(fx.Files(), (std::vector<std::string>{"b.afs"}));
  EXPECT_EQ(r.skipped, 1);
  EXPECT_TRUE(r.stopped);
  EXPECT_EQ(fx.check.resets, 2);

  // The default check writes new targets and keeps existing ones.
  Fixture fy;
  fy.dir.Write("out/a.afs", "mine");
  fy.request.selection = {fy.dir.Write("a.txt", Txt("A")), fy.dir.Write("b.txt", Txt("B"))};
  SkipExistingTargets keep;
  const ConvertReport kept = cmd_Convert(fy.f, fy.request, keep, fy.env);
  EXPECT_EQ(fy.dir.Read("out/a.afs"), "mine");
  EXPECT_TRUE(fy.dir.Exists("out/b.afs"));
  EXPECT_EQ(kept.skipped, 1);
}

TEST(BatchConvert, SameTitleWithFilterNameAsFileNameOverwritesWithoutAQuestion) {
  Fixture fx;
  fx.env.options.useFilterNameAsFileName = true;
  fx.request.selection = {fx.dir.Write("a.txt", Txt("My Filter")), 
                          fx.dir.Write("b.txt", "Author: Second\r\n" + Txt("My Filter", "b2.8bf"))};
  fx.request.format = kFormatTXT;
  SkipExistingTargets keep;
  const ConvertReport r = cmd_Convert(fx.f, fx.request, keep, fx.env);
  // The question saw a.txt and b2.txt, neither there; both wrote MyFilter.txt.
  EXPECT_EQ(fx.Files(), (std::vector<std::string>{"MyFilter.txt"}));
  EXPECT_EQ(r.written.size(), 2u);
  EXPECT_NE(fx.dir.Read("out/MyFilter.txt").find("Author: Second"), std::string::npos);
}

TEST(BatchConvert, EscapeLeavesTheFilesWrittenSoFar) {
  Fixture fx;
  fx.request.selection = {fx.dir.Write("a.txt", Txt("A")), fx.dir.Write("b.txt", Txt("B")),
                          fx.dir.Write("c.txt", Txt("C"))};
  fx.shell.escapeAfterPolls = 2;
  const ConvertReport r = fx.Run();
  EXPECT_EQ(fx.Files(), (std::vector<std::string>{"a.afs", "b.afs"}));
  EXPECT_TRUE(r.stopped);
  EXPECT_EQ(fx.check.resets, 2);
}

TEST(BatchConvert, LibrariesGetSubFoldersThatNest) {
  Fixture fx;
  fx.request.format = kFormatTXT;
  fx.request.createSubFolders = true;
  fx.request.selection = {fx.dir.Write("One.FFL", Library(2)), fx.dir.Write("two.ffl", Library(1, "t")),
                          fx.dir.Write("late.txt", Txt("Late"))};
  const ConvertReport r = fx.Run();
  EXPECT_EQ(fx.Files(), (std::vector<std::string>{"One", "One/e1.txt", "One/e2.txt", "One/two",
                                                  "One/two/late.txt", "One/two/t1.txt"}));
  EXPECT_EQ(r.read, 4);
  EXPECT_EQ(r.written.size(), 4u);

  // Without sub folders everything lands in the target folder itself.
  Fixture fy;
  fy.request.format = kFormatTXT;
  fy.request.selection = {fy.dir.Write("One.ffl", Library(2))};
  fy.Run();
  EXPECT_EQ(fy.Files(), (std::vector<std::string>{"e1.txt", "e2.txt"}));
}

TEST(BatchConvert, TheFFLViewExtractsTheSelectedEntries) {
  Fixture fx;
  FFLLibrary lib;
  ASSERT_TRUE(ReadFFLLibrary(fx.dir.Write("lib.ffl", Library(4)), lib, fx.env));
  fx.request.activeView = 3;
  fx.request.library = &lib;
  fx.request.selectedEntries = {4, 2};
  fx.request.selection = {fx.dir.Write("a.txt", Txt("A"))};  // not the source in this view
  fx.request.format = kFormatPFF;
  const ConvertReport r = fx.Run();
  EXPECT_EQ(fx.Files(), (std::vector<std::string>{"e2.pff", "e4.pff"}));
  EXPECT_EQ(fx.check.asked, (std::vector<std::string>{"e2.pff", "e4.pff"}));
  EXPECT_EQ(r.read, 2);
}

TEST(BatchConvert, ClipboardWithoutTextDoesNothingAndKeepsTheOption) {
  Fixture fx;
  fx.request.useClipboard = true;
  fx.request.selection = {fx.dir.Write("a.txt", Txt("A"))};
  const ConvertReport r = fx.Run();
  EXPECT_TRUE(fx.Files().empty());
  EXPECT_TRUE(r.clipboardOptionOn);
  EXPECT_TRUE(fx.shell.boxes.empty());
  EXPECT_TRUE(fx.shell.errors.empty());
  EXPECT_FALSE(fx.dir.Exists("prog/Temp.txt"));
}

TEST(BatchConvert, ClipboardTextGoesThroughTempTxt) {
  Fixture fx;
  fx.request.useClipboard = true;
  fx.request.clipboardText = Txt("Clip", "clip.8bf");
  const ConvertReport r = fx.Run();
  EXPECT_EQ(fx.Files(), (std::vector<std::string>{"clip.afs"}));
  EXPECT_FALSE(r.clipboardOptionOn);
  EXPECT_FALSE(fx.dir.Exists("prog/Temp.txt"));
  EXPECT_EQ(fx.check.asked, (std::vector<std::string>{"clip.afs"}));

  // Cancelled at the question: nothing written, Temp.txt stays, the box stays on.
  Fixture fy;
  fy.request.useClipboard = true;
  fy.request.clipboardText = Txt("Clip");
  fy.check.answers = {kOverwriteStop};
  const ConvertReport stopped = fy.Run();
  EXPECT_TRUE(fy.Files().empty());
  EXPECT_TRUE(stopped.clipboardOptionOn);
  EXPECT_TRUE(fy.dir.Exists("prog/Temp.txt"));
}

TEST(BatchConvert, AFailingWriterLeavesTheOldFileInPlace) {
  Fixture fx;
  // No template in the program folder: the compiler reports an error.
  fx.dir.Write("out/a.8bf", "the good old plugin");
  fx.request.format = kFormat8bf;
  fx.request.selection = {fx.dir.Write("a.txt", Txt("A"))};
  const ConvertReport r = fx.Run();
  EXPECT_EQ(fx.dir.Read("out/a.8bf"), "the good old plugin");
  EXPECT_EQ(fx.Files(), (std::vector<std::string>{"a.8bf"}));  // no scratch left behind
  EXPECT_EQ(r.failed, 1);
  EXPECT_TRUE(r.written.empty());
  EXPECT_FALSE(fx.shell.errors.empty());
}

TEST(BatchConvert, AfsOverALongerFileKeepsTheOldTail) {
  Fixture fx;
  const std::string old(2000, 'x');
  fx.dir.Write("out/a.afs", old);
  fx.request.selection = {fx.dir.Write("a.txt", Txt("A"))};
  OverwriteAllTargets all;
  cmd_Convert(fx.f, fx.request, all, fx.env);
  const std::string now = fx.dir.Read("out/a.afs");
  ASSERT_EQ(now.size(), old.size());
  EXPECT_EQ(now.rfind("%RGB-1.0\r", 0), 0u);
  EXPECT_EQ(now.back(), 'x');
}

TEST(BatchConvert, AnUnusableTargetFolderAsksWhetherToGoOn) {
  Fixture fx;
  fx.request.targetFolder = fx.dir.file("missing/deeper");
  fx.request.selection = {fx.dir.Write("a.txt", Txt("A")), fx.dir.Write("b.txt", Txt("B"))};
  fx.shell.continueAnyway = false;
  const ConvertReport r = fx.Run();
  EXPECT_EQ(fx.shell.questions.size(), 1u);
  EXPECT_TRUE(r.stopped);
  EXPECT_EQ(r.read, 1);
}

}  // namespace
}  // namespace trel
