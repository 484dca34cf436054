#pragma once
// A record set: named, typed fields and rows of nullable text values, with a cursor, bookmarks,
// a sort text and a filter text in the classic data-access syntax.
//
// Values are held as text, as the host sends them; a value can be null, and null is not the empty text.
// Each field has a type that says how its values compare when sorting and filtering: numbers as numbers,
// dates as dates, text as text (case-insensitively, as the classic data access compares it).
//
// Copies share their row storage until one of them writes (implicit sharing), so a reply's sections
// can be handed around and bound to lists cheaply. The cursor, sort and filter belong to each copy.

#include <QList>
#include <QString>
#include <QVariant>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace adjustacc::messaging {

enum class FieldType {
  Text,      // compared as text, case-insensitively
  Number,    // integers and money ("1234.50", "-3"); compared numerically
  Date,      // "yyyy-mm-dd" (also "mm-dd-yyyy" and "mm/dd/yyyy" as screens write them)
  DateTime,  // a date with a time ("yyyy-mm-dd HH:MM[:SS]" or ISO 8601 with "T")
};

struct Field {
  QString name;
  FieldType type = FieldType::Text;
  friend bool operator==(const Field&, const Field&) = default;
};

// A sort or filter text that could not be read: which text, where (0-based character position), and why.
struct TextError {
  QString text;
  qsizetype position = 0;
  QString reason;
  // "Filter text \"ACTION = \" is not valid at position 9: a value is expected"
  QString message(const QString& what) const;
};

// Stable identity of a row inside one record set (and its copies); survives sorting and filtering.
using Bookmark = std::int64_t;
inline constexpr Bookmark kNoBookmark = -1;

namespace detail {
struct Data;
}

class RecordSet {
public:
  RecordSet();                              // closed, no fields
  explicit RecordSet(QList<Field> fields);  // open, no rows
  RecordSet(const RecordSet&);
  RecordSet(RecordSet&&) noexcept;
  RecordSet& operator=(const RecordSet&);
  RecordSet& operator=(RecordSet&&) noexcept;
  ~RecordSet();

  // --- layout -----------------------------------------------------------------------------------
  const QList<Field>& fields() const;
  int fieldCount() const;
  // Index of a field by name (case-insensitive), or -1.
  int fieldIndex(const QString& name) const;
  bool hasField(const QString& name) const { return fieldIndex(name) >= 0; }

  bool isOpen() const;
  // Closes the set: rows, sort and filter are dropped; the layout stays readable.
  void close();

  // --- rows in view order (after filter and sort) -------------------------------------------------
  // Number of rows the filter lets through (all rows when there is no filter).
  int recordCount() const;
  // Value at a visible row; a null QVariant for null, otherwise a QString.
  QVariant valueAt(int row, int field) const;
  QString textAt(int row, int field) const;  // the same as text; a null value as the empty text
  // Changes whenever a value or a row of the set changes, and differs between sets: what was derived from
  // the values (a list's texts) holds while the stamp does.
  std::uint64_t contentStamp() const;
  QVariant valueAt(int row, const QString& field) const;
  bool isNullAt(int row, int field) const;
  // The value's text as the set keeps it (UTF-8), without making a QString; nothing for null (and for a row
  // or field that is not there). The bytes stay valid until the set is changed or destroyed.
  std::optional<std::string_view> utf8At(int row, int field) const;
  Bookmark bookmarkAt(int row) const;
  // Visible row of a bookmark, or -1 when the row is filtered out or deleted.
  int rowOfBookmark(Bookmark bookmark) const;

  // --- cursor ---------------------------------------------------------------------------------------
  void moveFirst();
  void moveLast();
  void moveNext();
  void movePrevious();
  bool eof() const;  // past the last visible row (or no rows)
  bool bof() const;  // before the first visible row (or no rows)
  // 0-based visible position of the current row; -1 at bof/eof.
  int absolutePosition() const;
  void setAbsolutePosition(int row);
  Bookmark bookmark() const;             // of the current row; kNoBookmark at bof/eof
  bool setBookmark(Bookmark bookmark);   // false (cursor unchanged) when the row is not visible

  // Current-row access; reading at bof/eof gives a null QVariant.
  QVariant value(int field) const;
  QVariant value(const QString& field) const;

  // --- changes ----------------------------------------------------------------------------------------
  // Appends a row (values in field order; missing values are null, a null QVariant is null, anything else
  // is stored as its text) and makes it current. Returns its bookmark.
  Bookmark addNew(const QList<QVariant>& values = {});
  // Writes a value in the current row; false at bof/eof or for an unknown field.
  bool update(int field, const QVariant& value);
  bool update(const QString& field, const QVariant& value);
  bool updateAt(Bookmark bookmark, int field, const QVariant& value);
  // Deletes the current row; the cursor moves to the next visible row (or eof).
  bool deleteCurrent();

  // Reserve room for rows that are about to be appended (used by reply decoding).
  void reserve(int rows);

  // --- sort and filter -------------------------------------------------------------------------------
  // "CUST_ID,ACCT_RCVBL_NBR", "ASSMT_CD ASC, ASSMT_ISSUE_DT desc". Stable; nulls first (with DESC too); the
  // empty text restores insertion order. Orders the rows in view without applying the filter again; the
  // current row stays current. A bad text leaves everything as it was and is reported.
  // The rules in full: docs/recordset.md.
  std::optional<TextError> setSort(const QString& sortText);
  QString sort() const;

