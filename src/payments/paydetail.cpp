#include "paydetail.h"

#include "transpayment.h"

#include "messaging/protocolwords.h"
#include "messaging/recordsetbuilder.h"
#include "messaging/replychecker.h"
#include "messaging/requestmessage.h"
#include "messaging/sections.h"
#include "platform/clock.h"
#include "platform/codelookup.h"
#include "platform/codetablesource.h"
#include "platform/currency.h"
#include "platform/datetimes.h"
#include "platform/errortrap.h"
#include "platform/fieldmarking.h"
#include "platform/modmessagetitle.h"
#include "platform/nextnumber.h"
#include "platform/services.h"
#include "platform/sessionsettings.h"
#include "platform/statusbar.h"
#include "platform/user.h"
#include "screencore/codetablequerytext.h"
#include "screencore/listpreparation.h"
#include "screencore/procedure.h"
#include "screencore/screenrequest.h"

#include <atomic>
#include <utility>

namespace adjustacc::payments {

using messaging::sectionnames::AccountReceivables;
using platform::AppError;
using platform::Currency;
using platform::GridColumn;
using platform::raise;
using platform::trap;
using screencore::marventoParameter;
namespace title = platform::modMessageTitle;
namespace params = messaging::params;

RefundWorksheet::~RefundWorksheet() = default;

namespace {

const QString kLineBreak = QStringLiteral("\r\n");
const QString kBackout = QStringLiteral("BACKOUT");
const QString kCancel = QStringLiteral("CANCEL");
const QString kAdjustmentCodes = QStringLiteral("PAYADJUST");
const QString kFundStatusCodes = QStringLiteral("REFUNDTYP");
const QDate kEarliestDate(1993, 1, 1);
const QString kSelectExcessFund = QStringLiteral("Select an Excess Fund");

// Each Receipt Detail screen opened gets its own number, so that its replies find it and no other.
std::atomic<int> g_instances{0};

struct ColumnProps {
  const char16_t* name;
  const char16_t* caption;  // empty: a data column the row rules read, not shown
  const char16_t* field;    // empty: the name
  GridColumn::Display display;
};

constexpr auto Text = GridColumn::Display::Text;
constexpr auto Money = GridColumn::Display::Currency;

const ColumnProps kFundColumns[] = {
    {u"FUND_DESC", u"Fund Type", u"", Text},
    {u"FUND_RFRNC_NBR", u"Reference #", u"", Text},
    {u"FUND_AMT", u"Fund Amount", u"", Money},
    {u"FUND_TYP_CD", u"", u"", Text},
    {u"RCPT_NBR", u"", u"FRCPT_NBR", Text},
    {u"FUND_EXPR", u"Expiration Date", u"", Text},
    {u"EXPRTN_MO_DT", u"", u"", Text},
    {u"EXPRTN_DY_DT", u"", u"", Text},
    {u"EXPRTN_YR_DT", u"", u"", Text},
};

const ColumnProps kPaymentColumns[] = {
    {u"CUST_ID", u"", u"", Text},
    {u"CUST_NAME", u"Name", u"", Text},
    {u"FORM_DESC", u"AR Type", u"", Text},
    {u"ACCT_RCVBL_NBR", u"AR #", u"", Text},
    {u"ACCT_RCVBL_DUE_DT", u"Due Date", u"", Text},
    {u"ASMT_AMT", u"Amount Paid", u"CL_PYMT_AMT", Text},
    {u"ADJSTMT_DT", u"Adjust Date", u"", Text},
    {u"ACTVTY_STTS_DES", u"Status", u"", Text},
    {u"ACTVTY_STTS_CD", u"Status code", u"", Text},
    {u"ACTION", u"Action", u"", Text},
    {u"TRNSCTN_NBR", u"", u"", Text},
    {u"TRNSCTN_DT", u"", u"", Text},
    {u"PYMT_DT", u"", u"", Text},
    {u"PYMT_NBR", u"", u"", Text},
    {u"STTS_CD", u"", u"", Text},
    {u"ACCT_RCVBL_CK_NBR", u"", u"", Text},
    {u"ACCT_RCVBL_TYP_CD", u"", u"", Text},
    {u"RCPT_NBR", u"", u"", Text},
    {u"ACCT_STTS_CD", u"", u"", Text},
    {u"ACTV_STTS_CD", u"", u"", Text},
    {u"ACTVTY_STTS_CD", u"", u"", Text},
    {u"ASSMT_PP_TYP_CD", u"", u"", Text},
    {u"INSTLMT_NBR", u"", u"", Text},
    // The version of the payment as it was read: the host refuses to adjust a payment changed since.
    {u"ROW_VRSN_NBR", u"", u"", Text},
};

const ColumnProps kExcessColumns[] = {
    {u"NAME", u"Name", u"CUST_NM", Text},
    {u"OVR_PYMT_DT", u"Date", u"", Text},
    {u"OVR_PYMT_TM", u"Time", u"", Text},
    {u"FUND_DESC", u"Status", u"", Text},
    {u"DSTNTN_RCPT_NBR", u"Moved to Receipt #", u"", Text},
    {u"AMOUNT", u"Amount", u"OVR_PYMT_AMT", Money},
    {u"CUST_ID", u"", u"", Text},
    {u"ADDR_1", u"", u"", Text},
    {u"ADDR_2", u"", u"", Text},
    {u"CITY", u"", u"", Text},
    {u"STATE", u"", u"", Text},
    {u"ZIP", u"", u"", Text},
    {u"OVR_PYMT_STTS_CD", u"", u"", Text},
    {u"ROW_VRSN_NBR", u"", u"", Text},
    // The refund worksheet the fund is on, if any, and its step: how an existing worksheet is opened.
    {u"RFND_NBR", u"", u"", Text},
    {u"RFND_STTS_CD", u"", u"", Text},
};

QString trimmed(const QVariant& value) { return value.toString().trimmed(); }

}  // namespace

QORVA_PayDetail::QORVA_PayDetail(platform::Services& services, QObject* parent)
    : ModalScreen(services, kFormName, kCaption, parent),
      m_watch(services,
              {.pendingSave = [this](bool enable) { PendingSave(enable); },
               .initializeData = [this] { InitializeData(); },
               .assumeApplied = [this] { lockAfterUnansweredSave(); },
               .updateTimeout = [this] { UpdateTimeout(); },
               .tickStatus = kNoConnection},
              &mTimUpdateTimeout),
      m_instance(g_instances++) {
  for (int index = ReceiptNumberLabel; index <= ConfirmationLabel; ++index) {
    mLblData.add(index);
  }
  QORVA_CodesCombo.setSource(&services.codeTables);
  QORVA_CodesCombo.setCodeTable(kAdjustmentCodes);
  mCmdButton.add(TransferButton, QStringLiteral("Transfer Payment"));
  mCmdButton.add(CreateRefundButton, QStringLiteral("Create Refund"));
  mCmdButton.add(SaveButton, QStringLiteral("Save"));
  mCmdButton.add(CloseButton, QStringLiteral("Close"));
  mCmdButton.forEach([this](int index, platform::Button& button) {
    connect(&button, &platform::Button::clicked, this, [this, index] { mCmdButton_Click(index); });
  });
  for (const int index : {FundsGrid, PaymentsGrid, ExcessGrid}) {
    platform::Grid& grid = mSdgDBGrid.add(index);
    grid.setDataSource(&dataControl(index));
    grid.setRowLoadedHandler([this, index](messaging::Bookmark bookmark) { mSdgDBGrid_RowLoaded(index, bookmark); });
    connect(&grid, &platform::Grid::clicked, this, [this, index] { mSdgDBGrid_Click(index); });
    connect(&grid, &platform::Grid::edited, this, [this, index] { mSdgDBGrid_Change(index); });
    connect(&grid, &platform::Grid::scrollAfter, this, [this, index] { mSdgDBGrid_ScrollAfter(index); });
  }
  layOutGrids();
  connect(&QORVA_CodesCombo, &platform::CodesCombo::textChanged, this, &QORVA_PayDetail::QORVA_CodesCombo_Change);
  connect(&QORVA_CodesCombo, &platform::Control::lostFocus, this, &QORVA_PayDetail::QORVA_CodesCombo_LostFocus);
  connect(&mTxtAdjust, &platform::Control::lostFocus, this, &QORVA_PayDetail::mTxtAdjust_LostFocus);
  connect(&QORVA_DTP1, &platform::Control::lostFocus, this, &QORVA_PayDetail::QORVA_DTP1_LostFocus);
  connect(&mTimUpdateTimeout, &platform::Timer::tick, this, &QORVA_PayDetail::mTimUpdateTimeout_Timer);
  connect(&mTimUpdateTimeoutNumber, &platform::Timer::tick, this, &QORVA_PayDetail::mTimUpdateTimeoutNumber_Timer);
}

QORVA_PayDetail::~QORVA_PayDetail() = default;

QString QORVA_PayDetail::replyToName() const {
  return m_services.session.applicationName() + QStringLiteral("PayDetail") + QString::number(m_instance);
}

platform::Adodc& QORVA_PayDetail::dataControl(int grid) {
  return grid == FundsGrid ? mAdodc1 : grid == PaymentsGrid ? mAdodc2 : mAdodc3;
}

void QORVA_PayDetail::setPaymentAmount(const QString& amount) {
  const messaging::Result<Currency> money = Currency::parse(amount);
  mLblData[PaymentAmountLabel].setCaption(money ? money.value().toDisplayText() : amount);
}

void QORVA_PayDetail::layOutGrids() {
  const QString captions[] = {QStringLiteral("Funds"), QStringLiteral("Account Receivable Payments"),
                              QStringLiteral("Excess Fund")};
  const auto layOut = [](platform::Grid& grid, const auto& columns) {
    for (const ColumnProps& props : columns) {
      const QString name = QString::fromUtf16(props.name);
      const QString caption = QString::fromUtf16(props.caption);
      const QString field = QString::fromUtf16(props.field);
      GridColumn& column = grid.addColumn(name, caption.isEmpty() ? name : caption, field.isEmpty() ? name : field);
      column.setDisplay(props.display);
      column.setVisible(!caption.isEmpty());
      column.setLocked(true);
    }
  };
  layOut(mSdgDBGrid[FundsGrid], kFundColumns);
  layOut(mSdgDBGrid[PaymentsGrid], kPaymentColumns);
  layOut(mSdgDBGrid[ExcessGrid], kExcessColumns);
  for (const int index : {FundsGrid, PaymentsGrid, ExcessGrid}) {
    mSdgDBGrid[index].setCaption(captions[index]);
  }
  // The one cell a clerk changes: the payment's adjustment.
  mSdgDBGrid[PaymentsGrid].column(QStringLiteral("ACTION")).setLocked(false);
}

// --- load ---------------------------------------------------------------------------------------------------

void QORVA_PayDetail::loaded() {
  Form_Load();
  SendReceiptPI();
}

void QORVA_PayDetail::Form_Load() {
  trap(m_services, source("Form_Load"), [&] {
    platform::User& user = m_services.user;
    for (const int index : {FundsGrid, PaymentsGrid, ExcessGrid}) {
      screencore::prepareList(mSdgDBGrid[index]);
    }
    if (!user.hasRight(QStringLiteral("ADJUSTRECEIPT"))) {
      m_mayAdjust = false;
      mCmdButton[SaveButton].setEnabled(false);
      mCmdButton[TransferButton].setEnabled(false);
      mCmdButton[CreateRefundButton].setEnabled(false);
      mSdgDBGrid[PaymentsGrid].column(QStringLiteral("ACTION")).setLocked(true);
      QORVA_DTP1.setEnabled(false);
      QORVA_CodesCombo.setEnabled(false);
      mTxtAdjust.setEnabled(false);
    }
    if (!user.hasRight(QStringLiteral("CREATEREFUND"))) {
      mCmdButton[CreateRefundButton].setEnabled(false);
    }
    if (user.hasRight(QStringLiteral("ADJUSTRCPTCANCELONLY"))) {
      m_cancelOnly = true;
      mSdgDBGrid[PaymentsGrid].setEnabled(false);
      mSdgDBGrid[ExcessGrid].setEnabled(false);
    }
    mTimUpdateTimeoutNumber.setEnabled(false);
    mTimUpdateTimeout.setEnabled(false);
    mTimUpdateTimeoutNumber.setInterval(kRefundNumberRetryMs);
    SetTabs();
    // Off before anything that can fail: a screen whose code lists could not be read offers no action.
    mCmdButton[TransferButton].setEnabled(false);
    mCmdButton[CreateRefundButton].setEnabled(false);
    mCmdButton[SaveButton].setEnabled(false);
    QORVA_DTP1.setMinDate(kEarliestDate);
    QORVA_DTP1.setMaxDate(QDate(9999, 12, 31));
    screencore::valueOrFail(QORVA_CodesCombo.fill(
        screencore::codeTableQueryText(user.region(), kAdjustmentCodes, m_services.clock.today())));
    const messaging::RecordSet codes = screencore::valueOrFail(
        m_services.codeTables.run(screencore::orderedCodeTableQueryText(user.region(), kAdjustmentCodes)));
    GridColumn& action = mSdgDBGrid[PaymentsGrid].column(QStringLiteral("ACTION"));
    action.clearDropDown();
    for (int row = 0; row < codes.recordCount(); ++row) {
      // A payment is canceled only with its whole receipt; the list offers the other adjustments.
      if (trimmed(codes.valueAt(row, QStringLiteral("CD_TBL_CD"))) != u"C") {
        action.addDropDownItem(trimmed(codes.valueAt(row, QStringLiteral("CD_TBL_DES"))));
      }
    }
    mCmdButton[TransferButton].setEnabled(false);
    mCmdButton[CreateRefundButton].setEnabled(false);
    // Nothing may be saved until the host has said that the receipt is open.
    mCmdButton[SaveButton].setEnabled(false);
    mSdgDBGrid[PaymentsGrid].setAllowUpdate(m_mayAdjust);
    mSdgDBGrid[PaymentsGrid].setSelectionMode(platform::Grid::SelectionMode::Single);
    mSdgDBGrid[ExcessGrid].setSelectionMode(platform::Grid::SelectionMode::Single);
    for (const int index : {FundsGrid, PaymentsGrid, ExcessGrid}) {
      SetGridBolding(index);
    }
  });
}

void QORVA_PayDetail::SetTabs() {
  trap(m_services, source("SetTabs"), [&] {
    int order = 0;
    mSdgDBGrid[FundsGrid].setTabIndex(order++);
    mSdgDBGrid[PaymentsGrid].setTabIndex(order++);
    mSdgDBGrid[ExcessGrid].setTabIndex(order++);
    QORVA_CodesCombo.setTabIndex(order++);
    QORVA_DTP1.setTabIndex(order++);
    mTxtAdjust.setTabIndex(order++);
    mCmdButton[SaveButton].setTabIndex(order++);
    mCmdButton[TransferButton].setTabIndex(order++);
    mCmdButton[CreateRefundButton].setTabIndex(order++);
    mCmdButton[CloseButton].setTabIndex(order++);
  });
}

void QORVA_PayDetail::SetGridBolding(int index) {
  trap(m_services, source("SetGridBolding"), [&] { screencore::boldCaptionOnly(mSdgDBGrid[index]); });
}

void QORVA_PayDetail::InitializeData() {
  trap(m_services, source("InitializeData"), [&] {
    QORVA_DTP1.clear();
    QORVA_CodesCombo.setCurrentRow(-1);
    QORVA_CodesCombo.setText(QString());
    mTxtAdjust.setText(QString());
    DefaultFieldColor();
    for (const int index : {FundsGrid, PaymentsGrid, ExcessGrid}) {
      platform::Adodc& data = dataControl(index);
      if (data.recordset() && data.recordset()->isOpen()) {
        data.recordset()->close();
      }
      data.clearRecordset();
    }
  });
}

// --- requests -------------------------------------------------------------------------------------------------

messaging::RequestMessage& QORVA_PayDetail::receiptRequest() {
  messaging::RequestMessage& message = screencore::freshRequest(m_services, *this, mNcsbMessage, replyToName(),
                                                                messaging::requestcodes::Account);
  message.addParameter(marventoParameter(params::ReceiptNbr, ReceiptNumber().trimmed()));
  message.addParameter(marventoParameter(params::ReceiptDetl, params::Yes));
  return message;
}

void QORVA_PayDetail::SendReceiptPI() {
  trap(m_services, source("SendReceiptPI"), [&] {
    if (ReceiptNumber().trimmed().isEmpty()) {
      raise(AppError::LeaveEarly);
    }
    messaging::RequestMessage& message = receiptRequest();
    const QString status = QStringLiteral("Request Receipt Information");
    m_services.statusBar.setText(status);
    m_msgTheme = status;
    m_requestId = screencore::sendRequest(message, *this);
    // An inquiry, not a save: a time-out noticed before belongs to an earlier request.
    m_watch.requestSent();
    m_services.ui.setPointer(platform::Pointer::Hourglass);
  });
}

void QORVA_PayDetail::SendCreateRefundPI() {
  // Reported under the payment plan screen's name, as it always has been.
  trap(m_services, QStringLiteral("QORVA_PaymentPlan.SendCreateRefundPI"), [&] {
    const int row = chosenExcessRow();
    messaging::RequestMessage& message = screencore::freshRequest(m_services, *this, mNcsbMessage, replyToName(),
                                                                  messaging::requestcodes::Account);
    message.addParameter(marventoParameter(params::CustId, row >= 0 ? cell(ExcessGrid, row, "CUST_ID").trimmed()
                                                                    : mLblData[CustomerIdLabel].caption().trimmed()));
    message.addParameter(marventoParameter(params::RcptNbr, ReceiptNumber().trimmed()));
    const QString status = QStringLiteral("Requesting Refund Information");
    m_services.statusBar.setText(status);
    m_msgTheme = status;
    m_requestId = screencore::sendRequest(message, *this);
    m_watch.requestSent();
    m_services.ui.setPointer(platform::Pointer::Hourglass);
  });
}

// --- replies -------------------------------------------------------------------------------------------------

void QORVA_PayDetail::mNcsbMessage_MsgTimeout() {
  trap(m_services, source("mNcsbMessage_MsgTimeout"), [&] { m_watch.timeoutNoticed(); });
}

void QORVA_PayDetail::mNcsbMessage_DataReady(const QString& replyTo, const messaging::Reply& reply) {
  trap(m_services, source("mNcsbMessage_DataReady"), [&] {
    if (replyTo != replyToName()) {
      raise(AppError::LeaveEarly);
    }
    m_watch.replyArrived();
    m_services.statusBar.setText(QString());
    m_services.ui.setPointer(platform::Pointer::Default);
    const QString error = messaging::ReplyChecker::errorText(reply, replyToName(), source("mNcsbMessage_DataReady"),
                                                             m_requestId);
    if (!error.isEmpty()) {
      // A refused or timed-out refund information opens no worksheet.
      m_refundAsked.reset();
      m_watch.failed(error);
      raise(AppError::LeaveEarly);
    }
    // Descriptions are looked up afresh for each answer (code tables change rarely, but they do).
    m_descriptions.clear();
    if (reply.hasSection(messaging::sectionnames::Refund)) {
      prepareWorksheet(reply);
    }
    if (m_watch.answered()) {
      m_services.statusBar.setText(title::Ready);
      InitializeData();
    }
    takeSection(FundsGrid, reply, messaging::sectionnames::Fund);
    takeSection(PaymentsGrid, reply, QString(messaging::sections::kReceiptPayments));
    takeSection(ExcessGrid, reply, messaging::sectionnames::Overpayment);
    takeReceipt(reply);
    m_services.statusBar.setText(title::Ready);
  });
}

void QORVA_PayDetail::takeSection(int grid, const messaging::Reply& reply, const QString& layout) {
  const QString section = layout.section(u':', 0, 0);
  if (!reply.hasSection(section)) {
    return;
  }
  const messaging::RecordSetPtr rows = messaging::RecordSetBuilder::build(reply, layout, m_requestId);
  if (rows->recordCount() > 0) {
    rows->moveFirst();
  }
  dataControl(grid).setRecordset(rows);
  mSdgDBGrid[grid].rebind();
}

void QORVA_PayDetail::takeReceipt(const messaging::Reply& reply) {
  if (!reply.hasSection(messaging::sectionnames::Receipt)) {
    mCmdButton[SaveButton].setEnabled(false);
    return;
  }
  const messaging::RecordSetPtr receipt =
      messaging::RecordSetBuilder::build(reply, messaging::sectionnames::Receipt, m_requestId);
  if (receipt->recordCount() == 0) {
    mCmdButton[SaveButton].setEnabled(false);
    return;
  }
  receipt->moveFirst();
  const QVariant status = receipt->value(QStringLiteral("RCPT_STTS_CD"));
  if (!status.isNull()) {
    mLblData[StatusLabel].setCaption(m_services.codes.description(kFundStatusCodes, trimmed(status)).trimmed());
  }
  m_receiptOpen = trimmed(status).toUpper() == u"O";
  mCmdButton[SaveButton].setEnabled(m_receiptOpen && m_mayAdjust);
  if (const QVariant confirmation = receipt->value(QStringLiteral("CNFRMTN_NBR")); !confirmation.isNull()) {
    mLblData[ConfirmationLabel].setCaption(trimmed(confirmation));
  }
  m_receiptVersion = trimmed(receipt->value(QStringLiteral("ROW_VRSN_NBR")));
}

void QORVA_PayDetail::prepareWorksheet(const messaging::Reply& reply) {
  if (!m_refundAsked || m_refundAsked->requestId != m_requestId) {
    return;  // no Create Refund waits for this answer
  }
  const RefundAsked asked = *std::exchange(m_refundAsked, std::nullopt);
  const messaging::RecordSetPtr info =
      messaging::RecordSetBuilder::build(reply, QString(messaging::sections::kRefundInformation), m_requestId);
  m_worksheet = m_refundOpener ? m_refundOpener() : nullptr;
  if (!m_worksheet) {
    return;
  }
  RefundWorksheet& sheet = *m_worksheet;
  sheet.setCustomerID(asked.customerId);
  for (const auto& [label, text] : asked.labels) {
    sheet.setDataLabel(label, text);
  }
  for (info->moveFirst(); !info->eof(); info->moveNext()) {
    const auto take = [&](const char* field, const std::function<void(const QString&)>& write) {
      const QVariant value = info->value(QLatin1String(field));
      if (!value.isNull()) {
        write(trimmed(value));
      }
    };
    take("CUST_ID", [&](const QString& v) { sheet.setCustomerID(v); });
    // The number of a worksheet already under way becomes the worksheet's own; without one the worksheet
    // takes a new number from the refund series when it loads.
    take("RFND_NBR", [&](const QString& v) { sheet.setDataLabel(RefundWorksheet::RefundNumberLabel, v); });
    // Before the worksheet loads: it reads its status when it does.
    take("STTS_CD", [&](const QString& v) { sheet.setStatus(v); });
    take("CUST_NM", [&](const QString& v) { sheet.setDataLabel(RefundWorksheet::NameLabel, v); });
    take("ADDR_1", [&](const QString& v) { sheet.setDataLabel(RefundWorksheet::Address1Label, v); });
    take("ADR_2_ADR", [&](const QString& v) { sheet.setSecondAddressLine(v); });
    take("CITY", [&](const QString& v) { sheet.setDataLabel(RefundWorksheet::CityLabel, v); });
    take("STATE", [&](const QString& v) { sheet.setDataLabel(RefundWorksheet::StateLabel, v); });
    take("ZIP", [&](const QString& v) { sheet.setDataLabel(RefundWorksheet::ZipLabel, v); });
  }
  // Shown once this reply has been dealt with: the worksheet's own requests and the receipt read again after
  // it closes then start from a screen at rest.
  QMetaObject::invokeMethod(this, &QORVA_PayDetail::showPreparedWorksheet, Qt::QueuedConnection);
}

void QORVA_PayDetail::showPreparedWorksheet() {
  trap(m_services, source("showPreparedWorksheet"), [&] {
    if (!m_worksheet) {
      return;
    }
    if (!isVisible()) {
      m_worksheet.reset();  // the screen closed before the worksheet could be shown
      return;
    }
    showWorksheetThenReload();
  });
}

// --- the grids -------------------------------------------------------------------------------------------------

QVariant QORVA_PayDetail::value(int grid, int row, const char* column) const {
  const platform::Grid& g = mSdgDBGrid[grid];
  return g.cellValue(row, g.columnIndex(QLatin1String(column)));
}

QString QORVA_PayDetail::cell(int grid, int row, const char* column) const { return value(grid, row, column).toString(); }

void QORVA_PayDetail::mSdgDBGrid_RowLoaded(int index, messaging::Bookmark) {
  static const QString kRowLoaded = source("mSdgDBGrid_RowLoaded");
  trap(m_services, kRowLoaded, [&] {
    platform::Grid& grid = mSdgDBGrid[index];
    const auto showDescription = [&](const char* target, const char* codeColumn, const QString& table) {
      const QVariant code = grid.column(QLatin1String(codeColumn)).value();
      if (!code.isNull()) {
        grid.column(QLatin1String(target)).setValue(this->describe(table, trimmed(code)));
      }
    };
    if (index == PaymentsGrid) {
      showDescription("FORM_DESC", "ACCT_RCVBL_TYP_CD", QStringLiteral("REFDOCTYP"));
      showDescription("ACTVTY_STTS_DES", "ACTVTY_STTS_CD", kAdjustmentCodes);
      GridColumn& paid = grid.column(QStringLiteral("ASMT_AMT"));
      if (const QString text = paid.text().trimmed(); !text.isEmpty()) {
        if (const messaging::Result<Currency> amount = Currency::parse(text)) {
          paid.setValue(amount.value().toDisplayText());
        }
      }
    } else if (index == ExcessGrid) {
      showDescription("FUND_DESC", "OVR_PYMT_STTS_CD", kFundStatusCodes);
      GridColumn& destination = grid.column(QStringLiteral("DSTNTN_RCPT_NBR"));
      if (destination.text().trimmed() == u"0") {
        destination.setValue(QString());
      }
    } else {
      showDescription("FUND_DESC", "FUND_TYP_CD", QStringLiteral("FUNDTYP"));
      const QString type = grid.column(QStringLiteral("FUND_TYP_CD")).text().trimmed();
      const QString day = grid.column(QStringLiteral("EXPRTN_DY_DT")).text().trimmed();
      if (type == u"R" && !day.isEmpty()) {
        grid.column(QStringLiteral("FUND_EXPR"))
            .setValue(grid.column(QStringLiteral("EXPRTN_MO_DT")).text().trimmed() + u'/' + day + u'/' +
                      grid.column(QStringLiteral("EXPRTN_YR_DT")).text().trimmed());
      } else {
        grid.column(QStringLiteral("FUND_EXPR")).setValue(QStringLiteral("N/A"));
      }
    }
  });
}

QString QORVA_PayDetail::describe(const QString& table, const QString& code) {
  const QString key = table + u'\t' + code;
  const auto found = m_descriptions.constFind(key);
  if (found != m_descriptions.constEnd()) {
    return found.value();
  }
  const QString description = m_services.codes.description(table, code);
  m_descriptions.insert(key, description);
  return description;
}

int QORVA_PayDetail::chosenExcessRow() const {
  const platform::Grid& grid = mSdgDBGrid[ExcessGrid];
  const QList<int> rows = grid.selectedRows();
  return rows.size() == 1 ? rows.first() : -1;
}

void QORVA_PayDetail::mSdgDBGrid_Click(int index) {
  trap(m_services, source("mSdgDBGrid_Click"), [&] {
    if (index != ExcessGrid) {
      return;
    }
    platform::Grid& grid = mSdgDBGrid[ExcessGrid];
    const int row = chosenExcessRow();
    if (row >= 0) {
      grid.setRow(row);
    }
    // Deliberately blind to the rights: the host refuses what the officer may not do.
    mCmdButton[TransferButton].setEnabled(row >= 0);
    mCmdButton[CreateRefundButton].setEnabled(row >= 0);
    // Choosing an excess fund never carries a half-entered receipt adjustment along.
    DefaultFieldColor();
    QORVA_DTP1.setToday();
    QORVA_DTP1.clear();
    QORVA_CodesCombo.setCurrentRow(-1);
    QORVA_CodesCombo.setText(QString());
  });
}

void QORVA_PayDetail::mSdgDBGrid_Change(int index) {
  trap(m_services, source("mSdgDBGrid_Change"), [&] { mSdgDBGrid[index].update(); });
}

void QORVA_PayDetail::mSdgDBGrid_ScrollAfter(int index) {
  trap(m_services, source("mSdgDBGrid_ScrollAfter"), [&] {
    mSdgDBGrid[index].setRedraw(false);
    mSdgDBGrid[index].refresh();
    mSdgDBGrid[index].setRedraw(true);
  });
}

// --- inputs --------------------------------------------------------------------------------------------------

QString QORVA_PayDetail::receiptAction() const { return QORVA_CodesCombo.selectedCode().trimmed().toUpper(); }

void QORVA_PayDetail::QORVA_CodesCombo_Change() {
  trap(m_services, source("QORVA_CodesCombo_Change"), [&] {
    if (QORVA_CodesCombo.text().trimmed().toUpper() == kBackout &&
        m_services.user.hasRight(QStringLiteral("ADJUSTRCPTCANCELONLY"))) {
      m_services.ui.messageBox(QStringLiteral("Your privileges do not include the BACKOUT option"),
                               platform::MsgButtons::Ok, platform::MsgIcon::Information, title::messageTitle());
      QORVA_CodesCombo.setCurrentRow(-1);
      QORVA_CodesCombo.setText(QString());
    }
  });
}

void QORVA_PayDetail::QORVA_CodesCombo_LostFocus() {
  trap(m_services, source("QORVA_CodesCombo_LostFocus"), [&] { CheckEdit(); });
}

void QORVA_PayDetail::mTxtAdjust_LostFocus() {
  trap(m_services, source("mTxtAdjust_LostFocus"), [&] { CheckEdit(); });
}

void QORVA_PayDetail::QORVA_DTP1_LostFocus() {
  trap(m_services, source("QORVA_DTP1_LostFocus"), [&] { CheckEdit(); });
}

// --- validation -------------------------------------------------------------------------------------------------

void QORVA_PayDetail::DefaultFieldColor() {
  trap(m_services, source("DefaultFieldColor"), [&] {
    for (platform::Control* input : std::initializer_list<platform::Control*>{
             &QORVA_CodesCombo, &QORVA_DTP1, &mTxtAdjust, &mSdgDBGrid[PaymentsGrid]}) {
      m_services.fieldMarking.restore(*input);
    }
  });
}

void QORVA_PayDetail::fail(platform::Control& input, const QString& message) {
  m_services.fieldMarking.markError(input);
  mStrErr += message + kLineBreak;
  m_errorFlag = true;
}

void QORVA_PayDetail::CheckEdit() {
  trap(m_services, source("CheckEdit"), [&] {
    mStrErr.clear();
    m_errorFlag = false;
    DefaultFieldColor();
    if (QORVA_DTP1.isEmpty()) {
      fail(QORVA_DTP1, QStringLiteral("Adjusted Date is required"));
    } else {
      const QString adjusted = QORVA_DTP1.date().toString(QStringLiteral("yyyy-MM-dd"));
      const messaging::Result<QDate> paid = platform::parseAnyDate(mLblData[PaymentDateLabel].caption().trimmed());
      if (adjusted > m_services.clock.today().toString(QStringLiteral("yyyy-MM-dd"))) {
        fail(QORVA_DTP1, QStringLiteral("Date Adjusted must be today or a prior date"));
      } else if (paid && adjusted < paid.value().toString(QStringLiteral("yyyy-MM-dd"))) {
        fail(QORVA_DTP1, QStringLiteral("Date Adjusted could not be earlier than payment date"));
      }
    }

    platform::Grid& payments = mSdgDBGrid[PaymentsGrid];
    payments.update();
    bool adjusting = false;
    bool alreadyOut = false;
    bool remain = false;
    for (int row = 0; row < payments.rows(); ++row) {
      const QString action = cell(PaymentsGrid, row, "ACTION").trimmed().toUpper();
      if (action == kBackout || action == kCancel) {
        adjusting = true;
        const QString status = cell(PaymentsGrid, row, "ACTVTY_STTS_CD").trimmed().toUpper();
        if (status == u"B" || status == u"C") {
          alreadyOut = true;
        }
      }
    }
    for (int row = 0; row < payments.rows(); ++row) {
      if (value(PaymentsGrid, row, "ACTVTY_STTS_CD").isNull()) {
        remain = true;
      }
    }
    if (!remain) {
      fail(payments, QStringLiteral("No payments remain to adjust out"));
    }
    const QString action = receiptAction();
    const bool receiptAdjusted = action == u"C" || action == u"B";
    if (receiptAdjusted && adjusting) {
      fail(QORVA_CodesCombo, QStringLiteral("Can not adjust the receipt and adjust a payment at the same time"));
    }
    if (!receiptAdjusted && !adjusting) {
      fail(QORVA_CodesCombo, QStringLiteral("Please adjust the receipt or a payment against an account receivable"));
    }
    if (mTxtAdjust.text().trimmed().isEmpty()) {
      fail(mTxtAdjust, QStringLiteral("Comment is required"));
    }
    const QString status = mLblData[StatusLabel].caption();
    if (status.startsWith(u'C') || status.startsWith(u'B')) {
      fail(QORVA_CodesCombo, QStringLiteral("Can not save a backed out or canceled receipt"));
    }
    if (alreadyOut) {
      fail(payments, QStringLiteral("Can not save a payment that has been backed out or canceled"));
    }
  });
}

bool QORVA_PayDetail::DataChanged() {
  return platform::trapValue(m_services, source("DataChanged"), false, [&] {
    m_services.statusBar.setText(title::CheckingForDataChanges);
    if (!mTxtAdjust.text().isEmpty() || !QORVA_DTP1.isEmpty()) {
      return true;
    }
    const QString action = receiptAction();
    if (action == u"C" || action == u"B") {
      return true;
    }
    const platform::Grid& payments = mSdgDBGrid[PaymentsGrid];
    for (int row = 0; row < payments.rows(); ++row) {
      const QString mark = cell(PaymentsGrid, row, "ACTION").trimmed().toUpper();
      if (mark == kBackout || mark == kCancel) {
        return true;
      }
    }
    return false;
  });
}

// --- the save --------------------------------------------------------------------------------------------------

void QORVA_PayDetail::SaveData() {
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
    messaging::RequestMessage& message = receiptRequest();
    const QString status = QStringLiteral("Saving Payment Adjustments for Receipt number ") + ReceiptNumber();
    m_services.statusBar.setText(status);
    m_msgTheme = status;
    LoadAdjustPayDTD(message);
    const QString action = receiptAction();
    if (action == u"B" || action == u"C") {
      LoadAccRecvForReceiptDTD(message);
    } else {
      LoadAccRecvDTD(message);
    }
    m_requestId = screencore::sendRequest(message, *this);
    m_services.ui.setPointer(platform::Pointer::Hourglass);
    m_watch.saveSent(m_requestId, QStringLiteral("the payment adjustments of receipt number ") +
                                      ReceiptNumber().trimmed());
  });
}

