#pragma once
// Number series kept by the host: refund numbers handed to the screens, receipt and transaction numbers
// for the rows the host makes itself.

#include "audit.h"
#include "rights.h"

#include "messaging/result.h"

#include <optional>

namespace adjustacc::host {

inline const QString kRefundNumbers = QStringLiteral("F");
inline const QString kWarrantNumbers = QStringLiteral("W");
inline const QString kReceiptNumbers = QStringLiteral("R");
inline const QString kTransactionNumbers = QStringLiteral("T");

// Takes the next number of a series (audited); nothing when the series can give none now (switched off
// or used up). An unknown series is an error.
messaging::Result<std::optional<qint64>> takeNumber(AuditedWriter& writer, const QString& series);

// The right an officer needs to be given numbers of a series the screens ask for (request 60), and what for
// ("be given refund numbers"); nothing when the series needs none.
struct SeriesRight {
  QString right;
  QString purpose;
};
std::optional<SeriesRight> rightToTakeNumber(const QString& series);

}  // namespace adjustacc::host
