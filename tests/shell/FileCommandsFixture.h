// The commander's test window: two panes on temporary folders, dialogs that
// answer from a script, and a recorder of what the window says.
#pragma once

#include <QElapsedTimer>
#include <deque>

#include "ShellTesting.h"
#include "shell/commander/FileCommander.h"
#include "shell/commander/ZipCommander.h"
#include "shell/dialogs/ConvertDialog.h"
#include "shell/pane/Selection.h"
#include "shell/window/StatusArea.h"

namespace trel {
namespace commander_test {

using test::StartedWindow;
using test::TempDir;
namespace fs = std::filesystem;

// Answers the dialogs from a script and keeps what they were asked.
class ScriptedDialogs : public FileDialogs {
 public:
  std::deque<OverwriteButton> overwrite;
  std::vector<QString> overwriteAsked;
  std::deque<QString> folders;  // "=" takes the first entry; "" cancels
  std::vector<QStringList> folderEntries;
  std::deque<std::optional<QString>> inputs;
  std::vector<QString> inputAsked;

  OverwriteButton Overwrite(const QString& target, const QString& source) override {
    overwriteAsked.push_back(target + (source.isEmpty() ? "" : " | " + source));
    if (overwrite.empty()) return OverwriteButton::Cancel;
    const OverwriteButton answer = overwrite.front();
    overwrite.pop_front();
    return answer;
  }
  QString SelectFolder(const QStringList& entries, const std::function<bool(QString&)>& accept,
                       bool* subFolders) override {
    (void)subFolders;
    folderEntries.push_back(entries);
    while (!folders.empty()) {
      QString text = folders.front() == "=" ? entries.value(0) : folders.front();
      folders.pop_front();
      if (text.isEmpty()) return {};
      if (accept(text)) return text;
    }
    return {};
  }
  std::optional<QString> Input(const QString& caption, const QString& text) override {
    inputAsked.push_back(caption + ": " + text);
    if (inputs.empty()) return std::nullopt;
    auto answer = inputs.front();
    inputs.pop_front();
    return answer;
  }
};

class Recorder : public UserMessages {
 public:
  std::vector<std::string> said;  // "title: text"
  std::deque<MsgResult> answers;
  MsgResult MsgBox(const std::string& text, MsgButtons buttons, MsgIcon, const std::string& title) override {
    said.push_back(title + ": " + text);
    if (!answers.empty()) {
      const MsgResult a = answers.front();
      answers.pop_front();
      return a;
    }
    return buttons == MsgButtons::YesNo ? MsgResult::Yes : MsgResult::Ok;
  }
  void ErrorMessage(const std::string& description) override { said.push_back("error: " + description); }
};

class FileCommandsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    commander = FileCommander::Of(*window);
    auto owned = std::make_unique<ScriptedDialogs>();
    dialogs = owned.get();
    commander->SetDialogs(std::move(owned));
    commander->SetMessages(&recorder);
    for (const char* name : {"a.8bf", "b.txt", "c.afs"}) left.Write(name, std::string("left ") + name);
    fs::create_directory(left.file("sub"));
    Open(0, left.path());
    Open(1, right.path());
    window->Switchit(0);
  }
  void Open(int pane, const std::string& folder) { ASSERT_TRUE(window->pane(pane)->ChangeFolder(folder)); }
  // Selects rows of the active pane's list by their texts (folders with their blank).
  void Select(std::initializer_list<const char*> texts, int pane = 0) {
    QStringList list;
    for (const char* t : texts) list << t;
    window->pane(pane)->SelectTexts(list, list.value(0));
  }
  // A copy or move runs as a job while the event loop turns; the checks
  // look once it has ended.
  void Settle() {
    QElapsedTimer waited;
    waited.start();
    while (commander->busy() && waited.elapsed() < 20000) QTest::qWait(2);
    ASSERT_FALSE(commander->busy());
  }
  std::string Said() const {
    std::string all;
    for (const std::string& s : recorder.said) all += s + "\n";
    return all;
  }

  TempDir home, left, right;
  Recorder recorder;  // outlives the window, which may still say something as it closes
  StartedWindow run{home, left.path()};
  std::unique_ptr<MainWindow>& window = run.window;
  FileCommander* commander = nullptr;
  ScriptedDialogs* dialogs = nullptr;
};

}  // namespace commander_test
}  // namespace trel
