#include "statusbar.h"

namespace adjustacc::platform {

StatusBar::StatusBar(QObject* parent) : QObject(parent) {}

StatusBar::~StatusBar() = default;

void StatusBar::initialize(const QString& containerTag) {
  if (containerTag == m_containerTag) {
    return;
  }
  m_containerTag = containerTag;
  Q_EMIT containerTagChanged(m_containerTag);
}

void StatusBar::setText(const QString& text) {
  if (text == m_text) {
    return;
  }
  m_text = text;
  Q_EMIT textChanged(m_text);
}

void StatusBar::setReady(bool ready) {
  if (ready == m_ready) {
    return;
  }
  m_ready = ready;
  Q_EMIT readyChanged(m_ready);
}

}  // namespace adjustacc::platform
