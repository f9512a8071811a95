/* The compact interpreter's tree walker, with the engine's arithmetic; the
   parser is in FFMiniParse.c. See FFMini.h. */
#include "FFMini.h"
#include "FFMiniCodes.h"

/* ---- arithmetic ------------------------------------------------------------ */

/* Wrapping 32-bit operations: overflow is defined to wrap, as in the engine. */
static int32_t Add(int32_t a, int32_t b) { return (int32_t)((uint32_t)a + (uint32_t)b); }
static int32_t Sub(int32_t a, int32_t b) { return (int32_t)((uint32_t)a - (uint32_t)b); }
static int32_t Mul(int32_t a, int32_t b) { return (int32_t)((uint32_t)a * (uint32_t)b); }
static int32_t Neg(int32_t a) { return (int32_t)(0u - (uint32_t)a); }
static int32_t Abs(int32_t a) { return a < 0 ? Neg(a) : a; }
static int32_t Min(int32_t a, int32_t b) { return a < b ? a : b; }
static int32_t Max(int32_t a, int32_t b) { return a > b ? a : b; }

/* A zero divisor gives 0; -1 is a negation, so INT_MIN / -1 wraps. */
static int32_t Div(int32_t a, int32_t b) {
  if (b == 0) return 0;
  if (b == -1) return Neg(a);
  return a / b;
}
static int32_t Mod(int32_t a, int32_t b) {
  if (b == 0 || b == -1) return 0;
  return a % b;
}

/* a * b / d with the product in 64 bits, as the original's scl and mix
   compute it; the quotient wraps to 32 bits and a zero divisor gives 0. The
   division is long division by shifts: no 64-bit division routine. */
static int32_t MulDiv64(int32_t a, int32_t b, int32_t d) {
  if (d == 0) return 0;
  const int64_t p = (int64_t)a * (int64_t)b;
  const uint64_t n = p < 0 ? 0u - (uint64_t)p : (uint64_t)p;
  const uint64_t m = d < 0 ? 0u - (uint64_t)(int64_t)d : (uint64_t)d;
  uint64_t q = 0, r = 0;
  for (int bit = 63; bit >= 0; --bit) {
    r = r << 1 | ((n >> bit) & 1u);
    if (r >= m) {
      r -= m;
      q |= (uint64_t)1 << bit;
    }
  }
  if ((p < 0) != (d < 0)) q = 0u - q;
  return (int32_t)(uint32_t)q;
}

/* n / d for quotients below 2048, by shifts: no 64-bit division routine. */
static uint32_t SmallQuot(uint64_t n, uint64_t d) {
  uint32_t q = 0;
  for (int b = 11; b >= 0; --b)
    if ((d << b) <= n) {
      n -= d << b;
      q |= 1u << b;
    }
  return q;
}

/* A control is a slider's byte; anything else reads as the nearest, as in the engine. */
static int32_t CtlByte(const int32_t* ctl, int i) { return ctl[i] < 0 ? 0 : (ctl[i] > 255 ? 255 : ctl[i]); }

/* ---- tables ---------------------------------------------------------------- */

/* The cosine quarter wave and the arctangent table as second differences,
   two bits each (cosine: step change + 2, arctangent: + 1). The cosine's
   differences carry the hand-raised entries of the original table. */
static const unsigned char kCosSteps[64] = {
    0x5a, 0x69, 0x65, 0x26, 0xa3, 0x8c, 0x99, 0x65, 0x99, 0x59, 0x8d, 0x99, 0x5c, 0x69, 0x59, 0xca,
    0x68, 0x29, 0x9a, 0x65, 0x66, 0x66, 0x69, 0x99, 0x72, 0x99, 0x72, 0x69, 0x69, 0xcd, 0x5c, 0x5a,
    0x97, 0x66, 0xa6, 0x69, 0x5d, 0x6a, 0x5d, 0x97, 0x9a, 0x66, 0xd7, 0x99, 0x9a, 0x9a, 0x9d, 0x36,
    0x9b, 0x9a, 0x6a, 0x67, 0xe7, 0x6c, 0xaa, 0x9a, 0x9e, 0x6d, 0xa7, 0x67, 0xab, 0x6d, 0x77, 0x07};
