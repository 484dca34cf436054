#include "gridview.h"

#include "binders.h"
#include "gridmodel.h"

#include "platform/button.h"
#include "platform/datacontrol.h"
#include "platform/grid.h"

#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QSettings>
#include <QTimer>
#include <QToolTip>
#include <QVBoxLayout>

#include <algorithm>
#include <numeric>
#include <utility>

namespace adjustacc::desktop {

using platform::Grid;

namespace {

// Widest a column grows by itself; the person may widen it further.
constexpr int kMaxAutoWidth = 320;
// Rows sampled to size the columns: the first screenful is what the person judges the list by.
constexpr int kSampledRows = 60;
// Narrowest a check column is made: a box and some room around it.
constexpr int kCheckWidth = 40;
const QString kSettingsRoot = QStringLiteral("gridColumns/");
const QString kViewPrefix = QStringLiteral("view:");

// Widths for columns that want `wanted` but get at least `least`, within `room`: all they want when it fits;
// otherwise every column is cut to one common ceiling, found so that the sum just fits, never below its least.
QList<int> fitWithin(const QList<int>& wanted, const QList<int>& least, int room) {
  const auto total = [](const QList<int>& widths) { return std::accumulate(widths.cbegin(), widths.cend(), 0); };
  if (total(wanted) <= room) {
    return wanted;
  }
  const auto capped = [&](int ceiling) {
    QList<int> widths;
    widths.reserve(wanted.size());
    for (qsizetype i = 0; i < wanted.size(); ++i) {
      widths.append(qMax(least[i], qMin(wanted[i], ceiling)));
    }
    return widths;
  };
  int low = 0;
  int high = *std::max_element(wanted.cbegin(), wanted.cend());
  while (low < high) {
    const int middle = (low + high + 1) / 2;
    if (total(capped(middle)) <= room) {
      low = middle;
    } else {
      high = middle - 1;
    }
  }
  return capped(low);
}

QRect checkRect(const QStyleOptionViewItem& option) {
  const QWidget* widget = option.widget;
  const QStyle* style = widget != nullptr ? widget->style() : QApplication::style();
  const QSize size = style->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &option, widget).size();
  QRect rect(QPoint(0, 0), size);
  rect.moveCenter(option.rect.center());
  return rect;
}

}  // namespace

// ===== delegate =====================================================================================================

GridDelegate::GridDelegate(GridModel& model, QObject* parent) : QStyledItemDelegate(parent), m_model(model) {}

void GridDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
  if (!m_model.isCheckColumn(index.column())) {
    QStyledItemDelegate::paint(painter, option, index);
    return;
  }
  QStyleOptionViewItem opt = option;
  initStyleOption(&opt, index);
  const QWidget* widget = option.widget;
  const QStyle* style = widget != nullptr ? widget->style() : QApplication::style();
  opt.text.clear();
  opt.features &= ~QStyleOptionViewItem::HasCheckIndicator;
  style->drawPrimitive(QStyle::PE_PanelItemViewItem, &opt, painter, widget);
  QStyleOptionViewItem check = opt;
  check.rect = checkRect(opt);
  check.state &= ~QStyle::State_HasFocus;
  const bool checked = index.data(Qt::CheckStateRole).toInt() == Qt::Checked;
  check.state |= checked ? QStyle::State_On : QStyle::State_Off;
  if (!(index.flags() & Qt::ItemIsUserCheckable)) {
    check.state &= ~QStyle::State_Enabled;
  }
  style->drawPrimitive(QStyle::PE_IndicatorItemViewItemCheck, &check, painter, widget);
}

QWidget* GridDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                    const QModelIndex& index) const {
  Grid* grid = m_model.grid();
  if (grid != nullptr) {
    const QStringList items = grid->column(index.column()).dropDownItems();
    if (!items.isEmpty()) {
      auto* combo = new QComboBox(parent);
      combo->addItems(items);
      combo->setFrame(false);
      return combo;
    }
  }
  return QStyledItemDelegate::createEditor(parent, option, index);
}

void GridDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
  if (auto* combo = qobject_cast<QComboBox*>(editor)) {
    const QString text = index.data(Qt::EditRole).toString();
    const int at = combo->findText(text, Qt::MatchFixedString);
    combo->setCurrentIndex(at);
    return;
  }
  QStyledItemDelegate::setEditorData(editor, index);
}

void GridDelegate::setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const {
  if (auto* combo = qobject_cast<QComboBox*>(editor)) {
    if (combo->currentIndex() >= 0) {
      model->setData(index, combo->currentText(), Qt::EditRole);
    }
    return;
  }
  QStyledItemDelegate::setModelData(editor, model, index);
}

