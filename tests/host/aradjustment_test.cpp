// The account receivable adjustment save: effects on the stored rows, the business rules, and the
// guarantees (one transaction, request ids, rows changed since read, rights, the audit trail).
#include "hostfixture.h"

#include "messaging/formnumber.h"

namespace adjustacc::host::testing {
namespace {

using messaging::Reply;

class ArAdjustment : public HostTest {
protected:
  // The assessment rows of a receivable as the detail screen reads them.
  Reply assessments(const QString& number, const QString& type = QStringLiteral("C")) {
    return ok(RequestBuilder(47)
                  .param(QStringLiteral("key:REF_NBR"), number)
                  .param(QStringLiteral("key:REF_TYP_CD"), type)
                  .param(QStringLiteral("key:LPO"), QStringLiteral("NO")));
  }

  QString receivableVersion(const QString& number, const QString& type = QStringLiteral("C")) {
    return value(QStringLiteral("SELECT ROW_VRSN_NBR FROM ACCT_RCVBL WHERE ACCT_RCVBL_TYP_CD = ? AND ACCT_RCVBL_NBR = ?"),
                 {type, number})
        .toString();
  }

  // An ASSESSMENT record for the row of `code`, built from the inquiry the way the detail screen builds it.
  Fields assessmentRecord(const Reply& read, const QString& code, const QString& status, const QDate& day) {
    const QString s = QStringLiteral("ASSESSMENT");
    const int row = findRow(read, s, QStringLiteral("ASSMT_CD"), code);
    EXPECT_GE(row, 0) << code.toStdString();
    const bool lpo = cell(read, s, row, QStringLiteral("LIC_PRCHS_OPTN_IND")) == u"Y";
    const QString amount = cell(read, s, row, lpo ? QStringLiteral("AC_ASMT_AMT") : QStringLiteral("CL_ASMT_AMT"));
    return {{QStringLiteral("ACTION"), QStringLiteral("UPD")},
            {QStringLiteral("CUST_ID"), cell(read, s, row, QStringLiteral("CUST_ID"))},
            {QStringLiteral("TRNSCTN_NBR"), cell(read, s, row, QStringLiteral("TRNSCTN_NBR"))},
            {QStringLiteral("ASSMT_CD"), code},
            {QStringLiteral("VLTN_ASSMT_SEQ_NBR"), cell(read, s, row, QStringLiteral("VLTN_ASSMT_SEQ_NBR"))},
            {QStringLiteral("ADJSTMT_DT"), day.toString(Qt::ISODate)},
            {QStringLiteral("LIC_PRCHS_OPTN_IND"), lpo ? QStringLiteral("Y") : QStringLiteral("N")},
            {lpo ? QStringLiteral("AC_ASMT_AMT") : QStringLiteral("CL_ASMT_AMT"), amount},
            {QStringLiteral("BAL_DUE_AMT"), status == u"I" ? QStringLiteral("0") : amount},
            {QStringLiteral("VLTN_ASSMT_STTS_CD"), status},
            {QStringLiteral("ROW_VRSN_NBR"), cell(read, s, row, QStringLiteral("ROW_VRSN_NBR"))}};
  }

  RequestBuilder adjustment(const QString& number, const QString& action, const QString& comment, const QDate& day,
                            const QString& user = demo::Admin, const QString& type = QStringLiteral("C")) {
    RequestBuilder request(41, user);
    request.param(QStringLiteral("key:REF_NBR"), number)
        .param(QStringLiteral("key:REF_TYP_CD"), type)
        .param(QStringLiteral("key:LPO"), QStringLiteral("NO"))
        .record(QStringLiteral("ADJUSTAR"),
                {{QStringLiteral("ACTION"), QStringLiteral("ADD")},
                 {QStringLiteral("CUST_ID"), value(QStringLiteral("SELECT CUST_ID FROM ACCT_RCVBL WHERE ACCT_RCVBL_NBR = ? "
                                                                  "AND ACCT_RCVBL_TYP_CD = ?"),
                                                   {number, type})},
                 {QStringLiteral("ADJSTMT_DT"), day.isValid() ? QVariant(day.toString(Qt::ISODate)) : QVariant()},
                 {QStringLiteral("ADJST_CMMT_TXT"), comment},
                 {QStringLiteral("ADJSTMT_TYP_CD"), action},
                 {QStringLiteral("ACCT_RCVBL_NBR"), number},
                 {QStringLiteral("ACCT_RCVBL_CK_NBR"), QString::number(*messaging::formCheckDigit(number))},
                 {QStringLiteral("ACCT_RCVBL_TYP_CD"), type},
                 {QStringLiteral("ROW_VRSN_NBR"), receivableVersion(number, type)}});
    return request;
  }

