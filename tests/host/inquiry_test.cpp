// Inquiries: what the screens read, from the demo set, on every database.
#include "hostfixture.h"

#include "messaging/formnumber.h"

namespace adjustacc::host::testing {
namespace {

using messaging::Reply;

class Inquiry : public HostTest {};

QString withCheckDigit(const QString& digits) {
  return digits + u'-' + QString::number(*messaging::formCheckDigit(digits));
}

TEST_P(Inquiry, AccountListsItsReceivablesWithAmountsComputedFromTheirRows) {
  const Reply reply = ok(RequestBuilder(47)
                             .param(QStringLiteral("key:REF_NBR"), withCheckDigit(QStringLiteral("1000011")))
                             .param(QStringLiteral("key:REF_TYP_CD"), QStringLiteral("C")));
  ASSERT_EQ(rows(reply, QStringLiteral("ACNTSRCVBL")), 1);
  const QString s = QStringLiteral("ACNTSRCVBL");
  EXPECT_EQ(cell(reply, s, 0, QStringLiteral("CUST_NAME")), QStringLiteral("SMITH TRUCKING LLC"));
  EXPECT_EQ(cell(reply, s, 0, QStringLiteral("ACCT_RCVBL_CK_NBR")),
            QString::number(*messaging::formCheckDigit(u"1000011")));
  // Active: P01 400, F02 25, F03 12.50, the LPO fees at their LPO amounts 90 + 30 + 60, p04 30.
  EXPECT_EQ(cell(reply, s, 0, QStringLiteral("ACCT_RCVBL_DUE_AMT")), QStringLiteral("647.50"));
  EXPECT_EQ(cell(reply, s, 0, QStringLiteral("ACCT_RCVBL_BAL_AMT")), QStringLiteral("497.50"));  // less 150 paid
  EXPECT_EQ(cell(reply, s, 0, QStringLiteral("ORIG_ASSMT_AMT")), QStringLiteral("807.50"));      // all, as assessed
  EXPECT_EQ(cell(reply, s, 0, QStringLiteral("LTE_FEE_AMT")), QStringLiteral("25.00"));
  EXPECT_EQ(cell(reply, s, 0, QStringLiteral("ACRD_INTRST_AMT")), QStringLiteral("12.50"));
  EXPECT_EQ(cell(reply, s, 0, QStringLiteral("ACCT_STTS_CD")), QStringLiteral("R"));
  EXPECT_EQ(cell(reply, s, 0, QStringLiteral("STP_DT")), today().addDays(-200).toString(Qt::ISODate));
  EXPECT_EQ(cell(reply, s, 0, QStringLiteral("ROW_VRSN_NBR")), QStringLiteral("1"));
  EXPECT_TRUE(reply.sections[s].isNullAt(0, reply.sections[s].fieldIndex(QStringLiteral("FORM_DESC"))));

  ASSERT_EQ(rows(reply, QStringLiteral("RECEIPT")), 1);
  EXPECT_EQ(cell(reply, QStringLiteral("RECEIPT"), 0, QStringLiteral("RCPT_NBR")), QStringLiteral("8000001"));
  EXPECT_EQ(cell(reply, QStringLiteral("RECEIPT"), 0, QStringLiteral("TOT_PYMT_AMT")), QStringLiteral("200.00"));
  const auto& receipts = reply.sections[QStringLiteral("RECEIPT")];
  EXPECT_TRUE(receipts.isNullAt(0, receipts.fieldIndex(QStringLiteral("OVR_PYMT_AMT"))))
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
      {"number without check digit", u"C", u"1000011", {QStringLiteral("1000011")}, {QStringLiteral("8000001")}},
      {"short number", u"C", u"1999999", {QStringLiteral("1999999")}, {}},
      {"payment plan", u"P", u"500001",
       {QStringLiteral("0500011"), QStringLiteral("0500021"), QStringLiteral("0500031")}, {QStringLiteral("8000009")}},
      {"alert", u"A", u"0700001", {QStringLiteral("0700001")}, {}},
      {"check number, any case", u"K", u"chk10455", {QStringLiteral("1000011"), QStringLiteral("1000035")},
       {QStringLiteral("8000001")}},
      {"receipts in every state", u"S", u"1000059", {QStringLiteral("1000059")},
       {QStringLiteral("8000003"), QStringLiteral("8000004")}},
      {"unknown number", u"C", u"1234567", {}, {}},
  };
  for (const AccountCase& c : cases) {
    SCOPED_TRACE(c.name);
    const Reply reply = ok(RequestBuilder(47)
                               .param(QStringLiteral("key:REF_NBR"), QString::fromUtf16(c.number))
                               .param(QStringLiteral("key:REF_TYP_CD"), QString::fromUtf16(c.type)));
    QStringList receivables;
    for (int row = 0; row < rows(reply, QStringLiteral("ACNTSRCVBL")); ++row) {
      receivables.append(cell(reply, QStringLiteral("ACNTSRCVBL"), row, QStringLiteral("ACCT_RCVBL_NBR")));
    }
    QStringList receipts;
    for (int row = 0; row < rows(reply, QStringLiteral("RECEIPT")); ++row) {
      receipts.append(cell(reply, QStringLiteral("RECEIPT"), row, QStringLiteral("RCPT_NBR")));
    }
    EXPECT_EQ(receivables, c.receivables);
    EXPECT_EQ(receipts, c.receipts);
  }
}

TEST_P(Inquiry, AccountNumbersThatCanNotBeFormNumbersAreRefused) {
  const QString wrongDigit = QStringLiteral("1000011-%1").arg((*messaging::formCheckDigit(u"1000011") + 1) % 10);
  const struct {
    QString number;
    QString expected;
  } cases[] = {
      {wrongDigit, QStringLiteral("Check digit is not valid")},
      {QStringLiteral("12A"), QStringLiteral("is Invalid")},
      {QStringLiteral("12345678"), QStringLiteral("is Invalid")},
      {QStringLiteral("1000011-"), QStringLiteral("is Invalid")},
      {QStringLiteral("1' OR '1'='1"), QStringLiteral("is Invalid")},
  };
  for (const auto& c : cases) {
    const Reply reply = send(RequestBuilder(47)
                                 .param(QStringLiteral("key:REF_NBR"), c.number)
                                 .param(QStringLiteral("key:REF_TYP_CD"), QStringLiteral("C")));
    EXPECT_TRUE(reply.error.contains(c.expected)) << c.number.toStdString() << ": " << reply.error.toStdString();
    EXPECT_TRUE(reply.sections.isEmpty());
  }
}

TEST_P(Inquiry, AssessmentsOfOneReceivableCarryStatusLpoAndBalances) {
  const Reply reply = ok(RequestBuilder(47)
                             .param(QStringLiteral("key:REF_NBR"), QStringLiteral("1000011"))
                             .param(QStringLiteral("key:REF_TYP_CD"), QStringLiteral("C"))
                             .param(QStringLiteral("key:LPO"), QStringLiteral("NO")));
  EXPECT_FALSE(reply.hasSection(QStringLiteral("ACNTSRCVBL"))) << "the document would replace its list with it";
  const QString s = QStringLiteral("ASSESSMENT");
  ASSERT_EQ(rows(reply, s), 8);
  const int removed = findRow(reply, s, QStringLiteral("ASSMT_CD"), QStringLiteral("P02"));
  ASSERT_GE(removed, 0);
  EXPECT_EQ(cell(reply, s, removed, QStringLiteral("VLTN_ASSMT_STTS_CD")), QStringLiteral("I"));
  EXPECT_EQ(cell(reply, s, removed, QStringLiteral("BAL_DUE_AMT")), QStringLiteral("0.00"));
  EXPECT_EQ(cell(reply, s, removed, QStringLiteral("ADJSTMT_DT")), today().addDays(-150).toString(Qt::ISODate));
  const int lpo = findRow(reply, s, QStringLiteral("ASSMT_CD"), QStringLiteral("F09"));
  EXPECT_EQ(cell(reply, s, lpo, QStringLiteral("LIC_PRCHS_OPTN_IND")), QStringLiteral("Y"));
  EXPECT_EQ(cell(reply, s, lpo, QStringLiteral("CL_ASMT_AMT")), QStringLiteral("100.00"));
  EXPECT_EQ(cell(reply, s, lpo, QStringLiteral("AC_ASMT_AMT")), QStringLiteral("90.00"));
  const int lowerCase = findRow(reply, s, QStringLiteral("ASSMT_CD"), QStringLiteral("p04"));
  ASSERT_GE(lowerCase, 0);
  const auto& set = reply.sections[s];
  EXPECT_TRUE(set.isNullAt(lowerCase, set.fieldIndex(QStringLiteral("LIC_PRCHS_OPTN_IND"))));
  EXPECT_EQ(cell(reply, s, lowerCase, QStringLiteral("CUST_NM")), QStringLiteral("SMITH TRUCKING LLC"));
}

TEST_P(Inquiry, CustomerFormsAreSelectedByTypeOrByStatus) {
  const auto forms = [this](const QString& type) {
    const Reply reply = ok(RequestBuilder(47)
                               .param(QStringLiteral("key:CUST_ID"), QStringLiteral("100001"))
                               .param(QStringLiteral("key:REF_TYP_CD"), type));
    QStringList numbers;
    for (int row = 0; row < rows(reply, QStringLiteral("CUSTOMERFORM")); ++row) {
      numbers.append(cell(reply, QStringLiteral("CUSTOMERFORM"), row, QStringLiteral("FORM_NBR")));
    }
    return std::make_pair(numbers, reply);
  };
  const auto [citations, reply] = forms(QStringLiteral("C"));
  EXPECT_EQ(citations, QStringList{QStringLiteral("1000011")});
  EXPECT_EQ(cell(reply, QStringLiteral("CUSTOMERFORM"), 0, QStringLiteral("LST_PYMT_DT")),
            today().addDays(-40).toString(Qt::ISODate));
  EXPECT_EQ(cell(reply, QStringLiteral("CUSTOMERFORM"), 0, QStringLiteral("BAL_DUE")), QStringLiteral("497.50"));
  EXPECT_EQ(forms(QStringLiteral("Y")).first, (QStringList{QStringLiteral("1000028"), QStringLiteral("0500011")}))
      << "paid in full, in stop-date order";
  EXPECT_EQ(forms(QStringLiteral("P")).first.size(), 3);
  EXPECT_TRUE(forms(QStringLiteral("V")).first.isEmpty());
}

TEST_P(Inquiry, CustomerSearchFindsByPartOfTheNameLiterally) {
  const auto names = [this](const QString& key, const QString& value) {
    const Reply reply = ok(RequestBuilder(62).param(key, value));
    QStringList found;
    for (int row = 0; row < rows(reply, QStringLiteral("CUSTOMER")); ++row) {
      found.append(cell(reply, QStringLiteral("CUSTOMER"), row, QStringLiteral("CUST_NM")));
    }
    return found;
  };
  EXPECT_EQ(names(QStringLiteral("key:CUST_NM"), QStringLiteral("smith")), QStringList{QStringLiteral("SMITH TRUCKING LLC")});
  EXPECT_EQ(names(QStringLiteral("key:CUST_NM"), QStringLiteral("O'B")), QStringList{QStringLiteral("O'BRIEN FREIGHT")});
  EXPECT_TRUE(names(QStringLiteral("key:CUST_NM"), QStringLiteral("%%")).isEmpty()) << "% is not a wildcard";
  EXPECT_TRUE(names(QStringLiteral("key:CUST_NM"), QStringLiteral("__")).isEmpty()) << "_ is not a wildcard";
  EXPECT_EQ(names(QStringLiteral("key:CUST_ID"), QStringLiteral("100002")), QStringList{QStringLiteral("JONES, MARIA")});
  const Reply alert = ok(RequestBuilder(62).param(QStringLiteral("key:CUST_ID"), QStringLiteral("100002")));
  EXPECT_EQ(cell(alert, QStringLiteral("CUSTOMER"), 0, QStringLiteral("ALERT_IND")), QStringLiteral("Y"));
  EXPECT_FALSE(send(RequestBuilder(62).param(QStringLiteral("key:CUST_NM"), QStringLiteral("S"))).error.isEmpty());
  EXPECT_FALSE(send(RequestBuilder(62)).error.isEmpty()) << "neither name nor id";
}

TEST_P(Inquiry, CodeTablesOfferCodesInEffectTodayForTheRegion) {
  const auto codes = [this](const QString& table, const QString& day) {
    RequestBuilder request(63);
    request.param(QStringLiteral("key:CD_TBL_ID"), table);
    if (!day.isEmpty()) {
      request.param(QStringLiteral("key:AS_OF_DT"), day);
    }
    const Reply reply = ok(request);
    QStringList found;
    for (int row = 0; row < rows(reply, QStringLiteral("QVR_CODE")); ++row) {
      EXPECT_EQ(cell(reply, QStringLiteral("QVR_CODE"), row, QStringLiteral("REGION")), QStringLiteral("NE"));
      found.append(cell(reply, QStringLiteral("QVR_CODE"), row, QStringLiteral("CD_TBL_CD")));
    }
    return found;
  };
  const QStringList today = codes(QStringLiteral("FORMDOC"), {});
  EXPECT_TRUE(today.contains(QStringLiteral("W"))) << "ends today: still offered";
  EXPECT_FALSE(today.contains(QStringLiteral("Z"))) << "starts tomorrow";
  EXPECT_FALSE(today.contains(QStringLiteral("X"))) << "ended yesterday";
  EXPECT_TRUE(today.contains(QStringLiteral("C")));
  const QStringList tomorrow = codes(QStringLiteral("FORMDOC"), HostTest::today().addDays(1).toString(Qt::ISODate));
  EXPECT_TRUE(tomorrow.contains(QStringLiteral("Z")));
  EXPECT_FALSE(tomorrow.contains(QStringLiteral("W")));
  EXPECT_EQ(codes(QStringLiteral("PAYADJUST"), {}), (QStringList{QStringLiteral("B"), QStringLiteral("C")}));
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
    request.param(QStringLiteral("key:CD_TBL_ID"), QStringLiteral("formdoc")).param(QStringLiteral("key:ALL"), value);
    if (!region.isEmpty()) {
      request.param(QStringLiteral("key:REGION"), region);
    }
    return ok(request);
  };
  const Reply reply = whole(QStringLiteral("Y"));
  const QString s = QStringLiteral("QVR_CODE");
  QStringList codes;
  for (int row = 0; row < rows(reply, s); ++row) {
    EXPECT_EQ(cell(reply, s, row, QStringLiteral("REGION")), QStringLiteral("NE")) << "the officer's region";
    EXPECT_EQ(cell(reply, s, row, QStringLiteral("CD_TBL_ID")), QStringLiteral("FORMDOC"));
    codes.append(cell(reply, s, row, QStringLiteral("CD_TBL_CD")));
  }
  EXPECT_EQ(codes, (QStringList{QStringLiteral("A"), QStringLiteral("C"), QStringLiteral("C"), QStringLiteral("K"),
                                QStringLiteral("M"), QStringLiteral("O"), QStringLiteral("P"), QStringLiteral("S"),
                                QStringLiteral("T"), QStringLiteral("W"), QStringLiteral("X"), QStringLiteral("Z")}));
  const int former = findRow(reply, s, QStringLiteral("CD_TBL_DES"), QStringLiteral("CITATION (FORMER NAME)"));
  EXPECT_EQ(former, codes.indexOf(QStringLiteral("C"))) << "by code, then by effective date";
  const int ended = findRow(reply, s, QStringLiteral("CD_TBL_CD"), QStringLiteral("X"));
  ASSERT_GE(ended, 0);
  EXPECT_EQ(cell(reply, s, ended, QStringLiteral("END_DT")), today().addDays(-1).toString(Qt::ISODate));
  const int future = findRow(reply, s, QStringLiteral("CD_TBL_CD"), QStringLiteral("Z"));
  ASSERT_GE(future, 0);
  EXPECT_EQ(cell(reply, s, future, QStringLiteral("EFCTV_DT")), today().addDays(1).toString(Qt::ISODate));
  EXPECT_EQ(cell(reply, s, future, QStringLiteral("END_DT")), QString()) << "no end";

