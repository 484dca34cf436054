// Receipts: the receipt detail, payment adjustments, transfers of excess funds and refund information.
#include "hostfixture.h"

namespace adjustacc::host::testing {
namespace {

using namespace Qt::Literals::StringLiterals;

using messaging::Reply;

class Receipts : public HostTest {
protected:
  Reply detail(const QString& receipt, const QString& user = demo::Admin) {
    return ok(RequestBuilder(47, user).param(u"key:RECEIPT_NBR"_s, receipt).param(u"key:RECEIPT_DETL"_s, u"YES"_s));
  }

  RequestBuilder adjustment(const Reply& read, const QString& receiptAction, const QString& comment, const QDate& day,
                            const QString& user = demo::Admin) {
    const QString receipt = cell(read, u"RECEIPT"_s, 0, u"RCPT_NBR"_s);
    RequestBuilder request(47, user);
    request.param(u"key:RECEIPT_NBR"_s, receipt)
        .param(u"key:RECEIPT_DETL"_s, u"YES"_s)
        .record(u"ADJUSTPAY"_s, {{u"ACTION"_s, u"ADD"_s},
                                 {u"ADJSTMT_DT"_s, day.toString(Qt::ISODate)},
                                 {u"ADJSTMT_CMMT_TXT"_s, comment},
                                 {u"ADJSTMT_TYP_CD"_s, receiptAction.isEmpty() ? QVariant() : QVariant(receiptAction)},
                                 {u"RCPT_NBR"_s, receipt},
                                 {u"ROW_VRSN_NBR"_s, cell(read, u"RECEIPT"_s, 0, u"ROW_VRSN_NBR"_s)}});
    return request;
  }

  // The ACNTSRCVBL record of a payment row, as the receipt screen builds it.
  static Fields paymentRecord(const Reply& read, int row, const QString& action, const QDate& day) {
    const QString s = u"ACNTSRCVBL"_s;
    Fields record = {
        {u"ACTION"_s, u"UPD"_s}, {u"ADJST_ACTION"_s, action}, {u"ADJSTMT_DT"_s, day.toString(Qt::ISODate)}};
    for (const char* field : {"CUST_ID", "ACCT_RCVBL_TYP_CD", "ACCT_RCVBL_NBR", "ACCT_RCVBL_CK_NBR", "CL_PYMT_AMT",
                              "TRNSCTN_DT", "TRNSCTN_NBR", "ROW_VRSN_NBR"}) {
      record.append({QString::fromLatin1(field), cell(read, s, row, QString::fromLatin1(field))});
    }
    return record;
  }

