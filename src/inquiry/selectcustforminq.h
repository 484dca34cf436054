#pragma once
// The "Select Account" dialogue (QORVA_SelectCustFormInq), opened from Open Account when the clerk does not
// know the account number: the clerk finds a customer with the customer selector and picks an account
// type; the dialogue asks the host system for that customer's accounts of that type and lists them under
// "Account List". Confirming a row hands the account back through read-only properties.
//
// The account-type box offers the codes of code table "CSTATUS"; the host selects the customer's forms of
// that type or in that status.

#include "custselect.h"

#include "messaging/reply.h"
#include "platform/button.h"
#include "platform/codescombo.h"
#include "platform/controlarray.h"
#include "platform/currency.h"
#include "platform/datacontrol.h"
#include "platform/grid.h"
#include "platform/label.h"
#include "screencore/modalscreen.h"

#include <QDate>
#include <QPointer>
#include <QString>

namespace adjustacc::messaging {
class RequestMessage;
}

namespace adjustacc::inquiry {

class QORVA_SelectCustFormInq : public screencore::ModalScreen {
  Q_OBJECT
public:
  static inline const QString kFormName = QStringLiteral("QORVA_SelectCustFormInq");
  static inline const QString kCaption = QStringLiteral("Select Account");
  // Indexes of mCmdButton.
  enum Buttons { CancelButton = 0, ConfirmButton = 1 };

  explicit QORVA_SelectCustFormInq(platform::Services& services, QObject* parent = nullptr);
  ~QORVA_SelectCustFormInq() override;

  // --- what the opener reads after the dialogue closed ------------------------------------------------
  QString DocumentNumber() const { return m_documentNumber; }  // "0000123-4"; empty when nothing chosen
  QString DueAmount() const { return m_dueAmount; }
  QDate LastPaymentDate() const { return m_lastPaymentDate; }
  QString Status() const { return m_status; }
  QString StopDate() const { return m_stopDate; }
  // The chosen account's amount due (BAL_DUE).
  platform::Currency balance() const { return m_balance; }
  // True until the clerk confirms an account (Cancel, or the dialogue closed another way).
  bool isCancelled() const { return m_cancelled; }

  // --- procedures ----------------------------------------------------------------------------------------
  void Form_Load();
  void SendPI();
  void mNcsbMessage_DataReady(const QString& replyTo, const messaging::Reply& reply);
  void mNcsbMessage_MsgTimeout();
  void QORVA_CustSelect1_SelectionChanged();
  void QORVA_CustSelect1_HasAlerts();
  void mFtcboDocType_Change();
  void mSdgGrid_Click();
  // True when the entry is complete; otherwise the messages, each followed by a line break, are in mStrErr.
  bool CheckEdit();
  void DefaultFieldColor();
  void mCmdButton_Click(int index);
  // The dialogue's own status line, and its busy pointer.
  void UpdateStatusMsg(const QString& text);
  void UpdateStatus(bool busy);
  // RowLoaded of the account list (reported under the name it has always had).
  void mSdgDBGrid_RowLoaded(messaging::Bookmark bookmark);

  QString replyToName() const;  // the application's name + ".CustFormInq"
  QString requestId() const { return m_requestId; }
  bool timedOut() const { return m_timedOut; }
  QString errorText() const { return mStrErr; }

  // --- controls ------------------------------------------------------------------------------------------
  QORVA_CustSelect QORVA_CustSelect1;
  platform::Label mLblDocType{QStringLiteral("mLblDocType"), QStringLiteral("Account Type:")};
  platform::QORVA_CodesCombo mFtcboDocType{QStringLiteral("mFtcboDocType")};
  platform::Adodc mAdodc1{QStringLiteral("mAdodc1")};
  platform::Grid mSdgGrid{QStringLiteral("mSdgGrid")};
  platform::ControlArray<platform::Button> mCmdButton{QStringLiteral("mCmdButton")};
  platform::Label mLblStatus{QStringLiteral("mLblStatus")};

private:
  // Showing the dialogue the first time loads it (Form_Load).
  void loaded() override { Form_Load(); }
  void layOutGrid();
  void showErrors();

  QPointer<messaging::RequestMessage> mNcsbMessage;
  QString m_requestId;
  bool m_requestOutstanding = false;
  bool m_timedOut = false;
  // What the request in flight asked for, for the status after its reply.
  QString m_requestedType;
  QString m_requestedFor;
  QString mStrCustID;
  QString mStrCustName;
  QString m_lastTypeCode;
  QString mStrErr;

  QString m_documentNumber;
  QString m_dueAmount;
  QDate m_lastPaymentDate;
  QString m_status;
  QString m_stopDate;
  platform::Currency m_balance;
  bool m_cancelled = true;
};

// A form number as the lists show it: the number left-padded with "0" to seven digits (a number that is not
// all digits, or is longer, is kept as it is), "-", the check digit.
QString formatFormNumber(const QString& formNumber, const QString& checkDigit);

}  // namespace adjustacc::inquiry
