#pragma once
// Form numbers: the seven-digit number printed on a citation, permit or other enforcement form, followed
// by "-" and one check digit ("0001234-4"). The desktop checks what a clerk types and the host system
// generates new numbers, so both sides share this one rule (see docs/form-numbers.md):
//
//   Luhn (weighted modulus 10) over the seven digits. From the rightmost digit leftwards the weights are
//   2, 1, 2, 1, 2, 1, 2; a doubled digit above 9 counts as the sum of its two digits (minus 9). The check
//   digit is what brings the total up to the next multiple of 10.
//
// It catches every single mistyped digit and every swap of two neighbouring digits except 0 and 9.

#include "result.h"

#include <QString>
#include <QStringView>

#include <optional>

namespace adjustacc::messaging {

inline constexpr int kFormNumberDigits = 7;
inline constexpr qsizetype kFormNumberLength = 9;  // "NNNNNNN-D"
inline constexpr qint64 kLargestFormNumber = 9999999;

// The number that stands for "not known yet" (a number service that could not give one).
QString formNumberPlaceholder();  // "0000000-0"

// The check digit of exactly seven ASCII digits; nothing for any other text.
std::optional<int> formCheckDigit(QStringView sevenDigits);

// "NNNNNNN-D" for 1..9999999 with its check digit; an error text for anything outside that range.
Result<QString> makeFormNumber(qint64 number);

enum class FormNumberProblem {
  None,             // a well-formed number whose check digit fits
  BadFormat,        // not seven ASCII digits, "-" and one digit
  Zero,             // "0000000-D": no form carries number zero (and "0000000-0" is the placeholder)
  WrongCheckDigit,  // well formed, but the check digit does not fit the seven digits
};

// Checks a full form number as written "NNNNNNN-D" (exactly nine characters, no blanks).
FormNumberProblem checkFormNumber(QStringView text);

// The clerk-facing message for a problem with `text`; empty for FormNumberProblem::None.
QString formNumberProblemText(FormNumberProblem problem, QStringView text);

}  // namespace adjustacc::messaging
