#include "demodata.h"

#include "hostsystem.h"
#include "receivable.h"
#include "rights.h"
#include "transaction.h"

#include "messaging/formnumber.h"

#include <QSqlDatabase>

namespace adjustacc::host {

using messaging::Result;

namespace {

const QVariant kNull;

QString checkDigitOf(const QString& sevenDigits) {
  const std::optional<int> digit = messaging::formCheckDigit(sevenDigits);
  return digit ? QString::number(*digit) : QStringLiteral("0");
}

// Writes the demo rows; the first failure is kept and every later call does nothing.
class DemoWriter {
public:
  DemoWriter(const Sql& sql, const QDate& today) : m_sql(sql), m_today(today) {}

  bool ok() const { return m_error.isEmpty(); }
  const QString& error() const { return m_error; }
  QVariant day(int offset) const { return m_sql.date(m_today.addDays(offset)); }
  QVariant stamp(int dayOffset, const QString& time) const {
    const QDateTime local(m_today.addDays(dayOffset), QTime::fromString(time, QStringLiteral("HH:mm")));
    return m_sql.dialect().timestampValue(local.toUTC());
  }

  void exec(const QString& statement, const QVariantList& values) {
    if (!ok()) {
      return;
    }
    if (Result<QSqlQuery> done = m_sql.run(statement, values); !done) {
      m_error = done.error();
    }
  }

  qint64 insertId(const QString& statement, const QVariantList& values) {
    if (!ok()) {
      return 0;
    }
    Result<qint64> id = m_sql.insertReturningId(statement, values);
    if (!id) {
      m_error = id.error();
      return 0;
    }
    return id.value();
  }

  void officer(const QString& id, const QString& name, const QString& region, const QStringList& rights) {
    exec(QStringLiteral("INSERT INTO OFFICER (OFFICER_ID, OFFICER_NM, REGION, ACTIVE_IND) VALUES (?, ?, ?, 'Y')"),
         {id, name, region});
    for (const QString& right : rights) {
      exec(QStringLiteral("INSERT INTO OFFICER_RIGHT (OFFICER_ID, RIGHT_NM) VALUES (?, ?)"), {id, right});
    }
  }

  void code(const QString& region, const QString& table, const QString& code, const QString& description,
            int effectiveOffset = -3650, std::optional<int> endOffset = std::nullopt) {
    exec(QStringLiteral("INSERT INTO QVR_CODE (CD_TBL_ID, CD_TBL_CD, CD_TBL_DES, EFCTV_DT, END_DT, REGION) "
                        "VALUES (?, ?, ?, ?, ?, ?)"),
         {table, code, description, day(effectiveOffset), endOffset ? day(*endOffset) : m_sql.date(QDate()), region});
  }

  void customer(const QString& id, const QString& name, const QString& address1, const QString& address2,
                const QString& city, const QString& state, const QString& zip, const QString& alert = {}) {
    exec(QStringLiteral("INSERT INTO CUSTOMER (CUST_ID, CUST_NM, ADDR_1, ADDR_2, CITY, STATE, ZIP, ALERT_IND, "
                        "ALERT_TXT) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"),
         {id, name, address1, address2.isEmpty() ? kNull : QVariant(address2), city, state, zip,
          alert.isEmpty() ? QStringLiteral("N") : QStringLiteral("Y"), alert.isEmpty() ? kNull : QVariant(alert)});
  }

  struct ReceivableShape {
    QString type;
    QString number;
    QString customer;
    int stopOffset = -120;
    QString status = QStringLiteral("U");
    QString activity = QStringLiteral("A");
    QString caseId{};
    QString refType{};  // defaults to the receivable's own type and number
    QString refNumber{};
    int installment = 0;
  };

  qint64 receivable(const ReceivableShape& shape) {
    const qint64 id = insertId(
        QStringLiteral("INSERT INTO ACCT_RCVBL (ACCT_RCVBL_TYP_CD, ACCT_RCVBL_NBR, ACCT_RCVBL_CK_NBR, REF_TYP_CD, "
                       "REF_NBR, CUST_ID, STP_DT, ACCT_RCVBL_DUE_DT, ACCT_STTS_CD, ACTV_STTS_CD, CASE_ID, INSTLMT_NBR, "
                       "ASSMT_PP_TYP_CD) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?) RETURNING ACCT_RCVBL_ID"),
        {shape.type, shape.number, checkDigitOf(shape.number), shape.refType.isEmpty() ? shape.type : shape.refType,
         shape.refNumber.isEmpty() ? shape.number : shape.refNumber, shape.customer, day(shape.stopOffset),
         day(shape.stopOffset + 30), shape.status, shape.activity, shape.caseId.isEmpty() ? kNull : QVariant(shape.caseId),
         shape.installment > 0 ? QVariant(shape.installment) : kNull,
         shape.installment > 0 ? QVariant(QStringLiteral("PP")) : kNull});
    m_receivables.append(id);
    return id;
  }

  struct AssessmentShape {
    int sequence;
    QString transaction;
    QString code;
    int issueOffset;
    qint64 amount;          // cents
    qint64 lpoAmount = -1;  // AC_ASMT_AMT; the amount itself when not given
    bool lpo = false;
    bool removed = false;
    int adjustOffset = 0;
  };