  EXPECT_EQ(rows(whole(QStringLiteral(" y ")), s), rows(reply, s)) << "trimmed, compared upper-cased";
  const Reply southWest = whole(QStringLiteral("Y"), QStringLiteral("sw"));
  ASSERT_EQ(rows(southWest, s), rows(reply, s) - 1) << "the other region has no former name of C";
  EXPECT_EQ(cell(southWest, s, 0, QStringLiteral("REGION")), QStringLiteral("SW"));
}

TEST_P(Inquiry, CodeTablesRefuseAnAllThatIsNotYOrThatComesWithADay) {
  const auto request = [](const QString& all, const QString& day = {}) {
    RequestBuilder r(63);
    r.param(QStringLiteral("key:CD_TBL_ID"), QStringLiteral("FORMDOC")).param(QStringLiteral("key:ALL"), all);
    if (!day.isEmpty()) {
      r.param(QStringLiteral("key:AS_OF_DT"), day);
    }
    return r;
  };
  const QString day = today().toString(Qt::ISODate);
  const struct {
    const char* name;
    RequestBuilder request;
    const char16_t* expected;
  } cases[] = {
      {"other value", request(QStringLiteral("X")), u"Parameter key:ALL \"X\" is not valid"},
      {"no", request(QStringLiteral("N")), u"Parameter key:ALL \"N\" is not valid"},
      {"blank", request(QStringLiteral(" ")), u"Parameter key:ALL \"\" is not valid"},
      {"yes spelled out", request(QStringLiteral("YES")), u"Parameter key:ALL \"YES\" is not valid"},
      {"with a day", request(QStringLiteral("Y"), day), u"takes key:ALL (every row, whatever its dates) or key:AS_OF_DT"},
  };
  expectEachRefused(cases);
}

