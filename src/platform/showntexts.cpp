#include "platform/showntexts.h"

namespace adjustacc::platform {

ShownTexts::Slot& ShownTexts::slot(const messaging::RecordSet& set, messaging::Bookmark id, int field, int kind) {
  if (const std::uint64_t stamp = set.contentStamp(); stamp != m_stamp) {
    clear();
    m_stamp = stamp;
    m_slotsPerRow = static_cast<std::size_t>(set.fieldCount()) * 2;
  }
  const auto at = static_cast<std::size_t>(id);
  const std::size_t b = at / kBlockRows;
  if (b >= m_blocks.size()) {
    m_blocks.resize(b + 1);
  }
  if (!m_blocks[b]) {
    m_blocks[b] = std::make_unique<Block>();
  }
  RowTexts& row = (*m_blocks[b])[at % kBlockRows];
  if (!row) {
    row = std::make_unique<Slot[]>(m_slotsPerRow);
  }
  return row[static_cast<std::size_t>(field) * 2 + static_cast<std::size_t>(kind)];
}

QString ShownTexts::text(const messaging::RecordSet& set, int row, messaging::Bookmark id, int field) {
  if (id < 0 || field < 0 || field >= set.fieldCount()) {
    return set.textAt(row, field);
  }
  Slot& own = slot(set, id, field, 0);
  if (!own.made) {
    own.text = set.textAt(row, field);
    own.made = true;
  }
  return own.text;
}

QString ShownTexts::shown(const messaging::RecordSet& set, int row, messaging::Bookmark id, int field,
                          GridColumn::Display display) {
  if (display != GridColumn::Display::Currency || id < 0 || field < 0 || field >= set.fieldCount()) {
    return GridColumn::shownText(text(set, row, id, field), display);
  }
  // A row's texts live on the heap and go only when the content changes, so the slot stays where it is while
  // the set's own text is made.
  Slot& shown = slot(set, id, field, 1);
  if (!shown.made) {
    shown.text = GridColumn::shownText(text(set, row, id, field), display);
    shown.made = true;
  }
  return shown.text;
}

void ShownTexts::clear() {
  m_blocks.clear();
  m_slotsPerRow = 0;
  m_stamp = 0;
}

}  // namespace adjustacc::platform
