#pragma once
// What the suites of the host links and the HTTP service share: the account inquiry as the document sends
// it, waiting for a link's reply, and the demo set's officers and first account read from its database.

#include "messaging/hostlink.h"
#include "messaging/reply.h"
#include "messaging/request.h"

#include <QSignalSpy>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QStringList>
#include <QUuid>

namespace adjustacc::host::testing {

using namespace Qt::Literals::StringLiterals;

// The account inquiry (request 47) for the account filed under a reference, with a fresh request id.
inline messaging::Request accountInquiry(const QString& user, const QString& type, const QString& number) {
  messaging::Request request;
  request.replyTo = u"ADJUSTACC"_s;
  request.version = u"1"_s;
  request.code = 47;
  request.user = user;
  request.requestId = QUuid::createUuid().toString(QUuid::WithoutBraces);
  request.params = {{u"MARVENTO"_s, u"key:REF_NBR"_s, u"="_s, number},
                    {u"MARVENTO"_s, u"key:REF_TYP_CD"_s, u"="_s, type}};
  return request;
}

// Submits the request and waits for the link's reply; a failing reply for the request when none comes in
// `waitMs`.
inline messaging::Reply submitAndWait(messaging::HostLink& link, const messaging::Request& request, int waitMs) {
  QSignalSpy replies(&link, &messaging::HostLink::replyReady);
  link.submit(request);
  if (!replies.wait(waitMs)) {
    return messaging::Reply::failure(request.replyTo, request.requestId, u"no reply in the test's time"_s);
  }
  return replies.takeFirst().at(0).value<messaging::Reply>();
}

// The demo set's officers in id order and the first account receivable's reference; empty where the
// database has none.
struct DemoFacts {
  QStringList officers;
  QString type;
  QString number;

  QString officer() const { return officers.value(0); }
};

inline DemoFacts readDemoFacts(const QSqlDatabase& db) {
  DemoFacts facts;
  QSqlQuery query(db);
  if (query.exec(u"SELECT OFFICER_ID FROM OFFICER ORDER BY OFFICER_ID"_s)) {
    while (query.next()) {
      facts.officers.append(query.value(0).toString());
    }
  }
  if (query.exec(u"SELECT REF_TYP_CD, REF_NBR FROM ACCT_RCVBL ORDER BY ACCT_RCVBL_ID"_s) && query.next()) {
    facts.type = query.value(0).toString();
    facts.number = query.value(1).toString();
  }
  return facts;
}

}  // namespace adjustacc::host::testing
