#include "worksheetrules.h"

#include "audit.h"
#include "handlercontext.h"

#include "messaging/formnumber.h"

#include <QHash>

#include <vector>

namespace adjustacc::host {

using messaging::Result;

namespace {

// The status a step starts from, by the status it moves to.
QString previousStatus(const QString& next) {
  if (next == u"2") return QStringLiteral("1");
  if (next == u"3") return QStringLiteral("2");
  if (next == u"4" || next == u"T") return QStringLiteral("3");
  if (next == u"5") return QStringLiteral("4");
  return {};
}

bool isFinal(const QString& status) {
  return status == u"4" || status == u"5" || status == u"T" || status == u"V";
}

// The officer field of a step must name the signed-on officer: nobody records a step in another's name.
QString officerFieldProblem(const RecordReader& r, const QString& field, const QString& officerId,
                            const QString& stepMessage) {
  const QString named = r.text(field);
  if (named.isEmpty()) {
    return stepMessage;
  }
  if (!sameOfficer(named, officerId)) {
    return r.refusal(QStringLiteral("%1 names %2, but the signed-on officer is %3").arg(field, named, officerId));
  }
  return {};
}

Result<QString> receiverOf(const RecordReader& r, bool required) {
  const QString to = r.text(QStringLiteral("TO"));
  if (to.isEmpty()) {
    return required ? Result<QString>::failure(QStringLiteral("Please select who receives the refund when issued"))
                    : Result<QString>(QString());
  }
  if (to != u"1" && to != u"2" && to != u"3") {
    return Result<QString>::failure(r.refusal(QStringLiteral("TO must be 1 (taxpayer), 2 (division) or 3 (other)")));
  }
  return to;
}

QString sameOfficerText(const char16_t* earlier, const char16_t* now) {
  return QStringLiteral("The person %1 and %2 the Refund Worksheet can not be the same.")
      .arg(QString::fromUtf16(earlier), QString::fromUtf16(now));
}

// Who receives the refund and the headquarters comment may still be corrected up to approval.
QString correctReceiverAndComment(const RecordReader& r, WorksheetChange& change) {
  Result<QString> to = receiverOf(r, false);
  if (!to) {
    return to.error();
  }
  if (!to.value().isEmpty()) {
    change.texts.append({QStringLiteral("RFND_TO_CD"), to.value()});
  }
  if (r.code(QStringLiteral("DMV_CMMT_TXT")).isEmpty() && r.isPresent(QStringLiteral("DMV_CMMT_TXT"))) {
    return QStringLiteral("The comment field is required by DMV HQ personnel");
  }
  if (!r.isBlank(QStringLiteral("DMV_CMMT_TXT"))) {
    change.texts.append({QStringLiteral("DMV_CMMT_TXT"), r.text(QStringLiteral("DMV_CMMT_TXT"))});
  }
  return {};
}

// Refunded ("4": a warrant on a day not ahead) or transferred ("T": with its description).
QString checkRefund(const RecordReader& r, const StepContext& c, WorksheetChange& change) {
  const QString code = r.code(QStringLiteral("RFND_CD"));
  if (code != (change.next == u"4" ? u"1" : u"0")) {
    return QStringLiteral("Please select Transferred or Refunded");
  }
  change.texts.append({QStringLiteral("RFND_BY_ID"), c.officerId});
  change.texts.append({QStringLiteral("RFND_CD"), code});
  const QString fiscal = r.text(QStringLiteral("FISCAL_CMMT_TXT"));
  if (!fiscal.isEmpty()) {
    change.texts.append({QStringLiteral("FISCAL_CMMT_TXT"), fiscal});
  }
  change.excessTo = change.next == u"4" ? QStringLiteral("R") : QStringLiteral("T");
  if (change.next == u"T") {
    return fiscal.isEmpty() ? QStringLiteral("Please enter the Refund Description, when Tranferring the excess funds")
                            : QString();
  }
  const QString warrant = r.text(QStringLiteral("WRNT_NBR"));
  if (warrant.isEmpty()) {
    return QStringLiteral("Please enter the Warrant Number, when Refunding the worksheet");
  }
  Result<QDate> refunded = r.requiredDay(QStringLiteral("RFND_DT"), QStringLiteral("the refund date"));
  if (!refunded) {
    return refunded.error();
  }
  if (refunded.value() > c.today) {
    return QStringLiteral("Refund Date must be current or before");
  }
  change.texts.append({QStringLiteral("WRNT_NBR"), warrant});
  change.days.append({QStringLiteral("RFND_DT"), refunded.value()});
  return {};
}

// Mailed: on a day not ahead and not before the refund.
QString checkMailed(const Worksheet& w, const RecordReader& r, const StepContext& c, WorksheetChange& change) {
  Result<QDate> mailed = r.requiredDay(QStringLiteral("DT_MLD"), QStringLiteral("the date mailed"));
  if (!mailed) {
    return mailed.error();
  }
  if (mailed.value() > c.today) {
    return QStringLiteral("Mail Date must be current or before");
  }
  if (w.refundDate.isValid() && mailed.value() < w.refundDate) {
    return QStringLiteral("Mail Date must be greater than or equal to the Refund Date");
  }
  change.days.append({QStringLiteral("DT_MLD"), mailed.value()});
  // The record names no officer for the mailing; the host keeps who mailed it all the same.
  change.texts.append({QStringLiteral("MAILED_BY_ID"), c.officerId});
  return {};
}

// The officer field each step records, and what the screens say when it is empty.
struct StepOfficer {
  const char16_t* field;
  const char16_t* missing;
};

std::optional<StepOfficer> stepOfficer(const QString& next) {
  if (next == u"2") {
    return StepOfficer{u"VERIFY_ID", u"When verifying a refund, the officer verifying the refund must be displayed."};
  }
  if (next == u"3") {
    return StepOfficer{u"APPROVE_ID", u"When approving a refund, the officer approving the refund must be displayed."};
  }
  if (next == u"4" || next == u"T") {
    return StepOfficer{u"RFND_BY_ID",
                       u"When refunding an excess fund, the officer refunding the excess fund must be displayed."};
  }
  return std::nullopt;
}

}  // namespace

QString worksheetStatusName(const QString& code) {
  static const QHash<QString, QString> names = {
      {QStringLiteral("0"), QStringLiteral("NEW")},      {QStringLiteral("1"), QStringLiteral("PREPARED")},
      {QStringLiteral("2"), QStringLiteral("VERIFIED")}, {QStringLiteral("3"), QStringLiteral("APPROVED")},
      {QStringLiteral("4"), QStringLiteral("REFUNDED")}, {QStringLiteral("5"), QStringLiteral("MAILED")},
      {QStringLiteral("T"), QStringLiteral("TRANSFERRED")}, {QStringLiteral("V"), QStringLiteral("VOIDED")}};
  return names.value(code, code);
}

std::optional<QString> refundNumberOf(const QString& text) {
  const std::optional<AccountNumber> number = parseAccountNumber(text);
  if (!number || number->digits == u"0000000") {
    return std::nullopt;
  }
  if (!number->checkDigit.isEmpty()) {
    const std::optional<int> digit = messaging::formCheckDigit(number->digits);
    if (!digit || QString::number(*digit) != number->checkDigit) {
      return std::nullopt;
    }
  }
  return number->digits;
}

bool sameOfficer(const QString& a, const QString& b) {
  return !a.trimmed().isEmpty() && a.trimmed().compare(b.trimmed(), Qt::CaseInsensitive) == 0;
}

Result<PreparedWorksheet> checkPrepare(const RecordReader& r, const QString& number, const PrepareFacts& facts,
                                       const QString& officerId) {
  using R = Result<PreparedWorksheet>;
  if (facts.existing && facts.existing->status != u"0") {
    return R::failure(QStringLiteral("Refund worksheet %1 already exists (status %2).")
                          .arg(number, worksheetStatusName(facts.existing->status)));
  }
  if (r.code(QStringLiteral("STTS_CD")) != u"1") {
    return R::failure(r.refusal(QStringLiteral("a new worksheet is saved as prepared (STTS_CD 1)")));
  }
  if (!facts.issued) {
    return R::failure(
        QStringLiteral("Refund number %1 was not given out by the host; ask for a new refund number.").arg(number));
  }
  if (!facts.existing && facts.issued->used) {
    return R::failure(QStringLiteral("Refund number %1 is already used by another worksheet.").arg(number));
  }
  // The number service records whom it gave each number to; a worksheet under another officer's number
  // would leave that officer's number unaccounted for and let anyone pick up a number not meant for them.
  if (!sameOfficer(facts.issued->officerId, officerId)) {
    return R::failure(QStringLiteral("Refund number %1 was given to officer %2, not to %3; ask for a new refund "
                                     "number to prepare a worksheet.")
                          .arg(number, facts.issued->officerId, officerId));
  }
  PreparedWorksheet prepared;
  prepared.customerId = r.code(QStringLiteral("CUST_ID"));
  if (prepared.customerId.isEmpty()) {
    return R::failure(QStringLiteral("The Customer ID can not be found"));
  }
  const std::optional<QString> receiptNumber = parseReceiptNumber(r.text(QStringLiteral("RCPT_NBR")));
  if (!receiptNumber) {
    return R::failure(r.refusal(QStringLiteral("RCPT_NBR (the receipt whose excess is refunded) is required")));
  }
  prepared.receipt = *receiptNumber;
  if (!facts.receipt) {
    return R::failure(QStringLiteral("Receipt %1 was not found.").arg(prepared.receipt));
  }
  if (facts.receipt->status != u"O") {
    return R::failure(
        QStringLiteral("Receipt %1 is backed out or canceled; its excess can not be refunded.").arg(prepared.receipt));
  }
  if (!facts.receipt->isConfirmed()) {
    return R::failure(QStringLiteral("Excess Funds that are not Confirmed can not be Refunded"));
  }
  Result<std::optional<qint64>> amount = r.cents(QStringLiteral("RFND_AMT"));
  if (!amount) {
    return R::failure(amount.error());
  }
  if (!amount.value() || *amount.value() <= 0) {
    return R::failure(r.refusal(QStringLiteral("RFND_AMT (the refund amount) must be above $0.00")));
  }
  prepared.amount = *amount.value();
  Result<QString> to = receiverOf(r, true);
  if (!to) {
    return R::failure(to.error());
  }
  prepared.receiver = to.value();
  prepared.comment = r.text(QStringLiteral("DMV_CMMT_TXT"));
  if (prepared.comment.isEmpty()) {
    return R::failure(QStringLiteral("The comment field is required by DMV HQ personnel"));
  }
  if (const QString problem =
          officerFieldProblem(r, QStringLiteral("CREATOR_ID"), officerId,
                              QStringLiteral("When preparing a refund, the officer preparing the refund must be displayed."));
      !problem.isEmpty()) {
    return R::failure(problem);
  }
  if (facts.openExcess == 0) {
    return R::failure(QStringLiteral("Excess Fund status must be OPEN to create refund"));
  }
  return prepared;
}

QString dutyProblem(const Worksheet& w, const QString& next, const QString& officerId, DutySeparation duties) {
  const bool four = duties == DutySeparation::FourOfficers;
  struct Earlier {
    const QString* officer;
    const char16_t* doing;
    bool applies;
  };
  std::vector<Earlier> earlier;
  const char16_t* now = u"";
  if (next == u"2") {
    now = u"verifying";
    earlier = {{&w.creator, u"preparing", true}};
  } else if (next == u"3") {
    now = u"approving";
    earlier = {{&w.verifier, u"verifying", true}, {&w.creator, u"preparing", four}};
  } else if (next == u"4" || next == u"T") {
    now = u"refunding";
    earlier = {{&w.creator, u"preparing", four}, {&w.verifier, u"verifying", four}, {&w.approver, u"approving", four}};
  }
  for (const Earlier& e : earlier) {
    if (e.applies && sameOfficer(*e.officer, officerId)) {
      return sameOfficerText(e.doing, now);
    }
  }
  return {};
}

Result<WorksheetChange> checkStep(const Worksheet& w, const RecordReader& r, const StepContext& c) {
  using R = Result<WorksheetChange>;
  Result<qint64> version = r.rowVersion(QStringLiteral("refund worksheet"));
  if (!version) {
    return R::failure(version.error());
  }
  if (version.value() != w.version) {
    return R::failure(changedSinceReadText(QStringLiteral("Refund worksheet %1").arg(w.number)));
  }
  if ((!r.isBlank(QStringLiteral("CUST_ID")) && r.code(QStringLiteral("CUST_ID")) != w.customerId) ||
      (!r.isBlank(QStringLiteral("RCPT_NBR")) && r.code(QStringLiteral("RCPT_NBR")) != w.receipt)) {
    return R::failure(
        r.refusal(QStringLiteral("the customer or receipt is not that of refund worksheet %1").arg(w.number)));
  }
  WorksheetChange change;
  change.next = r.code(QStringLiteral("STTS_CD"));
  // Only the mailing date may follow a refund; nothing follows the other final statuses.
  if (isFinal(w.status) && (w.status != u"4" || change.next != u"5")) {
    return R::failure(QStringLiteral("The following transaction can not be voided or saved: a Voided/Transferred/"
                                     "Refunded Worksheet"));
  }
  if (change.next == u"V") {
    if (const QString problem =
            officerFieldProblem(r, QStringLiteral("VOID_ID"), c.officerId,
                                r.refusal(QStringLiteral("VOID_ID (the officer voiding) is required")));
        !problem.isEmpty()) {
      return R::failure(problem);
    }
    change.texts = {{QStringLiteral("VOID_ID"), c.officerId}};
    change.timeColumn = stepTimeColumn(change.next);
    change.excessTo = QStringLiteral("O");
    return change;
  }
  const QString from = previousStatus(change.next);
  if (from.isEmpty() || from != w.status) {
    return R::failure(QStringLiteral("Refund worksheet %1 is %2; it can not be moved to %3.")
                          .arg(w.number, worksheetStatusName(w.status),
                               change.next.isEmpty() ? QStringLiteral("(no status)") : worksheetStatusName(change.next)));
  }
  if (change.next == u"2" || change.next == u"3") {
    if (const QString problem = correctReceiverAndComment(r, change); !problem.isEmpty()) {
      return R::failure(problem);
    }
  }
  if (const std::optional<StepOfficer> officer = stepOfficer(change.next)) {
    const QString field = QString::fromUtf16(officer->field);
    if (const QString problem = officerFieldProblem(r, field, c.officerId, QString::fromUtf16(officer->missing));
        !problem.isEmpty()) {
      return R::failure(problem);
    }
    if (const QString problem = dutyProblem(w, change.next, c.officerId, c.duties); !problem.isEmpty()) {
      return R::failure(problem);
    }
    if (change.next == u"2" || change.next == u"3") {
      change.texts.append({field, c.officerId});
    }
  }
  QString problem;
  if (change.next == u"4" || change.next == u"T") {
    problem = checkRefund(r, c, change);
  } else if (change.next == u"5") {
    problem = checkMailed(w, r, c, change);
  }
  if (!problem.isEmpty()) {
    return R::failure(problem);
  }
  change.timeColumn = stepTimeColumn(change.next);
  return change;
}

QString stepTimeColumn(const QString& next) {
  if (next == u"1") return QStringLiteral("CREATED_TS");
  if (next == u"2") return QStringLiteral("VERIFY_TS");
  if (next == u"3") return QStringLiteral("APPROVE_TS");
  if (next == u"4" || next == u"T") return QStringLiteral("RFND_BY_TS");
  if (next == u"5") return QStringLiteral("MAILED_TS");
  if (next == u"V") return QStringLiteral("VOID_TS");
  return {};
}

}  // namespace adjustacc::host
