#pragma once
// The columns of a grid and the named style sets they draw with.
//
// Columns are addressed by index or by name (case-insensitive; the first column of a name wins). A name the
// grid lacks gives a stand-in column (isNull()) whose writes do nothing and whose reads give null: screens
// that tune columns a grid does not have (locking "REMOVE" on a grid that has "REINSTATE") go on without an
// error. A column's values are read and written through its grid (see grid.h).

#include <QColor>
#include <QFont>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace adjustacc::platform {

class Grid;
class GridColumns;

// A named style set ("UNBOLD"): a font weight and colours that columns give their cells or headings.
// What it leaves unset comes from the grid's own font and the view's colours.
class StyleSet {
public:
  QString name() const { return m_name; }
  std::optional<bool> bold() const { return m_bold; }
  void setBold(bool bold);
  QColor foreColor() const { return m_foreColor; }
  void setForeColor(const QColor& color);
  QColor backColor() const { return m_backColor; }
  void setBackColor(const QColor& color);
  // The grid's font with this style's weight applied.
  QFont resolve(const QFont& gridFont) const;

private:
  friend class GridColumns;
  StyleSet(Grid* grid, QString name) : m_grid(grid), m_name(std::move(name)) {}
  Grid* m_grid;
  QString m_name;
  std::optional<bool> m_bold;
  QColor m_foreColor;
  QColor m_backColor;
};

class GridColumn {
public:
  // How the view presents the cells: as text, as money ("$#,##0.00", right-aligned) or as a check box
  // (checked when the cell holds "-1").
  enum class Display { Text, Currency, Check };
  // A cell's text as a column of that kind shows it: nothing for an empty cell or a check box, an amount in
  // the money format (a text that is no amount as it stands).
  static QString shownText(const QString& text, Display display);

  // The stand-in for a column the grid lacks.
  bool isNull() const { return m_position < 0; }
  int position() const { return m_position; }

  QString caption() const { return m_caption; }
  void setCaption(const QString& caption);
  QString name() const { return m_name; }
  void setName(const QString& name);
  // Field of the bound record set; empty (or a field the set lacks) makes the column unbound.
  QString dataField() const { return m_dataField; }
  void setDataField(const QString& field);

  // Locked: the person cannot change the cells; the logic still can.
  bool isLocked() const { return m_locked; }
  void setLocked(bool locked);
  bool isVisible() const { return m_visible; }
  void setVisible(bool visible);
  // Width for the view; 0 lets the view choose.
  int width() const { return m_width; }
  void setWidth(int width);

  Display display() const { return m_display; }
  void setDisplay(Display display);
  bool isCheck() const { return m_display == Display::Check; }
  // Explicit alignment, or the one that suits the display (money right, check centred, text left).
  Qt::Alignment alignment() const;
  void setAlignment(Qt::Alignment alignment);

  // Style sets by name for the cells and the heading; empty means the grid's own font.
  QString styleSet() const { return m_styleSet; }
  void setStyleSet(const QString& name);
  QString headStyleSet() const { return m_headStyleSet; }
  void setHeadStyleSet(const QString& name);

  // The drop-down list the person picks the cell's value from; empty means free text.
  QStringList dropDownItems() const { return m_dropDown; }
  bool hasDropDown() const { return !m_dropDown.isEmpty(); }
  void addDropDownItem(const QString& item);
  void setDropDownItems(const QStringList& items);
  void clearDropDown();
  // The list's own spelling of an item, matched ignoring case; empty when the list lacks it.
  QString dropDownItem(const QString& item) const;

  // --- values ----------------------------------------------------------------------------------------
  // At the grid's current row (inside RowLoaded: at the row being loaded). Null at no row.
  QVariant value() const;
  // value() as text; empty for null.
  QString text() const;
  // Writes at the same row: inside RowLoaded a display value; otherwise the row's value (bound columns
  // write the record set at once). Returns false when there is no row or the write was refused.
  bool setValue(const QVariant& value);
  // At any visible row.
  QVariant cellValue(int row) const;

private:
  friend class Grid;
  friend class GridColumns;
  // What a change of the column means to its grid: a heading to draw again, a field to read from, cells to
  // present again.
  enum class Touch { Header, Field, Cells };
  GridColumn(Grid* grid, int position) : m_grid(grid), m_position(position) {}
  void touched(Touch touch);

  Grid* m_grid;
  int m_position;
  QString m_caption;
  QString m_name;
  QString m_dataField;
  bool m_locked = false;
  bool m_visible = true;
  int m_width = 0;
  Display m_display = Display::Text;
  std::optional<Qt::Alignment> m_alignment;
  QString m_styleSet;
  QString m_headStyleSet;
  QStringList m_dropDown;
};

// The columns of one grid in order, the stand-in column, and the grid's style sets.
class GridColumns {
public:
  explicit GridColumns(Grid& grid);
  ~GridColumns();
  GridColumns(const GridColumns&) = delete;
  GridColumns& operator=(const GridColumns&) = delete;

  int count() const { return static_cast<int>(m_columns.size()); }
  // Null outside the columns.
  GridColumn* at(int index) const {
    return index >= 0 && index < count() ? m_columns[static_cast<std::size_t>(index)].get() : nullptr;
  }
  GridColumn& nullColumn() const { return *m_null; }
  int indexOf(const QString& name) const;  // -1 when absent
  // Appends a column; the caption defaults to the name.
  GridColumn& append(const QString& name, const QString& caption, const QString& dataField);
  void clear();

  // Created (with nothing set) the first time it is asked for.
  StyleSet& styleSet(const QString& name);
  const StyleSet* findStyleSet(const QString& name) const;  // null for an empty or unknown name
  // A column's cell and heading fonts and cell colours, from its style sets; invalid colours mean the view's.
  QFont cellFont(int column, const QFont& gridFont) const;
  QFont headFont(int column, const QFont& gridFont) const;
  QColor cellForeColor(int column) const;
  QColor cellBackColor(int column) const;

private:
  const StyleSet* cellStyle(int column) const;

  Grid& m_grid;
  std::vector<std::unique_ptr<StyleSet>> m_styleSets;
  std::vector<std::unique_ptr<GridColumn>> m_columns;
  // Where a name was last found, as the caller spelled it: screens read the same few columns by name on every
  // row. A hit is checked against the column's name, so a renamed column is looked for again.
  mutable QHash<QString, int> m_found;
  std::unique_ptr<GridColumn> m_null;
};

}  // namespace adjustacc::platform
