#pragma once
// The code-table query texts that code boxes are filled by, read back into their parts so they can be
// run safely as a parameterised statement. Only the known shapes are accepted:
//
//   Select CD_TBL_ID, CD_TBL_CD, CD_TBL_DES From QVR_CODE Where REGION='<region>' And (CD_TBL_ID = '<table>'
//   And ((EFCTV_DT <= <date> And (END_DT)Is Null) Or (EFCTV_DT <= <date> And END_DT >= <date>)))
//   [Order by CD_TBL_DES|CD_TBL_CD|CD_TBL_ID [Asc|Desc]]
//
// where <date> is a literal between "#" marks (#2024-03-07#, #03/07/2024#, #03-07-2024#) or date() (today).
// Keywords and column names may be in any case, and blanks between the parts may be missing or repeated
// (the receipt screen's text has "'And" and "(END_DT)Is" written together). The quoted region and table
// name may hold only letters, digits, blanks, "-" and "_". Any other text is refused: the quoted values
// are never pasted into SQL, so a text cannot smuggle in a statement of its own.

#include "messaging/result.h"

#include <QDate>
#include <QString>
#include <QStringView>

#include <array>
#include <optional>

namespace adjustacc::platform {

struct CodeTableQuery {
  enum class OrderBy { Code, Description, TableId };

  QString region;
  QString table;
  // The three date operands in the order they appear; nothing stands for date() (today).
  std::array<std::optional<QDate>, 3> dates;
  std::optional<OrderBy> orderBy;  // none when the text has no Order by
  bool descending = false;

  static constexpr qsizetype kMaxTextLength = 1000;
  static messaging::Result<CodeTableQuery> parse(QStringView text);
};

}  // namespace adjustacc::platform
