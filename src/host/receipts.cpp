// Receipts: the receipt detail, refund information, payment adjustments and transfers of excess funds.
#include "excessfunds.h"
#include "handlers.h"
#include "numbers.h"
#include "receiptrules.h"
#include "receivable.h"
#include "requestcheck.h"

#include "messaging/sections.h"

#include <algorithm>

namespace adjustacc::host {

using messaging::RecordSet;
using messaging::Result;

namespace {

const SectionBuilder& receiptBuilder() {
  static const SectionBuilder builder(
      sectionnames::Receipt, {{u"RCPT_DT", Cell::Day}, {u"RCPT_NBR"}, {u"RCPT_STTS_CD"},
                              {u"TOT_PYMT_AMT", Cell::Money}, {u"OVR_PYMT_AMT", Cell::Money}, {u"CUST_ID"},
                              {u"CNFRMTN_NBR"}, {u"ROW_VRSN_NBR"}});
  return builder;
}

const SectionBuilder& fundBuilder() {
  static const SectionBuilder builder(sectionnames::Fund,
                                      {{u"FUND_RFRNC_NBR"}, {u"FUND_AMT", Cell::Money}, {u"FUND_TYP_CD"},
                                       {u"FRCPT_NBR"}, {u"EXPRTN_MO_DT"}, {u"EXPRTN_DY_DT"}, {u"EXPRTN_YR_DT"}});
  return builder;
}

const SectionBuilder& paymentBuilder() {
  static const SectionBuilder builder(
      QString(messaging::sections::kReceiptPayments),
      {{u"CUST_ID"}, {u"CUST_NAME"}, {u"ACCT_RCVBL_NBR"}, {u"ACCT_RCVBL_DUE_DT", Cell::Day},
       {u"CL_PYMT_AMT", Cell::Money}, {u"ADJSTMT_DT", Cell::Day}, {u"ACTVTY_STTS_CD"}, {u"TRNSCTN_NBR"},
       {u"TRNSCTN_DT", Cell::Day}, {u"PYMT_DT", Cell::Day}, {u"PYMT_NBR"}, {u"STTS_CD"}, {u"ACCT_RCVBL_CK_NBR"},
       {u"ACCT_RCVBL_TYP_CD"}, {u"RCPT_NBR"}, {u"ACCT_STTS_CD"}, {u"ACTV_STTS_CD"}, {u"ASSMT_PP_TYP_CD"},
       {u"INSTLMT_NBR"}, {u"ROW_VRSN_NBR"}});
  return builder;
}

const SectionBuilder& excessBuilder() {
  static const SectionBuilder builder(
      sectionnames::Overpayment,
      {{u"CUST_NM"}, {u"OVR_PYMT_DT", Cell::Day}, {u"OVR_PYMT_TM"}, {u"DSTNTN_RCPT_NBR"},
       {u"OVR_PYMT_AMT", Cell::Money}, {u"CUST_ID"}, {u"ADDR_1"}, {u"ADDR_2"}, {u"CITY"}, {u"STATE"}, {u"ZIP"},
       {u"OVR_PYMT_STTS_CD"}, {u"ROW_VRSN_NBR"}, {u"RFND_NBR"}, {u"RFND_STTS_CD"}});
  return builder;
}

}  // namespace

Result<Sections> receiptDetailSections(const Sql& sql, const QString& receiptNumber) {
  Sections sections;
  QString error;
  const QVariantList key = {receiptNumber};
  if (!receiptBuilder().addTo(sections, sql,
                              QStringLiteral("SELECT r.RCPT_DT, r.RCPT_NBR, r.RCPT_STTS_CD, r.TOT_PYMT_AMT, "
                                             "(SELECT SUM(o.OVR_PYMT_AMT) FROM OVR_PYMT o WHERE o.RCPT_NBR = r.RCPT_NBR), "
                                             "r.CUST_ID, r.CNFRMTN_NBR, r.ROW_VRSN_NBR FROM RCPT r WHERE r.RCPT_NBR = ?"),
                              key, error) ||
      !fundBuilder().addTo(sections, sql,
                           QStringLiteral("SELECT FUND_RFRNC_NBR, FUND_AMT, FUND_TYP_CD, RCPT_NBR, EXPRTN_MO_DT, "
                                          "EXPRTN_DY_DT, EXPRTN_YR_DT FROM FUND WHERE RCPT_NBR = ? ORDER BY FUND_SEQ_NBR"),
                           key, error) ||
      !paymentBuilder().addTo(
          sections, sql,
          QStringLiteral("SELECT a.CUST_ID, c.CUST_NM, a.ACCT_RCVBL_NBR, a.ACCT_RCVBL_DUE_DT, p.CL_PYMT_AMT, "
                         "p.ADJSTMT_DT, p.ACTVTY_STTS_CD, p.TRNSCTN_NBR, p.TRNSCTN_DT, p.PYMT_DT, p.PYMT_NBR, p.STTS_CD, "
                         "a.ACCT_RCVBL_CK_NBR, a.ACCT_RCVBL_TYP_CD, p.RCPT_NBR, a.ACCT_STTS_CD, a.ACTV_STTS_CD, "
                         "a.ASSMT_PP_TYP_CD, a.INSTLMT_NBR, p.ROW_VRSN_NBR FROM PYMT p "
                         "JOIN ACCT_RCVBL a ON a.ACCT_RCVBL_ID = p.ACCT_RCVBL_ID JOIN CUSTOMER c ON c.CUST_ID = a.CUST_ID "
                         "WHERE p.RCPT_NBR = ? ORDER BY p.PYMT_NBR, p.TRNSCTN_NBR"),
          key, error) ||
      !excessBuilder().addTo(sections, sql,
                             QStringLiteral("SELECT c.CUST_NM, o.OVR_PYMT_DT, o.OVR_PYMT_TM, o.DSTNTN_RCPT_NBR, "
                                            "o.OVR_PYMT_AMT, o.CUST_ID, c.ADDR_1, c.ADDR_2, c.CITY, c.STATE, c.ZIP, "
                                            "o.OVR_PYMT_STTS_CD, o.ROW_VRSN_NBR, w.RFND_NBR, w.STTS_CD FROM OVR_PYMT o "
                                            "JOIN CUSTOMER c ON c.CUST_ID = o.CUST_ID "
                                            "LEFT JOIN RFND_WRKSHT w ON w.RFND_NBR = o.RFND_NBR WHERE o.RCPT_NBR = ? "
                                            "ORDER BY o.OVR_PYMT_SEQ_NBR"),
                             key, error)) {
    return Result<Sections>::failure(error);
  }
  return sections;
}

Outcome receiptDetailInquiry(const Context& context) {
  const QString kind = QStringLiteral("The receipt detail inquiry");
  if (const QString problem = checkParams(context.request, kind, {params::ReceiptNbr}, {params::ReceiptDetl});
      !problem.isEmpty()) {
    return refuse(problem);
  }
  if (const QString problem = checkFlag(context.request, kind, params::ReceiptDetl, params::Yes,
                                        QStringLiteral("the receipt with its funds and payments"));
      !problem.isEmpty()) {
    return refuse(problem);
  }
  Result<QString> receipt = receiptNumberParam(context.request, params::ReceiptNbr);
  if (!receipt) {
    return refuse(receipt.error());
  }
  return receiptDetailSections(context.sql, receipt.value());
}

Outcome refundInfoInquiry(const Context& context) {
  static const SectionBuilder builder(QString(messaging::sections::kRefundInformation),
                                      {{u"CUST_ID"}, {u"CUST_NM"}, {u"ADDR_1"}, {u"ADR_2_ADR"}, {u"CITY"}, {u"STATE"},
                                       {u"ZIP"}, {u"RFND_NBR"}, {u"STTS_CD"}});
  const QString kind = QStringLiteral("The refund information inquiry");
  if (const QString problem = checkParams(context.request, kind, {params::CustId, params::RcptNbr});
      !problem.isEmpty()) {
    return refuse(problem);
  }
  Result<QString> receipt = receiptNumberParam(context.request, params::RcptNbr);
  if (!receipt) {
    return refuse(receipt.error());
  }
  const QString customer = context.param(params::CustId).toUpper();
  Result<qint64> funds = context.sql.scalar(
      QStringLiteral("SELECT COUNT(*) FROM OVR_PYMT WHERE RCPT_NBR = ? AND CUST_ID = ?"), {receipt.value(), customer}, 0);
  if (!funds) {
    return refuse(funds.error());
  }
  if (funds.value() == 0) {
    return refuse(QStringLiteral("Receipt %1 has no excess fund of customer %2.").arg(receipt.value(), customer));
  }
  // The worksheet already under way for this customer and receipt, if any; status "0" (new) otherwise.
  Sections sections;
  QString error;
  if (!builder.addTo(sections, context.sql,
                     QStringLiteral("SELECT c.CUST_ID, c.CUST_NM, c.ADDR_1, c.ADDR_2, c.CITY, c.STATE, c.ZIP, "
                                    "(SELECT MAX(w.RFND_NBR) FROM RFND_WRKSHT w WHERE w.RCPT_NBR = ? AND w.CUST_ID = c.CUST_ID "
                                    " AND w.STTS_CD IN ('0', '1', '2', '3', '4')), "
                                    "COALESCE((SELECT w.STTS_CD FROM RFND_WRKSHT w WHERE w.RFND_NBR = "
                                    " (SELECT MAX(x.RFND_NBR) FROM RFND_WRKSHT x WHERE x.RCPT_NBR = ? AND x.CUST_ID = c.CUST_ID "
                                    "  AND x.STTS_CD IN ('0', '1', '2', '3', '4'))), '0') "
                                    "FROM CUSTOMER c WHERE c.CUST_ID = ?"),
                     {receipt.value(), receipt.value(), customer}, error)) {
    return refuse(error);
  }
  return sections;
}

// --- payment adjustment: read, check, apply ------------------------------------------------------------------------

namespace {

// The receipt a save names, read and locked for the rest of the save.
Result<Receipt> lockedReceipt(const Sql& sql, const QString& number) {
  Result<std::optional<Receipt>> read = readReceipt(sql, number, true);
  if (!read) {
    return Result<Receipt>::failure(read.error());
  }
  if (!read.value()) {
    return Result<Receipt>::failure(QStringLiteral("Receipt %1 was not found.").arg(number));
  }
  return *read.value();
}

Result<QList<Payment>> paymentsOf(const Sql& sql, const QString& receipt) {
  Result<QSqlQuery> query = sql.run(
      QStringLiteral("SELECT p.PYMT_ID, p.ACCT_RCVBL_ID, p.TRNSCTN_NBR, p.TRNSCTN_DT, p.CL_PYMT_AMT, p.ACTVTY_STTS_CD, "
                     "p.ROW_VRSN_NBR, a.ACCT_RCVBL_TYP_CD, a.ACCT_RCVBL_NBR, a.ACCT_RCVBL_CK_NBR, a.CUST_ID "
                     "FROM PYMT p JOIN ACCT_RCVBL a ON a.ACCT_RCVBL_ID = p.ACCT_RCVBL_ID WHERE p.RCPT_NBR = ? "
                     "ORDER BY p.PYMT_NBR, p.TRNSCTN_NBR"),
      {receipt});
  if (!query) {
    return Result<QList<Payment>>::failure(query.error());
  }
  QList<Payment> payments;
  while (query.value().next()) {
    const QSqlQuery& q = query.value();
    payments.append({q.value(0).toLongLong(), q.value(1).toLongLong(), q.value(2).toString(), SqlDialect::dayFromValue(q.value(3)),
                     q.value(4).toLongLong(), q.value(5).toString().trimmed().toUpper(), q.value(6).toLongLong(),
                     q.value(7).toString(), q.value(8).toString(), q.value(9).toString(), q.value(10).toString()});
  }
  return payments;
}

// Part of the excess of a receipt adjusted whole went elsewhere already (transferred, on a worksheet,
// refunded): the refusal, or an empty text.
Result<QString> settledExcessProblem(const Sql& sql, const Receipt& receipt, const QString& action) {
  Result<qint64> settled = sql.scalar(
      QStringLiteral("SELECT COUNT(*) FROM OVR_PYMT WHERE RCPT_NBR = ? AND OVR_PYMT_STTS_CD IN ('T', 'W', 'R')"),
      {receipt.number}, 0);
  if (!settled) {
    return Result<QString>::failure(settled.error());
  }
  if (settled.value() > 0) {
    return QStringLiteral("Receipt %1 can not be %2: part of its excess was transferred or is being refunded.")
        .arg(receipt.number, adjustmentWord(action));
  }
  return QString();
}

// Records the adjustment, marks the receipt (and its open excess, when it goes whole) and each payment, and
// recomputes each receivable paid, with an activity row.
Result<bool> applyPaymentAdjustment(const Context& context, const Receipt& receipt,
                                    const PaymentAdjustmentRequest& request, const AdjustmentHeader& header,
                                    QList<PaymentChange> changes) {
  using R = Result<bool>;
  const Sql& sql = context.sql;
  AuditedWriter writer(sql, context.writeContext());
  Result<qint64> adjustment = writer.insert(
      QStringLiteral("ADJSTMT"),
      {{QStringLiteral("ADJSTMT_KIND_CD"), QStringLiteral("PAY")},
       {QStringLiteral("RCPT_NBR"), receipt.number},
       {QStringLiteral("ADJSTMT_DT"), sql.date(header.date)},
       {QStringLiteral("ADJSTMT_TYP_CD"),
        request.wholeReceipt() ? QVariant(request.receiptAction) : QVariant(QMetaType(QMetaType::QString))},
       {QStringLiteral("ADJSTMT_CMMT_TXT"), header.comment},
       {QStringLiteral("OFFICER_ID"), context.officer.id},
       {QStringLiteral("REQUEST_ID"), context.request.requestId},
       {QStringLiteral("CREATED_TS"), sql.dialect().timestampValue(context.now)}},
      QStringLiteral("ADJSTMT_ID"));
  if (!adjustment) {
    return R::failure(adjustment.error());
  }
  ColumnValues receiptChanges;
  if (request.wholeReceipt()) {
    receiptChanges.append({QStringLiteral("RCPT_STTS_CD"), request.receiptAction});
  }
  if (Result<bool> touched = writer.update(QStringLiteral("RCPT"), {{QStringLiteral("RCPT_NBR"), receipt.number}},
                                           receiptChanges, receipt.version, receipt.what());
      !touched) {
    return touched;
  }
  if (request.wholeReceipt()) {
    if (Result<int> gone = moveExcess(writer, receipt.number, QStringLiteral("O"), {}, request.receiptAction, false);
        !gone) {
      return R::failure(gone.error());
    }
  }
  // Receivables in a fixed order, so that two saves lock them alike.
  std::sort(changes.begin(), changes.end(),
            [](const PaymentChange& a, const PaymentChange& b) { return a.payment.receivableId < b.payment.receivableId; });
  for (const PaymentChange& change : changes) {
    const QString what = QStringLiteral("Payment %1 of receipt %2").arg(change.payment.transaction, receipt.number);
    if (Result<bool> marked = writer.update(QStringLiteral("PYMT"), {{QStringLiteral("PYMT_ID"), change.payment.id}},
                                            {{QStringLiteral("ACTVTY_STTS_CD"), change.action},
                                             {QStringLiteral("ADJSTMT_DT"), sql.date(header.date)},
                                             {QStringLiteral("ADJSTMT_ID"), adjustment.value()}},
                                            change.version, what);
        !marked) {
      return marked;
    }
    Result<std::optional<Receivable>> receivable = readReceivableById(sql, change.payment.receivableId, true);
    if (!receivable || !receivable.value()) {
      return R::failure(receivable ? QStringLiteral("The account receivable of payment %1 was not found.")
                                         .arg(change.payment.transaction)
                                   : receivable.error());
    }
    Result<ReceivableAmounts> amounts = refreshReceivable(writer, *receivable.value(), std::nullopt);
    if (!amounts) {
      return R::failure(amounts.error());
    }
    if (Result<bool> logged = addSystemActivity(
            writer, change.payment.receivableId, change.action == u"B" ? QStringLiteral("PBO") : QStringLiteral("PCN"),
            QStringLiteral("Payment of %1 on receipt %2 %3: %4")
                .arg(centsForDisplay(change.payment.amount), receipt.number, adjustmentWord(change.action),
                     header.comment),
            change.payment.amount, amounts->balance);
        !logged) {
      return logged;
    }
  }
  return true;
}

}  // namespace

Outcome savePaymentAdjustment(const Context& context) {
  Result<PaymentAdjustmentRequest> request = readPaymentAdjustmentRequest(context.request, context.officer);
  if (!request) {
    return refuse(request.error());
  }
  Result<Receipt> read = lockedReceipt(context.sql, request->receipt);
  if (!read) {
    return refuse(read.error());
  }
  const Receipt& receipt = read.value();
  Result<AdjustmentHeader> header =
      checkAdjustmentHeader(RecordReader(*request->header, saverecords::AdjustPay), receipt, context.today);
  if (!header) {
    return refuse(header.error());
  }
  Result<QList<Payment>> payments = paymentsOf(context.sql, receipt.number);
  if (!payments) {
    return refuse(payments.error());
  }
  Result<QList<PaymentChange>> changes = checkPaymentRecords(
      context.request.recordList(saverecords::AccountReceivables), payments.value(), request.value());
  if (!changes) {
    return refuse(changes.error());
  }
  if (request->wholeReceipt()) {
    Result<QString> settled = settledExcessProblem(context.sql, receipt, request->receiptAction);
    if (!settled || !settled.value().isEmpty()) {
      return refuse(settled ? settled.value() : settled.error());
    }
  }
  if (changes->isEmpty()) {
    return refuse(request->wholeReceipt() ? QStringLiteral("No payments remain to adjust out")
                                          : QStringLiteral("Please adjust the receipt or a payment against an account "
                                                           "receivable"));
  }
  if (Result<bool> applied =
          applyPaymentAdjustment(context, receipt, request.value(), header.value(), std::move(changes.value()));
      !applied) {
    return refuse(applied.error());
  }
  return receiptDetailSections(context.sql, receipt.number);
}

// --- transfer of an excess fund -------------------------------------------------------------------------------------

namespace {

// The receivables the TRANSFERPAY records name, each read (and locked) and checked in the order sent.
Result<TransferTargets> readTransferTargets(const Sql& sql, const TransferRequest& request) {
  using R = Result<TransferTargets>;
  TransferTargets targets;
  for (qsizetype i = 0; i < request.records->records.size(); ++i) {
    const RecordReader r(request.records->records[i], QStringLiteral("TRANSFERPAY record %1").arg(i + 1));
    Result<TransferLine> line = readTransferRecord(r, request.receipt);
    if (!line) {
      return R::failure(line.error());
    }
    Result<std::optional<Receivable>> receivable = readReceivable(sql, line->type, line->number.digits, true);
    if (!receivable) {
      return R::failure(receivable.error());
    }
    Result<TransferTarget> target = checkTransferTarget(r, line.value(), receivable.value(), targets);
    if (!target) {
      return R::failure(target.error());
    }
    targets.emplace(target->receivable.id, target.value());
  }
  return targets;
}

// The owner of the receipt's first open excess fund, who owns the receipt the transfer makes.
Result<QString> excessOwner(const Sql& sql, const QString& receipt) {
  Result<std::optional<QVariantList>> owner = sql.firstRow(
      QStringLiteral("SELECT CUST_ID FROM OVR_PYMT WHERE RCPT_NBR = ? AND OVR_PYMT_STTS_CD = 'O' "
                     "ORDER BY OVR_PYMT_SEQ_NBR"),
      {receipt});
  if (!owner || !owner.value()) {
    return Result<QString>::failure(owner ? QStringLiteral("Receipt %1 has no open excess fund.").arg(receipt)
                                          : owner.error());
  }
  return owner.value()->first().toString();
}

// Makes the receipt of the transfer (one fund of type "X" naming the source), draws the excess onto it
// ("T"), and pays each receivable from it, recomputed and with an activity row.
Result<bool> applyTransfer(const Context& context, const Receipt& source, const TransferTargets& targets,
                           qint64 total, const QString& customer) {
  using R = Result<bool>;
  AuditedWriter writer(context.sql, context.writeContext());
  Result<std::optional<qint64>> newNumber = takeNumber(writer, kReceiptNumbers);
  if (!newNumber) {
    return R::failure(newNumber.error());
  }
  if (!newNumber.value()) {
    return R::failure(QStringLiteral("No receipt number can be had for the transfer now; please try again later."));
  }
  const QString destination = QString::number(*newNumber.value());
  const QVariant today = context.sql.date(context.today);
  if (Result<qint64> made = writer.insert(QStringLiteral("RCPT"),
                                          {{QStringLiteral("RCPT_NBR"), destination},
                                           {QStringLiteral("CUST_ID"), customer},
                                           {QStringLiteral("RCPT_DT"), today},
                                           {QStringLiteral("RCPT_STTS_CD"), QStringLiteral("O")},
                                           {QStringLiteral("CNFRMTN_NBR"), source.confirmation},
                                           {QStringLiteral("TOT_PYMT_AMT"), total},
                                           {QStringLiteral("SRC_RCPT_NBR"), source.number}},
                                          {}, {QStringLiteral("RCPT_NBR")});
      !made) {
    return R::failure(made.error());
  }
  if (Result<qint64> fund = writer.insert(QStringLiteral("FUND"),
                                          {{QStringLiteral("RCPT_NBR"), destination},
                                           {QStringLiteral("FUND_SEQ_NBR"), 1},
                                           {QStringLiteral("FUND_TYP_CD"), QStringLiteral("X")},
                                           {QStringLiteral("FUND_RFRNC_NBR"), source.number},
                                           {QStringLiteral("FUND_AMT"), total}},
                                          QStringLiteral("FUND_ID"));
      !fund) {
    return R::failure(fund.error());
  }
  ExcessDraw draw;
  draw.receipt = source.number;
  draw.amount = total;
  draw.status = QStringLiteral("T");
  draw.destination = destination;
  if (Result<bool> drawn = drawOpenExcess(writer, draw); !drawn) {
    return drawn;
  }
  if (Result<bool> touched = writer.update(QStringLiteral("RCPT"), {{QStringLiteral("RCPT_NBR"), source.number}}, {},
                                           source.version, source.what());
      !touched) {
    return touched;
  }
  int paymentNumber = 0;
  for (const auto& [id, target] : targets) {
    Result<std::optional<qint64>> transaction = takeNumber(writer, kTransactionNumbers);
    if (!transaction || !transaction.value()) {
      return R::failure(transaction ? QStringLiteral("No transaction number can be had now; please try again later.")
                                    : transaction.error());
    }
    if (Result<qint64> paid = writer.insert(QStringLiteral("PYMT"),
                                            {{QStringLiteral("RCPT_NBR"), destination},
                                             {QStringLiteral("ACCT_RCVBL_ID"), id},
                                             {QStringLiteral("PYMT_NBR"), ++paymentNumber},
                                             {QStringLiteral("TRNSCTN_NBR"), QString::number(*transaction.value())},
                                             {QStringLiteral("TRNSCTN_DT"), today},
                                             {QStringLiteral("PYMT_DT"), today},
                                             {QStringLiteral("CL_PYMT_AMT"), target.amount},
                                             {QStringLiteral("STTS_CD"), QStringLiteral("A")}},
                                            QStringLiteral("PYMT_ID"));
        !paid) {
      return R::failure(paid.error());
    }
    Result<ReceivableAmounts> amounts = refreshReceivable(writer, target.receivable, std::nullopt);
    if (!amounts) {
      return R::failure(amounts.error());
    }
    if (Result<bool> logged = addSystemActivity(
            writer, id, QStringLiteral("TRF"),
            QStringLiteral("Excess fund of receipt %1 transferred: %2 paid on receipt %3")
                .arg(source.number, centsForDisplay(target.amount), destination),
            -target.amount, amounts->balance);
        !logged) {
      return logged;
    }
  }
  return true;
}

}  // namespace

Outcome saveTransfer(const Context& context) {
  Result<TransferRequest> request = readTransferRequest(context.request, context.officer);
  if (!request) {
    return refuse(request.error());
  }
  Result<Receipt> read = lockedReceipt(context.sql, request->receipt);
  if (!read) {
    return refuse(read.error());
  }
  const Receipt& source = read.value();
  if (const QString problem = transferSourceProblem(source); !problem.isEmpty()) {
    return refuse(problem);
  }
  Result<TransferTargets> targets = readTransferTargets(context.sql, request.value());
  if (!targets) {
    return refuse(targets.error());
  }
  qint64 total = 0;
  for (const auto& [id, target] : targets.value()) {
    total += target.amount;
  }
  Result<qint64> open = openExcess(context.sql, source.number, {});
  if (!open) {
    return refuse(open.error());
  }
  if (const QString problem = transferTotalProblem(total, open.value(), source.number); !problem.isEmpty()) {
    return refuse(problem);
  }
  Result<QString> owner = excessOwner(context.sql, source.number);
  if (!owner) {
    return refuse(owner.error());
  }
  if (Result<bool> applied = applyTransfer(context, source, targets.value(), total, owner.value()); !applied) {
    return refuse(applied.error());
  }
  return receiptDetailSections(context.sql, source.number);
}

}  // namespace adjustacc::host
