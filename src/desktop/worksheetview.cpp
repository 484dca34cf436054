#include "worksheetview.h"

#include "binders.h"
#include "dateedit.h"

#include "platform/textbox.h"
#include "refunds/worksheet.h"

#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include <tuple>

namespace adjustacc::desktop {

using refunds::QORVA_WorkSheet;
using W = refunds::QORVA_WorkSheet;
static_assert(W::StepCount == 6, "WorkSheetView keeps one label per worksheet step");

namespace {

QLabel* valueLabel(QWidget* parent, int index, Qt::Alignment alignment = Qt::AlignLeft | Qt::AlignVCenter) {
  auto* label = new QLabel(parent);
  label->setObjectName(QStringLiteral("mLblData") + QString::number(index));
  label->setAlignment(alignment);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  label->setFrameShape(QFrame::StyledPanel);
  label->setFrameShadow(QFrame::Sunken);
  label->setMinimumWidth(120);
  return label;
}

// A comment box: several lines, shown in the box the control is bound to. What the clerk types goes through
// the control, which may refuse it (a disabled box): the widget then shows the control's text again.
void bindCommentBox(platform::TextBox& box, QPlainTextEdit& widget) {
  bindControl(box, widget);
  QPointer<platform::TextBox> control(&box);
  const auto show = [control, &widget] {
    if (!control) {
      return;
    }
    QString text = control->text();
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    if (widget.toPlainText() != text) {
      widget.setPlainText(text);
    }
    widget.setReadOnly(control->isLocked());
  };
  show();
  QObject::connect(&box, &platform::Control::changed, &widget, show);
  QObject::connect(&box, &platform::TextBox::textChanged, &widget, show);
  QObject::connect(&widget, &QPlainTextEdit::textChanged, &box, [control, &widget, show] {
    if (!control) {
      return;
    }
    QString typed = widget.toPlainText();
    typed.replace(u'\n', QStringLiteral("\r\n"));
    if (typed != control->text() && !control->userSetText(typed)) {
      show();
    }
  });
}

// A moment in the clerk's short date and time, in the clerk's time zone.
QString shortMoment(const QDateTime& moment) {
  return QLocale().toString(moment.toLocalTime(), QLocale::ShortFormat);
}

// Under an officer label (which shows the id): the officer's name, and on the next line when the step was taken.
QString officerStepText(const refunds::WorksheetStep& step) {
  QStringList parts;
  if (!step.officerName.isEmpty()) {
    parts.append(step.officerName);
  }
  if (step.takenAt.isValid()) {
    parts.append(shortMoment(step.takenAt));
  }
  return parts.join(u'\n');
}

// "Riley Okafor (VERIFY01)", or the id alone when the host knows no name for it.
QString officerNamed(const refunds::WorksheetStep& step) {
  if (step.officerName.isEmpty()) {
    return step.officerId;
  }
  return step.officerId.isEmpty() ? step.officerName
                                  : QStringLiteral("%1 (%2)").arg(step.officerName, step.officerId);
}

// The mailing and the void, which have no officer label: "Voided by Riley Okafor (VERIFY01) on 2/21/24 11:11 AM".
QString eventText(const QString& done, const refunds::WorksheetStep& step) {
  QString text = done;
  if (!step.officerId.isEmpty() || !step.officerName.isEmpty()) {
    text += WorkSheetView::tr(" by %1").arg(officerNamed(step));
  }
  if (step.takenAt.isValid()) {
    text += WorkSheetView::tr(" on %1").arg(shortMoment(step.takenAt));
  }
  return text;
}

QLabel* makeStepLabel(QWidget* parent, int step) {
  auto* label = new QLabel(parent);
  label->setObjectName(QStringLiteral("stepRecord") + QString::number(step));
  label->setTextFormat(Qt::PlainText);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  label->setWordWrap(true);
  return label;
}

}  // namespace

WorkSheetView::WorkSheetView(QORVA_WorkSheet& form, QWidget* parent) : FormView(form, parent), m_form(form) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(14, 14, 14, 10);
  layout->setSpacing(10);
  const Qt::Alignment right = Qt::AlignRight | Qt::AlignVCenter;

  for (int index = W::RefundNumberLabel; index <= W::ReceiptNumberLabel; ++index) {
    QLabel* label = valueLabel(this, index, index == W::RefundAmountLabel ? right : Qt::AlignLeft | Qt::AlignVCenter);
    m_data.append(label);
    bindLabel(form.mLblData[index], *label);
  }

