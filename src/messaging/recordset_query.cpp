#include "recordset_query.h"

#include "recordset_keys.h"
#include "recordset_storage.h"

#include <algorithm>
#include <bit>
#include <compare>
#include <iterator>

namespace adjustacc::messaging::detail {

namespace {

// Deeper nesting of parentheses and NOT than any hand-written filter needs; a guard for the stack.
constexpr int kMaxDepth = 100;

struct ParseFailure {
  qsizetype position;
  QString reason;
};

// Character-level reader shared by the sort and the filter grammar. Errors are thrown as ParseFailure
// inside this file only and turned into a TextError at the two entry points.
class Reader {
public:
  Reader(const QString& text, const QList<Field>& fields) : m_text(text), m_fields(fields) {}

  qsizetype pos() const { return m_pos; }
  bool atEnd() {
    skipBlanks();
    return m_pos >= m_text.size();
  }
  QChar peek() {
    skipBlanks();
    return m_pos < m_text.size() ? m_text[m_pos] : QChar();
  }
  void advance(qsizetype n = 1) { m_pos += n; }

  [[noreturn]] void fail(qsizetype position, const QString& reason) const {
    throw ParseFailure{position, reason};
  }

  static bool isNameChar(QChar c) { return c.isLetterOrNumber() || c == u'_'; }

  // Consumes the keyword when the next word is it (case-insensitive, whole word).
  bool keyword(QLatin1StringView word) {
    skipBlanks();
    const auto n = word.size();
    if (m_pos + n > m_text.size() ||
        QStringView(m_text).mid(m_pos, n).compare(word, Qt::CaseInsensitive) != 0 ||
        (m_pos + n < m_text.size() && isNameChar(m_text[m_pos + n]))) {
      return false;
    }
    m_pos += n;
    return true;
  }

  // A field name, plain or in brackets, resolved to its index.
  int field() {
    skipBlanks();
    const qsizetype start = m_pos;
    QString name;
    if (m_pos < m_text.size() && m_text[m_pos] == u'[') {
      const auto close = m_text.indexOf(u']', m_pos + 1);
      if (close < 0) {
        fail(start, QStringLiteral("the field name in brackets is not closed"));
      }
      name = m_text.mid(m_pos + 1, close - m_pos - 1).trimmed();
      m_pos = close + 1;
    } else {
      while (m_pos < m_text.size() && isNameChar(m_text[m_pos])) {
        ++m_pos;
      }
      name = m_text.mid(start, m_pos - start);
    }
    if (name.isEmpty()) {
      fail(start, QStringLiteral("a field name is expected"));
    }
    for (qsizetype i = 0; i < m_fields.size(); ++i) {
      if (m_fields[i].name.compare(name, Qt::CaseInsensitive) == 0) {
        return static_cast<int>(i);
      }
    }
    fail(start, QStringLiteral("there is no field named %1").arg(name));
  }

  const QList<Field>& fields() const { return m_fields; }
  const QString& text() const { return m_text; }

private:
  void skipBlanks() {
    while (m_pos < m_text.size() && m_text[m_pos].isSpace()) {
      ++m_pos;
    }
  }

  const QString& m_text;
  const QList<Field>& m_fields;
  qsizetype m_pos = 0;
};

// --- sort text ------------------------------------------------------------------------------------------

std::vector<SortKey> readSort(Reader& in) {
  std::vector<SortKey> keys;
  for (;;) {
    SortKey key;
    key.field = in.field();
    if (in.keyword(QLatin1StringView("DESC"))) {
      key.descending = true;
    } else {
      in.keyword(QLatin1StringView("ASC"));
    }
    keys.push_back(key);
    if (in.atEnd()) {
      return keys;
    }
    if (in.peek() != u',') {
      in.fail(in.pos(), QStringLiteral("a comma, ASC or DESC is expected"));
    }
    in.advance();
  }
}

// --- filter text -----------------------------------------------------------------------------------------

struct Literal {
  enum class Kind { Quoted, Hash, Word, Null };
  Kind kind = Kind::Word;
  QString text;
  qsizetype position = 0;
};

class FilterReader {
public:
  explicit FilterReader(Reader& in) : m_in(in) {}

