#include "memorycodelookup.h"

namespace adjustacc::platform {

QString MemoryCodeLookup::key(const QString& table, const QString& code) {
  return table.trimmed().toUpper() + QLatin1Char('\n') + code.trimmed().toUpper();
}

void MemoryCodeLookup::add(const QString& table, const QString& code, const QString& description) {
  m_descriptions.insert(key(table, code), description);
}

QString MemoryCodeLookup::description(const QString& table, const QString& code) {
  if (code.trimmed().isEmpty()) {
    return {};
  }
  return m_descriptions.value(key(table, code));
}

}  // namespace adjustacc::platform