void QORVA_PayDetail::LoadAdjustPayDTD(messaging::RequestMessage& message) {
  // Reported under the refund worksheet's name, as it always has been.
  trap(m_services, QStringLiteral("QORVA_WorkSheet.LoadAdjustPayDTD"), [&] {
    messaging::SaveRecord& record = message.addRecord(messaging::saverecords::AdjustPay);
    const QString action = receiptAction();
    record.setField(QStringLiteral("ACTION"), QStringLiteral("ADD"));
    record.setField(QStringLiteral("ADJSTMT_DT"), QORVA_DTP1.date().toString(QStringLiteral("yyyy-MM-dd")));
    record.setField(QStringLiteral("ADJSTMT_CMMT_TXT"), mTxtAdjust.text());
    if (action == u"C" || action == u"B") {
      record.setField(QStringLiteral("ADJSTMT_TYP_CD"), action);
    }
    record.setField(QStringLiteral("RCPT_NBR"), ReceiptNumber().trimmed());
    record.setField(QStringLiteral("ROW_VRSN_NBR"), m_receiptVersion);
  });
}

namespace {

void addPaymentRecord(messaging::RequestMessage& message, const platform::Grid& grid, int row,
                      const QString& adjustment, const QString& adjusted) {
  const auto text = [&](const char* column) {
    return grid.cellValue(row, grid.columnIndex(QLatin1String(column))).toString().trimmed();
  };
  messaging::SaveRecord& record = message.addRecord(messaging::saverecords::AccountReceivables);
  record.setField(QStringLiteral("ACTION"), QStringLiteral("UPD"));
  for (const char* field : {"CUST_ID", "ACCT_RCVBL_TYP_CD", "ACCT_RCVBL_NBR", "ACCT_RCVBL_CK_NBR"}) {
    record.setField(QLatin1String(field), text(field));
  }
  record.setField(QStringLiteral("ADJST_ACTION"), adjustment);
  // The amount as the host sent it (the grid shows it formatted).
  const messaging::Result<Currency> paid = Currency::parse(text("ASMT_AMT"));
  record.setField(QStringLiteral("CL_PYMT_AMT"), paid ? paid.value().toHostText() : text("ASMT_AMT"));
  record.setField(QStringLiteral("ADJSTMT_DT"), adjusted);
  record.setField(QStringLiteral("TRNSCTN_DT"), text("TRNSCTN_DT"));
  record.setField(QStringLiteral("TRNSCTN_NBR"), text("TRNSCTN_NBR"));
  record.setField(QStringLiteral("ROW_VRSN_NBR"), text("ROW_VRSN_NBR"));
}

}  // namespace

