#pragma once
// The demo set: officers, code tables, customers, accounts of every type, receipts, excess funds and
// refund worksheets that between them reach every path of every screen. Dates are relative to the
// day the set is loaded, so the demo never ages. docs/host.md names the accounts to try.
//
// loadDemoData() (declared in hostsystem.h) fills an empty database and answers true; a database that
// already holds officers is left alone and answered false.

#include "sqlutil.h"

#include "messaging/result.h"

#include <QDate>

namespace adjustacc::host {

// Demo officers (the id is what the desktop signs on with).
namespace demo {
inline const QString Admin = QStringLiteral("ADMIN01");        // every right
inline const QString Clerk = QStringLiteral("CLERK01");        // no rights: may look, not change
inline const QString CancelOnly = QStringLiteral("CANCEL01");  // may only cancel whole receipts
inline const QString Verifier = QStringLiteral("VERIFY01");    // refund worksheets, adjustments
inline const QString Approver = QStringLiteral("APPROVE01");   // refund worksheets (region SW)
inline const QString Fiscal = QStringLiteral("FISCAL01");      // refund worksheets only
}  // namespace demo

// Fills the tables through `sql`; the caller owns the transaction.
messaging::Result<bool> fillDemoData(const Sql& sql, const QDate& today);

// Officers, their rights and the code tables: what any database of this host needs, also the synthetic one.
messaging::Result<bool> fillReferenceData(const Sql& sql, const QDate& today);

}  // namespace adjustacc::host
