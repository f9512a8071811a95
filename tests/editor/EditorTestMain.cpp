// The editor tests need one application object; without a display they draw
// off screen, except the Xvfb run which sets its own platform.
#include <gtest/gtest.h>

#include <QApplication>
#include <cstdlib>

#include "support/UnattendedDialogs.h"

int main(int argc, char** argv) {
  if (!std::getenv("QT_QPA_PLATFORM") && !std::getenv("TREL_EDITOR_XVFB"))
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
  QApplication app(argc, argv);
  trel::UseDialogs(std::make_unique<trel::test::UnattendedDialogs>());
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
