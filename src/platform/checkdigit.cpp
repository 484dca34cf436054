#include "checkdigit.h"

#include "messaging/formnumber.h"

namespace adjustacc::platform {

messaging::Result<QString> CheckDigit::compute(const QString& sevenDigits) const {
  const std::optional<int> digit = messaging::formCheckDigit(sevenDigits);
  if (!digit) {
    return messaging::Result<QString>::failure(
        QStringLiteral("A check digit needs exactly seven digits, not \"%1\"").arg(sevenDigits));
  }
  return QString::number(*digit);
}

}  // namespace adjustacc::platform
