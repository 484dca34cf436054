// The audit trail can not be emptied, and the service's own PostgreSQL role gets what the service does and no
// more: it works the host as before, but can not change or empty the trail, take its guard away, or grant
// itself more.
#include "hostfixture.h"

#include "host/schema.h"
#include "host/tokens.h"

#include <QSqlError>

using namespace adjustacc::host;
using namespace adjustacc::host::testing;

namespace {

using namespace Qt::Literals::StringLiterals;

RequestBuilder numberRequest() {
  RequestBuilder request(60);
  request.param(u"key:NBR_TYP_CD"_s, u"F"_s);
  return request;
}

class AuditTrailGuard : public HostTest {};

TEST_P(AuditTrailGuard, TheTrailCanNotBeEmptied) {
  ok(numberRequest());
  const qint64 entries = count(u"SELECT COUNT(*) FROM AUDIT_TRAIL"_s);
  ASSERT_GT(entries, 0);
  // What empties a table at a stroke: TRUNCATE on PostgreSQL, a DELETE without a condition on SQLite.
  QSqlQuery query(db());
  EXPECT_FALSE(query.exec(GetParam() == Backend::Postgres ? u"TRUNCATE AUDIT_TRAIL"_s : u"DELETE FROM AUDIT_TRAIL"_s));
  EXPECT_TRUE(query.lastError().text().contains(u"append-only"_s)) << qPrintable(query.lastError().text());
  EXPECT_EQ(count(u"SELECT COUNT(*) FROM AUDIT_TRAIL"_s), entries);
}

INSTANTIATE_TEST_SUITE_P(Databases, AuditTrailGuard, ::testing::Values(Backend::Sqlite, Backend::Postgres),
                         backendName);

// A login role of the test's own, removed again with every grant it holds.
class ScratchRole {
public:
  ScratchRole(QSqlDatabase admin, QString name) : m_admin(std::move(admin)), m_name(std::move(name)) {
    QSqlQuery query(m_admin);
    m_created = query.exec(u"CREATE ROLE %1 LOGIN"_s.arg(m_name));
  }
  ~ScratchRole() {
    QSqlQuery query(m_admin);
    query.exec(u"DROP OWNED BY %1"_s.arg(m_name));
    query.exec(u"DROP ROLE IF EXISTS %1"_s.arg(m_name));
  }
  ScratchRole(const ScratchRole&) = delete;
  ScratchRole& operator=(const ScratchRole&) = delete;
  bool created() const { return m_created; }
  const QString& name() const { return m_name; }

private:
  QSqlDatabase m_admin;
  QString m_name;
  bool m_created = false;
};

class ServiceRoleTest : public HostTest {};

TEST_P(ServiceRoleTest, TheServiceRoleWorksTheHostButCanNotTouchTheTrailOrItsGuard) {
  if (GetParam() != Backend::Postgres) {
    GTEST_SKIP() << "SQLite has no roles";
  }
  ASSERT_TRUE(TokenStore(m_connection).ensureTable().ok());
  ScratchRole role(db(), m_schema + u"_svc"_s);
  ASSERT_TRUE(role.created());

  EXPECT_FALSE(grantServiceRole(m_connection, u"Not A Role"_s).ok());
  EXPECT_FALSE(grantServiceRole(m_connection, m_schema + u"_nobody"_s).ok()) << "the role must exist";
  const auto self = grantServiceRole(m_connection, db().userName());
  EXPECT_FALSE(self.ok()) << "the table owner (here a superuser) is refused";
  const auto granted = grantServiceRole(m_connection, role.name());
  ASSERT_TRUE(granted.ok()) << qPrintable(granted.error());
  ASSERT_TRUE(grantServiceRole(m_connection, role.name()).ok()) << "granting again gives the same grants";

  const auto ownerProblem = serviceRoleProblem(m_connection);
  ASSERT_TRUE(ownerProblem.ok());
  EXPECT_FALSE(ownerProblem->isEmpty()) << "the creating role is not fit to run the service";

  DatabaseOptions asService = m_options;
  asService.userName = role.name();
  const QString serviceConnection = m_connection + u"-service"_s;
  const auto opened = openDatabase(asService, serviceConnection);
  ASSERT_TRUE(opened.ok()) << qPrintable(opened.error());
  {
    const auto fit = serviceRoleProblem(serviceConnection);
    ASSERT_TRUE(fit.ok());
    EXPECT_TRUE(fit->isEmpty()) << qPrintable(fit.value());
    EXPECT_TRUE(TokenStore(serviceConnection).ensureTable().ok()) << "an existing token table is only looked for";

    HostSystem host(serviceConnection);
    const adjustacc::messaging::Reply save = host.handle(numberRequest(), demo::Admin);
    EXPECT_TRUE(save.ok()) << qPrintable(save.error);
    const adjustacc::messaging::Reply inquiry = host.handle(accountRequest(u"1000011"_s), demo::Admin);
    EXPECT_TRUE(inquiry.ok()) << qPrintable(inquiry.error);

    const qint64 entries = count(u"SELECT COUNT(*) FROM AUDIT_TRAIL"_s);
    const QStringList refused = {
        u"TRUNCATE AUDIT_TRAIL"_s,
        u"DELETE FROM AUDIT_TRAIL"_s,
        u"UPDATE AUDIT_TRAIL SET OFFICER_ID = 'NOBODY'"_s,
        u"ALTER TABLE AUDIT_TRAIL DISABLE TRIGGER ALL"_s,
        u"DROP TRIGGER audit_trail_no_truncate ON AUDIT_TRAIL"_s,
        u"DROP TABLE AUDIT_TRAIL"_s,
        u"DELETE FROM REQUEST_LOG"_s,
        u"UPDATE OFFICER SET ACTIVE_IND = 'Y'"_s,
        u"INSERT INTO HOST_TOKEN (TOKEN_ID, OFFICER_ID, SALT, TOKEN_HASH, ISSUED_TS) VALUES ('a', 'b', 'c', 'd', 'e')"_s,
        u"CREATE TABLE EXTRA (ID INTEGER)"_s,
    };
    QSqlQuery query(QSqlDatabase::database(serviceConnection, false));
    for (const QString& statement : refused) {
      EXPECT_FALSE(query.exec(statement)) << qPrintable(statement);
    }
    EXPECT_EQ(count(u"SELECT COUNT(*) FROM AUDIT_TRAIL"_s), entries);
    // A grant it tries to give itself is given nothing (PostgreSQL only warns).
    query.exec(u"GRANT ALL ON AUDIT_TRAIL TO %1"_s.arg(role.name()));
    EXPECT_EQ(count(u"SELECT COUNT(*) FROM pg_class WHERE relname = 'audit_trail' AND relnamespace = "
                    u"current_schema()::regnamespace AND has_table_privilege(?, oid, 'UPDATE, DELETE, TRUNCATE')"_s,
                    {role.name()}),
              0);
  }
  QSqlDatabase::database(serviceConnection, false).close();
  QSqlDatabase::removeDatabase(serviceConnection);
}

INSTANTIATE_TEST_SUITE_P(Databases, ServiceRoleTest, ::testing::Values(Backend::Sqlite, Backend::Postgres),
                         backendName);

}  // namespace