  qint64 balanceOf(const QString& number) {
    return value(u"SELECT ACCT_RCVBL_BAL_AMT FROM ACCT_RCVBL WHERE ACCT_RCVBL_NBR = ?"_s, {number}).toLongLong();
  }
};

TEST_P(Receipts, TheDetailCarriesTheReceiptItsFundsPaymentsAndExcessFunds) {
  const Reply reply = detail(u"8000002"_s);
  EXPECT_EQ(cell(reply, u"RECEIPT"_s, 0, u"CNFRMTN_NBR"_s), u"CNF-55230"_s);
  EXPECT_EQ(cell(reply, u"RECEIPT"_s, 0, u"OVR_PYMT_AMT"_s), u"150.00"_s);
  ASSERT_EQ(rows(reply, u"FUND"_s), 1);
  EXPECT_EQ(cell(reply, u"FUND"_s, 0, u"FUND_TYP_CD"_s), u"R"_s);
  EXPECT_EQ(cell(reply, u"FUND"_s, 0, u"EXPRTN_DY_DT"_s), u"31"_s);
  EXPECT_EQ(cell(reply, u"FUND"_s, 0, u"FRCPT_NBR"_s), u"8000002"_s);
  ASSERT_EQ(rows(reply, u"ACNTSRCVBL"_s), 1);
  const auto& payments = reply.sections[u"ACNTSRCVBL"_s];
  EXPECT_TRUE(payments.hasField(u"CL_PYMT_AMT"_s)) << "the payments layout, not the account list's";
  EXPECT_EQ(cell(reply, u"ACNTSRCVBL"_s, 0, u"CL_PYMT_AMT"_s), u"325.00"_s);
  EXPECT_TRUE(payments.isNullAt(0, payments.fieldIndex(u"ACTVTY_STTS_CD"_s))) << "in force";
  ASSERT_EQ(rows(reply, u"OVERPAYMENT"_s), 1);
  EXPECT_EQ(cell(reply, u"OVERPAYMENT"_s, 0, u"OVR_PYMT_STTS_CD"_s), u"O"_s);
  EXPECT_EQ(cell(reply, u"OVERPAYMENT"_s, 0, u"DSTNTN_RCPT_NBR"_s), u"0"_s);
  EXPECT_EQ(cell(reply, u"OVERPAYMENT"_s, 0, u"ZIP"_s), u"12205"_s);

  const Reply unconfirmed = detail(u"8000007"_s);
  const auto& receipt = unconfirmed.sections[u"RECEIPT"_s];
  EXPECT_TRUE(receipt.isNullAt(0, receipt.fieldIndex(u"CNFRMTN_NBR"_s)));
  const Reply unknown = detail(u"1234"_s);
  EXPECT_EQ(rows(unknown, u"RECEIPT"_s), 0) << "an unknown receipt has empty sections";
  EXPECT_EQ(rows(unknown, u"OVERPAYMENT"_s), 0);
}

TEST_P(Receipts, BackingOutOnePaymentRestoresTheBalanceItPaid) {
  const Reply read = detail(u"8000001"_s);
  const int row = findRow(read, u"ACNTSRCVBL"_s, u"ACCT_RCVBL_NBR"_s, u"1000035"_s);
  const qint64 before = balanceOf(u"1000035"_s);
  const Reply reply = ok(adjustment(read, {}, u"Applied to the wrong form"_s, today())
                             .record(u"ACNTSRCVBL"_s, paymentRecord(read, row, u"B"_s, today())));
  const int after = findRow(reply, u"ACNTSRCVBL"_s, u"ACCT_RCVBL_NBR"_s, u"1000035"_s);
  EXPECT_EQ(cell(reply, u"ACNTSRCVBL"_s, after, u"ACTVTY_STTS_CD"_s), u"B"_s);
  EXPECT_EQ(cell(reply, u"ACNTSRCVBL"_s, after, u"ADJSTMT_DT"_s), today().toString(Qt::ISODate));
  EXPECT_EQ(balanceOf(u"1000035"_s), before + 5000);
  EXPECT_EQ(cell(reply, u"RECEIPT"_s, 0, u"RCPT_STTS_CD"_s), u"O"_s) << "one payment does not take the receipt with it";
  EXPECT_EQ(count(u"SELECT COUNT(*) FROM ACCT_ACTVTY WHERE ACCT_ACTVTY_CD = 'PBO' AND ACTVTY_AMT = 5000"_s), 1);
  // The other payment is untouched.
  const int other = findRow(reply, u"ACNTSRCVBL"_s, u"ACCT_RCVBL_NBR"_s, u"1000011"_s);
  EXPECT_EQ(cell(reply, u"ACNTSRCVBL"_s, other, u"ACTVTY_STTS_CD"_s), QString());
}

TEST_P(Receipts, CancelingTheWholeReceiptTakesEveryPaymentInForceAndItsOpenExcess) {
  const Reply read = detail(u"8000002"_s);
  const qint64 before = balanceOf(u"1000028"_s);
  const Reply reply = ok(adjustment(read, u"C"_s, u"Entered twice"_s, today()));
  EXPECT_EQ(cell(reply, u"RECEIPT"_s, 0, u"RCPT_STTS_CD"_s), u"C"_s);
  EXPECT_EQ(cell(reply, u"ACNTSRCVBL"_s, 0, u"ACTVTY_STTS_CD"_s), u"C"_s);
  EXPECT_EQ(cell(reply, u"OVERPAYMENT"_s, 0, u"OVR_PYMT_STTS_CD"_s), u"C"_s);
  EXPECT_EQ(balanceOf(u"1000028"_s), before + 32500);
  EXPECT_EQ(value(u"SELECT ACCT_STTS_CD FROM ACCT_RCVBL WHERE ACCT_RCVBL_NBR = '1000028'"_s).toString(), u"U"_s)
      << "no longer paid in full";
  // A canceled receipt can not be adjusted again.
  EXPECT_EQ(send(adjustment(detail(u"8000002"_s), u"B"_s, u"x"_s, today())).error,
            u"Can not save a backed out or canceled receipt"_s);
}

TEST_P(Receipts, PaymentAdjustmentRulesAndRights) {
  const Reply read = detail(u"8000001"_s);
  const Fields payment = paymentRecord(read, 0, u"C"_s, today());
  const struct {
    const char* name;
    RequestBuilder request;
    const char16_t* expected;
  } cases[] = {
      {"future date", adjustment(read, u"C"_s, u"x"_s, today().addDays(1)),
       u"Date Adjusted must be today or a prior date"},
      {"before the payment", adjustment(read, u"C"_s, u"x"_s, today().addDays(-41)),
       u"Date Adjusted could not be earlier than payment date"},
      {"no comment", adjustment(read, u"C"_s, u" "_s, today()), u"Comment is required"},
      {"nothing chosen", adjustment(read, {}, u"x"_s, today()),
       u"Please adjust the receipt or a payment against an account receivable"},
      {"receipt and payment", adjustment(read, u"B"_s, u"x"_s, today()).record(u"ACNTSRCVBL"_s, payment),
       u"Can not adjust the receipt and adjust a payment at the same time"},
      {"no right", adjustment(read, u"C"_s, u"x"_s, today(), demo::Clerk), u"does not hold the right ADJUSTRECEIPT"},
      {"cancel-only backing out", adjustment(read, u"B"_s, u"x"_s, today(), demo::CancelOnly),
       u"Your privileges do not include the BACKOUT option"},
      {"cancel-only single payment",
       adjustment(read, {}, u"x"_s, today(), demo::CancelOnly).record(u"ACNTSRCVBL"_s, payment),
       u"may only cancel whole receipts"},
      {"backed-out receipt", adjustment(detail(u"8000003"_s), u"C"_s, u"x"_s, today()),
       u"Can not save a backed out or canceled receipt"},
      {"excess being refunded", adjustment(detail(u"8000005"_s), u"C"_s, u"x"_s, today()),
       u"transferred or is being refunded"},
  };
  expectEachRefused(cases);
  // The cancel-only officer may cancel the whole receipt.
  ok(adjustment(read, u"C"_s, u"Duplicate receipt"_s, today(), demo::CancelOnly));
}

TEST_P(Receipts, APaymentAlreadyAdjustedOrChangedSinceReadIsRefused) {
  const Reply read = detail(u"8000001"_s);
  ok(adjustment(read, {}, u"First"_s, today()).record(u"ACNTSRCVBL"_s, paymentRecord(read, 0, u"B"_s, today())));
  // The screen still shows the receipt as it was.
  EXPECT_TRUE(
      send(adjustment(read, {}, u"Second"_s, today()).record(u"ACNTSRCVBL"_s, paymentRecord(read, 1, u"B"_s, today())))
          .error.contains(u"was changed by another user"_s));
  const Reply fresh = detail(u"8000001"_s);
  EXPECT_EQ(
      send(adjustment(fresh, {}, u"Again"_s, today()).record(u"ACNTSRCVBL"_s, paymentRecord(fresh, 0, u"C"_s, today())))
          .error,
      u"Can not save a payment that has been backed out or canceled"_s);
  Fields tampered = paymentRecord(fresh, 1, u"B"_s, today());
  tampered[7].second = u"999.99"_s;  // CL_PYMT_AMT
  EXPECT_TRUE(send(adjustment(fresh, {}, u"x"_s, today()).record(u"ACNTSRCVBL"_s, tampered))
                  .error.contains(u"does not match payment"_s));
}

// --- transfers -------------------------------------------------------------------------------------------------------

RequestBuilder transfer(const QString& receipt, const QList<std::pair<QString, QString>>& targets,
                        const QString& user = demo::Admin) {
  RequestBuilder request(77, user);
  request.param(u"key:OVRG_RCPT"_s, receipt);
  for (const auto& [number, amount] : targets) {
    request.record(u"TRANSFERPAY"_s, {{u"ACTION"_s, u"ADD"_s},
                                      {u"RCPT_NBR"_s, receipt},
                                      {u"ACCT_RCVBL_TYP_CD"_s, u"C"_s},
                                      {u"ACCT_RCVBL_NBR"_s, number},
                                      {u"TRNSFR_AMT"_s, amount}});
  }
  return request;
}

TEST_P(Receipts, ATransferPaysTheTargetsFromANewReceiptAndSplitsTheExcessItDraws) {
  // Receipt 8000005 has 75.00 and 15.00 open; 80.00 takes the first and 5.00 of the second.
  const qint64 before = balanceOf(u"1300003"_s);
  const Reply reply = ok(transfer(u"8000005"_s, {{u"1300003"_s, u"80.00"_s}}));
  EXPECT_EQ(balanceOf(u"1300003"_s), before - 8000);
  const QString destination =
      value(u"SELECT RCPT_NBR FROM RCPT WHERE SRC_RCPT_NBR = '8000005' AND RCPT_NBR <> '8000006'"_s).toString();
  ASSERT_FALSE(destination.isEmpty());
  EXPECT_EQ(value(u"SELECT TOT_PYMT_AMT FROM RCPT WHERE RCPT_NBR = ?"_s, {destination}).toLongLong(), 8000);
  EXPECT_EQ(value(u"SELECT CNFRMTN_NBR FROM RCPT WHERE RCPT_NBR = ?"_s, {destination}).toString(), u"CNF-54001"_s);
  EXPECT_EQ(count(QStringLiteral("SELECT SUM(OVR_PYMT_AMT) FROM OVR_PYMT WHERE RCPT_NBR = '8000005' AND "
                                 "OVR_PYMT_STTS_CD = 'T' AND DSTNTN_RCPT_NBR = ?"),
                  {destination}),
            8000);
  EXPECT_EQ(count(QStringLiteral("SELECT SUM(OVR_PYMT_AMT) FROM OVR_PYMT WHERE RCPT_NBR = '8000005' AND "
                                 "OVR_PYMT_STTS_CD = 'O'")),
            1000);
  EXPECT_EQ(count(u"SELECT SUM(OVR_PYMT_AMT) FROM OVR_PYMT WHERE RCPT_NBR = '8000005'"_s), 47500)
      << "splitting keeps the receipt's excess whole";
  EXPECT_EQ(cell(reply, u"RECEIPT"_s, 0, u"RCPT_NBR"_s), u"8000005"_s);
  EXPECT_GE(findRow(reply, u"OVERPAYMENT"_s, u"DSTNTN_RCPT_NBR"_s, destination), 0);
  EXPECT_EQ(count(u"SELECT COUNT(*) FROM ACCT_ACTVTY WHERE ACCT_ACTVTY_CD = 'TRF'"_s), 1);
}

TEST_P(Receipts, ATransferNeverTakesMoreThanTheOpenExcessOrTheBalanceDue) {
  const struct {
    const char* name;
    RequestBuilder request;
    const char16_t* expected;
  } cases[] = {
      {"more than open", transfer(u"8000005"_s, {{u"1300003"_s, u"60.00"_s}, {u"1000011"_s, u"30.01"_s}}),
       u"more than the open excess of $90.00"},
      {"more than due", transfer(u"8000002"_s, {{u"1000011"_s, u"500.00"_s}}), u"more than the $497.50 due"},
      {"unconfirmed", transfer(u"8000007"_s, {{u"1300003"_s, u"1.00"_s}}),
       u"Excess Funds that are not Confirmed can not be Transferred"},
      {"voided target", transfer(u"8000002"_s, {{u"1200001"_s, u"1.00"_s}}), u"void, deleted or inactive"},
      {"no targets", transfer(u"8000002"_s, {}), u"no TRANSFERPAY records"},
      {"zero", transfer(u"8000002"_s, {{u"1000011"_s, u"0.00"_s}}), u"above $0.00"},
      {"cancel-only", transfer(u"8000002"_s, {{u"1000011"_s, u"1.00"_s}}, demo::CancelOnly),
       u"may only cancel whole receipts"},
      {"no right", transfer(u"8000002"_s, {{u"1000011"_s, u"1.00"_s}}, demo::Approver),
       u"does not hold the right ADJUSTRECEIPT"},
  };
  expectEachRefused(cases);
}

TEST_P(Receipts, RefundInformationNamesTheOwnerAndAnyWorksheetUnderWay) {
  const auto refund = [this](const QString& customer, const QString& receipt) {
    return send(RequestBuilder(47).param(u"key:CUST_ID"_s, customer).param(u"key:RCPT_NBR"_s, receipt));
  };
  const Reply fresh = refund(u"100001"_s, u"8000002"_s);
  const QString s = u"REFUND"_s;
  EXPECT_EQ(cell(fresh, s, 0, u"CUST_NM"_s), u"SMITH TRUCKING LLC"_s);
  EXPECT_EQ(cell(fresh, s, 0, u"ADR_2_ADR"_s), u"SUITE 200"_s);
  EXPECT_EQ(cell(fresh, s, 0, u"STTS_CD"_s), u"0"_s);
  const auto& set = fresh.sections[s];
  EXPECT_TRUE(set.isNullAt(0, set.fieldIndex(u"RFND_NBR"_s)));
  const Reply underway = refund(u"100003"_s, u"8000005"_s);
  EXPECT_EQ(cell(underway, s, 0, u"RFND_NBR"_s), u"3000005"_s);
  EXPECT_EQ(cell(underway, s, 0, u"STTS_CD"_s), u"4"_s);
  EXPECT_FALSE(refund(u"100002"_s, u"8000005"_s).error.isEmpty())
      << "no excess of that customer on that receipt";
}

INSTANTIATE_TEST_SUITE_P(Databases, Receipts, ::testing::Values(Backend::Sqlite, Backend::Postgres), backendName);

}  // namespace
}  // namespace adjustacc::host::testing
