#pragma once
// The form-number validator: whether an account number written "NNNNNNN-D" is right for its account type.
// Form-number types follow the check-digit rule (messaging/formnumber.h); the types whose numbers are not
// form numbers (payment plans and alerts: digits; check numbers: letters and digits) are held to their own
// rule, so the answer is right whichever type a screen hands over.

#include <QString>

namespace adjustacc::platform {

class CodeLookup;

class FormNumberValidator {
public:
  explicit FormNumberValidator(CodeLookup& codes) : m_codes(codes) {}

  // Empty when the number is valid for the type; otherwise the message to show the clerk.
  QString validate(const QString& number, const QString& accountTypeCode) const;

private:
  CodeLookup& m_codes;
};

}  // namespace adjustacc::platform
