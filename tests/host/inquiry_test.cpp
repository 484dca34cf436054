// Inquiries: what the screens read, from the demo set, on every database.
#include "hostfixture.h"

#include "messaging/formnumber.h"

namespace adjustacc::host::testing {
namespace {

using namespace Qt::Literals::StringLiterals;

using messaging::Reply;

class Inquiry : public HostTest {};

QString withCheckDigit(const QString& digits) {
  return digits + u'-' + QString::number(*messaging::formCheckDigit(digits));
}

TEST_P(Inquiry, AccountListsItsReceivablesWithAmountsComputedFromTheirRows) {
  const Reply reply = ok(accountRequest(withCheckDigit(u"1000011"_s)));
  ASSERT_EQ(rows(reply, u"ACNTSRCVBL"_s), 1);
  const QString s = u"ACNTSRCVBL"_s;
  EXPECT_EQ(cell(reply, s, 0, u"CUST_NAME"_s), u"SMITH TRUCKING LLC"_s);
  EXPECT_EQ(cell(reply, s, 0, u"ACCT_RCVBL_CK_NBR"_s), QString::number(*messaging::formCheckDigit(u"1000011")));
  // Active: P01 400, F02 25, F03 12.50, the LPO fees at their LPO amounts 90 + 30 + 60, p04 30.
  EXPECT_EQ(cell(reply, s, 0, u"ACCT_RCVBL_DUE_AMT"_s), u"647.50"_s);
  EXPECT_EQ(cell(reply, s, 0, u"ACCT_RCVBL_BAL_AMT"_s), u"497.50"_s);  // less 150 paid
  EXPECT_EQ(cell(reply, s, 0, u"ORIG_ASSMT_AMT"_s), u"807.50"_s);      // all, as assessed
  EXPECT_EQ(cell(reply, s, 0, u"LTE_FEE_AMT"_s), u"25.00"_s);
  EXPECT_EQ(cell(reply, s, 0, u"ACRD_INTRST_AMT"_s), u"12.50"_s);
  EXPECT_EQ(cell(reply, s, 0, u"ACCT_STTS_CD"_s), u"R"_s);
  EXPECT_EQ(cell(reply, s, 0, u"STP_DT"_s), today().addDays(-200).toString(Qt::ISODate));
  EXPECT_EQ(cell(reply, s, 0, u"ROW_VRSN_NBR"_s), u"1"_s);
  EXPECT_TRUE(reply.sections[s].isNullAt(0, reply.sections[s].fieldIndex(u"FORM_DESC"_s)));

  ASSERT_EQ(rows(reply, u"RECEIPT"_s), 1);
  EXPECT_EQ(cell(reply, u"RECEIPT"_s, 0, u"RCPT_NBR"_s), u"8000001"_s);
  EXPECT_EQ(cell(reply, u"RECEIPT"_s, 0, u"TOT_PYMT_AMT"_s), u"200.00"_s);
  const auto& receipts = reply.sections[u"RECEIPT"_s];
  EXPECT_TRUE(receipts.isNullAt(0, receipts.fieldIndex(u"OVR_PYMT_AMT"_s)))
      << "a receipt without excess funds has no excess amount";
}

struct AccountCase {
  const char* name;
  const char16_t* type;
  const char16_t* number;
  QStringList receivables;
  QStringList receipts;
};

TEST_P(Inquiry, AccountsOfEveryKindFindTheirReceivablesAndReceipts) {
  const AccountCase cases[] = {
      {"number without check digit", u"C", u"1000011", {u"1000011"_s}, {u"8000001"_s}},
      {"short number", u"C", u"1999999", {u"1999999"_s}, {}},
      {"payment plan", u"P", u"500001", {u"0500011"_s, u"0500021"_s, u"0500031"_s}, {u"8000009"_s}},
      {"alert", u"A", u"0700001", {u"0700001"_s}, {}},
      {"check number, any case", u"K", u"chk10455", {u"1000011"_s, u"1000035"_s}, {u"8000001"_s}},
      {"receipts in every state", u"S", u"1000059", {u"1000059"_s}, {u"8000003"_s, u"8000004"_s}},
      {"unknown number", u"C", u"1234567", {}, {}},
  };
  for (const AccountCase& c : cases) {
    SCOPED_TRACE(c.name);
    const Reply reply = ok(accountRequest(QString::fromUtf16(c.number), QString::fromUtf16(c.type)));
    EXPECT_EQ(column(reply, u"ACNTSRCVBL"_s, u"ACCT_RCVBL_NBR"_s), c.receivables);
    EXPECT_EQ(column(reply, u"RECEIPT"_s, u"RCPT_NBR"_s), c.receipts);
  }
}

TEST_P(Inquiry, AccountNumbersThatCanNotBeFormNumbersAreRefused) {
  const QString wrongDigit = u"1000011-%1"_s.arg((*messaging::formCheckDigit(u"1000011") + 1) % 10);
  const struct {
    QString number;
    QString expected;
  } cases[] = {
      {wrongDigit, u"Check digit is not valid"_s},
      {u"12A"_s, u"is Invalid"_s},
      {u"12345678"_s, u"is Invalid"_s},
      {u"1000011-"_s, u"is Invalid"_s},
      {u"1' OR '1'='1"_s, u"is Invalid"_s},
  };
  for (const auto& c : cases) {
    const Reply reply = send(accountRequest(c.number));
    EXPECT_TRUE(reply.error.contains(c.expected)) << c.number.toStdString() << ": " << reply.error.toStdString();
    EXPECT_TRUE(reply.sections.isEmpty());
  }
}

TEST_P(Inquiry, AssessmentsOfOneReceivableCarryStatusLpoAndBalances) {
  const Reply reply = ok(accountRequest(u"1000011"_s).param(u"key:LPO"_s, u"NO"_s));
  EXPECT_FALSE(reply.hasSection(u"ACNTSRCVBL"_s)) << "the document would replace its list with it";
  const QString s = u"ASSESSMENT"_s;
  ASSERT_EQ(rows(reply, s), 8);
  const int removed = findRow(reply, s, u"ASSMT_CD"_s, u"P02"_s);
  ASSERT_GE(removed, 0);
  EXPECT_EQ(cell(reply, s, removed, u"VLTN_ASSMT_STTS_CD"_s), u"I"_s);
  EXPECT_EQ(cell(reply, s, removed, u"BAL_DUE_AMT"_s), u"0.00"_s);
  EXPECT_EQ(cell(reply, s, removed, u"ADJSTMT_DT"_s), today().addDays(-150).toString(Qt::ISODate));
  const int lpo = findRow(reply, s, u"ASSMT_CD"_s, u"F09"_s);
  EXPECT_EQ(cell(reply, s, lpo, u"LIC_PRCHS_OPTN_IND"_s), u"Y"_s);
  EXPECT_EQ(cell(reply, s, lpo, u"CL_ASMT_AMT"_s), u"100.00"_s);
  EXPECT_EQ(cell(reply, s, lpo, u"AC_ASMT_AMT"_s), u"90.00"_s);
  const int lowerCase = findRow(reply, s, u"ASSMT_CD"_s, u"p04"_s);
  ASSERT_GE(lowerCase, 0);
  const auto& set = reply.sections[s];
  EXPECT_TRUE(set.isNullAt(lowerCase, set.fieldIndex(u"LIC_PRCHS_OPTN_IND"_s)));
  EXPECT_EQ(cell(reply, s, lowerCase, u"CUST_NM"_s), u"SMITH TRUCKING LLC"_s);
}

TEST_P(Inquiry, CustomerFormsAreSelectedByTypeOrByStatus) {
  const auto forms = [this](const QString& type) {
    const Reply reply = ok(RequestBuilder(47).param(u"key:CUST_ID"_s, u"100001"_s).param(u"key:REF_TYP_CD"_s, type));
    return std::make_pair(column(reply, u"CUSTOMERFORM"_s, u"FORM_NBR"_s), reply);
  };
  const auto [citations, reply] = forms(u"C"_s);
  EXPECT_EQ(citations, QStringList{u"1000011"_s});
  EXPECT_EQ(cell(reply, u"CUSTOMERFORM"_s, 0, u"LST_PYMT_DT"_s), today().addDays(-40).toString(Qt::ISODate));
  EXPECT_EQ(cell(reply, u"CUSTOMERFORM"_s, 0, u"BAL_DUE"_s), u"497.50"_s);
  EXPECT_EQ(forms(u"Y"_s).first, (QStringList{u"1000028"_s, u"0500011"_s})) << "paid in full, in stop-date order";
  EXPECT_EQ(forms(u"P"_s).first.size(), 3);
  EXPECT_TRUE(forms(u"V"_s).first.isEmpty());
}

TEST_P(Inquiry, CustomerSearchFindsByPartOfTheNameLiterally) {
  const auto names = [this](const QString& key, const QString& value) {
    return column(ok(RequestBuilder(62).param(key, value)), u"CUSTOMER"_s, u"CUST_NM"_s);
  };
  EXPECT_EQ(names(u"key:CUST_NM"_s, u"smith"_s), QStringList{u"SMITH TRUCKING LLC"_s});
  EXPECT_EQ(names(u"key:CUST_NM"_s, u"O'B"_s), QStringList{u"O'BRIEN FREIGHT"_s});
  EXPECT_TRUE(names(u"key:CUST_NM"_s, u"%%"_s).isEmpty()) << "% is not a wildcard";
  EXPECT_TRUE(names(u"key:CUST_NM"_s, u"__"_s).isEmpty()) << "_ is not a wildcard";
  EXPECT_EQ(names(u"key:CUST_ID"_s, u"100002"_s), QStringList{u"JONES, MARIA"_s});
  const Reply alert = ok(RequestBuilder(62).param(u"key:CUST_ID"_s, u"100002"_s));
  EXPECT_EQ(cell(alert, u"CUSTOMER"_s, 0, u"ALERT_IND"_s), u"Y"_s);
  EXPECT_FALSE(send(RequestBuilder(62).param(u"key:CUST_NM"_s, u"S"_s)).error.isEmpty());
  EXPECT_FALSE(send(RequestBuilder(62)).error.isEmpty()) << "neither name nor id";
}

TEST_P(Inquiry, CodeTablesOfferCodesInEffectTodayForTheRegion) {
  const auto codes = [this](const QString& table, const QString& day) {
    RequestBuilder request(63);
    request.param(u"key:CD_TBL_ID"_s, table);
    if (!day.isEmpty()) {
      request.param(u"key:AS_OF_DT"_s, day);
    }
    const Reply reply = ok(request);
    const QStringList found = column(reply, u"QVR_CODE"_s, u"CD_TBL_CD"_s);
    EXPECT_EQ(column(reply, u"QVR_CODE"_s, u"REGION"_s), QStringList(found.size(), u"NE"_s));
    return found;
  };
  const QStringList today = codes(u"FORMDOC"_s, {});
  EXPECT_TRUE(today.contains(u"W"_s)) << "ends today: still offered";
  EXPECT_FALSE(today.contains(u"Z"_s)) << "starts tomorrow";
  EXPECT_FALSE(today.contains(u"X"_s)) << "ended yesterday";
  EXPECT_TRUE(today.contains(u"C"_s));
  const QStringList tomorrow = codes(u"FORMDOC"_s, HostTest::today().addDays(1).toString(Qt::ISODate));
  EXPECT_TRUE(tomorrow.contains(u"Z"_s));
  EXPECT_FALSE(tomorrow.contains(u"W"_s));
  EXPECT_EQ(codes(u"PAYADJUST"_s, {}), (QStringList{u"B"_s, u"C"_s}));
}

// The whole table, as a desktop keeps it to describe the codes old rows carry: ended and future rows too.
TEST_P(Inquiry, CodeTablesAskedForWholeHoldEveryRowWhateverItsDates) {
  // A former name of "C", ended long ago: the same code comes twice, older row first.
  QSqlQuery renamed(db());
  renamed.prepare(QStringLiteral("INSERT INTO QVR_CODE (CD_TBL_ID, CD_TBL_CD, CD_TBL_DES, EFCTV_DT, END_DT, REGION) "
                                 "VALUES ('FORMDOC', 'C', 'CITATION (FORMER NAME)', ?, ?, 'NE')"));
  renamed.addBindValue(today().addDays(-7300));
  renamed.addBindValue(today().addDays(-3651));
  ASSERT_TRUE(renamed.exec()) << renamed.lastError().text().toStdString();

  const auto whole = [this](const QString& value, const QString& region = {}) {
    RequestBuilder request(63);
    request.param(u"key:CD_TBL_ID"_s, u"formdoc"_s).param(u"key:ALL"_s, value);
    if (!region.isEmpty()) {
      request.param(u"key:REGION"_s, region);
    }
    return ok(request);
  };
  const Reply reply = whole(u"Y"_s);
  const QString s = u"QVR_CODE"_s;
  const QStringList codes = column(reply, s, u"CD_TBL_CD"_s);
  EXPECT_EQ(column(reply, s, u"REGION"_s), QStringList(codes.size(), u"NE"_s)) << "the officer's region";
  EXPECT_EQ(column(reply, s, u"CD_TBL_ID"_s), QStringList(codes.size(), u"FORMDOC"_s));
  EXPECT_EQ(codes, (QStringList{u"A"_s, u"C"_s, u"C"_s, u"K"_s, u"M"_s, u"O"_s, u"P"_s, u"S"_s, u"T"_s, u"W"_s, u"X"_s,
                                u"Z"_s}));
  const int former = findRow(reply, s, u"CD_TBL_DES"_s, u"CITATION (FORMER NAME)"_s);
  EXPECT_EQ(former, codes.indexOf(u"C"_s)) << "by code, then by effective date";
  const int ended = findRow(reply, s, u"CD_TBL_CD"_s, u"X"_s);
  ASSERT_GE(ended, 0);
  EXPECT_EQ(cell(reply, s, ended, u"END_DT"_s), today().addDays(-1).toString(Qt::ISODate));
  const int future = findRow(reply, s, u"CD_TBL_CD"_s, u"Z"_s);
  ASSERT_GE(future, 0);
  EXPECT_EQ(cell(reply, s, future, u"EFCTV_DT"_s), today().addDays(1).toString(Qt::ISODate));
  EXPECT_EQ(cell(reply, s, future, u"END_DT"_s), QString()) << "no end";

  EXPECT_EQ(rows(whole(u" y "_s), s), rows(reply, s)) << "trimmed, compared upper-cased";
  const Reply southWest = whole(u"Y"_s, u"sw"_s);
  ASSERT_EQ(rows(southWest, s), rows(reply, s) - 1) << "the other region has no former name of C";
  EXPECT_EQ(cell(southWest, s, 0, u"REGION"_s), u"SW"_s);
}

TEST_P(Inquiry, CodeTablesRefuseAnAllThatIsNotYOrThatComesWithADay) {
  const auto request = [](const QString& all, const QString& day = {}) {
    RequestBuilder r(63);
    r.param(u"key:CD_TBL_ID"_s, u"FORMDOC"_s).param(u"key:ALL"_s, all);
    if (!day.isEmpty()) {
      r.param(u"key:AS_OF_DT"_s, day);
    }
    return r;
  };
  const QString day = today().toString(Qt::ISODate);
  const struct {
    const char* name;
    RequestBuilder request;
    const char16_t* expected;
  } cases[] = {
      {"other value", request(u"X"_s), u"Parameter key:ALL \"X\" is not valid"},
      {"no", request(u"N"_s), u"Parameter key:ALL \"N\" is not valid"},
      {"blank", request(u" "_s), u"Parameter key:ALL \"\" is not valid"},
      {"yes spelled out", request(u"YES"_s), u"Parameter key:ALL \"YES\" is not valid"},
      {"with a day", request(u"Y"_s, day), u"takes key:ALL (every row, whatever its dates) or key:AS_OF_DT"},
  };
  expectEachRefused(cases);
}

TEST_P(Inquiry, OfficersLearnTheirOwnRightsOnly) {
  const Reply own = ok(RequestBuilder(64, demo::CancelOnly));
  EXPECT_EQ(cell(own, u"OFFICER"_s, 0, u"OFFICER_NM"_s), u"Jordan Pike"_s);
  EXPECT_EQ(column(own, u"RIGHTS"_s, u"RIGHT_NM"_s), (QStringList{u"ADJUSTRCPTCANCELONLY"_s, u"ADJUSTRECEIPT"_s}));
  const Reply other = ok(RequestBuilder(64, demo::Clerk).param(u"key:OFFICER_ID"_s, demo::Approver));
  EXPECT_EQ(cell(other, u"OFFICER"_s, 0, u"REGION"_s), u"SW"_s);
  EXPECT_FALSE(other.hasSection(u"RIGHTS"_s));
}

INSTANTIATE_TEST_SUITE_P(Databases, Inquiry, ::testing::Values(Backend::Sqlite, Backend::Postgres), backendName);

}  // namespace
}  // namespace adjustacc::host::testing
