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
inline constexpr int kSchemaVersion = 1;

// Every statement that creates the schema on this dialect, in order; each is idempotent.
QStringList schemaStatements(const messaging::SqlDialect& dialect);

// Tables whose rows carry ROW_VRSN_NBR.
bool tableHasRowVersion(const QString& table);

// Every table of the schema, in creation order (the audit trail last).
QStringList schemaTables();

}  // namespace adjustacc::host
