#pragma once
// A fresh host database for every test, on SQLite always and on PostgreSQL when ADJUSTACC_TEST_PG holds
// connection options ("host=.. port=.. user=.. dbname=.."); each PostgreSQL test works in a schema of its
// own that is dropped afterwards.

#include "host/demodata.h"
#include "host/hostsystem.h"

#include "messaging/reply.h"
#include "messaging/request.h"

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QVariant>

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <utility>

// Readable failure messages for Qt text.
inline void PrintTo(const QString& text, std::ostream* os) { *os << '"' << text.toStdString() << '"'; }

namespace adjustacc::host::testing {

using namespace Qt::Literals::StringLiterals;

enum class Backend { Sqlite, Postgres };

inline std::string backendName(const ::testing::TestParamInfo<Backend>& info) {
  return info.param == Backend::Sqlite ? "SQLite" : "PostgreSQL";
}

using Fields = QList<std::pair<QString, QVariant>>;

// A save record with these fields, in this order.
inline messaging::SaveRecord saveRecord(const Fields& fields) {
  messaging::SaveRecord record;
  for (const auto& [field, value] : fields) {
    record.setField(field, value);
  }
  return record;
}

// Builds requests the way the screens do: system MARVENTO, operator "=".
class RequestBuilder {
public:
  explicit RequestBuilder(int code, const QString& user = demo::Admin) {
    m_request.code = code;
    m_request.user = user;
    m_request.replyTo = u"adjustacc"_s;
    m_request.version = u"1.0"_s;
    static int counter = 0;
    m_request.requestId = u"test-%1"_s.arg(++counter);
  }
  RequestBuilder& param(const QString& key, const QString& value) {
    m_request.params.append({u"MARVENTO"_s, key, u"="_s, value});
    return *this;
  }
  RequestBuilder& record(const QString& name, const Fields& fields) {
    const messaging::SaveRecord record = saveRecord(fields);
    for (auto& list : m_request.records) {
      if (list.name == name) {
        list.records.append(record);
        return *this;
      }
    }
    m_request.records.append({name, {record}});
    return *this;
  }
  RequestBuilder& requestId(const QString& id) {
    m_request.requestId = id;
    return *this;
  }
  const messaging::Request& request() const { return m_request; }
  operator const messaging::Request&() const { return m_request; }  // NOLINT: reads like the screens' code

private:
  messaging::Request m_request;
};

// The account inquiry (request 47) for the receivables filed under a reference.
inline RequestBuilder accountRequest(const QString& number, const QString& type = u"C"_s) {
  RequestBuilder request(47);
  request.param(u"key:REF_NBR"_s, number).param(u"key:REF_TYP_CD"_s, type);
  return request;
}

class HostTest : public ::testing::TestWithParam<Backend> {
protected:
  void SetUp() override {
    static int counter = 0;
    m_connection = u"hosttest-%1"_s.arg(++counter);
    DatabaseOptions options;
    if (GetParam() == Backend::Postgres) {
      const QByteArray env = qgetenv("ADJUSTACC_TEST_PG");
      if (env.isEmpty()) {
        GTEST_SKIP() << "ADJUSTACC_TEST_PG is not set: no PostgreSQL to test against";
      }
      auto parsed = DatabaseOptions::fromPostgresConnectionString(QString::fromLocal8Bit(env));
      ASSERT_TRUE(parsed.ok()) << parsed.error().toStdString();
      options = parsed.value();
      options.schema = u"hosttest_%1_%2"_s.arg(QCoreApplication::applicationPid()).arg(counter);
      m_schema = options.schema;
    } else {
      ASSERT_TRUE(m_dir.isValid());
      options.databaseName = m_dir.filePath(u"host.sqlite"_s);
    }
    m_options = options;
    auto opened = openDatabase(options, m_connection);
    ASSERT_TRUE(opened.ok()) << opened.error().toStdString();
    auto created = createSchema(m_connection);
    ASSERT_TRUE(created.ok()) << created.error().toStdString();
    auto loaded = loadDemoData(m_connection, today());
    ASSERT_TRUE(loaded.ok()) << loaded.error().toStdString();
    ASSERT_TRUE(loaded.value());
    m_host = std::make_unique<HostSystem>(m_connection);
  }

  void TearDown() override {
    m_host.reset();
    if (QSqlDatabase::contains(m_connection)) {
      {
        QSqlDatabase db = QSqlDatabase::database(m_connection, false);
        if (!m_schema.isEmpty() && db.isOpen()) {
          QSqlQuery drop(db);
          drop.exec(u"DROP SCHEMA %1 CASCADE"_s.arg(m_schema));
        }
        db.close();
      }
      QSqlDatabase::removeDatabase(m_connection);
    }
  }