  // "ACTION <> null AND (AMT >= 10 OR NAME LIKE 'SM*')". The empty text clears the filter.
  // A bad text leaves everything as it was and is reported. The cursor goes to the first visible row.
  std::optional<TextError> setFilter(const QString& filterText);
  QString filter() const;

  // Grows whenever rows, values, the sort or the filter change.
  std::uint64_t revision() const;

  // --- change notification ------------------------------------------------------------------------------
  // A watcher of this object (not of its copies) is called after every change that moves revision(), once the
  // change is complete (cursor included), and after this object is assigned or moved from. Moving the cursor
  // is not a change. A watcher may stop watching while it is called; it must not destroy the set nor throw.
  using WatchId = std::uint64_t;
  WatchId watch(std::function<void()> watcher);
  void unwatch(WatchId id);

  // Bytes held by the row storage of this set, the comparison keys built so far included, and by this
  // copy's view (for memory checks); shared storage is counted in full.
  std::size_t storageBytes() const;

private:
  friend class RecordSetWriter;
  // The view's part of adding a physical row: at the end of the view, current.
  void rowAdded(std::uint32_t row);

  std::shared_ptr<detail::Data> d;  // shared row storage, copied before the first write
  struct View;
  std::unique_ptr<View> v;  // this copy's cursor, sort order and filter (null only once moved from)
  struct Watchers;
  std::unique_ptr<Watchers> watchers;  // of this object only: never copied nor moved along
  void notifyWatchers();
  void detach();
  const View& view() const;
  View& mutableView();
  std::uint32_t physicalRow(int row) const;  // 0xFFFFFFFF when not a visible row
  std::vector<std::uint32_t> visibleInPhysicalOrder() const;
  std::vector<std::uint32_t> liveRows() const;
  const std::vector<std::uint32_t>& orderedLiveRows();  // every live row in the sort's order
  std::vector<std::uint32_t> inSortOrder(const std::vector<std::uint32_t>& some);  // live rows, given ascending
  void setRows(std::vector<std::uint32_t> rows);
  int positionOf(Bookmark bookmark) const;  // like rowOfBookmark, without building the inverse
};

using RecordSetPtr = std::shared_ptr<RecordSet>;

// Fills a record set row by row, value by value, straight into its storage: for the large sets of replies
// (built from query results, or read from the wire) without a QVariant, a QString or a heap block per value.
//
//   RecordSetWriter writer(set);
//   writer.setText(0, name);  writer.setNumber(1, 42);  writer.setNull(2);
//   writer.appendRow();        // the row as addNew would add it; the writer is ready for the next one
//
// Values not set in a row are null. A value set twice keeps the last. Rows end up exactly as addNew of the
// same values stores them (a null QVariant as null, anything else as its text). Each value's text goes into
// the set's storage as it is set, and the row becomes visible with appendRow(); clearRow() or a row that can
// not be added takes the text back out. The writer holds the set by reference: use the set for nothing else
// while a row is half gathered (a row whose set was copied or replaced meanwhile is refused).
class RecordSetWriter {
public:
  explicit RecordSetWriter(RecordSet& set);
  ~RecordSetWriter();
  RecordSetWriter(const RecordSetWriter&) = delete;
  RecordSetWriter& operator=(const RecordSetWriter&) = delete;

  int fieldCount() const { return static_cast<int>(m_offsets.size()); }

  // A field out of range is a programming error: it is logged and the value dropped.
  void setNull(int field);
  void setText(int field, QStringView text);
  // Text already in UTF-8; the bytes must be valid UTF-8 (as a JSON reader or a database hands them over).
  void setUtf8(int field, std::string_view text);
  void setNumber(int field, qint64 value);  // as its decimal digits
  // As addNew stores a value: null for a null QVariant, otherwise its text.
  void setValue(int field, const QVariant& value);

  // Appends the gathered row at the end of the view and makes it current (as addNew). Returns its bookmark,
  // or kNoBookmark (logged) when the set is closed, full, or a field would hold too much text. Either way the
  // gathered values are dropped and the next row starts empty.
  Bookmark appendRow();
  // Drops the values gathered for the row.
  void clearRow();

private:
  friend class RecordSet;
  Bookmark append(const char* caller);

  bool checkField(int field) const {
    if (field >= 0 && field < fieldCount()) {
      return true;
    }
    warnField(field);
    return false;
  }
  void warnField(int field) const;
  // Gets the storage ready for a row (once per row); false when the row can not be added.
  bool startRow();
  bool rowStorageIntact() const;
  void refuse(const char* reason, int field = -1);
  void store(int field, std::string_view utf8);
  void putText(int field, QStringView text);
  void putNumber(int field, qint64 value);
  void forget(int field);
  // Takes the text of the row back out of the storage and starts the next row empty.
  void resetRow(bool cutText);

  enum class RowState { Empty, Open, Refused };
  RecordSet& m_set;
  RowState m_state = RowState::Empty;
  const detail::Data* m_data = nullptr;  // the storage the row's text went into
  const char* m_refusal = nullptr;       // why the row can not be added
  int m_refusedField = -1;
  std::vector<std::uint32_t> m_offsets;     // per field: where the row's text is, or none (null)
  std::vector<std::size_t> m_textStart;     // per field: how much text the column held when the row began
};

}  // namespace adjustacc::messaging
