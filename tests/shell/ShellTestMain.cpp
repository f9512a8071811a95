// The shell tests need one application object for all widgets; without a
// display they draw off screen.
#include <gtest/gtest.h>

#include <QApplication>
#include <cstdlib>

#include "support/UnattendedDialogs.h"

int main(int argc, char** argv) {
  if (!std::getenv("QT_QPA_PLATFORM")) ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
  QApplication app(argc, argv);
  // Message boxes and the tip dialog answer themselves.
  trel::UseDialogs(std::make_unique<trel::test::UnattendedDialogs>());
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
