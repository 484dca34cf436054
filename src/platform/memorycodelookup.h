#pragma once
// Code descriptions held in memory: for tests of the screens, and for anything that knows its codes
// without a database.

#include "codelookup.h"

#include <QHash>
#include <QString>

namespace adjustacc::platform {

class MemoryCodeLookup : public CodeLookup {
public:
  void add(const QString& table, const QString& code, const QString& description);
  void clear() { m_descriptions.clear(); }
  QString description(const QString& table, const QString& code) override;

private:
  static QString key(const QString& table, const QString& code);
  QHash<QString, QString> m_descriptions;
};

}  // namespace adjustacc::platform
