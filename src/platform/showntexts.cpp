#include "platform/showntexts.h"

namespace adjustacc::platform {

QString& ShownTexts::slot(const messaging::RecordSet& set, messaging::Bookmark id, std::size_t texts, bool& made) {
  if (const std::uint64_t stamp = set.contentStamp(); stamp != m_stamp) {
    clear();
    m_stamp = stamp;
  }
  if (texts >= m_texts.size()) {
    m_texts.resize(texts + 1);
  }
  std::vector<std::unique_ptr<Block>>& blocks = m_texts[texts];
  const auto at = static_cast<std::size_t>(id);
  const std::size_t b = at / kBlockRows;
  if (b >= blocks.size()) {
    blocks.resize(b + 1);
  }
  if (!blocks[b]) {
    blocks[b] = std::make_unique<Block>();
  }
  Block& block = *blocks[b];
  const std::size_t cell = at % kBlockRows;
  made = block.made[cell];
  block.made.set(cell);  // the caller fills it now
  return block.texts[cell];
}

QString ShownTexts::text(const messaging::RecordSet& set, int row, messaging::Bookmark id, int field) {
  if (id < 0 || field < 0) {
    return set.textAt(row, field);
  }
  bool made = false;
  QString& text = slot(set, id, static_cast<std::size_t>(field) * 2, made);
  if (!made) {
    text = set.textAt(row, field);
  }
  return text;
}

QString ShownTexts::shown(const messaging::RecordSet& set, int row, messaging::Bookmark id, int field,
                          GridColumn::Display display) {
  if (display != GridColumn::Display::Currency || id < 0 || field < 0) {
    return GridColumn::shownText(text(set, row, id, field), display);
  }
  // Blocks live on the heap and go only when the content changes, so the slot stays where it is while the
  // set's own text is made (which may add blocks).
  bool made = false;
  QString& shown = slot(set, id, static_cast<std::size_t>(field) * 2 + 1, made);
  if (!made) {
    shown = GridColumn::shownText(text(set, row, id, field), display);
  }
  return shown;
}

void ShownTexts::clear() {
  m_texts.clear();
  m_stamp = 0;
}

}  // namespace adjustacc::platform
