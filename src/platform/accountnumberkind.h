#pragma once
// Which rule an account number follows, by its account type. The type's description in code table
// "REFDOCTYP" decides: payment plans and alerts are numbered with digits only, check numbers are
// letters and digits, and every other type is a form number ("NNNNNNN-D", see formnumber.h).

#include <QString>

namespace adjustacc::platform {

class CodeLookup;

enum class AccountNumberKind { FormNumber, Numeric, CheckNumber };

inline const QString kAccountTypeTable = QStringLiteral("REFDOCTYP");

// From the type's description, compared upper-cased: "PAYMENT PLAN", "ALERT" -> Numeric; "CHECK NUMBER" ->
// CheckNumber; anything else, including no description, -> FormNumber.
AccountNumberKind accountNumberKindOfDescription(const QString& description);
// From the account-type code, through its "REFDOCTYP" description.
AccountNumberKind accountNumberKind(CodeLookup& codes, const QString& accountTypeCode);

}  // namespace adjustacc::platform
