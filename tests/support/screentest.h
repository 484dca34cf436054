#pragma once
// Small helpers for the screen suites: reply sections written inline, waiting for the event loop to deliver
// what a link answers, and readable Qt text in failure messages.

#include "messaging/recordset.h"
#include "messaging/reply.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QTest>
#include <QVariant>

#include <ostream>

inline void PrintTo(const QString& text, std::ostream* os) { *os << '"' << text.toStdString() << '"'; }

namespace adjustacc::testsupport {

// A reply section: text fields, one list of values per row (a null QVariant is null).
inline messaging::RecordSet section(const QStringList& fields, const QList<QList<QVariant>>& rows) {
  QList<messaging::Field> layout;
  for (const QString& field : fields) {
    layout.append({field, messaging::FieldType::Text});
  }
  messaging::RecordSet set(layout);
  for (const QList<QVariant>& row : rows) {
    set.addNew(row);
  }
  set.moveFirst();
  return set;
}

// A good reply with the given sections; the scripted link fills in reply-to name and request id.
inline messaging::Reply replyWith(const QMap<QString, messaging::RecordSet>& sections) {
  messaging::Reply reply;
  reply.sections = sections;
  return reply;
}

// Lets the event loop run until the condition holds (five seconds at most).
template <typename Condition>
bool waitFor(Condition condition) {
  return QTest::qWaitFor(condition, 5000);
}

inline const QVariant null;

}  // namespace adjustacc::testsupport
