#include "excessfunds.h"

namespace adjustacc::host {

using messaging::Result;

Result<std::optional<Receipt>> readReceipt(const Sql& sql, const QString& number, bool lock) {
  using R = Result<std::optional<Receipt>>;
  Result<std::optional<QVariantList>> row = sql.firstRow(
      QStringLiteral("SELECT RCPT_NBR, CUST_ID, RCPT_DT, RCPT_STTS_CD, CNFRMTN_NBR, TOT_PYMT_AMT, ROW_VRSN_NBR "
                     "FROM RCPT WHERE RCPT_NBR = ?") +
          (lock ? sql.dialect().lockRowsSuffix() : QString()),
      {number});
  if (!row) {
    return R::failure(row.error());
  }
  if (!row.value()) {
    return std::optional<Receipt>();
  }
  const QVariantList& v = *row.value();
  Receipt receipt;
  receipt.number = v.at(0).toString();
  receipt.customerId = v.at(1).toString();
  receipt.date = SqlDialect::dayFromValue(v.at(2));
  receipt.status = v.at(3).toString().trimmed().toUpper();
  receipt.confirmation = v.at(4).toString();
  receipt.total = v.at(5).toLongLong();
  receipt.version = v.at(6).toLongLong();
  return std::optional<Receipt>(receipt);
}

std::optional<QString> parseReceiptNumber(const QString& text) {
  const QString trimmed = text.trimmed().toUpper();
  if (trimmed.isEmpty() || trimmed.size() > 10) {
    return std::nullopt;
  }
  for (const QChar c : trimmed) {
    if (!(c.isLetterOrNumber() && c.unicode() < 128)) {
      return std::nullopt;
    }
  }
  return trimmed;
}

Result<qint64> openExcess(const Sql& sql, const QString& receipt, const QString& customerId) {
  if (customerId.isEmpty()) {
    return sql.scalar(QStringLiteral("SELECT SUM(OVR_PYMT_AMT) FROM OVR_PYMT WHERE RCPT_NBR = ? AND "
                                     "OVR_PYMT_STTS_CD = 'O'"),
                      {receipt}, 0);
  }
  return sql.scalar(QStringLiteral("SELECT SUM(OVR_PYMT_AMT) FROM OVR_PYMT WHERE RCPT_NBR = ? AND CUST_ID = ? AND "
                                   "OVR_PYMT_STTS_CD = 'O'"),
                    {receipt, customerId}, 0);
}

Result<bool> drawOpenExcess(AuditedWriter& writer, const ExcessDraw& draw) {
  const Sql& sql = writer.sql();
  QString statement = QStringLiteral(
      "SELECT OVR_PYMT_ID, OVR_PYMT_AMT, CUST_ID, OVR_PYMT_DT, OVR_PYMT_TM, ROW_VRSN_NBR FROM OVR_PYMT "
      "WHERE RCPT_NBR = ? AND OVR_PYMT_STTS_CD = 'O'");
  QVariantList values = {draw.receipt};
  if (!draw.customerId.isEmpty()) {
    statement += QStringLiteral(" AND CUST_ID = ?");
    values.append(draw.customerId);
  }
  statement += QStringLiteral(" ORDER BY OVR_PYMT_SEQ_NBR") + sql.dialect().lockRowsSuffix();
  Result<QSqlQuery> query = sql.run(statement, values);
  if (!query) {
    return Result<bool>::failure(query.error());
  }
  struct Fund {
    qint64 id;
    qint64 amount;
    QString customer;
    QVariant day;
    QString time;
    qint64 version;
  };
  QList<Fund> funds;
  qint64 open = 0;
  while (query.value().next()) {
    const QSqlQuery& q = query.value();
    funds.append({q.value(0).toLongLong(), q.value(1).toLongLong(), q.value(2).toString(), q.value(3),
                  q.value(4).toString(), q.value(5).toLongLong()});
    open += funds.last().amount;
  }
  if (draw.amount <= 0) {
    return Result<bool>::failure(QStringLiteral("An amount above $0.00 is needed."));
  }
  if (open < draw.amount) {
    return Result<bool>::failure(QStringLiteral("%1 is more than the open excess of %2 on receipt %3.")
                                     .arg(centsForDisplay(draw.amount), centsForDisplay(open), draw.receipt));
  }
  Result<qint64> lastSequence =
      sql.scalar(QStringLiteral("SELECT MAX(OVR_PYMT_SEQ_NBR) FROM OVR_PYMT WHERE RCPT_NBR = ?"), {draw.receipt}, 0);
  if (!lastSequence) {
    return Result<bool>::failure(lastSequence.error());
  }
  qint64 sequence = lastSequence.value();
  qint64 remaining = draw.amount;
  const QVariant destination = draw.destination.isEmpty() ? QStringLiteral("0") : draw.destination;
  const QVariant refund = draw.refundNumber.isEmpty() ? QVariant(QMetaType(QMetaType::QString)) : draw.refundNumber;
  for (const Fund& fund : funds) {
    if (remaining == 0) {
      break;
    }
    const QString what = QStringLiteral("An excess fund of receipt %1").arg(draw.receipt);
    if (fund.amount <= remaining) {
      Result<bool> marked = writer.update(
          QStringLiteral("OVR_PYMT"), {{QStringLiteral("OVR_PYMT_ID"), fund.id}},
          {{QStringLiteral("OVR_PYMT_STTS_CD"), draw.status},
           {QStringLiteral("DSTNTN_RCPT_NBR"), destination},
           {QStringLiteral("RFND_NBR"), refund}},
          fund.version, what);
      if (!marked) {
        return marked;
      }
      remaining -= fund.amount;
      continue;
    }
    // Only part of this fund is needed: the rest stays open under its own row.
    Result<bool> reduced =
        writer.update(QStringLiteral("OVR_PYMT"), {{QStringLiteral("OVR_PYMT_ID"), fund.id}},
                      {{QStringLiteral("OVR_PYMT_AMT"), fund.amount - remaining}}, fund.version, what);
    if (!reduced) {
      return reduced;
    }
    Result<qint64> split = writer.insert(QStringLiteral("OVR_PYMT"),
                                         {{QStringLiteral("RCPT_NBR"), draw.receipt},
                                          {QStringLiteral("OVR_PYMT_SEQ_NBR"), ++sequence},
                                          {QStringLiteral("CUST_ID"), fund.customer},
                                          {QStringLiteral("OVR_PYMT_DT"), fund.day},
                                          {QStringLiteral("OVR_PYMT_TM"), fund.time},
                                          {QStringLiteral("OVR_PYMT_AMT"), remaining},
                                          {QStringLiteral("OVR_PYMT_STTS_CD"), draw.status},
                                          {QStringLiteral("DSTNTN_RCPT_NBR"), destination},
                                          {QStringLiteral("RFND_NBR"), refund}},
                                         QStringLiteral("OVR_PYMT_ID"));
    if (!split) {
      return Result<bool>::failure(split.error());
    }
    remaining = 0;
  }
  return true;
}

Result<int> moveExcess(AuditedWriter& writer, const QString& receipt, const QString& fromStatus,
                       const QString& refundNumber, const QString& toStatus, bool clearRefund) {
  const Sql& sql = writer.sql();
  QString statement = QStringLiteral("SELECT OVR_PYMT_ID FROM OVR_PYMT WHERE RCPT_NBR = ? AND OVR_PYMT_STTS_CD = ?");
  QVariantList values = {receipt, fromStatus};
  if (!refundNumber.isEmpty()) {
    statement += QStringLiteral(" AND RFND_NBR = ?");
    values.append(refundNumber);
  }
  Result<QSqlQuery> query = sql.run(statement + QStringLiteral(" ORDER BY OVR_PYMT_SEQ_NBR"), values);
  if (!query) {
    return Result<int>::failure(query.error());
  }
  QList<qint64> ids;
  while (query.value().next()) {
    ids.append(query.value().value(0).toLongLong());
  }
  for (qint64 id : ids) {
    ColumnValues changes = {{QStringLiteral("OVR_PYMT_STTS_CD"), toStatus}};
    if (clearRefund) {
      changes.append({QStringLiteral("RFND_NBR"), QVariant(QMetaType(QMetaType::QString))});
    }
    Result<bool> moved = writer.update(QStringLiteral("OVR_PYMT"), {{QStringLiteral("OVR_PYMT_ID"), id}}, changes,
                                       std::nullopt, QStringLiteral("An excess fund of receipt %1").arg(receipt));
    if (!moved) {
      return Result<int>::failure(moved.error());
    }
  }
  return int(ids.size());
}

}  // namespace adjustacc::host
