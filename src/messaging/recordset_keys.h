#pragma once
// Comparison keys of one record-set column.
//
// Every cell gets a rank: a small integer that orders the column's values the way the record set compares
// them, with equal values sharing one rank. Sorting and filtering then compare integers instead of text.
//   rank 0                   null
//   ranks 1 .. unparsed      values that do not read as the field's type (numbers, dates), in text order
//   ranks unparsed+1 .. top  values of the field's type, in their own order (text: case-insensitively)
// A text field has no unparsed values. Built once per column and kept until the column changes.

#include "recordset.h"
#include "recordset_values.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace adjustacc::messaging::detail {

class Column;

struct ColumnKeys {
  FieldType type = FieldType::Text;
  std::vector<std::uint32_t> rank;            // per physical row
  std::vector<std::uint32_t> representative;  // per rank: a physical row that holds it (index 0 unused)
  std::uint32_t unparsed = 0;
  std::uint32_t top = 0;

  std::uint32_t firstParsed() const { return unparsed + 1; }
  std::size_t bytes() const {
    return sizeof(ColumnKeys) + (rank.capacity() + representative.capacity()) * sizeof(std::uint32_t);
  }
};

std::shared_ptr<const ColumnKeys> buildColumnKeys(const Column& column, FieldType type);

// The typed key of a non-null cell, as the ranks order it.
SortValue cellValue(const Column& column, std::uint32_t row, FieldType type);

// First rank whose value is not less than `value` (top + 1 when none), searching the parsed ranks when
// `value` is typed and the unparsed ranks when it is text that did not read as the field's type.
std::uint32_t lowerBound(const Column& column, const ColumnKeys& keys, const SortValue& value);
// True when the value of `rank` equals `value`.
bool rankEquals(const Column& column, const ColumnKeys& keys, std::uint32_t rank, const SortValue& value);

}  // namespace adjustacc::messaging::detail
