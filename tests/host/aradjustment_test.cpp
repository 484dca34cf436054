// The account receivable adjustment save: effects on the stored rows, the business rules, and the
// guarantees (one transaction, request ids, rows changed since read, rights, the audit trail).
#include "hostfixture.h"

#include "messaging/formnumber.h"

namespace adjustacc::host::testing {
namespace {

using namespace Qt::Literals::StringLiterals;

using messaging::Reply;

class ArAdjustment : public HostTest {
protected:
  // The assessment rows of a receivable as the detail screen reads them.
  Reply assessments(const QString& number, const QString& type = u"C"_s) {
    return ok(accountRequest(number, type).param(u"key:LPO"_s, u"NO"_s));
  }

  QString receivableVersion(const QString& number, const QString& type = u"C"_s) {
    return value(u"SELECT ROW_VRSN_NBR FROM ACCT_RCVBL WHERE ACCT_RCVBL_TYP_CD = ? AND ACCT_RCVBL_NBR = ?"_s,
                 {type, number}).toString();
  }

  // An ASSESSMENT record for the row of `code`, built from the inquiry the way the detail screen builds it.
  Fields assessmentRecord(const Reply& read, const QString& code, const QString& status, const QDate& day) {
    const QString s = u"ASSESSMENT"_s;
    const int row = findRow(read, s, u"ASSMT_CD"_s, code);
    EXPECT_GE(row, 0) << code.toStdString();
    const bool lpo = cell(read, s, row, u"LIC_PRCHS_OPTN_IND"_s) == u"Y";
    const QString amount = cell(read, s, row, lpo ? u"AC_ASMT_AMT"_s : u"CL_ASMT_AMT"_s);
    return {{u"ACTION"_s, u"UPD"_s},
            {u"CUST_ID"_s, cell(read, s, row, u"CUST_ID"_s)},
            {u"TRNSCTN_NBR"_s, cell(read, s, row, u"TRNSCTN_NBR"_s)},
            {u"ASSMT_CD"_s, code},
            {u"VLTN_ASSMT_SEQ_NBR"_s, cell(read, s, row, u"VLTN_ASSMT_SEQ_NBR"_s)},
            {u"ADJSTMT_DT"_s, day.toString(Qt::ISODate)},
            {u"LIC_PRCHS_OPTN_IND"_s, lpo ? u"Y"_s : u"N"_s},
            {lpo ? u"AC_ASMT_AMT"_s : u"CL_ASMT_AMT"_s, amount},
            {u"BAL_DUE_AMT"_s, status == u"I" ? u"0"_s : amount},
            {u"VLTN_ASSMT_STTS_CD"_s, status},
            {u"ROW_VRSN_NBR"_s, cell(read, s, row, u"ROW_VRSN_NBR"_s)}};
  }

  RequestBuilder adjustment(const QString& number, const QString& action, const QString& comment, const QDate& day,
                            const QString& user = demo::Admin, const QString& type = u"C"_s) {
    RequestBuilder request(41, user);
    request.param(u"key:REF_NBR"_s, number).param(u"key:REF_TYP_CD"_s, type).param(u"key:LPO"_s, u"NO"_s);
    const QVariant customer =
        value(u"SELECT CUST_ID FROM ACCT_RCVBL WHERE ACCT_RCVBL_NBR = ? AND ACCT_RCVBL_TYP_CD = ?"_s, {number, type});
    request.record(u"ADJUSTAR"_s, {{u"ACTION"_s, u"ADD"_s},
                                   {u"CUST_ID"_s, customer},
                                   {u"ADJSTMT_DT"_s, day.isValid() ? QVariant(day.toString(Qt::ISODate)) : QVariant()},
                                   {u"ADJST_CMMT_TXT"_s, comment},
                                   {u"ADJSTMT_TYP_CD"_s, action},
                                   {u"ACCT_RCVBL_NBR"_s, number},
                                   {u"ACCT_RCVBL_CK_NBR"_s, QString::number(*messaging::formCheckDigit(number))},
                                   {u"ACCT_RCVBL_TYP_CD"_s, type},
                                   {u"ROW_VRSN_NBR"_s, receivableVersion(number, type)}});
    return request;
  }

