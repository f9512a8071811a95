#include "host/ff/FFParser.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "host/ff/FFEngine.h"

namespace trel::ff {
namespace {

ParseError ErrorOf(const std::string& code) {
  Ast ast;
  ParseError err;
  EXPECT_FALSE(ParseExpression(code, ast, err)) << code;
  return err;
}

bool Parses(const std::string& code) {
  Ast ast;
  ParseError err;
  return ParseExpression(code, ast, err);
}

TEST(FFParser, FaultsCarryTheirPosition) {
  struct Case {
    const char* code;
    size_t position;
    const char* wordInMessage;
  } cases[] = {
      {"r + foo", 4, "Unknown name 'foo'"},
      {"r + bar(1)", 4, "Unknown function 'bar'"},
      {"src(1,2)", 0, "takes 3 arguments, not 2"},
      {"ctl(1,2)", 0, "takes 1 argument, not 2"},
      {"cnv(1,2,3,4,5,6,7,8,9,10,11)", 0, "takes 10 arguments, not 11"},
      {"(r + g", 6, "Expected ')'"},
      {"r ? g", 5, "Expected ':'"},
      {"r + ", 4, "ends where a value is expected"},
      {"r g", 2, "after the end"},
      {"r = 1", 2, "'=='"},
      {"r @ 1", 2, "Unexpected character '@'"},
      {"2147483648", 0, "too large"},
      {"0x80000000", 0, "too large"},
      {"0x", 0, "hexadecimal"},
      {"12ab", 2, "run into letters"},
      {"r(1)", 0, "not a function"},
      {"sin", 0, "needs its arguments"},
      {"", 0, "empty"},
      {"  // only a comment", 19, "empty"},
      {"r /* no block comments */", 3, "Expected a value"},
      {"min(1,)", 6, "Expected a value"},
  };
  for (const Case& c : cases) {
    ParseError err = ErrorOf(c.code);
    EXPECT_EQ(err.position, c.position) << c.code << ": " << err.message;
    EXPECT_NE(err.message.find(c.wordInMessage), std::string::npos) << c.code << ": " << err.message;
  }
}

TEST(FFParser, AcceptsTheLexicalForms) {
  EXPECT_TRUE(Parses("2147483647"));
  EXPECT_TRUE(Parses("0x7FFFFFFF + 0Xff + 0x00ab"));
  EXPECT_TRUE(Parses("-2147483647-1"));
  EXPECT_TRUE(Parses(" r\t+\r\ng // a comment\n + b"));
  EXPECT_TRUE(Parses("r // comment at the end"));
  EXPECT_TRUE(Parses("src0(x,y,z)+src1(x,y,z)+rad0(d,m,z)+rad1(d,m,z)+sqrt(4)"));
  EXPECT_TRUE(Parses("cnv0(1,1,1,1,1,1,1,1,1,9) + cnv1(1,1,1,1,1,1,1,1,1,9)"));
  EXPECT_TRUE(Parses("rmin+gmax+xmax+ymax+zmax+pmax+mmax+dmax+t+tmax+total+r0+m1+p"));
  EXPECT_TRUE(Parses("(1, 2, 3)"));
  EXPECT_TRUE(Parses("min(1 ? 2, 3 : 4, 5)"));  // a sequence is allowed between '?' and ':'
  EXPECT_FALSE(Parses("R(1)"));
  EXPECT_FALSE(Parses("Src(x,y,z)"));  // names are case-sensitive
}

TEST(FFParser, DeepNestingIsAnErrorNotACrash) {
  std::string deep(100000, '(');
  deep += "1";
  deep += std::string(100000, ')');
  ParseError err = ErrorOf(deep);
  EXPECT_NE(err.message.find("nested too deeply"), std::string::npos);
  EXPECT_LE(err.position, size_t(kMaxNesting) + 1);

  EXPECT_FALSE(Parses(std::string(100000, '-') + "1"));
  std::string calls;
  for (int i = 0; i < 50000; ++i) calls += "abs(";
  calls += "1" + std::string(50000, ')');
  EXPECT_FALSE(Parses(calls));
  std::string ternaries;
  for (int i = 0; i < 50000; ++i) ternaries += "1?2:";
  EXPECT_FALSE(Parses(ternaries + "3"));

  // Modest nesting is fine.
  EXPECT_TRUE(Parses(std::string(100, '(') + "1" + std::string(100, ')')));
}

TEST(FFParser, LongChainsAreBoundedButRealisticFormulasPass) {
  // A formula of 1,023 characters, the longest a source format holds.
  std::string chain = "r";
  while (chain.size() + 2 <= 1023) chain += "+1";
  ASSERT_LE(chain.size(), 1023u);
  EXPECT_TRUE(Parses(chain));

  std::string huge = "r";
  for (int i = 0; i < 200000; ++i) huge += "+1";
  ParseError err = ErrorOf(huge);
  EXPECT_NE(err.message.find("too long a chain"), std::string::npos);
}

// A balanced sum of n terms (x+k): shallow, but with n distinct numbers.
std::string WideSum(int first, int n) {
  if (n == 1) return "(x+" + std::to_string(first) + ")";
  return "(" + WideSum(first, n / 2) + "+" + WideSum(first + n / 2, n - n / 2) + ")";
}

TEST(FFParser, WideFormulasCompileOrFailCleanly) {
  CompileError err;
  CompiledFilter ok = CompileFilter({WideSum(1, 2000), "g", "b", "a"}, &err);
  ASSERT_TRUE(ok.valid()) << err.message;
  ImageRGBA8 img(2, 2, false), out(2, 2, false);
  EXPECT_EQ(RenderFilter(ok, {}, img.view(), out.view()), RenderStatus::Done);
  EXPECT_EQ(out.at(1, 1)[0], 255);

  CompiledFilter big = CompileFilter({"r", "g", WideSum(1, 70000), "a"}, &err);
  EXPECT_FALSE(big.valid());
  EXPECT_EQ(err.channel, 2);
  EXPECT_NE(err.message.find("too large"), std::string::npos);
}

TEST(FFParser, RandomBytesNeverCrash) {
  std::mt19937 gen(2024);
  const std::string alphabet = "rgbaxyzXYZcdmiuv0123456789x()+-*/%<>=!&|^~?:, \tsrcadmnlt_\n";
  int accepted = 0;
  for (int round = 0; round < 3000; ++round) {
    std::string code;
    int len = int(gen() % 60);
    for (int i = 0; i < len; ++i) {
      if (round % 3 == 0)
        code += char(gen() & 0xFF);
      else
        code += alphabet[gen() % alphabet.size()];
    }
    CompileError err;
    CompiledFilter f = CompileFilter({code, code, code, code}, &err);
    if (f.valid()) {
      ++accepted;
      ImageRGBA8 img(3, 2, true);
      ImageRGBA8 out(3, 2, true);
      EXPECT_EQ(RenderFilter(f, {}, img.view(), out.view(), {}), RenderStatus::Done);
    } else {
      EXPECT_LE(err.position, code.size()) << code;
      EXPECT_FALSE(err.message.empty());
    }
  }
  EXPECT_GT(accepted, 0);
}

}  // namespace
}  // namespace trel::ff
