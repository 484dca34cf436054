// The refund worksheet against the real host system on a demo database: Smith Trucking's open excess of
// $150.00 on receipt 8000002 carried by four officers from a new worksheet to mailed, another worksheet voided,
// and the host refusing what the screen would have stopped when the screen is bypassed.
#include "worksheetfixture.h"

#include "host/demodata.h"
#include "host/embeddedlink.h"
#include "messaging/requestmessage.h"

#include <QTemporaryDir>

namespace adjustacc::refunds::testing {
namespace {

using namespace Qt::Literals::StringLiterals;

const QDate kDemoDay(2024, 3, 7);  // the scripted clock's day

class WorkSheetWorkflow : public ::testing::Test {
public:
  WorkSheetWorkflow() : m_link({m_dir.path(), u"adjustacc.sqlite"_s, host::demo::Admin, kDemoDay}) {
    platform::modMessageTitle::setMessageTitle(u"Adjust Account"_s);
    for (const auto& [code, description] :
         {std::pair{u"1"_s, u"PREPARED"_s}, {u"2"_s, u"VERIFIED"_s}, {u"3"_s, u"APPROVED"_s}, {u"4"_s, u"REFUNDED"_s},
          {u"5"_s, u"MAILED"_s}, {u"T"_s, u"TRANSFERRED"_s}, {u"V"_s, u"VOIDED"_s}}) {
      m_set.codes.add(u"REFUNDTYP"_s, code, description);
    }
  }

  // Signs `officer` on, with the refund right, at the desktop and at the host.
  void signOn(const QString& officer) {
    m_set.user = platform::User(officer, officer, u"NE"_s, {u"CREATEREFUND"_s});
    m_link.setOfficerId(officer);
  }

  bool idle(W& s) {
    return testsupport::waitFor([&] { return m_link.pending() == 0 && s.SaveState().isEmpty(); }) &&
           testsupport::waitFor([&] { return m_set.ui.pointer() == platform::Pointer::Default; });
  }

  // Opens worksheet `number` of `customer` as the opener does for an existing one, and waits for it.
  std::unique_ptr<W> open(const QString& customer, const QString& status, const QString& number) {
    auto s = std::make_unique<W>(m_services);
    s->SetLoadedFromOutSide(true);
    s->LoadMe(customer, status, number, u"O"_s);
    s->setVisible(true);
    EXPECT_TRUE(idle(*s));
    EXPECT_EQ(m_set.ui.boxCount(), 0) << m_set.ui.lastBox().text.toStdString();
    return s;
  }

  // Saves the step and waits for the host's answer; no box may come.
  void save(W& s, int button = W::SaveButton) {
    ASSERT_TRUE(s.mCmdButton[button].click());
    ASSERT_TRUE(idle(s));
    ASSERT_EQ(m_set.ui.boxCount(), 0) << m_set.ui.lastBox().text.toStdString();
  }

  // The host's answer to a request sent as `officer`, past every check of the screen.
  messaging::Reply direct(const QString& officer, const messaging::Request& request) {
    m_link.setOfficerId(officer);
    messaging::RequestMessage message(&m_link);
    message.setReplyTo(request.replyTo);
    message.setVersion(u"1.0"_s);
    message.setRequestCode(request.code);
    message.setUser(officer);
    for (const messaging::RequestParameter& parameter : request.params) {
      message.addParameter(parameter);
    }
    for (const messaging::RecordList& list : request.records) {
      for (const messaging::SaveRecord& record : list.records) {
        message.addRecord(list.name) = record;
      }
    }
    std::optional<messaging::Reply> answered;
    QObject::connect(&message, &messaging::RequestMessage::DataReady, &message,
                     [&](const QString&, const messaging::Reply& reply) { answered = reply; });
    message.send();
    EXPECT_TRUE(testsupport::waitFor([&] { return answered.has_value(); }));
    return answered.value_or(messaging::Reply{});
  }