  std::unique_ptr<FilterNode> orExpr() {
    auto first = andExpr();
    if (!m_in.keyword(QLatin1StringView("OR"))) {
      return first;
    }
    auto node = std::make_unique<FilterNode>();
    node->kind = FilterNode::Kind::Or;
    node->children.push_back(std::move(first));
    do {
      node->children.push_back(andExpr());
    } while (m_in.keyword(QLatin1StringView("OR")));
    return node;
  }

private:
  std::unique_ptr<FilterNode> andExpr() {
    auto first = notExpr();
    if (!m_in.keyword(QLatin1StringView("AND"))) {
      return first;
    }
    auto node = std::make_unique<FilterNode>();
    node->kind = FilterNode::Kind::And;
    node->children.push_back(std::move(first));
    do {
      node->children.push_back(notExpr());
    } while (m_in.keyword(QLatin1StringView("AND")));
    return node;
  }

  std::unique_ptr<FilterNode> notExpr() {
    const qsizetype start = m_in.pos();
    if (++m_depth > kMaxDepth) {
      m_in.fail(start, QStringLiteral("the text nests parentheses and NOT too deeply"));
    }
    std::unique_ptr<FilterNode> node;
    if (m_in.keyword(QLatin1StringView("NOT"))) {
      node = negated(notExpr());
    } else if (m_in.peek() == u'(') {
      m_in.advance();
      node = orExpr();
      if (m_in.peek() != u')') {
        m_in.fail(m_in.pos(), m_in.atEnd() ? QStringLiteral("a closing parenthesis is expected")
                                           : QStringLiteral("AND, OR or a closing parenthesis is expected"));
      }
      m_in.advance();
    } else {
      node = comparison();
    }
    --m_depth;
    return node;
  }

  static std::unique_ptr<FilterNode> negated(std::unique_ptr<FilterNode> child) {
    auto node = std::make_unique<FilterNode>();
    node->kind = FilterNode::Kind::Not;
    node->children.push_back(std::move(child));
    return node;
  }

  std::unique_ptr<FilterNode> comparison() {
    if (m_in.atEnd()) {
      m_in.fail(m_in.pos(), QStringLiteral("a field name is expected"));
    }
    const int field = m_in.field();
    auto node = std::make_unique<FilterNode>();
    node->field = field;
    if (m_in.keyword(QLatin1StringView("IS"))) {
      const bool isNot = m_in.keyword(QLatin1StringView("NOT"));
      if (!m_in.keyword(QLatin1StringView("NULL"))) {
        m_in.fail(m_in.pos(), QStringLiteral("NULL is expected"));
      }
      node->kind = isNot ? FilterNode::Kind::NotNull : FilterNode::Kind::IsNull;
      return node;
    }
    const bool notLike = m_in.keyword(QLatin1StringView("NOT"));
    if (notLike || m_in.keyword(QLatin1StringView("LIKE"))) {
      if (notLike && !m_in.keyword(QLatin1StringView("LIKE"))) {
        m_in.fail(m_in.pos(), QStringLiteral("LIKE is expected"));
      }
      const Literal pattern = literal();
      if (pattern.kind == Literal::Kind::Null) {
        m_in.fail(pattern.position, QStringLiteral("LIKE needs a text pattern, not Null"));
      }
      node->kind = FilterNode::Kind::Like;
      node->pattern = std::make_unique<LikePattern>(pattern.text);
      node->notLike = notLike;
      return node;
    }
    m_in.peek();  // to the operator
    const qsizetype opAt = m_in.pos();
    node->kind = FilterNode::Kind::Compare;
    node->compare = compareOperator();
    const Literal value = literal();
    if (value.kind == Literal::Kind::Null) {
      if (node->compare != FilterNode::Compare::Equal && node->compare != FilterNode::Compare::NotEqual) {
        m_in.fail(opAt, QStringLiteral("only = and <> can compare with Null"));
      }
      node->kind = node->compare == FilterNode::Compare::Equal ? FilterNode::Kind::IsNull
                                                                : FilterNode::Kind::NotNull;
      return node;
    }
    node->value = typedValue(value, m_in.fields()[field]);
    return node;
  }

