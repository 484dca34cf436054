#pragma once
// What the host checks before it believes anything in a request: sizes, characters, the parameters a
// kind of request takes, and typed reading of save-record fields with clerk-readable refusals.

#include "messaging/protocolwords.h"
#include "messaging/request.h"
#include "messaging/result.h"

#include <QDate>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <optional>

namespace adjustacc::host {

namespace limits {
inline constexpr qsizetype kMaxParams = 16;
inline constexpr qsizetype kMaxParamValueChars = 64;
inline constexpr qsizetype kMaxRecordLists = 8;
inline constexpr qsizetype kMaxRecordsPerList = 500;
// Comments, the longest fields: as long as the comment columns hold and the screens' comment boxes take.
inline constexpr qsizetype kMaxFieldChars = messaging::limits::CommentLength;
inline constexpr qsizetype kMaxCodeChars = 20;
inline constexpr qsizetype kMaxRequestIdChars = 64;
inline constexpr qsizetype kMaxUserChars = 16;
}  // namespace limits

// Why a text can not be accepted (empty when it can): too long, a control character (other than tab,
// carriage return and line feed where `multiline`), or broken UTF-16.
QString textProblem(QStringView text, qsizetype maxChars, bool multiline);

// The header and overall shape of a request: request id, user, sizes of every parameter, record and
// field, characters, and the record names and field types against the catalogue. Empty when good.
QString checkRequestShape(const messaging::Request& request);

// The parameters of one kind of request: every parameter has system "MARVENTO" and operator "=", no key
// comes twice, every key is one of `required` or `optional`, and every `required` key is there.
// `kindName` names the request in the refusal ("The account inquiry").
QString checkParams(const messaging::Request& request, const QString& kindName, const QStringList& required,
                    const QStringList& optional = {});

// A flag parameter ("key:LPO" = "NO", "key:THIN" = "YES"): when sent, and it must be when `required`, its
// value is `value` (without regard to case or surrounding blanks). `meaning` says what the flag asks for, for
// the refusal: Parameter key:THIN "NO" is not valid: the account activity inquiry takes key:THIN = YES (the
// activity rows alone).
QString checkFlag(const messaging::Request& request, const QString& kindName, const QString& key, const QString& value,
                  const QString& meaning = {}, bool required = false);

// True when the request carries a record set of that name with at least one record that has a field.
bool hasRecords(const messaging::Request& request, const QString& name);

// Reads the fields of one save record; every failure names the record ("ASSESSMENT record 2").
class RecordReader {
public:
  RecordReader(const messaging::SaveRecord& record, QString label) : m_record(record), m_label(std::move(label)) {}

  const QString& label() const { return m_label; }
  // Trimmed text; empty for a null or absent field.
  QString text(const QString& field) const;
  bool isBlank(const QString& field) const { return text(field).isEmpty(); }
  // The record sets the field (even to blank text); a null value counts as not set.
  bool isPresent(const QString& field) const { return !m_record.field(field).isNull(); }
  // Upper-cased trimmed text.
  QString code(const QString& field) const { return text(field).toUpper(); }

  // The trimmed text, refused when blank ("ASSESSMENT record 2: ASSMT_CD (the assessment code) is required").
  messaging::Result<QString> required(const QString& field, const QString& meaning) const;
  // A day "yyyy-mm-dd"; nothing when blank; refused when malformed.
  messaging::Result<std::optional<QDate>> day(const QString& field) const;
  messaging::Result<QDate> requiredDay(const QString& field, const QString& meaning) const;
  // An amount in cents; nothing when blank; refused when malformed.
  messaging::Result<std::optional<qint64>> cents(const QString& field) const;
  // A whole number; nothing when blank; refused when malformed.
  messaging::Result<std::optional<qint64>> integer(const QString& field) const;
  // ROW_VRSN_NBR: the row version the clerk read. Required on every record that changes an existing row.
  messaging::Result<qint64> rowVersion(const QString& rowMeaning) const;

  QString refusal(const QString& text) const { return m_label + QStringLiteral(": ") + text; }

private:
  const messaging::SaveRecord& m_record;
  QString m_label;
};

// The normalised seven-digit form of an account number as clerks type it: "123", "0000123", "123-4" or
// "0000123-4" give "0000123" (and the check digit when one was typed). Nothing for other text.
struct AccountNumber {
  QString digits;       // seven digits
  QString checkDigit;   // empty when none was typed
};
std::optional<AccountNumber> parseAccountNumber(QStringView text);

}  // namespace adjustacc::host
