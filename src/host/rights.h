#pragma once
// Officers and their rights. The host checks every right the screens gate, whatever the screen did.

#include "sqlutil.h"

#include "messaging/result.h"
#include "messaging/rightnames.h"

#include <QSet>
#include <QString>

#include <optional>

namespace adjustacc::host {

// Names of the rights, as the agency spells them (shared with the screens).
namespace rights = messaging::rights;

struct Officer {
  QString id;
  QString name;
  QString region;
  QSet<QString> rights;  // upper-cased

  // Right names compare without regard to case.
  bool has(const QString& right) const { return rights.contains(right.toUpper()); }
};

// The active officer with that id (compared without regard to case), or nothing.
messaging::Result<std::optional<Officer>> loadOfficer(const Sql& sql, const QString& officerId);

// "Officer CLERK01 does not hold the right ADJUSTAR needed to save account receivable adjustments."
QString missingRightText(const Officer& officer, const QString& right, const QString& purpose);

}  // namespace adjustacc::host
