// The dialog of Trel's 64-bit template as a user meets it, on a virtual X
// server: the plugin host shows it for a run with the dialog, keys move the
// first slider, Return runs the filter with that value and keeps it for the
// next run without a dialog; Esc cancels the run. An editor plugin's code
// fields change the filter itself. A screenshot of each dialog is kept in
// TREL_ARTIFACTS. Runs only under the Xvfb test (TREL_DIALOG_XVFB).
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <thread>

#include <gtest/gtest.h>

#include <QDir>
#include <QImage>
#include <QProcess>

#include "HostTestSupport.h"
#include "filter/TemplateLayout.h"
#include "host/ImageLibrary.h"
#include "host/PlugHostClient.h"
#include "hostprotocol/HostProtocol.h"

namespace trel {
namespace {

namespace fs = std::filesystem;

std::string Template64() { return std::string(TREL_TEMPLATE_DIR) + "/" + layout::kPhoto64; }

std::string Output(const std::string& command) {
  QProcess p;
  p.start("sh", {"-c", QString::fromStdString(command)});
  p.waitForFinished();
  return p.readAllStandardOutput().trimmed().toStdString();
}

// Waits for the window titled `title`, keeps a screenshot of the screen as
// `shot` (when ImageMagick's import is there) and types `keys` into it, each
// an xdotool key name or "type:text". False if the window never showed.
bool Drive(const std::string& title, const std::vector<std::string>& keys, const std::string& shot) {
  std::string win;
  const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (win.empty() && std::chrono::steady_clock::now() < until) {
    win = Output("xdotool search --onlyvisible --name '^" + title + "$' 2>/dev/null | head -n 1");
    if (win.empty()) std::this_thread::sleep_for(std::chrono::milliseconds(200));
  }
  if (win.empty()) return false;
  std::this_thread::sleep_for(std::chrono::milliseconds(800));  // the first preview
  // No window manager gives Wine's window the focus.
  std::system(("xdotool windowfocus --sync " + win + " 2>/dev/null").c_str());
  std::system(("command -v import >/dev/null && import -window root '" + shot + "' 2>/dev/null").c_str());
  for (const std::string& key : keys) {
    const std::string command = key.rfind("type:", 0) == 0 ? "xdotool type --delay 30 '" + key.substr(5) + "'"
                                                           : "xdotool key " + key;
    std::system(command.c_str());
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
  }
  return true;
}

class PluginDialogXvfb : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!std::getenv("TREL_DIALOG_XVFB")) GTEST_SKIP() << "runs under the Xvfb test (plugin_dialog_xvfb) only";
    if (!fs::exists(Template64()))
      GTEST_SKIP() << "photo64.dll was not built (no x86_64-w64-mingw32-g++-posix cross compiler)";
    if (FindWine(false).empty()) GTEST_SKIP() << "wine64 is not installed";
    if (std::system("command -v xdotool >/dev/null 2>&1") != 0) GTEST_SKIP() << "xdotool is not installed";
    artifacts = qEnvironmentVariable("TREL_ARTIFACTS", QDir::tempPath()).toStdString();
    fs::create_directories(artifacts);
    host.setTimeout(20000);
  }

  // Runs `plugin` with the dialog while `keys` are typed into it.
  HostAnswer RunWithKeys(const std::string& plugin, QImage& picture, const std::string& title,
                         const std::vector<std::string>& keys, const std::string& shot) {
    auto driver = std::async(std::launch::async, [&] { return Drive(title, keys, artifacts + "/" + shot); });
    HostAnswer a = host.Run(plugin, picture, params, true);
    EXPECT_TRUE(driver.get()) << "no window titled " << title;
    return a;
  }

  static QImage Engine(const std::array<std::string, 4>& code, const std::array<uint8_t, 8>& ctl, QImage picture) {
    ff::Controls controls{};
    for (size_t i = 0; i < 8; ++i) controls[i] = ctl[i];
    RunFilterOnPicture(ff::CompileFilter(code, nullptr), controls, picture,
                       {0, 0, picture.width() - 1, picture.height() - 1}, {});
    return picture;
  }

  test::TempDir dir;
  PlugHostClient host{false};
  std::string artifacts;
  std::string params = dir.path() + "params.bin";
};

