#include "filter/CodeRewrite.h"

#include "FilterKit.h"

namespace trel {
namespace {

using test::Codes;

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
  FFFilter f = test::SampleFilter();
  f.mapName[4] = "map";
  f.ctlName[8] = "ctl";
  f.ctlValue[8] = 9;
  f.isPhotoshop = false;
  f.transitionName = "wipe";
  f.presets[7][9] = -3;
  IniVars(f);
  FFFilter expected;
  expected.isPhotoshop = false;
  expected.transitionName = "wipe";
  expected.presets[7][9] = -3;
  EXPECT_EQ(f, expected);
}

}  // namespace
}  // namespace trel
