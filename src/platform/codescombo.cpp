#include "platform/codescombo.h"

#include "platform/codetablesource.h"

#include <utility>

namespace adjustacc::platform {

namespace {
const QString kCodeField = QStringLiteral("CD_TBL_CD");
const QString kDescriptionField = QStringLiteral("CD_TBL_DES");
}  // namespace

CodesCombo::CodesCombo(QString name, QObject* parent) : Control(std::move(name), parent) {}

void CodesCombo::setCodeTable(const QString& codeTable) {
  if (m_codeTable == codeTable) {
    return;
  }
  m_codeTable = codeTable;
  notifyChanged();
}

void CodesCombo::setDefaultCode(const QString& code) {
  m_defaultCode = code;
}

messaging::Result<int> CodesCombo::fill(const QString& queryText) {
  if (m_source == nullptr) {
    takeRows(messaging::RecordSet());
    return messaging::Result<int>::failure(
        QStringLiteral("The code box %1 has no code-table source to run its query").arg(name()));
  }
  messaging::Result<messaging::RecordSet> rows = m_source->run(queryText);
  if (!rows) {
    takeRows(messaging::RecordSet());
    return messaging::Result<int>::failure(
        QStringLiteral("The code box %1 could not be filled: %2").arg(name(), rows.error()));
  }
  return takeRows(rows.value());
}

messaging::Result<int> CodesCombo::setRows(const messaging::RecordSet& rows) {
  return takeRows(rows);
}

messaging::Result<int> CodesCombo::takeRows(const messaging::RecordSet& rows) {
  const bool usable = rows.hasField(kCodeField) && rows.hasField(kDescriptionField);
  m_rows = usable ? rows : messaging::RecordSet();
  if (usable) {
    // The rows are shown in the order the query gave them, unfiltered.
    m_rows.setFilter(QString());
  }
  m_codeField = m_rows.fieldIndex(kCodeField);
  m_descField = m_rows.fieldIndex(kDescriptionField);
  Q_EMIT rowsChanged();
  notifyChanged();

  const int defaultRow = m_defaultCode.isEmpty() ? -1 : findCode(m_defaultCode);
  choose(defaultRow, defaultRow >= 0 ? descriptionAt(defaultRow) : QString());
  if (!usable) {
    return messaging::Result<int>::failure(
        QStringLiteral("The code box %1 was given rows without the fields CD_TBL_CD and CD_TBL_DES").arg(name()));
  }
  return rowCount();
}

int CodesCombo::rowCount() const {
  return m_codeField < 0 ? 0 : m_rows.recordCount();
}

QString CodesCombo::codeAt(int row) const {
  if (row < 0 || row >= rowCount()) {
    return {};
  }
  return m_rows.valueAt(row, m_codeField).toString().trimmed();
}

QString CodesCombo::descriptionAt(int row) const {
  if (row < 0 || row >= rowCount()) {
    return {};
  }
  return m_rows.valueAt(row, m_descField).toString().trimmed();
}

QString CodesCombo::selectedCode() const {
  return codeAt(m_current);
}

QString CodesCombo::description() const {
  return descriptionAt(m_current);
}

int CodesCombo::findCode(const QString& code) const {
  const QString wanted = code.trimmed();
  if (wanted.isEmpty() || rowCount() == 0) {
    return -1;
  }
  // A copy shares the rows; its filter does not disturb the list the person sees.
  messaging::RecordSet probe = m_rows;
  QString quoted = wanted;
  quoted.replace(QLatin1Char('\''), QLatin1String("''"));
  if (const auto error = probe.setFilter(kCodeField + QLatin1String(" = '") + quoted + QLatin1Char('\''))) {
    qCWarning(lcControls) << "code box" << name() << "cannot look up code" << wanted << ":"
                          << error->message(QStringLiteral("Filter text"));
    return -1;
  }
  // The filter compares as the classic data access does (ignoring case); a row it lets through must
  // still carry the very code, so a fault in filtering can never choose another code.
  for (int i = 0; i < probe.recordCount(); ++i) {
    if (probe.valueAt(i, m_codeField).toString().trimmed().compare(wanted, Qt::CaseInsensitive) == 0) {
      return m_rows.rowOfBookmark(probe.bookmarkAt(i));
    }
  }
  return -1;
}

bool CodesCombo::setCode(const QString& code) {
  const int row = findCode(code);
  if (row < 0) {
    choose(-1, code.trimmed());
    return false;
  }
  choose(row, descriptionAt(row));
  return true;
}

bool CodesCombo::setCurrentRow(int row) {
  if (row < -1 || row >= rowCount()) {
    qCWarning(lcControls) << "code box" << name() << "has no row" << row;
    return false;
  }
  choose(row, row >= 0 ? descriptionAt(row) : QString());
  return true;
}

int CodesCombo::matchText(const QString& text) const {
  const QString wanted = text.trimmed();
  if (wanted.isEmpty()) {
    return -1;
  }
  // A description first (that is what the box shows), then a code.
  for (int row = 0; row < rowCount(); ++row) {
    if (descriptionAt(row).compare(wanted, Qt::CaseInsensitive) == 0) {
      return row;
    }
  }
  for (int row = 0; row < rowCount(); ++row) {
    if (codeAt(row).compare(wanted, Qt::CaseInsensitive) == 0) {
      return row;
    }
  }
  return -1;
}

void CodesCombo::setText(const QString& text) {
  choose(matchText(text), text);
}

void CodesCombo::clear() {
  choose(-1, QString());
}

void CodesCombo::choose(int row, const QString& text) {
  if (m_current == row && m_text == text) {
    return;
  }
  m_current = row;
  m_text = text;
  notifyChanged();
  Q_EMIT textChanged(m_text);
}

void CodesCombo::setLocked(bool locked) {
  if (m_locked == locked) {
    return;
  }
  m_locked = locked;
  notifyChanged();
}

bool CodesCombo::canEdit() const {
  return !m_locked && isEffectivelyEnabled() && isEffectivelyVisible();
}

bool CodesCombo::userChooseRow(int row) {
  if (!canEdit()) {
    return false;
  }
  return setCurrentRow(row);
}

bool CodesCombo::userSetText(const QString& text) {
  if (!canEdit()) {
    return false;
  }
  setText(text);
  return true;
}

}  // namespace adjustacc::platform
