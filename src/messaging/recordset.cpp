#include "recordset.h"

#include "recordset_query.h"
#include "recordset_storage.h"

#include <QDebug>
#include <QVarLengthArray>

#include <algorithm>
#include <bit>
#include <climits>
#include <cstring>
#include <numeric>

namespace adjustacc::messaging {

using detail::Data;

QString TextError::message(const QString& what) const {
  return QStringLiteral("%1 text \"%2\" is not valid at position %3: %4")
      .arg(what, text, QString::number(position), reason);
}

// The rows this copy shows, in order, and its cursor. While nothing is filtered, sorted or deleted the
// view is the physical order and holds no row list (`identity`).
struct RecordSet::View {
  bool identity = true;
  std::vector<std::uint32_t> rows;
  int pos = -1;  // -1: before the first row; count: past the last
  QString sortText;
  std::vector<detail::SortKey> sortKeys;
  QString filterText;
  std::shared_ptr<const detail::FilterNode> filter;
  std::uint64_t revision = 0;
  // Every live row in the sort's order, as the rows stood at `orderedStamp` (0: not made): what a filter
  // keeps its rows from, so that filtering a sorted set again and again does not sort it again.
  std::vector<std::uint32_t> ordered;
  std::uint64_t orderedStamp = 0;
  // Visible row of each physical row, built on demand for rowOfBookmark.
  mutable std::vector<std::uint32_t> inverse;
  mutable bool inverseValid = false;

