// The small pieces under the readers and writers: byte fields, label
// shortening, the code rewriters, and how the window shows a returned Error.
#include <functional>
#include <tuple>

#include "FilterKit.h"
#include "filter/ByteHelpers.h"
#include "filter/CodeRewrite.h"
#include "filter/LabelShortening.h"

namespace trel {
namespace {

using test::Codes;
using test::TempDir;

std::unique_ptr<BinFile> OpenBytes(const TempDir& dir, const std::string& bytes) {
  return BinFile::Open(dir.Write("f.bin", bytes), BinFile::Mode::Binary);
}

TEST(ByteHelpers, FixedFieldWritersPlaceTheirBytes) {
  TempDir dir;
  const std::tuple<const char*, std::function<void(BinFile&)>, std::string> cases[] = {
      {nullptr, [](BinFile& f) { Writecode("", f); }, "\r"},
      {nullptr, [](BinFile& f) { string2bytes("", 1, f); }, std::string(1, '\0')},
      {"xxxxxxxx",  // the _w0 form writes no closing zero
       [](BinFile& f) { string2bytes("ab", 2, f); string2bytes_w0("C", 6, f); }, std::string("xab\0xCxx", 8)},
      {"xxxxxxxx", [](BinFile& f) { ReplaceB("ab", 2, f); }, std::string("xxab\0xxx", 8)},  // one further on
      {"ab", [](BinFile& f) { string2bytes("z", 5, f); }, std::string("ab\0\0z\0", 6)},  // the file grows with zeros
  };
  for (const auto& [start, write, bytes] : cases) {
    auto file = start ? OpenBytes(dir, start) : BinFile::Open(dir.file("f.bin"), BinFile::Mode::Output);
    write(*file);
    file->Close();
    EXPECT_EQ(dir.Read("f.bin"), bytes);
  }
}

TEST(ByteHelpers, LineReaders) {
  TempDir dir;
  auto file = OpenBytes(dir, "ab\rc\r\rrest");
  EXPECT_EQ(ReadtoDD(*file), "abc");  // joins lines broken inside code
  EXPECT_EQ(file->Loc(), 7);          // behind the second CR
  EXPECT_EQ(ReadtoDD(*file), "rest");  // end of file ends the line without failing
  EXPECT_EQ(ReadtoDD(*file), "");

  file = OpenBytes(dir, "one\r\ntwo\rX3");
  EXPECT_EQ(ReadtoD(*file), "one");
  EXPECT_EQ(ReadtoD(*file), "\ntwo");  // ReadtoD drops only the CR
  EXPECT_EQ(Byt2str(*file), "X3");
  file = OpenBytes(dir, "one\r\ntwo\rX3");
  EXPECT_EQ(Byt2str(*file), "one");  // the byte behind the CR goes too
  EXPECT_EQ(Byt2str(*file), "two");
  EXPECT_EQ(Byt2str(*file), "3");
  EXPECT_TRUE(file->AtEnd());
  EXPECT_EQ(ReadtoD(*file), "");
}

TEST(ByteHelpers, TextFieldReaders) {
  TempDir dir;
  struct Case {
    std::string bytes;
    int64_t at;
    bool comments;  // bytes2string, else bytes2string2
    std::string text;
  };
  const Case cases[] = {
      {std::string("xab\r\ncd\ref\0zz", 13), 2, false, "abcdef"},  // CR and CR LF vanish
      {std::string("\0Old\0", 5), 1, false, std::string("\0Old", 4)},  // a first 0 does not end it
      {"abc", 2, false, "bc"},  // the end of the file ends the field
      {"abc", 10, false, ""},
      {std::string("1/2\0", 4), 1, true, "1/2"},
      {std::string("1//x\r2\0", 7), 1, true, "12"},
      {std::string("a//c\r\nb\0", 8), 1, true, "ab"},
      // A comment with no CR behind it runs through the zeros to the next CR,
      // or to the end of the file, which ends the walk.
      {std::string("a//c\0\0\0next\rz\0", 14), 1, true, "az"},
      {std::string("a//c\0\0", 6), 1, true, "a"},
      {"a/", 1, true, "a/"},
  };
  for (const Case& c : cases) {
    auto file = OpenBytes(dir, c.bytes);
    EXPECT_EQ(c.comments ? bytes2string(c.at, *file) : bytes2string2(c.at, *file), c.text) << c.bytes;
  }
}

TEST(ByteHelpers, GetUntillAndLeadingNumber) {
  EXPECT_EQ(GetUntill("a(b,c),d", ','), "a(b,c)");
  EXPECT_EQ(GetUntill("abc", ','), "abc");
  EXPECT_EQ(GetUntill("", ','), "");
  EXPECT_EQ(GetUntill("a[b,c]", ','), "a[b");  // only round brackets count
  EXPECT_EQ(GetUntill("f(x)),y", ')'), "f(x)");  // the closing bracket of f counts first
  EXPECT_EQ(GetUntill("a)b,c", ','), "a)b,c");  // depth below 0 never matches
  EXPECT_EQ(LeadingNumber("42abc"), 42);
  EXPECT_EQ(LeadingNumber("  -7"), -7);
  EXPECT_EQ(LeadingNumber("x1"), 0);
  EXPECT_EQ(LeadingNumber(""), 0);
  EXPECT_GT(LeadingNumber("99999999999999999999999"), 255);  // saturates, no overflow
}

TEST(LabelShortening, RemoveVocalsCharsLettersSpacesAndReplaceAwithI) {
  const std::pair<std::string, std::string> cases[] = {
      {"Brightness:", "Brigh."}, {"Red Amount", "Red Amou."}, {"Vertical Position", "Vert. Pos."},
      {"Wave Length", "Wave Lngth"}, {"Very Long Label Text", "Vry Lng Lbl Txt"}, {"", ""},
      {"GREEN", "GREEN"}, {"Treshold", "Tresh."},
      {"Threshold", "Thrshld"},  // only the listed spelling is a known word
      {"Opacity", "Opcty"},      // the first letter stays, even a vowel
      {"CONTROLS", "Contr."}, {"UPPER", "UPPER"}};  // upper-case vowels stay
  for (auto [label, shortened] : cases) EXPECT_EQ(RemoveVocals(label), shortened) << label;
  std::string label = "Size:";  // the colon is cut off the argument too
  EXPECT_EQ(RemoveVocals(label), "Size");
  EXPECT_EQ(label, "Size");
  // The other label helpers.
  EXPECT_EQ(RemoveChars("My Filter: v1.0 c:\\a/b"), "MyFilterv10cab");
  EXPECT_EQ(RemoveChars("..  ::"), "");
  std::string text = "a. b .c";
  RemoveLetters(text);
  EXPECT_EQ(text, "abc");
  EXPECT_EQ(RemoveSpaces(" a b. "), "ab.");
  // Names that begin with a stay; the test looks forward only.
  EXPECT_EQ(ReplaceAwithI("abs(a)"), "abs(i)");
  EXPECT_EQ(ReplaceAwithI("a"), "i");
  EXPECT_EQ(ReplaceAwithI("add(a,al,ap,ax,an,ad)"), "add(i,al,ap,ax,an,ad)");
  EXPECT_EQ(ReplaceAwithI("val(0,a,ca)"), "val(0,i,ci)");
}

struct OptimizeCase {
  const char* code;
  const char* result;
  int channel = 1;
  bool noFFOptimize = false;
};

TEST(OptimizeCode, CleanUpAndTheKnownForms) {
  const OptimizeCase cases[] = {
      {"", ""}, {"r \\r+\\n g", "r+g"}, {"r\t+\x01g ", "r+g"}, {"   ", ""},
      {"r+g // red and green", "r+g//redandgreen"},  // comments are the readers' job
      {"a\r\nb", "a\r\nb"},                          // CR and LF belong to the line readers
      // T becomes total even without optimization, with no idea of names;
      // control codes go in all cases.
      {"r*T/255", "r*total/255"}, {"r * T", "r * total", 1, true}, {"Tan", "totalan", 1, true},
      {"a\tb", "ab", 1, true}, {"src(x,y,z) ", "src(x,y,z) ", 1, true},
      // Source reads of the own channel become c.
      {"src(x,y,z)+src(x,y,p)", "c+c"}, {"src(x,y,0)", "c"}, {"src(x,y,1)", "src(x,y,1)"},
      {"src(x,y,1)", "c", 2}, {"src(x,y,2)", "c", 3}, {"rad(d,m,z)-rad(d,m,p)", "c-c"},
      {"rad(d,m,2)", "c", 3}, {"src(x,y,z)", "c", 4},
      {"src(x, y, z)", "src(x,y,z)"},  // the match was tried while the blanks still stood there
      {"src(x,y,0)", "src(x,y,0)", 4}, {"src(x,y,3)", "src(x,y,3)", 4}, {"rad(d,m,0)", "rad(d,m,0)", 4},
      // Magnitude and intensity.
      {"sqr(x*x+y*y)", "c2m(x,y)"}, {"sqr(m*m+d*d)", "c2m(m,d)"}, {"sqr(X*X+Y*Y)", "c2m(X,Y)"},
      {"(76*r+150*g+29*b)/256", "i"}, {"255-(76*r+150*g+29*b)/256", "255-i"},
      {"(76*r + 150*g + 29*b)/256", "(76*r+150*g+29*b)/256"},
  };
  for (const OptimizeCase& c : cases)
    EXPECT_EQ(OptimizeChannel(c.code, c.channel, c.noFFOptimize), c.result) << c.code << " channel " << c.channel;
  FFFilter f;
  f.codeR = f.codeG = "src(x,y,0)";
  f.codeB = "src(x,y,2)";
  f.codeA = " a ";
  OptimizeCode(f, {});
  EXPECT_EQ(Codes(f), "c|src(x,y,0)|c|a");
}

TEST(Correctprmcode, RewritesPremiereNames) {
  const std::pair<const char*, const char*> cases[] = {
      {"r*T/D", "r*total/512"}, {"P-1", "Z-1"}, {"put(1,0)", "put(1,0)"}, {"pi", "zi"},
      {"map(0,p)", "map(0,z)"}, {"", ""}, {"Tx", "totalx"},
      {"pmax", "zmax"},  // the p goes first, so pmax is never reached
      {"dmax", "D"},     // not visited again, so not 512
      {"xmax+ymin+tmax", "X+0+255"}, {"mmax", "M"},
      // M forms halve.
      {"M/2", "M"}, {"M", "(M/2)"}, {"M/4", "M/2"}, {"(M/2)", "M"},
      // Chroma terms as Premiere spells them.
      {"((56*b-19*r-37*g)/256)", "u"}, {"((78*r-65*g-13*g)/256)", "v"},
      {"((78*r-65*g-13*b)/256)", "((78*r-65*g-13*b)/256)"},
      // mix swaps its first two arguments; broken code does not run away.
      {"mix(a,b,n,d)", "mix(b,a,n,d)"}, {"mix(f(1,2),b,n,d)", "mix(b,f(1,2),n,d)"},
      {"mix(mix(1,2,3,4),b,n,d)", "mix(b,mix(2,1,3,4),n,d)"}, {"mix(a", "mix(,a,"}, {"mix(", "mix(,,"},
  };
  for (auto [code, result] : cases) EXPECT_EQ(Correctprmcode(code), result) << code;
  EXPECT_NE(Correctprmcode(Correctprmcode("M")), Correctprmcode("M"));  // not idempotent
}

TEST(Correctcode, IsUndoneByCorrectprmcode) {
  const char* photoshop[] = {
      "z",        "Z-z",           "total-r",        "D",       "512",          "x*512/D",
      "M",        "M/2",           "(M/2)",          "(M)",     "((M))",        "M/4",
      "m*100/M",  "M/25",          "u+v",            "i+u-v",   "X-x+Y-y",      "zmax+zmin",
      "mix(r,g,ctl(0),255)",       "mix(mix(r,g,1,2),src(x,y,z),n,d)",         "put(z,0)+get(0)",
      "map(0,r)", "c2m(x-X/2,y-Y/2)", "rnd(0,Z)",     "sub(r,b,128)", "r1+g0+z0"};
  for (const char* code : photoshop) {
    const std::string premiere = CorrectcodeChannel(code);
    EXPECT_EQ(Correctprmcode(premiere), code) << "via " << premiere;
  }
  EXPECT_EQ(CorrectcodeChannel("z+Z"), "p+P");
  EXPECT_EQ(CorrectcodeChannel("sqrt(x)"), "sqrt(x)");
  EXPECT_EQ(CorrectcodeChannel("1512+0x512"), "1512+0x512");  // only the whole number 512
  EXPECT_EQ(CorrectcodeChannel("val(0,0,255)"), "val(0,0,255)");
  EXPECT_EQ(CorrectcodeChannel("mix(a,b,n,d)"), "mix(b,a,n,d)");
  FFFilter f;
  f.codeR = "z";
  f.codeG = "total";
  f.codeB = "u";
  f.codeA = "a";
  Correctcode(f);
  EXPECT_EQ(Codes(f), "p|T|((56*b-19*r-37*g)/256)|a");
}

TEST(CorrectCodeForMac, WritesTheWindowsValueOfTheFullScaleConstants) {
  EXPECT_EQ(CorrectCodeForMacChannel("I-i+U+V"), "255-i+255+255");
  EXPECT_EQ(CorrectCodeForMacChannel("imax-umax*vmax"), "255-255*255");
  EXPECT_EQ(CorrectCodeForMacChannel("Imax+vmaxx+R"), "Imax+vmaxx+R");
  EXPECT_EQ(CorrectCodeForMacChannel(""), "");
  FFFilter f;
  f.codeR = f.codeG = f.codeB = f.codeA = "I";
  CorrectCodeForMac(f);
  EXPECT_EQ(Codes(f), "255|255|255|255");
}

TEST(IniVars, ClearsTheFieldsEveryReaderFillsAndKeepsTheRest) {
  FFFilter f = test::SampleFilter(), expected;
  f.mapName[4] = f.ctlName[8] = "x";
  f.ctlValue[8] = 9;
  f.isPhotoshop = expected.isPhotoshop = false;
  f.transitionName = expected.transitionName = "wipe";
  f.presets[7][9] = expected.presets[7][9] = -3;
  IniVars(f);
  EXPECT_EQ(f, expected);
}

TEST(UserMessages, ReportShowsEachKindInItsOwnBox) {
  Error titled = Error::Fault("Error accessing plugin for category change!");
  titled.title = "Error";
  const std::pair<Error, MsgIcon> boxed[] = {
      {titled, MsgIcon::Critical},
      {Error::Warning("x is not a Filter Factory Library File!", "Format Violation", "x"), MsgIcon::Exclamation},
      {Error::Information("Title: T", "Plugin Information"), MsgIcon::Information}};
  for (const auto& [error, icon] : boxed) {
    test::RecordingShell shell;
    shell.Report(error);
    ASSERT_EQ(shell.boxes.size(), 1u) << error.reason;
    EXPECT_EQ(shell.boxes[0].text + "|" + shell.boxes[0].title, error.reason + "|" + error.title);
    EXPECT_EQ(shell.boxes[0].icon, icon);
    EXPECT_EQ(shell.boxes[0].buttons, MsgButtons::Ok);
    EXPECT_TRUE(shell.errors.empty() && shell.refreshes == 0);
  }
  test::RecordingShell shell;
  shell.Report(Error::Fault("a: the file can't be opened", "a"));  // no title: the general error box
  shell.Report(Error::Gone("y"));  // a file that has gone is not told; the lists are read again
  EXPECT_EQ(shell.errors, std::vector<std::string>{"a: the file can't be opened"});
  EXPECT_TRUE(shell.boxes.empty());
  EXPECT_EQ(shell.refreshes, 1);
}

}  // namespace
}  // namespace trel