  // A step save of a demo worksheet as the screen would build it.
  static messaging::Request stepRequest(const QString& number, const QList<std::pair<QString, QString>>& fields) {
    messaging::Request request;
    request.replyTo = u"WorkSheet0"_s;
    request.code = messaging::requestcodes::RefundWorksheetSave;
    messaging::RecordList list{messaging::saverecords::Refund, {}};
    messaging::SaveRecord record;
    record.setField(u"ACTION"_s, u"UPD"_s);
    record.setField(u"CUST_ID"_s, u"100003"_s);
    record.setField(u"RFND_NBR"_s, number);
    record.setField(u"RCPT_NBR"_s, u"8000005"_s);
    for (const auto& [field, value] : fields) {
      record.setField(field, value);
    }
    list.records.append(record);
    request.records.append(list);
    return request;
  }

  QTemporaryDir m_dir;
  testsupport::ServiceSet m_set;
  host::EmbeddedLink m_link;
  platform::Services m_services{m_set.ui,          m_link,         m_set.clock,       m_set.user,
                                m_set.session,     m_set.statusBar, m_set.errors,     m_set.codes,
                                m_set.codeTables,  m_set.keyFilters, m_set.checkDigit, m_set.formNumbers,
                                m_set.troopDistricts, m_set.numbers, m_set.fieldMarking, m_set.printing,
                                m_set.templates};

