#include "host/ff/FFCompiler.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <unordered_map>

#include "host/ff/FFMath.h"
#include "host/ff/FFTreeEval.h"

namespace trel::ff {

namespace {

bool IsPureFunction(Fn f) {
  switch (f) {
    case Fn::Src: case Fn::Rad: case Fn::Cnv: case Fn::Ctl: case Fn::Val: case Fn::Map:
    case Fn::Rnd: case Fn::Get: case Fn::Put:
      return false;
    default:
      return true;  // depends on its arguments alone
  }
}

OpCode UnaryCode(UnOp op) {
  switch (op) {
    case UnOp::Neg: return OpCode::Neg;
    case UnOp::Not: return OpCode::Not;
    case UnOp::BitNot: return OpCode::BitNot;
  }
  return OpCode::Neg;
}

OpCode BinaryCode(BinOp op) {
  // Both enumerations list the binary operators in the same order.
  return static_cast<OpCode>(static_cast<int>(OpCode::Mul) + static_cast<int>(op));
}

OpCode CallCode(Fn f) {
  switch (f) {
    case Fn::Min: return OpCode::Min;
    case Fn::Max: return OpCode::Max;
    case Fn::Abs: return OpCode::Abs;
    case Fn::AddF: return OpCode::AddF;
    case Fn::SubF: return OpCode::SubF;
    case Fn::Dif: return OpCode::Dif;
    case Fn::Mix: return OpCode::Mix;
    case Fn::Scl: return OpCode::Scl;
    case Fn::Sqr: return OpCode::Sqr;
    case Fn::Sin: return OpCode::Sin;
    case Fn::Cos: return OpCode::Cos;
    case Fn::Tan: return OpCode::Tan;
    case Fn::R2x: return OpCode::R2x;
    case Fn::R2y: return OpCode::R2y;
    case Fn::C2d: return OpCode::C2d;
    case Fn::C2m: return OpCode::C2m;
    case Fn::Ctl: return OpCode::Ctl;
    case Fn::Val: return OpCode::Val;
    case Fn::Map: return OpCode::Map;
    case Fn::Src: return OpCode::Src;
    case Fn::Rad: return OpCode::Rad;
    case Fn::Cnv: return OpCode::Cnv;
    case Fn::Get: return OpCode::Get;
    case Fn::Put: return OpCode::Put;
    case Fn::Rnd: return OpCode::Rnd;
    case Fn::Rst: break;  // never emitted: rst is the constant 0
  }
  return OpCode::Min;
}

// A hash of the subtree's shape and values, the same for equal subtrees of
// different formulas. `kids` are the children's hashes.
uint64_t NodeHash(const Node& node, const uint64_t* kids) {
  uint64_t h = 0x9E3779B97F4A7C15ull ^ (uint64_t(node.kind) << 40 | uint64_t(node.code) << 32 | uint32_t(node.value));
  for (int k = 0; k < node.kidCount; ++k) h = (h ^ kids[k]) * 0x100000001B3ull + (h >> 29);
  return h;
}

bool SameTree(const Ast& a, uint32_t na, const Ast& b, uint32_t nb) {
  const Node& x = a.at(na);
  const Node& y = b.at(nb);
  if (x.kind != y.kind || x.code != y.code || x.value != y.value || x.kidCount != y.kidCount) return false;
  for (int k = 0; k < x.kidCount; ++k)
    if (!SameTree(a, a.kid(x, k), b, b.kid(y, k))) return false;
  return true;
}

// Hashes of every node, and whether the node may be shared between channels:
// an operation (not a leaf or a known value) that reads neither c, z nor the
// channel's own convolution. Effects are excluded by the caller.
void ShareFacts(const Ast& ast, std::vector<uint64_t>& hash, std::vector<uint8_t>& candidate) {
  hash.assign(ast.nodes.size(), 0);
  candidate.assign(ast.nodes.size(), 0);
  std::vector<uint8_t> channelBound(ast.nodes.size(), 0);
  for (uint32_t n = 0; n < ast.nodes.size(); ++n) {
    const Node& node = ast.at(n);
    uint64_t kids[16];
    bool bound = false;
    bool allKnown = true;
    for (int k = 0; k < node.kidCount; ++k) {
      const uint32_t kid = ast.kid(node, k);
      if (k < 16) kids[k] = hash[kid];
      bound = bound || channelBound[kid];
      allKnown = allKnown && ast.at(kid).kind == NodeKind::Const;
    }
    hash[n] = NodeHash(node, kids);
    if (node.kind == NodeKind::Sym)
      bound = static_cast<Sym>(node.code) == Sym::c || static_cast<Sym>(node.code) == Sym::z;
    if (node.kind == NodeKind::Call && static_cast<Fn>(node.code) == Fn::Cnv) bound = true;
    channelBound[n] = bound;
    candidate[n] = !bound && !allKnown && node.kidCount > 0 && node.kidCount <= 16;
  }
}

class ChannelCompiler {
 public:
  ChannelCompiler(const Ast& ast, int channel, Program& prog, SharedValues* shared)
      : ast_(ast), channel_(channel), prog_(prog), out_(prog.channels[channel]), shared_(shared) {
    info_.resize(ast.nodes.size());
    for (const auto& [reg, v] : prog.constants) {
      constByValue_.emplace(v, reg);
      constByReg_.emplace(reg, v);
    }
    // Children always come before their parents in the node array, so one
    // forward sweep settles every node's facts.
    // Bounds serve mix and scl, and divisions of values that cannot be negative.
    for (uint32_t n = 0; n < ast.nodes.size(); ++n) {
      Analyse(n);
      info_[n].bounds = BoundsOf(n);
    }
    if (shared_) PlanSharing();
  }

