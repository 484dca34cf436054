#pragma once
// The rules of a refund worksheet's steps, apart from reading and writing the database: given what the host
// holds and the REFUND record a save sent, what the save may do, or why not. worksheet.cpp reads, asks these
// rules and applies their answer; each rule can be tried on its own.
//
//   "0" new -> "1" prepared -> "2" verified -> "3" approved -> "4" refunded -> "5" mailed,
//   or "3" -> "T" transferred; and void ("V") from any step up to approval.

#include "dutyseparation.h"
#include "excessfunds.h"
#include "requestcheck.h"

#include "messaging/result.h"

#include <QDate>
#include <QList>
#include <QString>

#include <optional>
#include <utility>

namespace adjustacc::host {

// A worksheet as the host holds it.
struct Worksheet {
  QString number;
  QString receipt;
  QString customerId;
  qint64 amount = 0;
  QString status;
  QString creator;
  QString verifier;
  QString approver;
  QDate refundDate;
  qint64 version = 0;
};

// "PREPARED" for "1" and so on; the code itself when it is none of the worksheet's.
QString worksheetStatusName(const QString& code);

// A refund number as the screens hold it: up to seven digits, or the "NNNNNNN-D" the number service gave.
// The seven digits; nothing for other text, for "0000000" and for a check digit that does not fit.
std::optional<QString> refundNumberOf(const QString& text);

// Officer ids compare without regard to case or surrounding blanks; an empty id matches nobody.
bool sameOfficer(const QString& a, const QString& b);

// --- preparing a new worksheet (ACTION "ADD") -------------------------------------------------------------

// A refund number as the number service gave it out.
struct IssuedNumber {
  QString officerId;  // the officer it was given to
  bool used = false;  // a worksheet was prepared under it
};

// What the host holds about the number and receipt that a new worksheet names.
struct PrepareFacts {
  std::optional<Worksheet> existing;    // a worksheet already filed under the number
  std::optional<IssuedNumber> issued;   // nothing when the host never gave the number out
  std::optional<Receipt> receipt;       // the receipt the record names; nothing when it does not exist
  qint64 openExcess = 0;                // the customer's open excess on that receipt
};

// What preparing writes.
struct PreparedWorksheet {
  QString receipt;
  QString customerId;
  qint64 amount = 0;  // cents
  QString receiver;   // RFND_TO_CD
  QString comment;    // DMV_CMMT_TXT
};

// A worksheet is prepared under a refund number the host gave to the officer who prepares it, and not
// used yet, for the open excess of a confirmed receipt of the customer. The first rule broken is refused.
messaging::Result<PreparedWorksheet> checkPrepare(const RecordReader& record, const QString& number,
                                                  const PrepareFacts& facts, const QString& officerId);

// --- the later steps and void (ACTION "UPD") --------------------------------------------------------------

// Who saves, on which day, under which separation of duties.
struct StepContext {
  QString officerId;
  QDate today;
  DutySeparation duties = DutySeparation::NeighbouringSteps;
};

// What a step writes to the worksheet, and what becomes of the excess it set aside.
struct WorksheetChange {
  QString next;                               // STTS_CD after the step
  QList<std::pair<QString, QString>> texts;   // columns and their new text, in order
  QList<std::pair<QString, QDate>> days;      // columns and their new day, in order
  QString excessTo;                           // status of the excess set aside ("O", "R", "T"); empty: as it is
  QString timeColumn;                         // the column that records when the step was taken (host clock)
  bool releasesExcess() const { return excessTo == u"O"; }
};

// The column that records when the step that moves a worksheet to `next` was taken: CREATED_TS ("1"),
// VERIFY_TS, APPROVE_TS, RFND_BY_TS ("4" and "T"), MAILED_TS, VOID_TS; empty for any other code.
QString stepTimeColumn(const QString& next);

// The step the record's STTS_CD names, from the worksheet's status: the record must be of this worksheet as
// it was read (ROW_VRSN_NBR), name the signed-on officer in the step's officer field, carry what the step
// needs, and keep the separation of duties.
messaging::Result<WorksheetChange> checkStep(const Worksheet& worksheet, const RecordReader& record,
                                             const StepContext& context);

// Whether `officerId` may perform the step that moves the worksheet to `next`, by the officers recorded for
// its earlier steps: the refusal, or an empty text. Neighbouring steps: the preparer does not verify, the
// verifier does not approve. Four officers: also the preparer does not approve, and nobody who prepared,
// verified or approved refunds or transfers.
QString dutyProblem(const Worksheet& worksheet, const QString& next, const QString& officerId, DutySeparation duties);

}  // namespace adjustacc::host
