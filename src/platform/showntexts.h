#pragma once
// The texts of the record-set cells a list has shown, each made once from the set's UTF-8 (and, in a money
// column, once in the money format) and kept while the set's values stay as they were. A list reads the same
// cells again on every repaint, and again when the clerk filters the same rows another way; making a string
// of each cell every time cost more than everything else the list does with it.
//
// Kept in blocks of rows, made as cells are first read; all of it goes as soon as any value or row of the
// set changes (the set's content stamp moves), or when the list follows another set. One list's, on the
// thread that shows it.

#include "messaging/recordset.h"
#include "platform/gridcolumns.h"

#include <QString>

#include <array>
#include <bitset>
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
  static constexpr std::size_t kBlockRows = 128;
  struct Block {
    std::array<QString, kBlockRows> texts;
    std::bitset<kBlockRows> made;
  };
  // Where the cell `id` of the list of texts `texts` is kept; `made` tells whether it was already filled (the
  // caller fills it otherwise). Everything kept goes first when the set's content is no longer the same.
  QString& slot(const messaging::RecordSet& set, messaging::Bookmark id, std::size_t texts, bool& made);

  // By field and kind (the set's own text, then as money), then by bookmark / kBlockRows.
  std::vector<std::vector<std::unique_ptr<Block>>> m_texts;
  std::uint64_t m_stamp = 0;  // the set's content when the texts were made
};

}  // namespace adjustacc::platform