void QORVA_PayDetail::LoadAccRecvDTD(messaging::RequestMessage& message) {
  trap(m_services, source("LoadAccRecvDTD"), [&] {
    const platform::Grid& payments = mSdgDBGrid[PaymentsGrid];
    const QString adjusted = QORVA_DTP1.date().toString(QStringLiteral("yyyy-MM-dd"));
    for (int row = 0; row < payments.rows(); ++row) {
      const QString mark = cell(PaymentsGrid, row, "ACTION").trimmed().toUpper();
      if (mark == kBackout) {
        addPaymentRecord(message, payments, row, QStringLiteral("B"), adjusted);
      } else if (mark == kCancel) {
        addPaymentRecord(message, payments, row, QStringLiteral("C"), adjusted);
      }
    }
  });
}

void QORVA_PayDetail::LoadAccRecvForReceiptDTD(messaging::RequestMessage& message) {
  trap(m_services, source("LoadAccRecvForReceiptDTD"), [&] {
    const platform::Grid& payments = mSdgDBGrid[PaymentsGrid];
    const QString adjusted = QORVA_DTP1.date().toString(QStringLiteral("yyyy-MM-dd"));
    const QString adjustment = receiptAction() == u"C" ? QStringLiteral("C") : QStringLiteral("B");
    for (int row = 0; row < payments.rows(); ++row) {
      if (value(PaymentsGrid, row, "ADJSTMT_DT").isNull()) {
        addPaymentRecord(message, payments, row, adjustment, adjusted);
      }
    }
  });
}