  FilterNode::Compare compareOperator() {
    using C = FilterNode::Compare;
    const QChar c = m_in.peek();
    const qsizetype at = m_in.pos();
    const QChar next = at + 1 < m_in.text().size() ? m_in.text()[at + 1] : QChar();
    if (c == u'=') {
      m_in.advance();
      return C::Equal;
    }
    if (c == u'<') {
      m_in.advance(next == u'>' || next == u'=' ? 2 : 1);
      return next == u'>' ? C::NotEqual : next == u'=' ? C::LessEqual : C::Less;
    }
    if (c == u'>') {
      m_in.advance(next == u'=' ? 2 : 1);
      return next == u'=' ? C::GreaterEqual : C::Greater;
    }
    m_in.fail(at, m_in.atEnd() ? QStringLiteral("a comparison is expected after the field name")
                               : QStringLiteral("=, <>, <, >, <=, >=, LIKE or IS is expected"));
  }

  Literal literal() {
    if (m_in.atEnd()) {
      m_in.fail(m_in.pos(), QStringLiteral("a value is expected"));
    }
    const QString& text = m_in.text();
    const qsizetype start = m_in.pos();
    const QChar c = text[start];
    Literal value;
    value.position = start;
    if (c == u'\'' || c == u'"') {
      value.kind = Literal::Kind::Quoted;
      qsizetype i = start + 1;
      for (;; ++i) {
        if (i >= text.size()) {
          m_in.fail(start, QStringLiteral("the quoted text is not closed"));
        }
        if (text[i] == c) {
          if (i + 1 < text.size() && text[i + 1] == c) {
            value.text += c;  // a doubled quote stands for one
            ++i;
            continue;
          }
          break;
        }
        value.text += text[i];
      }
      m_in.advance(i + 1 - start);
      return value;
    }
    if (c == u'#') {
      const auto close = text.indexOf(u'#', start + 1);
      if (close < 0) {
        m_in.fail(start, QStringLiteral("the date is not closed with #"));
      }
      value.kind = Literal::Kind::Hash;
      value.text = text.mid(start + 1, close - start - 1).trimmed();
      m_in.advance(close + 1 - start);
      return value;
    }
    qsizetype i = start;
    while (i < text.size() && !text[i].isSpace() && !QStringView(u"()'\"#<>=").contains(text[i])) {
      ++i;
    }
    value.text = text.mid(start, i - start);
    if (value.text.isEmpty()) {
      m_in.fail(start, QStringLiteral("a value is expected"));
    }
    for (const auto* word : {"AND", "OR", "NOT", "LIKE", "IS"}) {
      if (value.text.compare(QLatin1StringView(word), Qt::CaseInsensitive) == 0) {
        m_in.fail(start, QStringLiteral("a value is expected"));
      }
    }
    value.kind = value.text.compare(QLatin1StringView("NULL"), Qt::CaseInsensitive) == 0 ? Literal::Kind::Null
                                                                                         : Literal::Kind::Word;
    m_in.advance(i - start);
    return value;
  }

  FilterValue typedValue(const Literal& literal, const Field& field) {
    FilterValue value;
    const QByteArray bytes = literal.text.toUtf8();
    const std::string_view text(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    switch (field.type) {
      case FieldType::Text:
        value.kind = FilterValue::Kind::Text;
        foldText(text, value.folded);
        return value;
      case FieldType::Number: {
        if (literal.kind == Literal::Kind::Hash) {
          m_in.fail(literal.position, QStringLiteral("%1 holds numbers, not dates").arg(field.name));
        }
        const auto number = parseNumber(text);
        if (!number) {
          m_in.fail(literal.position, QStringLiteral("%1 is not a number").arg(literal.text));
        }
        value.kind = FilterValue::Kind::Number;
        value.number = *number;
        return value;
      }
      case FieldType::Date:
      case FieldType::DateTime: {
        const auto moment = parseMoment(text);
        if (!moment) {
          m_in.fail(literal.position, QStringLiteral("%1 is not a date").arg(literal.text));
        }
        value.kind = FilterValue::Kind::Moment;
        value.moment = *moment;
        return value;
      }
    }
    return value;
  }

  Reader& m_in;
  int m_depth = 0;
};

// --- filter evaluation -------------------------------------------------------------------------------------

using Rows = std::vector<std::uint32_t>;

// The rows a step of a filter looks at: a list in ascending order, or every physical row of a set that has
// none deleted. Every row is not listed: a first filter over a large set then writes down only the rows
// that pass, as a hand-written loop would. Listing a million rows first took longer than comparing them
// wherever fresh memory is expensive to map (each new page is a fault to the kernel).
class Candidates {
public:
  static Candidates all(std::uint32_t count) {
    Candidates c;
    c.m_all = true;
    c.m_count = count;
    return c;
  }
  Candidates(Rows rows) : m_rows(std::move(rows)) {}  // NOLINT: a list is a set of candidates

