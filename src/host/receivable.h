#pragma once
// The amounts of an account receivable follow from its rows, so they are always recomputed, never
// adjusted by hand:
//   due      = the sum of its active assessments (the LPO amount for License Purchase Option fees);
//   balance  = the sum of the active assessments' amounts due, less the payments in force;
//   late fee = the active F02 assessments; interest = the active F03 assessments.
// The status follows the balance while the form is open (U unpaid, R partly paid, Y paid in full);
// void (V), deleted (D) and written-off (W) forms keep theirs.

#include "audit.h"
#include "sqlutil.h"

#include "messaging/result.h"

#include <QString>

#include <optional>

namespace adjustacc::host {

inline const QString kLateFeeCode = QStringLiteral("F02");
inline const QString kInterestCode = QStringLiteral("F03");
// The account receivable numbers above this are forms the system generated.
inline constexpr qint64 kLastTypedFormNumber = 1999999;

// One account receivable as the saves need it.
struct Receivable {
  qint64 id = 0;
  QString type;
  QString number;      // seven digits
  QString checkDigit;
  QString customerId;
  QString status;      // ACCT_STTS_CD
  QString activity;    // ACTV_STTS_CD
  QString caseId;
  qint64 balance = 0;  // cents
  qint64 version = 0;

  // "1234567-8", as clerks see it.
  QString displayNumber() const { return number + u'-' + checkDigit; }
  QString what() const { return QStringLiteral("Account receivable %1").arg(displayNumber()); }
};

struct ReceivableAmounts {
  qint64 due = 0;
  qint64 balance = 0;
  qint64 lateFee = 0;
  qint64 interest = 0;
};

// Reads (and, on PostgreSQL, locks for the rest of the transaction) one account receivable.
messaging::Result<std::optional<Receivable>> readReceivable(const Sql& sql, const QString& type,
                                                            const QString& number, bool lock);
messaging::Result<std::optional<Receivable>> readReceivableById(const Sql& sql, qint64 id, bool lock);

messaging::Result<ReceivableAmounts> computeAmounts(const Sql& sql, qint64 receivableId);

// The status an open form takes for its amounts; other statuses are kept.
QString statusForAmounts(const QString& current, const ReceivableAmounts& amounts);

// Recomputes the amounts and status and writes them (audited). With `expectedVersion`, the receivable
// must not have changed since the clerk read it.
messaging::Result<ReceivableAmounts> refreshReceivable(AuditedWriter& writer, const Receivable& receivable,
                                                       std::optional<qint64> expectedVersion);

// Adds an activity row made by the system (ADTL_INFO_TXT "SYSTEM") to record what a save did.
messaging::Result<bool> addSystemActivity(AuditedWriter& writer, qint64 receivableId, const QString& code,
                                          const QString& comment, std::optional<qint64> amount,
                                          std::optional<qint64> balance);

}  // namespace adjustacc::host