  // A save that sets one assessment of 1000011 to `status`, built from a fresh read.
  RequestBuilder change(const QString& code, const QString& status, const QString& comment,
                        const QString& user = demo::Admin) {
    RequestBuilder request = adjustment(u"1000011"_s, {}, comment, today(), user);
    request.record(u"ASSESSMENT"_s, assessmentRecord(assessments(u"1000011"_s), code, status, today()));
    return request;
  }

  Fields inStateLpo() const {
    return {{u"ACTION"_s, u"UPD"_s},
            {u"PRCHS_OPTN_ST_CD"_s, u"0"_s},
            {u"PRCHS_OPTN_TAG_NBR"_s, u"NY-88K1"_s},
            {u"PRCHS_OPTN_DT"_s, today().addDays(-3).toString(Qt::ISODate)},
            {u"PRCHS_OPTN_TM"_s, u"13:45"_s},
            {u"PO_TRP_ID"_s, u"A"_s},
            {u"PO_TRP_DSTRCT_ID"_s, u"12"_s},
            {u"PRCHS_OPTN_WGT"_s, u"80000"_s},
            {u"TOT_PRCHS_OPTN_AMT"_s, u"90.00"_s},
            {u"PRCHS_OPTN_TXT"_s, u"Bought at the port of entry"_s}};
  }
};

TEST_P(ArAdjustment, RemovingAFeeZeroesItsBalanceRecomputesTheFormAndRecordsWhyAndWho) {
  const Reply reply = ok(change(u"F02"_s, u"I"_s, u"Late fee waived"_s));
  const int row = findRow(reply, u"ASSESSMENT"_s, u"ASSMT_CD"_s, u"F02"_s);
  EXPECT_EQ(cell(reply, u"ASSESSMENT"_s, row, u"VLTN_ASSMT_STTS_CD"_s), u"I"_s);
  EXPECT_EQ(cell(reply, u"ASSESSMENT"_s, row, u"BAL_DUE_AMT"_s), u"0.00"_s);
  EXPECT_EQ(cell(reply, u"ASSESSMENT"_s, row, u"ADJSTMT_DT"_s), today().toString(Qt::ISODate));
  ASSERT_EQ(rows(reply, u"ACNTSRCVBL"_s), 1);
  EXPECT_EQ(cell(reply, u"ACNTSRCVBL"_s, 0, u"ACCT_RCVBL_DUE_AMT"_s), u"622.50"_s);
  EXPECT_EQ(cell(reply, u"ACNTSRCVBL"_s, 0, u"ACCT_RCVBL_BAL_AMT"_s), u"472.50"_s);
  EXPECT_EQ(cell(reply, u"ACNTSRCVBL"_s, 0, u"LTE_FEE_AMT"_s), u"0.00"_s);
  EXPECT_EQ(cell(reply, u"ACNTSRCVBL"_s, 0, u"ROW_VRSN_NBR"_s), u"2"_s);
  EXPECT_FALSE(reply.hasSection(u"ACCOUNTACTIVITY"_s)) << "it would open the activity screen";

  EXPECT_EQ(value(QStringLiteral("SELECT ACTVTY_AMT FROM ACCT_ACTVTY WHERE ACCT_ACTVTY_CD = 'ADJ' AND "
                                 "ADTL_INFO_TXT = 'SYSTEM' AND ACTVTY_CMMT_TXT LIKE ?"),
                  {u"Removed F02 $25.00: Late fee waived"_s})
                .toLongLong(),
            -2500);
  EXPECT_EQ(value(u"SELECT OFFICER_ID FROM ADJSTMT WHERE ADJSTMT_CMMT_TXT = ?"_s, {u"Late fee waived"_s}).toString(),
            demo::Admin);
  EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM ASSMT_ADJSTMT WHERE CHANGE_CD = 'R' AND PRIOR_BAL_AMT = 2500 "
                                 "AND NEW_BAL_AMT = 0")),
            1);
  // The trail holds the assessment before and after, under the officer and the request id.
  const QString before = value(u"SELECT BEFORE_TXT FROM AUDIT_TRAIL WHERE TBL_NM = 'VLTN_ASSMT'"_s).toString();
  const QString after = value(u"SELECT AFTER_TXT FROM AUDIT_TRAIL WHERE TBL_NM = 'VLTN_ASSMT'"_s).toString();
  EXPECT_TRUE(before.contains(u"\"VLTN_ASSMT_STTS_CD\":\"A\""_s)) << before.toStdString();
  EXPECT_TRUE(after.contains(u"\"VLTN_ASSMT_STTS_CD\":\"I\""_s)) << after.toStdString();
  const qint64 entries = count(u"SELECT COUNT(*) FROM AUDIT_TRAIL"_s);
  ASSERT_GT(entries, 0);
  EXPECT_EQ(count(u"SELECT COUNT(*) FROM AUDIT_TRAIL WHERE OFFICER_ID = ? AND REQUEST_ID IS NOT NULL"_s, {demo::Admin}),
            entries);
  // The trail can be neither changed nor emptied.
  QSqlQuery query(db());
  EXPECT_FALSE(query.exec(u"UPDATE AUDIT_TRAIL SET OFFICER_ID = 'NOBODY'"_s));
  EXPECT_FALSE(query.exec(u"DELETE FROM AUDIT_TRAIL"_s));
  EXPECT_EQ(count(u"SELECT COUNT(*) FROM AUDIT_TRAIL"_s), entries);
  EXPECT_EQ(count(u"SELECT COUNT(*) FROM AUDIT_TRAIL WHERE OFFICER_ID = 'NOBODY'"_s), 0);
}

