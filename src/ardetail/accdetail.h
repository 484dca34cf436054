#pragma once
// The "Account Receivable Detail" screen (QORVA_AccDetail): one account receivable of the open account, its
// assessments (fees and penalties) in two grids, and the adjustment a clerk makes to it: remove assessments
// ("Remove" in Available Assessments), reinstate removed ones ("Reinstate" in Adjusted  Assessments), void or
// delete the form (action "V" / "D"), with a date and a comment. A removal of a License Purchase Option fee
// asks for the option's particulars first (QORVA_LicPurchOpt); "Account Activity" opens the activity log
// (QORVA_Activity), whose changed rows go back to the host with this screen's save.
//
// The opener (the document) builds the screen, hands over the chosen receivable through the properties
// below, requests the receivable's assessments (they arrive as addAssessment calls while the screen is open),
// shows it, and reads AccountChanged when it has closed: true means the account must be read again.
//
// The save runs under the save watch: SaveState, AccountChanged and MsgTimedOut are the watch's.

#include "ardetail/assessmentline.h"
#include "messaging/recordset.h"
#include "messaging/reply.h"
#include "platform/button.h"
#include "platform/codescombo.h"
#include "platform/controlarray.h"
#include "platform/currency.h"
#include "platform/datacontrol.h"
#include "platform/datepicker.h"
#include "platform/grid.h"
#include "platform/label.h"
#include "platform/textbox.h"
#include "platform/timer.h"
#include "screencore/modalscreen.h"
#include "screencore/savewatch.h"

#include <QPointer>
#include <QString>

#include <optional>

namespace adjustacc::messaging {
class RequestMessage;
}

namespace adjustacc::ardetail {

class QORVA_LicPurchOpt;

class QORVA_AccDetail : public screencore::ModalScreen {
  Q_OBJECT
public:
  static inline const QString kFormName = QStringLiteral("QORVA_AccDetail");
  static inline const QString kCaption = QStringLiteral("Account Receivable Detail");
  // Request code of this screen's requests (the save and the activity log).
  static constexpr int kRequestCode = 41;
  // The status text when the clerk asks for a save or the activity log while a save is on its way.
  static inline const QString kWaitingForSave = QStringLiteral("Waiting for the answer to the save.");
  // Account receivable numbers above this one are generated forms.
  static constexpr qint64 kLastKeyedFormNumber = 1999999;

  enum Buttons { AccountActivityButton = 0, SaveButton = 2, CloseButton = 3 };
  enum Grids { AvailableGrid = 0, AdjustedGrid = 1 };
  // Indexes of mLblAdjust: captions, then the values the logic reads and writes.
  enum Labels {
    AccountCaption = 0,
    NameCaption = 1,
    StatusCaption = 2,
    TypeCaption = 3,
    ActionCaption = 4,
    AccountNumberLabel = 5,
    CommentCaption = 6,
    DateCaption = 7,
    TotalAdjustmentCaption = 8,
    TotalRemovalCaption = 9,
    TotalReinstatedCaption = 10,
    TotalAdjustmentLabel = 11,
    TotalRemovalLabel = 12,
    TotalReinstatedLabel = 13,
    TypeCodeLabel = 14,
    StatusLabel = 15,
    NameLabel = 16,
  };

  explicit QORVA_AccDetail(platform::Services& services, QObject* parent = nullptr);
  ~QORVA_AccDetail() override;

  // --- what the opener hands over (the chosen receivable, as its list shows it) --------------------------
  void setCustomerID(const QString& id) { m_customerId = id; }
  QString CustomerID() const { return m_customerId; }
  void setFormDescription(const QString& description) { m_formDescription = description; }
  QString FormDescription() const { return m_formDescription; }
  // The number goes to the account-number label, the type code beside "Typ CD".
  void setARNumber(const QString& number);
  QString ARNumber() const { return mLblAdjust[AccountNumberLabel].caption(); }
  void setARCheckNumber(const QString& checkNumber) { m_checkNumber = checkNumber; }
  QString ARCheckNumber() const { return m_checkNumber; }
  void setARType(const QString& type);
  QString ARType() const { return mLblAdjust[TypeCodeLabel].caption(); }
  // The receivable's status code and its description (code table "CSTATUS"), shown beside "Status:".
  void setStatus(const QString& code, const QString& description);
  QString StatusCode() const { return m_statusCode; }
  void setCustomerName(const QString& name) { mLblAdjust[NameLabel].setCaption(name); }
  void setActivityStatus(const QString& status) { m_activityStatus = status; }
  void setCaseID(const QString& caseId) { m_caseId = caseId; }
  // The version of the receivable's row as the list read it: the host refuses a save of a changed row.
  void setRowVersion(const QString& version) { m_rowVersion = version; }
  // The receivable's balance as the list read it (any money text; empty when unknown): the start of the
  // balance the screen shows the receivable will have after the save.
  void setBalance(const QString& balance);
  // False for a receivable that may be looked at but not saved: the Save button starts, and stays, disabled.
  void setSaveAllowed(bool allowed);
  bool saveAllowed() const { return m_saveAllowed; }

  // One assessment, from the current row of an "ASSESSMENT" record set, to grid 0 (status "A") or grid 1.
  // A caller adding every row of a set finds its fields once and passes them.
  void addAssessment(const messaging::RecordSet& assessments);
  void addAssessment(const messaging::RecordSet& assessments, const AssessmentFields& fields);

