#pragma once
// A command button (mCmd..., mCmdButton(i)).

#include "platform/control.h"

namespace adjustacc::platform {

class Button : public Control {
  Q_OBJECT
public:
  explicit Button(QString name, QString caption = {}, QObject* parent = nullptr);

  QString caption() const { return m_caption; }
  void setCaption(const QString& caption);

  // The person presses the button: fires Click when the button can be used (enabled and visible, also
  // through its frames). Returns whether Click fired, so a test can tell a gated button from a live one.
  bool click();

Q_SIGNALS:
  void clicked();

private:
  QString m_caption;
};

}  // namespace adjustacc::platform
