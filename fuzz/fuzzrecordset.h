#pragma once
// What the record-set text fuzzers share: the small record set they work on, the fuzzer's bytes as text, and
// a check that stops the run where a property does not hold.

#include "messaging/recordset.h"

#include <QList>
#include <QString>
#include <QVariant>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace adjustacc::fuzzing {

// Every field type, nulls, empty text, values that do not read as their type, case variants and non-ASCII
// text, positioned on its first row.
inline messaging::RecordSet fuzzRecordSet() {
  using messaging::FieldType;
  messaging::RecordSet rs({{QStringLiteral("ID"), FieldType::Number},
                           {QStringLiteral("CD"), FieldType::Text},
                           {QStringLiteral("AMT"), FieldType::Number},
                           {QStringLiteral("DT"), FieldType::Date},
                           {QStringLiteral("TS"), FieldType::DateTime},
                           {QStringLiteral("Long Name"), FieldType::Text}});
  const QVariant null;
  const QList<QList<QVariant>> rows = {
      {QStringLiteral("1"), QStringLiteral("ADJ"), QStringLiteral("150.25"), QStringLiteral("2024-03-15"),
       QStringLiteral("2024-03-15 09:30:00"), QStringLiteral("O'Brien")},
      {QStringLiteral("2"), QStringLiteral("adj  "), QStringLiteral("-3"), QStringLiteral("03/16/2024"),
       QStringLiteral("2024-03-16T14:00"), QStringLiteral("50% paid_now *")},
      {QStringLiteral("3"), null, QStringLiteral("$1,000.00"), null, null, null},
      {QStringLiteral("4"), QStringLiteral(""), QStringLiteral("n/a"), QStringLiteral("someday"),
       QStringLiteral("13:00"), QStringLiteral("")},
      {QStringLiteral("5"), QStringLiteral("Straße"), QStringLiteral("1e3"), QStringLiteral("1/2/24"),
       QStringLiteral("2023-12-31 11:59 PM"), QStringLiteral("ÄÖÜ")},
      {QStringLiteral("6"), QStringLiteral("CALL"), null, QStringLiteral("2023-12-31"),
       QStringLiteral("2024-03-15 09:30:00"), QStringLiteral("#date#")},
  };
  for (const auto& row : rows) {
    rs.addNew(row);
  }
  rs.moveFirst();
  return rs;
}

// The fuzzer's bytes read as UTF-8 (broken sequences become replacement characters).
inline QString fuzzText(const std::uint8_t* data, std::size_t size) {
  return QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
}

// A property that must hold for every input: the fuzzer reports the input that breaks it.
inline void check(bool condition) {
  if (!condition) {
    std::abort();
  }
}

// The rows a record set shows, in its order.
inline std::vector<messaging::Bookmark> shownRows(const messaging::RecordSet& rs) {
  std::vector<messaging::Bookmark> out;
  out.reserve(static_cast<std::size_t>(rs.recordCount()));
  for (int r = 0; r < rs.recordCount(); ++r) {
    out.push_back(rs.bookmarkAt(r));
  }
  return out;
}

// A text the record set refused: the error must say where in the text and why, and the text in force
// afterwards (`inForce`) must be the one before it (`before`).
inline void checkRefused(const messaging::TextError& error, const QString& text, const QString& inForce,
                         const QString& before) {
  check(error.position >= 0 && error.position <= text.size());
  check(!error.reason.isEmpty());
  check(inForce == before);
}

}  // namespace adjustacc::fuzzing