TEST_P(ArAdjustment, AReinstatementReversesTheRemovalOnRecordAndRestoresWhatWasOwed) {
  const Reply reply = ok(change(u"P02"_s, u"A"_s, u"Log book penalty stands"_s));
  const int row = findRow(reply, u"ASSESSMENT"_s, u"ASSMT_CD"_s, u"P02"_s);
  EXPECT_EQ(cell(reply, u"ASSESSMENT"_s, row, u"VLTN_ASSMT_STTS_CD"_s), u"A"_s);
  EXPECT_EQ(cell(reply, u"ASSESSMENT"_s, row, u"BAL_DUE_AMT"_s), u"150.00"_s);
  EXPECT_EQ(cell(reply, u"ACNTSRCVBL"_s, 0, u"ACCT_RCVBL_BAL_AMT"_s), u"647.50"_s);
  const qint64 removal = count(u"SELECT MIN(ASSMT_ADJSTMT_ID) FROM ASSMT_ADJSTMT WHERE CHANGE_CD = 'R'"_s);
  EXPECT_EQ(count(u"SELECT REVERSES_ID FROM ASSMT_ADJSTMT WHERE CHANGE_CD = 'S'"_s), removal);
  EXPECT_EQ(count(u"SELECT COUNT(*) FROM ASSMT_ADJSTMT WHERE ASSMT_ADJSTMT_ID = ? AND CHANGE_CD = 'R'"_s, {removal}), 1)
      << "the removal itself is kept as it was";

  // Removed again and reinstated again: each reinstatement reverses the latest removal.
  ok(change(u"P02"_s, u"I"_s, u"Removed after all"_s));
  ok(change(u"P02"_s, u"A"_s, u"Back again"_s));
  const QString logBook = u"(SELECT ASSMT_ID FROM VLTN_ASSMT WHERE TRNSCTN_NBR = '510004')"_s;
  EXPECT_EQ(count(u"SELECT COUNT(*) FROM ASSMT_ADJSTMT WHERE ASSMT_ID = "_s + logBook), 4);
  EXPECT_EQ(count(u"SELECT COUNT(*) FROM ASSMT_ADJSTMT r WHERE r.CHANGE_CD = 'R' AND r.ASSMT_ID = "_s + logBook +
                  u" AND NOT EXISTS (SELECT 1 FROM ASSMT_ADJSTMT s WHERE s.REVERSES_ID = r.ASSMT_ADJSTMT_ID)"_s),
            0)
      << "every removal is reversed, each by its own reinstatement";
  EXPECT_EQ(count(u"SELECT COUNT(DISTINCT REVERSES_ID) FROM ASSMT_ADJSTMT WHERE ASSMT_ID = "_s + logBook), 2);
}

