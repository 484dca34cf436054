#pragma once
// What the agency host system answers: the reply-to name and request id it answers, an error text
// (empty when the request succeeded) and named sections, each a record set.

#include "recordset.h"

#include <QMap>
#include <QMetaType>
#include <QString>

namespace adjustacc::messaging {

struct Reply {
  QString replyTo;
  QString requestId;
  QString error;          // empty when good
  bool timedOut = false;  // made by the request message itself when no answer came in time
  QMap<QString, RecordSet> sections;

  bool hasSection(const QString& name) const { return sections.contains(name); }
  // The named section, or nullptr when the reply has none of that name.
  const RecordSet* section(const QString& name) const;
  // True when the host answered without an error and the answer came in time.
  bool ok() const { return error.isEmpty() && !timedOut; }

  // A failing reply made on this side (decoding failure, dead link, time-out).
  static Reply failure(const QString& replyTo, const QString& requestId, const QString& error);
};

}  // namespace adjustacc::messaging

Q_DECLARE_METATYPE(adjustacc::messaging::Reply)
