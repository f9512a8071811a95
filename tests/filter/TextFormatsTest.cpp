#include "filter/TextFormats.h"

#include <random>

#include "FilterKit.h"
#include "filter/Dispatch.h"
#include "filter/SourceFiles.h"

namespace trel {
namespace {

using namespace test;
using Reader = bool (*)(FFFilter&, std::string, const std::string&, const FilterEnv&);

class TextFormats : public FilterTest {
 protected:
  bool Read(Reader reader, const std::string& name, const std::string& bytes) {
    dir.Write(name, bytes);
    return reader(f, dir.path(), name, env);
  }
  bool ReadTxtText(const std::string& text, bool presets = false) {
    dir.Write("t.txt", text);
    return ReadTXT(f, dir.path(), "t.txt", false, presets, env);
  }
};

const std::string kCodes = "r\r\rg\r\rb\r\ra\r\r";

TEST_F(TextFormats, AfsTailNamesTheFilterAndItsSlidersAndPffReadsBlueFirst) {
  ASSERT_TRUE(Read(ReadAFS, "plain.afs", kBareAfs));  // no tail: synthetic, named after the file
  EXPECT_EQ(f.filename, "plain.8bf");
  EXPECT_EQ(Texts(f) + " " + Controls(f) + " " + Codes(f), "Synthetic|plain.8bf|| ||||||| r|g|b|a");
  EXPECT_TRUE(f.isPhotoshop);
  const std::string tail = "Blur\r\rSoft\r\rMe\r\rNobody\r\r1: Radius\r\r2:\r\r"
                           "3: \r\r4: x\r\r5: \r\r6: \r\r7: \r\r8: Last\r\r";
  ASSERT_TRUE(Read(ReadAFS, "s.afs", "%RGB-1.0\r10\r20\r0\r0\r0\r0\r0\r255\rr+\rg\r\rg\r\rb\r\ra\r\r" + tail));
  EXPECT_EQ(f.codeR, "r+g");  // a CR inside code, followed by a printable byte, vanishes
  EXPECT_EQ(Texts(f), "Blur|Soft|Me|Nobody");
  EXPECT_EQ(Controls(f), "Radius|Slider 2||x||||Last");  // "2:" is too short to name it
  EXPECT_EQ(f.ctlValue[8], 255);
  std::string values;
  for (int i = 1; i <= 7; ++i) values += std::to_string(i) + "\r\x01";
  values += "8\rB\r\rG\r\rR\r\rA\r\rCat\r\rTitle\r\rA\r\rC\r\r";
  ASSERT_TRUE(Read(ReadPFF, "p.pff", "%RGB-1.0\r\x02" + values));
  EXPECT_EQ(Codes(f) + " " + Values(f), "R|G|B|A 1|2|3|4|5|6|7|8");
  EXPECT_EQ(f.ctlName[8] + "|" + f.title, "Slider 8|Title");
  EXPECT_FALSE(f.isPhotoshop);
}

TEST_F(TextFormats, AfsErrorsAndMissingFiles) {
  EXPECT_FALSE(Read(ReadAFS, "big.afs", "%RGB-1.0\r0\r256\r0\r0\r0\r0\r0\r0\r" + kCodes));
  EXPECT_EQ(shell.refreshes, 0);
  EXPECT_FALSE(ReadAFS(f, dir.path(), "gone.afs", env));
  EXPECT_EQ(shell.refreshes, 1);
  EXPECT_TRUE(shell.errors.empty());  // AFS reports nothing
  ASSERT_TRUE(Read(ReadAFS, "short.afs", "%RGB-1.0\r5\r"));  // a short file gives empty strings
  EXPECT_EQ(f.ctlValue[1], 5);
  EXPECT_EQ(f.codeR, "");
}

TEST_F(TextFormats, AfsAndPffWriterBytes) {
  FFFilter g = SampleFilter();
  Writeafspff(g, dir.path(), 0, env);
  EXPECT_EQ(g.ctlValue[6], 0);  // the record is changed too
  const std::string expected =
      "%RGB-1.0\r40\r200\r0\r0\r7\r0\r0\r0\r"
      "add(r,ctl(0),255)\r\rmix(g,255-g,ctl(1),255)\r\rb*Z/D\r\ra\r\r"
      "Trel Samples\r\rWarm Glow\r\rTrel\r\r(c) Trel\r\r"
      "1: Warmth\r\r2: Glow\r\r3: \r\r4: \r\r5: Unused Value\r\r6: \r\r7: \r\r8: \r\r";
  EXPECT_EQ(dir.Read("sample.afs"), expected);
  dir.Write("sample.afs", expected + "OLD TAIL");  // overwritten without truncation
  Writeafspff(g, dir.path(), 0, env);
  EXPECT_EQ(dir.Read("sample.afs"), expected + "OLD TAIL");
  g.filename = "noext";
  Writeafspff(g, dir.path(), 1, env);
  EXPECT_EQ(g.filename, "noext.pff");
  const std::string bytes = dir.Read("noext.pff");
  EXPECT_EQ(bytes.substr(0, 16), std::string("%RGB-1.0\r\x02" "40\r\x01" "2", 15) + "0");
  // Blue first, in Premiere dialect: Z is P there, and Photoshop's D is dmax.
  EXPECT_NE(bytes.find("0\rb*P/dmax\r\rmix(255-g,g,ctl(1),255)\r\radd(r,ctl(0),255)\r\ra\r\r"),
            std::string::npos);
}

// Length-prefixed strings (the upper bytes of a length are never read), then
// eight controls of which the third is named.
std::string Ffx(const std::vector<std::string>& strings) {
  std::string out;
  for (const auto& s : strings) out += static_cast<char>(s.size() & 0xFF) + std::string("\x01\0\0", 3) + s;
  for (int i = 1; i <= 8; ++i) {
    const std::string name = i == 3 ? "Third" : "";
    out += static_cast<char>(name.size()) + std::string(3, '\0') + name + "?" + static_cast<char>(i * 10) + "\x07\x07\x07";
  }
  return out;
}
const std::vector<std::string> kFfxStrings = {"FFX1.0", "Title", "Cat", "Auth", "Copy", "junk", "r", "g", "b", "a"};

TEST_F(TextFormats, FfxReadsLengthPrefixedStringsAndRefusesTheRest) {
  f.isPhotoshop = false;
  ASSERT_TRUE(Read(ReadFFX, "f.ffx", Ffx(kFfxStrings)));
  EXPECT_EQ(f.filename, "f.ffx");
  EXPECT_EQ(Texts(f) + " " + Codes(f) + " " + f.ctlName[3], "Cat|Title|Auth|Copy r|g|b|a Third");
  EXPECT_EQ(Values(f), "10|20|30|40|50|60|70|80");
  EXPECT_FALSE(f.isPhotoshop);  // left as it was
  // The batch path takes it too; FFX has no writer of its own.
  FFFilter batch;
  ASSERT_TRUE(ReadFFfile(batch, dir.file("f.ffx"), env));
  EXPECT_EQ(Texts(batch) + " " + Codes(batch) + " " + batch.ctlName[3], "Cat|Title|Auth|Copy r|g|b|a Third");
  // Other magic, short files and missing files are refused.
  std::vector<std::string> strings = kFfxStrings;
  strings[0] = "XFF";
  EXPECT_FALSE(Read(ReadFFX, "bad.ffx", Ffx(strings)));
  const std::string good = Ffx(kFfxStrings);
  for (size_t cut : {size_t{0}, size_t{3}, size_t{20}, good.size() - 1})
    EXPECT_FALSE(Read(ReadFFX, "short.ffx", good.substr(0, cut))) << cut;
  EXPECT_FALSE(ReadFFX(f, dir.path(), "none.ffx", env));
  EXPECT_EQ(shell.refreshes, 0);
  // A string of 256 bytes has a low length byte of 0 and derails the walk.
  strings = kFfxStrings;
  strings[1] = std::string(256, 'x');
  if (Read(ReadFFX, "long.ffx", Ffx(strings))) {
    EXPECT_NE(f.codeA, "a");
  }
}

TEST_F(TextFormats, TxtFreeFormKeysAndBlocks) {
  const std::string text =
      "CATEGORY:  Distort \nTitle: Twirl\ncopyright: me\r\nAUTHOR: you\rfile: twirl.8bf\n"
      "R: r+g // red and green\n+b\n\nG=g\nB: b\n\n"
      "ctl[0]: Angle\nmap[1]: Curve\nval[0]: 128\nval[3]: 7x\n";
  ASSERT_TRUE(ReadTxtText(text));
  EXPECT_EQ(Texts(f) + " " + f.filename, "Distort|Twirl|you|me twirl.8bf");
  // The comment's blank goes in the optimizer; G opens by its `=` form and ends
  // at the blue marker; with no A: line alpha passes through.
  EXPECT_EQ(Codes(f), "r+g+b|g|b|a");
  EXPECT_EQ(f.ctlName[1] + "|" + f.mapName[2], "Angle|Curve");
  EXPECT_EQ(Values(f), "128|0|0|7|0|0|0|0");
  EXPECT_TRUE(f.isPhotoshop);
  // Presets only when accepted.
  const std::string presets = "R:r\n\nG:g\n\nB:b\n\nset[3]: 1,2,3,4,5,6,7,-8\n";
  ASSERT_TRUE(ReadTxtText(presets, false));
  EXPECT_EQ(f.presets[7][3], 0);
  EXPECT_TRUE(shell.marked.empty());
  ASSERT_TRUE(ReadTxtText(presets, true));
  EXPECT_EQ(std::to_string(f.presets[0][3]) + "," + std::to_string(f.presets[7][3]), "1,-8");
  EXPECT_EQ(shell.marked, std::set<int>{3});
}

TEST_F(TextFormats, TxtChannelMarkersEndBlocksInOrder) {
  // Green's block ends at R:, which has already been tested for this line: red is lost.
  EXPECT_FALSE(ReadTxtText("G: g\nR: r\n\nB: b\n\n"));
  EXPECT_EQ(Codes(f), "|g|b|a");
  // Red's block ends at G:, which then opens green, and so on.
  ASSERT_TRUE(ReadTxtText("R: r\nG: g\nB: b\nA: a0\nctl[0]: x\n"));
  EXPECT_EQ(Codes(f) + " " + f.ctlName[1], "r|g|b|a0 x");
  // A lone A: keeps the preset a; no category line at all leaves it empty,
  // an empty one means Photoshop.
  ASSERT_TRUE(ReadTxtText("R:r\n\nG:g\n\nB:b\n\nA:\n255-\n\n"));
  EXPECT_EQ(f.codeA + " " + f.filename + " " + f.category, "a255- -NoName.8bf ");
  ASSERT_TRUE(ReadTxtText("category:\n" + kRgbTxt));
  EXPECT_EQ(f.category, "Photoshop");
}

TEST_F(TextFormats, TxtIncompleteFilters) {
  const std::pair<std::string, const char*> cases[] = {
      {"R: r\n\n", nullptr},                         // green and blue are empty
      {"R: r\n", "Input past end of file"},           // the block runs into the end
      {"R:r\n\nG:g\n\nB:b\n\nval[2]: 300\n", ""}, {"ctl[9]: x\n", ""},
      {"", "Input past end of file"}};
  for (const auto& [text, told] : cases) {
    shell.errors.clear();
    EXPECT_FALSE(ReadTxtText(text)) << text;
    ASSERT_EQ(shell.errors.size(), told ? 1u : 0u) << text;
    if (told && *told) {
      EXPECT_EQ(shell.errors[0], told);
    }
  }
  EXPECT_FALSE(ReadTXT(f, dir.path(), "missing.txt", false, false, env));
  EXPECT_EQ(shell.refreshes, 1);
}

std::string FixedReport(const std::string& mapLines, const std::string& ctlLines) {
  return "Filter Factory Plugin Information:\nFILENAME: c:\\plugins\\ab.8bf\nCATEGORY:\n  Spaced Category \n"
         "TITLE:\nA Title\nCOPYRIGHT:\nCopy\nAUTHOR:\nAuth\n" +
         mapLines + ctlLines + "junk\nR=\nr+\ng\nG=\ng\nB=x\nb\nA=\na\n\n";
}

TEST_F(TextFormats, TxtFixedFormReport) {
  const std::string report = FixedReport("Map 0: [Light]\nMap 1: [Map 1:]\nMap 2: []\n",
                                         "Control 0: [Angle]\nControl 1: [Control 1:]\nControl 2: [Z]\nControl 3: []\n");
  ASSERT_TRUE(ReadTxtText(report));
  EXPECT_EQ(f.filename, "ab.8bf");  // only the last twelve characters count
  EXPECT_EQ(Texts(f), "  Spaced Category |A Title|Auth|Copy");
  EXPECT_EQ(Maps(f) + " " + Controls(f), "Light||| Angle||Z|||||");
  EXPECT_EQ(Codes(f), "r+g|g|b|a");
  EXPECT_EQ(f.ctlValue[1], 0);
  // An AFS file beside the report gives the control values.
  dir.Write("t.afs", "%RGB-1.0\r1\r2\r3\r4\r5\r6\r7\r8\r");
  ASSERT_TRUE(ReadTxtText(report));
  EXPECT_EQ(Values(f), "1|2|3|4|5|6|7|8");
  // Maps out of order break the form.
  EXPECT_FALSE(ReadTxtText(FixedReport("Map 1: [Light]\n", "")));
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].text, "t.txt: Format Violation");
}

