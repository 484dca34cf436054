#pragma once
// The "Refund Worksheet" dialog: the refund (number, amount, status), the customer's address block, who receives
// the refund, the headquarters comment, the officers of each step, the refund frame (Refunded / Transferred,
// Refund By, Refund Date, Warrant #, the fiscal comment), the date mailed, and the buttons Save, Void, Print and
// Close. Beside each officer's id the officer's name and when the step was taken; the mailing's and the void's
// officer and time where they apply. The screen shows and hides the refund frame and the date mailed at their steps and enables only what
// the signed-on officer may do there.

#include "formview.h"

class QGroupBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;

namespace adjustacc::refunds {
class QORVA_WorkSheet;
}

namespace adjustacc::desktop {

class DateEdit;

class WorkSheetView : public FormView {
  Q_OBJECT
public:
  WorkSheetView(refunds::QORVA_WorkSheet& form, QWidget* parent);

  QLabel* dataLabel(int index) const;
  QPushButton* button(int index) const;
  QRadioButton* option(int index) const;
  QPlainTextEdit* commentBox(int index) const;
  QLineEdit* warrantBox() const { return m_warrant; }
  DateEdit* datePicker(int index) const;
  QGroupBox* refundFrame() const { return m_refundFrame; }
  // Who took a step and when (QORVA_WorkSheet::Steps): beside the officer labels, after the date mailed, and
  // under the status for a void.
  QLabel* stepLabel(int step) const;

protected:
  void closeRequested() override;

private:
  void showStepRecords();

  refunds::QORVA_WorkSheet& m_form;
  QLabel* m_steps[6] = {};
  QList<QLabel*> m_data;
  QPushButton* m_buttons[4] = {};
  QRadioButton* m_options[5] = {};
  QPlainTextEdit* m_comments[2] = {};
  DateEdit* m_dates[2] = {};
  QLineEdit* m_warrant = nullptr;
  QGroupBox* m_refundFrame = nullptr;
};

}  // namespace adjustacc::desktop