  Fields inStateLpo() const {
    return {{QStringLiteral("ACTION"), QStringLiteral("UPD")},
            {QStringLiteral("PRCHS_OPTN_ST_CD"), QStringLiteral("0")},
            {QStringLiteral("PRCHS_OPTN_TAG_NBR"), QStringLiteral("NY-88K1")},
            {QStringLiteral("PRCHS_OPTN_DT"), today().addDays(-3).toString(Qt::ISODate)},
            {QStringLiteral("PRCHS_OPTN_TM"), QStringLiteral("13:45")},
            {QStringLiteral("PO_TRP_ID"), QStringLiteral("A")},
            {QStringLiteral("PO_TRP_DSTRCT_ID"), QStringLiteral("12")},
            {QStringLiteral("PRCHS_OPTN_WGT"), QStringLiteral("80000")},
            {QStringLiteral("TOT_PRCHS_OPTN_AMT"), QStringLiteral("90.00")},
            {QStringLiteral("PRCHS_OPTN_TXT"), QStringLiteral("Bought at the port of entry")}};
  }
};

TEST_P(ArAdjustment, RemovingAFeeZeroesItsBalanceRecomputesTheFormAndRecordsWhyAndWho) {
  const Reply read = assessments(QStringLiteral("1000011"));
  const Reply reply = ok(adjustment(QStringLiteral("1000011"), {}, QStringLiteral("Late fee waived"), today())
                             .record(QStringLiteral("ASSESSMENT"),
                                     assessmentRecord(read, QStringLiteral("F02"), QStringLiteral("I"), today())));
  const int row = findRow(reply, QStringLiteral("ASSESSMENT"), QStringLiteral("ASSMT_CD"), QStringLiteral("F02"));
  EXPECT_EQ(cell(reply, QStringLiteral("ASSESSMENT"), row, QStringLiteral("VLTN_ASSMT_STTS_CD")), QStringLiteral("I"));
  EXPECT_EQ(cell(reply, QStringLiteral("ASSESSMENT"), row, QStringLiteral("BAL_DUE_AMT")), QStringLiteral("0.00"));
  EXPECT_EQ(cell(reply, QStringLiteral("ASSESSMENT"), row, QStringLiteral("ADJSTMT_DT")), today().toString(Qt::ISODate));
  ASSERT_EQ(rows(reply, QStringLiteral("ACNTSRCVBL")), 1);
  EXPECT_EQ(cell(reply, QStringLiteral("ACNTSRCVBL"), 0, QStringLiteral("ACCT_RCVBL_DUE_AMT")), QStringLiteral("622.50"));
  EXPECT_EQ(cell(reply, QStringLiteral("ACNTSRCVBL"), 0, QStringLiteral("ACCT_RCVBL_BAL_AMT")), QStringLiteral("472.50"));
  EXPECT_EQ(cell(reply, QStringLiteral("ACNTSRCVBL"), 0, QStringLiteral("LTE_FEE_AMT")), QStringLiteral("0.00"));
  EXPECT_EQ(cell(reply, QStringLiteral("ACNTSRCVBL"), 0, QStringLiteral("ROW_VRSN_NBR")), QStringLiteral("2"));
  EXPECT_FALSE(reply.hasSection(QStringLiteral("ACCOUNTACTIVITY"))) << "it would open the activity screen";

  EXPECT_EQ(value(QStringLiteral("SELECT ACTVTY_AMT FROM ACCT_ACTVTY WHERE ACCT_ACTVTY_CD = 'ADJ' AND "
                                 "ADTL_INFO_TXT = 'SYSTEM' AND ACTVTY_CMMT_TXT LIKE ?"),
                  {QStringLiteral("Removed F02 $25.00: Late fee waived")})
                .toLongLong(),
            -2500);
  EXPECT_EQ(value(QStringLiteral("SELECT OFFICER_ID FROM ADJSTMT WHERE ADJSTMT_CMMT_TXT = ?"),
                  {QStringLiteral("Late fee waived")})
                .toString(),
            demo::Admin);
  EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM ASSMT_ADJSTMT WHERE CHANGE_CD = 'R' AND PRIOR_BAL_AMT = 2500 "
                                 "AND NEW_BAL_AMT = 0")),
            1);
  // The trail holds the assessment before and after, under the officer and the request id.
  const QString before = value(QStringLiteral("SELECT BEFORE_TXT FROM AUDIT_TRAIL WHERE TBL_NM = 'VLTN_ASSMT'")).toString();
  const QString after = value(QStringLiteral("SELECT AFTER_TXT FROM AUDIT_TRAIL WHERE TBL_NM = 'VLTN_ASSMT'")).toString();
  EXPECT_TRUE(before.contains(QStringLiteral("\"VLTN_ASSMT_STTS_CD\":\"A\""))) << before.toStdString();
  EXPECT_TRUE(after.contains(QStringLiteral("\"VLTN_ASSMT_STTS_CD\":\"I\""))) << after.toStdString();
  EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM AUDIT_TRAIL WHERE OFFICER_ID = ? AND REQUEST_ID IS NOT NULL"),
                  {demo::Admin}),
            count(QStringLiteral("SELECT COUNT(*) FROM AUDIT_TRAIL")));
}

