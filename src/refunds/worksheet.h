#pragma once
// The "Refund Worksheet" screen (QORVA_WorkSheet): one refund of an excess fund, carried officer by officer
//   "0" new -> "1" prepared -> "2" verified -> "3" approved -> "4" refunded (warrant) -> "5" mailed,
//   or "3" -> "T" transferred; voided ("V") at any step up to approval.
// Each Save performs the step the worksheet's status calls for; Void voids it; Print prints it through the
// template the administrators keep (template 36).
//
// Opening a new worksheet (the receipt screen's Create Refund):
//   QORVA_WorkSheet sheet(services);
//   sheet.setCustomerID(customerId);
//   sheet.mLblData[QORVA_WorkSheet::NameLabel].setCaption(name);  ... labels 1 to 6, and 12 (the receipt)
//   sheet.showModal();                 // Form_Load asks the host for a new refund number
//   if (sheet.GetSavedVoidedFlag()) ...   // a refund was prepared: read the receipt again
//
// Opening an existing one (a worksheet listed with the receipt's excess funds):
//   sheet.SetLoadedFromOutSide(true);
//   sheet.LoadMe(customerId, statusCode, refundNumber, editMode);   // "O": the officer may save the step
//   sheet.showModal();
//
// The save runs under the save watch; the worksheet has no update timer of its own: the request's time-out
// concludes a pending save through UpdateTimeout.

#include "messaging/reply.h"
#include "platform/button.h"
#include "platform/controlarray.h"
#include "platform/datepicker.h"
#include "platform/frame.h"
#include "platform/label.h"
#include "platform/optionbutton.h"
#include "platform/textbox.h"
#include "screencore/modalscreen.h"
#include "screencore/savewatch.h"

#include <QDateTime>
#include <QPointer>
#include <QString>

#include <array>

namespace adjustacc::messaging {
class RequestMessage;
}

namespace adjustacc::refunds {

// What the worksheet knows of one step beside its officer label: who took it (the id the label shows, and the
// officer's name) and when the host recorded it. A step not taken yet has no time; the step the signed-on
// officer is about to take names that officer.
struct WorksheetStep {
  QString officerId;
  QString officerName;
  QDateTime takenAt;  // UTC, as the host recorded it; invalid while the step is not taken
  bool operator==(const WorksheetStep&) const = default;
};

class QORVA_WorkSheet : public screencore::ModalScreen {
  Q_OBJECT
public:
  static inline const QString kFormName = QStringLiteral("QORVA_WorkSheet");
  static inline const QString kCaption = QStringLiteral("Refund Worksheet");

  enum Buttons { SaveButton = 0, CloseButton = 1, VoidButton = 2, PrintButton = 3 };
  // mLblData: the worksheet's values, as the screen shows them.
  enum DataLabels {
    RefundNumberLabel = 0,
    NameLabel = 1,
    AddressLabel = 2,
    CityLabel = 3,
    StateLabel = 4,
    ZipLabel = 5,
    RefundAmountLabel = 6,
    PreparedByLabel = 7,
    VerifiedByLabel = 8,
    ApprovedByLabel = 9,
    RefundByLabel = 10,
    StatusLabel = 11,
    ReceiptNumberLabel = 12,
  };
  // QORVA_DTP1
  enum DatePickers { RefundDatePicker = 0, DateMailedPicker = 1 };
  // mTxtRefund
  enum CommentBoxes { HeadquartersComment = 0, FiscalComment = 1 };
  // mTxt
  enum TextBoxes { WarrantNumberBox = 0 };
  // mRdo: who receives the refund, then what became of the excess.
  enum Options { ToTaxpayer = 0, ToDivision = 1, ToOther = 2, Refunded = 3, Transferred = 4 };
  // mFra: the receiver options, and the Refunded / Transferred choice inside the refund frame.
  enum Frames { ReceiverFrame = 0, OutcomeFrame = 1 };
  // The steps a worksheet records: the four with an officer label (Prepared By ... Refund By), the mailing
  // and the void.
  enum Steps { PreparedStep = 0, VerifiedStep, ApprovedStep, RefundedStep, MailedStep, VoidedStep, StepCount };

  explicit QORVA_WorkSheet(platform::Services& services, QObject* parent = nullptr);
  ~QORVA_WorkSheet() override;

  // --- what the opener hands over and reads back ---------------------------------------------------------
  // The customer of the receipt; an empty text leaves the id as it was.
  void setCustomerID(const QString& id);
  QString CustomerID() const { return m_customerId; }
  // The worksheet's status code (STTS_CD) as the receipt screen knows it, before the screen loads: Form_Load
  // reads "T", "V", "4" and "5" from it.
  void setAction(const QString& action) { m_action = action; }
  QString Action() const { return m_action; }
  void SetLoadedFromOutSide(bool loaded) { m_loadedFromOutside = loaded; }
  bool LoadedFromOutSide() const { return m_loadedFromOutside; }
  // Whether a step was saved or the worksheet voided while the screen was open.
  bool GetSavedVoidedFlag() const { return m_savedOrVoided; }
  void SetSavedVoidedFlag(bool flag) { m_savedOrVoided = flag; }
  // The refund number; cleared by Close (nothing chosen) and after a new worksheet was prepared.
  QString RefundNumber() const { return m_refundNumber; }
  QString StepCode() const { return m_stepCode; }
  QString EditMode() const { return m_editMode; }
  bool NumberPending() const { return m_numberPending; }
  // The identifier every request of this screen is sent and answered under: "WorkSheet" and its number.
  QString replyToName() const;
  QString requestId() const { return m_requestId; }
  QString ErrorText() const { return m_errorText; }
  // Who took a step and when, as the host answered (or the signed-on officer, for the step about to be taken).
  // The officer labels keep showing the ids; this is what a view shows beside them.
  const WorksheetStep& stepRecord(Steps step) const;

