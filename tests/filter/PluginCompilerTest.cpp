#include "filter/PluginCompiler.h"

#include <sys/stat.h>

#include <filesystem>

#include "FilterKit.h"
#include "MacBinary.h"
#include "filter/CodeRewrite.h"
#include "filter/CompiledReaders.h"
#include "filter/DemoPlugin.h"
#include "filter/LabelShortening.h"
#include "base/Paths.h"
#include "filter/TemplateLayout.h"
#include "support/OrdinaryUser.h"

namespace trel {
namespace {

namespace fs = std::filesystem;
using namespace test;

FFFilter Sample(const std::string& filename = "wavy.afs") {
  FFFilter f;
  f.filename = filename;
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

class PluginCompiler : public FilterTest {
 protected:
  std::string prog = dir.path() + "prog/", out = dir.path() + "out/", p = out + "wavy.8bf";

  void SetUp() override {
    fs::create_directories(prog);
    fs::create_directories(out);
    for (const char* name : {"photo30.dll", "photo304.dll", "photomac.bin", "fl-fact.prm", "fx-fact.prm"})
      fs::copy_file(std::string(TREL_TEMPLATE_DIR) + "/" + name, prog + name);
    fs::copy_file(prog + "photo30.dll", prog + "temp.dll");
    env.options.programFolder = prog;
  }
  std::string Bytes(const std::string& path, int64_t position, size_t count) {
    return ReadFileBytes(path).substr(static_cast<size_t>(position - 1), count);
  }
  int ByteAt(const std::string& path, int64_t position) {
    return static_cast<uint8_t>(ReadFileBytes(path).at(static_cast<size_t>(position - 1)));
  }
  FFFilter Compile(FFFilter g, bool toTemp = false) {
    Write8bf(g, out, toTemp, false, env);
    return g;
  }
  FFFilter Read(const std::string& name = "wavy.8bf", bool readable = true) {
    FFFilter r;
    EXPECT_EQ(Read8bf(r, out, name, false, false, env), readable) << name;
    return r;
  }
  FFFilter ReadPrm(bool transition = false) {
    FFFilter r;
    EXPECT_TRUE(transition ? ReadTF(r, out, "wavy.prm", false, env) : Readprm(r, out, "wavy.prm", false, false, env));
    return r;
  }
};

// What the readers look at is proven by reading back; the rest are the copies
// hosts show and the flags only the plugin itself reads.
TEST_F(PluginCompiler, WindowsTemplatesPatchTheirPlacesAndReadBack) {
  struct Case {
    CompileTemplate choice;
    int s;
    int64_t size, layout;
  };
  for (const Case& c : {Case{CompileTemplate::FilterFactory30, 0, 57344, 43809},
                        Case{CompileTemplate::FilterFactory304, -7168, 49152, 36641}}) {
    SCOPED_TRACE(c.s);
    env.options.compile.templateChoice = c.choice;
    EXPECT_EQ(Compile(Sample()).filename, "wavy.afs");
    EXPECT_EQ(Read(), Sample("wavy.8bf"));
    EXPECT_EQ(FileLength(p), c.size);
    EXPECT_EQ(Bytes(p, c.s + 31011, 6), std::string("\x04Wavy\0", 6));
    EXPECT_EQ(Bytes(p, c.s + 31063, 9), std::string("\x07" "Distort\0", 9));
    EXPECT_EQ(Bytes(p, c.s + 31357, 8) + Bytes(p, c.s + 31613, 5), std::string("Distort\0Wavy\0", 13));
    EXPECT_EQ(ByteAt(p, c.s + 31257), 1);                            // stand-alone
    EXPECT_EQ(Bytes(p, c.s + 31155, 2), std::string("\x10\x00", 2));  // "All Modes" off
    // Map 2 used, its controls 3 and 4 not; controls 1, 2, 7 used.
    const int mapFlags[] = {0, 1, 0, 0}, ctlFlags[] = {1, 1, 0, 0, 0, 0, 1, 0};
    for (int i = 0; i < 4; ++i) EXPECT_EQ(ByteAt(p, c.s + 31309 + 4 * i), mapFlags[i]) << i;
    for (int i = 0; i < 8; ++i) EXPECT_EQ(ByteAt(p, c.s + 31325 + 4 * i), ctlFlags[i]) << i;
    EXPECT_EQ(Bytes(p, c.s + 35453, 12), std::string("r+ctl(0)\0\0\0\0", 12));
    // The preview blocks replace the dialog layout.
    for (const auto size : {layout::DialogSize::Big, layout::DialogSize::Mega}) {
      env.options.compile.bigPreview = size == layout::DialogSize::Big;
      env.options.compile.megaPreview = size == layout::DialogSize::Mega;
      Compile(Sample());
      EXPECT_EQ(Bytes(p, c.layout, 64), layout::DialogLayoutBlock(size));
    }
    EXPECT_EQ(Read().title, "Wavy");
    env.options.compile.megaPreview = false;
  }
  env.options.compile.templateChoice = CompileTemplate::FilterFactory30;
  env.options.compile.allModes = env.options.compile.editorPlugin = true;
  Compile(Sample());
  EXPECT_EQ(Bytes(p, 31155, 2), "\xFF\xFF");
  EXPECT_EQ(ByteAt(p, 31257), 0);
  env.options.compile.editorPlugin = false;
  FFFilter f = Sample();
  Write8bf(f, out, false, true, env);  // the argument does the same
  EXPECT_EQ(ByteAt(p, 31257), 0);
  EXPECT_TRUE(shell.errors.empty());
}

TEST_F(PluginCompiler, MapWinsOverItsControlsAndPremiereCategoryIsConverted) {
  FFFilter f = Sample();
  f.mapName[1] = "Map A";  // stands in for controls 1 and 2
  f.category = "[Premiere FF]";
  f.isPhotoshop = false;
  f.codeR = "mix(r,g,128)";
  f = Compile(f);  // stored back, as the record is the one in hand
  EXPECT_EQ(f.category + "|" + f.codeR, "Premiere(converted)|" + Correctprmcode("mix(r,g,128)"));
  const FFFilter back = Read();
  EXPECT_EQ(Maps(back) + " " + Controls(back), "Map A|Map B|| ||||||Seven|");
  EXPECT_EQ(back.ctlValue[1], 11);  // the values of the pair stay
  EXPECT_EQ(back.category + "|" + back.codeR, "Premiere(converted)|" + Correctprmcode("mix(r,g,128)"));
}

// temp.dll is patched where it stands, so the four zeros behind a code are
// what ends a shorter code over a longer one.
TEST_F(PluginCompiler, PreviewCompilePatchesTempDllInPlaceAndIgnoresTheOptions) {
  env.options.compile.templateChoice = CompileTemplate::Macintosh;
  env.options.compile.allModes = env.options.compile.demoPlugin = env.options.compile.encrypted = true;
  env.options.compile.bigPreview = true;
  FFFilter f = Sample();
  f.codeR = "r*2+g*3+b*4";
  Compile(f, true);
  f.codeR = "r";
  Compile(f, true);
  EXPECT_FALSE(fs::exists(p));
  const std::string temp = prog + "temp.dll";
  EXPECT_EQ(FileLength(temp), 57344);
  EXPECT_EQ(Bytes(temp, 35453, 9), std::string("r\0\0\0\0*3+b", 9));
  EXPECT_EQ(Bytes(temp, 31155, 2), std::string("\x10\x00", 2));  // the template's word
  EXPECT_EQ(Bytes(temp, 43809, 64), layout::DialogLayoutBlock(layout::DialogSize::Normal));
  fs::copy_file(temp, p);
  EXPECT_EQ(Read().title + "|" + Read().codeR, "Wavy|r");
  fs::remove(temp);  // gone missing: made again from photo30.dll
  Compile(f, true);
  EXPECT_EQ(FileLength(temp), 57344);
  EXPECT_TRUE(shell.errors.empty());
}

// A text field that starts with 0 reads on behind it, so an empty text must
// not leave the template's own text there.
TEST_F(PluginCompiler, EmptyTextsDoNotUncoverTheTemplatesText) {
  FFFilter f = Sample();
  f.category = f.copyright = f.author = "";
  for (CompileTemplate choice : {CompileTemplate::FilterFactory30, CompileTemplate::Macintosh}) {
    env.options.compile.templateChoice = choice;
    Compile(f);
    const FFFilter back = Read(choice == CompileTemplate::Macintosh ? "wavy.bin" : "wavy.8bf");
    EXPECT_EQ(back.category, "Photoshop");
    EXPECT_EQ(back.author.find("Unknown"), std::string::npos);
    EXPECT_LE(back.copyright.size(), 1u);  // at most the 0 the reader keeps
  }
  WritePRM(f, out, env);
  EXPECT_LE(ReadPrm().copyright.size(), 1u);
}

TEST_F(PluginCompiler, TargetNameFollowsTheFileNameRules) {
  for (auto [filename, target] : {std::pair{"abc", "abc.8bf"}, {"x_8bf", "x.8bf"}, {"X_8BF", "X.8bf"},
                                  {"wavy.afs", "wavy.8bf"}, {"old.8bf", "old.8bf"}}) {
    Compile(Sample(filename));
    EXPECT_TRUE(fs::exists(out + target)) << filename;
  }
  EXPECT_EQ(Compile(Sample("abc")).filename, "abc.8bf");
  FFFilter tooShort = Sample("a.b");  // nothing left once the last four characters go
  const Expected<void> made = Make8bf(tooShort, out, false, false, env);
  ASSERT_FALSE(made);
  EXPECT_EQ(made.error().reason, "The file name a.b is too short for a plugin.");
  EXPECT_EQ(made.error().kind, ErrorKind::Fault);
  EXPECT_TRUE(shell.errors.empty());
}

TEST_F(PluginCompiler, CustomTemplatesByPathAndSizeAndTheWideAboutForm) {
  std::string wide(49664, '\0');
  wide.replace(21024, 14, "Filter Factory");
  env.options.compile.templateChoice = CompileTemplate::CustomPath;
  env.options.compile.templatePath = dir.Write("wide.dll", wide);
  FFFilter f = Sample();
  f.author = "Ann";
  f.copyright = "(c)";
  Compile(f);
  EXPECT_EQ(Bytes(p, 34927, 6), std::string("\x04Wavy\0", 6));
  EXPECT_EQ(Bytes(p, 34979, 9), std::string("\x07" "Distort\0", 9));
  EXPECT_EQ(Bytes(p, 35071, 2), std::string("\x10\x00", 2));
  EXPECT_EQ(Bytes(p, 42335, 18), std::string("A\0n\0n\0 \0(\0(\0c\0)\0)\0", 18));
  EXPECT_EQ(Read().title, "Wavy");
  // 70 characters of author: 57 of them, then three dots, all in wide form.
  f.author = std::string(70, 'x');
  Compile(f);
  std::string expected;
  for (int i = 0; i < 57; ++i) expected += std::string("x\0", 2);
  expected += std::string(".\0.\0.\0\0", 7);
  EXPECT_EQ(Bytes(p, 42335, expected.size()), expected);
  // The template is chosen by its size; an empty path means photo30.dll.
  env.options.compile.templatePath = "";
  Compile(Sample());
  EXPECT_EQ(FileLength(p), 57344);
  env.options.compile.templatePath = prog + "photo304.dll";
  Compile(Sample());
  EXPECT_EQ(FileLength(p), 49152);
  // Any other size: nothing written, the old target stays.
  env.options.compile.templatePath = dir.Write("odd.dll", std::string(1000, 'x'));
  FFFilter other = Sample();
  other.title = "Other";
  Compile(other);
  EXPECT_EQ(FileLength(p), 49152);
  EXPECT_EQ(Read().title, "Wavy");
  EXPECT_EQ(shell.errors.size(), 1u);
}

TEST_F(PluginCompiler, MacintoshFormSqueezesLongNamesAndKeepsTheWrapperValid) {
  env.options.compile.templateChoice = CompileTemplate::Macintosh;
  env.options.compile.demoPlugin = true;  // no effect on this form
  FFFilter f = Sample();
  f.title = "Wavy Lines: 2";
  f.ctlName[1] = "Horizontal amount";
  f.codeG = "I-g";
  Compile(f);
  const std::string m = out + "wavy.bin";
  ASSERT_EQ(FileLength(m), 99712);
  EXPECT_EQ(Bytes(m, 2, 12), std::string("\x0aWavyLines2\0", 12));
  std::string label = "Horizontal amount";
  const std::string squeezed = RemoveVocals(label);
  EXPECT_EQ(ByteAt(m, 52713), 17);  // the original length
  EXPECT_EQ(Bytes(m, 52714, squeezed.size() + 1), squeezed + '\0');
  EXPECT_EQ(Bytes(m, 50665, 9), std::string("\x07" "Distort\0", 9));
  EXPECT_EQ(ByteAt(m, 19308 + 31257), 1);
  const FFFilter back = Read("wavy.bin");
  EXPECT_EQ(back.title + "|" + back.author + "|" + back.category, "Wavy Lines: 2|Someone|Distort");
  EXPECT_EQ(Controls(back), squeezed + "|Angle|||||Seven|");
  EXPECT_EQ(back.mapName[2] + "|" + std::to_string(back.ctlValue[8]), "Map B|88");
  EXPECT_EQ(back.codeR + "|" + back.codeG, "r+ctl(0)|" + CorrectCodeForMacChannel("I-g"));
  // The MacBinary II header CRC covers the patched name.
  EXPECT_EQ(ByteAt(m, 125) * 256 + ByteAt(m, 126), gen::MacBinaryCrc(ReadFileBytes(m).substr(0, 124)));
}

TEST_F(PluginCompiler, DemoAndEncryptedPluginsHideTheCodeFromOurReaders) {
  env.options.compile.demoPlugin = true;
  EXPECT_EQ(Compile(Sample()).title, "Wavy Demo...");
  EXPECT_EQ(FileLength(p), 57344);
  Read("wavy.8bf", false);
  EXPECT_EQ(ReadFileBytes(p).find("r+ctl(0)"), std::string::npos);
  EXPECT_EQ(Bytes(p, 43809 + layout::kLayoutFlags, 1)[0], layout::kLayoutOkDisabled | layout::kLayoutDemo);
  // The plugin's own run-time can undo it; then everything reads back.
  TemplatePatch image(ReadFileBytes(p));
  ASSERT_TRUE(UnscrambleCode(image, 0));
  EXPECT_FALSE(UnscrambleCode(image, 0));
  WriteFileBytes(p, image.bytes());
  const FFFilter back = Read();
  EXPECT_EQ(back.title + " " + Codes(back), "Wavy Demo... r+ctl(0)|g|b*2|a");
  // Encrypted plugins grow out of the readers' sizes, their OK button alive.
  env.options.compile.demoPlugin = false;
  env.options.compile.templateChoice = CompileTemplate::FilterFactory304;
  env.options.compile.encrypted = true;
  EXPECT_EQ(Compile(Sample()).title, "Wavy");
  EXPECT_GE(FileLength(p), 49152);
  EXPECT_LE(FileLength(p), 49152 + 2048);
  EXPECT_EQ(ByteAt(p, 49152), 0);
  EXPECT_EQ(Bytes(p, -7168 + 43809 + layout::kLayoutFlags, 1), std::string(1, '\0'));
  Read("wavy.8bf", false);
  TemplatePatch grow("abcd");
  RandomFileSize(grow, 3);
  EXPECT_EQ(grow.bytes(), std::string("abc\0\0\0\0", 7));
}

TEST_F(PluginCompiler, FailuresReportAndKeepTheOldTarget) {
  FFFilter f = Compile(Sample());
  const std::string good = ReadFileBytes(p);
  fs::remove(prog + "photo30.dll");
  f.title = "Changed";
  Compile(f);
  ASSERT_EQ(shell.errors.size(), 1u);
  EXPECT_EQ(ReadFileBytes(p), good);
  f.title = std::string(300, 't');  // no length byte can hold it
  env.options.compile.templateChoice = CompileTemplate::FilterFactory304;
  Compile(f);
  EXPECT_EQ(shell.errors.size(), 2u);
  EXPECT_EQ(ReadFileBytes(p), good);
  test::RunAsOrdinaryUser({dir.path()}, [&] {
    ::chmod(out.c_str(), 0555);
    f.title = "Changed";
    Compile(f);
    ::chmod(out.c_str(), 0755);
    EXPECT_EQ(shell.errors.size(), 3u);
    EXPECT_EQ(ReadFileBytes(p), good);
  });
  EXPECT_EQ(std::distance(fs::directory_iterator(out), fs::directory_iterator()), 1);  // no temporary left
}

TEST_F(PluginCompiler, PremierePluginsReadBackThroughTheirReaders) {
  FFFilter f = Sample();
  f.isPhotoshop = false;  // already Premiere dialect: written as it is
  f.transitionName = "Wipe";
  const FFFilter before = f;
  WritePRM(f, out, env);
  EXPECT_EQ(f, before);  // the record is left alone
  FFFilter expected = Sample("wavy.prm");
  expected.author = "";  // not kept in a Premiere plugin
  expected.isPhotoshop = false;
  EXPECT_EQ(ReadPrm(), expected);
  EXPECT_EQ(FileLength(out + "wavy.prm"), 50688);
  // Hosts see the title in the PiPL's name property.
  EXPECT_EQ(Bytes(out + "wavy.prm", layout::kPrmNameProperty + 16, 6), std::string("\x04Wavy\0", 6));
  fs::remove(out + "wavy.prm");
  WriteTF(f, out, env);
  expected.category = "[Premiere TF]";
  expected.transitionName = "Wipe";
  EXPECT_EQ(ReadPrm(true), expected);
  EXPECT_EQ(FileLength(out + "wavy.prm"), 51200);
  // Photoshop code is converted for Premiere, in the file only.
  f = Sample();
  f.codeR = "mix(r,g,ctl(0))";
  WritePRM(f, out, env);
  EXPECT_EQ(ReadPrm().codeR, CorrectcodeChannel("mix(r,g,ctl(0))"));
  EXPECT_EQ(f.codeR, "mix(r,g,ctl(0))");
  // The title field is "category: title"; a category only we use is left out.
  for (auto [category, title, read] : {std::tuple{"[Premiere FF]", "Plain", "[Premiere FF]|Plain"},
                                       {"", "a:b", "[Premiere FF]|a:b"}, {"Blur", "x: y", "Blur|x: y"}}) {
    f.category = category;
    f.title = title;
    WritePRM(f, out, env);
    const FFFilter back = ReadPrm();
    EXPECT_EQ(back.category + "|" + back.title, read);
  }
  EXPECT_TRUE(shell.errors.empty());
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
  EXPECT_EQ(ReadPrm().codeR + "|" + ReadPrm().ctlName[7], "r+ctl(0)|Seven");
  WriteTF(f, out, env);
  EXPECT_EQ(Bytes(out + "wavy.prm", 9904 + 29171, 5), std::string("Wavy\0", 5));
  EXPECT_EQ(ByteAt(out + "wavy.prm", 9912 + 29705), 11);
  EXPECT_EQ(ReadPrm(true).mapName[2] + "|" + ReadPrm(true).codeA, "Map B|a");
  EXPECT_TRUE(shell.errors.empty());
  // Templates of the wrong kind or missing ones are refused.
  fs::remove(out + "wavy.prm");
  env.options.compile.premiereFFTemplate = prog + "photo30.dll";
  env.options.compile.premiereTFTemplate = prog + "fl-fact.prm";
  const Expected<void> notPremiere = MakePRM(f, out, env);
  ASSERT_FALSE(notPremiere);
  EXPECT_EQ(notPremiere.error().reason,
            "The template " + prog + "photo30.dll is no Premiere Filter Factory plugin.");
  EXPECT_EQ(notPremiere.error().path, prog + "photo30.dll");
  WriteTF(f, out, env);  // the form that tells the shell at once
  EXPECT_EQ(shell.errors, Names{"The template " + prog + "fl-fact.prm is no Premiere Transition Factory plugin."});
  env.options.compile.premiereFFTemplate = prog + "missing.prm";
  EXPECT_FALSE(MakePRM(f, out, env));
  EXPECT_TRUE(fs::is_empty(out));
}

}  // namespace
}  // namespace trel