// --- the save watch ----------------------------------------------------------------------------------------------

void QORVA_PayDetail::PendingSave(bool enable) {
  trap(m_services, source("PendingSave"), [&] {
    const bool inputs = enable && m_mayAdjust;
    QORVA_DTP1.setEnabled(inputs);
    QORVA_CodesCombo.setEnabled(inputs);
    mTxtAdjust.setEnabled(inputs);
    mCmdButton[SaveButton].setEnabled(inputs && m_receiptOpen);
    mSdgDBGrid[PaymentsGrid].setEnabled(enable && !m_cancelOnly);
    mSdgDBGrid[ExcessGrid].setEnabled(enable && !m_cancelOnly);
    if (!enable) {
      mCmdButton[TransferButton].setEnabled(false);
      mCmdButton[CreateRefundButton].setEnabled(false);
    }
  });
}

void QORVA_PayDetail::lockAfterUnansweredSave() {
  mCmdButton[SaveButton].setEnabled(false);
  mCmdButton[TransferButton].setEnabled(false);
  mCmdButton[CreateRefundButton].setEnabled(false);
  mCmdButton[CloseButton].setEnabled(true);
}

void QORVA_PayDetail::UpdateTimeout() {
  trap(m_services, source("UpdateTimeout"), [&] { m_watch.updateTimeout(); });
}