bool GridDelegate::editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                               const QModelIndex& index) {
  if (!m_model.isCheckColumn(index.column())) {
    return QStyledItemDelegate::editorEvent(event, model, option, index);
  }
  const Qt::ItemFlags flags = index.flags();
  if (!(flags & Qt::ItemIsUserCheckable) || !(flags & Qt::ItemIsEnabled)) {
    return false;
  }
  if (event->type() == QEvent::MouseButtonRelease) {
    const auto* mouse = static_cast<QMouseEvent*>(event);
    // The whole cell is the check box's target: a narrow column is hard enough to hit.
    if (mouse->button() != Qt::LeftButton || !option.rect.contains(mouse->position().toPoint())) {
      return false;
    }
    const bool checked = index.data(Qt::CheckStateRole).toInt() == Qt::Checked;
    return model->setData(index, checked ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
  }
  return event->type() == QEvent::MouseButtonDblClick;
}

bool GridDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                             const QModelIndex& index) {
  if (event == nullptr || event->type() != QEvent::ToolTip || m_model.isCheckColumn(index.column())) {
    return QStyledItemDelegate::helpEvent(event, view, option, index);
  }
  QStyleOptionViewItem opt = option;
  initStyleOption(&opt, index);
  const bool cut = sizeHint(opt, index).width() > option.rect.width();
  if (cut && !opt.text.isEmpty()) {
    QToolTip::showText(event->globalPos(), opt.text, view);
  } else {
    QToolTip::hideText();
  }
  return true;
}

// ===== table ========================================================================================================

GridTable::GridTable(Grid& grid, QWidget* parent) : QTableView(parent), m_grid(&grid) {
  setObjectName(grid.name() + (grid.index() >= 0 ? QString::number(grid.index()) : QString()));
  m_model = new GridModel(grid, this);
  setModel(m_model);
  setItemDelegate(new GridDelegate(*m_model, this));
  setSelectionBehavior(QAbstractItemView::SelectRows);
  setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                  QAbstractItemView::AnyKeyPressed);
  setVerticalScrollMode(QAbstractItemView::ScrollPerItem);
  setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  setAlternatingRowColors(true);
  setWordWrap(false);
  setTabKeyNavigation(false);  // Tab leaves the list for the next control, in the screen's keyboard order
  setCornerButtonEnabled(false);
  verticalHeader()->hide();
  verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
  verticalHeader()->setMinimumSectionSize(fontMetrics().height() + 4);
  horizontalHeader()->setHighlightSections(false);
  horizontalHeader()->setSectionsClickable(false);
  horizontalHeader()->setStretchLastSection(true);
  horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);

  connect(&grid, &Grid::selectionChanged, this, &GridTable::showSelection);
  connect(&grid, &Grid::currentRowChanged, this, &GridTable::showCurrentRow);
  connect(&grid, &Grid::firstVisibleRowChanged, this, &GridTable::showFirstVisibleRow);
  connect(&grid, &Grid::headerChanged, this, &GridTable::showColumns);
  connect(&grid, &Grid::redrawChanged, this, [this](bool redraw) {
    viewport()->setUpdatesEnabled(redraw);
    if (redraw) {
      viewport()->update();
    }
  });
  connect(m_model, &QAbstractItemModel::modelReset, this, [this] {
    showColumns();
    showSelection();
    if (m_grid) {
      showFirstVisibleRow(m_grid->firstVisibleRow());
    }
    sizeColumns();
  });
  connect(m_model, &QAbstractItemModel::rowsInserted, this, [this](const QModelIndex&, int first, int) {
    if (first < kSampledRows) {
      queueSizing(true);
    }
  });
  horizontalHeader()->viewport()->installEventFilter(this);
  connect(horizontalHeader(), &QHeaderView::sectionResized, this,
          [this](int column, int, int newWidth) { sectionResized(column, newWidth); });
  showColumns();
  showSelection();
}

Grid* GridTable::grid() const { return m_grid.data(); }

QItemSelectionModel::SelectionFlags GridTable::selectionCommand(const QModelIndex&, const QEvent*) const {
  // The grid decides the selection (userClickRow); the view only shows it.
  return QItemSelectionModel::NoUpdate;
}