TEST_P(Inquiry, OfficersLearnTheirOwnRightsOnly) {
  const Reply own = ok(RequestBuilder(64, demo::CancelOnly));
  EXPECT_EQ(cell(own, QStringLiteral("OFFICER"), 0, QStringLiteral("OFFICER_NM")), QStringLiteral("Jordan Pike"));
  QStringList held;
  for (int row = 0; row < rows(own, QStringLiteral("RIGHTS")); ++row) {
    held.append(cell(own, QStringLiteral("RIGHTS"), row, QStringLiteral("RIGHT_NM")));
  }
  EXPECT_EQ(held, (QStringList{QStringLiteral("ADJUSTRCPTCANCELONLY"), QStringLiteral("ADJUSTRECEIPT")}));
  const Reply other = ok(RequestBuilder(64, demo::Clerk).param(QStringLiteral("key:OFFICER_ID"), demo::Approver));
  EXPECT_EQ(cell(other, QStringLiteral("OFFICER"), 0, QStringLiteral("REGION")), QStringLiteral("SW"));
  EXPECT_FALSE(other.hasSection(QStringLiteral("RIGHTS")));
}

INSTANTIATE_TEST_SUITE_P(Databases, Inquiry, ::testing::Values(Backend::Sqlite, Backend::Postgres), backendName);

}  // namespace
}  // namespace adjustacc::host::testing