TEST_P(ArAdjustment, RemovingAnLpoFeeKeepsItsPurchaseParticularsOneLpoAtATime) {
  const Reply read = assessments(u"1000011"_s);
  EXPECT_EQ(send(adjustment(u"1000011"_s, {}, u"x"_s, today())
                     .record(u"ASSESSMENT"_s, assessmentRecord(read, u"F09"_s, u"I"_s, today()))
                     .record(u"ASSESSMENT"_s, assessmentRecord(read, u"F01"_s, u"I"_s, today()))
                     .record(u"CTTNADTNINFO"_s, inStateLpo()))
                .error,
            u"Adjust only one LPO at a time"_s);
  ok(change(u"F09"_s, u"I"_s, u"LPO bought"_s).record(u"CTTNADTNINFO"_s, inStateLpo()));
  EXPECT_EQ(value(u"SELECT PRCHS_OPTN_TAG_NBR FROM LPO_DTL WHERE TOT_PRCHS_OPTN_AMT = 9000"_s).toString(),
            u"NY-88K1"_s);
  // The LPO amount (90.00), not the calculated one, leaves the balance.
  EXPECT_EQ(value(u"SELECT ACCT_RCVBL_BAL_AMT FROM ACCT_RCVBL WHERE ACCT_RCVBL_NBR = '1000011'"_s).toLongLong(),
            49750 - 9000);
}

TEST_P(ArAdjustment, VoidAndDeleteChangeTheFormStatus) {
  ok(adjustment(u"1000035"_s, u"V"_s, u"Issued in error"_s, today(), demo::Admin, u"M"_s));
  EXPECT_EQ(value(u"SELECT ACCT_STTS_CD FROM ACCT_RCVBL WHERE ACCT_RCVBL_NBR = '1000035'"_s).toString(), u"V"_s);
  EXPECT_EQ(count(u"SELECT COUNT(*) FROM ACCT_ACTVTY WHERE ACCT_ACTVTY_CD = 'VOD'"_s), 1);

  ok(adjustment(u"1999999"_s, u"D"_s, u"Duplicate form"_s, today()));
  EXPECT_EQ(value(u"SELECT ACCT_STTS_CD || ACTV_STTS_CD FROM ACCT_RCVBL WHERE ACCT_RCVBL_NBR = '1999999'"_s).toString(),
            u"DI"_s);
  EXPECT_EQ(count(u"SELECT COUNT(*) FROM ACCT_RCVBL WHERE ACCT_RCVBL_NBR = '1999999'"_s), 1)
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
      request.record(u"ASSESSMENT"_s,
                     assessmentRecord(assessments(number, type), code, u"I"_s, today().addDays(c.dayOffset)));
    }
    expectRefused(request, QString::fromUtf16(c.expected));
  }
}

// A comment is kept whole up to 2,000 characters; a longer one is refused, naming the limit, before anything is
// written; and the activity row a save writes (what it changed, then the comment) is shortened to fit.
TEST_P(ArAdjustment, ACommentLongerThanTheHostKeepsIsRefusedNamingTheLimit) {
  expectRefused(change(u"F02"_s, u"I"_s, QString(2001, u'x')), u"is longer than 2000 characters"_s);
  const QString longest = QString(1999, u'y') + u'z';
  ok(change(u"F02"_s, u"I"_s, longest));
  EXPECT_EQ(value(u"SELECT ADJSTMT_CMMT_TXT FROM ADJSTMT WHERE ADJSTMT_CMMT_TXT LIKE 'yyy%'"_s).toString(), longest);
  const QString logged =
      value(u"SELECT ACTVTY_CMMT_TXT FROM ACCT_ACTVTY WHERE ACCT_ACTVTY_CD = 'ADJ' AND ACTVTY_CMMT_TXT LIKE 'Removed F02%'"_s)
          .toString();
  EXPECT_EQ(logged.size(), 2000);
}

