#include "nextnumber.h"

#include "messaging/formnumber.h"
#include "messaging/hostlink.h"
#include "messaging/requestmessage.h"
#include "sessionsettings.h"
#include "user.h"

#include <QLoggingCategory>

#include <utility>

namespace adjustacc::platform {

namespace {

Q_LOGGING_CATEGORY(lcNumbers, "adjustacc.numbers")

QString typeKey(const QString& type) { return type.trimmed().toUpper(); }

}  // namespace

NextNumber::NextNumber(messaging::HostLink& link, const SessionSettings& session, const User& user, QObject* parent)
    : QObject(parent), m_link(link), m_session(session), m_user(user) {}

NextNumber::~NextNumber() = default;

QString NextNumber::replyToName() const { return m_session.applicationName() + QStringLiteral(".NextNumber"); }

QString NextNumber::nextNumber(const QString& type) {
  const QString key = typeKey(type);
  if (key.isEmpty()) {
    qCWarning(lcNumbers) << "a next number was asked for without a number type";
    return messaging::formNumberPlaceholder();
  }
  Slot& slot = m_slots[key];
  const QString number = std::exchange(slot.number, QString());
  if (!slot.outstanding) {
    startFetch(key, slot);
  }
  return number.isEmpty() ? messaging::formNumberPlaceholder() : number;
}

void NextNumber::prefetch(const QString& type) {
  const QString key = typeKey(type);
  if (key.isEmpty()) {
    return;
  }
  Slot& slot = m_slots[key];
  if (slot.number.isEmpty() && !slot.outstanding) {
    startFetch(key, slot);
  }
}

bool NextNumber::hasNumber(const QString& type) const { return !m_slots.value(typeKey(type)).number.isEmpty(); }

bool NextNumber::isFetching(const QString& type) const { return !m_slots.value(typeKey(type)).outstanding.isNull(); }

void NextNumber::startFetch(const QString& type, Slot& slot) {
  auto* message = new messaging::RequestMessage(&m_link, this);
  message->setReplyTo(replyToName());
  message->setVersion(m_session.versionText());
  message->setRequestCode(kRequestCode);
  message->setUser(m_user.officerId());
  message->addParameter({messaging::params::System, messaging::params::NbrTypCd, messaging::params::Operator, type});
  message->setTimeoutInterval(m_session.updateTimeoutMs());
  connect(message, &messaging::RequestMessage::DataReady, this,
          [this, type, message](const QString& replyTo, const messaging::Reply& reply) {
            onReply(type, replyTo, reply);
            message->deleteLater();
          });
  slot.outstanding = message;
  message->send();
}

void NextNumber::onReply(const QString& type, const QString& replyTo, const messaging::Reply& reply) {
  Slot& slot = m_slots[type];
  slot.outstanding.clear();
  auto fail = [&](const QString& why) {
    qCWarning(lcNumbers).noquote() << "no next number of type" << type << "-" << why;
    Q_EMIT fetchFailed(type, why);
  };
  if (replyTo != replyToName()) {
    fail(QStringLiteral("the reply was addressed to \"%1\"").arg(replyTo));
    return;
  }
  if (!reply.error.isEmpty()) {
    fail(reply.error);
    return;
  }
  const auto section = reply.sections.constFind(messaging::sectionnames::GetFormNumber);
  if (section == reply.sections.constEnd() || section->recordCount() != 1 || !section->hasField(QStringLiteral("U"))) {
    fail(QStringLiteral("the reply has no \"GetFormNumber\" row with a field \"U\""));
    return;
  }
  const QString number = section->valueAt(0, QStringLiteral("U")).toString().trimmed();
  if (number == messaging::formNumberPlaceholder()) {
    fail(QStringLiteral("the host has no number to give yet"));
    return;
  }
  const messaging::FormNumberProblem problem = messaging::checkFormNumber(number);
  if (problem != messaging::FormNumberProblem::None) {
    fail(QStringLiteral("the host answered \"%1\": %2").arg(number, messaging::formNumberProblemText(problem, number)));
    return;
  }
  slot.number = number;
  Q_EMIT numberArrived(type);
}

}  // namespace adjustacc::platform
