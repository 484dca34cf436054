// The payment entry control in transfer mode: what it accepts, how it says what it refuses (above all a transfer
// larger than the excess fund it draws on), the records it writes and the amount it holds until reset.
#include "messaging/requestmessage.h"
#include "messaging/scriptedlink.h"
#include "platform/checkdigit.h"
#include "platform/payment.h"

#include <gtest/gtest.h>

namespace adjustacc::platform {
namespace {

using namespace Qt::Literals::StringLiterals;
using F = QORVA_Payment::Field;

class PaymentTest : public ::testing::Test {
protected:
  PaymentTest() {
    payment.setTransferPayment(true);
    payment.setParentWantsAccounts(true);
    payment.setReceiptNumber(u" 8000002 "_s);
    payment.setExcessAmount(Currency::fromCents(10000));  // $100.00 open
    payment.setCheckDigit(&checkDigit);
  }
  // A well-formed number for seven digits: the digits and their own check digit.
  QString numberFor(const QString& digits) { return digits + u'-' + checkDigit.compute(digits).value(); }
  void enter(const QString& type, const QString& number, const QString& amount) {
    const int row = payment.userAddLine();
    ASSERT_GE(row, 0);
    payment.userSetLineField(row, F::Type, type);
    payment.userSetLineField(row, F::Number, number);
    payment.userSetLineField(row, F::Amount, amount);
  }
  QStringList messages() { return payment.errorText().split(u"\r\n"_s, Qt::SkipEmptyParts); }