TEST_P(ArAdjustment, AClerkWithoutTheRightIsRefusedWhateverTheScreenAllowed) {
  expectRefused(change(u"F02"_s, u"I"_s, u"x"_s, demo::Clerk), u"does not hold the right ADJUSTAR"_s);
}

TEST_P(ArAdjustment, ASaveOverRowsChangedSinceTheyWereReadIsRefused) {
  const Reply read = assessments(u"1000011"_s);
  RequestBuilder stale = adjustment(u"1000011"_s, {}, u"Second clerk"_s, today());
  stale.record(u"ASSESSMENT"_s, assessmentRecord(read, u"F03"_s, u"I"_s, today()));
  // Another clerk removes the late fee first.
  ok(change(u"F02"_s, u"I"_s, u"First clerk"_s));
  expectRefused(stale, u"was changed by another user"_s);

  // A record without the version it read is refused too.
  RequestBuilder unversioned = adjustment(u"1000011"_s, {}, u"x"_s, today());
  Fields record = assessmentRecord(assessments(u"1000011"_s), u"F03"_s, u"I"_s, today());
  record.removeIf([](const auto& field) { return field.first == u"ROW_VRSN_NBR"; });
  EXPECT_TRUE(send(unversioned.record(u"ASSESSMENT"_s, record)).error.contains(u"ROW_VRSN_NBR"_s));
}

TEST_P(ArAdjustment, AResentSaveIsAnsweredFromTheRecordAndAppliedOnce) {
  const RequestBuilder request = change(u"F02"_s, u"I"_s, u"Waived"_s);
  const Reply first = ok(request);
  const QString after = fingerprint();
  const Reply again = ok(request);
  EXPECT_EQ(fingerprint(), after) << "the resend wrote nothing";
  EXPECT_EQ(again.requestId, first.requestId);
  EXPECT_EQ(cell(again, u"ACNTSRCVBL"_s, 0, u"ACCT_RCVBL_BAL_AMT"_s),
            cell(first, u"ACNTSRCVBL"_s, 0, u"ACCT_RCVBL_BAL_AMT"_s));
  EXPECT_EQ(rows(again, u"ASSESSMENT"_s), rows(first, u"ASSESSMENT"_s));
  EXPECT_EQ(count(u"SELECT COUNT(*) FROM ADJSTMT WHERE ADJSTMT_CMMT_TXT = 'Waived'"_s), 1);

  // The same id on a different request is refused; so is another officer reusing it.
  RequestBuilder other = adjustment(u"1000011"_s, {}, u"Something else"_s, today());
  other.requestId(request.request().requestId);
  EXPECT_TRUE(send(other).error.contains(u"already used for another request"_s));
  EXPECT_EQ(fingerprint(), after);
}

TEST_P(ArAdjustment, ARemovedAssessmentCarriesWhatReinstatingItOwesAgain) {
  const Reply removed = ok(change(u"F02"_s, u"I"_s, u"Waived"_s));
  const int row = findRow(removed, u"ASSESSMENT"_s, u"ASSMT_CD"_s, u"F02"_s);
  const QString owed = cell(removed, u"ASSESSMENT"_s, row, u"RMVD_BAL_AMT"_s);
  EXPECT_FALSE(owed.isEmpty());
  for (int other = 0; other < rows(removed, u"ASSESSMENT"_s); ++other) {
    if (cell(removed, u"ASSESSMENT"_s, other, u"VLTN_ASSMT_STTS_CD"_s) == u"A") {
      EXPECT_TRUE(cell(removed, u"ASSESSMENT"_s, other, u"RMVD_BAL_AMT"_s).isEmpty()) << "only removed rows";
    }
  }
  const Reply back = ok(change(u"F02"_s, u"A"_s, u"Stands after all"_s));
  EXPECT_EQ(cell(back, u"ASSESSMENT"_s, findRow(back, u"ASSESSMENT"_s, u"ASSMT_CD"_s, u"F02"_s), u"BAL_DUE_AMT"_s),
            owed);
}