void QORVA_PayDetail::mTimUpdateTimeout_Timer() {
  trap(m_services, source("mTimUpdateTimeout_Timer"), [&] { m_watch.timerTicked(); });
}

void QORVA_PayDetail::mTimUpdateTimeoutNumber_Timer() {
  // Reported under the document's name, as it always has been.
  trap(m_services, QStringLiteral("QORVA_AdjustAcc.mTimUpdateTimeoutNumber_Timer"), [&] {
    mTimUpdateTimeoutNumber.setEnabled(false);
    const QString number = m_services.numbers.nextNumber(QStringLiteral("F")).trimmed();
    if (number.isEmpty() || number == kNoRefundNumber) {
      mTimUpdateTimeoutNumber.setEnabled(true);
      m_services.ui.messageBox(QStringLiteral("The system was not able to read the next available Refund Number.") +
                                   kLineBreak +
                                   QStringLiteral("The system will automatically update your Refund Number when "
                                                  "available."),
                               platform::MsgButtons::Ok, platform::MsgIcon::Exclamation, title::messageTitle());
      return;
    }
    if (m_worksheet) {
      m_worksheet->setDataLabel(RefundWorksheet::RefundNumberLabel, number);
    }
  });
}

// --- buttons -------------------------------------------------------------------------------------------------------

