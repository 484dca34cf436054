#pragma once
// The dialog that shows one modal form of the screens. A view builds its widgets, binds them to the form's
// controls and arranges the keyboard order; it never decides anything itself.
//
// The dialog stays open exactly as long as the form is visible: the Qt Ui closes it when the form hides
// itself. When the person tries to close it (Escape, the window's close button) the view asks the form in
// the form's own way (its Cancel button); a form that does not hide stays open.

#include "taborder.h"

#include <QDialog>

namespace adjustacc::platform {
class ModalForm;
}

namespace adjustacc::desktop {

class FormView : public QDialog {
  Q_OBJECT
public:
  FormView(platform::ModalForm& form, QWidget* parent);
  ~FormView() override;

  platform::ModalForm& form() const { return m_form; }
  TabOrder& tabOrder() { return m_tabOrder; }

  // Ends the dialog when the form is no longer visible; true when it did.
  bool closeIfHidden();

  void reject() override;

protected:
  // The person asks to close the dialogue. By default the form is hidden; views of forms with a Cancel button
  // press it instead, so the form's own cancel runs.
  virtual void closeRequested();

private:
  platform::ModalForm& m_form;
  TabOrder m_tabOrder;
};

}  // namespace adjustacc::desktop
