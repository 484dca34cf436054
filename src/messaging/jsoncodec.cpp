#include "jsoncodec.h"

#include "sections.h"

#include <QSet>
#include <QStringDecoder>

#include <algorithm>
#include <climits>
#include <limits>
#include <cstring>
#include <vector>

namespace adjustacc::messaging {

namespace {

using namespace Qt::StringLiterals;
namespace limits = jsonlimits;

// ------------------------------------------------------------------------------------------------------------
// Reading. A pull reader over UTF-8 bytes, driven by the decoders below, which know the shape they expect;
// nothing is parsed that the shape does not ask for, so there is no recursion to bound and no tree to
// build. The first failure wins; a decoder adds where it happened ("section \"FUND\", row 3") on its way out.

class JsonReader {
public:
  explicit JsonReader(QByteArrayView text) : m_begin(text.data()), m_p(text.data()), m_end(text.data() + text.size()) {}

  bool fail(const QString& reason) {
    if (m_reason.isEmpty()) {
      m_reason = reason;
      m_offset = m_p - m_begin;
    }
    return false;
  }
  // Adds where the failure just recorded happened; each caller on the way out adds its own level, so the
  // message reads from the outside in: "section \"FUND\", row 3, value 2: ...".
  bool within(const QString& place) {
    m_path.prepend(place);
    return false;
  }
  QString message() const {
    const QString reason = m_reason.isEmpty() ? u"the text is not valid"_s : m_reason;
    const QString where = m_path.isEmpty() ? reason : m_path.join(u", "_s) + u": "_s + reason;
    return u"%1 (at byte %2)"_s.arg(where).arg(m_offset);
  }

  char peek() {
    skipSpace();
    return m_p < m_end ? *m_p : '\0';
  }

  bool atEnd() {
    skipSpace();
    return m_p == m_end;
  }

  // Reads an object, handing each member name to `member`, which must read the member's value.
  template <typename F>
  bool object(F&& member) {
    return sequence('{', '}', [&](qsizetype) {
      if (peek() != '"')
        return fail(u"a member name in double quotes is expected"_s);
      QString name;
      if (!string(name, limits::kMaxValueChars))
        return false;
      if (peek() != ':')
        return fail(u"\":\" is expected after a member name"_s);
      ++m_p;
      return member(name);
    });
  }

  // Reads an array, calling `element(index)` for each element, which must read it.
  template <typename F>
  bool array(F&& element) {
    return sequence('[', ']', element);
  }

  // Counts the elements of the array that starts here without reading them (0 when it is not one, or is
  // broken: the real read reports that). Used to size storage before a long array of rows is read.
  qsizetype countElements() {
    if (peek() != '[')
      return 0;
    qsizetype commas = 0;
    int depth = 0;
    bool any = false;
    for (const char* p = m_p; p < m_end; ++p) {
      const char c = *p;
      if (c == '"') {
        if (depth == 1)
          any = true;
        for (++p; p < m_end && *p != '"'; ++p) {
          if (*p == '\\' && p + 1 < m_end)
            ++p;
        }
      } else if (c == '[' || c == '{') {
        if (depth == 1)
          any = true;
        ++depth;
      } else if (c == ']' || c == '}') {
        if (--depth == 0)
          return any ? commas + 1 : 0;
      } else if (depth == 1) {
        if (c == ',')
          ++commas;
        else if (c != ' ' && c != '\t' && c != '\n' && c != '\r')
          any = true;
      }
    }
    return 0;
  }

  bool string(QString& out, qsizetype maxChars) {
    if (peek() != '"')
      return fail(u"text in double quotes is expected"_s);
    return quotedText(
        maxChars, [&](std::string_view plain) { out = QString::fromLatin1(plain.data(), qsizetype(plain.size())); },
        [&](QString&& text) { out = std::move(text); });
  }

  // Text or null: a null QVariant for null, otherwise a QVariant holding the text.
  bool stringOrNull(QVariant& out, qsizetype maxChars) {
    return textOrNull(
        maxChars, [&] { out = QVariant(); },
        [&](std::string_view plain) { out = QVariant(QString::fromLatin1(plain.data(), qsizetype(plain.size()))); },
        [&](QString&& text) { out = QVariant(std::move(text)); });
  }

