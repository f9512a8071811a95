// Everything a reader or writer needs besides the record: the options and the
// shell it reports to. Passed by reference; holds no state of its own.
#pragma once

#include "filter/FilterOptions.h"
#include "filter/ShellHooks.h"

namespace trel {

struct FilterEnv {
  FilterOptions options;
  ShellHooks* shell = nullptr;

  ShellHooks& hooks() const { return shell ? *shell : NullShell(); }
};

}  // namespace trel
