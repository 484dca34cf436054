// Refund worksheets through their four hands, voids, and the refund numbers they are filed under.
#include "hostfixture.h"

#include "messaging/formnumber.h"

#include <QSqlQuery>
#include <QTimeZone>

namespace adjustacc::host::testing {
namespace {

using namespace Qt::Literals::StringLiterals;

using messaging::Reply;

class Worksheets : public HostTest {
protected:
  Reply worksheet(const QString& customer, const QString& number) {
    return ok(RequestBuilder(74).param(u"key:CUST_ID"_s, customer).param(u"key:REFUND_NBR"_s, number));
  }

  Reply nextNumber(const QString& type, const QString& user = demo::Admin) {
    return send(RequestBuilder(60, user).param(u"key:NBR_TYP_CD"_s, type));
  }

  // A step's REFUND record from the worksheet as read, with the fields of the step.
  RequestBuilder step(const QString& user, const Reply& read, const Fields& fields) {
    const QString s = u"REFUND"_s;
    Fields record = {{u"ACTION"_s, u"UPD"_s},
                     {u"CUST_ID"_s, cell(read, s, 0, u"CUST_ID"_s)},
                     {u"RFND_NBR"_s, cell(read, s, 0, u"RFND_NBR"_s)},
                     {u"RCPT_NBR"_s, cell(read, s, 0, u"RCPT_NBR"_s)},
                     {u"ROW_VRSN_NBR"_s, cell(read, s, 0, u"ROW_VRSN_NBR"_s)}};
    record.append(fields);
    RequestBuilder request(75, user);
    request.record(u"REFUND"_s, record);
    return request;
  }

  RequestBuilder prepare(const QString& number, const QString& amount, const QString& user = demo::Admin) {
    RequestBuilder request(75, user);
    request.record(u"REFUND"_s, {{u"ACTION"_s, u"ADD"_s},
                                 {u"CUST_ID"_s, u"100001"_s},
                                 {u"RFND_NBR"_s, number},
                                 {u"TO"_s, u"1"_s},
                                 {u"CREATED_DT"_s, today().toString(Qt::ISODate)},
                                 {u"CREATOR_ID"_s, user},
                                 {u"DMV_CMMT_TXT"_s, u"Customer asked for a refund"_s},
                                 {u"RFND_AMT"_s, amount},
                                 {u"RCPT_NBR"_s, u"8000002"_s},
                                 {u"STTS_CD"_s, u"1"_s}});
    return request;
  }

