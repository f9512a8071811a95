// The window shows an Error the core returned in the box the core used to
// open itself: the same text, title, icon and buttons (front/UserMessages.h).
#include <gtest/gtest.h>

#include "support/RecordingShell.h"

namespace trel {
namespace {

TEST(UserMessages, ReportShowsEachKindInItsOwnBox) {
  test::RecordingShell shell;
  shell.Report(Error::Fault("a: the file can't be opened", "a"));
  ASSERT_EQ(shell.errors, std::vector<std::string>{"a: the file can't be opened"});
  EXPECT_TRUE(shell.boxes.empty());

  Error titled = Error::Fault("Error accessing plugin for category change!");
  titled.title = "Error";
  shell.Report(titled);
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].icon, MsgIcon::Critical);
  EXPECT_EQ(shell.boxes[0].title, "Error");
  EXPECT_EQ(shell.errors.size(), 1u);
  shell.boxes.clear();

  shell.Report(Error::Warning("x is not a Filter Factory Library File!", "Format Violation", "x"));
  shell.Report(Error::Information("Title: T", "Plugin Information"));
  ASSERT_EQ(shell.boxes.size(), 2u);
  EXPECT_EQ(shell.boxes[0].text, "x is not a Filter Factory Library File!");
  EXPECT_EQ(shell.boxes[0].title, "Format Violation");
  EXPECT_EQ(shell.boxes[0].icon, MsgIcon::Exclamation);
  EXPECT_EQ(shell.boxes[0].buttons, MsgButtons::Ok);
  EXPECT_EQ(shell.boxes[1].icon, MsgIcon::Information);
  EXPECT_EQ(shell.boxes[1].title, "Plugin Information");

  // A file that has gone is not told; the lists are read again.
  shell.Report(Error::Gone("y"));
  EXPECT_EQ(shell.boxes.size(), 2u);
  EXPECT_EQ(shell.errors.size(), 1u);
  EXPECT_EQ(shell.refreshes, 1);
}

TEST(UserMessages, ContinueAfterAsksTheGeneralQuestion) {
  test::RecordingShell shell;
  shell.continueAnyway = false;
  EXPECT_FALSE(shell.ContinueAfter(Error::Fault("f: nothing can be written into this folder")));
  EXPECT_EQ(shell.questions, std::vector<std::string>{"f: nothing can be written into this folder"});
  // Without a window nobody is asked and the work goes on.
  EXPECT_TRUE(NullShell().ContinueAfter(Error::Fault("f")));
}

TEST(Expected, HoldsAValueOrTheErrorThatStoppedIt) {
  Expected<int> value = 7;
  ASSERT_TRUE(value);
  EXPECT_EQ(*value, 7);
  Expected<int> failed = Error::Fault("no");
  ASSERT_FALSE(failed);
  EXPECT_EQ(failed.error().reason, "no");
  Expected<void> done;
  EXPECT_TRUE(done);
  done = Error::Gone("p");
  ASSERT_FALSE(done);
  EXPECT_EQ(done.error().path, "p");
}

}  // namespace
}  // namespace trel