  // --- the save watch -----------------------------------------------------------------------------------
  QString SaveState() const { return m_watch.SaveState(); }
  bool AccountChanged() const { return m_watch.AccountChanged(); }
  bool MsgTimedOut() const { return m_watch.MsgTimedOut(); }
  QString ErrorText() const { return m_errorText; }
  QString replyToName() const;
  QString requestId() const { return m_requestId; }

  // --- procedures ------------------------------------------------------------------------------------------
  void Form_Load();
  void SetTabs();
  void SetGridBolding(platform::Grid& grid);
  void mNcsbMessage_DataReady(const QString& replyTo, const messaging::Reply& reply);
  void mNcsbMessage_MsgTimeout();
  void SendAccountPI();
  void MoveGridRow(int index);
  void mSdgDBGrid_Change(int index);
  void mSdgDBGrid_AfterUpdate(int index);
  void mSdgDBGrid_RowLoaded(int index, messaging::Bookmark bookmark);
  void mDtpDTPicker_Change();
  void QORVA_CodesCombo_Change();
  void mCmdButton_Click(int index);
  bool DataChanged();
  // Runs the rules in their order into ErrorText and marks the inputs in error; it shows nothing itself
  // (SaveData shows the text), so the change handlers run it as it is.
  void CheckEdit();
  void SaveData();
  bool LPOFee();
  void DefaultFieldColor();
  void InitializeData();
  void PendingSave(bool enable);
  void UpdateTimeout();
  void mTimUpdateTimeout_Timer();
  void LoadAdjustARDTD(messaging::RequestMessage& message);
  void LoadAssessmentDTD(messaging::RequestMessage& message);
  // The activity rows the clerk added or changed on the Account Activity screen, sent with the save.
  void LoadActivityDTD(messaging::RequestMessage& message);
  // The License Purchase Option particulars the clerk entered for the removed option fee.
  void LoadLPODTD(messaging::RequestMessage& message, const QORVA_LicPurchOpt& option);

  // --- controls ------------------------------------------------------------------------------------------
  platform::ControlArray<platform::Label> mLblAdjust{QStringLiteral("mLblAdjust")};
  platform::QORVA_CodesCombo QORVA_CodesCombo{QStringLiteral("QORVA_CodesCombo")};
  platform::DatePicker mDtpDTPicker{QStringLiteral("mDtpDTPicker")};
  platform::TextBox mTxtAdjust{QStringLiteral("mTxtAdjust")};
  platform::ControlArray<platform::Button> mCmdButton{QStringLiteral("mCmdButton")};
  platform::ControlArray<platform::Grid> mSdgDBGrid{QStringLiteral("mSdgDBGrid")};
  platform::Timer mTimUpdateTimeout{QStringLiteral("mTimUpdateTimeout")};
  // Beside the totals: the balance the receivable will have once the marked rows are saved, worked out by the
  // rule the host saves by; empty while nothing is marked or the balance is not known.
  platform::Label m_balanceAfter{QStringLiteral("m_balanceAfter")};

private:
  void loaded() override { Form_Load(); }
  void layOutGrid(int index);
  void close();
  // The action code chosen in the code box, trimmed and upper-cased.
  QString actionCode() const;
  bool voidOrDelete() const;
  // The account receivable number as a number, or nullopt when the label holds anything else.
  std::optional<qint64> accountNumberValue() const;
  bool isChecked(int grid, int row) const;
  // The "Assessment" amount of a row; zero when the cell holds no sum of money.
  platform::Currency amountOf(int grid, int row) const;
  QString cell(int grid, int row, const char* column) const;
  void fail(platform::Control& input, const QString& message);
  void removeMovedRows(int index);
  void showTotals(int changedGrid);
  void showBalanceAfter();
  // The receivable as the save left it (its "ACNTSRCVBL" section): the row version the next save is checked
  // against, and the balance the next adjustment starts from.
  void takeReceivable(const messaging::Reply& reply);
  // The rows of the reply's "ASSESSMENT" section, in the order the grids list them.
  void takeAssessments(const messaging::Reply& reply);
  // The activity log of the reply, shown on the Account Activity screen; its changes wait for the save.
  void showActivity(const messaging::Reply& reply);
  // Whether an adjustment (comment, date, void or delete, marked rows) was entered.
  bool adjustmentEntered() const;
  bool activityChanged() const;
  messaging::RequestMessage& saveRequest();
  void sendSave(messaging::RequestMessage& message);

  screencore::SaveWatch m_watch;
  QPointer<messaging::RequestMessage> mNcsbMessage;
  QString m_requestId;
  QString m_errorText;
  bool m_errorFlag = false;

  QString m_customerId;
  QString m_formDescription;
  QString m_checkNumber;
  QString m_statusCode;
  QString m_activityStatus;
  QString m_caseId;
  QString m_rowVersion;
  std::optional<platform::Currency> m_balance;
  bool m_saveAllowed = true;
  // Per grid, the hidden cells an assessment carries beside its line (-1: the grid has no such column).
  struct CarriedColumns {
    int optionAmount = -1;
    int statusIndicator = -1;
    int type = -1;
    int rowVersion = -1;
    int removedBalance = -1;
    // The amounts RowLoaded formats.
    int amount = -1;
    int due = -1;
  };
  CarriedColumns m_carried[2];
  bool m_mayAdjust = true;
  // Set while Form_Load fills the screen: the change handlers then check nothing.
  bool m_loading = false;
  // Added and changed rows of the activity log, until a save takes them.
  std::optional<messaging::RecordSet> m_activityChanges;
};

}  // namespace adjustacc::ardetail
