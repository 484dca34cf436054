#include "hostsystem.h"

#include "handlers.h"
#include "requestcheck.h"
#include "requestlog.h"
#include "transaction.h"

#include <QSqlDatabase>
#include <QTimeZone>

namespace adjustacc::host {

using messaging::Reply;
using messaging::Request;
using messaging::Result;

namespace {

using Handler = Outcome (*)(const Context&);

// Which handler answers a request, and whether it writes.
struct Route {
  QString name;
  Handler handler = nullptr;
  bool writes = false;
  QString error;  // why no handler answers (when handler is null)
};

bool hasParam(const Request& request, const char16_t* key) {
  const QString name = QString::fromUtf16(key);
  for (const auto& param : request.params) {
    if (param.key == name) {
      return true;
    }
  }
  return false;
}

// Record sets that carry data (a request may name a set without filling it, as the activity request does).
QStringList filledRecordSets(const Request& request) {
  QStringList names;
  for (const auto& list : request.records) {
    if (hasRecords(request, list.name)) {
      names.append(list.name);
    }
  }
  return names;
}

QString parameterList(const Request& request) {
  QStringList keys;
  for (const auto& param : request.params) {
    keys.append(param.key);
  }
  return keys.isEmpty() ? QStringLiteral("no parameters") : QStringLiteral("parameters ") + keys.join(QStringLiteral(", "));
}

Route inquiry(const QString& name, Handler handler, const Request& request) {
  if (const QStringList filled = filledRecordSets(request); !filled.isEmpty()) {
    return {name, nullptr, false,
            QStringLiteral("%1 takes no save records, but the request carries %2.").arg(name, filled.join(u','))};
  }
  return {name, handler, false, {}};
}

// Requests 41 (the account receivable detail screen) and 47 (the document and the receipt screens) share
// their parameters, so both codes are told apart by parameters and records alike.
Route accountRoute(const Request& request) {
  const QStringList filled = filledRecordSets(request);
  if (!filled.isEmpty()) {
    if (hasParam(request, u"key:RECEIPT_NBR")) {
      return {QStringLiteral("The payment adjustment"), &savePaymentAdjustment, true, {}};
    }
    if (hasParam(request, u"key:REF_NBR")) {
      return {QStringLiteral("The account receivable adjustment"), &saveArAdjustment, true, {}};
    }
    return {QString(), nullptr, false,
            QStringLiteral("A save with request code %1 needs key:REF_NBR (an account receivable) or "
                           "key:RECEIPT_NBR (a receipt); this one has %2.")
                .arg(request.code)
                .arg(parameterList(request))};
  }
  if (hasParam(request, u"key:ACCT_RCVBL_NBR")) {
    return inquiry(QStringLiteral("The account activity inquiry"), &activityInquiry, request);
  }
  if (hasParam(request, u"key:RECEIPT_NBR")) {
    return inquiry(QStringLiteral("The receipt detail inquiry"), &receiptDetailInquiry, request);
  }
  if (hasParam(request, u"key:CUST_ID") && hasParam(request, u"key:RCPT_NBR")) {
    return inquiry(QStringLiteral("The refund information inquiry"), &refundInfoInquiry, request);
  }
  if (hasParam(request, u"key:CUST_ID")) {
    return inquiry(QStringLiteral("The customer's accounts inquiry"), &customerFormsInquiry, request);
  }
  if (hasParam(request, u"key:LPO")) {
    return inquiry(QStringLiteral("The assessment inquiry"), &assessmentInquiry, request);
  }
  if (hasParam(request, u"key:REF_NBR")) {
    return inquiry(QStringLiteral("The account inquiry"), &accountInquiry, request);
  }
  return {QString(), nullptr, false,
          QStringLiteral("Request code %1 with %2 is not a request this host answers.")
              .arg(request.code)
              .arg(parameterList(request))};
}

Route route(const Request& request) {
  switch (request.code) {
    case 41:
    case 47:
      return accountRoute(request);
    case 60:
      return {QStringLiteral("The number request"), &issueNumber, true, {}};
    case 62:
      return inquiry(QStringLiteral("The customer search"), &customerSearch, request);
    case 63:
      return inquiry(QStringLiteral("The code table inquiry"), &codeTableInquiry, request);
    case 64:
      return inquiry(QStringLiteral("The officer inquiry"), &officerInquiry, request);
    case 74:
      return inquiry(QStringLiteral("The refund worksheet inquiry"), &worksheetInquiry, request);
    case 75:
      return {QStringLiteral("The refund worksheet save"), &saveWorksheet, true, {}};
    case 77:
      return {QStringLiteral("The transfer of an excess fund"), &saveTransfer, true, {}};
    default:
      return {QString(), nullptr, false, QStringLiteral("Request code %1 is not a request this host answers.").arg(request.code)};
  }
}

constexpr int kSaveAttempts = 3;

}  // namespace

struct HostSystem::Impl {
  QString connectionName;
  std::optional<Sql> sql;
  QString openError;

