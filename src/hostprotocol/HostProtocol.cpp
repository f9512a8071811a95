#include "HostProtocol.h"

#include <vector>

namespace trel::hostprotocol {

namespace {

bool IsControl(unsigned char c) { return c < 0x20 || c == 0x7F; }

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

// A decimal number of at most ten digits, no sign, no leading zero, that fits
// in 32 bits; nothing otherwise.
std::optional<uint32_t> Number(std::string_view s) {
  if (s.empty() || s.size() > 10 || (s.size() > 1 && s[0] == '0')) return std::nullopt;
  uint64_t n = 0;
  for (char c : s) {
    if (c < '0' || c > '9') return std::nullopt;
    n = n * 10 + uint64_t(c - '0');
  }
  if (n > 0xFFFFFFFFu) return std::nullopt;
  return uint32_t(n);
}

std::string_view WithoutCarriageReturn(std::string_view line) {
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return line;
}

std::vector<std::string_view> SplitTabs(std::string_view line) {
  std::vector<std::string_view> parts;
  for (;;) {
    const size_t tab = line.find('\t');
    parts.push_back(line.substr(0, tab));
    if (tab == std::string_view::npos) return parts;
    line.remove_prefix(tab + 1);
  }
}

void AppendField(std::string& line, std::string_view field) {
  line += '\t';
  line += Escape(field);
}

}  // namespace

std::string Escape(std::string_view field) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string out;
  out.reserve(field.size());
  for (char ch : field) {
    const auto c = static_cast<unsigned char>(ch);
    if (IsControl(c) || c == '%') {
      out += '%';
      out += kHex[c >> 4];
      out += kHex[c & 15];
    } else {
      out += ch;
    }
  }
  return out;
}

std::optional<std::string> Unescape(std::string_view field) {
  std::string out;
  out.reserve(field.size());
  for (size_t i = 0; i < field.size(); ++i) {
    const char c = field[i];
    if (IsControl(static_cast<unsigned char>(c))) return std::nullopt;
    if (c != '%') {
      out += c;
      continue;
    }
    if (field.size() - i < 3) return std::nullopt;
    const int hi = HexValue(field[i + 1]), lo = HexValue(field[i + 2]);
    if (hi < 0 || lo < 0) return std::nullopt;
    out += static_cast<char>(hi << 4 | lo);
    i += 2;
  }
  return out;
}

std::string FormatRequest(const Request& r) {
  std::string line = std::to_string(r.id);
  switch (r.verb) {
    case Verb::Probe:
      line += "\tPROBE";
      AppendField(line, r.plugin);
      break;
    case Verb::Run:
      line += "\tRUN";
      AppendField(line, r.plugin);
      AppendField(line, r.input);
      AppendField(line, r.output);
      AppendField(line, r.params);
      line += r.dialog ? "\t1" : "\t0";
      break;
    case Verb::About:
      line += "\tABOUT";
      AppendField(line, r.plugin);
      break;
    case Verb::Quit: line += "\tQUIT"; break;
  }
  return line + '\n';
}

uint32_t LeadingId(std::string_view line) {
  const auto id = Number(line.substr(0, line.find('\t')));
  return id ? *id : 0;
}

std::optional<Request> ParseRequest(std::string_view line) {
  line = WithoutCarriageReturn(line);
  if (line.size() > kMaxLine) return std::nullopt;
  const std::vector<std::string_view> f = SplitTabs(line);
  Request r;
  const auto id = Number(f[0]);
  if (!id || *id == 0 || f.size() < 2) return std::nullopt;
  r.id = *id;
  // Every field but the id and the verb, decoded, in order.
  std::vector<std::string> args;
  for (size_t i = 2; i < f.size(); ++i) {
    auto field = Unescape(f[i]);
    if (!field) return std::nullopt;
    args.push_back(std::move(*field));
  }
  const std::string_view verb = f[1];
  if (verb == "PROBE" || verb == "ABOUT") {
    if (args.size() != 1) return std::nullopt;
    r.verb = verb == "PROBE" ? Verb::Probe : Verb::About;
    r.plugin = std::move(args[0]);
  } else if (verb == "RUN") {
    if (args.size() != 5 || (args[4] != "0" && args[4] != "1")) return std::nullopt;
    r.verb = Verb::Run;
    r.plugin = std::move(args[0]);
    r.input = std::move(args[1]);
    r.output = std::move(args[2]);
    r.params = std::move(args[3]);
    r.dialog = args[4] == "1";
  } else if (verb == "QUIT") {
    if (!args.empty()) return std::nullopt;
    r.verb = Verb::Quit;
  } else {
    return std::nullopt;
  }
  return r;
}

std::string FormatAnswer(const Answer& a) {
  std::string line = "\n";
  line += kAnswerPrefix;
  line += std::to_string(a.id);
  if (a.code == 0) return line + "\tOK\n";
  line += "\tERR\t" + std::to_string(a.code);
  AppendField(line, a.text);
  return line + '\n';
}

std::optional<Answer> ParseAnswer(std::string_view line) {
  line = WithoutCarriageReturn(line);
  const size_t at = line.rfind(kAnswerPrefix);
  if (at == std::string_view::npos) return std::nullopt;
  line.remove_prefix(at + kAnswerPrefix.size());
  if (line.size() > kMaxLine) return std::nullopt;
  const std::vector<std::string_view> f = SplitTabs(line);
  Answer a;
  const auto id = Number(f[0]);
  if (!id || *id == 0 || f.size() < 2) return std::nullopt;
  a.id = *id;
  if (f[1] == "OK") {
    if (f.size() != 2) return std::nullopt;
    return a;
  }
  if (f[1] != "ERR" || f.size() != 4) return std::nullopt;
  const auto code = Number(f[2]);
  if (!code || *code == 0 || *code > 0x7FFFFFFF) return std::nullopt;
  auto text = Unescape(f[3]);
  if (!text) return std::nullopt;
  a.code = int(*code);
  a.text = std::move(*text);
  return a;
}

void AnswerReader::Feed(std::string_view bytes) {
  pending_.append(bytes.data(), bytes.size());
  // Of a line still open only its end can become an answer.
  const size_t lineEnd = pending_.rfind('\n');
  const size_t open = lineEnd == std::string::npos ? 0 : lineEnd + 1;
  if (pending_.size() - open > kMaxLine) pending_.erase(open, pending_.size() - open - kMaxLine);
}

std::optional<Answer> AnswerReader::Take(uint32_t id) {
  size_t start = 0;
  std::optional<Answer> found;
  for (size_t nl; !found && (nl = pending_.find('\n', start)) != std::string::npos; start = nl + 1) {
    auto answer = ParseAnswer(std::string_view(pending_).substr(start, nl - start));
    if (answer && answer->id == id) found = std::move(answer);
  }
  pending_.erase(0, start);
  return found;
}

}  // namespace trel::hostprotocol