  // The refund.
  auto* header = new QGridLayout;
  header->setHorizontalSpacing(10);
  header->setVerticalSpacing(6);
  header->addWidget(new QLabel(tr("Refund #:"), this), 0, 0, Qt::AlignRight);
  header->addWidget(m_data[W::RefundNumberLabel], 0, 1);
  header->addWidget(new QLabel(tr("Refund Amt (Code 71):"), this), 0, 2, Qt::AlignRight);
  header->addWidget(m_data[W::RefundAmountLabel], 0, 3);
  header->addWidget(new QLabel(tr("Status:"), this), 1, 0, Qt::AlignRight);
  header->addWidget(m_data[W::StatusLabel], 1, 1);
  header->addWidget(new QLabel(tr("rcptnbr:"), this), 1, 2, Qt::AlignRight);
  header->addWidget(m_data[W::ReceiptNumberLabel], 1, 3);
  header->itemAtPosition(1, 2)->widget()->setVisible(false);
  for (int step = 0; step < W::StepCount; ++step) {
    m_steps[step] = makeStepLabel(this, step);
  }
  // Who voided the worksheet and when, once it is voided.
  header->addWidget(m_steps[W::VoidedStep], 2, 1, 1, 3);
  header->setColumnStretch(1, 1);
  header->setColumnStretch(3, 1);
  layout->addLayout(header);

  // The customer's address block and who receives the refund.
  auto* middle = new QHBoxLayout;
  auto* customer = new QGroupBox(tr("Customer"), this);
  auto* address = new QFormLayout(customer);
  address->setLabelAlignment(right);
  address->addRow(tr("Name:"), m_data[W::NameLabel]);
  address->addRow(tr("Address:"), m_data[W::AddressLabel]);
  address->addRow(tr("City:"), m_data[W::CityLabel]);
  auto* stateZip = new QHBoxLayout;
  stateZip->addWidget(m_data[W::StateLabel]);
  stateZip->addWidget(new QLabel(tr("Zip:"), customer));
  stateZip->addWidget(m_data[W::ZipLabel]);
  address->addRow(tr("State:"), stateZip);
  middle->addWidget(customer, 3);

  auto* receiver = new QGroupBox(this);
  receiver->setObjectName(QStringLiteral("mFra0"));
  bindFrame(form.mFra[W::ReceiverFrame], *receiver);
  auto* receiverLayout = new QVBoxLayout(receiver);
  for (const int index : {W::ToTaxpayer, W::ToDivision, W::ToOther}) {
    m_options[index] = new QRadioButton(receiver);
    m_options[index]->setObjectName(QStringLiteral("mRdo") + QString::number(index));
    bindOptionButton(form.mRdo[index], *m_options[index]);
    receiverLayout->addWidget(m_options[index]);
  }
  receiverLayout->addStretch(1);
  middle->addWidget(receiver, 1);
  layout->addLayout(middle);

  // The headquarters comment and the officers of the first steps.
  auto* headquarters = new QFormLayout;
  headquarters->setLabelAlignment(right);
  for (const int index : {W::HeadquartersComment, W::FiscalComment}) {
    m_comments[index] = new QPlainTextEdit(this);
    m_comments[index]->setObjectName(QStringLiteral("mTxtRefund") + QString::number(index));
    m_comments[index]->setTabChangesFocus(true);
    m_comments[index]->setMinimumHeight(54);
    m_comments[index]->setMaximumHeight(80);
  }
  headquarters->addRow(tr("TARVOSK Headquarters Comment:"), m_comments[W::HeadquartersComment]);
  // Each officer's id (which the clerk compares), and under it the officer's name and when the step was taken.
  auto* officers = new QGridLayout;
  officers->setHorizontalSpacing(8);
  officers->setVerticalSpacing(2);
  int column = 0;
  for (const auto& [caption, index, step] :
       {std::tuple{QT_TR_NOOP("Prepared By:"), W::PreparedByLabel, W::PreparedStep},
        {QT_TR_NOOP("Verified By:"), W::VerifiedByLabel, W::VerifiedStep},
        {QT_TR_NOOP("Approved By:"), W::ApprovedByLabel, W::ApprovedStep}}) {
    officers->addWidget(new QLabel(tr(caption), this), 0, column, Qt::AlignRight | Qt::AlignVCenter);
    officers->addWidget(m_data[index], 0, column + 1);
    officers->addWidget(m_steps[step], 1, column + 1, Qt::AlignTop);
    officers->setColumnStretch(column + 1, 1);
    column += 2;
  }
  headquarters->addRow(QString(), officers);
  layout->addLayout(headquarters);