void QORVA_PayDetail::mCmdButton_Click(int index) {
  trap(m_services, source("mCmdButton_Click"), [&] {
    if (index == SaveButton) {
      CheckEdit();
      if (!mStrErr.isEmpty()) {
        m_services.ui.messageBox(mStrErr, platform::MsgButtons::Ok, platform::MsgIcon::Exclamation,
                                 title::messageTitle());
        return;
      }
    }
    switch (index) {
      case TransferButton:
        transferPayment();
        break;
      case CreateRefundButton:
        createRefund();
        break;
      case SaveButton:
        SaveData();
        break;
      case CloseButton:
        close();
        break;
      default:
        break;
    }
  });
}

bool QORVA_PayDetail::receiptConfirmed() const { return !mLblData[ConfirmationLabel].caption().trimmed().isEmpty(); }

void QORVA_PayDetail::refuse(const QString& message) {
  m_services.ui.messageBox(message, platform::MsgButtons::Ok, platform::MsgIcon::Exclamation, title::messageTitle());
}

bool QORVA_PayDetail::excessFundUsable(int row, const QString& statusMessage, const QString& confirmationMessage) {
  if (row < 0) {
    refuse(kSelectExcessFund);
    return false;
  }
  if (cell(ExcessGrid, row, "OVR_PYMT_STTS_CD").trimmed() != u"O") {
    refuse(statusMessage);
    return false;
  }
  if (!receiptConfirmed()) {
    refuse(confirmationMessage);
    return false;
  }
  return true;
}

