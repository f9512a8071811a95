// The plugin host's channel: request lines as the host reads them, answer
// lines and a stream of output as the client reads them. Whatever parses must
// come back unchanged through its formatter. The first byte picks the reader;
// for the stream it also cuts the input into reads of 1 to 64 bytes.
#include <cstdlib>
#include <string>

#include "FuzzSupport.h"
#include "hostprotocol/HostProtocol.h"

namespace {

namespace hp = trel::hostprotocol;

std::string Body(std::string line) {
  if (!line.empty() && line.front() == '\n') line.erase(0, 1);
  if (!line.empty() && line.back() == '\n') line.pop_back();
  return line;
}

void Request(std::string_view line) {
  hp::LeadingId(line);
  const auto request = hp::ParseRequest(line);
  if (!request) return;
  const std::string again = hp::FormatRequest(*request);
  if (hp::ParseRequest(Body(again)) != request) std::abort();
}

void Answer(std::string_view line) {
  const auto answer = hp::ParseAnswer(line);
  if (!answer) return;
  const std::string again = hp::FormatAnswer(*answer);
  if (hp::ParseAnswer(Body(again)) != answer) std::abort();
}

void Stream(trel::fuzz::Input& in, uint8_t cut) {
  hp::AnswerReader reader;
  const uint32_t id = 1 + cut % 4;
  std::string_view rest = in.Rest();
  const size_t step = 1 + cut % 64;
  while (!rest.empty()) {
    const size_t n = rest.size() < step ? rest.size() : step;
    reader.Feed(rest.substr(0, n));
    rest.remove_prefix(n);
    if (const auto a = reader.Take(id); a && a->id != id) std::abort();
    if (reader.pending() > 2 * hp::kMaxLine + 64) std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  trel::fuzz::Input in(data, size);
  const uint8_t choice = in.Byte();
  switch (choice % 4) {
    case 0: Request(in.Rest()); break;
    case 1: Answer(in.Rest()); break;
    case 2: Stream(in, in.Byte()); break;
    default: {
      const std::string field(in.Rest());
      if (hp::Unescape(hp::Escape(field)) != field) std::abort();
      hp::Unescape(field);
    }
  }
  return 0;
}
