// Turns the tree of one channel's expression into register instructions:
// constants are folded, symbols become the fixed input registers, branches
// whose outcome is known are dropped when the other side cannot act, and
// temporaries are reused as soon as they are consumed.
#pragma once

#include "host/ff/FFAst.h"
#include "host/ff/FFProgram.h"

namespace trel::ff {

// Appends channel `channel` (0..3) of `ast` to `program`. Constants are shared
// between the channels of one program. False when the program would need more
// registers than kMaxRegisters; it must not be run then.
bool CompileChannel(const Ast& ast, int channel, Program& program);

// True when the expression's value can differ between channels at one pixel.
bool DependsOnChannel(const Ast& ast);

}  // namespace trel::ff
