// Refund worksheets through their four hands, voids, and the refund numbers they are filed under.
#include "hostfixture.h"

#include "messaging/formnumber.h"

namespace adjustacc::host::testing {
namespace {

using messaging::Reply;

class Worksheets : public HostTest {
protected:
  Reply worksheet(const QString& customer, const QString& number) {
    return ok(RequestBuilder(74)
                  .param(QStringLiteral("key:CUST_ID"), customer)
                  .param(QStringLiteral("key:REFUND_NBR"), number));
  }

  Reply nextNumber(const QString& type, const QString& user = demo::Admin) {
    return send(RequestBuilder(60, user).param(QStringLiteral("key:NBR_TYP_CD"), type));
  }

  // A step's REFUND record from the worksheet as read, with the fields of the step.
  RequestBuilder step(const QString& user, const Reply& read, const Fields& fields) {
    const QString s = QStringLiteral("REFUND");
    Fields record = {{QStringLiteral("ACTION"), QStringLiteral("UPD")},
                     {QStringLiteral("CUST_ID"), cell(read, s, 0, QStringLiteral("CUST_ID"))},
                     {QStringLiteral("RFND_NBR"), cell(read, s, 0, QStringLiteral("RFND_NBR"))},
                     {QStringLiteral("RCPT_NBR"), cell(read, s, 0, QStringLiteral("RCPT_NBR"))},
                     {QStringLiteral("ROW_VRSN_NBR"), cell(read, s, 0, QStringLiteral("ROW_VRSN_NBR"))}};
    record.append(fields);
    RequestBuilder request(75, user);
    request.record(QStringLiteral("REFUND"), record);
    return request;
  }

  RequestBuilder prepare(const QString& number, const QString& amount, const QString& user = demo::Admin) {
    RequestBuilder request(75, user);
    request.record(QStringLiteral("REFUND"), {{QStringLiteral("ACTION"), QStringLiteral("ADD")},
                                              {QStringLiteral("CUST_ID"), QStringLiteral("100001")},
                                              {QStringLiteral("RFND_NBR"), number},
                                              {QStringLiteral("TO"), QStringLiteral("1")},
                                              {QStringLiteral("CREATED_DT"), today().toString(Qt::ISODate)},
                                              {QStringLiteral("CREATOR_ID"), user},
                                              {QStringLiteral("DMV_CMMT_TXT"), QStringLiteral("Customer asked for a refund")},
                                              {QStringLiteral("RFND_AMT"), amount},
                                              {QStringLiteral("RCPT_NBR"), QStringLiteral("8000002")},
                                              {QStringLiteral("STTS_CD"), QStringLiteral("1")}});
    return request;
  }