TEST_F(TextFormats, WriteTxtTextAndTheMacintoshAdaption) {
  FFFilter g = SampleFilter();
  g.mapName[1] = "Curve";  // the map wins over controls 1 and 2
  g.presets[0][2] = 5;
  g.presets[7][2] = -1;
  shell.marked = {2};
  WriteTXT(g, dir.path(), true, env);
  EXPECT_EQ(dir.Read("sample.txt"),
            "Category: Trel Samples\r\nTitle: Warm Glow\r\nCopyright: (c) Trel\r\nAuthor: Trel\r\n"
            "Filename: sample.8bf\r\n\r\n"
            "R:add(r,ctl(0),255)\r\n\r\nG:mix(g,255-g,ctl(1),255)\r\n\r\nB:b*Z/D\r\n\r\nA:a\r\n\r\n"
            "map[0]: Curve\r\nctl[4]: Unused Value\r\n\r\n"
            "val[0]: 40\r\nval[1]: 200\r\nval[4]: 7\r\n\r\n"
            "set[2]: 5,0,0,0,0,0,0,-1\r\n");
  // Premiere code is brought into Photoshop dialect first, in the record too.
  g.isPhotoshop = false;
  g.codeB = "P";
  WriteTXT(g, dir.path(), false, env);
  EXPECT_EQ(g.codeB, "Z");
  EXPECT_EQ(dir.Read("sample.txt").find("set["), std::string::npos);
  // The Macintosh adaption rewrites what the writers write.
  env.options.macFFAdaption = g.isPhotoshop = true;
  g.codeR = "I-r";
  WriteTXT(g, dir.path(), false, env);
  EXPECT_NE(dir.Read("sample.txt").find("R:255-r\r\n"), std::string::npos);
  g.codeR = "U";
  Writeafspff(g, dir.path(), 0, env);
  EXPECT_NE(dir.Read("sample.afs").find("0\r255\r\r"), std::string::npos);
}

