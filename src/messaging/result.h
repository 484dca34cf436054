#pragma once
// A value or the text of what went wrong: for failures the caller is expected to handle (bad input,
// a refused query), not for bugs.

#include <QString>

#include <utility>
#include <variant>

namespace adjustacc::messaging {

template <typename T>
class Result {
public:
  Result(T value) : m_v(std::in_place_index<0>, std::move(value)) {}  // NOLINT: implicit by design
  static Result failure(QString error) { return Result(std::in_place_index<1>, std::move(error)); }

  bool ok() const { return m_v.index() == 0; }
  explicit operator bool() const { return ok(); }
  const T& value() const& { return std::get<0>(m_v); }
  T& value() & { return std::get<0>(m_v); }
  T&& value() && { return std::get<0>(std::move(m_v)); }
  const T* operator->() const { return &std::get<0>(m_v); }
  // Empty when ok.
  QString error() const { return ok() ? QString() : std::get<1>(m_v); }

private:
  template <std::size_t I, typename A>
  Result(std::in_place_index_t<I> i, A&& a) : m_v(i, std::forward<A>(a)) {}
  std::variant<T, QString> m_v;
};

}  // namespace adjustacc::messaging
