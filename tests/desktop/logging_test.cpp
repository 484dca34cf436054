// The desktop's log: every message goes to the log file as one dated line with its level and category, and a
// log grown too large is started afresh with the old one kept beside it; by default debug lines are off and
// standard error shows warnings and above.
#include "desktop/logging.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdio>
#include <unistd.h>

namespace adjustacc::desktop {
namespace {

using namespace Qt::Literals::StringLiterals;

Q_LOGGING_CATEGORY(lcTrapForTest, "adjustacc.trap.test")

// What the code under test writes to standard error (file descriptor 2) while `write` runs.
template <typename Write>
QString standardErrorOf(const QString& capturePath, Write write) {
  std::fflush(stderr);
  const int saved = ::dup(2);
  std::FILE* capture = std::fopen(qPrintable(capturePath), "w");
  if (saved < 0 || capture == nullptr) {
    ADD_FAILURE() << "standard error cannot be captured";
    return {};
  }
  ::dup2(::fileno(capture), 2);
  write();
  std::fflush(stderr);
  ::dup2(saved, 2);
  ::close(saved);
  std::fclose(capture);
  QFile file(capturePath);
  return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString contentsOf(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

TEST(LoggingTest, MessagesGoToTheLogFileWithTheirLevelAndCategory) {
  QTemporaryDir folder;
  const QString path = folder.filePath(u"adjustacc.log"_s);
  ASSERT_EQ(installLogHandler(path), path);
  qCWarning(lcDesktop) << "no view for form" << u"QORVA_AccDetail"_s;
  qCInfo(lcDesktop).noquote() << "signed on as ADMIN01";
  removeLogHandler();
  qCWarning(lcDesktop) << "after the handler was removed";

  const QStringList lines = contentsOf(path).split(u'\n', Qt::SkipEmptyParts);
  ASSERT_EQ(lines.size(), 2) << contentsOf(path).toStdString();
  EXPECT_TRUE(lines[0].endsWith(u" warning adjustacc.desktop: no view for form \"QORVA_AccDetail\""_s))
      << lines[0].toStdString();
  EXPECT_TRUE(lines[1].endsWith(u" info adjustacc.desktop: signed on as ADMIN01"_s)) << lines[1].toStdString();
  // Each line starts with its moment, to the millisecond.
  EXPECT_TRUE(QDateTime::fromString(lines[0].section(u' ', 0, 0), Qt::ISODateWithMs).isValid());
}

TEST(LoggingTest, ALogGrownTooLargeIsStartedAfreshAndTheOldOneKept) {
  QTemporaryDir folder;
  const QString path = folder.filePath(u"adjustacc.log"_s);
  {
    QFile big(path);
    ASSERT_TRUE(big.open(QIODevice::WriteOnly));
    big.write(QByteArray(5 * 1024 * 1024, 'x'));
  }
  ASSERT_EQ(installLogHandler(path), path);
  qCWarning(lcDesktop) << "fresh";
  removeLogHandler();
  EXPECT_EQ(QFile(path + u".1"_s).size(), 5 * 1024 * 1024);
  EXPECT_TRUE(contentsOf(path).contains(u"fresh"_s));
  EXPECT_LT(QFile(path).size(), 1024);
}

TEST(LoggingTest, ByDefaultDebugLinesAreOffAndStandardErrorShowsWarningsAndAbove) {
  if (defaultStandardErrorLevel() != QtWarningMsg) {
    GTEST_SKIP() << "logging rules are given in the environment";
  }
  applyDefaultLogRules();
  EXPECT_FALSE(lcTrapForTest().isDebugEnabled());
  EXPECT_TRUE(lcTrapForTest().isInfoEnabled());
  EXPECT_TRUE(lcTrapForTest().isWarningEnabled());

  QTemporaryDir folder;
  const QString path = folder.filePath(u"adjustacc.log"_s);
  const QString shown = standardErrorOf(folder.filePath(u"stderr.txt"_s), [&] {
    ASSERT_EQ(installLogHandler(path), path);
    qCDebug(lcTrapForTest) << "QORVA_AdjustAcc.FileOpen left: 800403e8";
    qCInfo(lcDesktop).noquote() << "signed on as ADMIN01";
    qCWarning(lcDesktop).noquote() << "no view for form QORVA_AccDetail";
    removeLogHandler();
  });
  QLoggingCategory::setFilterRules(QString());

  EXPECT_TRUE(shown.contains(u"no view for form QORVA_AccDetail"_s)) << shown.toStdString();
  EXPECT_FALSE(shown.contains(u"signed on as"_s)) << shown.toStdString();
  EXPECT_FALSE(shown.contains(u"800403e8"_s)) << shown.toStdString();
  // The file keeps the information too, never the debug line.
  const QString kept = contentsOf(path);
  EXPECT_TRUE(kept.contains(u"info adjustacc.desktop: signed on as ADMIN01"_s)) << kept.toStdString();
  EXPECT_TRUE(kept.contains(u"warning adjustacc.desktop: no view for form QORVA_AccDetail"_s)) << kept.toStdString();
  EXPECT_FALSE(kept.contains(u"800403e8"_s)) << kept.toStdString();
}

TEST(LoggingTest, RulesThePersonGivesShowEverythingTheyLetThroughOnStandardError) {
  QTemporaryDir folder;
  const QString shown = standardErrorOf(folder.filePath(u"stderr.txt"_s), [&] {
    installLogHandler(folder.filePath(u"adjustacc.log"_s), QtDebugMsg);
    qCInfo(lcDesktop).noquote() << "signed on as ADMIN01";
    removeLogHandler();
  });
  EXPECT_TRUE(shown.contains(u"signed on as ADMIN01"_s)) << shown.toStdString();
}

}  // namespace
}  // namespace adjustacc::desktop
