#include "gridmodel.h"

#include "messaging/sections.h"
#include "platform/currency.h"
#include "platform/datacontrol.h"
#include "platform/datetimes.h"
#include "platform/grid.h"

#include <QBrush>
#include <QLocale>

#include <optional>

namespace adjustacc::desktop {

using platform::Grid;
using platform::GridColumn;

namespace {

// The data dictionary names every amount with this class word ("LTE_FEE_AMT", "ORIG_ASSMT_AMT").
bool namesAnAmount(const QString& name) { return name.endsWith(QLatin1String("_AMT"), Qt::CaseInsensitive); }

// The type of a column's field: from the bound record set, else from the data dictionary.
std::optional<messaging::FieldType> fieldTypeOf(const Grid& grid, const GridColumn& column) {
  if (const messaging::RecordSetPtr set = grid.recordset()) {
    const int field = set->fieldIndex(column.dataField());
    if (!column.dataField().isEmpty() && field >= 0) {
      return set->fields().at(field).type;
    }
  }
  for (const QString& name : {column.dataField(), column.name()}) {
    if (const messaging::FieldInfo* info = messaging::sections::fieldInfo(name); info != nullptr && !name.isEmpty()) {
      return info->type;
    }
  }
  return std::nullopt;
}

}  // namespace

GridModel::GridModel(Grid& grid, QObject* parent) : QAbstractTableModel(parent), m_grid(&grid) {
  m_columns = grid.columnCount();
  connect(&grid, &Grid::aboutToReset, this, [this] {
    forgetKinds();
    if (!m_resetting) {
      m_resetting = true;
      beginResetModel();
    }
  });
  connect(&grid, &Grid::wasReset, this, [this] {
    forgetKinds();
    if (m_resetting) {
      m_columns = m_grid ? m_grid->columnCount() : 0;
      m_resetting = false;
      endResetModel();
    }
  });
  connect(&grid, &Grid::aboutToInsertRows, this, [this](int first, int last) { beginInsertRows({}, first, last); });
  connect(&grid, &Grid::rowsInserted, this, [this](int, int) { endInsertRows(); });
  connect(&grid, &Grid::aboutToRemoveRows, this, [this](int first, int last) { beginRemoveRows({}, first, last); });
  connect(&grid, &Grid::rowsRemoved, this, [this](int, int) { endRemoveRows(); });
  connect(&grid, &Grid::cellsChanged, this, [this](int first, int last) {
    const int columns = columnCount();
    const int rows = rowCount();
    first = qMax(0, first);
    last = qMin(last, rows - 1);
    if (columns > 0 && first <= last) {
      Q_EMIT dataChanged(index(first, 0), index(last, columns - 1));
    }
  });
  connect(&grid, &Grid::headerChanged, this, [this] {
    forgetKinds();
    if (m_grid && m_grid->columnCount() != m_columns) {
      // Columns came or went without a reset: the layout is new.
      beginResetModel();
      m_columns = m_grid->columnCount();
      endResetModel();
      return;
    }
    const int columns = columnCount();
    if (columns > 0) {
      Q_EMIT headerDataChanged(Qt::Horizontal, 0, columns - 1);
      // Fonts, styles and locks change how every cell draws.
      if (rowCount() > 0) {
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columns - 1));
      }
    }
  });
  connect(&grid, &QObject::destroyed, this, [this] {
    forgetKinds();
    beginResetModel();
    m_columns = 0;
    endResetModel();
  });
}

GridModel::~GridModel() = default;

Grid* GridModel::grid() const { return m_grid.data(); }

int GridModel::rowCount(const QModelIndex& parent) const {
  if (parent.isValid() || !m_grid) {
    return 0;
  }
  return m_grid->viewRowCount();
}

int GridModel::columnCount(const QModelIndex& parent) const {
  if (parent.isValid() || !m_grid) {
    return 0;
  }
  return m_columns;
}

bool GridModel::isCheckColumn(int column) const {
  return m_grid && column >= 0 && column < m_columns &&
         m_grid->column(column).display() == GridColumn::Display::Check;
}

GridModel::CellKind GridModel::cellKind(int column) const {
  if (!m_grid || column < 0 || column >= m_columns) {
    return CellKind::Text;
  }
  if (m_kinds.size() != m_columns) {
    m_kinds.clear();
    m_kinds.reserve(m_columns);
    for (int c = 0; c < m_columns; ++c) {
      const GridColumn& each = m_grid->column(c);
      CellKind kind = CellKind::Text;
      switch (each.display()) {
        case GridColumn::Display::Check:
          kind = CellKind::Check;
          break;
        case GridColumn::Display::Currency:
          kind = CellKind::Money;
          break;
        case GridColumn::Display::Text:
          if (namesAnAmount(each.name()) || namesAnAmount(each.dataField())) {
            kind = CellKind::Money;
          } else if (const auto type = fieldTypeOf(*m_grid, each)) {
            kind = *type == messaging::FieldType::Date       ? CellKind::Date
                   : *type == messaging::FieldType::DateTime ? CellKind::DateTime
                                                             : CellKind::Text;
          }
          break;
      }
      m_kinds.append(kind);
    }
  }
  return m_kinds.at(column);
}

