#include "adjustacc.h"
#include "worksheethandover.h"

#include "ardetail/accdetail.h"
#include "ardetail/assessmentline.h"
#include "inquiry/forminq.h"
#include "messaging/protocolwords.h"
#include "messaging/recordsetbuilder.h"
#include "messaging/replychecker.h"
#include "messaging/requestmessage.h"
#include "payments/paydetail.h"
#include "platform/codelookup.h"
#include "platform/errortrap.h"
#include "platform/modmessagetitle.h"
#include "platform/services.h"
#include "platform/sessionsettings.h"
#include "platform/statusbar.h"
#include "platform/ui.h"
#include "screencore/listpreparation.h"
#include "screencore/procedure.h"
#include "screencore/screenrequest.h"

#include <QFile>

namespace adjustacc::document {

using screencore::marventoParameter;
using messaging::RecordSetBuilder;
using platform::AppError;
using platform::GridColumn;
using platform::raise;
using platform::trap;
namespace title = platform::modMessageTitle;

namespace {

const screencore::ProcedureNames source(QStringLiteral("QORVA_AdjustAcc"));

const QString kReceivablesSection = QStringLiteral("ACNTSRCVBL");
const QString kReceiptsSection = QStringLiteral("RECEIPT");
const QString kAssessmentSection = QStringLiteral("ASSESSMENT");
const QString kAccountTypeTable = QStringLiteral("REFDOCTYP");

struct ColumnProps {
  const char16_t* caption;
  const char16_t* name;
  const char16_t* field;
  GridColumn::Display display;
  bool visible;
};

constexpr auto Text = GridColumn::Display::Text;
constexpr auto Money = GridColumn::Display::Currency;

// Columns whose caption is their field name carry codes and keys for the logic and are not shown.
const ColumnProps kReceivableColumns[] = {
    {u"Name", u"CUST_NAME", u"CUST_NAME", Text, true},
    {u"Account Type", u"FORM_DESC", u"FORM_DESC", Text, true},
    {u"Account #", u"ACCT_RCVBL_NBR", u"ACCT_RCVBL_NBR", Text, true},
    {u"ACCT_RCVBL_CK_NBR", u"ACCT_RCVBL_CK_NBR", u"ACCT_RCVBL_CK_NBR", Text, false},
    {u"Stop Date", u"STP_DT", u"STP_DT", Text, true},
    {u"Original Assessment", u"ORIG_ASSMT_AMT", u"ORIG_ASSMT_AMT", Money, true},
    {u"Late Fee", u"LTE_FEE_AMT", u"LTE_FEE_AMT", Money, true},
    {u"Interest", u"ACRD_INTRST_AMT", u"ACRD_INTRST_AMT", Money, true},
    {u"Status", u"STTS_DESC", u"STTS_DESC", Text, true},
    {u"Assessment", u"ASSMT_AMT", u"ACCT_RCVBL_DUE_AMT", Money, true},
    {u"Amount Due", u"DUE_AMT", u"ACCT_RCVBL_BAL_AMT", Money, true},
    // Named for the form type, bound to the status code: the list has always shown it so.
    {u"Form Type Code", u"FORM_TYP_CD", u"ACCT_STTS_CD", Text, true},
    {u"ACCT_RCVBL_TYP_CD", u"ACCT_RCVBL_TYP_CD", u"ACCT_RCVBL_TYP_CD", Text, false},
    {u"ACCT_STTS_CD", u"ACCT_STTS_CD", u"ACCT_STTS_CD", Text, false},
    {u"ACTV_STTS_CD", u"ACTV_STTS_CD", u"ACTV_STTS_CD", Text, false},
    {u"CASE_ID", u"CASE_ID", u"CASE_ID", Text, false},
    {u"CUST_ID", u"CUST_ID", u"CUST_ID", Text, false},
};

const ColumnProps kReceiptColumns[] = {
    {u"Payment Date", u"RCPT_DT", u"RCPT_DT", Text, true},
    {u"Receipt #", u"RCPT_NBR", u"RCPT_NBR", Text, true},
    {u"RCPT_STTS_CD", u"RCPT_STTS_CD", u"RCPT_STTS_CD", Text, false},
    {u"Status", u"STTS_DESC", u"STTS_DESC", Text, true},
    {u"Payment Amount", u"TOT_PYMT_AMT", u"TOT_PYMT_AMT", Money, true},
    {u"Excess Amount", u"OVR_PYMT_AMT", u"OVR_PYMT_AMT", Money, true},
    // The customer id column carries the first column's caption; the list has always shown it so.
    {u"Payment Date", u"CUST_ID", u"CUST_ID", Text, true},
};

}  // namespace

QORVA_AdjustAcc::QORVA_AdjustAcc(platform::Services& services, DocumentContainer& container, DocumentHost& host,
                                 QObject* parent)
    : QObject(parent), m_services(services), m_container(container), m_host(host) {
  mSdgDBGrid.add(ReceivablesList);
  mSdgDBGrid.add(ReceiptsList);
  mCmdButton.add(ArDetailButton, QStringLiteral("AR Detail"));
  mCmdButton.add(ReceiptDetailButton, QStringLiteral("Receipt Detail"));
  mSdgDBGrid[ReceivablesList].setDataSource(&mAdodc1);
  mSdgDBGrid[ReceiptsList].setDataSource(&mAdodc2);
  for (const int index : {ReceivablesList, ReceiptsList}) {
    platform::Grid& grid = mSdgDBGrid[index];
    mSdgDBGrid_InitColumnProps(index);
    grid.setRowLoadedHandler([this, index](messaging::Bookmark bookmark) { mSdgDBGrid_RowLoaded(index, bookmark); });
    connect(&grid, &platform::Grid::clicked, this, [this, index] { mSdgDBGrid_Click(index); });
    platform::Button& button = mCmdButton[index];
    button.setEnabled(false);
    connect(&button, &platform::Button::clicked, this, [this, index] { mCmdButton_Click(index); });
  }
  UserDocument_Initialize();
}

QORVA_AdjustAcc::~QORVA_AdjustAcc() = default;

// --- life in the host --------------------------------------------------------------------------------------------

void QORVA_AdjustAcc::UserDocument_Initialize() {
  trap(m_services, source("UserDocument_Initialize"), [] {});
}

void QORVA_AdjustAcc::UserDocument_Show() {
  trap(m_services, source("UserDocument_Show"), [&] {
    title::setContainerTag(m_container.tag());
    title::setMessageTitle(m_container.caption());
    m_services.statusBar.initialize(title::containerTag());
    m_workFilePath = m_services.session.sessionFolder() + m_container.name() + QStringLiteral(".xml");
    if (m_toolbar == nullptr) {
      m_toolbar = m_host.toolbarHost();
    }
    ConfigureToolbar(false);
    SetTabs();
    m_services.statusBar.setText(title::LoadingInformation);
    m_services.ui.setPointer(platform::Pointer::Hourglass);
    mCmdButton[ArDetailButton].setEnabled(false);
    mCmdButton[ReceiptDetailButton].setEnabled(false);
    for (const int index : {ReceivablesList, ReceiptsList}) {
      screencore::prepareList(mSdgDBGrid[index]);
      SetGridBolding(mSdgDBGrid[index]);
    }
    m_services.ui.setPointer(platform::Pointer::Default);
    m_services.statusBar.setText(title::Ready);
  });
}

void QORVA_AdjustAcc::FileOpen() {
  trap(m_services, source("FileOpen"), [&] {
    inquiry::QORVA_FormInq openAccount(m_services);
    openAccount.mFtcboDocType.setCodeTable(QStringLiteral("ADJDOC"));
    openAccount.mFtcboDocType.setDefaultCode(QStringLiteral("C"));
    openAccount.showModal();
    if (openAccount.result() == inquiry::QORVA_FormInq::kCancel) {
      return;
    }
    for (messaging::RecordSetPtr* set : {&m_receivables, &m_receipts}) {
      if (*set) {
        (*set)->close();
        set->reset();
      }
    }
    mSdgDBGrid[ReceivablesList].removeAll();
    mSdgDBGrid[ReceiptsList].removeAll();
    InitializeData();
    m_accountNumber = openAccount.mTxtDocNbr.text().trimmed();
    m_accountType = openAccount.mFtcboDocType.selectedCode();
    SendAdjustPI();
    Q_EMIT accountChanged();
    openAccount.Form_Unload();
    mCmdButton[ArDetailButton].setEnabled(false);
    mCmdButton[ReceiptDetailButton].setEnabled(false);
  });
}

bool QORVA_AdjustAcc::CloseDocument() {
  trap(m_services, source("CloseDocument"), [&] {
    if (!m_workFilePath.isEmpty() && QFile::exists(m_workFilePath)) {
      QFile file(m_workFilePath);
      if (!file.remove()) {
        platform::fail(QStringLiteral("The working file %1 could not be deleted: %2")
                           .arg(m_workFilePath, file.errorString()));
      }
    }
  });
  // The entries go whatever became of the file: the document is closing either way.
  ConfigureToolbar(true);
  return true;
}

void QORVA_AdjustAcc::BeforeUnload() {
  trap(m_services, source("BeforeUnload"), [&] {
    ConfigureToolbar(true);
    m_toolbar = nullptr;
  });
}

void QORVA_AdjustAcc::SaveData() {
  trap(m_services, source("SaveData"), [] {});
}

bool QORVA_AdjustAcc::DataChanged() {
  return platform::trapValue(m_services, source("DataChanged"), false, [&] {
    return !m_accountType.trimmed().isEmpty() && !m_accountNumber.trimmed().isEmpty();
  });
}

void QORVA_AdjustAcc::Refresh() {
  // Reported under the name this handler has always had.
  trap(m_services, QStringLiteral("wubba"), [&] {
    // Described afresh: the code tables may have changed since.
    forgetDescriptions(ReceivablesList);
    forgetDescriptions(ReceiptsList);
    mSdgDBGrid[ReceivablesList].refresh();
    mSdgDBGrid[ReceiptsList].refresh();
  });
}

void QORVA_AdjustAcc::SetTabs() {
  trap(m_services, source("SetTabs"), [&] {
    mSdgDBGrid[ReceivablesList].setTabIndex(0);
    mCmdButton[ArDetailButton].setTabIndex(1);
    mSdgDBGrid[ReceiptsList].setTabIndex(2);
    mCmdButton[ReceiptDetailButton].setTabIndex(3);
  });
}

void QORVA_AdjustAcc::ConfigureToolbar(bool remove) {
  trap(m_services, source("ConfigureToolbar"), [&] {
    if (m_toolbar == nullptr) {
      return;
    }
    if (remove) {
      m_toolbar->removeEntry(kOpenAccountEntry);
      return;
    }
    QPointer<QORVA_AdjustAcc> self(this);
    m_toolbar->addEntry({kOpenAccountEntry, QStringLiteral("Open Account"),
                         QStringLiteral("Open another account in this document"), [self] {
                           if (self) {
                             self->FileOpen();
                           }
                         }});
  });
}

void QORVA_AdjustAcc::InitializeData() {
  trap(m_services, source("InitializeData"), [&] {
    forgetDescriptions(ReceivablesList);
    forgetDescriptions(ReceiptsList);
    mAdodc1.setRecordset(RecordSetBuilder::empty(kReceivablesSection));
    mSdgDBGrid[ReceivablesList].refresh();
    mAdodc2.setRecordset(RecordSetBuilder::empty(kReceiptsSection));
    mSdgDBGrid[ReceiptsList].refresh();
  });
}

// --- requests --------------------------------------------------------------------------------------------------------

QString QORVA_AdjustAcc::accountDescription() const {
  return m_services.codes.description(kAccountTypeTable, m_accountType);
}

QString QORVA_AdjustAcc::customerName() const {
  if (!m_receivables || m_receivables->recordCount() == 0) {
    return {};
  }
  return m_receivables->valueAt(0, QStringLiteral("CUST_NAME")).toString().trimmed();
}

void QORVA_AdjustAcc::SendAdjustPI() {
  trap(m_services, source("SendAdjustPI"), [&] {
    messaging::RequestMessage& message = screencore::freshRequest(
        m_services, *this, mNcsbMessage, m_services.session.applicationName(), kAccountInquiryCode);
    message.addParameter(marventoParameter(messaging::params::RefNbr, m_accountNumber.trimmed()));
    message.addParameter(marventoParameter(messaging::params::RefTypCd, m_accountType.trimmed()));
    m_requestId = screencore::sendRequest(message, *this);
    m_requestOutstanding = true;
    m_services.statusBar.setText(QStringLiteral("Searching for ") + accountDescription() +
                                 QStringLiteral(" number ") + m_accountNumber);
    m_services.ui.setPointer(platform::Pointer::Hourglass);
    m_timedOut = false;
  });
}

void QORVA_AdjustAcc::SendAccRecvPI(const QString& receivableNumber, const QString& receivableType) {
  trap(m_services, source("SendAccRecvPI"), [&] {
    messaging::RequestMessage& message = screencore::freshRequest(
        m_services, *this, mNcsbMessage, m_services.session.applicationName(), kAccountInquiryCode);
    message.addParameter(marventoParameter(messaging::params::RefNbr, receivableNumber.trimmed()));
    message.addParameter(marventoParameter(messaging::params::RefTypCd, receivableType.trimmed()));
    message.addParameter(marventoParameter(messaging::params::Lpo, QStringLiteral("NO")));
    m_requestId = screencore::sendRequest(message, *this);
    m_requestOutstanding = true;
    // The status line already names the receivable being searched for.
    m_services.ui.setPointer(platform::Pointer::Hourglass);
    m_timedOut = false;
  });
}

// --- replies ---------------------------------------------------------------------------------------------------------

void QORVA_AdjustAcc::mNcsbMessage_MsgTimeout() {
  trap(m_services, source("mNcsbMessage_MsgTimeout"), [&] { m_timedOut = true; });
}

void QORVA_AdjustAcc::replyFailed(const QString& text) {
  m_services.ui.messageBox(text, platform::MsgButtons::Ok, platform::MsgIcon::Critical, title::messageTitle());
  m_services.statusBar.setText(m_timedOut ? title::SearchTimedOut : title::SearchWasNotSuccessful);
  m_accountNumber.clear();
  m_accountType.clear();
  Q_EMIT accountChanged();
  raise(AppError::LeaveEarly);
}

void QORVA_AdjustAcc::mNcsbMessage_DataReady(const QString& replyTo, const messaging::Reply& reply) {
  trap(m_services, source("mNcsbMessage_DataReady"), [&] {
    const QString applicationName = m_services.session.applicationName();
    if (replyTo != applicationName) {
      raise(AppError::LeaveEarly);
    }
    // The wait is over, whatever the answer.
    m_services.ui.setPointer(platform::Pointer::Default);
    if (const QString error = messaging::ReplyChecker::errorText(reply, applicationName,
                                                                 source("mNcsbMessage_DataReady"), m_requestId);
        !error.isEmpty()) {
      replyFailed(error);
    }
    if (const QString error = messaging::ReplyChecker::errorText(
            reply, applicationName, QStringLiteral("QORVA_PayDetail.mNcsbMessage_DataReady"), m_payDetailRequestId);
        !error.isEmpty()) {
      replyFailed(error);
    }
    if (reply.hasSection(kAssessmentSection)) {
      // The assessments of one receivable, for the detail screen; the lists stay as they are.
      handAssessments(reply);
      m_services.statusBar.setText(title::Ready);
    } else {
      const bool anyReceivables = takeList(ReceivablesList, reply);
      const bool anyReceipts = takeList(ReceiptsList, reply);
      if (!anyReceivables && !anyReceipts && m_requestOutstanding) {
        m_services.statusBar.setText(accountDescription() + QStringLiteral(" number ") + m_accountNumber +
                                     QStringLiteral(" not found"));
      } else {
        m_services.statusBar.setText(title::Ready);
      }
    }
    m_requestOutstanding = false;
    Q_EMIT accountChanged();
  });
}

bool QORVA_AdjustAcc::takeList(int index, const messaging::Reply& reply) {
  const bool receivables = index == ReceivablesList;
  messaging::RecordSetPtr set =
      RecordSetBuilder::build(reply, receivables ? kReceivablesSection : kReceiptsSection, m_requestId);
  (receivables ? m_receivables : m_receipts) = set;
  if (set->recordCount() == 0) {
    return false;
  }
  set->moveFirst();
  forgetDescriptions(index);
  (receivables ? mAdodc1 : mAdodc2).setRecordset(set);
  const QString sort = receivables ? QStringLiteral("CUST_ID,ACCT_RCVBL_NBR") : QStringLiteral("RCPT_NBR");
  screencore::failOn(set->setSort(sort), QStringLiteral("Sort"));
  mSdgDBGrid[index].refresh();
  return true;
}

void QORVA_AdjustAcc::handAssessments(const messaging::Reply& reply) {
  messaging::RecordSetPtr assessments = RecordSetBuilder::build(reply, kAssessmentSection, m_requestId);
  if (assessments->recordCount() == 0 || m_openDetail == nullptr) {
    return;
  }
  screencore::failOn(assessments->setSort(ardetail::kAssessmentSort), QStringLiteral("Sort"));
  const ardetail::AssessmentFields fields = ardetail::AssessmentFields::of(*assessments);
  for (assessments->moveFirst(); !assessments->eof(); assessments->moveNext()) {
    m_openDetail->addAssessment(*assessments, fields);
  }
}

// --- the lists -------------------------------------------------------------------------------------------------------

void QORVA_AdjustAcc::mSdgDBGrid_InitColumnProps(int index) {
  trap(m_services, source("mSdgDBGrid_InitColumnProps"), [&] {
    platform::Grid& grid = mSdgDBGrid[index];
    grid.removeAllColumns();
    const bool receivables = index == ReceivablesList;
    grid.setCaption(receivables ? QStringLiteral("Account Receivables") : QStringLiteral("Receipts"));
    const auto layOut = [&grid](const auto& columns) {
      for (const ColumnProps& props : columns) {
        GridColumn& column = grid.addColumn(QString::fromUtf16(props.name));
        column.setCaption(QString::fromUtf16(props.caption));
        column.setName(QString::fromUtf16(props.name));
        column.setDataField(QString::fromUtf16(props.field));
        column.setDisplay(props.display);
        column.setVisible(props.visible);
      }
    };
    RowColumns& columns = m_rowColumns[index];
    columns = RowColumns();
    if (receivables) {
      layOut(kReceivableColumns);
      columns.code[0] = grid.columnIndex(QStringLiteral("ACCT_RCVBL_TYP_CD"));
      columns.description[0] = grid.columnIndex(QStringLiteral("FORM_DESC"));
      columns.code[1] = grid.columnIndex(QStringLiteral("ACCT_STTS_CD"));
      columns.description[1] = grid.columnIndex(QStringLiteral("STTS_DESC"));
    } else {
      layOut(kReceiptColumns);
      columns.code[0] = grid.columnIndex(QStringLiteral("RCPT_STTS_CD"));
      columns.description[0] = grid.columnIndex(QStringLiteral("STTS_DESC"));
      columns.excess = grid.columnIndex(QStringLiteral("OVR_PYMT_AMT"));
    }
    forgetDescriptions(index);
  });
}

void QORVA_AdjustAcc::mSdgDBGrid_RowLoaded(int index, messaging::Bookmark) {
  // Runs for every row a list loads: its name is made once.
  static const QString kRowLoaded = source("mSdgDBGrid_RowLoaded");
  trap(m_services, kRowLoaded, [&] {
    platform::Grid& grid = mSdgDBGrid[index];
    const messaging::RecordSetPtr& set = (index == ReceivablesList ? mAdodc1 : mAdodc2).recordset();
    if (!set || set->recordCount() == 0) {
      return;
    }
    const RowColumns& columns = m_rowColumns[index];
    static const QString kTables[2][2] = {{QStringLiteral("REFDOCTYP"), QStringLiteral("CSTATUS")},
                                          {QStringLiteral("REFUNDTYP"), QString()}};
    for (int slot = 0; slot < 2; ++slot) {
      if (columns.code[slot] < 0) {
        continue;
      }
      const QVariant code = grid.column(columns.code[slot]).value();
      if (!code.isNull()) {
        grid.column(columns.description[slot]).setValue(describe(index, slot, kTables[index][slot], code.toString()));
      }
    }
    if (columns.excess >= 0) {
      GridColumn& excess = grid.column(columns.excess);
      if (excess.value().isNull()) {
        excess.setValue(QStringLiteral("0.00"));
      }
    }
  });
}

QString QORVA_AdjustAcc::describe(int list, int slot, const QString& table, const QString& code) {
  QHash<QString, QString>& known = m_descriptions[list][slot];
  const auto found = known.constFind(code);
  if (found != known.constEnd()) {
    return found.value();
  }
  const QString description = m_services.codes.description(table, code);
  known.insert(code, description);
  return description;
}

void QORVA_AdjustAcc::forgetDescriptions(int list) {
  m_descriptions[list][0].clear();
  m_descriptions[list][1].clear();
}

void QORVA_AdjustAcc::mSdgDBGrid_Click(int index) {
  trap(m_services, source("mSdgDBGrid_Click"), [&] {
    const int other = index == ReceivablesList ? ReceiptsList : ReceivablesList;
    mCmdButton[other].setEnabled(false);
    mSdgDBGrid[other].clearSelection();
    mCmdButton[index].setEnabled(mSdgDBGrid[index].selectedCount() == 1);
  });
}

void QORVA_AdjustAcc::SetGridBolding(platform::Grid& grid) {
  trap(m_services, source("SetGridBolding"), [&] {
    screencore::boldCaptionOnly(grid);
  });
}

void QORVA_AdjustAcc::mCmdButton_Click(int index) {
  trap(m_services, source("mCmdButton_Click"), [&] {
    if (index != ArDetailButton && index != ReceiptDetailButton) {
      raise(AppError::LeaveEarly);
    }
    platform::Grid& grid = mSdgDBGrid[index];
    const QList<int> chosen = grid.selectedRows();
    if (grid.rows() == 0 || chosen.size() != 1) {
      raise(AppError::LeaveEarly);
    }
    if (index == ArDetailButton) {
      openArDetail(grid, chosen.first());
    } else {
      openReceiptDetail(grid, chosen.first());
    }
  });
}

void QORVA_AdjustAcc::openArDetail(platform::Grid& grid, int row) {
  const auto cell = [&](const char* column) { return grid.column(QLatin1String(column)).cellValue(row).toString(); };
  const QString number = cell("ACCT_RCVBL_NBR");
  if (number.trimmed().isEmpty()) {
    raise(AppError::LeaveEarly);
  }
  m_services.statusBar.setText(QStringLiteral("Searching for account receivable number ") + number + u'-' +
                               cell("ACCT_RCVBL_CK_NBR"));
  ardetail::QORVA_AccDetail detail(m_services);
  detail.setCustomerID(cell("CUST_ID"));
  detail.setFormDescription(cell("FORM_DESC"));
  detail.setARNumber(number);
  detail.setARCheckNumber(cell("ACCT_RCVBL_CK_NBR"));
  detail.setARType(cell("ACCT_RCVBL_TYP_CD"));
  detail.setStatus(cell("ACCT_STTS_CD"), cell("STTS_DESC"));
  detail.setCustomerName(cell("CUST_NAME"));
  detail.setActivityStatus(cell("ACTV_STTS_CD"));
  detail.setCaseID(cell("CASE_ID"));
  if (m_receivables) {
    const int at = m_receivables->rowOfBookmark(grid.bookmarkAt(row));
    detail.setRowVersion(m_receivables->valueAt(at, QStringLiteral("ROW_VRSN_NBR")).toString());
    detail.setBalance(m_receivables->valueAt(at, QStringLiteral("ACCT_RCVBL_BAL_AMT")).toString());
  }
  detail.setSaveAllowed(receivableMaySave(cell("ACTV_STTS_CD"), cell("CASE_ID"), cell("ACCT_STTS_CD")));
  // The assessments arrive while the screen is open; the document hands them on as they come.
  m_openDetail = &detail;
  SendAccRecvPI(number, cell("ACCT_RCVBL_TYP_CD"));
  detail.showModal();
  m_openDetail = nullptr;
  if (detail.AccountChanged()) {
    // A save was made (or may have been): the lists show the account as the host now has it.
    SendAdjustPI();
  }
}

void QORVA_AdjustAcc::openReceiptDetail(platform::Grid& grid, int row) {
  const auto cell = [&](const char* column) { return grid.column(QLatin1String(column)).cellValue(row).toString(); };
  const QString number = cell("RCPT_NBR");
  if (number.trimmed().isEmpty()) {
    raise(AppError::LeaveEarly);
  }
  m_services.statusBar.setText(QStringLiteral("Searching for Receipt number ") + number);
  payments::QORVA_PayDetail detail(m_services);
  detail.setReceiptNumber(number);
  detail.setCustomerID(cell("CUST_ID"));
  detail.setPaymentAmount(cell("TOT_PYMT_AMT"));
  detail.setStatusDescription(cell("STTS_DESC"));
  detail.setPaymentDate(cell("RCPT_DT"));
  // Create Refund hands the excess fund to the refund worksheet, filed under this receipt.
  detail.setRefundWorksheetOpener(m_refundOpener ? m_refundOpener : [this, number]() -> std::unique_ptr<payments::RefundWorksheet> {
    return std::make_unique<WorkSheetHandOver>(m_services, number);
  });
  // The screen asks for the receipt itself when it is first shown; its replies are addressed to it alone.
  detail.showModal();
  if (detail.AccountChanged()) {
    // A payment was backed out or canceled, or an excess fund moved: the lists show the account as it now is.
    SendAdjustPI();
  }
}

bool receivableMaySave(const QString& activityStatus, const QString& caseId, const QString& statusCode) {
  // Tested in this order; any one of them makes the receivable view-only.
  if (activityStatus == u"I") {
    return false;
  }
  if (!caseId.trimmed().isEmpty()) {
    return false;
  }
  return statusCode.trimmed().toUpper() != u"V";
}

}  // namespace adjustacc::document
