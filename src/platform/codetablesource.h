#pragma once
// Where code boxes get their rows: a code-table query text (built by the screens) run against QVR_CODE.
// The rows have the fields CD_TBL_ID, CD_TBL_CD and CD_TBL_DES.

#include "messaging/recordset.h"
#include "messaging/result.h"

#include <QString>

namespace adjustacc::platform {

class CodeTableSource {
public:
  virtual ~CodeTableSource();
  virtual messaging::Result<messaging::RecordSet> run(const QString& queryText) = 0;
};

}  // namespace adjustacc::platform
