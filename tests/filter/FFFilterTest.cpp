#include "filter/FFFilter.h"

#include "FilterKit.h"

namespace trel {
namespace {

TEST(IniVars, ClearsTheFieldsEveryReaderFillsAndKeepsTheRest) {
  FFFilter f = test::SampleFilter();
  f.mapName[4] = "map";
  f.ctlName[8] = "ctl";
  f.ctlValue[8] = 9;
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
