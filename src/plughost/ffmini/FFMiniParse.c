/* The compact interpreter's lexer and parser, with the engine's grammar and
   limits: code in, a tree of FFMiniCodes.h out. */
#include "FFMini.h"
#include "FFMiniCodes.h"

/* ---- lexer ----------------------------------------------------------------- */

/* Tokens; the binary operators in the order of their node codes. */
enum {
  tEnd, tNumber, tName, tLParen, tRParen, tComma, tQuestion, tColon, tBang, tTilde,
  tStar, tSlash, tPercent, tPlus, tMinus, tShl, tShr, tLt, tLe, tGt, tGe, tEq, tNe,
  tAmp, tCaret, tBar, tAndAnd, tOrOr
};

/* Precedence of each binary operator, 0 loosest (||) to 7 (* / %): the
   original's, where comparisons bind tighter than shifts and ^ | share a level. */
static const uint8_t kLevel[] = {7, 7, 7, 6, 6, 4, 4, 5, 5, 5, 5, 5, 5, 3, 2, 2, 1, 0};
enum { kTightestLevel = 7 };

enum { kMaxNesting = 256, kMaxHeight = 1000 };

/* Every symbol name, aliases included, 0-separated; kNameMeaning says what
   each stands for: a symbol code, or kNamed0 + k for the constants 0, 255, 1024, 1. */
static const char kNames[] =
    "x\0y\0X\0Y\0z\0p\0Z\0r\0g\0b\0a\0c\0i\0u\0v\0d\0m\0M\0"
    "D\0R\0G\0B\0A\0C\0I\0U\0V\0"
    "rmin\0gmin\0bmin\0amin\0cmin\0imin\0umin\0vmin\0xmin\0ymin\0zmin\0mmin\0pmin\0dmin\0tmin\0"
    "rmax\0gmax\0bmax\0amax\0cmax\0imax\0umax\0vmax\0xmax\0ymax\0zmax\0pmax\0mmax\0dmax\0"
    "t\0tmax\0total\0"
    "r0\0g0\0b0\0a0\0c0\0i0\0u0\0v0\0d0\0m0\0r1\0g1\0b1\0a1\0c1\0i1\0u1\0v1\0d1\0m1\0";
enum { kNamed0 = 32, kNamed255, kNamed1024, kNamed1 };
static const uint8_t kNameMeaning[] = {
    sx, sy, sX, sY, sz, sz, sZ, sr, sg, sb, sa, sc, si, su, sv, sd, sm, sM,
    kNamed1024, kNamed255, kNamed255, kNamed255, kNamed255, kNamed255, kNamed255, kNamed255, kNamed255,
    kNamed0, kNamed0, kNamed0, kNamed0, kNamed0, kNamed0, kNamed0, kNamed0, kNamed0, kNamed0, kNamed0,
    kNamed0, kNamed0, kNamed0, kNamed0,
    kNamed255, kNamed255, kNamed255, kNamed255, kNamed255, kNamed255, kNamed255, kNamed255, sX, sY, sZ, sZ,
    sM, kNamed1024,
    kNamed0, kNamed1, kNamed1,
    sr, sg, sb, sa, sc, si, su, sv, sd, sm, sr, sg, sb, sa, sc, si, su, sv, sd, sm};

static const char kFunctions[] =
    "src\0src0\0src1\0rad\0rad0\0rad1\0cnv\0cnv0\0cnv1\0ctl\0val\0map\0min\0max\0abs\0add\0sub\0dif\0"
    "mix\0scl\0sqr\0sqrt\0sin\0cos\0tan\0r2x\0r2y\0c2d\0c2m\0rnd\0rst\0get\0put\0";
static const uint8_t kFunctionCode[] = {fSrc, fSrc, fSrc, fRad, fRad, fRad, fCnv, fCnv, fCnv, fCtl, fVal,
                                        fMap, fMin, fMax, fAbs, fAdd, fSub, fDif, fMix, fScl, fSqr, fSqr,
                                        fSin, fCos, fTan, fR2x, fR2y, fC2d, fC2m, fRnd, fRst, fGet, fPut};
