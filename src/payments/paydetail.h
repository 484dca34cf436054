#pragma once
// The "Receipt Detail" screen (QORVA_PayDetail): one receipt with the funds that made it up (grid 0), the
// accounts receivable it paid (grid 1) and the excess funds left over (grid 2). From it a clerk backs out or
// cancels the whole receipt (the "Action" box, a date and a comment) or single payments (the "Action" column
// of grid 1), never both at once; transfers an open excess fund to other accounts receivable (Transfer
// Payment); or starts a refund of one (Create Refund, handed to the refund worksheet, see refundhandover.h).
//
// The opener (the document) builds the screen, fills the header from the chosen receipt (setReceiptNumber,
// setCustomerID, setPaymentAmount, setStatusDescription, setPaymentDate), shows it, and reads
// AccountChanged when it has closed: true means the account must be read again. The screen asks the host
// for the receipt itself, the first time it is shown.
//
// The save runs under the save watch: SaveState, MsgTimedOut and the watch's AccountChanged are the
// watch's; a transfer or refund completed on the screens this one opens counts as an account change too.

#include "refundhandover.h"
#include "transpayment.h"

#include "messaging/recordset.h"
#include "messaging/reply.h"
#include "platform/button.h"
#include "platform/codescombo.h"
#include "platform/controlarray.h"
#include "platform/datacontrol.h"
#include "platform/datepicker.h"
#include "platform/grid.h"
#include "platform/label.h"
#include "platform/textbox.h"
#include "platform/timer.h"
#include "screencore/modalscreen.h"
#include "screencore/savewatch.h"

#include <QHash>
#include <QPointer>
#include <QString>

#include <memory>
#include <optional>

namespace adjustacc::messaging {
class RequestMessage;
}

namespace adjustacc::payments {

class QORVA_PayDetail : public screencore::ModalScreen {
  Q_OBJECT
public:
  static inline const QString kFormName = QStringLiteral("QORVA_PayDetail");
  static inline const QString kCaption = QStringLiteral("Receipt Detail");
  static inline const QString& kNoConnection = QORVA_TransPayment::kNoConnection;
  // Placeholder of a refund number that is not known yet.
  static inline const QString kNoRefundNumber = QStringLiteral("0000000-0");
  // How often the refund-number watch asks the number service again.
  static constexpr int kRefundNumberRetryMs = 3000;

  enum Buttons { TransferButton = 0, CreateRefundButton = 1, SaveButton = 2, CloseButton = 3 };
  enum Grids { FundsGrid = 0, PaymentsGrid = 1, ExcessGrid = 2 };
  // Indexes of mLblData (the header's values; the captions are fixed).
  enum DataLabels {
    ReceiptNumberLabel = 0,
    CustomerIdLabel = 1,
    StatusLabel = 2,
    PaymentAmountLabel = 3,
    PaymentDateLabel = 4,
    ConfirmationLabel = 5,
  };

  explicit QORVA_PayDetail(platform::Services& services, QObject* parent = nullptr);
  ~QORVA_PayDetail() override;

  // --- what the opener hands over (the chosen receipt, as its list shows it) ------------------------------
  void setReceiptNumber(const QString& number) { mLblData[ReceiptNumberLabel].setCaption(number); }
  QString ReceiptNumber() const { return mLblData[ReceiptNumberLabel].caption(); }
  void setCustomerID(const QString& id) { mLblData[CustomerIdLabel].setCaption(id); }
  // Shown "$#,##0.00"; a text that is no amount is shown as it is.
  void setPaymentAmount(const QString& amount);
  void setStatusDescription(const QString& description) { mLblData[StatusLabel].setCaption(description); }
  // The day the receipt was paid ("yyyy-mm-dd" or another form the lists write): the earliest adjustment date.
  void setPaymentDate(const QString& day) { mLblData[PaymentDateLabel].setCaption(day); }
  // The message theme the opener gives; stored trimmed. SaveData and the requests overwrite it.
  void setMsgTheme(const QString& theme) { m_msgTheme = theme.trimmed(); }
  QString MsgTheme() const { return m_msgTheme; }
  // The refund worksheet hand-over; none: "Create Refund" says that the worksheet is not available.
  void setRefundWorksheetOpener(RefundWorksheetOpener opener) { m_refundOpener = std::move(opener); }

  // --- the save watch and what the opener reads back ------------------------------------------------------
  QString SaveState() const { return m_watch.SaveState(); }
  bool AccountChanged() const { return m_watch.AccountChanged() || m_changedElsewhere; }
  bool MsgTimedOut() const { return m_watch.MsgTimedOut(); }
  QString ErrorText() const { return mStrErr; }
  int instanceNumber() const { return m_instance; }
  QString replyToName() const;
  QString requestId() const { return m_requestId; }
  // Whether open excess funds remained when Close was last pressed.
  bool ExcessFundsRemain() const { return m_excessRemains; }