  QString status(const QString& number) {
    return value(u"SELECT STTS_CD FROM RFND_WRKSHT WHERE RFND_NBR = ?"_s, {number}).toString();
  }
  qint64 excess(const QString& receipt, const QString& state) {
    return count(u"SELECT SUM(OVR_PYMT_AMT) FROM OVR_PYMT WHERE RCPT_NBR = ? AND OVR_PYMT_STTS_CD = ?"_s,
                 {receipt, state});
  }
};

TEST_P(Worksheets, AWorksheetGoesThroughFourHandsFromPreparedToMailed) {
  const Reply number = nextNumber(u"F"_s);
  ASSERT_EQ(number.error, QString());
  const QString issued = cell(number, u"GetFormNumber"_s, 0, u"U"_s);
  EXPECT_EQ(issued, messaging::makeFormNumber(3000009).value());
  const QString refund = issued.left(7);

  Reply read = ok(prepare(refund, u"100.00"_s));
  EXPECT_EQ(cell(read, u"REFUND"_s, 0, u"STTS_CD"_s), u"1"_s);
  EXPECT_EQ(cell(read, u"REFUND"_s, 0, u"CREATOR_ID"_s), demo::Admin);
  EXPECT_EQ(cell(read, u"REFUND"_s, 0, u"TO"_s), u"1"_s);
  EXPECT_EQ(excess(u"8000002"_s, u"W"_s), 10000) << "the refund is set aside";
  EXPECT_EQ(excess(u"8000002"_s, u"O"_s), 5000);

  EXPECT_EQ(send(step(demo::Admin, read, {{u"STTS_CD"_s, u"2"_s}, {u"VERIFY_ID"_s, demo::Admin}})).error,
            u"The person preparing and verifying the Refund Worksheet can not be the same."_s);
  read = ok(step(demo::Verifier, read, {{u"STTS_CD"_s, u"2"_s}, {u"VERIFY_ID"_s, demo::Verifier}, {u"TO"_s, u"3"_s}}));
  EXPECT_EQ(cell(read, u"REFUND"_s, 0, u"TO"_s), u"3"_s);

  EXPECT_EQ(send(step(demo::Verifier, read, {{u"STTS_CD"_s, u"3"_s}, {u"APPROVE_ID"_s, demo::Verifier}})).error,
            u"The person verifying and approving the Refund Worksheet can not be the same."_s);
  read = ok(step(demo::Approver, read, {{u"STTS_CD"_s, u"3"_s}, {u"APPROVE_ID"_s, demo::Approver}}));

  read = ok(step(demo::Fiscal, read,
                 {{u"STTS_CD"_s, u"4"_s},
                  {u"RFND_BY_ID"_s, demo::Fiscal},
                  {u"RFND_CD"_s, u"1"_s},
                  {u"WRNT_NBR"_s, u"W-5001"_s},
                  {u"RFND_DT"_s, today().toString(Qt::ISODate)},
                  {u"FISCAL_CMMT_TXT"_s, u"Warrant issued"_s}}));
  EXPECT_EQ(excess(u"8000002"_s, u"R"_s), 10000);
  EXPECT_EQ(excess(u"8000002"_s, u"W"_s), 0);

  EXPECT_EQ(
      send(step(demo::Fiscal, read, {{u"STTS_CD"_s, u"5"_s}, {u"DT_MLD"_s, today().addDays(-1).toString(Qt::ISODate)}}))
          .error,
      u"Mail Date must be greater than or equal to the Refund Date"_s);
  read = ok(step(demo::Fiscal, read, {{u"STTS_CD"_s, u"5"_s}, {u"DT_MLD"_s, today().toString(Qt::ISODate)}}));
  EXPECT_EQ(status(refund), u"5"_s);
  EXPECT_EQ(value(QStringLiteral("SELECT VERIFY_ID || '/' || APPROVE_ID || '/' || RFND_BY_ID FROM RFND_WRKSHT "
                                 "WHERE RFND_NBR = ?"),
                  {refund})
                .toString(),
            u"VERIFY01/APPROVE01/FISCAL01"_s);

  EXPECT_EQ(send(step(demo::Admin, read, {{u"STTS_CD"_s, u"V"_s}, {u"VOID_ID"_s, demo::Admin}})).error,
            u"The following transaction can not be voided or saved: a Voided/Transferred/Refunded Worksheet"_s);
  EXPECT_EQ(worksheet(u"100001"_s, issued).sections[u"REFUND"_s].recordCount(), 1)
      << "found by the number as the number service wrote it";
}

TEST_P(Worksheets, AVoidReleasesTheExcessItHeldAndATransferSettlesIt) {
  Reply read = worksheet(u"100003"_s, u"3000002"_s);
  EXPECT_EQ(cell(read, u"REFUND"_s, 0, u"CUST_NM"_s), u"ACME HAULING INC"_s);
  ok(step(demo::Verifier, read, {{u"STTS_CD"_s, u"V"_s}, {u"VOID_ID"_s, demo::Verifier}}));
  EXPECT_EQ(status(u"3000002"_s), u"V"_s);
  EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM OVR_PYMT WHERE RCPT_NBR = '8000005' AND OVR_PYMT_STTS_CD = 'O' AND "
                                 "OVR_PYMT_AMT = 10000 AND RFND_NBR IS NULL")),
            1);

  read = worksheet(u"100003"_s, u"3000004"_s);
  EXPECT_EQ(
      send(step(demo::Fiscal, read, {{u"STTS_CD"_s, u"T"_s}, {u"RFND_BY_ID"_s, demo::Fiscal}, {u"RFND_CD"_s, u"0"_s}}))
          .error,
      u"Please enter the Refund Description, when Tranferring the excess funds"_s);
  ok(step(demo::Fiscal, read,
          {{u"STTS_CD"_s, u"T"_s},
           {u"RFND_BY_ID"_s, demo::Fiscal},
           {u"RFND_CD"_s, u"0"_s},
           {u"FISCAL_CMMT_TXT"_s, u"To the division"_s}}));
  EXPECT_EQ(count(u"SELECT COUNT(*) FROM OVR_PYMT WHERE RFND_NBR = '3000004' AND OVR_PYMT_STTS_CD = 'T'"_s), 1);
}