  qint64 assessment(qint64 receivableId, const QString& customer, const AssessmentShape& shape) {
    const bool penalty = shape.code.startsWith(u'P', Qt::CaseInsensitive);
    return insertId(
        QStringLiteral("INSERT INTO VLTN_ASSMT (ACCT_RCVBL_ID, CUST_ID, VLTN_ASSMT_SEQ_NBR, TRNSCTN_NBR, ASSMT_CD, "
                       "ASSMT_TYP_CD, ASSMT_ISSUE_DT, ADJSTMT_DT, CL_ASMT_AMT, AC_ASMT_AMT, BAL_DUE_AMT, "
                       "VLTN_ASSMT_STTS_CD, LIC_PRCHS_OPTN_IND) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?) "
                       "RETURNING ASSMT_ID"),
        {receivableId, customer, shape.sequence, shape.transaction, shape.code,
         penalty ? QStringLiteral("P") : QStringLiteral("F"), day(shape.issueOffset),
         shape.removed ? day(shape.adjustOffset) : m_sql.date(QDate()), shape.amount,
         shape.lpoAmount >= 0 ? shape.lpoAmount : shape.amount,
         shape.removed ? 0 : (shape.lpo && shape.lpoAmount >= 0 ? shape.lpoAmount : shape.amount),
         shape.removed ? QStringLiteral("I") : QStringLiteral("A"),
         shape.lpo ? QVariant(QStringLiteral("Y")) : (shape.code.startsWith(u'F') ? QVariant(QStringLiteral("N")) : kNull)});
  }

  // The adjustment that removed an assessment, so that its reinstatement can name what it reverses.
  void removalHistory(qint64 receivableId, qint64 assessmentId, qint64 amount, int offset, const QString& officer,
                      const QString& comment) {
    const qint64 adjustment = insertId(
        QStringLiteral("INSERT INTO ADJSTMT (ADJSTMT_KIND_CD, ACCT_RCVBL_ID, ADJSTMT_DT, ADJSTMT_CMMT_TXT, OFFICER_ID, "
                       "REQUEST_ID, CREATED_TS) VALUES ('AR', ?, ?, ?, ?, ?, ?) RETURNING ADJSTMT_ID"),
        {receivableId, day(offset), comment, officer, kNull, stamp(offset, QStringLiteral("11:20"))});
    exec(QStringLiteral("INSERT INTO ASSMT_ADJSTMT (ADJSTMT_ID, ASSMT_ID, CHANGE_CD, ASMT_AMT, PRIOR_BAL_AMT, "
                        "NEW_BAL_AMT) VALUES (?, ?, 'R', ?, ?, 0)"),
         {adjustment, assessmentId, amount, amount});
  }

  void receipt(const QString& number, const QString& customer, int offset, const QString& status,
               const QString& confirmation, qint64 total, const QString& source = {}) {
    exec(QStringLiteral("INSERT INTO RCPT (RCPT_NBR, CUST_ID, RCPT_DT, RCPT_STTS_CD, CNFRMTN_NBR, TOT_PYMT_AMT, "
                        "SRC_RCPT_NBR) VALUES (?, ?, ?, ?, ?, ?, ?)"),
         {number, customer, day(offset), status, confirmation.isEmpty() ? kNull : QVariant(confirmation), total,
          source.isEmpty() ? kNull : QVariant(source)});
  }

  void fund(const QString& receipt, int sequence, const QString& type, const QString& reference, qint64 amount,
            const QString& month = {}, const QString& dayOfMonth = {}, const QString& year = {}) {
    exec(QStringLiteral("INSERT INTO FUND (RCPT_NBR, FUND_SEQ_NBR, FUND_TYP_CD, FUND_RFRNC_NBR, FUND_AMT, "
                        "EXPRTN_MO_DT, EXPRTN_DY_DT, EXPRTN_YR_DT) VALUES (?, ?, ?, ?, ?, ?, ?, ?)"),
         {receipt, sequence, type, reference.isEmpty() ? kNull : QVariant(reference.toUpper()), amount,
          month.isEmpty() ? kNull : QVariant(month), dayOfMonth.isEmpty() ? kNull : QVariant(dayOfMonth),
          year.isEmpty() ? kNull : QVariant(year)});
  }

  void payment(const QString& receipt, qint64 receivableId, int number, const QString& transaction, int offset,
               qint64 amount, const QString& adjusted = {}, int adjustOffset = 0) {
    exec(QStringLiteral("INSERT INTO PYMT (RCPT_NBR, ACCT_RCVBL_ID, PYMT_NBR, TRNSCTN_NBR, TRNSCTN_DT, PYMT_DT, "
                        "CL_PYMT_AMT, STTS_CD, ACTVTY_STTS_CD, ADJSTMT_DT) VALUES (?, ?, ?, ?, ?, ?, ?, 'A', ?, ?)"),
         {receipt, receivableId, number, transaction, day(offset), day(offset), amount,
          adjusted.isEmpty() ? kNull : QVariant(adjusted), adjusted.isEmpty() ? m_sql.date(QDate()) : day(adjustOffset)});
  }

  void excess(const QString& receipt, int sequence, const QString& customer, int offset, const QString& time,
              qint64 amount, const QString& status, const QString& destination = QStringLiteral("0"),
              const QString& refund = {}) {
    exec(QStringLiteral("INSERT INTO OVR_PYMT (RCPT_NBR, OVR_PYMT_SEQ_NBR, CUST_ID, OVR_PYMT_DT, OVR_PYMT_TM, "
                        "OVR_PYMT_AMT, OVR_PYMT_STTS_CD, DSTNTN_RCPT_NBR, RFND_NBR) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"),
         {receipt, sequence, customer, day(offset), time, amount, status, destination,
          refund.isEmpty() ? kNull : QVariant(refund)});
  }

  struct WorksheetSpec {
    QString number;
    QString status;
    qint64 amount;
    QString verifier{};
    QString approver{};
    QString refundedBy{};
    QString voidedBy{};
    QString refundCode{};
    QString warrant{};
    int refundOffset = 0;
    int mailedOffset = 0;
    QString fiscalComment{};
  };

