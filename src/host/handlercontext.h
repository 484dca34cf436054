#pragma once
// What every request handler works with: the connection, the officer who asks, the clock and the request;
// and what it answers: named reply sections, or the text of a refusal.

#include "audit.h"
#include "dutyseparation.h"
#include "rights.h"
#include "sqlutil.h"

#include "messaging/protocolwords.h"
#include "messaging/recordset.h"
#include "messaging/request.h"
#include "messaging/result.h"

#include <QDate>
#include <QDateTime>
#include <QMap>
#include <QSqlQuery>
#include <QString>

#include <initializer_list>
#include <vector>

namespace adjustacc::host {

// The protocol's words (shared with the screens): parameters, reply sections, save records.
namespace params = messaging::params;
namespace sectionnames = messaging::sectionnames;
namespace saverecords = messaging::saverecords;

using Sections = QMap<QString, messaging::RecordSet>;
using Outcome = messaging::Result<Sections>;

struct Context {
  const Sql& sql;
  const Officer& officer;
  QDate today;      // the agency's calendar day
  QDateTime now;    // UTC, for time stamps
  const messaging::Request& request;
  DutySeparation duties = DutySeparation::NeighbouringSteps;  // which worksheet officers must differ

  WriteContext writeContext() const { return {officer.id, request.requestId, now}; }
  QString param(const QString& key) const { return request.param(key).trimmed(); }
};

inline Outcome refuse(const QString& text) { return Outcome::failure(text); }

// How a query column becomes a reply cell.
enum class Cell {
  Text,       // as stored (null stays null)
  Money,      // whole cents -> "1234.50"
  Day,        // "yyyy-mm-dd"
  Timestamp,  // "yyyy-mm-dd HH:MM:SS"
};

struct Source {
  const char16_t* field;
  Cell cell = Cell::Text;
};

// Builds reply sections laid out exactly as the catalogue's reply layout of that name: the fields the
// catalogue lists, in its order; the fields no source fills stay null (the screens fill descriptions).
// Column i of the query feeds sources[i].
class SectionBuilder {
public:
  SectionBuilder(const QString& layoutName, std::initializer_list<Source> sources);

  // The section's name on the wire ("ACNTSRCVBL" for the layout "ACNTSRCVBL:PAYMENTS").
  const QString& sectionName() const { return m_section; }
  // An open, empty record set with the layout's fields.
  messaging::RecordSet empty() const;
  // Every row of the query, appended in order.
  messaging::RecordSet build(QSqlQuery& query, int expectedRows = 0) const;
  // Runs `statement` and builds from it.
  messaging::Result<messaging::RecordSet> run(const Sql& sql, const QString& statement,
                                              const QVariantList& values = {}, int expectedRows = 0) const;
  // Adds a section from `statement` to `sections`; false (with `error`) when the statement failed.
  bool addTo(Sections& sections, const Sql& sql, const QString& statement, const QVariantList& values,
             QString& error) const;

  // How many query columns feed it (one per source).
  int columnCount() const { return static_cast<int>(m_slots.size()); }
  // Appends the current row of `query` to the set behind `writer`, reading the sources from column
  // `firstColumn` on.
  void appendRow(messaging::RecordSetWriter& writer, const QSqlQuery& query, int firstColumn = 0) const;

private:
  QString m_section;
  QList<messaging::Field> m_fields;
  struct Slot {
    int field;
    Cell cell;
  };
  std::vector<Slot> m_slots;
};

// Several sections that must agree with each other, read together. Where statements travel to a database
// server (see SqlDialect::statementsTravel) they are read with one statement, which sees one state of the
// database by itself, so that no transaction is needed around it (on PostgreSQL one round trip instead of
// four): the parts' selects joined by UNION ALL, each row starting with its part's number (1, 2, ...), then
// the columns of every part in turn, those of the other parts null; rows come part after part, each part in
// its own order. In process each part is read by its own statement (the host's read transaction makes them
// agree), which keeps the rows narrow.
class SectionUnion {
public:
  struct Part {
    const SectionBuilder* builder;
    QStringList columns;      // one expression per source of the builder
    QString from;             // "FROM ... WHERE ...", with "?" for values
    QList<int> orderBy;       // indexes into `columns`, ascending
  };
  explicit SectionUnion(QList<Part> parts);

  // The one statement, and the statement of each part.
  const QString& statement() const { return m_statement; }
  const QString& partStatement(qsizetype part) const { return m_partStatements.at(part); }

  // Reads the sections with the values of each part's "?" in order (`values` holds one list per part) and
  // adds them to `sections`; false (with `error`) when a statement failed.
  bool addTo(Sections& sections, const Sql& sql, const QList<QVariantList>& values, QString& error) const;

private:
  bool addJoined(Sections& sections, const Sql& sql, const QList<QVariantList>& values, QString& error) const;

  QList<Part> m_parts;
  QString m_statement;
  QStringList m_partStatements;
};

// Layout mismatches met while building sections (a field the catalogue lacks): empty in a sound build.
QStringList sectionBuilderProblems();

}  // namespace adjustacc::host
