// Receipts: the receipt detail, payment adjustments, transfers of excess funds and refund information.
#include "hostfixture.h"

namespace adjustacc::host::testing {
namespace {

using messaging::Reply;

class Receipts : public HostTest {
protected:
  Reply detail(const QString& receipt, const QString& user = demo::Admin) {
    return ok(RequestBuilder(47, user)
                  .param(QStringLiteral("key:RECEIPT_NBR"), receipt)
                  .param(QStringLiteral("key:RECEIPT_DETL"), QStringLiteral("YES")));
  }

  RequestBuilder adjustment(const Reply& read, const QString& receiptAction, const QString& comment, const QDate& day,
                            const QString& user = demo::Admin) {
    const QString receipt = cell(read, QStringLiteral("RECEIPT"), 0, QStringLiteral("RCPT_NBR"));
    RequestBuilder request(47, user);
    request.param(QStringLiteral("key:RECEIPT_NBR"), receipt)
        .param(QStringLiteral("key:RECEIPT_DETL"), QStringLiteral("YES"))
        .record(QStringLiteral("ADJUSTPAY"), {{QStringLiteral("ACTION"), QStringLiteral("ADD")},
                                              {QStringLiteral("ADJSTMT_DT"), day.toString(Qt::ISODate)},
                                              {QStringLiteral("ADJSTMT_CMMT_TXT"), comment},
                                              {QStringLiteral("ADJSTMT_TYP_CD"), receiptAction.isEmpty() ? QVariant() : QVariant(receiptAction)},
                                              {QStringLiteral("RCPT_NBR"), receipt},
                                              {QStringLiteral("ROW_VRSN_NBR"),
                                               cell(read, QStringLiteral("RECEIPT"), 0, QStringLiteral("ROW_VRSN_NBR"))}});
    return request;
  }

  // The ACNTSRCVBL record of a payment row, as the receipt screen builds it.
  static Fields paymentRecord(const Reply& read, int row, const QString& action, const QDate& day) {
    const QString s = QStringLiteral("ACNTSRCVBL");
    Fields record = {{QStringLiteral("ACTION"), QStringLiteral("UPD")}, {QStringLiteral("ADJST_ACTION"), action},
                     {QStringLiteral("ADJSTMT_DT"), day.toString(Qt::ISODate)}};
    for (const char* field : {"CUST_ID", "ACCT_RCVBL_TYP_CD", "ACCT_RCVBL_NBR", "ACCT_RCVBL_CK_NBR", "CL_PYMT_AMT",
                              "TRNSCTN_DT", "TRNSCTN_NBR", "ROW_VRSN_NBR"}) {
      record.append({QString::fromLatin1(field), cell(read, s, row, QString::fromLatin1(field))});
    }
    return record;
  }