  Reply inquire(const Route& route, const Context& context) const;
  Reply save(const Route& route, Context& context) const;
};

HostSystem::HostSystem(QString connectionName) : d(new Impl) {
  d->connectionName = std::move(connectionName);
  QSqlDatabase db = QSqlDatabase::database(d->connectionName, false);
  if (!db.isValid() || !db.isOpen()) {
    d->openError = QStringLiteral("The host's database connection \"%1\" is not open.").arg(d->connectionName);
    return;
  }
  Result<SqlDialect> dialect = SqlDialect::of(db);
  if (!dialect) {
    d->openError = dialect.error();
    return;
  }
  d->sql.emplace(db, dialect.value());
}

HostSystem::~HostSystem() { delete d; }

Reply HostSystem::Impl::inquire(const Route& route, const Context& context) const {
  const Request& request = context.request;
  Transaction reading(*sql);
  if (Result<bool> started = reading.beginRead(); !started) {
    return Reply::failure(request.replyTo, request.requestId, started.error());
  }
  Outcome outcome = route.handler(context);
  reading.rollback();
  if (!outcome) {
    return Reply::failure(request.replyTo, request.requestId, outcome.error());
  }
  Reply reply;
  reply.replyTo = request.replyTo;
  reply.requestId = request.requestId;
  reply.sections = std::move(outcome.value());
  return reply;
}

Reply HostSystem::Impl::save(const Route& route, Context& context) const {
  const Request& request = context.request;
  const QString digest = requestDigest(request);
  QString lastFailure;
  for (int attempt = 0; attempt < kSaveAttempts; ++attempt) {
    sql->clearLastError();
    Transaction saving(*sql);
    if (Result<bool> started = saving.begin(); !started) {
      lastFailure = started.error();
      if (sql->dialect().isConcurrencyConflict(sql->lastError())) {
        continue;
      }
      break;
    }
    Result<std::optional<ProcessedRequest>> earlier = findProcessedRequest(*sql, request.requestId);
    if (!earlier) {
      lastFailure = earlier.error();
      break;
    }
    if (earlier.value()) {
      return answerFromRecord(*earlier.value(), request, context.officer.id, digest);
    }
    context.now = QDateTime::currentDateTimeUtc();
    if (Result<bool> claimed = claimRequest(*sql, request, context.officer.id, digest, context.now); !claimed) {
      lastFailure = claimed.error();
      const QSqlError why = sql->lastError();
      saving.rollback();
      if (sql->dialect().isUniqueViolation(why)) {
        // The same request is being applied on another connection; it has finished now.
        Result<std::optional<ProcessedRequest>> winner = findProcessedRequest(*sql, request.requestId);
        if (winner && winner.value()) {
          return answerFromRecord(*winner.value(), request, context.officer.id, digest);
        }
        continue;
      }
      if (sql->dialect().isConcurrencyConflict(why)) {
        continue;
      }
      break;
    }
    Outcome outcome = route.handler(context);
    if (!outcome) {
      const QSqlError why = sql->lastError();
      saving.rollback();
      if (sql->dialect().isConcurrencyConflict(why)) {
        lastFailure = outcome.error();
        continue;
      }
      return Reply::failure(request.replyTo, request.requestId, outcome.error());
    }
    Reply reply;
    reply.replyTo = request.replyTo;
    reply.requestId = request.requestId;
    reply.sections = std::move(outcome.value());
    if (Result<bool> stored = storeReply(*sql, request.requestId, reply); !stored) {
      lastFailure = stored.error();
      saving.rollback();
      break;
    }
    if (Result<bool> committed = saving.commit(); !committed) {
      lastFailure = committed.error();
      if (sql->dialect().isConcurrencyConflict(sql->lastError())) {
        continue;
      }
      break;
    }
    return reply;
  }
  return Reply::failure(request.replyTo, request.requestId,
                        QStringLiteral("%1 was not saved: %2").arg(route.name, lastFailure));
}

Reply HostSystem::handle(const Request& request, const QString& officerId) {
  const auto fail = [&request](const QString& text) { return Reply::failure(request.replyTo, request.requestId, text); };
  if (!d->sql) {
    return fail(d->openError);
  }
  if (const QString problem = checkRequestShape(request); !problem.isEmpty()) {
    return fail(problem);
  }
  if (request.user.trimmed().compare(officerId.trimmed(), Qt::CaseInsensitive) != 0) {
    return fail(QStringLiteral("The request was sent in the name of \"%1\", but the signed-on officer is \"%2\".")
                    .arg(request.user, officerId));
  }
  Result<std::optional<Officer>> officer = loadOfficer(*d->sql, officerId);
  if (!officer) {
    return fail(officer.error());
  }
  if (!officer.value()) {
    return fail(QStringLiteral("Officer \"%1\" is not known to the host or is no longer active.").arg(officerId));
  }
  const Route chosen = route(request);
  if (!chosen.handler) {
    return fail(chosen.error);
  }
  Context context{*d->sql, *officer.value(), QDate::currentDate(), QDateTime::currentDateTimeUtc(), request};
  return chosen.writes ? d->save(chosen, context) : d->inquire(chosen, context);
}

}  // namespace adjustacc::host