  bool Run() {
    out_.code.clear();
    out_.sideEffects = info_[ast_.root].effects;
    out_.result = Gen(ast_.root);
    return !tooLarge_;
  }

 private:
  // Bounds of a value for every pixel; controls count as 0..255, which the
  // machine guarantees. Wide enough for any product of two 32-bit values.
  struct Bounds {
    int64_t lo = INT32_MIN, hi = INT32_MAX;
  };

  struct Info {
    bool effects = false;  // evaluating the subtree may change cells or the generator
    std::optional<int32_t> value;  // known without a pixel
    Bounds bounds;
  };

  static Bounds Within(int64_t lo, int64_t hi) {
    if (lo < INT32_MIN || hi > INT32_MAX) return Bounds{};  // it may wrap
    return Bounds{lo, hi};
  }

  // Interval arithmetic over the few forms that matter for mix and scl.
  Bounds BoundsOf(uint32_t n) const {
    const Node& node = ast_.at(n);
    const Info& info = info_[n];
    if (info.value) return Bounds{*info.value, *info.value};
    auto kid = [&](int k) { return info_[ast_.kid(node, k)].bounds; };
    switch (node.kind) {
      case NodeKind::Sym:
        switch (static_cast<Sym>(node.code)) {
          case Sym::r: case Sym::g: case Sym::b: case Sym::a: case Sym::c: case Sym::i: return {0, 255};
          case Sym::u: case Sym::v: return {-256, 256};
          case Sym::d: return {-512, 512};
          default: return Bounds{};
        }
      case NodeKind::Unary:
        if (static_cast<UnOp>(node.code) == UnOp::Neg) return Within(-kid(0).hi, -kid(0).lo);
        if (static_cast<UnOp>(node.code) == UnOp::Not) return {0, 1};
        return Bounds{};
      case NodeKind::Binary: {
        const Bounds a = kid(0), b = kid(1);
        switch (static_cast<BinOp>(node.code)) {
          case BinOp::Add: return Within(a.lo + b.lo, a.hi + b.hi);
          case BinOp::Div:
            if (a.lo >= 0 && b.lo == b.hi && b.lo > 0) return Bounds{a.lo / b.lo, a.hi / b.lo};
            return Bounds{};
          case BinOp::Mod:
            if (a.lo >= 0 && b.lo == b.hi && b.lo > 0) return Bounds{0, std::min(a.hi, b.lo - 1)};
            return Bounds{};
          case BinOp::Sub: return Within(a.lo - b.hi, a.hi - b.lo);
          case BinOp::Mul: {
            const int64_t p[4] = {a.lo * b.lo, a.lo * b.hi, a.hi * b.lo, a.hi * b.hi};
            return Within(*std::min_element(p, p + 4), *std::max_element(p, p + 4));
          }
          default: return Bounds{};
        }
      }
      case NodeKind::Cond: {
        const Bounds a = kid(1), b = kid(2);
        return Bounds{std::min(a.lo, b.lo), std::max(a.hi, b.hi)};
      }
      case NodeKind::Call:
        switch (static_cast<Fn>(node.code)) {
          case Fn::Ctl: case Fn::Map: case Fn::Src: case Fn::Rad: return {0, 255};
          case Fn::Sin: case Fn::Cos: return {-512, 512};
          default: return Bounds{};
        }
      default: return Bounds{};
    }
  }

