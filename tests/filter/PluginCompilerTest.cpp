#include "filter/PluginCompiler.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "filter/CodeRewrite.h"
#include "filter/CompiledReaders.h"
#include "filter/DemoPlugin.h"
#include "filter/LabelShortening.h"
#include "filter/Paths.h"
#include "filter/TemplateLayout.h"
#include "support/RecordingShell.h"
#include "support/TempDir.h"

namespace trel {
namespace {

namespace fs = std::filesystem;
using test::ReadFileBytes;
using test::RecordingShell;
using test::TempDir;

FFFilter Sample() {
  FFFilter f;
  f.filename = "wavy.afs";
  f.title = "Wavy";
  f.category = "Distort";
  f.copyright = "(c) 2026 Someone";
  f.author = "Someone";
  f.mapName[2] = "Map B";
  f.ctlName[1] = "Amount";
  f.ctlName[2] = "Angle";
  f.ctlName[7] = "Seven";
  for (int i = 1; i <= 8; ++i) f.ctlValue[i] = static_cast<uint8_t>(11 * i);
  f.codeR = "r+ctl(0)";
  f.codeG = "g";
  f.codeB = "b*2";
  f.codeA = "a";
  return f;
}

// One line per field, so a failed comparison says which field differs.
std::string Describe(const FFFilter& f) {
  std::string s = "filename=" + f.filename + "\ncategory=" + f.category + "\ntitle=" + f.title +
                  "\ncopyright=" + f.copyright + "\nauthor=" + f.author + "\n";
  for (int i = 1; i <= 4; ++i) s += "map" + std::to_string(i) + "=" + f.mapName[i] + "\n";
  for (int i = 1; i <= 8; ++i)
    s += "ctl" + std::to_string(i) + "=" + f.ctlName[i] + " " + std::to_string(f.ctlValue[i]) + "\n";
  return s + "R=" + f.codeR + "\nG=" + f.codeG + "\nB=" + f.codeB + "\nA=" + f.codeA +
         "\nisPhotoshop=" + std::to_string(f.isPhotoshop) + "\n";
}

class PluginCompiler : public ::testing::Test {
 protected:
  TempDir dir;
  RecordingShell shell;
  FilterEnv env;
  std::string prog, out;

  void SetUp() override {
    prog = dir.path() + "prog/";
    out = dir.path() + "out/";
    fs::create_directories(prog);
    fs::create_directories(out);
    for (const char* name : {"photo30.dll", "photo304.dll", "photomac.bin", "fl-fact.prm", "fx-fact.prm"})
      fs::copy_file(std::string(TREL_TEMPLATE_DIR) + "/" + name, prog + name);
    fs::copy_file(prog + "photo30.dll", prog + "temp.dll");
    env.shell = &shell;
    env.options.programFolder = prog;
  }

