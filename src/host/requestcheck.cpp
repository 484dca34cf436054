#include "requestcheck.h"

#include "messaging/protocolwords.h"
#include "messaging/sections.h"
#include "messaging/wirecodec.h"

#include <QSet>

namespace adjustacc::host {

using messaging::Request;
using messaging::Result;
using messaging::SaveRecord;

QString textProblem(QStringView text, qsizetype maxChars, bool multiline) {
  if (text.size() > maxChars) {
    return QStringLiteral("is longer than %1 characters").arg(maxChars);
  }
  for (qsizetype i = 0; i < text.size(); ++i) {
    const QChar c = text[i];
    if (c.isHighSurrogate()) {
      if (i + 1 >= text.size() || !text[i + 1].isLowSurrogate()) {
        return QStringLiteral("holds a broken character");
      }
      ++i;
      continue;
    }
    if (c.isLowSurrogate()) {
      return QStringLiteral("holds a broken character");
    }
    const char16_t u = c.unicode();
    const bool control = u < 0x20 || (u >= 0x7f && u < 0xa0) || u == 0x2028 || u == 0x2029 || u == 0xfeff ||
                         (u >= 0x202a && u <= 0x202e) || (u >= 0x2066 && u <= 0x2069) || u == 0xfffe ||
                         u == 0xffff;
    if (control && !(multiline && (u == u'\t' || u == u'\r' || u == u'\n'))) {
      return QStringLiteral("holds a control character (code %1)").arg(int(u));
    }
  }
  return {};
}

QString checkRequestShape(const Request& request) {
  if (request.requestId.trimmed().isEmpty()) {
    return QStringLiteral("The request carries no request id.");
  }
  if (const QString problem = textProblem(request.requestId, limits::kMaxRequestIdChars, false); !problem.isEmpty()) {
    return QStringLiteral("The request id %1.").arg(problem);
  }
  if (const QString problem = textProblem(request.user, limits::kMaxUserChars, false); !problem.isEmpty()) {
    return QStringLiteral("The user of the request %1.").arg(problem);
  }
  if (const QString problem = textProblem(request.replyTo, 128, false); !problem.isEmpty()) {
    return QStringLiteral("The reply-to name of the request %1.").arg(problem);
  }
  if (const QString problem = textProblem(request.version, 32, false); !problem.isEmpty()) {
    return QStringLiteral("The version of the request %1.").arg(problem);
  }
  if (request.params.size() > limits::kMaxParams) {
    return QStringLiteral("The request carries %1 parameters; no request takes more than %2.")
        .arg(request.params.size())
        .arg(limits::kMaxParams);
  }
  for (const auto& param : request.params) {
    for (const QString* text : {&param.system, &param.key, &param.op}) {
      if (const QString problem = textProblem(*text, 40, false); !problem.isEmpty()) {
        return QStringLiteral("A parameter's system, key or operator %1.").arg(problem);
      }
    }
    if (const QString problem = textProblem(param.value, limits::kMaxParamValueChars, false); !problem.isEmpty()) {
      return QStringLiteral("The value of parameter %1 %2.").arg(param.key, problem);
    }
  }
  if (request.records.size() > limits::kMaxRecordLists) {
    return QStringLiteral("The request carries %1 sets of records; no save takes more than %2.")
        .arg(request.records.size())
        .arg(limits::kMaxRecordLists);
  }
  for (const auto& list : request.records) {
    if (list.records.size() > limits::kMaxRecordsPerList) {
      return QStringLiteral("The request carries %1 %2 records; no save takes more than %3.")
          .arg(list.records.size())
          .arg(list.name)
          .arg(limits::kMaxRecordsPerList);
    }
    for (qsizetype r = 0; r < list.records.size(); ++r) {
      for (const auto& [name, value] : list.records[r].fields()) {
        if (value.isNull()) {
          continue;
        }
        const bool comment = name.endsWith(QStringLiteral("_TXT"));
        if (const QString problem = textProblem(value.toString(), comment ? limits::kMaxFieldChars : 64, comment);
            !problem.isEmpty()) {
          return QStringLiteral("%1 record %2: %3 %4.").arg(list.name).arg(r + 1).arg(name, problem);
        }
      }
    }
  }
  return messaging::sections::checkSaveRecords(request.records);
}

QString checkFlag(const Request& request, const QString& kindName, const QString& key, const QString& value,
                  const QString& meaning, bool required) {
  const QString given = request.param(key);
  if (given.isNull() && !required) {
    return {};
  }
  if (given.trimmed().compare(value, Qt::CaseInsensitive) == 0) {
    return {};
  }
  QString kind = kindName;
  if (!kind.isEmpty()) {
    kind[0] = kind[0].toLower();
  }
  return QStringLiteral("Parameter %1 \"%2\" is not valid: %3 takes %1 = %4%5.")
      .arg(key, given.trimmed(), kind, value, meaning.isEmpty() ? QString() : QStringLiteral(" (") + meaning + u')');
}

QString checkParams(const Request& request, const QString& kindName, const QStringList& required,
                    const QStringList& optional) {
  QSet<QString> seen;
  for (const auto& param : request.params) {
    if (param.system != messaging::params::System) {
      return QStringLiteral("%1: parameter %2 names the system \"%3\"; this host answers system MARVENTO.")
          .arg(kindName, param.key, param.system);
    }
    if (param.op != messaging::params::Operator) {
      return QStringLiteral("%1: parameter %2 uses the operator \"%3\"; only \"=\" is supported.")
          .arg(kindName, param.key, param.op);
    }
    if (!required.contains(param.key) && !optional.contains(param.key)) {
      return QStringLiteral("%1 does not take the parameter \"%2\".").arg(kindName, param.key);
    }
    if (seen.contains(param.key)) {
      return QStringLiteral("%1: parameter %2 is given twice.").arg(kindName, param.key);
    }
    seen.insert(param.key);
  }
  for (const QString& key : required) {
    if (!seen.contains(key)) {
      return QStringLiteral("%1 needs the parameter %2.").arg(kindName, key);
    }
  }
  return {};
}

bool hasRecords(const Request& request, const QString& name) {
  const messaging::RecordList* list = request.recordList(name);
  if (!list) {
    return false;
  }
  for (const SaveRecord& record : list->records) {
    if (!record.fields().isEmpty()) {
      return true;
    }
  }
  return false;
}

QString RecordReader::text(const QString& field) const {
  const QVariant value = m_record.field(field);
  return value.isNull() ? QString() : value.toString().trimmed();
}

Result<QString> RecordReader::required(const QString& field, const QString& meaning) const {
  const QString value = text(field);
  if (value.isEmpty()) {
    return Result<QString>::failure(refusal(QStringLiteral("%1 (%2) is required").arg(field, meaning)));
  }
  return value;
}

Result<std::optional<QDate>> RecordReader::day(const QString& field) const {
  using R = Result<std::optional<QDate>>;
  const QString value = text(field);
  if (value.isEmpty()) {
    return std::optional<QDate>();
  }
  const std::optional<QDate> parsed = messaging::wire::readDay(value);
  if (!parsed) {
    return R::failure(refusal(QStringLiteral("%1 \"%2\" is not a date written yyyy-mm-dd").arg(field, value)));
  }
  return parsed;
}

Result<QDate> RecordReader::requiredDay(const QString& field, const QString& meaning) const {
  Result<std::optional<QDate>> parsed = day(field);
  if (!parsed) {
    return Result<QDate>::failure(parsed.error());
  }
  if (!parsed.value()) {
    return Result<QDate>::failure(refusal(QStringLiteral("%1 (%2) is required").arg(field, meaning)));
  }
  return *parsed.value();
}

Result<std::optional<qint64>> RecordReader::cents(const QString& field) const {
  using R = Result<std::optional<qint64>>;
  const QString value = text(field);
  if (value.isEmpty()) {
    return std::optional<qint64>();
  }
  const std::optional<qint64> parsed = messaging::wire::readCents(value);
  if (!parsed) {
    return R::failure(
        refusal(QStringLiteral("%1 \"%2\" is not an amount in dollars and cents such as 1234.50").arg(field, value)));
  }
  return parsed;
}

Result<std::optional<qint64>> RecordReader::integer(const QString& field) const {
  using R = Result<std::optional<qint64>>;
  const QString value = text(field);
  if (value.isEmpty()) {
    return std::optional<qint64>();
  }
  bool ok = false;
  const qint64 number = value.toLongLong(&ok);
  if (!ok || value.size() > 15) {
    return R::failure(refusal(QStringLiteral("%1 \"%2\" is not a whole number").arg(field, value)));
  }
  return std::optional<qint64>(number);
}

Result<qint64> RecordReader::rowVersion(const QString& rowMeaning) const {
  Result<std::optional<qint64>> version = integer(QStringLiteral("ROW_VRSN_NBR"));
  if (!version) {
    return Result<qint64>::failure(version.error());
  }
  if (!version.value() || *version.value() < 1) {
    return Result<qint64>::failure(
        refusal(QStringLiteral("ROW_VRSN_NBR (the version of the %1 as it was read) is required to change it")
                    .arg(rowMeaning)));
  }
  return *version.value();
}

std::optional<AccountNumber> parseAccountNumber(QStringView text) {
  const QStringView trimmed = text.trimmed();
  QStringView digits = trimmed;
  QString checkDigit;
  const qsizetype dash = trimmed.indexOf(u'-');
  if (dash >= 0) {
    digits = trimmed.first(dash);
    const QStringView rest = trimmed.sliced(dash + 1);
    if (rest.size() != 1 || !rest[0].isDigit() || rest[0].unicode() > 127) {
      return std::nullopt;
    }
    checkDigit = rest.toString();
  }
  if (digits.isEmpty() || digits.size() > 7) {
    return std::nullopt;
  }
  for (const QChar c : digits) {
    if (c < u'0' || c > u'9') {
      return std::nullopt;
    }
  }
  return AccountNumber{QStringLiteral("%1").arg(digits, 7, QLatin1Char('0')), checkDigit};
}

}  // namespace adjustacc::host
