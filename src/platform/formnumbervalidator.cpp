#include "formnumbervalidator.h"

#include "accountnumberkind.h"
#include "codelookup.h"
#include "messaging/formnumber.h"

#include <algorithm>

namespace adjustacc::platform {

namespace {

bool allOf(const QString& text, bool (*test)(QChar)) {
  return !text.isEmpty() && std::all_of(text.cbegin(), text.cend(), test);
}
bool isDigit(QChar c) { return c >= u'0' && c <= u'9'; }
bool isLetterOrDigit(QChar c) { return isDigit(c) || (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'); }

}  // namespace

QString FormNumberValidator::validate(const QString& number, const QString& accountTypeCode) const {
  switch (accountNumberKind(m_codes, accountTypeCode)) {
    case AccountNumberKind::Numeric:
      return allOf(number, isDigit) ? QString() : QStringLiteral("Only numeric is allowed");
    case AccountNumberKind::CheckNumber:
      return allOf(number, isLetterOrDigit) ? QString() : QStringLiteral("Only AlphaNumeric is allowed");
    case AccountNumberKind::FormNumber:
      break;
  }
  return messaging::formNumberProblemText(messaging::checkFormNumber(number), number);
}

}  // namespace adjustacc::platform