// The editor's copy to the clipboard: the same text with each code on the
// line below its label, which the TXT reader takes back whole.
TEST_F(TextFormats, TheClipboardLayoutPutsCodesBelowTheirLabelsAndReadsBack) {
  FFFilter g = SampleFilter();
  g.mapName[1] = "Curve";
  const std::string text = FilterText(g, CodeLines::BelowLabel);
  EXPECT_NE(text.find("\r\n\r\nR:\r\nadd(r,ctl(0),255)\r\n\r\nG:\r\nmix(g,255-g,ctl(1),255)\r\n\r\n"),
            std::string::npos)
      << text;
  EXPECT_EQ(text.substr(text.find("A:")),
            "A:\r\na\r\n\r\nmap[0]: Curve\r\nctl[4]: Unused Value\r\n\r\nval[0]: 40\r\nval[1]: 200\r\nval[4]: 7\r\n\r\n");
  ASSERT_TRUE(ReadTxtText(text));
  EXPECT_EQ(std::tie(f.codeR, f.codeG, f.codeB), std::tie(g.codeR, g.codeG, g.codeB));
  // "A:" alone keeps the reader's preset "a" in front of the code below it,
  // as the original's reader does.
  EXPECT_EQ(f.codeA, "a" + g.codeA);
  EXPECT_EQ(std::tie(f.title, f.category, f.mapName[1], f.ctlName[5]),
            std::tie(g.title, g.category, g.mapName[1], g.ctlName[5]));
  for (int c : {1, 2, 5}) EXPECT_EQ(f.ctlValue[c], g.ctlValue[c]) << c;
}

