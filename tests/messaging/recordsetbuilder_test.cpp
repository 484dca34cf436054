#include "messaging/jsoncodec.h"
#include "messaging/recordsetbuilder.h"
#include "messaging/sections.h"

#include <gtest/gtest.h>

namespace adjustacc::messaging {
namespace {

using namespace Qt::StringLiterals;

Reply replyWith(const QString& section, RecordSet set, const QString& requestId = u"id-1"_s) {
  Reply reply;
  reply.replyTo = u"AdjustAcc"_s;
  reply.requestId = requestId;
  reply.sections.insert(section, std::move(set));
  return reply;
}

TEST(RecordSetBuilder, EmptySetIsLaidOutAsTheSection) {
  for (const QString& name : {u"ACNTSRCVBL"_s, u"RECEIPT"_s, u"CUSTOMERFORM"_s, u"ACNTSRCVBL:PAYMENTS"_s}) {
    const RecordSetPtr set = RecordSetBuilder::empty(name);
    ASSERT_NE(set, nullptr);
    EXPECT_TRUE(set->isOpen()) << name.toStdString();
    EXPECT_EQ(set->recordCount(), 0);
    EXPECT_EQ(set->fields(), sections::layout(name)->fields) << name.toStdString();
  }
  const RecordSetPtr unknown = RecordSetBuilder::empty(u"NO_SUCH_SECTION"_s);
  ASSERT_NE(unknown, nullptr);
  EXPECT_TRUE(unknown->isOpen());
  EXPECT_EQ(unknown->fieldCount(), 0);

  // A reply without the section asked for gives its empty layout too.
  const Reply reply = replyWith(u"RECEIPT"_s, RecordSet({{u"RCPT_NBR"_s, FieldType::Text}}));
  const RecordSetPtr missing = RecordSetBuilder::build(reply, u"ACNTSRCVBL"_s, u"id-1"_s);
  ASSERT_NE(missing, nullptr);
  EXPECT_TRUE(missing->isOpen());
  EXPECT_EQ(missing->recordCount(), 0);
  EXPECT_EQ(missing->fields(), sections::layout(u"ACNTSRCVBL"_s)->fields);
}

TEST(RecordSetBuilder, AppliesCatalogueTypesAndAddsMissingFieldsAsNull) {
  // A section typed all as text and lacking most of the layout, as a careless producer might send it.
  RecordSet sent({{u"RCPT_NBR"_s, FieldType::Text}, {u"TOT_PYMT_AMT"_s, FieldType::Text},
                  {u"RCPT_DT"_s, FieldType::Text}, {u"EXTRA_NOTE"_s, FieldType::Text}});
  sent.addNew({u"2"_s, u"100.00"_s, u"2024-02-01"_s, u"x"_s});
  sent.addNew({u"1"_s, u"9.50"_s, u"2024-01-15"_s, QVariant()});
  const RecordSetPtr set = RecordSetBuilder::build(replyWith(u"RECEIPT"_s, sent), u"RECEIPT"_s, u"id-1"_s);

  const SectionLayout* layout = sections::layout(u"RECEIPT"_s);
  ASSERT_EQ(set->recordCount(), 2);
  EXPECT_EQ(set->fields()[set->fieldIndex(u"TOT_PYMT_AMT"_s)].type, FieldType::Number);
  EXPECT_EQ(set->fields()[set->fieldIndex(u"RCPT_DT"_s)].type, FieldType::Date);
  EXPECT_EQ(set->fields()[set->fieldIndex(u"EXTRA_NOTE"_s)].type, FieldType::Text);
  for (const Field& field : layout->fields)
    EXPECT_TRUE(set->hasField(field.name)) << field.name.toStdString();
  EXPECT_TRUE(set->isNullAt(0, set->fieldIndex(u"CNFRMTN_NBR"_s)));
  EXPECT_EQ(set->valueAt(1, u"TOT_PYMT_AMT"_s).toString(), u"9.50"_s);
  EXPECT_TRUE(set->isNullAt(1, set->fieldIndex(u"EXTRA_NOTE"_s)));
  EXPECT_EQ(set->absolutePosition(), 0);

  // The types are what the record set sorts by: amounts as numbers, not as text.
  ASSERT_FALSE(set->setSort(u"TOT_PYMT_AMT"_s).has_value());
  EXPECT_EQ(set->valueAt(0, u"TOT_PYMT_AMT"_s).toString(), u"9.50"_s);
}

TEST(RecordSetBuilder, VariantLayoutReadsItsWireSection) {
  const Reply reply = decodeReply(
      R"({"replyTo":"A","requestId":"id-1","error":"","sections":{"ACNTSRCVBL":{"fields":["ACCT_RCVBL_NBR","CL_PYMT_AMT"],
      "rows":[["0001234","25.00"]]}}})");
  ASSERT_TRUE(reply.ok()) << reply.error.toStdString();
  const RecordSetPtr payments = RecordSetBuilder::build(reply, QString(sections::kReceiptPayments), u"id-1"_s);
  ASSERT_EQ(payments->recordCount(), 1);
  EXPECT_EQ(payments->valueAt(0, u"CL_PYMT_AMT"_s).toString(), u"25.00"_s);
  // Laid out as the payments grid needs it, not as the account list.
  EXPECT_TRUE(payments->hasField(u"ACTION"_s));
  EXPECT_TRUE(payments->hasField(u"ACTVTY_STTS_CD"_s));
  EXPECT_FALSE(payments->hasField(u"LTE_FEE_AMT"_s));
}

TEST(RecordSetBuilder, GivesNoRowsOfAFailedOrForeignReply) {
  RecordSet sent({{u"RCPT_NBR"_s, FieldType::Text}});
  sent.addNew({u"1"_s});
  Reply failed = replyWith(u"RECEIPT"_s, sent);
  failed.error = u"refused"_s;
  Reply timedOut = replyWith(u"RECEIPT"_s, sent);
  timedOut.timedOut = true;
  const Reply other = replyWith(u"RECEIPT"_s, sent, u"id-9"_s);

  EXPECT_EQ(RecordSetBuilder::build(failed, u"RECEIPT"_s)->recordCount(), 0);
  EXPECT_EQ(RecordSetBuilder::build(timedOut, u"RECEIPT"_s)->recordCount(), 0);
  EXPECT_EQ(RecordSetBuilder::build(other, u"RECEIPT"_s, u"id-1"_s)->recordCount(), 0);
  // An empty id matches any reply.
  EXPECT_EQ(RecordSetBuilder::build(other, u"RECEIPT"_s)->recordCount(), 1);
}

TEST(RecordSetBuilder, UnknownSectionIsReadAsText) {
  RecordSet sent({{u"WHATEVER"_s, FieldType::Number}});
  sent.addNew({u"12"_s});
  const RecordSetPtr set = RecordSetBuilder::build(replyWith(u"ODDITY"_s, sent), u"ODDITY"_s);
  ASSERT_EQ(set->recordCount(), 1);
  EXPECT_EQ(set->fields(), (QList<Field>{{u"WHATEVER"_s, FieldType::Text}}));
}

}  // namespace
}  // namespace adjustacc::messaging