  // --- the save watch -------------------------------------------------------------------------------------
  QString SaveState() const { return m_watch.SaveState(); }
  bool AccountChanged() const { return m_watch.AccountChanged(); }
  bool SaveSent() const { return m_saveSent; }
  bool MsgTimedOut() const { return m_watch.MsgTimedOut(); }

  // --- procedures -----------------------------------------------------------------------------------------
  void Form_Load();
  void Form_Unload();
  void SetTabs();
  void LoadMe(const QString& customerId, const QString& statusCode, const QString& refundNumber,
              const QString& editMode);
  // The number the host generated: shown as Refund # ("0000000"), kept, and no longer pending.
  void GetFormNumber(const QString& number);
  void SendInProgressRefundPI();
  void mNcsbMessage_DataReady(const QString& replyTo, const messaging::Reply& reply);
  void mNcsbMessage_MsgTimeout();
  void FillRefundWorkSheetInfo(const messaging::Reply& reply);
  bool DataChanged();
  void mCmdButton_Click(int index);
  void mTxt_LostFocus(int index);
  void DefaultFieldColor();
  void CheckEdit();
  void SaveData();
  void LoadRefundDTD(messaging::RequestMessage& message);
  void LoadVoidRefundDTD(messaging::RequestMessage& message);
  void PendingSave(bool enable);
  void UpdateTimeout();
  QString GetWorkSheetforPrint();
  void PrintWorksheet();

  // --- controls -------------------------------------------------------------------------------------------
  platform::ControlArray<platform::Label> mLblData{QStringLiteral("mLblData")};
  platform::Label mLblDateMailed{QStringLiteral("mLblDateMailed"), QStringLiteral("Date Mailed:")};
  platform::ControlArray<platform::DatePicker> QORVA_DTP1{QStringLiteral("QORVA_DTP1")};
  platform::ControlArray<platform::TextBox> mTxtRefund{QStringLiteral("mTxtRefund")};
  platform::ControlArray<platform::TextBox> mTxt{QStringLiteral("mTxt")};
  platform::ControlArray<platform::OptionButton> mRdo{QStringLiteral("mRdo")};
  platform::ControlArray<platform::Frame> mFra{QStringLiteral("mFra")};
  platform::Frame mFraRefund{QStringLiteral("mFraRefund"), QStringLiteral("Refund")};
  platform::ControlArray<platform::Button> mCmdButton{QStringLiteral("mCmdButton")};

Q_SIGNALS:
  // A step record changed (the host's answer was read, or the signed-on officer was put to a step).
  void stepRecordsChanged();

private:
  void loaded() override { Form_Load(); }
  // The signed-on officer is about to take `step`: named, with no time yet.
  void recordCurrentOfficer(Steps step);
  // Who took each step and when, from the first row of a worksheet reply; a step whose officer the reply
  // leaves null keeps what it had.
  void takeStepRecords(const messaging::RecordSet& rows);
  void close();
  void fail(platform::Control& input, const QString& message);
  bool isVoid() const { return m_action == u"VOID"; }
  // The next status of the step the current step code calls for.
  QString nextStepCode() const;
  // Whether the signed-on officer may work on refund worksheets at all.
  bool mayWork() const;
  // Reads the generated number of a reply (its field "U") and hands it to the public GetFormNumber.
  void takeFormNumber(const messaging::Reply& reply);
  void requestFormNumber();
  void rollBackStepCode();
  // The inputs a step may change, enabled for the step the worksheet is at.
  void enableStepInputs();
  QString officerLabelOfStep() const;

  screencore::SaveWatch m_watch;
  QPointer<messaging::RequestMessage> mNcsbMessage;
  const int m_instance;
  QString m_requestId;
  QString m_errorText;

  QString m_stepCode = QStringLiteral("0");
  QString m_customerId;
  QString m_refundNumber;
  QString m_action;
  QString m_editMode;
  QString m_rowVersion;
  bool m_dataChanged = false;
  bool m_numberPending = false;
  bool m_loadedFromOutside = false;
  bool m_savedOrVoided = false;
  bool m_saveSent = false;
  std::array<WorksheetStep, StepCount> m_steps{};
  // What a pending save locked, and how each was before, so that the save's end restores the step's gating.
  QList<std::pair<platform::Control*, bool>> m_lockedDuringSave;
};

}  // namespace adjustacc::refunds
