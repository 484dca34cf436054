#include "messaging/sections.h"

#include <QSet>

#include <gtest/gtest.h>

namespace adjustacc::messaging {
namespace {

using namespace Qt::StringLiterals;

TEST(SectionCatalogue, EveryLayoutFieldIsInTheDictionaryAndEveryEntryIsUsed) {
  QSet<QString> used;
  for (const SectionLayout& layout : sections::allLayouts()) {
    QSet<QString> seen;
    for (const Field& field : layout.fields) {
      const FieldInfo* info = sections::fieldInfo(field.name);
      ASSERT_NE(info, nullptr) << layout.name.toStdString() << "." << field.name.toStdString();
      EXPECT_EQ(info->name, field.name) << "names are written in upper case, as the dictionary has them";
      EXPECT_EQ(field.type, info->type) << layout.name.toStdString() << "." << field.name.toStdString();
      EXPECT_FALSE(seen.contains(field.name.toUpper()))
          << field.name.toStdString() << " twice in " << layout.name.toStdString();
      seen.insert(field.name.toUpper());
      used.insert(field.name);
    }
  }
  for (const FieldInfo& info : sections::allFields())
    EXPECT_TRUE(used.contains(info.name)) << info.name.toStdString() << " is in no layout";
}

TEST(SectionCatalogue, LayoutNamesAreUniquePerKindAndVariantsNameTheirSection) {
  QSet<QString> reply;
  QSet<QString> save;
  for (const SectionLayout& layout : sections::allLayouts()) {
    QSet<QString>& names = layout.kind == LayoutKind::ReplySection ? reply : save;
    EXPECT_FALSE(names.contains(layout.name)) << layout.name.toStdString();
    names.insert(layout.name);
    EXPECT_EQ(sections::layout(layout.name, layout.kind), &layout);
    EXPECT_FALSE(layout.purpose.isEmpty());
    const QString expectedSection = layout.name.contains(u':') ? layout.name.section(u':', 0, 0) : layout.name;
    EXPECT_EQ(layout.section, expectedSection);
  }
  EXPECT_EQ(sections::layout(QString(sections::kReceiptPayments))->section, u"ACNTSRCVBL"_s);
  EXPECT_EQ(sections::layout(QString(sections::kRefundInformation))->section, u"REFUND"_s);
}

TEST(SectionCatalogue, ReplySectionsAndSaveRecordsOfOneNameAreKeptApart) {
  EXPECT_TRUE(sections::layout(u"ASSESSMENT"_s)->hasField(u"CUST_NM"_s));
  EXPECT_FALSE(sections::layout(u"ASSESSMENT"_s, LayoutKind::SaveRecord)->hasField(u"CUST_NM"_s));
  EXPECT_EQ(sections::layout(u"ADJUSTAR"_s), nullptr) << "ADJUSTAR is only ever sent";
  EXPECT_EQ(sections::layout(u"acntsrcvbl"_s), nullptr) << "section names are exact";
}

TEST(SectionCatalogue, TypesFollowTheFieldKinds) {
  const QSet<QString> textDates = {u"EXPRTN_MO_DT"_s, u"EXPRTN_DY_DT"_s, u"EXPRTN_YR_DT"_s};
  for (const FieldInfo& info : sections::allFields()) {
    const std::string name = info.name.toStdString();
    if (info.name.endsWith(u"_AMT"_s) || info.name == u"BAL_DUE"_s) {
      EXPECT_EQ(info.type, FieldType::Number) << name;
    } else if (info.name.endsWith(u"_DT"_s) && !textDates.contains(info.name)) {
      EXPECT_EQ(info.type, FieldType::Date) << name;
    } else if (info.name.endsWith(u"_CD"_s) || info.name.endsWith(u"_ID"_s) || info.name.endsWith(u"_TM"_s) ||
               textDates.contains(info.name)) {
      EXPECT_EQ(info.type, FieldType::Text) << name;
    }
  }
  EXPECT_EQ(sections::fieldType(u"dt_mld"_s), FieldType::Date);
  EXPECT_EQ(sections::fieldType(u"LST_UPDT_TS"_s), FieldType::DateTime);
  EXPECT_EQ(sections::fieldType(u"NO_SUCH_FIELD"_s), std::nullopt);
}

struct ScreenColumn {
  const char* layout;
  const char* field;
};

class LayoutCarriesScreenColumn : public ::testing::TestWithParam<ScreenColumn> {};

// Columns that lists bind to but that screens fill themselves, and fields that screens read by name: the
// layout must carry them even when the host leaves them out.
TEST_P(LayoutCarriesScreenColumn, Present) {
  const SectionLayout* layout = sections::layout(QString::fromLatin1(GetParam().layout));
  ASSERT_NE(layout, nullptr);
  EXPECT_TRUE(layout->hasField(QString::fromLatin1(GetParam().field)));
}

INSTANTIATE_TEST_SUITE_P(
    Lists, LayoutCarriesScreenColumn,
    ::testing::Values(ScreenColumn{"ACNTSRCVBL", "FORM_DESC"}, ScreenColumn{"ACNTSRCVBL", "STTS_DESC"},
                      ScreenColumn{"RECEIPT", "STTS_DESC"}, ScreenColumn{"CUSTOMERFORM", "FORM_NUMBER"},
                      ScreenColumn{"CUSTOMERFORM", "CTTN_STTS_TXT"}, ScreenColumn{"FUND", "FUND_EXPR"},
                      ScreenColumn{"ACNTSRCVBL:PAYMENTS", "ACTVTY_STTS_DES"},
                      ScreenColumn{"ACNTSRCVBL:PAYMENTS", "ACTION"}, ScreenColumn{"OVERPAYMENT", "ZIP"},
                      ScreenColumn{"ACCOUNTACTIVITY", "ACTION"}, ScreenColumn{"GetFormNumber", "U"}));

SaveRecord record(std::initializer_list<std::pair<QString, QVariant>> fields) {
  SaveRecord saved;
  for (const auto& [name, value] : fields)
    saved.setField(name, value);
  return saved;
}

TEST(SaveRecordCheck, AcceptsWellFormedRecordsWithNullAndEmptyValues) {
  const QList<RecordList> lists = {
      {u"ADJUSTAR"_s, {record({{u"ACTION"_s, u"ADD"_s}, {u"ADJSTMT_DT"_s, u"2024-02-29"_s},
                               {u"ADJSTMT_TYP_CD"_s, u""_s}, {u"ADJST_CMMT_TXT"_s, QVariant()}})}},
      {u"ASSESSMENT"_s, {record({{u"CL_ASMT_AMT"_s, u"-1234.50"_s}, {u"BAL_DUE_AMT"_s, u"0"_s}}),
                         record({{u"AC_ASMT_AMT"_s, u""_s}})}},
      {u"ACCOUNTACTIVITY"_s, {record({{u"LST_UPDT_TS"_s, u"2024-02-29 13:45:10"_s}}),
                              record({{u"LST_UPDT_TS"_s, u"2024-02-29T13:45"_s}})}}};
  EXPECT_EQ(sections::checkSaveRecords(lists), QString());
}

struct BadSave {
  const char* name;
  QList<RecordList> lists;
  const char* expected;
};

class SaveRecordRefused : public ::testing::TestWithParam<BadSave> {};

TEST_P(SaveRecordRefused, SaysWhy) {
  const QString problem = sections::checkSaveRecords(GetParam().lists);
  EXPECT_TRUE(problem.contains(QString::fromUtf8(GetParam().expected))) << problem.toStdString();
}

INSTANTIATE_TEST_SUITE_P(
    EachCase, SaveRecordRefused,
    ::testing::Values(
        BadSave{"UnknownRecordSet", {{u"FUND"_s, {record({{u"FUND_AMT"_s, u"1"_s}})}}},
                "records named \"FUND\", which this system does not save"},
        BadSave{"FieldOfAnotherRecord", {{u"ADJUSTPAY"_s, {record({{u"ACTION"_s, u"ADD"_s}}), record({{u"CUST_ID"_s, u"1"_s}})}}},
                "Record 2 of \"ADJUSTPAY\" has a field \"CUST_ID\""},
        BadSave{"LowerCaseField", {{u"ADJUSTPAY"_s, {record({{u"action"_s, u"ADD"_s}})}}}, "field \"action\""},
        BadSave{"MoneyWithFormatting", {{u"REFUND"_s, {record({{u"RFND_AMT"_s, u"$1,234.50"_s}})}}},
                "the value \"$1,234.50\" of RFND_AMT is not valid: a number"},
        BadSave{"NumberWithBlank", {{u"REFUND"_s, {record({{u"RFND_AMT"_s, u" 12"_s}})}}}, "of RFND_AMT"},
        BadSave{"DateAsTyped", {{u"REFUND"_s, {record({{u"DT_MLD"_s, u"01/02/2006"_s}})}}},
                "a date written yyyy-mm-dd"},
        BadSave{"ImpossibleDate", {{u"ADJUSTPAY"_s, {record({{u"ADJSTMT_DT"_s, u"2023-02-29"_s}})}}}, "ADJSTMT_DT"},
        BadSave{"BadTimeStamp", {{u"ACCOUNTACTIVITY"_s, {record({{u"LST_UPDT_TS"_s, u"2024-02-29 25:00"_s}})}}},
                "a time stamp"}),
    [](const ::testing::TestParamInfo<BadSave>& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace adjustacc::messaging