TEST_P(ArAdjustment, TheOutcomeOfASaveIsToldByItsRequestIdAndOneNeverAppliedIsSettled) {
  const auto outcome = [this](const QString& id, const QString& officer = demo::Admin) {
    RequestBuilder question(66, officer);
    question.param(u"key:REQUEST_ID"_s, id);
    return send(question);
  };
  const RequestBuilder applied = change(u"F02"_s, u"I"_s, u"Waived"_s);
  ok(applied);
  const Reply yes = outcome(applied.request().requestId);
  ASSERT_TRUE(yes.error.isEmpty()) << yes.error.toStdString();
  EXPECT_EQ(cell(yes, u"SAVEOUTCOME"_s, 0, u"OUTCOME"_s), u"APPLIED"_s);
  EXPECT_EQ(cell(yes, u"SAVEOUTCOME"_s, 0, u"REQUEST_ID"_s), applied.request().requestId);
  EXPECT_FALSE(outcome(applied.request().requestId, demo::Verifier).error.isEmpty())
      << "another officer learns nothing of it";

  // A save that never arrived is not applied, and arriving late it is refused: the answer stays true.
  const RequestBuilder lost = change(u"P02"_s, u"A"_s, u"Stands"_s);
  const QString before = fingerprint();
  const Reply no = outcome(lost.request().requestId);
  EXPECT_EQ(cell(no, u"SAVEOUTCOME"_s, 0, u"OUTCOME"_s), u"NOT APPLIED"_s);
  EXPECT_TRUE(send(lost).error.contains(u"already used for another request"_s));
  EXPECT_EQ(cell(outcome(lost.request().requestId), u"SAVEOUTCOME"_s, 0, u"OUTCOME"_s), u"NOT APPLIED"_s);
  EXPECT_EQ(count(u"SELECT COUNT(*) FROM ADJSTMT WHERE ADJSTMT_CMMT_TXT = 'Stands'"_s), 0);
  EXPECT_NE(fingerprint(), before) << "the withdrawn id is on record";

  EXPECT_FALSE(outcome(QString()).error.isEmpty());
}

TEST_P(ArAdjustment, ASaveIsOneTransactionAllOrNothing) {
  // The assessment part is valid and written first; the activity row after it is a duplicate of one on file.
  expectRefused(change(u"F02"_s, u"I"_s, u"Waived"_s)
                    .record(u"ACCOUNTACTIVITY"_s, {{u"ACTION"_s, u"ADD"_s},
                                                   {u"ACTVTY_DT"_s, today().addDays(-2).toString(Qt::ISODate)},
                                                   {u"ACCT_ACTVTY_CD"_s, u"NTE"_s},
                                                   {u"ACTVTY_CMMT_TXT"_s, u"Customer disputes the LPO fee"_s},
                                                   {u"LST_UPDT_USER_ID"_s, demo::Admin}}),
                u"Can not add duplicate information"_s);
  const QString sql = u"SELECT VLTN_ASSMT_STTS_CD FROM VLTN_ASSMT WHERE ASSMT_CD = 'F02' AND TRNSCTN_NBR = '510001'"_s;
  EXPECT_EQ(value(sql).toString(), u"A"_s);
}

// --- activity rows that come with the detail screen's save -----------------------------------------------------------

