#include "handlercontext.h"

#include "messaging/sections.h"

#include <QMutex>
#include <QStringList>

namespace adjustacc::host {

using messaging::RecordSet;
using messaging::Result;

namespace {

QMutex problemsLock;

QStringList& problems() {
  static QStringList list;
  return list;
}

QVariant cellOf(const QVariant& value, Cell cell) {
  if (value.isNull()) {
    return {};
  }
  switch (cell) {
    case Cell::Text:
      return value;
    case Cell::Money:
      return centsToText(value.toLongLong());
    case Cell::Day:
      return dayCell(value);
    case Cell::Timestamp:
      return timestampCell(value);
  }
  return value;
}

}  // namespace

QStringList sectionBuilderProblems() {
  QMutexLocker lock(&problemsLock);
  return problems();
}

SectionBuilder::SectionBuilder(const QString& layoutName, std::initializer_list<Source> sources) {
  const messaging::SectionLayout* layout =
      messaging::sections::layout(layoutName, messaging::LayoutKind::ReplySection);
  if (!layout) {
    QMutexLocker lock(&problemsLock);
    problems().append(QStringLiteral("no reply layout named %1").arg(layoutName));
    m_section = layoutName;
    return;
  }
  m_section = layout->section;
  m_fields = layout->fields;
  m_slots.reserve(sources.size());
  for (const Source& source : sources) {
    const QString field = QString::fromUtf16(source.field);
    const int index = layout->fieldIndex(field);
    if (index < 0) {
      QMutexLocker lock(&problemsLock);
      problems().append(QStringLiteral("layout %1 has no field %2").arg(layoutName, field));
    }
    m_slots.push_back({index, source.cell});
  }
}

RecordSet SectionBuilder::empty() const { return RecordSet(m_fields); }

RecordSet SectionBuilder::build(QSqlQuery& query, int expectedRows) const {
  RecordSet set(m_fields);
  if (expectedRows > 0) {
    set.reserve(expectedRows);
  }
  // Fields no source fills stay null in every row; the others are overwritten row by row.
  QList<QVariant> row(m_fields.size());
  while (query.next()) {
    for (size_t i = 0; i < m_slots.size(); ++i) {
      const Slot& slot = m_slots[i];
      if (slot.field >= 0) {
        row[slot.field] = cellOf(query.value(int(i)), slot.cell);
      }
    }
    set.addNew(row);
  }
  set.moveFirst();
  return set;
}

Result<RecordSet> SectionBuilder::run(const Sql& sql, const QString& statement, const QVariantList& values,
                                      int expectedRows) const {
  Result<QSqlQuery*> query = sql.runPrepared(statement, values);
  if (!query) {
    return Result<RecordSet>::failure(query.error());
  }
  RecordSet set = build(*query.value(), expectedRows);
  query.value()->finish();
  return set;
}

bool SectionBuilder::addTo(Sections& sections, const Sql& sql, const QString& statement, const QVariantList& values,
                           QString& error) const {
  Result<RecordSet> set = run(sql, statement, values);
  if (!set) {
    error = set.error();
    return false;
  }
  sections.insert(m_section, std::move(set.value()));
  return true;
}

}  // namespace adjustacc::host