  // --- procedures ---------------------------------------------------------------------------------------------
  void Form_Load();
  void InitializeData();
  void SetTabs();
  void SetGridBolding(int index);
  void SendReceiptPI();
  void SendCreateRefundPI();
  void mNcsbMessage_DataReady(const QString& replyTo, const messaging::Reply& reply);
  void mNcsbMessage_MsgTimeout();
  void mSdgDBGrid_RowLoaded(int index, messaging::Bookmark bookmark);
  void mSdgDBGrid_Click(int index);
  void mSdgDBGrid_Change(int index);
  void mSdgDBGrid_ScrollAfter(int index);
  void mCmdButton_Click(int index);
  void QORVA_CodesCombo_Change();
  void QORVA_CodesCombo_LostFocus();
  void mTxtAdjust_LostFocus();
  void QORVA_DTP1_LostFocus();
  void CheckEdit();
  bool DataChanged();
  void DefaultFieldColor();
  void SaveData();
  void LoadAdjustPayDTD(messaging::RequestMessage& message);
  void LoadAccRecvDTD(messaging::RequestMessage& message);
  void LoadAccRecvForReceiptDTD(messaging::RequestMessage& message);
  void PendingSave(bool enable);
  void UpdateTimeout();
  void mTimUpdateTimeout_Timer();
  void mTimUpdateTimeoutNumber_Timer();
  // The refund worksheet an excess fund is on, opened where it stands (Enter or a double-click on the row of
  // the excess fund list); a fund on no worksheet says so in the status bar.
  void openWorksheet(int row);

  // --- controls ------------------------------------------------------------------------------------------------
  platform::ControlArray<platform::Label> mLblData{QStringLiteral("mLblData")};
  platform::QORVA_CodesCombo QORVA_CodesCombo{QStringLiteral("QORVA_CodesCombo")};
  platform::DatePicker QORVA_DTP1{QStringLiteral("QORVA_DTP1")};
  platform::TextBox mTxtAdjust{QStringLiteral("mTxtAdjust")};
  platform::ControlArray<platform::Button> mCmdButton{QStringLiteral("mCmdButton")};
  platform::ControlArray<platform::Grid> mSdgDBGrid{QStringLiteral("mSdgDBGrid")};
  platform::Adodc mAdodc1{QStringLiteral("mAdodc1")};
  platform::Adodc mAdodc2{QStringLiteral("mAdodc2")};
  platform::Adodc mAdodc3{QStringLiteral("mAdodc3")};
  platform::Timer mTimUpdateTimeout{QStringLiteral("mTimUpdateTimeout")};
  platform::Timer mTimUpdateTimeoutNumber{QStringLiteral("mTimUpdateTimeoutNumber")};

private:
  void loaded() override;
  void layOutGrids();
  platform::Adodc& dataControl(int grid);
  void takeSection(int grid, const messaging::Reply& reply, const QString& layout);
  void takeReceipt(const messaging::Reply& reply);
  // The refund information answered: the worksheet is made and prepared, the chosen excess fund's values
  // first and the answer's over them, and shown once this reply has been dealt with.
  void prepareWorksheet(const messaging::Reply& reply);
  void showPreparedWorksheet();
  // The receipt-level action code chosen ("B", "C" or empty), trimmed and upper-cased.
  QString receiptAction() const;
  bool receiptConfirmed() const;
  QString cell(int grid, int row, const char* column) const;
  QVariant value(int grid, int row, const char* column) const;
  // The selected excess-fund row, or -1 when not exactly one is selected.
  int chosenExcessRow() const;
  // Create Refund and Transfer Payment: the checks both make, with their own wording.
  bool excessFundUsable(int row, const QString& statusMessage, const QString& confirmationMessage);
  void createRefund();
  void transferPayment();
  void close();
  void fail(platform::Control& input, const QString& message);
  void refuse(const QString& message);
  // After a save the host may or may not have applied: only Close is left until the receipt is read again.
  void lockAfterUnansweredSave();
  messaging::RequestMessage& receiptRequest();
  void reload();
  // Shows the prepared worksheet; when it completed a refund, the receipt is read again.
  void showWorksheetThenReload();
  // The description of a code, remembered while the same replies are shown: a receipt of many payments
  // carries few distinct codes.
  QString describe(const QString& table, const QString& code);

  screencore::SaveWatch m_watch;
  QPointer<messaging::RequestMessage> mNcsbMessage;
  QString m_requestId;
  QString mStrErr;
  bool m_errorFlag = false;
  QString m_msgTheme;
  const int m_instance;

  bool m_mayAdjust = true;
  bool m_cancelOnly = false;
  bool m_receiptOpen = false;
  bool m_excessRemains = false;
  bool m_changedElsewhere = false;
  QString m_receiptVersion;

  RefundWorksheetOpener m_refundOpener;
  QHash<QString, QString> m_descriptions;
  std::unique_ptr<RefundWorksheet> m_worksheet;
  // What Create Refund took from the chosen excess fund, kept until the refund information it asked for is
  // answered (by the request id) or refused.
  struct RefundAsked {
    QString requestId;
    QString customerId;
    QList<std::pair<int, QString>> labels;
  };
  std::optional<RefundAsked> m_refundAsked;
};

}  // namespace adjustacc::payments
