#include "hostsystem.h"

#include "handlers.h"
#include "requestcheck.h"
#include "requestlog.h"
#include "transaction.h"

#include "messaging/calendarday.h"

#include <QHash>
#include <QDateTime>
#include <QSqlDatabase>
#include <QTime>
#include <QTimeZone>

#include <chrono>
#include <set>

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

bool hasParam(const Request& request, const QString& key) {
  for (const auto& param : request.params) {
    if (param.key == key) {
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
    if (hasParam(request, params::ReceiptNbr)) {
      return {QStringLiteral("The payment adjustment"), &savePaymentAdjustment, true, {}};
    }
    if (hasParam(request, params::RefNbr)) {
      return {QStringLiteral("The account receivable adjustment"), &saveArAdjustment, true, {}};
    }
    return {QString(), nullptr, false,
            QStringLiteral("A save with request code %1 needs key:REF_NBR (an account receivable) or "
                           "key:RECEIPT_NBR (a receipt); this one has %2.")
                .arg(request.code)
                .arg(parameterList(request))};
  }
  if (hasParam(request, params::AcctRcvblNbr)) {
    return inquiry(QStringLiteral("The account activity inquiry"), &activityInquiry, request);
  }
  if (hasParam(request, params::ReceiptNbr)) {
    return inquiry(QStringLiteral("The receipt detail inquiry"), &receiptDetailInquiry, request);
  }
  if (hasParam(request, params::CustId) && hasParam(request, params::RcptNbr)) {
    return inquiry(QStringLiteral("The refund information inquiry"), &refundInfoInquiry, request);
  }
  if (hasParam(request, params::CustId)) {
    return inquiry(QStringLiteral("The customer's accounts inquiry"), &customerFormsInquiry, request);
  }
  if (hasParam(request, params::Lpo)) {
    return inquiry(QStringLiteral("The assessment inquiry"), &assessmentInquiry, request);
  }
  if (hasParam(request, params::RefNbr)) {
    return inquiry(QStringLiteral("The account inquiry"), &accountInquiry, request);
  }
  return {QString(), nullptr, false,
          QStringLiteral("Request code %1 with %2 is not a request this host answers.")
              .arg(request.code)
              .arg(parameterList(request))};
}

Route route(const Request& request) {
  namespace codes = messaging::requestcodes;
  switch (request.code) {
    case codes::ReceivableDetail:
    case codes::Account:
      return accountRoute(request);
    case codes::NextNumber:
      return {QStringLiteral("The number request"), &issueNumber, true, {}};
    case codes::CustomerSearch:
      return inquiry(QStringLiteral("The customer search"), &customerSearch, request);
    case codes::CodeTable:
      return inquiry(QStringLiteral("The code table inquiry"), &codeTableInquiry, request);
    case codes::Officer:
      return inquiry(QStringLiteral("The officer inquiry"), &officerInquiry, request);
    case codes::RefundWorksheet:
      return inquiry(QStringLiteral("The refund worksheet inquiry"), &worksheetInquiry, request);
    case codes::RefundWorksheetSave:
      return {QStringLiteral("The refund worksheet save"), &saveWorksheet, true, {}};
    case codes::ExcessFundTransfer:
      return {QStringLiteral("The transfer of an excess fund"), &saveTransfer, true, {}};
    case codes::SaveOutcome:
      // It writes: an id it finds nowhere is settled as withdrawn, so that its answer stays true.
      return {QStringLiteral("The save outcome inquiry"), &saveOutcomeInquiry, true, {}};
    default:
      return {QString(), nullptr, false, QStringLiteral("Request code %1 is not a request this host answers.").arg(request.code)};
  }
}

constexpr int kSaveAttempts = 3;

// Bounds the officers one connection remembers; the cache simply starts over.
constexpr qsizetype kMaxCachedOfficers = 256;


}  // namespace

struct HostSystem::Impl {
  QString connectionName;
  std::optional<Sql> sql;
  QString openError;

  // Officers as last read for an inquiry, by upper-cased id. Only active officers are kept.
  struct CachedOfficer {
    Officer officer;
    std::chrono::steady_clock::time_point read;
  };
  QHash<QString, CachedOfficer> officers;
  std::chrono::milliseconds officerLifetime = kDefaultOfficerCacheLifetime;
  DutySeparation duties = DutySeparation::NeighbouringSteps;
  messaging::CalendarDay calendar;  // the agency's day, for every request

  Result<std::optional<Officer>> officerFor(const QString& officerId, bool fresh);

