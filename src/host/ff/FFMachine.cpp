#include "host/ff/FFMachine.h"

#include <bit>
#include <cstring>
#include <type_traits>

static_assert(std::endian::native == std::endian::little,
              "pixels are read and written as little-endian words");

// The hot loops are built once for every processor and once more for those
// with AVX2, chosen when the program loads: 32-bit multiplication, min and max
// in one instruction and eight values per step make most of them about twice
// as fast there. ELF systems only (the loader picks the version).
#if defined(__x86_64__) && defined(__ELF__)
#define TREL_FF_CLONES [[gnu::target_clones("avx2", "default")]]
#else
#define TREL_FF_CLONES
#endif

namespace trel::ff {

namespace {

struct Ctx {
  const Tables& t;
  const ConstImageView& src;
  int channels;
  const int32_t* ctl;
  RunState* state;
  int32_t y;
  const uint16_t* args;
  int32_t* scratch;  // four blocks of values and six more
  int block;
  // Numbers drawn ahead for the block's rnd calls, pixel by pixel, in each
  // pixel its calls in order, drawStride a pixel; null when rnd draws as it goes.
  const uint32_t* draws;
  int drawStride;
  int* drawsUsed;  // rnd calls of the block run so far
};

// Channel ch of `row` at columns xs, xs+1, ... xs+len-1, clamped to the row.
// The middle part reads whole pixels so that it vectorises.
inline void ReadColumns(const uint8_t* row, int ch, int64_t xs, int len, int32_t width, int32_t* out) {
  int k = 0;
  const int32_t firstValue = row[ch];
  const int32_t lastValue = row[ptrdiff_t(width - 1) * 4 + ch];
  for (; k < len && xs + k < 0; ++k) out[k] = firstValue;
  int64_t inside = int64_t(width) - xs;  // columns from xs that lie in the row
  int end = inside < int64_t(len) ? int(inside < 0 ? 0 : inside) : len;
  const unsigned shift = unsigned(ch) * 8u;
  if (k < end) {
    const uint8_t* p = row + (xs + k) * 4;
    const int count = end - k;
    int32_t* o = out + k;
    for (int i = 0; i < count; ++i) {
      uint32_t px;
      std::memcpy(&px, p + i * 4, 4);
      o[i] = int32_t((px >> shift) & 0xFFu);
    }
    k = end;
  }
  for (; k < len; ++k) out[k] = lastValue;
}

// The 64-bit products of mix and scl, kept out of line: they are rare, and
// in the loop of every instruction they would cost the common ones.
[[gnu::noinline]] void SclRun(int32_t* D, const int32_t* P, const int32_t* IL, const int32_t* IH,
                              const int32_t* OL, const int32_t* OH, int len) {
  for (int k = 0; k < len; ++k) D[k] = FnSclFast(P[k], IL[k], IH[k], OL[k], OH[k]);
}
[[gnu::noinline]] void MulDivRun(int32_t* D, const int32_t* A, const int32_t* B, const int32_t* C, int len) {
  for (int k = 0; k < len; ++k) D[k] = MulDivFast(A[k], B[k], C[k]);
}
// The 64-bit division only where the product leaves 32 bits; the branch
// almost always goes one way.
[[gnu::noinline]] void MulDivConstRun(int32_t* D, const int32_t* A, const int32_t* B, int32_t d, int len) {
  const ConstDivisor cd(d);
  for (int k = 0; k < len; ++k) {
    const int64_t p = int64_t(A[k]) * int64_t(B[k]);
    D[k] = p != int32_t(p) ? Wrap(uint32_t(uint64_t(p / d)))
                           : (cd.shift >= 0 ? cd.QuotShift(int32_t(p)) : cd.QuotMul(int32_t(p)));
  }
}

// Numbers drawn ahead put into the ranges A..B, as rnd(A, B) does. The usual
// range is the same for every pixel; there the remainder is a mask for powers
// of two and otherwise comes from a multiplication by the reciprocal with a
// nudge of half a step, exact as in ConstDivisor (quotients below 2^31).
TREL_FF_CLONES
void DrawsInRange(int32_t* D, const uint32_t* v, int stride, const int32_t* A, const int32_t* B, int len) {
  int32_t differ = 0;
  for (int k = 0; k < len; ++k) differ |= (A[k] ^ A[0]) | (B[k] ^ B[0]);
  if (differ != 0) {
    for (int k = 0; k < len; ++k) D[k] = FFRandom::In(v[k * stride], A[k], B[k]);
    return;
  }
  const uint32_t a = uint32_t(A[0]);
  const uint32_t span = uint32_t(B[0]) - a;
  if (static_cast<int32_t>(span) < 0) {
    for (int k = 0; k < len; ++k) D[k] = 0;
  } else if ((span & (span + 1u)) == 0) {
    for (int k = 0; k < len; ++k) D[k] = Wrap(a + (v[k * stride] & span));
  } else {
    const uint32_t d = span + 1u;
    const double inv = 1.0 / double(d), half = 0.5 / double(d);
    for (int k = 0; k < len; ++k) {
      const uint32_t w = v[k * stride];
      const double x = double(int32_t(w ^ 0x80000000u)) + 2147483648.0;
      const uint32_t q = uint32_t(int32_t(x * inv + half));
      D[k] = Wrap(a + (w - q * d));
    }
  }
}

inline uint8_t ClampByte(int32_t v) { return static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v)); }

