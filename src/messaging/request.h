#pragma once
// What a screen sends to the agency host system: the request header, its ordered parameters and,
// for saves, named sets of records built field by field.

#include <QList>
#include <QMetaType>
#include <QString>
#include <QVariant>

#include <utility>

namespace adjustacc::messaging {

// One selection parameter. This system always sends system "MARVENTO" and operator "=".
struct RequestParameter {
  QString system;
  QString key;       // "key:" + field name, e.g. "key:REF_NBR"
  QString op;        // operator
  QString value;
  friend bool operator==(const RequestParameter&, const RequestParameter&) = default;
};

// One record of a save: fields in the order they were set; a value is text or null (a null QVariant).
class SaveRecord {
public:
  // Sets a field (appends it, or overwrites it in place when already set). Non-null values are kept as text.
  void setField(const QString& name, const QVariant& value);
  QVariant field(const QString& name) const;  // null QVariant when not set
  bool hasField(const QString& name) const;
  const QList<std::pair<QString, QVariant>>& fields() const { return m_fields; }
  friend bool operator==(const SaveRecord&, const SaveRecord&) = default;

private:
  QList<std::pair<QString, QVariant>> m_fields;
};

// A named set of save records ("ADJUSTAR", "ASSESSMENT", "REFUND"...).
struct RecordList {
  QString name;
  QList<SaveRecord> records;
  friend bool operator==(const RecordList&, const RecordList&) = default;
};

struct Request {
  QString replyTo;
  QString version;
  int code = 0;
  QString user;
  QString requestId;
  QList<RequestParameter> params;
  QList<RecordList> records;  // in the order their names were first used

  // Value of the first parameter with this key ("key:REF_NBR"), or a null QString.
  QString param(const QString& key) const;
  const RecordList* recordList(const QString& name) const;
  friend bool operator==(const Request&, const Request&) = default;
};

}  // namespace adjustacc::messaging

Q_DECLARE_METATYPE(adjustacc::messaging::Request)
