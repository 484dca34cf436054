#pragma once
// Activity rows that clerks add or change from the Account Activity screen; they reach the host with the
// account receivable detail screen's save.

#include "handlercontext.h"
#include "receivable.h"

#include "messaging/request.h"

namespace adjustacc::host {

// The first day activity can be recorded for.
inline const QDate kFirstActivityDay(1997, 1, 27);

// Applies the ACCOUNTACTIVITY records of a save to one account receivable: ADD rows are checked (date,
// code in effect, comment, no duplicate) and inserted under the signed-on officer; UPD rows must name a
// row of this receivable by ACTVTY_SEQ_NBR with the ROW_VRSN_NBR read, may not be rows the system made,
// and another officer's row needs the activity update right. Answers the number of rows written.
messaging::Result<int> applyActivityRecords(const Context& context, AuditedWriter& writer,
                                            const Receivable& receivable, const messaging::RecordList& records);

}  // namespace adjustacc::host