  QString status(const QString& number) {
    return value(QStringLiteral("SELECT STTS_CD FROM RFND_WRKSHT WHERE RFND_NBR = ?"), {number}).toString();
  }
  qint64 excess(const QString& receipt, const QString& state) {
    return count(QStringLiteral("SELECT SUM(OVR_PYMT_AMT) FROM OVR_PYMT WHERE RCPT_NBR = ? AND OVR_PYMT_STTS_CD = ?"),
                 {receipt, state});
  }
};

TEST_P(Worksheets, AWorksheetGoesThroughFourHandsFromPreparedToMailed) {
  const Reply number = nextNumber(QStringLiteral("F"));
  ASSERT_EQ(number.error, QString());
  const QString issued = cell(number, QStringLiteral("GetFormNumber"), 0, QStringLiteral("U"));
  EXPECT_EQ(issued, messaging::makeFormNumber(3000009).value());
  const QString refund = issued.left(7);

  Reply read = ok(prepare(refund, QStringLiteral("100.00")));
  EXPECT_EQ(cell(read, QStringLiteral("REFUND"), 0, QStringLiteral("STTS_CD")), QStringLiteral("1"));
  EXPECT_EQ(cell(read, QStringLiteral("REFUND"), 0, QStringLiteral("CREATOR_ID")), demo::Admin);
  EXPECT_EQ(cell(read, QStringLiteral("REFUND"), 0, QStringLiteral("TO")), QStringLiteral("1"));
  EXPECT_EQ(excess(QStringLiteral("8000002"), QStringLiteral("W")), 10000) << "the refund is set aside";
  EXPECT_EQ(excess(QStringLiteral("8000002"), QStringLiteral("O")), 5000);

  EXPECT_EQ(send(step(demo::Admin, read, {{QStringLiteral("STTS_CD"), QStringLiteral("2")},
                                          {QStringLiteral("VERIFY_ID"), demo::Admin}}))
                .error,
            QStringLiteral("The person preparing and verifying the Refund Worksheet can not be the same."));
  read = ok(step(demo::Verifier, read,
                 {{QStringLiteral("STTS_CD"), QStringLiteral("2")}, {QStringLiteral("VERIFY_ID"), demo::Verifier},
                  {QStringLiteral("TO"), QStringLiteral("3")}}));
  EXPECT_EQ(cell(read, QStringLiteral("REFUND"), 0, QStringLiteral("TO")), QStringLiteral("3"));

  EXPECT_EQ(send(step(demo::Verifier, read, {{QStringLiteral("STTS_CD"), QStringLiteral("3")},
                                             {QStringLiteral("APPROVE_ID"), demo::Verifier}}))
                .error,
            QStringLiteral("The person verifying and approving the Refund Worksheet can not be the same."));
  read = ok(step(demo::Approver, read, {{QStringLiteral("STTS_CD"), QStringLiteral("3")},
                                        {QStringLiteral("APPROVE_ID"), demo::Approver}}));

  read = ok(step(demo::Fiscal, read,
                 {{QStringLiteral("STTS_CD"), QStringLiteral("4")}, {QStringLiteral("RFND_BY_ID"), demo::Fiscal},
                  {QStringLiteral("RFND_CD"), QStringLiteral("1")}, {QStringLiteral("WRNT_NBR"), QStringLiteral("W-5001")},
                  {QStringLiteral("RFND_DT"), today().toString(Qt::ISODate)},
                  {QStringLiteral("FISCAL_CMMT_TXT"), QStringLiteral("Warrant issued")}}));
  EXPECT_EQ(excess(QStringLiteral("8000002"), QStringLiteral("R")), 10000);
  EXPECT_EQ(excess(QStringLiteral("8000002"), QStringLiteral("W")), 0);

  EXPECT_EQ(send(step(demo::Fiscal, read, {{QStringLiteral("STTS_CD"), QStringLiteral("5")},
                                           {QStringLiteral("DT_MLD"), today().addDays(-1).toString(Qt::ISODate)}}))
                .error,
            QStringLiteral("Mail Date must be greater than or equal to the Refund Date"));
  read = ok(step(demo::Fiscal, read, {{QStringLiteral("STTS_CD"), QStringLiteral("5")},
                                      {QStringLiteral("DT_MLD"), today().toString(Qt::ISODate)}}));
  EXPECT_EQ(status(refund), QStringLiteral("5"));
  EXPECT_EQ(value(QStringLiteral("SELECT VERIFY_ID || '/' || APPROVE_ID || '/' || RFND_BY_ID FROM RFND_WRKSHT "
                                 "WHERE RFND_NBR = ?"),
                  {refund})
                .toString(),
            QStringLiteral("VERIFY01/APPROVE01/FISCAL01"));

  EXPECT_EQ(send(step(demo::Admin, read, {{QStringLiteral("STTS_CD"), QStringLiteral("V")},
                                          {QStringLiteral("VOID_ID"), demo::Admin}}))
                .error,
            QStringLiteral("The following transaction can not be voided or saved: a Voided/Transferred/Refunded Worksheet"));
  EXPECT_EQ(worksheet(QStringLiteral("100001"), issued).sections[QStringLiteral("REFUND")].recordCount(), 1)
      << "found by the number as the number service wrote it";
}

TEST_P(Worksheets, AVoidReleasesTheExcessItHeldAndATransferSettlesIt) {
  Reply read = worksheet(QStringLiteral("100003"), QStringLiteral("3000002"));
  EXPECT_EQ(cell(read, QStringLiteral("REFUND"), 0, QStringLiteral("CUST_NM")), QStringLiteral("ACME HAULING INC"));
  ok(step(demo::Verifier, read, {{QStringLiteral("STTS_CD"), QStringLiteral("V")},
                                 {QStringLiteral("VOID_ID"), demo::Verifier}}));
  EXPECT_EQ(status(QStringLiteral("3000002")), QStringLiteral("V"));
  EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM OVR_PYMT WHERE RCPT_NBR = '8000005' AND OVR_PYMT_STTS_CD = 'O' AND "
                                 "OVR_PYMT_AMT = 10000 AND RFND_NBR IS NULL")),
            1);

  read = worksheet(QStringLiteral("100003"), QStringLiteral("3000004"));
  EXPECT_EQ(send(step(demo::Fiscal, read, {{QStringLiteral("STTS_CD"), QStringLiteral("T")},
                                           {QStringLiteral("RFND_BY_ID"), demo::Fiscal},
                                           {QStringLiteral("RFND_CD"), QStringLiteral("0")}}))
                .error,
            QStringLiteral("Please enter the Refund Description, when Tranferring the excess funds"));
  ok(step(demo::Fiscal, read, {{QStringLiteral("STTS_CD"), QStringLiteral("T")},
                               {QStringLiteral("RFND_BY_ID"), demo::Fiscal},
                               {QStringLiteral("RFND_CD"), QStringLiteral("0")},
                               {QStringLiteral("FISCAL_CMMT_TXT"), QStringLiteral("To the division")}}));
  EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM OVR_PYMT WHERE RFND_NBR = '3000004' AND OVR_PYMT_STTS_CD = 'T'")), 1);
}

