#include "platform/gridrowloaded.h"

namespace adjustacc::platform {

using messaging::kNoBookmark;

const QVariant* GridRowLoaded::find(Bookmark id, int column) const {
  if (!holds(id)) {
    return nullptr;
  }
  const Span& span = m_spans[static_cast<std::size_t>(id)];
  for (std::uint32_t i = span.first; i < span.first + span.count; ++i) {
    if (m_values[i].first == column) {
      return &m_values[i].second;
    }
  }
  return nullptr;
}

void GridRowLoaded::forget(Bookmark id) {
  if (holds(id)) {
    Span& span = m_spans[static_cast<std::size_t>(id)];
    m_forgotten += span.count;
    span = Span();
    compactIfWasteful();
  }
}

void GridRowLoaded::clear() {
  // Both keep their room: the rows are about to be formatted again.
  m_spans.clear();
  m_values.clear();
  m_forgotten = 0;
}

void GridRowLoaded::compactIfWasteful() {
  // Rows changed one by one leave their old values behind; once those are most of the array, it is made
  // again from the rows still formatted. Not while a row is being formatted: its values must stay last.
  if (isLoading() || m_forgotten < 1024 || m_forgotten * 2 < m_values.size()) {
    return;
  }
  std::vector<std::pair<int, QVariant>> kept;
  kept.reserve(m_values.size() - m_forgotten);
  for (Span& span : m_spans) {
    if (span.loaded) {
      const auto first = static_cast<std::uint32_t>(kept.size());
      for (std::uint32_t i = span.first; i < span.first + span.count; ++i) {
        kept.push_back(std::move(m_values[i]));
      }
      span.first = first;
    }
  }
  m_values = std::move(kept);
  m_forgotten = 0;
}

void GridRowLoaded::start(Bookmark id) {
  const auto at = static_cast<std::size_t>(id);
  if (at >= m_spans.size()) {
    m_spans.resize(at + 1);
  }
  Span& span = m_spans[at];
  if (span.loaded) {
    m_forgotten += span.count;
  }
  span = Span{static_cast<std::uint32_t>(m_values.size()), 0, true};
}

bool GridRowLoaded::load(int row, Bookmark id, const std::function<void(Bookmark)>& handler) {
  if (id < 0) {
    return false;
  }
  start(id);
  struct LoadingScope {
    GridRowLoaded& loaded;
    bool done = false;
    ~LoadingScope() {
      const Bookmark id = loaded.m_loadingId;
      loaded.m_loadingRow = -1;
      loaded.m_loadingId = kNoBookmark;
      if (!done) {
        loaded.forget(id);
      }
    }
  } scope{*this};
  m_loadingRow = row;
  m_loadingId = id;
  handler(id);
  scope.done = true;
  return holds(id);
}

void GridRowLoaded::set(int column, const QVariant& value) {
  if (m_loadingId < 0) {
    return;
  }
  if (!holds(m_loadingId)) {
    start(m_loadingId);  // the handler made the grid forget its rows meanwhile: this one is being made again
  }
  Span& span = m_spans[static_cast<std::size_t>(m_loadingId)];
  for (std::uint32_t i = span.first; i < span.first + span.count; ++i) {
    if (m_values[i].first == column) {
      m_values[i].second = value;
      return;
    }
  }
  if (span.first + span.count != m_values.size()) {
    // Only the row being formatted adds values, so its own are last; should that ever not hold, they are
    // moved to the end before one is added.
    const auto first = static_cast<std::uint32_t>(m_values.size());
    for (std::uint32_t i = span.first; i < span.first + span.count; ++i) {
      m_values.push_back(m_values[i]);
    }
    m_forgotten += span.count;
    span.first = first;
  }
  m_values.emplace_back(column, value);
  ++span.count;
}

}  // namespace adjustacc::platform
