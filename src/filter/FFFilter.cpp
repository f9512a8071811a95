#include "filter/FFFilter.h"

#include "filter/ShellHooks.h"

namespace trel {

void IniVars(FFFilter& f) {
  f.category.clear();
  f.author.clear();
  f.copyright.clear();
  f.filename.clear();
  f.title.clear();
  for (int i = 1; i <= 8; ++i) {
    f.ctlName[i].clear();
    f.ctlValue[i] = 0;
  }
  for (int i = 1; i <= 4; ++i) f.mapName[i].clear();
  f.codeR.clear();
  f.codeB.clear();
  f.codeG.clear();
  f.codeA.clear();
}

ShellHooks& NullShell() {
  static ShellHooks none;
  return none;
}

}  // namespace trel
