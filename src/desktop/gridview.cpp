#include "gridview.h"

#include "binders.h"
#include "gridmodel.h"

#include "platform/datacontrol.h"
#include "platform/grid.h"

#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QVBoxLayout>

#include <utility>

namespace adjustacc::desktop {

using platform::Grid;

namespace {

// Widest a column grows by itself; the person may widen it further.
constexpr int kMaxAutoWidth = 320;
// Rows sampled to size the columns: the first screenful is what the person judges the list by.
constexpr int kSampledRows = 60;

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
  });
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

void GridTable::keyPressEvent(QKeyEvent* event) {
  if (!m_grid || state() == QAbstractItemView::EditingState) {
    QTableView::keyPressEvent(event);
    return;
  }
  const QModelIndex current = currentIndex();
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
  connect(m_table->gridModel(), &QAbstractItemModel::modelReset, this, &GridView::sizeColumns);
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

void GridView::sizeColumns() {
  if (!m_grid) {
    return;
  }
  GridModel* model = m_table->gridModel();
  const int rows = qMin(model->rowCount(), kSampledRows);
  // A new layout is sized afresh; later the columns only grow with what arrives, never undoing the person's
  // widening.
  const bool fresh = std::exchange(m_sizedColumns, model->columnCount()) != model->columnCount();
  for (int c = 0; c < model->columnCount(); ++c) {
    const platform::GridColumn& column = m_grid->column(c);
    if (!column.isVisible() || column.width() > 0) {
      continue;
    }
    int width = QFontMetrics(m_grid->headFont(c)).horizontalAdvance(column.caption()) + 16;
    if (column.display() == platform::GridColumn::Display::Check) {
      width = qMax(width, 40);
    } else {
      const QFontMetrics cells(m_grid->cellFont(c));
      for (int r = 0; r < rows; ++r) {
        width = qMax(width, cells.horizontalAdvance(m_grid->displayText(r, c)) + 14);
      }
    }
    width = qMin(width, kMaxAutoWidth);
    if (fresh || width > m_table->columnWidth(c)) {
      m_table->setColumnWidth(c, width);
    }
  }
}

}  // namespace adjustacc::desktop