TEST_P(ArAdjustment, AReinstatementReversesTheRemovalOnRecordAndRestoresWhatWasOwed) {
  const Reply read = assessments(QStringLiteral("1000011"));
  const Reply reply = ok(adjustment(QStringLiteral("1000011"), {}, QStringLiteral("Log book penalty stands"), today())
                             .record(QStringLiteral("ASSESSMENT"),
                                     assessmentRecord(read, QStringLiteral("P02"), QStringLiteral("A"), today())));
  const int row = findRow(reply, QStringLiteral("ASSESSMENT"), QStringLiteral("ASSMT_CD"), QStringLiteral("P02"));
  EXPECT_EQ(cell(reply, QStringLiteral("ASSESSMENT"), row, QStringLiteral("VLTN_ASSMT_STTS_CD")), QStringLiteral("A"));
  EXPECT_EQ(cell(reply, QStringLiteral("ASSESSMENT"), row, QStringLiteral("BAL_DUE_AMT")), QStringLiteral("150.00"));
  EXPECT_EQ(cell(reply, QStringLiteral("ACNTSRCVBL"), 0, QStringLiteral("ACCT_RCVBL_BAL_AMT")), QStringLiteral("647.50"));
  const qint64 removal = count(QStringLiteral("SELECT MIN(ASSMT_ADJSTMT_ID) FROM ASSMT_ADJSTMT WHERE CHANGE_CD = 'R'"));
  EXPECT_EQ(count(QStringLiteral("SELECT REVERSES_ID FROM ASSMT_ADJSTMT WHERE CHANGE_CD = 'S'")), removal);
  EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM ASSMT_ADJSTMT WHERE ASSMT_ADJSTMT_ID = ? AND CHANGE_CD = 'R'"),
                  {removal}),
            1)
      << "the removal itself is kept as it was";

  // Removed again and reinstated again: each reinstatement reverses the latest removal.
  const Reply second = assessments(QStringLiteral("1000011"));
  ok(adjustment(QStringLiteral("1000011"), {}, QStringLiteral("Removed after all"), today())
         .record(QStringLiteral("ASSESSMENT"), assessmentRecord(second, QStringLiteral("P02"), QStringLiteral("I"), today())));
  const Reply third = assessments(QStringLiteral("1000011"));
  ok(adjustment(QStringLiteral("1000011"), {}, QStringLiteral("Back again"), today())
         .record(QStringLiteral("ASSESSMENT"), assessmentRecord(third, QStringLiteral("P02"), QStringLiteral("A"), today())));
  const QString logBook = QStringLiteral("(SELECT ASSMT_ID FROM VLTN_ASSMT WHERE TRNSCTN_NBR = '510004')");
  EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM ASSMT_ADJSTMT WHERE ASSMT_ID = ") + logBook), 4);
  EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM ASSMT_ADJSTMT r WHERE r.CHANGE_CD = 'R' AND r.ASSMT_ID = ") +
                  logBook +
                  QStringLiteral(" AND NOT EXISTS (SELECT 1 FROM ASSMT_ADJSTMT s WHERE s.REVERSES_ID = r.ASSMT_ADJSTMT_ID)")),
            0)
      << "every removal is reversed, each by its own reinstatement";
  EXPECT_EQ(count(QStringLiteral("SELECT COUNT(DISTINCT REVERSES_ID) FROM ASSMT_ADJSTMT WHERE ASSMT_ID = ") + logBook), 2);
}

