// The entry point of every test suite. Each suite is built with the application object it needs
// (tests/CMakeLists.txt chooses):
//   core    - event loop, timers and signals;
//   GUI     - also fonts and colours, offscreen unless a platform is chosen (test discovery runs the binary
//             without the CTest environment, and tests never need a display);
//   widgets - as GUI, with the window settings kept in a throwaway folder so that tests never touch the
//             user's own.
#include <gtest/gtest.h>

#if defined(ADJUSTACC_TEST_WIDGETS)
#include <QApplication>
#include <QTemporaryDir>
using TestApplication = QApplication;
#elif defined(ADJUSTACC_TEST_GUI)
#include <QGuiApplication>
using TestApplication = QGuiApplication;
#else
#include <QCoreApplication>
using TestApplication = QCoreApplication;
#endif

int main(int argc, char** argv) {
#if defined(ADJUSTACC_TEST_WIDGETS) || defined(ADJUSTACC_TEST_GUI)
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }
#endif
#if defined(ADJUSTACC_TEST_WIDGETS)
  QTemporaryDir settings;
  qputenv("XDG_CONFIG_HOME", settings.path().toUtf8());
#endif
  TestApplication app(argc, argv);
#if defined(ADJUSTACC_TEST_WIDGETS)
  QApplication::setOrganizationName(QStringLiteral("adjustacc-tests"));
  QApplication::setApplicationName(QStringLiteral("adjustacc-tests"));
  QApplication::setApplicationDisplayName(QStringLiteral("Adjust Account"));
#endif
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
