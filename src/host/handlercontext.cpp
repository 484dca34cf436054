#include "handlercontext.h"

#include "messaging/sections.h"
#include "messaging/wirecodec.h"

#include <QMutex>
#include <QStringList>

#include <memory>

namespace adjustacc::host {

using messaging::RecordSet;
using messaging::Result;

namespace {

QMutex problemsLock;

QStringList& problems() {
  static QStringList list;
  return list;
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

void SectionBuilder::appendRow(messaging::RecordSetWriter& writer, const QSqlQuery& query, int firstColumn) const {
  static_assert(messaging::wire::kMoneyTextBytes >= messaging::wire::kDayTextBytes);
  char buffer[messaging::wire::kMoneyTextBytes];
  for (size_t i = 0; i < m_slots.size(); ++i) {
    const Slot& slot = m_slots[i];
    if (slot.field < 0) {
      continue;
    }
    const QVariant value = query.value(firstColumn + int(i));
    if (slot.cell == Cell::Text) {
      writer.setValue(slot.field, value);  // null stays null
      continue;
    }
    if (value.isNull()) {
      continue;  // the row starts all null
    }
    switch (slot.cell) {
      case Cell::Text:
        break;
      case Cell::Money:
        writer.setUtf8(slot.field, std::string_view(buffer, size_t(messaging::wire::writeCents(value.toLongLong(), buffer))));
        break;
      case Cell::Day:
        if (value.typeId() == QMetaType::QDate && messaging::wire::writeDay(value.toDate(), buffer)) {
          writer.setUtf8(slot.field, std::string_view(buffer, messaging::wire::kDayTextBytes));
        } else {
          writer.setValue(slot.field, SqlDialect::dayCell(value));
        }
        break;
      case Cell::Timestamp:
        writer.setValue(slot.field, SqlDialect::timestampCell(value));
        break;
    }
  }
  writer.appendRow();
}

RecordSet SectionBuilder::build(QSqlQuery& query, int expectedRows) const {
  RecordSet set(m_fields);
  if (expectedRows > 0) {
    set.reserve(expectedRows);
  }
  // Each value goes straight into the set's storage; fields no source fills stay null.
  messaging::RecordSetWriter writer(set);
  while (query.next()) {
    appendRow(writer, query);
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

SectionUnion::SectionUnion(QList<Part> parts) : m_parts(std::move(parts)) {
  int total = 0;
  for (const Part& part : m_parts) {
    if (part.columns.size() != part.builder->columnCount()) {
      QMutexLocker lock(&problemsLock);
      problems().append(QStringLiteral("section %1 is read with %2 columns for %3 sources")
                            .arg(part.builder->sectionName())
                            .arg(part.columns.size())
                            .arg(part.builder->columnCount()));
    }
    total += static_cast<int>(part.columns.size());
  }
  QStringList selects;
  QStringList order{QStringLiteral("1")};
  int offset = 0;
  for (qsizetype p = 0; p < m_parts.size(); ++p) {
    const Part& part = m_parts[p];
    QStringList columns{QString::number(p + 1)};
    for (int c = 0; c < total; ++c) {
      const int own = c - offset;
      columns.append(own >= 0 && own < part.columns.size() ? part.columns[own] : QStringLiteral("NULL"));
    }
    selects.append(QStringLiteral("SELECT ") + columns.join(QStringLiteral(", ")) + u' ' + part.from);
    for (const int key : part.orderBy) {
      // Result columns by number: 1 is the part, the parts' own columns follow.
      order.append(QString::number(2 + offset + key));
    }
    offset += static_cast<int>(part.columns.size());
  }
  m_statement = selects.join(QStringLiteral(" UNION ALL ")) + QStringLiteral(" ORDER BY ") +
                order.join(QStringLiteral(", "));
  for (const Part& part : m_parts) {
    QStringList keys;
    for (const int key : part.orderBy) {
      keys.append(part.columns.value(key));
    }
    m_partStatements.append(QStringLiteral("SELECT ") + part.columns.join(QStringLiteral(", ")) + u' ' + part.from +
                            (keys.isEmpty() ? QString() : QStringLiteral(" ORDER BY ") + keys.join(QStringLiteral(", "))));
  }
}

bool SectionUnion::addTo(Sections& sections, const Sql& sql, const QList<QVariantList>& values, QString& error) const {
  if (sql.dialect().statementsTravel()) {
    return addJoined(sections, sql, values, error);
  }
  for (qsizetype p = 0; p < m_parts.size(); ++p) {
    if (!m_parts[p].builder->addTo(sections, sql, m_partStatements[p], values.value(p), error)) {
      return false;
    }
  }
  return true;
}

bool SectionUnion::addJoined(Sections& sections, const Sql& sql, const QList<QVariantList>& values,
                             QString& error) const {
  QVariantList all;
  for (const QVariantList& partValues : values) {
    all.append(partValues);
  }
  Result<QSqlQuery*> ran = sql.runPrepared(m_statement, all);
  if (!ran) {
    error = ran.error();
    return false;
  }
  QSqlQuery& query = *ran.value();
  std::vector<RecordSet> sets;
  std::vector<std::unique_ptr<messaging::RecordSetWriter>> writers;
  std::vector<int> firstColumns;
  sets.reserve(static_cast<size_t>(m_parts.size()));
  int offset = 1;
  for (const Part& part : m_parts) {
    sets.push_back(part.builder->empty());
    firstColumns.push_back(offset);
    offset += static_cast<int>(part.columns.size());
  }
  for (RecordSet& set : sets) {
    writers.push_back(std::make_unique<messaging::RecordSetWriter>(set));
  }
  while (query.next()) {
    const qsizetype part = query.value(0).toLongLong() - 1;
    if (part < 0 || part >= m_parts.size()) {
      error = QStringLiteral("The host read a row of no section (part %1).").arg(part + 1);
      query.finish();
      return false;
    }
    m_parts[part].builder->appendRow(*writers[size_t(part)], query, firstColumns[size_t(part)]);
  }
  query.finish();
  writers.clear();
  for (qsizetype p = 0; p < m_parts.size(); ++p) {
    sets[size_t(p)].moveFirst();
    sections.insert(m_parts[p].builder->sectionName(), std::move(sets[size_t(p)]));
  }
  return true;
}

}  // namespace adjustacc::host
