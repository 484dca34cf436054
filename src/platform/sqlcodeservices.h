#pragma once
// The services that stand on one QtSql connection's code tables and on the host link, built and wired
// together: code descriptions, code-box rows, key filters, the check digit, form numbers, troops and
// districts, the next number and field marking. The desktop, and anything else that runs the screens over
// real code tables, makes one of these instead of assembling the pieces itself.

#include "checkdigit.h"
#include "fieldmarking.h"
#include "formnumbervalidator.h"
#include "keyfilters.h"
#include "nextnumber.h"
#include "services.h"
#include "sqlcodelookup.h"
#include "sqlcodetablesource.h"
#include "troopdistricts.h"

#include <QString>

namespace adjustacc::platform {

struct SqlCodeServices {
  // `connectionName` names a QSqlDatabase connection holding QVR_CODE, opened on the calling thread; the
  // user, clock, link and session must outlive this object.
  SqlCodeServices(const QString& connectionName, const User& user, const Clock& clock, messaging::HostLink& link,
                  const SessionSettings& session);

  // The services object of a screen: these services with the ones the caller owns.
  Services services(Ui& ui, messaging::HostLink& link, Clock& clock, User& user, SessionSettings& session,
                    StatusBar& statusBar, ErrorReporter& errors, PrintComponentFactory& printing,
                    TemplateLookup& templates);

  SqlCodeLookup codes;
  SqlCodeTableSource codeTables;
  KeyFilters keyFilters{codes};
  CheckDigit checkDigit;
  FormNumberValidator formNumbers{codes};
  TroopDistricts troopDistricts{codes};
  NextNumber numbers;
  FieldMarking fieldMarking;
};

}  // namespace adjustacc::platform
