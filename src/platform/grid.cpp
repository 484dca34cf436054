#include "platform/grid.h"

#include "platform/currency.h"
#include "platform/datacontrol.h"

#include <QMetaObject>

#include <algorithm>
#include <utility>

namespace adjustacc::platform {

using messaging::Bookmark;
using messaging::kNoBookmark;

// ===== StyleSet ====================================================================================

void StyleSet::setBold(bool bold) {
  if (m_bold == bold) {
    return;
  }
  m_bold = bold;
  m_grid->columnsChanged(false);
}

void StyleSet::setForeColor(const QColor& color) {
  if (m_foreColor == color) {
    return;
  }
  m_foreColor = color;
  m_grid->columnsChanged(false);
}

void StyleSet::setBackColor(const QColor& color) {
  if (m_backColor == color) {
    return;
  }
  m_backColor = color;
  m_grid->columnsChanged(false);
}

QFont StyleSet::resolve(const QFont& gridFont) const {
  QFont font = gridFont;
  if (m_bold) {
    font.setBold(*m_bold);
  }
  return font;
}

// ===== GridColumn ==================================================================================

void GridColumn::headerTouched() {
  m_grid->columnsChanged(false);
}

void GridColumn::setCaption(const QString& caption) {
  if (isNull() || m_caption == caption) {
    return;
  }
  m_caption = caption;
  headerTouched();
}

void GridColumn::setName(const QString& name) {
  if (isNull() || m_name == name) {
    return;
  }
  m_name = name;
  headerTouched();
}

void GridColumn::setDataField(const QString& field) {
  if (isNull() || m_dataField == field) {
    return;
  }
  m_dataField = field;
  // Which layer the column reads from changes: every row reads again.
  m_grid->m_fieldsResolved = false;
  m_grid->m_loaded.clear();
  m_grid->columnsChanged(true);
}

void GridColumn::setLocked(bool locked) {
  if (isNull() || m_locked == locked) {
    return;
  }
  m_locked = locked;
  headerTouched();
}

void GridColumn::setVisible(bool visible) {
  if (isNull() || m_visible == visible) {
    return;
  }
  m_visible = visible;
  headerTouched();
}

void GridColumn::setWidth(int width) {
  if (isNull() || m_width == width) {
    return;
  }
  m_width = qMax(0, width);
  headerTouched();
}

void GridColumn::setDisplay(Display display) {
  if (isNull() || m_display == display) {
    return;
  }
  m_display = display;
  headerTouched();
  m_grid->signalCells(0, m_grid->rows() - 1);
}

Qt::Alignment GridColumn::alignment() const {
  if (m_alignment) {
    return *m_alignment;
  }
  switch (m_display) {
    case Display::Currency:
      return Qt::AlignRight | Qt::AlignVCenter;
    case Display::Check:
      return Qt::AlignCenter;
    case Display::Text:
      break;
  }
  return Qt::AlignLeft | Qt::AlignVCenter;
}

void GridColumn::setAlignment(Qt::Alignment alignment) {
  if (isNull()) {
    return;
  }
  m_alignment = alignment;
  headerTouched();
}

void GridColumn::setStyleSet(const QString& name) {
  if (isNull() || m_styleSet == name) {
    return;
  }
  m_styleSet = name;
  headerTouched();
}

void GridColumn::setHeadStyleSet(const QString& name) {
  if (isNull() || m_headStyleSet == name) {
    return;
  }
  m_headStyleSet = name;
  headerTouched();
}

void GridColumn::addDropDownItem(const QString& item) {
  if (isNull()) {
    return;
  }
  m_dropDown.append(item);
  headerTouched();
}

void GridColumn::setDropDownItems(const QStringList& items) {
  if (isNull() || m_dropDown == items) {
    return;
  }
  m_dropDown = items;
  headerTouched();
}

void GridColumn::clearDropDown() {
  setDropDownItems({});
}

QVariant GridColumn::value() const {
  if (isNull()) {
    return {};
  }
  return m_grid->cellValue(m_grid->contextRow(), m_position);
}

QString GridColumn::text() const {
  return value().toString();
}

bool GridColumn::setValue(const QVariant& value) {
  if (isNull()) {
    return false;
  }
  return m_grid->setCellValue(m_grid->contextRow(), m_position, value);
}

QVariant GridColumn::cellValue(int row) const {
  if (isNull()) {
    return {};
  }
  return m_grid->cellValue(row, m_position);
}

// ===== Grid: RowLoaded results ======================================================================

const QVariant* Grid::overlayValue(const Overlay& overlay, int column) {
  for (const auto& [at, value] : overlay) {
    if (at == column) {
      return &value;
    }
  }
  return nullptr;
}

const Grid::Overlay* Grid::LoadedRows::find(Bookmark id) const {
  return holds(id) ? &m_rows[static_cast<std::size_t>(id)] : nullptr;
}

void Grid::LoadedRows::insertEmpty(Bookmark id) {
  if (id < 0) {
    return;
  }
  const auto at = static_cast<std::size_t>(id);
  if (at >= m_rows.size()) {
    m_rows.resize(at + 1);
    m_loaded.resize(at + 1, false);
  }
  m_rows[at].clear();
  m_loaded[at] = true;
}

void Grid::LoadedRows::set(Bookmark id, int column, const QVariant& value) {
  if (!holds(id)) {
    insertEmpty(id);
    if (!holds(id)) {
      return;
    }
  }
  Overlay& overlay = m_rows[static_cast<std::size_t>(id)];
  for (auto& [at, held] : overlay) {
    if (at == column) {
      held = value;
      return;
    }
  }
  overlay.append({column, value});
}

void Grid::LoadedRows::remove(Bookmark id) {
  if (holds(id)) {
    const auto at = static_cast<std::size_t>(id);
    m_rows[at] = Overlay();
    m_loaded[at] = false;
  }
}

void Grid::LoadedRows::clear() {
  m_rows.clear();
  m_loaded.clear();
}

// ===== Grid: set-up ================================================================================

Grid::Grid(QString name, QObject* parent)
    : Control(std::move(name), parent), m_nullColumn(new GridColumn(this, -1)) {}

Grid::~Grid() = default;

void Grid::setCaption(const QString& caption) {
  if (m_caption == caption) {
    return;
  }
  m_caption = caption;
  notifyChanged();
  Q_EMIT headerChanged();
}

void Grid::setFont(const QFont& font) {
  if (m_font == font) {
    return;
  }
  m_font = font;
  notifyChanged();
  columnsChanged(false);
}

StyleSet& Grid::styleSet(const QString& name) {
  for (const auto& style : m_styleSets) {
    if (style->name().compare(name, Qt::CaseInsensitive) == 0) {
      return *style;
    }
  }
  m_styleSets.push_back(std::unique_ptr<StyleSet>(new StyleSet(this, name)));
  return *m_styleSets.back();
}

bool Grid::hasStyleSet(const QString& name) const {
  return std::any_of(m_styleSets.begin(), m_styleSets.end(), [&](const auto& style) {
    return style->name().compare(name, Qt::CaseInsensitive) == 0;
  });
}

namespace {
const StyleSet* findStyle(const std::vector<std::unique_ptr<StyleSet>>& styles, const QString& name) {
  if (name.isEmpty()) {
    return nullptr;
  }
  for (const auto& style : styles) {
    if (style->name().compare(name, Qt::CaseInsensitive) == 0) {
      return style.get();
    }
  }
  return nullptr;
}
}  // namespace

QFont Grid::cellFont(int column) const {
  const StyleSet* style = findStyle(m_styleSets, this->column(column).styleSet());
  return style ? style->resolve(m_font) : m_font;
}

QFont Grid::headFont(int column) const {
  const StyleSet* style = findStyle(m_styleSets, this->column(column).headStyleSet());
  return style ? style->resolve(m_font) : m_font;
}

QColor Grid::cellForeColor(int column) const {
  const StyleSet* style = findStyle(m_styleSets, this->column(column).styleSet());
  return style ? style->foreColor() : QColor();
}

QColor Grid::cellBackColor(int column) const {
  const StyleSet* style = findStyle(m_styleSets, this->column(column).styleSet());
  return style ? style->backColor() : QColor();
}

// ===== columns =====================================================================================

GridColumn& Grid::addColumn(const QString& name, const QString& caption, const QString& dataField) {
  Q_EMIT aboutToReset();
  auto column = std::unique_ptr<GridColumn>(new GridColumn(this, columnCount()));
  column->m_name = name;
  column->m_caption = caption.isNull() ? name : caption;
  column->m_dataField = dataField;
  m_columns.push_back(std::move(column));
  m_fieldsResolved = false;
  m_loaded.clear();
  m_viewRows = rows();
  Q_EMIT wasReset();
  return *m_columns.back();
}

GridColumn& Grid::column(int index) {
  if (index < 0 || index >= columnCount()) {
    qCWarning(lcControls) << "grid" << name() << "has no column" << index;
    return *m_nullColumn;
  }
  return *m_columns[static_cast<std::size_t>(index)];
}

const GridColumn& Grid::column(int index) const {
  return const_cast<Grid*>(this)->column(index);
}

GridColumn& Grid::column(const QString& name) {
  const int index = columnIndex(name);
  if (index < 0) {
    // Screens tune columns by name on grids that may not have them; that is tolerated.
    qCDebug(lcControls) << "grid" << this->name() << "has no column named" << name;
    return *m_nullColumn;
  }
  return *m_columns[static_cast<std::size_t>(index)];
}

const GridColumn& Grid::column(const QString& name) const {
  return const_cast<Grid*>(this)->column(name);
}

int Grid::columnIndex(const QString& name) const {
  // Grids have a few dozen columns at most: a scan without allocating beats hashing a lower-cased copy,
  // and lookups by name happen on every cell a walk reads. The first column of a name wins.
  for (int i = 0; i < columnCount(); ++i) {
    if (m_columns[static_cast<std::size_t>(i)]->name().compare(name, Qt::CaseInsensitive) == 0) {
      return i;
    }
  }
  return -1;
}

void Grid::removeAllColumns() {
  Q_EMIT aboutToReset();
  m_columns.clear();
  m_fieldsResolved = false;
  m_loaded.clear();
  m_extraCells.clear();
  m_pending = Pending();
  m_viewRows = rows();
  Q_EMIT wasReset();
}

void Grid::columnsChanged(bool layout) {
  if (layout) {
    publishReset();
    return;
  }
  Q_EMIT headerChanged();
}

// ===== binding =====================================================================================

void Grid::setDataSource(Adodc* source) {
  for (const QMetaObject::Connection& connection : std::as_const(m_sourceConnections)) {
    disconnect(connection);
  }
  m_sourceConnections.clear();
  m_source = source;
  m_bindMode = source != nullptr;
  if (source != nullptr) {
    m_sourceConnections.append(connect(source, &Adodc::recordsetReplaced, this, &Grid::rebind));
    m_sourceConnections.append(connect(source, &Adodc::refreshed, this, &Grid::refresh));
  }
  if (m_bindMode && !m_items.isEmpty()) {
    qCWarning(lcControls) << "grid" << name() << "dropped" << m_items.size() << "added rows when bound";
    m_items.clear();
  }
  m_row = 0;
  m_betweenRows = false;
  bindNow();
}

messaging::RecordSetPtr Grid::recordset() const {
  return m_source ? m_source->recordset() : messaging::RecordSetPtr();
}

void Grid::rebind() {
  if (!m_bindMode) {
    // Rows added as text are the grid's own: there is nothing to read again, only to redraw.
    refresh();
    return;
  }
  bindNow();
}

void Grid::bindNow() {
  if (hasPendingEdit()) {
    qCDebug(lcControls) << "grid" << name() << "dropped a pending edit on rebind";
  }
  Q_EMIT aboutToReset();
  m_bound = recordset();
  m_seenRevision = m_bound ? m_bound->revision() : 0;
  if (m_bindMode && columnCount() == 0 && m_bound) {
    // A bound grid without a layout shows every field, captioned by its name.
    for (const messaging::Field& field : m_bound->fields()) {
      auto column = std::unique_ptr<GridColumn>(new GridColumn(this, columnCount()));
      column->m_name = field.name;
      column->m_caption = field.name;
      column->m_dataField = field.name;
      m_columns.push_back(std::move(column));
    }
  }
  m_fieldsResolved = false;
  m_loaded.clear();
  m_extraCells.clear();
  m_pending = Pending();
  m_selected.clear();
  m_anchor = kNoBookmark;
  m_firstVisible = 0;
  m_cellsDirty = false;
  m_resetQueued = false;
  m_viewRows = rows();
  Q_EMIT wasReset();
  noteCurrentMoved();
}

void Grid::refresh() {
  syncWithRecordset();
  m_loaded.clear();
  publishReset();
}

void Grid::resolveFields() const {
  m_fieldOfColumn.clear();
  for (const auto& column : m_columns) {
    const QString& field = column->dataField();
    m_fieldOfColumn.append(m_bound && !field.isEmpty() ? m_bound->fieldIndex(field) : -1);
  }
  m_fieldsResolved = true;
}

int Grid::fieldOf(int column) const {
  if (!m_bindMode) {
    return -1;
  }
  if (!m_fieldsResolved) {
    resolveFields();
  }
  return m_fieldOfColumn.value(column, -1);
}

void Grid::syncWithRecordset() const {
  if (!m_bindMode) {
    return;
  }
  const messaging::RecordSet* current = m_source ? m_source->recordset().get() : nullptr;
  if (current != m_bound.get()) {
    // The data control was given another set without telling (or was destroyed): follow it.
    m_bound = recordset();
    m_seenRevision = m_bound ? m_bound->revision() : 0;
    m_fieldsResolved = false;
    m_loaded.clear();
    scheduleReset();
    return;
  }
  if (m_bound && m_bound->revision() != m_seenRevision) {
    // Rows, values, sort or filter changed under the grid: format again and tell the view.
    m_seenRevision = m_bound->revision();
    m_fieldsResolved = false;
    m_loaded.clear();
    scheduleReset();
  }
}

void Grid::scheduleReset() const {
  if (m_resetQueued) {
    return;
  }
  m_resetQueued = true;
  // Never reset a view from inside one of its own reads: announce it from the event loop.
  Grid* self = const_cast<Grid*>(this);
  QMetaObject::invokeMethod(
      self,
      [self] {
        if (self->m_resetQueued) {
          self->publishReset();
        }
      },
      Qt::QueuedConnection);
}

void Grid::publishReset() {
  m_resetQueued = false;
  m_cellsDirty = false;
  Q_EMIT aboutToReset();
  m_viewRows = rows();
  m_firstVisible = qBound(0, m_firstVisible, qMax(0, m_viewRows - 1));
  Q_EMIT wasReset();
  noteCurrentMoved();
}

// ===== rows ========================================================================================

int Grid::rows() const {
  syncWithRecordset();
  return rowsAsSeen();
}

int Grid::rowsAsSeen() const {
  if (!m_bindMode) {
    return static_cast<int>(m_items.size());
  }
  return m_bound && m_bound->isOpen() ? m_bound->recordCount() : 0;
}

bool Grid::addItem(const QString& tabSeparatedCells, int index) {
  if (m_bindMode) {
    qCWarning(lcControls) << "grid" << name() << "is bound to a record set; rows cannot be added as text";
    return false;
  }
  const int count = rows();
  if (index > count) {
    qCWarning(lcControls) << "grid" << name() << "cannot add a row at" << index << "of" << count;
    return false;
  }
  const int at = index < 0 ? count : index;
  Item item{m_nextId++, {}};
  const QStringList cells = tabSeparatedCells.split(QLatin1Char('\t'), Qt::KeepEmptyParts);
  item.cells.reserve(cells.size());
  for (const QString& cell : cells) {
    item.cells.append(cell);
  }
  Q_EMIT aboutToInsertRows(at, at);
  m_items.insert(at, std::move(item));
  m_viewRows = rows();
  // A row inserted before the current one keeps the same row current; the position past the end
  // becomes the appended row.
  if (at < m_row || (at == m_row && m_row < count)) {
    ++m_row;
  }
  Q_EMIT rowsInserted(at, at);
  if (at < m_firstVisible) {
    ++m_firstVisible;
  }
  noteCurrentMoved();
  return true;
}

bool Grid::removeItem(int index) {
  if (m_bindMode) {
    qCWarning(lcControls) << "grid" << name() << "is bound to a record set; rows cannot be removed by index";
    return false;
  }
  if (index < 0 || index >= rows()) {
    qCWarning(lcControls) << "grid" << name() << "has no row" << index << "to remove";
    return false;
  }
  const Bookmark id = m_items[index].id;
  Q_EMIT aboutToRemoveRows(index, index);
  m_items.removeAt(index);
  m_viewRows = rows();
  dropRowState(id);
  if (index < m_row) {
    --m_row;
  } else if (index == m_row) {
    // The row that followed now sits at the current index; the next moveNext must land on it.
    m_betweenRows = true;
  }
  m_row = qMin(m_row, rows());
  Q_EMIT rowsRemoved(index, index);
  if (index < m_firstVisible) {
    --m_firstVisible;
  }
  m_firstVisible = qBound(0, m_firstVisible, qMax(0, rows() - 1));
  noteCurrentMoved();
  return true;
}

void Grid::dropRowState(Bookmark id) {
  m_loaded.remove(id);
  m_extraCells.remove(id);
  if (m_pending.row == id) {
    m_pending = Pending();
  }
  if (m_selected.removeAll(id) > 0) {
    Q_EMIT selectionChanged();
  }
}

void Grid::removeAll() {
  if (m_bindMode) {
    refresh();
    return;
  }
  Q_EMIT aboutToReset();
  m_items.clear();
  m_row = 0;
  m_betweenRows = false;
  m_loaded.clear();
  m_pending = Pending();
  const bool hadSelection = !m_selected.isEmpty();
  m_selected.clear();
  m_anchor = kNoBookmark;
  m_firstVisible = 0;
  m_viewRows = 0;
  Q_EMIT wasReset();
  if (hadSelection) {
    Q_EMIT selectionChanged();
  }
  noteCurrentMoved();
}

// ===== current row =================================================================================

int Grid::row() const {
  if (!m_bindMode) {
    return m_row;
  }
  syncWithRecordset();
  const int count = rowsAsSeen();
  if (count == 0) {
    return 0;
  }
  if (m_bound->eof()) {
    return count;
  }
  if (m_bound->bof()) {
    return -1;
  }
  return m_bound->absolutePosition();
}

bool Grid::setRow(int row) {
  const int count = rows();
  if (row < 0 || row > count) {
    qCDebug(lcControls) << "grid" << name() << "has no row" << row;
    return false;
  }
  if (m_bindMode) {
    if (row == count) {
      if (count > 0) {
        m_bound->moveLast();
        m_bound->moveNext();
      }
    } else {
      m_bound->setAbsolutePosition(row);
    }
  } else {
    m_row = row;
    m_betweenRows = false;
  }
  noteCurrentMoved();
  return true;
}

void Grid::moveFirst() {
  if (m_bindMode) {
    if (rows() > 0) {
      m_bound->moveFirst();
    }
  } else {
    m_row = 0;
    m_betweenRows = false;
  }
  noteCurrentMoved();
}

void Grid::moveLast() {
  if (m_bindMode) {
    if (rows() > 0) {
      m_bound->moveLast();
    }
  } else {
    m_row = qMax(0, rows() - 1);
    m_betweenRows = false;
  }
  noteCurrentMoved();
}

void Grid::moveNext() {
  if (m_bindMode) {
    if (rows() > 0 && !m_bound->eof()) {
      m_bound->moveNext();
    }
  } else if (m_betweenRows) {
    m_betweenRows = false;
  } else if (m_row < rows()) {
    ++m_row;
  }
  noteCurrentMoved();
}

void Grid::movePrevious() {
  if (m_bindMode) {
    if (rows() > 0 && row() > 0) {
      m_bound->movePrevious();
    }
  } else {
    m_betweenRows = false;
    if (m_row > 0) {
      --m_row;
    }
  }
  noteCurrentMoved();
}

bool Grid::setBookmark(Bookmark bookmark) {
  const int at = rowOfBookmark(bookmark);
  return at >= 0 && setRow(at);
}

Bookmark Grid::bookmarkAt(int row) const {
  syncWithRecordset();
  return bookmarkAsSeen(row);
}

Bookmark Grid::bookmarkAsSeen(int row) const {
  if (row < 0 || row >= rowsAsSeen()) {
    return kNoBookmark;
  }
  return m_bindMode ? m_bound->bookmarkAt(row) : m_items[row].id;
}

int Grid::rowOfBookmark(Bookmark bookmark) const {
  if (bookmark == kNoBookmark) {
    return -1;
  }
  if (m_bindMode) {
    syncWithRecordset();
    return m_bound ? m_bound->rowOfBookmark(bookmark) : -1;
  }
  for (int i = 0; i < m_items.size(); ++i) {
    if (m_items[i].id == bookmark) {
      return i;
    }
  }
  return -1;
}

void Grid::noteCurrentMoved() const {
  if (m_currentQueued) {
    return;
  }
  m_currentQueued = true;
  // A walk moves the row many times; the view hears once, where the walk left it.
  Grid* self = const_cast<Grid*>(this);
  QMetaObject::invokeMethod(
      self,
      [self] {
        self->m_currentQueued = false;
        const int now = self->row();
        if (now != self->m_announcedRow) {
          self->m_announcedRow = now;
          Q_EMIT self->currentRowChanged(now);
        }
      },
      Qt::QueuedConnection);
}

void Grid::setFirstVisibleRow(int row) {
  const int clamped = qBound(0, row, qMax(0, rows() - 1));
  if (clamped == m_firstVisible) {
    return;
  }
  m_firstVisible = clamped;
  Q_EMIT firstVisibleRowChanged(m_firstVisible);
}

// ===== selection ===================================================================================

void Grid::setSelectionMode(SelectionMode mode) {
  if (m_selectionMode == mode) {
    return;
  }
  m_selectionMode = mode;
  if (mode == SelectionMode::None) {
    clearSelection();
  } else if (mode == SelectionMode::Single && m_selected.size() > 1) {
    m_selected = {m_selected.constLast()};
    Q_EMIT selectionChanged();
  }
}

QList<int> Grid::selectedRows() const {
  QList<int> result;
  for (const Bookmark id : m_selected) {
    const int at = rowOfBookmark(id);
    if (at >= 0) {
      result.append(at);
    }
  }
  std::sort(result.begin(), result.end());
  return result;
}

bool Grid::isRowSelected(int row) const {
  const Bookmark id = bookmarkAt(row);
  return id != kNoBookmark && m_selected.contains(id);
}

void Grid::selectRow(int row, bool selected) {
  const Bookmark id = bookmarkAt(row);
  if (id == kNoBookmark || m_selectionMode == SelectionMode::None) {
    return;
  }
  const bool present = m_selected.contains(id);
  if (selected == present && !(selected && m_selectionMode == SelectionMode::Single && m_selected.size() > 1)) {
    return;
  }
  if (selected) {
    if (m_selectionMode == SelectionMode::Single) {
      m_selected.clear();
    }
    m_selected.append(id);
  } else {
    m_selected.removeAll(id);
  }
  Q_EMIT selectionChanged();
}

void Grid::clearSelection() {
  m_anchor = kNoBookmark;
  if (m_selected.isEmpty()) {
    return;
  }
  m_selected.clear();
  Q_EMIT selectionChanged();
}

// ===== drawing =====================================================================================

void Grid::setRedraw(bool redraw) {
  if (m_redraw == redraw) {
    return;
  }
  m_redraw = redraw;
  Q_EMIT redrawChanged(m_redraw);
  if (!m_redraw) {
    return;
  }
  syncWithRecordset();
  if (m_resetQueued) {
    publishReset();
  } else if (m_cellsDirty) {
    m_cellsDirty = false;
    signalCells(0, m_viewRows - 1);
  }
}

void Grid::signalCells(int firstRow, int lastRow) {
  // Only rows the view has been told about can be redrawn; the others come with their announcement.
  firstRow = qMax(0, firstRow);
  lastRow = qMin(lastRow, m_viewRows - 1);
  if (lastRow < firstRow) {
    return;
  }
  if (!m_redraw) {
    m_cellsDirty = true;
    return;
  }
  Q_EMIT cellsChanged(firstRow, lastRow);
}

// ===== values ======================================================================================

int Grid::contextRow() const {
  return m_loadingRow >= 0 ? m_loadingRow : row();
}

QVariant Grid::baseValue(int row, Bookmark id, int column) const {
  if (!m_bindMode) {
    return m_items[row].cells.value(column);
  }
  const int field = fieldOf(column);
  if (field >= 0) {
    return m_bound->valueAt(row, field);
  }
  const auto extra = m_extraCells.constFind(id);
  return extra == m_extraCells.constEnd() ? QVariant() : extra->value(column);
}

const Grid::Overlay* Grid::ensureLoaded(int row, Bookmark id) const {
  if (!m_rowLoaded) {
    return nullptr;
  }
  if (const Overlay* found = m_loaded.find(id)) {
    return found;
  }
  if (m_loadingRow >= 0) {
    // The handler of one row read another: that row is read as it stands, unformatted.
    return nullptr;
  }
  m_loaded.insertEmpty(id);
  struct LoadingScope {
    const Grid* grid;
    bool done = false;
    ~LoadingScope() {
      if (!done) {
        grid->m_loaded.remove(grid->m_loadingId);  // a failed handler leaves nothing half-made behind
      }
      grid->m_loadingRow = -1;
      grid->m_loadingId = kNoBookmark;
    }
  } scope{this};
  m_loadingRow = row;
  m_loadingId = id;
  // Running the screen's handler is what reading a row means here; it writes display values only.
  const_cast<Grid*>(this)->m_rowLoaded(id);
  scope.done = true;
  return m_loaded.find(id);
}

QVariant Grid::cellValue(int row, int column) const {
  if (column < 0 || column >= columnCount()) {
    return {};
  }
  if (isLoading(row)) {
    if (m_pending.row == m_loadingId && m_pending.values.contains(column)) {
      return m_pending.values.value(column);
    }
    const Overlay* soFar = m_loaded.find(m_loadingId);
    const QVariant* hit = soFar ? overlayValue(*soFar, column) : nullptr;
    return hit ? *hit : baseValue(row, m_loadingId, column);
  }
  syncWithRecordset();
  const Bookmark id = bookmarkAsSeen(row);
  if (id == kNoBookmark) {
    return {};
  }
  if (m_pending.row == id && m_pending.values.contains(column)) {
    return m_pending.values.value(column);
  }
  if (const Overlay* overlay = ensureLoaded(row, id)) {
    if (const QVariant* hit = overlayValue(*overlay, column)) {
      return *hit;
    }
  }
  return baseValue(row, id, column);
}

bool Grid::setCellValue(int row, int column, const QVariant& value) {
  if (column < 0 || column >= columnCount()) {
    return false;
  }
  if (isLoading(row)) {
    m_loaded.set(m_loadingId, column, value);
    return true;
  }
  if (row < 0 || row >= rows()) {
    qCDebug(lcControls) << "grid" << name() << "write outside the rows (" << row << ") ignored";
    return false;
  }
  const Bookmark id = bookmarkAt(row);
  if (m_pending.row == id) {
    // The logic's write replaces the person's unsaved edit of that cell.
    m_pending.values.remove(column);
    if (m_pending.values.isEmpty()) {
      m_pending = Pending();
    }
  }
  return writeBase(row, id, column, value);
}

bool Grid::writeBase(int row, Bookmark id, int column, const QVariant& value) {
  if (!m_bindMode) {
    QList<QVariant>& cells = m_items[row].cells;
    while (cells.size() <= column) {
      cells.append(QVariant());
    }
    cells[column] = value;
    m_loaded.remove(id);
    signalCells(row, row);
    return true;
  }
  const int field = fieldOf(column);
  if (field < 0) {
    m_extraCells[id].insert(column, value);
    m_loaded.remove(id);
    signalCells(row, row);
    return true;
  }
  if (!m_bound->updateAt(id, field, value)) {
    qCWarning(lcControls) << "grid" << name() << "could not write field" << this->column(column).dataField()
                          << "of row" << row;
    return false;
  }
  // Our own write: only this row needs formatting again (unless the write moved it in the sort order).
  m_seenRevision = m_bound->revision();
  m_loaded.remove(id);
  if (m_bound->rowOfBookmark(id) != row) {
    publishReset();
  } else {
    signalCells(row, row);
  }
  return true;
}

QString Grid::displayText(int row, int column) const {
  const QVariant value = cellValue(row, column);
  if (value.isNull()) {
    return {};
  }
  const QString text = value.toString();
  switch (this->column(column).display()) {
    case GridColumn::Display::Check:
      return {};
    case GridColumn::Display::Currency: {
      if (text.trimmed().isEmpty()) {
        return {};
      }
      const auto amount = Currency::parse(text);
      return amount ? amount->toDisplayText() : text;
    }
    case GridColumn::Display::Text:
      break;
  }
  return text;
}

bool Grid::isChecked(int row, int column) const {
  return cellText(row, column).trimmed() == QLatin1String("-1");
}

void Grid::setRowLoadedHandler(RowLoadedHandler handler) {
  m_rowLoaded = std::move(handler);
  m_loaded.clear();
  signalCells(0, rows() - 1);
}

// ===== the person's edits ==========================================================================

void Grid::setAllowUpdate(bool allow) {
  if (m_allowUpdate == allow) {
    return;
  }
  m_allowUpdate = allow;
  notifyChanged();
  Q_EMIT headerChanged();
}

bool Grid::isCellEditable(int column) const {
  const GridColumn& c = this->column(column);
  return !c.isNull() && m_allowUpdate && !c.isLocked() && c.isVisible() && isEffectivelyEnabled() &&
         isEffectivelyVisible();
}

bool Grid::update() {
  if (!hasPendingEdit()) {
    return true;
  }
  const Pending pending = std::exchange(m_pending, Pending());
  const int at = rowOfBookmark(pending.row);
  if (at < 0) {
    qCWarning(lcControls) << "grid" << name() << "dropped an edit of a row no longer shown";
    return false;
  }
  bool ok = true;
  for (auto it = pending.values.constBegin(); it != pending.values.constEnd(); ++it) {
    // A bound write may move the row in the sort order; find it again for each field.
    const int now = rowOfBookmark(pending.row);
    ok = now >= 0 && writeBase(now, pending.row, it.key(), it.value()) && ok;
  }
  Q_EMIT afterUpdate();
  return ok;
}

void Grid::cancelUpdate() {
  if (!hasPendingEdit()) {
    return;
  }
  const int at = rowOfBookmark(m_pending.row);
  m_loaded.remove(m_pending.row);
  m_pending = Pending();
  if (at >= 0) {
    signalCells(at, at);
  }
}

// ===== what a view calls ===========================================================================

bool Grid::userSetCurrentRow(int row) {
  if (!isEffectivelyEnabled() || !isEffectivelyVisible() || row < 0 || row >= rows()) {
    return false;
  }
  if (row == this->row()) {
    return true;
  }
  if (hasPendingEdit() && m_pending.row != bookmarkAt(row)) {
    update();
  }
  return setRow(row);
}

bool Grid::userClickRow(int row, ClickKind kind) {
  if (!isEffectivelyEnabled() || !isEffectivelyVisible()) {
    return false;
  }
  if (row >= 0 && row < rows()) {
    userSetCurrentRow(row);
    const QList<Bookmark> before = m_selected;
    const Bookmark id = bookmarkAt(row);
    const bool single = m_selectionMode == SelectionMode::Single;
    if (m_selectionMode != SelectionMode::None) {
      if (kind == ClickKind::Toggle && !single) {
        if (m_selected.contains(id)) {
          m_selected.removeAll(id);
        } else {
          m_selected.append(id);
        }
        m_anchor = id;
      } else if (kind == ClickKind::Extend && !single && rowOfBookmark(m_anchor) >= 0) {
        const int from = rowOfBookmark(m_anchor);
        m_selected.clear();
        for (int r = qMin(from, row); r <= qMax(from, row); ++r) {
          m_selected.append(bookmarkAt(r));
        }
      } else {
        m_selected = {id};
        m_anchor = id;
      }
    }
    if (m_selected != before) {
      Q_EMIT selectionChanged();
      Q_EMIT selChange();
    }
  }
  Q_EMIT clicked();
  return true;
}

bool Grid::userEditCell(int row, int column, const QVariant& value) {
  if (!isCellEditable(column) || row < 0 || row >= rows()) {
    qCDebug(lcControls) << "grid" << name() << "refused an edit of column" << column << "row" << row;
    return false;
  }
  if (!userSetCurrentRow(row)) {
    return false;
  }
  const Bookmark id = bookmarkAt(row);
  if (m_pending.row != id) {
    m_pending = Pending{id, {}};
  }
  m_pending.values.insert(column, value);
  // Display values may depend on the edited cell: format the row again.
  m_loaded.remove(id);
  signalCells(row, row);
  Q_EMIT edited(column);
  return true;
}

bool Grid::userToggleCheck(int row, int column) {
  return userEditCell(row, column, isChecked(row, column) ? QStringLiteral("0") : QStringLiteral("-1"));
}

void Grid::userScrolled(int firstVisibleRow) {
  setFirstVisibleRow(firstVisibleRow);
  Q_EMIT scrollAfter();
}

}  // namespace adjustacc::platform
