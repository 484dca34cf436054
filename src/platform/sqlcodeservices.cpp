#include "sqlcodeservices.h"

namespace adjustacc::platform {

SqlCodeServices::SqlCodeServices(const QString& connectionName, const User& user, const Clock& clock,
                                 messaging::HostLink& link, const SessionSettings& session)
    : codes(connectionName, user, &clock), codeTables(connectionName, clock), numbers(link, session, user) {}

Services SqlCodeServices::services(Ui& ui, messaging::HostLink& link, Clock& clock, User& user,
                                   SessionSettings& session, StatusBar& statusBar, ErrorReporter& errors,
                                   PrintComponentFactory& printing, TemplateLookup& templates) {
  return Services{ui,         link,        clock,          user,    session,      statusBar,
                  errors,     codes,       codeTables,     keyFilters, checkDigit, formNumbers,
                  troopDistricts, numbers, fieldMarking,   printing, templates};
}

}  // namespace adjustacc::platform