// The fields a round trip keeps: AFS and PFF have no maps and no values for
// unnamed controls; all formats exchange the extension.
FFFilter Normalised(FFFilter f) {
  for (int i = 1; i <= 4; ++i) f.mapName[i].clear();
  for (int i = 1; i <= 8; ++i)
    if (f.ctlName[i].empty()) f.ctlValue[i] = 0;
  f.filename = "sample";
  f.presets = {};
  return f;
}

TEST_F(TextFormats, RoundTripsBetweenAllSourceFormats) {
  using Writer = void (*)(FFFilter&, const std::string&, const FilterEnv&);
  const std::pair<const char*, Writer> formats[] = {
      {".afs", [](FFFilter& g, const std::string& d, const FilterEnv& e) { Writeafspff(g, d, 0, e); }},
      {".pff", [](FFFilter& g, const std::string& d, const FilterEnv& e) { Writeafspff(g, d, 1, e); }},
      {".txt", [](FFFilter& g, const std::string& d, const FilterEnv& e) { WriteTXT(g, d, false, e); }},
  };
  for (const auto& [fromExt, fromWrite] : formats) {
    for (const auto& [toExt, toWrite] : formats) {
      SCOPED_TRACE(std::string(fromExt) + " to " + toExt);
      FFFilter g = SampleFilter(), read, back;
      TempDir first, second;
      fromWrite(g, first.path(), env);
      // The batch path: the writers convert the dialect by isPhotoshop.
      ASSERT_TRUE(ReadFFfile(read, first.file(std::string("sample") + fromExt), env));
      toWrite(read, second.path(), env);
      ASSERT_TRUE(LoadItFile(back, second.path(), std::string("sample") + toExt, env));
      back.isPhotoshop = true;  // PFF records stay marked Premiere after the editor's conversion
      EXPECT_EQ(Normalised(back), Normalised(SampleFilter()));
    }
  }
}

