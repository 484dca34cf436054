#include "platform/gridcolumns.h"

#include "platform/currency.h"
#include "platform/grid.h"

#include <algorithm>

namespace adjustacc::platform {

// ===== StyleSet ====================================================================================

void StyleSet::setBold(bool bold) {
  if (m_bold == bold) {
    return;
  }
  m_bold = bold;
  m_grid->styleTouched();
}

void StyleSet::setForeColor(const QColor& color) {
  if (m_foreColor == color) {
    return;
  }
  m_foreColor = color;
  m_grid->styleTouched();
}

void StyleSet::setBackColor(const QColor& color) {
  if (m_backColor == color) {
    return;
  }
  m_backColor = color;
  m_grid->styleTouched();
}

QFont StyleSet::resolve(const QFont& gridFont) const {
  QFont font = gridFont;
  if (m_bold) {
    font.setBold(*m_bold);
  }
  return font;
}

// ===== GridColumn ==================================================================================

void GridColumn::touched(Touch touch) {
  m_grid->columnTouched(touch);
}

void GridColumn::setCaption(const QString& caption) {
  if (isNull() || m_caption == caption) {
    return;
  }
  m_caption = caption;
  touched(Touch::Header);
}

void GridColumn::setName(const QString& name) {
  if (isNull() || m_name == name) {
    return;
  }
  m_name = name;
  touched(Touch::Header);
}

void GridColumn::setDataField(const QString& field) {
  if (isNull() || m_dataField == field) {
    return;
  }
  m_dataField = field;
  touched(Touch::Field);
}

void GridColumn::setLocked(bool locked) {
  if (isNull() || m_locked == locked) {
    return;
  }
  m_locked = locked;
  touched(Touch::Header);
}

void GridColumn::setVisible(bool visible) {
  if (isNull() || m_visible == visible) {
    return;
  }
  m_visible = visible;
  touched(Touch::Header);
}

void GridColumn::setWidth(int width) {
  if (isNull() || m_width == width) {
    return;
  }
  m_width = qMax(0, width);
  touched(Touch::Header);
}

void GridColumn::setDisplay(Display display) {
  if (isNull() || m_display == display) {
    return;
  }
  m_display = display;
  touched(Touch::Cells);
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
  touched(Touch::Header);
}

void GridColumn::setStyleSet(const QString& name) {
  if (isNull() || m_styleSet == name) {
    return;
  }
  m_styleSet = name;
  touched(Touch::Header);
}

void GridColumn::setHeadStyleSet(const QString& name) {
  if (isNull() || m_headStyleSet == name) {
    return;
  }
  m_headStyleSet = name;
  touched(Touch::Header);
}

void GridColumn::addDropDownItem(const QString& item) {
  if (isNull()) {
    return;
  }
  m_dropDown.append(item);
  touched(Touch::Header);
}

void GridColumn::setDropDownItems(const QStringList& items) {
  if (isNull() || m_dropDown == items) {
    return;
  }
  m_dropDown = items;
  touched(Touch::Header);
}

void GridColumn::clearDropDown() {
  setDropDownItems({});
}

QString GridColumn::dropDownItem(const QString& item) const {
  for (const QString& listed : m_dropDown) {
    if (listed.compare(item, Qt::CaseInsensitive) == 0) {
      return listed;
    }
  }
  return {};
}

QVariant GridColumn::value() const {
  if (isNull()) {
    return {};
  }
  return m_grid->cellValue(m_grid->contextRow(), m_position);
}

QString GridColumn::shownText(const QString& text, Display display) {
  switch (display) {
    case Display::Check:
      return {};
    case Display::Currency: {
      if (text.trimmed().isEmpty()) {
        return {};
      }
      const auto amount = Currency::parse(text);
      return amount ? amount->toDisplayText() : text;
    }
    case Display::Text:
      break;
  }
  return text;
}

QString GridColumn::text() const {
  return isNull() ? QString() : m_grid->cellText(m_grid->contextRow(), m_position);
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

// ===== GridColumns =================================================================================

GridColumns::GridColumns(Grid& grid) : m_grid(grid), m_null(new GridColumn(&grid, -1)) {}

GridColumns::~GridColumns() = default;

int GridColumns::indexOf(const QString& name) const {
  const auto matches = [&](int i) {
    return m_columns[static_cast<std::size_t>(i)]->name().compare(name, Qt::CaseInsensitive) == 0;
  };
  if (const auto found = m_found.constFind(name); found != m_found.constEnd() && *found < count() && matches(*found)) {
    return *found;
  }
  for (int i = 0; i < count(); ++i) {
    if (matches(i)) {
      m_found.insert(name, i);
      return i;
    }
  }
  return -1;
}

GridColumn& GridColumns::append(const QString& name, const QString& caption, const QString& dataField) {
  auto column = std::unique_ptr<GridColumn>(new GridColumn(&m_grid, count()));
  column->m_name = name;
  column->m_caption = caption.isNull() ? name : caption;
  column->m_dataField = dataField;
  m_columns.push_back(std::move(column));
  return *m_columns.back();
}

void GridColumns::clear() {
  m_columns.clear();
  m_found.clear();
}

StyleSet& GridColumns::styleSet(const QString& name) {
  for (const auto& style : m_styleSets) {
    if (style->name().compare(name, Qt::CaseInsensitive) == 0) {
      return *style;
    }
  }
  m_styleSets.push_back(std::unique_ptr<StyleSet>(new StyleSet(&m_grid, name)));
  return *m_styleSets.back();
}

const StyleSet* GridColumns::findStyleSet(const QString& name) const {
  if (name.isEmpty()) {
    return nullptr;
  }
  const auto found = std::find_if(m_styleSets.begin(), m_styleSets.end(), [&](const auto& style) {
    return style->name().compare(name, Qt::CaseInsensitive) == 0;
  });
  return found == m_styleSets.end() ? nullptr : found->get();
}

const StyleSet* GridColumns::cellStyle(int column) const {
  const GridColumn* c = at(column);
  return c != nullptr ? findStyleSet(c->styleSet()) : nullptr;
}

QFont GridColumns::cellFont(int column, const QFont& gridFont) const {
  const StyleSet* style = cellStyle(column);
  return style ? style->resolve(gridFont) : gridFont;
}

QFont GridColumns::headFont(int column, const QFont& gridFont) const {
  const GridColumn* c = at(column);
  const StyleSet* style = c != nullptr ? findStyleSet(c->headStyleSet()) : nullptr;
  return style ? style->resolve(gridFont) : gridFont;
}

QColor GridColumns::cellForeColor(int column) const {
  const StyleSet* style = cellStyle(column);
  return style ? style->foreColor() : QColor();
}

QColor GridColumns::cellBackColor(int column) const {
  const StyleSet* style = cellStyle(column);
  return style ? style->backColor() : QColor();
}

}  // namespace adjustacc::platform
