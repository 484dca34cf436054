#include "receiptrules.h"

#include "audit.h"
#include "handlercontext.h"

#include <QSet>

#include <algorithm>

namespace adjustacc::host {

using messaging::Result;

namespace {

// What a payment record asks for: the payment it names and the adjustment.
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

// Only record sets of these names may carry records.
QString otherRecordsProblem(const messaging::Request& request, const QStringList& taken, const QString& kind) {
  for (const auto& list : request.records) {
    if (!taken.contains(list.name) && hasRecords(request, list.name)) {
      return QStringLiteral("%1 does not take %2 records.").arg(kind, list.name);
    }
  }
  return {};
}

}  // namespace

Result<QString> receiptNumberParam(const messaging::Request& request, const QString& key) {
  const QString typed = request.param(key).trimmed();
  const std::optional<QString> number = parseReceiptNumber(typed);
  if (!number) {
    return Result<QString>::failure(
        QStringLiteral("Receipt number \"%1\" is not valid: 1 to 10 letters and digits are expected.").arg(typed));
  }
  return *number;
}

// --- payment adjustment ---------------------------------------------------------------------------------------

Result<PaymentAdjustmentRequest> readPaymentAdjustmentRequest(const messaging::Request& request,
                                                              const Officer& officer) {
  using R = Result<PaymentAdjustmentRequest>;
  const QString kind = QStringLiteral("The payment adjustment");
  if (const QString problem =
          checkParams(request, kind, {params::ReceiptNbr}, {params::ReceiptDetl});
      !problem.isEmpty()) {
    return R::failure(problem);
  }
  if (const QString problem =
          otherRecordsProblem(request, {saverecords::AdjustPay, saverecords::AccountReceivables}, kind);
      !problem.isEmpty()) {
    return R::failure(problem);
  }
  if (!officer.has(rights::AdjustReceipt)) {
    return R::failure(missingRightText(officer, rights::AdjustReceipt, QStringLiteral("adjust receipts")));
  }
  Result<QString> receipt = receiptNumberParam(request, params::ReceiptNbr);
  if (!receipt) {
    return R::failure(receipt.error());
  }
  const messaging::RecordList* header = request.recordList(saverecords::AdjustPay);
  if (!header || header->records.size() != 1) {
    return R::failure(QStringLiteral("A payment adjustment carries exactly one ADJUSTPAY record."));
  }
  PaymentAdjustmentRequest read;
  read.receipt = receipt.value();
  read.header = &header->records.first();
  const RecordReader h(*read.header, saverecords::AdjustPay);
  if (h.code(QStringLiteral("ACTION")) != u"ADD") {
    return R::failure(h.refusal(QStringLiteral("ACTION must be ADD")));
  }
  if (!h.isBlank(QStringLiteral("RCPT_NBR")) && h.code(QStringLiteral("RCPT_NBR")) != read.receipt) {
    return R::failure(h.refusal(QStringLiteral("RCPT_NBR %1 is not the receipt of the request (%2)")
                                    .arg(h.text(QStringLiteral("RCPT_NBR")), read.receipt)));
  }
  read.receiptAction = h.code(QStringLiteral("ADJSTMT_TYP_CD"));
  if (read.wholeReceipt() && read.receiptAction != u"B" && read.receiptAction != u"C") {
    return R::failure(h.refusal(QStringLiteral("ADJSTMT_TYP_CD must be B (back out), C (cancel) or empty")));
  }
  if (officer.has(rights::AdjustReceiptCancelOnly)) {
    if (read.receiptAction == u"B") {
      return R::failure(QStringLiteral("Your privileges do not include the BACKOUT option"));
    }
    if (!read.wholeReceipt()) {
      return R::failure(QStringLiteral("Officer %1 may only cancel whole receipts (right %2).")
                            .arg(officer.id, rights::AdjustReceiptCancelOnly));
    }
  }
  return read;
}

Result<AdjustmentHeader> checkAdjustmentHeader(const RecordReader& h, const Receipt& receipt, const QDate& today) {
  using R = Result<AdjustmentHeader>;
  Result<qint64> version = h.rowVersion(QStringLiteral("receipt"));
  if (!version) {
    return R::failure(version.error());
  }
  if (version.value() != receipt.version) {
    return R::failure(changedSinceReadText(receipt.what()));
  }
  Result<QDate> date = h.requiredDay(QStringLiteral("ADJSTMT_DT"), QStringLiteral("the adjustment date"));
  if (!date) {
    return R::failure(h.isBlank(QStringLiteral("ADJSTMT_DT")) ? QStringLiteral("Adjusted Date is required")
                                                              : date.error());
  }
  if (date.value() > today) {
    return R::failure(QStringLiteral("Date Adjusted must be today or a prior date"));
  }
  if (date.value() < receipt.date) {
    return R::failure(QStringLiteral("Date Adjusted could not be earlier than payment date"));
  }
  AdjustmentHeader header{date.value(), h.text(QStringLiteral("ADJSTMT_CMMT_TXT"))};
  if (header.comment.isEmpty()) {
    return R::failure(QStringLiteral("Comment is required"));
  }
  if (receipt.status != u"O") {
    return R::failure(QStringLiteral("Can not save a backed out or canceled receipt"));
  }
  return header;
}

Result<QList<PaymentChange>> checkPaymentRecords(const messaging::RecordList* records, const QList<Payment>& payments,
                                                 const PaymentAdjustmentRequest& request) {
  using R = Result<QList<PaymentChange>>;
  QList<PaymentChange> changes;
  QSet<qint64> named;
  for (qsizetype i = 0; records && i < records->records.size(); ++i) {
    const RecordReader r(records->records[i], QStringLiteral("ACNTSRCVBL record %1").arg(i + 1));
    Result<PaymentChange> change = readPaymentRecord(r, payments, request.receipt);
    if (!change) {
      return R::failure(change.error());
    }
    if (named.contains(change->payment.id)) {
      return R::failure(r.refusal(QStringLiteral("payment %1 is named twice").arg(change->payment.transaction)));
    }
    named.insert(change->payment.id);
    if (!change->payment.adjusted.isEmpty()) {
      return R::failure(QStringLiteral("Can not save a payment that has been backed out or canceled"));
    }
    if (change->version != change->payment.version) {
      return R::failure(changedSinceReadText(
          QStringLiteral("Payment %1 of receipt %2").arg(change->payment.transaction, request.receipt)));
    }
    if (request.wholeReceipt() && change->action != request.receiptAction) {
      return R::failure(QStringLiteral("Can not adjust the receipt and adjust a payment at the same time"));
    }
    changes.append(change.value());
  }
  if (request.wholeReceipt()) {
    // The whole receipt goes: every payment still in force, whether or not the screen listed it.
    for (const Payment& payment : payments) {
      if (payment.adjusted.isEmpty() && !named.contains(payment.id)) {
        changes.append({payment, request.receiptAction, payment.version});
      }
    }
  }
  return changes;
}

QString adjustmentWord(const QString& code) {
  return code == u"B" ? QStringLiteral("backed out") : QStringLiteral("canceled");
}

// --- transfer of an excess fund ---------------------------------------------------------------------------------

Result<TransferRequest> readTransferRequest(const messaging::Request& request, const Officer& officer) {
  using R = Result<TransferRequest>;
  if (const QString problem =
          checkParams(request, QStringLiteral("The transfer of an excess fund"), {params::OvrgRcpt});
      !problem.isEmpty()) {
    return R::failure(problem);
  }
  if (const QString problem =
          otherRecordsProblem(request, {saverecords::TransferPay}, QStringLiteral("The transfer"));
      !problem.isEmpty()) {
    return R::failure(problem);
  }
  if (!officer.has(rights::AdjustReceipt)) {
    return R::failure(missingRightText(officer, rights::AdjustReceipt, QStringLiteral("transfer excess funds")));
  }
  if (officer.has(rights::AdjustReceiptCancelOnly)) {
    return R::failure(QStringLiteral("Officer %1 may only cancel whole receipts (right %2); excess funds can not be "
                                     "transferred under it.")
                          .arg(officer.id, rights::AdjustReceiptCancelOnly));
  }
  Result<QString> receipt = receiptNumberParam(request, params::OvrgRcpt);
  if (!receipt) {
    return R::failure(receipt.error());
  }
  const messaging::RecordList* records = request.recordList(saverecords::TransferPay);
  if (!records || !hasRecords(request, saverecords::TransferPay)) {
    return R::failure(QStringLiteral("The transfer names no account receivable to receive the excess fund "
                                     "(no TRANSFERPAY records); nothing was transferred."));
  }
  return TransferRequest{receipt.value(), records};
}

QString transferSourceProblem(const Receipt& source) {
  if (source.status != u"O") {
    return QStringLiteral("Receipt %1 is backed out or canceled; its excess funds can not be transferred.")
        .arg(source.number);
  }
  if (!source.isConfirmed()) {
    return QStringLiteral("Excess Funds that are not Confirmed can not be Transferred");
  }
  return {};
}

Result<TransferLine> readTransferRecord(const RecordReader& r, const QString& source) {
  using R = Result<TransferLine>;
  if (r.code(QStringLiteral("ACTION")) != u"ADD") {
    return R::failure(r.refusal(QStringLiteral("ACTION must be ADD")));
  }
  if (!r.isBlank(QStringLiteral("RCPT_NBR")) && r.code(QStringLiteral("RCPT_NBR")) != source) {
    return R::failure(
        r.refusal(QStringLiteral("RCPT_NBR must be the receipt whose excess is transferred (%1)").arg(source)));
  }
  Result<std::optional<qint64>> amount = r.cents(QStringLiteral("TRNSFR_AMT"));
  if (!amount) {
    return R::failure(amount.error());
  }
  if (!amount.value() || *amount.value() <= 0) {
    return R::failure(r.refusal(QStringLiteral("TRNSFR_AMT must be an amount above $0.00")));
  }
  const std::optional<AccountNumber> number = parseAccountNumber(r.text(QStringLiteral("ACCT_RCVBL_NBR")));
  if (!number) {
    return R::failure(r.refusal(QStringLiteral("ACCT_RCVBL_NBR \"%1\" is not an account receivable number")
                                    .arg(r.text(QStringLiteral("ACCT_RCVBL_NBR")))));
  }
  return TransferLine{r.code(QStringLiteral("ACCT_RCVBL_TYP_CD")), *number, *amount.value()};
}

Result<TransferTarget> checkTransferTarget(const RecordReader& r, const TransferLine& line,
                                           const std::optional<Receivable>& receivable,
                                           const TransferTargets& earlier) {
  using R = Result<TransferTarget>;
  if (!receivable) {
    return R::failure(
        r.refusal(QStringLiteral("account receivable %1 %2 was not found").arg(line.type, line.number.digits)));
  }
  const Receivable& target = *receivable;
  const QString digit = r.text(QStringLiteral("ACCT_RCVBL_CK_NBR"));
  if ((!digit.isEmpty() && digit != target.checkDigit) ||
      (!line.number.checkDigit.isEmpty() && line.number.checkDigit != target.checkDigit)) {
    return R::failure(r.refusal(QStringLiteral("the check digit does not fit account receivable %1").arg(target.number)));
  }
  if (!r.isBlank(QStringLiteral("CUST_ID")) && r.code(QStringLiteral("CUST_ID")) != target.customerId) {
    return R::failure(r.refusal(QStringLiteral("account receivable %1 belongs to customer %2, not %3")
                                    .arg(target.displayNumber(), target.customerId, r.code(QStringLiteral("CUST_ID")))));
  }
  if (target.status == u"V" || target.status == u"D" || target.activity == u"I") {
    return R::failure(
        r.refusal(QStringLiteral("%1 is void, deleted or inactive and can not receive payments").arg(target.what())));
  }
  if (earlier.count(target.id) > 0) {
    return R::failure(r.refusal(QStringLiteral("%1 is named twice").arg(target.what())));
  }
  if (line.amount > target.balance) {
    return R::failure(r.refusal(QStringLiteral("the transfer of %1 is more than the %2 due on %3")
                                    .arg(centsForDisplay(line.amount), centsForDisplay(target.balance),
                                         target.what().toLower())));
  }
  return TransferTarget{target, line.amount};
}

QString transferTotalProblem(qint64 total, qint64 openExcess, const QString& receipt) {
  if (total > openExcess) {
    return QStringLiteral("The transfer of %1 is more than the open excess of %2 on receipt %3.")
        .arg(centsForDisplay(total), centsForDisplay(openExcess), receipt);
  }
  return {};
}

}  // namespace adjustacc::host