inline const uint8_t* ClampedRow(const ConstImageView& img, int32_t y) {
  y = y < 0 ? 0 : (y >= img.height ? img.height - 1 : y);
  return img.pixels + y * img.stride;
}

// Runs `count` instructions over `n` values per register. Register r's values
// start at regs + r * stride; `n` is a compile-time 1 for the ordered form, so
// that its loops vanish.
template <class Len>
[[gnu::always_inline]] inline void Exec(const Instr* code, size_t count, int32_t* regs, size_t stride, Len n, const Ctx& c) {
  auto R = [&](uint16_t r) { return regs + size_t(r) * stride; };
  const int len = int(n);
#define TREL_LOOP for (int k = 0; k < len; ++k)
  for (size_t pc = 0; pc < count; ++pc) {
    const Instr& in = code[pc];
    int32_t* D = R(in.dst);
    const int32_t* A = R(in.a);
    const int32_t* B = R(in.b);
    const int32_t* C = R(in.c);
    switch (in.op) {
      case OpCode::Neg: TREL_LOOP D[k] = Neg(A[k]); break;
      case OpCode::Not: TREL_LOOP D[k] = A[k] == 0; break;
      case OpCode::BitNot: TREL_LOOP D[k] = ~A[k]; break;
      case OpCode::Mul: TREL_LOOP D[k] = Mul(A[k], B[k]); break;
      case OpCode::Div: TREL_LOOP D[k] = DivFast(A[k], B[k]); break;
      case OpCode::Mod: TREL_LOOP D[k] = ModFast(A[k], B[k]); break;
      case OpCode::Add: TREL_LOOP D[k] = Add(A[k], B[k]); break;
      case OpCode::Sub: TREL_LOOP D[k] = Sub(A[k], B[k]); break;
      case OpCode::Shl: TREL_LOOP D[k] = Shl(A[k], B[k]); break;
      case OpCode::Shr: TREL_LOOP D[k] = Shr(A[k], B[k]); break;
      case OpCode::Lt: TREL_LOOP D[k] = A[k] < B[k]; break;
      case OpCode::Le: TREL_LOOP D[k] = A[k] <= B[k]; break;
      case OpCode::Gt: TREL_LOOP D[k] = A[k] > B[k]; break;
      case OpCode::Ge: TREL_LOOP D[k] = A[k] >= B[k]; break;
      case OpCode::Eq: TREL_LOOP D[k] = A[k] == B[k]; break;
      case OpCode::Ne: TREL_LOOP D[k] = A[k] != B[k]; break;
      case OpCode::BitAnd: TREL_LOOP D[k] = A[k] & B[k]; break;
      case OpCode::BitXor: TREL_LOOP D[k] = A[k] ^ B[k]; break;
      case OpCode::BitOr: TREL_LOOP D[k] = A[k] | B[k]; break;
      case OpCode::LogAnd: TREL_LOOP D[k] = (A[k] != 0) & (B[k] != 0); break;
      case OpCode::LogOr: TREL_LOOP D[k] = (A[k] | B[k]) != 0; break;
      case OpCode::Select: TREL_LOOP D[k] = A[k] != 0 ? B[k] : C[k]; break;
      case OpCode::Min: TREL_LOOP D[k] = Min(A[k], B[k]); break;
      case OpCode::Max: TREL_LOOP D[k] = Max(A[k], B[k]); break;
      case OpCode::Abs: TREL_LOOP D[k] = Abs(A[k]); break;
      case OpCode::AddF: TREL_LOOP D[k] = FnAdd(A[k], B[k], C[k]); break;
      case OpCode::SubF: TREL_LOOP D[k] = FnSub(A[k], B[k], C[k]); break;
      case OpCode::Dif: TREL_LOOP D[k] = FnDif(A[k], B[k]); break;
      case OpCode::Mix: {
        const uint16_t* a = c.args + in.extra;
        const int32_t *P = R(a[0]), *Q = R(a[1]), *N = R(a[2]), *W = R(a[3]);
        TREL_LOOP D[k] = FnMix(P[k], Q[k], N[k], W[k]);
        break;
      }
      case OpCode::Scl: {
        const uint16_t* a = c.args + in.extra;
        SclRun(D, R(a[0]), R(a[1]), R(a[2]), R(a[3]), R(a[4]), len);
        break;
      }
      case OpCode::MulDiv: MulDivRun(D, A, B, C, len); break;
      case OpCode::MulDivC: MulDivConstRun(D, A, B, in.imm, len); break;
      case OpCode::Sqr: TREL_LOOP D[k] = Sqr(A[k]); break;
      case OpCode::Sin: TREL_LOOP D[k] = Sin(c.t, A[k]); break;
      case OpCode::Cos: TREL_LOOP D[k] = Cos(c.t, A[k]); break;
      case OpCode::Tan: TREL_LOOP D[k] = Tan(c.t, A[k]); break;
      case OpCode::R2x: TREL_LOOP D[k] = R2x(c.t, A[k], B[k]); break;
      case OpCode::R2y: TREL_LOOP D[k] = R2y(c.t, A[k], B[k]); break;
      case OpCode::C2d: TREL_LOOP D[k] = C2d(c.t, A[k], B[k]); break;
      case OpCode::C2m: TREL_LOOP D[k] = C2m(c.t, A[k], B[k]); break;
      case OpCode::Ctl: TREL_LOOP D[k] = FnCtl(c.ctl, A[k]); break;
      case OpCode::Val: TREL_LOOP D[k] = FnVal(c.ctl, A[k], B[k], C[k]); break;
      case OpCode::Map: TREL_LOOP D[k] = FnMap(c.ctl, A[k], B[k]); break;
      case OpCode::Src: TREL_LOOP D[k] = SampleClamped(c.src, c.channels, A[k], B[k], C[k]); break;
      case OpCode::SrcC:
        if (in.b == kRegY && in.imm >= 0 && in.imm < c.channels) {
          // The current row: only the column needs clamping.
          const uint8_t* row = ClampedRow(c.src, c.y) + in.imm;
          const int32_t last = c.src.width - 1;
          TREL_LOOP {
            int32_t x = A[k] < 0 ? 0 : (A[k] > last ? last : A[k]);
            D[k] = row[x * 4];
          }
        } else {
          TREL_LOOP D[k] = SampleClamped(c.src, c.channels, A[k], B[k], in.imm);
        }
        break;
      case OpCode::Rad:
        TREL_LOOP D[k] = SampleClamped(c.src, c.channels, Add(c.src.width >> 1, R2x(c.t, A[k], B[k])),
                                       Add(c.src.height >> 1, R2y(c.t, A[k], B[k])), C[k]);
        break;
      case OpCode::RadC:
        TREL_LOOP D[k] = SampleClamped(c.src, c.channels, Add(c.src.width >> 1, R2x(c.t, A[k], B[k])),
                                       Add(c.src.height >> 1, R2y(c.t, A[k], B[k])), in.imm);
        break;
      case OpCode::Cnv: {
        const uint16_t* a = c.args + in.extra;
        const int32_t* w[10];
        for (int j = 0; j < 10; ++j) w[j] = R(a[j]);
        const int32_t* X = R(kRegX);
        const int ch = in.imm;
        if (ch < 0 || ch >= c.channels) {
          TREL_LOOP D[k] = 0;
          break;
        }
        const uint8_t* rows[3] = {ClampedRow(c.src, Sub(c.y, 1)), ClampedRow(c.src, c.y),
                                  ClampedRow(c.src, Add(c.y, 1))};
        const int32_t last = c.src.width - 1;
        if (in.c & 1) {
          // Weights known for the whole row: the channel of the three rows is
          // read once, one column either side, and the nine products are
          // summed in one pass.
          int32_t* acc = c.scratch;
          int32_t* up = c.scratch + c.block;
          int32_t* at = up + c.block + 2;
          int32_t* dn = at + c.block + 2;
          const int64_t x0 = int64_t(X[0]) - 1;
          ReadColumns(rows[0], ch, x0, len + 2, c.src.width, up);
          ReadColumns(rows[1], ch, x0, len + 2, c.src.width, at);
          ReadColumns(rows[2], ch, x0, len + 2, c.src.width, dn);
          uint32_t q[9];
          for (int j = 0; j < 9; ++j) q[j] = uint32_t(w[j][0]);
          TREL_LOOP acc[k] = Wrap(q[0] * uint32_t(up[k]) + q[1] * uint32_t(up[k + 1]) + q[2] * uint32_t(up[k + 2]) +
                                  q[3] * uint32_t(at[k]) + q[4] * uint32_t(at[k + 1]) + q[5] * uint32_t(at[k + 2]) +
                                  q[6] * uint32_t(dn[k]) + q[7] * uint32_t(dn[k + 1]) + q[8] * uint32_t(dn[k + 2]));
          const int32_t dv = w[9][0];
          if (!(in.c & 2)) {
            TREL_LOOP D[k] = DivFast(acc[k], w[9][k]);
          } else if (dv == 0) {
            TREL_LOOP D[k] = 0;
          } else if (dv == 1) {
            TREL_LOOP D[k] = acc[k];
          } else if (dv == -1) {
            TREL_LOOP D[k] = Neg(acc[k]);
          } else {
            const ConstDivisor cd(dv);
            TREL_LOOP D[k] = cd.Quot(acc[k]);
          }
          break;
        }
        TREL_LOOP {
          int32_t x = X[k];
          int32_t xs[3] = {x - 1 < 0 ? 0 : x - 1, x, x + 1 > last ? last : x + 1};
          uint32_t sum = 0;
          for (int j = 0; j < 3; ++j)
            for (int i = 0; i < 3; ++i)
              sum += uint32_t(w[j * 3 + i][k]) * uint32_t(rows[j][xs[i] * 4 + ch]);
          D[k] = DivFast(Wrap(sum), w[9][k]);
        }
        break;
      }
      case OpCode::Get:
        TREL_LOOP D[k] = A[k] >= 0 && A[k] <= 255 ? c.state->cells[A[k]] : A[k];
        break;
      case OpCode::Put:
        TREL_LOOP {
          int32_t v = A[k];
          if (B[k] >= 0 && B[k] <= 255) c.state->cells[B[k]] = v;
          D[k] = v;
        }
        break;
      case OpCode::Rnd:
        if (std::is_same_v<Len, int> && c.draws) {
          DrawsInRange(D, c.draws + *c.drawsUsed, c.drawStride, A, B, len);
          ++*c.drawsUsed;
        } else {
          TREL_LOOP D[k] = c.state->rng.Next(A[k], B[k]);
        }
        break;
      case OpCode::DivC: {
        const ConstDivisor cd(in.imm);
        if (cd.shift >= 0) {
          TREL_LOOP D[k] = cd.QuotShift(A[k]);
        } else {
          TREL_LOOP D[k] = cd.QuotMul(A[k]);
        }
        break;
      }
      case OpCode::ModC: {
        const ConstDivisor cd(in.imm);
        if (cd.shift >= 0) {
          TREL_LOOP D[k] = Sub(A[k], Shl(cd.QuotShift(A[k]), cd.shift));
        } else {
          TREL_LOOP D[k] = Sub(A[k], Mul(cd.QuotMul(A[k]), cd.d));
        }
        break;
      }
      case OpCode::SrcRel: {
        const int ch = in.imm;
        if (ch < 0 || ch >= c.channels) {
          TREL_LOOP D[k] = 0;
          break;
        }
        int64_t ys = int64_t(c.y) + in.imm2;
        const uint8_t* row = ClampedRow(c.src, int32_t(ys < 0 ? -1 : (ys > c.src.height ? c.src.height : ys)));
        ReadColumns(row, ch, int64_t(R(kRegX)[0]) + int32_t(in.extra), len, c.src.width, D);
        break;
      }
    }
  }
#undef TREL_LOOP
}

