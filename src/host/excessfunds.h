#pragma once
// Receipts and their excess funds (the part of a payment not applied to any account receivable). An
// excess fund is open ("O") until it is transferred ("T", with the receipt it became), put on a refund
// worksheet ("W"), refunded ("R"), or goes with a backed-out or canceled receipt ("B", "C"). Drawing part
// of an open fund splits it: the part drawn becomes a row of its own and the rest stays open.

#include "audit.h"
#include "sqlutil.h"

#include "messaging/result.h"

#include <QDate>
#include <QString>

#include <optional>

namespace adjustacc::host {

struct Receipt {
  QString number;
  QString customerId;
  QDate date;
  QString status;        // RCPT_STTS_CD
  QString confirmation;  // empty while not confirmed
  qint64 total = 0;
  qint64 version = 0;

  bool isConfirmed() const { return !confirmation.trimmed().isEmpty(); }
  QString what() const { return QStringLiteral("Receipt %1").arg(number); }
};

// Reads (and on PostgreSQL locks) one receipt.
messaging::Result<std::optional<Receipt>> readReceipt(const Sql& sql, const QString& number, bool lock);

// A receipt number as typed: letters and digits, 1 to 10 of them; nothing otherwise.
std::optional<QString> parseReceiptNumber(const QString& text);

// The open excess of a receipt, of one customer's funds when `customerId` is not empty.
messaging::Result<qint64> openExcess(const Sql& sql, const QString& receipt, const QString& customerId);

struct ExcessDraw {
  QString receipt;
  QString customerId;       // only this customer's funds when not empty
  qint64 amount = 0;        // cents
  QString status;           // what the drawn part becomes
  QString destination;      // DSTNTN_RCPT_NBR of the drawn part ("0" when none)
  QString refundNumber;     // RFND_NBR of the drawn part (empty when none)
};

// Draws the amount from the open funds, oldest first. Refuses (writing nothing) when less is open.
messaging::Result<bool> drawOpenExcess(AuditedWriter& writer, const ExcessDraw& draw);

// Gives every fund of a receipt in `fromStatus` (and of the refund when `refundNumber` is not empty) the
// status `toStatus`; answers how many changed.
messaging::Result<int> moveExcess(AuditedWriter& writer, const QString& receipt, const QString& fromStatus,
                                  const QString& refundNumber, const QString& toStatus, bool clearRefund);

}  // namespace adjustacc::host