void GridTable::mousePressEvent(QMouseEvent* event) {
  QTableView::mousePressEvent(event);
  if (!m_grid || event->button() != Qt::LeftButton) {
    return;
  }
  const QModelIndex index = indexAt(event->position().toPoint());
  Grid::ClickKind kind = Grid::ClickKind::Replace;
  if (event->modifiers() & Qt::ControlModifier) {
    kind = Grid::ClickKind::Toggle;
  } else if (event->modifiers() & Qt::ShiftModifier) {
    kind = Grid::ClickKind::Extend;
  }
  m_grid->userClickRow(index.isValid() ? index.row() : -1, kind);
}

void GridTable::mouseDoubleClickEvent(QMouseEvent* event) {
  QTableView::mouseDoubleClickEvent(event);
  const QModelIndex index = indexAt(event->position().toPoint());
  if (!m_grid || event->button() != Qt::LeftButton || !index.isValid() ||
      state() == QAbstractItemView::EditingState) {
    return;
  }
  // A cell the person can change keeps its double click for editing.
  if (index.flags() & (Qt::ItemIsEditable | Qt::ItemIsUserCheckable)) {
    return;
  }
  activateRow(index.row());
}

void GridTable::activateRow(int row) {
  if (!m_grid || !m_grid->isEffectivelyEnabled()) {
    return;
  }
  if (m_grid->selectedRows() != QList<int>{row}) {
    m_grid->userClickRow(row);
  }
  Q_EMIT rowActivated(row);
}

void GridTable::keyPressEvent(QKeyEvent* event) {
  if (!m_grid || state() == QAbstractItemView::EditingState) {
    QTableView::keyPressEvent(event);
    return;
  }
  const QModelIndex current = currentIndex();
  if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && current.isValid()) {
    // Enter opens the row; it does not also reach the dialog's default button.
    activateRow(current.row());
    event->accept();
    return;
  }
  if (event->key() == Qt::Key_Space && current.isValid()) {
    if (m_model->isCheckColumn(current.column()) && (current.flags() & Qt::ItemIsUserCheckable)) {
      const bool checked = current.data(Qt::CheckStateRole).toInt() == Qt::Checked;
      m_model->setData(current, checked ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
    } else {
      m_grid->userClickRow(current.row(), (event->modifiers() & Qt::ControlModifier) ? Grid::ClickKind::Toggle
                                                                                     : Grid::ClickKind::Replace);
    }
    event->accept();
    return;
  }
  const int before = current.row();
  QTableView::keyPressEvent(event);
  const int after = currentIndex().row();
  const bool moved = after >= 0 && after != before;
  switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Home:
    case Qt::Key_End:
      // Moving with the keyboard chooses the row moved to, as a click would (Ctrl moves without choosing).
      if (moved && !(event->modifiers() & Qt::ControlModifier)) {
        m_grid->userClickRow(after, (event->modifiers() & Qt::ShiftModifier) ? Grid::ClickKind::Extend
                                                                             : Grid::ClickKind::Replace);
      }
      break;
    default:
      break;
  }
}

void GridTable::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
  QTableView::currentChanged(current, previous);
  if (!m_syncing && m_grid && current.isValid() && current.row() != previous.row()) {
    m_grid->userSetCurrentRow(current.row());
  }
}

void GridTable::focusInEvent(QFocusEvent* event) {
  QTableView::focusInEvent(event);
  if (m_grid) {
    m_grid->userFocusIn();
  }
}

void GridTable::focusOutEvent(QFocusEvent* event) {
  QTableView::focusOutEvent(event);
  // Editing a cell moves the focus into the cell's editor: the person is still in the grid.
  const QWidget* now = QApplication::focusWidget();
  if (m_grid && (now == nullptr || !isAncestorOf(now))) {
    m_grid->userFocusOut();
  }
}

void GridTable::scrollContentsBy(int dx, int dy) {
  QTableView::scrollContentsBy(dx, dy);
  if (!m_syncing && m_grid && dy != 0) {
    m_grid->userScrolled(verticalScrollBar()->value());
  }
}

void GridTable::showSelection() {
  if (!m_grid || selectionModel() == nullptr) {
    return;
  }
  const bool wasSyncing = std::exchange(m_syncing, true);
  const int rows = m_model->rowCount();
  const int lastColumn = m_model->columnCount() - 1;
  QItemSelection selection;
  if (lastColumn >= 0) {
    // Runs of neighbouring rows make one range each, so a large selection stays cheap to draw.
    const QList<int> selected = m_grid->selectedRows();
    int start = -1;
    int previous = -2;
    const auto close = [&] {
      if (start >= 0) {
        selection.select(m_model->index(start, 0), m_model->index(previous, lastColumn));
      }
    };
    for (const int row : selected) {
      if (row >= rows) {
        break;
      }
      if (row != previous + 1) {
        close();
        start = row;
      }
      previous = row;
    }
    close();
  }
  selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
  m_syncing = wasSyncing;
}