TREL_FF_CLONES
void ExecBlock(const Instr* code, size_t count, int32_t* regs, size_t stride, int n, const Ctx& c) {
  Exec(code, count, regs, stride, n, c);
}

// Whole pixels as 32-bit words split by shifts: this loop vectorises,
// byte-strided reads do not. `a` may be null.
TREL_FF_CLONES
void SplitPixels(const uint8_t* p, int n, int32_t* r, int32_t* g, int32_t* b, int32_t* a) {
  for (int k = 0; k < n; ++k) {
    uint32_t px;
    std::memcpy(&px, p + k * 4, 4);
    r[k] = int32_t(px & 0xFFu);
    g[k] = int32_t((px >> 8) & 0xFFu);
    b[k] = int32_t((px >> 16) & 0xFFu);
  }
  if (a) {
    for (int k = 0; k < n; ++k) {
      uint32_t px;
      std::memcpy(&px, p + k * 4, 4);
      a[k] = int32_t(px >> 24);
    }
  }
}

TREL_FF_CLONES
void ColourSpace(const int32_t* r, const int32_t* g, const int32_t* b, int n, int32_t* i, int32_t* u,
                 int32_t* v) {
  if (i)
    for (int k = 0; k < n; ++k) i[k] = LumaI(r[k], g[k], b[k]);
  if (u)
    for (int k = 0; k < n; ++k) u[k] = ChromaU(r[k], g[k], b[k]);
  if (v)
    for (int k = 0; k < n; ++k) v[k] = ChromaV(r[k], g[k], b[k]);
}