  // True when every product of values within a and b fits 31 bits, so that
  // the 64-bit product of mix and scl may be computed in 32 bits.
  static bool ProductFits(Bounds a, Bounds b) {
    const int64_t ma = std::max(-a.lo, a.hi), mb = std::max(-b.lo, b.hi);
    return ma < (int64_t(1) << 31) && mb < (int64_t(1) << 31) && ma * mb <= INT32_MAX;
  }

  void Analyse(uint32_t n) {
    const Node& node = ast_.at(n);
    Info& info = info_[n];
    bool allConst = true;
    for (int k = 0; k < node.kidCount; ++k) {
      const Info& kid = info_[ast_.kid(node, k)];
      info.effects = info.effects || kid.effects;
      allConst = allConst && kid.value.has_value();
    }
    switch (node.kind) {
      case NodeKind::Const: info.value = node.value; return;
      case NodeKind::Sym:
        if (static_cast<Sym>(node.code) == Sym::z) info.value = channel_;
        return;
      case NodeKind::Call: {
        Fn f = static_cast<Fn>(node.code);
        if (HasSideEffect(f)) info.effects = true;
        if (f == Fn::Rst) {  // 0 whatever its argument; the argument still runs
          info.value = 0;
          return;
        }
        if (!IsPureFunction(f)) return;
        break;
      }
      case NodeKind::Cond: {
        // A known condition decides the value if the other side cannot act.
        const Info& cond = info_[ast_.kid(node, 0)];
        if (cond.value) {
          const Info& taken = info_[ast_.kid(node, *cond.value != 0 ? 1 : 2)];
          const Info& other = info_[ast_.kid(node, *cond.value != 0 ? 2 : 1)];
          if (!other.effects && taken.value) info.value = taken.value;
        }
        if (!allConst) return;
        break;
      }
      case NodeKind::Seq: {
        const Info& left = info_[ast_.kid(node, 0)];
        const Info& right = info_[ast_.kid(node, 1)];
        if (!left.effects && right.value) info.value = right.value;
        return;
      }
      default: break;
    }
    if (allConst && !info.effects && !info.value) info.value = Fold(n);
  }

  int32_t Fold(uint32_t n) {
    // The operands are known and the node reads no pixel, control or state,
    // so an empty environment will do.
    const Node& node = ast_.at(n);
    int32_t v[10] = {};
    for (int k = 0; k < node.kidCount && k < 10; ++k) v[k] = *info_[ast_.kid(node, k)].value;
    PixelEnv env;
    env.z = channel_;
    return ApplyNode(node, v, env);
  }

  // A new register; past the limit the program is marked unusable and a
  // harmless register stands in, so compiling still ends normally.
  uint16_t NewRegister() {
    if (prog_.regCount >= kMaxRegisters) {
      tooLarge_ = true;
      return kRegR;
    }
    return prog_.regCount++;
  }

  uint16_t Constant(int32_t value) {
    auto it = constByValue_.find(value);
    if (it != constByValue_.end()) return it->second;
    uint16_t reg = NewRegister();
    if (!tooLarge_) {
      prog_.constants.emplace_back(reg, value);
      constByValue_.emplace(value, reg);
      constByReg_.emplace(reg, value);
    }
    return reg;
  }

  // Temporaries are handed out again once released; state[r] says whether
  // register r is one of this channel's temporaries, and whether it is free.
  enum : uint8_t { kNotTemp = 0, kInUse = 1, kFree = 2, kKept = 3 };

  uint16_t NewTemp() {
    if (!free_.empty()) {
      uint16_t r = free_.back();
      free_.pop_back();
      tempState_[r] = kInUse;
      return r;
    }
    uint16_t r = NewRegister();
    if (tooLarge_) return r;
    if (tempState_.size() <= r) tempState_.resize(size_t(r) + 1, kNotTemp);
    tempState_[r] = kInUse;
    return r;
  }