TEST_P(Worksheets, StepsOutOfOrderInAnotherNameOrWithoutTheRightAreRefused) {
  const Reply prepared = worksheet(u"100003"_s, u"3000002"_s);
  const Reply approved = worksheet(u"100003"_s, u"3000004"_s);
  const struct {
    const char* name;
    RequestBuilder request;
    const char16_t* expected;
  } cases[] = {
      {"skipping verification",
       step(demo::Approver, prepared, {{u"STTS_CD"_s, u"3"_s}, {u"APPROVE_ID"_s, demo::Approver}}),
       u"is PREPARED; it can not be moved to APPROVED"},
      {"in another's name", step(demo::Verifier, prepared, {{u"STTS_CD"_s, u"2"_s}, {u"VERIFY_ID"_s, demo::Fiscal}}),
       u"VERIFY_ID names FISCAL01, but the signed-on officer is VERIFY01"},
      {"no officer", step(demo::Verifier, prepared, {{u"STTS_CD"_s, u"2"_s}}),
       u"When verifying a refund, the officer verifying the refund must be displayed."},
      {"no right", step(demo::Clerk, prepared, {{u"STTS_CD"_s, u"2"_s}, {u"VERIFY_ID"_s, demo::Clerk}}),
       u"does not hold the right CREATEREFUND"},
      {"refunded without a warrant",
       step(demo::Fiscal, approved, {{u"STTS_CD"_s, u"4"_s}, {u"RFND_BY_ID"_s, demo::Fiscal}, {u"RFND_CD"_s, u"1"_s}}),
       u"Please enter the Warrant Number, when Refunding the worksheet"},
      {"refund date ahead",
       step(demo::Fiscal, approved,
            {{u"STTS_CD"_s, u"4"_s},
             {u"RFND_BY_ID"_s, demo::Fiscal},
             {u"RFND_CD"_s, u"1"_s},
             {u"WRNT_NBR"_s, u"W-1"_s},
             {u"RFND_DT"_s, today().addDays(1).toString(Qt::ISODate)}}),
       u"Refund Date must be current or before"},
      {"outcome not chosen", step(demo::Fiscal, approved, {{u"STTS_CD"_s, u"4"_s}, {u"RFND_BY_ID"_s, demo::Fiscal}}),
       u"Please select Transferred or Refunded"},
      {"transferred worksheet",
       step(demo::Admin, worksheet(u"100003"_s, u"3000007"_s), {{u"STTS_CD"_s, u"V"_s}, {u"VOID_ID"_s, demo::Admin}}),
       u"can not be voided or saved"},
  };
  expectEachRefused(cases);
}

TEST_P(Worksheets, APreparedWorksheetNeedsAnIssuedUnusedNumberAndOpenConfirmedExcess) {
  const QString refund = cell(nextNumber(u"F"_s), u"GetFormNumber"_s, 0, u"U"_s).left(7);
  const struct {
    const char* name;
    RequestBuilder request;
    const char16_t* expected;
  } cases[] = {
      {"number never issued", prepare(u"3500000"_s, u"10.00"_s), u"was not given out by the host"},
      {"number of another worksheet", prepare(u"3000003"_s, u"10.00"_s), u"already exists"},
      {"more than the open excess", prepare(refund, u"150.01"_s), u"more than the open excess of $150.00"},
      {"no amount", prepare(refund, u"0"_s), u"must be above $0.00"},
  };
  expectEachRefused(cases);
  ok(prepare(refund, u"150.00"_s));
  EXPECT_TRUE(send(prepare(refund, u"1.00"_s)).error.contains(u"already exists"_s));
}

TEST_P(Worksheets, NumbersAreHandedOutOnceAndTheServiceSaysWhenItHasNone) {
  const Reply first = nextNumber(u"F"_s);
  const Reply second = nextNumber(u"F"_s);
  EXPECT_NE(cell(first, u"GetFormNumber"_s, 0, u"U"_s), cell(second, u"GetFormNumber"_s, 0, u"U"_s));
  EXPECT_EQ(messaging::checkFormNumber(cell(second, u"GetFormNumber"_s, 0, u"U"_s)),
            messaging::FormNumberProblem::None);
  // A resent request gets the same number, not a new one.
  RequestBuilder request(60);
  request.param(u"key:NBR_TYP_CD"_s, u"F"_s);
  const Reply once = ok(request);
  const Reply twice = ok(request);
  EXPECT_EQ(cell(once, u"GetFormNumber"_s, 0, u"U"_s), cell(twice, u"GetFormNumber"_s, 0, u"U"_s));
  EXPECT_EQ(count(u"SELECT COUNT(*) FROM NBR_ISSUED WHERE USED_IND = 'N'"_s), 3);

  EXPECT_EQ(cell(nextNumber(u"W"_s), u"GetFormNumber"_s, 0, u"U"_s), u"0000000-0"_s);
  EXPECT_TRUE(nextNumber(u"R"_s).error.contains(u"not one the host hands out"_s));
  EXPECT_TRUE(nextNumber(u"Q"_s).error.contains(u"not one the host hands out"_s));
}