// A row that the filter leaves as it is; without alpha the fourth byte becomes 255.
TREL_FF_CLONES
void CopyRow(const uint8_t* in, int n, bool alpha, uint8_t* out) {
  if (alpha) {
    std::memcpy(out, in, size_t(n) * 4);
    return;
  }
  for (int k = 0; k < n; ++k) {
    uint32_t px;
    std::memcpy(&px, in + k * 4, 4);
    px |= 0xFF000000u;
    std::memcpy(out + k * 4, &px, 4);
  }
}

// d and m of the pixels x0 .. x0+n-1 of row y; either output may be null.
TREL_FF_CLONES
void Polar(const Tables& t, int32_t x0, int32_t y, int width, int height, int n, int32_t* d, int32_t* m) {
  if (d) {
    const int32_t cy = Sub(y, height >> 1), cx = Sub(x0, width >> 1);
    for (int k = 0; k < n; ++k) d[k] = C2d(t, cx + k, cy);
  }
  if (m) {
    const int32_t cy = Sub(y, (height + 1) / 2), cx = Sub(x0, (width + 1) / 2);
    for (int k = 0; k < n; ++k) m[k] = C2m(t, cx + k, cy);
  }
}

// The channels' results clamped into whole pixels; without a fourth channel
// the fourth byte is 255.
TREL_FF_CLONES
void PackPixels(const int32_t* r, const int32_t* g, const int32_t* b, const int32_t* a, int n, uint8_t* out) {
  if (a) {
    for (int k = 0; k < n; ++k) {
      uint32_t px = uint32_t(ClampByte(r[k])) | uint32_t(ClampByte(g[k])) << 8 |
                    uint32_t(ClampByte(b[k])) << 16 | uint32_t(ClampByte(a[k])) << 24;
      std::memcpy(out + k * 4, &px, 4);
    }
  } else {
    for (int k = 0; k < n; ++k) {
      uint32_t px = uint32_t(ClampByte(r[k])) | uint32_t(ClampByte(g[k])) << 8 |
                    uint32_t(ClampByte(b[k])) << 16 | 0xFF000000u;
      std::memcpy(out + k * 4, &px, 4);
    }
  }
}

}  // namespace

