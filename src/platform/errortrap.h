#pragma once
// The one error trap every named procedure runs under.
//
//   trap(services, "QORVA_AccDetail.SaveData", [&] {
//     ...
//     if (nothingToDo) raise(AppError::LeaveEarly);  // leaves the procedure, silently
//     ...
//   });
//
// The body runs; an error it raises ends it. Application errors are numbered from the object-error base:
// LeaveEarly (base + 1000) and ActivityCheckFailed (base + 1001) are the ways a procedure leaves on purpose
// (its messages, if any, were already shown) and are swallowed without a box; any other application error
// (such as MissingPrintTemplate, base + 1) and any other exception are handed, with the application's name
// and the procedure's source name, to the shared error reporter. Either way the procedure ends there.
//
// ProcedureError is the C++ exception used for this leave-the-procedure flow and nothing else; ordinary
// failures that a caller is expected to handle are returned as messaging::Result.

#include <QString>

#include <exception>
#include <functional>
#include <string>
#include <utility>

namespace adjustacc::platform {

class ErrorReporter;
struct Services;

inline constexpr quint32 kObjectErrorBase = 0x80040000u;

enum class AppError : quint32 {
  MissingPrintTemplate = kObjectErrorBase + 1,   // no print template for a document
  LeaveEarly = kObjectErrorBase + 1000,          // hex 800403E8: leave the procedure without a message
  ActivityCheckFailed = kObjectErrorBase + 1001, // an activity entry failed its checks (already shown)
};

class ProcedureError : public std::exception {
public:
  ProcedureError(quint32 number, QString description);
  // 0 for a failure that is no application error (fail()).
  quint32 number() const { return m_number; }
  QString description() const { return m_description; }
  // True for the two numbers that only leave a procedure (LeaveEarly, ActivityCheckFailed).
  bool isSilent() const;
  const char* what() const noexcept override { return m_what.c_str(); }

private:
  quint32 m_number;
  QString m_description;
  std::string m_what;
};

// Raises an application error inside a trapped procedure.
[[noreturn]] void raise(AppError error, const QString& description = {});

// Ends a trapped procedure with an unexpected failure whose text goes to the error reporter as it stands
// (a sort text the record set refused, an amount that could not be read).
[[noreturn]] void fail(const QString& description);

enum class TrapOutcome {
  Completed,  // the body ran to its end
  LeftEarly,  // the body raised LeaveEarly or ActivityCheckFailed
  Failed,     // any other error; it has been reported
};

TrapOutcome trap(Services& services, const QString& sourceName, const std::function<void()>& body);
// The same, for code that has the reporter and the application's name but no Services yet.
TrapOutcome trap(ErrorReporter& reporter, const QString& applicationName, const QString& sourceName,
                 const std::function<void()>& body);

// For procedures that answer a value: the body's value, or `fallback` when the body did not complete.
template <typename T, typename Body>
T trapValue(Services& services, const QString& sourceName, T fallback, Body&& body) {
  T result = std::move(fallback);
  trap(services, sourceName, [&] { result = std::forward<Body>(body)(); });
  return result;
}

}  // namespace adjustacc::platform
