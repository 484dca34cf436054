#include "platform/textbox.h"

#include <utility>

namespace adjustacc::platform {

TextBox::TextBox(QString name, QObject* parent) : Control(std::move(name), parent) {}

void TextBox::setText(const QString& text) {
  if (m_text == text) {
    return;
  }
  m_text = text;
  notifyChanged();
  Q_EMIT textChanged(m_text);
}

void TextBox::setLocked(bool locked) {
  if (m_locked == locked) {
    return;
  }
  m_locked = locked;
  notifyChanged();
}

void TextBox::setMaxLength(int maxLength) {
  const int limit = qMax(0, maxLength);
  if (m_maxLength == limit) {
    return;
  }
  m_maxLength = limit;
  notifyChanged();
}

void TextBox::setMultiLine(bool multiLine) {
  if (m_multiLine == multiLine) {
    return;
  }
  m_multiLine = multiLine;
  notifyChanged();
}

void TextBox::setPasteAllowed(bool allowed) {
  if (m_pasteAllowed == allowed) {
    return;
  }
  m_pasteAllowed = allowed;
  notifyChanged();
}

bool TextBox::canEdit() const {
  return !m_locked && isEffectivelyEnabled() && isEffectivelyVisible();
}

int TextBox::userKeyPress(int keyAscii) {
  if (!canEdit()) {
    return 0;
  }
  if (m_keyPress) {
    m_keyPress(keyAscii);
  }
  return keyAscii;
}

bool TextBox::userSetText(const QString& text) {
  if (!canEdit()) {
    qCDebug(lcControls) << "edit of" << name() << "refused: locked or not usable";
    return false;
  }
  setText(m_maxLength > 0 ? text.left(m_maxLength) : text);
  return true;
}

bool TextBox::userType(const QString& typed) {
  if (!canEdit()) {
    return false;
  }
  QString result = m_text;
  for (const QChar ch : typed) {
    const int key = userKeyPress(ch.unicode());
    if (key != 0) {
      result.append(QChar(static_cast<char16_t>(key)));
    }
  }
  return userSetText(result);
}

}  // namespace adjustacc::platform