Machine::Machine(const Program& prog, const ConstImageView& src, const int32_t* ctl, RunState* state)
    : prog_(prog), src_(src), ctl_(ctl), state_(state), tables_(GetTables()),
      channels_(src.hasAlpha ? 4 : 3), block_(256) {
  // Keep the register file within the cache even for very long formulas.
  while (block_ > 8 && size_t(prog.regCount) * size_t(block_) > 65536) block_ /= 2;
  regs_.assign(size_t(prog.regCount) * size_t(block_), 0);
  scratch_.assign(size_t(block_) * 4 + 6, 0);
  for (int z = 0; z < channels_; ++z) used_ |= prog.inputsUsed[z];
  // x along a row, the same for every row: copied, not counted, per block.
  columns_.resize(size_t(src.width));
  for (int x = 0; x < src.width; ++x) columns_[size_t(x)] = x;
  auto fill = [&](uint16_t reg, int32_t v) {
    int32_t* p = Reg(reg);
    for (int k = 0; k < block_; ++k) p[k] = v;
  };
  fill(kRegWidth, src.width);
  fill(kRegHeight, src.height);
  fill(kRegChannels, channels_);
  fill(kRegCentre, CentreMagnitude(src.width, src.height));
  for (int i = 0; i < 8; ++i) fill(uint16_t(kRegCtl0 + i), CtlByte(ctl, i));
  for (const auto& [reg, value] : prog.constants) fill(reg, value);
  if (channels_ < 4) fill(kRegA, 0);  // `a` of a picture without alpha
  int calls = 0;
  for (int z = 0; z < channels_; ++z)
    for (const Instr& in : prog.channels[z].code) calls += in.op == OpCode::Rnd;
  rndPerPixel_ = calls;
  identity_ = true;
  for (int z = 0; z < channels_; ++z)
    identity_ = identity_ && prog.channels[z].code.empty() && prog.channels[z].result == kRegR + z;
  for (int z = 0; z < channels_; ++z)
    pixelCode_.code.insert(pixelCode_.code.end(), prog.channels[z].code.begin(), prog.channels[z].code.end());
}