TEST_P(ArAdjustment, RemovingAnLpoFeeKeepsItsPurchaseParticulars) {
  const Reply read = assessments(QStringLiteral("1000011"));
  ok(adjustment(QStringLiteral("1000011"), {}, QStringLiteral("LPO bought"), today())
         .record(QStringLiteral("ASSESSMENT"), assessmentRecord(read, QStringLiteral("F09"), QStringLiteral("I"), today()))
         .record(QStringLiteral("CTTNADTNINFO"), inStateLpo()));
  EXPECT_EQ(value(QStringLiteral("SELECT PRCHS_OPTN_TAG_NBR FROM LPO_DTL WHERE TOT_PRCHS_OPTN_AMT = 9000")).toString(),
            QStringLiteral("NY-88K1"));
  // The LPO amount (90.00), not the calculated one, leaves the balance.
  EXPECT_EQ(value(QStringLiteral("SELECT ACCT_RCVBL_BAL_AMT FROM ACCT_RCVBL WHERE ACCT_RCVBL_NBR = '1000011'")).toLongLong(),
            49750 - 9000);
}

TEST_P(ArAdjustment, VoidAndDeleteChangeTheFormStatus) {
  ok(adjustment(QStringLiteral("1000035"), QStringLiteral("V"), QStringLiteral("Issued in error"), today(), demo::Admin,
                QStringLiteral("M")));
  EXPECT_EQ(value(QStringLiteral("SELECT ACCT_STTS_CD FROM ACCT_RCVBL WHERE ACCT_RCVBL_NBR = '1000035'")).toString(),
            QStringLiteral("V"));
  EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM ACCT_ACTVTY WHERE ACCT_ACTVTY_CD = 'VOD'")), 1);

  ok(adjustment(QStringLiteral("1999999"), QStringLiteral("D"), QStringLiteral("Duplicate form"), today()));
  EXPECT_EQ(value(QStringLiteral("SELECT ACCT_STTS_CD || ACTV_STTS_CD FROM ACCT_RCVBL WHERE ACCT_RCVBL_NBR = '1999999'"))
                .toString(),
            QStringLiteral("DI"));
  EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM ACCT_RCVBL WHERE ACCT_RCVBL_NBR = '1999999'")), 1)
      << "a deleted form stays on record";
}

struct Refusal {
  const char* name;
  const char16_t* number;
  const char16_t* type;
  const char16_t* action;
  int dayOffset;
  const char16_t* comment;
  const char16_t* removeCode;  // an assessment to remove, or empty
  const char16_t* expected;
};

