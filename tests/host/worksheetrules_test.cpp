// The rules of refund worksheet steps on their own, without a database: who may do a step under each
// separation of duties, what a step record must carry, and what a new worksheet needs.
#include "hostfixture.h"

#include "host/worksheetrules.h"

#include <utility>

namespace adjustacc::host::testing {
namespace {

using namespace Qt::Literals::StringLiterals;


// Prepared by PREP, verified by VER, approved by APP.
Worksheet approvedWorksheet() {
  Worksheet w;
  w.number = u"3000100"_s;
  w.receipt = u"8000002"_s;
  w.customerId = u"100001"_s;
  w.amount = 1000;
  w.status = u"3"_s;
  w.creator = u"PREP"_s;
  w.verifier = u"VER"_s;
  w.approver = u"APP"_s;
  w.version = 4;
  return w;
}

const QDate kToday(2024, 5, 2);

// --- separation of duties ------------------------------------------------------------------------------------

struct DutyCase {
  const char* name;
  DutySeparation duties;
  const char16_t* next;
  const char16_t* officer;
  const char16_t* expected;  // empty: allowed
};

class DutyRule : public ::testing::TestWithParam<DutyCase> {};

TEST_P(DutyRule, AllowsOrRefusesTheOfficerOfAStep) {
  const DutyCase& c = GetParam();
  EXPECT_EQ(dutyProblem(approvedWorksheet(), QString::fromUtf16(c.next), QString::fromUtf16(c.officer), c.duties),
            QString::fromUtf16(c.expected));
}

constexpr auto kNeighbouring = DutySeparation::NeighbouringSteps;
constexpr auto kFour = DutySeparation::FourOfficers;

INSTANTIATE_TEST_SUITE_P(
    Steps, DutyRule,
    ::testing::Values(
        DutyCase{"NeighbouringPreparerMayNotVerify", kNeighbouring, u"2", u"prep",
                 u"The person preparing and verifying the Refund Worksheet can not be the same."},
        DutyCase{"NeighbouringVerifierMayNotApprove", kNeighbouring, u"3", u"VER",
                 u"The person verifying and approving the Refund Worksheet can not be the same."},
        DutyCase{"NeighbouringPreparerMayApprove", kNeighbouring, u"3", u"PREP", u""},
        DutyCase{"NeighbouringPreparerMayRefund", kNeighbouring, u"4", u"PREP", u""},
        DutyCase{"NeighbouringApproverMayTransfer", kNeighbouring, u"T", u"APP", u""},
        DutyCase{"NeighbouringAnyoneMayMail", kNeighbouring, u"5", u"PREP", u""},
        DutyCase{"FourPreparerMayNotVerify", kFour, u"2", u"PREP",
                 u"The person preparing and verifying the Refund Worksheet can not be the same."},
        DutyCase{"FourVerifierMayNotApprove", kFour, u"3", u"ver",
                 u"The person verifying and approving the Refund Worksheet can not be the same."},
        DutyCase{"FourPreparerMayNotApprove", kFour, u"3", u" PREP ",
                 u"The person preparing and approving the Refund Worksheet can not be the same."},
        DutyCase{"FourPreparerMayNotRefund", kFour, u"4", u"PREP",
                 u"The person preparing and refunding the Refund Worksheet can not be the same."},
        DutyCase{"FourVerifierMayNotTransfer", kFour, u"T", u"VER",
                 u"The person verifying and refunding the Refund Worksheet can not be the same."},
        DutyCase{"FourApproverMayNotRefund", kFour, u"4", u"APP",
                 u"The person approving and refunding the Refund Worksheet can not be the same."},
        DutyCase{"FourFourthOfficerMayRefund", kFour, u"4", u"FISC", u""},
        DutyCase{"FourAnyoneMayMail", kFour, u"5", u"PREP", u""},
        DutyCase{"FourAnyoneMayVoid", kFour, u"V", u"APP", u""}),
    [](const auto& p) { return std::string(p.param.name); });

TEST(DutySeparationSetting, ReadsItsTwoNamesAndNothingElse) {
  EXPECT_EQ(dutySeparationFromName(u"neighbouring"_s), DutySeparation::NeighbouringSteps);
  EXPECT_EQ(dutySeparationFromName(u" Four-Officers "_s), DutySeparation::FourOfficers);
  EXPECT_EQ(dutySeparationFromName(u"four"_s), std::nullopt);
  EXPECT_EQ(dutySeparationFromName(QString()), std::nullopt);
  for (const DutySeparation s : {DutySeparation::NeighbouringSteps, DutySeparation::FourOfficers}) {
    EXPECT_EQ(dutySeparationFromName(dutySeparationName(s)), s);
  }
}

// --- the later steps --------------------------------------------------------------------------------------------

struct StepCase {
  const char* name;
  const char16_t* status;  // of the worksheet
  Fields fields;           // of the record, besides ROW_VRSN_NBR 4
  const char16_t* expected;  // the refusal, or empty
};

class StepRule : public ::testing::TestWithParam<StepCase> {};

TEST_P(StepRule, RefusesWhatTheStepDoesNotAllow) {
  const StepCase& c = GetParam();
  Worksheet w = approvedWorksheet();
  w.status = QString::fromUtf16(c.status);
  w.refundDate = kToday.addDays(-3);
  Fields fields = c.fields;
  fields.append({u"ROW_VRSN_NBR"_s, u"4"_s});
  const messaging::SaveRecord sent = saveRecord(fields);
  const auto change = checkStep(w, RecordReader(sent, u"REFUND"_s), StepContext{u"FISC"_s, kToday, kFour});
  EXPECT_EQ(change.ok() ? QString() : change.error(), QString::fromUtf16(c.expected));
}

INSTANTIATE_TEST_SUITE_P(
    Records, StepRule,
    ::testing::Values(
        StepCase{"RefundedWithWarrant", u"3",
                 {{u"STTS_CD"_s, u"4"_s}, {u"RFND_BY_ID"_s, u"fisc"_s}, {u"RFND_CD"_s, u"1"_s},
                  {u"WRNT_NBR"_s, u"W-1"_s}, {u"RFND_DT"_s, u"2024-05-02"_s}},
                 u""},
        StepCase{"InAnothersName", u"3",
                 {{u"STTS_CD"_s, u"4"_s}, {u"RFND_BY_ID"_s, u"APP"_s}, {u"RFND_CD"_s, u"1"_s}},
                 u"REFUND: RFND_BY_ID names APP, but the signed-on officer is FISC"},
        StepCase{"RefundedTheOutcomeOfATransfer", u"3", {{u"STTS_CD"_s, u"4"_s}, {u"RFND_BY_ID"_s, u"FISC"_s}, {u"RFND_CD"_s, u"0"_s}},
                 u"Please select Transferred or Refunded"},
        StepCase{"TransferWithoutDescription", u"3", {{u"STTS_CD"_s, u"T"_s}, {u"RFND_BY_ID"_s, u"FISC"_s}, {u"RFND_CD"_s, u"0"_s}},
                 u"Please enter the Refund Description, when Tranferring the excess funds"},
        StepCase{"RefundDateAhead", u"3",
                 {{u"STTS_CD"_s, u"4"_s}, {u"RFND_BY_ID"_s, u"FISC"_s}, {u"RFND_CD"_s, u"1"_s},
                  {u"WRNT_NBR"_s, u"W-1"_s}, {u"RFND_DT"_s, u"2024-05-03"_s}},
                 u"Refund Date must be current or before"},
        StepCase{"MailedBeforeTheRefund", u"4", {{u"STTS_CD"_s, u"5"_s}, {u"DT_MLD"_s, u"2024-04-28"_s}},
                 u"Mail Date must be greater than or equal to the Refund Date"},
        StepCase{"MailedOnTheRefundDay", u"4", {{u"STTS_CD"_s, u"5"_s}, {u"DT_MLD"_s, u"2024-04-29"_s}}, u""},
        StepCase{"VoidAfterTheRefund", u"4", {{u"STTS_CD"_s, u"V"_s}, {u"VOID_ID"_s, u"FISC"_s}},
                 u"The following transaction can not be voided or saved: a Voided/Transferred/Refunded Worksheet"},
        StepCase{"SkippingApproval", u"1", {{u"STTS_CD"_s, u"3"_s}, {u"APPROVE_ID"_s, u"FISC"_s}},
                 u"Refund worksheet 3000100 is PREPARED; it can not be moved to APPROVED."},
        StepCase{"OfAnotherCustomer", u"3", {{u"STTS_CD"_s, u"V"_s}, {u"VOID_ID"_s, u"FISC"_s}, {u"CUST_ID"_s, u"100002"_s}},
                 u"REFUND: the customer or receipt is not that of refund worksheet 3000100"}),
    [](const auto& p) { return std::string(p.param.name); });

TEST(StepRule, AnswersTheColumnsAndTheExcessOfTheStep) {
  const messaging::SaveRecord sent = saveRecord({{u"STTS_CD"_s, u"4"_s},
                                             {u"RFND_BY_ID"_s, u"FISC"_s},
                                             {u"RFND_CD"_s, u"1"_s},
                                             {u"WRNT_NBR"_s, u"W-1"_s},
                                             {u"RFND_DT"_s, u"2024-05-01"_s},
                                             {u"ROW_VRSN_NBR"_s, u"4"_s}});
  const auto change = checkStep(approvedWorksheet(), RecordReader(sent, u"REFUND"_s), StepContext{u"FISC"_s, kToday});
  ASSERT_TRUE(change.ok()) << change.error().toStdString();
  EXPECT_EQ(change->next, u"4"_s);
  const QList<std::pair<QString, QString>> texts = {
      {u"RFND_BY_ID"_s, u"FISC"_s}, {u"RFND_CD"_s, u"1"_s}, {u"WRNT_NBR"_s, u"W-1"_s}};
  EXPECT_EQ(change->texts, texts);
  const QList<std::pair<QString, QDate>> days = {{u"RFND_DT"_s, QDate(2024, 5, 1)}};
  EXPECT_EQ(change->days, days);
  EXPECT_EQ(change->excessTo, u"R"_s);
  EXPECT_EQ(change->timeColumn, u"RFND_BY_TS"_s) << "the refund's time goes with it";

  const messaging::SaveRecord stale = saveRecord({{u"STTS_CD"_s, u"V"_s}, {u"VOID_ID"_s, u"FISC"_s}, {u"ROW_VRSN_NBR"_s, u"3"_s}});
  const auto refused = checkStep(approvedWorksheet(), RecordReader(stale, u"REFUND"_s), StepContext{u"FISC"_s, kToday});
  ASSERT_FALSE(refused.ok());
  EXPECT_TRUE(refused.error().startsWith(u"Refund worksheet 3000100 was changed by another user"_s)) << refused.error().toStdString();
}

// --- preparing -----------------------------------------------------------------------------------------------------

PrepareFacts goodFacts() {
  PrepareFacts facts;
  facts.issued = IssuedNumber{u"PREP"_s, false};
  Receipt receipt;
  receipt.number = u"8000002"_s;
  receipt.status = u"O"_s;
  receipt.confirmation = u"C-1"_s;
  facts.receipt = receipt;
  facts.openExcess = 15000;
  return facts;
}

const Fields kPrepareRecord = {{u"ACTION"_s, u"ADD"_s},         {u"CUST_ID"_s, u"100001"_s},
                               {u"RFND_NBR"_s, u"3000100"_s},   {u"TO"_s, u"2"_s},
                               {u"CREATOR_ID"_s, u"PREP"_s},    {u"DMV_CMMT_TXT"_s, u"Asked for"_s},
                               {u"RFND_AMT"_s, u"1234.50"_s},  {u"RCPT_NBR"_s, u"8000002"_s},
                               {u"STTS_CD"_s, u"1"_s}};

struct PrepareCase {
  const char* name;
  void (*change)(PrepareFacts&);
  const char16_t* expected;
};

class PrepareRule : public ::testing::TestWithParam<PrepareCase> {};

TEST_P(PrepareRule, RefusesAWorksheetTheFactsDoNotAllow) {
  PrepareFacts facts = goodFacts();
  GetParam().change(facts);
  const messaging::SaveRecord sent = saveRecord(kPrepareRecord);
  const auto prepared = checkPrepare(RecordReader(sent, u"REFUND"_s), u"3000100"_s, facts, u"PREP"_s);
  ASSERT_FALSE(prepared.ok());
  EXPECT_EQ(prepared.error(), QString::fromUtf16(GetParam().expected));
}

INSTANTIATE_TEST_SUITE_P(
    Facts, PrepareRule,
    ::testing::Values(
        PrepareCase{"NumberNeverGivenOut", [](PrepareFacts& f) { f.issued.reset(); },
                    u"Refund number 3000100 was not given out by the host; ask for a new refund number."},
        PrepareCase{"NumberUsed", [](PrepareFacts& f) { f.issued->used = true; },
                    u"Refund number 3000100 is already used by another worksheet."},
        PrepareCase{"NumberOfAnotherOfficer", [](PrepareFacts& f) { f.issued->officerId = u"VER"_s; },
                    u"Refund number 3000100 was given to officer VER, not to PREP; ask for a new refund number to "
                    u"prepare a worksheet."},
        PrepareCase{"WorksheetOnFile",
                    [](PrepareFacts& f) {
                      f.existing = approvedWorksheet();
                      f.existing->status = u"1"_s;
                    },
                    u"Refund worksheet 3000100 already exists (status PREPARED)."},
        PrepareCase{"ReceiptNotFound", [](PrepareFacts& f) { f.receipt.reset(); }, u"Receipt 8000002 was not found."},
        PrepareCase{"ReceiptNotConfirmed", [](PrepareFacts& f) { f.receipt->confirmation = u" "_s; },
                    u"Excess Funds that are not Confirmed can not be Refunded"},
        PrepareCase{"NothingOpen", [](PrepareFacts& f) { f.openExcess = 0; },
                    u"Excess Fund status must be OPEN to create refund"}),
    [](const auto& p) { return std::string(p.param.name); });

TEST(PrepareRule, AnswersWhatPreparingWrites) {
  const messaging::SaveRecord sent = saveRecord(kPrepareRecord);
  const auto prepared = checkPrepare(RecordReader(sent, u"REFUND"_s), u"3000100"_s, goodFacts(), u"prep"_s);
  ASSERT_TRUE(prepared.ok()) << prepared.error().toStdString();
  EXPECT_EQ(prepared->receipt, u"8000002"_s);
  EXPECT_EQ(prepared->customerId, u"100001"_s);
  EXPECT_EQ(prepared->amount, 123450);
  EXPECT_EQ(prepared->receiver, u"2"_s);
  EXPECT_EQ(prepared->comment, u"Asked for"_s);
}

}  // namespace
}  // namespace adjustacc::host::testing
