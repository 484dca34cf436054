#pragma once
// The "Account Activity" dialog: the account, the log of activity rows, the entry frame (date, code,
// comment; Add, Update, Clear), the filter frame (from and to dates, code; Clear, Search), Save and Close.
// The title follows the screen's caption ("Account Activity for CITATION ENF001 1000011-5").

#include "formview.h"

class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace adjustacc::activity {
class QORVA_Activity;
}

namespace adjustacc::desktop {

class DateEdit;
class GridView;

class ActivityView : public FormView {
  Q_OBJECT
public:
  ActivityView(activity::QORVA_Activity& form, QWidget* parent);

  GridView* rows() const { return m_rows; }
  DateEdit* picker(int index) const;
  QComboBox* entryCode() const { return m_entryCode; }
  QComboBox* filterCode() const { return m_filterCode; }
  QLineEdit* comment() const { return m_comment; }
  QPushButton* button(int index) const;

protected:
  void closeRequested() override;

private:
  activity::QORVA_Activity& m_form;
  GridView* m_rows;
  DateEdit* m_pickers[3] = {};
  QComboBox* m_entryCode;
  QComboBox* m_filterCode;
  QLineEdit* m_comment;
  QPushButton* m_buttons[7] = {};
};

}  // namespace adjustacc::desktop
