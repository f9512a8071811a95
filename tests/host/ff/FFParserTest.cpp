#include "host/ff/FFParser.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "FFTestSupport.h"
#include "host/ff/FFEngine.h"
#include "host/ff/FFProgram.h"

namespace trel::ff {
namespace {

bool Parses(const std::string& code, ParseError* errOut = nullptr) {
  Ast ast;
  ParseError err;
  bool ok = ParseExpression(code, ast, err);
  if (errOut) *errOut = err;
  return ok;
}

TEST(FFParser, FaultsCarryTheirPosition) {
  struct Case {
    const char* code;
    size_t position;
    const char* wordInMessage;
  } cases[] = {
      {"r + foo", 4, "Unknown name 'foo'"}, {"r + bar(1)", 4, "Unknown function 'bar'"},
      {"src(1,2)", 0, "takes 3 arguments, not 2"}, {"ctl(1,2)", 0, "takes 1 argument, not 2"},
      {"cnv(1,2,3,4,5,6,7,8,9,10,11)", 0, "takes 10 arguments, not 11"},
      {"(r + g", 6, "Expected ')'"}, {"r ? g", 5, "Expected ':'"},
      {"r + ", 4, "ends where a value is expected"}, {"r g", 2, "after the end"},
      {"r = 1", 2, "'=='"}, {"r @ 1", 2, "Unexpected character '@'"},
      {"2147483648", 0, "too large"}, {"0x80000000", 0, "too large"}, {"0x", 0, "hexadecimal"},
      {"12ab", 2, "run into letters"}, {"r(1)", 0, "not a function"},
      {"sin", 0, "needs its arguments"}, {"", 0, "empty"}, {"  // only a comment", 19, "empty"},
      {"r /* no block comments */", 3, "Expected a value"}, {"min(1,)", 6, "Expected a value"},
  };
  for (const Case& c : cases) {
    ParseError err;
    EXPECT_FALSE(Parses(c.code, &err)) << c.code;
    EXPECT_EQ(err.position, c.position) << c.code << ": " << err.message;
    EXPECT_NE(err.message.find(c.wordInMessage), std::string::npos) << c.code << ": " << err.message;
  }
}

TEST(FFParser, LexicalForms) {
  for (const char* code : {"2147483647", "0x7FFFFFFF + 0Xff + 0x00ab", "-2147483647-1",
                           " r\t+\r\ng // a comment\n + b", "r // comment at the end",
                           "src0(x,y,z)+src1(x,y,z)+rad0(d,m,z)+rad1(d,m,z)+sqrt(4)",
                           "cnv0(1,1,1,1,1,1,1,1,1,9) + cnv1(1,1,1,1,1,1,1,1,1,9)",
                           "rmin+gmax+xmax+ymax+zmax+pmax+mmax+dmax+t+tmax+total+r0+m1+p",
                           "(1, 2, 3)", "min(1 ? 2, 3 : 4, 5)"})  // a sequence may stand between ? and :
    EXPECT_TRUE(Parses(code)) << code;
  EXPECT_FALSE(Parses("R(1)"));
  EXPECT_FALSE(Parses("Src(x,y,z)"));  // names are case-sensitive
}

TEST(FFParser, CompatWarningsMarkWhatARealHostRefuses) {
  struct Case {
    const char* code;
    std::vector<std::pair<size_t, size_t>> marks;  // position, length
  } cases[] = {
      {"sqrt(4)", {{0, 4}}},          {"(x, 2)", {{2, 1}}},
      {"max((1,9), 3)", {{6, 1}}},    {"src(x, (put(1,0), y), sqrt(z))", {{16, 1}, {22, 4}}},
      {"put(x,0), get(0)", {}},       {"sqr(x) + src(x,y,z) + (r)", {}},
      {"min(1 ? 2, 3 : 4, 5)", {{9, 1}}},
  };
  for (const Case& c : cases) {
    Ast ast;
    ParseError err;
    std::vector<CompatNote> notes;
    ASSERT_TRUE(ParseExpression(c.code, ast, err, &notes)) << c.code;
    ASSERT_EQ(notes.size(), c.marks.size()) << c.code;
    for (size_t k = 0; k < notes.size(); ++k) {
      EXPECT_EQ(notes[k].position, c.marks[k].first) << c.code;
      EXPECT_EQ(notes[k].length, c.marks[k].second) << c.code;
      EXPECT_NE(notes[k].message.find("Filter Factory"), std::string::npos) << notes[k].message;
    }
  }
  CompileError err;
  const CompiledFilter f = CompileFilter({"r", "sqrt(g)", "b", "(a,1)"}, &err);
  ASSERT_TRUE(f.valid());  // warnings, not faults
  ASSERT_EQ(f.compatWarnings().size(), 2u);
  EXPECT_EQ(f.compatWarnings()[0].channel, 1);
  EXPECT_EQ(f.compatWarnings()[1].channel, 3);
  EXPECT_EQ(f.compatWarnings()[1].position, 2u);
  EXPECT_TRUE(CompileFilter({"r", "g", "b", "a"}, &err).compatWarnings().empty());
}

TEST(FFParser, HugeInputsAreErrorsNotCrashes) {
  ParseError err;
  EXPECT_FALSE(Parses(std::string(100000, '(') + "1" + std::string(100000, ')'), &err));
  EXPECT_NE(err.message.find("nested too deeply"), std::string::npos);
  EXPECT_LE(err.position, size_t(kMaxNesting) + 1);
  std::string calls, ternaries;
  for (int i = 0; i < 50000; ++i) calls += "abs(", ternaries += "1?2:";
  EXPECT_FALSE(Parses(std::string(100000, '-') + "1"));
  EXPECT_FALSE(Parses(calls + "1" + std::string(50000, ')')));
  EXPECT_FALSE(Parses(ternaries + "3"));
  EXPECT_TRUE(Parses(std::string(100, '(') + "1" + std::string(100, ')')));

  // 1,023 characters, the longest formula a source format holds, is fine.
  std::string chain = "r";
  while (chain.size() + 2 <= 1023) chain += "+1";
  EXPECT_TRUE(Parses(chain));
  while (chain.size() < 400000) chain += "+1";
  EXPECT_FALSE(Parses(chain, &err));
  EXPECT_NE(err.message.find("too long a chain"), std::string::npos);
}

// A balanced sum of n calls cnv(k, k+1, ... k+9): shallow, with 10n distinct numbers.
void WideSum(std::string& out, int first, int n) {
  if (n == 1) {
    out += "cnv(" + std::to_string(first);
    for (int k = 1; k < 10; ++k) out += "," + std::to_string(first + k);
    out += ")";
    return;
  }
  out += '(';
  WideSum(out, first, n / 2);
  out += '+';
  WideSum(out, first + 10 * (n / 2), n - n / 2);
  out += ')';
}

TEST(FFParser, WideFormulasCompileOrFailCleanly) {
  std::array<std::string, 4> code{"", "g", "b", "a"};
  WideSum(code[0], 1, 200);
  code[0] += " / 2000";
  ImageRGBA8 src = test::PatternImage(3, 2, false), out(3, 2, false);
  ASSERT_EQ(RenderFilter(test::MustCompile(code), {}, src.view(), out.view()), RenderStatus::Done);
  EXPECT_EQ(out.pixels, test::ReferenceRender(code, {}, src).pixels);

  // Just past the register limit: every distinct number needs one.
  code = {"r", "g", "", "a"};
  WideSum(code[2], 1, kMaxRegisters / 10 + 1);
  CompileError err;
  EXPECT_FALSE(CompileFilter(code, &err).valid());
  EXPECT_EQ(err.channel, 2);
  EXPECT_NE(err.message.find("too large"), std::string::npos);
}

}  // namespace
}  // namespace trel::ff
