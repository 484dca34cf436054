#pragma once
// Comparison keys of one record-set column, derived from its text on first use and kept until the column
// changes.
//
// Typed values (number and date fields): each cell read once as its field's type, so that a filter
// compares numbers and moments instead of reading text again. One linear pass over the column.
//
// Ranks (any field, for sorting): a small integer per cell that orders the column's values the way the
// record set compares them, with equal values sharing one rank:
//   rank 0                   null
//   ranks 1 .. unparsed      values that do not read as the field's type (numbers, dates), in text order
//   ranks unparsed+1 .. top  values of the field's type, in their own order (text: case-insensitively)
// A text field has no unparsed values. Ranks are built by sorting the cells' typed values (or folded
// text) with a radix sort and numbering the runs of equal values.

#include "recordset.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

namespace adjustacc::messaging::detail {

class Column;

// A moment that is no moment: the cell is null or does not read as a date.
inline constexpr std::int64_t kNoMoment = std::numeric_limits<std::int64_t>::min();

struct TypedColumn {
  // Number fields: the value of each physical row; NaN when the cell is null or not a number (NaN passes
  // no comparison, which is what such a cell must do).
  std::vector<double> numbers;
  // Date and date-time fields: microseconds since 1970 of each physical row; kNoMoment when null or
  // not a date.
  std::vector<std::int64_t> moments;

  std::size_t bytes() const {
    return sizeof(TypedColumn) + numbers.capacity() * sizeof(double) + moments.capacity() * sizeof(std::int64_t);
  }
};

struct ColumnRanks {
  std::vector<std::uint32_t> rank;  // per physical row
  std::uint32_t unparsed = 0;
  std::uint32_t top = 0;

  std::size_t bytes() const { return sizeof(ColumnRanks) + rank.capacity() * sizeof(std::uint32_t); }
};

// Only for number and date fields.
std::shared_ptr<const TypedColumn> buildTypedColumn(const Column& column, FieldType type);
// `typed` is the column's typed values for number and date fields, ignored for text.
std::shared_ptr<const ColumnRanks> buildColumnRanks(const Column& column, FieldType type, const TypedColumn* typed);

}  // namespace adjustacc::messaging::detail
