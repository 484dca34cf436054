// The rules of the payment adjustment and the transfer on their own, without a database.
#include "hostfixture.h"

#include "host/receiptrules.h"

#include <utility>

namespace adjustacc::host::testing {
namespace {

using namespace Qt::Literals::StringLiterals;


messaging::Request request(const QString& receiptKey, const QString& receipt) {
  messaging::Request r;
  r.code = 47;
  r.params = {{u"MARVENTO"_s, receiptKey, u"="_s, receipt}};
  return r;
}

Officer officer(const QStringList& rights) {
  Officer o;
  o.id = u"OFF1"_s;
  for (const QString& right : rights) {
    o.rights.insert(right.toUpper());
  }
  return o;
}

// --- who may adjust what -------------------------------------------------------------------------------------------

struct RightsCase {
  const char* name;
  QStringList rights;
  const char16_t* receiptAction;
  const char16_t* expected;  // the refusal, or empty
};

class PaymentAdjustmentRights : public ::testing::TestWithParam<RightsCase> {};

TEST_P(PaymentAdjustmentRights, FollowTheOfficersRights) {
  const RightsCase& c = GetParam();
  messaging::Request sent = request(u"key:RECEIPT_NBR"_s, u" 8000001 "_s);
  sent.records = {{u"ADJUSTPAY"_s,
                   {saveRecord({{u"ACTION"_s, u"ADD"_s}, {u"ADJSTMT_TYP_CD"_s, QString::fromUtf16(c.receiptAction)}})}}};
  const auto read = readPaymentAdjustmentRequest(sent, officer(c.rights));
  EXPECT_EQ(read.ok() ? QString() : read.error(), QString::fromUtf16(c.expected));
  if (read.ok()) {
    EXPECT_EQ(read->receipt, u"8000001"_s);
    EXPECT_EQ(read->receiptAction, QString::fromUtf16(c.receiptAction).toUpper());
  }
}

INSTANTIATE_TEST_SUITE_P(
    Officers, PaymentAdjustmentRights,
    ::testing::Values(
        RightsCase{"NoRight", {}, u"C", u"Officer OFF1 does not hold the right ADJUSTRECEIPT needed to adjust receipts."},
        RightsCase{"AdjustsAnything", {u"ADJUSTRECEIPT"_s}, u"", u""},
        RightsCase{"BacksOutAReceipt", {u"ADJUSTRECEIPT"_s}, u"b", u""},
        RightsCase{"CancelOnlyCancelsAReceipt", {u"ADJUSTRECEIPT"_s, u"ADJUSTRCPTCANCELONLY"_s}, u"C", u""},
        RightsCase{"CancelOnlyMayNotBackOut", {u"ADJUSTRECEIPT"_s, u"ADJUSTRCPTCANCELONLY"_s}, u"B",
                   u"Your privileges do not include the BACKOUT option"},
        RightsCase{"CancelOnlyMayNotAdjustPayments", {u"ADJUSTRECEIPT"_s, u"ADJUSTRCPTCANCELONLY"_s}, u"",
                   u"Officer OFF1 may only cancel whole receipts (right ADJUSTRCPTCANCELONLY)."},
        RightsCase{"UnknownReceiptAction", {u"ADJUSTRECEIPT"_s}, u"X",
                   u"ADJUSTPAY: ADJSTMT_TYP_CD must be B (back out), C (cancel) or empty"}),
    [](const auto& p) { return std::string(p.param.name); });

// --- payments of a receipt ------------------------------------------------------------------------------------------

QList<Payment> payments() {
  Payment inForce;
  inForce.id = 1;
  inForce.receivableId = 11;
  inForce.transaction = u"700001"_s;
  inForce.amount = 5000;
  inForce.version = 2;
  Payment other = inForce;
  other.id = 2;
  other.receivableId = 12;
  other.transaction = u"700002"_s;
  Payment adjusted = inForce;
  adjusted.id = 3;
  adjusted.transaction = u"700003"_s;
  adjusted.adjusted = u"B"_s;
  return {inForce, other, adjusted};
}

messaging::SaveRecord paymentRecord(const char16_t* transaction, const char16_t* action, const char16_t* version = u"2") {
  return saveRecord({{u"ACTION"_s, u"UPD"_s},
                 {u"ADJST_ACTION"_s, QString::fromUtf16(action)},
                 {u"TRNSCTN_NBR"_s, QString::fromUtf16(transaction)},
                 {u"ROW_VRSN_NBR"_s, QString::fromUtf16(version)}});
}

struct PaymentsCase {
  const char* name;
  const char16_t* receiptAction;
  QList<messaging::SaveRecord> records;
  const char16_t* expected;  // the refusal, or the transactions adjusted with their actions
};

class PaymentRecords : public ::testing::TestWithParam<PaymentsCase> {};

TEST_P(PaymentRecords, NameEachPaymentInForceOnce) {
  const PaymentsCase& c = GetParam();
  PaymentAdjustmentRequest adjustment;
  adjustment.receipt = u"8000001"_s;
  adjustment.receiptAction = QString::fromUtf16(c.receiptAction);
  const messaging::RecordList list{u"ACNTSRCVBL"_s, c.records};
  const auto changes = checkPaymentRecords(&list, payments(), adjustment);
  QString answer;
  if (!changes.ok()) {
    answer = changes.error();
  } else {
    QStringList adjusted;
    for (const PaymentChange& change : changes.value()) {
      adjusted.append(change.payment.transaction + u'=' + change.action);
    }
    answer = adjusted.join(u' ');
  }
  EXPECT_EQ(answer, QString::fromUtf16(c.expected));
}

INSTANTIATE_TEST_SUITE_P(
    Records, PaymentRecords,
    ::testing::Values(
        PaymentsCase{"OnePayment", u"", {paymentRecord(u"700002", u"C")}, u"700002=C"},
        PaymentsCase{"WholeReceiptTakesTheOthersInForce", u"B", {paymentRecord(u"700002", u"B")}, u"700002=B 700001=B"},
        PaymentsCase{"WholeReceiptWithoutRecords", u"C", {}, u"700001=C 700002=C"},
        PaymentsCase{"NamedTwice", u"", {paymentRecord(u"700001", u"B"), paymentRecord(u"700001", u"C")},
                     u"ACNTSRCVBL record 2: payment 700001 is named twice"},
        PaymentsCase{"AlreadyAdjusted", u"", {paymentRecord(u"700003", u"C")},
                     u"Can not save a payment that has been backed out or canceled"},
        PaymentsCase{"ChangedSinceRead", u"", {paymentRecord(u"700001", u"C", u"1")},
                     u"Payment 700001 of receipt 8000001 was changed by another user after you read it. Nothing was "
                     u"saved: close the screen, open it again to see the current data and repeat your changes."},
        PaymentsCase{"OtherActionThanTheReceipts", u"C", {paymentRecord(u"700001", u"B")},
                     u"Can not adjust the receipt and adjust a payment at the same time"},
        PaymentsCase{"NoSuchPayment", u"", {paymentRecord(u"799999", u"B")},
                     u"ACNTSRCVBL record 1: receipt 8000001 has no payment with transaction 799999"}),
    [](const auto& p) { return std::string(p.param.name); });

TEST(AdjustmentHeader, DateCommentAndOpenReceipt) {
  Receipt receipt;
  receipt.number = u"8000001"_s;
  receipt.date = QDate(2024, 3, 1);
  receipt.status = u"O"_s;
  receipt.version = 3;
  const QDate today(2024, 5, 2);
  const auto check = [&](const Fields& fields) {
    Fields all = fields;
    all.append({u"ROW_VRSN_NBR"_s, u"3"_s});
    const messaging::SaveRecord sent = saveRecord(all);
    const auto header = checkAdjustmentHeader(RecordReader(sent, u"ADJUSTPAY"_s), receipt, today);
    return header.ok() ? header->comment : header.error();
  };
  EXPECT_EQ(check({{u"ADJSTMT_CMMT_TXT"_s, u"x"_s}}), u"Adjusted Date is required"_s);
  EXPECT_EQ(check({{u"ADJSTMT_DT"_s, u"2024-05-03"_s}, {u"ADJSTMT_CMMT_TXT"_s, u"x"_s}}),
            u"Date Adjusted must be today or a prior date"_s);
  EXPECT_EQ(check({{u"ADJSTMT_DT"_s, u"2024-02-29"_s}, {u"ADJSTMT_CMMT_TXT"_s, u"x"_s}}),
            u"Date Adjusted could not be earlier than payment date"_s);
  EXPECT_EQ(check({{u"ADJSTMT_DT"_s, u"2024-03-01"_s}}), u"Comment is required"_s);
  EXPECT_EQ(check({{u"ADJSTMT_DT"_s, u"2024-03-01"_s}, {u"ADJSTMT_CMMT_TXT"_s, u"Wrong form"_s}}), u"Wrong form"_s);
  receipt.status = u"B"_s;
  EXPECT_EQ(check({{u"ADJSTMT_DT"_s, u"2024-03-01"_s}, {u"ADJSTMT_CMMT_TXT"_s, u"x"_s}}),
            u"Can not save a backed out or canceled receipt"_s);
}

// --- transfer ---------------------------------------------------------------------------------------------------------

Receivable receivable() {
  Receivable r;
  r.id = 40;
  r.type = u"C"_s;
  r.number = u"1300003"_s;
  r.checkDigit = u"7"_s;
  r.customerId = u"100003"_s;
  r.status = u"U"_s;
  r.activity = u"A"_s;
  r.balance = 6000;
  return r;
}

struct TargetCase {
  const char* name;
  Fields fields;  // of the TRANSFERPAY record, besides ACTION ADD
  void (*change)(std::optional<Receivable>&);
  bool namedBefore;
  const char16_t* expected;  // the refusal, or empty
};

class TransferTargetRule : public ::testing::TestWithParam<TargetCase> {};

TEST_P(TransferTargetRule, TakesOnlyAReceivableThatCanBePaid) {
  const TargetCase& c = GetParam();
  Fields fields = {{u"ACTION"_s, u"ADD"_s}};
  fields.append(c.fields);
  const messaging::SaveRecord sent = saveRecord(fields);
  const RecordReader r(sent, u"TRANSFERPAY record 1"_s);
  const auto line = readTransferRecord(r, u"8000005"_s);
  ASSERT_TRUE(line.ok()) << line.error().toStdString();
  std::optional<Receivable> found = receivable();
  c.change(found);
  TransferTargets earlier;
  if (c.namedBefore) {
    earlier.emplace(40, TransferTarget{receivable(), 100});
  }
  const auto target = checkTransferTarget(r, line.value(), found, earlier);
  EXPECT_EQ(target.ok() ? QString() : target.error(), QString::fromUtf16(c.expected));
}

const Fields kSixty = {{u"ACCT_RCVBL_TYP_CD"_s, u"C"_s}, {u"ACCT_RCVBL_NBR"_s, u"1300003"_s}, {u"TRNSFR_AMT"_s, u"60.00"_s}};

INSTANTIATE_TEST_SUITE_P(
    Records, TransferTargetRule,
    ::testing::Values(
        TargetCase{"AllOwed", kSixty, [](std::optional<Receivable>&) {}, false, u""},
        TargetCase{"NotFound", kSixty, [](std::optional<Receivable>& r) { r.reset(); }, false,
                   u"TRANSFERPAY record 1: account receivable C 1300003 was not found"},
        TargetCase{"WrongCheckDigit",
                   {{u"ACCT_RCVBL_TYP_CD"_s, u"C"_s}, {u"ACCT_RCVBL_NBR"_s, u"1300003-2"_s}, {u"TRNSFR_AMT"_s, u"1"_s}},
                   [](std::optional<Receivable>&) {}, false,
                   u"TRANSFERPAY record 1: the check digit does not fit account receivable 1300003"},
        TargetCase{"Void", kSixty, [](std::optional<Receivable>& r) { r->status = u"V"_s; }, false,
                   u"TRANSFERPAY record 1: Account receivable 1300003-7 is void, deleted or inactive and can not "
                   u"receive payments"},
        TargetCase{"NamedTwice", kSixty, [](std::optional<Receivable>&) {}, true,
                   u"TRANSFERPAY record 1: Account receivable 1300003-7 is named twice"},
        TargetCase{"MoreThanDue", kSixty, [](std::optional<Receivable>& r) { r->balance = 5999; }, false,
                   u"TRANSFERPAY record 1: the transfer of $60.00 is more than the $59.99 due on account receivable "
                   u"1300003-7"}),
    [](const auto& p) { return std::string(p.param.name); });

TEST(TransferRules, TheSourceMustBeOpenAndConfirmedAndHoldTheWholeTransfer) {
  Receipt source;
  source.number = u"8000007"_s;
  source.status = u"O"_s;
  EXPECT_EQ(transferSourceProblem(source), u"Excess Funds that are not Confirmed can not be Transferred"_s);
  source.confirmation = u"C-77"_s;
  EXPECT_EQ(transferSourceProblem(source), QString());
  source.status = u"C"_s;
  EXPECT_EQ(transferSourceProblem(source),
            u"Receipt 8000007 is backed out or canceled; its excess funds can not be transferred."_s);
  EXPECT_EQ(transferTotalProblem(15000, 15000, u"8000002"_s), QString());
  EXPECT_EQ(transferTotalProblem(15001, 15000, u"8000002"_s),
            u"The transfer of $150.01 is more than the open excess of $150.00 on receipt 8000002."_s);
}

}  // namespace
}  // namespace adjustacc::host::testing
