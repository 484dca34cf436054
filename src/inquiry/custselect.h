#pragma once
// The customer selector (QORVA_CustSelect): finds customers through the host system by part of their name
// or by their id, lists them, and tells its parent which customer the clerk chose.
//
// It is a control-like view-model: a search box, a choice between searching by name and by id, a Search
// button, a result grid bound to the host's "CUSTOMER" rows and a status line. The desktop draws it inside
// the dialogue that holds it.
//
// Events:
//   SelectionChanged  the clerk chose another customer (customerId()/customerName() give it);
//   HasAlerts         the chosen customer has alerts on file, sent only when NotifyAlerts is set.
// A new search keeps the chosen customer until the clerk chooses another; a search for one customer id
// chooses that customer at once; a search that finds nobody leaves nobody chosen (SelectionChanged, with an
// empty customerId()).

#include "messaging/recordset.h"
#include "messaging/reply.h"
#include "platform/button.h"
#include "platform/controlarray.h"
#include "platform/datacontrol.h"
#include "platform/grid.h"
#include "platform/label.h"
#include "platform/optionbutton.h"
#include "platform/textbox.h"

#include <QObject>
#include <QPointer>
#include <QString>

namespace adjustacc::messaging {
class RequestMessage;
}
namespace adjustacc::platform {
struct Services;
}

namespace adjustacc::inquiry {

class QORVA_CustSelect : public QObject {
  Q_OBJECT
public:
  // Request code of the customer search, and the reply section it answers with.
  static constexpr int kCustomerSearchCode = 62;
  static inline const QString kCustomerSection = QStringLiteral("CUSTOMER");
  // Indexes of mRdoSearchBy.
  enum SearchBy { ByName = 0, ById = 1 };

  explicit QORVA_CustSelect(platform::Services& services, QObject* parent = nullptr);
  ~QORVA_CustSelect() override;

  // --- properties the parent sets ----------------------------------------------------------------------
  // Whether the clerk may type a search (the box and the Search button); on by default.
  bool AllowEdit() const { return m_allowEdit; }
  void setAllowEdit(bool allow);
  // Whether HasAlerts is sent for a chosen customer with alerts; off by default.
  bool NotifyAlerts() const { return m_notifyAlerts; }
  void setNotifyAlerts(bool notify) { m_notifyAlerts = notify; }
  // Whether adding and changing customers is withheld from the clerk. This selector only finds customers,
  // so the property records the parent's wish for the desktop; nothing here adds or edits.
  bool NoAddEdit() const { return m_noAddEdit; }
  void setNoAddEdit(bool noAddEdit) { m_noAddEdit = noAddEdit; }

  // --- the chosen customer -------------------------------------------------------------------------------
  QString customerId() const { return m_customerId; }
  QString customerName() const { return m_customerName; }
  bool customerHasAlerts() const { return m_hasAlerts; }

  // --- procedures ----------------------------------------------------------------------------------------
  // Sends the search for the text in mTxtSearch, by name or by id as mRdoSearchBy says.
  void Search();
  void mNcsbMessage_DataReady(const QString& replyTo, const messaging::Reply& reply);
  void mNcsbMessage_MsgTimeout();
  // A click in the result grid chooses the selected customer.
  void mSdgCustomers_Click();

  // The reply-to name of the search: the application's name followed by ".CustSelect".
  QString replyToName() const;
  QString requestId() const { return m_requestId; }
  bool timedOut() const { return m_timedOut; }

  // --- controls ------------------------------------------------------------------------------------------
  platform::TextBox mTxtSearch{QStringLiteral("mTxtSearch")};
  platform::ControlArray<platform::OptionButton> mRdoSearchBy{QStringLiteral("mRdoSearchBy")};
  platform::Button mCmdSearch{QStringLiteral("mCmdSearch"), QStringLiteral("Search")};
  platform::Adodc mAdodcCustomers{QStringLiteral("mAdodcCustomers")};
  platform::Grid mSdgCustomers{QStringLiteral("mSdgCustomers")};
  platform::Label mLblCustomer{QStringLiteral("mLblCustomer")};  // the chosen customer, as shown
  platform::Label mLblStatus{QStringLiteral("mLblStatus")};

Q_SIGNALS:
  void SelectionChanged();
  void HasAlerts();

private:
  void layOutGrid();
  void chooseRow(int row);
  void forgetCustomer();

  platform::Services& m_services;
  QPointer<messaging::RequestMessage> mNcsbMessage;
  QString m_requestId;
  bool m_timedOut = false;
  bool m_allowEdit = true;
  bool m_notifyAlerts = false;
  bool m_noAddEdit = false;
  QString m_customerId;
  QString m_customerName;
  bool m_hasAlerts = false;
};

}  // namespace adjustacc::inquiry
