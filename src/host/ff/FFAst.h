// The parsed form of one Filter Factory expression: a tree of nodes kept in one
// array, children referred to by index. Aliases are resolved by the parser, so
// the tree only knows the plain symbols and functions.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace trel::ff {

enum class NodeKind : uint8_t { Const, Sym, Unary, Binary, Cond, Seq, Call };

enum class Sym : uint8_t { x, y, X, Y, z, Z, r, g, b, a, c, i, u, v, d, m, M };

enum class UnOp : uint8_t { Neg, Not, BitNot };

enum class BinOp : uint8_t {
  Mul, Div, Mod, Add, Sub, Shl, Shr, Lt, Le, Gt, Ge, Eq, Ne,
  BitAnd, BitXor, BitOr, LogAnd, LogOr
};

enum class Fn : uint8_t {
  Src, Rad, Cnv, Ctl, Val, Map, Min, Max, Abs, AddF, SubF, Dif, Mix, Scl,
  Sqr, Sin, Cos, Tan, R2x, R2y, C2d, C2m, Rnd, Rst, Get, Put
};

struct Node {
  NodeKind kind = NodeKind::Const;
  uint8_t code = 0;       // the Sym, UnOp, BinOp or Fn, by kind
  uint16_t kidCount = 0;
  int32_t value = 0;      // Const only
  uint32_t pos = 0;       // 0-based character position in the source
  uint32_t firstKid = 0;  // index into Ast::kids
  uint32_t height = 1;    // longest path to a leaf, counting this node
};

struct Ast {
  std::vector<Node> nodes;
  std::vector<uint32_t> kids;
  uint32_t root = 0;

  const Node& at(uint32_t n) const { return nodes[n]; }
  uint32_t kid(const Node& n, int k) const { return kids[n.firstKid + k]; }
};

// True when evaluating the function can change the run's state (cells, generator).
// rst is not one: the original leaves the running stream alone, so it is 0.
inline bool HasSideEffect(Fn f) { return f == Fn::Put || f == Fn::Rnd; }

}  // namespace trel::ff
