#include "elidedlabel.h"

#include <QEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>

namespace adjustacc::desktop {

namespace {

// The least a label is narrowed to: enough to tell what it is about.
constexpr int kLeastCharacters = 8;

}  // namespace

ElidedLabel::ElidedLabel(Qt::TextElideMode mode, QWidget* parent) : QLabel(parent), m_mode(mode) {
  setTextFormat(Qt::PlainText);
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
}

QSize ElidedLabel::minimumSizeHint() const {
  const QMargins margins = contentsMargins();
  const int least = fontMetrics().averageCharWidth() * kLeastCharacters + margins.left() + margins.right();
  return {qMin(least, sizeHint().width()), QLabel::minimumSizeHint().height()};
}

bool ElidedLabel::isElided() const {
  return fontMetrics().horizontalAdvance(text()) > contentsRect().width();
}

void ElidedLabel::paintEvent(QPaintEvent* event) {
  if (!isElided()) {
    QLabel::paintEvent(event);
    return;
  }
  QPainter painter(this);
  const QRect area = contentsRect();
  const QString shown = fontMetrics().elidedText(text(), m_mode, area.width());
  style()->drawItemText(&painter, area, static_cast<int>(alignment()), palette(), isEnabled(), shown, foregroundRole());
}

bool ElidedLabel::event(QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    // The whole text, only when it is not already shown whole.
    setToolTip(isElided() ? text() : QString());
  }
  return QLabel::event(event);
}

}  // namespace adjustacc::desktop
