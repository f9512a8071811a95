// Windows plugins in the out-of-process host under Wine: the filters of
// src/plughost/testplugins. Without Wine or mingw-w64 they skip, saying why.
#include <chrono>
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>

#include <QImage>
#include <QProcess>

#include "HostTestSupport.h"
#include "host/ImageLibrary.h"
#include "host/PlugHostClient.h"
#include "host/PluginHost.h"

namespace trel {
namespace {

std::string TestPlugin(const std::string& name) { return std::string(TREL_PLUGHOST_TEST_DIR) + "/" + name; }

// Why the 64-bit host cannot run these tests here; "" if it can.
std::string Missing64() {
  if (!std::filesystem::exists(TestPlugin("invert64.8bf")))
    return "the test plugins were not built (no x86_64-w64-mingw32 cross compiler)";
  if (FindWine(false).empty()) return "wine64 is not installed";
  return {};
}

bool IsInverse(const QImage& a, const QImage& b) {
  if (a.size() != b.size()) return false;
  for (int y = 0; y < a.height(); ++y)
    for (int x = 0; x < a.width(); ++x) {
      const QColor p = a.pixelColor(x, y), q = b.pixelColor(x, y);
      if (p.red() + q.red() != 255 || p.green() + q.green() != 255 || p.blue() + q.blue() != 255 ||
          p.alpha() != q.alpha())
        return false;
    }
  return true;
}

class WindowsPluginTest : public ::testing::Test {
 protected:
  test::TempDir dir;
  test::RecordingShell shell;
  ImageLibrary lib{shell};

