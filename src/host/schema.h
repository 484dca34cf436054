#pragma once
// The host's tables. One schema for SQLite and PostgreSQL; the few type differences come from SqlDialect.
//
// Money is held in whole cents (BIGINT); days as DATE (ISO text on SQLite); codes and numbers the
// agency prints (account, receipt, refund numbers) as text. Rows that clerks change carry ROW_VRSN_NBR,
// which replies hand out and saves hand back.

#include "messaging/result.h"
#include "messaging/sqldialect.h"

#include <QString>
#include <QStringList>

namespace adjustacc::host {

// Version of the table layout written to SCHEMA_INFO.
//   1  the first layout
//   2  refund worksheets record when each step was taken (CREATED_TS ... VOID_TS) and who mailed the warrant
inline constexpr int kSchemaVersion = 2;

// Why the host can not serve the connection's database as it is: its tables are of another version than
// kSchemaVersion (an older database is upgraded by createSchema, which init-db runs). Empty when they fit.
messaging::Result<QString> schemaVersionProblem(const QString& connectionName);

// Every statement that creates the schema on this dialect, in order; each is idempotent.
QStringList schemaStatements(const messaging::SqlDialect& dialect);
// The statements that bring the tables of a database at `fromVersion` up to kSchemaVersion, in order.
// createSchema runs them (once, in one transaction) on a database an older host made.
QStringList upgradeStatements(const messaging::SqlDialect& dialect, int fromVersion);

// Tables whose rows carry ROW_VRSN_NBR.
bool tableHasRowVersion(const QString& table);

// Every table of the schema, in creation order (the audit trail last).
QStringList schemaTables();

// What the service's own PostgreSQL role may do, and nothing more: read every table; add rows and change the
// rows that clerks change; add to the audit trail, never change, delete or truncate it; read the tokens, never
// issue or revoke them (the administrator's token command does that). The tables stay with the role that ran
// init-db, so the service can neither alter them, drop the audit trail's guard, nor grant itself more.
// Run again, it sets the same grants (what was granted before is taken back first).
QStringList serviceRoleStatements(const QString& role, const QString& schema);
// Gives `role` (an existing role that owns nothing here and is no superuser) those grants on the connection's
// schema; the token table must exist.
messaging::Result<bool> grantServiceRole(const QString& connectionName, const QString& role);
// Why the connection's role is not fit to run the service: it owns the host's tables or is a superuser (then
// it could take the audit trail's guard away). Empty when it is fit, and always on SQLite.
messaging::Result<QString> serviceRoleProblem(const QString& connectionName);

}  // namespace adjustacc::host
