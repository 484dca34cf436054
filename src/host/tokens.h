#pragma once
// Bearer tokens of the shared host service: one or more per officer, handed out once by the
// `adjustacc-host token ISSUE` command and presented by each desktop on every request.
//
// A token reads "<id>.<secret>". Only the id is stored in clear (to find the row); the secret is kept as
// SHA-256 over a per-token random salt and the secret, so a copy of the table gives nobody a usable token.
// Tokens live in table HOST_TOKEN, which the store creates when absent.

#include "messaging/result.h"

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QString>

#include <chrono>
#include <memory>

class QSqlQuery;

namespace adjustacc::host {

// A freshly issued token. `token` is the only copy of the secret: show it once and forget it.
struct IssuedToken {
  QString tokenId;
  QString officerId;
  QString token;
};

// What the table says about a token (never the secret).
struct TokenInfo {
  QString tokenId;
  QString officerId;
  QDateTime issued;
  QDateTime revoked;  // invalid while the token is in force
};

class TokenStore {
public:
  // Uses an open connection; must be used on the thread that opened it.
  explicit TokenStore(QString connectionName);
  ~TokenStore();
  TokenStore(const TokenStore&) = delete;
  TokenStore& operator=(const TokenStore&) = delete;

  // Creates table HOST_TOKEN when absent (idempotent, on either database).
  messaging::Result<bool> ensureTable();

  // Issues a new token for an officer of table OFFICER. Earlier tokens of the officer stay in force.
  messaging::Result<IssuedToken> issue(const QString& officerId);

  // Whose token this is. A malformed, unknown and revoked token get the same text, so that guessing
  // learns nothing; a database failure is told apart (the service answers it as unavailable, not refused).
  struct Check {
    enum class Outcome { Valid, Refused, Failed };
    Outcome outcome = Outcome::Refused;
    QString officerId;  // when valid
    QString error;      // when refused or failed
    bool valid() const { return outcome == Outcome::Valid; }
  };
  Check verify(const QString& token) const;

  // Lets verify() keep what it read of a token for this long before reading it again (0, the default: read it
  // every time). The service uses a few seconds, which spares a database round trip on nearly every request;
  // a token revoked meanwhile keeps working for at most that long. An altered secret is refused all the same.
  void setCacheLifetime(std::chrono::milliseconds lifetime) { m_cacheLifetime = lifetime; }

  // Revokes every token of the officer in force; returns how many were revoked.
  messaging::Result<int> revokeOfficer(const QString& officerId);
  // Revokes one token by its id; false when no such token is in force.
  messaging::Result<bool> revokeToken(const QString& tokenId);

  // Every token, the newest first.
  messaging::Result<QList<TokenInfo>> list() const;

  // Splits "<id>.<secret>"; false when the text does not have that shape.
  static bool split(const QString& token, QString* tokenId, QString* secret);

private:
  QString m_connectionName;
  // The look-up of verify(), prepared once: every request of the service runs it, and preparing it anew would
  // cost the database round trips each time.
  mutable std::unique_ptr<QSqlQuery> m_lookup;
  struct StoredToken {
    QString officerId;
    QByteArray salt;
    QString hash;
    bool revoked = false;
    std::chrono::steady_clock::time_point fetched;
  };
  std::chrono::milliseconds m_cacheLifetime{0};
  mutable QHash<QString, StoredToken> m_cache;
};

}  // namespace adjustacc::host
