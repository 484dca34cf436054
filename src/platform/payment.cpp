#include "platform/payment.h"

#include "messaging/protocolwords.h"
#include "messaging/requestmessage.h"
#include "platform/checkdigit.h"

#include <QRegularExpression>
#include <QSet>

namespace adjustacc::platform {

namespace {

const QString kLineBreak = QStringLiteral("\r\n");

// Seven digits, then the check digit with or without the dash: "1000035-4", "10000354".
const QRegularExpression& accountNumberPattern() {
  static const QRegularExpression pattern(QStringLiteral("^(\\d{7})-?(\\d)$"));
  return pattern;
}

struct AccountNumber {
  QString digits;
  QString checkDigit;
};

std::optional<AccountNumber> parseNumber(const QString& text) {
  const QRegularExpressionMatch match = accountNumberPattern().match(text.trimmed());
  if (!match.hasMatch()) {
    return std::nullopt;
  }
  return AccountNumber{match.captured(1), match.captured(2)};
}

}  // namespace

QORVA_Payment::QORVA_Payment(QString name, QObject* parent) : Control(std::move(name), parent) {}

QORVA_Payment::~QORVA_Payment() = default;

void QORVA_Payment::setTransferPayment(bool on) {
  m_transferPayment = on;
  notifyChanged();
}

void QORVA_Payment::setParentWantsAccounts(bool on) {
  m_parentWantsAccounts = on;
  notifyChanged();
}

void QORVA_Payment::setReceiptNumber(const QString& number) {
  m_receiptNumber = number.trimmed();
  notifyChanged();
}

void QORVA_Payment::setExcessAmount(Currency amount) {
  m_excess = amount;
  notifyChanged();
}

void QORVA_Payment::setOwner(const Owner& owner) {
  m_owner = owner;
  notifyChanged();
}

// --- lines -------------------------------------------------------------------------------------------------

int QORVA_Payment::addLine(const Line& line) {
  m_lines.append(line);
  Q_EMIT linesChanged();
  return lineCount() - 1;
}

bool QORVA_Payment::setLineField(int row, Field field, const QString& text) {
  if (row < 0 || row >= lineCount()) {
    return false;
  }
  Line& line = m_lines[row];
  QString& cell = field == Field::Type ? line.type : field == Field::Number ? line.number : line.amount;
  if (cell == text) {
    return true;
  }
  cell = text;
  Q_EMIT linesChanged();
  return true;
}

bool QORVA_Payment::removeLine(int row) {
  if (row < 0 || row >= lineCount()) {
    return false;
  }
  m_lines.removeAt(row);
  Q_EMIT linesChanged();
  return true;
}

int QORVA_Payment::userAddLine() { return isEffectivelyEnabled() ? addLine() : -1; }

bool QORVA_Payment::userSetLineField(int row, Field field, const QString& text) {
  return isEffectivelyEnabled() && setLineField(row, field, text);
}

bool QORVA_Payment::userRemoveLine(int row) { return isEffectivelyEnabled() && removeLine(row); }

// --- the rules -----------------------------------------------------------------------------------------------

std::optional<Currency> QORVA_Payment::amountOf(const Line& line) const {
  const messaging::Result<Currency> amount = Currency::parse(line.amount);
  return amount ? std::optional<Currency>(amount.value()) : std::nullopt;
}

QString QORVA_Payment::lineProblem(int row, const Line& line) const {
  const QString where = QStringLiteral(" (line %1)").arg(row + 1);
  if (m_parentWantsAccounts) {
    if (line.type.trimmed().isEmpty()) {
      return QStringLiteral("Account receivable type is required") + where;
    }
    const std::optional<AccountNumber> number = parseNumber(line.number);
    if (!number) {
      return QStringLiteral("Account receivable number must be seven digits and the check digit, such as "
                            "1000035-4") +
             where;
    }
    if (m_checkDigit) {
      const messaging::Result<QString> digit = m_checkDigit->compute(number->digits);
      if (digit && digit.value() != number->checkDigit) {
        return QStringLiteral("The check digit of account receivable %1 is not right").arg(number->digits) + where;
      }
    }
  }
  if (line.amount.trimmed().isEmpty()) {
    return QStringLiteral("Transfer amount is required") + where;
  }
  const std::optional<Currency> amount = amountOf(line);
  if (!amount) {
    return QStringLiteral("Transfer amount \"%1\" is not an amount of money").arg(line.amount.trimmed()) + where;
  }
  if (amount->roundedToCents() != *amount) {
    return QStringLiteral("Transfer amount can not have parts of a cent") + where;
  }
  if (amount->isNegative() || amount->isZero()) {
    return QStringLiteral("Transfer amount must be greater than $0.00") + where;
  }
  return {};
}

int QORVA_Payment::validate() {
  m_errorText.clear();
  const auto fail = [this](const QString& message) { m_errorText += message + kLineBreak; };
  if (!m_transferPayment) {
    fail(QStringLiteral("This payment entry is not set up to transfer excess funds"));
  }
  if (m_receiptNumber.isEmpty()) {
    fail(QStringLiteral("No receipt is given to transfer the excess fund from"));
  }
  int good = 0;
  bool anyEntered = false;
  QSet<QString> named;
  for (int row = 0; row < lineCount(); ++row) {
    const Line& line = m_lines[row];
    if (line.type.trimmed().isEmpty() && line.number.trimmed().isEmpty() && line.amount.trimmed().isEmpty()) {
      continue;  // a line added and left empty is no line
    }
    anyEntered = true;
    if (const QString problem = lineProblem(row, line); !problem.isEmpty()) {
      fail(problem);
      continue;
    }
    if (m_parentWantsAccounts) {
      const QString key = line.type.trimmed().toUpper() + u' ' + parseNumber(line.number)->digits;
      if (named.contains(key)) {
        fail(QStringLiteral("Account receivable %1 is entered more than once (line %2)")
                 .arg(parseNumber(line.number)->digits)
                 .arg(row + 1));
        continue;
      }
      named.insert(key);
    }
    ++good;
  }
  if (!anyEntered) {
    fail(QStringLiteral("Enter an account receivable and the amount to transfer to it"));
  }
  const Currency total = transferAmount();
  if (!m_excess || m_excess->isZero() || m_excess->isNegative()) {
    fail(QStringLiteral("There is no open excess fund to transfer"));
  } else if (total > *m_excess) {
    fail(QStringLiteral("The transfer of %1 is more than the excess fund of %2")
             .arg(total.toDisplayText(), m_excess->toDisplayText()));
  }
  return m_errorText.isEmpty() ? good : 0;
}

Currency QORVA_Payment::transferAmount() const {
  Currency total;
  for (const Line& line : m_lines) {
    if (const std::optional<Currency> amount = amountOf(line); amount && !amount->isNegative()) {
      total += *amount;
    }
  }
  return total;
}

int QORVA_Payment::writeToRequest(int mode, messaging::RequestMessage& message) {
  if (mode != kTransferRecords || !m_transferPayment) {
    return 0;
  }
  int written = 0;
  Currency held;
  for (int row = 0; row < lineCount(); ++row) {
    const Line& line = m_lines[row];
    if (!lineProblem(row, line).isEmpty()) {
      continue;
    }
    const std::optional<AccountNumber> number = parseNumber(line.number);
    const Currency amount = *amountOf(line);
    messaging::SaveRecord& record = message.addRecord(messaging::saverecords::TransferPay);
    record.setField(QStringLiteral("ACTION"), QStringLiteral("ADD"));
    record.setField(QStringLiteral("RCPT_NBR"), m_receiptNumber);
    record.setField(QStringLiteral("CUST_ID"), QVariant());
    record.setField(QStringLiteral("ACCT_RCVBL_TYP_CD"), line.type.trimmed().toUpper());
    record.setField(QStringLiteral("ACCT_RCVBL_NBR"), number ? number->digits : QString());
    record.setField(QStringLiteral("ACCT_RCVBL_CK_NBR"), number ? number->checkDigit : QString());
    record.setField(QStringLiteral("TRNSFR_AMT"), amount.toHostText());
    held += amount;
    ++written;
  }
  m_held = held;
  return written;
}

void QORVA_Payment::reset() {
  const bool hadLines = !m_lines.isEmpty();
  m_lines.clear();
  m_held = Currency();
  m_errorText.clear();
  if (hadLines) {
    Q_EMIT linesChanged();
  }
}

QString QORVA_Payment::ownerText() const {
  const QString name = m_owner.name.trimmed();
  const QString id = m_owner.customerId.trimmed();
  if (name.isEmpty()) {
    return QStringLiteral("customer ") + id;
  }
  return id.isEmpty() ? name : name + QStringLiteral(" (customer ") + id + u')';
}

}  // namespace adjustacc::platform