void Machine::LoadInputs(int x0, int n, uint32_t used) {
  auto uses = [&](int reg) { return (used & (1u << reg)) != 0; };
  const bool needYuv = uses(kRegI) || uses(kRegU) || uses(kRegV);
  const uint8_t* p = src_.pixels + y_ * src_.stride + ptrdiff_t(x0) * 4;
  bool any = needYuv;
  for (int ch = 0; ch < channels_; ++ch) any = any || uses(kRegR + ch);
  if (any) SplitPixels(p, n, Reg(kRegR), Reg(kRegG), Reg(kRegB), channels_ == 4 ? Reg(kRegA) : nullptr);
  if (needYuv)
    ColourSpace(Reg(kRegR), Reg(kRegG), Reg(kRegB), n, uses(kRegI) ? Reg(kRegI) : nullptr,
                uses(kRegU) ? Reg(kRegU) : nullptr, uses(kRegV) ? Reg(kRegV) : nullptr);
  if (uses(kRegX)) std::memcpy(Reg(kRegX), columns_.data() + x0, size_t(n) * sizeof(int32_t));
  if (uses(kRegD) || uses(kRegM))
    Polar(tables_, x0, y_, src_.width, src_.height, n, uses(kRegD) ? Reg(kRegD) : nullptr,
          uses(kRegM) ? Reg(kRegM) : nullptr);
}

