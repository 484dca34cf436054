#pragma once
// A label (mLbl...). Screens use labels both as captions and as read-only value holders (mLblData(i)).

#include "platform/control.h"

namespace adjustacc::platform {

class Label : public Control {
  Q_OBJECT
public:
  explicit Label(QString name, QString caption = {}, QObject* parent = nullptr);

  QString caption() const { return m_caption; }
  void setCaption(const QString& caption);

private:
  QString m_caption;
};

}  // namespace adjustacc::platform