  static QDate today() { return QDate::currentDate(); }

  messaging::Reply send(const messaging::Request& request, const QString& officer = {}) {
    return m_host->handle(request, officer.isEmpty() ? request.user : officer);
  }

  // A reply that must have succeeded.
  messaging::Reply ok(const messaging::Request& request) {
    messaging::Reply reply = send(request);
    EXPECT_EQ(reply.error, QString()) << "request " << request.code;
    return reply;
  }

  // A request the host must refuse with a reply whose text holds `expected`, leaving every table as it was.
  messaging::Reply expectRefused(const messaging::Request& request, const QString& expected,
                                 const QString& officer = {}) {
    const QString before = fingerprint();
    messaging::Reply reply = send(request, officer);
    EXPECT_TRUE(reply.error.contains(expected)) << reply.error.toStdString();
    EXPECT_EQ(fingerprint(), before);
    return reply;
  }

  // Cases of {name, request, expected text}, each refused as expectRefused() checks; failures name the case.
  template <typename Cases>
  void expectEachRefused(const Cases& cases) {
    for (const auto& c : cases) {
      SCOPED_TRACE(c.name);
      expectRefused(c.request, QString::fromUtf16(c.expected));
    }
  }

  QSqlDatabase db() const { return QSqlDatabase::database(m_connection, false); }

  // The first column of the first row of a query with bound values; an invalid QVariant when none.
  QVariant value(const QString& statement, const QVariantList& values = {}) const {
    QSqlQuery query(db());
    query.prepare(statement);
    for (const QVariant& v : values) {
      query.addBindValue(v);
    }
    if (!query.exec()) {
      ADD_FAILURE() << "query failed: " << statement.toStdString() << ": "
                    << query.lastError().text().toStdString();
      return {};
    }
    return query.next() ? query.value(0) : QVariant();
  }
  qint64 count(const QString& statement, const QVariantList& values = {}) const {
    return value(statement, values).toLongLong();
  }

  // Everything a failed save must leave untouched: the rows of every business table and the trail.
  QString fingerprint() const {
    QStringList parts;
    for (const char* table : {"ACCT_RCVBL", "VLTN_ASSMT", "RCPT", "PYMT", "OVR_PYMT", "RFND_WRKSHT", "ACCT_ACTVTY",
                              "ADJSTMT", "ASSMT_ADJSTMT", "LPO_DTL", "NBR_ISSUED", "REQUEST_LOG", "AUDIT_TRAIL"}) {
      const QString name = QString::fromLatin1(table);
      parts.append(name + u'=' + QString::number(count(u"SELECT COUNT(*) FROM "_s + name)));
    }
    for (const char* table : {"ACCT_RCVBL", "VLTN_ASSMT", "PYMT", "OVR_PYMT", "RCPT", "RFND_WRKSHT"}) {
      const QString name = QString::fromLatin1(table);
      parts.append(name + u"@"_s + QString::number(count(u"SELECT SUM(ROW_VRSN_NBR) FROM "_s + name)));
    }
    return parts.join(u' ');
  }

  QString m_connection;
  DatabaseOptions m_options;  // to open more connections to the same database
  QString m_schema;
  QTemporaryDir m_dir;
  std::unique_ptr<HostSystem> m_host;
};

// A value of a reply section's row, by field name ("" for a null).
inline QString cell(const messaging::Reply& reply, const QString& section, int row, const QString& field) {
  const auto it = reply.sections.constFind(section);
  if (it == reply.sections.constEnd()) {
    ADD_FAILURE() << "no section " << section.toStdString();
    return {};
  }
  if (!it->hasField(field)) {
    ADD_FAILURE() << "section " << section.toStdString() << " has no field " << field.toStdString();
    return {};
  }
  return it->valueAt(row, field).toString();
}

inline int rows(const messaging::Reply& reply, const QString& section) {
  const auto it = reply.sections.constFind(section);
  return it == reply.sections.constEnd() ? -1 : it->recordCount();
}

// One field of every row of a section, in the reply's order.
inline QStringList column(const messaging::Reply& reply, const QString& section, const QString& field) {
  QStringList values;
  for (int row = 0; row < rows(reply, section); ++row) {
    values.append(cell(reply, section, row, field));
  }
  return values;
}

// The row of a section whose field holds the value, or -1.
inline int findRow(const messaging::Reply& reply, const QString& section, const QString& field, const QString& value) {
  const auto it = reply.sections.constFind(section);
  if (it == reply.sections.constEnd()) {
    return -1;
  }
  for (int row = 0; row < it->recordCount(); ++row) {
    if (it->valueAt(row, field).toString() == value) {
      return row;
    }
  }
  return -1;
}

}  // namespace adjustacc::host::testing