  std::size_t size() const { return m_all ? m_count : m_rows.size(); }
  bool empty() const { return size() == 0; }

  // The candidates that `pass`, in ascending order.
  template <typename Pass>
  Rows keepIf(Pass pass) && {
    if (m_all) {
      Rows kept;
      for (std::uint32_t r = 0; r < m_count; ++r) {
        if (pass(r)) {
          kept.push_back(r);
        }
      }
      return kept;
    }
    std::size_t kept = 0;
    for (const auto r : m_rows) {
      m_rows[kept] = r;
      kept += pass(r) ? 1 : 0;
    }
    m_rows.resize(kept);
    return std::move(m_rows);
  }

  // The candidates not in `some` (a subset of them, ascending).
  Rows minus(const Rows& some) const {
    Rows out;
    out.reserve(size() - some.size());
    if (m_all) {
      std::uint32_t next = 0;
      for (const auto r : some) {
        for (; next < r; ++next) {
          out.push_back(next);
        }
        next = r + 1;
      }
      for (; next < m_count; ++next) {
        out.push_back(next);
      }
      return out;
    }
    std::set_difference(m_rows.begin(), m_rows.end(), some.begin(), some.end(), std::back_inserter(out));
    return out;
  }

private:
  Candidates() = default;
  Rows m_rows;
  bool m_all = false;
  std::uint32_t m_count = 0;
};

// Typed values pay for building when a comparison looks at a good part of the column: then reading every
// cell once, and keeping the result for the next filter, costs little more than reading the cells
// asked about. A comparison on a few rows (after a selective AND) reads just their text.
bool worthTyping(std::size_t candidates, const Data& data) { return candidates * 4 >= data.rows; }

// Keeps the rows whose value, ordered against the filter's value by `order` (unordered: null, or not of
// the field's type), passes the comparison. Null and unreadable values pass none, not even <>.
template <typename Order>
Rows keepByOrder(Candidates rows, FilterNode::Compare compare, Order order) {
  using C = FilterNode::Compare;
  switch (compare) {
    case C::Equal:
      return std::move(rows).keepIf([&](std::uint32_t r) { return std::is_eq(order(r)); });
    case C::NotEqual:
      return std::move(rows).keepIf([&](std::uint32_t r) {
        const std::partial_ordering o = order(r);
        return std::is_lt(o) || std::is_gt(o);
      });
    case C::Less:
      return std::move(rows).keepIf([&](std::uint32_t r) { return std::is_lt(order(r)); });
    case C::LessEqual:
      return std::move(rows).keepIf([&](std::uint32_t r) { return std::is_lteq(order(r)); });
    case C::Greater:
      return std::move(rows).keepIf([&](std::uint32_t r) { return std::is_gt(order(r)); });
    case C::GreaterEqual:
      return std::move(rows).keepIf([&](std::uint32_t r) { return std::is_gteq(order(r)); });
  }
  return {};
}

Rows compareRows(const FilterNode& node, const Data& data, Candidates rows) {
  constexpr std::partial_ordering kNone = std::partial_ordering::unordered;
  const auto& column = data.columns[static_cast<std::size_t>(node.field)];
  const std::uint32_t* cells = column.cells();
  switch (data.fields[node.field].type) {
    case FieldType::Text: {
      // Compared in place: ASCII text needs no folded copy.
      const std::string_view folded = node.value.folded;
      std::string scratch;
      return keepByOrder(std::move(rows), node.compare, [&](std::uint32_t r) -> std::partial_ordering {
        return cells[r] == kNullCell ? kNone : compareFolded(column.textAt(cells[r]), folded, scratch);
      });
    }
    case FieldType::Number: {
      const double x = node.value.number;
      auto typed = data.typedIfBuilt(node.field);
      if (!typed && worthTyping(rows.size(), data)) {
        typed = data.typed(node.field);
      }
      if (typed) {
        const double* values = typed->numbers.data();
        return keepByOrder(std::move(rows), node.compare, [&](std::uint32_t r) { return values[r] <=> x; });
      }
      return keepByOrder(std::move(rows), node.compare, [&](std::uint32_t r) -> std::partial_ordering {
        const auto v = cells[r] == kNullCell ? std::nullopt : parseNumber(column.textAt(cells[r]));
        return v ? *v <=> x : kNone;
      });
    }
    case FieldType::Date:
    case FieldType::DateTime: {
      const std::int64_t x = node.value.moment;
      auto typed = data.typedIfBuilt(node.field);
      if (!typed && worthTyping(rows.size(), data)) {
        typed = data.typed(node.field);
      }
      if (typed) {
        const std::int64_t* values = typed->moments.data();
        return keepByOrder(std::move(rows), node.compare, [&](std::uint32_t r) -> std::partial_ordering {
          return values[r] == kNoMoment ? kNone : values[r] <=> x;
        });
      }
      return keepByOrder(std::move(rows), node.compare, [&](std::uint32_t r) -> std::partial_ordering {
        const auto v = cells[r] == kNullCell ? std::nullopt : parseMoment(column.textAt(cells[r]));
        return v ? *v <=> x : kNone;
      });
    }
  }
  return {};
}

Rows evaluate(const FilterNode& node, const Data& data, Candidates rows) {
  using K = FilterNode::Kind;
  switch (node.kind) {
    case K::And: {
      auto child = node.children.begin();
      Rows kept = evaluate(**child, data, std::move(rows));
      for (++child; child != node.children.end() && !kept.empty(); ++child) {
        kept = evaluate(**child, data, std::move(kept));
      }
      return kept;
    }
    case K::Or: {
      Rows passed;
      Candidates remaining = std::move(rows);
      for (const auto& child : node.children) {
        if (remaining.empty()) {
          break;
        }
        Rows hit = evaluate(*child, data, remaining);
        remaining = remaining.minus(hit);
        Rows merged;
        merged.reserve(passed.size() + hit.size());
        std::merge(passed.begin(), passed.end(), hit.begin(), hit.end(), std::back_inserter(merged));
        passed = std::move(merged);
      }
      return passed;
    }
    case K::Not: {
      const Rows hit = evaluate(*node.children.front(), data, rows);
      return rows.minus(hit);
    }
    case K::IsNull:
    case K::NotNull: {
      const std::uint32_t* cells = data.columns[static_cast<std::size_t>(node.field)].cells();
      const bool wantNull = node.kind == K::IsNull;
      return std::move(rows).keepIf([&](std::uint32_t r) { return (cells[r] == kNullCell) == wantNull; });
    }
    case K::Compare:
      return compareRows(node, data, std::move(rows));
    case K::Like: {
      // Every type: the pattern sees the value's own text.
      const auto& column = data.columns[static_cast<std::size_t>(node.field)];
      const std::uint32_t* cells = column.cells();
      std::string folded;
      return std::move(rows).keepIf([&](std::uint32_t r) {
        if (cells[r] == kNullCell) {
          return false;
        }
        foldText(column.textAt(cells[r]), folded);
        return node.pattern->matches(folded) != node.notLike;
      });
    }
  }
  return {};
}

// --- sorting --------------------------------------------------------------------------------------------------

// Rank as the sort direction orders it: nulls first, then text that does not read as the field's type,
// then typed values; DESC reverses the order inside each of the last two groups.
struct DirectedKey {
  const std::uint32_t* rank = nullptr;
  std::uint32_t unparsed = 0;
  std::uint32_t top = 0;
  bool descending = false;
  int bits = 0;

