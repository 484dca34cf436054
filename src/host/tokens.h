#pragma once
// Bearer tokens of the shared host service: one or more per officer, handed out once by the
// `adjustacc-host token ISSUE` command and presented by each desktop on every request.
//
// A token reads "<id>.<secret>". Only the id is stored in clear (to find the row); the secret is kept as
// SHA-256 over a per-token random salt and the secret, so a copy of the table gives nobody a usable token.
// Tokens live in table HOST_TOKEN, which the store creates when absent.

#include "messaging/result.h"

#include <QDateTime>
#include <QList>
#include <QString>

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
};

}  // namespace adjustacc::host
