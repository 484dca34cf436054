#include "platform/gridselection.h"

#include <algorithm>

namespace adjustacc::platform {

using messaging::kNoBookmark;

bool GridSelection::setMode(Mode mode) {
  if (m_mode == mode) {
    return false;
  }
  m_mode = mode;
  if (mode == Mode::None) {
    return clear();
  }
  if (mode == Mode::Single && m_selected.size() > 1) {
    m_selected = {m_selected.constLast()};
    return true;
  }
  return false;
}

QList<int> GridSelection::rows(const GridRowSource& source) const {
  QList<int> result;
  for (const Bookmark id : m_selected) {
    const int at = source.rowOf(id);
    if (at >= 0) {
      result.append(at);
    }
  }
  std::sort(result.begin(), result.end());
  return result;
}

bool GridSelection::select(Bookmark id, bool selected) {
  if (id == kNoBookmark || m_mode == Mode::None) {
    return false;
  }
  const bool present = m_selected.contains(id);
  const bool othersToDrop = selected && m_mode == Mode::Single && m_selected.size() > 1;
  if (selected == present && !othersToDrop) {
    return false;
  }
  if (selected) {
    if (m_mode == Mode::Single) {
      m_selected.clear();
    }
    m_selected.append(id);
  } else {
    m_selected.removeAll(id);
  }
  return true;
}

bool GridSelection::clear() {
  m_anchor = kNoBookmark;
  if (m_selected.isEmpty()) {
    return false;
  }
  m_selected.clear();
  return true;
}

bool GridSelection::forget(Bookmark id) {
  return m_selected.removeAll(id) > 0;
}

bool GridSelection::click(const GridRowSource& source, int row, GridClickKind kind) {
  if (m_mode == Mode::None) {
    return false;
  }
  const QList<Bookmark> before = m_selected;
  const Bookmark id = source.bookmarkAt(row);
  const bool multi = m_mode == Mode::Multi;
  const int anchorRow = source.rowOf(m_anchor);
  if (kind == GridClickKind::Toggle && multi) {
    if (m_selected.contains(id)) {
      m_selected.removeAll(id);
    } else {
      m_selected.append(id);
    }
    m_anchor = id;
  } else if (kind == GridClickKind::Extend && multi && anchorRow >= 0) {
    m_selected.clear();
    for (int r = qMin(anchorRow, row); r <= qMax(anchorRow, row); ++r) {
      m_selected.append(source.bookmarkAt(r));
    }
  } else {
    m_selected = {id};
    m_anchor = id;
  }
  return m_selected != before;
}

}  // namespace adjustacc::platform
