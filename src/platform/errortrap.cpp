#include "errortrap.h"

#include "errorreporter.h"
#include "services.h"
#include "sessionsettings.h"

#include <QLoggingCategory>

namespace adjustacc::platform {

namespace {

Q_LOGGING_CATEGORY(lcTrap, "adjustacc.trap")

QString defaultDescription(quint32 number) {
  switch (static_cast<AppError>(number)) {
    case AppError::LeaveEarly:
      return QStringLiteral("The procedure was left early");
    case AppError::ActivityCheckFailed:
      return QStringLiteral("The account activity entry failed its checks");
    case AppError::MissingPrintTemplate:
      return QStringLiteral("No template file is available for print.");
  }
  return QStringLiteral("Application error %1").arg(number, 8, 16, QLatin1Char('0')).toUpper();
}

void reportSafely(ErrorReporter& reporter, const QString& description, const QString& applicationName,
                  const QString& sourceName) {
  // A reporter that fails must not take the procedure's caller down with it; the log keeps the error.
  try {
    reporter.report(description, applicationName, sourceName);
  } catch (const std::exception& e) {
    qCCritical(lcErrors).noquote() << "error report failed:" << sourceName << description << e.what();
  } catch (...) {
    qCCritical(lcErrors).noquote() << "error report failed:" << sourceName << description;
  }
}

}  // namespace

ProcedureError::ProcedureError(quint32 number, QString description)
    : m_number(number),
      m_description(description.isEmpty() ? defaultDescription(number) : std::move(description)),
      m_what(m_description.toStdString()) {}

bool ProcedureError::isSilent() const {
  return m_number == static_cast<quint32>(AppError::LeaveEarly) ||
         m_number == static_cast<quint32>(AppError::ActivityCheckFailed);
}

void raise(AppError error, const QString& description) {
  throw ProcedureError(static_cast<quint32>(error), description);
}

void fail(const QString& description) { throw ProcedureError(0, description); }

TrapOutcome trap(ErrorReporter& reporter, const QString& applicationName, const QString& sourceName,
                 const std::function<void()>& body) {
  try {
    body();
    return TrapOutcome::Completed;
  } catch (const ProcedureError& e) {
    if (e.isSilent()) {
      qCDebug(lcTrap).noquote() << sourceName << "left:" << Qt::hex << e.number() << e.description();
      return TrapOutcome::LeftEarly;
    }
    reportSafely(reporter, e.description(), applicationName, sourceName);
  } catch (const std::exception& e) {
    reportSafely(reporter, QString::fromLocal8Bit(e.what()), applicationName, sourceName);
  } catch (...) {
    reportSafely(reporter, QStringLiteral("An unexpected error occurred."), applicationName, sourceName);
  }
  return TrapOutcome::Failed;
}

TrapOutcome trap(Services& services, const QString& sourceName, const std::function<void()>& body) {
  return trap(services.errors, services.session.applicationName(), sourceName, body);
}

}  // namespace adjustacc::platform
