// The desktop's log: every message goes to the log file as one dated line with its level and category, and a
// log grown too large is started afresh with the old one kept beside it.
#include "desktop/logging.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace adjustacc::desktop {
namespace {

using namespace Qt::Literals::StringLiterals;

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

}  // namespace
}  // namespace adjustacc::desktop