static const unsigned char kAtanSteps[256] = {
    0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x85, 0x55, 0x55, 0x58, 0x85, 0x55, 0x58, 0x58,
    0x58, 0x18, 0x86, 0x21, 0x62, 0x88, 0x88, 0x48, 0x22, 0x49, 0x92, 0x94, 0x54, 0x49, 0x55, 0x55,
    0x55, 0x55, 0x58, 0x61, 0x61, 0x18, 0x22, 0x22, 0x22, 0x49, 0x49, 0x49, 0x55, 0x55, 0x55, 0x61,
    0x85, 0x61, 0x88, 0x88, 0x24, 0x49, 0x49, 0x55, 0x55, 0x55, 0x61, 0x18, 0x86, 0x88, 0x24, 0x25,
    0x55, 0x55, 0x55, 0x85, 0x61, 0x88, 0x88, 0x24, 0x25, 0x55, 0x55, 0x61, 0x61, 0x88, 0x88, 0x24,
    0x95, 0x54, 0x15, 0x56, 0x18, 0x22, 0x92, 0x94, 0x54, 0x55, 0x85, 0x85, 0x18, 0x89, 0x94, 0x54,
    0x55, 0x85, 0x85, 0x18, 0x89, 0x54, 0x52, 0x15, 0x56, 0x18, 0x22, 0x49, 0x52, 0x55, 0x55, 0x58,
    0x88, 0x48, 0x52, 0x52, 0x55, 0x58, 0x18, 0x22, 0x52, 0x52, 0x55, 0x15, 0x86, 0x21, 0x92, 0x54,
    0x52, 0x61, 0x85, 0x21, 0x92, 0x24, 0x55, 0x55, 0x61, 0x18, 0x92, 0x24, 0x55, 0x55, 0x85, 0x61,
    0x48, 0x92, 0x54, 0x55, 0x85, 0x85, 0x88, 0x24, 0x25, 0x55, 0x58, 0x61, 0x88, 0x24, 0x25, 0x55,
    0x85, 0x85, 0x21, 0x92, 0x94, 0x54, 0x15, 0x16, 0x86, 0x48, 0x52, 0x49, 0x15, 0x56, 0x88, 0x91,
    0x48, 0x25, 0x55, 0x58, 0x61, 0x88, 0x24, 0x25, 0x55, 0x55, 0x18, 0x86, 0x48, 0x92, 0x54, 0x55,
    0x85, 0x61, 0x88, 0x24, 0x49, 0x55, 0x55, 0x58, 0x88, 0x88, 0x24, 0x55, 0x12, 0x56, 0x61, 0x88,
    0x48, 0x52, 0x52, 0x55, 0x61, 0x61, 0x88, 0x48, 0x52, 0x52, 0x55, 0x58, 0x61, 0x88, 0x24, 0x49,
    0x25, 0x15, 0x56, 0x61, 0x88, 0x48, 0x92, 0x54, 0x55, 0x55, 0x18, 0x86, 0x88, 0x24, 0x49, 0x55,
    0x55, 0x61, 0x61, 0x88, 0x48, 0x92, 0x54, 0x55, 0x55, 0x61, 0x18, 0x22, 0x92, 0x24, 0x55, 0x09};

static FFMiniTables g_tables;
static int g_tablesReady;

static int Step(const unsigned char* steps, int i) { return (steps[i >> 2] >> (2 * (i & 3))) & 3; }

static void BuildTables(void) {
  FFMiniTables* t = &g_tables;
  int32_t q = 16384, d = -1;
  for (int k = 0; k < 256; ++k) {
    if (k >= 2) d += Step(kCosSteps, k - 2) - 2;
    if (k >= 1) q += d;
    t->cosT[k] = q;
    t->cosT[511 - k] = -q;
    t->cosT[512 + k] = -q;
    t->cosT[1023 - k] = q;
  }
  q = 63;
  d = 64;
  for (int k = 0; k < 1024; ++k) {
    if (k >= 2) d += Step(kAtanSteps, k - 2) - 1;
    if (k >= 1) q += d;
    t->atanT[k] = q;
  }
  /* 65536 (sqrt(1 + (k/1024)^2) - 1) + 32, floored, is the integer root of
     4096 (2^20 + k^2) less 65504. */
  for (uint32_t k = 0; k < 1024; ++k) {
    const uint64_t n = 4096u * (uint64_t)(1048576u + k * k);
    uint32_t r = 0;
    for (uint32_t b = 1u << 17; b; b >>= 1)
      if ((uint64_t)(r | b) * (r | b) <= n) r |= b;
    t->magT[k] = (int32_t)r - 65504;
  }
  g_tablesReady = 1;
}

