#pragma once
// The payment entry control (QORVA_Payment): where a clerk enters the accounts receivable that take a
// payment and the amount each one takes. The Transfer Payment screen uses it in transfer mode, drawing on
// one receipt's open excess fund: every line names an account receivable (type, seven-digit number with
// its check digit) and the amount moved onto it.
//
// What the screen around it calls:
//   validate()         the number of lines that are good, or 0 when the entry can not be sent; the reasons
//                      are in errorText(), one per line of text, each ended by CR LF
//   transferAmount()   the total of the lines entered
//   writeToRequest()   adds one TRANSFERPAY record per line to a request; what was written is then held
//   heldAmount()       the total written to a request whose answer has not been taken yet (zero otherwise)
//   reset()            empties the entry and forgets what was held
//   setTransferPayment / setParentWantsAccounts   the two mode switches; setReceiptNumber the receipt drawn on
//   ownerText()        the owner of the excess fund, for the screen's status text
//
// The rule that matters most: a transfer never takes more than the excess fund it draws from
// (setExcessAmount). validate() refuses it and says so; the host refuses it again whatever is sent.
//
// Plain setters are what screen logic calls; the user...() ones are what a view (or a test standing in for
// the clerk) calls, and they do nothing while the control is disabled.

#include "platform/control.h"
#include "platform/currency.h"

#include <QList>
#include <QString>

#include <optional>

namespace adjustacc::messaging {
class RequestMessage;
}

namespace adjustacc::platform {

class CheckDigit;

class QORVA_Payment : public Control {
  Q_OBJECT
public:
  // The cells of one line, in the order the view shows them.
  enum class Field { Type = 0, Number = 1, Amount = 2 };
  struct Line {
    QString type;    // account receivable type code, "C"
    QString number;  // "1000035-4"
    QString amount;  // as typed: "50", "$1,250.00"
  };
  // The owner of the excess fund being transferred.
  struct Owner {
    QString customerId;
    QString name;
    QString address1;
    QString address2;
    QString city;
    QString state;
    QString zip;
  };

  // The mode value writeToRequest expects: the transfer records.
  static constexpr int kTransferRecords = 1;

  explicit QORVA_Payment(QString name, QObject* parent = nullptr);
  ~QORVA_Payment() override;

  // --- set up by the screen around it ---------------------------------------------------------------
  // "transferpayment": the entry moves an excess fund (the only mode this system uses).
  bool transferPayment() const { return m_transferPayment; }
  void setTransferPayment(bool on);
  // "parentwantsaccounts": each line must name the account receivable that takes its amount.
  bool parentWantsAccounts() const { return m_parentWantsAccounts; }
  void setParentWantsAccounts(bool on);
  QString receiptNumber() const { return m_receiptNumber; }
  void setReceiptNumber(const QString& number);
  // The open excess fund the transfer draws on; nothing set means nothing may be transferred.
  std::optional<Currency> excessAmount() const { return m_excess; }
  void setExcessAmount(Currency amount);
  Owner owner() const { return m_owner; }
  void setOwner(const Owner& owner);
  // Used to check the check digit of each number; without it only the form of the number is checked.
  void setCheckDigit(const CheckDigit* checkDigit) { m_checkDigit = checkDigit; }

  // --- the lines --------------------------------------------------------------------------------------
  int lineCount() const { return static_cast<int>(m_lines.size()); }
  Line line(int row) const { return row >= 0 && row < lineCount() ? m_lines[row] : Line{}; }
  int addLine(const Line& line = {});
  bool setLineField(int row, Field field, const QString& text);
  bool removeLine(int row);
  // The clerk's edits (refused while disabled).
  int userAddLine();
  bool userSetLineField(int row, Field field, const QString& text);
  bool userRemoveLine(int row);

  // --- what the screen calls --------------------------------------------------------------------------
  int validate();
  QString errorText() const { return m_errorText; }
  // The sum of the amounts that read as money (the others count as nothing).
  Currency transferAmount() const;
  Currency heldAmount() const { return m_held; }
  // `mode` kTransferRecords: one TRANSFERPAY record per line; the total written becomes the held amount.
  // Lines that do not validate are not written; answers the number of records written.
  int writeToRequest(int mode, messaging::RequestMessage& message);
  void reset();
  QString ownerText() const;

Q_SIGNALS:
  // Lines were added, removed or changed (by the logic or the clerk).
  void linesChanged();

private:
  QString lineProblem(int row, const Line& line) const;
  std::optional<Currency> amountOf(const Line& line) const;

  bool m_transferPayment = false;
  bool m_parentWantsAccounts = false;
  QString m_receiptNumber;
  std::optional<Currency> m_excess;
  Owner m_owner;
  const CheckDigit* m_checkDigit = nullptr;
  QList<Line> m_lines;
  QString m_errorText;
  Currency m_held;
};

}  // namespace adjustacc::platform
