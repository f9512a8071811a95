// Turns the tree of one channel's expression into register instructions:
// constants are folded, symbols become the fixed input registers, branches
// whose outcome is known are dropped when the other side cannot act, and
// temporaries are reused as soon as they are consumed.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "host/ff/FFAst.h"
#include "host/ff/FFProgram.h"

namespace trel::ff {

// Values that one channel computes and a later one reuses: parts of the
// formulas that are the same in several channels and do not depend on the
// channel. Only for programs without side effects, whose channels may read
// each other's values at the same pixel. Fill `later` with the ASTs of the
// channels still to come before compiling each channel.
struct SharedValues {
  struct Entry {
    const Ast* ast;
    uint32_t node;
    uint16_t reg;
    int channel;
  };
  std::unordered_multimap<uint64_t, Entry> done;  // by the subtree's hash
  std::vector<const Ast*> later;
};

// Appends channel `channel` (0..3) of `ast` to `program`. Constants are shared
// between the channels of one program. False when the program would need more
// registers than kMaxRegisters; it must not be run then.
// With `shared`, the channel reuses what earlier channels left there and
// leaves there what the `later` channels can reuse.
bool CompileChannel(const Ast& ast, int channel, Program& program, SharedValues* shared = nullptr);

// True when the expression's value can differ between channels at one pixel.
bool DependsOnChannel(const Ast& ast);

}  // namespace trel::ff
