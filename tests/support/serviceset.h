#pragma once
// Everything a screen needs, owned in one place: the services object as an opener hands it to a screen,
// with a scripted Ui, a scripted host link, a fixed clock (2024-03-07 10:00) and code tables in memory.

#include "messaging/recordset.h"
#include "messaging/result.h"
#include "messaging/scriptedlink.h"
#include "platform/checkdigit.h"
#include "platform/clock.h"
#include "platform/codetablequery.h"
#include "platform/codetablesource.h"
#include "platform/errorreporter.h"
#include "platform/fieldmarking.h"
#include "platform/formnumbervalidator.h"
#include "platform/keyfilters.h"
#include "platform/memorycodelookup.h"
#include "platform/nextnumber.h"
#include "platform/printing.h"
#include "platform/scriptedui.h"
#include "platform/services.h"
#include "platform/sessionsettings.h"
#include "platform/statusbar.h"
#include "platform/troopdistricts.h"
#include "platform/user.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <memory>

namespace adjustacc::testsupport {

// Code box rows held in memory by code table. A query text is read back as the real source reads it (a text of
// another shape is refused the same way) and answered with the table's rows in the order they were added; the
// dates of the text are not applied. Every text asked is kept.
class ScriptedCodeTables : public platform::CodeTableSource {
public:
  void add(const QString& table, const QString& code, const QString& description) {
    m_rows[table.toUpper()].append({code, description});
  }
  messaging::Result<messaging::RecordSet> run(const QString& queryText) override {
    using R = messaging::Result<messaging::RecordSet>;
    m_queries.append(queryText);
    const messaging::Result<platform::CodeTableQuery> query = platform::CodeTableQuery::parse(queryText);
    if (!query) {
      return R::failure(query.error());
    }
    const QString table = query->table.toUpper();
    if (!m_rows.contains(table)) {
      return R::failure(QStringLiteral("no code table %1 in this test").arg(table));
    }
    messaging::RecordSet rows({{QStringLiteral("CD_TBL_ID"), messaging::FieldType::Text},
                               {QStringLiteral("CD_TBL_CD"), messaging::FieldType::Text},
                               {QStringLiteral("CD_TBL_DES"), messaging::FieldType::Text}});
    for (const auto& [code, description] : m_rows.value(table)) {
      rows.addNew({table, code, description});
    }
    rows.moveFirst();
    return rows;
  }
  const QStringList& queries() const { return m_queries; }

private:
  QMap<QString, QList<std::pair<QString, QString>>> m_rows;
  QStringList m_queries;
};

class NoPrinting : public platform::PrintComponentFactory {
public:
  std::unique_ptr<platform::PrintComponent> createPrintComponent() override { return nullptr; }
};

class NoTemplates : public platform::TemplateLookup {
public:
  QString templatePath(int) override { return {}; }
};

struct ServiceSet {
  platform::ScriptedUi ui;
  messaging::ScriptedLink link;
  platform::Clock clock{QDateTime(QDate(2024, 3, 7), QTime(10, 0))};
  platform::User user{QStringLiteral("OFC7"), QStringLiteral("Pat Officer"), QStringLiteral("NORTH")};
  platform::SessionSettings session;
  platform::StatusBar statusBar;
  platform::ErrorReporter errors{ui};
  platform::MemoryCodeLookup codes;
  ScriptedCodeTables codeTables;
  platform::KeyFilters keyFilters{codes};
  platform::CheckDigit checkDigit;
  platform::FormNumberValidator formNumbers{codes};
  platform::TroopDistricts troopDistricts{codes};
  platform::NextNumber numbers{link, session, user};
  platform::FieldMarking fieldMarking;
  NoPrinting printing;
  NoTemplates templates;
  platform::Services services{ui,           link,          clock,        user,        session,    statusBar,
                              errors,       codes,         codeTables,   keyFilters,  checkDigit, formNumbers,
                              troopDistricts, numbers,     fieldMarking, printing,    templates};
};

}  // namespace adjustacc::testsupport
