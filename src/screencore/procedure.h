#pragma once
// The names a screen's procedures report under, and the ways a procedure ends on a failed step.
//
// Every procedure runs under the error trap with a source name made of the screen's name, a full stop and
// the procedure's name:
//
//   const screencore::ProcedureNames source(u"QORVA_AccDetail");
//   trap(services, source("SaveData"), [&] { ... });        // "QORVA_AccDetail.SaveData"
//
// A few procedures report under a name that is not their own screen's ("QORVA_Transpayment.UpdateTimeout",
// "wubba"); those are written out where they are used, as they stand.
//
// Inside a trapped procedure, a step that answers a messaging::Result or a refused sort or filter text ends
// the procedure with its own text for the error reporter:
//
//   const int rows = screencore::valueOrFail(box.fill(query));
//   screencore::failOn(set->setSort(sortText), u"Sort");

#include "messaging/recordset.h"
#include "messaging/result.h"
#include "platform/errortrap.h"

#include <QString>

#include <optional>
#include <utility>

namespace adjustacc::screencore {

class ProcedureNames {
public:
  // `screen` is the whole prefix before the full stop: "QORVA_AccDetail".
  explicit ProcedureNames(QString screen) : m_prefix(std::move(screen) + u'.') {}
  QString operator()(const char* procedure) const { return m_prefix + QLatin1String(procedure); }
  QString screen() const { return m_prefix.chopped(1); }

private:
  QString m_prefix;
};

// The value of a successful result; a failed one ends the trapped procedure with its error text.
template <typename T>
T valueOrFail(messaging::Result<T> result) {
  if (!result) {
    platform::fail(result.error());
  }
  return std::move(result).value();
}

// Ends the trapped procedure when a sort or filter text was refused; `what` names its kind ("Sort").
inline void failOn(const std::optional<messaging::TextError>& problem, const QString& what) {
  if (problem) {
    platform::fail(problem->message(what));
  }
}

}  // namespace adjustacc::screencore