TEST_P(ArAdjustment, TheRulesOfAnAdjustmentAreEnforcedAndNothingIsWritten) {
  const Refusal cases[] = {
      {"payment plan", u"0500021", u"P", u"V", 0, u"x", u"", u"Can not void or delete a payment plan"},
      {"voided form", u"1200001", u"C", u"", 0, u"x", u"P01", u"Can not adjust a voided form"},
      {"generated form", u"2000001", u"C", u"D", 0, u"x", u"", u"Can not delete a generated form. Please void and correct the form instead."},
      {"not deletable type", u"1000059", u"S", u"D", 0, u"x", u"", u"Only delete ENF001, ENF003, ENF507, and Temporary Permits"},
      {"payments in force", u"1000011", u"C", u"D", 0, u"x", u"", u"has payments in force"},
      {"inactive", u"1200002", u"C", u"", 0, u"x", u"P02", u"is inactive"},
      {"bound to a case", u"1200003", u"C", u"", 0, u"x", u"P01", u"is bound to case CV-2024-0117"},
      {"deleted", u"1400001", u"C", u"V", 0, u"x", u"", u"has been deleted"},
      {"future date", u"1000011", u"C", u"", 1, u"x", u"F02", u"Date Adjusted must be current date or a prior date"},
      {"before the assessment", u"1000042", u"T", u"", -31, u"x", u"F05",
       u"Date Adjusted must be >= assessment date in Available Assessments Grid"},
      {"no comment", u"1000011", u"C", u"", 0, u"  ", u"F02", u"Comment is required"},
      {"action and fee at once", u"1000011", u"C", u"V", 0, u"x", u"F02",
       u"You can not select Action and adjust a fee/penalty at the same time"},
      {"nothing adjusted", u"1000011", u"C", u"", 0, u"x", u"", u"Please adjust the account receivables or the Fees/Penalties"},
      {"LPO fee without particulars", u"1000011", u"C", u"", 0, u"x", u"F15", u"CTTNADTNINFO"},
  };
  for (const Refusal& c : cases) {
    SCOPED_TRACE(c.name);
    const QString number = QString::fromUtf16(c.number);
    const QString type = QString::fromUtf16(c.type);
    RequestBuilder request = adjustment(number, QString::fromUtf16(c.action), QString::fromUtf16(c.comment),
                                        today().addDays(c.dayOffset), demo::Admin, type);
    if (const QString code = QString::fromUtf16(c.removeCode); !code.isEmpty()) {
      request.record(QStringLiteral("ASSESSMENT"),
                     assessmentRecord(assessments(number, type), code, QStringLiteral("I"), today().addDays(c.dayOffset)));
    }
    expectRefused(request, QString::fromUtf16(c.expected));
  }
}

TEST_P(ArAdjustment, OnlyOneLpoFeeAtATime) {
  const Reply read = assessments(QStringLiteral("1000011"));
  const Reply reply =
      send(adjustment(QStringLiteral("1000011"), {}, QStringLiteral("x"), today())
               .record(QStringLiteral("ASSESSMENT"), assessmentRecord(read, QStringLiteral("F09"), QStringLiteral("I"), today()))
               .record(QStringLiteral("ASSESSMENT"), assessmentRecord(read, QStringLiteral("F01"), QStringLiteral("I"), today()))
               .record(QStringLiteral("CTTNADTNINFO"), inStateLpo()));
  EXPECT_EQ(reply.error, QStringLiteral("Adjust only one LPO at a time"));
}

TEST_P(ArAdjustment, AClerkWithoutTheRightIsRefusedWhateverTheScreenAllowed) {
  const Reply read = assessments(QStringLiteral("1000011"));
  expectRefused(adjustment(QStringLiteral("1000011"), {}, QStringLiteral("x"), today(), demo::Clerk)
                    .record(QStringLiteral("ASSESSMENT"),
                            assessmentRecord(read, QStringLiteral("F02"), QStringLiteral("I"), today())),
                QStringLiteral("does not hold the right ADJUSTAR"));
}

TEST_P(ArAdjustment, ASaveOverRowsChangedSinceTheyWereReadIsRefused) {
  const Reply read = assessments(QStringLiteral("1000011"));
  RequestBuilder stale = adjustment(QStringLiteral("1000011"), {}, QStringLiteral("Second clerk"), today());
  stale.record(QStringLiteral("ASSESSMENT"), assessmentRecord(read, QStringLiteral("F03"), QStringLiteral("I"), today()));
  // Another clerk removes the late fee first.
  ok(adjustment(QStringLiteral("1000011"), {}, QStringLiteral("First clerk"), today())
         .record(QStringLiteral("ASSESSMENT"), assessmentRecord(read, QStringLiteral("F02"), QStringLiteral("I"), today())));
  expectRefused(stale, QStringLiteral("was changed by another user"));

  // A record without the version it read is refused too.
  RequestBuilder unversioned = adjustment(QStringLiteral("1000011"), {}, QStringLiteral("x"), today());
  Fields record = assessmentRecord(assessments(QStringLiteral("1000011")), QStringLiteral("F03"), QStringLiteral("I"), today());
  record.removeIf([](const auto& field) { return field.first == u"ROW_VRSN_NBR"; });
  EXPECT_TRUE(send(unversioned.record(QStringLiteral("ASSESSMENT"), record)).error.contains(QStringLiteral("ROW_VRSN_NBR")));
}