  std::uint32_t operator()(std::uint32_t row) const {
    const std::uint32_t k = rank[row];
    if (!descending || k == 0) {
      return k;
    }
    return k <= unparsed ? unparsed + 1 - k : unparsed + 1 + top - k;
  }
};

void radixSort(std::vector<std::uint64_t>& items, int fromBit, int bitCount) {
  if (bitCount <= 0) {
    return;
  }
  const int passes = (bitCount + 11) / 12;
  const int digitBits = (bitCount + passes - 1) / passes;
  const std::size_t buckets = std::size_t{1} << digitBits;
  std::vector<std::uint64_t> scratch(items.size());
  std::vector<std::size_t> count(buckets);
  for (int shift = fromBit; shift < fromBit + bitCount; shift += digitBits) {
    const std::uint64_t mask = buckets - 1;
    std::fill(count.begin(), count.end(), 0);
    for (const auto item : items) {
      ++count[(item >> shift) & mask];
    }
    if (std::find(count.begin(), count.end(), items.size()) != count.end()) {
      continue;  // every item has the same digit here
    }
    std::size_t sum = 0;
    for (auto& c : count) {
      const std::size_t n = c;
      c = sum;
      sum += n;
    }
    for (const auto item : items) {
      scratch[count[(item >> shift) & mask]++] = item;
    }
    items.swap(scratch);
  }
}

}  // namespace

std::variant<std::vector<SortKey>, TextError> parseSort(const QString& text, const QList<Field>& fields) {
  Reader in(text, fields);
  try {
    return readSort(in);
  } catch (const ParseFailure& failure) {
    return TextError{text, failure.position, failure.reason};
  }
}

std::variant<std::shared_ptr<const FilterNode>, TextError> parseFilter(const QString& text,
                                                                       const QList<Field>& fields) {
  Reader in(text, fields);
  try {
    FilterReader reader(in);
    std::shared_ptr<const FilterNode> root = reader.orExpr();
    if (!in.atEnd()) {
      in.fail(in.pos(), in.peek() == u')' ? QStringLiteral("this closing parenthesis has no opening one")
                                          : QStringLiteral("AND or OR is expected"));
    }
    return root;
  } catch (const ParseFailure& failure) {
    return TextError{text, failure.position, failure.reason};
  }
}

std::vector<std::uint32_t> applyFilter(const FilterNode& filter, const Data& data,
                                       std::vector<std::uint32_t> candidates) {
  return evaluate(filter, data, std::move(candidates));
}

std::vector<std::uint32_t> applyFilterToAll(const FilterNode& filter, const Data& data) {
  return evaluate(filter, data, Candidates::all(data.rows));
}

void applySort(const std::vector<SortKey>& keys, const Data& data, std::vector<std::uint32_t>& rows) {
  if (rows.size() < 2 || keys.empty()) {
    return;
  }
  std::vector<std::shared_ptr<const ColumnRanks>> held;
  std::vector<DirectedKey> directed;
  int keyBits = 0;
  for (const auto& key : keys) {
    held.push_back(data.ranks(key.field));
    const ColumnRanks& k = *held.back();
    DirectedKey d{k.rank.data(), k.unparsed, k.top, key.descending, static_cast<int>(std::bit_width(k.top))};
    keyBits += d.bits;
    directed.push_back(d);
  }
  const int indexBits = static_cast<int>(std::bit_width(rows.size() - 1));
  if (keyBits + indexBits <= 64) {
    // Pack the keys and the row's place into one integer: sorting those integers is a stable sort.
    std::vector<std::uint64_t> items(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
      std::uint64_t packed = 0;
      for (const auto& d : directed) {
        packed = (packed << d.bits) | d(rows[i]);
      }
      items[i] = (packed << indexBits) | i;
    }
    if (items.size() > 2048) {
      radixSort(items, indexBits, keyBits);  // keeps the place order of equal keys
    } else {
      std::sort(items.begin(), items.end());
    }
    const std::uint64_t indexMask = (std::uint64_t{1} << indexBits) - 1;
    std::vector<std::uint32_t> sorted(rows.size());
    for (std::size_t i = 0; i < items.size(); ++i) {
      sorted[i] = rows[items[i] & indexMask];
    }
    rows.swap(sorted);
    return;
  }
  std::stable_sort(rows.begin(), rows.end(), [&](std::uint32_t a, std::uint32_t b) {
    for (const auto& d : directed) {
      const auto ka = d(a);
      const auto kb = d(b);
      if (ka != kb) {
        return ka < kb;
      }
    }
    return false;
  });
}

}  // namespace adjustacc::messaging::detail