TEST_P(Worksheets, RefundNumbersGoOnlyToOfficersWhoMayCreateRefunds) {
  for (const QString& officer : {demo::Clerk, demo::CancelOnly}) {
    SCOPED_TRACE(officer.toStdString());
    expectRefused(RequestBuilder(60, officer).param(u"key:NBR_TYP_CD"_s, u"F"_s),
                  u"Officer %1 does not hold the right CREATEREFUND needed to be given refund numbers."_s.arg(officer));
    expectRefused(RequestBuilder(60, officer).param(u"key:NBR_TYP_CD"_s, u"w"_s),
                  u"does not hold the right CREATEREFUND needed to be given warrant numbers"_s);
  }
  EXPECT_EQ(cell(nextNumber(u"F"_s, demo::Fiscal), u"GetFormNumber"_s, 0, u"U"_s), messaging::makeFormNumber(3000009).value())
      << "the refusals used up no number of the series";
}

TEST_P(Worksheets, AWorksheetIsPreparedOnlyUnderANumberGivenToItsPreparer) {
  const QString refund = cell(nextNumber(u"F"_s, demo::Verifier), u"GetFormNumber"_s, 0, u"U"_s).left(7);
  expectRefused(prepare(refund, u"10.00"_s, demo::Fiscal),
                u"Refund number %1 was given to officer VERIFY01, not to FISCAL01; ask for a new refund number"_s.arg(refund));
  const Reply read = ok(prepare(refund, u"10.00"_s, demo::Verifier));
  EXPECT_EQ(cell(read, u"REFUND"_s, 0, u"CREATOR_ID"_s), demo::Verifier);
}

// The host's setting decides whether the preparer may approve and then refund (the screens' rule: only
// neighbouring steps differ), or four different officers must do the four steps.
TEST_P(Worksheets, TheDutySettingDecidesWhoMayApproveAndRefund) {
  const auto verified = [this] {
    const QString refund = cell(nextNumber(u"F"_s), u"GetFormNumber"_s, 0, u"U"_s).left(7);
    const Reply prepared = ok(prepare(refund, u"10.00"_s));
    return ok(step(demo::Verifier, prepared, {{u"STTS_CD"_s, u"2"_s}, {u"VERIFY_ID"_s, demo::Verifier}}));
  };
  const auto approve = [this](const QString& officer, const Reply& read) {
    return step(officer, read, {{u"STTS_CD"_s, u"3"_s}, {u"APPROVE_ID"_s, officer}});
  };
  const auto transfer = [this](const QString& officer, const Reply& read) {
    return step(officer, read,
                {{u"STTS_CD"_s, u"T"_s}, {u"RFND_BY_ID"_s, officer}, {u"RFND_CD"_s, u"0"_s},
                 {u"FISCAL_CMMT_TXT"_s, u"To the division"_s}});
  };

  ASSERT_EQ(m_host->dutySeparation(), DutySeparation::NeighbouringSteps) << "the default";
  Reply read = ok(approve(demo::Admin, verified()));
  ok(transfer(demo::Admin, read));

  m_host->setDutySeparation(DutySeparation::FourOfficers);
  read = verified();
  expectRefused(approve(demo::Admin, read), u"The person preparing and approving the Refund Worksheet can not be the same."_s);
  expectRefused(approve(demo::Verifier, read),
                u"The person verifying and approving the Refund Worksheet can not be the same."_s);
  read = ok(approve(demo::Approver, read));
  const struct {
    const char* name;
    RequestBuilder request;
    const char16_t* expected;
  } cases[] = {
      {"preparer", transfer(demo::Admin, read), u"The person preparing and refunding the Refund Worksheet can not be the same."},
      {"verifier", transfer(demo::Verifier, read), u"The person verifying and refunding the Refund Worksheet can not be the same."},
      {"approver", transfer(demo::Approver, read), u"The person approving and refunding the Refund Worksheet can not be the same."},
  };
  expectEachRefused(cases);
  ok(transfer(demo::Fiscal, read));
}

