#include <gtest/gtest.h>

#include <QDialog>
#include <deque>
#include <memory>

#include "shell/commander/FileCommander.h"
#include "shell/dialogs/Dialogs.h"
#include "shell/dialogs/MessageShell.h"
#include "support/UnattendedDialogs.h"

namespace trel {
namespace {

// Answers each modal dialog with the next scripted result code, then as nobody
// at the screen would.
class ScriptedDialogs : public test::UnattendedDialogs {
 public:
  int Exec(QDialog& dialog, int unattended) override {
    asked << dialog.windowTitle();
    if (codes.empty()) return unattended;
    const int code = codes.front();
    codes.pop_front();
    return code;
  }
  std::deque<int> codes;
};

class DialogsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    auto owned = std::make_unique<ScriptedDialogs>();
    script = owned.get();
    UseDialogs(std::move(owned));
  }
  void TearDown() override { UseDialogs(std::make_unique<test::UnattendedDialogs>()); }
  ScriptedDialogs* script = nullptr;
};

// The commander's questions read their answer from the dialog's result code:
// a button's number, Cancel, or what nobody at the screen would answer.
TEST_F(DialogsTest, TheCommandersQuestionsTakeTheAnswerTheDialogsGive) {
  const std::unique_ptr<FileDialogs> files = MakeFileDialogs(nullptr);
  script->codes = {12, QDialog::Rejected};
  EXPECT_EQ(files->Overwrite("/a/x.8bf", "/b/x.8bf"), 2);  // "Overwrite All"
  EXPECT_EQ(files->Overwrite("/a/x.8bf", ""), 4);          // closed: Cancel
  EXPECT_EQ(files->Overwrite("/a/x.8bf", ""), 0);          // nobody there: Overwrite

  const auto any = [](QString&) { return true; };
  const auto none = [](QString&) { return false; };
  bool sub = true;
  EXPECT_EQ(files->SelectFolder({"/p/", "/q/"}, any, &sub), "/p/");
  EXPECT_TRUE(sub);
  EXPECT_EQ(files->SelectFolder({"/p/"}, none, nullptr), "");  // the check refuses the entry
  script->codes = {QDialog::Rejected};
  EXPECT_EQ(files->SelectFolder({"/p/"}, any, nullptr), "");

  script->codes = {QDialog::Rejected};
  EXPECT_FALSE(files->Input("Rename", "a.txt").has_value());
  EXPECT_EQ(files->Input("Rename", "a.txt").value_or(""), "a.txt");

  EXPECT_EQ(script->asked, (QStringList{"Overwrite", "Overwrite", "Overwrite", "Select Folder", "Select Folder",
                                        "Select Folder", "Rename", "Rename"}));
}

TEST_F(DialogsTest, MessageBoxesGoThroughTheChosenDialogsUnderTheProgramsName) {
  MessageShell shell;
  EXPECT_EQ(shell.MsgBox("Really?", MsgButtons::YesNo, MsgIcon::Question, ""), MsgResult::Yes);
  EXPECT_EQ(shell.MsgBox("Done.", MsgButtons::Ok, MsgIcon::Information, "Convert"), MsgResult::Ok);
  EXPECT_TRUE(shell.ErrorMessage2("disk full"));  // "Continue anyway?" answers Yes
  EXPECT_EQ(script->asked, (QStringList{"Trel", "Convert", "Trel Error"}));
}

}  // namespace
}  // namespace trel
