#include "worksheethandover.h"

namespace adjustacc::document {

using refunds::QORVA_WorkSheet;

WorkSheetHandOver::WorkSheetHandOver(platform::Services& services, const QString& receiptNumber)
    : m_sheet(services) {
  m_sheet.mLblData[QORVA_WorkSheet::ReceiptNumberLabel].setCaption(receiptNumber.trimmed());
}

void WorkSheetHandOver::setCustomerID(const QString& customerId) { m_sheet.setCustomerID(customerId); }

void WorkSheetHandOver::setDataLabel(int index, const QString& text) {
  // Only the labels the receipt screen fills: the refund number, the name and address, the amount.
  if (index < RefundNumberLabel || index > AmountLabel) {
    return;
  }
  if (index == RefundNumberLabel) {
    // The number shown is the worksheet's number, the one its save sends and its printout shows; a worksheet
    // handed a number does not take another from the refund series when it loads.
    m_sheet.GetFormNumber(text);
    return;
  }
  m_sheet.mLblData[index].setCaption(text);
}

void WorkSheetHandOver::setSecondAddressLine(const QString& text) {
  const QString second = text.trimmed();
  if (second.isEmpty()) {
    return;
  }
  const QString first = m_sheet.mLblData[QORVA_WorkSheet::AddressLabel].caption().trimmed();
  m_sheet.mLblData[QORVA_WorkSheet::AddressLabel].setCaption(first.isEmpty() ? second : first + u' ' + second);
}

void WorkSheetHandOver::setStatus(const QString& statusCode) { m_sheet.setAction(statusCode); }

void WorkSheetHandOver::loadExisting(const QString& customerId, const QString& statusCode,
                                     const QString& refundNumber, const QString& editMode) {
  m_sheet.SetLoadedFromOutSide(true);
  m_sheet.LoadMe(customerId, statusCode, refundNumber, editMode);
}

void WorkSheetHandOver::showModal() { m_sheet.showModal(); }

bool WorkSheetHandOver::refundCompleted() const { return m_sheet.GetSavedVoidedFlag(); }

}  // namespace adjustacc::document