void Machine::RunBlock(const ChannelCode& code, int n) {
  Ctx c{tables_, src_, channels_, ctl_, state_, y_, prog_.args.data(), scratch_.data(), block_,
        drawing_ ? draws_ : nullptr, rndPerPixel_, &drawsUsed_};
  ExecBlock(code.code.data(), code.code.size(), regs_.data(), size_t(block_), n, c);
}

void Machine::RunOne(const ChannelCode& code, int k) {
  Ctx c{tables_, src_, channels_, ctl_, state_, y_, prog_.args.data(), scratch_.data(), block_, nullptr, 0,
        &drawsUsed_};
  Exec(code.code.data(), code.code.size(), regs_.data() + k, size_t(block_),
       std::integral_constant<int, 1>{}, c);
}

// Every row entry point starts here: y for the row, in its register for every
// pixel of a block.
void Machine::BeginRow(int y) {
  y_ = y;
  int32_t* yr = Reg(kRegY);
  for (int k = 0; k < block_; ++k) yr[k] = y;
}

void Machine::RunRowBlocks(int y, uint8_t* dstRow) {
  if (identity_) {
    CopyRow(src_.pixels + y * src_.stride, src_.width, channels_ == 4, dstRow);
    return;
  }
  BeginRow(y);
  for (int x0 = 0; x0 < src_.width; x0 += block_) {
    const int n = src_.width - x0 < block_ ? src_.width - x0 : block_;
    LoadInputs(x0, n, used_);
    if (rndPerPixel_ > 0) {
      // Every instruction runs once per pixel, so the pixels' rnd calls take
      // the generator's numbers in this order.
      history_.resize(55 + size_t(rndPerPixel_) * size_t(block_));
      draws_ = state_->rng.DrawMany(size_t(rndPerPixel_) * size_t(n), history_.data());
      drawing_ = true;
      drawsUsed_ = 0;
    }
    for (int z = 0; z < channels_; ++z) RunBlock(prog_.channels[z], n);
    drawing_ = false;
    // Each channel's temporaries are its own, so all four results are still
    // there to be packed into whole pixels at once.
    PackPixels(Reg(prog_.channels[0].result), Reg(prog_.channels[1].result), Reg(prog_.channels[2].result),
               channels_ == 4 ? Reg(prog_.channels[3].result) : nullptr, n, dstRow + ptrdiff_t(x0) * 4);
  }
}

void Machine::RunRowOrdered(int y, uint8_t* dstRow) {
  BeginRow(y);
  for (int x0 = 0; x0 < src_.width; x0 += block_) {
    const int n = src_.width - x0 < block_ ? src_.width - x0 : block_;
    LoadInputs(x0, n, used_);
    uint8_t* out = dstRow + ptrdiff_t(x0) * 4;
    for (int k = 0; k < n; ++k) {
      RunOne(pixelCode_, k);
      for (int z = 0; z < channels_; ++z) out[k * 4 + z] = ClampByte(Reg(prog_.channels[z].result)[k]);
      if (channels_ < 4) out[k * 4 + 3] = 255;
    }
  }
}

std::vector<int32_t> Machine::RawRow(int channel, int y, bool ordered) {
  std::vector<int32_t> row;
  row.reserve(size_t(src_.width));
  BeginRow(y);
  const ChannelCode& code = prog_.channels[channel];
  for (int x0 = 0; x0 < src_.width; x0 += block_) {
    const int n = src_.width - x0 < block_ ? src_.width - x0 : block_;
    LoadInputs(x0, n, used_ | prog_.inputsUsed[channel]);
    // The channels whose values this one reads run first, as they do in a
    // whole pixel.
    auto before = [&](int j) { return (code.needs >> j & 1) != 0; };
    if (ordered) {
      for (int k = 0; k < n; ++k) {
        for (int j = 0; j < channel; ++j)
          if (before(j)) RunOne(prog_.channels[j], k);
        RunOne(code, k);
        row.push_back(Reg(code.result)[k]);
      }
    } else {
      for (int j = 0; j < channel; ++j)
        if (before(j)) RunBlock(prog_.channels[j], n);
      RunBlock(code, n);
      const int32_t* res = Reg(code.result);
      row.insert(row.end(), res, res + n);
    }
  }
  return row;
}

}  // namespace trel::ff
