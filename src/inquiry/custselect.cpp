#include "custselect.h"

#include "messaging/protocolwords.h"
#include "messaging/recordsetbuilder.h"
#include "messaging/replychecker.h"
#include "messaging/requestmessage.h"
#include "platform/errortrap.h"
#include "platform/modmessagetitle.h"
#include "platform/services.h"
#include "platform/sessionsettings.h"
#include "platform/ui.h"
#include "screencore/procedure.h"
#include "screencore/screenrequest.h"

namespace adjustacc::inquiry {

using platform::AppError;
using platform::raise;
using platform::trap;

namespace {

const screencore::ProcedureNames source(QStringLiteral("QORVA_CustSelect"));

}  // namespace

QORVA_CustSelect::QORVA_CustSelect(platform::Services& services, QObject* parent)
    : QObject(parent), m_services(services) {
  platform::OptionButton& byName = mRdoSearchBy.add(ByName, QStringLiteral("Name"));
  platform::OptionButton& byId = mRdoSearchBy.add(ById, QStringLiteral("Customer ID"));
  platform::OptionButton::makeGroup({&byName, &byId});
  byName.setValue(true);
  mTxtSearch.setMaxLength(60);
  // Enter in the search box searches, as the Search button does.
  mTxtSearch.setKeyPressHandler([this](int& key) {
    if (key == '\r') {
      key = 0;
      Search();
    }
  });
  layOutGrid();
  connect(&mCmdSearch, &platform::Button::clicked, this, &QORVA_CustSelect::Search);
  connect(&mSdgCustomers, &platform::Grid::clicked, this, &QORVA_CustSelect::mSdgCustomers_Click);
  mTxtSearch.setTabIndex(0);
  byName.setTabIndex(1);
  byId.setTabIndex(2);
  mCmdSearch.setTabIndex(3);
  mSdgCustomers.setTabIndex(4);
}

QORVA_CustSelect::~QORVA_CustSelect() = default;

void QORVA_CustSelect::layOutGrid() {
  mSdgCustomers.setCaption(QStringLiteral("Customers"));
  mSdgCustomers.addColumn(QStringLiteral("CUST_ID"), QStringLiteral("Customer ID"), QStringLiteral("CUST_ID"));
  mSdgCustomers.addColumn(QStringLiteral("CUST_NM"), QStringLiteral("Name"), QStringLiteral("CUST_NM"));
  mSdgCustomers.addColumn(QStringLiteral("ADDR_1"), QStringLiteral("Address"), QStringLiteral("ADDR_1"));
  mSdgCustomers.addColumn(QStringLiteral("CITY"), QStringLiteral("City"), QStringLiteral("CITY"));
  mSdgCustomers.addColumn(QStringLiteral("STATE"), QStringLiteral("State"), QStringLiteral("STATE"));
  mSdgCustomers.addColumn(QStringLiteral("ZIP"), QStringLiteral("ZIP"), QStringLiteral("ZIP"));
  mSdgCustomers.addColumn(QStringLiteral("ALERT_IND"), QStringLiteral("Alerts"), QStringLiteral("ALERT_IND"));
  mSdgCustomers.setSelectionMode(platform::Grid::SelectionMode::Single);
  mSdgCustomers.setAllowUpdate(false);
  mSdgCustomers.setDataSource(&mAdodcCustomers);
  mAdodcCustomers.setRecordset(messaging::RecordSetBuilder::empty(kCustomerSection));
}

void QORVA_CustSelect::setAllowEdit(bool allow) {
  m_allowEdit = allow;
  mTxtSearch.setLocked(!allow);
  mCmdSearch.setEnabled(allow);
}

QString QORVA_CustSelect::replyToName() const {
  return m_services.session.applicationName() + QStringLiteral(".CustSelect");
}

void QORVA_CustSelect::Search() {
  trap(m_services, source("Search"), [&] {
    const QString text = mTxtSearch.text().trimmed();
    if (text.isEmpty()) {
      mLblStatus.setCaption(QStringLiteral("Enter part of the customer's name, or the customer's id, to search"));
      raise(AppError::LeaveEarly);
    }
    const bool byId = mRdoSearchBy[ById].value();
    messaging::RequestMessage& message =
        screencore::freshRequest(m_services, *this, mNcsbMessage, replyToName(), kCustomerSearchCode);
    message.addParameter(
        screencore::marventoParameter(byId ? messaging::params::CustId : messaging::params::CustNm, text));
    m_requestId = screencore::sendRequest(message, *this);
    m_timedOut = false;
    mLblStatus.setCaption(QStringLiteral("Searching for customers"));
    m_services.ui.setPointer(platform::Pointer::Hourglass);
  });
}

void QORVA_CustSelect::mNcsbMessage_MsgTimeout() {
  trap(m_services, source("mNcsbMessage_MsgTimeout"), [&] { m_timedOut = true; });
}

void QORVA_CustSelect::mNcsbMessage_DataReady(const QString& replyTo, const messaging::Reply& reply) {
  trap(m_services, source("mNcsbMessage_DataReady"), [&] {
    if (replyTo != replyToName()) {
      raise(AppError::LeaveEarly);
    }
    m_services.ui.setPointer(platform::Pointer::Default);
    const QString error = messaging::ReplyChecker::errorText(reply, replyToName(),
                                                             source("mNcsbMessage_DataReady"), m_requestId);
    if (!error.isEmpty()) {
      m_services.ui.messageBox(error, platform::MsgButtons::Ok, platform::MsgIcon::Critical,
                               platform::modMessageTitle::messageTitle());
      mLblStatus.setCaption(m_timedOut ? platform::modMessageTitle::SearchTimedOut
                                       : platform::modMessageTitle::SearchWasNotSuccessful);
      raise(AppError::LeaveEarly);
    }
    messaging::RecordSetPtr customers = messaging::RecordSetBuilder::build(reply, kCustomerSection, m_requestId);
    mAdodcCustomers.setRecordset(customers);
    const int found = customers->recordCount();
    if (found == 0) {
      mLblStatus.setCaption(QStringLiteral("No customers found"));
      forgetCustomer();
    } else {
      mLblStatus.setCaption(found == 1 ? QStringLiteral("1 customer found")
                                       : QStringLiteral("%1 customers found").arg(found));
    }
    if (found == 1) {
      mSdgCustomers.selectRow(0);
      mSdgCustomers.setRow(0);
      chooseRow(0);
    }
  });
}

void QORVA_CustSelect::mSdgCustomers_Click() {
  trap(m_services, source("mSdgCustomers_Click"), [&] {
    const QList<int> selected = mSdgCustomers.selectedRows();
    if (selected.size() == 1) {
      chooseRow(selected.first());
    }
  });
}

void QORVA_CustSelect::forgetCustomer() {
  // The customer chosen before is not among what the clerk now looks at, so nobody is chosen.
  if (m_customerId.isEmpty()) {
    return;
  }
  m_customerId.clear();
  m_customerName.clear();
  m_hasAlerts = false;
  mLblCustomer.setCaption({});
  Q_EMIT SelectionChanged();
}

void QORVA_CustSelect::chooseRow(int row) {
  const QString id = mSdgCustomers.column(QStringLiteral("CUST_ID")).cellValue(row).toString().trimmed();
  if (id.isEmpty()) {
    return;
  }
  const QString name = mSdgCustomers.column(QStringLiteral("CUST_NM")).cellValue(row).toString().trimmed();
  const bool alerts =
      mSdgCustomers.column(QStringLiteral("ALERT_IND")).cellValue(row).toString().trimmed().toUpper() == u"Y";
  const bool changed = id != m_customerId;
  m_customerId = id;
  m_customerName = name;
  m_hasAlerts = alerts;
  mLblCustomer.setCaption(name.isEmpty() ? id : id + QStringLiteral("  ") + name);
  if (!changed) {
    return;
  }
  Q_EMIT SelectionChanged();
  if (alerts && m_notifyAlerts) {
    Q_EMIT HasAlerts();
  }
}

}  // namespace adjustacc::inquiry
