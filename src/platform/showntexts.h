#pragma once
// The texts of the record-set cells a list has shown, each made once from the set's UTF-8 (and, in a money
// column, once in the money format) and kept while the set's values stay as they were. A list reads the same
// cells again on every repaint, and again when the clerk filters the same rows another way; making a string
// of each cell every time cost more than everything else the list does with it.
//
// Kept row by row, made as cells are first read; all of it goes as soon as any value or row of the
// set changes (the set's content stamp moves), or when the list follows another set. One list's, on the
// thread that shows it.

#include "messaging/recordset.h"
#include "platform/gridcolumns.h"

#include <QString>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace adjustacc::platform {

class ShownTexts {
public:
  // The text of `field` in the set's visible `row`, whose bookmark is `id` (a null value: the empty text).
  QString text(const messaging::RecordSet& set, int row, messaging::Bookmark id, int field);
  // The same text as a column of that kind shows it.
  QString shown(const messaging::RecordSet& set, int row, messaging::Bookmark id, int field,
                GridColumn::Display display);
  void clear();

private:
  // One row's texts: for each field, the set's own text and its money form, each with whether it was made.
  struct Slot {
    QString text;
    bool made = false;
  };
  static constexpr std::size_t kBlockRows = 128;
  using RowTexts = std::unique_ptr<Slot[]>;
  using Block = std::array<RowTexts, kBlockRows>;

  // Where the text `kind` (0: the set's own, 1: as money) of `field` in row `id` is kept. Everything kept goes
  // first when the set's content is no longer the same.
  Slot& slot(const messaging::RecordSet& set, messaging::Bookmark id, int field, int kind);

  // By bookmark / kBlockRows, then by bookmark; a row's texts are made when one of its cells is first read,
  // so what is kept grows with the rows shown, not with the set.
  std::vector<std::unique_ptr<Block>> m_blocks;
  std::size_t m_slotsPerRow = 0;
  std::uint64_t m_stamp = 0;  // the set's content when the texts were made
};

}  // namespace adjustacc::platform
