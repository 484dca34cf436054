// The code-table query texts: their exact shape, and which codes they offer on a real database.
#include "support/screentest.h"

#include "screencore/codetablequerytext.h"

#include "host/hostsystem.h"
#include "platform/clock.h"
#include "platform/sqlcodetablesource.h"

#include <QSqlDatabase>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace adjustacc::screencore {
namespace {

TEST(CodeTableQueryText, IsWrittenExactlyAsTheCodeBoxesHaveAlwaysWrittenIt) {
  EXPECT_EQ(codeTableQueryText(QStringLiteral("  ne "), QStringLiteral("FORMDOC"), QDate(2024, 3, 7)),
            QStringLiteral("Select CD_TBL_ID, CD_TBL_CD, CD_TBL_DES From QVR_CODE Where REGION='NE' And "
                           "(CD_TBL_ID = 'FORMDOC' And ((EFCTV_DT <= #2024-03-07# And (END_DT)Is Null) Or "
                           "(EFCTV_DT <= #2024-03-07# And END_DT >= #2024-03-07#)))"));
  EXPECT_EQ(orderedCodeTableQueryText(QStringLiteral("NE"), QStringLiteral("PAYADJUST")),
            QStringLiteral("Select CD_TBL_ID, CD_TBL_CD, CD_TBL_DES From QVR_CODE Where REGION='NE'And "
                           "(CD_TBL_ID = 'PAYADJUST' And ((EFCTV_DT <= date() And (END_DT)Is Null) Or "
                           "(EFCTV_DT <= date() And END_DT >= date()))) Order by cd_tbl_des"));
}

// The demo code tables hold, in every account-type table, a code ending today (W), one starting tomorrow (Z)
// and one that ended yesterday (X).
TEST(CodeTableQueryText, OffersTheCodesInEffectOnTheDayGiven) {
  const QString connection = QStringLiteral("inquiry-codes");
  QTemporaryDir dir;
  host::DatabaseOptions options;
  options.databaseName = dir.filePath(QStringLiteral("codes.sqlite"));
  const QDate today(2024, 3, 7);
  ASSERT_TRUE(host::openDatabase(options, connection).ok());
  ASSERT_TRUE(host::createSchema(connection).ok());
  ASSERT_TRUE(host::loadDemoData(connection, today).ok());
  const platform::Clock clock(QDateTime(today, QTime(9, 0)));
  platform::SqlCodeTableSource source(connection, clock);
  const auto codes = [&](const QString& text) {
    auto rows = source.run(text);
    EXPECT_TRUE(rows.ok()) << rows.error().toStdString();
    QStringList result;
    for (rows.value().moveFirst(); rows.ok() && !rows.value().eof(); rows.value().moveNext()) {
      result.append(rows.value().value(QStringLiteral("CD_TBL_CD")).toString());
    }
    return result;
  };
  const QStringList offered = codes(codeTableQueryText(QStringLiteral("ne"), QStringLiteral("FORMDOC"), today));
  EXPECT_TRUE(offered.contains(u"C"));
  EXPECT_TRUE(offered.contains(u"W"));
  EXPECT_FALSE(offered.contains(u"Z"));
  EXPECT_FALSE(offered.contains(u"X"));
  const QStringList tomorrow =
      codes(codeTableQueryText(QStringLiteral("NE"), QStringLiteral("FORMDOC"), today.addDays(1)));
  EXPECT_FALSE(tomorrow.contains(u"W"));
  EXPECT_TRUE(tomorrow.contains(u"Z"));
  EXPECT_TRUE(codes(codeTableQueryText(QStringLiteral("XX"), QStringLiteral("FORMDOC"), today)).isEmpty());
  EXPECT_EQ(codes(orderedCodeTableQueryText(QStringLiteral("NE"), QStringLiteral("PAYADJUST"))),
            (QStringList{QStringLiteral("B"), QStringLiteral("C")}));  // BACKOUT, CANCEL
  QSqlDatabase::database(connection, false).close();
  QSqlDatabase::removeDatabase(connection);
}

}  // namespace
}  // namespace adjustacc::screencore
