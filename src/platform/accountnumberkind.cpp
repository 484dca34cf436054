#include "accountnumberkind.h"

#include "codelookup.h"

namespace adjustacc::platform {

AccountNumberKind accountNumberKindOfDescription(const QString& description) {
  const QString upper = description.toUpper();
  if (upper == u"PAYMENT PLAN" || upper == u"ALERT") {
    return AccountNumberKind::Numeric;
  }
  if (upper == u"CHECK NUMBER") {
    return AccountNumberKind::CheckNumber;
  }
  return AccountNumberKind::FormNumber;
}

AccountNumberKind accountNumberKind(CodeLookup& codes, const QString& accountTypeCode) {
  return accountNumberKindOfDescription(codes.description(kAccountTypeTable, accountTypeCode));
}

}  // namespace adjustacc::platform
