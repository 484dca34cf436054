#include "formview.h"

#include "platform/ui.h"

namespace adjustacc::desktop {

FormView::FormView(platform::ModalForm& form, QWidget* parent) : QDialog(parent), m_form(form), m_tabOrder(this) {
  setObjectName(QStringLiteral("view:") + form.formName());
  setWindowTitle(form.caption());
  setModal(true);
  setSizeGripEnabled(true);
}

FormView::~FormView() = default;

bool FormView::closeIfHidden() {
  if (m_form.isVisible() || !isVisible()) {
    return false;
  }
  done(QDialog::Accepted);
  return true;
}

void FormView::reject() {
  closeRequested();
  closeIfHidden();
}

void FormView::closeRequested() { m_form.setVisible(false); }

}  // namespace adjustacc::desktop
