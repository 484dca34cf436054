// The rules of the account receivable adjustment on their own, without a database: what the ADJUSTAR record
// may do to a receivable, which assessments may change, and the License Purchase Option particulars.
#include "hostfixture.h"

#include "host/aradjustmentrules.h"

#include <utility>

namespace adjustacc::host::testing {
namespace {

using namespace Qt::Literals::StringLiterals;


const QDate kToday(2024, 5, 2);

Receivable citation() {
  Receivable r;
  r.id = 7;
  r.type = u"C"_s;
  r.number = u"1000011"_s;
  r.checkDigit = u"5"_s;
  r.customerId = u"100001"_s;
  r.status = u"R"_s;
  r.activity = u"A"_s;
  r.balance = 12000;
  r.version = 2;
  return r;
}

// --- the ADJUSTAR record ---------------------------------------------------------------------------------------------

struct HeaderCase {
  const char* name;
  void (*change)(Receivable&);
  Fields fields;  // of the record, besides ACTION ADD and ROW_VRSN_NBR 2
  ArRecordsSent sent;
  const char16_t* expected;  // the refusal, or empty
};

class ArAdjustmentHeaderRule : public ::testing::TestWithParam<HeaderCase> {};

TEST_P(ArAdjustmentHeaderRule, RefusesTheFirstRuleBroken) {
  const HeaderCase& c = GetParam();
  Receivable receivable = citation();
  c.change(receivable);
  Fields fields = {{u"ACTION"_s, u"ADD"_s}, {u"ROW_VRSN_NBR"_s, u"2"_s}};
  fields.append(c.fields);
  const messaging::SaveRecord sent = saveRecord(fields);
  const auto header = checkArAdjustmentHeader(RecordReader(sent, u"ADJUSTAR"_s), receivable, c.sent, kToday);
  EXPECT_EQ(header.ok() ? QString() : header.error(), QString::fromUtf16(c.expected));
}

void unchanged(Receivable&) {}

const Fields kVoid = {{u"ADJSTMT_TYP_CD"_s, u"V"_s}, {u"ADJSTMT_DT"_s, u"2024-05-02"_s}, {u"ADJST_CMMT_TXT"_s, u"Wrong plate"_s}};
const Fields kDelete = {{u"ADJSTMT_TYP_CD"_s, u"D"_s}, {u"ADJSTMT_DT"_s, u"2024-05-02"_s}, {u"ADJST_CMMT_TXT"_s, u"Duplicate"_s}};
const Fields kFees = {{u"ADJSTMT_DT"_s, u"2024-05-01"_s}, {u"ADJST_CMMT_TXT"_s, u"Late fee waived"_s}};
constexpr ArRecordsSent kNone{false, false};
constexpr ArRecordsSent kAssessments{true, false};

INSTANTIATE_TEST_SUITE_P(
    Records, ArAdjustmentHeaderRule,
    ::testing::Values(
        HeaderCase{"VoidAForm", unchanged, kVoid, kNone, u""},
        HeaderCase{"AdjustFees", unchanged, kFees, kAssessments, u""},
        HeaderCase{"AnotherReceivable", unchanged, {{u"ACCT_RCVBL_NBR"_s, u"1000028"_s}}, kNone,
                   u"ADJUSTAR: the record names another account receivable than 1000011-5"},
        HeaderCase{"Deleted", [](Receivable& r) { r.status = u"D"_s; }, kVoid, kNone,
                   u"Account receivable 1000011-5 has been deleted and can not be adjusted."},
        HeaderCase{"BoundToACase", [](Receivable& r) { r.caseId = u"K-9"_s; }, kFees, kAssessments,
                   u"Account receivable 1000011-5 is bound to case K-9 and can not be adjusted."},
        HeaderCase{"VoidAPaymentPlan", [](Receivable& r) { r.type = u"P"_s; }, kVoid, kNone,
                   u"Can not void or delete a payment plan"},
        HeaderCase{"FeesOfAVoidedForm", [](Receivable& r) { r.status = u"V"_s; }, kFees, kAssessments,
                   u"Can not adjust a voided form"},
        HeaderCase{"DeleteAVoidedForm", [](Receivable& r) { r.status = u"V"_s; }, kDelete, kNone, u""},
        HeaderCase{"DateAhead", unchanged, {{u"ADJSTMT_DT"_s, u"2024-05-03"_s}, {u"ADJST_CMMT_TXT"_s, u"x"_s}},
                   kAssessments, u"Date Adjusted must be current date or a prior date"},
        HeaderCase{"VoidWithFees", unchanged, kVoid, ArRecordsSent{false, true},
                   u"You can not select Action and adjust a fee/penalty at the same time"},
        HeaderCase{"NothingToAdjust", unchanged, kFees, kNone, u"Please adjust the account receivables or the Fees/Penalties"},
        HeaderCase{"NoComment", unchanged, {{u"ADJSTMT_DT"_s, u"2024-05-01"_s}}, kAssessments, u"Comment is required"},
        HeaderCase{"DeleteASpecialPermit", [](Receivable& r) { r.type = u"S"_s; }, kDelete, kNone,
                   u"Only delete ENF001, ENF003, ENF507, and Temporary Permits"},
        HeaderCase{"DeleteAGeneratedForm", [](Receivable& r) { r.number = u"2000001"_s; }, kDelete, kNone,
                   u"Can not delete a generated form. Please void and correct the form instead."}),
    [](const auto& p) { return std::string(p.param.name); });

// --- assessments and the License Purchase Option ----------------------------------------------------------------------

Assessment fee(qint64 id, const QString& code, bool lpo, const QString& status = u"A"_s) {
  Assessment a;
  a.id = id;
  a.code = code;
  a.lpo = lpo;
  a.status = status;
  a.issued = QDate(2024, 1, 10);
  a.version = 1;
  return a;
}

// The ASSESSMENT record of the citation's late fee, removed ("I") or reinstated ("A").
messaging::SaveRecord lateFeeRecord(const QString& status, const Fields& more) {
  Fields fields = {{u"ACTION"_s, u"UPD"_s},        {u"CUST_ID"_s, u"100001"_s},          {u"TRNSCTN_NBR"_s, u"510001"_s},
                   {u"ASSMT_CD"_s, u"F02"_s},      {u"VLTN_ASSMT_SEQ_NBR"_s, u"2"_s},    {u"VLTN_ASSMT_STTS_CD"_s, status}};
  fields.append(more);
  return saveRecord(fields);
}

TEST(AssessmentRules, AnAssessmentChangesOnceAsReadAndNotBeforeItWasIssued) {
  const messaging::SaveRecord sent = lateFeeRecord(u"I"_s, {{u"ROW_VRSN_NBR"_s, u"1"_s}});
  const RecordReader r(sent, u"ASSESSMENT record 1"_s);
  const auto key = readAssessmentRecord(r, kToday);
  ASSERT_TRUE(key.ok()) << key.error().toStdString();
  EXPECT_TRUE(key->removal);
  const auto check = [&](const std::optional<Assessment>& found, QSet<qint64>& seen, const QDate& adjusted) {
    const auto change = checkAssessmentChange(r, key.value(), found, citation(), adjusted, seen);
    return change.ok() ? QString() : change.error();
  };
  QSet<qint64> seen;
  EXPECT_EQ(check(std::nullopt, seen, kToday),
            u"ASSESSMENT record 1: assessment F02 (transaction 510001, sequence 2) is not on account receivable 1000011-5"_s);
  EXPECT_EQ(check(fee(3, u"F02"_s, false), seen, kToday), QString());
  EXPECT_EQ(check(fee(3, u"F02"_s, false), seen, kToday), u"ASSESSMENT record 1: assessment F02 is adjusted twice in one save"_s);
  seen.clear();
  EXPECT_EQ(check(fee(3, u"F02"_s, false, u"I"_s), seen, kToday), u"ASSESSMENT record 1: assessment F02 is already removed"_s);
  seen.clear();
  EXPECT_EQ(check(fee(3, u"F02"_s, false), seen, QDate(2024, 1, 9)),
            u"Date Adjusted must be >= assessment date in Available Assessments Grid"_s);
  const messaging::SaveRecord otherDay = lateFeeRecord(u"A"_s, {{u"ADJSTMT_DT"_s, u"2024-05-01"_s}});
  EXPECT_EQ(readAssessmentRecord(RecordReader(otherDay, u"ASSESSMENT record 2"_s), kToday).error(),
            u"ASSESSMENT record 2: ADJSTMT_DT must be the date of the adjustment (2024-05-02)"_s);
}

TEST(LpoRules, OneLpoFeeAtATimeWithItsParticularsExactly) {
  const AssessmentChange lpoFee{fee(1, u"F15"_s, true), true, 1};
  const AssessmentChange otherLpoFee{fee(2, u"f01"_s, false), true, 1};
  const AssessmentChange penalty{fee(3, u"P01"_s, false), true, 1};
  const AssessmentChange reinstated{fee(4, u"F09"_s, true, u"I"_s), false, 1};
  const auto removed = [](const QList<AssessmentChange>& changes, qsizetype records) {
    const auto lpo = checkLpoRemoval(changes, records);
    return !lpo.ok() ? lpo.error() : lpo.value() ? lpo.value()->code : u"none"_s;
  };
  EXPECT_EQ(removed({penalty, lpoFee}, 1), u"F15"_s);
  EXPECT_EQ(removed({penalty, reinstated}, 0), u"none"_s);
  EXPECT_EQ(removed({lpoFee, otherLpoFee}, 1), u"Adjust only one LPO at a time"_s);
  EXPECT_EQ(removed({lpoFee}, 2), u"An adjustment carries at most one CTTNADTNINFO record."_s);
  EXPECT_EQ(removed({lpoFee}, 0),
            u"License Purchase Option particulars (CTTNADTNINFO) are required when an LPO fee is removed."_s);
  EXPECT_EQ(removed({penalty}, 1),
            u"License Purchase Option particulars are only taken with the removal of an LPO fee."_s);
}

struct LpoCase {
  const char* name;
  Fields fields;  // besides ACTION UPD
  const char16_t* expected;  // the refusal, or empty
};

class LpoRecordRule : public ::testing::TestWithParam<LpoCase> {};

TEST_P(LpoRecordRule, ReadsTheParticularsOfEitherPlace) {
  Fields fields = {{u"ACTION"_s, u"UPD"_s}};
  fields.append(GetParam().fields);
  const messaging::SaveRecord sent = saveRecord(fields);
  const auto details = checkLpoRecord(RecordReader(sent, u"CTTNADTNINFO"_s), kToday);
  EXPECT_EQ(details.ok() ? QString() : details.error(), QString::fromUtf16(GetParam().expected));
}

Fields inState(const QString& field, const QString& value) {
  Fields fields = {{u"PRCHS_OPTN_ST_CD"_s, u"0"_s},  {u"PRCHS_OPTN_TAG_NBR"_s, u"ab-123"_s},
                   {u"PRCHS_OPTN_DT"_s, u"2024-05-01"_s}, {u"PRCHS_OPTN_TM"_s, u"09:30"_s},
                   {u"PO_TRP_ID"_s, u"C"_s},          {u"PRCHS_OPTN_WGT"_s, u"80000"_s},
                   {u"TOT_PRCHS_OPTN_AMT"_s, u"125.00"_s}};
  for (auto& [name, old] : fields) {
    if (name == field) {
      old = value;
    }
  }
  return fields;
}

INSTANTIATE_TEST_SUITE_P(
    Records, LpoRecordRule,
    ::testing::Values(
        LpoCase{"InState", inState({}, {}), u""},
        LpoCase{"OutOfStateWithComment", {{u"PRCHS_OPTN_ST_CD"_s, u"1"_s}, {u"PRCHS_OPTN_TXT"_s, u"Bought in Ohio"_s}}, u""},
        LpoCase{"OutOfStateWithoutComment", {{u"PRCHS_OPTN_ST_CD"_s, u"1"_s}}, u"Comment required for Out-of-State LPO"},
        LpoCase{"NoPlace", {}, u"In or Out of State is required"},
        LpoCase{"PlateWithABlank", inState(u"PRCHS_OPTN_TAG_NBR"_s, u"AB 123"_s),
                u"CTTNADTNINFO: a plate number holds letters, digits and \"-\" only"},
        LpoCase{"BoughtTomorrow", inState(u"PRCHS_OPTN_DT"_s, u"2024-05-03"_s),
                u"CTTNADTNINFO: the purchase date can not be after today"},
        LpoCase{"TimeWithoutMinutes", inState(u"PRCHS_OPTN_TM"_s, u"9:3"_s),
                u"CTTNADTNINFO: PRCHS_OPTN_TM \"9:3\" is not a time written HH:MM"},
        LpoCase{"NoAmount", inState(u"TOT_PRCHS_OPTN_AMT"_s, u"0"_s), u"Amount required for In-State LPO"}),
    [](const auto& p) { return std::string(p.param.name); });

}  // namespace
}  // namespace adjustacc::host::testing
