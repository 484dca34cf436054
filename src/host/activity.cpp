#include "activity.h"

#include "handlers.h"
#include "requestcheck.h"

#include <QSet>
#include <QTime>

namespace adjustacc::host {

using messaging::RecordSet;
using messaging::Result;

namespace {

const SectionBuilder& activityBuilder() {
  static const SectionBuilder builder(
      sectionnames::AccountActivity,
      {{u"ACTVTY_SEQ_NBR"}, {u"ACTVTY_DT", Cell::Day}, {u"ACTVTY_TM"}, {u"ACCT_ACTVTY_CD"},
       {u"ACTVTY_AMT", Cell::Money}, {u"ACTVTY_BAL_AMT", Cell::Money}, {u"LST_UPDT_USER_ID"}, {u"ACTVTY_CMMT_TXT"},
       {u"ADTL_INFO_TXT"}, {u"ACCT_RCVBL_NBR"}, {u"ACCT_CK_DGT_NBR"}, {u"ACCT_RCVBL_TYP_CD"},
       {u"LST_UPDT_TS", Cell::Timestamp}, {u"ROW_VRSN_NBR"}, {u"LST_UPDT_USER_NM"}});
  return builder;
}

// An activity code the clerk may pick today, in the officer's region.
Result<bool> isUserActivityCode(const Context& context, const QString& code) {
  const QVariant today = context.sql.date(context.today);
  Result<qint64> found = context.sql.scalar(
      QStringLiteral("SELECT COUNT(*) FROM QVR_CODE WHERE CD_TBL_ID = 'COLLECTN-USER' AND CD_TBL_CD = ? AND "
                     "REGION = ? AND EFCTV_DT <= ? AND (END_DT IS NULL OR END_DT >= ?)"),
      {code, context.officer.region, today, today}, 0);
  if (!found) {
    return Result<bool>::failure(found.error());
  }
  return found.value() > 0;
}

std::optional<QString> readTime(const QString& text) {
  if (text.size() != 5 || text[2] != u':') {
    return std::nullopt;
  }
  const QTime time = QTime::fromString(text, QStringLiteral("HH:mm"));
  return time.isValid() ? std::optional<QString>(text) : std::nullopt;
}

struct ActivityEntry {
  QDate day;
  QString time;
  QString code;
  QString comment;
};

// The date, time and comment of an ADD or UPD record, checked as the Account Activity screen checks them.
Result<ActivityEntry> readEntry(const Context& context, const RecordReader& r, const Receivable& receivable) {
  using R = Result<ActivityEntry>;
  ActivityEntry entry;
  const QString number = r.text(QStringLiteral("ACCT_RCVBL_NBR"));
  const QString digit = r.text(QStringLiteral("ACCT_CK_DGT_NBR"));
  const QString type = r.code(QStringLiteral("ACCT_RCVBL_TYP_CD"));
  const std::optional<AccountNumber> parsed = parseAccountNumber(number);
  if ((!number.isEmpty() && (!parsed || parsed->digits != receivable.number)) ||
      (!digit.isEmpty() && digit != receivable.checkDigit) || (!type.isEmpty() && type != receivable.type)) {
    return R::failure(r.refusal(QStringLiteral("the row belongs to account receivable %1 %2%3, not to %4")
                                    .arg(type, number, digit.isEmpty() ? QString() : u'-' + digit,
                                         receivable.displayNumber())));
  }
  Result<QDate> day = r.requiredDay(QStringLiteral("ACTVTY_DT"), QStringLiteral("the activity date"));
  if (!day) {
    return R::failure(day.error());
  }
  entry.day = day.value();
  if (entry.day < kFirstActivityDay) {
    return R::failure(r.refusal(QStringLiteral("Date can not be less than 1/27/1997")));
  }
  if (entry.day > context.today) {
    return R::failure(r.refusal(QStringLiteral("Date can not be greater than current date")));
  }
  const QString time = r.text(QStringLiteral("ACTVTY_TM"));
  if (!time.isEmpty()) {
    const std::optional<QString> read = readTime(time);
    if (!read) {
      return R::failure(r.refusal(QStringLiteral("ACTVTY_TM \"%1\" is not a time written HH:MM").arg(time)));
    }
    entry.time = *read;
  }
  entry.code = r.code(QStringLiteral("ACCT_ACTVTY_CD"));
  entry.comment = r.text(QStringLiteral("ACTVTY_CMMT_TXT"));
  if (entry.comment.isEmpty()) {
    return R::failure(r.refusal(QStringLiteral("Comment must be entered.")));
  }
  const QString user = r.text(QStringLiteral("LST_UPDT_USER_ID"));
  if (!user.isEmpty() && user.compare(context.officer.id, Qt::CaseInsensitive) != 0) {
    return R::failure(r.refusal(QStringLiteral("a row is recorded under the signed-on officer %1, not under %2")
                                    .arg(context.officer.id, user)));
  }
  return entry;
}

}  // namespace

Result<RecordSet> activitySection(const Sql& sql, qint64 receivableId) {
  return activityBuilder().run(
      sql,
      QStringLiteral("SELECT v.ACTVTY_SEQ_NBR, v.ACTVTY_DT, v.ACTVTY_TM, v.ACCT_ACTVTY_CD, v.ACTVTY_AMT, "
                     "v.ACTVTY_BAL_AMT, v.LST_UPDT_USER_ID, v.ACTVTY_CMMT_TXT, v.ADTL_INFO_TXT, a.ACCT_RCVBL_NBR, "
                     "a.ACCT_RCVBL_CK_NBR, a.ACCT_RCVBL_TYP_CD, v.LST_UPDT_TS, v.ROW_VRSN_NBR, o.OFFICER_NM "
                     "FROM ACCT_ACTVTY v JOIN ACCT_RCVBL a ON a.ACCT_RCVBL_ID = v.ACCT_RCVBL_ID "
                     "LEFT JOIN OFFICER o ON o.OFFICER_ID = v.LST_UPDT_USER_ID "
                     "WHERE v.ACCT_RCVBL_ID = ? ORDER BY v.ACTVTY_DT DESC, v.ACTVTY_TM DESC, v.LST_UPDT_TS DESC"),
      {receivableId});
}

Outcome activityInquiry(const Context& context) {
  const QString kind = QStringLiteral("The account activity inquiry");
  if (const QString problem =
          checkParams(context.request, kind, {params::AcctRcvblNbr, params::AcctRcvblTypCd}, {params::Thin});
      !problem.isEmpty()) {
    return refuse(problem);
  }
  if (const QString problem = checkFlag(context.request, kind, params::Thin, params::Yes,
                                        QStringLiteral("the activity rows alone"));
      !problem.isEmpty()) {
    return refuse(problem);
  }
  const QString typed = context.param(params::AcctRcvblNbr);
  const std::optional<AccountNumber> number = parseAccountNumber(typed);
  if (!number) {
    return refuse(QStringLiteral("Account Number \"%1\" is Invalid: up to seven digits are expected.").arg(typed));
  }
  Result<std::optional<Receivable>> receivable =
      readReceivable(context.sql, context.param(params::AcctRcvblTypCd).toUpper(), number->digits, false);
  if (!receivable) {
    return refuse(receivable.error());
  }
  Sections sections;
  if (!receivable.value() || (!number->checkDigit.isEmpty() && number->checkDigit != receivable.value()->checkDigit)) {
    sections.insert(activityBuilder().sectionName(), activityBuilder().empty());
    return sections;
  }
  Result<RecordSet> rows = activitySection(context.sql, receivable.value()->id);
  if (!rows) {
    return refuse(rows.error());
  }
  sections.insert(activityBuilder().sectionName(), std::move(rows.value()));
  return sections;
}

Result<int> applyActivityRecords(const Context& context, AuditedWriter& writer, const Receivable& receivable,
                                 const messaging::RecordList& records) {
  using R = Result<int>;
  const Sql& sql = context.sql;
  QSet<qint64> changedRows;
  QSet<QString> added;
  int written = 0;
  for (qsizetype i = 0; i < records.records.size(); ++i) {
    const RecordReader r(records.records[i], QStringLiteral("ACCOUNTACTIVITY record %1").arg(i + 1));
    if (records.records[i].fields().isEmpty()) {
      continue;  // the activity request names its record set without filling it
    }
    const QString action = r.code(QStringLiteral("ACTION"));
    Result<ActivityEntry> entry = readEntry(context, r, receivable);
    if (!entry) {
      return R::failure(entry.error());
    }
    const ActivityEntry& e = entry.value();
    const QString time =
        e.time.isEmpty() ? context.now.toLocalTime().time().toString(QStringLiteral("HH:mm")) : e.time;
    if (action == u"ADD") {
      if (e.code.isEmpty()) {
        return R::failure(r.refusal(QStringLiteral("Code Description must be selected")));
      }
      Result<bool> allowed = isUserActivityCode(context, e.code);
      if (!allowed) {
        return R::failure(allowed.error());
      }
      if (!allowed.value()) {
        return R::failure(r.refusal(QStringLiteral("activity code %1 is not one a clerk may record today").arg(e.code)));
      }
      const QString key = e.day.toString(Qt::ISODate) + u'|' + e.code + u'|' + e.comment;
      Result<qint64> same = sql.scalar(
          QStringLiteral("SELECT COUNT(*) FROM ACCT_ACTVTY WHERE ACCT_RCVBL_ID = ? AND ACTVTY_DT = ? AND "
                         "ACCT_ACTVTY_CD = ? AND LST_UPDT_USER_ID = ? AND ACTVTY_CMMT_TXT = ?"),
          {receivable.id, sql.date(e.day), e.code, context.officer.id, e.comment}, 0);
      if (!same) {
        return R::failure(same.error());
      }
      if (same.value() > 0 || added.contains(key)) {
        return R::failure(r.refusal(QStringLiteral("Can not add duplicate information")));
      }
      added.insert(key);
      Result<qint64> inserted = writer.insert(
          QStringLiteral("ACCT_ACTVTY"),
          {{QStringLiteral("ACCT_RCVBL_ID"), receivable.id},
           {QStringLiteral("ACTVTY_DT"), sql.date(e.day)},
           {QStringLiteral("ACTVTY_TM"), time},
           {QStringLiteral("ACCT_ACTVTY_CD"), e.code},
           {QStringLiteral("LST_UPDT_USER_ID"), context.officer.id},
           {QStringLiteral("ACTVTY_CMMT_TXT"), e.comment},
           {QStringLiteral("LST_UPDT_TS"), sql.dialect().timestampValue(context.now)}},
          QStringLiteral("ACTVTY_SEQ_NBR"));
      if (!inserted) {
        return R::failure(inserted.error());
      }
    } else if (action == u"UPD") {
      Result<std::optional<qint64>> sequence = r.integer(QStringLiteral("ACTVTY_SEQ_NBR"));
      if (!sequence) {
        return R::failure(sequence.error());
      }
      if (!sequence.value()) {
        return R::failure(r.refusal(QStringLiteral("ACTVTY_SEQ_NBR (the row to change) is required")));
      }
      const qint64 rowId = *sequence.value();
      Result<qint64> version = r.rowVersion(QStringLiteral("activity row"));
      if (!version) {
        return R::failure(version.error());
      }
      if (changedRows.contains(rowId)) {
        return R::failure(r.refusal(QStringLiteral("activity row %1 is changed twice in one save").arg(rowId)));
      }
      changedRows.insert(rowId);
      Result<std::optional<QVariantList>> row = sql.firstRow(
          QStringLiteral("SELECT ACCT_ACTVTY_CD, LST_UPDT_USER_ID, ADTL_INFO_TXT FROM ACCT_ACTVTY "
                         "WHERE ACTVTY_SEQ_NBR = ? AND ACCT_RCVBL_ID = ?") +
              sql.dialect().lockRowsSuffix(),
          {rowId, receivable.id});
      if (!row) {
        return R::failure(row.error());
      }
      if (!row.value()) {
        return R::failure(r.refusal(
            QStringLiteral("activity row %1 is not on account receivable %2").arg(rowId).arg(receivable.displayNumber())));
      }
      const QVariantList& current = *row.value();
      if (current.at(2).toString().trimmed().toUpper() == u"SYSTEM") {
        return R::failure(r.refusal(QStringLiteral("a row the system made can not be changed")));
      }
      if (current.at(1).toString().compare(context.officer.id, Qt::CaseInsensitive) != 0 &&
          !context.officer.has(rights::ActivityUpdate)) {
        return R::failure(r.refusal(missingRightText(context.officer, rights::ActivityUpdate,
                                                     QStringLiteral("change another officer's activity row"))));
      }
      if (!e.code.isEmpty() && e.code != current.at(0).toString().trimmed().toUpper()) {
        return R::failure(r.refusal(QStringLiteral("the activity code of a recorded row can not be changed")));
      }
      ColumnValues changes = {{QStringLiteral("ACTVTY_DT"), sql.date(e.day)},
                              {QStringLiteral("ACTVTY_CMMT_TXT"), e.comment},
                              {QStringLiteral("LST_UPDT_USER_ID"), context.officer.id},
                              {QStringLiteral("LST_UPDT_TS"), sql.dialect().timestampValue(context.now)}};
      if (!e.time.isEmpty()) {
        changes.append({QStringLiteral("ACTVTY_TM"), e.time});
      }
      Result<bool> updated = writer.update(QStringLiteral("ACCT_ACTVTY"), {{QStringLiteral("ACTVTY_SEQ_NBR"), rowId}},
                                           changes, version.value(), QStringLiteral("Activity row %1").arg(rowId));
      if (!updated) {
        return R::failure(updated.error());
      }
    } else {
      return R::failure(r.refusal(QStringLiteral("ACTION must be ADD or UPD, not \"%1\"").arg(action)));
    }
    ++written;
  }
  return written;
}

}  // namespace adjustacc::host
