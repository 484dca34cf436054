#pragma once
// Signing on: what the desktop learns from the host before the first document opens, without ever waiting
// for it. The officer's name, region and rights come from the officer inquiry (request code 64, sections
// OFFICER and RIGHTS); then the code tables the screens read come from the code-table inquiry (request code
// 63, one request per table, sent together, each for the whole table (key:ALL); section QVR_CODE) into the
// local CodeTableStore.
//
// Every request goes out at once and the answers are taken as they come on the event loop; finished() tells
// the outcome. An officer the host does not know, or no answer, fails the sign-on; a code table that could
// not be read is a warning (its boxes stay empty, its codes undescribed) and the sign-on goes on.

#include "platform/user.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

namespace adjustacc::messaging {
class HostLink;
class RequestMessage;
struct Reply;
}  // namespace adjustacc::messaging
namespace adjustacc::platform {
class SessionSettings;
}

namespace adjustacc::desktop {

class CodeTableStore;

class SignOn : public QObject {
  Q_OBJECT
public:
  static constexpr int kOfficerInquiryCode = 64;
  static constexpr int kCodeTableInquiryCode = 63;
  // The code tables the screens read.
  static const QStringList& codeTables();

  SignOn(messaging::HostLink& link, const platform::SessionSettings& session, QString officerId,
         CodeTableStore& store, QObject* parent = nullptr);
  ~SignOn() override;

  // Sends the officer inquiry; a sign-on under way is abandoned first.
  void start();
  bool isRunning() const { return m_running; }

  // After a successful sign-on: the officer with name, region and rights.
  const platform::User& user() const { return m_user; }
  // Why the sign-on failed; empty when it did not.
  QString error() const { return m_error; }
  // Code tables that could not be read, one text each.
  const QStringList& warnings() const { return m_warnings; }
  QString replyToName() const;

Q_SIGNALS:
  void finished(bool ok);

private:
  messaging::RequestMessage* send(int code, const QString& key, const QString& value);
  void officerAnswered(const messaging::Reply& reply, const QString& requestId);
  void tableAnswered(const QString& table, const messaging::Reply& reply, const QString& requestId);
  void finish(const QString& error);
  // "the host system did not answer within 60 seconds"
  QString noAnswerText() const;

  messaging::HostLink& m_link;
  const platform::SessionSettings& m_session;
  QString m_officerId;
  CodeTableStore& m_store;
  platform::User m_user;
  QString m_error;
  QStringList m_warnings;
  QList<QPointer<messaging::RequestMessage>> m_messages;
  int m_tablesOutstanding = 0;
  bool m_running = false;
};

}  // namespace adjustacc::desktop