// Who took each step and when: the officer the host signed on, the moment from the host's own clock, stored
// with the step itself; the inquiry answers them with the officers' names.
TEST_P(Worksheets, EachStepKeepsItsOfficerAndTheHostsTimeAndTheInquiryNamesThem) {
  const QString s = u"REFUND"_s;
  // The host writes its moments to the second or finer; the reply carries whole seconds.
  const auto window = [](const QDateTime& before) {
    return std::pair{before.addMSecs(-before.time().msec()), QDateTime::currentDateTimeUtc().addSecs(1)};
  };
  const auto expectTakenWithin = [&](const Reply& read, const char16_t* timeField, const QDateTime& before) {
    const QString text = cell(read, s, 0, QString::fromUtf16(timeField));
    QDateTime moment = QDateTime::fromString(text, u"yyyy-MM-dd HH:mm:ss"_s);
    moment.setTimeZone(QTimeZone::utc());
    const auto [from, to] = window(before);
    EXPECT_TRUE(moment.isValid() && moment >= from && moment <= to)
        << QString::fromUtf16(timeField).toStdString() << " = \"" << text.toStdString() << "\", expected between "
        << from.toString(Qt::ISODate).toStdString() << " and " << to.toString(Qt::ISODate).toStdString();
  };
  const auto stored = [&](const QString& column, const QString& number) {
    return value(u"SELECT %1 FROM RFND_WRKSHT WHERE RFND_NBR = ?"_s.arg(column), {number});
  };

  const QString refund = cell(nextNumber(u"F"_s), u"GetFormNumber"_s, 0, u"U"_s).left(7);
  QDateTime before = QDateTime::currentDateTimeUtc();
  Reply read = ok(prepare(refund, u"25.00"_s));
  EXPECT_EQ(cell(read, s, 0, u"CREATOR_NM"_s), u"Avery Lindqvist"_s);
  expectTakenWithin(read, u"CREATED_TS", before);
  for (const char* field : {"VERIFY_ID", "VERIFY_NM", "VERIFY_TS", "APPROVE_TS", "RFND_BY_TS", "MAILED_BY_ID",
                            "MAILED_TS", "VOID_NM", "VOID_TS"}) {
    EXPECT_TRUE(read.sections[s].valueAt(0, QString::fromLatin1(field)).isNull()) << field << " before its step";
  }
  const QString created = cell(read, s, 0, u"CREATED_TS"_s);

  // A refused step stores neither its officer nor a time; the desk can not send a time of its own.
  expectRefused(step(demo::Admin, read, {{u"STTS_CD"_s, u"2"_s}, {u"VERIFY_ID"_s, demo::Admin}}),
                u"The person preparing and verifying the Refund Worksheet can not be the same."_s);
  expectRefused(step(demo::Verifier, read,
                     {{u"STTS_CD"_s, u"2"_s}, {u"VERIFY_ID"_s, demo::Verifier}, {u"VERIFY_TS"_s, u"2020-01-01 08:00:00"_s}}),
                u"has a field \"VERIFY_TS\" that a REFUND record does not have"_s);
  EXPECT_TRUE(stored(u"VERIFY_TS"_s, refund).isNull());
  EXPECT_TRUE(stored(u"VERIFY_ID"_s, refund).isNull());

  before = QDateTime::currentDateTimeUtc();
  read = ok(step(demo::Verifier, read, {{u"STTS_CD"_s, u"2"_s}, {u"VERIFY_ID"_s, demo::Verifier}}));
  EXPECT_EQ(cell(read, s, 0, u"VERIFY_NM"_s), u"Riley Okafor"_s);
  expectTakenWithin(read, u"VERIFY_TS", before);
  EXPECT_EQ(cell(read, s, 0, u"CREATED_TS"_s), created) << "a later step leaves the earlier times alone";

  before = QDateTime::currentDateTimeUtc();
  read = ok(step(demo::Approver, read, {{u"STTS_CD"_s, u"3"_s}, {u"APPROVE_ID"_s, demo::Approver}}));
  EXPECT_EQ(cell(read, s, 0, u"APPROVE_NM"_s), u"Morgan Hale"_s);
  expectTakenWithin(read, u"APPROVE_TS", before);

  before = QDateTime::currentDateTimeUtc();
  read = ok(step(demo::Fiscal, read,
                 {{u"STTS_CD"_s, u"4"_s}, {u"RFND_BY_ID"_s, demo::Fiscal}, {u"RFND_CD"_s, u"1"_s},
                  {u"WRNT_NBR"_s, u"W-7001"_s}, {u"RFND_DT"_s, today().toString(Qt::ISODate)}}));
  EXPECT_EQ(cell(read, s, 0, u"RFND_BY_NM"_s), u"Taylor Brandt"_s);
  expectTakenWithin(read, u"RFND_BY_TS", before);

  // The mailing record names no officer: the host keeps who was signed on.
  before = QDateTime::currentDateTimeUtc();
  read = ok(step(demo::Admin, read, {{u"STTS_CD"_s, u"5"_s}, {u"DT_MLD"_s, today().toString(Qt::ISODate)}}));
  EXPECT_EQ(cell(read, s, 0, u"MAILED_BY_ID"_s), demo::Admin);
  EXPECT_EQ(cell(read, s, 0, u"MAILED_BY_NM"_s), u"Avery Lindqvist"_s);
  expectTakenWithin(read, u"MAILED_TS", before);

  // The inquiry answers what the steps stored.
  const Reply asked = worksheet(u"100001"_s, refund);
  for (const char* field : {"CREATOR_NM", "CREATED_TS", "VERIFY_NM", "VERIFY_TS", "APPROVE_NM", "APPROVE_TS",
                            "RFND_BY_NM", "RFND_BY_TS", "MAILED_BY_NM", "MAILED_TS"}) {
    EXPECT_EQ(cell(asked, s, 0, QString::fromLatin1(field)), cell(read, s, 0, QString::fromLatin1(field))) << field;
  }

  before = QDateTime::currentDateTimeUtc();
  read = ok(step(demo::Verifier, worksheet(u"100003"_s, u"3000002"_s),
                 {{u"STTS_CD"_s, u"V"_s}, {u"VOID_ID"_s, demo::Verifier}}));
  EXPECT_EQ(cell(read, s, 0, u"VOID_NM"_s), u"Riley Okafor"_s);
  expectTakenWithin(read, u"VOID_TS", before);
}

