#include "selectcustforminq.h"

#include "screencore/codetablequerytext.h"

#include "messaging/protocolwords.h"
#include "messaging/recordsetbuilder.h"
#include "messaging/replychecker.h"
#include "messaging/requestmessage.h"
#include "platform/clock.h"
#include "platform/codelookup.h"
#include "platform/codetablesource.h"
#include "platform/datetimes.h"
#include "platform/errortrap.h"
#include "platform/fieldmarking.h"
#include "platform/modmessagetitle.h"
#include "platform/services.h"
#include "platform/sessionsettings.h"
#include "platform/user.h"
#include "screencore/screenrequest.h"

#include <algorithm>

namespace adjustacc::inquiry {

using platform::AppError;
using platform::raise;
using platform::trap;

namespace {

const QString kSection = QStringLiteral("CUSTOMERFORM");
const QString kErrorsHeading = QStringLiteral("Errors Found ... ");
const QString kLineBreak = QStringLiteral("\r\n");
const QString kChooseStatus = QStringLiteral("Choose an account type and find the customer");

bool allDigits(const QString& text) {
  return !text.isEmpty() && std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c >= u'0' && c <= u'9'; });
}

}  // namespace

QString formatFormNumber(const QString& formNumber, const QString& checkDigit) {
  const QString number = formNumber.trimmed();
  const QString padded = allDigits(number) ? number.rightJustified(7, u'0') : number;
  return padded + u'-' + checkDigit.trimmed();
}

QORVA_SelectCustFormInq::QORVA_SelectCustFormInq(platform::Services& services, QObject* parent)
    : ModalScreen(services, kFormName, kCaption, parent), QORVA_CustSelect1(services) {
  QORVA_CustSelect1.setAllowEdit(true);
  QORVA_CustSelect1.setNotifyAlerts(true);
  QORVA_CustSelect1.setNoAddEdit(true);
  mFtcboDocType.setSource(&services.codeTables);
  mCmdButton.add(CancelButton, QStringLiteral("Cancel"));
  mCmdButton.add(ConfirmButton, QStringLiteral("OK"));
  // Nothing to hand back until an account is chosen from the list.
  mCmdButton[ConfirmButton].setEnabled(false);
  layOutGrid();

  connect(&QORVA_CustSelect1, &QORVA_CustSelect::SelectionChanged, this,
          &QORVA_SelectCustFormInq::QORVA_CustSelect1_SelectionChanged);
  connect(&QORVA_CustSelect1, &QORVA_CustSelect::HasAlerts, this,
          &QORVA_SelectCustFormInq::QORVA_CustSelect1_HasAlerts);
  connect(&mFtcboDocType, &platform::CodesCombo::textChanged, this, &QORVA_SelectCustFormInq::mFtcboDocType_Change);
  connect(&mSdgGrid, &platform::Grid::clicked, this, &QORVA_SelectCustFormInq::mSdgGrid_Click);
  mCmdButton.forEach([this](int index, platform::Button& button) {
    connect(&button, &platform::Button::clicked, this, [this, index] { mCmdButton_Click(index); });
  });

  // Keyboard order: type first, then the customer, the list and the buttons.
  mFtcboDocType.setTabIndex(0);
  QORVA_CustSelect1.mTxtSearch.setTabIndex(1);
  QORVA_CustSelect1.mCmdSearch.setTabIndex(2);
  QORVA_CustSelect1.mSdgCustomers.setTabIndex(3);
  mSdgGrid.setTabIndex(4);
  mCmdButton[ConfirmButton].setTabIndex(5);
  mCmdButton[CancelButton].setTabIndex(6);
}

QORVA_SelectCustFormInq::~QORVA_SelectCustFormInq() = default;

void QORVA_SelectCustFormInq::layOutGrid() {
  struct Column {
    const char16_t* caption;
    const char16_t* field;
    bool money;
    bool visible;
  };
  static const Column kColumns[] = {
      {u"FORM_CK_DGT_NBR", u"FORM_CK_DGT_NBR", false, false},
      {u"FORM_NBR", u"FORM_NBR", false, false},
      {u"Account #", u"FORM_NUMBER", false, true},
      {u"Stop Date", u"STP_DT", false, true},
      {u"Status", u"CTTN_STTS_TXT", false, true},
      {u"Assessment", u"ASSMT_DUE_AMT", true, true},
      {u"Original Assessment", u"ORIG_ASSMT_AMT", false, true},
      {u"FORM_TYP_CD", u"FORM_TYP_CD", false, false},
      {u"CTTN_STTS_CD", u"CTTN_STTS_CD", false, false},
      {u"Amount Due", u"BAL_DUE", true, true},
      {u"Last Payment Date", u"LST_PYMT_DT", false, true},
  };
  mSdgGrid.setCaption(QStringLiteral("Account List"));
  for (const Column& c : kColumns) {
    const QString field = QString::fromUtf16(c.field);
    platform::GridColumn& column = mSdgGrid.addColumn(field, QString::fromUtf16(c.caption), field);
    if (c.money) {
      column.setDisplay(platform::GridColumn::Display::Currency);
    }
    column.setVisible(c.visible);
  }
  mSdgGrid.setSelectionMode(platform::Grid::SelectionMode::Single);
  mSdgGrid.setAllowUpdate(false);
  mSdgGrid.setDataSource(&mAdodc1);
  mSdgGrid.setRowLoadedHandler([this](messaging::Bookmark bookmark) { mSdgDBGrid_RowLoaded(bookmark); });
}

