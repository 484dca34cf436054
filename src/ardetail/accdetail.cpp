#include "accdetail.h"

#include "assessmentline.h"
#include "licpurchopt.h"

#include "activity/activity.h"

#include "screencore/codetablequerytext.h"
#include "messaging/protocolwords.h"
#include "messaging/receivablebalance.h"
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
#include "platform/statusbar.h"
#include "platform/user.h"
#include "screencore/listpreparation.h"
#include "screencore/procedure.h"
#include "screencore/screenrequest.h"

#include <QScopedValueRollback>


namespace adjustacc::ardetail {

using platform::AppError;
using platform::Currency;
using platform::GridColumn;
using platform::raise;
using platform::trap;
using screencore::marventoParameter;
namespace title = platform::modMessageTitle;

namespace {

const QString kLineBreak = QStringLiteral("\r\n");
const QString kRemove = QStringLiteral("REMOVE");
const QString kReinstate = QStringLiteral("REINSTATE");
const QString kChecked = QStringLiteral("-1");
const QString kActivitySection = QStringLiteral("ACCOUNTACTIVITY");
// What an added or changed activity row carries back to the host.
const char* const kActivityFields[] = {"ACTION",          "ACTVTY_SEQ_NBR", "ACCT_RCVBL_NBR",   "ACCT_CK_DGT_NBR",
                                       "ACCT_RCVBL_TYP_CD", "ACTVTY_DT",    "ACTVTY_TM",        "ACCT_ACTVTY_CD",
                                       "ACTVTY_CMMT_TXT", "LST_UPDT_USER_ID", "LST_UPDT_TS",     "ROW_VRSN_NBR"};
const QDate kEarliestDate(1993, 1, 1);
const QDate kLatestDate(9999, 12, 31);
// The License Purchase Option fees: one of them at a time may be removed.
const QStringList kOptionFees = {QStringLiteral("F01"), QStringLiteral("F09"), QStringLiteral("F15")};
// The form kinds that may be deleted.
const QStringList kDeletableTypes = {QStringLiteral("T"), QStringLiteral("O"), QStringLiteral("M"),
                                     QStringLiteral("C")};

struct ColumnProps {
  const char16_t* name;
  const char16_t* caption;  // empty: the name, and the column carries a code or key that is not shown
  GridColumn::Display display;
};

constexpr auto Text = GridColumn::Display::Text;
constexpr auto Money = GridColumn::Display::Currency;
constexpr auto Check = GridColumn::Display::Check;

// Columns 0 to 10 of both grids; the assessment line fills them in this order.
const ColumnProps kCommonColumns[] = {
    {u"VLTN_ASSMT_STTS_CD", u"", Text}, {u"VLTN_ASSMT_SEQ_NBR", u"", Text},
    {u"TRNSCTN_NBR", u"", Text},        {u"CUST_ID", u"", Text},
    {u"CUST_NM", u"", Text},            {u"ASSMT_ISSUE_DT", u"Assessment Date", Text},
    {u"ADJSTMT_DT", u"Last Adjust Date", Text}, {u"ASSMT_CD", u"", Text},
    {u"Description", u"Description", Text},     {u"CL_ASMT_AMT", u"Assessment", Money},
    {u"BAL_DUE_AMT", u"Amount Due", Money},
};
const ColumnProps kAvailableColumns[] = {
    {u"REMOVE", u"Remove", Check},
    {u"LIC_PRCHS_OPTN_IND", u"", Text},
};
const ColumnProps kAdjustedColumns[] = {
    {u"REINSTATE", u"Reinstate", Check},
    {u"LIC_PRCHS_OPTN_IND", u"LPO_IND", Text},
    {u"STTS_IND", u"", Text},
    {u"ASSMT_TYP_CD", u"", Text},
};
// Hidden on both: the amount of a License Purchase Option row, which a moved row is read from, the row
// version the host checks when the row is saved, and for a removed row what reinstating it owes again.
const ColumnProps kHiddenColumns[] = {
    {u"AC_ASMT_AMT", u"", Text},
    {u"ROW_VRSN_NBR", u"", Text},
    {u"RMVD_BAL_AMT", u"", Text},
};

const QString& checkColumn(int grid) { return grid == QORVA_AccDetail::AvailableGrid ? kRemove : kReinstate; }

}  // namespace

QORVA_AccDetail::QORVA_AccDetail(platform::Services& services, QObject* parent)
    : ModalScreen(services, kFormName, kCaption, parent),
      m_watch(services,
              {.pendingSave = [this](bool enable) { PendingSave(enable); },
               .initializeData = [this] { InitializeData(); },
               .assumeApplied =
                   [this] {
                     removeMovedRows(AvailableGrid);
                     removeMovedRows(AdjustedGrid);
                     m_activityChanges.reset();
                   },
               .updateTimeout = [this] { UpdateTimeout(); }},
              &mTimUpdateTimeout) {
  const QString captions[] = {QStringLiteral("Account #:"),
                              QStringLiteral("Name:"),
                              QStringLiteral("Status:"),
                              QStringLiteral("Typ CD"),
                              QStringLiteral("Action:"),
                              QString(),
                              QStringLiteral("Comment:"),
                              QStringLiteral("Date Adjusted:"),
                              QStringLiteral("Total Adjustment Amount:"),
                              QStringLiteral("Total Removal Amount:"),
                              QStringLiteral("Total Reinstated Amount:")};
  for (int index = AccountCaption; index <= NameLabel; ++index) {
    mLblAdjust.add(index, index <= TotalReinstatedCaption ? captions[index] : QString());
  }
  QORVA_CodesCombo.setSource(&services.codeTables);
  QORVA_CodesCombo.setCodeTable(QStringLiteral("ACCADJUST"));
  mDtpDTPicker.setMaxDate(kLatestDate);
  // As long as the host keeps it whole; the activity row it also goes into is shortened there.
  mTxtAdjust.setMaxLength(messaging::limits::CommentLength);
  mCmdButton.add(AccountActivityButton, QStringLiteral("Account Activity"));
  mCmdButton.add(SaveButton, QStringLiteral("Save"));
  mCmdButton.add(CloseButton, QStringLiteral("Close"));
  mCmdButton.forEach([this](int index, platform::Button& button) {
    connect(&button, &platform::Button::clicked, this, [this, index] { mCmdButton_Click(index); });
  });
  for (const int index : {AvailableGrid, AdjustedGrid}) {
    platform::Grid& grid = mSdgDBGrid.add(index);
    layOutGrid(index);
    grid.setRowLoadedHandler([this, index](messaging::Bookmark bookmark) { mSdgDBGrid_RowLoaded(index, bookmark); });
    connect(&grid, &platform::Grid::edited, this, [this, index] { mSdgDBGrid_Change(index); });
    connect(&grid, &platform::Grid::afterUpdate, this, [this, index] { mSdgDBGrid_AfterUpdate(index); });
  }
  connect(&mDtpDTPicker, &platform::DatePicker::valueChanged, this, &QORVA_AccDetail::mDtpDTPicker_Change);
  connect(&QORVA_CodesCombo, &platform::CodesCombo::textChanged, this, &QORVA_AccDetail::QORVA_CodesCombo_Change);
  connect(&mTimUpdateTimeout, &platform::Timer::tick, this, &QORVA_AccDetail::mTimUpdateTimeout_Timer);
}

QORVA_AccDetail::~QORVA_AccDetail() = default;

QString QORVA_AccDetail::replyToName() const {
  return m_services.session.applicationName() + QStringLiteral("AccDetail");
}

void QORVA_AccDetail::layOutGrid(int index) {
  platform::Grid& grid = mSdgDBGrid[index];
  grid.setCaption(index == AvailableGrid ? QStringLiteral("Available Assessments")
                                         : QStringLiteral("Adjusted  Assessments"));
  const auto layOut = [&grid](const auto& columns) {
    for (const ColumnProps& props : columns) {
      const QString name = QString::fromUtf16(props.name);
      const QString caption = QString::fromUtf16(props.caption);
      GridColumn& column = grid.addColumn(name, caption.isEmpty() ? name : caption);
      column.setDisplay(props.display);
      column.setVisible(!caption.isEmpty());
      // The clerk only marks rows; every other cell is the host's.
      column.setLocked(props.display != Check);
    }
  };
  layOut(kCommonColumns);
  if (index == AvailableGrid) {
    layOut(kAvailableColumns);
  } else {
    layOut(kAdjustedColumns);
  }
  layOut(kHiddenColumns);
  CarriedColumns& carried = m_carried[index];
  carried.optionAmount = grid.columnIndex(QStringLiteral("AC_ASMT_AMT"));
  carried.statusIndicator = grid.columnIndex(QStringLiteral("STTS_IND"));
  carried.type = grid.columnIndex(QStringLiteral("ASSMT_TYP_CD"));
  carried.rowVersion = grid.columnIndex(QStringLiteral("ROW_VRSN_NBR"));
  carried.removedBalance = grid.columnIndex(QStringLiteral("RMVD_BAL_AMT"));
  carried.amount = grid.columnIndex(QStringLiteral("CL_ASMT_AMT"));
  carried.due = grid.columnIndex(QStringLiteral("BAL_DUE_AMT"));
}

// --- what the opener hands over --------------------------------------------------------------------------------

void QORVA_AccDetail::setARNumber(const QString& number) { mLblAdjust[AccountNumberLabel].setCaption(number); }

void QORVA_AccDetail::setARType(const QString& type) { mLblAdjust[TypeCodeLabel].setCaption(type); }

void QORVA_AccDetail::setStatus(const QString& code, const QString& description) {
  m_statusCode = code;
  mLblAdjust[StatusLabel].setCaption(description);
}

void QORVA_AccDetail::setSaveAllowed(bool allowed) {
  m_saveAllowed = allowed;
  mCmdButton[SaveButton].setEnabled(allowed && m_mayAdjust);
}

void QORVA_AccDetail::addAssessment(const messaging::RecordSet& assessments) {
  addAssessment(assessments, AssessmentFields::of(assessments));
}

void QORVA_AccDetail::addAssessment(const messaging::RecordSet& assessments, const AssessmentFields& fields) {
  const AssessmentLine line = assessmentLine(assessments, fields, m_services.codes);
  platform::Grid& grid = mSdgDBGrid[line.gridIndex];
  if (!grid.addItem(line.cells)) {
    platform::fail(QStringLiteral("The assessment could not be added to the %1 list").arg(grid.caption()));
  }
  const int row = grid.rows() - 1;
  const CarriedColumns& carried = m_carried[line.gridIndex];
  const int at = assessments.absolutePosition();
  const auto keep = [&](int column, int field) {
    if (column >= 0 && field >= 0 && !assessments.isNullAt(at, field)) {
      grid.setCellValue(row, column, assessments.textAt(at, field).trimmed());
    }
  };
  // The amount shown is the one a moved row is read from again.
  if (carried.optionAmount >= 0) {
    grid.setCellValue(row, carried.optionAmount, line.cells.at(9));
  }
  keep(carried.statusIndicator, fields.statusIndicator);
  keep(carried.type, fields.type);
  keep(carried.rowVersion, fields.rowVersion);
  keep(carried.removedBalance, fields.removedBalance);
}

// --- load ------------------------------------------------------------------------------------------------------

void QORVA_AccDetail::Form_Load() {
  // The screen's own setting of the code list and the date is no edit of the clerk's: it marks nothing.
  const QScopedValueRollback loading(m_loading, true);
  trap(m_services, source("Form_Load"), [&] {
    mDtpDTPicker.setMinDate(kEarliestDate);
    if (!m_services.user.hasRight(QStringLiteral("ADJUSTAR"))) {
      m_mayAdjust = false;
      mCmdButton[SaveButton].setEnabled(false);
      mSdgDBGrid[AvailableGrid].column(kRemove).setLocked(true);
      // Looked up by the name of grid 0's column, which grid 1 does not have: its Reinstate column stays
      // usable, and the host refuses the save of an officer without the right all the same.
      mSdgDBGrid[AdjustedGrid].column(kRemove).setLocked(true);
      mDtpDTPicker.setEnabled(false);
      QORVA_CodesCombo.setEnabled(false);
      mTxtAdjust.setEnabled(false);
    }
    mTimUpdateTimeout.setInterval(m_services.session.updateTimeoutMs());
    SetTabs();
    mDtpDTPicker.setToday();
    mDtpDTPicker.clear();
    for (const int index : {AvailableGrid, AdjustedGrid}) {
      screencore::prepareList(mSdgDBGrid[index]);
      // The clerk marks rows in these lists; the columns decide which cells may change.
      mSdgDBGrid[index].setAllowUpdate(true);
      mSdgDBGrid[index].setSelectionMode(platform::Grid::SelectionMode::Single);
      SetGridBolding(mSdgDBGrid[index]);
    }
    // Last: a code table that cannot be read leaves the screen without its action codes, but never with a
    // right unchecked or its lists unprepared.
    screencore::valueOrFail(QORVA_CodesCombo.fill(screencore::codeTableQueryText(
        m_services.user.region(), QORVA_CodesCombo.codeTable(), m_services.clock.today())));
  });
}

void QORVA_AccDetail::SetTabs() {
  trap(m_services, source("SetTabs"), [&] {
    int order = 0;
    mSdgDBGrid[AvailableGrid].setTabIndex(order++);
    mSdgDBGrid[AdjustedGrid].setTabIndex(order++);
    QORVA_CodesCombo.setTabIndex(order++);
    mDtpDTPicker.setTabIndex(order++);
    mTxtAdjust.setTabIndex(order++);
    mCmdButton[SaveButton].setTabIndex(order++);
    mCmdButton[AccountActivityButton].setTabIndex(order++);
    mCmdButton[CloseButton].setTabIndex(order++);
  });
}

void QORVA_AccDetail::SetGridBolding(platform::Grid& grid) {
  trap(m_services, source("SetGridBolding"), [&] {
    screencore::boldCaptionOnly(grid);
  });
}

// --- replies ---------------------------------------------------------------------------------------------------

void QORVA_AccDetail::mNcsbMessage_MsgTimeout() {
  trap(m_services, source("mNcsbMessage_MsgTimeout"), [&] { m_watch.timeoutNoticed(); });
}

void QORVA_AccDetail::mNcsbMessage_DataReady(const QString& replyTo, const messaging::Reply& reply) {
  trap(m_services, source("mNcsbMessage_DataReady"), [&] {
    if (replyTo != replyToName()) {
      raise(AppError::LeaveEarly);
    }
    m_watch.replyArrived();
    const QString error = messaging::ReplyChecker::errorText(reply, replyToName(),
                                                             source("mNcsbMessage_DataReady"), m_requestId);
    if (!error.isEmpty()) {
      m_watch.failed(error);
      raise(AppError::LeaveEarly);
    }
    m_services.ui.setPointer(platform::Pointer::Hourglass);
    if (m_watch.answered()) {
      const QString action = actionCode();
      if (action == u"V" || action == u"D") {
        const std::optional<qint64> number = accountNumberValue();
        const bool generated = number && *number > kLastKeyedFormNumber;
        mCmdButton[SaveButton].setEnabled(action == u"V" && !generated && m_saveAllowed && m_mayAdjust);
        mLblAdjust[StatusLabel].setCaption(m_services.codes.description(QStringLiteral("CSTATUS"), action));
      }
      m_activityChanges.reset();
      InitializeData();
      takeReceivable(reply);
      // The save's reply carries the assessments as the host now has them.
      mSdgDBGrid[AvailableGrid].removeAll();
      mSdgDBGrid[AdjustedGrid].removeAll();
    }
    if (reply.hasSection(kActivitySection)) {
      showActivity(reply);
    }
    takeAssessments(reply);
    m_services.statusBar.setText(title::Ready);
    m_services.ui.setPointer(platform::Pointer::Default);
  });
}

void QORVA_AccDetail::showActivity(const messaging::Reply& reply) {
  activity::QORVA_Activity log(m_services);
  // The activity screen splits the number into its seven digits and its check digit.
  log.setARNumber(ARNumber().trimmed() + u'-' + m_checkNumber.trimmed());
  log.setARType(ARType().trimmed());
  log.LoadActivity(reply, m_requestId);
  if (activityChanged()) {
    // Entries of an earlier visit wait for the save: the log shows them again, over the host's rows.
    log.keepChanges(*m_activityChanges);
  }
  m_services.statusBar.setText(title::Ready);
  m_services.ui.setPointer(platform::Pointer::Default);
  log.showModal();
  if (log.SaveChange()) {
    // Sent with this screen's next save, which the clerk may make at once or with an adjustment.
    m_activityChanges = log.changedRows();
  }
}

void QORVA_AccDetail::takeReceivable(const messaging::Reply& reply) {
  if (!reply.hasSection(messaging::sectionnames::AccountReceivables)) {
    return;
  }
  const messaging::RecordSetPtr receivable =
      messaging::RecordSetBuilder::build(reply, messaging::sectionnames::AccountReceivables, m_requestId);
  if (receivable->recordCount() == 0) {
    return;
  }
  receivable->moveFirst();
  if (const QVariant version = receivable->value(QStringLiteral("ROW_VRSN_NBR")); !version.isNull()) {
    m_rowVersion = version.toString().trimmed();
  }
  if (receivable->fieldIndex(QStringLiteral("ACCT_RCVBL_BAL_AMT")) >= 0) {
    setBalance(receivable->value(QStringLiteral("ACCT_RCVBL_BAL_AMT")).toString());
  }
}

void QORVA_AccDetail::takeAssessments(const messaging::Reply& reply) {
  const messaging::RecordSetPtr assessments =
      messaging::RecordSetBuilder::build(reply, QStringLiteral("ASSESSMENT"), m_requestId);
  if (assessments->recordCount() == 0) {
    return;
  }
  screencore::failOn(assessments->setSort(kAssessmentSort), QStringLiteral("Sort"));
  const AssessmentFields fields = AssessmentFields::of(*assessments);
  for (assessments->moveFirst(); !assessments->eof(); assessments->moveNext()) {
    addAssessment(*assessments, fields);
  }
}

// --- requests --------------------------------------------------------------------------------------------------

void QORVA_AccDetail::SendAccountPI() {
  trap(m_services, source("SendAccountPI"), [&] {
    if (m_watch.isPending()) {
      // A new request would take the place of the save's, and its reply would be taken for the save's answer.
      m_services.statusBar.setText(kWaitingForSave);
      return;
    }
    messaging::RequestMessage& message =
        screencore::freshRequest(m_services, *this, mNcsbMessage, replyToName(), kRequestCode);
    message.addParameter(marventoParameter(messaging::params::AcctRcvblNbr, ARNumber().trimmed()));
    message.addParameter(marventoParameter(messaging::params::AcctRcvblTypCd, ARType().trimmed()));
    message.addParameter(marventoParameter(messaging::params::Thin, QStringLiteral("YES")));
    // Named without a record: what the request asks for, not a change.
    message.addRecord(kActivitySection);
    m_services.statusBar.setText(QStringLiteral("Requesting Account Activity for ") +
                                 m_services.codes.description(QStringLiteral("ADJDOC"), ARType().trimmed()) +
                                 QStringLiteral(" number ") + ARNumber());
    m_requestId = screencore::sendRequest(message, *this);
    // A time-out of an earlier save is not this request's: its refusal reads as a failed search.
    m_watch.requestSent();
    m_services.ui.setPointer(platform::Pointer::Hourglass);
  });
}

// --- the grids -------------------------------------------------------------------------------------------------

QString QORVA_AccDetail::cell(int grid, int row, const char* column) const {
  const platform::Grid& g = mSdgDBGrid[grid];
  return g.cellValue(row, g.columnIndex(QLatin1String(column))).toString();
}

bool QORVA_AccDetail::isChecked(int grid, int row) const {
  const platform::Grid& g = mSdgDBGrid[grid];
  return g.cellValue(row, g.columnIndex(checkColumn(grid))).toString() == kChecked;
}

Currency QORVA_AccDetail::amountOf(int grid, int row) const {
  const QString text = cell(grid, row, "CL_ASMT_AMT").trimmed();
  if (text.isEmpty()) {
    return {};
  }
  return screencore::valueOrFail(Currency::parse(text));
}

void QORVA_AccDetail::mSdgDBGrid_RowLoaded(int index, messaging::Bookmark) {
  static const QString kRowLoaded = source("mSdgDBGrid_RowLoaded");
  trap(m_services, kRowLoaded, [&] {
    platform::Grid& grid = mSdgDBGrid[index];
    const CarriedColumns& carried = m_carried[index];
    for (const int at : {carried.amount, carried.due}) {
      if (at < 0) {
        continue;
      }
      GridColumn& column = grid.column(at);
      const QString text = column.text().trimmed();
      if (text.isEmpty()) {
        continue;
      }
      // A cell that holds no sum of money is shown as the host sent it.
      if (const messaging::Result<Currency> amount = Currency::parse(text)) {
        column.setValue(amount.value().toDisplayText());
      }
    }
  });
}

void QORVA_AccDetail::MoveGridRow(int index) {
  trap(m_services, source("MoveGridRow"), [&] {
    const int target = index == AvailableGrid ? AdjustedGrid : AvailableGrid;
    const platform::Grid& from = mSdgDBGrid[index];
    const int row = from.row();
    if (row < 0 || row >= from.rows()) {
      raise(AppError::LeaveEarly);
    }
    const auto text = [&](const char* column) { return cell(index, row, column).trimmed(); };
    const QString code = text("ASSMT_CD");
    const QString indicator = text("LIC_PRCHS_OPTN_IND");
    const QString amount = indicator.toUpper() == u"Y" ? text("AC_ASMT_AMT") : text("CL_ASMT_AMT");
    const QString table = code.left(1).toUpper() == u"P" ? QStringLiteral("PENALTY") : QStringLiteral("FEE");
    const QStringList cells = {
        text("VLTN_ASSMT_STTS_CD").toUpper() == u"A" ? QStringLiteral("I") : QStringLiteral("A"),
        text("VLTN_ASSMT_SEQ_NBR"),
        text("TRNSCTN_NBR"),
        text("CUST_ID"),
        text("CUST_NM"),
        text("ASSMT_ISSUE_DT"),
        m_services.clock.today().toString(QStringLiteral("MM-dd-yyyy")),
        code,
        m_services.codes.description(table, code).trimmed(),
        amount,
        text("BAL_DUE_AMT").isEmpty() ? QStringLiteral("0.00") : amount,
        QString(),
        indicator.isEmpty() ? QStringLiteral("N") : indicator,
    };
    platform::Grid& to = mSdgDBGrid[target];
    to.addItem(cells.join(u'\t'));
    const int added = to.rows() - 1;
    to.setCellValue(added, to.columnIndex(QStringLiteral("AC_ASMT_AMT")), amount);
    to.setCellValue(added, to.columnIndex(QStringLiteral("ROW_VRSN_NBR")), text("ROW_VRSN_NBR"));
    // A row removed just now owes again, when reinstated, what it still owed: the host keeps that with the removal.
    if (index == AvailableGrid) {
      to.setCellValue(added, to.columnIndex(QStringLiteral("RMVD_BAL_AMT")), text("BAL_DUE_AMT"));
    }
  });
}

void QORVA_AccDetail::mSdgDBGrid_Change(int index) {
  trap(m_services, source("mSdgDBGrid_Change"), [&] { showTotals(index); });
}

void QORVA_AccDetail::showTotals(int changedGrid) {
  Currency sum;
  for (int row = 0; row < mSdgDBGrid[changedGrid].rows(); ++row) {
    if (isChecked(changedGrid, row)) {
      sum += amountOf(changedGrid, row);
    }
  }
  const int own = changedGrid == AvailableGrid ? TotalRemovalLabel : TotalReinstatedLabel;
  const int other = changedGrid == AvailableGrid ? TotalReinstatedLabel : TotalRemovalLabel;
  mLblAdjust[own].setCaption(sum.toDisplayText());
  Currency total = sum;
  if (const QString otherText = mLblAdjust[other].caption(); !otherText.isEmpty()) {
    total += screencore::valueOrFail(Currency::parse(otherText));
  }
  mLblAdjust[TotalAdjustmentLabel].setCaption(total.toDisplayText());
  showBalanceAfter();
}

void QORVA_AccDetail::setBalance(const QString& balance) {
  m_balance.reset();
  if (const messaging::Result<Currency> read = Currency::parse(balance)) {
    m_balance = read.value();
  }
  showBalanceAfter();
}

void QORVA_AccDetail::showBalanceAfter() {
  const auto cents = [](Currency amount) { return amount.roundedToCents().units() / Currency::kUnitsPerCent; };
  const auto money = [&](int grid, int row, const char* column) -> std::optional<qint64> {
    const QString text = cell(grid, row, column).trimmed();
    if (text.isEmpty()) {
      return std::nullopt;
    }
    const messaging::Result<Currency> amount = Currency::parse(text);
    return amount ? std::optional<qint64>(cents(amount.value())) : std::nullopt;
  };
  QList<qint64> removed;
  QList<qint64> reinstated;
  for (int row = 0; row < mSdgDBGrid[AvailableGrid].rows(); ++row) {
    if (isChecked(AvailableGrid, row)) {
      removed.append(money(AvailableGrid, row, "BAL_DUE_AMT").value_or(0));
    }
  }
  for (int row = 0; row < mSdgDBGrid[AdjustedGrid].rows(); ++row) {
    if (isChecked(AdjustedGrid, row)) {
      reinstated.append(messaging::reinstatedDue(money(AdjustedGrid, row, "CL_ASMT_AMT").value_or(0),
                                                  money(AdjustedGrid, row, "RMVD_BAL_AMT")));
    }
  }
  if (!m_balance || (removed.isEmpty() && reinstated.isEmpty())) {
    m_balanceAfter.setCaption(QString());
    return;
  }
  const qint64 after = messaging::balanceAfterAdjustment(cents(*m_balance), removed, reinstated);
  m_balanceAfter.setCaption(Currency::fromCents(after).toDisplayText());
}

void QORVA_AccDetail::mSdgDBGrid_AfterUpdate(int index) {
  trap(m_services, source("mSdgDBGrid_AfterUpdate"), [&] {
    const platform::Grid& grid = mSdgDBGrid[index];
    if (grid.row() >= 0 && grid.row() < grid.rows() && isChecked(index, grid.row())) {
      CheckEdit();
    }
  });
}

void QORVA_AccDetail::removeMovedRows(int index) {
  platform::Grid& grid = mSdgDBGrid[index];
  grid.moveFirst();
  while (grid.row() <= grid.rows() - 1) {
    if (isChecked(index, grid.row())) {
      grid.removeItem(grid.row());
    }
    grid.moveNext();
  }
  if (grid.rows() > 0) {
    grid.moveFirst();
  }
}

// --- inputs ----------------------------------------------------------------------------------------------------

void QORVA_AccDetail::mDtpDTPicker_Change() {
  if (m_loading) {
    return;
  }
  trap(m_services, source("mDtpDTPicker_Change"), [&] {
    mSdgDBGrid[AvailableGrid].setRedraw(false);
    mSdgDBGrid[AdjustedGrid].setRedraw(false);
    CheckEdit();
    mSdgDBGrid[AvailableGrid].setRedraw(true);
    mSdgDBGrid[AdjustedGrid].setRedraw(true);
  });
}

void QORVA_AccDetail::QORVA_CodesCombo_Change() {
  if (m_loading) {
    return;
  }
  trap(m_services, source("QORVA_CodesCombo_Change"), [&] {
    mSdgDBGrid[AvailableGrid].setRedraw(false);
    mSdgDBGrid[AdjustedGrid].setRedraw(false);
    CheckEdit();
    mSdgDBGrid[AvailableGrid].setRedraw(true);
    mSdgDBGrid[AdjustedGrid].setRedraw(true);
  });
}

QString QORVA_AccDetail::actionCode() const { return QORVA_CodesCombo.selectedCode().trimmed().toUpper(); }

bool QORVA_AccDetail::voidOrDelete() const {
  const QString action = actionCode();
  return action == u"V" || action == u"D";
}

std::optional<qint64> QORVA_AccDetail::accountNumberValue() const {
  bool ok = false;
  const qint64 number = ARNumber().trimmed().toLongLong(&ok);
  return ok ? std::optional<qint64>(number) : std::nullopt;
}

// --- buttons ---------------------------------------------------------------------------------------------------

void QORVA_AccDetail::mCmdButton_Click(int index) {
  trap(m_services, source("mCmdButton_Click"), [&] {
    switch (index) {
      case AccountActivityButton:
        SendAccountPI();
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

void QORVA_AccDetail::close() {
  m_services.ui.setPointer(platform::Pointer::Default);
  // While a save is on its way its changes are no longer the clerk's to keep or drop: closing concludes it
  // unanswered (below) instead of asking, and saving it a second time.
  if (!m_watch.isPending() && DataChanged()) {
    switch (m_services.ui.messageBox(title::AdjustmentDataChangedQuestion, platform::MsgButtons::YesNoCancel,
                                     platform::MsgIcon::Question, title::messageTitle())) {
      case platform::MsgAnswer::Yes:
        SaveData();
        if (!m_errorText.isEmpty()) {
          raise(AppError::LeaveEarly);
        }
        break;
      case platform::MsgAnswer::No:
        break;
      default:
        raise(AppError::LeaveEarly);
    }
  }
  m_watch.closing();
  setVisible(false);
}

bool QORVA_AccDetail::DataChanged() {
  return platform::trapValue(m_services, source("DataChanged"), false, [&] {
    m_services.statusBar.setText(title::CheckingForDataChanges);
    return adjustmentEntered() || activityChanged();
  });
}

bool QORVA_AccDetail::activityChanged() const { return m_activityChanges && m_activityChanges->recordCount() > 0; }

bool QORVA_AccDetail::adjustmentEntered() const {
  if (!mTxtAdjust.text().isEmpty() || !mDtpDTPicker.isEmpty() || voidOrDelete()) {
    return true;
  }
  for (const int grid : {AvailableGrid, AdjustedGrid}) {
    for (int row = 0; row < mSdgDBGrid[grid].rows(); ++row) {
      if (isChecked(grid, row)) {
        return true;
      }
    }
  }
  return false;
}

bool QORVA_AccDetail::LPOFee() {
  return platform::trapValue(m_services, source("LPOFee"), false, [&] {
    for (int row = 0; row < mSdgDBGrid[AvailableGrid].rows(); ++row) {
      if (isChecked(AvailableGrid, row) &&
          cell(AvailableGrid, row, "LIC_PRCHS_OPTN_IND").trimmed().toUpper() == u"Y") {
        return true;
      }
    }
    return false;
  });
}

// --- validation ------------------------------------------------------------------------------------------------

void QORVA_AccDetail::DefaultFieldColor() {
  trap(m_services, source("DefaultFieldColor"), [&] {
    for (platform::Control* input : std::initializer_list<platform::Control*>{
             &QORVA_CodesCombo, &mDtpDTPicker, &mTxtAdjust, &mSdgDBGrid[AvailableGrid], &mSdgDBGrid[AdjustedGrid]}) {
      m_services.fieldMarking.restore(*input);
    }
  });
}

void QORVA_AccDetail::fail(platform::Control& input, const QString& message) {
  m_services.fieldMarking.markError(input);
  m_errorText += message + kLineBreak;
  m_errorFlag = true;
}

void QORVA_AccDetail::CheckEdit() {
  trap(m_services, source("CheckEdit"), [&] {
    m_errorText.clear();
    m_errorFlag = false;
    DefaultFieldColor();
    const QString action = actionCode();
    const bool voidsOrDeletes = action == u"V" || action == u"D";
    const QString formType = ARType().trimmed().toUpper();

    if (formType == u"P" && voidsOrDeletes) {
      fail(QORVA_CodesCombo, QStringLiteral("Can not void or delete a payment plan"));
      return;
    }
    if (mLblAdjust[StatusLabel].caption() == m_services.codes.description(QStringLiteral("CSTATUS"),
                                                                          QStringLiteral("V")) &&
        action != u"D") {
      fail(QORVA_CodesCombo, QStringLiteral("Can not adjust a voided form"));
    }

    if (mDtpDTPicker.isEmpty()) {
      fail(mDtpDTPicker, QStringLiteral("Adjusted Date is required"));
    } else if (mDtpDTPicker.date() > m_services.clock.today()) {
      fail(mDtpDTPicker, QStringLiteral("Date Adjusted must be current date or a prior date"));
    } else {
      const QDate adjusted = mDtpDTPicker.date();
      const QString messages[] = {
          QStringLiteral("Date Adjusted must be >= assessment date in Available Assessments Grid"),
          QStringLiteral("Date Adjusted must be >= assessment date in Adjusted Assessments Grid")};
      for (const int grid : {AvailableGrid, AdjustedGrid}) {
        for (int row = 0; row < mSdgDBGrid[grid].rows(); ++row) {
          if (!isChecked(grid, row)) {
            continue;
          }
          const messaging::Result<QDate> issued = platform::parseAnyDate(cell(grid, row, "ASSMT_ISSUE_DT").trimmed());
          if (issued && issued.value() > adjusted) {
            fail(mDtpDTPicker, messages[grid]);
            break;
          }
        }
      }
    }

    bool anyChecked = false;
    int optionFees = 0;
    for (const int grid : {AvailableGrid, AdjustedGrid}) {
      for (int row = 0; row < mSdgDBGrid[grid].rows(); ++row) {
        if (!isChecked(grid, row)) {
          continue;
        }
        anyChecked = true;
        if (grid == AvailableGrid && kOptionFees.contains(cell(grid, row, "ASSMT_CD").trimmed().toUpper())) {
          ++optionFees;
        }
      }
    }
    if (voidsOrDeletes && anyChecked) {
      fail(QORVA_CodesCombo, QStringLiteral("You can not select Action and adjust a fee/penalty at the same time"));
    }
    if (!voidsOrDeletes) {
      if (!anyChecked) {
        fail(mSdgDBGrid[AvailableGrid], QStringLiteral("Please adjust the account receivables or the Fees/Penalties"));
      } else if (optionFees > 1) {
        fail(mSdgDBGrid[AvailableGrid], QStringLiteral("Adjust only one LPO at a time"));
      }
    }
    if (mTxtAdjust.text().trimmed().isEmpty()) {
      fail(mTxtAdjust, QStringLiteral("Comment is required"));
    }
    if (m_errorText.isEmpty() && action == u"D" && !kDeletableTypes.contains(formType)) {
      fail(QORVA_CodesCombo, QStringLiteral("Only delete ENF001, ENF003, ENF507, and Temporary Permits"));
    }
  });
}

// --- the save --------------------------------------------------------------------------------------------------

void QORVA_AccDetail::SaveData() {
  trap(m_services, source("SaveData"), [&] {
    if (m_watch.isPending()) {
      // Its inputs are locked, but a second Enter or a close can still come: the save is sent once.
      m_services.statusBar.setText(kWaitingForSave);
      return;
    }
    if (!DataChanged()) {
      m_services.statusBar.setText(QStringLiteral("Information did not change.  Save request canceled. "));
      return;
    }
    mSdgDBGrid[AvailableGrid].update();
    mSdgDBGrid[AdjustedGrid].update();
    if (!adjustmentEntered()) {
      // Only the activity log changed: its rows are saved on their own, with nothing to check here.
      m_errorText.clear();
      messaging::RequestMessage& message = saveRequest();
      LoadActivityDTD(message);
      m_services.statusBar.setText(QStringLiteral("Saving Account Activity for ") +
                                   m_services.codes.description(QStringLiteral("ADJDOC"), ARType().trimmed()) +
                                   QStringLiteral(" number ") + ARNumber());
      sendSave(message);
      return;
    }
    CheckEdit();
    mSdgDBGrid[AvailableGrid].update();
    mSdgDBGrid[AdjustedGrid].update();
    if (!m_errorText.isEmpty()) {
      m_services.statusBar.setText(title::ErrorsFound);
      m_services.ui.messageBox(m_errorText, platform::MsgButtons::Ok, platform::MsgIcon::Exclamation,
                               title::messageTitle());
      return;
    }
    m_services.statusBar.setText(QStringLiteral("Saving Fees/Penalties for ") +
                                 m_services.codes.description(QStringLiteral("ADJDOC"), ARType().trimmed()) +
                                 QStringLiteral(" number ") + ARNumber());
    const QString action = actionCode();
    if (action == u"D") {
      const std::optional<qint64> number = accountNumberValue();
      if (number && *number > kLastKeyedFormNumber) {
        m_services.ui.messageBox(
            QStringLiteral("Can not delete a generated form. Please void and correct the form instead."),
            platform::MsgButtons::Ok, platform::MsgIcon::Information, title::messageTitle());
        return;
      }
      if (m_services.ui.messageBox(QStringLiteral("Are you sure that you want to delete this form?"),
                                   platform::MsgButtons::YesNoCancel, platform::MsgIcon::Question,
                                   title::messageTitle()) != platform::MsgAnswer::Yes) {
        m_services.statusBar.setText(QStringLiteral("Save Request Canceled."));
        return;
      }
    }
    messaging::RequestMessage& message = saveRequest();
    if (action == u"V" || action == u"D") {
      LoadAdjustARDTD(message);
    } else {
      if (LPOFee()) {
        // The removal of a License Purchase Option fee records the option's particulars with it.
        QORVA_LicPurchOpt option(m_services);
        option.showModal();
        if (option.CancelClicked()) {
          m_services.statusBar.setText(
              QStringLiteral("License Purchase Option did not save. Save Request canceled."));
          return;
        }
        LoadLPODTD(message, option);
      }
      LoadAdjustARDTD(message);
      LoadAssessmentDTD(message);
    }
    LoadActivityDTD(message);
    sendSave(message);
  });
}

messaging::RequestMessage& QORVA_AccDetail::saveRequest() {
  messaging::RequestMessage& message =
      screencore::freshRequest(m_services, *this, mNcsbMessage, replyToName(), kRequestCode);
  message.addParameter(marventoParameter(messaging::params::RefNbr, ARNumber().trimmed()));
  message.addParameter(marventoParameter(messaging::params::RefTypCd, ARType().trimmed()));
  message.addParameter(marventoParameter(messaging::params::Lpo, QStringLiteral("NO")));
  return message;
}

void QORVA_AccDetail::sendSave(messaging::RequestMessage& message) {
  m_requestId = screencore::sendRequest(message, *this);
  mSdgDBGrid[AvailableGrid].setEnabled(false);
  mSdgDBGrid[AdjustedGrid].setEnabled(false);
  m_services.ui.setPointer(platform::Pointer::Hourglass);
  m_watch.saveSent(m_requestId, QStringLiteral("the changes to %1 number %2")
                                    .arg(m_services.codes.description(QStringLiteral("ADJDOC"), ARType().trimmed()),
                                         ARNumber().trimmed()));
}

void QORVA_AccDetail::LoadActivityDTD(messaging::RequestMessage& message) {
  trap(m_services, source("LoadActivityDTD"), [&] {
    if (!activityChanged()) {
      return;
    }
    messaging::RecordSet& rows = *m_activityChanges;
    for (rows.moveFirst(); !rows.eof(); rows.moveNext()) {
      messaging::SaveRecord& record = message.addRecord(kActivitySection);
      for (const char* field : kActivityFields) {
        if (rows.fieldIndex(QLatin1String(field)) >= 0) {
          record.setField(QLatin1String(field), rows.value(QLatin1String(field)));
        }
      }
    }
  });
}

void QORVA_AccDetail::LoadAdjustARDTD(messaging::RequestMessage& message) {
  // Reported under the refund worksheet's name, as it always has been.
  trap(m_services, QStringLiteral("QORVA_WorkSheet.LoadAdjustARDTD"), [&] {
    messaging::SaveRecord& record = message.addRecord(QStringLiteral("ADJUSTAR"));
    const QString action = actionCode();
    record.setField(QStringLiteral("ACTION"), QStringLiteral("ADD"));
    record.setField(QStringLiteral("CUST_ID"), m_customerId);
    record.setField(QStringLiteral("ADJSTMT_DT"), mDtpDTPicker.date().toString(QStringLiteral("yyyy-MM-dd")));
    record.setField(QStringLiteral("ADJST_CMMT_TXT"), mTxtAdjust.text());
    record.setField(QStringLiteral("ADJSTMT_TYP_CD"), action == u"V" || action == u"D" ? action : QString());
    record.setField(QStringLiteral("ACCT_RCVBL_NBR"), ARNumber().trimmed());
    record.setField(QStringLiteral("ACCT_RCVBL_CK_NBR"), m_checkNumber.trimmed());
    record.setField(QStringLiteral("ACCT_RCVBL_TYP_CD"), ARType().trimmed());
    record.setField(QStringLiteral("ROW_VRSN_NBR"), m_rowVersion);
  });
}

void QORVA_AccDetail::LoadAssessmentDTD(messaging::RequestMessage& message) {
  trap(m_services, source("LoadAssessmentDTD"), [&] {
    const QString adjusted = mDtpDTPicker.date().toString(QStringLiteral("yyyy-MM-dd"));
    for (const int grid : {AvailableGrid, AdjustedGrid}) {
      const bool removal = grid == AvailableGrid;
      for (int row = 0; row < mSdgDBGrid[grid].rows(); ++row) {
        if (!isChecked(grid, row)) {
          continue;
        }
        const auto text = [&](const char* column) { return cell(grid, row, column).trimmed(); };
        const bool option = text("LIC_PRCHS_OPTN_IND").toUpper() == u"Y";
        const QString amount = amountOf(grid, row).toHostText();
        messaging::SaveRecord& record = message.addRecord(QStringLiteral("ASSESSMENT"));
        record.setField(QStringLiteral("ACTION"), QStringLiteral("UPD"));
        for (const char* field : {"CUST_ID", "TRNSCTN_NBR", "ASSMT_CD", "VLTN_ASSMT_SEQ_NBR"}) {
          record.setField(QLatin1String(field), text(field));
        }
        record.setField(QStringLiteral("ADJSTMT_DT"), adjusted);
        record.setField(QStringLiteral("LIC_PRCHS_OPTN_IND"), option ? QStringLiteral("Y") : QStringLiteral("N"));
        record.setField(option ? QStringLiteral("AC_ASMT_AMT") : QStringLiteral("CL_ASMT_AMT"), amount);
        record.setField(QStringLiteral("BAL_DUE_AMT"), removal ? QStringLiteral("0") : amount);
        record.setField(QStringLiteral("VLTN_ASSMT_STTS_CD"), removal ? QStringLiteral("I") : QStringLiteral("A"));
        record.setField(QStringLiteral("ROW_VRSN_NBR"), text("ROW_VRSN_NBR"));
      }
    }
  });
}

void QORVA_AccDetail::LoadLPODTD(messaging::RequestMessage& message, const QORVA_LicPurchOpt& option) {
  trap(m_services, source("LoadLPODTD"), [&] {
    const LpoRecordValues values = option.recordValues();
    messaging::SaveRecord& record = message.addRecord(QStringLiteral("CTTNADTNINFO"));
    record.setField(QStringLiteral("ACTION"), QStringLiteral("UPD"));
    record.setField(QStringLiteral("PRCHS_OPTN_ST_CD"), values.stateCode);
    record.setField(QStringLiteral("PRCHS_OPTN_TAG_NBR"), values.plate);
    record.setField(QStringLiteral("PRCHS_OPTN_DT"), values.purchaseDate);
    record.setField(QStringLiteral("PRCHS_OPTN_TM"), values.purchaseTime);
    record.setField(QStringLiteral("PO_TRP_ID"), values.troop);
    record.setField(QStringLiteral("PO_TRP_DSTRCT_ID"), values.district);
    record.setField(QStringLiteral("PRCHS_OPTN_WGT"), values.weight);
    record.setField(QStringLiteral("TOT_PRCHS_OPTN_AMT"), values.amount);
    record.setField(QStringLiteral("PRCHS_OPTN_TXT"), values.comment);
  });
}

// --- after the save ----------------------------------------------------------------------------------------------

void QORVA_AccDetail::InitializeData() {
  trap(m_services, source("InitializeData"), [&] {
    mDtpDTPicker.setToday();
    mDtpDTPicker.clear();
    const QString action = actionCode();
    const std::optional<qint64> number = accountNumberValue();
    if (action == u"D" || (action == u"V" && number && *number > kLastKeyedFormNumber)) {
      PendingSave(false);
    }
    QORVA_CodesCombo.setCurrentRow(-1);
    QORVA_CodesCombo.setText(QString());
    mTxtAdjust.setText(QString());
    DefaultFieldColor();
    for (const int label : {TotalReinstatedLabel, TotalRemovalLabel, TotalAdjustmentLabel}) {
      mLblAdjust[label].setCaption(QString());
    }
    m_balanceAfter.setCaption(QString());
  });
}

void QORVA_AccDetail::PendingSave(bool enable) {
  trap(m_services, source("PendingSave"), [&] {
    // What the officer may not change, or this receivable may not take, stays locked after a save.
    const bool inputs = enable && m_mayAdjust;
    mDtpDTPicker.setEnabled(inputs);
    QORVA_CodesCombo.setEnabled(inputs);
    mTxtAdjust.setEnabled(inputs);
    mCmdButton[SaveButton].setEnabled(inputs && m_saveAllowed);
    mSdgDBGrid[AvailableGrid].setEnabled(enable);
    mSdgDBGrid[AdjustedGrid].setEnabled(enable);
  });
}

void QORVA_AccDetail::UpdateTimeout() {
  trap(m_services, source("UpdateTimeout"), [&] { m_watch.updateTimeout(); });
}

void QORVA_AccDetail::mTimUpdateTimeout_Timer() {
  trap(m_services, source("mTimUpdateTimeout_Timer"), [&] { m_watch.timerTicked(); });
}

}  // namespace adjustacc::ardetail