  // Text or null, handed straight to a record set writer: plain ASCII as the bytes of the document,
  // anything else decoded first.
  bool cellInto(RecordSetWriter& writer, int field, qsizetype maxChars) {
    return textOrNull(
        maxChars, [&] { writer.setNull(field); }, [&](std::string_view plain) { writer.setUtf8(field, plain); },
        [&](QString&& text) { writer.setText(field, text); });
  }

  // A whole number that fits an int, written as a JSON number without fraction or exponent.
  bool integer(int& out) {
    const char first = peek();
    if (first != '-' && (first < '0' || first > '9'))
      return fail(u"a number is expected"_s);
    const char* start = m_p;
    const bool negative = first == '-';
    if (negative)
      ++m_p;
    const char* digits = m_p;
    while (m_p < m_end && *m_p >= '0' && *m_p <= '9')
      ++m_p;
    const qsizetype count = m_p - digits;
    if (count == 0 || (count > 1 && *digits == '0')) {
      m_p = start;
      return fail(u"the number is not written as JSON allows"_s);
    }
    if (m_p < m_end && (*m_p == '.' || *m_p == 'e' || *m_p == 'E')) {
      m_p = start;
      return fail(u"a whole number is expected"_s);
    }
    long long value = 0;
    for (const char* d = digits; d < m_p; ++d) {
      value = value * 10 + (*d - '0');
      if (value > static_cast<long long>(INT_MAX) + 1) {
        m_p = start;
        return fail(u"the number is too large"_s);
      }
    }
    if (negative)
      value = -value;
    if (value > INT_MAX || value < INT_MIN) {
      m_p = start;
      return fail(u"the number is too large"_s);
    }
    out = static_cast<int>(value);
    return true;
  }

private:
  // Reads `open`, then elements separated by commas up to `close`; `element(index)` reads each one.
  template <typename F>
  bool sequence(char open, char close, F&& element) {
    if (peek() != open)
      return fail(open == '{' ? u"an object is expected"_s : u"an array is expected"_s);
    ++m_p;
    if (peek() == close) {
      ++m_p;
      return true;
    }
    for (qsizetype index = 0;; ++index) {
      if (!element(index))
        return false;
      const char next = peek();
      if (next == ',') {
        ++m_p;
        continue;
      }
      if (next == close) {
        ++m_p;
        return true;
      }
      return fail(u"\",\" or \"%1\" is expected"_s.arg(QLatin1Char(close)));
    }
  }

  // Text or null: `onNull()` for null, otherwise the text as quotedText() hands it on.
  template <typename OnNull, typename OnPlain, typename OnText>
  bool textOrNull(qsizetype maxChars, OnNull&& onNull, OnPlain&& onPlain, OnText&& onText) {
    const char next = peek();
    if (next == 'n') {
      if (!literal("null"))
        return false;
      onNull();
      return true;
    }
    if (next != '"')
      return fail(u"text in double quotes or null is expected"_s);
    return quotedText(maxChars, onPlain, onText);
  }

  // Text in double quotes, the reader standing on the opening quote. Most values are plain ASCII without
  // escapes: those go to `onPlain` as the bytes of the document, in one scan and without a copy; anything else
  // is decoded and goes to `onText`.
  template <typename OnPlain, typename OnText>
  bool quotedText(qsizetype maxChars, OnPlain&& onPlain, OnText&& onText) {
    ++m_p;
    const char* s = m_p;
    while (s < m_end) {
      const auto c = static_cast<unsigned char>(*s);
      if (c == '"' || c == '\\' || c < 0x20 || c >= 0x80)
        break;
      ++s;
    }
    if (s < m_end && *s == '"') {
      if (s - m_p > maxChars)
        return fail(u"the text is longer than %1 characters"_s.arg(maxChars));
      onPlain(std::string_view(m_p, static_cast<std::size_t>(s - m_p)));
      m_p = s + 1;
      return true;
    }
    QString text;
    if (!escapedString(text, maxChars))
      return false;
    onText(std::move(text));
    return true;
  }

