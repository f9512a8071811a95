#include "filter/FFFilter.h"

#include <gtest/gtest.h>

namespace trel {
namespace {

TEST(IniVars, ClearsTheFieldsEveryReaderFillsAndKeepsTheRest) {
  FFFilter f;
  f.filename = "a.8bf";
  f.category = "c";
  f.title = "t";
  f.copyright = "(c)";
  f.author = "me";
  f.mapName[4] = "map";
  f.ctlName[8] = "ctl";
  f.ctlValue[8] = 9;
  f.codeR = f.codeG = f.codeB = f.codeA = "r";
  f.isPhotoshop = false;
  f.transitionName = "wipe";
  f.presets[7][9] = -3;
  IniVars(f);

  FFFilter expected;
  expected.isPhotoshop = false;
  expected.transitionName = "wipe";
  expected.presets[7][9] = -3;
  EXPECT_EQ(f, expected);
}

}  // namespace
}  // namespace trel