  void Release(uint16_t reg) {
    if (reg < tempState_.size() && tempState_[reg] == kInUse) {
      tempState_[reg] = kFree;
      free_.push_back(reg);
    }
  }

  uint16_t Input(FixedReg reg) {
    prog_.inputsUsed[channel_] |= 1u << reg;
    return reg;
  }

  uint16_t SymbolReg(Sym s) {
    switch (s) {
      case Sym::x: return Input(kRegX);
      case Sym::y: return Input(kRegY);
      case Sym::X: return Input(kRegWidth);
      case Sym::Y: return Input(kRegHeight);
      case Sym::z: return Constant(channel_);
      case Sym::Z: return Input(kRegChannels);
      case Sym::r: return Input(kRegR);
      case Sym::g: return Input(kRegG);
      case Sym::b: return Input(kRegB);
      case Sym::a: return Input(kRegA);
      case Sym::c: return Input(static_cast<FixedReg>(kRegR + channel_));
      case Sym::i: return Input(kRegI);
      case Sym::u: return Input(kRegU);
      case Sym::v: return Input(kRegV);
      case Sym::d: return Input(kRegD);
      case Sym::m: return Input(kRegM);
      case Sym::M: return Input(kRegCentre);
    }
    return Constant(0);
  }

  // Emits `op` over already computed operand registers, releasing them.
  uint16_t Emit(Instr in, std::initializer_list<uint16_t> used) {
    for (uint16_t r : used) Release(r);
    in.dst = NewTemp();
    out_.code.push_back(in);
    return in.dst;
  }

  std::optional<int32_t> ConstantIn(uint16_t reg) const {
    auto it = constByReg_.find(reg);
    if (it == constByReg_.end()) return std::nullopt;
    return it->second;
  }

  // The same value for every pixel of a row.
  bool IsUniform(uint16_t reg) const {
    return (reg >= kRegY && reg < kFirstFreeReg) || ConstantIn(reg).has_value();
  }

  // a op b, folded when both are known; a division by a known number gets
  // its own instruction, which avoids a true division per pixel. The operands
  // are released only when `release` says they are no longer needed.
  // `nonNegative`: a is never below 0, so a division by a power of two is a
  // shift and the remainder a mask.
  uint16_t Binary(BinOp op, uint16_t a, uint16_t b, bool release, bool nonNegative = false) {
    std::optional<int32_t> ka = ConstantIn(a), kb = ConstantIn(b);
    auto done = [&](uint16_t r) {
      if (release) {
        Release(a);
        Release(b);
      }
      return r;
    };
    if (ka && kb) return done(Constant(BinaryValue(op, *ka, *kb)));
    Instr in{BinaryCode(op)};
    in.a = a;
    in.b = b;
    if ((op == BinOp::Div || op == BinOp::Mod) && kb) {
      if (*kb == 0 || (op == BinOp::Mod && (*kb == 1 || *kb == -1))) return done(Constant(0));
      if (op == BinOp::Div && *kb == 1) {
        if (release) Release(b);
        return a;
      }
      if (nonNegative && *kb > 1 && (*kb & (*kb - 1)) == 0) {
        int shift = 0;
        while ((int32_t(1) << shift) != *kb) ++shift;
        in.op = op == BinOp::Div ? OpCode::Shr : OpCode::BitAnd;
        in.b = Constant(op == BinOp::Div ? shift : *kb - 1);
      } else if (*kb != -1) {
        in.op = op == BinOp::Div ? OpCode::DivC : OpCode::ModC;
        in.imm = *kb;
      }
    }
    if (release) {
      Release(a);
      Release(b);
    }
    in.dst = NewTemp();
    out_.code.push_back(in);
    return in.dst;
  }

  // a * b / d with a 64-bit product (mix and scl), folded where it is known;
  // a known divisor gets its own instruction. The operands stay alive.
  uint16_t MulDiv(uint16_t a, uint16_t b, uint16_t d) {
    std::optional<int32_t> ka = ConstantIn(a), kb = ConstantIn(b), kd = ConstantIn(d);
    if ((kd && *kd == 0) || (ka && *ka == 0) || (kb && *kb == 0)) return Constant(0);
    if (ka && kb && kd) return Constant(MulDiv64(*ka, *kb, *kd));
    Instr in{OpCode::MulDiv};
    in.a = a;
    in.b = b;
    in.c = d;
    if (kd && *kd != -1) {
      in.op = OpCode::MulDivC;
      in.imm = *kd;
    }
    in.dst = NewTemp();
    out_.code.push_back(in);
    return in.dst;
  }

