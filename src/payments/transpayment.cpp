#include "transpayment.h"

#include "messaging/protocolwords.h"
#include "messaging/replychecker.h"
#include "messaging/requestmessage.h"
#include "platform/errortrap.h"
#include "platform/modmessagetitle.h"
#include "platform/services.h"
#include "platform/sessionsettings.h"
#include "platform/statusbar.h"
#include "screencore/procedure.h"
#include "screencore/screenrequest.h"

#include <atomic>

namespace adjustacc::payments {

using platform::AppError;
using platform::raise;
using platform::trap;
namespace title = platform::modMessageTitle;

namespace {

std::atomic<int> g_instances{0};

}  // namespace

QORVA_TransPayment::QORVA_TransPayment(platform::Services& services, QObject* parent)
    : ModalScreen(services, kFormName, kCaption, parent),
      m_watch(services,
              {.pendingSave = [this](bool enable) { PendingSave(enable); },
               .initializeData = {},
               // A save the host may have applied: its entry is not offered for sending again.
               .assumeApplied = [this] { takeHeldTransfer(); },
               .updateTimeout = [this] { UpdateTimeout(); },
               .tickStatus = kNoConnection},
              &mTimUpdateTimeout),
      m_instance(g_instances++) {
  QORVA_Payment1.setCheckDigit(&services.checkDigit);
  mCmd.add(SaveButton, QStringLiteral("Save"));
  mCmd.add(CloseButton, QStringLiteral("Close"));
  mCmd.forEach([this](int index, platform::Button& button) {
    connect(&button, &platform::Button::clicked, this, [this, index] { mCmd_Click(index); });
  });
  connect(&mTimUpdateTimeout, &platform::Timer::tick, this, &QORVA_TransPayment::mTimUpdateTimeout_Timer);
}

QORVA_TransPayment::~QORVA_TransPayment() = default;

QString QORVA_TransPayment::replyToName() const {
  return m_services.session.applicationName() + QStringLiteral("TransPayment") + QString::number(m_instance);
}

void QORVA_TransPayment::Form_Load() {
  trap(m_services, source("Form_Load"), [&] {
    m_services.statusBar.setText(title::LoadingInformation);
    SetTabs();
    QORVA_Payment1.setTransferPayment(true);
    QORVA_Payment1.setParentWantsAccounts(true);
    QORVA_Payment1.setReceiptNumber(m_receiptNumber);
    if (QORVA_Payment1.lineCount() == 0) {
      QORVA_Payment1.addLine();
    }
    m_services.statusBar.setText(title::Ready);
  });
}

void QORVA_TransPayment::SetTabs() {
  trap(m_services, source("SetTabs"), [&] {
    QORVA_Payment1.setTabIndex(0);
    mCmd[SaveButton].setTabIndex(1);
    mCmd[CloseButton].setTabIndex(2);
  });
}

void QORVA_TransPayment::mCmd_Click(int index) {
  trap(m_services, source("mCmd_Click"), [&] {
    if (index == SaveButton) {
      SaveData();
    } else if (index == CloseButton) {
      Form_Terminate();
      m_services.ui.setPointer(platform::Pointer::Default);
      setVisible(false);
    }
  });
}

void QORVA_TransPayment::CheckEdit() {
  trap(m_services, source("CheckEdit"), [&] {
    mStrErr.clear();
    m_errorFlag = false;
    if (QORVA_Payment1.validate() == 0) {
      mStrErr = QORVA_Payment1.errorText() + mStrErr;
      m_errorFlag = true;
    }
  });
}

bool QORVA_TransPayment::DataChanged() {
  // Reported under the account receivable detail screen's name, as it always has been.
  return platform::trapValue(m_services, QStringLiteral("QORVA_AccDetail.DataChanged"), false, [&] {
    m_services.statusBar.setText(title::CheckingForDataChanges);
    for (int row = 0; row < QORVA_Payment1.lineCount(); ++row) {
      const platform::QORVA_Payment::Line line = QORVA_Payment1.line(row);
      if (!line.type.trimmed().isEmpty() || !line.number.trimmed().isEmpty() || !line.amount.trimmed().isEmpty()) {
        return true;
      }
    }
    return false;
  });
}

void QORVA_TransPayment::SaveData() {
  trap(m_services, source("SaveData"), [&] {
    if (!DataChanged()) {
      m_services.statusBar.setText(QStringLiteral("Data did not change.  Save request canceled. "));
      return;
    }
    CheckEdit();
    if (!mStrErr.isEmpty()) {
      m_services.statusBar.setText(title::ErrorsFound);
      m_services.ui.messageBox(mStrErr, platform::MsgButtons::Ok, platform::MsgIcon::Exclamation,
                               title::messageTitle());
      return;
    }
    m_services.statusBar.setText(QStringLiteral("Saving Excess Funds for ") + QORVA_Payment1.ownerText());
    messaging::RequestMessage& message = screencore::freshRequest(
        m_services, *this, mNcsbMessage, replyToName(), messaging::requestcodes::ExcessFundTransfer);
    message.addParameter(screencore::marventoParameter(messaging::params::OvrgRcpt, m_receiptNumber));
    LoadExcessDTD(message);
    m_requestId = screencore::sendRequest(message, *this);
    m_services.ui.setPointer(platform::Pointer::Hourglass);
    m_watch.saveSent(m_requestId, QStringLiteral("the transfer of the excess fund of receipt number ") +
                                      m_receiptNumber);
  });
}

void QORVA_TransPayment::LoadExcessDTD(messaging::RequestMessage& message) {
  // Reported under the account receivable detail screen's name, as it always has been.
  trap(m_services, QStringLiteral("QORVA_AccDetail.LoadExcessDTD"), [&] {
    if (QORVA_Payment1.transferAmount() > platform::Currency()) {
      QORVA_Payment1.writeToRequest(platform::QORVA_Payment::kTransferRecords, message);
    }
  });
}

void QORVA_TransPayment::mNcsbMessage_MsgTimeout() {
  trap(m_services, source("mNcsbMessage_MsgTimeout"), [&] { m_watch.timeoutNoticed(); });
}

void QORVA_TransPayment::mNcsbMessage_DataReady(const QString& replyTo, const messaging::Reply& reply) {
  trap(m_services, source("mNcsbMessage_DataReady"), [&] {
    if (replyTo != replyToName()) {
      raise(AppError::LeaveEarly);
    }
    m_watch.replyArrived();
    m_services.ui.setPointer(platform::Pointer::Default);
    const QString error =
        messaging::ReplyChecker::errorText(reply, replyToName(), source("mNcsbMessage_DataReady"), m_requestId);
    if (!error.isEmpty()) {
      // The clerk's entry stays as it was, to be corrected and sent again.
      m_watch.failed(error);
      raise(AppError::LeaveEarly);
    }
    if (m_watch.isPending()) {
      takeHeldTransfer();
      const bool timedOut = m_watch.MsgTimedOut();
      m_watch.answered();
      if (!timedOut) {
        m_services.statusBar.setText(title::Ready);
      }
    }
  });
}

void QORVA_TransPayment::takeHeldTransfer() {
  const platform::Currency held = QORVA_Payment1.heldAmount();
  if (held <= platform::Currency()) {
    return;
  }
  // What was moved is no longer open: a further transfer from this screen draws on what is left.
  if (const std::optional<platform::Currency> excess = QORVA_Payment1.excessAmount()) {
    QORVA_Payment1.setExcessAmount(*excess - held);
  }
  QORVA_Payment1.reset();
  QORVA_Payment1.addLine();
}

void QORVA_TransPayment::PendingSave(bool enable) {
  trap(m_services, source("PendingSave"), [&] {
    QORVA_Payment1.setEnabled(enable);
    mCmd[SaveButton].setEnabled(enable);
    mCmd[CloseButton].setEnabled(enable);
  });
}

void QORVA_TransPayment::UpdateTimeout() {
  // Reported with a lower-case "p", as it always has been.
  trap(m_services, QStringLiteral("QORVA_Transpayment.UpdateTimeout"), [&] { m_watch.updateTimeout(); });
}

void QORVA_TransPayment::mTimUpdateTimeout_Timer() {
  // Reported under the account receivable detail screen's name, as it always has been.
  trap(m_services, QStringLiteral("QORVA_AccDetail.mTimUpdateTimeout_Timer"), [&] { m_watch.timerTicked(); });
}

void QORVA_TransPayment::Form_Terminate() {
  trap(m_services, source("Form_Terminate"), [&] {
    if (!m_watch.isPending()) {
      return;
    }
    m_closedOutstanding = true;
    m_watch.closing();
    if (QORVA_Payment1.heldAmount() > platform::Currency()) {
      QORVA_Payment1.reset();
    }
  });
}

}  // namespace adjustacc::payments