  // The row version of a demo worksheet as the host now holds it, through the worksheet inquiry.
  QString lastVersionOf(const QString& number) {
    messaging::Request inquiry;
    inquiry.replyTo = u"WorkSheet0"_s;
    inquiry.code = messaging::requestcodes::RefundWorksheet;
    inquiry.params = {{u"MARVENTO"_s, u"key:CUST_ID"_s, u"="_s, u"100003"_s},
                      {u"MARVENTO"_s, u"key:REFUND_NBR"_s, u"="_s, number}};
    const messaging::Reply reply = direct(host::demo::Admin, inquiry);
    const messaging::RecordSet* rows = reply.section(messaging::sectionnames::Refund);
    return rows && rows->recordCount() > 0 ? rows->valueAt(0, u"ROW_VRSN_NBR"_s).toString() : QString();
  }
};

TEST_F(WorkSheetWorkflow, FourOfficersCarryANewRefundFromPreparedToMailed) {
  // Prepared by the officer who creates the refund from the receipt's excess.
  signOn(host::demo::Admin);
  W prepared(m_services);
  prepared.setCustomerID(u"100001"_s);
  prepared.mLblData[W::NameLabel].setCaption(u"SMITH TRUCKING LLC"_s);
  prepared.mLblData[W::RefundAmountLabel].setCaption(u"$150.00"_s);
  prepared.mLblData[W::ReceiptNumberLabel].setCaption(u"8000002"_s);
  prepared.setVisible(true);
  ASSERT_TRUE(testsupport::waitFor([&] { return !prepared.NumberPending(); }));
  const QString number = prepared.mLblData[W::RefundNumberLabel].caption();
  ASSERT_NE(number.toLongLong(), 0) << number.toStdString();
  prepared.mRdo[W::ToTaxpayer].setValue(true);
  prepared.mTxtRefund[W::HeadquartersComment].setText(u"Overpaid at the counter;\r\nrefund requested by phone"_s);
  save(prepared);
  EXPECT_TRUE(prepared.GetSavedVoidedFlag());
  EXPECT_TRUE(prepared.AccountChanged());
  EXPECT_EQ(prepared.RefundNumber(), u"");  // completed: the receipt screen reads the receipt again
  EXPECT_TRUE(prepared.mCmdButton[W::PrintButton].isEnabled());

  // Verified, approved and refunded, each by the next officer.
  signOn(host::demo::Verifier);
  std::unique_ptr<W> s = open(u"100001"_s, u"1"_s, number);
  EXPECT_EQ(s->mLblData[W::StatusLabel].caption(), u"PREPARED");
  EXPECT_EQ(s->mLblData[W::PreparedByLabel].caption(), host::demo::Admin);
  EXPECT_EQ(s->mLblData[W::RefundAmountLabel].caption(), u"$150.00");
  EXPECT_EQ(s->mTxtRefund[W::HeadquartersComment].text(), u"Overpaid at the counter;\r\nrefund requested by phone");
  save(*s);
  EXPECT_EQ(s->mLblData[W::StatusLabel].caption(), u"VERIFIED");
  EXPECT_FALSE(s->mCmdButton[W::SaveButton].isEnabled());  // one step per opening

  signOn(host::demo::Approver);
  s = open(u"100001"_s, u"2"_s, number);
  save(*s);
  EXPECT_EQ(s->mLblData[W::ApprovedByLabel].caption(), host::demo::Approver);

  signOn(host::demo::Fiscal);
  s = open(u"100001"_s, u"3"_s, number);
  ASSERT_TRUE(s->mFraRefund.isVisible());
  s->mRdo[W::Refunded].setValue(true);
  s->mTxt[W::WarrantNumberBox].setText(u"W-2024-0311"_s);
  s->QORVA_DTP1[W::RefundDatePicker].setDate(kDemoDay);
  save(*s);
  EXPECT_EQ(s->mLblData[W::StatusLabel].caption(), u"REFUNDED");

  s = open(u"100001"_s, u"4"_s, number);
  ASSERT_TRUE(s->QORVA_DTP1[W::DateMailedPicker].isEffectivelyEnabled());
  s->QORVA_DTP1[W::DateMailedPicker].setDate(kDemoDay);
  save(*s);
  EXPECT_EQ(s->mLblData[W::StatusLabel].caption(), u"MAILED");

  // As the host now holds it, each step under its officer.
  s = open(u"100001"_s, u"5"_s, number);
  EXPECT_EQ(s->mLblData[W::PreparedByLabel].caption(), host::demo::Admin);
  EXPECT_EQ(s->mLblData[W::VerifiedByLabel].caption(), host::demo::Verifier);
  EXPECT_EQ(s->mLblData[W::ApprovedByLabel].caption(), host::demo::Approver);
  EXPECT_EQ(s->mLblData[W::RefundByLabel].caption(), host::demo::Fiscal);
  EXPECT_EQ(s->mTxt[W::WarrantNumberBox].text(), u"W-2024-0311");
  EXPECT_EQ(s->QORVA_DTP1[W::DateMailedPicker].date(), kDemoDay);
  EXPECT_FALSE(s->mCmdButton[W::SaveButton].isEnabled());
  EXPECT_FALSE(s->mCmdButton[W::VoidButton].isEnabled());
  EXPECT_TRUE(s->mCmdButton[W::PrintButton].isEnabled());
}

TEST_F(WorkSheetWorkflow, AVerifiedWorksheetIsVoidedAndTheScreenSaysSo) {
  signOn(host::demo::Approver);
  std::unique_ptr<W> s = open(u"100003"_s, u"2"_s, u"3000003"_s);
  save(*s, W::VoidButton);
  EXPECT_EQ(s->mLblData[W::StatusLabel].caption(), u"VOIDED");
  EXPECT_TRUE(s->GetSavedVoidedFlag());
  s = open(u"100003"_s, u"V"_s, u"3000003"_s);
  EXPECT_EQ(s->mLblData[W::StatusLabel].caption(), u"VOIDED");
}

TEST_F(WorkSheetWorkflow, TheHostRefusesAStepTheSameOfficerTookBeforeEvenWithoutTheScreensCheck) {
  // The screen would stop this itself; the host must not depend on it.
  signOn(host::demo::Admin);
  std::unique_ptr<W> s = open(u"100003"_s, u"1"_s, u"3000002"_s);  // prepared by ADMIN01
  s->mLblData[W::PreparedByLabel].setCaption(u"someone else"_s);
  ASSERT_TRUE(s->mCmdButton[W::SaveButton].click());
  ASSERT_TRUE(idle(*s));
  EXPECT_TRUE(m_set.ui.lastBox().text.contains(
      u"The person preparing and verifying the Refund Worksheet can not be the same."_s))
      << m_set.ui.lastBox().text.toStdString();
  EXPECT_EQ(m_set.statusBar.text(), u"Search was not successful");
  EXPECT_EQ(s->SaveState(), u"");
}

struct Refusal {
  const char* name;
  const char* officer;
  const char* number;
  QList<std::pair<QString, QString>> fields;
  const char* expected;
};

class WorkSheetHostRefusals : public WorkSheetWorkflow, public ::testing::WithParamInterface<Refusal> {};

TEST_P(WorkSheetHostRefusals, NameTheRuleBroken) {
  const Refusal& r = GetParam();
  const QString number = QString::fromLatin1(r.number);
  QList<std::pair<QString, QString>> fields = r.fields;
  fields.append({u"ROW_VRSN_NBR"_s, lastVersionOf(number)});
  const messaging::Reply reply = direct(QString::fromLatin1(r.officer), stepRequest(number, fields));
  EXPECT_TRUE(reply.error.contains(QString::fromUtf8(r.expected))) << reply.error.toStdString();
  EXPECT_TRUE(reply.sections.isEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    BypassingTheScreen, WorkSheetHostRefusals,
    ::testing::Values(
        Refusal{"OutOfOrder", "APPROVE01", "3000002", {{u"STTS_CD"_s, u"3"_s}, {u"APPROVE_ID"_s, u"APPROVE01"_s}},
                "is PREPARED; it can not be moved to APPROVED"},
        Refusal{"VerifierApproves", "VERIFY01", "3000003", {{u"STTS_CD"_s, u"3"_s}, {u"APPROVE_ID"_s, u"VERIFY01"_s}},
                "The person verifying and approving the Refund Worksheet can not be the same."},
        Refusal{"WithoutTheRight", "CLERK01", "3000002", {{u"STTS_CD"_s, u"2"_s}, {u"VERIFY_ID"_s, u"CLERK01"_s}},
                "CREATEREFUND"},
        Refusal{"VoidAfterTheEnd", "VERIFY01", "3000006", {{u"STTS_CD"_s, u"V"_s}, {u"VOID_ID"_s, u"VERIFY01"_s}},
                "The following transaction can not be voided or saved"},
        Refusal{"VoidAfterTheRefund", "VERIFY01", "3000005", {{u"STTS_CD"_s, u"V"_s}, {u"VOID_ID"_s, u"VERIFY01"_s}},
                "The following transaction can not be voided or saved"}),
    [](const ::testing::TestParamInfo<Refusal>& row) { return std::string(row.param.name); });

TEST_F(WorkSheetWorkflow, TheHostRefusesARefundAboveTheExcessItComesFrom) {
  signOn(host::demo::Admin);
  W s(m_services);
  s.setCustomerID(u"100001"_s);
  s.mLblData[W::RefundAmountLabel].setCaption(u"$1,150.00"_s);  // the excess is $150.00
  s.mLblData[W::ReceiptNumberLabel].setCaption(u"8000002"_s);
  s.setVisible(true);
  ASSERT_TRUE(testsupport::waitFor([&] { return !s.NumberPending(); }));
  s.mRdo[W::ToTaxpayer].setValue(true);
  s.mTxtRefund[W::HeadquartersComment].setText(u"Refund"_s);
  ASSERT_TRUE(s.mCmdButton[W::SaveButton].click());
  ASSERT_TRUE(idle(s));
  EXPECT_TRUE(m_set.ui.lastBox().text.contains(u"$1,150.00 is more than the open excess of $150.00 on receipt 8000002"_s))
      << m_set.ui.lastBox().text.toStdString();
  EXPECT_EQ(s.StepCode(), u"0");  // back to new: the officer may correct and save again
  EXPECT_FALSE(s.AccountChanged());
}

}  // namespace
}  // namespace adjustacc::refunds::testing
