#include "platform/button.h"

namespace adjustacc::platform {

Button::Button(QString name, QString caption, QObject* parent)
    : Control(std::move(name), parent), m_caption(std::move(caption)) {}

void Button::setCaption(const QString& caption) {
  if (m_caption == caption) {
    return;
  }
  m_caption = caption;
  notifyChanged();
}

bool Button::click() {
  if (!isEffectivelyEnabled() || !isEffectivelyVisible()) {
    qCDebug(lcControls) << "click on unusable button" << name() << index() << "ignored";
    return false;
  }
  Q_EMIT clicked();
  return true;
}

}  // namespace adjustacc::platform