  CheckDigit checkDigit;
  QORVA_Payment payment{u"QORVA_Payment1"_s};
};

TEST_F(PaymentTest, AcceptsTransfersUpToTheWholeExcessAndTotalsThem) {
  enter(u"C"_s, numberFor(u"1000011"_s), u"$60.00"_s);
  enter(u"m"_s, numberFor(u"1000035"_s).remove(u'-'), u"40"_s);
  EXPECT_EQ(payment.validate(), 2) << payment.errorText().toStdString();
  EXPECT_TRUE(payment.errorText().isEmpty());
  EXPECT_EQ(payment.transferAmount(), Currency::fromCents(10000));
}

TEST_F(PaymentTest, NeverLetsTheTransferExceedTheExcessAndSaysSo) {
  enter(u"C"_s, numberFor(u"1000011"_s), u"60.00"_s);
  enter(u"C"_s, numberFor(u"1000029"_s), u"40.01"_s);
  EXPECT_EQ(payment.validate(), 0);
  EXPECT_EQ(messages(), QStringList{u"The transfer of $100.01 is more than the excess fund of $100.00"_s});
  // A single line above the excess is refused the same way.
  payment.reset();
  enter(u"C"_s, numberFor(u"1000011"_s), u"1,000.00"_s);
  EXPECT_EQ(payment.validate(), 0);
  EXPECT_EQ(messages(), QStringList{u"The transfer of $1,000.00 is more than the excess fund of $100.00"_s});
}

TEST_F(PaymentTest, WithoutAnOpenExcessNothingCanBeTransferred) {
  payment.setExcessAmount(Currency());
  enter(u"C"_s, numberFor(u"1000011"_s), u"1.00"_s);
  EXPECT_EQ(payment.validate(), 0);
  EXPECT_EQ(messages(), QStringList{u"There is no open excess fund to transfer"_s});
}

TEST_F(PaymentTest, EachBadLineIsNamedAndAllAreReportedTogether) {
  const QString good = numberFor(u"1000011"_s);
  QString wrongDigit = good;
  wrongDigit.back() = QChar(u'0' + (good.back().digitValue() + 1) % 10);
  enter(QString(), good, u"1.00"_s);
  enter(u"C"_s, u"100001"_s, u"1.00"_s);
  enter(u"C"_s, wrongDigit, u"1.00"_s);
  enter(u"C"_s, numberFor(u"1000029"_s), u"0"_s);
  enter(u"C"_s, numberFor(u"1000037"_s), u"ten"_s);
  enter(u"C"_s, numberFor(u"1000045"_s), u"1.005"_s);
  enter(u"C"_s, good, u"2.00"_s);
  enter(u"c"_s, good, u"3.00"_s);  // the same receivable again, whatever the case of its type
  EXPECT_EQ(payment.validate(), 0);
  EXPECT_EQ(messages(),
            (QStringList{u"Account receivable type is required (line 1)"_s,
                         u"Account receivable number must be seven digits and the check digit, such as 1000035-4 "
                         u"(line 2)"_s,
                         u"The check digit of account receivable 1000011 is not right (line 3)"_s,
                         u"Transfer amount must be greater than $0.00 (line 4)"_s,
                         u"Transfer amount \"ten\" is not an amount of money (line 5)"_s,
                         u"Transfer amount can not have parts of a cent (line 6)"_s,
                         u"Account receivable 1000011 is entered more than once (line 8)"_s}));
}

TEST_F(PaymentTest, AnEmptyEntryAndAMissingReceiptAreRefused) {
  payment.userAddLine();  // added and left empty: not a line
  payment.setReceiptNumber(QString());
  EXPECT_EQ(payment.validate(), 0);
  EXPECT_EQ(messages(), (QStringList{u"No receipt is given to transfer the excess fund from"_s,
                                     u"Enter an account receivable and the amount to transfer to it"_s}));
}

TEST_F(PaymentTest, WritesOneRecordPerLineAndHoldsTheTotalUntilReset) {
  messaging::ScriptedLink link;
  messaging::RequestMessage message(&link);
  enter(u"c"_s, numberFor(u"1000011"_s), u"$25.50"_s);
  enter(u"M"_s, numberFor(u"1000035"_s), u"10"_s);
  ASSERT_GT(payment.validate(), 0);
  EXPECT_TRUE(payment.heldAmount().isZero());
  EXPECT_EQ(payment.writeToRequest(QORVA_Payment::kTransferRecords, message), 2);
  const messaging::Request& request = message.request();
  const messaging::RecordList* records = request.recordList(u"TRANSFERPAY"_s);
  ASSERT_NE(records, nullptr);
  ASSERT_EQ(records->records.size(), 2);
  const messaging::SaveRecord& first = records->records.first();
  EXPECT_EQ(first.field(u"ACTION"_s), u"ADD"_s);
  EXPECT_EQ(first.field(u"RCPT_NBR"_s), u"8000002"_s);
  EXPECT_EQ(first.field(u"ACCT_RCVBL_TYP_CD"_s), u"C"_s);
  EXPECT_EQ(first.field(u"ACCT_RCVBL_NBR"_s), u"1000011"_s);
  EXPECT_EQ(first.field(u"ACCT_RCVBL_CK_NBR"_s), checkDigit.compute(u"1000011"_s).value());
  EXPECT_EQ(first.field(u"TRNSFR_AMT"_s), u"25.50"_s);
  EXPECT_EQ(records->records.last().field(u"TRNSFR_AMT"_s), u"10.00"_s);
  EXPECT_EQ(payment.heldAmount(), Currency::fromCents(3550));
  payment.reset();
  EXPECT_EQ(payment.lineCount(), 0);
  EXPECT_TRUE(payment.heldAmount().isZero());
  EXPECT_TRUE(payment.transferAmount().isZero());
}

TEST_F(PaymentTest, OutsideTransferModeNothingIsWrittenOrAccepted) {
  messaging::ScriptedLink link;
  messaging::RequestMessage message(&link);
  payment.setTransferPayment(false);
  enter(u"C"_s, numberFor(u"1000011"_s), u"5.00"_s);
  EXPECT_EQ(payment.validate(), 0);
  EXPECT_EQ(messages().first(), u"This payment entry is not set up to transfer excess funds");
  EXPECT_EQ(payment.writeToRequest(QORVA_Payment::kTransferRecords, message), 0);
  EXPECT_TRUE(payment.heldAmount().isZero());
}

TEST_F(PaymentTest, TheClerkCannotEditADisabledEntryAndTheOwnerIsNamed) {
  payment.setEnabled(false);
  EXPECT_EQ(payment.userAddLine(), -1);
  payment.setEnabled(true);
  const int row = payment.userAddLine();
  payment.setEnabled(false);
  EXPECT_FALSE(payment.userSetLineField(row, F::Amount, u"1"_s));
  EXPECT_FALSE(payment.userRemoveLine(row));
  payment.setOwner({u"100001"_s, u"SMITH TRUCKING LLC"_s, {}, {}, {}, {}, {}});
  EXPECT_EQ(payment.ownerText(), u"SMITH TRUCKING LLC (customer 100001)");
  payment.setOwner({u"100001"_s, {}, {}, {}, {}, {}, {}});
  EXPECT_EQ(payment.ownerText(), u"customer 100001");
}

}  // namespace
}  // namespace adjustacc::platform