const FFMiniTables* FFMiniGetTables(void) {
  if (!g_tablesReady) BuildTables();
  return &g_tables;
}

static int32_t Cos(int32_t x) { return g_tables.cosT[(uint32_t)Abs(x) & 1023u] >> 5; }
static int32_t Tan(int32_t x) {
  /* No entry is zero, so the division is always defined. */
  return (g_tables.cosT[(uint32_t)Abs(Sub(x, 256)) & 1023u] * 1024) / g_tables.cosT[(uint32_t)Abs(x) & 1023u];
}
static int32_t R2x(int32_t d, int32_t m) {
  const int64_t p = (int64_t)m * g_tables.cosT[(uint32_t)d & 1023u] + 8191;
  return (int32_t)(uint32_t)(uint64_t)(p >> 14);
}
static int32_t C2d(int32_t x, int32_t y) {
  /* 64-bit magnitudes: |INT_MIN| and the shift below must not overflow. */
  int64_t ay = y < 0 ? -(int64_t)y : y, ax = x < 0 ? -(int64_t)x : x;
  int f = 0;
  if (y < 0) f |= 4;
  if (x < 0) f |= 3;
  if (ay > ax) {
    const int64_t s = ay;
    ay = ax;
    ax = s;
    f ^= 1;
  }
  int32_t a = 0;
  if (ay > 0) {
    a = (int32_t)SmallQuot((uint64_t)ay << 10, (uint64_t)ax); /* ay <= ax: 0..1024 */
    /* A quotient of 0 makes the original read the word before its table,
       which comes out as 40 (measured). */
    a = a != 0 ? (g_tables.atanT[a - 1] << 9) / 205888 : 40;
  }
  if (f & 1) a = 256 - a;
  if (f & 2) a += 256;
  if (f & 4) a = -a;
  return a;
}
static int32_t C2m(int32_t x, int32_t y) {
  int64_t a = x < 0 ? -(int64_t)x : x, b = y < 0 ? -(int64_t)y : y, f;
  if (a == b) {
    f = 27146;
  } else {
    if (a > b) {
      const int64_t s = a;
      a = b;
      b = s;
    }
    f = g_tables.magT[SmallQuot((uint64_t)a << 10, (uint64_t)b)]; /* a < b: below 1024 */
  }
  return (int32_t)(uint32_t)(uint64_t)(((f * b) >> 16) + b);
}

/* Floor of the square root; a negative number comes back unchanged. */
static int32_t Sqr(int32_t x) {
  if (x < 0) return x;
  uint32_t n = (uint32_t)x, r = 0, bit = 1u << 30;
  while (bit > n) bit >>= 2;
  while (bit) {
    if (n >= r + bit) {
      n -= r + bit;
      r = (r >> 1) + bit;
    } else {
      r >>= 1;
    }
    bit >>= 2;
  }
  return (int32_t)r;
}

static int32_t FnMap(const int32_t* ctl, int32_t i, int32_t n) {
  if (i < 0 || i > 3) return 0;
  const int32_t h = CtlByte(ctl, 2 * i), l = CtlByte(ctl, 2 * i + 1);
  n = n < 0 ? 0 : (n > 255 ? 255 : n);
  if (h == l) return n < h ? 0 : 255;
  if (h > l) {
    if (n <= l) return 0;
    if (n >= h) return 255;
  } else {
    /* Falling: the original counts down from 255, which rounds differently. */
    if (n <= h) return 255;
    if (n >= l) return 0;
    return 255 - (n - h) * 255 / (l - h);
  }
  return (n - l) * 255 / (h - l);
}

/* ---- running ---------------------------------------------------------------- */

typedef struct Run {
  const FFMiniTree* t;
  const FFMiniPicture* src;
  int channels;
  int32_t x, y, z;
  const int32_t* ctl;
  int32_t cells[256];
  uint32_t tab[56]; /* the random generator */
  int i1, i2;
} Run;

/* Knuth's subtractive generator with the original's seeding; only the low
   15 bits of the seed count. */