  void skipSpace() {
    while (m_p < m_end && (*m_p == ' ' || *m_p == '\n' || *m_p == '\r' || *m_p == '\t'))
      ++m_p;
  }

  bool literal(const char* word) {
    const qsizetype length = qstrlen(word);
    if (m_end - m_p < length || qstrncmp(m_p, word, length) != 0)
      return fail(u"\"%1\" is misspelt"_s.arg(QLatin1StringView(word)));
    m_p += length;
    return true;
  }

  static int hexValue(char c) {
    if (c >= '0' && c <= '9')
      return c - '0';
    if (c >= 'a' && c <= 'f')
      return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
      return c - 'A' + 10;
    return -1;
  }

  bool hex4(char32_t& out) {
    if (m_end - m_p < 4)
      return fail(u"four hexadecimal digits are expected after \\u"_s);
    char32_t value = 0;
    for (int i = 0; i < 4; ++i) {
      const int digit = hexValue(m_p[i]);
      if (digit < 0)
        return fail(u"four hexadecimal digits are expected after \\u"_s);
      value = (value << 4) | static_cast<char32_t>(digit);
    }
    m_p += 4;
    out = value;
    return true;
  }

  static void appendUtf8(QByteArray& buffer, char32_t c) {
    if (c < 0x80) {
      buffer.append(static_cast<char>(c));
    } else if (c < 0x800) {
      buffer.append(static_cast<char>(0xC0 | (c >> 6)));
      buffer.append(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
      buffer.append(static_cast<char>(0xE0 | (c >> 12)));
      buffer.append(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
      buffer.append(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
      buffer.append(static_cast<char>(0xF0 | (c >> 18)));
      buffer.append(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
      buffer.append(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
      buffer.append(static_cast<char>(0x80 | (c & 0x3F)));
    }
  }

  // The slow path: escapes and non-ASCII text, gathered as UTF-8 and then decoded strictly.
  bool escapedString(QString& out, qsizetype maxChars) {
    QByteArray buffer;
    // Every UTF-16 unit takes at most three UTF-8 bytes, so more bytes than this is certainly too long.
    const qsizetype maxBytes = maxChars * 3;
    while (true) {
      if (m_p >= m_end)
        return fail(u"the text has no closing double quote"_s);
      if (buffer.size() > maxBytes)
        return fail(u"the text is longer than %1 characters"_s.arg(maxChars));
      const auto c = static_cast<unsigned char>(*m_p);
      if (c == '"') {
        ++m_p;
        break;
      }
      if (c < 0x20)
        return fail(u"a control character must be written as an escape inside text"_s);
      if (c != '\\') {
        buffer.append(static_cast<char>(c));
        ++m_p;
        continue;
      }
      ++m_p;
      if (m_p >= m_end)
        return fail(u"the text has no closing double quote"_s);
      const char escape = *m_p++;
      switch (escape) {
        case '"': buffer.append('"'); break;
        case '\\': buffer.append('\\'); break;
        case '/': buffer.append('/'); break;
        case 'b': buffer.append('\b'); break;
        case 'f': buffer.append('\f'); break;
        case 'n': buffer.append('\n'); break;
        case 'r': buffer.append('\r'); break;
        case 't': buffer.append('\t'); break;
        case 'u': {
          char32_t unit = 0;
          if (!hex4(unit))
            return false;
          if (unit >= 0xDC00 && unit <= 0xDFFF)
            return fail(u"a \\u escape holds the second half of a character pair without its first half"_s);
          if (unit >= 0xD800 && unit <= 0xDBFF) {
            char32_t low = 0;
            if (m_end - m_p < 2 || m_p[0] != '\\' || m_p[1] != 'u')
              return fail(u"a \\u escape holds the first half of a character pair without its second half"_s);
            m_p += 2;
            if (!hex4(low))
              return false;
            if (low < 0xDC00 || low > 0xDFFF)
              return fail(u"a \\u escape holds the first half of a character pair without its second half"_s);
            unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
          }
          appendUtf8(buffer, unit);
          break;
        }
        default:
          --m_p;
          return fail(u"\"\\%1\" is not an escape JSON knows"_s.arg(QLatin1Char(escape)));
      }
    }
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    out = decoder.decode(buffer);
    if (decoder.hasError())
      return fail(u"the text is not valid UTF-8"_s);
    if (out.size() > maxChars)
      return fail(u"the text is longer than %1 characters"_s.arg(maxChars));
    return true;
  }

  const char* m_begin;
  const char* m_p;
  const char* m_end;
  QString m_reason;
  QStringList m_path;
  qsizetype m_offset = 0;
};

QString quoted(const QString& name) { return u"\""_s + name + u"\""_s; }

// Tracks the members of an object with a fixed set of names: each once, none missing, no others.
// Objects are read by the thousand, so the names are compared where they stand, without copies.
class MemberSet {
public:
  static constexpr qsizetype kMaxMembers = 8;
  MemberSet(std::initializer_list<const char16_t*> names) {
    Q_ASSERT(names.size() <= kMaxMembers);
    for (const char16_t* name : names)
      m_names[m_count++] = QStringView(name);
  }
  // Index of a member name, or -1 after recording the failure (unknown or repeated member).
  qsizetype accept(JsonReader& reader, const QString& name) {
    qsizetype index = 0;
    while (index < m_count && m_names[index] != name)
      ++index;
    if (index == m_count) {
      reader.fail(u"unexpected member %1"_s.arg(quoted(name.left(limits::kMaxNameChars))));
      return -1;
    }
    if (m_seen[index]) {
      reader.fail(u"the member %1 appears twice"_s.arg(quoted(name)));
      return -1;
    }
    m_seen[index] = true;
    return index;
  }
  bool complete(JsonReader& reader) const {
    for (qsizetype i = 0; i < m_count; ++i) {
      if (!m_seen[i])
        return reader.fail(u"the member %1 is missing"_s.arg(quoted(m_names[i].toString())));
    }
    return true;
  }
  bool seen(qsizetype index) const { return m_seen[index]; }

private:
  QStringView m_names[kMaxMembers];
  bool m_seen[kMaxMembers] = {};
  qsizetype m_count = 0;
};

// `what` names the text in the failure ("a field name"); a function, so that it is only made on failure.
template <typename What>
bool checkName(JsonReader& reader, const QString& name, What&& what) {
  if (name.isEmpty())
    return reader.fail(u"%1 is empty"_s.arg(what()));
  if (name.size() > limits::kMaxNameChars)
    return reader.fail(u"%1 is longer than %2 characters"_s.arg(what()).arg(limits::kMaxNameChars));
  return true;
}

// A member whose value is text; a failure names the member.
bool readTextMember(JsonReader& reader, const QString& name, QString& out) {
  return reader.string(out, limits::kMaxValueChars) || reader.within(quoted(name));
}

// ---- reply ------------------------------------------------------------------------------------------------

struct ReplyReadState {
  qsizetype cells = 0;  // values read so far in all sections
  qsizetype rows = 0;   // rows read so far in all sections
};

// Reads row `index` of a section, counting it and its values against the bounds of the whole reply and
// refusing more than `maxValues` values; `value(column)` reads each value.
template <typename ReadValue>
bool readRow(JsonReader& reader, ReplyReadState& state, qsizetype index, qsizetype maxValues, ReadValue&& value) {
  if (++state.rows > limits::kMaxRowsPerReply)
    return reader.fail(u"the reply holds more than %1 rows"_s.arg(limits::kMaxRowsPerReply));
  return reader.array([&](qsizetype column) {
    if (column >= maxValues)
      return reader.fail(u"row %1 has more values than the %2 fields"_s.arg(index + 1).arg(maxValues));
    if (++state.cells > limits::kMaxCellsPerReply)
      return reader.fail(u"the reply holds more than %1 values"_s.arg(limits::kMaxCellsPerReply));
    if (!value(column))
      return reader.within(u"row %1, value %2"_s.arg(index + 1).arg(column + 1));
    return true;
  });
}

bool readSection(JsonReader& reader, const QString& sectionName, RecordSet& out, ReplyReadState& state) {
  MemberSet members{u"fields", u"rows"};
  QList<Field> fields;
  // Rows that came before "fields" (members may come in any order): kept until the fields are known.
  std::vector<QList<QVariant>> earlyRows;
  bool haveSet = false;
  QList<QVariant> row;

  const auto readFields = [&]() -> bool {
    QSet<QString> seenNames;
    return reader.array([&](qsizetype index) {
      if (index >= limits::kMaxFieldsPerSection)
        return reader.fail(u"more than %1 fields"_s.arg(limits::kMaxFieldsPerSection));
      QString name;
      if (!reader.string(name, limits::kMaxValueChars))
        return reader.within(u"field %1"_s.arg(index + 1));
      if (!checkName(reader, name, [index] { return u"field name %1"_s.arg(index + 1); }))
        return false;
      const QString key = name.toUpper();
      if (seenNames.contains(key))
        return reader.fail(u"the field %1 appears twice"_s.arg(quoted(name)));
      seenNames.insert(key);
      fields.append(Field{name, sections::fieldType(name).value_or(FieldType::Text)});
      return true;
    });
  };

  const auto readRows = [&]() -> bool {
    if (members.seen(0)) {
      const qsizetype expected = fields.size();
      out = RecordSet(fields);
      haveSet = true;
      // Size the columns once; capped by the values the reply may still hold, so that a row count
      // claimed by a broken document cannot reserve more than the bounds allow.
      const qsizetype budget = (limits::kMaxCellsPerReply - state.cells) / qMax<qsizetype>(1, expected);
      out.reserve(static_cast<int>(std::min({reader.countElements(), budget, limits::kMaxRowsPerReply - state.rows})));
      // The values go straight into the set's storage, a row at a time.
      RecordSetWriter writer(out);
      return reader.array([&](qsizetype index) {
        qsizetype count = 0;
        const bool read = readRow(reader, state, index, expected, [&](qsizetype column) {
          if (!reader.cellInto(writer, static_cast<int>(column), limits::kMaxValueChars))
            return false;
          count = column + 1;
          return true;
        });
        if (!read)
          return false;
        if (count != expected)
          return reader.fail(u"row %1 has %2 values but the section has %3 fields"_s.arg(index + 1).arg(count).arg(expected));
        writer.appendRow();
        return true;
      });
    }
    // Rows that come before the fields are known: kept aside as values, checked against the fields later.
    return reader.array([&](qsizetype index) {
      row.resize(0);
      const bool read = readRow(reader, state, index, std::numeric_limits<qsizetype>::max(), [&](qsizetype) {
        QVariant value;
        if (!reader.stringOrNull(value, limits::kMaxValueChars))
          return false;
        row.append(std::move(value));
        return true;
      });
      if (!read)
        return false;
      earlyRows.push_back(row);
      return true;
    });
  };

  const bool ok = reader.object([&](const QString& name) {
    const qsizetype member = members.accept(reader, name);
    if (member < 0)
      return false;
    return member == 0 ? readFields() : readRows();
  });
  if (!ok || !members.complete(reader))
    return reader.within(u"section %1"_s.arg(quoted(sectionName)));

  if (!haveSet) {
    out = RecordSet(fields);
    out.reserve(static_cast<int>(earlyRows.size()));
    for (qsizetype i = 0; i < qsizetype(earlyRows.size()); ++i) {
      if (earlyRows[i].size() != fields.size()) {
        reader.fail(u"row %1 has %2 values but the section has %3 fields"_s.arg(i + 1).arg(earlyRows[i].size()).arg(fields.size()));
        return reader.within(u"section %1"_s.arg(quoted(sectionName)));
      }
      out.addNew(earlyRows[i]);
    }
  }
  out.moveFirst();
  return true;
}

bool readReply(JsonReader& reader, Reply& reply) {
  MemberSet members{u"replyTo", u"requestId", u"error", u"sections"};
  ReplyReadState state;
  const bool ok = reader.object([&](const QString& name) {
    const qsizetype member = members.accept(reader, name);
    switch (member) {
      case 0:
        return readTextMember(reader, name, reply.replyTo);
      case 1:
        return readTextMember(reader, name, reply.requestId);
      case 2:
        return readTextMember(reader, name, reply.error);
      case 3:
        return reader.object([&](const QString& sectionName) {
          if (!checkName(reader, sectionName, [] { return u"a section name"_s; }))
            return false;
          if (reply.sections.contains(sectionName))
            return reader.fail(u"the section %1 appears twice"_s.arg(quoted(sectionName)));
          if (reply.sections.size() >= limits::kMaxSections)
            return reader.fail(u"more than %1 sections"_s.arg(limits::kMaxSections));
          RecordSet section;
          if (!readSection(reader, sectionName, section, state))
            return false;
          reply.sections.insert(sectionName, std::move(section));
          return true;
        });
      default:
        return false;
    }
  });
  return ok && members.complete(reader);
}

// ---- request ----------------------------------------------------------------------------------------------

bool readParameter(JsonReader& reader, RequestParameter& parameter) {
  MemberSet members{u"system", u"key", u"op", u"value"};
  QString* targets[] = {&parameter.system, &parameter.key, &parameter.op, &parameter.value};
  const bool ok = reader.object([&](const QString& name) {
    const qsizetype member = members.accept(reader, name);
    if (member < 0)
      return false;
    return readTextMember(reader, name, *targets[member]);
  });
  return ok && members.complete(reader);
}

bool readRecordLists(JsonReader& reader, QList<RecordList>& lists) {
  qsizetype records = 0;
  return reader.object([&](const QString& listName) {
    if (!checkName(reader, listName, [] { return u"a record-set name"_s; }))
      return false;
    for (const RecordList& list : lists) {
      if (list.name == listName)
        return reader.fail(u"the record set %1 appears twice"_s.arg(quoted(listName)));
    }
    if (lists.size() >= limits::kMaxRecordLists)
      return reader.fail(u"more than %1 record sets"_s.arg(limits::kMaxRecordLists));
    RecordList list;
    list.name = listName;
    const bool ok = reader.array([&](qsizetype index) {
      if (++records > limits::kMaxRecordsPerRequest)
        return reader.fail(u"more than %1 records"_s.arg(limits::kMaxRecordsPerRequest));
      SaveRecord record;
      QSet<QString> seen;
      const bool recordOk = reader.object([&](const QString& fieldName) {
        if (!checkName(reader, fieldName, [] { return u"a field name"_s; }))
          return false;
        if (seen.contains(fieldName))
          return reader.fail(u"the field %1 appears twice"_s.arg(quoted(fieldName)));
        if (seen.size() >= limits::kMaxFieldsPerRecord)
          return reader.fail(u"more than %1 fields"_s.arg(limits::kMaxFieldsPerRecord));
        seen.insert(fieldName);
        QVariant value;
        if (!reader.stringOrNull(value, limits::kMaxValueChars))
          return reader.within(u"field %1"_s.arg(quoted(fieldName)));
        record.setField(fieldName, value);
        return true;
      });
      if (!recordOk)
        return reader.within(u"record %1"_s.arg(index + 1));
      list.records.append(std::move(record));
      return true;
    });
    if (!ok)
      return reader.within(u"record set %1"_s.arg(quoted(listName)));
    lists.append(std::move(list));
    return true;
  });
}

bool readRequest(JsonReader& reader, Request& request) {
  MemberSet members{u"replyTo", u"version", u"code", u"user", u"requestId", u"params", u"records"};
  const bool ok = reader.object([&](const QString& name) {
    const qsizetype member = members.accept(reader, name);
    switch (member) {
      case 0:
        return readTextMember(reader, name, request.replyTo);
      case 1:
        return readTextMember(reader, name, request.version);
      case 2:
        return reader.integer(request.code) || reader.within(quoted(name));
      case 3:
        return readTextMember(reader, name, request.user);
      case 4:
        return readTextMember(reader, name, request.requestId);
      case 5:
        return reader.array([&](qsizetype index) {
          if (index >= limits::kMaxParams)
            return reader.fail(u"more than %1 parameters"_s.arg(limits::kMaxParams));
          RequestParameter parameter;
          if (!readParameter(reader, parameter))
            return reader.within(u"parameter %1"_s.arg(index + 1));
          request.params.append(std::move(parameter));
          return true;
        }) || reader.within(quoted(name));
      case 6:
        return readRecordLists(reader, request.records) || reader.within(quoted(name));
      default:
        return false;
    }
  });
  return ok && members.complete(reader);
}

// A whole document: one object of the expected shape, nothing after it.
template <typename ReadFn>
bool readDocument(JsonReader& reader, ReadFn&& read) {
  if (reader.atEnd())
    return reader.fail(u"the text is empty"_s);
  if (!read())
    return false;
  if (!reader.atEnd())
    return reader.fail(u"unexpected text after the end of the object"_s);
  return true;
}

// ------------------------------------------------------------------------------------------------------------
// Writing.

// The text of a document as it is written: bytes go straight into one buffer, which grows by doubling.
class JsonWriter {
public:
  explicit JsonWriter(qsizetype capacity) : m_text(std::max<qsizetype>(capacity, 64), Qt::Uninitialized) {
    m_data = m_text.data();
  }
  void append(char c) {
    if (m_size == m_text.size())
      grow(1);
    m_data[m_size++] = c;
  }
  void append(const char* text, qsizetype length) {
    if (m_size + length > m_text.size())
      grow(length);
    if (length > 0)
      std::memcpy(m_data + m_size, text, static_cast<std::size_t>(length));
    m_size += length;
  }
  void append(const char* text) { append(text, qstrlen(text)); }
  void append(const QByteArray& text) { append(text.constData(), text.size()); }
  QByteArray take() {
    m_text.truncate(m_size);
    return std::move(m_text);
  }

private:
  void grow(qsizetype more) {
    m_text.resize(std::max(m_text.size() * 2, m_size + more));
    m_data = m_text.data();
  }

  QByteArray m_text;
  char* m_data = nullptr;
  qsizetype m_size = 0;
};

void appendUtf8String(JsonWriter& out, std::string_view utf8) {
  out.append('"');
  const char* p = utf8.data();
  const char* end = p + utf8.size();
  const char* run = p;
  static constexpr char hex[] = "0123456789abcdef";
  for (; p < end; ++p) {
    const auto c = static_cast<unsigned char>(*p);
    if (c >= 0x20 && c != '"' && c != '\\')
      continue;
    out.append(run, p - run);
    run = p + 1;
    switch (c) {
      case '"': out.append("\\\""); break;
      case '\\': out.append("\\\\"); break;
      case '\n': out.append("\\n"); break;
      case '\r': out.append("\\r"); break;
      case '\t': out.append("\\t"); break;
      case '\b': out.append("\\b"); break;
      case '\f': out.append("\\f"); break;
      default: {
        const char escape[] = {'\\', 'u', '0', '0', hex[c >> 4], hex[c & 0xF]};
        out.append(escape, sizeof escape);
      }
    }
  }
  out.append(run, p - run);
  out.append('"');
}

void appendString(JsonWriter& out, const QString& text) {
  const QByteArray utf8 = text.toUtf8();
  appendUtf8String(out, std::string_view(utf8.constData(), static_cast<std::size_t>(utf8.size())));
}

void appendValue(JsonWriter& out, const QVariant& value) {
  if (value.isNull())
    out.append("null");
  else
    appendString(out, value.toString());
}

// Writes one object: its members in the order given, with the commas between them. Each member() call writes
// the member's name and hands back the writer for its value.
class ObjectWriter {
public:
  explicit ObjectWriter(JsonWriter& out) : m_out(out) { m_out.append('{'); }
  JsonWriter& member(const char* name) {
    separate();
    m_out.append('"');
    m_out.append(name);
    m_out.append("\":");
    return m_out;
  }
  JsonWriter& member(const QString& name) {
    separate();
    appendString(m_out, name);
    m_out.append(':');
    return m_out;
  }
  void text(const char* name, const QString& value) { appendString(member(name), value); }
  void close() { m_out.append('}'); }

private:
  void separate() {
    if (m_any)
      m_out.append(',');
    m_any = true;
  }

  JsonWriter& m_out;
  bool m_any = false;
};

}  // namespace

QByteArray encodeRequest(const Request& request) {
  JsonWriter out(512);
  ObjectWriter document(out);
  document.text("replyTo", request.replyTo);
  document.text("version", request.version);
  document.member("code").append(QByteArray::number(request.code));
  document.text("user", request.user);
  document.text("requestId", request.requestId);
  document.member("params").append('[');
  for (qsizetype i = 0; i < request.params.size(); ++i) {
    const RequestParameter& parameter = request.params[i];
    if (i > 0)
      out.append(',');
    ObjectWriter object(out);
    object.text("system", parameter.system);
    object.text("key", parameter.key);
    object.text("op", parameter.op);
    object.text("value", parameter.value);
    object.close();
  }
  out.append(']');
  ObjectWriter lists(document.member("records"));
  for (const RecordList& list : request.records) {
    lists.member(list.name).append('[');
    for (qsizetype r = 0; r < list.records.size(); ++r) {
      if (r > 0)
        out.append(',');
      ObjectWriter record(out);
      for (const auto& [field, value] : list.records[r].fields())
        appendValue(record.member(field), value);
      record.close();
    }
    out.append(']');
  }
  lists.close();
  document.close();
  return out.take();
}

Result<Request> decodeRequest(QByteArrayView json) {
  if (json.size() > limits::kMaxRequestBytes) {
    return Result<Request>::failure(
        u"The request could not be read: it is %1 bytes long, more than the %2 bytes a request may have."_s
            .arg(json.size())
            .arg(limits::kMaxRequestBytes));
  }
  JsonReader reader(json);
  Request request;
  if (!readDocument(reader, [&] { return readRequest(reader, request); }))
    return Result<Request>::failure(u"The request could not be read: "_s + reader.message() + u"."_s);
  return request;
}

QByteArray encodeReply(const Reply& reply) {
  // Room for what most replies take (short codes, numbers and dates), so that the text is seldom moved.
  qsizetype estimate = 256 + reply.error.size();
  for (auto it = reply.sections.cbegin(); it != reply.sections.cend(); ++it) {
    const RecordSet& set = it.value();
    estimate += 64 + 24 * set.fieldCount() + (set.isOpen() ? qsizetype(set.recordCount()) * set.fieldCount() * 10 : 0);
  }
  JsonWriter out(std::min(estimate, limits::kMaxReplyBytes));
  ObjectWriter document(out);
  document.text("replyTo", reply.replyTo);
  document.text("requestId", reply.requestId);
  document.text("error", reply.error);
  ObjectWriter sections(document.member("sections"));
  for (auto it = reply.sections.cbegin(); it != reply.sections.cend(); ++it) {
    ObjectWriter section(sections.member(it.key()));
    section.member("fields").append('[');
    const RecordSet& set = it.value();
    const int fieldCount = set.fieldCount();
    for (int f = 0; f < fieldCount; ++f) {
      if (f > 0)
        out.append(',');
      appendString(out, set.fields()[f].name);
    }
    out.append(']');
    section.member("rows").append('[');
    const int rowCount = set.isOpen() ? set.recordCount() : 0;
    for (int r = 0; r < rowCount; ++r) {
      if (r > 0)
        out.append(',');
      out.append('[');
      for (int f = 0; f < fieldCount; ++f) {
        if (f > 0)
          out.append(',');
        // The stored UTF-8 as it is, without a QString on the way.
        if (const std::optional<std::string_view> text = set.utf8At(r, f))
          appendUtf8String(out, *text);
        else
          out.append("null");
      }
      out.append(']');
    }
    out.append(']');
    section.close();
  }
  sections.close();
  document.close();
  return out.take();
}

Reply decodeReply(QByteArrayView json, const QString& replyTo, const QString& requestId) {
  if (json.size() > limits::kMaxReplyBytes) {
    return Reply::failure(
        replyTo, requestId,
        u"The reply from the host system could not be read: it is %1 bytes long, more than the %2 bytes a reply may have."_s
            .arg(json.size())
            .arg(limits::kMaxReplyBytes));
  }
  JsonReader reader(json);
  Reply reply;
  if (!readDocument(reader, [&] { return readReply(reader, reply); })) {
    return Reply::failure(replyTo, requestId,
                          u"The reply from the host system could not be read: "_s + reader.message() + u"."_s);
  }
  return reply;
}

}  // namespace adjustacc::messaging