  // The refund frame: what the officer refunding or transferring enters.
  m_refundFrame = new QGroupBox(this);
  m_refundFrame->setObjectName(QStringLiteral("mFraRefund"));
  bindFrame(form.mFraRefund, *m_refundFrame);
  auto* refundLayout = new QGridLayout(m_refundFrame);
  auto* outcome = new QGroupBox(m_refundFrame);
  outcome->setObjectName(QStringLiteral("mFra1"));
  bindFrame(form.mFra[W::OutcomeFrame], *outcome);
  auto* outcomeLayout = new QHBoxLayout(outcome);
  for (const int index : {W::Refunded, W::Transferred}) {
    m_options[index] = new QRadioButton(outcome);
    m_options[index]->setObjectName(QStringLiteral("mRdo") + QString::number(index));
    bindOptionButton(form.mRdo[index], *m_options[index]);
    outcomeLayout->addWidget(m_options[index]);
  }
  refundLayout->addWidget(outcome, 0, 0, 1, 4);
  m_data[W::RefundByLabel]->setParent(m_refundFrame);
  refundLayout->addWidget(new QLabel(tr("Refund By:"), m_refundFrame), 1, 0, Qt::AlignRight);
  refundLayout->addWidget(m_data[W::RefundByLabel], 1, 1);
  m_dates[W::RefundDatePicker] = new DateEdit(m_refundFrame);
  m_dates[W::RefundDatePicker]->setObjectName(QStringLiteral("QORVA_DTP10"));
  refundLayout->addWidget(new QLabel(tr("Refund Date:"), m_refundFrame), 1, 2, Qt::AlignRight);
  refundLayout->addWidget(m_dates[W::RefundDatePicker], 1, 3);
  m_steps[W::RefundedStep]->setParent(m_refundFrame);
  refundLayout->addWidget(m_steps[W::RefundedStep], 2, 1, Qt::AlignTop);
  m_warrant = new QLineEdit(m_refundFrame);
  m_warrant->setObjectName(QStringLiteral("mTxt0"));
  refundLayout->addWidget(new QLabel(tr("Warrant #:"), m_refundFrame), 3, 0, Qt::AlignRight);
  refundLayout->addWidget(m_warrant, 3, 1);
  m_comments[W::FiscalComment]->setParent(m_refundFrame);
  refundLayout->addWidget(new QLabel(tr("DMV Fiscal Comment:"), m_refundFrame), 4, 0, Qt::AlignRight | Qt::AlignTop);
  refundLayout->addWidget(m_comments[W::FiscalComment], 4, 1, 1, 3);
  refundLayout->setColumnStretch(1, 1);
  refundLayout->setColumnStretch(3, 1);
  layout->addWidget(m_refundFrame);

  // The date mailed, shown from the refund on.
  auto* mailed = new QHBoxLayout;
  auto* mailedCaption = new QLabel(this);
  mailedCaption->setObjectName(QStringLiteral("mLblDateMailed"));
  bindLabel(form.mLblDateMailed, *mailedCaption);
  m_dates[W::DateMailedPicker] = new DateEdit(this);
  m_dates[W::DateMailedPicker]->setObjectName(QStringLiteral("QORVA_DTP11"));
  mailed->addWidget(mailedCaption);
  mailed->addWidget(m_dates[W::DateMailedPicker]);
  mailed->addSpacing(12);
  mailed->addWidget(m_steps[W::MailedStep], 1);
  layout->addLayout(mailed);
  layout->addStretch(1);

  auto* buttons = new QHBoxLayout;
  buttons->setSpacing(8);
  for (const int index : {W::SaveButton, W::CloseButton, W::VoidButton, W::PrintButton}) {
    m_buttons[index] = new QPushButton(this);
    m_buttons[index]->setObjectName(QStringLiteral("mCmdButton") + QString::number(index));
    m_buttons[index]->setAutoDefault(false);
    m_buttons[index]->setMinimumWidth(96);
    bindButton(form.mCmdButton[index], *m_buttons[index]);
  }
  m_buttons[W::PrintButton]->setIcon(QIcon::fromTheme(QStringLiteral("document-print-preview")));
  buttons->addWidget(m_buttons[W::VoidButton]);
  buttons->addWidget(m_buttons[W::PrintButton]);
  buttons->addStretch(1);
  buttons->addWidget(m_buttons[W::SaveButton]);
  buttons->addWidget(m_buttons[W::CloseButton]);
  layout->addLayout(buttons);

