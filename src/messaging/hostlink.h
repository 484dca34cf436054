#pragma once
// The way to the agency host system. A link takes a request and returns at once; the reply arrives
// later through replyReady on the thread the link lives in (the user-interface thread). A link never
// blocks its caller on I/O.

#include "reply.h"
#include "request.h"

#include <QObject>

namespace adjustacc::messaging {

class HostLink : public QObject {
  Q_OBJECT
public:
  using QObject::QObject;
  ~HostLink() override;

  // Hands the request over; must return without waiting for the host.
  virtual void submit(const Request& request) = 0;

Q_SIGNALS:
  // Every reply, whichever request it answers; request messages pick their own by request id.
  void replyReady(const adjustacc::messaging::Reply& reply);
};

}  // namespace adjustacc::messaging
