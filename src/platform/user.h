#pragma once
// The signed-on officer: id, name, region, the rights the officer holds, and the name that printed
// documents carry.

#include "messaging/rightnames.h"

#include <QSet>
#include <QString>
#include <QStringList>

namespace adjustacc::platform {

// Names of the rights, as the agency spells them (shared with the host).
namespace rights = messaging::rights;

class User {
public:
  User() = default;
  User(QString officerId, QString name, QString region, const QStringList& rights = {});

  QString officerId() const { return m_officerId; }
  QString name() const { return m_name; }
  // The region as the session gave it, and as the code tables are keyed: trimmed and upper-cased.
  QString region() const { return m_region; }
  QString regionCode() const { return m_region.trimmed().toUpper(); }

  // Right names are compared without regard to case ("qorva_actvityupdate" is the activity right).
  bool hasRight(const QString& right) const;
  void grant(const QString& right);
  void revoke(const QString& right);
  QStringList rights() const;  // upper-cased, sorted

  // The name printed documents are issued under; the refund worksheet makes its XML root element of it
  // (with every blank removed).
  QString documentName() const { return m_documentName; }
  void setDocumentName(const QString& name) { m_documentName = name; }

private:
  QString m_officerId;
  QString m_name;
  QString m_region;
  QSet<QString> m_rights;  // upper-cased
  QString m_documentName = QStringLiteral("Adjust Account");
};

}  // namespace adjustacc::platform
