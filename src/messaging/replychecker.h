#pragma once
// The reply checker of the shared component: decides whether a reply is a good answer for a screen and,
// when it is not, gives the text the screen shows in its critical message box.
//
// The text is written for the clerk: a first line that says what happened, the detail (the host's own
// error text, or what could not be read) after a blank line, and last, after another blank line, the
// source name of the handler that asked ("Source: QORVA_AdjustAcc.mNcsbMessage_DataReady"), which is what
// support staff search the logs for. Lines are separated by carriage return and line feed, as in every
// message box of the system.

#include "reply.h"

#include <QString>

namespace adjustacc::messaging {

class ReplyChecker {
public:
  // Empty when the reply is good for this handler. In this order, a reply fails when:
  //   - it is addressed to another reply-to name (exact comparison);
  //   - `requestId` is not empty and the reply answers another request (an empty id matches any reply);
  //   - no answer came in time (the reply made by the request message after MsgTimeout);
  //   - it carries an error: the host refused or failed, or the reply could not be read or delivered.
  static QString errorText(const Reply& reply, const QString& replyToName, const QString& sourceName,
                           const QString& requestId);
};

}  // namespace adjustacc::messaging
