#pragma once
// The Ui port on Qt Widgets: message boxes (QMessageBox), modal forms (a registered view per form, run with
// QDialog::exec until the form hides itself), the hourglass (the application's override cursor) and the beep.
//
// Views are registered by form name. A form with no view is a gap in this build: the clerk is told so in a
// message box and the call returns, so the screen that asked goes on.

#include "platform/ui.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <functional>
#include <map>
#include <memory>


namespace adjustacc::desktop {

class FormView;

class QtUi : public QObject, public platform::Ui {
  Q_OBJECT
public:
  using ViewFactory = std::function<std::unique_ptr<FormView>(platform::ModalForm& form, QWidget* parent)>;

  explicit QtUi(QObject* parent = nullptr);
  ~QtUi() override;

  // The window boxes and dialogs belong to when no dialog is open.
  void setMainWindow(QWidget* window) { m_mainWindow = window; }
  QWidget* mainWindow() const { return m_mainWindow.data(); }

  void registerView(const QString& formName, ViewFactory factory);
  // Registers View (constructed from Form& and a parent) for forms of class Form.
  template <typename Form, typename View>
  void registerView(const QString& formName) {
    registerView(formName, [](platform::ModalForm& form, QWidget* parent) -> std::unique_ptr<FormView> {
      auto* typed = dynamic_cast<Form*>(&form);
      if (typed == nullptr) {
        return nullptr;
      }
      return std::make_unique<View>(*typed, parent);
    });
  }
  bool hasView(const QString& formName) const { return m_views.count(formName) > 0; }

  // The dialogs open now, innermost last.
  QList<FormView*> openViews() const;

  // --- the port ----------------------------------------------------------------------------------------
  platform::MsgAnswer messageBox(const QString& text, platform::MsgButtons buttons, platform::MsgIcon icon,
                                 const QString& title) override;
  void showModal(platform::ModalForm& form) override;
  void setPointer(platform::Pointer pointer) override;
  platform::Pointer pointer() const override { return m_pointer; }
  void beep() override;

Q_SIGNALS:
  void pointerChanged(bool busy);
  // A view was opened (before its dialog runs) / has closed.
  void viewOpened(adjustacc::desktop::FormView* view);
  void viewClosed(const QString& formName);

private:
  QWidget* dialogParent() const;

  std::map<QString, ViewFactory> m_views;
  QList<QPointer<FormView>> m_open;
  QPointer<QWidget> m_mainWindow;
  platform::Pointer m_pointer = platform::Pointer::Default;
};

}  // namespace adjustacc::desktop
