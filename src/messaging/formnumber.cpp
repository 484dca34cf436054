#include "formnumber.h"

namespace adjustacc::messaging {

namespace {

bool isAsciiDigit(QChar c) { return c >= u'0' && c <= u'9'; }

}  // namespace

QString formNumberPlaceholder() { return QStringLiteral("0000000-0"); }

std::optional<int> formCheckDigit(QStringView sevenDigits) {
  if (sevenDigits.size() != kFormNumberDigits) {
    return std::nullopt;
  }
  int sum = 0;
  bool doubled = true;  // the rightmost digit is doubled
  for (qsizetype i = sevenDigits.size() - 1; i >= 0; --i) {
    const QChar c = sevenDigits[i];
    if (!isAsciiDigit(c)) {
      return std::nullopt;
    }
    int digit = c.unicode() - u'0';
    if (doubled) {
      digit *= 2;
      if (digit > 9) {
        digit -= 9;
      }
    }
    sum += digit;
    doubled = !doubled;
  }
  return (10 - sum % 10) % 10;
}

Result<QString> makeFormNumber(qint64 number) {
  if (number < 1 || number > kLargestFormNumber) {
    return Result<QString>::failure(QStringLiteral("Form number %1 is out of range: form numbers run from 1 to %2")
                                        .arg(number)
                                        .arg(kLargestFormNumber));
  }
  const QString digits = QStringLiteral("%1").arg(number, kFormNumberDigits, 10, QLatin1Char('0'));
  // Seven digits by construction, so the check digit always exists.
  return digits + QLatin1Char('-') + QString::number(*formCheckDigit(digits));
}

FormNumberProblem checkFormNumber(QStringView text) {
  if (text.size() != kFormNumberLength || text[kFormNumberDigits] != u'-' ||
      !isAsciiDigit(text[kFormNumberLength - 1])) {
    return FormNumberProblem::BadFormat;
  }
  const QStringView digits = text.first(kFormNumberDigits);
  const std::optional<int> expected = formCheckDigit(digits);
  if (!expected) {
    return FormNumberProblem::BadFormat;
  }
  if (digits == u"0000000") {
    return FormNumberProblem::Zero;
  }
  if (text[kFormNumberLength - 1].unicode() - u'0' != *expected) {
    return FormNumberProblem::WrongCheckDigit;
  }
  return FormNumberProblem::None;
}

QString formNumberProblemText(FormNumberProblem problem, QStringView text) {
  switch (problem) {
    case FormNumberProblem::None:
      return {};
    case FormNumberProblem::BadFormat:
      return QStringLiteral("Account Number %1 is Invalid: a form number is 7 digits, \"-\" and a check digit")
          .arg(text);
    case FormNumberProblem::Zero:
      return QStringLiteral("Account Number %1 is Invalid: form numbers start at 0000001").arg(text);
    case FormNumberProblem::WrongCheckDigit:
      return QStringLiteral("Check digit is not valid for account number %1").arg(text);
  }
  return {};
}

}  // namespace adjustacc::messaging