  // The arithmetic functions spelled out, so that their divisions by known
  // numbers and their known parts are simplified like any other.
  uint16_t Lowered(Fn f, const uint16_t* r, const Node& node) {
    auto bounds = [&](int k) { return info_[ast_.kid(node, k)].bounds; };
    auto diff = [](Bounds a, Bounds b) { return Within(a.lo - b.hi, a.hi - b.lo); };
    // a * b / d: in 32 bits (a division by a known number becomes cheap)
    // where the product provably fits, else with the 64-bit product.
    auto mulDiv = [&](uint16_t a, uint16_t b, uint16_t d, bool fits) -> uint16_t {
      if (!fits) return MulDiv(a, b, d);
      uint16_t p = Binary(BinOp::Mul, a, b, false);
      uint16_t q = Binary(BinOp::Div, p, d, false);
      if (q != p) Release(p);
      return q;
    };
    auto bin = [&](BinOp op, uint16_t a, uint16_t b, bool releaseA, bool releaseB) {
      uint16_t d = Binary(op, a, b, false);
      if (releaseA && a != d) Release(a);
      if (releaseB && b != d) Release(b);
      return d;
    };
    uint16_t res = 0;
    if (f == Fn::Mix) {  // a*n/d + b*(d-n)/d
      uint16_t left = mulDiv(r[0], r[2], r[3], ProductFits(bounds(0), bounds(2)));
      uint16_t w = bin(BinOp::Sub, r[3], r[2], false, false);
      uint16_t right = mulDiv(r[1], w, r[3], ProductFits(bounds(1), diff(bounds(3), bounds(2))));
      if (w != right) Release(w);
      res = bin(BinOp::Add, left, right, true, true);
    } else if (f == Fn::Scl) {  // ol + (oh-ol)*(a-il)/(ih-il), the range known and not empty
      uint16_t span = bin(BinOp::Sub, r[4], r[3], false, false);
      uint16_t off = bin(BinOp::Sub, r[0], r[1], false, false);
      uint16_t range = bin(BinOp::Sub, r[2], r[1], false, false);
      uint16_t q = mulDiv(span, off, range,
                          ProductFits(diff(bounds(4), bounds(3)), diff(bounds(0), bounds(1))));
      if (span != q) Release(span);
      if (off != q) Release(off);
      res = bin(BinOp::Add, r[3], q, false, true);
    }
    return res;
  }

  // Which of this channel's values later channels will reuse: those whose
  // subtree appears in a later formula, unless their parent does too.
  void PlanSharing() {
    ShareFacts(ast_, hash_, candidate_);
    std::vector<uint64_t> wanted;
    for (const Ast* other : shared_->later) {
      std::vector<uint64_t> h;
      std::vector<uint8_t> cand;
      ShareFacts(*other, h, cand);
      for (size_t k = 0; k < h.size(); ++k)
        if (cand[k]) wanted.push_back(h[k]);
    }
    std::sort(wanted.begin(), wanted.end());
    std::vector<uint8_t> want(ast_.nodes.size(), 0);
    for (uint32_t n = 0; n < ast_.nodes.size(); ++n)
      want[n] = candidate_[n] && std::binary_search(wanted.begin(), wanted.end(), hash_[n]);
    keep_.assign(ast_.nodes.size(), 0);
    for (uint32_t n = 0; n < ast_.nodes.size(); ++n) {
      keep_[n] = want[n];
      const Node& node = ast_.at(n);
      // A kid is kept only when its parent is not: the parent's register serves.
      if (want[n])
        for (int k = 0; k < node.kidCount; ++k) keep_[ast_.kid(node, k)] = 2;
    }
    for (uint8_t& k : keep_) k = k == 1 ? 1 : 0;
  }

