#pragma once
// The check-digit service: the check digit of a form number's seven digits (the rule is in
// messaging/formnumber.h and docs/form-numbers.md).

#include "messaging/result.h"

#include <QString>

namespace adjustacc::platform {

class CheckDigit {
public:
  // One digit as text ("4") for exactly seven digits; an error naming the text otherwise.
  messaging::Result<QString> compute(const QString& sevenDigits) const;
};

}  // namespace adjustacc::platform
