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
  constexpr int kBackspace = 8;
  constexpr int kDelete = 0x7f;
  if (!canEdit()) {
    return false;
  }
  for (const QChar ch : typed) {
    // Each key meets the box as the keys before it left it: the key filter judges it against the text typed
    // so far, and a Change handler may have locked or disabled the box in between.
    if (!canEdit()) {
      return false;
    }
    const int key = userKeyPress(ch.unicode());
    if (key == 0) {
      continue;  // refused by the screen's filter, which beeps if it wishes
    }
    if (key == kBackspace) {
      if (!m_text.isEmpty()) {
        userSetText(m_text.chopped(1));  // the caret stands after the last character typed
      }
      continue;
    }
    const bool lineKey = m_multiLine && (key == u'\r' || key == u'\n' || key == u'\t');
    if ((key < 0x20 && !lineKey) || key == kDelete) {
      continue;  // other control keys move or command; they type nothing
    }
    if (m_maxLength > 0 && m_text.size() >= m_maxLength) {
      continue;  // a full box takes no more, though its filter has seen the key
    }
    userSetText(m_text + QChar(static_cast<char16_t>(key)));
  }
  return true;
}

}  // namespace adjustacc::platform
