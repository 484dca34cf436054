#pragma once
// The key filters of the text boxes: given the pressed key and the box's text and selection, accept the key
// or refuse it (the screen then beeps and drops the key). Control keys (backspace, delete, and every other
// key below a blank) always pass, as does a key without text (arrows, function keys).
//
//   Alphanumeric   ASCII letters and digits
//   Numeric        digits
//   Money          digits; one "." with at most two digits after it; "$" only in front; "," before the "."
//   TroopDistrict  the troop letter first, then the district's digits ("A12"); lower-case letters pass and
//                  are upper-cased by troopDistrictKey()
//   Account number, by account type (accountnumberkind.h):
//     payment plan, alert   digits
//     check number          ASCII letters and digits (no "-")
//     form number           up to seven digits, then one "-" (not first) and the one check digit
// "Digits" are the ASCII digits 0-9 throughout.

#include "currency.h"

#include <QChar>
#include <QString>

namespace adjustacc::platform {

class CodeLookup;

// The text box as the key finds it: its text and the selection the key replaces (or the cursor, when the
// selection is empty). selectionStart -1 means the cursor is at the end of the text.
struct KeyContext {
  QString text;
  int selectionStart = -1;
  int selectionLength = 0;
};

enum class KeyRule { Alphanumeric, Numeric, Money, TroopDistrict };

class KeyFilters {
public:
  explicit KeyFilters(CodeLookup& codes);

  static bool isControlKey(QChar key);

  bool accepts(KeyRule rule, QChar key, const KeyContext& context = {}) const;
  // Key text as a view reports it: empty passes; several characters pass when each passes in turn.
  bool accepts(KeyRule rule, const QString& keyText, const KeyContext& context = {}) const;

  // The account-number box of the given account type (a "REFDOCTYP" code).
  bool acceptsAccountNumberKey(QChar key, const QString& accountTypeCode, const KeyContext& context = {}) const;
  bool acceptsAccountNumberKey(const QString& keyText, const QString& accountTypeCode,
                               const KeyContext& context = {}) const;

  // What the troop/district box inserts for a key it accepted: "a".."z" become "A".."Z".
  static QChar troopDistrictKey(QChar key);

  // Whether the text of a money box, as it changes, is still an amount being typed ("", "$", "12.", "$1,234.5"
  // pass) and at most `maximum`. A non-numeric text or a larger amount is to be refused and reverted.
  static bool isMoneyTextAllowed(const QString& text, Currency maximum);

private:
  CodeLookup& m_codes;
};

}  // namespace adjustacc::platform
