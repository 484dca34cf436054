#pragma once
// The record-set builder of the shared component: turns a section of a reply into a record set laid out
// as the catalogue says, so that lists and screens can rely on every field of the layout being there.
//
// Names are catalogue layout names (sections.h): a section name ("ACNTSRCVBL"), or a section name with a
// variant ("ACNTSRCVBL:PAYMENTS", read from the reply's section "ACNTSRCVBL").

#include "recordset.h"
#include "reply.h"

#include <QString>

namespace adjustacc::messaging {

class RecordSetBuilder {
public:
  // The section as an open record set, positioned on its first row:
  //   - the reply's fields in the reply's order, typed by the catalogue (a field the catalogue does not
  //     know is text), followed by every field of the layout that the reply lacks, as null columns;
  //   - an empty record set laid out as the layout (see empty()) when the reply has no such section,
  //     failed, or answers another request than a non-empty `requestId` (logged: a screen should have
  //     asked the reply checker first).
  // A name the catalogue does not know is read as it comes, all fields text; when the reply lacks it
  // too, the result is an empty record set with no fields and a logged warning.
  // Never null. The rows are shared with the reply until one side writes.
  static RecordSetPtr build(const Reply& reply, const QString& layoutName, const QString& requestId = {});

  // An open record set with the layout's fields and no rows, for a list to show its columns before the
  // reply comes. An unknown name is a programming error: it is logged as a warning and the result is an
  // open record set with no fields (never null), so the screen still runs and shows an empty list.
  static RecordSetPtr empty(const QString& layoutName);
};

}  // namespace adjustacc::messaging