static const uint8_t kArity[] = {3, 3, 10, 1, 3, 2, 2, 2, 1, 3, 3, 2, 4, 5, 1, 1, 1, 1, 2, 2, 2, 2, 2, 1, 1, 2};

/* Index of the word src[0..len) in a 0-separated list, or -1. */
static int Find(const char* list, const char* src, int len) {
  for (int index = 0; *list; ++index) {
    int k = 0;
    while (k < len && list[k] == src[k]) ++k;
    if (k == len && list[k] == 0) return index;
    while (*list) ++list;
    ++list;
  }
  return -1;
}

static int IsDigit(char c) { return c >= '0' && c <= '9'; }
static int IsNameStart(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
static int IsHexDigit(char c) { return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

typedef struct Parser {
  const char* src;
  int len, pos;
  int tok, tokPos, tokLen;
  int32_t tokValue;
  int depth, failed, errorPos;
  FFMiniTree* t;
} Parser;

static int Fail(Parser* p, int pos) {
  if (!p->failed) {
    p->failed = 1;
    p->errorPos = pos;
  }
  return 0;
}

static int LexNumber(Parser* p, int at) {
  const char* s = p->src;
  int e = at, tooBig = 0;
  uint32_t v = 0;
  const int hex = s[at] == '0' && at + 1 < p->len && (s[at + 1] == 'x' || s[at + 1] == 'X');
  if (hex) {
    e = at + 2;
    if (e >= p->len || !IsHexDigit(s[e])) return Fail(p, at);
  }
  /* Past 2^31 - 1 the value sticks there; it is an error anyway. */
  while (e < p->len && (hex ? IsHexDigit(s[e]) : IsDigit(s[e]))) {
    const char c = s[e++];
    const uint32_t digit = IsDigit(c) ? (uint32_t)(c - '0') : (uint32_t)((c | 0x20) - 'a' + 10);
    const uint64_t next = (uint64_t)v * (hex ? 16u : 10u) + digit;
    if (next > 0x7FFFFFFFu) {
      tooBig = 1;
      v = 0x80000000u;
    } else {
      v = (uint32_t)next;
    }
  }
  if (e < p->len && (IsNameStart(s[e]) || IsDigit(s[e]))) return Fail(p, e);
  if (tooBig) return Fail(p, at);
  p->tok = tNumber;
  p->tokLen = e - at;
  p->tokValue = (int32_t)v;
  p->pos = e;
  return 1;
}

static int Advance(Parser* p) {
  const char* s = p->src;
  int at = p->pos;
  for (;;) {
    while (at < p->len && (s[at] == ' ' || s[at] == '\t' || s[at] == '\r' || s[at] == '\n')) ++at;
    if (at + 1 < p->len && s[at] == '/' && s[at + 1] == '/') {
      while (at < p->len && s[at] != '\n') ++at;
      continue;
    }
    break;
  }
  p->tokPos = at;
  p->tokValue = 0;
  if (at >= p->len) {
    p->tok = tEnd;
    p->tokLen = 0;
    p->pos = at;
    return 1;
  }
  const char c = s[at], next = at + 1 < p->len ? s[at + 1] : 0;
  if (IsDigit(c)) return LexNumber(p, at);
  if (IsNameStart(c)) {
    int e = at;
    while (e < p->len && (IsNameStart(s[e]) || IsDigit(s[e]))) ++e;
    p->tok = tName;
    p->tokLen = e - at;
    p->pos = e;
    return 1;
  }
  int k = -1, len = 1;
  switch (c) {
    case '(': k = tLParen; break;
    case ')': k = tRParen; break;
    case ',': k = tComma; break;
    case '?': k = tQuestion; break;
    case ':': k = tColon; break;
    case '+': k = tPlus; break;
    case '-': k = tMinus; break;
    case '*': k = tStar; break;
    case '/': k = tSlash; break;
    case '%': k = tPercent; break;
    case '^': k = tCaret; break;
    case '~': k = tTilde; break;
    case '<': k = next == '<' ? tShl : next == '=' ? tLe : tLt; break;
    case '>': k = next == '>' ? tShr : next == '=' ? tGe : tGt; break;
    case '=': k = next == '=' ? tEq : -1; break;
    case '!': k = next == '=' ? tNe : tBang; break;
    case '&': k = next == '&' ? tAndAnd : tAmp; break;
    case '|': k = next == '|' ? tOrOr : tBar; break;
    default: break;
  }
  if (k < 0) return Fail(p, at);
  if (k == tShl || k == tLe || k == tShr || k == tGe || k == tEq || k == tNe || k == tAndAnd || k == tOrOr) len = 2;
  p->tok = k;
  p->tokLen = len;
  p->pos = at + len;
  return 1;
}

/* A new node over `n` kids; the tree's height is limited like the engine's. */
static int Make(Parser* p, int kind, int code, int pos, const int* kids, int n, int* out) {
  FFMiniTree* t = p->t;
  if (t->nodeCount >= kFFMiniMaxNodes || t->kidCount + n > kFFMiniMaxNodes) return Fail(p, pos);
  FFMiniNode* node = &t->node[t->nodeCount];
  int height = 0;
  for (int k = 0; k < n; ++k) {
    t->kid[t->kidCount + k] = (uint16_t)kids[k];
    if (t->node[kids[k]].height > height) height = t->node[kids[k]].height;
  }
  if (height + 1 > kMaxHeight) return Fail(p, pos);
  node->kind = (uint8_t)kind;
  node->code = (uint8_t)code;
  node->kidCount = (uint8_t)n;
  node->height = (uint16_t)(height + 1);
  node->firstKid = (uint16_t)t->kidCount;
  node->value = 0;
  t->kidCount += n;
  *out = t->nodeCount++;
  return 1;
}

static int MakeConst(Parser* p, int32_t value, int pos, int* out) {
  if (!Make(p, kConst, 0, pos, 0, 0, out)) return 0;
  p->t->node[*out].value = value;
  return 1;
}

static int Enter(Parser* p) { return p->depth >= kMaxNesting ? Fail(p, p->tokPos) : 1; }

static int ParseTernary(Parser* p, int* out);

/* sequence := ternary { ',' ternary } */
static int ParseSequence(Parser* p, int* out) {
  if (!ParseTernary(p, out)) return 0;
  while (p->tok == tComma) {
    const int pos = p->tokPos;
    int kids[2] = {*out, 0};
    if (!Advance(p) || !ParseTernary(p, &kids[1]) || !Make(p, kSeq, 0, pos, kids, 2, out)) return 0;
  }
  return 1;
}

static int ParseUnary(Parser* p, int* out);

static int ParseBinary(Parser* p, int level, int* out) {
  if (level > kTightestLevel) return ParseUnary(p, out);
  if (!ParseBinary(p, level + 1, out)) return 0;
  while (p->tok >= tStar && kLevel[p->tok - tStar] == level) {
    const int op = p->tok - tStar, pos = p->tokPos;
    int kids[2] = {*out, 0};
    if (!Advance(p) || !ParseBinary(p, level + 1, &kids[1]) || !Make(p, kBinary, op, pos, kids, 2, out))
      return 0;
  }
  return 1;
}

/* ternary := binary [ '?' sequence ':' ternary ] */
static int ParseTernary(Parser* p, int* out) {
  if (!Enter(p)) return 0;
  ++p->depth;
  int ok = ParseBinary(p, 0, out);
  if (ok && p->tok == tQuestion) {
    const int pos = p->tokPos;
    int kids[3] = {*out, 0, 0};
    ok = Advance(p) && ParseSequence(p, &kids[1]) && (p->tok == tColon || Fail(p, p->tokPos)) && Advance(p) &&
         ParseTernary(p, &kids[2]) && Make(p, kCond, 0, pos, kids, 3, out);
  }
  --p->depth;
  return ok;
}

static int ParseCall(Parser* p, int fn, int namePos, int* out) {
  if (!Advance(p)) return 0; /* the '(' */
  int kids[10], n = 0;
  if (p->tok != tRParen) {
    for (;;) {
      int arg;
      if (!ParseTernary(p, &arg)) return 0;
      if (n < 10) kids[n] = arg;
      ++n;
      if (p->tok != tComma) break;
      if (!Advance(p)) return 0;
    }
  }
  if (p->tok != tRParen) return Fail(p, p->tokPos);
  if (n != kArity[fn]) return Fail(p, namePos);
  return Advance(p) && Make(p, kCall, fn, namePos, kids, n, out);
}

static int ParseName(Parser* p, int* out) {
  const char* name = p->src + p->tokPos;
  const int len = p->tokLen, pos = p->tokPos;
  if (!Advance(p)) return 0;
  const int fn = Find(kFunctions, name, len);
  if (p->tok == tLParen) return fn < 0 ? Fail(p, pos) : ParseCall(p, kFunctionCode[fn], pos, out);
  const int sym = Find(kNames, name, len);
  if (sym < 0) return Fail(p, pos);
  const int meaning = kNameMeaning[sym];
  if (meaning >= kNamed0)
    return MakeConst(p, meaning == kNamed0 ? 0 : meaning == kNamed255 ? 255 : meaning == kNamed1 ? 1 : 1024, pos,
                     out);
  return Make(p, kSym, meaning, pos, 0, 0, out);
}

static int ParseUnary(Parser* p, int* out) {
  const int t = p->tok;
  if (t != tMinus && t != tPlus && t != tBang && t != tTilde) {
    const int pos = p->tokPos;
    switch (t) {
      case tNumber: {
        const int32_t v = p->tokValue;
        return Advance(p) && MakeConst(p, v, pos, out);
      }
      case tLParen:
        return Advance(p) && ParseSequence(p, out) && (p->tok == tRParen || Fail(p, p->tokPos)) && Advance(p);
      case tName: return ParseName(p, out);
      default: return Fail(p, pos);
    }
  }
  if (!Enter(p)) return 0;
  ++p->depth;
  const int pos = p->tokPos;
  int operand = 0;
  int ok = Advance(p) && ParseUnary(p, &operand);
  if (ok && t == tPlus) *out = operand;
  else if (ok) ok = Make(p, kUnary, t == tMinus ? uNeg : t == tBang ? uNot : uBitNot, pos, &operand, 1, out);
  --p->depth;
  return ok;
}

static int ParseExpression(FFMiniTree* t, const char* code, int* errorPos) {
  Parser p = {0};
  p.src = code;
  while (p.len < kFFMiniCodeSize && code[p.len]) ++p.len;
  p.t = t;
  t->nodeCount = t->kidCount = t->root = 0;
  int ok = Advance(&p);
  if (ok && p.tok == tEnd) ok = Fail(&p, p.tokPos);
  ok = ok && ParseSequence(&p, &t->root) && (p.tok == tEnd || Fail(&p, p.tokPos));
  *errorPos = p.errorPos;
  return ok;
}

int FFMiniCompile(FFMini* m, const char* const code[4]) {
  FFMiniGetTables();
  m->errorChannel = -1;
  m->errorPosition = 0;
  for (int z = 0; z < 4; ++z) {
    int pos = 0;
    if (!code[z] || !ParseExpression(&m->tree[z], code[z], &pos)) {
      m->errorChannel = z;
      m->errorPosition = pos;
      return 0;
    }
  }
  return 1;
}