void GridTable::showCurrentRow(int row) {
  if (selectionModel() == nullptr || row < 0 || row >= m_model->rowCount()) {
    return;
  }
  if (currentIndex().row() == row) {
    return;
  }
  const bool wasSyncing = std::exchange(m_syncing, true);
  const int column = currentIndex().isValid() ? currentIndex().column() : 0;
  selectionModel()->setCurrentIndex(m_model->index(row, column), QItemSelectionModel::NoUpdate);
  m_syncing = wasSyncing;
}

void GridTable::showFirstVisibleRow(int row) {
  if (verticalScrollBar()->value() == row) {
    return;
  }
  const bool wasSyncing = std::exchange(m_syncing, true);
  verticalScrollBar()->setValue(row);
  m_syncing = wasSyncing;
}

void GridTable::showColumns() {
  if (!m_grid) {
    return;
  }
  const int columns = m_model->columnCount();
  for (int c = 0; c < columns; ++c) {
    const platform::GridColumn& column = m_grid->column(c);
    setColumnHidden(c, !column.isVisible());
    if (column.width() > 0) {
      setColumnWidth(c, column.width());
    }
  }
  switch (m_grid->selectionMode()) {
    case Grid::SelectionMode::None:
      setSelectionMode(QAbstractItemView::NoSelection);
      break;
    case Grid::SelectionMode::Single:
      setSelectionMode(QAbstractItemView::SingleSelection);
      break;
    case Grid::SelectionMode::Multi:
      setSelectionMode(QAbstractItemView::ExtendedSelection);
      break;
  }
  // Captions, fonts and visibility change what the columns want.
  queueSizing(true);
}

// --- column widths ------------------------------------------------------------------------------------------------

QString GridTable::settingsGroup() const {
  QString screen;
  const QString own = kViewPrefix + objectName();
  for (const QWidget* widget = parentWidget(); widget != nullptr; widget = widget->parentWidget()) {
    const QString name = widget->objectName();
    if (name.startsWith(kViewPrefix) && name != own) {
      screen = name.mid(kViewPrefix.size());
      break;
    }
  }
  return kSettingsRoot + (screen.isEmpty() ? QString() : screen + u'/') + objectName();
}

int GridTable::lastVisibleColumn() const {
  const QHeaderView* header = horizontalHeader();
  for (int visual = header->count() - 1; visual >= 0; --visual) {
    const int logical = header->logicalIndex(visual);
    if (!header->isSectionHidden(logical)) {
      return logical;
    }
  }
  return -1;
}

void GridTable::sizeColumns() {
  measureColumns();
  fitColumns();
}

void GridTable::queueSizing(bool measure) {
  m_measureQueued = m_measureQueued || measure;
  if (std::exchange(m_sizingQueued, true)) {
    return;
  }
  QTimer::singleShot(0, this, [this] {
    m_sizingQueued = false;
    if (std::exchange(m_measureQueued, false)) {
      measureColumns();
    }
    fitColumns();
  });
}

void GridTable::measureColumns() {
  if (!m_grid) {
    return;
  }
  const int columns = m_model->columnCount();
  const int rows = qMin(m_model->rowCount(), kSampledRows);
  // A new layout is measured afresh; later the wanted widths only grow with what arrives, so that the list does
  // not jump narrower when another account's rows replace these.
  const bool fresh = std::exchange(m_measuredColumns, columns) != columns;
  if (fresh) {
    m_wanted = QList<int>(columns, 0);
    m_heading = QList<int>(columns, 0);
  }
  for (int c = 0; c < columns; ++c) {
    const platform::GridColumn& column = m_grid->column(c);
    if (!column.isVisible() || column.width() > 0) {
      continue;
    }
    int heading = QFontMetrics(m_grid->headFont(c)).horizontalAdvance(column.caption()) + 16;
    int width = heading;
    if (m_model->isCheckColumn(c)) {
      heading = qMax(heading, kCheckWidth);
      width = heading;
    } else {
      const QFontMetrics cells(m_grid->cellFont(c));
      for (int r = 0; r < rows; ++r) {
        width = qMax(width, cells.horizontalAdvance(m_model->displayText(r, c)) + 14);
      }
    }
    m_heading[c] = heading;
    m_wanted[c] = qMax(qMin(width, kMaxAutoWidth), fresh ? 0 : m_wanted[c]);
  }
}

