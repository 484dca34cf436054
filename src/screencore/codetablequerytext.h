#pragma once
// The query texts that fill the code boxes from QVR_CODE. A code is offered while it is in effect: its
// effective date has come and it has no end date, or its end date has not passed yet (a code ending today
// is still offered; one starting tomorrow is not).
//
// The texts are handed to the code-table source (platform::CodeTableSource), which reads them back into
// their parts and runs them as a parameterised statement, so the shapes below are fixed to the letter.

#include <QDate>
#include <QString>

namespace adjustacc::screencore {

// The query every account-type box uses:
//   Select CD_TBL_ID, CD_TBL_CD, CD_TBL_DES From QVR_CODE Where REGION='<REGION>' And (CD_TBL_ID = '<table>'
//   And ((EFCTV_DT <= #<today># And (END_DT)Is Null) Or (EFCTV_DT <= #<today>#
//   And END_DT >= #<today>#)))
// The region is the officer's, trimmed and upper-cased; today is written yyyy-mm-dd between the "#" marks.
QString codeTableQueryText(const QString& region, const QString& codeTable, const QDate& today);

// The receipt screen's variant for its payment action list: the database's own date() for today, the
// rows ordered by description, and two blanks missing as that screen has always written it
// ("...='<region>'And (CD_TBL_ID = ..." and "(END_DT)Is Null"). The region is used as given.
QString orderedCodeTableQueryText(const QString& region, const QString& codeTable);

}  // namespace adjustacc::screencore