void QORVA_PayDetail::createRefund() {
  const int row = chosenExcessRow();
  if (!excessFundUsable(row, QStringLiteral("Excess Fund status must be OPEN to create refund"),
                        QStringLiteral("Excess Funds that are not Confirmed can not be Refunded"))) {
    return;
  }
  if (!m_refundOpener) {
    m_services.ui.messageBox(QStringLiteral("The Refund Worksheet screen is not available in this version of the "
                                            "application. No refund was created."),
                             platform::MsgButtons::Ok, platform::MsgIcon::Information, title::messageTitle());
    return;
  }
  // The chosen fund as it is now: the clerk may choose another row while the host answers.
  RefundAsked asked;
  asked.customerId = cell(ExcessGrid, row, "CUST_ID").trimmed();
  const std::pair<int, const char*> labels[] = {
      {RefundWorksheet::NameLabel, "NAME"},   {RefundWorksheet::Address1Label, "ADDR_1"},
      {RefundWorksheet::CityLabel, "CITY"},   {RefundWorksheet::StateLabel, "STATE"},
      {RefundWorksheet::ZipLabel, "ZIP"},     {RefundWorksheet::AmountLabel, "AMOUNT"}};
  const platform::Grid& excess = mSdgDBGrid[ExcessGrid];
  for (const auto& [label, column] : labels) {
    asked.labels.append({label, excess.displayText(row, excess.columnIndex(QLatin1String(column)))});
  }
  const QString before = m_requestId;
  SendCreateRefundPI();
  if (m_requestId == before) {
    return;  // not sent; the failure was reported
  }
  asked.requestId = m_requestId;
  m_refundAsked = std::move(asked);
  // The worksheet is prepared and shown when the refund information is answered (prepareWorksheet).
}