TEST_P(ArAdjustment, AResentSaveIsAnsweredFromTheRecordAndAppliedOnce) {
  const Reply read = assessments(QStringLiteral("1000011"));
  RequestBuilder request = adjustment(QStringLiteral("1000011"), {}, QStringLiteral("Waived"), today());
  request.record(QStringLiteral("ASSESSMENT"), assessmentRecord(read, QStringLiteral("F02"), QStringLiteral("I"), today()));
  const Reply first = ok(request);
  const QString after = fingerprint();
  const Reply again = ok(request);
  EXPECT_EQ(fingerprint(), after) << "the resend wrote nothing";
  EXPECT_EQ(again.requestId, first.requestId);
  EXPECT_EQ(cell(again, QStringLiteral("ACNTSRCVBL"), 0, QStringLiteral("ACCT_RCVBL_BAL_AMT")),
            cell(first, QStringLiteral("ACNTSRCVBL"), 0, QStringLiteral("ACCT_RCVBL_BAL_AMT")));
  EXPECT_EQ(rows(again, QStringLiteral("ASSESSMENT")), rows(first, QStringLiteral("ASSESSMENT")));
  EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM ADJSTMT WHERE ADJSTMT_CMMT_TXT = 'Waived'")), 1);

  // The same id on a different request is refused; so is another officer reusing it.
  RequestBuilder other = adjustment(QStringLiteral("1000011"), {}, QStringLiteral("Something else"), today());
  other.requestId(request.request().requestId);
  EXPECT_TRUE(send(other).error.contains(QStringLiteral("already used for another request")));
  EXPECT_EQ(fingerprint(), after);
}

TEST_P(ArAdjustment, ASaveIsOneTransactionAllOrNothing) {
  const Reply read = assessments(QStringLiteral("1000011"));
  // The assessment part is valid and written first; the activity row after it is a duplicate of one on file.
  expectRefused(adjustment(QStringLiteral("1000011"), {}, QStringLiteral("Waived"), today())
                    .record(QStringLiteral("ASSESSMENT"),
                            assessmentRecord(read, QStringLiteral("F02"), QStringLiteral("I"), today()))
                    .record(QStringLiteral("ACCOUNTACTIVITY"),
                            {{QStringLiteral("ACTION"), QStringLiteral("ADD")},
                             {QStringLiteral("ACTVTY_DT"), today().addDays(-2).toString(Qt::ISODate)},
                             {QStringLiteral("ACCT_ACTVTY_CD"), QStringLiteral("NTE")},
                             {QStringLiteral("ACTVTY_CMMT_TXT"), QStringLiteral("Customer disputes the LPO fee")},
                             {QStringLiteral("LST_UPDT_USER_ID"), demo::Admin}}),
                QStringLiteral("Can not add duplicate information"));
  EXPECT_EQ(value(QStringLiteral("SELECT VLTN_ASSMT_STTS_CD FROM VLTN_ASSMT WHERE ASSMT_CD = 'F02' AND "
                                 "TRNSCTN_NBR = '510001'"))
                .toString(),
            QStringLiteral("A"));
}

TEST_P(ArAdjustment, TheAuditTrailCanNotBeChangedOrDeleted) {
  const Reply read = assessments(QStringLiteral("1000011"));
  ok(adjustment(QStringLiteral("1000011"), {}, QStringLiteral("Waived"), today())
         .record(QStringLiteral("ASSESSMENT"), assessmentRecord(read, QStringLiteral("F02"), QStringLiteral("I"), today())));
  const qint64 entries = count(QStringLiteral("SELECT COUNT(*) FROM AUDIT_TRAIL"));
  ASSERT_GT(entries, 0);
  QSqlQuery query(db());
  EXPECT_FALSE(query.exec(QStringLiteral("UPDATE AUDIT_TRAIL SET OFFICER_ID = 'NOBODY'")));
  EXPECT_FALSE(query.exec(QStringLiteral("DELETE FROM AUDIT_TRAIL")));
  EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM AUDIT_TRAIL")), entries);
  EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM AUDIT_TRAIL WHERE OFFICER_ID = 'NOBODY'")), 0);
}

