#include "platform/label.h"

namespace adjustacc::platform {

Label::Label(QString name, QString caption, QObject* parent)
    : Control(std::move(name), parent), m_caption(std::move(caption)) {}

void Label::setCaption(const QString& caption) {
  if (m_caption == caption) {
    return;
  }
  m_caption = caption;
  notifyChanged();
}

}  // namespace adjustacc::platform