  void worksheet(const QString& receipt, const QString& customer, const WorksheetSpec& w) {
    const auto text = [](const QString& value) { return value.isEmpty() ? kNull : QVariant(value); };
    const QVariant noStamp = m_sql.dialect().timestampValue(QDateTime());
    // Each step a working day or so after the one before, in office hours; the refund on its refund date, the
    // mailing on the day mailed, recorded by the officer who refunded.
    const auto stampIf = [&](bool taken, int dayOffset, const char* time) {
      return taken ? stamp(dayOffset, QString::fromLatin1(time)) : noStamp;
    };
    const bool mailed = w.mailedOffset != 0;
    exec(QStringLiteral("INSERT INTO RFND_WRKSHT (RFND_NBR, RCPT_NBR, CUST_ID, RFND_AMT, RFND_TO_CD, DT_MLD, "
                        "CREATED_DT, CREATOR_ID, VERIFY_ID, APPROVE_ID, RFND_BY_ID, VOID_ID, DMV_CMMT_TXT, "
                        "FISCAL_CMMT_TXT, RFND_CD, WRNT_NBR, RFND_DT, STTS_CD, CREATED_TS, VERIFY_TS, APPROVE_TS, "
                        "RFND_BY_TS, MAILED_BY_ID, MAILED_TS, VOID_TS) "
                        "VALUES (?, ?, ?, ?, '1', ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
         {w.number, receipt, customer, w.amount, mailed ? day(w.mailedOffset) : m_sql.date(QDate()),
          day(-12), demo::Admin, text(w.verifier), text(w.approver), text(w.refundedBy), text(w.voidedBy),
          QStringLiteral("Overpayment on receipt %1 returned to the taxpayer at the customer's request.").arg(receipt),
          text(w.fiscalComment), text(w.refundCode), text(w.warrant),
          w.refundOffset != 0 ? day(w.refundOffset) : m_sql.date(QDate()), w.status,
          stamp(-12, QStringLiteral("09:30")), stampIf(!w.verifier.isEmpty(), -11, "10:15"),
          stampIf(!w.approver.isEmpty(), -10, "14:20"),
          stampIf(!w.refundedBy.isEmpty(), w.refundOffset != 0 ? w.refundOffset : -9, "11:05"),
          mailed ? text(w.refundedBy) : kNull, stampIf(mailed, w.mailedOffset, "15:40"),
          stampIf(!w.voidedBy.isEmpty(), -10, "16:00")});
    exec(QStringLiteral("INSERT INTO NBR_ISSUED (NBR_TYP_CD, NBR, OFFICER_ID, REQUEST_ID, ISSUED_TS, USED_IND) "
                        "VALUES ('F', ?, ?, ?, ?, 'Y')"),
         {w.number, demo::Admin, kNull, stamp(-12, QStringLiteral("09:00"))});
  }

  void activity(qint64 receivableId, int offset, const QString& time, const QString& code, const QString& officer,
                const QString& comment, bool system = false, std::optional<qint64> amount = std::nullopt,
                std::optional<qint64> balance = std::nullopt) {
    exec(QStringLiteral("INSERT INTO ACCT_ACTVTY (ACCT_RCVBL_ID, ACTVTY_DT, ACTVTY_TM, ACCT_ACTVTY_CD, ACTVTY_AMT, "
                        "ACTVTY_BAL_AMT, LST_UPDT_USER_ID, ACTVTY_CMMT_TXT, ADTL_INFO_TXT, LST_UPDT_TS) "
                        "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
         {receivableId, day(offset), time, code, amount ? QVariant(*amount) : kNull,
          balance ? QVariant(*balance) : kNull, officer, comment,
          system ? QVariant(QStringLiteral("SYSTEM")) : kNull, stamp(offset, time)});
  }

  // Sets every receivable's amounts from its rows, as the saves do; the original assessment is what
  // was assessed at first, removed assessments included.
  void finishReceivables() {
    for (qint64 id : m_receivables) {
      if (!ok()) {
        return;
      }
      Result<ReceivableAmounts> amounts = computeAmounts(m_sql, id);
      Result<std::optional<Receivable>> current = readReceivableById(m_sql, id, false);
      if (!amounts || !current || !current.value()) {
        m_error = !amounts ? amounts.error() : current.error();
        return;
      }
      exec(QStringLiteral("UPDATE ACCT_RCVBL SET ACCT_RCVBL_DUE_AMT = ?, ACCT_RCVBL_BAL_AMT = ?, LTE_FEE_AMT = ?, "
                          "ACRD_INTRST_AMT = ?, ACCT_STTS_CD = ?, ORIG_ASSMT_AMT = (SELECT COALESCE(SUM(CL_ASMT_AMT), 0) "
                          "FROM VLTN_ASSMT WHERE ACCT_RCVBL_ID = ?) WHERE ACCT_RCVBL_ID = ?"),
           {amounts->due, amounts->balance, amounts->lateFee, amounts->interest,
            statusForAmounts(current.value()->status, amounts.value()), id, id});
    }
  }

private:
  const Sql& m_sql;
  QDate m_today;
  QString m_error;
  QList<qint64> m_receivables;
};

struct CodeRow {
  const char16_t* table;
  const char16_t* code;
  const char16_t* description;
};

// Every code table the screens read. The account types are the same in the three tables that name them.
const CodeRow kCodes[] = {
    {u"CSTATUS", u"U", u"UNPAID"},          {u"CSTATUS", u"R", u"PARTIALLY PAID"},
    {u"CSTATUS", u"Y", u"PAID IN FULL"},    {u"CSTATUS", u"V", u"VOID"},
    {u"CSTATUS", u"D", u"DELETED"},         {u"CSTATUS", u"W", u"WRITTEN OFF"},
    {u"PENALTY", u"P01", u"OVERWEIGHT PENALTY"},
    {u"PENALTY", u"P02", u"LOG BOOK PENALTY"},
    {u"PENALTY", u"P03", u"EQUIPMENT VIOLATION PENALTY"},
    {u"PENALTY", u"p04", u"late registration penalty"},
    {u"PENALTY", u"P05", u"PAYMENT PLAN INSTALLMENT"},
    {u"FEE", u"F01", u"LPO FEE 30 DAY"},    {u"FEE", u"F09", u"LPO FEE 90 DAY"},
    {u"FEE", u"F15", u"LPO FEE ANNUAL"},    {u"FEE", u"F02", u"LATE FEE"},
    {u"FEE", u"F03", u"INTEREST"},          {u"FEE", u"F04", u"COURT COST"},
    {u"FEE", u"F05", u"PERMIT FEE"},
    {u"ACCADJUST", u"A", u"ADJUST FEE/PENALTY"},
    {u"ACCADJUST", u"V", u"VOID"},          {u"ACCADJUST", u"D", u"DELETE"},
    {u"PAYADJUST", u"B", u"BACKOUT"},       {u"PAYADJUST", u"C", u"CANCEL"},
    {u"REFUNDTYP", u"O", u"OPEN"},          {u"REFUNDTYP", u"B", u"BACKED OUT"},
    {u"REFUNDTYP", u"C", u"CANCELED"},      {u"REFUNDTYP", u"W", u"IN REFUND"},
    {u"REFUNDTYP", u"R", u"REFUNDED"},      {u"REFUNDTYP", u"0", u"NEW"},
    {u"REFUNDTYP", u"1", u"PREPARED"},      {u"REFUNDTYP", u"2", u"VERIFIED"},
    {u"REFUNDTYP", u"3", u"APPROVED"},      {u"REFUNDTYP", u"4", u"REFUNDED"},
    {u"REFUNDTYP", u"5", u"MAILED"},        {u"REFUNDTYP", u"T", u"TRANSFERRED"},
    {u"REFUNDTYP", u"V", u"VOIDED"},
    {u"FUNDTYP", u"R", u"CREDIT CARD"},     {u"FUNDTYP", u"K", u"CHECK"},
    {u"FUNDTYP", u"M", u"MONEY ORDER"},     {u"FUNDTYP", u"C", u"CASH"},
    {u"FUNDTYP", u"X", u"TRANSFER"},
    {u"COLLECTN", u"ISS", u"FORM ISSUED"},  {u"COLLECTN", u"ADJ", u"ACCOUNT ADJUSTMENT"},
    {u"COLLECTN", u"VOD", u"FORM VOIDED"},  {u"COLLECTN", u"DEL", u"FORM DELETED"},
    {u"COLLECTN", u"LPO", u"LPO RECORDED"}, {u"COLLECTN", u"PMT", u"PAYMENT RECEIVED"},
    {u"COLLECTN", u"PBO", u"PAYMENT BACKED OUT"},
    {u"COLLECTN", u"PCN", u"PAYMENT CANCELED"},
    {u"COLLECTN", u"TRF", u"TRANSFER RECEIVED"},
    {u"COLLECTN", u"CAL", u"PHONE CALL"},   {u"COLLECTN", u"LTR", u"LETTER SENT"},
    {u"COLLECTN", u"NTE", u"NOTE"},         {u"COLLECTN", u"VST", u"OFFICE VISIT"},
    {u"COLLECTN", u"PRM", u"PROMISE TO PAY"},
    {u"COLLECTN-USER", u"CAL", u"PHONE CALL"},
    {u"COLLECTN-USER", u"LTR", u"LETTER SENT"},
    {u"COLLECTN-USER", u"NTE", u"NOTE"},    {u"COLLECTN-USER", u"VST", u"OFFICE VISIT"},
    {u"COLLECTN-USER", u"PRM", u"PROMISE TO PAY"},
};

const CodeRow kAccountTypes[] = {
    {u"", u"C", u"CITATION ENF001"},
    {u"", u"O", u"OVERWEIGHT CITATION ENF003"},
    {u"", u"M", u"MOTOR CARRIER CITATION ENF507"},
    {u"", u"T", u"TEMPORARY PERMIT"},
    {u"", u"S", u"SPECIAL HAULING PERMIT"},
    {u"", u"P", u"PAYMENT PLAN"},
    {u"", u"A", u"ALERT"},
    {u"", u"K", u"CHECK NUMBER"},
};

}  // namespace

Result<bool> fillReferenceData(const Sql& sql, const QDate& today) {
  DemoWriter w(sql, today);
  w.officer(demo::Admin, QStringLiteral("Avery Lindqvist"), QStringLiteral("NE"),
            {rights::AdjustAR, rights::AdjustReceipt, rights::CreateRefund, rights::ActivityUpdate});
  w.officer(demo::Clerk, QStringLiteral("Casey Moreno"), QStringLiteral("NE"), {});
  w.officer(demo::CancelOnly, QStringLiteral("Jordan Pike"), QStringLiteral("NE"),
            {rights::AdjustReceipt, rights::AdjustReceiptCancelOnly});
  w.officer(demo::Verifier, QStringLiteral("Riley Okafor"), QStringLiteral("NE"),
            {rights::AdjustAR, rights::AdjustReceipt, rights::CreateRefund});
  w.officer(demo::Approver, QStringLiteral("Morgan Hale"), QStringLiteral("SW"),
            {rights::AdjustAR, rights::CreateRefund});
  w.officer(demo::Fiscal, QStringLiteral("Taylor Brandt"), QStringLiteral("NE"), {rights::CreateRefund});
  // The officer the system's own activity rows are recorded under; nobody signs on as it.
  w.exec(QStringLiteral("INSERT INTO OFFICER (OFFICER_ID, OFFICER_NM, REGION, ACTIVE_IND) VALUES (?, ?, ?, 'N')"),
         {QStringLiteral("SYSTEM"), QStringLiteral("System"), QStringLiteral("NE")});

  for (const QString& region : {QStringLiteral("NE"), QStringLiteral("SW")}) {
    for (const CodeRow& row : kCodes) {
      w.code(region, QString::fromUtf16(row.table), QString::fromUtf16(row.code), QString::fromUtf16(row.description));
    }
    for (const QString& table : {QStringLiteral("FORMDOC"), QStringLiteral("REFDOCTYP"), QStringLiteral("ADJDOC")}) {
      for (const CodeRow& row : kAccountTypes) {
        w.code(region, table, QString::fromUtf16(row.code), QString::fromUtf16(row.description));
      }
      // Codes at the edges of their effective dates: one ends today (still offered), one starts
      // tomorrow and one ended yesterday (neither offered).
      w.code(region, table, QStringLiteral("W"), QStringLiteral("WARNING NOTICE"), -3650, 0);
      w.code(region, table, QStringLiteral("Z"), QStringLiteral("ZONE PERMIT"), 1);
      w.code(region, table, QStringLiteral("X"), QStringLiteral("EXPIRED FORM"), -3650, -1);
    }
    w.code(region, QStringLiteral("COLLECTN-USER"), QStringLiteral("OLD"), QStringLiteral("OLD NOTE CODE"), -3650, 0);
    w.code(region, QStringLiteral("COLLECTN-USER"), QStringLiteral("NEW"), QStringLiteral("NEW CONTACT CODE"), 1);
  }
  // Number series: refund numbers are handed to the screens; the others are the host's own. Warrant
  // numbers come from the treasury and can not be had here, which the screens show as "0000000-0".
  w.exec(QStringLiteral("INSERT INTO NBR_SEQ (NBR_TYP_CD, NEXT_NBR, LAST_NBR, ISSUE_IND, PUBLIC_IND) VALUES "
                        "('F', 3000009, 3999999, 'Y', 'Y'), ('W', 1, 9999999, 'N', 'Y'), "
                        "('R', 8000101, 8999999, 'Y', 'N'), ('T', 700001, 9999999, 'Y', 'N'), "
                        "('G', 2000101, 9999999, 'Y', 'N')"),
         {});
  if (!w.ok()) {
    return Result<bool>::failure(w.error());
  }
  return true;
}

Result<bool> fillDemoData(const Sql& sql, const QDate& today) {
  if (Result<bool> reference = fillReferenceData(sql, today); !reference) {
    return reference;
  }
  DemoWriter w(sql, today);
  using R = DemoWriter::ReceivableShape;
  using A = DemoWriter::AssessmentShape;

  // --- customers ----------------------------------------------------------------------------------------------
  const QString smith = QStringLiteral("100001");
  const QString jones = QStringLiteral("100002");
  const QString acme = QStringLiteral("100003");
  const QString obrien = QStringLiteral("100004");
  const QString northern = QStringLiteral("100005");
  const QString green = QStringLiteral("100006");
  w.customer(smith, QStringLiteral("SMITH TRUCKING LLC"), QStringLiteral("1420 INDUSTRIAL PKWY"),
             QStringLiteral("SUITE 200"), QStringLiteral("ALBANY"), QStringLiteral("NY"), QStringLiteral("12205"));
  w.customer(jones, QStringLiteral("JONES, MARIA"), QStringLiteral("88 ELM ST"), {}, QStringLiteral("TROY"),
             QStringLiteral("NY"), QStringLiteral("12180"),
             QStringLiteral("Returned checks on file: accept certified funds only"));
  w.customer(acme, QStringLiteral("ACME HAULING INC"), QStringLiteral("500 RIVER RD"), {},
             QStringLiteral("SCHENECTADY"), QStringLiteral("NY"), QStringLiteral("12305"));
  w.customer(obrien, QStringLiteral("O'BRIEN FREIGHT"), QStringLiteral("12 DOCK ST"), QStringLiteral("UNIT 4"),
             QStringLiteral("BUFFALO"), QStringLiteral("NY"), QStringLiteral("14202"));
  w.customer(northern, QStringLiteral("NORTHERN LOGISTICS CORP"), QStringLiteral("77 NORTH WAY"), {},
             QStringLiteral("PLATTSBURGH"), QStringLiteral("NY"), QStringLiteral("12901"),
             QStringLiteral("Account under legal review"));
  w.customer(green, QStringLiteral("GREEN VALLEY FARMS"), QStringLiteral("3 ORCHARD LN"), {},
             QStringLiteral("ITHACA"), QStringLiteral("NY"), QStringLiteral("14850"));

  // --- Smith Trucking: a customer with several accounts -------------------------------------------------------
  const qint64 citation = w.receivable(R{QStringLiteral("C"), QStringLiteral("1000011"), smith, -200});
  w.assessment(citation, smith, A{1, QStringLiteral("510001"), QStringLiteral("P01"), -200, 40000});
  w.assessment(citation, smith, A{2, QStringLiteral("510001"), QStringLiteral("F02"), -170, 2500});
  w.assessment(citation, smith, A{3, QStringLiteral("510002"), QStringLiteral("F03"), -140, 1250});
  w.assessment(citation, smith, A{4, QStringLiteral("510003"), QStringLiteral("F09"), -200, 10000, 9000, true});
  w.assessment(citation, smith, A{5, QStringLiteral("510003"), QStringLiteral("F01"), -200, 3000, 3000, true});
  w.assessment(citation, smith, A{6, QStringLiteral("510003"), QStringLiteral("F15"), -200, 6000, 6000, true});
  const qint64 logBook =
      w.assessment(citation, smith, A{7, QStringLiteral("510004"), QStringLiteral("P02"), -200, 15000, -1, false, true, -150});
  w.removalHistory(citation, logBook, 15000, -150, demo::Admin,
                   QStringLiteral("Log book penalty written on the wrong citation"));
  w.assessment(citation, smith, A{8, QStringLiteral("510005"), QStringLiteral("p04"), -190, 3000});

  const qint64 overweight = w.receivable(R{QStringLiteral("O"), QStringLiteral("1000028"), smith, -120});
  w.assessment(overweight, smith, A{1, QStringLiteral("520001"), QStringLiteral("P01"), -120, 30000});
  w.assessment(overweight, smith, A{2, QStringLiteral("520001"), QStringLiteral("F02"), -90, 2500});
  const qint64 overweightLpo = w.assessment(
      overweight, smith, A{3, QStringLiteral("520002"), QStringLiteral("F01"), -120, 3000, 3000, true, true, -100});
  w.removalHistory(overweight, overweightLpo, 3000, -100, demo::Admin,
                   QStringLiteral("License purchase option bought in state"));
  w.exec(QStringLiteral("INSERT INTO LPO_DTL (ACCT_RCVBL_ID, ASSMT_ID, PRCHS_OPTN_ST_CD, PRCHS_OPTN_TAG_NBR, "
                        "PRCHS_OPTN_DT, PRCHS_OPTN_TM, PO_TRP_ID, PO_TRP_DSTRCT_ID, PRCHS_OPTN_WGT, "
                        "TOT_PRCHS_OPTN_AMT, PRCHS_OPTN_TXT, CREATED_BY_ID, CREATED_TS) "
                        "VALUES (?, ?, '0', 'NY-4471KT', ?, '14:20', 'A', '12', 80000, 3000, ?, ?, ?)"),
         {overweight, overweightLpo, w.day(-101), QStringLiteral("Bought at the scale house"), demo::Admin,
          w.stamp(-100, QStringLiteral("11:20"))});

  const qint64 carrier = w.receivable(R{QStringLiteral("M"), QStringLiteral("1000035"), smith, -90});
  w.assessment(carrier, smith, A{1, QStringLiteral("530001"), QStringLiteral("P03"), -90, 25000});
  const qint64 permit = w.receivable(R{QStringLiteral("T"), QStringLiteral("1000042"), smith, -30});
  w.assessment(permit, smith, A{1, QStringLiteral("540001"), QStringLiteral("F05"), -30, 4500});
  const qint64 special = w.receivable(R{QStringLiteral("S"), QStringLiteral("1000059"), smith, -60});
  w.assessment(special, smith, A{1, QStringLiteral("550001"), QStringLiteral("F05"), -60, 12000});

  // A payment plan: three installments filed under plan 0500001.
  qint64 firstInstallment = 0;
  for (int i = 1; i <= 3; ++i) {
    const QString number = QStringLiteral("05000%1").arg(10 * i + 1);
    const qint64 id = w.receivable(R{QStringLiteral("P"), number, smith, -60 + 30 * i, QStringLiteral("U"),
                                     QStringLiteral("A"), {}, QStringLiteral("P"), QStringLiteral("0500001"), i});
    w.assessment(id, smith, A{1, QStringLiteral("56000%1").arg(i), QStringLiteral("P05"), -60, 20000});
    if (i == 1) {
      firstInstallment = id;
    }
  }

  // --- Jones: an alert account and a citation ------------------------------------------------------------------
  const qint64 alert = w.receivable(R{QStringLiteral("A"), QStringLiteral("0700001"), jones, -45});
  w.assessment(alert, jones, A{1, QStringLiteral("570001"), QStringLiteral("P02"), -45, 7500});
  const qint64 jonesCitation = w.receivable(R{QStringLiteral("C"), QStringLiteral("1100001"), jones, -20});
  w.assessment(jonesCitation, jones, A{1, QStringLiteral("571001"), QStringLiteral("P01"), -20, 20000});

  // --- Acme: excess funds and refund worksheets ---------------------------------------------------------------------
  const qint64 acmeCitation = w.receivable(R{QStringLiteral("C"), QStringLiteral("1300001"), acme, -75});
  w.assessment(acmeCitation, acme, A{1, QStringLiteral("580001"), QStringLiteral("P01"), -75, 50000});
  w.assessment(acmeCitation, acme, A{2, QStringLiteral("580001"), QStringLiteral("F02"), -65, 2500});
  const qint64 acmeSecond = w.receivable(R{QStringLiteral("C"), QStringLiteral("1300002"), acme, -50});
  w.assessment(acmeSecond, acme, A{1, QStringLiteral("581001"), QStringLiteral("P03"), -50, 18000});
  const qint64 acmeThird = w.receivable(R{QStringLiteral("C"), QStringLiteral("1300003"), acme, -10});
  w.assessment(acmeThird, acme, A{1, QStringLiteral("582001"), QStringLiteral("P01"), -10, 30000});

  // --- O'Brien: a deleted form and one open -------------------------------------------------------------------------
  const qint64 deleted = w.receivable(R{QStringLiteral("C"), QStringLiteral("1400001"), obrien, -300,
                                        QStringLiteral("D"), QStringLiteral("I")});
  w.assessment(deleted, obrien, A{1, QStringLiteral("590001"), QStringLiteral("P01"), -300, 10000});
  const qint64 obrienOpen = w.receivable(R{QStringLiteral("C"), QStringLiteral("1400002"), obrien, -25});
  w.assessment(obrienOpen, obrien, A{1, QStringLiteral("591001"), QStringLiteral("P01"), -25, 9000});

  // --- Northern: voided, inactive and case-bound forms --------------------------------------------------------------
  const qint64 voided = w.receivable(R{QStringLiteral("C"), QStringLiteral("1200001"), northern, -180,
                                       QStringLiteral("V")});
  w.assessment(voided, northern, A{1, QStringLiteral("600001"), QStringLiteral("P01"), -180, 25000});
  const qint64 inactive = w.receivable(R{QStringLiteral("C"), QStringLiteral("1200002"), northern, -160,
                                         QStringLiteral("U"), QStringLiteral("I")});
  w.assessment(inactive, northern, A{1, QStringLiteral("601001"), QStringLiteral("P02"), -160, 12500});
  const qint64 caseBound = w.receivable(R{QStringLiteral("C"), QStringLiteral("1200003"), northern, -140,
                                          QStringLiteral("U"), QStringLiteral("A"), QStringLiteral("CV-2024-0117")});
  w.assessment(caseBound, northern, A{1, QStringLiteral("602001"), QStringLiteral("P01"), -140, 60000});

  // --- Green Valley: a generated form (above 1999999) and the last typed number ------------------------------------
  const qint64 generated = w.receivable(R{QStringLiteral("C"), QStringLiteral("2000001"), green, -35});
  w.assessment(generated, green, A{1, QStringLiteral("610001"), QStringLiteral("P01"), -35, 10000});
  const qint64 lastTyped = w.receivable(R{QStringLiteral("C"), QStringLiteral("1999999"), green, -33});
  w.assessment(lastTyped, green, A{1, QStringLiteral("611001"), QStringLiteral("F04"), -33, 5500});

  // --- receipts --------------------------------------------------------------------------------------------------
  // Paid by check CHK10455: open the account type "CHECK NUMBER" with that number to find both payments.
  w.receipt(QStringLiteral("8000001"), smith, -40, QStringLiteral("O"), QStringLiteral("CNF-55102"), 20000);
  w.fund(QStringLiteral("8000001"), 1, QStringLiteral("K"), QStringLiteral("CHK10455"), 20000);
  w.payment(QStringLiteral("8000001"), citation, 1, QStringLiteral("710001"), -40, 15000);
  w.payment(QStringLiteral("8000001"), carrier, 2, QStringLiteral("710002"), -40, 5000);

  // Paid by card with an expiration date, leaving an open excess fund.
  w.receipt(QStringLiteral("8000002"), smith, -30, QStringLiteral("O"), QStringLiteral("CNF-55230"), 47500);
  w.fund(QStringLiteral("8000002"), 1, QStringLiteral("R"), QStringLiteral("VISA-1111"), 47500, QStringLiteral("12"),
         QStringLiteral("31"), QString::number(today.year() + 2));
  w.payment(QStringLiteral("8000002"), overweight, 1, QStringLiteral("710003"), -30, 32500);
  w.excess(QStringLiteral("8000002"), 1, smith, -30, QStringLiteral("10:42"), 15000, QStringLiteral("O"));

  // A bounced check, backed out; and a receipt taken in error, canceled.
  w.receipt(QStringLiteral("8000003"), smith, -20, QStringLiteral("B"), QStringLiteral("CNF-55301"), 12000);
  w.fund(QStringLiteral("8000003"), 1, QStringLiteral("K"), QStringLiteral("CHK20991"), 12000);
  w.payment(QStringLiteral("8000003"), special, 1, QStringLiteral("710004"), -20, 12000, QStringLiteral("B"), -18);
  w.receipt(QStringLiteral("8000004"), smith, -15, QStringLiteral("C"), QStringLiteral("CNF-55340"), 6000);
  w.fund(QStringLiteral("8000004"), 1, QStringLiteral("C"), {}, 6000);
  w.payment(QStringLiteral("8000004"), special, 1, QStringLiteral("710005"), -15, 6000, QStringLiteral("C"), -14);

  w.receipt(QStringLiteral("8000009"), smith, -10, QStringLiteral("O"), QStringLiteral("CNF-55410"), 20000);
  w.fund(QStringLiteral("8000009"), 1, QStringLiteral("M"), QStringLiteral("MO-778812"), 20000);
  w.payment(QStringLiteral("8000009"), firstInstallment, 1, QStringLiteral("710006"), -10, 20000);

  // Acme's large receipt: excess funds open, transferred, in refund, refunded and voided back to open.
  w.receipt(QStringLiteral("8000005"), acme, -60, QStringLiteral("O"), QStringLiteral("CNF-54001"), 100000);
  w.fund(QStringLiteral("8000005"), 1, QStringLiteral("K"), QStringLiteral("CHK3301"), 100000);
  w.payment(QStringLiteral("8000005"), acmeCitation, 1, QStringLiteral("710007"), -60, 52500);
  w.excess(QStringLiteral("8000005"), 1, acme, -60, QStringLiteral("14:05"), 7500, QStringLiteral("O"));
  w.excess(QStringLiteral("8000005"), 2, acme, -45, QStringLiteral("09:30"), 10000, QStringLiteral("T"),
           QStringLiteral("8000006"));
  w.excess(QStringLiteral("8000005"), 3, acme, -12, QStringLiteral("09:10"), 10000, QStringLiteral("W"),
           QStringLiteral("0"), QStringLiteral("3000002"));
  w.excess(QStringLiteral("8000005"), 4, acme, -12, QStringLiteral("09:12"), 5000, QStringLiteral("W"),
           QStringLiteral("0"), QStringLiteral("3000003"));
  w.excess(QStringLiteral("8000005"), 5, acme, -12, QStringLiteral("09:14"), 5000, QStringLiteral("W"),
           QStringLiteral("0"), QStringLiteral("3000004"));
  w.excess(QStringLiteral("8000005"), 6, acme, -12, QStringLiteral("09:16"), 4000, QStringLiteral("R"),
           QStringLiteral("0"), QStringLiteral("3000005"));
  w.excess(QStringLiteral("8000005"), 7, acme, -12, QStringLiteral("09:18"), 3000, QStringLiteral("R"),
           QStringLiteral("0"), QStringLiteral("3000006"));
  w.excess(QStringLiteral("8000005"), 8, acme, -12, QStringLiteral("09:20"), 1500, QStringLiteral("T"),
           QStringLiteral("0"), QStringLiteral("3000007"));
  w.excess(QStringLiteral("8000005"), 9, acme, -12, QStringLiteral("09:22"), 1500, QStringLiteral("O"));

  // The receipt that the transferred excess fund became.
  w.receipt(QStringLiteral("8000006"), acme, -45, QStringLiteral("O"), QStringLiteral("CNF-54102"), 10000,
            QStringLiteral("8000005"));
  w.fund(QStringLiteral("8000006"), 1, QStringLiteral("X"), QStringLiteral("8000005"), 10000);
  w.payment(QStringLiteral("8000006"), acmeSecond, 1, QStringLiteral("710008"), -45, 10000);

  // Not yet confirmed: its excess fund can be neither refunded nor transferred.
  w.receipt(QStringLiteral("8000007"), acme, -5, QStringLiteral("O"), {}, 14000);
  w.fund(QStringLiteral("8000007"), 1, QStringLiteral("K"), QStringLiteral("CHK3390"), 14000);
  w.payment(QStringLiteral("8000007"), acmeSecond, 1, QStringLiteral("710009"), -5, 8000);
  w.excess(QStringLiteral("8000007"), 1, acme, -5, QStringLiteral("15:45"), 6000, QStringLiteral("O"));

  // A card without an expiration date.
  w.receipt(QStringLiteral("8000008"), jones, -3, QStringLiteral("O"), QStringLiteral("CNF-56001"), 25000);
  w.fund(QStringLiteral("8000008"), 1, QStringLiteral("R"), QStringLiteral("MC-5454"), 25000);
  w.payment(QStringLiteral("8000008"), jonesCitation, 1, QStringLiteral("710010"), -3, 20000);
  w.excess(QStringLiteral("8000008"), 1, jones, -3, QStringLiteral("11:05"), 5000, QStringLiteral("O"));

  // --- refund worksheets at every step ---------------------------------------------------------------------------
  using W = DemoWriter::WorksheetSpec;
  const QString receipt = QStringLiteral("8000005");
  w.worksheet(receipt, acme, W{QStringLiteral("3000001"), QStringLiteral("0"), 7500});
  w.worksheet(receipt, acme, W{QStringLiteral("3000002"), QStringLiteral("1"), 10000});
  w.worksheet(receipt, acme, W{QStringLiteral("3000003"), QStringLiteral("2"), 5000, demo::Verifier});
  w.worksheet(receipt, acme, W{QStringLiteral("3000004"), QStringLiteral("3"), 5000, demo::Verifier, demo::Approver});
  w.worksheet(receipt, acme, W{QStringLiteral("3000005"), QStringLiteral("4"), 4000, demo::Verifier, demo::Approver,
                               demo::Fiscal, {}, QStringLiteral("1"), QStringLiteral("W-448812"), -8});
  w.worksheet(receipt, acme, W{QStringLiteral("3000006"), QStringLiteral("5"), 3000, demo::Verifier, demo::Approver,
                               demo::Fiscal, {}, QStringLiteral("1"), QStringLiteral("W-448790"), -9, -6});
  w.worksheet(receipt, acme, W{QStringLiteral("3000007"), QStringLiteral("T"), 1500, demo::Verifier, demo::Approver,
                               demo::Fiscal, {}, QStringLiteral("0"), {}, 0, 0,
                               QStringLiteral("Transferred to the division's suspense account")});
  w.worksheet(receipt, acme, W{QStringLiteral("3000008"), QStringLiteral("V"), 1500, demo::Verifier, {}, {},
                               demo::Admin});

  // --- activity: rows by the system and by several officers ------------------------------------------------------------
  w.activity(citation, -200, QStringLiteral("08:15"), QStringLiteral("ISS"), QStringLiteral("SYSTEM"),
             QStringLiteral("Citation issued"), true, 61500, 61500);
  w.activity(citation, -150, QStringLiteral("11:20"), QStringLiteral("ADJ"), demo::Admin,
             QStringLiteral("Removed P02 $150.00: Log book penalty written on the wrong citation"), true, -15000);
  w.activity(citation, -60, QStringLiteral("09:05"), QStringLiteral("CAL"), demo::Clerk,
             QStringLiteral("Customer called about payment plan options"));
  w.activity(citation, -45, QStringLiteral("14:30"), QStringLiteral("LTR"), demo::Verifier,
             QStringLiteral("Second notice mailed"));
  w.activity(citation, -40, QStringLiteral("10:00"), QStringLiteral("PMT"), QStringLiteral("SYSTEM"),
             QStringLiteral("Payment received on receipt 8000001"), true, -15000);
  w.activity(citation, -2, QStringLiteral("16:45"), QStringLiteral("NTE"), demo::Admin,
             QStringLiteral("Customer disputes the LPO fee"));
  w.activity(citation, 0, QStringLiteral("08:30"), QStringLiteral("CAL"), demo::Clerk, QStringLiteral("Left voicemail"));
  w.activity(special, -18, QStringLiteral("13:10"), QStringLiteral("PBO"), demo::Admin,
             QStringLiteral("Check CHK20991 returned unpaid"), true, 12000);
  w.activity(special, -14, QStringLiteral("15:00"), QStringLiteral("PCN"), demo::Admin,
             QStringLiteral("Receipt taken in error"), true, 6000);
  w.activity(acmeCitation, -60, QStringLiteral("14:05"), QStringLiteral("PMT"), QStringLiteral("SYSTEM"),
             QStringLiteral("Payment received on receipt 8000005"), true, -52500, 0);
  w.activity(caseBound, -100, QStringLiteral("10:00"), QStringLiteral("NTE"), demo::Verifier,
             QStringLiteral("Referred to counsel, case CV-2024-0117"));

  w.finishReceivables();
  if (!w.ok()) {
    return Result<bool>::failure(w.error());
  }
  return true;
}

Result<bool> loadDemoData(const QString& connectionName, const QDate& today) {
  const Result<Sql> connection = Sql::onConnection(connectionName);
  if (!connection) {
    return Result<bool>::failure(connection.error());
  }
  const Sql& sql = connection.value();
  Transaction loading(sql);
  if (Result<bool> started = loading.begin(); !started) {
    return started;
  }
  Result<qint64> officers = sql.scalar(QStringLiteral("SELECT COUNT(*) FROM OFFICER"), {}, 0);
  if (!officers) {
    return Result<bool>::failure(officers.error());
  }
  if (officers.value() > 0) {
    return false;  // a database in use is never overwritten
  }
  if (Result<bool> filled = fillDemoData(sql, today); !filled) {
    return filled;
  }
  if (Result<QSqlQuery> stamped = sql.run(QStringLiteral("UPDATE SCHEMA_INFO SET DEMO_LOAD_DT = ?"), {sql.date(today)});
      !stamped) {
    return Result<bool>::failure(stamped.error());
  }
  return loading.commit();
}

}  // namespace adjustacc::host
