#include "request.h"

#include <QLoggingCategory>

namespace adjustacc::messaging {

namespace {
Q_LOGGING_CATEGORY(lcRequest, "adjustacc.messaging.request")
}

void SaveRecord::setField(const QString& name, const QVariant& value) {
  QVariant stored;
  if (value.isValid() && !value.isNull()) {
    if (!value.canConvert<QString>()) {
      // A value with no text form would silently go out as empty text; say so, it is a screen bug.
      qCWarning(lcRequest) << "save field" << name << "got a value with no text form:" << value.metaType().name();
    }
    stored = QVariant(value.toString());
  }
  for (auto& field : m_fields) {
    if (field.first == name) {
      field.second = stored;
      return;
    }
  }
  m_fields.append({name, stored});
}

QVariant SaveRecord::field(const QString& name) const {
  for (const auto& field : m_fields) {
    if (field.first == name)
      return field.second;
  }
  return {};
}

bool SaveRecord::hasField(const QString& name) const {
  for (const auto& field : m_fields) {
    if (field.first == name)
      return true;
  }
  return false;
}

QString Request::param(const QString& key) const {
  for (const auto& parameter : params) {
    if (parameter.key == key)
      return parameter.value;
  }
  return {};
}

const RecordList* Request::recordList(const QString& name) const {
  for (const auto& list : records) {
    if (list.name == name)
      return &list;
  }
  return nullptr;
}

}  // namespace adjustacc::messaging
