#include "platform/gridrowloaded.h"

namespace adjustacc::platform {

using messaging::kNoBookmark;

const QVariant* GridRowLoaded::find(const Values& values, int column) {
  for (const auto& [at, value] : values) {
    if (at == column) {
      return &value;
    }
  }
  return nullptr;
}

void GridRowLoaded::forget(Bookmark id) {
  if (holds(id)) {
    const auto at = static_cast<std::size_t>(id);
    m_rows[at] = Values();
    m_loaded[at] = false;
  }
}

void GridRowLoaded::clear() {
  m_rows.clear();
  m_loaded.clear();
}

void GridRowLoaded::start(Bookmark id) {
  const auto at = static_cast<std::size_t>(id);
  if (at >= m_rows.size()) {
    m_rows.resize(at + 1);
    m_loaded.resize(at + 1, false);
  }
  m_rows[at].clear();
  m_loaded[at] = true;
}

const GridRowLoaded::Values* GridRowLoaded::load(int row, Bookmark id, const std::function<void(Bookmark)>& handler) {
  if (id < 0) {
    return nullptr;
  }
  start(id);
  struct LoadingScope {
    GridRowLoaded& loaded;
    bool done = false;
    ~LoadingScope() {
      if (!done) {
        loaded.forget(loaded.m_loadingId);
      }
      loaded.m_loadingRow = -1;
      loaded.m_loadingId = kNoBookmark;
    }
  } scope{*this};
  m_loadingRow = row;
  m_loadingId = id;
  handler(id);
  scope.done = true;
  return this->row(id);
}

void GridRowLoaded::set(int column, const QVariant& value) {
  if (m_loadingId < 0) {
    return;
  }
  if (!holds(m_loadingId)) {
    start(m_loadingId);  // the handler made the grid forget its rows meanwhile: this one is being made again
  }
  Values& values = m_rows[static_cast<std::size_t>(m_loadingId)];
  for (auto& [at, held] : values) {
    if (at == column) {
      held = value;
      return;
    }
  }
  values.append({column, value});
}

}  // namespace adjustacc::platform