  qint64 balanceOf(const QString& number) {
    return value(QStringLiteral("SELECT ACCT_RCVBL_BAL_AMT FROM ACCT_RCVBL WHERE ACCT_RCVBL_NBR = ?"), {number}).toLongLong();
  }
};

TEST_P(Receipts, TheDetailCarriesTheReceiptItsFundsPaymentsAndExcessFunds) {
  const Reply reply = detail(QStringLiteral("8000002"));
  EXPECT_EQ(cell(reply, QStringLiteral("RECEIPT"), 0, QStringLiteral("CNFRMTN_NBR")), QStringLiteral("CNF-55230"));
  EXPECT_EQ(cell(reply, QStringLiteral("RECEIPT"), 0, QStringLiteral("OVR_PYMT_AMT")), QStringLiteral("150.00"));
  ASSERT_EQ(rows(reply, QStringLiteral("FUND")), 1);
  EXPECT_EQ(cell(reply, QStringLiteral("FUND"), 0, QStringLiteral("FUND_TYP_CD")), QStringLiteral("R"));
  EXPECT_EQ(cell(reply, QStringLiteral("FUND"), 0, QStringLiteral("EXPRTN_DY_DT")), QStringLiteral("31"));
  EXPECT_EQ(cell(reply, QStringLiteral("FUND"), 0, QStringLiteral("FRCPT_NBR")), QStringLiteral("8000002"));
  ASSERT_EQ(rows(reply, QStringLiteral("ACNTSRCVBL")), 1);
  const auto& payments = reply.sections[QStringLiteral("ACNTSRCVBL")];
  EXPECT_TRUE(payments.hasField(QStringLiteral("CL_PYMT_AMT"))) << "the payments layout, not the account list's";
  EXPECT_EQ(cell(reply, QStringLiteral("ACNTSRCVBL"), 0, QStringLiteral("CL_PYMT_AMT")), QStringLiteral("325.00"));
  EXPECT_TRUE(payments.isNullAt(0, payments.fieldIndex(QStringLiteral("ACTVTY_STTS_CD")))) << "in force";
  ASSERT_EQ(rows(reply, QStringLiteral("OVERPAYMENT")), 1);
  EXPECT_EQ(cell(reply, QStringLiteral("OVERPAYMENT"), 0, QStringLiteral("OVR_PYMT_STTS_CD")), QStringLiteral("O"));
  EXPECT_EQ(cell(reply, QStringLiteral("OVERPAYMENT"), 0, QStringLiteral("DSTNTN_RCPT_NBR")), QStringLiteral("0"));
  EXPECT_EQ(cell(reply, QStringLiteral("OVERPAYMENT"), 0, QStringLiteral("ZIP")), QStringLiteral("12205"));

  const Reply unconfirmed = detail(QStringLiteral("8000007"));
  const auto& receipt = unconfirmed.sections[QStringLiteral("RECEIPT")];
  EXPECT_TRUE(receipt.isNullAt(0, receipt.fieldIndex(QStringLiteral("CNFRMTN_NBR"))));
  const Reply unknown = detail(QStringLiteral("1234"));
  EXPECT_EQ(rows(unknown, QStringLiteral("RECEIPT")), 0) << "an unknown receipt has empty sections";
  EXPECT_EQ(rows(unknown, QStringLiteral("OVERPAYMENT")), 0);
}

TEST_P(Receipts, BackingOutOnePaymentRestoresTheBalanceItPaid) {
  const Reply read = detail(QStringLiteral("8000001"));
  const int row = findRow(read, QStringLiteral("ACNTSRCVBL"), QStringLiteral("ACCT_RCVBL_NBR"), QStringLiteral("1000035"));
  const qint64 before = balanceOf(QStringLiteral("1000035"));
  const Reply reply = ok(adjustment(read, {}, QStringLiteral("Applied to the wrong form"), today())
                             .record(QStringLiteral("ACNTSRCVBL"), paymentRecord(read, row, QStringLiteral("B"), today())));
  const int after = findRow(reply, QStringLiteral("ACNTSRCVBL"), QStringLiteral("ACCT_RCVBL_NBR"), QStringLiteral("1000035"));
  EXPECT_EQ(cell(reply, QStringLiteral("ACNTSRCVBL"), after, QStringLiteral("ACTVTY_STTS_CD")), QStringLiteral("B"));
  EXPECT_EQ(cell(reply, QStringLiteral("ACNTSRCVBL"), after, QStringLiteral("ADJSTMT_DT")), today().toString(Qt::ISODate));
  EXPECT_EQ(balanceOf(QStringLiteral("1000035")), before + 5000);
  EXPECT_EQ(cell(reply, QStringLiteral("RECEIPT"), 0, QStringLiteral("RCPT_STTS_CD")), QStringLiteral("O"))
      << "one payment does not take the receipt with it";
  EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM ACCT_ACTVTY WHERE ACCT_ACTVTY_CD = 'PBO' AND ACTVTY_AMT = 5000")), 1);
  // The other payment is untouched.
  const int other = findRow(reply, QStringLiteral("ACNTSRCVBL"), QStringLiteral("ACCT_RCVBL_NBR"), QStringLiteral("1000011"));
  EXPECT_EQ(cell(reply, QStringLiteral("ACNTSRCVBL"), other, QStringLiteral("ACTVTY_STTS_CD")), QString());
}

TEST_P(Receipts, CancelingTheWholeReceiptTakesEveryPaymentInForceAndItsOpenExcess) {
  const Reply read = detail(QStringLiteral("8000002"));
  const qint64 before = balanceOf(QStringLiteral("1000028"));
  const Reply reply = ok(adjustment(read, QStringLiteral("C"), QStringLiteral("Entered twice"), today()));
  EXPECT_EQ(cell(reply, QStringLiteral("RECEIPT"), 0, QStringLiteral("RCPT_STTS_CD")), QStringLiteral("C"));
  EXPECT_EQ(cell(reply, QStringLiteral("ACNTSRCVBL"), 0, QStringLiteral("ACTVTY_STTS_CD")), QStringLiteral("C"));
  EXPECT_EQ(cell(reply, QStringLiteral("OVERPAYMENT"), 0, QStringLiteral("OVR_PYMT_STTS_CD")), QStringLiteral("C"));
  EXPECT_EQ(balanceOf(QStringLiteral("1000028")), before + 32500);
  EXPECT_EQ(value(QStringLiteral("SELECT ACCT_STTS_CD FROM ACCT_RCVBL WHERE ACCT_RCVBL_NBR = '1000028'")).toString(),
            QStringLiteral("U"))
      << "no longer paid in full";
  // A canceled receipt can not be adjusted again.
  EXPECT_EQ(send(adjustment(detail(QStringLiteral("8000002")), QStringLiteral("B"), QStringLiteral("x"), today())).error,
            QStringLiteral("Can not save a backed out or canceled receipt"));
}

TEST_P(Receipts, PaymentAdjustmentRulesAndRights) {
  const Reply read = detail(QStringLiteral("8000001"));
  const Fields payment = paymentRecord(read, 0, QStringLiteral("C"), today());
  const struct {
    const char* name;
    RequestBuilder request;
    const char16_t* expected;
  } cases[] = {
      {"future date", adjustment(read, QStringLiteral("C"), QStringLiteral("x"), today().addDays(1)),
       u"Date Adjusted must be today or a prior date"},
      {"before the payment", adjustment(read, QStringLiteral("C"), QStringLiteral("x"), today().addDays(-41)),
       u"Date Adjusted could not be earlier than payment date"},
      {"no comment", adjustment(read, QStringLiteral("C"), QStringLiteral(" "), today()), u"Comment is required"},
      {"nothing chosen", adjustment(read, {}, QStringLiteral("x"), today()),
       u"Please adjust the receipt or a payment against an account receivable"},
      {"receipt and payment", adjustment(read, QStringLiteral("B"), QStringLiteral("x"), today())
                                  .record(QStringLiteral("ACNTSRCVBL"), payment),
       u"Can not adjust the receipt and adjust a payment at the same time"},
      {"no right", adjustment(read, QStringLiteral("C"), QStringLiteral("x"), today(), demo::Clerk),
       u"does not hold the right ADJUSTRECEIPT"},
      {"cancel-only backing out", adjustment(read, QStringLiteral("B"), QStringLiteral("x"), today(), demo::CancelOnly),
       u"Your privileges do not include the BACKOUT option"},
      {"cancel-only single payment",
       adjustment(read, {}, QStringLiteral("x"), today(), demo::CancelOnly).record(QStringLiteral("ACNTSRCVBL"), payment),
       u"may only cancel whole receipts"},
      {"backed-out receipt", adjustment(detail(QStringLiteral("8000003")), QStringLiteral("C"), QStringLiteral("x"), today()),
       u"Can not save a backed out or canceled receipt"},
      {"excess being refunded", adjustment(detail(QStringLiteral("8000005")), QStringLiteral("C"), QStringLiteral("x"), today()),
       u"transferred or is being refunded"},
  };
  expectEachRefused(cases);
  // The cancel-only officer may cancel the whole receipt.
  ok(adjustment(read, QStringLiteral("C"), QStringLiteral("Duplicate receipt"), today(), demo::CancelOnly));
}

TEST_P(Receipts, APaymentAlreadyAdjustedOrChangedSinceReadIsRefused) {
  const Reply read = detail(QStringLiteral("8000001"));
  ok(adjustment(read, {}, QStringLiteral("First"), today())
         .record(QStringLiteral("ACNTSRCVBL"), paymentRecord(read, 0, QStringLiteral("B"), today())));
  // The screen still shows the receipt as it was.
  EXPECT_TRUE(send(adjustment(read, {}, QStringLiteral("Second"), today())
                       .record(QStringLiteral("ACNTSRCVBL"), paymentRecord(read, 1, QStringLiteral("B"), today())))
                  .error.contains(QStringLiteral("was changed by another user")));
  const Reply fresh = detail(QStringLiteral("8000001"));
  EXPECT_EQ(send(adjustment(fresh, {}, QStringLiteral("Again"), today())
                     .record(QStringLiteral("ACNTSRCVBL"), paymentRecord(fresh, 0, QStringLiteral("C"), today())))
                .error,
            QStringLiteral("Can not save a payment that has been backed out or canceled"));
  Fields tampered = paymentRecord(fresh, 1, QStringLiteral("B"), today());
  tampered[7].second = QStringLiteral("999.99");  // CL_PYMT_AMT
  EXPECT_TRUE(send(adjustment(fresh, {}, QStringLiteral("x"), today()).record(QStringLiteral("ACNTSRCVBL"), tampered))
                  .error.contains(QStringLiteral("does not match payment")));
}

// --- transfers -------------------------------------------------------------------------------------------------------

RequestBuilder transfer(const QString& receipt, const QList<std::pair<QString, QString>>& targets,
                        const QString& user = demo::Admin) {
  RequestBuilder request(77, user);
  request.param(QStringLiteral("key:OVRG_RCPT"), receipt);
  for (const auto& [number, amount] : targets) {
    request.record(QStringLiteral("TRANSFERPAY"), {{QStringLiteral("ACTION"), QStringLiteral("ADD")},
                                                   {QStringLiteral("RCPT_NBR"), receipt},
                                                   {QStringLiteral("ACCT_RCVBL_TYP_CD"), QStringLiteral("C")},
                                                   {QStringLiteral("ACCT_RCVBL_NBR"), number},
                                                   {QStringLiteral("TRNSFR_AMT"), amount}});
  }
  return request;
}

TEST_P(Receipts, ATransferPaysTheTargetsFromANewReceiptAndSplitsTheExcessItDraws) {
  // Receipt 8000005 has 75.00 and 15.00 open; 80.00 takes the first and 5.00 of the second.
  const qint64 before = balanceOf(QStringLiteral("1300003"));
  const Reply reply = ok(transfer(QStringLiteral("8000005"), {{QStringLiteral("1300003"), QStringLiteral("80.00")}}));
  EXPECT_EQ(balanceOf(QStringLiteral("1300003")), before - 8000);
  const QString destination =
      value(QStringLiteral("SELECT RCPT_NBR FROM RCPT WHERE SRC_RCPT_NBR = '8000005' AND RCPT_NBR <> '8000006'")).toString();
  ASSERT_FALSE(destination.isEmpty());
  EXPECT_EQ(value(QStringLiteral("SELECT TOT_PYMT_AMT FROM RCPT WHERE RCPT_NBR = ?"), {destination}).toLongLong(), 8000);
  EXPECT_EQ(value(QStringLiteral("SELECT CNFRMTN_NBR FROM RCPT WHERE RCPT_NBR = ?"), {destination}).toString(),
            QStringLiteral("CNF-54001"));
  EXPECT_EQ(count(QStringLiteral("SELECT SUM(OVR_PYMT_AMT) FROM OVR_PYMT WHERE RCPT_NBR = '8000005' AND "
                                 "OVR_PYMT_STTS_CD = 'T' AND DSTNTN_RCPT_NBR = ?"),
                  {destination}),
            8000);
  EXPECT_EQ(count(QStringLiteral("SELECT SUM(OVR_PYMT_AMT) FROM OVR_PYMT WHERE RCPT_NBR = '8000005' AND "
                                 "OVR_PYMT_STTS_CD = 'O'")),
            1000);
  EXPECT_EQ(count(QStringLiteral("SELECT SUM(OVR_PYMT_AMT) FROM OVR_PYMT WHERE RCPT_NBR = '8000005'")), 47500)
      << "splitting keeps the receipt's excess whole";
  EXPECT_EQ(cell(reply, QStringLiteral("RECEIPT"), 0, QStringLiteral("RCPT_NBR")), QStringLiteral("8000005"));
  EXPECT_GE(findRow(reply, QStringLiteral("OVERPAYMENT"), QStringLiteral("DSTNTN_RCPT_NBR"), destination), 0);
  EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM ACCT_ACTVTY WHERE ACCT_ACTVTY_CD = 'TRF'")), 1);
}

TEST_P(Receipts, ATransferNeverTakesMoreThanTheOpenExcessOrTheBalanceDue) {
  const struct {
    const char* name;
    RequestBuilder request;
    const char16_t* expected;
  } cases[] = {
      {"more than open", transfer(QStringLiteral("8000005"), {{QStringLiteral("1300003"), QStringLiteral("60.00")},
                                                              {QStringLiteral("1000011"), QStringLiteral("30.01")}}),
       u"more than the open excess of $90.00"},
      {"more than due", transfer(QStringLiteral("8000002"), {{QStringLiteral("1000011"), QStringLiteral("500.00")}}),
       u"more than the $497.50 due"},
      {"unconfirmed", transfer(QStringLiteral("8000007"), {{QStringLiteral("1300003"), QStringLiteral("1.00")}}),
       u"Excess Funds that are not Confirmed can not be Transferred"},
      {"voided target", transfer(QStringLiteral("8000002"), {{QStringLiteral("1200001"), QStringLiteral("1.00")}}),
       u"void, deleted or inactive"},
      {"no targets", transfer(QStringLiteral("8000002"), {}), u"no TRANSFERPAY records"},
      {"zero", transfer(QStringLiteral("8000002"), {{QStringLiteral("1000011"), QStringLiteral("0.00")}}),
       u"above $0.00"},
      {"cancel-only", transfer(QStringLiteral("8000002"), {{QStringLiteral("1000011"), QStringLiteral("1.00")}},
                               demo::CancelOnly),
       u"may only cancel whole receipts"},
      {"no right", transfer(QStringLiteral("8000002"), {{QStringLiteral("1000011"), QStringLiteral("1.00")}}, demo::Approver),
       u"does not hold the right ADJUSTRECEIPT"},
  };
  expectEachRefused(cases);
}

TEST_P(Receipts, RefundInformationNamesTheOwnerAndAnyWorksheetUnderWay) {
  const Reply fresh = ok(RequestBuilder(47)
                             .param(QStringLiteral("key:CUST_ID"), QStringLiteral("100001"))
                             .param(QStringLiteral("key:RCPT_NBR"), QStringLiteral("8000002")));
  const QString s = QStringLiteral("REFUND");
  EXPECT_EQ(cell(fresh, s, 0, QStringLiteral("CUST_NM")), QStringLiteral("SMITH TRUCKING LLC"));
  EXPECT_EQ(cell(fresh, s, 0, QStringLiteral("ADR_2_ADR")), QStringLiteral("SUITE 200"));
  EXPECT_EQ(cell(fresh, s, 0, QStringLiteral("STTS_CD")), QStringLiteral("0"));
  const auto& set = fresh.sections[s];
  EXPECT_TRUE(set.isNullAt(0, set.fieldIndex(QStringLiteral("RFND_NBR"))));
  const Reply underway = ok(RequestBuilder(47)
                                .param(QStringLiteral("key:CUST_ID"), QStringLiteral("100003"))
                                .param(QStringLiteral("key:RCPT_NBR"), QStringLiteral("8000005")));
  EXPECT_EQ(cell(underway, s, 0, QStringLiteral("RFND_NBR")), QStringLiteral("3000005"));
  EXPECT_EQ(cell(underway, s, 0, QStringLiteral("STTS_CD")), QStringLiteral("4"));
  EXPECT_FALSE(send(RequestBuilder(47)
                        .param(QStringLiteral("key:CUST_ID"), QStringLiteral("100002"))
                        .param(QStringLiteral("key:RCPT_NBR"), QStringLiteral("8000005")))
                   .error.isEmpty())
      << "no excess of that customer on that receipt";
}

INSTANTIATE_TEST_SUITE_P(Databases, Receipts, ::testing::Values(Backend::Sqlite, Backend::Postgres), backendName);

}  // namespace
}  // namespace adjustacc::host::testing
