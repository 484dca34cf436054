#pragma once
// How an account receivable's balance moves when its assessments are removed or reinstated. The host applies
// this rule when it saves an adjustment; the Account Receivable Detail screen applies the same rule to show the
// clerk, before saving, the balance the receivable will have. One rule, so the two can never disagree.
//
// Amounts are in cents. A receivable's balance is what its assessments in force still owe less the payments
// in force. Removing an assessment takes what it still owes off the balance; reinstating one owes again what it
// owed when it was removed (the whole amount when no removal is on record, as for assessments loaded removed).

#include <QList>

#include <optional>

namespace adjustacc::messaging {

// What a reinstated assessment owes again. `amount` is the assessment's amount (the purchase option amount for a
// License Purchase Option fee); `dueWhenRemoved` what it still owed when its open removal was made.
inline qint64 reinstatedDue(qint64 amount, std::optional<qint64> dueWhenRemoved) {
  return dueWhenRemoved.value_or(amount);
}

// The balance after removing assessments that still owe `removedDues` and reinstating ones that will owe
// `reinstatedDues` again.
inline qint64 balanceAfterAdjustment(qint64 balance, const QList<qint64>& removedDues,
                                     const QList<qint64>& reinstatedDues) {
  for (const qint64 due : removedDues) {
    balance -= due;
  }
  for (const qint64 due : reinstatedDues) {
    balance += due;
  }
  return balance;
}

}  // namespace adjustacc::messaging
