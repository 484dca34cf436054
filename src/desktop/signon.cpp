#include "signon.h"

#include "codetablestore.h"
#include "logging.h"

#include "messaging/recordsetbuilder.h"
#include "messaging/reply.h"
#include "messaging/requestmessage.h"
#include "platform/sessionsettings.h"

#include <utility>

namespace adjustacc::desktop {

using messaging::RecordSetBuilder;
using messaging::Reply;
using messaging::RequestMessage;

const QStringList& SignOn::codeTables() {
  static const QStringList tables = {
      QStringLiteral("ADJDOC"),    QStringLiteral("FORMDOC"),  QStringLiteral("REFDOCTYP"),
      QStringLiteral("CSTATUS"),   QStringLiteral("PENALTY"),  QStringLiteral("FEE"),
      QStringLiteral("ACCADJUST"), QStringLiteral("PAYADJUST"), QStringLiteral("REFUNDTYP"),
      QStringLiteral("FUNDTYP"),   QStringLiteral("COLLECTN"), QStringLiteral("COLLECTN-USER"),
      QStringLiteral("TROOP"),     QStringLiteral("TRPDSTRCT"),
  };
  return tables;
}

SignOn::SignOn(messaging::HostLink& link, const platform::SessionSettings& session, QString officerId,
               CodeTableStore& store, QObject* parent)
    : QObject(parent), m_link(link), m_session(session), m_officerId(std::move(officerId).trimmed()), m_store(store) {}

SignOn::~SignOn() = default;

QString SignOn::replyToName() const { return m_session.applicationName() + QStringLiteral(".SignOn"); }

RequestMessage* SignOn::send(int code, const QString& key, const QString& value) {
  auto* message = new RequestMessage(&m_link, this);
  message->setReplyTo(replyToName());
  message->setVersion(m_session.versionText());
  message->setRequestCode(code);
  message->setUser(m_officerId);
  if (!key.isEmpty()) {
    message->addParameter({QStringLiteral("MARVENTO"), key, QStringLiteral("="), value});
  }
  message->setTimeoutInterval(m_session.updateTimeoutMs());
  m_messages.append(message);
  return message;
}

void SignOn::start() {
  for (const QPointer<RequestMessage>& message : std::as_const(m_messages)) {
    if (message) {
      message->disconnect(this);
      message->deleteLater();
    }
  }
  m_messages.clear();
  m_error.clear();
  m_warnings.clear();
  m_tablesOutstanding = 0;
  m_running = true;
  if (m_officerId.isEmpty()) {
    // Answered from the event loop like every other outcome, so the caller's connections are in place.
    QMetaObject::invokeMethod(
        this, [this] { finish(QStringLiteral("No officer was given to sign on with.")); }, Qt::QueuedConnection);
    return;
  }
  RequestMessage* message = send(kOfficerInquiryCode, {}, {});
  const QString requestId = message->requestId();
  connect(message, &RequestMessage::DataReady, this,
          [this, requestId](const QString&, const Reply& reply) { officerAnswered(reply, requestId); });
  qCInfo(lcDesktop).noquote() << "signing on as" << m_officerId;
  message->send();
}

QString SignOn::noAnswerText() const {
  const int seconds = (m_session.updateTimeoutMs() + 999) / 1000;
  return seconds == 1 ? QStringLiteral("the host system did not answer within a second")
                      : QStringLiteral("the host system did not answer within %1 seconds").arg(seconds);
}

void SignOn::officerAnswered(const Reply& reply, const QString& requestId) {
  if (!m_running) {
    return;
  }
  // Said for the sign-on: the link's own words for a time-out speak of requests that may still be carried out.
  if (reply.timedOut) {
    finish(QStringLiteral("Officer %1 could not be signed on: %2.").arg(m_officerId, noAnswerText()));
    return;
  }
  if (!reply.ok()) {
    finish(QStringLiteral("Officer %1 could not be signed on. %2").arg(m_officerId, reply.error));
    return;
  }
  const messaging::RecordSetPtr officers = RecordSetBuilder::build(reply, QStringLiteral("OFFICER"), requestId);
  if (officers->recordCount() == 0) {
    finish(QStringLiteral("The host system does not know the officer %1.").arg(m_officerId));
    return;
  }
  const QString id = officers->valueAt(0, QStringLiteral("OFFICER_ID")).toString().trimmed();
  const QString name = officers->valueAt(0, QStringLiteral("OFFICER_NM")).toString().trimmed();
  const QString region = officers->valueAt(0, QStringLiteral("REGION")).toString().trimmed();
  QStringList rights;
  const messaging::RecordSetPtr held = RecordSetBuilder::build(reply, QStringLiteral("RIGHTS"), requestId);
  for (int row = 0; row < held->recordCount(); ++row) {
    rights.append(held->valueAt(row, QStringLiteral("RIGHT_NM")).toString().trimmed());
  }
  m_user = platform::User(id.isEmpty() ? m_officerId : id, name, region, rights);
  qCInfo(lcDesktop).noquote() << "signed on as" << m_user.officerId() << name << "region" << region << "rights"
                              << rights.join(u',');

  m_tablesOutstanding = static_cast<int>(codeTables().size());
  for (const QString& table : codeTables()) {
    // Every row whatever its dates: the code boxes offer only the codes in effect on the day they open,
    // while lists must still describe the ended codes that old rows carry.
    RequestMessage* message = send(kCodeTableInquiryCode, QStringLiteral("key:CD_TBL_ID"), table);
    message->addParameter({QStringLiteral("MARVENTO"), QStringLiteral("key:ALL"), QStringLiteral("="),
                           QStringLiteral("Y")});
    const QString tableRequest = message->requestId();
    connect(message, &RequestMessage::DataReady, this, [this, table, tableRequest](const QString&, const Reply& r) {
      tableAnswered(table, r, tableRequest);
    });
    message->send();
  }
}

void SignOn::tableAnswered(const QString& table, const Reply& reply, const QString& requestId) {
  if (!m_running) {
    return;
  }
  if (reply.timedOut) {
    m_warnings.append(QStringLiteral("Code table %1 could not be read: %2.").arg(table, noAnswerText()));
  } else if (!reply.ok()) {
    m_warnings.append(QStringLiteral("Code table %1 could not be read: %2").arg(table, reply.error));
  } else {
    const messaging::RecordSetPtr rows = RecordSetBuilder::build(reply, QStringLiteral("QVR_CODE"), requestId);
    const messaging::Result<int> stored = m_store.replaceTable(table, *rows);
    if (!stored) {
      m_warnings.append(QStringLiteral("Code table %1 could not be kept: %2").arg(table, stored.error()));
    }
  }
  if (--m_tablesOutstanding == 0) {
    for (const QString& warning : std::as_const(m_warnings)) {
      qCWarning(lcDesktop).noquote() << warning;
    }
    finish({});
  }
}

void SignOn::finish(const QString& error) {
  m_running = false;
  m_error = error;
  if (!error.isEmpty()) {
    qCWarning(lcDesktop).noquote() << error;
  }
  Q_EMIT finished(error.isEmpty());
}

}  // namespace adjustacc::desktop