  // Inquiries that read with more than one statement (so always inside a read transaction).
  std::set<Handler> severalStatements;

  Reply inquire(const Route& route, const Context& context);
  Reply save(const Route& route, Context& context) const;
};

HostSystem::HostSystem(QString connectionName) : d(new Impl) {
  d->connectionName = std::move(connectionName);
  QSqlDatabase db = QSqlDatabase::database(d->connectionName, false);
  if (!db.isValid() || !db.isOpen()) {
    d->openError = QStringLiteral("The host's database connection \"%1\" is not open.").arg(d->connectionName);
    return;
  }
  Result<SqlDialect> dialect = hostDialect(db.driverName());
  if (!dialect) {
    d->openError = dialect.error();
    return;
  }
  d->sql.emplace(db, dialect.value());
}

HostSystem::~HostSystem() { delete d; }

void HostSystem::setOfficerCacheLifetime(std::chrono::milliseconds lifetime) {
  d->officerLifetime = lifetime;
  if (lifetime.count() <= 0) {
    d->officers.clear();
  }
}

void HostSystem::setDutySeparation(DutySeparation separation) { d->duties = separation; }

DutySeparation HostSystem::dutySeparation() const { return d->duties; }

Result<std::optional<Officer>> HostSystem::Impl::officerFor(const QString& officerId, bool fresh) {
  const QString key = officerId.trimmed().toUpper();
  const auto now = std::chrono::steady_clock::now();
  if (!fresh && officerLifetime.count() > 0) {
    const auto cached = officers.constFind(key);
    if (cached != officers.constEnd() && now - cached->read < officerLifetime) {
      return std::optional<Officer>(cached->officer);
    }
  }
  Result<std::optional<Officer>> loaded = loadOfficer(*sql, officerId);
  if (!loaded || !loaded.value()) {
    officers.remove(key);
  } else if (officerLifetime.count() > 0) {
    if (officers.size() >= kMaxCachedOfficers) {
      officers.clear();
    }
    officers.insert(key, {*loaded.value(), now});
  }
  return loaded;
}

Reply HostSystem::Impl::inquire(const Route& route, const Context& context) {
  const Request& request = context.request;
  const auto answer = [&request](Outcome& outcome) {
    if (!outcome) {
      return Reply::failure(request.replyTo, request.requestId, outcome.error());
    }
    Reply reply;
    reply.replyTo = request.replyTo;
    reply.requestId = request.requestId;
    reply.sections = std::move(outcome.value());
    return reply;
  };
  // The sections of a reply must agree with each other. An inquiry answered by one statement sees one state
  // of the database by itself; one that reads with several statements needs a read transaction around them
  // (on PostgreSQL two more round trips). So an inquiry is first tried without a transaction, and when it
  // turns out to have run more than one statement its answer is thrown away, it is read again inside a
  // transaction, and from then on it always is.
  if (severalStatements.count(route.handler) == 0) {
    const quint64 before = sql->statementCount();
    Outcome outcome = route.handler(context);
    if (sql->statementCount() - before <= 1) {
      return answer(outcome);
    }
    severalStatements.insert(route.handler);
  }
  Transaction reading(*sql);
  if (Result<bool> started = reading.beginRead(); !started) {
    return Reply::failure(request.replyTo, request.requestId, started.error());
  }
  Outcome outcome = route.handler(context);
  reading.rollback();
  return answer(outcome);
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
      // A save outcome inquiry that found its save being applied on another connection asks again once that
      // save is on record.
      const bool raced = route.handler == &saveOutcomeInquiry && sql->dialect().isUniqueViolation(why);
      if (sql->dialect().isConcurrencyConflict(why) || raced) {
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
  const Route chosen = route(request);
  // A save reads its officer and rights afresh; an inquiry may go by what was read a moment ago.
  Result<std::optional<Officer>> officer = d->officerFor(officerId, chosen.writes || !chosen.handler);
  if (!officer) {
    return fail(officer.error());
  }
  if (!officer.value()) {
    return fail(QStringLiteral("Officer \"%1\" is not known to the host or is no longer active.").arg(officerId));
  }
  if (!chosen.handler) {
    return fail(chosen.error);
  }
  Context context{*d->sql, *officer.value(), d->calendar.today(), QDateTime::currentDateTimeUtc(), request,
                  d->duties};
  return chosen.writes ? d->save(chosen, context) : d->inquire(chosen, context);
}

}  // namespace adjustacc::host