QString QORVA_SelectCustFormInq::replyToName() const {
  return m_services.session.applicationName() + QStringLiteral(".CustFormInq");
}

void QORVA_SelectCustFormInq::Form_Load() {
  trap(m_services, source("Form_Load"), [&] {
    screencore::valueOrFail(mFtcboDocType.fill(screencore::codeTableQueryText(
        m_services.user.region(), QStringLiteral("CSTATUS"), m_services.clock.today())));
    mAdodc1.setRecordset(messaging::RecordSetBuilder::empty(kSection));
    UpdateStatusMsg(kChooseStatus);
  });
}

void QORVA_SelectCustFormInq::UpdateStatusMsg(const QString& text) {
  trap(m_services, source("UpdateStatusMsg"), [&] { mLblStatus.setCaption(text); });
}

void QORVA_SelectCustFormInq::UpdateStatus(bool busy) {
  trap(m_services, source("UpdateStatus"), [&] {
    m_services.ui.setPointer(busy ? platform::Pointer::Hourglass : platform::Pointer::Default);
  });
}

void QORVA_SelectCustFormInq::DefaultFieldColor() {
  trap(m_services, source("DefaultFieldColor"), [&] { m_services.fieldMarking.restore(mFtcboDocType); });
}

bool QORVA_SelectCustFormInq::CheckEdit() {
  mStrErr.clear();
  return platform::trapValue(m_services, source("CheckEdit"), false, [&] {
    DefaultFieldColor();
    if (mFtcboDocType.selectedCode().isEmpty()) {
      mStrErr += QStringLiteral("Account Type is required") + kLineBreak;
      m_services.fieldMarking.markError(mFtcboDocType);
    }
    return mStrErr.isEmpty();
  });
}

void QORVA_SelectCustFormInq::showErrors() {
  m_services.ui.messageBox(kErrorsHeading + kLineBreak + mStrErr, platform::MsgButtons::Ok,
                           platform::MsgIcon::Critical, platform::modMessageTitle::messageTitle());
}

void QORVA_SelectCustFormInq::QORVA_CustSelect1_SelectionChanged() {
  trap(m_services, source("QORVA_CustSelect1_SelectionChanged"), [&] {
    mStrCustID = QORVA_CustSelect1.customerId();
    mStrCustName = QORVA_CustSelect1.customerName();
    if (mStrCustID.isEmpty()) {
      // The customer search found nobody: the accounts of the customer chosen before go with that choice.
      mAdodc1.setRecordset(messaging::RecordSetBuilder::empty(kSection));
      mCmdButton[ConfirmButton].setEnabled(false);
      UpdateStatusMsg(kChooseStatus);
      return;
    }
    if (!CheckEdit()) {
      showErrors();
      raise(AppError::LeaveEarly);
    }
    mAdodc1.setRecordset(messaging::RecordSetBuilder::empty(kSection));
    mCmdButton[ConfirmButton].setEnabled(false);
    SendPI();
  });
}

void QORVA_SelectCustFormInq::QORVA_CustSelect1_HasAlerts() {
  // The selector shows the customer's alerts itself; the list of accounts does not depend on them.
  trap(m_services, source("QORVA_CustSelect1_HasAlerts"), [] {});
}

void QORVA_SelectCustFormInq::mFtcboDocType_Change() {
  trap(m_services, source("mFtcboDocType_Change"), [&] {
    // Only a newly chosen type asks again; typing that matches no type yet waits for the clerk.
    const QString code = mFtcboDocType.selectedCode();
    if (code.isEmpty() || code == m_lastTypeCode) {
      raise(AppError::LeaveEarly);
    }
    m_lastTypeCode = code;
    QORVA_CustSelect1_SelectionChanged();
  });
}

void QORVA_SelectCustFormInq::SendPI() {
  trap(m_services, source("SendPI"), [&] {
    messaging::RequestMessage& message =
        screencore::freshRequest(m_services, *this, mNcsbMessage, replyToName(), 47);
    message.addParameter(screencore::marventoParameter(messaging::params::CustId, mStrCustID.trimmed()));
    message.addParameter(
        screencore::marventoParameter(messaging::params::RefTypCd, mFtcboDocType.selectedCode()));
    m_requestId = screencore::sendRequest(message, *this);
    m_requestOutstanding = true;
    m_requestedType = mFtcboDocType.description();
    m_requestedFor = mStrCustName;
    UpdateStatusMsg(QStringLiteral("Requesting ") + m_requestedType + QStringLiteral(" for ") + m_requestedFor);
    UpdateStatus(true);
    m_timedOut = false;
  });
}

