#pragma once
// Runs the code boxes' code-table query texts against QVR_CODE through a QtSql connection. The text is
// read back into its parts (CodeTableQuery: only the known shapes pass) and run as one fixed,
// parameterised statement; date() and the "#...#" literals become bound dates in the database's own form.
// A text without "Order by" is answered in code order, so a list reads the same on every database.

#include "clock.h"
#include "codetablesource.h"

#include <QString>

namespace adjustacc::platform {

class SqlCodeTableSource : public CodeTableSource {
public:
  // `connectionName` names a QSqlDatabase connection opened on the thread that will call run(); `clock`
  // says what date() means.
  SqlCodeTableSource(QString connectionName, const Clock& clock);

  // Rows CD_TBL_ID, CD_TBL_CD, CD_TBL_DES (text; null stays null), positioned on the first row.
  messaging::Result<messaging::RecordSet> run(const QString& queryText) override;

private:
  QString m_connectionName;
  const Clock& m_clock;
};

}  // namespace adjustacc::platform
