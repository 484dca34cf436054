#pragma once
// The keyboard order of a view, as the screen arranges it (SetTabs sets each control's tab index): the
// widgets of the controls are chained with QWidget::setTabOrder in tab-index order, controls without an index
// after them in the order they were added. A control whose TabStop is off is left out of the Tab chain but
// can still be clicked into. The order follows later changes of the indexes.

#include <QList>
#include <QObject>
#include <QPointer>

class QWidget;

namespace adjustacc::platform {
class Control;
}

namespace adjustacc::desktop {

class TabOrder : public QObject {
  Q_OBJECT
public:
  explicit TabOrder(QObject* parent = nullptr);

  // `widget` is the one that takes the focus for the control.
  void add(platform::Control& control, QWidget& widget);
  // Chains the widgets now (also done from the event loop after any index changes).
  void apply();
  // The widgets in the order Tab visits them.
  QList<QWidget*> chain() const;

private:
  struct Entry {
    QPointer<platform::Control> control;
    QPointer<QWidget> widget;
    Qt::FocusPolicy policy;
    int added;
  };
  void schedule();

  QList<Entry> m_entries;
  bool m_scheduled = false;
};

}  // namespace adjustacc::desktop
