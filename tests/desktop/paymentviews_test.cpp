// The receipt dialogs' widgets: the keyboard goes through them in the order the screens set, and the payment entry
// widget carries the clerk's typing into the payment entry control and shows what is left of the excess fund.
#include "support/serviceset.h"

#include "desktop/dateedit.h"
#include "desktop/gridview.h"
#include "desktop/paydetailview.h"
#include "desktop/paymententry.h"
#include "desktop/transpaymentview.h"
#include "payments/paydetail.h"
#include "payments/transpayment.h"
#include "platform/currency.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTableWidget>
#include <QTest>

#include <gtest/gtest.h>

namespace adjustacc::desktop {
namespace {

using namespace Qt::Literals::StringLiterals;
using payments::QORVA_PayDetail;
using payments::QORVA_TransPayment;

// The widgets of `expected` in the order the focus chain from the first of them reaches them.
QList<QWidget*> chainOrder(const QList<QWidget*>& expected) {
  QList<QWidget*> seen;
  QWidget* at = expected.first();
  for (int step = 0; step < 500 && seen.size() < expected.size(); ++step) {
    if (expected.contains(at) && !seen.contains(at)) {
      seen.append(at);
    }
    at = at->nextInFocusChain();
  }
  return seen;
}

TEST(PaymentViews, TheReceiptDialogFollowsTheOrderTheScreenSets) {
  testsupport::ServiceSet set;
  set.codeTables.add(u"PAYADJUST"_s, u"B"_s, u"BACKOUT"_s);
  QORVA_PayDetail form(set.services);
  form.setReceiptNumber(u"8000001"_s);
  PayDetailView view(form, nullptr);
  form.setVisible(true);
  QTest::qWait(50);  // the keyboard order is applied on the event loop
  const QList<QWidget*> expected = {view.grid(QORVA_PayDetail::FundsGrid)->table(),
                                    view.grid(QORVA_PayDetail::PaymentsGrid)->table(),
                                    view.grid(QORVA_PayDetail::ExcessGrid)->table(),
                                    view.actionBox(),
                                    view.dateEdit(),
                                    view.commentBox(),
                                    view.button(QORVA_PayDetail::SaveButton),
                                    view.button(QORVA_PayDetail::TransferButton),
                                    view.button(QORVA_PayDetail::CreateRefundButton),
                                    view.button(QORVA_PayDetail::CloseButton)};
  EXPECT_EQ(chainOrder(expected), expected);
  EXPECT_EQ(view.button(QORVA_PayDetail::TransferButton)->text(), u"Transfer Payment");
  EXPECT_FALSE(view.button(QORVA_PayDetail::SaveButton)->isEnabled());
  EXPECT_EQ(view.dataLabel(QORVA_PayDetail::ReceiptNumberLabel)->text(), u"8000001");
}

TEST(PaymentViews, ThePaymentEntryCarriesTheClerksTypingAndShowsTheExcessLeft) {
  testsupport::ServiceSet set;
  QORVA_TransPayment form(set.services);
  form.setReceiptNumber(u"8000002"_s);
  form.setOwner({u"100001"_s, u"SMITH TRUCKING LLC"_s, u"12 MAIN ST"_s, {}, u"ALBANY"_s, u"NY"_s, u"12205"_s});
  form.setExcessAmount(platform::Currency::fromCents(15000));
  TransPaymentView view(form, nullptr);
  form.setVisible(true);
  QTest::qWait(50);
  EXPECT_TRUE(view.owner()->text().contains(u"SMITH TRUCKING LLC (customer 100001)"_s));
  EXPECT_TRUE(view.owner()->text().contains(u"ALBANY NY 12205"_s));
  QTableWidget* lines = view.entry()->table();
  ASSERT_EQ(lines->rowCount(), 1);  // the screen starts with one empty line
  lines->item(0, 0)->setText(u"C"_s);
  lines->item(0, 1)->setText(u"1000011-5"_s);
  lines->item(0, 2)->setText(u"40.00"_s);
  EXPECT_EQ(form.QORVA_Payment1.line(0).number, u"1000011-5");
  EXPECT_EQ(form.QORVA_Payment1.transferAmount(), platform::Currency::fromCents(4000));
  EXPECT_TRUE(view.entry()->totals()->text().contains(u"$150.00"_s));
  EXPECT_TRUE(view.entry()->totals()->text().contains(u"$40.00"_s));
  QTest::mouseClick(view.entry()->addButton(), Qt::LeftButton);
  EXPECT_EQ(form.QORVA_Payment1.lineCount(), 2);
  EXPECT_EQ(lines->rowCount(), 2);
  lines->setCurrentCell(1, 0);
  QTest::mouseClick(view.entry()->removeButton(), Qt::LeftButton);
  EXPECT_EQ(form.QORVA_Payment1.lineCount(), 1);
  // While a save is pending the entry can not be changed.
  form.QORVA_Payment1.setEnabled(false);
  EXPECT_FALSE(view.entry()->isEnabled());
  const QList<QWidget*> expected = {lines, view.button(QORVA_TransPayment::SaveButton),
                                    view.button(QORVA_TransPayment::CloseButton)};
  EXPECT_EQ(chainOrder(expected), expected);
}

}  // namespace
}  // namespace adjustacc::desktop
