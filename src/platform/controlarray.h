#pragma once
// An array of like controls addressed by index (mCmdButton(2), mLblData(0)), as the screens' index tables
// give them. Indexes need not be contiguous (a screen may have buttons 0, 2 and 3).

#include "platform/control.h"

#include <QList>
#include <QString>

#include <map>
#include <memory>
#include <utility>

namespace adjustacc::platform {

template <typename T>
class ControlArray {
public:
  explicit ControlArray(QString name) : m_name(std::move(name)) {}

  QString name() const { return m_name; }

  // Creates the element at index (extra arguments go to the control after its name), replacing any
  // element that was there.
  template <typename... Args>
  T& add(int index, Args&&... args) {
    auto control = std::make_unique<T>(m_name, std::forward<Args>(args)...);
    control->setIndex(index);
    T& result = *control;
    m_items[index] = std::move(control);
    return result;
  }

  bool contains(int index) const { return m_items.find(index) != m_items.end(); }
  // The element, or null when the array has none at that index.
  T* find(int index) const {
    const auto it = m_items.find(index);
    return it == m_items.end() ? nullptr : it->second.get();
  }

  // The element at index. An index the array lacks is a fault in the screen: it is logged and a spare
  // control that no view shows is returned, so the procedure goes on instead of crashing.
  T& operator[](int index) { return element(index); }
  const T& operator[](int index) const { return element(index); }
  T& at(int index) { return element(index); }

  int count() const { return static_cast<int>(m_items.size()); }
  QList<int> indexes() const {
    QList<int> result;
    for (const auto& [index, control] : m_items) {
      result.append(index);
    }
    return result;
  }
  // Calls f(index, control) for each element in index order.
  template <typename F>
  void forEach(F&& f) const {
    for (const auto& [index, control] : m_items) {
      f(index, *control);
    }
  }

private:
  T& element(int index) const {
    if (T* control = find(index)) {
      return *control;
    }
    qCWarning(lcControls) << "control array" << m_name << "has no element" << index;
    if (!m_spare) {
      m_spare = std::make_unique<T>(m_name);
    }
    return *m_spare;
  }

  QString m_name;
  std::map<int, std::unique_ptr<T>> m_items;
  // Made the first time a missing element is asked for, by a reading procedure too.
  mutable std::unique_ptr<T> m_spare;
};

}  // namespace adjustacc::platform