  uint16_t Gen(uint32_t n) {
    if (!shared_ || !candidate_[n] || info_[n].value) return GenNode(n);
    const auto [first, last] = shared_->done.equal_range(hash_[n]);
    for (auto it = first; it != last; ++it) {
      const SharedValues::Entry& e = it->second;
      if (SameTree(*e.ast, e.node, ast_, n)) {
        out_.needs |= uint8_t((1u << e.channel) | prog_.channels[e.channel].needs);
        return e.reg;
      }
    }
    const uint16_t r = GenNode(n);
    if (keep_[n] && !tooLarge_) {
      // Never handed out again within this channel, so it still holds the
      // value when the later channels run.
      if (r < tempState_.size() && tempState_[r] != kNotTemp) tempState_[r] = kKept;
      shared_->done.emplace(hash_[n], SharedValues::Entry{&ast_, n, r, channel_});
    }
    return r;
  }

  uint16_t GenNode(uint32_t n) {
    const Node& node = ast_.at(n);
    const Info& info = info_[n];
    if (info.value && !info.effects) return Constant(*info.value);
    switch (node.kind) {
      case NodeKind::Const: return Constant(node.value);
      case NodeKind::Sym: return SymbolReg(static_cast<Sym>(node.code));
      case NodeKind::Unary: {
        uint16_t a = Gen(ast_.kid(node, 0));
        Instr in{UnaryCode(static_cast<UnOp>(node.code))};
        in.a = a;
        return Emit(in, {a});
      }
      case NodeKind::Binary: {
        uint16_t a = Gen(ast_.kid(node, 0));
        uint16_t b = Gen(ast_.kid(node, 1));
        return Binary(static_cast<BinOp>(node.code), a, b, true, info_[ast_.kid(node, 0)].bounds.lo >= 0);
      }
      case NodeKind::Seq: {
        uint32_t left = ast_.kid(node, 0);
        if (info_[left].effects) Release(Gen(left));
        return Gen(ast_.kid(node, 1));
      }
      case NodeKind::Cond: return GenCond(node);
      case NodeKind::Call: return GenCall(node);
    }
    return Constant(0);
  }

  uint16_t GenCond(const Node& node) {
    uint32_t cond = ast_.kid(node, 0), yes = ast_.kid(node, 1), no = ast_.kid(node, 2);
    const Info& ci = info_[cond];
    if (ci.value && !ci.effects) {
      // Only the taken side matters for the value; the other still runs if it can act.
      uint32_t taken = *ci.value != 0 ? yes : no;
      uint32_t other = *ci.value != 0 ? no : yes;
      if (!info_[other].effects) return Gen(taken);
    }
    // Every operand runs, left to right, before the choice.
    uint16_t c = Gen(cond);
    uint16_t a = Gen(yes);
    uint16_t b = Gen(no);
    Instr in{OpCode::Select};
    in.a = c;
    in.b = a;
    in.c = b;
    return Emit(in, {c, a, b});
  }

