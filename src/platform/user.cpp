#include "user.h"

#include <algorithm>
#include <utility>

namespace adjustacc::platform {

User::User(QString officerId, QString name, QString region, const QStringList& rights)
    : m_officerId(std::move(officerId)), m_name(std::move(name)), m_region(std::move(region)) {
  for (const QString& right : rights) {
    grant(right);
  }
}

bool User::hasRight(const QString& right) const { return m_rights.contains(right.trimmed().toUpper()); }

void User::grant(const QString& right) {
  const QString key = right.trimmed().toUpper();
  if (!key.isEmpty()) {
    m_rights.insert(key);
  }
}

void User::revoke(const QString& right) { m_rights.remove(right.trimmed().toUpper()); }

QStringList User::rights() const {
  QStringList out(m_rights.begin(), m_rights.end());
  std::sort(out.begin(), out.end());
  return out;
}

}  // namespace adjustacc::platform
