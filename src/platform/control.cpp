#include "platform/control.h"

#include <utility>

namespace adjustacc::platform {

Q_LOGGING_CATEGORY(lcControls, "adjustacc.controls")

Control::Control(QString name, QObject* parent) : QObject(parent), m_name(std::move(name)) {
  setObjectName(m_name);
}

Control::~Control() = default;

void Control::setEnabled(bool enabled) {
  if (m_enabled == enabled) {
    return;
  }
  m_enabled = enabled;
  notifyChanged();
}

void Control::setVisible(bool visible) {
  if (m_visible == visible) {
    return;
  }
  m_visible = visible;
  notifyChanged();
}

void Control::setTabIndex(int tabIndex) {
  if (m_tabIndex == tabIndex) {
    return;
  }
  m_tabIndex = tabIndex;
  notifyChanged();
}

void Control::setTabStop(bool tabStop) {
  if (m_tabStop == tabStop) {
    return;
  }
  m_tabStop = tabStop;
  notifyChanged();
}

void Control::setContainer(Control* container) {
  // A frame inside itself (directly or through others) would make the effective state undefined.
  for (const Control* c = container; c != nullptr; c = c->container()) {
    if (c == this) {
      qCWarning(lcControls) << "control" << m_name << "cannot be placed inside itself; container unchanged";
      return;
    }
  }
  m_container = container;
  notifyChanged();
}

bool Control::isEffectivelyEnabled() const {
  for (const Control* c = this; c != nullptr; c = c->container()) {
    if (!c->isEnabled()) {
      return false;
    }
  }
  return true;
}

bool Control::isEffectivelyVisible() const {
  for (const Control* c = this; c != nullptr; c = c->container()) {
    if (!c->isVisible()) {
      return false;
    }
  }
  return true;
}

void Control::setBackColor(const QColor& color) {
  if (m_backColor == color) {
    return;
  }
  m_backColor = color;
  notifyChanged();
}

void Control::setForeColor(const QColor& color) {
  if (m_foreColor == color) {
    return;
  }
  m_foreColor = color;
  notifyChanged();
}

void Control::setFocus() {
  Q_EMIT focusRequested();
}

void Control::userFocusIn() {
  if (m_hasFocus) {
    return;
  }
  m_hasFocus = true;
  Q_EMIT gotFocus();
}

void Control::userFocusOut() {
  if (!m_hasFocus) {
    return;
  }
  m_hasFocus = false;
  Q_EMIT lostFocus();
}

}  // namespace adjustacc::platform
