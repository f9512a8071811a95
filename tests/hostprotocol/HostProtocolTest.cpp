// The plugin host's channel: requests and answers survive any bytes in their
// fields, and the reader takes only the answer it waits for, whatever else
// comes on the channel and however it is cut into reads.
#include <gtest/gtest.h>

#include <string>

#include "hostprotocol/HostProtocol.h"

namespace trel::hostprotocol {
namespace {

using namespace std::string_literals;

// Fields a path or a plugin's message may hold that the old tab-and-line
// framing could not carry.
const std::string kAwkward[] = {
    "", "Z:\\home\\me\\Plugins\\a.8bf", "Z:\\tmp\\line\nbreak\\b.8bf", "tab\there and\rthere",
    "100% sure, %41 is not A, nor is %", "nul\0inside"s, "\x7F\x01\x1F end", "Z:\\Fotos\\Ünïcödé\\фильтр.8bf",
    "@@TREL\t1\tOK",
};

std::string WithoutLineEnds(std::string line) {
  while (!line.empty() && line.front() == '\n') line.erase(0, 1);
  if (!line.empty() && line.back() == '\n') line.pop_back();
  return line;
}

TEST(HostProtocolTest, RequestsOfEveryKindComeBackWhateverTheirFieldsHold) {
  for (const std::string& field : kAwkward) {
    Request run{7, Verb::Run, field, "Z:\\in " + field, field + ".out", field, true};
    Request probe{8, Verb::Probe, field, "", "", "", false};
    Request about{4000000000u, Verb::About, field, "", "", "", false};
    for (const Request& r : {run, probe, about, Request{1, Verb::Quit, "", "", "", "", false}}) {
      const std::string line = FormatRequest(r);
      ASSERT_EQ(line.back(), '\n');
      const std::string body = line.substr(0, line.size() - 1);
      // Fields are split at tabs and lines at line ends: none may be raw.
      EXPECT_EQ(body.find('\n'), std::string::npos);
      EXPECT_EQ(body.find('\r'), std::string::npos);
      const auto back = ParseRequest(body);
      ASSERT_TRUE(back) << body;
      EXPECT_EQ(*back, r) << body;
      EXPECT_EQ(ParseRequest(body + "\r"), back) << "a line end of Windows' kind is allowed";
    }
  }
  Request without{3, Verb::Run, "p", "i", "o", "", false};
  EXPECT_EQ(ParseRequest(WithoutLineEnds(FormatRequest(without)))->params, "");
}

TEST(HostProtocolTest, AnswersComeBackAndStartOnALineOfTheirOwn) {
  for (const std::string& text : kAwkward) {
    const Answer failed{42, static_cast<int>(HostError::PluginError), text};
    const std::string line = FormatAnswer(failed);
    ASSERT_GE(line.size(), 2u);
    EXPECT_EQ(line.front(), '\n') << "ends a line a plugin left open";
    const std::string body = line.substr(1, line.size() - 2);
    EXPECT_EQ(body.find_first_of("\n\r"), std::string::npos) << body;
    EXPECT_EQ(ParseAnswer(WithoutLineEnds(line)), failed);
  }
  const Answer ok{9, 0, ""};
  EXPECT_EQ(WithoutLineEnds(FormatAnswer(ok)), "@@TREL\t9\tOK");
  EXPECT_EQ(ParseAnswer("@@TREL\t9\tOK"), ok);
  // A code a newer host adds passes through as a number.
  EXPECT_EQ(ParseAnswer("@@TREL\t9\tERR\t99\tnew")->code, 99);
}

TEST(HostProtocolTest, EscapesOnlyControlCharactersAndThePercentSign) {
  EXPECT_EQ(Escape("a\tb\nc%d\x7F\xC3\xA9"), "a%09b%0Ac%25d%7F\xC3\xA9");
  EXPECT_EQ(Unescape("a%09b%0Ac%25d%7f"), "a\tb\nc%d\x7F");
  for (const char* bad : {"%", "%4", "%G0", "%0g", "a%%", "raw\ttab", "raw\nline", "x\x7F"})
    EXPECT_FALSE(Unescape(bad)) << bad;
}

TEST(HostProtocolTest, ALineThatIsNotARequestExactlyIsNone) {
  const char* const notRequests[] = {
      "", "QUIT",  // no id
      "0\tQUIT",  // ids start at 1
      "01\tQUIT", "+1\tQUIT",  // one way of writing a number only
      "4294967296\tQUIT", "99999999999\tQUIT",  // past 32 bits
      "1\tquit", "1\tQUIT\textra", "1\tPROBE", "1\tPROBE\ta\tb",  // a field missing, one too many
      "1\tPROBE\ta%4", "1\tPROBE\ta%zz", "1\tPROBE\ta\x01z",  // bad escapes, a raw control character
      "1\tRUN\tp\ti\to\tparams", "1\tRUN\tp\ti\to\tparams\t2",  // truncated; the dialog flag is 0 or 1
      "1\tRUN\tp\ti\to\tparams\t1\t",  // a trailing tab is one more field
      "1\tBOGUS\tp",
  };
  for (const char* line : notRequests) EXPECT_FALSE(ParseRequest(line)) << line;
  EXPECT_FALSE(ParseRequest("1\tPROBE\t" + std::string(kMaxLine, 'a')));
  // A request the host cannot read is still answered when it names its id.
  EXPECT_EQ(LeadingId("17\tBOGUS\tp"), 17u);
  EXPECT_EQ(LeadingId("1 7\tQUIT"), 0u);
  EXPECT_EQ(LeadingId(""), 0u);
}

TEST(HostProtocolTest, ALineThatIsNotAnAnswerExactlyIsNone) {
  const char* const notAnswers[] = {
      "@@TREL OK", "@@TREL 3 OK",  // the old form
      "@@TREL\t3\tOK\tmore",
      // truncated at any point
      "@@TREL\t3\tER", "@@TREL\t3\tERR", "@@TREL\t3\tERR\t4", "@@TREL\t3\t", "@@TREL\t3", "@@TREL\t",
      "@@TREL\t\tOK", "@@TREL\t0\tOK", "@@TREL\t3\tERR\t0\tzero is OK, not an error", "@@TREL\t3\tERR\t-4\tx",
      "@@TREL\t3\tERR\t2147483648\tx", "@@TREL\t3\tERR\t4\tbad escape %", "@@TREL\t3\tERR\t4\ttwo\ttexts",
      "@@trel\t3\tOK", "chatter",
  };
  for (const char* line : notAnswers) EXPECT_FALSE(ParseAnswer(line)) << line;
}

TEST(HostProtocolTest, AnAnswerAfterOutputWithoutALineEndIsStillFound) {
  EXPECT_EQ(ParseAnswer("progress 50%@@TREL\t3\tOK")->id, 3u);
  // Printed text that looks like an answer before the real one does not hide it.
  EXPECT_EQ(ParseAnswer("@@TREL\t1\tOK@@TREL\t3\tERR\t5\tcancelled")->code, 5);
}

TEST(HostProtocolTest, TheReaderTakesOnlyTheAnswerItWaitsFor) {
  AnswerReader reader;
  // Stray output, an answer to a request given up on, stray output without a
  // line end, then the answer waited for and the start of something else.
  reader.Feed("plugin says hello\n");
  reader.Feed(FormatAnswer({4, static_cast<int>(HostError::Crashed), "late"}));
  reader.Feed("no line end, and @@TREL\t5\tOK looks like one");
  EXPECT_FALSE(reader.Take(5)) << "the line is not finished";
  reader.Feed(FormatAnswer({5, static_cast<int>(HostError::Cancelled), "line\nin\tthe text"}));
  reader.Feed("@@TREL\t6\t");
  const auto got = reader.Take(5);
  ASSERT_TRUE(got);
  EXPECT_EQ(got->code, static_cast<int>(HostError::Cancelled));
  EXPECT_EQ(got->text, "line\nin\tthe text");
  EXPECT_FALSE(reader.Take(5)) << "an answer is taken once";
  // What follows the answer waits for the next request.
  reader.Feed("OK\n");
  EXPECT_EQ(reader.Take(6), (Answer{6, 0, ""}));
  EXPECT_EQ(reader.pending(), 0u);
}

TEST(HostProtocolTest, TheReaderFindsAnAnswerCutIntoSingleBytes) {
  AnswerReader reader;
  const std::string stream =
      "junk" + FormatAnswer({1, 0, ""}) + "more junk" + FormatAnswer({2, 3, "no entry point"}) + "tail";
  int found = 0;
  for (char c : stream) {
    reader.Feed(std::string(1, c));
    if (const auto a = reader.Take(2)) {
      EXPECT_EQ(a->text, "no entry point");
      ++found;
    }
  }
  EXPECT_EQ(found, 1) << "the answer with id 1 was passed by, the one with id 2 found once";
}

TEST(HostProtocolTest, OutputWithoutAnyLineEndDoesNotGrowTheReaderWithoutBound) {
  AnswerReader reader;
  const std::string chunk(4096, 'x');
  for (int i = 0; i < 64; ++i) {
    reader.Feed(chunk);
    EXPECT_FALSE(reader.Take(1));
  }
  EXPECT_LE(reader.pending(), kMaxLine);
  reader.Feed(FormatAnswer({1, 0, ""}));
  EXPECT_EQ(reader.Take(1), (Answer{1, 0, ""}));
}

}  // namespace
}  // namespace trel::hostprotocol
