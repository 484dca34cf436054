// Receipts: the receipt detail, refund information, payment adjustments and transfers of excess funds.
#include "excessfunds.h"
#include "handlers.h"
#include "numbers.h"
#include "receivable.h"
#include "requestcheck.h"

#include "messaging/sections.h"

#include <QSet>

#include <algorithm>
#include <map>

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
       {u"OVR_PYMT_STTS_CD"}, {u"ROW_VRSN_NBR"}});
  return builder;
}

Result<QString> receiptParam(const Context& context, const QString& key) {
  const QString typed = context.param(key);
  const std::optional<QString> number = parseReceiptNumber(typed);
  if (!number) {
    return Result<QString>::failure(
        QStringLiteral("Receipt number \"%1\" is not valid: 1 to 10 letters and digits are expected.").arg(typed));
  }
  return *number;
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
                                            "o.OVR_PYMT_STTS_CD, o.ROW_VRSN_NBR FROM OVR_PYMT o "
                                            "JOIN CUSTOMER c ON c.CUST_ID = o.CUST_ID WHERE o.RCPT_NBR = ? "
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
  Result<QString> receipt = receiptParam(context, params::ReceiptNbr);
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
  Result<QString> receipt = receiptParam(context, params::RcptNbr);
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

// --- payment adjustment -------------------------------------------------------------------------------------------

namespace {

struct Payment {
  qint64 id = 0;
  qint64 receivableId = 0;
  QString transaction;
  QDate transactionDate;
  qint64 amount = 0;
  QString adjusted;  // ACTVTY_STTS_CD: empty while in force
  qint64 version = 0;
  QString receivableType;
  QString receivableNumber;
  QString checkDigit;
  QString customerId;
};

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

QString adjustmentWord(const QString& code) {
  return code == u"B" ? QStringLiteral("backed out") : QStringLiteral("canceled");
}

// What a payment record asks for: the payment it names and the adjustment.
struct PaymentChange {
  Payment payment;
  QString action;  // "B" or "C"
  qint64 version = 0;
};

Result<PaymentChange> readPaymentRecord(const RecordReader& r, const QList<Payment>& payments, const QString& receipt) {
  using R = Result<PaymentChange>;
  if (r.code(QStringLiteral("ACTION")) != u"UPD") {
    return R::failure(r.refusal(QStringLiteral("ACTION must be UPD")));
  }
  const QString action = r.code(QStringLiteral("ADJST_ACTION"));
  if (action != u"B" && action != u"C") {
    return R::failure(r.refusal(QStringLiteral("ADJST_ACTION must be B (back out) or C (cancel)")));
  }
  Result<QString> transaction = r.required(QStringLiteral("TRNSCTN_NBR"), QStringLiteral("the payment's transaction"));
  if (!transaction) {
    return R::failure(transaction.error());
  }
  const auto found = std::find_if(payments.begin(), payments.end(),
                                  [&](const Payment& p) { return p.transaction == transaction.value(); });
  if (found == payments.end()) {
    return R::failure(r.refusal(QStringLiteral("receipt %1 has no payment with transaction %2")
                                    .arg(receipt, transaction.value())));
  }
  const Payment& payment = *found;
  // The other fields must describe the same payment the clerk saw.
  const std::optional<AccountNumber> number = parseAccountNumber(r.text(QStringLiteral("ACCT_RCVBL_NBR")));
  const QString type = r.code(QStringLiteral("ACCT_RCVBL_TYP_CD"));
  const QString customer = r.code(QStringLiteral("CUST_ID"));
  const QString digit = r.text(QStringLiteral("ACCT_RCVBL_CK_NBR"));
  Result<std::optional<qint64>> amount = r.cents(QStringLiteral("CL_PYMT_AMT"));
  Result<std::optional<QDate>> day = r.day(QStringLiteral("TRNSCTN_DT"));
  if (!amount) {
    return R::failure(amount.error());
  }
  if (!day) {
    return R::failure(day.error());
  }
  if ((!r.isBlank(QStringLiteral("ACCT_RCVBL_NBR")) && (!number || number->digits != payment.receivableNumber)) ||
      (!type.isEmpty() && type != payment.receivableType) || (!digit.isEmpty() && digit != payment.checkDigit) ||
      (!customer.isEmpty() && customer != payment.customerId) ||
      (amount.value() && *amount.value() != payment.amount) ||
      (day.value() && *day.value() != payment.transactionDate)) {
    return R::failure(r.refusal(QStringLiteral("the account receivable, customer, amount or date does not match "
                                               "payment %1 of receipt %2")
                                    .arg(payment.transaction, receipt)));
  }
  Result<qint64> version = r.rowVersion(QStringLiteral("payment"));
  if (!version) {
    return R::failure(version.error());
  }
  return PaymentChange{payment, action, version.value()};
}

}  // namespace

Outcome savePaymentAdjustment(const Context& context) {
  const QString kind = QStringLiteral("The payment adjustment");
  if (const QString problem = checkParams(context.request, kind, {params::ReceiptNbr}, {params::ReceiptDetl});
      !problem.isEmpty()) {
    return refuse(problem);
  }
  for (const auto& list : context.request.records) {
    if (list.name != saverecords::AdjustPay && list.name != saverecords::AccountReceivables &&
        hasRecords(context.request, list.name)) {
      return refuse(QStringLiteral("The payment adjustment does not take %1 records.").arg(list.name));
    }
  }
  if (!context.officer.has(rights::AdjustReceipt)) {
    return refuse(missingRightText(context.officer, rights::AdjustReceipt, QStringLiteral("adjust receipts")));
  }
  Result<QString> receiptNumber = receiptParam(context, params::ReceiptNbr);
  if (!receiptNumber) {
    return refuse(receiptNumber.error());
  }
  const messaging::RecordList* header = context.request.recordList(saverecords::AdjustPay);
  if (!header || header->records.size() != 1) {
    return refuse(QStringLiteral("A payment adjustment carries exactly one ADJUSTPAY record."));
  }
  const RecordReader h(header->records.first(), saverecords::AdjustPay);
  if (h.code(QStringLiteral("ACTION")) != u"ADD") {
    return refuse(h.refusal(QStringLiteral("ACTION must be ADD")));
  }
  if (!h.isBlank(QStringLiteral("RCPT_NBR")) && h.code(QStringLiteral("RCPT_NBR")) != receiptNumber.value()) {
    return refuse(h.refusal(QStringLiteral("RCPT_NBR %1 is not the receipt of the request (%2)")
                                .arg(h.text(QStringLiteral("RCPT_NBR")), receiptNumber.value())));
  }
  const QString receiptAction = h.code(QStringLiteral("ADJSTMT_TYP_CD"));
  if (!receiptAction.isEmpty() && receiptAction != u"B" && receiptAction != u"C") {
    return refuse(h.refusal(QStringLiteral("ADJSTMT_TYP_CD must be B (back out), C (cancel) or empty")));
  }
  const bool wholeReceipt = !receiptAction.isEmpty();
  if (context.officer.has(rights::AdjustReceiptCancelOnly)) {
    if (receiptAction == u"B") {
      return refuse(QStringLiteral("Your privileges do not include the BACKOUT option"));
    }
    if (!wholeReceipt) {
      return refuse(QStringLiteral("Officer %1 may only cancel whole receipts (right %2).")
                        .arg(context.officer.id, rights::AdjustReceiptCancelOnly));
    }
  }
  Result<std::optional<Receipt>> read = readReceipt(context.sql, receiptNumber.value(), true);
  if (!read) {
    return refuse(read.error());
  }
  if (!read.value()) {
    return refuse(QStringLiteral("Receipt %1 was not found.").arg(receiptNumber.value()));
  }
  const Receipt receipt = *read.value();
  Result<qint64> receiptVersion = h.rowVersion(QStringLiteral("receipt"));
  if (!receiptVersion) {
    return refuse(receiptVersion.error());
  }
  if (receiptVersion.value() != receipt.version) {
    return refuse(changedSinceReadText(receipt.what()));
  }
  Result<QDate> date = h.requiredDay(QStringLiteral("ADJSTMT_DT"), QStringLiteral("the adjustment date"));
  if (!date) {
    return refuse(h.isBlank(QStringLiteral("ADJSTMT_DT")) ? QStringLiteral("Adjusted Date is required") : date.error());
  }
  if (date.value() > context.today) {
    return refuse(QStringLiteral("Date Adjusted must be today or a prior date"));
  }
  if (date.value() < receipt.date) {
    return refuse(QStringLiteral("Date Adjusted could not be earlier than payment date"));
  }
  const QString comment = h.text(QStringLiteral("ADJSTMT_CMMT_TXT"));
  if (comment.isEmpty()) {
    return refuse(QStringLiteral("Comment is required"));
  }
  if (receipt.status != u"O") {
    return refuse(QStringLiteral("Can not save a backed out or canceled receipt"));
  }
  Result<QList<Payment>> payments = paymentsOf(context.sql, receipt.number);
  if (!payments) {
    return refuse(payments.error());
  }
  QList<PaymentChange> changes;
  QSet<qint64> named;
  if (const messaging::RecordList* list = context.request.recordList(saverecords::AccountReceivables)) {
    for (qsizetype i = 0; i < list->records.size(); ++i) {
      const RecordReader r(list->records[i], QStringLiteral("ACNTSRCVBL record %1").arg(i + 1));
      Result<PaymentChange> change = readPaymentRecord(r, payments.value(), receipt.number);
      if (!change) {
        return refuse(change.error());
      }
      if (named.contains(change->payment.id)) {
        return refuse(r.refusal(QStringLiteral("payment %1 is named twice").arg(change->payment.transaction)));
      }
      named.insert(change->payment.id);
      if (!change->payment.adjusted.isEmpty()) {
        return refuse(QStringLiteral("Can not save a payment that has been backed out or canceled"));
      }
      if (change->version != change->payment.version) {
        return refuse(changedSinceReadText(QStringLiteral("Payment %1 of receipt %2")
                                               .arg(change->payment.transaction, receipt.number)));
      }
      if (wholeReceipt && change->action != receiptAction) {
        return refuse(QStringLiteral("Can not adjust the receipt and adjust a payment at the same time"));
      }
      changes.append(change.value());
    }
  }
  if (wholeReceipt) {
    // The whole receipt goes: every payment still in force, whether or not the screen listed it.
    for (const Payment& payment : payments.value()) {
      if (payment.adjusted.isEmpty() && !named.contains(payment.id)) {
        changes.append({payment, receiptAction, payment.version});
      }
    }
    Result<qint64> settled = context.sql.scalar(
        QStringLiteral("SELECT COUNT(*) FROM OVR_PYMT WHERE RCPT_NBR = ? AND OVR_PYMT_STTS_CD IN ('T', 'W', 'R')"),
        {receipt.number}, 0);
    if (!settled) {
      return refuse(settled.error());
    }
    if (settled.value() > 0) {
      return refuse(QStringLiteral("Receipt %1 can not be %2: part of its excess was transferred or is being refunded.")
                        .arg(receipt.number, adjustmentWord(receiptAction)));
    }
  } else if (changes.isEmpty()) {
    return refuse(QStringLiteral("Please adjust the receipt or a payment against an account receivable"));
  }
  if (changes.isEmpty()) {
    return refuse(QStringLiteral("No payments remain to adjust out"));
  }

  AuditedWriter writer(context.sql, context.writeContext());
  Result<qint64> adjustment = writer.insert(
      QStringLiteral("ADJSTMT"),
      {{QStringLiteral("ADJSTMT_KIND_CD"), QStringLiteral("PAY")},
       {QStringLiteral("RCPT_NBR"), receipt.number},
       {QStringLiteral("ADJSTMT_DT"), context.sql.date(date.value())},
       {QStringLiteral("ADJSTMT_TYP_CD"), wholeReceipt ? QVariant(receiptAction) : QVariant(QMetaType(QMetaType::QString))},
       {QStringLiteral("ADJSTMT_CMMT_TXT"), comment},
       {QStringLiteral("OFFICER_ID"), context.officer.id},
       {QStringLiteral("REQUEST_ID"), context.request.requestId},
       {QStringLiteral("CREATED_TS"), context.sql.dialect().timestampValue(context.now)}},
      QStringLiteral("ADJSTMT_ID"));
  if (!adjustment) {
    return refuse(adjustment.error());
  }
  ColumnValues receiptChanges;
  if (wholeReceipt) {
    receiptChanges.append({QStringLiteral("RCPT_STTS_CD"), receiptAction});
  }
  if (Result<bool> touched = writer.update(QStringLiteral("RCPT"), {{QStringLiteral("RCPT_NBR"), receipt.number}},
                                           receiptChanges, receipt.version, receipt.what());
      !touched) {
    return refuse(touched.error());
  }
  if (wholeReceipt) {
    if (Result<int> gone = moveExcess(writer, receipt.number, QStringLiteral("O"), {}, receiptAction, false); !gone) {
      return refuse(gone.error());
    }
  }
  // Receivables in a fixed order, so that two saves lock them alike.
  std::sort(changes.begin(), changes.end(),
            [](const PaymentChange& a, const PaymentChange& b) { return a.payment.receivableId < b.payment.receivableId; });
  for (const PaymentChange& change : changes) {
    const QString what = QStringLiteral("Payment %1 of receipt %2").arg(change.payment.transaction, receipt.number);
    if (Result<bool> marked = writer.update(
            QStringLiteral("PYMT"), {{QStringLiteral("PYMT_ID"), change.payment.id}},
            {{QStringLiteral("ACTVTY_STTS_CD"), change.action},
             {QStringLiteral("ADJSTMT_DT"), context.sql.date(date.value())},
             {QStringLiteral("ADJSTMT_ID"), adjustment.value()}},
            change.version, what);
        !marked) {
      return refuse(marked.error());
    }
    Result<std::optional<Receivable>> receivable = readReceivableById(context.sql, change.payment.receivableId, true);
    if (!receivable || !receivable.value()) {
      return refuse(receivable ? QStringLiteral("The account receivable of payment %1 was not found.")
                                     .arg(change.payment.transaction)
                               : receivable.error());
    }
    Result<ReceivableAmounts> amounts = refreshReceivable(writer, *receivable.value(), std::nullopt);
    if (!amounts) {
      return refuse(amounts.error());
    }
    if (Result<bool> logged = addSystemActivity(
            writer, change.payment.receivableId, change.action == u"B" ? QStringLiteral("PBO") : QStringLiteral("PCN"),
            QStringLiteral("Payment of %1 on receipt %2 %3: %4")
                .arg(centsForDisplay(change.payment.amount), receipt.number, adjustmentWord(change.action), comment),
            change.payment.amount, amounts->balance);
        !logged) {
      return refuse(logged.error());
    }
  }
  return receiptDetailSections(context.sql, receipt.number);
}

// --- transfer of an excess fund -------------------------------------------------------------------------------------

Outcome saveTransfer(const Context& context) {
  const QString kind = QStringLiteral("The transfer of an excess fund");
  if (const QString problem = checkParams(context.request, kind, {params::OvrgRcpt}); !problem.isEmpty()) {
    return refuse(problem);
  }
  for (const auto& list : context.request.records) {
    if (list.name != saverecords::TransferPay && hasRecords(context.request, list.name)) {
      return refuse(QStringLiteral("The transfer does not take %1 records.").arg(list.name));
    }
  }
  if (!context.officer.has(rights::AdjustReceipt)) {
    return refuse(missingRightText(context.officer, rights::AdjustReceipt, QStringLiteral("transfer excess funds")));
  }
  if (context.officer.has(rights::AdjustReceiptCancelOnly)) {
    return refuse(QStringLiteral("Officer %1 may only cancel whole receipts (right %2); excess funds can not be "
                                 "transferred under it.")
                      .arg(context.officer.id, rights::AdjustReceiptCancelOnly));
  }
  Result<QString> receiptNumber = receiptParam(context, params::OvrgRcpt);
  if (!receiptNumber) {
    return refuse(receiptNumber.error());
  }
  const messaging::RecordList* list = context.request.recordList(saverecords::TransferPay);
  if (!list || !hasRecords(context.request, saverecords::TransferPay)) {
    return refuse(QStringLiteral("The transfer names no account receivable to receive the excess fund "
                                 "(no TRANSFERPAY records); nothing was transferred."));
  }
  Result<std::optional<Receipt>> read = readReceipt(context.sql, receiptNumber.value(), true);
  if (!read) {
    return refuse(read.error());
  }
  if (!read.value()) {
    return refuse(QStringLiteral("Receipt %1 was not found.").arg(receiptNumber.value()));
  }
  const Receipt source = *read.value();
  if (source.status != u"O") {
    return refuse(QStringLiteral("Receipt %1 is backed out or canceled; its excess funds can not be transferred.")
                      .arg(source.number));
  }
  if (!source.isConfirmed()) {
    return refuse(QStringLiteral("Excess Funds that are not Confirmed can not be Transferred"));
  }

  struct Target {
    Receivable receivable;
    qint64 amount = 0;
  };
  std::map<qint64, Target> targets;  // by receivable id: locked and paid in that order
  qint64 total = 0;
  for (qsizetype i = 0; i < list->records.size(); ++i) {
    const RecordReader r(list->records[i], QStringLiteral("TRANSFERPAY record %1").arg(i + 1));
    if (r.code(QStringLiteral("ACTION")) != u"ADD") {
      return refuse(r.refusal(QStringLiteral("ACTION must be ADD")));
    }
    if (!r.isBlank(QStringLiteral("RCPT_NBR")) && r.code(QStringLiteral("RCPT_NBR")) != source.number) {
      return refuse(r.refusal(QStringLiteral("RCPT_NBR must be the receipt whose excess is transferred (%1)")
                                  .arg(source.number)));
    }
    Result<std::optional<qint64>> amount = r.cents(QStringLiteral("TRNSFR_AMT"));
    if (!amount) {
      return refuse(amount.error());
    }
    if (!amount.value() || *amount.value() <= 0) {
      return refuse(r.refusal(QStringLiteral("TRNSFR_AMT must be an amount above $0.00")));
    }
    const std::optional<AccountNumber> number = parseAccountNumber(r.text(QStringLiteral("ACCT_RCVBL_NBR")));
    if (!number) {
      return refuse(r.refusal(QStringLiteral("ACCT_RCVBL_NBR \"%1\" is not an account receivable number")
                                  .arg(r.text(QStringLiteral("ACCT_RCVBL_NBR")))));
    }
    const QString type = r.code(QStringLiteral("ACCT_RCVBL_TYP_CD"));
    Result<std::optional<Receivable>> receivable = readReceivable(context.sql, type, number->digits, true);
    if (!receivable) {
      return refuse(receivable.error());
    }
    if (!receivable.value()) {
      return refuse(r.refusal(QStringLiteral("account receivable %1 %2 was not found").arg(type, number->digits)));
    }
    const Receivable& target = *receivable.value();
    const QString digit = r.text(QStringLiteral("ACCT_RCVBL_CK_NBR"));
    if ((!digit.isEmpty() && digit != target.checkDigit) ||
        (!number->checkDigit.isEmpty() && number->checkDigit != target.checkDigit)) {
      return refuse(r.refusal(QStringLiteral("the check digit does not fit account receivable %1").arg(target.number)));
    }
    if (!r.isBlank(QStringLiteral("CUST_ID")) && r.code(QStringLiteral("CUST_ID")) != target.customerId) {
      return refuse(r.refusal(QStringLiteral("account receivable %1 belongs to customer %2, not %3")
                                  .arg(target.displayNumber(), target.customerId, r.code(QStringLiteral("CUST_ID")))));
    }
    if (target.status == u"V" || target.status == u"D" || target.activity == u"I") {
      return refuse(r.refusal(QStringLiteral("%1 is void, deleted or inactive and can not receive payments")
                                  .arg(target.what())));
    }
    if (targets.count(target.id) > 0) {
      return refuse(r.refusal(QStringLiteral("%1 is named twice").arg(target.what())));
    }
    if (*amount.value() > target.balance) {
      return refuse(r.refusal(QStringLiteral("the transfer of %1 is more than the %2 due on %3")
                                  .arg(centsForDisplay(*amount.value()), centsForDisplay(target.balance),
                                       target.what().toLower())));
    }
    targets.emplace(target.id, Target{target, *amount.value()});
    total += *amount.value();
  }
  Result<qint64> open = openExcess(context.sql, source.number, {});
  if (!open) {
    return refuse(open.error());
  }
  if (total > open.value()) {
    return refuse(QStringLiteral("The transfer of %1 is more than the open excess of %2 on receipt %3.")
                      .arg(centsForDisplay(total), centsForDisplay(open.value()), source.number));
  }
  Result<std::optional<QVariantList>> owner = context.sql.firstRow(
      QStringLiteral("SELECT CUST_ID FROM OVR_PYMT WHERE RCPT_NBR = ? AND OVR_PYMT_STTS_CD = 'O' "
                     "ORDER BY OVR_PYMT_SEQ_NBR"),
      {source.number});
  if (!owner || !owner.value()) {
    return refuse(owner ? QStringLiteral("Receipt %1 has no open excess fund.").arg(source.number) : owner.error());
  }

  AuditedWriter writer(context.sql, context.writeContext());
  Result<std::optional<qint64>> newNumber = takeNumber(writer, kReceiptNumbers);
  if (!newNumber) {
    return refuse(newNumber.error());
  }
  if (!newNumber.value()) {
    return refuse(QStringLiteral("No receipt number can be had for the transfer now; please try again later."));
  }
  const QString destination = QString::number(*newNumber.value());
  const QVariant today = context.sql.date(context.today);
  const QString customer = owner.value()->first().toString();
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
    return refuse(made.error());
  }
  if (Result<qint64> fund = writer.insert(QStringLiteral("FUND"),
                                          {{QStringLiteral("RCPT_NBR"), destination},
                                           {QStringLiteral("FUND_SEQ_NBR"), 1},
                                           {QStringLiteral("FUND_TYP_CD"), QStringLiteral("X")},
                                           {QStringLiteral("FUND_RFRNC_NBR"), source.number},
                                           {QStringLiteral("FUND_AMT"), total}},
                                          QStringLiteral("FUND_ID"));
      !fund) {
    return refuse(fund.error());
  }
  ExcessDraw draw;
  draw.receipt = source.number;
  draw.amount = total;
  draw.status = QStringLiteral("T");
  draw.destination = destination;
  if (Result<bool> drawn = drawOpenExcess(writer, draw); !drawn) {
    return refuse(drawn.error());
  }
  if (Result<bool> touched =
          writer.update(QStringLiteral("RCPT"), {{QStringLiteral("RCPT_NBR"), source.number}}, {}, source.version,
                        source.what());
      !touched) {
    return refuse(touched.error());
  }
  int paymentNumber = 0;
  for (const auto& [id, target] : targets) {
    Result<std::optional<qint64>> transaction = takeNumber(writer, kTransactionNumbers);
    if (!transaction || !transaction.value()) {
      return refuse(transaction ? QStringLiteral("No transaction number can be had now; please try again later.")
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
      return refuse(paid.error());
    }
    Result<ReceivableAmounts> amounts = refreshReceivable(writer, target.receivable, std::nullopt);
    if (!amounts) {
      return refuse(amounts.error());
    }
    if (Result<bool> logged = addSystemActivity(
            writer, id, QStringLiteral("TRF"),
            QStringLiteral("Excess fund of receipt %1 transferred: %2 paid on receipt %3")
                .arg(source.number, centsForDisplay(target.amount), destination),
            -target.amount, amounts->balance);
        !logged) {
      return refuse(logged.error());
    }
  }
  return receiptDetailSections(context.sql, source.number);
}

}  // namespace adjustacc::host