void GridTable::fitColumns() {
  if (!m_grid || !isVisible()) {
    return;  // the room is known once the list is laid out on screen
  }
  loadKeptWidths();
  const int columns = m_model->columnCount();
  if (m_wanted.size() != columns) {
    measureColumns();
  }
  int room = viewport()->width();
  m_fittedWidth = room;
  QList<int> sized;
  QList<int> wanted;
  QList<int> least;
  const bool wasSizing = std::exchange(m_sizing, true);
  for (int c = 0; c < columns; ++c) {
    const platform::GridColumn& column = m_grid->column(c);
    if (!column.isVisible()) {
      continue;
    }
    if (column.width() > 0) {
      room -= column.width();
    } else if (const auto kept = m_kept.constFind(column.name()); kept != m_kept.constEnd()) {
      setColumnWidth(c, kept.value());
      room -= kept.value();
    } else {
      sized.append(c);
      wanted.append(qMax(m_wanted[c], m_heading[c]));
      least.append(m_heading[c]);
    }
  }
  if (!sized.isEmpty()) {
    const QList<int> widths = fitWithin(wanted, least, room);
    for (qsizetype i = 0; i < sized.size(); ++i) {
      setColumnWidth(sized[i], widths[i]);
    }
  }
  m_sizing = wasSizing;
}

void GridTable::loadKeptWidths() {
  if (std::exchange(m_keptLoaded, true)) {
    return;
  }
  QSettings settings;
  settings.beginGroup(settingsGroup());
  for (const QString& name : settings.childKeys()) {
    bool ok = false;
    const int width = settings.value(name).toInt(&ok);
    if (ok && width > 0) {
      m_kept.insert(name, width);
    }
  }
}

void GridTable::sectionResized(int column, int newWidth) {
  // Only the person's own drag is kept; the last column stretching to fill the list is not theirs.
  if (m_sizing || !m_headingPressed || !m_grid || column == lastVisibleColumn() || newWidth <= 0) {
    return;
  }
  const QString name = m_grid->column(column).name();
  if (name.isEmpty()) {
    return;
  }
  loadKeptWidths();
  m_kept.insert(name, newWidth);
  QSettings().setValue(settingsGroup() + u'/' + name, newWidth);
}

bool GridTable::viewportEvent(QEvent* event) {
  if (event->type() == QEvent::Resize && viewport()->width() != m_fittedWidth) {
    queueSizing(false);
  }
  return QTableView::viewportEvent(event);
}

bool GridTable::eventFilter(QObject* watched, QEvent* event) {
  if (watched == horizontalHeader()->viewport()) {
    switch (event->type()) {
      case QEvent::MouseButtonPress:
      case QEvent::MouseButtonDblClick:
        m_headingPressed = true;
        break;
      case QEvent::MouseButtonRelease:
        m_headingPressed = false;
        break;
      default:
        break;
    }
  }
  return QTableView::eventFilter(watched, event);
}

// ===== the widget ===================================================================================================

GridView::GridView(Grid& grid, QWidget* parent) : QWidget(parent), m_grid(&grid) {
  setObjectName(QStringLiteral("view:") + grid.name() + (grid.index() >= 0 ? QString::number(grid.index()) : QString()));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(4);
  m_caption = new QLabel(this);
  m_caption->setTextFormat(Qt::PlainText);
  m_table = new GridTable(grid, this);
  m_caption->setBuddy(m_table);
  layout->addWidget(m_caption);
  layout->addWidget(m_table, 1);
  // Enabled, visible and focus requests of the grid apply to the whole widget; the table takes the focus.
  setFocusProxy(m_table);
  bindControl(grid, *this);
  connect(&grid, &Grid::headerChanged, this, &GridView::showCaption);
  showCaption();
  sizeColumns();
}

void GridView::showCaption() {
  if (!m_grid) {
    return;
  }
  // The caption is drawn in the grid's own font, and always bold: it names the list, as a heading does.
  QFont font = m_grid->font();
  font.setBold(true);
  m_caption->setFont(font);
  m_caption->setText(m_grid->caption());
  m_caption->setVisible(!m_grid->caption().isEmpty());
}

void GridView::sizeColumns() { m_table->sizeColumns(); }

void GridView::openRowsWith(platform::Button& button) {
  connect(m_table, &GridTable::rowActivated, &button, [&button] { button.click(); });
}

}  // namespace adjustacc::desktop
