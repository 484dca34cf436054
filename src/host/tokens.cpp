#include "tokens.h"

#include "messaging/sqldialect.h"

#include <QCryptographicHash>
#include <QRandomGenerator>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <chrono>


namespace adjustacc::host {

using messaging::Result;
using messaging::SqlDialect;

namespace {

constexpr int kIdBytes = 8;       // 16 hex characters
constexpr int kSecretBytes = 32;  // 43 base64url characters
constexpr int kSaltBytes = 16;
constexpr qsizetype kMaxOfficerIdLength = 64;

QByteArray randomBytes(int count) {
  QByteArray bytes(count, Qt::Uninitialized);
  auto* generator = QRandomGenerator::system();
  for (int i = 0; i < count; ++i) {
    bytes[i] = static_cast<char>(generator->bounded(256));
  }
  return bytes;
}

QString hashSecret(const QByteArray& salt, const QString& secret) {
  QCryptographicHash hash(QCryptographicHash::Sha256);
  hash.addData(salt);
  hash.addData(secret.toUtf8());
  return QString::fromLatin1(hash.result().toHex());
}

// Compares without stopping at the first difference, so the time taken tells nothing about the stored hash.
bool equalInConstantTime(const QString& a, const QString& b) {
  if (a.size() != b.size()) {
    return false;
  }
  char16_t difference = 0;
  for (qsizetype i = 0; i < a.size(); ++i) {
    difference |= static_cast<char16_t>(a[i].unicode() ^ b[i].unicode());
  }
  return difference == 0;
}

bool isHex(const QString& text) {
  for (QChar c : text) {
    if (!((c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f'))) {
      return false;
    }
  }
  return true;
}

bool isBase64Url(const QString& text) {
  for (QChar c : text) {
    if (!((c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9') || c == u'-' ||
          c == u'_')) {
      return false;
    }
  }
  return true;
}

QString nowText() { return QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs); }

QString sqlFailure(const QString& what, const QSqlQuery& query) {
  return QStringLiteral("%1: %2").arg(what, query.lastError().text());
}

const QString kInvalidToken = QStringLiteral("The sign-on token is not valid.");

// Bounds the memory a stream of different (valid) tokens can take; the cache simply starts over.
constexpr qsizetype kMaxCachedTokens = 4096;

}  // namespace

TokenStore::TokenStore(QString connectionName) : m_connectionName(std::move(connectionName)) {}

TokenStore::~TokenStore() = default;

Result<bool> TokenStore::ensureTable() {
  QSqlDatabase db = QSqlDatabase::database(m_connectionName, false);
  if (!db.isOpen()) {
    return Result<bool>::failure(QStringLiteral("The token store has no open database connection."));
  }
  QSqlQuery query(db);
  // Looked for first: the service's own database role may read the table but not create anything.
  const std::optional<SqlDialect> dialect = SqlDialect::of(db);
  if (!dialect) {
    return Result<bool>::failure(
        QStringLiteral("The token store does not know the database driver %1.").arg(db.driverName()));
  }
  query.prepare(dialect->tableExistsQuery());
  query.addBindValue(QStringLiteral("HOST_TOKEN"));
  if (!query.exec()) {
    return Result<bool>::failure(sqlFailure(QStringLiteral("Could not look for table HOST_TOKEN"), query));
  }
  if (query.next()) {
    return true;
  }
  const QString createTable = QStringLiteral(
      "CREATE TABLE IF NOT EXISTS HOST_TOKEN ("
      " TOKEN_ID VARCHAR(16) NOT NULL PRIMARY KEY,"
      " OFFICER_ID VARCHAR(64) NOT NULL,"
      " SALT VARCHAR(32) NOT NULL,"
      " TOKEN_HASH VARCHAR(64) NOT NULL,"
      " ISSUED_TS VARCHAR(32) NOT NULL,"
      " REVOKED_TS VARCHAR(32))");
  if (!query.exec(createTable)) {
    return Result<bool>::failure(sqlFailure(QStringLiteral("Could not create table HOST_TOKEN"), query));
  }
  if (!query.exec(QStringLiteral("CREATE INDEX IF NOT EXISTS HOST_TOKEN_OFFICER ON HOST_TOKEN (OFFICER_ID)"))) {
    return Result<bool>::failure(sqlFailure(QStringLiteral("Could not index table HOST_TOKEN"), query));
  }
  return true;
}

Result<IssuedToken> TokenStore::issue(const QString& officerId) {
  const QString officer = officerId.trimmed();
  if (officer.isEmpty() || officer.size() > kMaxOfficerIdLength) {
    return Result<IssuedToken>::failure(
        QStringLiteral("An officer id of 1 to %1 characters is needed to issue a token.").arg(kMaxOfficerIdLength));
  }
  QSqlQuery officerQuery(QSqlDatabase::database(m_connectionName, false));
  officerQuery.setForwardOnly(true);
  // Officer ids are compared without regard to case, as the host does; the token gets the id as stored.
  officerQuery.prepare(
      QStringLiteral("SELECT OFFICER_ID, ACTIVE_IND FROM OFFICER WHERE UPPER(OFFICER_ID) = UPPER(?)"));
  officerQuery.addBindValue(officer);
  if (!officerQuery.exec()) {
    return Result<IssuedToken>::failure(sqlFailure(QStringLiteral("Could not look up the officer"), officerQuery));
  }
  if (!officerQuery.next()) {
    return Result<IssuedToken>::failure(QStringLiteral("There is no officer %1.").arg(officer));
  }
  const QString storedOfficer = officerQuery.value(0).toString();
  // The host would refuse every request made with it: better to say so now than at the officer's desk.
  if (officerQuery.value(1).toString() != QLatin1String("Y")) {
    return Result<IssuedToken>::failure(
        QStringLiteral("Officer %1 is not active; a token is issued only to an active officer.").arg(storedOfficer));
  }

  const QByteArray salt = randomBytes(kSaltBytes);
  IssuedToken issued;
  issued.officerId = storedOfficer;
  issued.tokenId = QString::fromLatin1(randomBytes(kIdBytes).toHex());
  const QString secret = QString::fromLatin1(
      randomBytes(kSecretBytes).toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
  issued.token = issued.tokenId + u'.' + secret;

  QSqlQuery query(QSqlDatabase::database(m_connectionName, false));
  query.prepare(QStringLiteral("INSERT INTO HOST_TOKEN (TOKEN_ID, OFFICER_ID, SALT, TOKEN_HASH, ISSUED_TS)"
                               " VALUES (?, ?, ?, ?, ?)"));
  query.addBindValue(issued.tokenId);
  query.addBindValue(storedOfficer);
  query.addBindValue(QString::fromLatin1(salt.toHex()));
  query.addBindValue(hashSecret(salt, secret));
  query.addBindValue(nowText());
  if (!query.exec()) {
    return Result<IssuedToken>::failure(sqlFailure(QStringLiteral("Could not store the new token"), query));
  }
  return issued;
}

bool TokenStore::split(const QString& token, QString* tokenId, QString* secret) {
  const qsizetype dot = token.indexOf(u'.');
  if (dot != kIdBytes * 2) {
    return false;
  }
  const QString id = token.left(dot);
  const QString rest = token.mid(dot + 1);
  // 32 bytes in base64url without padding.
  if (rest.size() != 43 || !isHex(id) || !isBase64Url(rest)) {
    return false;
  }
  *tokenId = id;
  *secret = rest;
  return true;
}

TokenStore::Check TokenStore::verify(const QString& token) const {
  Check check;
  check.error = kInvalidToken;
  QString tokenId;
  QString secret;
  if (!split(token, &tokenId, &secret)) {
    return check;
  }
  const auto now = std::chrono::steady_clock::now();
  StoredToken stored;
  const auto cached = m_cache.constFind(tokenId);
  if (m_cacheLifetime.count() > 0 && cached != m_cache.constEnd() && now - cached->fetched < m_cacheLifetime) {
    stored = cached.value();
  } else {
    if (!m_lookup) {
      auto prepared = std::make_unique<QSqlQuery>(QSqlDatabase::database(m_connectionName, false));
      prepared->setForwardOnly(true);
      if (!prepared->prepare(QStringLiteral(
              "SELECT OFFICER_ID, SALT, TOKEN_HASH, REVOKED_TS FROM HOST_TOKEN WHERE TOKEN_ID = ?"))) {
        check.outcome = Check::Outcome::Failed;
        check.error = sqlFailure(QStringLiteral("Could not check the sign-on token"), *prepared);
        return check;
      }
      m_lookup = std::move(prepared);
    }
    QSqlQuery& query = *m_lookup;
    query.bindValue(0, tokenId);
    if (!query.exec()) {
      check.outcome = Check::Outcome::Failed;
      check.error = sqlFailure(QStringLiteral("Could not check the sign-on token"), query);
      m_lookup.reset();  // prepared again next time (the connection may have been replaced)
      return check;
    }
    if (!query.next()) {
      query.finish();
      return check;
    }
    stored.officerId = query.value(0).toString();
    stored.salt = QByteArray::fromHex(query.value(1).toString().toLatin1());
    stored.hash = query.value(2).toString();
    stored.revoked = !query.value(3).isNull();
    stored.fetched = now;
    query.finish();
    if (m_cacheLifetime.count() > 0) {
      if (m_cache.size() >= kMaxCachedTokens) {
        m_cache.clear();
      }
      m_cache.insert(tokenId, stored);
    }
  }
  if (!equalInConstantTime(hashSecret(stored.salt, secret), stored.hash) || stored.revoked) {
    return check;
  }
  check.outcome = Check::Outcome::Valid;
  check.officerId = stored.officerId;
  check.error.clear();
  return check;
}

Result<int> TokenStore::revokeOfficer(const QString& officerId) {
  QSqlQuery query(QSqlDatabase::database(m_connectionName, false));
  query.prepare(QStringLiteral("UPDATE HOST_TOKEN SET REVOKED_TS = ? WHERE UPPER(OFFICER_ID) = UPPER(?) AND REVOKED_TS IS NULL"));
  query.addBindValue(nowText());
  query.addBindValue(officerId.trimmed());
  if (!query.exec()) {
    return Result<int>::failure(sqlFailure(QStringLiteral("Could not revoke the tokens"), query));
  }
  return query.numRowsAffected();
}

Result<bool> TokenStore::revokeToken(const QString& tokenId) {
  QSqlQuery query(QSqlDatabase::database(m_connectionName, false));
  query.prepare(QStringLiteral("UPDATE HOST_TOKEN SET REVOKED_TS = ? WHERE TOKEN_ID = ? AND REVOKED_TS IS NULL"));
  query.addBindValue(nowText());
  query.addBindValue(tokenId.trimmed());
  if (!query.exec()) {
    return Result<bool>::failure(sqlFailure(QStringLiteral("Could not revoke the token"), query));
  }
  return query.numRowsAffected() > 0;
}

Result<QList<TokenInfo>> TokenStore::list() const {
  QSqlQuery query(QSqlDatabase::database(m_connectionName, false));
  query.setForwardOnly(true);
  if (!query.exec(QStringLiteral(
          "SELECT TOKEN_ID, OFFICER_ID, ISSUED_TS, REVOKED_TS FROM HOST_TOKEN ORDER BY ISSUED_TS DESC, TOKEN_ID"))) {
    return Result<QList<TokenInfo>>::failure(sqlFailure(QStringLiteral("Could not list the tokens"), query));
  }
  QList<TokenInfo> tokens;
  while (query.next()) {
    TokenInfo info;
    info.tokenId = query.value(0).toString();
    info.officerId = query.value(1).toString();
    info.issued = QDateTime::fromString(query.value(2).toString(), Qt::ISODateWithMs);
    if (!query.value(3).isNull()) {
      info.revoked = QDateTime::fromString(query.value(3).toString(), Qt::ISODateWithMs);
    }
    tokens.append(info);
  }
  return tokens;
}

}  // namespace adjustacc::host
