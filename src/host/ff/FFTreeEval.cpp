#include "host/ff/FFTreeEval.h"

#include "host/ff/FFMath.h"

namespace trel::ff {

int32_t CentreMagnitude(int width, int height) {
  return C2m(GetTables(), width >> 1, height >> 1);
}
int32_t PixelDirection(int32_t x, int32_t y, int width, int height) {
  return C2d(GetTables(), Sub(x, width >> 1), Sub(y, height >> 1));
}
int32_t PixelMagnitude(int32_t x, int32_t y, int width, int height) {
  // The centre rounds up here and down for d, as the original does.
  return C2m(GetTables(), Sub(x, (width + 1) / 2), Sub(y, (height + 1) / 2));
}

namespace {

int32_t Source(const PixelEnv& e, int32_t x, int32_t y, int32_t z) {
  return SampleClamped(e.src, e.channels, x, y, z);
}

int32_t SymbolValue(Sym s, const PixelEnv& e) {
  // Without alpha, `a` reads the missing channel like src does: 0.
  auto channel = [&](int k) -> int32_t { return Source(e, e.x, e.y, k); };
  switch (s) {
    case Sym::x: return e.x;
    case Sym::y: return e.y;
    case Sym::X: return e.src.width;
    case Sym::Y: return e.src.height;
    case Sym::z: return e.z;
    case Sym::Z: return e.channels;
    case Sym::r: return channel(0);
    case Sym::g: return channel(1);
    case Sym::b: return channel(2);
    case Sym::a: return channel(3);
    case Sym::c: return channel(e.z);
    case Sym::i: return LumaI(channel(0), channel(1), channel(2));
    case Sym::u: return ChromaU(channel(0), channel(1), channel(2));
    case Sym::v: return ChromaV(channel(0), channel(1), channel(2));
    case Sym::d: return PixelDirection(e.x, e.y, e.src.width, e.src.height);
    case Sym::m: return PixelMagnitude(e.x, e.y, e.src.width, e.src.height);
    case Sym::M: return CentreMagnitude(e.src.width, e.src.height);
  }
  return 0;
}

int32_t Unary(UnOp op, int32_t a) {
  switch (op) {
    case UnOp::Neg: return Neg(a);
    case UnOp::Not: return a == 0;
    case UnOp::BitNot: return ~a;
  }
  return 0;
}

}  // namespace

int32_t BinaryValue(BinOp op, int32_t a, int32_t b) {
  switch (op) {
    case BinOp::Mul: return Mul(a, b);
    case BinOp::Div: return Div(a, b);
    case BinOp::Mod: return Mod(a, b);
    case BinOp::Add: return Add(a, b);
    case BinOp::Sub: return Sub(a, b);
    case BinOp::Shl: return Shl(a, b);
    case BinOp::Shr: return Shr(a, b);
    case BinOp::Lt: return a < b;
    case BinOp::Le: return a <= b;
    case BinOp::Gt: return a > b;
    case BinOp::Ge: return a >= b;
    case BinOp::Eq: return a == b;
    case BinOp::Ne: return a != b;
    case BinOp::BitAnd: return a & b;
    case BinOp::BitXor: return a ^ b;
    case BinOp::BitOr: return a | b;
    case BinOp::LogAnd: return a != 0 && b != 0;
    case BinOp::LogOr: return a != 0 || b != 0;
  }
  return 0;
}

int32_t EvaluateTree(const Ast& ast, uint32_t node, const PixelEnv& e) {
  const Node& n = ast.at(node);
  // Every operand is evaluated, left to right, before any choice is made:
  // the language does not short-circuit.
  int32_t v[10] = {};
  for (int k = 0; k < n.kidCount && k < 10; ++k) v[k] = EvaluateTree(ast, ast.kid(n, k), e);
  return ApplyNode(n, v, e);
}

int32_t ApplyNode(const Node& n, const int32_t* v, const PixelEnv& e) {
  const Tables& t = GetTables();
  switch (n.kind) {
    case NodeKind::Const: return n.value;
    case NodeKind::Sym: return SymbolValue(static_cast<Sym>(n.code), e);
    case NodeKind::Unary: return Unary(static_cast<UnOp>(n.code), v[0]);
    case NodeKind::Binary: return BinaryValue(static_cast<BinOp>(n.code), v[0], v[1]);
    case NodeKind::Cond: return v[0] != 0 ? v[1] : v[2];
    case NodeKind::Seq: return v[1];
    case NodeKind::Call: break;
  }
  switch (static_cast<Fn>(n.code)) {
    case Fn::Src: return Source(e, v[0], v[1], v[2]);
    case Fn::Rad:
      return Source(e, Add(e.src.width >> 1, R2x(t, v[0], v[1])),
                    Add(e.src.height >> 1, R2y(t, v[0], v[1])), v[2]);
    case Fn::Cnv: {
      int32_t sum = 0;
      for (int j = 0; j < 3; ++j)
        for (int i = 0; i < 3; ++i)
          sum = Add(sum, Mul(v[j * 3 + i], Source(e, Add(e.x, i - 1), Add(e.y, j - 1), e.z)));
      return Div(sum, v[9]);
    }
    case Fn::Ctl: return FnCtl(e.ctl, v[0]);
    case Fn::Val: return FnVal(e.ctl, v[0], v[1], v[2]);
    case Fn::Map: return FnMap(e.ctl, v[0], v[1]);
    case Fn::Min: return Min(v[0], v[1]);
    case Fn::Max: return Max(v[0], v[1]);
    case Fn::Abs: return Abs(v[0]);
    case Fn::AddF: return FnAdd(v[0], v[1], v[2]);
    case Fn::SubF: return FnSub(v[0], v[1], v[2]);
    case Fn::Dif: return FnDif(v[0], v[1]);
    case Fn::Mix: return FnMix(v[0], v[1], v[2], v[3]);
    case Fn::Scl: return FnScl(v[0], v[1], v[2], v[3], v[4]);
    case Fn::Sqr: return Sqr(v[0]);
    case Fn::Sin: return Sin(t, v[0]);
    case Fn::Cos: return Cos(t, v[0]);
    case Fn::Tan: return Tan(t, v[0]);
    case Fn::R2x: return R2x(t, v[0], v[1]);
    case Fn::R2y: return R2y(t, v[0], v[1]);
    case Fn::C2d: return C2d(t, v[0], v[1]);
    case Fn::C2m: return C2m(t, v[0], v[1]);
    case Fn::Rnd: return e.state->rng.Next(v[0], v[1]);
    case Fn::Rst: return 0;  // the original leaves the running stream alone
    case Fn::Get: return v[0] >= 0 && v[0] <= 255 ? e.state->cells[v[0]] : v[0];
    case Fn::Put:
      if (v[1] >= 0 && v[1] <= 255) e.state->cells[v[1]] = v[0];
      return v[0];
  }
  return 0;
}

}  // namespace trel::ff