// An officer id the officers' table does not know answers no name rather than no worksheet.
TEST_P(Worksheets, AnOfficerTheHostDoesNotKnowLeavesTheNameEmpty) {
  QSqlQuery unknown(db());
  ASSERT_TRUE(unknown.exec(u"UPDATE RFND_WRKSHT SET VERIFY_ID = 'GONE01' WHERE RFND_NBR = '3000003'"_s));
  const Reply read = worksheet(u"100003"_s, u"3000003"_s);
  EXPECT_EQ(cell(read, u"REFUND"_s, 0, u"VERIFY_ID"_s), u"GONE01"_s);
  EXPECT_TRUE(read.sections[u"REFUND"_s].valueAt(0, u"VERIFY_NM"_s).isNull());
  EXPECT_EQ(cell(read, u"REFUND"_s, 0, u"CREATOR_NM"_s), u"Avery Lindqvist"_s);
}

// The demo worksheets carry plausible step times: each step after the one before it, none ahead of now.
TEST_P(Worksheets, TheDemoWorksheetsWereTakenStepByStepInThePast) {
  const Reply read = worksheet(u"100003"_s, u"3000006"_s);
  QDateTime previous;
  for (const char* field : {"CREATED_TS", "VERIFY_TS", "APPROVE_TS", "RFND_BY_TS", "MAILED_TS"}) {
    QDateTime moment = QDateTime::fromString(cell(read, u"REFUND"_s, 0, QString::fromLatin1(field)), u"yyyy-MM-dd HH:mm:ss"_s);
    moment.setTimeZone(QTimeZone::utc());
    ASSERT_TRUE(moment.isValid()) << field;
    EXPECT_LT(moment, QDateTime::currentDateTimeUtc()) << field;
    if (previous.isValid()) {
      EXPECT_GT(moment, previous) << field;
    }
    previous = moment;
  }
  EXPECT_EQ(cell(read, u"REFUND"_s, 0, u"MAILED_BY_NM"_s), u"Taylor Brandt"_s);
  const Reply voided = worksheet(u"100003"_s, u"3000008"_s);
  EXPECT_EQ(cell(voided, u"REFUND"_s, 0, u"VOID_NM"_s), u"Avery Lindqvist"_s);
  EXPECT_FALSE(cell(voided, u"REFUND"_s, 0, u"VOID_TS"_s).isEmpty());
  EXPECT_TRUE(voided.sections[u"REFUND"_s].valueAt(0, u"APPROVE_TS"_s).isNull());
}

INSTANTIATE_TEST_SUITE_P(Databases, Worksheets, ::testing::Values(Backend::Sqlite, Backend::Postgres), backendName);

}  // namespace
}  // namespace adjustacc::host::testing
