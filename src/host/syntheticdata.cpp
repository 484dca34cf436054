#include "syntheticdata.h"

#include "demodata.h"
#include "sqlutil.h"
#include "transaction.h"

#include "messaging/formnumber.h"

#include <QSqlDatabase>
#include <QSqlError>

namespace adjustacc::host {

using messaging::Result;

namespace {

constexpr qint64 kFirstReceivable = 9000000;  // receivables numbered 9000000..9999999
constexpr qint64 kFirstPlan = 6000000;        // plans numbered 6000000..6009999
constexpr int kPaymentsPerReceipt = 5;        // every other receivable is paid: ten receivables to a receipt

// A prepared statement run many times with new values.
class Batch {
public:
  Batch(const QSqlDatabase& db, const QString& statement) : m_query(db) { m_ok = m_query.prepare(statement); }
  bool run(const QVariantList& values) {
    if (!m_ok) {
      return false;
    }
    for (int i = 0; i < values.size(); ++i) {
      m_query.bindValue(i, values.at(i));
    }
    return m_query.exec();
  }
  // For an INSERT ... RETURNING: the key of the new row.
  std::optional<qint64> insert(const QVariantList& values) {
    if (!run(values) || !m_query.next()) {
      return std::nullopt;
    }
    const qint64 id = m_query.value(0).toLongLong();
    m_query.finish();
    return id;
  }
  QString error() const { return databaseFailureText(m_query); }

private:
  QSqlQuery m_query;
  bool m_ok = false;
};

}  // namespace

Result<QList<SyntheticAccount>> generateSyntheticData(const QString& connectionName, const SyntheticShape& shape) {
  using R = Result<QList<SyntheticAccount>>;
  const Result<Sql> connection = Sql::onConnection(connectionName);
  if (!connection) {
    return R::failure(connection.error());
  }
  if (shape.customers < 1 || shape.accountsPerCustomer < 1 || shape.receivablesPerAccount < 1) {
    return R::failure(QStringLiteral("Synthetic data needs at least one customer, account and receivable."));
  }
  const Sql& sql = connection.value();
  const QSqlDatabase db = sql.database();
  Transaction filling(sql);
  if (Result<bool> started = filling.begin(); !started) {
    return R::failure(started.error());
  }
  Result<qint64> officers = sql.scalar(QStringLiteral("SELECT COUNT(*) FROM OFFICER"), {}, 0);
  if (!officers) {
    return R::failure(officers.error());
  }
  if (officers.value() == 0) {
    if (Result<bool> reference = fillReferenceData(sql, shape.today); !reference) {
      return R::failure(reference.error());
    }
  }
  // Continue after what an earlier run generated.
  Result<qint64> lastReceivable = sql.scalar(
      QStringLiteral("SELECT MAX(ACCT_RCVBL_NBR) FROM ACCT_RCVBL WHERE ACCT_RCVBL_NBR >= '9000000'"), {}, kFirstReceivable - 1);
  Result<qint64> lastPlan = sql.scalar(
      QStringLiteral("SELECT MAX(REF_NBR) FROM ACCT_RCVBL WHERE REF_TYP_CD = 'P' AND REF_NBR >= '6000000'"), {},
      kFirstPlan - 1);
  Result<qint64> customersSoFar =
      sql.scalar(QStringLiteral("SELECT COUNT(*) FROM CUSTOMER WHERE CUST_ID LIKE 'SYN%'"), {}, 0);
  Result<qint64> receiptsSoFar = sql.scalar(QStringLiteral("SELECT COUNT(*) FROM RCPT WHERE RCPT_NBR LIKE 'S%'"), {}, 0);
  for (const Result<qint64>* read : {&lastReceivable, &lastPlan, &customersSoFar, &receiptsSoFar}) {
    if (!*read) {
      return R::failure(read->error());
    }
  }
  const qint64 accounts = qint64(shape.customers) * shape.accountsPerCustomer;
  const qint64 receivables = accounts * shape.receivablesPerAccount;
  if (lastReceivable.value() + receivables > 9999999 || lastPlan.value() + accounts > kFirstPlan + 9999) {
    return R::failure(QStringLiteral("That much synthetic data does not fit the number ranges (%1 receivables, %2 "
                                     "accounts at most per database).")
                          .arg(9999999 - kFirstReceivable + 1)
                          .arg(10000));
  }

  Batch customer(db, QStringLiteral("INSERT INTO CUSTOMER (CUST_ID, CUST_NM, ADDR_1, CITY, STATE, ZIP) "
                                    "VALUES (?, ?, ?, 'CAPITOL CITY', 'NY', '12200')"));
  Batch receivable(db, QStringLiteral("INSERT INTO ACCT_RCVBL (ACCT_RCVBL_TYP_CD, ACCT_RCVBL_NBR, ACCT_RCVBL_CK_NBR, "
                                      "REF_TYP_CD, REF_NBR, CUST_ID, STP_DT, ACCT_RCVBL_DUE_DT, ORIG_ASSMT_AMT, "
                                      "ACCT_RCVBL_DUE_AMT, ACCT_RCVBL_BAL_AMT, ACCT_STTS_CD, ACTV_STTS_CD, INSTLMT_NBR, "
                                      "ASSMT_PP_TYP_CD) VALUES ('P', ?, ?, 'P', ?, ?, ?, ?, ?, ?, ?, ?, 'A', ?, 'PP') "
                                      "RETURNING ACCT_RCVBL_ID"));
  Batch assessment(db, QStringLiteral("INSERT INTO VLTN_ASSMT (ACCT_RCVBL_ID, CUST_ID, VLTN_ASSMT_SEQ_NBR, TRNSCTN_NBR, "
                                      "ASSMT_CD, ASSMT_TYP_CD, ASSMT_ISSUE_DT, CL_ASMT_AMT, AC_ASMT_AMT, BAL_DUE_AMT, "
                                      "VLTN_ASSMT_STTS_CD) VALUES (?, ?, 1, ?, 'P05', 'P', ?, ?, ?, ?, 'A')"));
  Batch receipt(db, QStringLiteral("INSERT INTO RCPT (RCPT_NBR, CUST_ID, RCPT_DT, RCPT_STTS_CD, CNFRMTN_NBR, "
                                   "TOT_PYMT_AMT) VALUES (?, ?, ?, 'O', ?, ?)"));
  Batch fund(db, QStringLiteral("INSERT INTO FUND (RCPT_NBR, FUND_SEQ_NBR, FUND_TYP_CD, FUND_RFRNC_NBR, FUND_AMT) "
                                "VALUES (?, 1, 'K', ?, ?)"));
  Batch payment(db, QStringLiteral("INSERT INTO PYMT (RCPT_NBR, ACCT_RCVBL_ID, PYMT_NBR, TRNSCTN_NBR, TRNSCTN_DT, "
                                   "PYMT_DT, CL_PYMT_AMT, STTS_CD) VALUES (?, ?, ?, ?, ?, ?, ?, 'A')"));

  QList<SyntheticAccount> made;
  qint64 nextReceivable = lastReceivable.value() + 1;
  qint64 nextPlan = lastPlan.value() + 1;
  qint64 nextReceipt = receiptsSoFar.value() + 1;
  qint64 nextTransaction = nextReceivable;
  const QVariant issued = sql.date(shape.today.addDays(-90));
  const QVariant stop = sql.date(shape.today.addDays(90));
  const auto fail = [](const Batch& batch) { return R::failure(batch.error()); };

  for (int c = 0; c < shape.customers; ++c) {
    const QString customerId = QStringLiteral("SYN%1").arg(customersSoFar.value() + c + 1, 6, 10, QLatin1Char('0'));
    if (!customer.run({customerId, QStringLiteral("SYNTHETIC CARRIER %1").arg(customersSoFar.value() + c + 1),
                       QStringLiteral("%1 FREIGHT WAY").arg(c + 1)})) {
      return fail(customer);
    }
    for (int a = 0; a < shape.accountsPerCustomer; ++a) {
      SyntheticAccount account{QStringLiteral("P"), QString::number(nextPlan++), shape.receivablesPerAccount, 0};
      // Ten receivables to a receipt: the receipt is written with its payments once they are known.
      QString receiptNumber;
      qint64 receiptTotal = 0;
      int paymentsOnReceipt = 0;
      QList<QVariantList> pending;
      const auto closeReceipt = [&]() -> bool {
        if (pending.isEmpty()) {
          return true;
        }
        if (!receipt.run({receiptNumber, customerId, issued, QStringLiteral("CNF-%1").arg(receiptNumber),
                          receiptTotal}) ||
            !fund.run({receiptNumber, QStringLiteral("CHK%1").arg(receiptNumber.mid(1)), receiptTotal})) {
          return false;
        }
        for (const QVariantList& values : pending) {
          if (!payment.run(values)) {
            return false;
          }
        }
        ++account.receipts;
        pending.clear();
        receiptTotal = 0;
        paymentsOnReceipt = 0;
        return true;
      };
      for (int r = 0; r < shape.receivablesPerAccount; ++r) {
        const QString number = QString::number(nextReceivable++);
        const std::optional<int> digit = messaging::formCheckDigit(number);
        const qint64 amount = 5000 + (nextReceivable % 97) * 125;
        const bool paid = r % 2 == 0;
        const qint64 balance = paid ? amount - amount / 2 : amount;
        const std::optional<qint64> id =
            receivable.insert({number, QString::number(digit.value_or(0)), account.number, customerId, stop, stop,
                               amount, amount, balance, paid ? QStringLiteral("R") : QStringLiteral("U"), r + 1});
        if (!id) {
          return fail(receivable);
        }
        const QString transaction = QStringLiteral("S%1").arg(nextTransaction++);
        if (!assessment.run({*id, customerId, transaction, issued, amount, amount, amount})) {
          return fail(assessment);
        }
        if (!paid) {
          continue;
        }
        if (paymentsOnReceipt == 0) {
          receiptNumber = QStringLiteral("S%1").arg(nextReceipt++, 9, 10, QLatin1Char('0'));
        }
        pending.append({receiptNumber, *id, ++paymentsOnReceipt, transaction, issued, issued, amount / 2});
        receiptTotal += amount / 2;
        if (paymentsOnReceipt == kPaymentsPerReceipt && !closeReceipt()) {
          return R::failure(payment.error());
        }
      }
      if (!closeReceipt()) {
        return R::failure(payment.error());
      }
      made.append(account);
    }
  }
  if (Result<bool> committed = filling.commit(); !committed) {
    return R::failure(committed.error());
  }
  return made;
}

}  // namespace adjustacc::host
