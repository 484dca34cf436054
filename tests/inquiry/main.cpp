// Test entry point: a GUI application object (offscreen in tests), so fonts, colours, timers and signals work.
#include <QGuiApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
  // Tests never need a display; test discovery runs the binary without the CTest environment.
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QGuiApplication app(argc, argv);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
