#pragma once
// The rules of the account receivable adjustment, apart from reading and writing the database: what the
// ADJUSTAR record may do to the receivable, which assessments the ASSESSMENT records may remove or reinstate,
// and the License Purchase Option particulars that go with the removal of an LPO fee. aradjustment.cpp
// reads what the host holds, asks these rules, and applies their answer.

#include "receivable.h"
#include "requestcheck.h"
#include "rights.h"

#include "messaging/request.h"
#include "messaging/result.h"

#include <QDate>
#include <QList>
#include <QSet>
#include <QString>

#include <optional>

namespace adjustacc::host {

// What the request names: the receivable as typed (type, number and perhaps its check digit).
struct ArAdjustmentRequest {
  QString type;
  AccountNumber number;
  QString typed;  // the number as sent, for the refusal when there is no such receivable
};

// The request's shape and the officer's right (ADJUSTAR).
messaging::Result<ArAdjustmentRequest> readArAdjustmentRequest(const messaging::Request& request,
                                                               const Officer& officer);

// The ADJUSTAR record, or null when the save only changes activity rows; assessment and License Purchase
// Option changes come with one.
messaging::Result<const messaging::SaveRecord*> adjustmentRecordOf(const messaging::Request& request);

// The adjustment as the ADJUSTAR record gives it.
struct ArAdjustmentHeader {
  QString action;  // "V" void or "D" delete the form; empty for fee and penalty adjustments
  QDate adjusted;
  QString comment;
  bool formAction() const { return !action.isEmpty(); }
};

// What else the save carries besides the ADJUSTAR record.
struct ArRecordsSent {
  bool assessments = false;  // ASSESSMENT records
  bool lpo = false;          // a CTTNADTNINFO record
};

// The record must be of this receivable as it was read; the receivable must be open to adjustment (not
// deleted, inactive or bound to a case; a payment plan is neither voided nor deleted; a voided form may only
// be deleted); the date is given and not ahead; a form action and fee changes do not go together; a comment;
// only typed citations and temporary permits are deleted. The first rule broken is refused.
messaging::Result<ArAdjustmentHeader> checkArAdjustmentHeader(const RecordReader& header, const Receivable& receivable,
                                                              const ArRecordsSent& sent, const QDate& today);

// --- assessments --------------------------------------------------------------------------------------------------

struct Assessment {
  qint64 id = 0;
  QString code;
  QString transaction;
  qint64 sequence = 0;
  QString customerId;
  QDate issued;
  qint64 amount = 0;  // the LPO amount for License Purchase Option fees
  qint64 balance = 0;
  QString status;
  bool lpo = false;
  qint64 version = 0;
};

// The assessment an ASSESSMENT record names, and whether it is removed ("I") or reinstated ("A").
struct AssessmentKey {
  QString customerId;
  QString transaction;
  QString code;
  qint64 sequence = 0;
  bool removal = false;
};

// The record's key, status and date (the day of the adjustment when given); its amounts only for form.
messaging::Result<AssessmentKey> readAssessmentRecord(const RecordReader& record, const QDate& adjusted);

struct AssessmentChange {
  Assessment assessment;
  bool removal = false;
  qint64 version = 0;
};

// The assessment found for the key (nothing when the receivable has none such) must be named once, as it was
// read, be in force to be removed or removed to be reinstated, and be issued on or before the adjustment.
// `seen` collects the assessments named so far.
messaging::Result<AssessmentChange> checkAssessmentChange(const RecordReader& record, const AssessmentKey& key,
                                                          const std::optional<Assessment>& found,
                                                          const Receivable& receivable, const QDate& adjusted,
                                                          QSet<qint64>& seen);

// --- License Purchase Option -----------------------------------------------------------------------------------

// One LPO fee removed at a time; its particulars come exactly with its removal. The LPO assessment removed,
// or nothing. `lpoRecords` is how many CTTNADTNINFO records the save carries.
messaging::Result<std::optional<Assessment>> checkLpoRemoval(const QList<AssessmentChange>& changes,
                                                             qsizetype lpoRecords);

// The particulars of the removed LPO: in state ("0") the plate, date, time, troop, weight and amount; out of
// state ("1") a comment.
struct LpoDetails {
  QString where;  // PRCHS_OPTN_ST_CD
  QString comment;
  QString plate;
  QDate bought;
  QString time;
  QString troop;
  QString district;
  qint64 weight = 0;
  qint64 paid = 0;  // cents
  bool inState() const { return where == u"0"; }
};

messaging::Result<LpoDetails> checkLpoRecord(const RecordReader& record, const QDate& today);

}  // namespace adjustacc::host