TEST_F(PluginDialogXvfb, KeysMoveTheSliderOkRunsWithItAndARepeatKeepsIt) {
  FFFilter f = test::SampleFilter("c ^ ctl(0)");
  f.title = "Slider Proof";
  f.mapName[2] = "Waves";  // ctl(2) and ctl(3) under one name
  const std::string plugin = test::CompilePlugin(dir, f, Template64());
  const QImage original = test::PatternPicture(300, 200, false);
  const std::array<std::string, 4> code{f.codeR, f.codeG, f.codeB, f.codeA};
  const std::array<uint8_t, 8> chosen{23, 40, 60, 80, 100, 120, 140, 160};  // Amount 20 and three steps

  QImage picture = original;
  const HostAnswer a = RunWithKeys(plugin, picture, f.title, {"Right", "Right", "Right", "Return"}, "dialog.png");
  ASSERT_TRUE(a.ok()) << a.message;
  EXPECT_EQ(picture, Engine(code, chosen, original));

  // Without the dialog the next run takes the values the dialog left.
  picture = original;
  const HostAnswer again = host.Run(plugin, picture, params, false);
  ASSERT_TRUE(again.ok()) << again.message;
  EXPECT_EQ(picture, Engine(code, chosen, original));
}

TEST_F(PluginDialogXvfb, EscCancelsTheRunAndADemoPluginIgnoresReturn) {
  FFFilter f = test::SampleFilter("255 - c");
  f.title = "Cancel Proof";
  CompileOptions demo;
  demo.demoPlugin = true;  // its OK button is dead
  const std::string plugin = test::CompilePlugin(dir, f, Template64(), demo);
  const QImage original = test::PatternPicture(40, 30, true);
  QImage picture = original;
  const HostAnswer a =
      RunWithKeys(plugin, picture, f.title + " Demo...", {"Right", "Return", "Escape"}, "dialog-cancel.png");
  EXPECT_EQ(a.kind, HostAnswer::Kind::Failed);
  EXPECT_EQ(a.code, static_cast<int>(hostprotocol::HostError::Cancelled)) << a.message;
  EXPECT_EQ(picture, original);
  EXPECT_FALSE(fs::exists(params));
}

TEST_F(PluginDialogXvfb, AnEditorPluginRunsTheCodeTypedIntoItAndKeepsIt) {
  FFFilter f = test::SampleFilter("c");
  f.title = "Editor Proof";
  CompileOptions editor;
  editor.editorPlugin = true;
  const std::string plugin = test::CompilePlugin(dir, f, Template64(), editor);
  const QImage original = test::PatternPicture(60, 40, false);
  QImage picture = original;
  // Tab from the slider into the red field selects its text; typing replaces it.
  const HostAnswer a =
      RunWithKeys(plugin, picture, f.title, {"Tab", "type:255-r", "Tab", "Return"}, "dialog-editor.png");
  ASSERT_TRUE(a.ok()) << a.message;
  const std::array<uint8_t, 8> stored{20, 40, 60, 80, 100, 120, 140, 160};
  const QImage edited = Engine({"255-r", "c", "c", "a"}, stored, original);
  EXPECT_EQ(picture, edited);
  EXPECT_NE(picture, original);

  picture = original;
  const HostAnswer again = host.Run(plugin, picture, params, false);
  ASSERT_TRUE(again.ok()) << again.message;
  EXPECT_EQ(picture, edited);
}

TEST_F(PluginDialogXvfb, TheAboutBoxWaitsForTheUser) {
  FFFilter f = test::SampleFilter("c");
  f.title = "About Proof";
  const std::string plugin = test::CompilePlugin(dir, f, Template64());
  auto driver = std::async(std::launch::async,
                           [&] { return Drive("About " + f.title, {"Return"}, artifacts + "/about.png"); });
  const HostAnswer a = host.About(plugin);
  EXPECT_TRUE(driver.get()) << "no about box";
  EXPECT_TRUE(a.ok()) << a.message;
}

}  // namespace
}  // namespace trel
