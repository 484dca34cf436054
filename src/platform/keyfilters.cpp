#include "keyfilters.h"

#include "accountnumberkind.h"
#include "codelookup.h"

#include <QRegularExpression>

#include <algorithm>
#include <functional>

namespace adjustacc::platform {

namespace {

bool isDigit(QChar c) { return c >= u'0' && c <= u'9'; }
bool isAsciiLetter(QChar c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'); }

// The text with the selection taken out, and where the key goes.
struct Insertion {
  QString rest;
  int position = 0;
};

Insertion insertionOf(const KeyContext& context) {
  const int size = static_cast<int>(context.text.size());
  const int start = context.selectionStart < 0 ? size : std::min(context.selectionStart, size);
  const int length = std::clamp(context.selectionLength, 0, size - start);
  Insertion out;
  out.rest = context.text;
  out.rest.remove(start, length);
  out.position = start;
  return out;
}

int digitsBetween(const QString& text, qsizetype from, qsizetype to) {
  return static_cast<int>(std::count_if(text.cbegin() + from, text.cbegin() + to, isDigit));
}

bool moneyKey(QChar key, const Insertion& at) {
  const qsizetype dot = at.rest.indexOf(u'.');
  if (at.position == 0 && at.rest.startsWith(u'$') && key != u'$') {
    return false;  // nothing goes in front of the dollar sign
  }
  if (isDigit(key)) {
    return dot < 0 || at.position <= dot || digitsBetween(at.rest, dot + 1, at.rest.size()) < 2;
  }
  if (key == u'.') {
    return dot < 0 && digitsBetween(at.rest, at.position, at.rest.size()) <= 2;
  }
  if (key == u'$') {
    return at.position == 0 && !at.rest.contains(u'$');
  }
  if (key == u',') {
    return dot < 0 || at.position <= dot;
  }
  return false;
}

bool troopDistrictKeyAllowed(QChar key, const Insertion& at) {
  if (isAsciiLetter(key)) {
    return at.position == 0 && !(!at.rest.isEmpty() && isAsciiLetter(at.rest.front()));
  }
  if (isDigit(key)) {
    return at.position > 0;
  }
  return false;
}

bool formNumberKey(QChar key, const Insertion& at) {
  const qsizetype dash = at.rest.indexOf(u'-');
  if (key == u'-') {
    // After at least one digit, and leaving at most one digit (the check digit) behind it.
    return dash < 0 && at.position > 0 && digitsBetween(at.rest, at.position, at.rest.size()) <= 1;
  }
  if (!isDigit(key)) {
    return false;
  }
  if (dash >= 0 && at.position > dash) {
    return digitsBetween(at.rest, dash + 1, at.rest.size()) < 1;
  }
  const qsizetype numberEnd = dash >= 0 ? dash : at.rest.size();
  return digitsBetween(at.rest, 0, numberEnd) < 7;
}

// Runs a per-character check over key text, inserting each accepted character before checking the next.
bool acceptsEach(const QString& keyText, const KeyContext& context,
                 const std::function<bool(QChar, const KeyContext&)>& check) {
  KeyContext running = context;
  for (const QChar key : keyText) {
    if (!check(key, running)) {
      return false;
    }
    const Insertion at = insertionOf(running);
    running.text = at.rest;
    running.text.insert(at.position, key);
    running.selectionStart = at.position + 1;
    running.selectionLength = 0;
  }
  return true;
}

}  // namespace

KeyFilters::KeyFilters(CodeLookup& codes) : m_codes(codes) {}

bool KeyFilters::isControlKey(QChar key) { return key.unicode() < 0x20 || key.unicode() == 0x7F; }

bool KeyFilters::accepts(KeyRule rule, QChar key, const KeyContext& context) const {
  if (isControlKey(key)) {
    return true;
  }
  switch (rule) {
    case KeyRule::Alphanumeric:
      return isAsciiLetter(key) || isDigit(key);
    case KeyRule::Numeric:
      return isDigit(key);
    case KeyRule::Money:
      return moneyKey(key, insertionOf(context));
    case KeyRule::TroopDistrict:
      return troopDistrictKeyAllowed(key, insertionOf(context));
  }
  return false;
}

bool KeyFilters::accepts(KeyRule rule, const QString& keyText, const KeyContext& context) const {
  return acceptsEach(keyText, context, [&](QChar key, const KeyContext& at) { return accepts(rule, key, at); });
}

bool KeyFilters::acceptsAccountNumberKey(QChar key, const QString& accountTypeCode, const KeyContext& context) const {
  if (isControlKey(key)) {
    return true;
  }
  switch (accountNumberKind(m_codes, accountTypeCode)) {
    case AccountNumberKind::Numeric:
      return isDigit(key);
    case AccountNumberKind::CheckNumber:
      return isAsciiLetter(key) || isDigit(key);
    case AccountNumberKind::FormNumber:
      return formNumberKey(key, insertionOf(context));
  }
  return false;
}

bool KeyFilters::acceptsAccountNumberKey(const QString& keyText, const QString& accountTypeCode,
                                         const KeyContext& context) const {
  return acceptsEach(keyText, context, [&](QChar key, const KeyContext& at) {
    return acceptsAccountNumberKey(key, accountTypeCode, at);
  });
}

QChar KeyFilters::troopDistrictKey(QChar key) { return (key >= u'a' && key <= u'z') ? key.toUpper() : key; }

bool KeyFilters::isMoneyTextAllowed(const QString& text, Currency maximum) {
  static const QRegularExpression partial(QStringLiteral("^\\s*\\$?[0-9,]*(\\.[0-9]{0,2})?\\s*$"));
  if (!partial.match(text).hasMatch()) {
    return false;
  }
  QString digits = text.trimmed();
  digits.remove(u'$');
  digits.remove(u',');
  if (digits.isEmpty() || digits == u".") {
    return true;  // still being typed
  }
  const messaging::Result<Currency> value = Currency::parse(digits);
  return value.ok() && value.value() <= maximum;
}

}  // namespace adjustacc::platform
