#pragma once
// A host link for tests: keeps every request it is given and answers only as the test says, always
// later from the event loop, as a real link does.
//
//   ScriptedLink link;
//   RequestMessage message(&link);
//   ... message.send();
//   link.answerLast(reply);          // or answer(id, reply), or setResponder(...), or nothing (time-out)
//   QTRY_COMPARE(dataReady.count(), 1);

#include "hostlink.h"

#include <QList>

#include <functional>
#include <optional>

namespace adjustacc::messaging {

class ScriptedLink : public HostLink {
  Q_OBJECT
public:
  // Asked for every submitted request; a reply it returns is delivered (addressed as by answer()),
  // nothing leaves the request unanswered.
  using Responder = std::function<std::optional<Reply>(const Request&)>;

  explicit ScriptedLink(QObject* parent = nullptr);
  ~ScriptedLink() override;

  void submit(const Request& request) override;

  const QList<Request>& requests() const { return m_requests; }
  qsizetype requestCount() const { return m_requests.size(); }
  // The last request; an empty Request (and a logged warning) when none was submitted.
  Request lastRequest() const;
  std::optional<Request> request(const QString& requestId) const;

  // Delivers the reply for the submitted request of that id. An empty reply-to name or request id in the
  // reply is filled from the request, so a test only writes what matters to it. False (nothing delivered)
  // when no such request was submitted.
  bool answer(const QString& requestId, Reply reply);
  bool answerLast(Reply reply);
  // Delivers a reply exactly as given, whichever request it names (stray and late replies).
  void deliver(const Reply& reply);

  void setResponder(Responder responder);
  void clear();

private:
  QList<Request> m_requests;
  Responder m_responder;
};

}  // namespace adjustacc::messaging