  uint16_t GenCall(const Node& node) {
    Fn f = static_cast<Fn>(node.code);
    int count = node.kidCount;
    // ctl() of a known control is a register filled once per run.
    if (f == Fn::Ctl && info_[ast_.kid(node, 0)].value && !info_[ast_.kid(node, 0)].effects) {
      int32_t i = *info_[ast_.kid(node, 0)].value;
      if (i < 0 || i > 7) return Constant(0);
      return Input(static_cast<FixedReg>(kRegCtl0 + i));
    }
    int32_t dx = 0, dy = 0;
    if (f == Fn::Src && Offset(ast_.kid(node, 0), Sym::x, dx) &&
        Offset(ast_.kid(node, 1), Sym::y, dy) && info_[ast_.kid(node, 2)].value) {
      // A fixed neighbour of the pixel: read as a run of the row, not pixel by pixel.
      Input(kRegX);
      Input(kRegY);
      Instr in{OpCode::SrcRel};
      in.imm = *info_[ast_.kid(node, 2)].value;
      in.extra = static_cast<uint32_t>(dx);
      in.imm2 = dy;
      in.dst = NewTemp();
      out_.code.push_back(in);
      return in.dst;
    }
    uint16_t regs[10];
    for (int k = 0; k < count; ++k) regs[k] = Gen(ast_.kid(node, k));
    if (f == Fn::Rst) {
      Release(regs[0]);
      return Constant(0);
    }
    // scl is spelled out only when its input range is known and not empty
    // (an empty range gives 0, which the spelled-out form would not).
    const bool sclRangeKnown = f == Fn::Scl && ConstantIn(regs[1]) && ConstantIn(regs[2]);
    if (sclRangeKnown && *ConstantIn(regs[1]) == *ConstantIn(regs[2])) {
      for (int k = 0; k < count; ++k) Release(regs[k]);
      return Constant(0);
    }
    if (f == Fn::Mix || sclRangeKnown) {
      uint16_t res = Lowered(f, regs, node);
      // Arguments stay alive until the whole function is computed.
      for (int k = 0; k < count; ++k)
        if (regs[k] != res) Release(regs[k]);
      return res;
    }
    Instr in{CallCode(f)};
    in.imm = channel_;
    if (count >= 1) in.a = regs[0];
    if (count >= 2) in.b = regs[1];
    if (count >= 3) in.c = regs[2];
    if ((f == Fn::Src || f == Fn::Rad) && info_[ast_.kid(node, 2)].value) {
      in.op = f == Fn::Src ? OpCode::SrcC : OpCode::RadC;
      in.imm = *info_[ast_.kid(node, 2)].value;
    }
    if (f == Fn::Src || f == Fn::Rad || f == Fn::Cnv) {
      // These read the source around the pixel.
      Input(kRegX);
      Input(kRegY);
    }
    if (f == Fn::Cnv) {
      bool uniform = true;
      for (int k = 0; k < 9; ++k) uniform = uniform && IsUniform(regs[k]);
      in.c = uint16_t((uniform ? 1 : 0) | (IsUniform(regs[9]) ? 2 : 0));
    }
    if (count > 3) {
      in.extra = static_cast<uint32_t>(prog_.args.size());
      for (int k = 0; k < count; ++k) prog_.args.push_back(regs[k]);
    }
    for (int k = 0; k < count; ++k) Release(regs[k]);
    in.dst = NewTemp();
    out_.code.push_back(in);
    return in.dst;
  }

  // True when `n` is the symbol `s`, or `s` plus or minus a known small number.
  bool Offset(uint32_t n, Sym s, int32_t& off) const {
    const Node& node = ast_.at(n);
    auto is = [&](uint32_t k) {
      return ast_.at(k).kind == NodeKind::Sym && static_cast<Sym>(ast_.at(k).code) == s;
    };
    auto small = [&](uint32_t k, int32_t& v) {
      const Info& i = info_[k];
      if (!i.value || *i.value < -(1 << 20) || *i.value > (1 << 20)) return false;
      v = *i.value;
      return true;
    };
    if (is(n)) {
      off = 0;
      return true;
    }
    if (node.kind != NodeKind::Binary) return false;
    uint32_t l = ast_.kid(node, 0), r = ast_.kid(node, 1);
    int32_t v;
    if (static_cast<BinOp>(node.code) == BinOp::Add) {
      if (is(l) && small(r, v)) return off = v, true;
      if (small(l, v) && is(r)) return off = v, true;
    }
    if (static_cast<BinOp>(node.code) == BinOp::Sub && is(l) && small(r, v)) return off = -v, true;
    return false;
  }

  const Ast& ast_;
  int channel_;
  Program& prog_;
  ChannelCode& out_;
  std::vector<Info> info_;
  std::vector<uint8_t> tempState_;
  std::vector<uint16_t> free_;
  std::unordered_map<int32_t, uint16_t> constByValue_;
  std::unordered_map<uint16_t, int32_t> constByReg_;
  bool tooLarge_ = false;
  SharedValues* shared_;
  std::vector<uint64_t> hash_;
  std::vector<uint8_t> candidate_;
  std::vector<uint8_t> keep_;
};

}  // namespace

bool CompileChannel(const Ast& ast, int channel, Program& program, SharedValues* shared) {
  return ChannelCompiler(ast, channel, program, shared).Run();
}

bool DependsOnChannel(const Ast& ast) {
  for (const Node& n : ast.nodes) {
    if (n.kind == NodeKind::Sym && (static_cast<Sym>(n.code) == Sym::z || static_cast<Sym>(n.code) == Sym::c))
      return true;
    if (n.kind == NodeKind::Call && static_cast<Fn>(n.code) == Fn::Cnv) return true;
  }
  return false;
}

}  // namespace trel::ff

static_assert(static_cast<int>(trel::ff::OpCode::LogOr) - static_cast<int>(trel::ff::OpCode::Mul) ==
                  static_cast<int>(trel::ff::BinOp::LogOr),
              "binary operators must be listed in the same order");