QString GridModel::displayText(int row, int column) const {
  if (!m_grid) {
    return {};
  }
  // The grid formats what its screen declared (money, check cells); the rest is raw text here.
  const QString shown = m_grid->displayText(row, column);
  const QString text = shown.trimmed();
  if (text.isEmpty()) {
    return shown;
  }
  switch (cellKind(column)) {
    case CellKind::Money:
      if (m_grid->column(column).display() == GridColumn::Display::Text) {
        const auto amount = platform::Currency::parse(text);
        return amount ? amount->toDisplayText() : shown;
      }
      return shown;
    case CellKind::Date: {
      const auto date = platform::parseAnyDate(text);
      return date ? QLocale().toString(date.value(), QLocale::ShortFormat) : shown;
    }
    case CellKind::DateTime: {
      const auto moment = platform::parseTimestamp(text);
      return moment ? QLocale().toString(moment.value(), QLocale::ShortFormat) : shown;
    }
    case CellKind::Text:
    case CellKind::Check:
      break;
  }
  return shown;
}

QVariant GridModel::data(const QModelIndex& index, int role) const {
  if (!m_grid || !checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) {
    return {};
  }
  const int row = index.row();
  const int column = index.column();
  switch (role) {
    case Qt::DisplayRole:
      return displayText(row, column);
    case Qt::EditRole:
      return m_grid->cellText(row, column);
    case Qt::CheckStateRole:
      if (isCheckColumn(column)) {
        return m_grid->isChecked(row, column) ? Qt::Checked : Qt::Unchecked;
      }
      return {};
    case Qt::TextAlignmentRole:
      return QVariant::fromValue(alignment(column));
    case Qt::FontRole:
      return m_grid->cellFont(column);
    case Qt::ForegroundRole: {
      const QColor color = m_grid->cellForeColor(column);
      return color.isValid() ? QVariant(QBrush(color)) : QVariant();
    }
    case Qt::BackgroundRole: {
      const QColor color = m_grid->cellBackColor(column);
      return color.isValid() ? QVariant(QBrush(color)) : QVariant();
    }
    default:
      return {};
  }
}

QVariant GridModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (!m_grid) {
    return {};
  }
  if (orientation == Qt::Vertical) {
    return role == Qt::DisplayRole ? QVariant(section + 1) : QVariant();
  }
  if (section < 0 || section >= m_columns) {
    return {};
  }
  const GridColumn& column = m_grid->column(section);
  switch (role) {
    case Qt::DisplayRole:
      return column.caption();
    case Qt::FontRole:
      return m_grid->headFont(section);
    case Qt::TextAlignmentRole:
      return QVariant::fromValue(alignment(section));
    default:
      return {};
  }
}

Qt::Alignment GridModel::alignment(int column) const {
  // Amounts line up on their decimal point, whatever the screen left the column's alignment at.
  const Qt::Alignment horizontal =
      cellKind(column) == CellKind::Money ? Qt::AlignRight : m_grid->column(column).alignment();
  return (horizontal & Qt::AlignHorizontal_Mask) | Qt::AlignVCenter;
}

Qt::ItemFlags GridModel::flags(const QModelIndex& index) const {
  if (!m_grid || !index.isValid()) {
    return Qt::NoItemFlags;
  }
  Qt::ItemFlags result = Qt::ItemIsSelectable;
  if (m_grid->isEffectivelyEnabled()) {
    result |= Qt::ItemIsEnabled;
  }
  if (m_grid->isCellEditable(index.column())) {
    result |= isCheckColumn(index.column()) ? Qt::ItemIsUserCheckable : Qt::ItemIsEditable;
  }
  return result;
}

bool GridModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (!m_grid || !checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) {
    return false;
  }
  if (role == Qt::CheckStateRole && isCheckColumn(index.column())) {
    return m_grid->userSetCheck(index.row(), index.column(), value.toInt() == Qt::Checked);
  }
  if (role == Qt::EditRole && !isCheckColumn(index.column())) {
    if (m_grid->column(index.column()).hasDropDown()) {
      return m_grid->userChooseItem(index.row(), index.column(), value.toString());
    }
    if (value.toString() == m_grid->cellText(index.row(), index.column())) {
      return true;  // the editor closed without a change: no Change event
    }
    return m_grid->userEditCell(index.row(), index.column(), value.toString());
  }
  return false;
}

}  // namespace adjustacc::desktop
