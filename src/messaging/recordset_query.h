#pragma once
// Sort and filter texts of a record set: reading them against the set's fields, and applying them to
// rows.
//
// Sort text:   key [ASC|DESC] { "," key [ASC|DESC] }      key: a field name, or [a field name]
// Filter text: or-expr := and-expr { OR and-expr }
//              and-expr := not-expr { AND not-expr }
//              not-expr := NOT not-expr | "(" or-expr ")" | comparison
//              comparison := key op value | key [NOT] LIKE value | key IS [NOT] NULL
//              op := = | <> | < | > | <= | >=
//              value := 'text' ('' inside for a quote) | "text" | #date [time]# | number | Null | word
// Keywords and field names are case-insensitive. The value is read as the field's type; text that does not
// read as a number or date for a number or date field is an error.

#include "recordset.h"
#include "recordset_values.h"

#include <cstdint>
#include <memory>
#include <variant>
#include <vector>

namespace adjustacc::messaging::detail {

struct Data;

struct SortKey {
  int field = 0;
  bool descending = false;
};

std::variant<std::vector<SortKey>, TextError> parseSort(const QString& text, const QList<Field>& fields);

struct FilterNode {
  enum class Kind { And, Or, Not, Compare, IsNull, NotNull, Like };
  enum class Compare { Equal, NotEqual, Less, LessEqual, Greater, GreaterEqual };
  Kind kind = Kind::And;
  std::vector<std::unique_ptr<FilterNode>> children;  // And, Or, Not
  int field = -1;
  Compare compare = Compare::Equal;
  FilterValue value;                      // Compare: already read as the field's type
  std::unique_ptr<LikePattern> pattern;  // Like
  bool notLike = false;                  // NOT LIKE: still false for null
};

std::variant<std::shared_ptr<const FilterNode>, TextError> parseFilter(const QString& text,
                                                                       const QList<Field>& fields);

// The rows among `candidates` (physical rows in ascending order) that the filter lets through, in the same
// order.
std::vector<std::uint32_t> applyFilter(const FilterNode& filter, const Data& data,
                                       std::vector<std::uint32_t> candidates);
// The same over every physical row of a set that has none deleted, without listing them first.
std::vector<std::uint32_t> applyFilterToAll(const FilterNode& filter, const Data& data);

// Sorts `rows` (physical rows in ascending order) by the keys; equal rows keep their order.
void applySort(const std::vector<SortKey>& keys, const Data& data, std::vector<std::uint32_t>& rows);

}  // namespace adjustacc::messaging::detail