class Activity : public ArAdjustment {
protected:
  Reply activityRows(const QString& user = demo::Admin) {
    return ok(RequestBuilder(41, user)
                  .param(u"key:ACCT_RCVBL_NBR"_s, u"1000011"_s)
                  .param(u"key:ACCT_RCVBL_TYP_CD"_s, u"C"_s)
                  .param(u"key:THIN"_s, u"YES"_s)
                  .record(u"ACCOUNTACTIVITY"_s, {}));
  }
  RequestBuilder activitySave(const QString& user, const Fields& record) {
    RequestBuilder request(41, user);
    request.param(u"key:REF_NBR"_s, u"1000011"_s)
        .param(u"key:REF_TYP_CD"_s, u"C"_s)
        .param(u"key:LPO"_s, u"NO"_s)
        .record(u"ACCOUNTACTIVITY"_s, record);
    return request;
  }
  Fields update(const Reply& read, const QString& comment, const QString& text) {
    const QString s = u"ACCOUNTACTIVITY"_s;
    const int row = findRow(read, s, u"ACTVTY_CMMT_TXT"_s, comment);
    EXPECT_GE(row, 0) << comment.toStdString();
    return {{u"ACTION"_s, u"UPD"_s},
            {u"ACTVTY_SEQ_NBR"_s, cell(read, s, row, u"ACTVTY_SEQ_NBR"_s)},
            {u"ACTVTY_DT"_s, cell(read, s, row, u"ACTVTY_DT"_s)},
            {u"ACCT_ACTVTY_CD"_s, cell(read, s, row, u"ACCT_ACTVTY_CD"_s)},
            {u"ACTVTY_CMMT_TXT"_s, text},
            {u"ROW_VRSN_NBR"_s, cell(read, s, row, u"ROW_VRSN_NBR"_s)}};
  }
};

TEST_P(Activity, TheLogIsListedNewestFirstWithSystemRowsMarked) {
  const Reply read = activityRows();
  const QString s = u"ACCOUNTACTIVITY"_s;
  ASSERT_EQ(rows(read, s), 7);
  EXPECT_EQ(cell(read, s, 0, u"ACTVTY_CMMT_TXT"_s), u"Left voicemail"_s);
  EXPECT_EQ(cell(read, s, 6, u"ADTL_INFO_TXT"_s), u"SYSTEM"_s);
  // Each row names the officer who wrote it, the system's own rows included.
  for (const int row : {0, 6}) {
    const QString officer = cell(read, s, row, u"LST_UPDT_USER_ID"_s);
    const QString name = value(u"SELECT OFFICER_NM FROM OFFICER WHERE OFFICER_ID = ?"_s, {officer}).toString();
    EXPECT_FALSE(name.isEmpty()) << officer.toStdString();
    EXPECT_EQ(cell(read, s, row, u"LST_UPDT_USER_NM"_s), name);
  }
  EXPECT_EQ(cell(read, s, 6, u"ACCT_CK_DGT_NBR"_s), QString::number(*messaging::formCheckDigit(u"1000011")));
  EXPECT_EQ(cell(read, s, 6, u"ACTVTY_AMT"_s), u"615.00"_s);
}

