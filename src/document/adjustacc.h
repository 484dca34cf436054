#pragma once
// The account adjustment document (QORVA_AdjustAcc, "Adjust_Account_Receivable"): what the document host
// opens. It asks the clerk which account to work on (Open Account), requests that account's receivables
// and receipts from the host system, shows them in its two lists, and opens the detail screens from them.
//
// The host's calls, in order: the constructor (created), UserDocument_Show (shown), any number of FileOpen
// (each replaces the open account), Refresh (redraws the lists), BeforeUnload and CloseDocument (ends).
// DataChanged tells whether an account is open; SaveData does nothing, since every save is made by a detail
// screen.
//
// List 0, "Account Receivables", is bound to mAdodc1 and opened with button 0, "AR Detail"; list 1,
// "Receipts", is bound to mAdodc2 and opened with button 1, "Receipt Detail". A button is usable exactly
// when one row of its own list is selected.

#include "documenthost.h"

#include "messaging/recordset.h"
#include "messaging/reply.h"
#include "platform/button.h"
#include "platform/controlarray.h"
#include "platform/datacontrol.h"
#include "payments/refundhandover.h"
#include "platform/grid.h"

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QString>

namespace adjustacc::ardetail {
class QORVA_AccDetail;
}
namespace adjustacc::messaging {
class RequestMessage;
}
namespace adjustacc::platform {
struct Services;
}

namespace adjustacc::document {

// Whether a receivable may be saved from its detail screen: not when it is inactive (ACTV_STTS_CD "I"), bound
// to a case (CASE_ID not blank) or voided (ACCT_STTS_CD "V"); it may still be looked at.
bool receivableMaySave(const QString& activityStatus, const QString& caseId, const QString& statusCode);

class QORVA_AdjustAcc : public QObject {
  Q_OBJECT
public:
  static inline const QString kProjectDescription = QStringLiteral("Adjust_Account_Receivable");
  // Request code of the account inquiries.
  static constexpr int kAccountInquiryCode = 47;
  // Key of the document's toolbar entry ("Open Account").
  static inline const QString kOpenAccountEntry = QStringLiteral("AdjustAcc.OpenAccount");
  enum Lists { ReceivablesList = 0, ReceiptsList = 1 };
  enum Buttons { ArDetailButton = 0, ReceiptDetailButton = 1 };

  // Neither the container nor the host is owned; they must outlive the document.
  QORVA_AdjustAcc(platform::Services& services, DocumentContainer& container, DocumentHost& host,
                  QObject* parent = nullptr);
  ~QORVA_AdjustAcc() override;

  // --- what the host calls -----------------------------------------------------------------------------
  void UserDocument_Show();
  // Shows Open Account; unless cancelled, loads the chosen account.
  void FileOpen();
  // Deletes the working file and removes the toolbar entries; always true.
  bool CloseDocument();
  // Removes the toolbar entries and lets go of the toolbar host.
  void BeforeUnload();
  // Does nothing: the document itself never saves.
  void SaveData();
  // True whenever an account is open (type and number both given), edited or not.
  bool DataChanged();
  // The host's refresh notification: both lists are drawn again.
  void Refresh();

  // --- the lists ---------------------------------------------------------------------------------------------
  void mSdgDBGrid_InitColumnProps(int index);
  void mSdgDBGrid_RowLoaded(int index, messaging::Bookmark bookmark);
  void mSdgDBGrid_Click(int index);
  void mCmdButton_Click(int index);
  void SetGridBolding(platform::Grid& grid);

  // --- replies -------------------------------------------------------------------------------------------------
  void mNcsbMessage_DataReady(const QString& replyTo, const messaging::Reply& reply);
  void mNcsbMessage_MsgTimeout();

  // --- state, for the host and for tests ------------------------------------------------------------------
  QString accountNumber() const { return m_accountNumber; }
  QString accountType() const { return m_accountType; }
  // The open account's type as the clerk reads it (its REFDOCTYP description), and the customer its
  // receivables name (empty until they arrive).
  QString accountTypeDescription() const { return accountDescription(); }
  QString customerName() const;
  QString requestId() const { return m_requestId; }
  bool requestOutstanding() const { return m_requestOutstanding; }
  bool timedOut() const { return m_timedOut; }
  const messaging::RecordSetPtr& receivables() const { return m_receivables; }
  const messaging::RecordSetPtr& receipts() const { return m_receipts; }
  QString workFilePath() const { return m_workFilePath; }
  ToolbarHost* toolbarHost() const { return m_toolbar; }
  // What "Create Refund" on the Receipt Detail screen hands the excess fund to (payments/refundhandover.h);
  // by default the refund worksheet screen (worksheethandover.h).
  void setRefundWorksheetOpener(payments::RefundWorksheetOpener opener) { m_refundOpener = std::move(opener); }

  // --- controls ------------------------------------------------------------------------------------------------
  platform::ControlArray<platform::Grid> mSdgDBGrid{QStringLiteral("mSdgDBGrid")};
  platform::ControlArray<platform::Button> mCmdButton{QStringLiteral("mCmdButton")};
  platform::Adodc mAdodc1{QStringLiteral("mAdodc1")};
  platform::Adodc mAdodc2{QStringLiteral("mAdodc2")};

Q_SIGNALS:
  // The open account, or what is known of it, changed: another account was chosen, its lists arrived, or its
  // request failed and no account is open.
  void accountChanged();

private:
  void UserDocument_Initialize();
  void SendAdjustPI();
  void SendAccRecvPI(const QString& receivableNumber, const QString& receivableType);
  void SetTabs();
  void ConfigureToolbar(bool remove);
  void InitializeData();

  void openArDetail(platform::Grid& grid, int row);
  void openReceiptDetail(platform::Grid& grid, int row);
  [[noreturn]] void replyFailed(const QString& text);
  bool takeList(int index, const messaging::Reply& reply);
  void handAssessments(const messaging::Reply& reply);
  QString accountDescription() const;
  // The description of a code, remembered for the rows of the list's current record set: a list of many rows
  // carries few distinct codes.
  QString describe(int list, int slot, const QString& table, const QString& code);
  void forgetDescriptions(int list);

  platform::Services& m_services;
  DocumentContainer& m_container;
  DocumentHost& m_host;
  ToolbarHost* m_toolbar = nullptr;

  QPointer<messaging::RequestMessage> mNcsbMessage;
  // The account receivable detail screen while it is open: the assessments the document requested go to it.
  ardetail::QORVA_AccDetail* m_openDetail = nullptr;
  QString m_accountNumber;
  QString m_accountType;
  QString m_requestId;
  // Checked by the second reply check; no request of the document fills it.
  QString m_payDetailRequestId;
  bool m_requestOutstanding = false;
  bool m_timedOut = false;
  messaging::RecordSetPtr m_receivables;
  messaging::RecordSetPtr m_receipts;
  QString m_workFilePath;
  payments::RefundWorksheetOpener m_refundOpener;

  // Positions of the columns RowLoaded reads and writes, per list, found when the columns are laid out.
  struct RowColumns {
    int code[2] = {-1, -1};         // ACCT_RCVBL_TYP_CD, ACCT_STTS_CD | RCPT_STTS_CD
    int description[2] = {-1, -1};  // FORM_DESC, STTS_DESC | STTS_DESC
    int excess = -1;                // OVR_PYMT_AMT (receipts)
  };
  RowColumns m_rowColumns[2];
  QHash<QString, QString> m_descriptions[2][2];  // per list and code column: code -> description
};

}  // namespace adjustacc::document
