#pragma once
// The rules of the two receipt saves, apart from reading and writing the database: the payment adjustment
// (back out or cancel a receipt, or payments of it) and the transfer of a receipt's excess to account
// receivables. receipts.cpp reads what the host holds, asks these rules, and applies their answer.

#include "excessfunds.h"
#include "receivable.h"
#include "requestcheck.h"
#include "rights.h"

#include "messaging/request.h"
#include "messaging/result.h"

#include <QDate>
#include <QList>
#include <QString>

#include <map>

namespace adjustacc::host {

// A receipt number parameter of a request: 1 to 10 letters and digits.
messaging::Result<QString> receiptNumberParam(const messaging::Request& request, const QString& key);

// --- payment adjustment -------------------------------------------------------------------------------------

// A payment of a receipt with the account receivable it paid.
struct Payment {
  qint64 id = 0;
  qint64 receivableId = 0;
  QString transaction;
  QDate transactionDate;
  qint64 amount = 0;
  QString adjusted;  // ACTVTY_STTS_CD: empty while in force
  qint64 version = 0;
  QString receivableType;
  QString receivableNumber;
  QString checkDigit;
  QString customerId;
};

// What a payment adjustment asks, read from its parameters and its ADJUSTPAY record.
struct PaymentAdjustmentRequest {
  QString receipt;
  QString receiptAction;  // "B" back out or "C" cancel the whole receipt; empty for payments one by one
  const messaging::SaveRecord* header = nullptr;  // the ADJUSTPAY record
  bool wholeReceipt() const { return !receiptAction.isEmpty(); }
};

// The request's shape, the officer's rights (ADJUSTRECEIPT; with ADJUSTRCPTCANCELONLY only the cancel of a
// whole receipt), and the ADJUSTPAY record's action, receipt and adjustment type.
messaging::Result<PaymentAdjustmentRequest> readPaymentAdjustmentRequest(const messaging::Request& request,
                                                                         const Officer& officer);

// The adjustment as the ADJUSTPAY record gives it.
struct AdjustmentHeader {
  QDate date;
  QString comment;
};

// The record must hand back the receipt's version as read; the date is given, not ahead and not before the
// receipt; a comment; the receipt is open.
messaging::Result<AdjustmentHeader> checkAdjustmentHeader(const RecordReader& header, const Receipt& receipt,
                                                          const QDate& today);

// A payment to back out ("B") or cancel ("C").
struct PaymentChange {
  Payment payment;
  QString action;
  qint64 version = 0;
};

// The ACNTSRCVBL records (may be null): each names, once, a payment of the receipt in force as it was read,
// with the receipt's own action when the whole receipt is adjusted. For a whole receipt, every other payment
// in force goes with it.
messaging::Result<QList<PaymentChange>> checkPaymentRecords(const messaging::RecordList* records,
                                                            const QList<Payment>& payments,
                                                            const PaymentAdjustmentRequest& request);

// "backed out" or "canceled".
QString adjustmentWord(const QString& code);

// --- transfer of an excess fund -------------------------------------------------------------------------------

// What a transfer asks: the receipt whose excess goes, and its TRANSFERPAY records.
struct TransferRequest {
  QString receipt;
  const messaging::RecordList* records = nullptr;
};

// The request's shape and the officer's rights (ADJUSTRECEIPT, and not limited to cancelling receipts).
messaging::Result<TransferRequest> readTransferRequest(const messaging::Request& request, const Officer& officer);

// The source receipt must be open and confirmed: the refusal, or an empty text.
QString transferSourceProblem(const Receipt& source);

// One TRANSFERPAY record as sent: the receivable named and the amount.
struct TransferLine {
  QString type;
  AccountNumber number;
  qint64 amount = 0;
};

messaging::Result<TransferLine> readTransferRecord(const RecordReader& record, const QString& source);

// A receivable receiving part of the excess.
struct TransferTarget {
  Receivable receivable;
  qint64 amount = 0;
};
using TransferTargets = std::map<qint64, TransferTarget>;  // by receivable id: locked and paid in that order

// The receivable a record names (nothing when not found) must fit the record, be able to take payments, be
// named once and owe at least the amount.
messaging::Result<TransferTarget> checkTransferTarget(const RecordReader& record, const TransferLine& line,
                                                      const std::optional<Receivable>& receivable,
                                                      const TransferTargets& earlier);

// The whole transfer may not pass the receipt's open excess: the refusal, or an empty text.
QString transferTotalProblem(qint64 total, qint64 openExcess, const QString& receipt);

}  // namespace adjustacc::host
