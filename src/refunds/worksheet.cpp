#include "worksheet.h"

#include "messaging/protocolwords.h"
#include "messaging/recordsetbuilder.h"
#include "messaging/replychecker.h"
#include "messaging/requestmessage.h"
#include "platform/clock.h"
#include "platform/codelookup.h"
#include "platform/currency.h"
#include "platform/datetimes.h"
#include "platform/errortrap.h"
#include "platform/fieldmarking.h"
#include "platform/modmessagetitle.h"
#include "platform/printing.h"
#include "platform/services.h"
#include "platform/statusbar.h"
#include "platform/ui.h"
#include "platform/user.h"
#include "screencore/procedure.h"
#include "screencore/screenrequest.h"

#include <QDomDocument>
#include <QRegularExpression>

#include <atomic>

namespace adjustacc::refunds {

using platform::AppError;
using platform::raise;
using platform::trap;
using screencore::marventoParameter;
namespace title = platform::modMessageTitle;
namespace words = messaging;

namespace {

const QString kLineBreak = QStringLiteral("\r\n");
const QDate kEarliestDate(1993, 1, 1);
const QString kRefundTypes = QStringLiteral("REFUNDTYP");
// The number type of refund numbers at the host's number generator.
const QString kRefundNumberType = QStringLiteral("F");
const QString kCannotGenerateNumber =
    QStringLiteral("System could not generate refund number right now.\r\nPlease try again later.");
const QString kMissingTemplate =
    QStringLiteral("No template file is available for print. Contact your system administrator.");

int nextInstance() {
  static std::atomic<int> instances{0};
  return ++instances;
}

QString wireDay(const QDate& day) { return day.toString(QStringLiteral("yyyy-MM-dd")); }

// The form the date rules compare: month first, two-digit year last, as text.
QString ruleText(const QDate& day) { return day.toString(QStringLiteral("MM-dd-yy")); }

// Comments travel with bare LF or CR LF line ends; the boxes show CR LF.
QString withCrLf(QString text) {
  text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
  text.replace(u'\n', QStringLiteral("\r\n"));
  return text;
}

// The reply fields that say who took each step (the id the officer label shows, the name) and when.
struct StepFields {
  const char* id;
  const char* name;
  const char* time;
};
constexpr StepFields kStepFields[QORVA_WorkSheet::StepCount] = {
    {"CREATOR_ID", "CREATOR_NM", "CREATED_TS"}, {"VERIFY_ID", "VERIFY_NM", "VERIFY_TS"},
    {"APPROVE_ID", "APPROVE_NM", "APPROVE_TS"}, {"RFND_BY_ID", "RFND_BY_NM", "RFND_BY_TS"},
    {"MAILED_BY_ID", "MAILED_BY_NM", "MAILED_TS"}, {"VOID_ID", "VOID_NM", "VOID_TS"},
};

// The host writes its step times in UTC, "yyyy-mm-dd HH:MM:SS"; invalid for null or unreadable text.
QDateTime hostMoment(const QVariant& value) {
  if (value.isNull()) {
    return {};
  }
  const messaging::Result<QDateTime> read = platform::parseTimestamp(value.toString().trimmed());
  if (!read) {
    return {};
  }
  return QDateTime(read.value().date(), read.value().time(), Qt::UTC);
}

}  // namespace

QORVA_WorkSheet::QORVA_WorkSheet(platform::Services& services, QObject* parent)
    : ModalScreen(services, kFormName, kCaption, parent),
      m_watch(services,
              {.pendingSave = [this](bool enable) { PendingSave(enable); },
               .initializeData = {},
               .assumeApplied = {},
               .updateTimeout =
                   [this] {
                     if (m_numberPending && !m_watch.isPending()) {
                       // It was the new refund number that did not come, not a save (a pending save owns
                       // every answer: it was sent after the number request and replaced it).
                       m_services.ui.messageBox(kCannotGenerateNumber, platform::MsgButtons::Ok,
                                                platform::MsgIcon::Critical, title::messageTitle());
                       m_numberPending = false;
                     } else {
                       UpdateTimeout();
                     }
                   }}),
      m_instance(nextInstance()) {
  for (int index = RefundNumberLabel; index <= ReceiptNumberLabel; ++index) {
    mLblData.add(index);
  }
  mLblData[ReceiptNumberLabel].setVisible(false);
  QORVA_DTP1.add(RefundDatePicker);
  QORVA_DTP1.add(DateMailedPicker);
  mTxtRefund.add(HeadquartersComment).setMultiLine(true);
  mTxtRefund.add(FiscalComment).setMultiLine(true);
  mTxt.add(WarrantNumberBox);
  mRdo.add(ToTaxpayer, QStringLiteral("To Taxpayer"));
  mRdo.add(ToDivision, QStringLiteral("To Division"));
  mRdo.add(ToOther, QStringLiteral("To Other"));
  mRdo.add(Refunded, QStringLiteral("Refunded"));
  mRdo.add(Transferred, QStringLiteral("Transferred"));
  platform::OptionButton::makeGroup({&mRdo[ToTaxpayer], &mRdo[ToDivision], &mRdo[ToOther]});
  platform::OptionButton::makeGroup({&mRdo[Refunded], &mRdo[Transferred]});
  platform::Frame& receiver = mFra.add(ReceiverFrame, QStringLiteral("Refund To"));
  for (const int option : {ToTaxpayer, ToDivision, ToOther}) {
    receiver.add(mRdo[option]);
  }
  platform::Frame& outcome = mFra.add(OutcomeFrame, QStringLiteral("Refunded / Transferred"));
  outcome.add(mRdo[Refunded]);
  outcome.add(mRdo[Transferred]);
  // The refund frame holds what the officer refunding or transferring enters.
  mFraRefund.add(outcome);
  mFraRefund.add(mLblData[RefundByLabel]);
  mFraRefund.add(QORVA_DTP1[RefundDatePicker]);
  mFraRefund.add(mTxt[WarrantNumberBox]);
  mFraRefund.add(mTxtRefund[FiscalComment]);
  // Shown at the steps that use them (LoadMe).
  mFraRefund.setVisible(false);
  mLblDateMailed.setVisible(false);
  QORVA_DTP1[DateMailedPicker].setVisible(false);

  mCmdButton.add(SaveButton, QStringLiteral("Save"));
  mCmdButton.add(CloseButton, QStringLiteral("Close"));
  mCmdButton.add(VoidButton, QStringLiteral("Void"));
  mCmdButton.add(PrintButton, QStringLiteral("Print"));
  mCmdButton[PrintButton].setEnabled(false);
  mCmdButton.forEach([this](int index, platform::Button& button) {
    connect(&button, &platform::Button::clicked, this, [this, index] { mCmdButton_Click(index); });
  });
  connect(&mTxt[WarrantNumberBox], &platform::Control::lostFocus, this,
          [this] { mTxt_LostFocus(WarrantNumberBox); });
}

QORVA_WorkSheet::~QORVA_WorkSheet() = default;

const WorksheetStep& QORVA_WorkSheet::stepRecord(Steps step) const {
  static const WorksheetStep none;
  return step >= PreparedStep && step < StepCount ? m_steps[static_cast<size_t>(step)] : none;
}

void QORVA_WorkSheet::recordCurrentOfficer(Steps step) {
  const WorksheetStep current{m_services.user.officerId(), m_services.user.name(), QDateTime()};
  if (m_steps[static_cast<size_t>(step)] != current) {
    m_steps[static_cast<size_t>(step)] = current;
    Q_EMIT stepRecordsChanged();
  }
}

void QORVA_WorkSheet::takeStepRecords(const messaging::RecordSet& rows) {
  if (rows.recordCount() == 0) {
    return;
  }
  bool changed = false;
  for (int step = PreparedStep; step < StepCount; ++step) {
    const StepFields& fields = kStepFields[step];
    const QVariant id = rows.valueAt(0, QLatin1String(fields.id));
    if (id.isNull() || id.toString().trimmed().isEmpty()) {
      continue;
    }
    const QVariant name = rows.valueAt(0, QLatin1String(fields.name));
    const WorksheetStep taken{id.toString().trimmed(), name.isNull() ? QString() : name.toString().trimmed(),
                              hostMoment(rows.valueAt(0, QLatin1String(fields.time)))};
    if (m_steps[static_cast<size_t>(step)] != taken) {
      m_steps[static_cast<size_t>(step)] = taken;
      changed = true;
    }
  }
  if (changed) {
    Q_EMIT stepRecordsChanged();
  }
}

QString QORVA_WorkSheet::replyToName() const { return QStringLiteral("WorkSheet") + QString::number(m_instance); }

void QORVA_WorkSheet::setCustomerID(const QString& id) {
  if (!id.isEmpty()) {
    m_customerId = id;
  }
}

bool QORVA_WorkSheet::mayWork() const { return m_services.user.hasRight(platform::rights::CreateRefund); }

// --- load --------------------------------------------------------------------------------------------------

void QORVA_WorkSheet::Form_Load() {
  trap(m_services, source("Form_Load"), [&] {
    for (const int index : {RefundDatePicker, DateMailedPicker}) {
      QORVA_DTP1[index].setMinDate(kEarliestDate);
      QORVA_DTP1[index].setDate(m_services.clock.today());
    }
    SetTabs();
    const QString status = m_action.trimmed().toUpper();
    if (status == u"T" || status == u"V" || status == u"4") {
      mCmdButton[SaveButton].setEnabled(false);
      mCmdButton[VoidButton].setEnabled(false);
      mLblData[StatusLabel].setCaption(status == u"T"   ? QStringLiteral("TRANSFERRED")
                                       : status == u"V" ? QStringLiteral("VOIDED")
                                                        : QStringLiteral("REFUNDED"));
    }
    if (status == u"V" || status == u"5" || status == u"T") {
      mCmdButton[PrintButton].setEnabled(true);
    }
    if (!m_services.user.hasRight(platform::rights::CreateRefund)) {
      // An officer without the right may look at a worksheet and print it, not take a step.
      mCmdButton[SaveButton].setEnabled(false);
      mCmdButton[VoidButton].setEnabled(false);
    }
    if (!m_loadedFromOutside) {
      // A new worksheet is prepared by whoever opened it; it is not on the host yet, so nothing to void.
      mLblData[PreparedByLabel].setCaption(m_services.user.officerId());
      recordCurrentOfficer(PreparedStep);
      mCmdButton[VoidButton].setEnabled(false);
      enableStepInputs();
      if (m_refundNumber.toLongLong() == 0) {
        mLblData[RefundNumberLabel].setCaption(QStringLiteral("0000000"));
        m_numberPending = true;
        requestFormNumber();
      }
    }
  });
}

void QORVA_WorkSheet::SetTabs() {
  // Reported under the account receivable detail's name, as it always has been.
  trap(m_services, QStringLiteral("QORVA_AccDetail.SetTabs"), [&] {
    int order = 0;
    for (const int option : {ToTaxpayer, ToDivision, ToOther}) {
      mRdo[option].setTabIndex(order++);
    }
    mTxtRefund[HeadquartersComment].setTabIndex(order++);
    mRdo[Refunded].setTabIndex(order++);
    mRdo[Transferred].setTabIndex(order++);
    QORVA_DTP1[RefundDatePicker].setTabIndex(order++);
    mTxt[WarrantNumberBox].setTabIndex(order++);
    mTxtRefund[FiscalComment].setTabIndex(order++);
    QORVA_DTP1[DateMailedPicker].setTabIndex(order++);
    for (const int button : {SaveButton, VoidButton, PrintButton, CloseButton}) {
      mCmdButton[button].setTabIndex(order++);
    }
  });
}

void QORVA_WorkSheet::Form_Unload() {
  trap(m_services, source("Form_Unload"), [&] { m_services.statusBar.setText(title::Ready); });
}

void QORVA_WorkSheet::requestFormNumber() {
  messaging::RequestMessage& message = screencore::freshRequest(m_services, *this, mNcsbMessage, replyToName(),
                                                                words::requestcodes::NextNumber);
  message.addParameter(marventoParameter(words::params::NbrTypCd, kRefundNumberType));
  m_requestId = screencore::sendRequest(message, *this);
  m_watch.requestSent();
  m_services.ui.setPointer(platform::Pointer::Hourglass);
}

void QORVA_WorkSheet::enableStepInputs() {
  // Who receives the refund and the headquarters comment are set when preparing and may be corrected up to
  // approval; later steps only read them.
  const bool early = m_stepCode == u"0" || m_stepCode == u"1" || m_stepCode == u"2";
  mFra[ReceiverFrame].setEnabled(early);
  mTxtRefund[HeadquartersComment].setEnabled(early);
  // Once refunded or transferred (or closed) a worksheet can no longer be voided, and what the refunding
  // officer entered stands.
  const bool done = m_stepCode == u"4" || m_stepCode == u"T" || m_stepCode == u"5" || m_stepCode == u"V";
  if (done) {
    mCmdButton[VoidButton].setEnabled(false);
    mFraRefund.setEnabled(false);
  }
}

void QORVA_WorkSheet::LoadMe(const QString& customerId, const QString& statusCode, const QString& refundNumber,
                             const QString& editMode) {
  trap(m_services, source("LoadMe"), [&] {
    m_customerId = customerId;
    m_stepCode = statusCode.trimmed().toUpper();
    m_refundNumber = refundNumber;
    m_editMode = editMode;
    const bool mayEdit = m_editMode == u"O";
    const QString officer = m_services.user.officerId();
    const auto showDateMailed = [this](bool shown, bool enabled) {
      mLblDateMailed.setVisible(shown);
      QORVA_DTP1[DateMailedPicker].setVisible(shown);
      QORVA_DTP1[DateMailedPicker].setEnabled(enabled);
    };
    const auto showRefundFrame = [this](bool shown, bool enabled) {
      mFraRefund.setVisible(shown);
      mFraRefund.setEnabled(enabled);
      mFra[OutcomeFrame].setEnabled(enabled);
    };
    platform::Button& save = mCmdButton[SaveButton];
    platform::Button& voidButton = mCmdButton[VoidButton];
    platform::Button& print = mCmdButton[PrintButton];
    const QString& s = m_stepCode;
    if (s == u"1" || s == u"2" || s == u"3") {
      mLblData[s == u"1" ? VerifiedByLabel : s == u"2" ? ApprovedByLabel : RefundByLabel].setCaption(officer);
      recordCurrentOfficer(s == u"1" ? VerifiedStep : s == u"2" ? ApprovedStep : RefundedStep);
      showDateMailed(false, false);
      showRefundFrame(s == u"3" && mayEdit, s == u"3" && mayEdit);
      voidButton.setEnabled(true);
      print.setEnabled(false);
      save.setEnabled(mayEdit);
    } else if (s == u"T" || s == u"4" || s == u"5" || s == u"V") {
      showDateMailed(true, s == u"4");
      showRefundFrame(true, false);
      voidButton.setEnabled(false);
      print.setEnabled(s != u"4");
      save.setEnabled(mayEdit && s != u"5" && s != u"V");
    } else {
      showDateMailed(false, false);
      showRefundFrame(false, false);
      print.setEnabled(false);
    }
    if (!mayWork()) {
      save.setEnabled(false);
      voidButton.setEnabled(false);
    }
    enableStepInputs();
    SendInProgressRefundPI();
  });
}

void QORVA_WorkSheet::GetFormNumber(const QString& number) {
  trap(m_services, source("GetFormNumber"), [&] {
    // The generator answers the seven digits, perhaps with the check digit after a hyphen.
    const QString digits = number.trimmed().section(u'-', 0, 0);
    const QString formatted = QStringLiteral("%1").arg(digits.toLongLong(), 7, 10, QLatin1Char('0'));
    mLblData[RefundNumberLabel].setCaption(formatted);
    m_refundNumber = formatted;
    m_numberPending = false;
  });
}

void QORVA_WorkSheet::takeFormNumber(const messaging::Reply& reply) {
  trap(m_services, source("GetFormNumber"), [&] {
    const messaging::RecordSetPtr numbers =
        messaging::RecordSetBuilder::build(reply, words::sectionnames::GetFormNumber, m_requestId);
    if (numbers->recordCount() == 0) {
      platform::fail(QStringLiteral("The host answered no refund number."));
    }
    numbers->moveFirst();
    GetFormNumber(numbers->value(QStringLiteral("U")).toString());
  });
}

void QORVA_WorkSheet::SendInProgressRefundPI() {
  trap(m_services, source("SendInProgressRefundPI"), [&] {
    messaging::RequestMessage& message = screencore::freshRequest(m_services, *this, mNcsbMessage, replyToName(),
                                                                  words::requestcodes::RefundWorksheet);
    message.addParameter(marventoParameter(words::params::CustId, m_customerId));
    message.addParameter(marventoParameter(words::params::RefundNbr, m_refundNumber));
    m_requestId = screencore::sendRequest(message, *this);
    m_watch.requestSent();
    m_services.statusBar.setText(QStringLiteral("Requesting Worksheet Details for Refund number ") + m_refundNumber);
    m_services.ui.setPointer(platform::Pointer::Hourglass);
  });
}

// --- replies -------------------------------------------------------------------------------------------------

void QORVA_WorkSheet::mNcsbMessage_MsgTimeout() {
  trap(m_services, QStringLiteral("QORVA_Worksheet.mNcsbMessage_MsgTimeout"), [&] { m_watch.timeoutNoticed(); });
}

void QORVA_WorkSheet::rollBackStepCode() {
  const QString& s = m_stepCode;
  if (s == u"1") {
    m_stepCode = QStringLiteral("0");
  } else if (s == u"2") {
    m_stepCode = QStringLiteral("1");
  } else if (s == u"3") {
    m_stepCode = QStringLiteral("2");
  } else if (s == u"4" || s == u"T") {
    m_stepCode = QStringLiteral("3");
  } else if (s == u"5") {
    m_stepCode = QStringLiteral("4");
  }
}

void QORVA_WorkSheet::mNcsbMessage_DataReady(const QString& replyTo, const messaging::Reply& reply) {
  trap(m_services, source("mNcsbMessage_DataReady"), [&] {
    if (replyTo.trimmed().toUpper() != replyToName().trimmed().toUpper()) {
      raise(AppError::LeaveEarly);
    }
    m_watch.replyArrived();
    const QString error = messaging::ReplyChecker::errorText(
        reply, replyTo, QStringLiteral("QORVA_WorkSheet.mNcsbMessage_DataReady"), m_requestId);
    if (!error.isEmpty()) {
      if (!m_loadedFromOutside && !isVoid()) {
        rollBackStepCode();
      } else if (isVoid()) {
        m_savedOrVoided = false;
      }
      m_services.ui.setPointer(platform::Pointer::Default);
      // The box, then after a time-out notice UpdateTimeout (or the refund number message) and "Search timed
      // out"; otherwise the save refused and "Search was not successful".
      m_watch.failed(error);
      if (!m_watch.MsgTimedOut()) {
        m_action.clear();
      }
      raise(AppError::LeaveEarly);
    }
    if (m_numberPending && !m_watch.isPending()) {
      takeFormNumber(reply);
      m_services.statusBar.setText(title::Ready);
      m_services.ui.setPointer(platform::Pointer::Default);
      return;
    }
    // Ends the pending save first: unlocking restores the inputs as they were before the save, and the
    // step the answer shows then sets its own.
    m_watch.answered();
    if (m_loadedFromOutside) {
      FillRefundWorkSheetInfo(reply);
    } else {
      // The screen keeps what it shows of a new worksheet; the host's answer still says when it was prepared.
      trap(m_services, source("mNcsbMessage_DataReady"), [&] {
        takeStepRecords(*messaging::RecordSetBuilder::build(reply, words::sectionnames::Refund, m_requestId));
      });
    }
    m_dataChanged = false;
    if (m_action == u"ISSUE") {
      m_refundNumber.clear();
    }
    if (isVoid()) {
      mCmdButton[VoidButton].setEnabled(false);
      mCmdButton[PrintButton].setEnabled(true);
      mLblData[StatusLabel].setCaption(QStringLiteral("VOIDED"));
      m_action.clear();
    }
    if (!m_watch.MsgTimedOut()) {
      m_services.statusBar.setText(title::Ready);
    }
    if (m_savedOrVoided) {
      mCmdButton[SaveButton].setEnabled(false);
      mCmdButton[PrintButton].setEnabled(true);
    }
    if (m_editMode != u"O" && m_loadedFromOutside) {
      mCmdButton[SaveButton].setEnabled(false);
    }
    mCmdButton[CloseButton].setEnabled(true);
    m_services.ui.setPointer(platform::Pointer::Default);
  });
}

void QORVA_WorkSheet::FillRefundWorkSheetInfo(const messaging::Reply& reply) {
  trap(m_services, source("FillRefundWorkSheetInfo"), [&] {
    const messaging::RecordSetPtr rows =
        messaging::RecordSetBuilder::build(reply, words::sectionnames::Refund, m_requestId);
    if (rows->recordCount() == 0) {
      return;
    }
    rows->moveFirst();
    const auto take = [&](const char* field, const std::function<void(const QString&)>& into) {
      const QVariant value = rows->value(QLatin1String(field));
      if (!value.isNull()) {
        into(value.toString().trimmed());
      }
    };
    const auto toLabel = [&](const char* field, int label) {
      take(field, [&](const QString& text) { mLblData[label].setCaption(text); });
    };
    const auto toPicker = [&](const char* field, int picker) {
      take(field, [&](const QString& text) {
        const QDate day = QDate::fromString(text.left(10), QStringLiteral("yyyy-MM-dd"));
        if (day.isValid()) {
          QORVA_DTP1[picker].setDate(day);
        }
      });
    };
    toLabel("RCPT_NBR", ReceiptNumberLabel);
    take("CUST_ID", [&](const QString& text) { m_customerId = text; });
    toLabel("RFND_NBR", RefundNumberLabel);
    take("RFND_AMT", [&](const QString& text) {
      const messaging::Result<platform::Currency> amount = platform::Currency::parse(text);
      mLblData[RefundAmountLabel].setCaption(amount ? amount.value().toDisplayText() : text);
    });
    take("TO", [&](const QString& text) {
      if (text == u"1") mRdo[ToTaxpayer].setValue(true);
      if (text == u"2") mRdo[ToDivision].setValue(true);
      if (text == u"3") mRdo[ToOther].setValue(true);
    });
    toPicker("DT_MLD", DateMailedPicker);
    toLabel("CREATOR_ID", PreparedByLabel);
    toLabel("VERIFY_ID", VerifiedByLabel);
    toLabel("APPROVE_ID", ApprovedByLabel);
    toLabel("RFND_BY_ID", RefundByLabel);
    take("DMV_CMMT_TXT", [&](const QString& text) { mTxtRefund[HeadquartersComment].setText(withCrLf(text)); });
    take("FISCAL_CMMT_TXT", [&](const QString& text) { mTxtRefund[FiscalComment].setText(withCrLf(text)); });
    take("RFND_CD", [&](const QString& text) {
      if (text == u"1") mRdo[Refunded].setValue(true);
      if (text == u"0") mRdo[Transferred].setValue(true);
    });
    take("WRNT_NBR", [&](const QString& text) { mTxt[WarrantNumberBox].setText(text); });
    toPicker("RFND_DT", RefundDatePicker);
    take("STTS_CD", [&](const QString& code) {
      const QString description = m_services.codes.description(kRefundTypes, code);
      mLblData[StatusLabel].setCaption(description.isEmpty() ? code : description);
      m_stepCode = code;
    });
    take("CUST_NM", [&](const QString& text) { mLblData[NameLabel].setCaption(text); });
    {
      const QVariant first = rows->value(QStringLiteral("ADDR_1"));
      const QVariant second = rows->value(QStringLiteral("ADDR_2"));
      if (!first.isNull() || !second.isNull()) {
        QStringList lines;
        for (const QVariant& line : {first, second}) {
          if (!line.isNull() && !line.toString().trimmed().isEmpty()) {
            lines.append(line.toString().trimmed());
          }
        }
        mLblData[AddressLabel].setCaption(lines.join(QStringLiteral(" ")));
      }
    }
    toLabel("CITY", CityLabel);
    toLabel("STATE", StateLabel);
    toLabel("ZIP", ZipLabel);
    // The host refuses a step on a worksheet that changed since it was read.
    take("ROW_VRSN_NBR", [&](const QString& text) { m_rowVersion = text; });
    takeStepRecords(*rows);
    enableStepInputs();
    m_services.statusBar.setText(QStringLiteral("Display Refund Worksheet Details for Refund number ") +
                                 m_refundNumber);
  });
}

bool QORVA_WorkSheet::DataChanged() {
  return platform::trapValue(m_services, QStringLiteral("QORVA_worksheet.DataChanged"), false, [&] {
    m_services.statusBar.setText(title::CheckingForDataChanges);
    // A worksheet never asks to be saved on leaving: each step is a deliberate Save by its officer.
    return false;
  });
}

// --- buttons ---------------------------------------------------------------------------------------------------

void QORVA_WorkSheet::mCmdButton_Click(int index) {
  trap(m_services, source("mCmdButton_Click"), [&] {
    switch (index) {
      case SaveButton:
        SaveData();
        if (m_errorText.trimmed().isEmpty()) {
          m_savedOrVoided = true;
        }
        break;
      case CloseButton:
        close();
        break;
      case VoidButton:
        m_action = QStringLiteral("VOID");
        SaveData();
        m_savedOrVoided = true;
        if (!m_errorText.trimmed().isEmpty()) {
          // A void the checks refused is not left behind for the next Save to send.
          m_action.clear();
        }
        break;
      case PrintButton:
        PrintWorksheet();
        break;
      default:
        break;
    }
  });
}

void QORVA_WorkSheet::close() {
  m_refundNumber.clear();
  m_watch.closing();
  Form_Unload();
  setVisible(false);
}

void QORVA_WorkSheet::mTxt_LostFocus(int index) {
  trap(m_services, source("mTxt_LostFocus"), [&] {
    if (index == WarrantNumberBox) {
      CheckEdit();
    }
  });
}

// --- validation ------------------------------------------------------------------------------------------------

void QORVA_WorkSheet::DefaultFieldColor() {
  trap(m_services, source("DefaultFieldColor"), [&] {
    for (platform::Control* input : std::initializer_list<platform::Control*>{
             &mRdo[ToTaxpayer], &mRdo[ToDivision], &mRdo[ToOther], &QORVA_DTP1[DateMailedPicker],
             &mTxtRefund[HeadquartersComment], &mRdo[Transferred], &mRdo[Refunded], &mTxt[WarrantNumberBox],
             &QORVA_DTP1[RefundDatePicker], &mTxtRefund[FiscalComment]}) {
      m_services.fieldMarking.restore(*input);
    }
  });
}

void QORVA_WorkSheet::fail(platform::Control& input, const QString& message) {
  m_services.fieldMarking.markError(input);
  m_errorText += message + kLineBreak;
}

void QORVA_WorkSheet::CheckEdit() {
  m_errorText.clear();
  trap(m_services, source("CheckEdit"), [&] {
    DefaultFieldColor();
    const auto label = [this](int index) { return mLblData[index].caption(); };
    const auto sameAndSet = [&](int a, int b) { return !label(a).isEmpty() && label(a) == label(b); };
    const auto note = [this](const QString& message) { m_errorText += message + kLineBreak; };
    if (!isVoid() && sameAndSet(PreparedByLabel, VerifiedByLabel)) {
      note(QStringLiteral("The person preparing and verifying the Refund Worksheet can not be the same."));
    }
    if (!isVoid() && sameAndSet(VerifiedByLabel, ApprovedByLabel)) {
      note(QStringLiteral("The person verifying and approving the Refund Worksheet can not be the same."));
    }
    if (m_customerId.isEmpty()) {
      note(QStringLiteral("The Customer ID can not be found"));
    }
    const QString number = label(RefundNumberLabel).trimmed();
    bool numeric = false;
    const qint64 value = number.toLongLong(&numeric);
    if (number.isEmpty()) {
      note(QStringLiteral("The Refund Number can not be found"));
    } else if (numeric && value == 0) {
      note(QStringLiteral("The Refund Number has not been generated"));
    }
    // On the label as it stands: a description such as "REFUNDED" does not stop the save here.
    const QString shown = label(StatusLabel);
    if (shown == u"4" || shown == u"T" || shown == u"V") {
      note(QStringLiteral("The following transaction can not be voided or saved: a Voided/Transferred/Refunded "
                          "Worksheet"));
      raise(AppError::LeaveEarly);
    }
    if (!mRdo[ToTaxpayer].value() && !mRdo[ToDivision].value() && !mRdo[ToOther].value()) {
      for (const int option : {ToTaxpayer, ToDivision, ToOther}) {
        m_services.fieldMarking.markError(mRdo[option]);
      }
      note(QStringLiteral("Please select who receives the refund when issued"));
    }
    if (mTxtRefund[HeadquartersComment].text().isEmpty()) {
      fail(mTxtRefund[HeadquartersComment], QStringLiteral("The comment field is required by DMV HQ personnel"));
    }
    if (isVoid()) {
      return;
    }
    const QString& s = m_stepCode;
    if (s == u"0" && label(PreparedByLabel).isEmpty()) {
      note(QStringLiteral("When preparing a refund, the officer preparing the refund must be displayed."));
    } else if (s == u"1" && label(VerifiedByLabel).isEmpty()) {
      note(QStringLiteral("When verifying a refund, the officer verifying the refund must be displayed."));
    } else if (s == u"2" && label(ApprovedByLabel).isEmpty()) {
      note(QStringLiteral("When approving a refund, the officer approving the refund must be displayed."));
    } else if (s == u"3" && label(RefundByLabel).isEmpty()) {
      note(QStringLiteral("When refunding an excess fund, the officer refunding the excess fund must be displayed."));
    }
    const bool refunded = mRdo[Refunded].value();
    const bool transferred = mRdo[Transferred].value();
    if (s == u"3") {
      if (!transferred && !refunded) {
        m_services.fieldMarking.markError(mRdo[Transferred]);
        fail(mRdo[Refunded], QStringLiteral("Please select Transferred or Refunded"));
      }
      if (transferred && mTxtRefund[FiscalComment].text().isEmpty()) {
        fail(mTxtRefund[FiscalComment],
             QStringLiteral("Please enter the Refund Description, when Tranferring the excess funds"));
      }
      if (refunded && mTxt[WarrantNumberBox].text().isEmpty()) {
        fail(mTxt[WarrantNumberBox], QStringLiteral("Please enter the Warrant Number, when Refunding the worksheet"));
      }
    }
    // The dates compare as their "mm-dd-yy" texts, month first: the order the agency's rules have always used.
    const QString today = ruleText(m_services.clock.today());
    if (s == u"4") {
      const QString mailed = ruleText(QORVA_DTP1[DateMailedPicker].date());
      if (mailed > today) {
        fail(QORVA_DTP1[DateMailedPicker], QStringLiteral("Mail Date must be current or before"));
      }
      if (mailed < ruleText(QORVA_DTP1[RefundDatePicker].date())) {
        fail(QORVA_DTP1[DateMailedPicker], QStringLiteral("Mail Date must be greater than or equal to the Refund Date"));
      }
    }
    if (s == u"3" && refunded && ruleText(QORVA_DTP1[RefundDatePicker].date()) > today) {
      fail(QORVA_DTP1[RefundDatePicker], QStringLiteral("Refund Date must be current or before"));
    }
  });
}

// --- the save --------------------------------------------------------------------------------------------------

QString QORVA_WorkSheet::nextStepCode() const {
  const QString& s = m_stepCode;
  if (s == u"0") return QStringLiteral("1");
  if (s == u"1") return QStringLiteral("2");
  if (s == u"2") return QStringLiteral("3");
  if (s == u"3") return mRdo[Transferred].value() ? QStringLiteral("T") : QStringLiteral("4");
  if (s == u"4") return QStringLiteral("5");
  return s;
}

void QORVA_WorkSheet::SaveData() {
  trap(m_services, QStringLiteral("QORVA_Worksheet.SaveData"), [&] {
    CheckEdit();
    if (!m_errorText.isEmpty()) {
      m_services.statusBar.setText(title::ErrorsFound);
      m_services.ui.messageBox(m_errorText, platform::MsgButtons::Ok, platform::MsgIcon::Exclamation,
                               title::messageTitle());
      raise(AppError::LeaveEarly);
    }
    m_services.ui.setPointer(platform::Pointer::Hourglass);
    m_services.statusBar.setText(QStringLiteral("Saving Refund Worksheet for ") + mLblData[NameLabel].caption());
    messaging::RequestMessage& message = screencore::freshRequest(m_services, *this, mNcsbMessage, replyToName(),
                                                                  words::requestcodes::RefundWorksheetSave);
    if (!isVoid()) {
      if (m_stepCode == u"0") {
        m_action = QStringLiteral("ISSUE");
      }
      LoadRefundDTD(message);
    } else {
      LoadVoidRefundDTD(message);
    }
    m_requestId = screencore::sendRequest(message, *this);
    m_saveSent = true;
    m_watch.saveSent(m_requestId, (isVoid() ? QStringLiteral("the void of refund worksheet %1")
                                            : QStringLiteral("the step of refund worksheet %1"))
                                      .arg(mLblData[RefundNumberLabel].caption().trimmed()));
  });
}

void QORVA_WorkSheet::LoadRefundDTD(messaging::RequestMessage& message) {
  trap(m_services, source("LoadRefundDTD"), [&] {
    messaging::SaveRecord& record = message.addRecord(words::saverecords::Refund);
    const QString step = m_stepCode;
    const bool early = step == u"0" || step == u"1" || step == u"2";
    const bool refunded = mRdo[Refunded].value();
    const QString officer = m_services.user.officerId();
    const auto set = [&](const char* field, const QString& value) { record.setField(QLatin1String(field), value); };
    set("ACTION", step == u"0" ? QStringLiteral("ADD") : QStringLiteral("UPD"));
    set("CUST_ID", m_customerId);
    set("RFND_NBR", m_refundNumber);
    if (early) {
      for (const auto& [option, code] : {std::pair{ToTaxpayer, "1"}, {ToDivision, "2"}, {ToOther, "3"}}) {
        if (mRdo[option].value()) {
          set("TO", QLatin1String(code));
          break;
        }
      }
    }
    if (step == u"4") {
      set("DT_MLD", wireDay(QORVA_DTP1[DateMailedPicker].date()));
    }
    if (step == u"0") {
      set("CREATED_DT", wireDay(m_services.clock.today()));
    }
    const char* officerField = step == u"0"   ? "CREATOR_ID"
                               : step == u"1" ? "VERIFY_ID"
                               : step == u"2" ? "APPROVE_ID"
                               : step == u"3" ? "RFND_BY_ID"
                                              : nullptr;
    if (officerField) {
      set(officerField, officer);
    }
    if (early) {
      set("DMV_CMMT_TXT", mTxtRefund[HeadquartersComment].text());
    }
    if (step == u"3") {
      set("FISCAL_CMMT_TXT", mTxtRefund[FiscalComment].text());
      set("RFND_CD", mRdo[Transferred].value() ? QStringLiteral("0") : QStringLiteral("1"));
      if (refunded) {
        set("WRNT_NBR", mTxt[WarrantNumberBox].text());
        set("RFND_DT", wireDay(QORVA_DTP1[RefundDatePicker].date()));
      }
    }
    if (step == u"0") {
      QString amount = mLblData[RefundAmountLabel].caption();
      amount.remove(u'$');
      amount.remove(u',');
      set("RFND_AMT", amount);
    }
    set("RCPT_NBR", mLblData[ReceiptNumberLabel].caption());
    m_stepCode = nextStepCode();
    set("STTS_CD", m_stepCode);
    if (!m_rowVersion.isEmpty()) {
      set("ROW_VRSN_NBR", m_rowVersion);
    }
  });
}

void QORVA_WorkSheet::LoadVoidRefundDTD(messaging::RequestMessage& message) {
  trap(m_services, source("LoadVoidRefundDTD"), [&] {
    messaging::SaveRecord& record = message.addRecord(words::saverecords::Refund);
    record.setField(QStringLiteral("ACTION"), QStringLiteral("UPD"));
    record.setField(QStringLiteral("CUST_ID"), m_customerId);
    record.setField(QStringLiteral("RFND_NBR"), m_refundNumber);
    record.setField(QStringLiteral("STTS_CD"), QStringLiteral("V"));
    record.setField(QStringLiteral("VOID_ID"), m_services.user.officerId());
    record.setField(QStringLiteral("RCPT_NBR"), mLblData[ReceiptNumberLabel].caption());
    if (!m_rowVersion.isEmpty()) {
      record.setField(QStringLiteral("ROW_VRSN_NBR"), m_rowVersion);
    }
  });
}

void QORVA_WorkSheet::PendingSave(bool enable) {
  // Reported under the transfer payment screen's name, as it always has been.
  trap(m_services, QStringLiteral("QORVA_TransPayment.PendingSave"), [&] {
    if (!enable) {
      if (!m_lockedDuringSave.isEmpty()) {
        return;
      }
      for (platform::Control* control : std::initializer_list<platform::Control*>{
               &mCmdButton[SaveButton], &mCmdButton[VoidButton], &mCmdButton[PrintButton], &mCmdButton[CloseButton],
               &mFra[ReceiverFrame], &mTxtRefund[HeadquartersComment], &mFraRefund,
               &QORVA_DTP1[DateMailedPicker]}) {
        m_lockedDuringSave.append({control, control->isEnabled()});
        control->setEnabled(false);
      }
      return;
    }
    for (const auto& [control, wasEnabled] : std::as_const(m_lockedDuringSave)) {
      control->setEnabled(wasEnabled);
    }
    m_lockedDuringSave.clear();
  });
}

void QORVA_WorkSheet::UpdateTimeout() {
  trap(m_services, source("UpdateTimeout"), [&] {
    if (m_action == u"ISSUE") {
      m_refundNumber.clear();
    }
    m_action.clear();
    m_watch.updateTimeout();
    mCmdButton[SaveButton].setEnabled(false);
    mCmdButton[CloseButton].setEnabled(true);
    mCmdButton[PrintButton].setEnabled(true);
  });
}

// --- printing --------------------------------------------------------------------------------------------------

QString QORVA_WorkSheet::GetWorkSheetforPrint() {
  return platform::trapValue(m_services, source("GetWorkSheetforPrint"), QString(), [&] {
    QString root = m_services.user.documentName();
    root.remove(QRegularExpression(QStringLiteral("\\s")));
    QDomDocument document;
    // Parsed without namespaces; the reader neither validates nor resolves external entities.
    QString problem;
    if (!document.setContent(u'<' + root + QStringLiteral("></") + root + u'>', false, &problem)) {
      platform::fail(QStringLiteral("The print document could not be started: ") + problem);
    }
    QDomElement top = document.documentElement();
    const auto add = [&](const char* element, const QString& text) {
      QDomElement child = document.createElement(QLatin1String(element));
      child.appendChild(document.createTextNode(text));
      top.appendChild(child);
    };
    const auto label = [this](int index) { return mLblData[index].caption(); };
    const auto shownDate = [this](int picker) {
      const platform::DatePicker& dtp = QORVA_DTP1[picker];
      return dtp.isEffectivelyVisible() ? dtp.text() : QString();
    };
    QString receiver;
    for (const int option : {ToTaxpayer, ToDivision, ToOther}) {
      if (mRdo[option].value()) {
        receiver = mRdo[option].caption();
        break;
      }
    }
    const QString overage = mRdo[Transferred].value() ? QStringLiteral("Transferred")
                            : mRdo[Refunded].value()  ? QStringLiteral("Refunded")
                                                      : QString();
    add("REFUNDNO", label(RefundNumberLabel));
    add("REFUNDAMT", label(RefundAmountLabel));
    add("REFUNDSTAT", label(StatusLabel));
    add("REFUNDTO", receiver);
    add("CUSTNAME", label(NameLabel));
    add("CUSTADDR", label(AddressLabel));
    // State before City: the template reads them in this order.
    add("CUSTSTATE", label(StateLabel));
    add("CUSTCITY", label(CityLabel));
    add("CUSTZIP", label(ZipLabel));
    add("PREPAREDBY", label(PreparedByLabel));
    add("VERIFIEDBY", label(VerifiedByLabel));
    add("APPROVEDBY", label(ApprovedByLabel));
    add("DATEMAILED", shownDate(DateMailedPicker));
    add("HEADQUARTERCOMMENT", mTxtRefund[HeadquartersComment].text());
    add("OVERAGE", overage);
    add("WARRANTNO", mTxt[WarrantNumberBox].text());
    add("REFUNDDATE", shownDate(RefundDatePicker));
    add("REFUNDBY", label(RefundByLabel));
    add("FISCALCOMMENT", mTxtRefund[FiscalComment].text());
    return document.toString(-1);
  });
}

void QORVA_WorkSheet::PrintWorksheet() {
  trap(m_services, source("PrintWorksheet"), [&] {
    const QString path = m_services.templates.templatePath(platform::kRefundWorksheetTemplate);
    if (path.isEmpty()) {
      raise(AppError::MissingPrintTemplate, kMissingTemplate);
    }
    const QString document = GetWorkSheetforPrint();
    std::unique_ptr<platform::PrintComponent> component = m_services.printing.createPrintComponent();
    if (!component) {
      platform::fail(QStringLiteral("No print component is available on this computer."));
    }
    component->setTemplatePath(path);
    component->setDocumentText(document);
    // A cancelled or failed print leaves the worksheet as it was; the component has told the clerk.
    (void)component->print(true, 1);
    component->close();
  });
}

}  // namespace adjustacc::refunds
