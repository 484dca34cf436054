#pragma once
// The "Account Receivable Detail" dialog: the receivable (number, name, status, type), Available and
// Adjusted  Assessments with their Remove and Reinstate check boxes, the three totals, the adjustment (action,
// date, comment) and the buttons Account Activity, Save and Close. Enter saves, Escape closes.

#include "formview.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace adjustacc::ardetail {
class QORVA_AccDetail;
}

namespace adjustacc::desktop {

class DateEdit;
class GridView;

class AccDetailView : public FormView {
  Q_OBJECT
public:
  AccDetailView(ardetail::QORVA_AccDetail& form, QWidget* parent);

  GridView* grid(int index) const;
  QComboBox* actionBox() const { return m_action; }
  DateEdit* dateEdit() const { return m_date; }
  QLineEdit* commentBox() const { return m_comment; }
  QLabel* label(int index) const;
  QPushButton* button(int index) const;

protected:
  void closeRequested() override;

private:
  ardetail::QORVA_AccDetail& m_form;
  GridView* m_grids[2];
  QComboBox* m_action;
  DateEdit* m_date;
  QLineEdit* m_comment;
  QList<QLabel*> m_labels;
  QPushButton* m_buttons[4] = {};
};

}  // namespace adjustacc::desktop
