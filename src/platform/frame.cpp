#include "platform/frame.h"

#include <utility>

namespace adjustacc::platform {

Frame::Frame(QString name, QString caption, QObject* parent)
    : Control(std::move(name), parent), m_caption(std::move(caption)) {}

void Frame::setCaption(const QString& caption) {
  if (m_caption == caption) {
    return;
  }
  m_caption = caption;
  notifyChanged();
}

void Frame::add(Control& control) {
  control.setContainer(this);
  if (control.container() == this && !m_controls.contains(QPointer<Control>(&control))) {
    m_controls.append(&control);
    // A frame's state change is the contained controls' change too: their views refresh.
    connect(this, &Control::changed, &control, &Control::changed);
  }
}

QList<Control*> Frame::controls() const {
  QList<Control*> result;
  for (const QPointer<Control>& c : m_controls) {
    if (c && c->container() == this) {
      result.append(c.data());
    }
  }
  return result;
}

}  // namespace adjustacc::platform
