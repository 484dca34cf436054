// The row writer that builds large reply sections: its rows must be exactly the rows addNew stores, and a row
// it gives up (cleared, refused, or abandoned) must leave no trace in the set or in copies that share it.
#include "messaging/recordset.h"

#include <QDate>

#include <gtest/gtest.h>

using namespace adjustacc::messaging;
using namespace Qt::StringLiterals;

namespace {

const QList<Field> kFields = {{u"NAME"_s, FieldType::Text},
                              {u"AMT"_s, FieldType::Number},
                              {u"DT"_s, FieldType::Date},
                              {u"NOTE"_s, FieldType::Text}};

void expectSameRows(const RecordSet& actual, const RecordSet& expected) {
  ASSERT_EQ(actual.recordCount(), expected.recordCount());
  for (int row = 0; row < expected.recordCount(); ++row) {
    for (int field = 0; field < expected.fieldCount(); ++field) {
      SCOPED_TRACE(testing::Message() << "row " << row << " field " << field);
      EXPECT_EQ(actual.isNullAt(row, field), expected.isNullAt(row, field));
      EXPECT_EQ(actual.valueAt(row, field), expected.valueAt(row, field));
    }
  }
}

}  // namespace

TEST(RecordSetWriter, RowsAreThoseAddNewStoresForEveryKindOfValue) {
  const QString longText = QString(300, u'x') + u"Straße"_s;  // past the short ASCII path, then non-ASCII
  RecordSet byAddNew(kFields);
  byAddNew.addNew({u"SMITH"_s, 1250, QDate(2026, 3, 1), QVariant()});
  byAddNew.addNew({u"Müller €"_s, -7, QVariant(), u""_s});
  byAddNew.addNew({longText, QVariant(), u"2026-11-21"_s, u"second"_s});
  byAddNew.addNew({});

  RecordSet written(kFields);
  RecordSetWriter writer(written);
  writer.setText(0, u"SMITH");
  writer.setNumber(1, 1250);
  writer.setValue(2, QDate(2026, 3, 1));
  writer.setValue(3, QVariant());
  EXPECT_EQ(writer.appendRow(), 0);
  writer.setUtf8(0, "M\xC3\xBCller \xE2\x82\xAC");
  writer.setValue(1, -7);
  writer.setText(3, u"");  // empty text is not null
  writer.appendRow();
  writer.setText(0, longText);
  writer.setText(2, u"2026-11-21");
  writer.setText(3, u"first");
  writer.setText(3, u"second");  // the last value set wins
  writer.appendRow();
  writer.appendRow();  // nothing set: a row of nulls

  expectSameRows(written, byAddNew);
  EXPECT_EQ(written.absolutePosition(), 3) << "the added row is current, as with addNew";
}

TEST(RecordSetWriter, AGivenUpRowLeavesNoTraceAndSharedCopiesKeepTheirRows) {
  RecordSet set(kFields);
  set.addNew({u"KEEP"_s, 1});
  const RecordSet before = set;  // shares the storage until the writer writes
  {
    RecordSetWriter writer(set);
    writer.setText(0, u"DROPPED");
    writer.setNumber(1, 99);
    writer.clearRow();
    writer.setText(0, u"NEXT");
    writer.setNull(1);
    writer.setText(1, u"5");
    writer.setNull(1);  // set, then null again
    writer.appendRow();
    writer.setText(0, u"ABANDONED");  // the writer goes away with this row half gathered
  }
  ASSERT_EQ(set.recordCount(), 2);
  EXPECT_EQ(set.valueAt(1, 0).toString(), u"NEXT"_s);
  EXPECT_TRUE(set.isNullAt(1, 1));
  ASSERT_EQ(before.recordCount(), 1);
  EXPECT_EQ(before.valueAt(0, 0).toString(), u"KEEP"_s);

  // The text of given-up rows is not left behind as live text: a filter over every row sees only real ones.
  ASSERT_FALSE(set.setFilter(u"NAME LIKE '*D*'"_s).has_value());
  EXPECT_EQ(set.recordCount(), 0);
}

TEST(RecordSetWriter, ARowIsRefusedWhenTheSetWasCopiedOrClosedMeanwhile) {
  RecordSet set(kFields);
  RecordSetWriter writer(set);
  writer.setText(0, u"HALF");
  const RecordSet copy = set;  // taken while the row is half gathered
  EXPECT_EQ(writer.appendRow(), kNoBookmark);
  EXPECT_EQ(set.recordCount(), 0);
  EXPECT_EQ(copy.recordCount(), 0);

  // The writer starts afresh for the next row.
  writer.setText(0, u"WHOLE");
  EXPECT_EQ(writer.appendRow(), 0);
  EXPECT_EQ(set.valueAt(0, 0).toString(), u"WHOLE"_s);
  EXPECT_EQ(copy.recordCount(), 0);

  set.close();
  writer.setText(0, u"LATE");
  EXPECT_EQ(writer.appendRow(), kNoBookmark);
  EXPECT_FALSE(set.isOpen());
}

TEST(RecordSetWriter, AFieldOutOfRangeDropsOnlyThatValue) {
  RecordSet set(kFields);
  RecordSetWriter writer(set);
  writer.setText(0, u"A");
  writer.setText(7, u"nowhere");
  writer.setNumber(-1, 3);
  EXPECT_EQ(writer.appendRow(), 0);
  EXPECT_EQ(set.valueAt(0, 0).toString(), u"A"_s);
  EXPECT_TRUE(set.isNullAt(0, 1));
}