  std::string Bytes(const std::string& path, int64_t position, size_t count) {
    return ReadFileBytes(path).substr(static_cast<size_t>(position - 1), count);
  }
  int ByteAt(const std::string& path, int64_t position) {
    return static_cast<uint8_t>(ReadFileBytes(path).at(static_cast<size_t>(position - 1)));
  }
  FFFilter Read(const std::string& name, bool* ok = nullptr) {
    FFFilter r;
    const bool read = Read8bf(r, out, name, false, false, env);
    if (ok) *ok = read;
    return r;
  }
};

TEST_F(PluginCompiler, BothWindowsTemplatesReadBackToTheSameRecord) {
  for (CompileTemplate choice : {CompileTemplate::FilterFactory30, CompileTemplate::FilterFactory304}) {
    env.options.compile.templateChoice = choice;
    FFFilter f = Sample();
    Write8bf(f, out, false, false, env);
    EXPECT_EQ(f.filename, "wavy.afs");
    bool ok = false;
    const FFFilter back = Read("wavy.8bf", &ok);
    ASSERT_TRUE(ok);
    FFFilter expected = Sample();
    expected.filename = "wavy.8bf";
    EXPECT_EQ(Describe(back), Describe(expected));
    EXPECT_EQ(FileLength(out + "wavy.8bf"), choice == CompileTemplate::FilterFactory30 ? 57344 : 49152);
  }
  EXPECT_TRUE(shell.errors.empty());
}

TEST_F(PluginCompiler, MapWinsOverItsControlsAndPremiereCategoryIsConverted) {
  FFFilter f = Sample();
  f.mapName[1] = "Map A";  // stands in for controls 1 and 2
  f.category = "[Premiere FF]";
  f.isPhotoshop = false;
  f.codeR = "mix(r,g,128)";
  Write8bf(f, out, false, false, env);
  EXPECT_EQ(f.category, "Premiere(converted)");
  EXPECT_EQ(f.codeR, Correctprmcode("mix(r,g,128)"));  // stored back, as the record is the one in hand
  const FFFilter back = Read("wavy.8bf");
  EXPECT_EQ(back.mapName[1], "Map A");
  EXPECT_EQ(back.ctlName[1], "");
  EXPECT_EQ(back.ctlName[2], "");
  EXPECT_EQ(back.ctlValue[1], 11);  // the values of the pair stay
  EXPECT_EQ(back.category, "Premiere(converted)");
  EXPECT_EQ(back.codeR, Correctprmcode("mix(r,g,128)"));
}

TEST_F(PluginCompiler, PatchedPositionsAreByteExactForEachShift) {
  for (CompileTemplate choice : {CompileTemplate::FilterFactory30, CompileTemplate::FilterFactory304}) {
    const int s = choice == CompileTemplate::FilterFactory30 ? 0 : -7168;
    SCOPED_TRACE(s);
    env.options.compile.templateChoice = choice;
    FFFilter f = Sample();
    Write8bf(f, out, false, false, env);
    const std::string p = out + "wavy.8bf";
    EXPECT_EQ(Bytes(p, s + 31011, 6), std::string("\x04Wavy\0", 6));
    EXPECT_EQ(Bytes(p, s + 31063, 9), std::string("\x07" "Distort\0", 9));
    EXPECT_EQ(Bytes(p, s + 31357, 8), std::string("Distort\0", 8));
    EXPECT_EQ(Bytes(p, s + 31613, 5), std::string("Wavy\0", 5));
    EXPECT_EQ(ByteAt(p, s + 31257), 1);  // stand-alone
    EXPECT_EQ(Bytes(p, s + 31155, 2), std::string("\x10\x00", 2));  // "All Modes" off
    // Map 2 used, its controls 3 and 4 not; controls 1, 2, 7 used.
    const int mapFlags[] = {0, 1, 0, 0};
    const int ctlFlags[] = {1, 1, 0, 0, 0, 0, 1, 0};
    for (int i = 0; i < 4; ++i) EXPECT_EQ(ByteAt(p, s + 31309 + 4 * i), mapFlags[i]) << i;
    for (int i = 0; i < 8; ++i) EXPECT_EQ(ByteAt(p, s + 31325 + 4 * i), ctlFlags[i]) << i;
    for (int i = 0; i < 8; ++i) EXPECT_EQ(ByteAt(p, s + 31261 + 4 * i), 11 * (i + 1)) << i;
    EXPECT_EQ(Bytes(p, s + 32381 + 256, 6), std::string("Map B\0", 6));
    EXPECT_EQ(Bytes(p, s + 33405 + 256 * 6, 6), std::string("Seven\0", 6));
    EXPECT_EQ(Bytes(p, s + 35453, 12), std::string("r+ctl(0)\0\0\0\0", 12));
    EXPECT_EQ(Bytes(p, s + 36477, 5), std::string("g\0\0\0\0", 5));
    EXPECT_EQ(Bytes(p, s + 37501, 7), std::string("b*2\0\0\0\0", 7));
    EXPECT_EQ(Bytes(p, s + 38525, 5), std::string("a\0\0\0\0", 5));
  }
  env.options.compile.templateChoice = CompileTemplate::FilterFactory30;
  env.options.compile.allModes = true;
  env.options.compile.editorPlugin = true;
  FFFilter f = Sample();
  Write8bf(f, out, false, false, env);
  EXPECT_EQ(Bytes(out + "wavy.8bf", 31155, 2), "\xFF\xFF");
  EXPECT_EQ(ByteAt(out + "wavy.8bf", 31257), 0);
  env.options.compile.editorPlugin = false;
  Write8bf(f, out, false, true, env);  // the argument does the same
  EXPECT_EQ(ByteAt(out + "wavy.8bf", 31257), 0);
}

// temp.dll is patched where it stands, so the four zeros behind a code are
// what ends a shorter code over a longer one.
TEST_F(PluginCompiler, PreviewCompilePatchesTempDllInPlaceAndIgnoresTheOptions) {
  env.options.compile.templateChoice = CompileTemplate::Macintosh;
  env.options.compile.allModes = true;
  env.options.compile.demoPlugin = true;
  env.options.compile.encrypted = true;
  env.options.compile.bigPreview = true;
  FFFilter f = Sample();
  f.codeR = "r*2+g*3+b*4";
  Write8bf(f, out, true, false, env);
  f.codeR = "r";
  Write8bf(f, out, true, false, env);
  EXPECT_FALSE(fs::exists(out + "wavy.8bf"));
  const std::string temp = prog + "temp.dll";
  EXPECT_EQ(FileLength(temp), 57344);
  EXPECT_EQ(Bytes(temp, 35453, 9), std::string("r\0\0\0\0*3+b", 9));
  EXPECT_EQ(Bytes(temp, 31155, 2), std::string("\x10\x00", 2));  // the template's word
  EXPECT_EQ(Bytes(temp, 43809, 64), layout::DialogLayoutBlock(layout::DialogSize::Normal));
  FFFilter back;
  ASSERT_TRUE(Read8bf(back, prog, "temp.dll", false, false, env));
  EXPECT_EQ(back.title, "Wavy");
  EXPECT_EQ(back.codeR, "r");

  fs::remove(temp);  // gone missing: made again from photo30.dll
  Write8bf(f, out, true, false, env);
  EXPECT_EQ(FileLength(temp), 57344);
  EXPECT_TRUE(shell.errors.empty());
}

// A text field that starts with 0 reads on behind it, so an empty text must
// not leave the template's own text there.
TEST_F(PluginCompiler, EmptyTextsDoNotUncoverTheTemplatesText) {
  for (CompileTemplate choice : {CompileTemplate::FilterFactory30, CompileTemplate::Macintosh}) {
    env.options.compile.templateChoice = choice;
    FFFilter f = Sample();
    f.category = "";
    f.copyright = "";
    f.author = "";
    Write8bf(f, out, false, false, env);
    bool ok = false;
    const FFFilter back = Read(choice == CompileTemplate::Macintosh ? "wavy.bin" : "wavy.8bf", &ok);
    ASSERT_TRUE(ok);
    EXPECT_EQ(back.category, "Photoshop");
    EXPECT_EQ(back.author.find("Unknown"), std::string::npos);
    EXPECT_LE(back.copyright.size(), 1u);  // at most the 0 the reader keeps
  }
  FFFilter f = Sample();
  f.copyright = "";
  WritePRM(f, out, env);
  FFFilter back;
  ASSERT_TRUE(Readprm(back, out, "wavy.prm", false, false, env));
  EXPECT_LE(back.copyright.size(), 1u);
}

TEST_F(PluginCompiler, TargetNameFollowsTheFileNameRules) {
  struct Case {
    const char* filename;
    const char* target;
  };
  for (const Case& c : {Case{"abc", "abc.8bf"}, Case{"x_8bf", "x.8bf"}, Case{"X_8BF", "X.8bf"},
                        Case{"wavy.afs", "wavy.8bf"}, Case{"old.8bf", "old.8bf"}}) {
    FFFilter f = Sample();
    f.filename = c.filename;
    Write8bf(f, out, false, false, env);
    EXPECT_TRUE(fs::exists(out + c.target)) << c.filename;
  }
  FFFilter f = Sample();
  f.filename = "abc";
  Write8bf(f, out, false, false, env);
  EXPECT_EQ(f.filename, "abc.8bf");
  f.filename = "a.b";  // nothing left once the last four characters go
  Write8bf(f, out, false, false, env);
  EXPECT_EQ(shell.errors.size(), 1u);
}

TEST_F(PluginCompiler, WideAboutTemplateTakesItsOwnPlaces) {
  std::string wide(49664, '\0');
  wide.replace(21024, 14, "Filter Factory");
  const std::string templatePath = dir.Write("wide.dll", wide);
  env.options.compile.templateChoice = CompileTemplate::CustomPath;
  env.options.compile.templatePath = templatePath;
  FFFilter f = Sample();
  f.author = "Ann";
  f.copyright = "(c)";
  Write8bf(f, out, false, false, env);
  const std::string p = out + "wavy.8bf";
  EXPECT_EQ(Bytes(p, 34927, 6), std::string("\x04Wavy\0", 6));
  EXPECT_EQ(Bytes(p, 34979, 9), std::string("\x07" "Distort\0", 9));
  EXPECT_EQ(Bytes(p, 35071, 2), std::string("\x10\x00", 2));
  EXPECT_EQ(Bytes(p, 42335, 18), std::string("A\0n\0n\0 \0(\0(\0c\0)\0)\0", 18));
  bool ok = false;
  const FFFilter back = Read("wavy.8bf", &ok);
  ASSERT_TRUE(ok);
  EXPECT_EQ(back.title, "Wavy");
  EXPECT_EQ(back.codeB, "b*2");

  // 70 characters of author: 57 of them, then three dots, all in wide form.
  f = Sample();
  f.author = std::string(70, 'x');
  Write8bf(f, out, false, false, env);
  std::string expected;
  for (int i = 0; i < 57; ++i) expected += std::string("x\0", 2);
  expected += std::string(".\0.\0.\0\0", 7);
  EXPECT_EQ(Bytes(p, 42335, expected.size()), expected);
}

TEST_F(PluginCompiler, CustomTemplateChoiceByPathAndSize) {
  env.options.compile.templateChoice = CompileTemplate::CustomPath;
  env.options.compile.templatePath = "";  // empty path: photo30.dll
  FFFilter f = Sample();
  Write8bf(f, out, false, false, env);
  EXPECT_EQ(FileLength(out + "wavy.8bf"), 57344);

  env.options.compile.templatePath = prog + "photo304.dll";
  Write8bf(f, out, false, false, env);
  EXPECT_EQ(FileLength(out + "wavy.8bf"), 49152);
  EXPECT_EQ(Read("wavy.8bf").title, "Wavy");

  // Any other size: nothing written, the old target stays.
  env.options.compile.templatePath = dir.Write("odd.dll", std::string(1000, 'x'));
  f.title = "Other";
  Write8bf(f, out, false, false, env);
  EXPECT_EQ(FileLength(out + "wavy.8bf"), 49152);
  EXPECT_EQ(Read("wavy.8bf").title, "Wavy");
  EXPECT_EQ(shell.errors.size(), 1u);
}

TEST_F(PluginCompiler, MacintoshFormSqueezesLongNamesAndKeepsTheWrapperValid) {
  env.options.compile.templateChoice = CompileTemplate::Macintosh;
  env.options.compile.demoPlugin = true;  // no effect on this form
  FFFilter f = Sample();
  f.title = "Wavy Lines: 2";
  f.ctlName[1] = "Horizontal amount";
  f.codeG = "I-g";
  Write8bf(f, out, false, false, env);
  const std::string p = out + "wavy.bin";
  ASSERT_EQ(FileLength(p), 99712);
  EXPECT_EQ(Bytes(p, 2, 12), std::string("\x0aWavyLines2\0", 12));
  std::string label = "Horizontal amount";
  const std::string squeezed = RemoveVocals(label);
  EXPECT_EQ(ByteAt(p, 52713), 17);  // the original length
  EXPECT_EQ(Bytes(p, 52714, squeezed.size() + 1), squeezed + '\0');
  EXPECT_EQ(ByteAt(p, 50620 + 4), 1);  // map 2
  EXPECT_EQ(Bytes(p, 49853, 15), std::string("\x0dWavy Lines: 2\0", 15));
  EXPECT_EQ(Bytes(p, 50125, 9), std::string("\x07" "Distort\0", 9));
  EXPECT_EQ(Bytes(p, 50665, 9), std::string("\x07" "Distort\0", 9));
  EXPECT_EQ(ByteAt(p, 19308 + 31257), 1);
  EXPECT_EQ(ByteAt(p, 50572 + 4 * 7), 88);
  EXPECT_EQ(Bytes(p, 19308 + 35453, 12), std::string("r+ctl(0)\0\0\0\0", 12));

  bool ok = false;
  const FFFilter back = Read("wavy.bin", &ok);
  ASSERT_TRUE(ok);
  EXPECT_EQ(back.title, "Wavy Lines: 2");
  EXPECT_EQ(back.ctlName[1], squeezed);
  EXPECT_EQ(back.ctlName[2], "Angle");
  EXPECT_EQ(back.mapName[2], "Map B");
  EXPECT_EQ(back.ctlValue[8], 88);
  EXPECT_EQ(back.codeG, CorrectCodeForMacChannel("I-g"));
  EXPECT_EQ(back.author, "Someone");

  // MacBinary II header CRC over the first 124 bytes, patched name included.
  const std::string header = ReadFileBytes(p).substr(0, 124);
  uint16_t crc = 0;
  for (unsigned char byte : header) {
    crc ^= static_cast<uint16_t>(byte << 8);
    for (int bit = 0; bit < 8; ++bit) crc = static_cast<uint16_t>((crc & 0x8000) ? (crc << 1) ^ 0x1021 : crc << 1);
  }
  EXPECT_EQ(ByteAt(p, 125) * 256 + ByteAt(p, 126), crc);
}

TEST_F(PluginCompiler, PreviewBlocksReplaceTheDialogLayout) {
  struct Case {
    CompileTemplate choice;
    int64_t at;
  };
  for (const Case& c : {Case{CompileTemplate::FilterFactory30, 43809}, Case{CompileTemplate::FilterFactory304, 36641}}) {
    env.options.compile.templateChoice = c.choice;
    env.options.compile.bigPreview = true;
    env.options.compile.megaPreview = false;
    FFFilter f = Sample();
    Write8bf(f, out, false, false, env);
    EXPECT_EQ(Bytes(out + "wavy.8bf", c.at, 64), layout::DialogLayoutBlock(layout::DialogSize::Big));
    env.options.compile.bigPreview = false;
    env.options.compile.megaPreview = true;
    Write8bf(f, out, false, false, env);
    EXPECT_EQ(Bytes(out + "wavy.8bf", c.at, 64), layout::DialogLayoutBlock(layout::DialogSize::Mega));
    EXPECT_TRUE(Read("wavy.8bf").title == "Wavy");
  }
}

TEST_F(PluginCompiler, DemoPluginHidesTheCodeFromOurReaders) {
  env.options.compile.demoPlugin = true;
  FFFilter f = Sample();
  Write8bf(f, out, false, false, env);
  EXPECT_EQ(f.title, "Wavy Demo...");
  const std::string p = out + "wavy.8bf";
  EXPECT_EQ(FileLength(p), 57344);
  bool ok = true;
  Read("wavy.8bf", &ok);
  EXPECT_FALSE(ok);
  EXPECT_EQ(ReadFileBytes(p).find("r+ctl(0)"), std::string::npos);
  const std::string flags = Bytes(p, 43809 + layout::kLayoutFlags, 1);
  EXPECT_EQ(flags[0], layout::kLayoutOkDisabled | layout::kLayoutDemo);

  // The plugin's own run-time can undo it; then everything reads back.
  TemplatePatch image(ReadFileBytes(p));
  ASSERT_TRUE(UnscrambleCode(image, 0));
  EXPECT_FALSE(UnscrambleCode(image, 0));
  test::WriteFileBytes(p, image.bytes());
  const FFFilter back = Read("wavy.8bf", &ok);
  ASSERT_TRUE(ok);
  EXPECT_EQ(back.title, "Wavy Demo...");
  EXPECT_EQ(back.codeR, "r+ctl(0)");
  EXPECT_EQ(back.codeA, "a");
}

TEST_F(PluginCompiler, EncryptedPluginsGrowOutOfTheReadersSizes) {
  env.options.compile.templateChoice = CompileTemplate::FilterFactory304;
  env.options.compile.encrypted = true;
  FFFilter f = Sample();
  Write8bf(f, out, false, false, env);
  const std::string p = out + "wavy.8bf";
  EXPECT_EQ(f.title, "Wavy");
  EXPECT_GE(FileLength(p), 49152);
  EXPECT_LE(FileLength(p), 49152 + 2048);
  EXPECT_EQ(ByteAt(p, 49152), 0);
  EXPECT_EQ(Bytes(p, -7168 + 43809 + layout::kLayoutFlags, 1), std::string(1, '\0'));  // OK button alive
  bool ok = true;
  Read("wavy.8bf", &ok);
  EXPECT_FALSE(ok);

  TemplatePatch grow("abcd");
  RandomFileSize(grow, 3);
  EXPECT_EQ(grow.bytes(), std::string("abc\0\0\0\0", 7));
}

TEST_F(PluginCompiler, FailuresReportAndKeepTheOldTarget) {
  FFFilter f = Sample();
  Write8bf(f, out, false, false, env);
  const std::string good = ReadFileBytes(out + "wavy.8bf");

  fs::remove(prog + "photo30.dll");
  f.title = "Changed";
  Write8bf(f, out, false, false, env);
  ASSERT_EQ(shell.errors.size(), 1u);
  EXPECT_EQ(ReadFileBytes(out + "wavy.8bf"), good);

  f.title = std::string(300, 't');  // no length byte can hold it
  env.options.compile.templateChoice = CompileTemplate::FilterFactory304;
  Write8bf(f, out, false, false, env);
  EXPECT_EQ(shell.errors.size(), 2u);
  EXPECT_EQ(ReadFileBytes(out + "wavy.8bf"), good);

  if (::geteuid() != 0) {  // root writes into read-only folders anyway
    ::chmod(out.c_str(), 0555);
    f.title = "Changed";
    Write8bf(f, out, false, false, env);
    ::chmod(out.c_str(), 0755);
    EXPECT_EQ(shell.errors.size(), 3u);
    EXPECT_EQ(ReadFileBytes(out + "wavy.8bf"), good);
  }
  int entries = 0;
  for (const auto& e : fs::directory_iterator(out)) entries += e.is_regular_file() ? 1 : 0;
  EXPECT_EQ(entries, 1);  // no temporary file left behind
}

TEST_F(PluginCompiler, PremierePluginsReadBackThroughTheirReaders) {
  FFFilter f = Sample();
  f.isPhotoshop = false;  // already Premiere dialect: written as it is
  f.transitionName = "Wipe";
  const FFFilter before = f;
  WritePRM(f, out, env);
  EXPECT_EQ(Describe(f), Describe(before));  // the record is left alone
  FFFilter back;
  ASSERT_TRUE(Readprm(back, out, "wavy.prm", false, false, env));
  FFFilter expected = Sample();
  expected.filename = "wavy.prm";
  expected.author = "";  // not kept in a Premiere plugin
  expected.isPhotoshop = false;
  EXPECT_EQ(Describe(back), Describe(expected));
  EXPECT_EQ(FileLength(out + "wavy.prm"), 50688);
  // Hosts see the title in the PiPL's name property.
  EXPECT_EQ(Bytes(out + "wavy.prm", layout::kPrmNameProperty + 16, 6), std::string("\x04Wavy\0", 6));

  fs::remove(out + "wavy.prm");
  WriteTF(f, out, env);
  ASSERT_TRUE(ReadTF(back, out, "wavy.prm", false, env));
  expected.category = "[Premiere TF]";
  EXPECT_EQ(Describe(back), Describe(expected));
  EXPECT_EQ(back.transitionName, "Wipe");
  EXPECT_EQ(FileLength(out + "wavy.prm"), 51200);
  EXPECT_TRUE(shell.errors.empty());
}

TEST_F(PluginCompiler, PremiereTitleFieldSurvivesColonsAndVirtualCategories) {
  struct Case {
    const char* category;
    const char* title;
    const char* readCategory;
  };
  for (const Case& c : {Case{"[Premiere FF]", "Plain", "[Premiere FF]"}, Case{"", "a:b", "[Premiere FF]"},
                        Case{"Blur", "x: y", "Blur"}}) {
    FFFilter f = Sample();
    f.category = c.category;
    f.title = c.title;
    WritePRM(f, out, env);
    FFFilter back;
    ASSERT_TRUE(Readprm(back, out, "wavy.prm", true, false, env));
    EXPECT_EQ(back.category, c.readCategory);
    EXPECT_EQ(back.title, c.title);
  }
}

TEST_F(PluginCompiler, PhotoshopDialectIsConvertedForPremiere) {
  FFFilter f = Sample();
  f.codeR = "mix(r,g,ctl(0))";
  WritePRM(f, out, env);
  FFFilter back;
  ASSERT_TRUE(Readprm(back, out, "wavy.prm", false, false, env));
  EXPECT_EQ(back.codeR, CorrectcodeChannel("mix(r,g,ctl(0))"));
  EXPECT_EQ(f.codeR, "mix(r,g,ctl(0))");
}

// A user's template of another version: the probes give the shift, and the
// fields go where the readers look for that version.
TEST_F(PluginCompiler, PremiereTemplatesOfOtherVersionsArePatchedAtTheirShift) {
  std::string ff(53248, '\0');
  ff[29021 - 1] = 'e';  // shift 504
  env.options.compile.premiereFFTemplate = dir.Write("ff504.prm", ff);
  std::string tf(60000, '\0');
  tf[29081 - 1] = 'n';
  tf.replace(22033 - 1, 27, "Premiere Transition Factory");  // shift 9904, then 9912
  env.options.compile.premiereTFTemplate = dir.Write("tf9904.prm", tf);

  FFFilter f = Sample();
  f.isPhotoshop = false;
  WritePRM(f, out, env);
  EXPECT_EQ(Bytes(out + "wavy.prm", 504 + 29107, 15), std::string("Distort: Wavy\0\0", 15));
  FFFilter back;
  ASSERT_TRUE(Readprm(back, out, "wavy.prm", false, false, env));
  EXPECT_EQ(back.codeR, "r+ctl(0)");
  EXPECT_EQ(back.ctlName[7], "Seven");

  WriteTF(f, out, env);
  EXPECT_EQ(Bytes(out + "wavy.prm", 9904 + 29171, 5), std::string("Wavy\0", 5));
  EXPECT_EQ(ByteAt(out + "wavy.prm", 9912 + 29705), 11);
  ASSERT_TRUE(ReadTF(back, out, "wavy.prm", false, env));
  EXPECT_EQ(back.mapName[2], "Map B");
  EXPECT_EQ(back.codeA, "a");
  EXPECT_TRUE(shell.errors.empty());
}

TEST_F(PluginCompiler, PremiereWritersRefuseTemplatesOfTheWrongKind) {
  env.options.compile.premiereFFTemplate = prog + "photo30.dll";
  env.options.compile.premiereTFTemplate = prog + "fl-fact.prm";
  FFFilter f = Sample();
  WritePRM(f, out, env);
  WriteTF(f, out, env);
  env.options.compile.premiereFFTemplate = prog + "missing.prm";
  WritePRM(f, out, env);
  EXPECT_EQ(shell.errors.size(), 3u);
  EXPECT_TRUE(fs::is_empty(out));
}

}  // namespace
}  // namespace trel
