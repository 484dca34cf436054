#pragma once
// The catalogue of every named set of rows that crosses the host link: the sections of a reply and the
// save records of a request, each with its fields and their types.
//
// Field types are not sent over the wire; both sides take them from here. A field name has one type
// wherever it appears (the dictionary below decides it once), so a reply section can be typed by
// field name alone.
//
// Layout names: a section's name as it travels ("ACNTSRCVBL"), or, where one section name comes back
// in two shapes, that name with a variant after a colon ("ACNTSRCVBL:PAYMENTS" is the payments of
// a receipt, sent as section "ACNTSRCVBL"). Reply sections and save records are looked up apart,
// since several names are both ("ASSESSMENT", "REFUND", "ACNTSRCVBL", "ACCOUNTACTIVITY").

#include "recordset.h"
#include "request.h"

#include <QLatin1StringView>
#include <QList>
#include <QString>

#include <optional>

namespace adjustacc::messaging {

enum class LayoutKind {
  ReplySection,  // rows the host sends back
  SaveRecord,    // records a screen sends with a save
};

// One field of the dictionary: its name, its type and what it holds.
struct FieldInfo {
  QString name;
  FieldType type = FieldType::Text;
  QString meaning;
};

struct SectionLayout {
  QString name;     // catalogue name, unique per kind: "ACNTSRCVBL", "ACNTSRCVBL:PAYMENTS"
  QString section;  // name on the wire: "ACNTSRCVBL"
  LayoutKind kind = LayoutKind::ReplySection;
  QString purpose;  // who sends it and what for
  QList<Field> fields;

  // Index of a field (case-insensitive, as record sets compare names), or -1.
  int fieldIndex(const QString& fieldName) const;
  bool hasField(const QString& fieldName) const { return fieldIndex(fieldName) >= 0; }
};

namespace sections {

// Catalogue names of the layouts whose name differs from their section name.
inline constexpr QLatin1StringView kReceiptPayments{"ACNTSRCVBL:PAYMENTS"};  // payments of one receipt
inline constexpr QLatin1StringView kRefundInformation{"REFUND:INFO"};       // refund information of a receipt

// The layout of that name and kind, or nullptr when the catalogue has none.
const SectionLayout* layout(const QString& name, LayoutKind kind = LayoutKind::ReplySection);

// Every layout, reply sections first, then save records.
const QList<SectionLayout>& allLayouts();

// Every field the catalogue knows, in alphabetical order.
const QList<FieldInfo>& allFields();
const FieldInfo* fieldInfo(const QString& fieldName);  // case-insensitive; nullptr when unknown
// The type of a field wherever it appears; nullopt for a field the catalogue does not know.
std::optional<FieldType> fieldType(const QString& fieldName);

// Checks save records against the catalogue: every record-set name must be a save record, every field
// one of its fields, and every non-empty number, date or time stamp value well formed ("-1234.50",
// "yyyy-mm-dd", "yyyy-mm-dd HH:MM[:SS]"). Empty text and null are accepted for every field: which
// fields a step must fill is the business rule of the receiving side. Returns the first problem found,
// worded for the error reply of the save, or an empty text when the records are good.
QString checkSaveRecords(const QList<RecordList>& lists);

}  // namespace sections
}  // namespace adjustacc::messaging
