#include "host/ff/FFParser.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>

namespace trel::ff {

namespace {

enum class Tok : uint8_t {
  End, Number, Name, LParen, RParen, Comma, Question, Colon,
  Plus, Minus, Star, Slash, Percent, Shl, Shr, Lt, Le, Gt, Ge, Eq, Ne,
  Amp, Caret, Bar, AndAnd, OrOr, Bang, Tilde, Bad
};

struct Token {
  Tok kind = Tok::End;
  size_t pos = 0;
  size_t len = 0;
  int32_t value = 0;
};

struct NameEntry {
  std::string_view name;
  bool isConst;  // a fixed number rather than a pixel symbol
  int32_t value;
  Sym sym;
};

// Every symbol name the language knows, aliases included, with what it means.
const NameEntry kNames[] = {
    {"x", false, 0, Sym::x},       {"y", false, 0, Sym::y},       {"X", false, 0, Sym::X},
    {"Y", false, 0, Sym::Y},       {"z", false, 0, Sym::z},       {"p", false, 0, Sym::z},
    {"Z", false, 0, Sym::Z},       {"r", false, 0, Sym::r},       {"g", false, 0, Sym::g},
    {"b", false, 0, Sym::b},       {"a", false, 0, Sym::a},       {"c", false, 0, Sym::c},
    {"i", false, 0, Sym::i},       {"u", false, 0, Sym::u},       {"v", false, 0, Sym::v},
    {"d", false, 0, Sym::d},       {"m", false, 0, Sym::m},       {"M", false, 0, Sym::M},
    {"D", true, 1024, Sym::x},     {"R", true, 255, Sym::x},      {"G", true, 255, Sym::x},
    {"B", true, 255, Sym::x},      {"A", true, 255, Sym::x},      {"C", true, 255, Sym::x},
    {"I", true, 255, Sym::x},      {"U", true, 255, Sym::x},      {"V", true, 255, Sym::x},
    {"rmin", true, 0, Sym::x},     {"gmin", true, 0, Sym::x},     {"bmin", true, 0, Sym::x},
    {"amin", true, 0, Sym::x},     {"cmin", true, 0, Sym::x},     {"imin", true, 0, Sym::x},
    {"umin", true, 0, Sym::x},     {"vmin", true, 0, Sym::x},     {"xmin", true, 0, Sym::x},
    {"ymin", true, 0, Sym::x},     {"zmin", true, 0, Sym::x},     {"mmin", true, 0, Sym::x},
    {"pmin", true, 0, Sym::x},     {"dmin", true, 0, Sym::x},     {"tmin", true, 0, Sym::x},
    {"rmax", true, 255, Sym::x},   {"gmax", true, 255, Sym::x},   {"bmax", true, 255, Sym::x},
    {"amax", true, 255, Sym::x},   {"cmax", true, 255, Sym::x},   {"imax", true, 255, Sym::x},
    {"umax", true, 255, Sym::x},   {"vmax", true, 255, Sym::x},   {"xmax", false, 0, Sym::X},
    {"ymax", false, 0, Sym::Y},    {"zmax", false, 0, Sym::Z},    {"pmax", false, 0, Sym::Z},
    {"mmax", false, 0, Sym::M},    {"dmax", true, 1024, Sym::x},  {"t", true, 0, Sym::x},
    {"tmax", true, 1, Sym::x},     {"total", true, 1, Sym::x},  {"r0", false, 0, Sym::r},
    {"g0", false, 0, Sym::g},      {"b0", false, 0, Sym::b},      {"a0", false, 0, Sym::a},
    {"c0", false, 0, Sym::c},      {"i0", false, 0, Sym::i},      {"u0", false, 0, Sym::u},
    {"v0", false, 0, Sym::v},      {"d0", false, 0, Sym::d},      {"m0", false, 0, Sym::m},
    {"r1", false, 0, Sym::r},      {"g1", false, 0, Sym::g},      {"b1", false, 0, Sym::b},
    {"a1", false, 0, Sym::a},      {"c1", false, 0, Sym::c},      {"i1", false, 0, Sym::i},
    {"u1", false, 0, Sym::u},      {"v1", false, 0, Sym::v},      {"d1", false, 0, Sym::d},
    {"m1", false, 0, Sym::m},
};

// Where Trel departs from genuine Filter Factory 3.0 on purpose. Everything
// else, every function below included, gives the original's values (held
// against what the original computed in the corpus test).
//
//   What                           Original            Trel, and why
//   `sqrt(x)`                      unknown name: the   the same as `sqr`; filters written for
//                                  channel gives 0     other hosts use it. Compat warning.
//   a comma inside brackets or an  refused: the        a sequence, the right side's value, as
//   argument, `(x, 2)`,            channel gives 0     at the top of a code; filters rely on
//   `max((1,9), 3)`                                    it to run put() first. Compat warning.
//   `INT_MIN / -1`, `INT_MIN % -1` crashes             INT_MIN and 0: no run may fault.
//   a quotient of mix or scl       crashes             wraps to 32 bits, for the same reason.
//   beyond 32 bits
//   `cnv` at the picture's border  reads memory        repeats the edge pixels.
//                                  beyond the picture
//   `rad` of a channel the         reads memory        0, as `src` gives (measured) there.
//   picture does not have          beyond the picture
//
// A compat warning tells the user where a real host would refuse the code.
struct FnEntry {
  std::string_view name;
  Fn fn;
  int arity;
  bool original = true;  // false: Trel's own name, see kFunctions
};

const FnEntry kFunctions[] = {
    {"src", Fn::Src, 3},  {"src0", Fn::Src, 3}, {"src1", Fn::Src, 3},  {"rad", Fn::Rad, 3},
    {"rad0", Fn::Rad, 3}, {"rad1", Fn::Rad, 3}, {"cnv", Fn::Cnv, 10},  {"cnv0", Fn::Cnv, 10},
    {"cnv1", Fn::Cnv, 10}, {"ctl", Fn::Ctl, 1}, {"val", Fn::Val, 3},   {"map", Fn::Map, 2},
    {"min", Fn::Min, 2},  {"max", Fn::Max, 2},  {"abs", Fn::Abs, 1},   {"add", Fn::AddF, 3},
    {"sub", Fn::SubF, 3}, {"dif", Fn::Dif, 2},  {"mix", Fn::Mix, 4},   {"scl", Fn::Scl, 5},
    {"sqr", Fn::Sqr, 1},  {"sqrt", Fn::Sqr, 1, false}, {"sin", Fn::Sin, 1},   {"cos", Fn::Cos, 1},
    {"tan", Fn::Tan, 1},  {"r2x", Fn::R2x, 2},  {"r2y", Fn::R2y, 2},   {"c2d", Fn::C2d, 2},
    {"c2m", Fn::C2m, 2},  {"rnd", Fn::Rnd, 2},  {"rst", Fn::Rst, 1},   {"get", Fn::Get, 1},
    {"put", Fn::Put, 2},
};

// Built by appending: GCC 12 warns falsely about `"'" + std::string(...)` at -O3.
std::string Quoted(std::string_view text) {
  std::string q;
  q.reserve(text.size() + 2);
  q += '\'';
  q.append(text);
  q += '\'';
  return q;
}

bool IsNameStart(char ch) {
  return (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') || ch == '_';
}
bool IsDigit(char ch) { return ch >= '0' && ch <= '9'; }
bool IsHexDigit(char ch) {
  return IsDigit(ch) || (ch >= 'a' && ch <= 'f') || (ch >= 'A' && ch <= 'F');
}

class Parser {
 public:
  Parser(std::string_view src, Ast& ast, ParseError& err, std::vector<CompatNote>* compat)
      : src_(src), ast_(ast), err_(err), compat_(compat) {}

  bool Run() {
    ast_.nodes.clear();
    ast_.kids.clear();
    if (!Advance()) return false;
    if (tok_.kind == Tok::End) return Fail(tok_.pos, "The expression is empty.");
    uint32_t root;
    if (!ParseSequence(root)) return false;
    if (tok_.kind != Tok::End)
      return Fail(tok_.pos, "Unexpected " + Describe(tok_) + " after the end of the expression.");
    ast_.root = root;
    return true;
  }

 private:
  void Note(size_t pos, size_t len, std::string message) {
    if (compat_) compat_->push_back(CompatNote{pos, len, std::move(message)});
  }

  bool Fail(size_t pos, std::string message) {
    if (!failed_) {
      err_.position = pos;
      err_.message = std::move(message);
      failed_ = true;
    }
    return false;
  }

  std::string Describe(const Token& t) const {
    if (t.kind == Tok::End) return "end of the expression";
    return Quoted(src_.substr(t.pos, t.len));
  }

  // --- tokens -------------------------------------------------------------

  bool Advance() {
    size_t p = pos_;
    for (;;) {
      while (p < src_.size() &&
             (src_[p] == ' ' || src_[p] == '\t' || src_[p] == '\r' || src_[p] == '\n'))
        ++p;
      if (p + 1 < src_.size() && src_[p] == '/' && src_[p + 1] == '/') {
        while (p < src_.size() && src_[p] != '\n') ++p;
        continue;
      }
      break;
    }
    tok_ = Token{};
    tok_.pos = p;
    if (p >= src_.size()) {
      tok_.kind = Tok::End;
      pos_ = p;
      return true;
    }
    char ch = src_[p];
    if (IsDigit(ch)) return LexNumber(p);
    if (IsNameStart(ch)) {
      size_t e = p;
      while (e < src_.size() && (IsNameStart(src_[e]) || IsDigit(src_[e]))) ++e;
      tok_.kind = Tok::Name;
      tok_.len = e - p;
      pos_ = e;
      return true;
    }
    auto two = [&](char second) { return p + 1 < src_.size() && src_[p + 1] == second; };
    Tok k = Tok::Bad;
    size_t len = 1;
    switch (ch) {
      case '(': k = Tok::LParen; break;
      case ')': k = Tok::RParen; break;
      case ',': k = Tok::Comma; break;
      case '?': k = Tok::Question; break;
      case ':': k = Tok::Colon; break;
      case '+': k = Tok::Plus; break;
      case '-': k = Tok::Minus; break;
      case '*': k = Tok::Star; break;
      case '/': k = Tok::Slash; break;
      case '%': k = Tok::Percent; break;
      case '^': k = Tok::Caret; break;
      case '~': k = Tok::Tilde; break;
      case '<':
        if (two('<')) k = Tok::Shl, len = 2;
        else if (two('=')) k = Tok::Le, len = 2;
        else k = Tok::Lt;
        break;
      case '>':
        if (two('>')) k = Tok::Shr, len = 2;
        else if (two('=')) k = Tok::Ge, len = 2;
        else k = Tok::Gt;
        break;
      case '=':
        if (two('=')) k = Tok::Eq, len = 2;
        break;
      case '!':
        if (two('=')) k = Tok::Ne, len = 2;
        else k = Tok::Bang;
        break;
      case '&':
        if (two('&')) k = Tok::AndAnd, len = 2;
        else k = Tok::Amp;
        break;
      case '|':
        if (two('|')) k = Tok::OrOr, len = 2;
        else k = Tok::Bar;
        break;
      default: break;
    }
    if (k == Tok::Bad) {
      if (ch == '=') return Fail(p, "'=' is not an operator here; use '==' to compare.");
      unsigned char u = static_cast<unsigned char>(ch);
      if (u < 32 || u > 126) return Fail(p, "Unexpected character (code " + std::to_string(u) + ").");
      return Fail(p, std::string("Unexpected character '") + ch + "'.");
    }
    tok_.kind = k;
    tok_.len = len;
    pos_ = p + len;
    return true;
  }

  bool LexNumber(size_t p) {
    size_t e = p;
    uint64_t v = 0;
    bool tooBig = false;
    if (src_[p] == '0' && p + 1 < src_.size() && (src_[p + 1] == 'x' || src_[p + 1] == 'X')) {
      e = p + 2;
      if (e >= src_.size() || !IsHexDigit(src_[e]))
        return Fail(p, "A hexadecimal number needs digits after '0x'.");
      while (e < src_.size() && IsHexDigit(src_[e])) {
        char h = src_[e];
        int d = IsDigit(h) ? h - '0' : (h | 0x20) - 'a' + 10;
        v = v * 16 + uint64_t(d);
        if (v > 0x7FFFFFFFu) tooBig = true, v = 0x80000000u;
        ++e;
      }
    } else {
      while (e < src_.size() && IsDigit(src_[e])) {
        v = v * 10 + uint64_t(src_[e] - '0');
        if (v > 0x7FFFFFFFu) tooBig = true, v = 0x80000000u;
        ++e;
      }
    }
    if (e < src_.size() && (IsNameStart(src_[e]) || IsDigit(src_[e])))
      return Fail(e, "A number may not run into letters.");
    if (tooBig) return Fail(p, "The number " + std::string(src_.substr(p, e - p)) +
                                   " is too large; the largest is 2147483647.");
    tok_.kind = Tok::Number;
    tok_.len = e - p;
    tok_.value = static_cast<int32_t>(v);
    pos_ = e;
    return true;
  }

  // --- tree ---------------------------------------------------------------

  bool Make(NodeKind kind, uint8_t code, size_t pos, std::initializer_list<uint32_t> kids,
            uint32_t& out) {
    return MakeN(kind, code, pos, kids.begin(), kids.size(), out);
  }

  bool MakeN(NodeKind kind, uint8_t code, size_t pos, const uint32_t* kids, size_t n,
             uint32_t& out) {
    Node node;
    node.kind = kind;
    node.code = code;
    node.pos = static_cast<uint32_t>(pos);
    node.kidCount = static_cast<uint16_t>(n);
    node.firstKid = static_cast<uint32_t>(ast_.kids.size());
    uint32_t h = 0;
    for (size_t k = 0; k < n; ++k) {
      ast_.kids.push_back(kids[k]);
      h = std::max(h, ast_.nodes[kids[k]].height);
    }
    node.height = h + 1;
    if (node.height > kMaxHeight)
      return Fail(pos, "The expression is too long a chain of operations to evaluate.");
    out = static_cast<uint32_t>(ast_.nodes.size());
    ast_.nodes.push_back(node);
    return true;
  }

  bool MakeConst(int32_t value, size_t pos, uint32_t& out) {
    if (!MakeN(NodeKind::Const, 0, pos, nullptr, 0, out)) return false;
    ast_.nodes[out].value = value;
    return true;
  }

  // --- grammar ------------------------------------------------------------

  struct DepthGuard {
    int& depth;
    explicit DepthGuard(int& d) : depth(d) { ++depth; }
    ~DepthGuard() { --depth; }
  };

  bool Enter() {
    if (depth_ >= kMaxNesting)
      return Fail(tok_.pos, "The expression is nested too deeply (more than " +
                                std::to_string(kMaxNesting) + " levels).");
    return true;
  }

  // sequence := ternary { ',' ternary }
  bool ParseSequence(uint32_t& out) {
    if (!ParseTernary(out)) return false;
    while (tok_.kind == Tok::Comma) {
      size_t pos = tok_.pos;
      if (!Advance()) return false;
      uint32_t rhs;
      if (!ParseTernary(rhs)) return false;
      if (!Make(NodeKind::Seq, 0, pos, {out, rhs}, out)) return false;
      if (brackets_ > 0)
        Note(pos, 1, "A comma inside brackets: a real Filter Factory host refuses this code.");
    }
    return true;
  }

  // ternary := logic [ '?' sequence ':' ternary ]
  bool ParseTernary(uint32_t& out) {
    if (!Enter()) return false;
    DepthGuard guard(depth_);
    if (!ParseBinary(0, out)) return false;
    if (tok_.kind != Tok::Question) return true;
    size_t pos = tok_.pos;
    if (!Advance()) return false;
    uint32_t yes, no;
    if (!ParseSequence(yes)) return false;
    if (tok_.kind != Tok::Colon)
      return Fail(tok_.pos, "Expected ':' of the '?' at position " + std::to_string(pos) +
                                ", found " + Describe(tok_) + ".");
    if (!Advance()) return false;
    if (!ParseTernary(no)) return false;
    return Make(NodeKind::Cond, 0, pos, {out, yes, no}, out);
  }

  // The binary levels from the loosest (||) to the tightest (* / %). They are
  // the original's, not C's: comparisons bind tighter than shifts, and ^ and |
  // share one level.
  static constexpr int kTightestLevel = 7;
  static bool BinaryAt(int level, Tok t, BinOp& op) {
    switch (level) {
      case 0:
        if (t == Tok::OrOr) return op = BinOp::LogOr, true;
        return false;
      case 1:
        if (t == Tok::AndAnd) return op = BinOp::LogAnd, true;
        return false;
      case 2:
        if (t == Tok::Caret) return op = BinOp::BitXor, true;
        if (t == Tok::Bar) return op = BinOp::BitOr, true;
        return false;
      case 3:
        if (t == Tok::Amp) return op = BinOp::BitAnd, true;
        return false;
      case 4:
        if (t == Tok::Shl) return op = BinOp::Shl, true;
        if (t == Tok::Shr) return op = BinOp::Shr, true;
        return false;
      case 5:
        if (t == Tok::Eq) return op = BinOp::Eq, true;
        if (t == Tok::Ne) return op = BinOp::Ne, true;
        if (t == Tok::Lt) return op = BinOp::Lt, true;
        if (t == Tok::Le) return op = BinOp::Le, true;
        if (t == Tok::Gt) return op = BinOp::Gt, true;
        if (t == Tok::Ge) return op = BinOp::Ge, true;
        return false;
      case 6:
        if (t == Tok::Plus) return op = BinOp::Add, true;
        if (t == Tok::Minus) return op = BinOp::Sub, true;
        return false;
      case 7:
        if (t == Tok::Star) return op = BinOp::Mul, true;
        if (t == Tok::Slash) return op = BinOp::Div, true;
        if (t == Tok::Percent) return op = BinOp::Mod, true;
        return false;
      default:
        return false;
    }
  }

  bool ParseBinary(int level, uint32_t& out) {
    if (level > kTightestLevel) return ParseUnary(out);
    if (!ParseBinary(level + 1, out)) return false;
    BinOp op;
    while (BinaryAt(level, tok_.kind, op)) {
      size_t pos = tok_.pos;
      if (!Advance()) return false;
      uint32_t rhs;
      if (!ParseBinary(level + 1, rhs)) return false;
      if (!Make(NodeKind::Binary, static_cast<uint8_t>(op), pos, {out, rhs}, out)) return false;
    }
    return true;
  }

  bool ParseUnary(uint32_t& out) {
    Tok t = tok_.kind;
    if (t != Tok::Minus && t != Tok::Plus && t != Tok::Bang && t != Tok::Tilde)
      return ParsePrimary(out);
    if (!Enter()) return false;
    DepthGuard guard(depth_);
    size_t pos = tok_.pos;
    if (!Advance()) return false;
    uint32_t operand;
    if (!ParseUnary(operand)) return false;
    if (t == Tok::Plus) {
      out = operand;
      return true;
    }
    UnOp op = t == Tok::Minus ? UnOp::Neg : (t == Tok::Bang ? UnOp::Not : UnOp::BitNot);
    return Make(NodeKind::Unary, static_cast<uint8_t>(op), pos, {operand}, out);
  }

  bool ParsePrimary(uint32_t& out) {
    Token t = tok_;
    switch (t.kind) {
      case Tok::Number:
        if (!Advance()) return false;
        return MakeConst(t.value, t.pos, out);
      case Tok::LParen: {
        if (!Advance()) return false;
        ++brackets_;
        if (!ParseSequence(out)) return false;
        --brackets_;
        if (tok_.kind != Tok::RParen)
          return Fail(tok_.pos, "Expected ')' to close the '(' at position " +
                                    std::to_string(t.pos) + ", found " + Describe(tok_) + ".");
        return Advance();
      }
      case Tok::Name:
        return ParseName(out);
      case Tok::End:
        return Fail(t.pos, "The expression ends where a value is expected.");
      default:
        return Fail(t.pos, "Expected a value, found " + Describe(t) + ".");
    }
  }

  bool ParseName(uint32_t& out) {
    Token t = tok_;
    std::string_view name = src_.substr(t.pos, t.len);
    if (!Advance()) return false;
    if (tok_.kind == Tok::LParen) {
      const FnEntry* fn = nullptr;
      for (const FnEntry& e : kFunctions)
        if (e.name == name) fn = &e;
      if (fn && !fn->original)
        Note(t.pos, t.len, Quoted(name) + " is Trel's own: a real Filter Factory host does not know it.");
      if (!fn) {
        for (const NameEntry& e : kNames)
          if (e.name == name)
            return Fail(t.pos, Quoted(name) + " is not a function.");
        return Fail(t.pos, "Unknown function '" + std::string(name) + "'.");
      }
      return ParseCall(*fn, t, out);
    }
    for (const NameEntry& e : kNames) {
      if (e.name != name) continue;
      if (e.isConst) return MakeConst(e.value, t.pos, out);
      return Make(NodeKind::Sym, static_cast<uint8_t>(e.sym), t.pos, {}, out);
    }
    for (const FnEntry& e : kFunctions)
      if (e.name == name)
        return Fail(t.pos, "The function '" + std::string(name) + "' needs its arguments in brackets.");
    return Fail(t.pos, "Unknown name '" + std::string(name) + "'.");
  }

  bool ParseCall(const FnEntry& fn, const Token& nameTok, uint32_t& out) {
    size_t open = tok_.pos;
    if (!Advance()) return false;
    uint32_t args[10];
    int n = 0;
    ++brackets_;
    if (tok_.kind != Tok::RParen) {
      for (;;) {
        uint32_t arg;
        if (!ParseTernary(arg)) return false;
        if (n < 10) args[n] = arg;
        ++n;
        if (tok_.kind == Tok::Comma) {
          if (!Advance()) return false;
          continue;
        }
        break;
      }
    }
    --brackets_;
    if (tok_.kind != Tok::RParen)
      return Fail(tok_.pos, "Expected ',' or ')' in the arguments of '" + std::string(fn.name) +
                                "' opened at position " + std::to_string(open) + ", found " +
                                Describe(tok_) + ".");
    if (n != fn.arity)
      return Fail(nameTok.pos, Quoted(fn.name) + " takes " + std::to_string(fn.arity) +
                                   (fn.arity == 1 ? " argument" : " arguments") + ", not " +
                                   std::to_string(n) + ".");
    if (!Advance()) return false;
    return MakeN(NodeKind::Call, static_cast<uint8_t>(fn.fn), nameTok.pos, args, size_t(n), out);
  }

  std::string_view src_;
  Ast& ast_;
  ParseError& err_;
  std::vector<CompatNote>* compat_;
  int brackets_ = 0;  // open brackets and argument lists around the token
  Token tok_;
  size_t pos_ = 0;
  int depth_ = 0;
  bool failed_ = false;
};

}  // namespace

bool ParseExpression(std::string_view code, Ast& out, ParseError& err, std::vector<CompatNote>* compat) {
  Parser p(code, out, err, compat);
  return p.Run();
}

}  // namespace trel::ff
