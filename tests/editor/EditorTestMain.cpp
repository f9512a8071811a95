// The editor tests need one application object; without a display they draw
// off screen, except the Xvfb run which sets its own platform.
#include <gtest/gtest.h>

#include <QApplication>
#include <cstdlib>

int main(int argc, char** argv) {
  if (!std::getenv("QT_QPA_PLATFORM") && !std::getenv("TREL_EDITOR_XVFB"))
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
  ::setenv("TREL_AUTO_ACCEPT", "1", 1);
  QApplication app(argc, argv);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