TEST_P(Worksheets, StepsOutOfOrderInAnotherNameOrWithoutTheRightAreRefused) {
  const Reply prepared = worksheet(QStringLiteral("100003"), QStringLiteral("3000002"));
  const Reply approved = worksheet(QStringLiteral("100003"), QStringLiteral("3000004"));
  const struct {
    const char* name;
    RequestBuilder request;
    const char16_t* expected;
  } cases[] = {
      {"skipping verification", step(demo::Approver, prepared, {{QStringLiteral("STTS_CD"), QStringLiteral("3")},
                                                                {QStringLiteral("APPROVE_ID"), demo::Approver}}),
       u"is PREPARED; it can not be moved to APPROVED"},
      {"in another's name", step(demo::Verifier, prepared, {{QStringLiteral("STTS_CD"), QStringLiteral("2")},
                                                            {QStringLiteral("VERIFY_ID"), demo::Fiscal}}),
       u"VERIFY_ID names FISCAL01, but the signed-on officer is VERIFY01"},
      {"no officer", step(demo::Verifier, prepared, {{QStringLiteral("STTS_CD"), QStringLiteral("2")}}),
       u"When verifying a refund, the officer verifying the refund must be displayed."},
      {"no right", step(demo::Clerk, prepared, {{QStringLiteral("STTS_CD"), QStringLiteral("2")},
                                                {QStringLiteral("VERIFY_ID"), demo::Clerk}}),
       u"does not hold the right CREATEREFUND"},
      {"refunded without a warrant", step(demo::Fiscal, approved, {{QStringLiteral("STTS_CD"), QStringLiteral("4")},
                                                                   {QStringLiteral("RFND_BY_ID"), demo::Fiscal},
                                                                   {QStringLiteral("RFND_CD"), QStringLiteral("1")}}),
       u"Please enter the Warrant Number, when Refunding the worksheet"},
      {"refund date ahead", step(demo::Fiscal, approved, {{QStringLiteral("STTS_CD"), QStringLiteral("4")},
                                                          {QStringLiteral("RFND_BY_ID"), demo::Fiscal},
                                                          {QStringLiteral("RFND_CD"), QStringLiteral("1")},
                                                          {QStringLiteral("WRNT_NBR"), QStringLiteral("W-1")},
                                                          {QStringLiteral("RFND_DT"), today().addDays(1).toString(Qt::ISODate)}}),
       u"Refund Date must be current or before"},
      {"outcome not chosen", step(demo::Fiscal, approved, {{QStringLiteral("STTS_CD"), QStringLiteral("4")},
                                                           {QStringLiteral("RFND_BY_ID"), demo::Fiscal}}),
       u"Please select Transferred or Refunded"},
      {"transferred worksheet", step(demo::Admin, worksheet(QStringLiteral("100003"), QStringLiteral("3000007")),
                                     {{QStringLiteral("STTS_CD"), QStringLiteral("V")}, {QStringLiteral("VOID_ID"), demo::Admin}}),
       u"can not be voided or saved"},
  };
  expectEachRefused(cases);
}

