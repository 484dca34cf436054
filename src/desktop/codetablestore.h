#pragma once
// The code tables the desktop reads locally: an in-memory SQLite copy of the host's QVR_CODE rows, filled at
// sign-on from the host's code-table inquiry. The code boxes' query texts (SqlCodeTableSource) and the
// description lookups (SqlCodeLookup) run on it the same way whether the host is embedded or remote, and
// never wait for the host.
//
// The connection belongs to the thread that made the store (the user-interface thread).

#include "messaging/recordset.h"
#include "messaging/result.h"

#include <QString>

namespace adjustacc::desktop {

class CodeTableStore {
public:
  // Opens the in-memory database under `connectionName` and creates QVR_CODE; see openError().
  explicit CodeTableStore(QString connectionName);
  ~CodeTableStore();
  CodeTableStore(const CodeTableStore&) = delete;
  CodeTableStore& operator=(const CodeTableStore&) = delete;

  QString connectionName() const { return m_connectionName; }
  bool isOpen() const { return m_openError.isEmpty(); }
  QString openError() const { return m_openError; }

  // Replaces every row of code table `tableId` by `rows` (fields CD_TBL_ID, CD_TBL_CD, CD_TBL_DES, EFCTV_DT,
  // END_DT, REGION; dates written yyyy-mm-dd). A row of another table, or without a code, is refused with
  // the whole replacement. Answers the number of rows stored.
  messaging::Result<int> replaceTable(const QString& tableId, const messaging::RecordSet& rows);
  // Rows held, for one table or (empty id) for all.
  int rowCount(const QString& tableId = {}) const;

private:
  QString m_connectionName;
  QString m_openError;
};

}  // namespace adjustacc::desktop
