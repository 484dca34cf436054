#include "schema.h"

#include "hostsystem.h"
#include "sqlutil.h"
#include "transaction.h"

#include <QSqlDatabase>
#include <QSqlQuery>

#include <algorithm>

namespace adjustacc::host {

using messaging::Result;

namespace {

struct Table {
  const char16_t* name;
  const char16_t* columns;  // %ID, %DATE and %TS are replaced by the dialect's types
  bool versioned;
};

// The order matters: a table comes after the tables its foreign keys name.
const Table kTables[] = {
    {u"SCHEMA_INFO", u"SCHEMA_VRSN INTEGER NOT NULL, DEMO_LOAD_DT %DATE", false},
    {u"OFFICER",
     u"OFFICER_ID VARCHAR(16) PRIMARY KEY, OFFICER_NM VARCHAR(60) NOT NULL, REGION VARCHAR(8) NOT NULL, "
     u"ACTIVE_IND CHAR(1) NOT NULL DEFAULT 'Y'",
     false},
    {u"OFFICER_RIGHT",
     u"OFFICER_ID VARCHAR(16) NOT NULL REFERENCES OFFICER (OFFICER_ID), RIGHT_NM VARCHAR(40) NOT NULL, "
     u"PRIMARY KEY (OFFICER_ID, RIGHT_NM)",
     false},
    {u"QVR_CODE",
     u"CD_TBL_ID VARCHAR(20) NOT NULL, CD_TBL_CD VARCHAR(10) NOT NULL, CD_TBL_DES VARCHAR(60) NOT NULL, "
     u"EFCTV_DT %DATE NOT NULL, END_DT %DATE, REGION VARCHAR(8) NOT NULL, "
     u"PRIMARY KEY (REGION, CD_TBL_ID, CD_TBL_CD, EFCTV_DT)",
     false},
    {u"CUSTOMER",
     u"CUST_ID VARCHAR(12) PRIMARY KEY, CUST_NM VARCHAR(60) NOT NULL, ADDR_1 VARCHAR(60), ADDR_2 VARCHAR(60), "
     u"CITY VARCHAR(40), STATE VARCHAR(2), ZIP VARCHAR(10), ALERT_IND CHAR(1) NOT NULL DEFAULT 'N', "
     u"ALERT_TXT VARCHAR(200), ROW_VRSN_NBR BIGINT NOT NULL DEFAULT 1",
     true},
    {u"ACCT_RCVBL",
     u"ACCT_RCVBL_ID %ID, ACCT_RCVBL_TYP_CD VARCHAR(4) NOT NULL, ACCT_RCVBL_NBR VARCHAR(7) NOT NULL, "
     u"ACCT_RCVBL_CK_NBR VARCHAR(1) NOT NULL, REF_TYP_CD VARCHAR(4) NOT NULL, REF_NBR VARCHAR(20) NOT NULL, "
     u"CUST_ID VARCHAR(12) NOT NULL REFERENCES CUSTOMER (CUST_ID), STP_DT %DATE, ACCT_RCVBL_DUE_DT %DATE, "
     u"ORIG_ASSMT_AMT BIGINT NOT NULL DEFAULT 0, LTE_FEE_AMT BIGINT NOT NULL DEFAULT 0, "
     u"ACRD_INTRST_AMT BIGINT NOT NULL DEFAULT 0, ACCT_RCVBL_DUE_AMT BIGINT NOT NULL DEFAULT 0, "
     u"ACCT_RCVBL_BAL_AMT BIGINT NOT NULL DEFAULT 0, ACCT_STTS_CD VARCHAR(2) NOT NULL, "
     u"ACTV_STTS_CD CHAR(1) NOT NULL DEFAULT 'A', CASE_ID VARCHAR(20), INSTLMT_NBR INTEGER, "
     u"ASSMT_PP_TYP_CD VARCHAR(4), LST_PYMT_DT %DATE, ROW_VRSN_NBR BIGINT NOT NULL DEFAULT 1, "
     u"UNIQUE (ACCT_RCVBL_TYP_CD, ACCT_RCVBL_NBR)",
     true},
    {u"VLTN_ASSMT",
     u"ASSMT_ID %ID, ACCT_RCVBL_ID BIGINT NOT NULL REFERENCES ACCT_RCVBL (ACCT_RCVBL_ID), "
     u"CUST_ID VARCHAR(12) NOT NULL REFERENCES CUSTOMER (CUST_ID), VLTN_ASSMT_SEQ_NBR INTEGER NOT NULL, "
     u"TRNSCTN_NBR VARCHAR(12) NOT NULL, ASSMT_CD VARCHAR(6) NOT NULL, ASSMT_TYP_CD CHAR(1) NOT NULL, "
     u"ASSMT_ISSUE_DT %DATE NOT NULL, ADJSTMT_DT %DATE, CL_ASMT_AMT BIGINT NOT NULL, AC_ASMT_AMT BIGINT NOT NULL, "
     u"BAL_DUE_AMT BIGINT, VLTN_ASSMT_STTS_CD CHAR(1) NOT NULL, LIC_PRCHS_OPTN_IND CHAR(1), STTS_IND CHAR(1), "
     u"ROW_VRSN_NBR BIGINT NOT NULL DEFAULT 1, "
     u"UNIQUE (ACCT_RCVBL_ID, TRNSCTN_NBR, ASSMT_CD, VLTN_ASSMT_SEQ_NBR)",
     true},
    {u"RCPT",
     u"RCPT_NBR VARCHAR(10) PRIMARY KEY, CUST_ID VARCHAR(12) NOT NULL REFERENCES CUSTOMER (CUST_ID), "
     u"RCPT_DT %DATE NOT NULL, RCPT_STTS_CD CHAR(1) NOT NULL, CNFRMTN_NBR VARCHAR(20), "
     u"TOT_PYMT_AMT BIGINT NOT NULL, SRC_RCPT_NBR VARCHAR(10), ROW_VRSN_NBR BIGINT NOT NULL DEFAULT 1",
     true},
    {u"FUND",
     u"FUND_ID %ID, RCPT_NBR VARCHAR(10) NOT NULL REFERENCES RCPT (RCPT_NBR), FUND_SEQ_NBR INTEGER NOT NULL, "
     u"FUND_TYP_CD VARCHAR(2) NOT NULL, FUND_RFRNC_NBR VARCHAR(30), FUND_AMT BIGINT NOT NULL, "
     u"EXPRTN_MO_DT VARCHAR(2), EXPRTN_DY_DT VARCHAR(2), EXPRTN_YR_DT VARCHAR(4), UNIQUE (RCPT_NBR, FUND_SEQ_NBR)",
     false},
    {u"ADJSTMT",
     u"ADJSTMT_ID %ID, ADJSTMT_KIND_CD VARCHAR(3) NOT NULL, ACCT_RCVBL_ID BIGINT REFERENCES ACCT_RCVBL (ACCT_RCVBL_ID), "
     u"RCPT_NBR VARCHAR(10) REFERENCES RCPT (RCPT_NBR), ADJSTMT_DT %DATE NOT NULL, ADJSTMT_TYP_CD VARCHAR(2), "
     u"ADJSTMT_CMMT_TXT VARCHAR(2000), OFFICER_ID VARCHAR(16) NOT NULL, REQUEST_ID VARCHAR(64), CREATED_TS %TS NOT NULL",
     false},
    {u"ASSMT_ADJSTMT",
     u"ASSMT_ADJSTMT_ID %ID, ADJSTMT_ID BIGINT NOT NULL REFERENCES ADJSTMT (ADJSTMT_ID), "
     u"ASSMT_ID BIGINT NOT NULL REFERENCES VLTN_ASSMT (ASSMT_ID), CHANGE_CD CHAR(1) NOT NULL, "
     u"ASMT_AMT BIGINT NOT NULL, PRIOR_BAL_AMT BIGINT NOT NULL, NEW_BAL_AMT BIGINT NOT NULL, "
     u"REVERSES_ID BIGINT REFERENCES ASSMT_ADJSTMT (ASSMT_ADJSTMT_ID)",
     false},
    {u"LPO_DTL",
     u"LPO_ID %ID, ACCT_RCVBL_ID BIGINT NOT NULL REFERENCES ACCT_RCVBL (ACCT_RCVBL_ID), "
     u"ASSMT_ID BIGINT REFERENCES VLTN_ASSMT (ASSMT_ID), ADJSTMT_ID BIGINT REFERENCES ADJSTMT (ADJSTMT_ID), "
     u"PRCHS_OPTN_ST_CD CHAR(1) NOT NULL, PRCHS_OPTN_TAG_NBR VARCHAR(12), PRCHS_OPTN_DT %DATE, "
     u"PRCHS_OPTN_TM VARCHAR(5), PO_TRP_ID VARCHAR(1), PO_TRP_DSTRCT_ID VARCHAR(4), PRCHS_OPTN_WGT INTEGER, "
     u"TOT_PRCHS_OPTN_AMT BIGINT, PRCHS_OPTN_TXT VARCHAR(2000), CREATED_BY_ID VARCHAR(16) NOT NULL, "
     u"CREATED_TS %TS NOT NULL",
     false},
    {u"PYMT",
     u"PYMT_ID %ID, RCPT_NBR VARCHAR(10) NOT NULL REFERENCES RCPT (RCPT_NBR), "
     u"ACCT_RCVBL_ID BIGINT NOT NULL REFERENCES ACCT_RCVBL (ACCT_RCVBL_ID), PYMT_NBR INTEGER NOT NULL, "
     u"TRNSCTN_NBR VARCHAR(12) NOT NULL, TRNSCTN_DT %DATE NOT NULL, PYMT_DT %DATE NOT NULL, "
     u"CL_PYMT_AMT BIGINT NOT NULL, STTS_CD CHAR(1) NOT NULL DEFAULT 'A', ACTVTY_STTS_CD CHAR(1), "
     u"ADJSTMT_DT %DATE, ADJSTMT_ID BIGINT REFERENCES ADJSTMT (ADJSTMT_ID), "
     u"ROW_VRSN_NBR BIGINT NOT NULL DEFAULT 1, UNIQUE (RCPT_NBR, TRNSCTN_NBR)",
     true},
    {u"OVR_PYMT",
     u"OVR_PYMT_ID %ID, RCPT_NBR VARCHAR(10) NOT NULL REFERENCES RCPT (RCPT_NBR), OVR_PYMT_SEQ_NBR INTEGER NOT NULL, "
     u"CUST_ID VARCHAR(12) NOT NULL REFERENCES CUSTOMER (CUST_ID), OVR_PYMT_DT %DATE NOT NULL, "
     u"OVR_PYMT_TM VARCHAR(5) NOT NULL, OVR_PYMT_AMT BIGINT NOT NULL, OVR_PYMT_STTS_CD CHAR(1) NOT NULL, "
     u"DSTNTN_RCPT_NBR VARCHAR(10) NOT NULL DEFAULT '0', RFND_NBR VARCHAR(7), "
     u"ROW_VRSN_NBR BIGINT NOT NULL DEFAULT 1, UNIQUE (RCPT_NBR, OVR_PYMT_SEQ_NBR)",
     true},
    {u"RFND_WRKSHT",
     u"RFND_NBR VARCHAR(7) PRIMARY KEY, RCPT_NBR VARCHAR(10) NOT NULL REFERENCES RCPT (RCPT_NBR), "
     u"CUST_ID VARCHAR(12) NOT NULL REFERENCES CUSTOMER (CUST_ID), RFND_AMT BIGINT NOT NULL, RFND_TO_CD CHAR(1), "
     u"DT_MLD %DATE, CREATED_DT %DATE NOT NULL, CREATOR_ID VARCHAR(16) NOT NULL, VERIFY_ID VARCHAR(16), "
     u"APPROVE_ID VARCHAR(16), RFND_BY_ID VARCHAR(16), VOID_ID VARCHAR(16), DMV_CMMT_TXT VARCHAR(2000), "
     u"FISCAL_CMMT_TXT VARCHAR(2000), RFND_CD CHAR(1), WRNT_NBR VARCHAR(20), RFND_DT %DATE, "
     u"STTS_CD CHAR(1) NOT NULL, ROW_VRSN_NBR BIGINT NOT NULL DEFAULT 1, "
     u"CREATED_TS %TS, VERIFY_TS %TS, APPROVE_TS %TS, RFND_BY_TS %TS, MAILED_BY_ID VARCHAR(16), MAILED_TS %TS, "
     u"VOID_TS %TS",
     true},
    {u"ACCT_ACTVTY",
     u"ACTVTY_SEQ_NBR %ID, ACCT_RCVBL_ID BIGINT NOT NULL REFERENCES ACCT_RCVBL (ACCT_RCVBL_ID), "
     u"ACTVTY_DT %DATE NOT NULL, ACTVTY_TM VARCHAR(5), ACCT_ACTVTY_CD VARCHAR(6) NOT NULL, ACTVTY_AMT BIGINT, "
     u"ACTVTY_BAL_AMT BIGINT, LST_UPDT_USER_ID VARCHAR(16) NOT NULL, ACTVTY_CMMT_TXT VARCHAR(2000), "
     u"ADTL_INFO_TXT VARCHAR(60), LST_UPDT_TS %TS NOT NULL, ROW_VRSN_NBR BIGINT NOT NULL DEFAULT 1",
     true},
    {u"NBR_SEQ",
     u"NBR_TYP_CD VARCHAR(2) PRIMARY KEY, NEXT_NBR BIGINT NOT NULL, LAST_NBR BIGINT NOT NULL, "
     u"ISSUE_IND CHAR(1) NOT NULL DEFAULT 'Y', PUBLIC_IND CHAR(1) NOT NULL DEFAULT 'N'",
     false},
    {u"NBR_ISSUED",
     u"NBR_TYP_CD VARCHAR(2) NOT NULL REFERENCES NBR_SEQ (NBR_TYP_CD), NBR VARCHAR(10) NOT NULL, "
     u"OFFICER_ID VARCHAR(16) NOT NULL, REQUEST_ID VARCHAR(64), ISSUED_TS %TS NOT NULL, "
     u"USED_IND CHAR(1) NOT NULL DEFAULT 'N', PRIMARY KEY (NBR_TYP_CD, NBR)",
     false},
    {u"REQUEST_LOG",
     u"REQUEST_ID VARCHAR(64) PRIMARY KEY, OFFICER_ID VARCHAR(16) NOT NULL, REQUEST_CD INTEGER NOT NULL, "
     u"REQUEST_DIGEST VARCHAR(64) NOT NULL, REPLY_TXT TEXT NOT NULL, CREATED_TS %TS NOT NULL",
     false},
    {u"AUDIT_TRAIL",
     u"AUDIT_ID %ID, CHANGED_TS %TS NOT NULL, OFFICER_ID VARCHAR(16) NOT NULL, REQUEST_ID VARCHAR(64), "
     u"TBL_NM VARCHAR(30) NOT NULL, ROW_KEY VARCHAR(200) NOT NULL, CHANGE_CD CHAR(1) NOT NULL, "
     u"BEFORE_TXT TEXT, AFTER_TXT TEXT",
     false},
};

// What each version of the layout adds to the one before, for databases made by an older host: the statements
// that bring version - 1 up to version. A table made new already has it all (kTables is the latest layout).
struct Upgrade {
  int version;
  const char16_t* statement;  // %ID, %DATE and %TS as in kTables
};
const Upgrade kUpgrades[] = {
    // 2: when each step of a refund worksheet was taken, and who mailed the warrant.
    {2, u"ALTER TABLE RFND_WRKSHT ADD COLUMN CREATED_TS %TS"},
    {2, u"ALTER TABLE RFND_WRKSHT ADD COLUMN VERIFY_TS %TS"},
    {2, u"ALTER TABLE RFND_WRKSHT ADD COLUMN APPROVE_TS %TS"},
    {2, u"ALTER TABLE RFND_WRKSHT ADD COLUMN RFND_BY_TS %TS"},
    {2, u"ALTER TABLE RFND_WRKSHT ADD COLUMN MAILED_BY_ID VARCHAR(16)"},
    {2, u"ALTER TABLE RFND_WRKSHT ADD COLUMN MAILED_TS %TS"},
    {2, u"ALTER TABLE RFND_WRKSHT ADD COLUMN VOID_TS %TS"},
};

QString withDialectTypes(QString text, const SqlDialect& dialect) {
  return text.replace(QStringLiteral("%ID"), dialect.idColumn())
      .replace(QStringLiteral("%DATE"), dialect.dateType())
      .replace(QStringLiteral("%TS"), dialect.timestampType());
}

// Brings the tables of an existing database up to kSchemaVersion, in one transaction that first locks the
// version row, so that two hosts starting on the same database do not both alter it.
Result<bool> upgradeSchema(const Sql& sql) {
  Transaction transaction(sql);
  if (Result<bool> begun = transaction.begin(); !begun) {
    return begun;
  }
  Result<std::optional<QVariantList>> row =
      sql.firstRow(QStringLiteral("SELECT SCHEMA_VRSN FROM SCHEMA_INFO") + sql.dialect().lockRowsSuffix());
  if (!row) {
    return Result<bool>::failure(row.error());
  }
  const int version = row.value()->at(0).toInt();
  if (version > kSchemaVersion) {
    return Result<bool>::failure(
        QStringLiteral("The database's tables are of version %1, newer than this host knows (%2); run the host "
                       "that made them, or a newer one.")
            .arg(version)
            .arg(kSchemaVersion));
  }
  if (version == kSchemaVersion) {
    return true;
  }
  for (const QString& statement : upgradeStatements(sql.dialect(), version)) {
    if (Result<QSqlQuery> done = sql.run(statement); !done) {
      return Result<bool>::failure(
          QStringLiteral("The tables could not be brought from version %1 to %2: %3").arg(version).arg(kSchemaVersion).arg(done.error()));
    }
  }
  if (Result<QSqlQuery> done = sql.run(QStringLiteral("UPDATE SCHEMA_INFO SET SCHEMA_VRSN = ?"), {kSchemaVersion});
      !done) {
    return Result<bool>::failure(done.error());
  }
  return transaction.commit();
}

// Indexes for the inquiries: an account by its reference or number, a receivable's rows, a receipt's rows.
const char16_t* const kIndexes[] = {
    u"CREATE INDEX IF NOT EXISTS ACCT_RCVBL_REF_IX ON ACCT_RCVBL (REF_TYP_CD, REF_NBR)",
    u"CREATE INDEX IF NOT EXISTS ACCT_RCVBL_CUST_IX ON ACCT_RCVBL (CUST_ID)",
    u"CREATE INDEX IF NOT EXISTS VLTN_ASSMT_AR_IX ON VLTN_ASSMT (ACCT_RCVBL_ID)",
    u"CREATE INDEX IF NOT EXISTS FUND_RCPT_IX ON FUND (RCPT_NBR)",
    u"CREATE INDEX IF NOT EXISTS FUND_RFRNC_IX ON FUND (FUND_RFRNC_NBR)",
    u"CREATE INDEX IF NOT EXISTS PYMT_AR_IX ON PYMT (ACCT_RCVBL_ID)",
    u"CREATE INDEX IF NOT EXISTS PYMT_RCPT_IX ON PYMT (RCPT_NBR)",
    u"CREATE INDEX IF NOT EXISTS OVR_PYMT_RCPT_IX ON OVR_PYMT (RCPT_NBR)",
    u"CREATE INDEX IF NOT EXISTS RFND_WRKSHT_RCPT_IX ON RFND_WRKSHT (RCPT_NBR)",
    u"CREATE INDEX IF NOT EXISTS ACCT_ACTVTY_AR_IX ON ACCT_ACTVTY (ACCT_RCVBL_ID)",
    u"CREATE INDEX IF NOT EXISTS ASSMT_ADJSTMT_ASSMT_IX ON ASSMT_ADJSTMT (ASSMT_ID)",
    u"CREATE INDEX IF NOT EXISTS ASSMT_ADJSTMT_REV_IX ON ASSMT_ADJSTMT (REVERSES_ID)",
    u"CREATE INDEX IF NOT EXISTS CUSTOMER_NM_IX ON CUSTOMER (CUST_NM)",
    u"CREATE INDEX IF NOT EXISTS QVR_CODE_TBL_IX ON QVR_CODE (CD_TBL_ID, CD_TBL_CD)",
};

// The table of bearer tokens, which the token store creates.
const QString kTokenTable = QStringLiteral("HOST_TOKEN");

// Tables the service only reads.
bool isReadOnlyForService(const QString& table) {
  return table == u"SCHEMA_INFO" || table == u"OFFICER" || table == u"OFFICER_RIGHT" || table == u"QVR_CODE" ||
         table == kTokenTable;
}

// A role name as PostgreSQL folds unquoted names: lower-case letters, digits and _, 63 at most.
bool isRoleName(const QString& name) {
  if (name.isEmpty() || name.size() > 63 || !((name[0] >= u'a' && name[0] <= u'z') || name[0] == u'_')) {
    return false;
  }
  return std::all_of(name.begin(), name.end(), [](QChar c) {
    return (c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9') || c == u'_';
  });
}

QString quotedIdentifier(QString name) { return u'"' + name.replace(u'"', QStringLiteral("\"\"")) + u'"'; }

}  // namespace

QStringList schemaStatements(const SqlDialect& dialect) {
  QStringList statements;
  for (const Table& table : kTables) {
    const QString columns = withDialectTypes(QString::fromUtf16(table.columns), dialect);
    statements.append(
        QStringLiteral("CREATE TABLE IF NOT EXISTS %1 (%2)").arg(QString::fromUtf16(table.name), columns));
  }
  for (const char16_t* index : kIndexes) {
    statements.append(QString::fromUtf16(index));
  }
  statements.append(dialect.appendOnlyGuard(QStringLiteral("AUDIT_TRAIL")));
  return statements;
}

QStringList upgradeStatements(const SqlDialect& dialect, int fromVersion) {
  QStringList statements;
  for (const Upgrade& upgrade : kUpgrades) {
    if (upgrade.version > fromVersion && upgrade.version <= kSchemaVersion) {
      statements.append(withDialectTypes(QString::fromUtf16(upgrade.statement), dialect));
    }
  }
  return statements;
}

bool tableHasRowVersion(const QString& table) {
  for (const Table& known : kTables) {
    if (table == QStringView(known.name)) {
      return known.versioned;
    }
  }
  return false;
}

QStringList schemaTables() {
  QStringList names;
  for (const Table& table : kTables) {
    names.append(QString::fromUtf16(table.name));
  }
  return names;
}

QStringList serviceRoleStatements(const QString& role, const QString& schema) {
  const QString schemaName = quotedIdentifier(schema);
  QStringList statements = {QStringLiteral("GRANT USAGE ON SCHEMA %1 TO %2").arg(schemaName, role)};
  QStringList tables = schemaTables();
  tables.append(kTokenTable);
  for (const QString& table : tables) {
    const QString qualified = schemaName + u'.' + table;
    statements.append(QStringLiteral("REVOKE ALL ON %1 FROM %2").arg(qualified, role));
    QString rights = QStringLiteral("SELECT, INSERT, UPDATE");
    if (table == u"AUDIT_TRAIL") {
      rights = QStringLiteral("INSERT");
    } else if (isReadOnlyForService(table)) {
      rights = QStringLiteral("SELECT");
    }
    statements.append(QStringLiteral("GRANT %1 ON %2 TO %3").arg(rights, qualified, role));
  }
  return statements;
}

Result<bool> grantServiceRole(const QString& connectionName, const QString& role) {
  const Result<Sql> connection = Sql::onConnection(connectionName);
  if (!connection) {
    return Result<bool>::failure(connection.error());
  }
  const Sql& sql = connection.value();
  if (sql.dialect().kind() != SqlDialect::Kind::Postgres) {
    return Result<bool>::failure(QStringLiteral("A service role is given on PostgreSQL only: SQLite has no roles."));
  }
  if (!isRoleName(role)) {
    return Result<bool>::failure(
        QStringLiteral("\"%1\" is not a usable role name (lower-case letters, digits and _).").arg(role));
  }
  Result<std::optional<QVariantList>> found = sql.firstRow(
      QStringLiteral("SELECT rolsuper, rolname = current_user, current_schema() FROM pg_roles WHERE rolname = ?"),
      {role});
  if (!found) {
    return Result<bool>::failure(found.error());
  }
  if (!found.value()) {
    return Result<bool>::failure(
        QStringLiteral("There is no database role %1; create it first (CREATE ROLE %1 LOGIN).").arg(role));
  }
  const QVariantList& row = *found.value();
  if (row.at(0).toBool()) {
    return Result<bool>::failure(
        QStringLiteral("Role %1 is a superuser: whatever it is granted, it could empty the audit trail.").arg(role));
  }
  if (row.at(1).toBool()) {
    return Result<bool>::failure(
        QStringLiteral("Role %1 is the role that creates the tables; the service needs a role of its own.").arg(role));
  }
  for (const QString& statement : serviceRoleStatements(role, row.at(2).toString())) {
    if (Result<QSqlQuery> done = sql.run(statement); !done) {
      return Result<bool>::failure(done.error());
    }
  }
  return true;
}

Result<QString> serviceRoleProblem(const QString& connectionName) {
  const Result<Sql> connection = Sql::onConnection(connectionName);
  if (!connection) {
    return Result<QString>::failure(connection.error());
  }
  const Sql& sql = connection.value();
  if (sql.dialect().kind() != SqlDialect::Kind::Postgres) {
    return QString();
  }
  Result<std::optional<QVariantList>> found = sql.firstRow(QStringLiteral(
      "SELECT r.rolsuper, pg_has_role(current_user, c.relowner, 'USAGE'), current_user FROM pg_roles r, pg_class c "
      "WHERE r.rolname = current_user AND c.relnamespace = current_schema()::regnamespace "
      "AND c.relname = 'audit_trail'"));
  if (!found) {
    return Result<QString>::failure(found.error());
  }
  if (!found.value()) {
    return QString();
  }
  const QVariantList& row = *found.value();
  const QString user = row.at(2).toString();
  if (row.at(0).toBool()) {
    return QStringLiteral("it connects to PostgreSQL as %1, a superuser").arg(user);
  }
  if (row.at(1).toBool()) {
    return QStringLiteral("it connects to PostgreSQL as %1, which owns the host's tables").arg(user);
  }
  return QString();
}

Result<QString> schemaVersionProblem(const QString& connectionName) {
  const Result<Sql> connection = Sql::onConnection(connectionName);
  if (!connection) {
    return Result<QString>::failure(connection.error());
  }
  Result<qint64> version = connection->scalar(QStringLiteral("SELECT MAX(SCHEMA_VRSN) FROM SCHEMA_INFO"), {}, 0);
  if (!version) {
    return Result<QString>::failure(version.error());
  }
  if (version.value() == kSchemaVersion) {
    return QString();
  }
  if (version.value() < kSchemaVersion) {
    return QStringLiteral("The database's tables are of version %1, older than this host's %2: run adjustacc-host "
                          "init-db with this host to bring them up to date.")
        .arg(version.value())
        .arg(kSchemaVersion);
  }
  return QStringLiteral("The database's tables are of version %1, newer than this host knows (%2): run the host "
                        "that made them, or a newer one.")
      .arg(version.value())
      .arg(kSchemaVersion);
}

Result<bool> createSchema(const QString& connectionName) {
  const Result<Sql> connection = Sql::onConnection(connectionName);
  if (!connection) {
    return Result<bool>::failure(connection.error());
  }
  const Sql& sql = connection.value();
  for (const QString& statement : schemaStatements(sql.dialect())) {
    if (Result<QSqlQuery> done = sql.run(statement); !done) {
      return Result<bool>::failure(done.error());
    }
  }
  Result<qint64> rows = sql.scalar(QStringLiteral("SELECT COUNT(*) FROM SCHEMA_INFO"), {}, 0);
  if (!rows) {
    return Result<bool>::failure(rows.error());
  }
  if (rows.value() == 0) {
    if (Result<QSqlQuery> done = sql.run(QStringLiteral("INSERT INTO SCHEMA_INFO (SCHEMA_VRSN) VALUES (?)"),
                                         {kSchemaVersion});
        !done) {
      return Result<bool>::failure(done.error());
    }
    return true;
  }
  return upgradeSchema(sql);
}

}  // namespace adjustacc::host