  bindCommentBox(form.mTxtRefund[W::HeadquartersComment], *m_comments[W::HeadquartersComment]);
  bindCommentBox(form.mTxtRefund[W::FiscalComment], *m_comments[W::FiscalComment]);
  bindTextBox(form.mTxt[W::WarrantNumberBox], *m_warrant);
  bindDatePicker(form.QORVA_DTP1[W::RefundDatePicker], *m_dates[W::RefundDatePicker]);
  bindDatePicker(form.QORVA_DTP1[W::DateMailedPicker], *m_dates[W::DateMailedPicker]);

  for (const int index : {W::ToTaxpayer, W::ToDivision, W::ToOther}) {
    tabOrder().add(form.mRdo[index], *m_options[index]);
  }
  tabOrder().add(form.mTxtRefund[W::HeadquartersComment], *m_comments[W::HeadquartersComment]);
  tabOrder().add(form.mRdo[W::Refunded], *m_options[W::Refunded]);
  tabOrder().add(form.mRdo[W::Transferred], *m_options[W::Transferred]);
  tabOrder().add(form.QORVA_DTP1[W::RefundDatePicker], *m_dates[W::RefundDatePicker]);
  tabOrder().add(form.mTxt[W::WarrantNumberBox], *m_warrant);
  tabOrder().add(form.mTxtRefund[W::FiscalComment], *m_comments[W::FiscalComment]);
  tabOrder().add(form.QORVA_DTP1[W::DateMailedPicker], *m_dates[W::DateMailedPicker]);
  for (const int index : {W::SaveButton, W::VoidButton, W::PrintButton, W::CloseButton}) {
    tabOrder().add(form.mCmdButton[index], *m_buttons[index]);
  }
  tabOrder().apply();
  showStepRecords();
  connect(&form, &QORVA_WorkSheet::stepRecordsChanged, this, &WorkSheetView::showStepRecords);
  setMinimumSize(820, 660);
  resize(940, 760);
}

void WorkSheetView::showStepRecords() {
  for (const int step : {W::PreparedStep, W::VerifiedStep, W::ApprovedStep, W::RefundedStep}) {
    const refunds::WorksheetStep& record = m_form.stepRecord(static_cast<W::Steps>(step));
    m_steps[step]->setText(officerStepText(record));
    m_steps[step]->setToolTip(record.takenAt.isValid()
                                  ? tr("%1 on %2").arg(officerNamed(record),
                                                       QLocale().toString(record.takenAt.toLocalTime(),
                                                                          QLocale::LongFormat))
                                  : QString());
  }
  const refunds::WorksheetStep& mailed = m_form.stepRecord(W::MailedStep);
  m_steps[W::MailedStep]->setText(mailed.takenAt.isValid() ? eventText(tr("Recorded"), mailed) : QString());
  const refunds::WorksheetStep& voided = m_form.stepRecord(W::VoidedStep);
  const bool isVoided = !voided.officerId.isEmpty() || voided.takenAt.isValid();
  m_steps[W::VoidedStep]->setText(isVoided ? eventText(tr("Voided"), voided) : QString());
  m_steps[W::VoidedStep]->setVisible(isVoided);
}

QLabel* WorkSheetView::dataLabel(int index) const {
  return index >= 0 && index < m_data.size() ? m_data[index] : nullptr;
}

QLabel* WorkSheetView::stepLabel(int step) const {
  return step >= 0 && step < W::StepCount ? m_steps[step] : nullptr;
}

QPushButton* WorkSheetView::button(int index) const { return index >= 0 && index < 4 ? m_buttons[index] : nullptr; }

QRadioButton* WorkSheetView::option(int index) const { return index >= 0 && index < 5 ? m_options[index] : nullptr; }

QPlainTextEdit* WorkSheetView::commentBox(int index) const {
  return index == 0 || index == 1 ? m_comments[index] : nullptr;
}

DateEdit* WorkSheetView::datePicker(int index) const { return index == 0 || index == 1 ? m_dates[index] : nullptr; }

void WorkSheetView::closeRequested() { m_form.mCmdButton[W::CloseButton].click(); }

}  // namespace adjustacc::desktop
