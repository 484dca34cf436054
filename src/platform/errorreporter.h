#pragma once
// The shared error reporter: an unexpected error in a procedure is logged (category "adjustacc.errors")
// and shown to the clerk in a critical message box with its description and the procedure's source name,
// titled with the message title.

#include <QLoggingCategory>
#include <QString>

namespace adjustacc::platform {

Q_DECLARE_LOGGING_CATEGORY(lcErrors)

class Ui;

class ErrorReporter {
public:
  explicit ErrorReporter(Ui& ui);
  virtual ~ErrorReporter();
  ErrorReporter(const ErrorReporter&) = delete;
  ErrorReporter& operator=(const ErrorReporter&) = delete;

  virtual void report(const QString& description, const QString& applicationName, const QString& sourceName);

  // The text of the box: the description, a blank line, then "Source: " and the source name.
  static QString messageText(const QString& description, const QString& sourceName);

private:
  Ui& m_ui;
};

}  // namespace adjustacc::platform