TEST_P(Worksheets, APreparedWorksheetNeedsAnIssuedUnusedNumberAndOpenConfirmedExcess) {
  const QString refund = cell(nextNumber(QStringLiteral("F")), QStringLiteral("GetFormNumber"), 0, QStringLiteral("U")).left(7);
  const struct {
    const char* name;
    RequestBuilder request;
    const char16_t* expected;
  } cases[] = {
      {"number never issued", prepare(QStringLiteral("3500000"), QStringLiteral("10.00")), u"was not given out by the host"},
      {"number of another worksheet", prepare(QStringLiteral("3000003"), QStringLiteral("10.00")), u"already exists"},
      {"more than the open excess", prepare(refund, QStringLiteral("150.01")), u"more than the open excess of $150.00"},
      {"no amount", prepare(refund, QStringLiteral("0")), u"must be above $0.00"},
  };
  expectEachRefused(cases);
  ok(prepare(refund, QStringLiteral("150.00")));
  EXPECT_TRUE(send(prepare(refund, QStringLiteral("1.00"))).error.contains(QStringLiteral("already exists")));
}

TEST_P(Worksheets, NumbersAreHandedOutOnceAndTheServiceSaysWhenItHasNone) {
  const Reply first = nextNumber(QStringLiteral("F"));
  const Reply second = nextNumber(QStringLiteral("F"));
  EXPECT_NE(cell(first, QStringLiteral("GetFormNumber"), 0, QStringLiteral("U")),
            cell(second, QStringLiteral("GetFormNumber"), 0, QStringLiteral("U")));
  EXPECT_EQ(messaging::checkFormNumber(cell(second, QStringLiteral("GetFormNumber"), 0, QStringLiteral("U"))),
            messaging::FormNumberProblem::None);
  // A resent request gets the same number, not a new one.
  RequestBuilder request(60);
  request.param(QStringLiteral("key:NBR_TYP_CD"), QStringLiteral("F"));
  const Reply once = ok(request);
  const Reply twice = ok(request);
  EXPECT_EQ(cell(once, QStringLiteral("GetFormNumber"), 0, QStringLiteral("U")),
            cell(twice, QStringLiteral("GetFormNumber"), 0, QStringLiteral("U")));
  EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM NBR_ISSUED WHERE USED_IND = 'N'")), 3);

  EXPECT_EQ(cell(nextNumber(QStringLiteral("W")), QStringLiteral("GetFormNumber"), 0, QStringLiteral("U")),
            QStringLiteral("0000000-0"));
  EXPECT_TRUE(nextNumber(QStringLiteral("R")).error.contains(QStringLiteral("not one the host hands out")));
  EXPECT_TRUE(nextNumber(QStringLiteral("Q")).error.contains(QStringLiteral("not one the host hands out")));
}

INSTANTIATE_TEST_SUITE_P(Databases, Worksheets, ::testing::Values(Backend::Sqlite, Backend::Postgres), backendName);

}  // namespace
}  // namespace adjustacc::host::testing