// --- activity rows that come with the detail screen's save -----------------------------------------------------------

class Activity : public ArAdjustment {
protected:
  Reply activityRows(const QString& user = demo::Admin) {
    return ok(RequestBuilder(41, user)
                  .param(QStringLiteral("key:ACCT_RCVBL_NBR"), QStringLiteral("1000011"))
                  .param(QStringLiteral("key:ACCT_RCVBL_TYP_CD"), QStringLiteral("C"))
                  .param(QStringLiteral("key:THIN"), QStringLiteral("YES"))
                  .record(QStringLiteral("ACCOUNTACTIVITY"), {}));
  }
  RequestBuilder activitySave(const QString& user, const Fields& record) {
    RequestBuilder request(41, user);
    request.param(QStringLiteral("key:REF_NBR"), QStringLiteral("1000011"))
        .param(QStringLiteral("key:REF_TYP_CD"), QStringLiteral("C"))
        .param(QStringLiteral("key:LPO"), QStringLiteral("NO"))
        .record(QStringLiteral("ACCOUNTACTIVITY"), record);
    return request;
  }
  Fields update(const Reply& read, const QString& comment, const QString& text) {
    const QString s = QStringLiteral("ACCOUNTACTIVITY");
    const int row = findRow(read, s, QStringLiteral("ACTVTY_CMMT_TXT"), comment);
    EXPECT_GE(row, 0) << comment.toStdString();
    return {{QStringLiteral("ACTION"), QStringLiteral("UPD")},
            {QStringLiteral("ACTVTY_SEQ_NBR"), cell(read, s, row, QStringLiteral("ACTVTY_SEQ_NBR"))},
            {QStringLiteral("ACTVTY_DT"), cell(read, s, row, QStringLiteral("ACTVTY_DT"))},
            {QStringLiteral("ACCT_ACTVTY_CD"), cell(read, s, row, QStringLiteral("ACCT_ACTVTY_CD"))},
            {QStringLiteral("ACTVTY_CMMT_TXT"), text},
            {QStringLiteral("ROW_VRSN_NBR"), cell(read, s, row, QStringLiteral("ROW_VRSN_NBR"))}};
  }
};

TEST_P(Activity, TheLogIsListedNewestFirstWithSystemRowsMarked) {
  const Reply read = activityRows();
  const QString s = QStringLiteral("ACCOUNTACTIVITY");
  ASSERT_EQ(rows(read, s), 7);
  EXPECT_EQ(cell(read, s, 0, QStringLiteral("ACTVTY_CMMT_TXT")), QStringLiteral("Left voicemail"));
  EXPECT_EQ(cell(read, s, 6, QStringLiteral("ADTL_INFO_TXT")), QStringLiteral("SYSTEM"));
  EXPECT_EQ(cell(read, s, 6, QStringLiteral("ACCT_CK_DGT_NBR")), QString::number(*messaging::formCheckDigit(u"1000011")));
  EXPECT_EQ(cell(read, s, 6, QStringLiteral("ACTVTY_AMT")), QStringLiteral("615.00"));
}