static void Seed(Run* r, int32_t s) {
  uint32_t mj = 161803398u - ((uint32_t)s & 0x7FFFu), mk = 1;
  int ii = 0;
  r->tab[0] = 0;
  r->tab[55] = mj;
  for (int n = 0; n < 54; ++n) {
    ii = (ii + 21) % 55;
    r->tab[ii] = mk;
    mk = mj - mk;
    mj = r->tab[ii];
  }
  for (int round = 0; round < 4; ++round)
    for (int k = 1; k <= 55; ++k) r->tab[k] -= r->tab[1 + (k + 30) % 55];
  r->i1 = 0;
  r->i2 = 31;
}

static int32_t Random(Run* r, int32_t a, int32_t b) {
  r->i1 = r->i1 >= 55 ? 1 : r->i1 + 1;
  r->i2 = r->i2 >= 55 ? 1 : r->i2 + 1;
  const uint32_t v = r->tab[r->i1] - r->tab[r->i2];
  r->tab[r->i1] = v;
  const uint32_t span = (uint32_t)b - (uint32_t)a;
  if ((int32_t)span < 0) return 0;
  return (int32_t)((uint32_t)a + v % (span + 1u));
}

/* The source value, coordinates clamped to the edges; a channel the picture
   does not have reads 0. */
static int32_t Source(const Run* r, int32_t x, int32_t y, int32_t z) {
  const FFMiniPicture* s = r->src;
  if (z < 0 || z >= r->channels) return 0;
  x = x < 0 ? 0 : (x >= s->width ? s->width - 1 : x);
  y = y < 0 ? 0 : (y >= s->height ? s->height - 1 : y);
  return s->pixels[y * s->stride + x * s->step + z];
}

/* Without alpha, `a` reads the missing channel like src does: 0. */
static int32_t Channel(const Run* r, int k) { return Source(r, r->x, r->y, k); }

static int32_t Symbol(const Run* r, int s) {
  const int w = r->src->width, h = r->src->height;
  switch (s) {
    case sx: return r->x;
    case sy: return r->y;
    case sX: return w;
    case sY: return h;
    case sz: return r->z;
    case sZ: return r->channels;
    case sr: case sg: case sb: case sa: return Channel(r, s - sr);
    case sc: return Channel(r, r->z);
    case si: return (76 * Channel(r, 0) + 150 * Channel(r, 1) + 29 * Channel(r, 2)) / 256;
    case su: return (-19 * Channel(r, 0) - 37 * Channel(r, 1) + 56 * Channel(r, 2)) / 256;
    case sv: return (78 * Channel(r, 0) - 65 * Channel(r, 1) - 13 * Channel(r, 2)) / 256;
    /* The centre rounds down for d and up for m, as the original does. */
    case sd: return C2d(Sub(r->x, w >> 1), Sub(r->y, h >> 1));
    case sm: return C2m(Sub(r->x, (w + 1) / 2), Sub(r->y, (h + 1) / 2));
    default: return C2m(w >> 1, h >> 1);
  }
}

static int32_t Binary(int op, int32_t a, int32_t b) {
  switch (op) {
    case bMul: return Mul(a, b);
    case bDiv: return Div(a, b);
    case bMod: return Mod(a, b);
    case bAdd: return Add(a, b);
    case bSub: return Sub(a, b);
    case bShl: return (int32_t)((uint32_t)a << ((uint32_t)b & 31u));
    case bShr: return (int32_t)((uint32_t)a >> ((uint32_t)b & 31u)); /* logical, as the original */
    case bLt: return a < b;
    case bLe: return a <= b;
    case bGt: return a > b;
    case bGe: return a >= b;
    case bEq: return a == b;
    case bNe: return a != b;
    case bAnd: return a & b;
    case bXor: return a ^ b;
    case bOr: return a | b;
    case bLogAnd: return a != 0 && b != 0;
    default: return a != 0 || b != 0;
  }
}

