// Test entry point: a widgets application (offscreen unless a platform is chosen), with the window settings
// kept in a throwaway folder so that tests never touch the user's own.
#include <QApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QTemporaryDir settings;
  qputenv("XDG_CONFIG_HOME", settings.path().toUtf8());
  QApplication app(argc, argv);
  QApplication::setOrganizationName(QStringLiteral("adjustacc-tests"));
  QApplication::setApplicationName(QStringLiteral("adjustacc-tests"));
  QApplication::setApplicationDisplayName(QStringLiteral("Adjust Account"));
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