TEST_P(Activity, ClerksAddRowsUnderTheirOwnNameAndNoDuplicates) {
  const Fields row = {{QStringLiteral("ACTION"), QStringLiteral("ADD")},
                      {QStringLiteral("ACCT_RCVBL_NBR"), QStringLiteral("1000011")},
                      {QStringLiteral("ACCT_RCVBL_TYP_CD"), QStringLiteral("C")},
                      {QStringLiteral("ACTVTY_DT"), today().toString(Qt::ISODate)},
                      {QStringLiteral("ACCT_ACTVTY_CD"), QStringLiteral("LTR")},
                      {QStringLiteral("ACTVTY_CMMT_TXT"), QStringLiteral("  Final notice  ")},
                      {QStringLiteral("LST_UPDT_USER_ID"), demo::Verifier}};
  ok(activitySave(demo::Verifier, row));
  EXPECT_EQ(value(QStringLiteral("SELECT LST_UPDT_USER_ID FROM ACCT_ACTVTY WHERE ACTVTY_CMMT_TXT = 'Final notice'")).toString(),
            demo::Verifier);
  EXPECT_TRUE(send(activitySave(demo::Verifier, row)).error.contains(QStringLiteral("Can not add duplicate information")));

  const struct {
    const char* name;
    const char16_t* field;
    QVariant value;
    const char16_t* expected;
  } refusals[] = {
      {"before 1997", u"ACTVTY_DT", QStringLiteral("1997-01-26"), u"Date can not be less than 1/27/1997"},
      {"future", u"ACTVTY_DT", today().addDays(1).toString(Qt::ISODate), u"Date can not be greater than current date"},
      {"no comment", u"ACTVTY_CMMT_TXT", QStringLiteral(" "), u"Comment must be entered."},
      {"system code", u"ACCT_ACTVTY_CD", QStringLiteral("ADJ"), u"not one a clerk may record"},
      {"code from tomorrow", u"ACCT_ACTVTY_CD", QStringLiteral("NEW"), u"not one a clerk may record"},
      {"in another's name", u"LST_UPDT_USER_ID", demo::Admin, u"recorded under the signed-on officer"},
      {"another account", u"ACCT_RCVBL_NBR", QStringLiteral("1000035"), u"belongs to account receivable"},
  };
  for (const auto& c : refusals) {
    SCOPED_TRACE(c.name);
    Fields changed = row;
    for (auto& field : changed) {
      if (field.first == QString::fromUtf16(c.field)) {
        field.second = c.value;
      }
    }
    expectRefused(activitySave(demo::Verifier, changed), QString::fromUtf16(c.expected));
  }
  // The first day activity can be recorded for is accepted.
  Fields first = row;
  first[3].second = QStringLiteral("1997-01-27");
  ok(activitySave(demo::Verifier, first));
}

TEST_P(Activity, RowsMayBeChangedByTheirOfficerOrWithTheRightButNeverSystemRows) {
  const Reply read = activityRows();
  // Verify01 holds no activity update right: own rows only.
  ok(activitySave(demo::Verifier, update(read, QStringLiteral("Second notice mailed"), QStringLiteral("Second notice re-mailed"))));
  EXPECT_TRUE(send(activitySave(demo::Verifier, update(read, QStringLiteral("Left voicemail"), QStringLiteral("x"))))
                  .error.contains(QStringLiteral("QORVA_ActvityUpdate")));
  // Admin01 holds it.
  ok(activitySave(demo::Admin, update(read, QStringLiteral("Left voicemail"), QStringLiteral("Left a second voicemail"))));
  EXPECT_EQ(value(QStringLiteral("SELECT LST_UPDT_USER_ID FROM ACCT_ACTVTY WHERE ACTVTY_CMMT_TXT = ?"),
                  {QStringLiteral("Left a second voicemail")})
                .toString(),
            demo::Admin);
  EXPECT_TRUE(send(activitySave(demo::Admin, update(read, QStringLiteral("Citation issued"), QStringLiteral("x"))))
                  .error.contains(QStringLiteral("a row the system made can not be changed")));
  Fields recoded = update(read, QStringLiteral("Customer disputes the LPO fee"), QStringLiteral("x"));
  recoded[3].second = QStringLiteral("CAL");
  EXPECT_TRUE(send(activitySave(demo::Admin, recoded)).error.contains(QStringLiteral("can not be changed")));
  // The row read before the first change is stale now.
  EXPECT_TRUE(send(activitySave(demo::Verifier, update(read, QStringLiteral("Second notice mailed"), QStringLiteral("y"))))
                  .error.contains(QStringLiteral("was changed by another user")));
}

INSTANTIATE_TEST_SUITE_P(Databases, ArAdjustment, ::testing::Values(Backend::Sqlite, Backend::Postgres), backendName);
INSTANTIATE_TEST_SUITE_P(Databases, Activity, ::testing::Values(Backend::Sqlite, Backend::Postgres), backendName);

}  // namespace
}  // namespace adjustacc::host::testing
