#pragma once
// Marks an input as in error (its background turns the error colour) and puts it back to normal.

#include <QColor>

namespace adjustacc::platform {

class Control;

class FieldMarking {
public:
  // A light red that dark text stays readable on.
  static QColor defaultErrorColor() { return QColor(255, 204, 204); }

  FieldMarking() = default;
  explicit FieldMarking(const QColor& errorColor) : m_errorColor(errorColor) {}

  QColor errorColor() const { return m_errorColor; }

  void markError(Control& control) const;
  // Back to the view's normal colour.
  void restore(Control& control) const;
  bool isMarked(const Control& control) const;

private:
  QColor m_errorColor = defaultErrorColor();
};

}  // namespace adjustacc::platform