void QORVA_PayDetail::openWorksheet(int row) {
  trap(m_services, source("openWorksheet"), [&] {
    const platform::Grid& grid = mSdgDBGrid[ExcessGrid];
    if (row < 0 || row >= grid.rows()) {
      raise(AppError::LeaveEarly);
    }
    const QString number = cell(ExcessGrid, row, "RFND_NBR").trimmed();
    if (number.isEmpty()) {
      m_services.statusBar.setText(QStringLiteral("This excess fund is on no refund worksheet."));
      return;
    }
    if (!m_refundOpener) {
      m_services.ui.messageBox(QStringLiteral("The Refund Worksheet screen is not available in this version of the "
                                              "application."),
                               platform::MsgButtons::Ok, platform::MsgIcon::Information, title::messageTitle());
      return;
    }
    m_worksheet = m_refundOpener();
    if (!m_worksheet) {
      return;
    }
    // Officers who work on refunds may take the worksheet's next step; anyone else looks.
    const QString editMode = m_services.user.hasRight(QStringLiteral("CREATEREFUND")) ? QStringLiteral("O") : QString();
    m_worksheet->loadExisting(cell(ExcessGrid, row, "CUST_ID").trimmed(),
                              cell(ExcessGrid, row, "RFND_STTS_CD").trimmed(), number, editMode);
    showWorksheetThenReload();
  });
}

void QORVA_PayDetail::transferPayment() {
  const int row = chosenExcessRow();
  if (!excessFundUsable(row, QStringLiteral("Excess Fund status must be OPEN to Transfer a payment"),
                        QStringLiteral("Excess Funds that are not Confirmed can not be Transferred"))) {
    return;
  }
  QORVA_TransPayment transfer(m_services);
  const auto text = [&](const char* column) { return cell(ExcessGrid, row, column).trimmed(); };
  transfer.setOwner({text("CUST_ID"), text("NAME"), text("ADDR_1"), text("ADDR_2"), text("CITY"), text("STATE"),
                     text("ZIP")});
  transfer.setReceiptNumber(ReceiptNumber());
  const messaging::Result<Currency> excess = Currency::parse(text("AMOUNT"));
  transfer.setExcessAmount(excess ? excess.value() : Currency());
  transfer.showModal();
  transfer.Form_Terminate();
  if (transfer.AccountChanged()) {
    m_changedElsewhere = true;
    reload();
  }
}

void QORVA_PayDetail::showWorksheetThenReload() {
  m_worksheet->showModal();
  const bool completed = m_worksheet->refundCompleted();
  m_worksheet.reset();
  if (completed) {
    m_changedElsewhere = true;
    reload();
  }
}

void QORVA_PayDetail::reload() {
  InitializeData();
  SendReceiptPI();
}

void QORVA_PayDetail::close() {
  const platform::Grid& excess = mSdgDBGrid[ExcessGrid];
  m_excessRemains = false;
  for (int row = 0; row < excess.rows(); ++row) {
    if (cell(ExcessGrid, row, "OVR_PYMT_STTS_CD").trimmed() == u"O") {
      m_excessRemains = true;
    }
  }
  if (m_excessRemains &&
      m_services.ui.messageBox(QStringLiteral("There are Excess Funds remaining.  Would you like to exit this screen?"),
                               platform::MsgButtons::YesNoCancel, platform::MsgIcon::Exclamation,
                               title::messageTitle()) != platform::MsgAnswer::Yes) {
    return;
  }
  m_watch.closing();
  m_refundAsked.reset();
  m_services.ui.setPointer(platform::Pointer::Default);
  setVisible(false);
}

}  // namespace adjustacc::payments