static int32_t Call(Run* r, int fn, const int32_t* v) {
  switch (fn) {
    case fSrc: return Source(r, v[0], v[1], v[2]);
    case fRad:
      return Source(r, Add(r->src->width >> 1, R2x(v[0], v[1])), Add(r->src->height >> 1, R2x(Sub(v[0], 256), v[1])),
                    v[2]);
    case fCnv: {
      int32_t sum = 0;
      for (int j = 0; j < 3; ++j)
        for (int i = 0; i < 3; ++i) sum = Add(sum, Mul(v[j * 3 + i], Source(r, Add(r->x, i - 1), Add(r->y, j - 1), r->z)));
      return Div(sum, v[9]);
    }
    case fCtl: return v[0] >= 0 && v[0] <= 7 ? CtlByte(r->ctl, v[0]) : 0;
    case fVal: return v[0] >= 0 && v[0] <= 7 ? Add(Div(Mul(CtlByte(r->ctl, v[0]), Sub(v[2], v[1])), 255), v[1]) : 0;
    case fMap: return FnMap(r->ctl, v[0], v[1]);
    case fMin: return Min(v[0], v[1]);
    case fMax: return Max(v[0], v[1]);
    case fAbs: return Abs(v[0]);
    case fAdd: return Min(Add(v[0], v[1]), v[2]);
    case fSub: return Max(Sub(v[0], v[1]), v[2]);
    case fDif: return Abs(Sub(v[0], v[1]));
    case fMix: return Add(MulDiv64(v[0], v[2], v[3]), MulDiv64(v[1], Sub(v[3], v[2]), v[3]));
    case fScl: /* an empty input range gives 0, not ol */
      return v[2] == v[1] ? 0 : Add(v[3], MulDiv64(Sub(v[4], v[3]), Sub(v[0], v[1]), Sub(v[2], v[1])));
    case fSqr: return Sqr(v[0]);
    case fSin: return Cos(Sub(v[0], 256));
    case fCos: return Cos(v[0]);
    case fTan: return Tan(v[0]);
    case fR2x: return R2x(v[0], v[1]);
    case fR2y: return R2x(Sub(v[0], 256), v[1]);
    case fC2d: return C2d(v[0], v[1]);
    case fC2m: return C2m(v[0], v[1]);
    case fRnd: return Random(r, v[0], v[1]);
    case fRst: return 0; /* the original leaves the running stream alone */
    case fGet: return v[0] >= 0 && v[0] <= 255 ? r->cells[v[0]] : v[0];
    default: /* put */
      if (v[1] >= 0 && v[1] <= 255) r->cells[v[1]] = v[0];
      return v[0];
  }
}

/* Every operand is evaluated, left to right, before any choice is made: the
   language does not short-circuit. The parser's height limit bounds the
   recursion. */
static int32_t Eval(Run* r, int n) {
  const FFMiniNode* node = &r->t->node[n];
  int32_t v[10];
  for (int k = 0; k < node->kidCount; ++k) v[k] = Eval(r, r->t->kid[node->firstKid + k]);
  switch (node->kind) {
    case kConst: return node->value;
    case kSym: return Symbol(r, node->code);
    case kUnary: return node->code == uNeg ? Neg(v[0]) : node->code == uNot ? v[0] == 0 : ~v[0];
    case kBinary: return Binary(node->code, v[0], v[1]);
    case kCond: return v[0] != 0 ? v[1] : v[2];
    case kSeq: return v[1];
    default: return Call(r, node->code, v);
  }
}

static int Fits(const FFMiniPicture* p, int channels) {
  return p && p->pixels && p->width > 0 && p->height > 0 && p->step >= channels &&
         p->stride >= p->width * p->step;
}

int FFMiniRender(const FFMini* m, const int32_t ctl[8], const FFMiniPicture* src, int alpha,
                 const FFMiniPicture* dst, FFMiniCancelProc cancel, void* context) {
  const int channels = alpha ? 4 : 3;
  if (!m || m->errorChannel >= 0 || !Fits(src, channels) || !Fits(dst, channels) || dst->width != src->width ||
      dst->height != src->height)
    return kFFMiniInvalid;
  FFMiniGetTables();
  Run r;
  for (int k = 0; k < 256; ++k) r.cells[k] = 0;
  Seed(&r, 0);
  r.src = src;
  r.channels = channels;
  r.ctl = ctl;
  for (r.y = 0; r.y < src->height; ++r.y) {
    if (cancel && cancel(context)) return kFFMiniCancelled;
    unsigned char* out = dst->pixels + r.y * dst->stride;
    for (int x = 0; x < src->width; ++x, out += dst->step) {
      for (r.z = 0; r.z < channels; ++r.z) {
        r.x = x;
        r.t = &m->tree[r.z];
        const int32_t v = Eval(&r, r.t->root);
        out[r.z] = (unsigned char)(v < 0 ? 0 : (v > 255 ? 255 : v));
      }
      if (!alpha && dst->step >= 4) out[3] = 255;
    }
  }
  return kFFMiniDone;
}
