#include "receivable.h"

#include <QTimeZone>

namespace adjustacc::host {

using messaging::Result;

namespace {

const QString kReceivableSelect = QStringLiteral(
    "SELECT ACCT_RCVBL_ID, ACCT_RCVBL_TYP_CD, ACCT_RCVBL_NBR, ACCT_RCVBL_CK_NBR, CUST_ID, ACCT_STTS_CD, "
    "ACTV_STTS_CD, CASE_ID, ACCT_RCVBL_BAL_AMT, ROW_VRSN_NBR FROM ACCT_RCVBL ");

Result<std::optional<Receivable>> readOne(const Sql& sql, const QString& where, const QVariantList& values,
                                          bool lock) {
  using R = Result<std::optional<Receivable>>;
  Result<std::optional<QVariantList>> row =
      sql.firstRow(kReceivableSelect + where + (lock ? sql.dialect().lockRowsSuffix() : QString()), values);
  if (!row) {
    return R::failure(row.error());
  }
  if (!row.value()) {
    return std::optional<Receivable>();
  }
  const QVariantList& v = *row.value();
  Receivable receivable;
  receivable.id = v.at(0).toLongLong();
  receivable.type = v.at(1).toString();
  receivable.number = v.at(2).toString();
  receivable.checkDigit = v.at(3).toString();
  receivable.customerId = v.at(4).toString();
  receivable.status = v.at(5).toString().trimmed().toUpper();
  receivable.activity = v.at(6).toString().trimmed().toUpper();
  receivable.caseId = v.at(7).toString().trimmed();
  receivable.balance = v.at(8).toLongLong();
  receivable.version = v.at(9).toLongLong();
  return std::optional<Receivable>(receivable);
}

}  // namespace

Result<std::optional<Receivable>> readReceivable(const Sql& sql, const QString& type, const QString& number,
                                                 bool lock) {
  return readOne(sql, QStringLiteral("WHERE ACCT_RCVBL_TYP_CD = ? AND ACCT_RCVBL_NBR = ?"), {type, number}, lock);
}

Result<std::optional<Receivable>> readReceivableById(const Sql& sql, qint64 id, bool lock) {
  return readOne(sql, QStringLiteral("WHERE ACCT_RCVBL_ID = ?"), {id}, lock);
}

Result<ReceivableAmounts> computeAmounts(const Sql& sql, qint64 receivableId) {
  Result<std::optional<QVariantList>> row = sql.firstRow(
      QStringLiteral(
          "SELECT "
          "(SELECT COALESCE(SUM(CASE WHEN LIC_PRCHS_OPTN_IND = 'Y' THEN AC_ASMT_AMT ELSE CL_ASMT_AMT END), 0) "
          " FROM VLTN_ASSMT WHERE ACCT_RCVBL_ID = ? AND VLTN_ASSMT_STTS_CD = 'A'), "
          "(SELECT COALESCE(SUM(BAL_DUE_AMT), 0) FROM VLTN_ASSMT WHERE ACCT_RCVBL_ID = ? AND VLTN_ASSMT_STTS_CD = 'A'), "
          "(SELECT COALESCE(SUM(CL_PYMT_AMT), 0) FROM PYMT WHERE ACCT_RCVBL_ID = ? AND ACTVTY_STTS_CD IS NULL), "
          "(SELECT COALESCE(SUM(CL_ASMT_AMT), 0) FROM VLTN_ASSMT WHERE ACCT_RCVBL_ID = ? AND VLTN_ASSMT_STTS_CD = 'A' "
          " AND ASSMT_CD = ?), "
          "(SELECT COALESCE(SUM(CL_ASMT_AMT), 0) FROM VLTN_ASSMT WHERE ACCT_RCVBL_ID = ? AND VLTN_ASSMT_STTS_CD = 'A' "
          " AND ASSMT_CD = ?)"),
      {receivableId, receivableId, receivableId, receivableId, kLateFeeCode, receivableId, kInterestCode});
  if (!row) {
    return Result<ReceivableAmounts>::failure(row.error());
  }
  const QVariantList& v = *row.value();
  ReceivableAmounts amounts;
  amounts.due = v.at(0).toLongLong();
  amounts.balance = v.at(1).toLongLong() - v.at(2).toLongLong();
  amounts.lateFee = v.at(3).toLongLong();
  amounts.interest = v.at(4).toLongLong();
  return amounts;
}

QString statusForAmounts(const QString& current, const ReceivableAmounts& amounts) {
  if (current != u"U" && current != u"R" && current != u"Y") {
    return current;
  }
  if (amounts.balance <= 0 && amounts.due > 0) {
    return QStringLiteral("Y");
  }
  if (amounts.balance < amounts.due) {
    return QStringLiteral("R");
  }
  return QStringLiteral("U");
}

Result<ReceivableAmounts> refreshReceivable(AuditedWriter& writer, const Receivable& receivable,
                                            std::optional<qint64> expectedVersion) {
  Result<ReceivableAmounts> amounts = computeAmounts(writer.sql(), receivable.id);
  if (!amounts) {
    return amounts;
  }
  const ReceivableAmounts& a = amounts.value();
  Result<bool> written = writer.update(
      QStringLiteral("ACCT_RCVBL"), {{QStringLiteral("ACCT_RCVBL_ID"), receivable.id}},
      {{QStringLiteral("ACCT_RCVBL_DUE_AMT"), a.due},
       {QStringLiteral("ACCT_RCVBL_BAL_AMT"), a.balance},
       {QStringLiteral("LTE_FEE_AMT"), a.lateFee},
       {QStringLiteral("ACRD_INTRST_AMT"), a.interest},
       {QStringLiteral("ACCT_STTS_CD"), statusForAmounts(receivable.status, a)}},
      expectedVersion, receivable.what());
  if (!written) {
    return Result<ReceivableAmounts>::failure(written.error());
  }
  return amounts;
}

Result<bool> addSystemActivity(AuditedWriter& writer, qint64 receivableId, const QString& code,
                               const QString& comment, std::optional<qint64> amount, std::optional<qint64> balance) {
  const WriteContext& context = writer.context();
  const QDateTime local = context.now.toLocalTime();
  const QVariant noAmount{QMetaType(QMetaType::LongLong)};
  Result<qint64> inserted = writer.insert(
      QStringLiteral("ACCT_ACTVTY"),
      {{QStringLiteral("ACCT_RCVBL_ID"), receivableId},
       {QStringLiteral("ACTVTY_DT"), writer.sql().date(local.date())},
       {QStringLiteral("ACTVTY_TM"), local.time().toString(QStringLiteral("HH:mm"))},
       {QStringLiteral("ACCT_ACTVTY_CD"), code},
       {QStringLiteral("ACTVTY_AMT"), amount ? QVariant(*amount) : noAmount},
       {QStringLiteral("ACTVTY_BAL_AMT"), balance ? QVariant(*balance) : noAmount},
       {QStringLiteral("LST_UPDT_USER_ID"), context.officerId},
       {QStringLiteral("ACTVTY_CMMT_TXT"), comment.left(2000)},
       {QStringLiteral("ADTL_INFO_TXT"), QStringLiteral("SYSTEM")},
       {QStringLiteral("LST_UPDT_TS"), writer.sql().dialect().timestampValue(context.now)}},
      QStringLiteral("ACTVTY_SEQ_NBR"));
  if (!inserted) {
    return Result<bool>::failure(inserted.error());
  }
  return true;
}

}  // namespace adjustacc::host
