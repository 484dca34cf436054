#pragma once
// Base of every control as the screens use it: a view-model with state and change notifications and
// no widget. A view in the desktop builds the widget and binds it both ways.
//
// Two kinds of setters exist on the controls: the plain ones are what the screen logic calls; the ones
// named user...() are what a view (or a test standing in for the person) calls when the person acts.
// The user...() setters honour Enabled/Locked the way the real widget would, and fire the events the
// screens listen to (Change, Click...).

#include <QColor>
#include <QLoggingCategory>
#include <QObject>
#include <QPointer>
#include <QString>

namespace adjustacc::platform {

Q_DECLARE_LOGGING_CATEGORY(lcControls)

class Control : public QObject {
  Q_OBJECT
public:
  explicit Control(QString name, QObject* parent = nullptr);
  ~Control() override;

  QString name() const { return m_name; }  // the control's name in its screen, e.g. "mTxtDocNbr"
  int index() const { return m_index; }    // index inside a control array; -1 when alone
  void setIndex(int index) { m_index = index; }

  bool isEnabled() const { return m_enabled; }
  void setEnabled(bool enabled);
  bool isVisible() const { return m_visible; }
  void setVisible(bool visible);
  // Keyboard order, as SetTabs arranges it; -1 when not in the tab order.
  int tabIndex() const { return m_tabIndex; }
  void setTabIndex(int tabIndex);
  bool tabStop() const { return m_tabStop; }
  void setTabStop(bool tabStop);

  // The frame that holds this control, if any. A control inside a disabled or hidden frame cannot be
  // used by the person even though its own Enabled/Visible stay as they were set.
  Control* container() const { return m_container.data(); }
  void setContainer(Control* container);
  bool isEffectivelyEnabled() const;
  bool isEffectivelyVisible() const;

  // Colours used by field marking (an input in error) and by screens; invalid means the view's default.
  QColor backColor() const { return m_backColor; }
  void setBackColor(const QColor& color);
  QColor foreColor() const { return m_foreColor; }
  void setForeColor(const QColor& color);

  // Asks the view to give this control the keyboard focus.
  void setFocus();
  bool hasFocus() const { return m_hasFocus; }

  // Called by the view when the person moves the focus into or out of the control; fire the screen's
  // GotFocus / LostFocus hooks.
  void userFocusIn();
  void userFocusOut();

Q_SIGNALS:
  void changed();  // any state above changed; the view refreshes
  void focusRequested();
  void gotFocus();
  void lostFocus();

protected:
  void notifyChanged() { Q_EMIT changed(); }

private:
  QString m_name;
  int m_index = -1;
  bool m_enabled = true;
  bool m_visible = true;
  bool m_hasFocus = false;
  int m_tabIndex = -1;
  bool m_tabStop = true;
  QPointer<Control> m_container;
  QColor m_backColor;
  QColor m_foreColor;
};

}  // namespace adjustacc::platform
