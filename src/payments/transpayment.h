#pragma once
// The "Transfer Payment" screen (QORVA_TransPayment): moves one open, confirmed excess fund of a receipt to
// other accounts receivable. The clerk enters the receiving accounts and amounts in the payment entry control
// (QORVA_Payment1, in transfer mode), whose rules decide what may be sent; this screen wraps it with the save
// request and the save watch.
//
// Opened modally by the Receipt Detail screen, which hands over the owner of the excess fund, the receipt
// number and the open amount, and reads AccountChanged once it has closed (and Form_Terminate has run): true
// means a transfer was (or may have been) saved and the receipt must be read again.

#include "messaging/reply.h"
#include "platform/button.h"
#include "platform/controlarray.h"
#include "platform/currency.h"
#include "platform/payment.h"
#include "platform/timer.h"
#include "screencore/modalscreen.h"
#include "screencore/savewatch.h"

#include <QPointer>
#include <QString>

namespace adjustacc::messaging {
class RequestMessage;
}

namespace adjustacc::payments {

class QORVA_TransPayment : public screencore::ModalScreen {
  Q_OBJECT
public:
  static inline const QString kFormName = QStringLiteral("QORVA_TransPayment");
  static inline const QString kCaption = QStringLiteral("Transfer Payment");
  // The status after the update timer concluded a save it had no answer to (two blanks after each full stop
  // but the last); the receipt screen shows the same.
  static inline const QString kNoConnection =
      QStringLiteral("No connection.  Check back later to see if your request saved.");

  enum Buttons { SaveButton = 0, CloseButton = 1 };

  explicit QORVA_TransPayment(platform::Services& services, QObject* parent = nullptr);
  ~QORVA_TransPayment() override;

  // --- what the opener hands over ---------------------------------------------------------------------------
  void setOwner(const platform::QORVA_Payment::Owner& owner) { QORVA_Payment1.setOwner(owner); }
  // The receipt shown on the Receipt Detail screen: the one whose excess fund is transferred.
  void setReceiptNumber(const QString& number) { m_receiptNumber = number.trimmed(); }
  QString ReceiptNumber() const { return m_receiptNumber; }
  // The open amount of the excess fund chosen; the transfer may not take more.
  void setExcessAmount(platform::Currency amount) { QORVA_Payment1.setExcessAmount(amount); }

  // --- the save watch ---------------------------------------------------------------------------------------
  QString SaveState() const { return m_watch.SaveState(); }
  bool AccountChanged() const { return m_watch.AccountChanged(); }
  bool MsgTimedOut() const { return m_watch.MsgTimedOut(); }
  // Set by Form_Terminate when the screen ended with its save unanswered.
  bool ClosedWithRequestOutstanding() const { return m_closedOutstanding; }
  QString ErrorText() const { return mStrErr; }
  int instanceNumber() const { return m_instance; }
  QString replyToName() const;
  QString requestId() const { return m_requestId; }

  // --- procedures ---------------------------------------------------------------------------------------------
  void Form_Load();
  void SetTabs();
  void mCmd_Click(int index);
  void CheckEdit();
  bool DataChanged();
  void SaveData();
  void LoadExcessDTD(messaging::RequestMessage& message);
  void mNcsbMessage_DataReady(const QString& replyTo, const messaging::Reply& reply);
  void mNcsbMessage_MsgTimeout();
  void PendingSave(bool enable);
  void UpdateTimeout();
  void mTimUpdateTimeout_Timer();
  // The end of the screen: a save still unanswered is let go (its answer can no longer reach the screen), and
  // the entry written to it is reset. Does nothing when no save is outstanding; safe to run twice.
  void Form_Terminate();

  // --- controls ------------------------------------------------------------------------------------------------
  platform::QORVA_Payment QORVA_Payment1{QStringLiteral("QORVA_Payment1")};
  platform::ControlArray<platform::Button> mCmd{QStringLiteral("mCmd")};
  platform::Timer mTimUpdateTimeout{QStringLiteral("mTimUpdateTimeout")};

private:
  // A transfer the host answered, or must be taken as applied: the amount it held leaves the open excess
  // and the entry starts again with one empty line.
  void takeHeldTransfer();
  void loaded() override { Form_Load(); }

  screencore::SaveWatch m_watch;
  QPointer<messaging::RequestMessage> mNcsbMessage;
  QString m_requestId;
  QString mStrErr;
  bool m_errorFlag = false;
  bool m_closedOutstanding = false;
  QString m_receiptNumber;
  const int m_instance;
};

}  // namespace adjustacc::payments
