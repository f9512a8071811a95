#include "filter/CodeRewrite.h"

#include <gtest/gtest.h>

namespace trel {
namespace {

std::string Optimize(const std::string& code, int channel = 1, bool noFFOptimize = false) {
  return OptimizeChannel(code, channel, noFFOptimize);
}

TEST(OptimizeCode, CleanUpRemovesEscapesControlCodesAndBlanks) {
  EXPECT_EQ(Optimize(""), "");
  EXPECT_EQ(Optimize("r \\r+\\n g"), "r+g");
  EXPECT_EQ(Optimize("r\t+\x01g "), "r+g");
  EXPECT_EQ(Optimize("r+g // red and green"), "r+g//redandgreen");  // comments are the readers' job
  EXPECT_EQ(Optimize("   "), "");
  EXPECT_EQ(Optimize("a\r\nb"), "a\r\nb");  // CR and LF belong to the line readers
}

TEST(OptimizeCode, TBecomesTotalEvenWithoutOptimization) {
  EXPECT_EQ(Optimize("r*T/255"), "r*total/255");
  EXPECT_EQ(Optimize("r * T", 1, true), "r * total");
  EXPECT_EQ(Optimize("Tan", 1, true), "totalan");  // no idea of names
  EXPECT_EQ(Optimize("a\tb", 1, true), "ab");      // control codes go in all cases
  EXPECT_EQ(Optimize("src(x,y,z) ", 1, true), "src(x,y,z) ");
}

TEST(OptimizeCode, SourceReadsOfTheOwnChannelBecomeC) {
  EXPECT_EQ(Optimize("src(x,y,z)+src(x,y,p)"), "c+c");
  EXPECT_EQ(Optimize("src(x,y,0)", 1), "c");
  EXPECT_EQ(Optimize("src(x,y,1)", 1), "src(x,y,1)");  // red reading green stays
  EXPECT_EQ(Optimize("src(x,y,1)", 2), "c");
  EXPECT_EQ(Optimize("src(x,y,2)", 3), "c");
  EXPECT_EQ(Optimize("rad(d,m,z)-rad(d,m,p)"), "c-c");
  EXPECT_EQ(Optimize("rad(d,m,2)", 3), "c");
  // The match was tried at `s` while the blanks still stood there.
  EXPECT_EQ(Optimize("src(x, y, z)"), "src(x,y,z)");
  for (const char* fixed : {"src(x,y,0)", "src(x,y,1)", "src(x,y,2)", "src(x,y,3)", "rad(d,m,0)"})
    EXPECT_EQ(Optimize(fixed, 4), fixed) << "alpha keeps " << fixed;
  EXPECT_EQ(Optimize("src(x,y,z)", 4), "c");
}

TEST(OptimizeCode, MagnitudeAndIntensityForms) {
  EXPECT_EQ(Optimize("sqr(x*x+y*y)"), "c2m(x,y)");
  EXPECT_EQ(Optimize("sqr(m*m+d*d)"), "c2m(m,d)");
  EXPECT_EQ(Optimize("sqr(X*X+Y*Y)"), "c2m(X,Y)");
  EXPECT_EQ(Optimize("(76*r+150*g+29*b)/256"), "i");
  // With blanks the match is tried at the bracket while they still stand there.
  EXPECT_EQ(Optimize("(76*r + 150*g + 29*b)/256"), "(76*r+150*g+29*b)/256");
  EXPECT_EQ(Optimize("255-(76*r+150*g+29*b)/256"), "255-i");
}

TEST(OptimizeCode, AllFourChannelsOfTheRecord) {
  FFFilter f;
  f.codeR = "src(x,y,0)";
  f.codeG = "src(x,y,0)";
  f.codeB = "src(x,y,2)";
  f.codeA = " a ";
  OptimizeCode(f, {});
  EXPECT_EQ(f.codeR, "c");
  EXPECT_EQ(f.codeG, "src(x,y,0)");
  EXPECT_EQ(f.codeB, "c");
  EXPECT_EQ(f.codeA, "a");
}

TEST(Correctprmcode, ConstantsAndVariables) {
  EXPECT_EQ(Correctprmcode("r*T/D"), "r*total/512");
  EXPECT_EQ(Correctprmcode("P-1"), "Z-1");
  EXPECT_EQ(Correctprmcode("put(1,0)"), "put(1,0)");
  EXPECT_EQ(Correctprmcode("pi"), "zi");
  EXPECT_EQ(Correctprmcode("map(0,p)"), "map(0,z)");
  EXPECT_EQ(Correctprmcode("pmax"), "zmax");  // the p goes first, so pmax is never reached
  EXPECT_EQ(Correctprmcode("dmax"), "D");     // not visited again, so not 512
  EXPECT_EQ(Correctprmcode("xmax+ymin+tmax"), "X+0+255");
  EXPECT_EQ(Correctprmcode("mmax"), "M");
  EXPECT_EQ(Correctprmcode(""), "");
  EXPECT_EQ(Correctprmcode("Tx"), "totalx");
}

TEST(Correctprmcode, MFormsHalveAndIsNotIdempotent) {
  EXPECT_EQ(Correctprmcode("M/2"), "M");
  EXPECT_EQ(Correctprmcode("M"), "(M/2)");
  EXPECT_EQ(Correctprmcode("M/4"), "M/2");
  EXPECT_EQ(Correctprmcode("(M/2)"), "M");
  EXPECT_NE(Correctprmcode(Correctprmcode("M")), Correctprmcode("M"));
}

TEST(Correctprmcode, ChromaTermsAsPremiereSpellsThem) {
  EXPECT_EQ(Correctprmcode("((56*b-19*r-37*g)/256)"), "u");
  EXPECT_EQ(Correctprmcode("((78*r-65*g-13*g)/256)"), "v");
  EXPECT_EQ(Correctprmcode("((78*r-65*g-13*b)/256)"), "((78*r-65*g-13*b)/256)");
}

TEST(Correctprmcode, MixSwapsItsFirstTwoArguments) {
  EXPECT_EQ(Correctprmcode("mix(a,b,n,d)"), "mix(b,a,n,d)");
  EXPECT_EQ(Correctprmcode("mix(f(1,2),b,n,d)"), "mix(b,f(1,2),n,d)");
  EXPECT_EQ(Correctprmcode("mix(mix(1,2,3,4),b,n,d)"), "mix(b,mix(2,1,3,4),n,d)");
  // Broken code is rewritten without running away.
  EXPECT_EQ(Correctprmcode("mix(a"), "mix(,a,");
  EXPECT_EQ(Correctprmcode("mix("), "mix(,,");
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
}

TEST(Correctcode, KnowsNamesAndLeavesTheRestAlone) {
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
  EXPECT_EQ(f.codeR, "p");
  EXPECT_EQ(f.codeG, "T");
  EXPECT_EQ(f.codeB, "((56*b-19*r-37*g)/256)");
  EXPECT_EQ(f.codeA, "a");
}

TEST(CorrectCodeForMac, WritesTheWindowsValueOfTheFullScaleConstants) {
  EXPECT_EQ(CorrectCodeForMacChannel("I-i+U+V"), "255-i+255+255");
  EXPECT_EQ(CorrectCodeForMacChannel("imax-umax*vmax"), "255-255*255");
  EXPECT_EQ(CorrectCodeForMacChannel("Imax+vmaxx+R"), "Imax+vmaxx+R");
  EXPECT_EQ(CorrectCodeForMacChannel(""), "");
  FFFilter f;
  f.codeR = f.codeG = f.codeB = f.codeA = "I";
  CorrectCodeForMac(f);
  EXPECT_EQ(f.codeA, "255");
}

}  // namespace
}  // namespace trel
