#pragma once
// A frame (mFra...): a captioned container. Disabling or hiding the frame makes its controls unusable
// for the person without changing their own Enabled/Visible.

#include "platform/control.h"

#include <QList>

namespace adjustacc::platform {

class Frame : public Control {
  Q_OBJECT
public:
  explicit Frame(QString name, QString caption = {}, QObject* parent = nullptr);

  QString caption() const { return m_caption; }
  void setCaption(const QString& caption);

  // Places a control inside the frame (the control's container becomes this frame).
  void add(Control& control);
  QList<Control*> controls() const;

private:
  QString m_caption;
  QList<QPointer<Control>> m_controls;
};

}  // namespace adjustacc::platform
