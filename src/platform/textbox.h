#pragma once
// A text box (mTxt...): text, locked, maximum length, colours (from Control).
//
// Change fires on every actual change of the text, whether the person typed it or the screen set it:
// screens that must not count their own filling as an edit keep a "filling" guard of their own.

#include "platform/control.h"

#include <functional>

namespace adjustacc::platform {

class TextBox : public Control {
  Q_OBJECT
public:
  explicit TextBox(QString name, QObject* parent = nullptr);

  QString text() const { return m_text; }
  // The screen sets the text: kept whole (the maximum length limits only what the person types).
  void setText(const QString& text);

  // Locked: the person can read, select and copy but not change the text.
  bool isLocked() const { return m_locked; }
  void setLocked(bool locked);
  // 0 means no limit.
  int maxLength() const { return m_maxLength; }
  void setMaxLength(int maxLength);
  bool isMultiLine() const { return m_multiLine; }
  void setMultiLine(bool multiLine);
  // Whether the view lets the person paste (Shift+Insert, Ctrl+V) into the box.
  bool isPasteAllowed() const { return m_pasteAllowed; }
  void setPasteAllowed(bool allowed);

  // KeyPress: the screen's filter of typed characters. It receives the character code and may change it
  // (upper-casing) or set it to 0 to refuse it (the screen beeps through the Ui).
  using KeyPressHandler = std::function<void(int& keyAscii)>;
  void setKeyPressHandler(KeyPressHandler handler) { m_keyPress = std::move(handler); }

  // --- what the view calls ----------------------------------------------------------------------
  // A key the person typed: the code to insert after the screen's filter, 0 when refused (also when the
  // box cannot be edited).
  int userKeyPress(int keyAscii);
  // The person changed the text: refused (false) when the box is locked or cannot be used; cut to the
  // maximum length; fires Change.
  bool userSetText(const QString& text);
  // The person types `typed` at the end of the text, one key at a time as a keyboard would: each key goes
  // through userKeyPress against the text as the earlier keys left it and, when it types something, fires
  // Change. Backspace removes the last character; a full box (maximum length) takes no more; other control
  // keys type nothing, except carriage return, line feed and tab in a multi-line box. False when the box
  // could not be edited (at the start, or after a key's Change locked or disabled it): the keys left over
  // are dropped.
  bool userType(const QString& typed);
  bool canEdit() const;

Q_SIGNALS:
  void textChanged(const QString& text);  // Change

private:
  QString m_text;
  bool m_locked = false;
  int m_maxLength = 0;
  bool m_multiLine = false;
  bool m_pasteAllowed = true;
  KeyPressHandler m_keyPress;
};

}  // namespace adjustacc::platform