  void changed() {
    ++revision;
    inverseValid = false;
    inverse.clear();
  }
};

struct RecordSet::Watchers {
  std::vector<std::pair<WatchId, std::function<void()>>> list;
  WatchId next = 1;
};

namespace {

const std::shared_ptr<Data>& closedData() {
  static const std::shared_ptr<Data> empty = std::make_shared<Data>();
  return empty;
}

constexpr std::uint32_t kNotVisible = 0xFFFFFFFFu;

std::optional<QByteArray> textOf(const QVariant& value) {
  if (value.isNull()) {
    return std::nullopt;
  }
  return value.toString().toUtf8();
}

}  // namespace

// --- construction ------------------------------------------------------------------------------------

RecordSet::RecordSet() : d(closedData()), v(std::make_unique<View>()) {}

RecordSet::RecordSet(QList<Field> fields)
    : d(std::make_shared<Data>(std::move(fields))), v(std::make_unique<View>()) {}

RecordSet::RecordSet(const RecordSet& other) : d(other.d), v(std::make_unique<View>(other.view())) {}

RecordSet::RecordSet(RecordSet&& other) noexcept : d(std::exchange(other.d, closedData())), v(std::move(other.v)) {
  other.notifyWatchers();
}

RecordSet& RecordSet::operator=(const RecordSet& other) {
  if (this != &other) {
    auto copy = std::make_unique<View>(other.view());
    d = other.d;
    v = std::move(copy);
    notifyWatchers();
  }
  return *this;
}

RecordSet& RecordSet::operator=(RecordSet&& other) noexcept {
  if (this != &other) {
    d = std::exchange(other.d, closedData());
    v = std::move(other.v);
    other.notifyWatchers();
    notifyWatchers();
  }
  return *this;
}

RecordSet::~RecordSet() = default;

const RecordSet::View& RecordSet::view() const {
  if (v) {
    return *v;
  }
  static const View empty;
  return empty;
}

RecordSet::View& RecordSet::mutableView() {
  if (!v) {
    v = std::make_unique<View>();
  }
  return *v;
}

void RecordSet::detach() {
  if (d.use_count() != 1) {
    d = std::make_shared<Data>(*d);
  }
}

// --- layout ------------------------------------------------------------------------------------------

const QList<Field>& RecordSet::fields() const { return d->fields; }

int RecordSet::fieldCount() const { return static_cast<int>(d->fields.size()); }

int RecordSet::fieldIndex(const QString& name) const {
  for (qsizetype i = 0; i < d->fields.size(); ++i) {
    if (d->fields[i].name.compare(name, Qt::CaseInsensitive) == 0) {
      return static_cast<int>(i);
    }
  }
  return -1;
}

bool RecordSet::isOpen() const { return d->open; }

void RecordSet::close() {
  auto closed = std::make_shared<Data>(d->fields);
  closed->open = false;
  d = std::move(closed);
  View& w = mutableView();
  const auto revision = w.revision;
  w = View();
  w.revision = revision;
  w.changed();
  notifyWatchers();
}

// --- rows in view order --------------------------------------------------------------------------------

int RecordSet::recordCount() const {
  const View& w = view();
  return static_cast<int>(w.identity ? d->rows : w.rows.size());
}

std::uint32_t RecordSet::physicalRow(int row) const {
  const View& w = view();
  if (row < 0 || row >= recordCount()) {
    return kNotVisible;
  }
  return w.identity ? static_cast<std::uint32_t>(row) : w.rows[static_cast<std::size_t>(row)];
}

QVariant RecordSet::valueAt(int row, int field) const {
  const std::uint32_t physical = physicalRow(row);
  if (physical == kNotVisible || field < 0 || field >= fieldCount()) {
    qWarning("RecordSet::valueAt: no row %d, field %d (%d rows, %d fields)", row, field, recordCount(),
             fieldCount());
    return {};
  }
  const auto& column = d->columns[static_cast<std::size_t>(field)];
  if (column.isNull(physical)) {
    return {};
  }
  const std::string_view text = column.text(physical);
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

std::uint64_t RecordSet::contentStamp() const { return d->stamp; }

QString RecordSet::textAt(int row, int field) const {
  const std::optional<std::string_view> text = utf8At(row, field);
  return text ? QString::fromUtf8(text->data(), static_cast<qsizetype>(text->size())) : QString();
}

QVariant RecordSet::valueAt(int row, const QString& field) const {
  const int index = fieldIndex(field);
  if (index < 0) {
    qWarning() << "RecordSet::valueAt: no field" << field;
    return {};
  }
  return valueAt(row, index);
}

std::optional<std::string_view> RecordSet::utf8At(int row, int field) const {
  const std::uint32_t physical = physicalRow(row);
  if (physical == kNotVisible || field < 0 || field >= fieldCount()) {
    return std::nullopt;
  }
  const auto& column = d->columns[static_cast<std::size_t>(field)];
  if (column.isNull(physical)) {
    return std::nullopt;
  }
  return column.text(physical);
}

bool RecordSet::isNullAt(int row, int field) const {
  const std::uint32_t physical = physicalRow(row);
  if (physical == kNotVisible || field < 0 || field >= fieldCount()) {
    return true;
  }
  return d->columns[static_cast<std::size_t>(field)].isNull(physical);
}

Bookmark RecordSet::bookmarkAt(int row) const {
  const std::uint32_t physical = physicalRow(row);
  return physical == kNotVisible ? kNoBookmark : static_cast<Bookmark>(physical);
}

int RecordSet::rowOfBookmark(Bookmark bookmark) const {
  if (bookmark < 0 || bookmark >= static_cast<Bookmark>(d->rows) ||
      d->isDeleted(static_cast<std::uint32_t>(bookmark))) {
    return -1;
  }
  const View& w = view();
  if (w.identity) {
    return static_cast<int>(bookmark);
  }
  if (!w.inverseValid) {
    w.inverse.assign(d->rows, kNotVisible);
    for (std::size_t i = 0; i < w.rows.size(); ++i) {
      w.inverse[w.rows[i]] = static_cast<std::uint32_t>(i);
    }
    w.inverseValid = true;
  }
  const std::uint32_t row = w.inverse[static_cast<std::size_t>(bookmark)];
  return row == kNotVisible ? -1 : static_cast<int>(row);
}

// --- cursor ------------------------------------------------------------------------------------------------

void RecordSet::moveFirst() { mutableView().pos = recordCount() > 0 ? 0 : -1; }

void RecordSet::moveLast() { mutableView().pos = recordCount() - 1; }

void RecordSet::moveNext() {
  View& w = mutableView();
  w.pos = std::min(w.pos + 1, recordCount());
}

void RecordSet::movePrevious() {
  View& w = mutableView();
  w.pos = std::max(w.pos - 1, -1);
}

bool RecordSet::eof() const { return recordCount() == 0 || view().pos >= recordCount(); }

bool RecordSet::bof() const { return recordCount() == 0 || view().pos < 0; }

int RecordSet::absolutePosition() const { return bof() || eof() ? -1 : view().pos; }

void RecordSet::setAbsolutePosition(int row) { mutableView().pos = std::clamp(row, -1, recordCount()); }

Bookmark RecordSet::bookmark() const { return bookmarkAt(absolutePosition()); }

bool RecordSet::setBookmark(Bookmark bookmark) {
  const int row = rowOfBookmark(bookmark);
  if (row < 0) {
    return false;
  }
  mutableView().pos = row;
  return true;
}

QVariant RecordSet::value(int field) const {
  const int row = absolutePosition();
  return row < 0 ? QVariant() : valueAt(row, field);
}

QVariant RecordSet::value(const QString& field) const {
  const int row = absolutePosition();
  return row < 0 ? QVariant() : valueAt(row, field);
}

// --- changes --------------------------------------------------------------------------------------------------

Bookmark RecordSet::addNew(const QList<QVariant>& values) {
  if (values.size() > fieldCount()) {
    qWarning("RecordSet::addNew: %lld values for %d fields; the extra values are dropped",
             static_cast<long long>(values.size()), fieldCount());
  }
  RecordSetWriter writer(*this);
  const int given = static_cast<int>(std::min<qsizetype>(values.size(), fieldCount()));
  for (int f = 0; f < given; ++f) {
    writer.setValue(f, values[f]);
  }
  return writer.append("RecordSet::addNew");
}

void RecordSet::rowAdded(std::uint32_t row) {
  View& w = mutableView();
  if (!w.identity) {
    w.rows.push_back(row);
  }
  w.pos = recordCount() - 1;
  w.changed();
  notifyWatchers();
}

bool RecordSet::update(int field, const QVariant& value) {
  const Bookmark current = bookmark();
  if (current == kNoBookmark) {
    return false;
  }
  return updateAt(current, field, value);
}

bool RecordSet::update(const QString& field, const QVariant& value) { return update(fieldIndex(field), value); }

bool RecordSet::updateAt(Bookmark bookmark, int field, const QVariant& value) {
  if (bookmark < 0 || bookmark >= static_cast<Bookmark>(d->rows) ||
      d->isDeleted(static_cast<std::uint32_t>(bookmark)) || field < 0 || field >= fieldCount()) {
    return false;
  }
  const auto text = textOf(value);
  if (text && !d->columns[static_cast<std::size_t>(field)].canStore(static_cast<std::size_t>(text->size()))) {
    qWarning("RecordSet::updateAt: field %d holds too much text", field);
    return false;
  }
  detach();
  auto& column = d->columns[static_cast<std::size_t>(field)];
  if (text) {
    const std::string_view bytes(text->constData(), static_cast<std::size_t>(text->size()));
    column.set(static_cast<std::uint32_t>(bookmark), &bytes);
  } else {
    column.set(static_cast<std::uint32_t>(bookmark), nullptr);
  }
  d->invalidateKeys(field);
  mutableView().changed();
  notifyWatchers();
  return true;
}

bool RecordSet::deleteCurrent() {
  const int row = absolutePosition();
  if (row < 0) {
    return false;
  }
  const std::uint32_t physical = physicalRow(row);
  detach();
  d->markDeleted(physical);
  View& w = mutableView();
  if (w.identity) {
    w.rows.resize(d->rows - 1);
    std::iota(w.rows.begin(), w.rows.begin() + row, 0u);
    std::iota(w.rows.begin() + row, w.rows.end(), physical + 1);
    w.identity = false;
  } else {
    w.rows.erase(w.rows.begin() + row);
  }
  // The cursor now stands on the row that followed, or past the end.
  w.pos = row;
  w.changed();
  notifyWatchers();
  return true;
}

void RecordSet::reserve(int rows) {
  if (rows <= 0 || !d->open) {
    return;
  }
  detach();
  for (auto& column : d->columns) {
    column.reserve(static_cast<std::size_t>(rows));
  }
}

// --- sort and filter -----------------------------------------------------------------------------------------------

std::vector<std::uint32_t> RecordSet::visibleInPhysicalOrder() const {
  const View& w = view();
  std::vector<std::uint32_t> rows;
  if (w.identity) {
    rows.resize(d->rows);
    std::iota(rows.begin(), rows.end(), 0u);
    return rows;
  }
  if (w.sortKeys.empty()) {
    return w.rows;  // unsorted views are kept in physical order
  }
  std::vector<std::uint64_t> seen((static_cast<std::size_t>(d->rows) + 63) / 64, 0);
  for (const auto r : w.rows) {
    seen[r >> 6] |= std::uint64_t{1} << (r & 63u);
  }
  rows.reserve(w.rows.size());
  for (std::size_t word = 0; word < seen.size(); ++word) {
    std::uint64_t bits = seen[word];
    while (bits != 0) {
      const int bit = std::countr_zero(bits);
      rows.push_back(static_cast<std::uint32_t>(word * 64 + static_cast<std::size_t>(bit)));
      bits &= bits - 1;
    }
  }
  return rows;
}

std::vector<std::uint32_t> RecordSet::liveRows() const {
  std::vector<std::uint32_t> rows;
  if (d->deletedCount == 0) {
    rows.resize(d->rows);
    std::iota(rows.begin(), rows.end(), 0u);
    return rows;
  }
  rows.reserve(d->rows - d->deletedCount);
  for (std::uint32_t r = 0; r < d->rows; ++r) {
    if (!d->isDeleted(r)) {
      rows.push_back(r);
    }
  }
  return rows;
}

const std::vector<std::uint32_t>& RecordSet::orderedLiveRows() {
  View& w = mutableView();
  if (w.orderedStamp != d->stamp) {
    w.ordered = liveRows();
    detail::applySort(w.sortKeys, *d, w.ordered);
    w.orderedStamp = d->stamp;
  }
  return w.ordered;
}

std::vector<std::uint32_t> RecordSet::inSortOrder(const std::vector<std::uint32_t>& some) {
  const std::vector<std::uint32_t>& order = orderedLiveRows();
  if (some.size() < 2) {
    return some;
  }
  std::vector<std::uint64_t> kept((static_cast<std::size_t>(d->rows) + 63) / 64, 0);
  for (const auto r : some) {
    kept[r >> 6] |= std::uint64_t{1} << (r & 63u);
  }
  std::vector<std::uint32_t> rows;
  rows.reserve(some.size());
  for (const auto r : order) {
    if (((kept[r >> 6] >> (r & 63u)) & 1u) != 0) {
      rows.push_back(r);
    }
  }
  return rows;
}

void RecordSet::setRows(std::vector<std::uint32_t> rows) {
  View& w = mutableView();
  if (w.sortKeys.empty() && !w.filter && d->deletedCount == 0) {
    w.identity = true;
    w.rows = {};
  } else {
    w.identity = false;
    w.rows = std::move(rows);
  }
  w.changed();
}

int RecordSet::positionOf(Bookmark bookmark) const {
  // One pass over the rows is cheaper than building the whole inverse for a single look-up.
  const View& w = view();
  if (w.identity) {
    return rowOfBookmark(bookmark);
  }
  const auto it = std::find(w.rows.begin(), w.rows.end(), static_cast<std::uint32_t>(bookmark));
  return it == w.rows.end() ? -1 : static_cast<int>(it - w.rows.begin());
}

std::optional<TextError> RecordSet::setSort(const QString& sortText) {
  if (sortText.trimmed().isEmpty()) {
    const Bookmark current = bookmark();
    View& w = mutableView();
    auto rows = visibleInPhysicalOrder();
    w.sortKeys.clear();
    w.sortText.clear();
    setRows(std::move(rows));
    w.pos = current == kNoBookmark ? std::min(w.pos, recordCount()) : positionOf(current);
    notifyWatchers();
    return std::nullopt;
  }
  if (!d->open) {
    return TextError{sortText, 0, QStringLiteral("the record set is closed")};
  }
  auto parsed = detail::parseSort(sortText, d->fields);
  if (auto* error = std::get_if<TextError>(&parsed)) {
    return *error;
  }
  const Bookmark current = bookmark();
  auto rows = visibleInPhysicalOrder();
  auto keys = std::get<std::vector<detail::SortKey>>(std::move(parsed));
  detail::applySort(keys, *d, rows);
  View& w = mutableView();
  const bool wasBeforeFirst = w.pos < 0;
  w.sortKeys = std::move(keys);
  w.sortText = sortText;
  w.orderedStamp = 0;
  if (!w.filter) {
    w.ordered = rows;  // with no filter, what the sort just made is every live row in its order
    w.orderedStamp = d->stamp;
  }
  setRows(std::move(rows));
  // The current row stays current wherever the sort puts it.
  w.pos = current != kNoBookmark ? positionOf(current) : (wasBeforeFirst ? -1 : recordCount());
  notifyWatchers();
  return std::nullopt;
}

QString RecordSet::sort() const { return view().sortText; }

std::optional<TextError> RecordSet::setFilter(const QString& filterText) {
  std::shared_ptr<const detail::FilterNode> filter;
  if (!filterText.trimmed().isEmpty()) {
    if (!d->open) {
      return TextError{filterText, 0, QStringLiteral("the record set is closed")};
    }
    auto parsed = detail::parseFilter(filterText, d->fields);
    if (auto* error = std::get_if<TextError>(&parsed)) {
      return *error;
    }
    filter = std::get<std::shared_ptr<const detail::FilterNode>>(std::move(parsed));
  }
  View& w = mutableView();
  std::vector<std::uint32_t> rows;
  if (!filter) {
    rows = w.sortKeys.empty() ? liveRows() : orderedLiveRows();
  } else {
    rows = d->deletedCount == 0 ? detail::applyFilterToAll(*filter, *d)
                                : detail::applyFilter(*filter, *d, liveRows());
    if (!w.sortKeys.empty()) {
      rows = inSortOrder(rows);
    }
  }
  w.filter = std::move(filter);
  w.filterText = w.filter ? filterText : QString();
  setRows(std::move(rows));
  w.pos = recordCount() > 0 ? 0 : -1;
  notifyWatchers();
  return std::nullopt;
}

QString RecordSet::filter() const { return view().filterText; }

std::uint64_t RecordSet::revision() const { return view().revision; }

// --- change notification -------------------------------------------------------------------------------------------

RecordSet::WatchId RecordSet::watch(std::function<void()> watcher) {
  if (!watchers) {
    watchers = std::make_unique<Watchers>();
  }
  const WatchId id = watchers->next++;
  watchers->list.emplace_back(id, std::move(watcher));
  return id;
}

void RecordSet::unwatch(WatchId id) {
  if (!watchers) {
    return;
  }
  std::erase_if(watchers->list, [id](const auto& entry) { return entry.first == id; });
}

void RecordSet::notifyWatchers() {
  if (!watchers || watchers->list.empty()) {
    return;
  }
  // Told by id from a snapshot, each through its own copy: a watcher may stop watching (itself or another)
  // while it is being told.
  QVarLengthArray<WatchId, 4> ids;
  for (const auto& entry : watchers->list) {
    ids.append(entry.first);
  }
  for (const WatchId id : ids) {
    const auto found = std::find_if(watchers->list.begin(), watchers->list.end(),
                                    [id](const auto& entry) { return entry.first == id; });
    if (found != watchers->list.end()) {
      const std::function<void()> tell = found->second;
      tell();
    }
  }
}

std::size_t RecordSet::storageBytes() const {
  const View& w = view();
  return d->bytes() + sizeof(View) + (w.rows.capacity() + w.inverse.capacity()) * sizeof(std::uint32_t);
}

// --- the writer ---------------------------------------------------------------------------------------------------

RecordSetWriter::RecordSetWriter(RecordSet& set)
    : m_set(set),
      m_offsets(static_cast<std::size_t>(set.fieldCount()), detail::kNullCell),
      m_textStart(static_cast<std::size_t>(set.fieldCount()), 0) {}

RecordSetWriter::~RecordSetWriter() {
  // A row left half gathered takes its text back out.
  if (m_state != RowState::Empty) {
    resetRow(true);
  }
}

void RecordSetWriter::warnField(int field) const {
  qWarning("RecordSetWriter: no field %d (%d fields); the value is dropped", field, fieldCount());
}

void RecordSetWriter::refuse(const char* reason, int field) {
  if (m_state != RowState::Refused) {
    m_state = RowState::Refused;
    m_refusal = reason;
    m_refusedField = field;
  }
}

bool RecordSetWriter::startRow() {
  m_state = RowState::Open;
  RecordSet& set = m_set;
  if (!set.d->open) {
    refuse("the record set is closed");
    return false;
  }
  if (set.d->rows >= static_cast<std::uint32_t>(INT_MAX)) {
    refuse("the record set is full");
    return false;
  }
  if (set.fieldCount() != fieldCount()) {
    refuse("the record set's layout changed while rows were added");
    return false;
  }
  set.detach();
  m_data = set.d.get();
  for (std::size_t f = 0; f < m_offsets.size(); ++f) {
    m_textStart[f] = set.d->columns[f].textSize();
  }
  return true;
}

bool RecordSetWriter::rowStorageIntact() const { return m_set.d.get() == m_data && m_set.d.use_count() == 1; }

void RecordSetWriter::store(int field, std::string_view utf8) {
  if (m_state == RowState::Empty && !startRow()) {
    return;
  }
  if (m_state == RowState::Refused) {
    return;
  }
  if (!rowStorageIntact()) {
    refuse("the record set was copied or replaced while a row was gathered");
    return;
  }
  detail::Column& column = m_set.d->columns[static_cast<std::size_t>(field)];
  if (!column.canStore(utf8.size())) {
    refuse("a field holds too much text for another row", field);
    return;
  }
  std::uint32_t& offset = m_offsets[static_cast<std::size_t>(field)];
  if (offset != detail::kNullCell) {
    column.forgetText(offset);
  }
  offset = column.storeText(utf8);
}

void RecordSetWriter::forget(int field) {
  std::uint32_t& offset = m_offsets[static_cast<std::size_t>(field)];
  if (offset != detail::kNullCell) {
    if (rowStorageIntact()) {
      m_set.d->columns[static_cast<std::size_t>(field)].forgetText(offset);
    }
    offset = detail::kNullCell;
  }
}

void RecordSetWriter::putText(int field, QStringView text) {
  // Host text is nearly all ASCII: copied unit by unit. Anything else goes through Qt's own conversion,
  // so that the bytes are exactly those addNew would store.
  constexpr qsizetype kShort = 128;
  if (text.size() <= kShort) {
    char buffer[kShort];
    const char16_t* in = text.utf16();
    qsizetype i = 0;
    for (; i < text.size() && in[i] < 0x80; ++i) {
      buffer[i] = static_cast<char>(in[i]);
    }
    if (i == text.size()) {
      store(field, std::string_view(buffer, static_cast<std::size_t>(i)));
      return;
    }
  }
  const QByteArray utf8 = text.toUtf8();
  store(field, std::string_view(utf8.constData(), static_cast<std::size_t>(utf8.size())));
}

void RecordSetWriter::putNumber(int field, qint64 value) {
  char buffer[24];
  char* end = buffer + sizeof buffer;
  char* p = end;
  quint64 magnitude = value < 0 ? quint64(0) - quint64(value) : quint64(value);
  do {
    *--p = static_cast<char>('0' + magnitude % 10);
    magnitude /= 10;
  } while (magnitude > 0);
  if (value < 0) {
    *--p = '-';
  }
  store(field, std::string_view(p, static_cast<std::size_t>(end - p)));
}

void RecordSetWriter::setNull(int field) {
  if (checkField(field)) {
    forget(field);
  }
}

void RecordSetWriter::setText(int field, QStringView text) {
  if (checkField(field)) {
    putText(field, text);
  }
}

void RecordSetWriter::setUtf8(int field, std::string_view text) {
  if (checkField(field)) {
    store(field, text);
  }
}

void RecordSetWriter::setNumber(int field, qint64 value) {
  if (checkField(field)) {
    putNumber(field, value);
  }
}

void RecordSetWriter::setValue(int field, const QVariant& value) {
  if (!checkField(field)) {
    return;
  }
  if (value.isNull()) {
    forget(field);
    return;
  }
  switch (value.typeId()) {
    case QMetaType::QString:
      putText(field, *static_cast<const QString*>(value.constData()));
      return;
    case QMetaType::LongLong:
      putNumber(field, *static_cast<const qlonglong*>(value.constData()));
      return;
    case QMetaType::Int:
      putNumber(field, *static_cast<const int*>(value.constData()));
      return;
    default:
      putText(field, value.toString());
      return;
  }
}

void RecordSetWriter::resetRow(bool cutText) {
  if (cutText && m_state != RowState::Empty && m_data && rowStorageIntact()) {
    for (std::size_t f = 0; f < m_offsets.size(); ++f) {
      m_set.d->columns[f].cutText(m_textStart[f]);
    }
  }
  std::fill(m_offsets.begin(), m_offsets.end(), detail::kNullCell);
  m_state = RowState::Empty;
  m_data = nullptr;
  m_refusal = nullptr;
  m_refusedField = -1;
}

void RecordSetWriter::clearRow() { resetRow(true); }

Bookmark RecordSetWriter::appendRow() { return append("RecordSetWriter::appendRow"); }

Bookmark RecordSetWriter::append(const char* caller) {
  if (m_state == RowState::Empty) {
    startRow();  // a row of nulls
  }
  if (m_state == RowState::Open && !rowStorageIntact()) {
    refuse("the record set was copied or replaced while a row was gathered");
  }
  if (m_state == RowState::Refused) {
    if (m_refusedField >= 0) {
      qWarning("%s: field %d holds too much text for another row", caller, m_refusedField);
    } else {
      qWarning("%s: %s", caller, m_refusal);
    }
    resetRow(true);
    return kNoBookmark;
  }
  detail::Data& data = *m_set.d;
  for (std::size_t f = 0; f < m_offsets.size(); ++f) {
    data.columns[f].addCell(m_offsets[f]);
  }
  const std::uint32_t row = data.rows++;
  data.invalidateKeys(-1);
  m_set.rowAdded(row);
  resetRow(false);
  return static_cast<Bookmark>(row);
}

}  // namespace adjustacc::messaging
