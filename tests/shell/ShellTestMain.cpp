// The shell tests need one application object for all widgets; without a
// display they draw off screen.
#include <gtest/gtest.h>

#include <QApplication>
#include <cstdlib>

int main(int argc, char** argv) {
  if (!std::getenv("QT_QPA_PLATFORM")) ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
  // Message boxes and the tip dialog answer themselves.
  ::setenv("TREL_AUTO_ACCEPT", "1", 1);
  QApplication app(argc, argv);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