TEST_F(TextFormats, ReadersSurviveGarbageTruncationAndHugeFiles) {
  FFFilter g = SampleFilter();
  Writeafspff(g, dir.path(), 0, env);
  Writeafspff(g, dir.path(), 1, env);
  WriteTXT(g, dir.path(), false, env);
  const std::string samples[] = {dir.Read("sample.afs"), dir.Read("sample.pff"), dir.Read("sample.txt"),
                                 Ffx(kFfxStrings)};
  auto readAll = [&](const std::string& bytes) {
    for (const char* name : {"x.afs", "x.pff", "x.txt", "x.ffx"}) {
      dir.Write(name, bytes);
      FFFilter r;
      LoadItFile(r, dir.path(), name, env);
      ReadFFfile(r, dir.file(name), env);
    }
  };
  for (const auto& sample : samples)
    for (size_t cut = 0; cut <= sample.size(); cut += 7) readAll(sample.substr(0, cut));
  std::mt19937 random(2026);
  for (int round = 0; round < 40; ++round) {
    std::string junk(static_cast<size_t>(random() % 3000), '\0');
    for (auto& c : junk) c = static_cast<char>(random());
    readAll(junk);
  }
  readAll(std::string(1024 * 1024, 'R'));  // one enormous line
  // Over the size any source can have: every reader refuses it.
  for (const char* name : {"x.afs", "x.pff", "x.txt", "x.ffx"}) {
    dir.Write(name, std::string(kMaxSourceFileSize + 1, '\r'));
    FFFilter r;
    EXPECT_FALSE(LoadItFile(r, dir.path(), name, env)) << name;
    EXPECT_FALSE(ReadFFfile(r, dir.file(name), env)) << name;
  }
}

}  // namespace
}  // namespace trel