TEST_P(Activity, ClerksAddRowsUnderTheirOwnNameAndNoDuplicates) {
  const Fields row = {{u"ACTION"_s, u"ADD"_s},
                      {u"ACCT_RCVBL_NBR"_s, u"1000011"_s},
                      {u"ACCT_RCVBL_TYP_CD"_s, u"C"_s},
                      {u"ACTVTY_DT"_s, today().toString(Qt::ISODate)},
                      {u"ACCT_ACTVTY_CD"_s, u"LTR"_s},
                      {u"ACTVTY_CMMT_TXT"_s, u"  Final notice  "_s},
                      {u"LST_UPDT_USER_ID"_s, demo::Verifier}};
  ok(activitySave(demo::Verifier, row));
  EXPECT_EQ(value(u"SELECT LST_UPDT_USER_ID FROM ACCT_ACTVTY WHERE ACTVTY_CMMT_TXT = 'Final notice'"_s).toString(),
            demo::Verifier);
  EXPECT_TRUE(send(activitySave(demo::Verifier, row)).error.contains(u"Can not add duplicate information"_s));

  const struct {
    const char* name;
    const char16_t* field;
    QVariant value;
    const char16_t* expected;
  } refusals[] = {
      {"before 1997", u"ACTVTY_DT", u"1997-01-26"_s, u"Date can not be less than 1/27/1997"},
      {"future", u"ACTVTY_DT", today().addDays(1).toString(Qt::ISODate), u"Date can not be greater than current date"},
      {"no comment", u"ACTVTY_CMMT_TXT", u" "_s, u"Comment must be entered."},
      {"system code", u"ACCT_ACTVTY_CD", u"ADJ"_s, u"not one a clerk may record"},
      {"code from tomorrow", u"ACCT_ACTVTY_CD", u"NEW"_s, u"not one a clerk may record"},
      {"in another's name", u"LST_UPDT_USER_ID", demo::Admin, u"recorded under the signed-on officer"},
      {"another account", u"ACCT_RCVBL_NBR", u"1000035"_s, u"belongs to account receivable"},
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
  first[3].second = u"1997-01-27"_s;
  ok(activitySave(demo::Verifier, first));
}

TEST_P(Activity, AnActivityCommentLongerThanTheHostKeepsIsRefusedNamingTheLimit) {
  Fields row = {{u"ACTION"_s, u"ADD"_s},
                {u"ACCT_RCVBL_NBR"_s, u"1000011"_s},
                {u"ACCT_RCVBL_TYP_CD"_s, u"C"_s},
                {u"ACTVTY_DT"_s, today().toString(Qt::ISODate)},
                {u"ACCT_ACTVTY_CD"_s, u"LTR"_s},
                {u"ACTVTY_CMMT_TXT"_s, QString(2001, u'n')},
                {u"LST_UPDT_USER_ID"_s, demo::Verifier}};
  expectRefused(activitySave(demo::Verifier, row), u"is longer than 2000 characters"_s);
  row[5].second = QString(2000, u'n');
  ok(activitySave(demo::Verifier, row));
  const Reply read = activityRows();
  EXPECT_GE(findRow(read, u"ACCOUNTACTIVITY"_s, u"ACTVTY_CMMT_TXT"_s, QString(2000, u'n')), 0);
}

TEST_P(Activity, RowsMayBeChangedByTheirOfficerOrWithTheRightButNeverSystemRows) {
  const Reply read = activityRows();
  // Verify01 holds no activity update right: own rows only.
  ok(activitySave(demo::Verifier, update(read, u"Second notice mailed"_s, u"Second notice re-mailed"_s)));
  EXPECT_TRUE(send(activitySave(demo::Verifier, update(read, u"Left voicemail"_s, u"x"_s)))
                  .error.contains(u"QORVA_ActvityUpdate"_s));
  // Admin01 holds it.
  ok(activitySave(demo::Admin, update(read, u"Left voicemail"_s, u"Left a second voicemail"_s)));
  EXPECT_EQ(
      value(u"SELECT LST_UPDT_USER_ID FROM ACCT_ACTVTY WHERE ACTVTY_CMMT_TXT = ?"_s, {u"Left a second voicemail"_s})
          .toString(),
      demo::Admin);
  EXPECT_TRUE(send(activitySave(demo::Admin, update(read, u"Citation issued"_s, u"x"_s)))
                  .error.contains(u"a row the system made can not be changed"_s));
  Fields recoded = update(read, u"Customer disputes the LPO fee"_s, u"x"_s);
  recoded[3].second = u"CAL"_s;
  EXPECT_TRUE(send(activitySave(demo::Admin, recoded)).error.contains(u"can not be changed"_s));
  // The row read before the first change is stale now.
  EXPECT_TRUE(send(activitySave(demo::Verifier, update(read, u"Second notice mailed"_s, u"y"_s)))
                  .error.contains(u"was changed by another user"_s));
}

INSTANTIATE_TEST_SUITE_P(Databases, ArAdjustment, ::testing::Values(Backend::Sqlite, Backend::Postgres), backendName);
INSTANTIATE_TEST_SUITE_P(Databases, Activity, ::testing::Values(Backend::Sqlite, Backend::Postgres), backendName);

}  // namespace
}  // namespace adjustacc::host::testing
