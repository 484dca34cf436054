#pragma once
// What the benchmarks of the host link and of opening an account share: the account sizes measured, the
// account inquiry's own statements (the anchors run them raw on the same database), the database with the
// host's tables, and stopping the program when its set-up fails.

#include "host/embeddedlink.h"
#include "host/hostsystem.h"

#include <QCoreApplication>
#include <QString>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

namespace adjustacc::benchsupport {

// Receivables per account: a small account, a busy one and a very large one.
inline const std::vector<int> kAccountSizes = {10, 1000, 50000};

// The account inquiry's statements for an account filed under a reference (the host's own text): the
// receivables of the account, then its receipts. Each takes the reference type and number twice.
inline const QString kReceivablesSql = QStringLiteral(
    "SELECT c.CUST_NM, a.ACCT_RCVBL_NBR, a.ACCT_RCVBL_CK_NBR, a.STP_DT, a.ORIG_ASSMT_AMT, a.LTE_FEE_AMT, "
    "a.ACRD_INTRST_AMT, a.ACCT_RCVBL_DUE_AMT, a.ACCT_RCVBL_BAL_AMT, a.ACCT_STTS_CD, a.ACCT_RCVBL_TYP_CD, "
    "a.ACTV_STTS_CD, a.CASE_ID, a.CUST_ID, a.ROW_VRSN_NBR "
    "FROM ACCT_RCVBL a JOIN CUSTOMER c ON c.CUST_ID = a.CUST_ID "
    "WHERE (a.REF_TYP_CD = ? AND a.REF_NBR = ?) OR (a.ACCT_RCVBL_TYP_CD = ? AND a.ACCT_RCVBL_NBR = ?) "
    "ORDER BY a.CUST_ID, a.ACCT_RCVBL_NBR");
inline const QString kReceiptsSql = QStringLiteral(
    "SELECT r.RCPT_DT, r.RCPT_NBR, r.RCPT_STTS_CD, r.TOT_PYMT_AMT, "
    "(SELECT SUM(o.OVR_PYMT_AMT) FROM OVR_PYMT o WHERE o.RCPT_NBR = r.RCPT_NBR), "
    "r.CUST_ID, r.CNFRMTN_NBR, r.ROW_VRSN_NBR FROM RCPT r "
    "WHERE r.RCPT_NBR IN (SELECT p.RCPT_NBR FROM PYMT p JOIN ACCT_RCVBL a ON a.ACCT_RCVBL_ID = p.ACCT_RCVBL_ID "
    "WHERE (a.REF_TYP_CD = ? AND a.REF_NBR = ?) OR (a.ACCT_RCVBL_TYP_CD = ? AND a.ACCT_RCVBL_NBR = ?)) "
    "ORDER BY r.RCPT_NBR");

// A set-up that fails leaves nothing worth measuring: says why, named by the program, and stops.
[[noreturn]] inline void die(const QString& text) {
  std::fprintf(stderr, "%s: %s\n", qPrintable(QCoreApplication::applicationName()), qPrintable(text));
  std::exit(1);
}

// Opens the database as `connection` and creates the host's tables in it, or stops the program.
inline void openHostDatabase(const host::DatabaseOptions& options, const QString& connection) {
  if (auto opened = host::openDatabase(options, connection); !opened.ok()) {
    die(opened.error());
  }
  if (auto schema = host::createSchema(connection); !schema.ok()) {
    die(schema.error());
  }
}

// The embedded host link over the database file in `dataFolder`, as the desktop opens it for the officer.
inline std::unique_ptr<host::EmbeddedLink> embeddedLink(const QString& dataFolder, const QString& officerId) {
  host::EmbeddedLinkOptions options;
  options.dataFolder = dataFolder;
  options.officerId = officerId;
  return std::make_unique<host::EmbeddedLink>(options);
}

}  // namespace adjustacc::benchsupport
