// The synthetic data the benchmarks use: the sizes asked for, amounts the host would compute, and accounts
// the account inquiry finds.
#include "hostfixture.h"

#include "host/syntheticdata.h"

namespace adjustacc::host::testing {
namespace {

using namespace Qt::Literals::StringLiterals;

using messaging::Reply;

class Synthetic : public HostTest {};

TEST_P(Synthetic, AccountsHaveTheirReceivablesReceiptsAndConsistentAmounts) {
  SyntheticShape shape;
  shape.customers = 2;
  shape.accountsPerCustomer = 2;
  shape.receivablesPerAccount = 25;
  auto made = generateSyntheticData(m_connection, shape);
  ASSERT_TRUE(made.ok()) << made.error().toStdString();
  ASSERT_EQ(made->size(), 4);
  // Thirteen of 25 receivables are paid, five payments to a receipt.
  EXPECT_EQ(made->first().receipts, 3);

  const SyntheticAccount& account = made->at(1);
  const Reply reply =
      ok(RequestBuilder(47).param(u"key:REF_NBR"_s, account.number).param(u"key:REF_TYP_CD"_s, account.type));
  EXPECT_EQ(rows(reply, u"ACNTSRCVBL"_s), 25);
  EXPECT_EQ(rows(reply, u"RECEIPT"_s), 3);

  // Every synthetic receivable carries the amounts the host computes from its rows.
  EXPECT_EQ(count(QStringLiteral(
                "SELECT COUNT(*) FROM ACCT_RCVBL a WHERE a.CUST_ID LIKE 'SYN%' AND a.ACCT_RCVBL_BAL_AMT <> "
                "(SELECT SUM(s.BAL_DUE_AMT) FROM VLTN_ASSMT s WHERE s.ACCT_RCVBL_ID = a.ACCT_RCVBL_ID AND "
                "s.VLTN_ASSMT_STTS_CD = 'A') - COALESCE((SELECT SUM(p.CL_PYMT_AMT) FROM PYMT p WHERE "
                "p.ACCT_RCVBL_ID = a.ACCT_RCVBL_ID AND p.ACTVTY_STTS_CD IS NULL), 0)")),
            0);
  EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM RCPT r WHERE r.RCPT_NBR LIKE 'S%' AND r.TOT_PYMT_AMT <> "
                                 "(SELECT SUM(p.CL_PYMT_AMT) FROM PYMT p WHERE p.RCPT_NBR = r.RCPT_NBR)")),
            0);

  // A second run continues the numbering.
  auto more = generateSyntheticData(m_connection, shape);
  ASSERT_TRUE(more.ok()) << more.error().toStdString();
  EXPECT_NE(more->first().number, made->first().number);
  EXPECT_EQ(count(u"SELECT COUNT(*) FROM ACCT_RCVBL WHERE CUST_ID LIKE 'SYN%'"_s), 200);

  shape.receivablesPerAccount = 0;
  EXPECT_FALSE(generateSyntheticData(m_connection, shape).ok());
  shape.receivablesPerAccount = 1000000;
  EXPECT_FALSE(generateSyntheticData(m_connection, shape).ok());
}

INSTANTIATE_TEST_SUITE_P(Databases, Synthetic, ::testing::Values(Backend::Sqlite, Backend::Postgres), backendName);

}  // namespace
}  // namespace adjustacc::host::testing
