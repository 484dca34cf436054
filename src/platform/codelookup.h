#pragma once
// The description of a code in a named code table ("REFDOCTYP", "CSTATUS", "PENALTY"...): what lists and
// status texts show instead of the bare code. A code the table does not hold has no description (empty).

#include <QString>

namespace adjustacc::platform {

class CodeLookup {
public:
  virtual ~CodeLookup();
  // Empty when the table has no such code, and for an empty code. Codes are compared trimmed and without
  // regard to case ("o" is described as "O" is).
  virtual QString description(const QString& table, const QString& code) = 0;
  // Whether the code may be chosen today (effective, not ended): what a field that accepts a code checks,
  // where a description also serves codes that have ended. By default, whether the table describes it.
  virtual bool inEffect(const QString& table, const QString& code) { return !description(table, code).isEmpty(); }
};

}  // namespace adjustacc::platform