  virtual bool Needs64() const { return true; }
  void SetUp() override {
    if (const std::string why = Needs64() ? Missing64() : ""; !why.empty()) GTEST_SKIP() << why;
    ASSERT_EQ(lib.ImgPlugInHostLoad(dir.path()), IMG_OK);
  }
  int32_t Run(const std::string& plugin, ImgHandle image, const ImgRect& rect) {
    const int32_t loaded = lib.ImgPlugInLoad(plugin);
    if (loaded != IMG_OK) return loaded;
    return lib.ImgPlugInInvoke(image, 0, rect);
  }
};

TEST(PlugHostClientTest, MachineOfAPluginFileAndItsWinePath) {
  test::TempDir dir;
  std::string pe(512, '\0');
  pe[0] = 'M';
  pe[1] = 'Z';
  pe[60] = char(0x80);
  pe.replace(0x80, 4, std::string("PE\0\0", 4));
  const struct {
    const char* name;
    unsigned char lo, hi;
    PluginMachine expected;
  } rows[] = {{"x64.8bf", 0x64, 0x86, PluginMachine::X64},
              {"x86.8bf", 0x4C, 0x01, PluginMachine::X86},
              {"arm.8bf", 0x64, 0xAA, PluginMachine::Other}};
  for (const auto& row : rows) {
    std::string bytes = pe;
    bytes[0x84] = char(row.lo);
    bytes[0x85] = char(row.hi);
    EXPECT_EQ(PluginMachineOf(dir.Write(row.name, bytes)), row.expected) << row.name;
  }
  EXPECT_EQ(PluginMachineOf(dir.Write("text.8bf", "not a plugin")), PluginMachine::NotWindows);
  EXPECT_EQ(PluginMachineOf(dir.Write("cut.8bf", pe.substr(0, 0x82))), PluginMachine::NotWindows);
  EXPECT_EQ(PluginMachineOf(dir.file("missing.8bf")), PluginMachine::NotWindows);
  EXPECT_EQ(ToWinePath("/tmp/a b/c.8bf"), "Z:\\tmp\\a b\\c.8bf");
  EXPECT_EQ(ToWinePath("/tmp/\xC3\xA4/c.8bf"), "Z:\\tmp\\\xC3\xA4\\c.8bf");  // UTF-8 stays UTF-8
}

TEST_F(WindowsPluginTest, InvertsInStripsAndKeepsTheHostForTheNextRun) {
  // Plugin folders often carry accents; the host gets the path whole.
  const std::string plugin = dir.path() + "Filter \xC3\xA4\xC3\xB6\xC3\xBC \xE2\x82\xAC/Invert.8bf";
  std::filesystem::create_directories(std::filesystem::path(plugin).parent_path());
  std::filesystem::copy_file(TestPlugin("invert64.8bf"), plugin);
  // 150 rows: the plugin works in strips of 64, so the last one is short; alpha passes unchanged.
  const QImage original = test::PatternPicture(90, 150, true);
  const ImgHandle h = lib.Adopt(original);
  ASSERT_EQ(Run(plugin, h, {0, 0, 89, 149}), IMG_OK) << lib.ImgErrString();
  EXPECT_TRUE(IsInverse(original, *lib.image(h)));
  EXPECT_EQ(lib.image(h)->format(), original.format());
  const qint64 pid = lib.hostClient(false).processId();
  EXPECT_NE(pid, 0);

  // A rectangle: only it changes; the same host process does the work.
  lib.ImgPlugInHostUnload();
  lib.ImgPlugInHostLoad(dir.path());
  ASSERT_EQ(Run(TestPlugin("invert64.8bf"), h, {10, 20, 39, 99}), IMG_OK) << lib.ImgErrString();
  const QImage& twice = *lib.image(h);
  EXPECT_EQ(twice.pixelColor(15, 25), original.pixelColor(15, 25));
  EXPECT_EQ(twice.pixelColor(50, 25).red(), 255 - original.pixelColor(50, 25).red());
  EXPECT_EQ(twice.pixelColor(15, 100).red(), 255 - original.pixelColor(15, 100).red());
  EXPECT_EQ(lib.hostClient(false).processId(), pid);

  // From another thread too.
  const QImage before = twice;
  int32_t inWorker = 0;
  std::thread([&] { inWorker = Run(TestPlugin("invert64.8bf"), h, {0, 0, 89, 149}); }).join();
  EXPECT_EQ(inWorker, IMG_OK) << lib.ImgErrString();
  EXPECT_TRUE(IsInverse(before, *lib.image(h)));
}

TEST_F(WindowsPluginTest, WhatAPluginPrintsOrReadsNeverReachesTheChannel) {
  // The plugin prints answers of the host's own form for the first ids,
  // leaves its output without a line end and reads its standard input.
  PlugHostClient host(false);
  host.setTimeout(10000);
  const QImage original = test::PatternPicture(30, 70, false);
  qint64 pid = 0;
  for (int round = 0; round < 3; ++round) {
    QImage picture = original;
    const HostAnswer a = host.Run(TestPlugin("chatty64.8bf"), picture, "", false);
    ASSERT_TRUE(a.ok()) << a.message;
    EXPECT_TRUE(IsInverse(original, picture)) << "round " << round;
    if (round == 0) pid = host.processId();
    EXPECT_EQ(host.processId(), pid) << "the same host answers every request";
  }
}

TEST_F(WindowsPluginTest, APathWithControlCharactersIsAnsweredAndTheNextRequestToo) {
  PlugHostClient host(false);
  host.setTimeout(10000);
  const struct {
    const char* folder;
    bool loads;  // Windows paths cannot hold control characters
  } rows[] = {{"line\nbreak", false}, {"tab\tand\rreturn", false}, {"100%0A, no line break", true}};
  for (const auto& row : rows) {
    const std::string plugin = dir.path() + row.folder + "/Invert.8bf";
    std::filesystem::create_directories(std::filesystem::path(plugin).parent_path());
    std::filesystem::copy_file(TestPlugin("invert64.8bf"), plugin);
    const HostAnswer odd = host.Probe(plugin);
    if (row.loads) {
      EXPECT_TRUE(odd.ok()) << odd.message;
    } else {
      EXPECT_EQ(odd.code, static_cast<int>(hostprotocol::HostError::LoadFailed)) << odd.message;
      EXPECT_TRUE(test::Has(odd.message, "control character"));
    }
    const HostAnswer plain = host.Probe(TestPlugin("invert64.8bf"));
    EXPECT_TRUE(plain.ok()) << plain.message;
  }
}

TEST_F(WindowsPluginTest, WithoutNamedPipesTheHostServesItsStandardInputAndOutput) {
  namespace hp = hostprotocol;
  QProcess host;
  QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
  env.insert("WINEDEBUG", "-all");
  host.setProcessEnvironment(env);
  host.setStandardErrorFile(QProcess::nullDevice());
  host.start(QString::fromStdString(FindWine(false)), {QString::fromStdString(FindPlugHost(false))});
  ASSERT_TRUE(host.waitForStarted(10000));
  const auto probe = [](uint32_t id, const std::string& plugin) {
    return hp::FormatRequest({id, hp::Verb::Probe, ToWinePath(plugin), "", "", "", false});
  };
  const std::string requests = "no id at all\n5\tBOGUS\n" + probe(6, TestPlugin("invert64.8bf")) +
                               probe(7, TestPlugin("noentry64.8bf")) + hp::FormatRequest({8, hp::Verb::Quit, "", "", "", "", false});
  host.write(requests.data(), qint64(requests.size()));
  host.closeWriteChannel();
  ASSERT_TRUE(host.waitForFinished(120000));
  EXPECT_EQ(host.exitCode(), 0);
  hp::AnswerReader answers;
  answers.Feed(host.readAllStandardOutput().toStdString());
  // A request the host cannot read is answered by its id.
  for (const auto& [id, code] :
       {std::pair{5u, int(hp::HostError::Usage)}, {6u, 0}, {7u, int(hp::HostError::NoEntryPoint)}}) {
    const auto answer = answers.Take(id);
    ASSERT_TRUE(answer) << id;
    EXPECT_EQ(answer->code, code) << answer->text;
  }
}

TEST_F(WindowsPluginTest, FaultyPluginsGiveTheLibrarysErrorAndTheHostRecovers) {
  const std::string notDll = dir.Write("text.8bf", std::string(4000, 'x'));
  const struct {
    std::string plugin;
    int32_t status;
    const char* says;  // part of the text ImgErrBox shows
    bool atLoad;
  } rows[] = {
      {TestPlugin("crash64.8bf"), IMG_ERR_PLUGIN_CRASHED, "exception 0xC0000005", false},
      {TestPlugin("exits64.8bf"), IMG_ERR_PLUGIN_CRASHED, "ended while running the plugin (exit code 3)", false},
      {TestPlugin("errcode64.8bf"), IMG_ERR_PLUGIN_FAILED, "error -30100", false},
      {TestPlugin("unsupported64.8bf"), IMG_ERR_HOST_SERVICE, "colour services", false},
      {TestPlugin("needsuite64.8bf"), IMG_ERR_HOST_SERVICE, "the suite \"Trel Missing Suite\" version 3", false},
      {TestPlugin("outside64.8bf"), IMG_ERR_PLUGIN_OVERRUN, "outside its buffers", false},
      {TestPlugin("noentry64.8bf"), IMG_ERR_NO_ENTRY, "NotThere", true},
      {notDll, IMG_ERR_NOT_SUPPORTED, "no Windows DLL", true},
  };
  const QImage original = test::PatternPicture(20, 20, false);
  const ImgHandle h = lib.Adopt(original);
  for (const auto& row : rows) {
    const int32_t loaded = lib.ImgPlugInLoad(row.plugin);
    if (row.atLoad) {
      EXPECT_EQ(loaded, row.status) << row.plugin;
    } else {
      ASSERT_EQ(loaded, IMG_OK) << row.plugin << ": " << lib.ImgErrString();
      EXPECT_EQ(lib.ImgPlugInInvoke(h, 0, {0, 0, 19, 19}), row.status) << row.plugin;
    }
    EXPECT_EQ(lib.ImgGetStatus(), row.status) << row.plugin;
    EXPECT_TRUE(test::Has(lib.ImgErrString(), row.says));
    EXPECT_EQ(*lib.image(h), original) << row.plugin << " changed the picture";
  }
  lib.ImgErrBox(0);
  ASSERT_FALSE(shell.boxes.empty());
  EXPECT_TRUE(test::Has(shell.boxes.back().text, "no Windows DLL"));
  // After a crash and all the rest, a good plugin still runs.
  ASSERT_EQ(Run(TestPlugin("invert64.8bf"), h, {0, 0, 19, 19}), IMG_OK) << lib.ImgErrString();
  EXPECT_TRUE(IsInverse(original, *lib.image(h)));
}

TEST_F(WindowsPluginTest, AHangingPluginIsStoppedByEscOrAtTheTimeOut) {
  const QImage original = test::PatternPicture(16, 16, false);
  const ImgHandle h = lib.Adopt(original);
  ASSERT_EQ(Run(TestPlugin("invert64.8bf"), h, {0, 0, 15, 15}), IMG_OK);  // the host is up
  auto start = std::chrono::steady_clock::now();
  lib.setCancel([&] { return std::chrono::steady_clock::now() - start > std::chrono::milliseconds(500); });
  EXPECT_EQ(Run(TestPlugin("hang64.8bf"), h, {0, 0, 15, 15}), IMG_ERR_CANCELLED);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  EXPECT_TRUE(IsInverse(original, *lib.image(h)));  // as the first run left it
  lib.setCancel({});
  EXPECT_EQ(Run(TestPlugin("invert64.8bf"), h, {0, 0, 15, 15}), IMG_OK) << lib.ImgErrString();

  lib.setPluginTimeout(2000);
  start = std::chrono::steady_clock::now();
  EXPECT_EQ(Run(TestPlugin("hang64.8bf"), h, {0, 0, 15, 15}), IMG_ERR_PLUGIN_TIMEOUT);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  EXPECT_FALSE(lib.hostClient(false).running());
  EXPECT_TRUE(test::Has(lib.ImgErrString(), "2 seconds"));
  lib.setPluginTimeout(30000);
  EXPECT_EQ(Run(TestPlugin("invert64.8bf"), h, {0, 0, 15, 15}), IMG_OK) << lib.ImgErrString();
}

TEST_F(WindowsPluginTest, TheAboutBoxRunsInTheHost) {
  EXPECT_EQ(lib.ImgPlugInAbout(0, TestPlugin("invert64.8bf")), IMG_OK) << lib.ImgErrString();
  EXPECT_EQ(lib.ImgPlugInAbout(0, TestPlugin("noentry64.8bf")), IMG_ERR_NO_ENTRY);
  // This one reads the about record through its own table of offsets.
  EXPECT_EQ(lib.ImgPlugInAbout(0, TestPlugin("layout64.8bf")), IMG_OK) << lib.ImgErrString();
}

// Plugins of the kind real collections hold: one that reads the interface
// only through its own table of offsets (a wrong layout of our header shows
// there as a report or a crash), one that fills its tables in the parameters
// selector, one that will not start unless that selector came first, and one
// that imports the old runtime MSVCRT10.dll (found through our stand-in),
// and one that, like Filter Factory's plugins, wants its dialog at start once
// the parameters selector has run.
// Each runs as a preview runs it (no dialog, twice: the second run skips the
// parameters selector), as Invoke runs it (with its dialog) and through
// PluginInvoke.
std::vector<std::string> RealLikePlugins(const std::string& bits) {
  return {"layout" + bits + ".8bf", "tables" + bits + ".8bf", "needparams" + bits + ".8bf",
          "oldruntime" + bits + ".8bf", "olddialog" + bits + ".8bf"};
}

void RunsEveryWay(ImageLibrary& lib, test::RecordingShell& shell, const std::string& folder,
                  const std::string& name) {
  const std::string plugin = TestPlugin(name);
  for (const bool alpha : {false, true}) {
    const QImage original = test::PatternPicture(70, 90, alpha);
    const ImgHandle h = lib.Adopt(original);
    ASSERT_EQ(lib.ImgPlugInHostLoad(folder), IMG_OK);
    for (int run = 0; run < 2; ++run) {
      *lib.image(h) = original;
      ASSERT_EQ(lib.ImgPlugInLoad(plugin), IMG_OK) << name << ": " << lib.ImgErrString();
      ASSERT_EQ(lib.ImgPlugInInvoke(h, 0, {0, 0, 69, 89}), IMG_OK) << name << ": " << lib.ImgErrString();
      EXPECT_TRUE(IsInverse(original, *lib.image(h))) << name << " run " << run;
    }
    *lib.image(h) = original;
    // With the dialog, as Invoke runs it from the window.
    lib.setPluginDialogs(true);
    ASSERT_EQ(lib.ImgPlugInInvoke(h, 1, {0, 0, 69, 89}), IMG_OK) << name << ": " << lib.ImgErrString();
    lib.setPluginDialogs(false);
    EXPECT_TRUE(IsInverse(original, *lib.image(h))) << name << " with its dialog";
    lib.ImgClose(h);
  }
  // The preview's own path.
  HostState state;
  state.mainWindow = 1;
  const QImage picture = test::PatternPicture(30, 20, false);
  state.PreviewImage = lib.Adopt(picture);
  WindowHandle parent = 0;
  bool result = false;
  const size_t boxes = shell.boxes.size();
  PluginInvoke(lib, state, shell, folder, plugin, nullptr, false, parent, result);
  EXPECT_TRUE(result) << name;
  EXPECT_EQ(shell.boxes.size(), boxes) << name;
  EXPECT_TRUE(IsInverse(picture, *lib.image(state.PreviewImage))) << name << " in the preview";
}

TEST_F(WindowsPluginTest, PluginsLikeRealOnesRunInPreviewsAndWithTheirDialog) {
  for (const std::string& name : RealLikePlugins("64")) {
    SCOPED_TRACE(name);
    // A fresh host for each, so that each has its first run here.
    lib.hostClient(false).Stop();
    RunsEveryWay(lib, shell, dir.path(), name);
  }
}

// What a user sees when a plugin cannot run: each message names the cause,
// and the next plugin runs on the same program.
TEST_F(WindowsPluginTest, MissingDllsAndDialogOnlyPluginsSayWhy) {
  const QImage original = test::PatternPicture(16, 12, false);
  const ImgHandle h = lib.Adopt(original);
  EXPECT_EQ(lib.ImgPlugInLoad(TestPlugin("missingdll64.8bf")), IMG_ERR_NOT_SUPPORTED);
  EXPECT_TRUE(test::Has(lib.ImgErrString(), "needs TrelAbsent.dll, which is not installed"));
  EXPECT_EQ(lib.ImgErrString().find("error 126"), std::string::npos) << lib.ImgErrString();
  // A runtime DLL that is there but lacks a function the plugin takes.
  EXPECT_EQ(lib.ImgPlugInLoad(TestPlugin("runtimegap64.8bf")), IMG_ERR_NOT_SUPPORTED);
  EXPECT_TRUE(test::Has(lib.ImgErrString(), "needs TrelNotInTheRuntime from MSVCRT10.dll, which the installed "
                                             "MSVCRT10.dll does not have"));

  // Cancelled in a preview without any dialog: it wants its dialog. The
  // preview's path hands the same words back.
  ASSERT_EQ(lib.ImgPlugInLoad(TestPlugin("dialogonly64.8bf")), IMG_OK) << lib.ImgErrString();
  EXPECT_NE(lib.ImgPlugInInvoke(h, 0, {0, 0, 15, 11}), IMG_OK);
  EXPECT_TRUE(test::Has(lib.ImgErrString(), "This plugin runs only with its dialog: use Invoke"));
  EXPECT_EQ(*lib.image(h), original);
  HostState state;
  state.mainWindow = 1;
  state.PreviewImage = lib.Adopt(original);
  WindowHandle parent = 0;
  bool result = true;
  PluginFailure failure;
  const std::string& why = failure.text;
  const auto preview = [&](const char* name) {
    PluginInvoke(lib, state, shell, dir.path(), TestPlugin(name), nullptr, false, parent, result, &failure);
    return result;
  };
  EXPECT_FALSE(preview("dialogonly64.8bf"));
  EXPECT_TRUE(test::Has(why, "This plugin runs only with its dialog: use Invoke"));
  EXPECT_FALSE(preview("crash64.8bf"));
  EXPECT_EQ(failure.status, IMG_ERR_PLUGIN_CRASHED);
  EXPECT_TRUE(test::Has(why, "The plugin crashed"));
  EXPECT_TRUE(test::Has(why, "Access violation in the plugin's code"));
  EXPECT_FALSE(preview("missingdll64.8bf"));
  EXPECT_TRUE(test::Has(why, "needs TrelAbsent.dll"));

  // Invoke gives it the dialog, and then it runs; the previews after it run
  // with what it kept, as a real host's "last filter" does.
  ASSERT_EQ(lib.ImgPlugInHostLoad(dir.path()), IMG_OK);
  ASSERT_EQ(lib.ImgPlugInLoad(TestPlugin("dialogonly64.8bf")), IMG_OK) << lib.ImgErrString();
  lib.setPluginDialogs(true);
  EXPECT_EQ(lib.ImgPlugInInvoke(h, 1, {0, 0, 15, 11}), IMG_OK) << lib.ImgErrString();
  lib.setPluginDialogs(false);
  EXPECT_TRUE(IsInverse(original, *lib.image(h)));
  EXPECT_TRUE(preview("dialogonly64.8bf")) << why;
  EXPECT_TRUE(why.empty()) << why;
}

// A plugin that opens its dialog although the host said not to: the window
// is cancelled and the message says why. Without an X display Wine opens no
// window (the plugin then answers error -1 or -2), so there is nothing
// to stop; dialog_xvfb.sh runs it under a virtual display.
TEST_F(WindowsPluginTest, APluginThatShowsItsDialogInAPreviewIsStopped) {
  if (qEnvironmentVariableIsEmpty("DISPLAY")) GTEST_SKIP() << "no X display: Wine opens no window to stop";
  const QImage original = test::PatternPicture(16, 12, false);
  const ImgHandle h = lib.Adopt(original);
  ASSERT_EQ(lib.ImgPlugInLoad(TestPlugin("showsdialog64.8bf")), IMG_OK) << lib.ImgErrString();
  const int32_t st = lib.ImgPlugInInvoke(h, 0, {0, 0, 15, 11});
  // A prefix whose desktop began without a display shows no window even
  // under one; the xvfb test (dialog_xvfb.sh) runs this in a prefix of its own.
  if (lib.ImgErrString().find("error -1 at parameters") != std::string::npos ||
      lib.ImgErrString().find("error -2 at parameters") != std::string::npos)
    GTEST_SKIP() << "Wine opened no window in this prefix, so there is no dialog to stop";
  EXPECT_NE(st, IMG_OK);
  EXPECT_EQ(*lib.image(h), original);
  EXPECT_TRUE(test::Has(lib.ImgErrString(), "opened its dialog in a run without one"));
  EXPECT_TRUE(test::Has(lib.ImgErrString(), "This plugin runs only with its dialog: use Invoke"));
  ASSERT_EQ(Run(TestPlugin("invert64.8bf"), h, {0, 0, 15, 11}), IMG_OK) << lib.ImgErrString();
}

// 32-bit plugins need the 32-bit Wine; where it is missing the message names it.
class ThirtyTwoBitPlugins : public WindowsPluginTest {
  bool Needs64() const override { return false; }
};

TEST_F(ThirtyTwoBitPlugins, RunOrSayWhatIsMissing) {
  if (!std::filesystem::exists(TestPlugin("invert32.8bf")))
    GTEST_SKIP() << "the 32-bit test plugins were not built (no i686-w64-mingw32 cross compiler)";
  const QImage original = test::PatternPicture(12, 9, false);
  const ImgHandle h = lib.Adopt(original);
  const int32_t st = Run(TestPlugin("invert32.8bf"), h, {0, 0, 11, 8});
  if (FindWine(true).empty()) {
    EXPECT_EQ(st, IMG_ERR_NO_WINE);
    EXPECT_TRUE(test::Has(lib.ImgErrString(), "wine32"));
    EXPECT_EQ(*lib.image(h), original);
    GTEST_SKIP() << "32-bit Wine missing: " << lib.ImgErrString();
  }
  ASSERT_EQ(st, IMG_OK) << lib.ImgErrString();
  EXPECT_TRUE(IsInverse(original, *lib.image(h)));
  // The old plugins are mostly 32-bit: the layout, the selector order and
  // the runtime stand-in matter most here.
  for (const std::string& name : RealLikePlugins("32")) {
    SCOPED_TRACE(name);
    lib.hostClient(true).Stop();
    RunsEveryWay(lib, shell, dir.path(), name);
  }
  EXPECT_EQ(lib.ImgPlugInLoad(TestPlugin("missingdll32.8bf")), IMG_ERR_NOT_SUPPORTED);
  EXPECT_TRUE(test::Has(lib.ImgErrString(), "needs TrelAbsent.dll, which is not installed"));
}

}  // namespace
}  // namespace trel