void QORVA_SelectCustFormInq::mNcsbMessage_MsgTimeout() {
  trap(m_services, source("mNcsbMessage_MsgTimeout"), [&] { m_timedOut = true; });
}

void QORVA_SelectCustFormInq::mNcsbMessage_DataReady(const QString& replyTo, const messaging::Reply& reply) {
  trap(m_services, source("mNcsbMessage_DataReady"), [&] {
    if (replyTo != replyToName()) {
      raise(AppError::LeaveEarly);
    }
    UpdateStatus(false);
    // Support staff know this handler by the name it has always reported, without the prefix.
    const QString error = messaging::ReplyChecker::errorText(
        reply, replyToName(), QStringLiteral("SelectCustFormInq.mNcsbMessage_DataReady"), m_requestId);
    if (!error.isEmpty()) {
      m_services.ui.messageBox(error, platform::MsgButtons::Ok, platform::MsgIcon::Critical,
                               platform::modMessageTitle::messageTitle());
      UpdateStatusMsg(m_timedOut ? platform::modMessageTitle::SearchTimedOut
                                 : platform::modMessageTitle::SearchWasNotSuccessful);
      raise(AppError::LeaveEarly);
    }
    messaging::RecordSetPtr forms = messaging::RecordSetBuilder::build(reply, kSection, m_requestId);
    screencore::failOn(forms->setSort(QStringLiteral("STP_DT ASC")), QStringLiteral("Sort"));
    mAdodc1.setRecordset(forms);
    mCmdButton[ConfirmButton].setEnabled(false);
    if (forms->recordCount() > 0) {
      UpdateStatusMsg(QStringLiteral("Displaying ") + m_requestedType + QStringLiteral("s for ") + m_requestedFor);
    } else {
      UpdateStatusMsg(QStringLiteral("No ") + m_requestedType + QStringLiteral("s returned for ") + m_requestedFor);
    }
    m_requestOutstanding = false;
  });
}

void QORVA_SelectCustFormInq::mSdgDBGrid_RowLoaded(messaging::Bookmark) {
  trap(m_services, source("mSdgDBGrid_RowLoaded"), [&] {
    const QVariant number = mSdgGrid.column(QStringLiteral("FORM_NBR")).value();
    const QVariant digit = mSdgGrid.column(QStringLiteral("FORM_CK_DGT_NBR")).value();
    mSdgGrid.column(QStringLiteral("FORM_NUMBER")).setValue(formatFormNumber(number.toString(), digit.toString()));
    const QVariant status = mSdgGrid.column(QStringLiteral("CTTN_STTS_CD")).value();
    if (!status.isNull()) {
      mSdgGrid.column(QStringLiteral("CTTN_STTS_TXT"))
          .setValue(m_services.codes.description(QStringLiteral("CSTATUS"), status.toString()));
    }
  });
}

void QORVA_SelectCustFormInq::mSdgGrid_Click() {
  trap(m_services, source("mSdgGrid_Click"), [&] {
    const QList<int> selected = mSdgGrid.selectedRows();
    if (selected.size() == 1) {
      mSdgGrid.setRow(selected.first());
    }
    mCmdButton[ConfirmButton].setEnabled(selected.size() == 1);
  });
}

void QORVA_SelectCustFormInq::mCmdButton_Click(int index) {
  trap(m_services, source("mCmdButton_Click"), [&] {
    if (index == CancelButton) {
      m_documentNumber.clear();
      m_cancelled = true;
      setVisible(false);
      return;
    }
    if (index != ConfirmButton) {
      return;
    }
    if (!CheckEdit()) {
      showErrors();
      raise(AppError::LeaveEarly);
    }
    const auto text = [this](const char* field) {
      return mSdgGrid.column(QLatin1String(field)).value().toString();
    };
    if (const QString number = text("FORM_NBR"); !number.isEmpty()) {
      m_documentNumber = formatFormNumber(number, text("FORM_CK_DGT_NBR")).trimmed();
    }
    if (const QString due = text("ASSMT_DUE_AMT"); !due.isEmpty()) {
      m_dueAmount = due.trimmed();
    }
    if (const QString balance = text("BAL_DUE"); !balance.isEmpty()) {
      m_balance = screencore::valueOrFail(platform::Currency::parse(balance));
    }
    if (const QString paid = text("LST_PYMT_DT"); !paid.isEmpty()) {
      m_lastPaymentDate = screencore::valueOrFail(platform::parseAnyDate(paid.trimmed()));
    }
    if (const QString status = text("CTTN_STTS_TXT"); !status.isEmpty()) {
      m_status = status.trimmed();
    }
    if (const QString stop = text("STP_DT"); !stop.isEmpty()) {
      m_stopDate = stop;
    }
    m_cancelled = false;
    setVisible(false);
  });
}

}  // namespace adjustacc::inquiry
