#include "messaging/jsoncodec.h"

#include <gtest/gtest.h>

namespace adjustacc::messaging {
namespace {

using namespace Qt::StringLiterals;

QByteArray replyJson(const QByteArray& sections, const QByteArray& error = "\"\"") {
  return R"({"replyTo":"AdjustAcc","requestId":"r-1","error":)" + error + R"(,"sections":)" + sections + "}";
}

TEST(ReplyDecoding, ReadsSectionsWithCatalogueTypesAndKeepsNullApartFromEmpty) {
  const Reply reply = decodeReply(replyJson(
      R"({"RECEIPT":{"fields":["RCPT_NBR","TOT_PYMT_AMT","RCPT_DT","NOT_IN_CATALOGUE"],
          "rows":[["0000042","12.50","2024-03-01",""],[null,"3","2024-01-09",null]]}})"));
  ASSERT_TRUE(reply.ok()) << reply.error.toStdString();
  EXPECT_EQ(reply.replyTo, u"AdjustAcc"_s);
  EXPECT_EQ(reply.requestId, u"r-1"_s);
  const RecordSet* receipts = reply.section(u"RECEIPT"_s);
  ASSERT_NE(receipts, nullptr);
  ASSERT_EQ(receipts->recordCount(), 2);
  const QList<Field> expected = {{u"RCPT_NBR"_s, FieldType::Text},
                                 {u"TOT_PYMT_AMT"_s, FieldType::Number},
                                 {u"RCPT_DT"_s, FieldType::Date},
                                 {u"NOT_IN_CATALOGUE"_s, FieldType::Text}};
  EXPECT_EQ(receipts->fields(), expected);
  EXPECT_EQ(receipts->valueAt(0, 0), QVariant(u"0000042"_s));
  EXPECT_FALSE(receipts->isNullAt(0, 3));
  EXPECT_EQ(receipts->valueAt(0, 3).toString(), QString());
  EXPECT_TRUE(receipts->isNullAt(1, 0));
  EXPECT_TRUE(receipts->isNullAt(1, 3));
}

TEST(ReplyDecoding, ReadsEscapesAndUnicode) {
  const Reply reply = decodeReply(replyJson(
      R"({"S":{"fields":["T"],"rows":[["a\"b\\c\/d\n\r\t\b\f"],["\u00e9\u20ac\ud83d\ude00"],["h\u00e9 é"]]}})"));
  ASSERT_TRUE(reply.ok()) << reply.error.toStdString();
  const RecordSet* set = reply.section(u"S"_s);
  ASSERT_NE(set, nullptr);
  EXPECT_EQ(set->valueAt(0, 0).toString(), u"a\"b\\c/d\n\r\t\b\f"_s);
  EXPECT_EQ(set->valueAt(1, 0).toString(), QString::fromUtf8("\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80"));
  EXPECT_EQ(set->valueAt(2, 0).toString(), QString::fromUtf8("h\xc3\xa9 \xc3\xa9"));
}

TEST(ReplyDecoding, AcceptsRowsBeforeFieldsAndEmptySections) {
  const Reply reply = decodeReply(replyJson(
      R"({"FUND":{"rows":[["10.00","C"]],"fields":["FUND_AMT","FUND_TYP_CD"]},"EMPTY":{"fields":[],"rows":[]}})"));
  ASSERT_TRUE(reply.ok()) << reply.error.toStdString();
  ASSERT_EQ(reply.section(u"FUND"_s)->recordCount(), 1);
  EXPECT_EQ(reply.section(u"FUND"_s)->valueAt(0, u"FUND_TYP_CD"_s).toString(), u"C"_s);
  EXPECT_EQ(reply.section(u"EMPTY"_s)->recordCount(), 0);
}

TEST(ReplyDecoding, HostErrorIsKept) {
  const Reply reply = decodeReply(replyJson("{}", R"("Receipt 12 is not on file.")"));
  EXPECT_FALSE(reply.ok());
  EXPECT_EQ(reply.error, u"Receipt 12 is not on file."_s);
  EXPECT_FALSE(reply.timedOut);
}

struct BadReply {
  const char* name;
  QByteArray json;
  const char* expected;  // part of the error text
};

class ReplyMalformed : public ::testing::TestWithParam<BadReply> {};

TEST_P(ReplyMalformed, BecomesFailingReplyAddressedToTheRequest) {
  const BadReply& bad = GetParam();
  const Reply reply = decodeReply(bad.json, u"AdjustAccPayDetail1"_s, u"id-7"_s);
  EXPECT_FALSE(reply.ok());
  EXPECT_TRUE(reply.error.startsWith(u"The reply from the host system could not be read: "_s)) << reply.error.toStdString();
  EXPECT_TRUE(reply.error.contains(QString::fromUtf8(bad.expected))) << reply.error.toStdString();
  EXPECT_EQ(reply.replyTo, u"AdjustAccPayDetail1"_s);
  EXPECT_EQ(reply.requestId, u"id-7"_s);
  EXPECT_TRUE(reply.sections.isEmpty());
}

const QByteArray kRow = R"({"S":{"fields":["A","B"],"rows":[["1","2"]]}})";

INSTANTIATE_TEST_SUITE_P(
    EachKind, ReplyMalformed,
    ::testing::Values(
        BadReply{"Empty", "", "the text is empty"},
        BadReply{"NotAnObject", "[]", "an object is expected"},
        BadReply{"Truncated", replyJson(kRow).chopped(3), "is expected"},
        BadReply{"TrailingText", replyJson(kRow) + " x", "unexpected text after the end"},
        BadReply{"TrailingComma", R"({"replyTo":"a","requestId":"b","error":"","sections":{},})", "a member name"},
        BadReply{"MissingMember", R"({"replyTo":"a","requestId":"b","sections":{}})", "the member \"error\" is missing"},
        BadReply{"UnknownMember", R"({"replyTo":"a","requestId":"b","error":"","sections":{},"extra":1})",
                 "unexpected member \"extra\""},
        BadReply{"RepeatedMember", R"({"replyTo":"a","replyTo":"a","requestId":"b","error":"","sections":{}})",
                 "the member \"replyTo\" appears twice"},
        BadReply{"NumberForText", R"({"replyTo":5,"requestId":"b","error":"","sections":{}})",
                 "\"replyTo\": text in double quotes is expected"},
        BadReply{"NullError", R"({"replyTo":"a","requestId":"b","error":null,"sections":{}})", "\"error\""},
        BadReply{"SectionsArray", replyJson("[]"), "an object is expected"},
        BadReply{"NumberInRow", replyJson(R"({"S":{"fields":["A"],"rows":[[12]]}})"),
                 "section \"S\", row 1, value 1: text in double quotes or null is expected"},
        BadReply{"MisspeltNull", replyJson(R"({"S":{"fields":["A"],"rows":[[nul]]}})"), "\"null\" is misspelt"},
        BadReply{"ShortRow", replyJson(R"({"S":{"fields":["A","B"],"rows":[["1"]]}})"),
                 "row 1 has 1 values but the section has 2 fields"},
        BadReply{"LongRow", replyJson(R"({"S":{"fields":["A"],"rows":[["1","2"]]}})"),
                 "row 1 has more values than the 1 fields"},
        BadReply{"ShortRowBeforeFields", replyJson(R"({"S":{"rows":[["1"]],"fields":["A","B"]}})"),
                 "row 1 has 1 values but the section has 2 fields"},
        BadReply{"DuplicateField", replyJson(R"({"S":{"fields":["CUST_ID","cust_id"],"rows":[]}})"),
                 "the field \"cust_id\" appears twice"},
        BadReply{"EmptyFieldName", replyJson(R"({"S":{"fields":[""],"rows":[]}})"), "field name 1 is empty"},
        BadReply{"DuplicateSection",
                 replyJson(R"({"S":{"fields":[],"rows":[]},"S":{"fields":[],"rows":[]}})"),
                 "the section \"S\" appears twice"},
        BadReply{"EmptySectionName", replyJson(R"({"":{"fields":[],"rows":[]}})"), "a section name is empty"},
        BadReply{"SectionWithoutRows", replyJson(R"({"S":{"fields":["A"]}})"), "the member \"rows\" is missing"},
        BadReply{"RawControlCharacter", replyJson("{\"S\":{\"fields\":[\"A\"],\"rows\":[[\"a\tb\"]]}}"),
                 "a control character must be written as an escape"},
        BadReply{"UnknownEscape", replyJson(R"({"S":{"fields":["A"],"rows":[["\x41"]]}})"),
                 "is not an escape JSON knows"},
        BadReply{"ShortUnicodeEscape", replyJson(R"({"S":{"fields":["A"],"rows":[["\u12"]]}})"),
                 "four hexadecimal digits"},
        BadReply{"LoneHighSurrogate", replyJson(R"({"S":{"fields":["A"],"rows":[["\ud83d"]]}})"),
                 "without its second half"},
        BadReply{"LoneLowSurrogate", replyJson(R"({"S":{"fields":["A"],"rows":[["\ude00"]]}})"),
                 "without its first half"},
        BadReply{"BadUtf8", replyJson("{\"S\":{\"fields\":[\"A\"],\"rows\":[[\"\xc3\x28\"]]}}"),
                 "not valid UTF-8"},
        BadReply{"EncodedSurrogate", replyJson("{\"S\":{\"fields\":[\"A\"],\"rows\":[[\"\xed\xa0\x80\"]]}}"),
                 "not valid UTF-8"},
        BadReply{"Unterminated", R"({"replyTo":"abc)", "no closing double quote"}),
    [](const ::testing::TestParamInfo<BadReply>& row) { return std::string(row.param.name); });

TEST(ReplyDecoding, EnforcesSizeBounds) {
  // A value just at the bound is read; one character more is refused.
  const QByteArray atBound(jsonlimits::kMaxValueChars, 'x');
  EXPECT_TRUE(decodeReply(replyJson(R"({"S":{"fields":["A"],"rows":[[")" + atBound + R"("]]}})")).ok());
  const Reply longValue = decodeReply(replyJson(R"({"S":{"fields":["A"],"rows":[[")" + atBound + R"(y"]]}})"));
  EXPECT_TRUE(longValue.error.contains(u"longer than 65536 characters"_s)) << longValue.error.toStdString();
  // The same through the escaped path (each \u0041 is one character).
  QByteArray escaped;
  for (qsizetype i = 0; i <= jsonlimits::kMaxValueChars; ++i)
    escaped += "\\u0041";
  EXPECT_TRUE(decodeReply(replyJson(R"({"S":{"fields":["A"],"rows":[[")" + escaped + R"("]]}})"))
                  .error.contains(u"longer than 65536 characters"_s));

  const QByteArray longName(jsonlimits::kMaxNameChars + 1, 'N');
  EXPECT_TRUE(decodeReply(replyJson(R"({")" + longName + R"(":{"fields":[],"rows":[]}})"))
                  .error.contains(u"longer than 128 characters"_s));

  QByteArray manySections = "{";
  for (qsizetype i = 0; i <= jsonlimits::kMaxSections; ++i)
    manySections += (i ? "," : "") + QByteArray("\"S") + QByteArray::number(i) + R"(":{"fields":[],"rows":[]})";
  EXPECT_TRUE(decodeReply(replyJson(manySections + "}")).error.contains(u"more than 64 sections"_s));

  QByteArray manyFields = "[";
  for (qsizetype i = 0; i <= jsonlimits::kMaxFieldsPerSection; ++i)
    manyFields += (i ? ",\"F" : "\"F") + QByteArray::number(i) + "\"";
  EXPECT_TRUE(decodeReply(replyJson(R"({"S":{"fields":)" + manyFields + R"(],"rows":[]}})"))
                  .error.contains(u"more than 512 fields"_s));

  // Rows are counted over all sections together; empty rows count too.
  QByteArray rows = "[";
  for (qsizetype i = 0; i <= jsonlimits::kMaxRowsPerReply; ++i)
    rows += i ? ",[]" : "[]";
  rows += "]";
  const Reply manyRows = decodeReply(replyJson(R"({"S":{"fields":[],"rows":)" + rows + "}}"));
  EXPECT_TRUE(manyRows.error.contains(u"more than 1000000 rows"_s)) << manyRows.error.toStdString();

  QByteArray oversized(jsonlimits::kMaxReplyBytes + 1, ' ');
  const Reply tooLarge = decodeReply(oversized);
  EXPECT_TRUE(tooLarge.error.contains(u"more than the 67108864 bytes"_s)) << tooLarge.error.toStdString();
}

TEST(ReplyEncoding, RoundTripKeepsValuesNullsAndRowOrder) {
  Reply reply;
  reply.replyTo = u"AdjustAccPayDetail1"_s;
  reply.requestId = u"id-1"_s;
  RecordSet funds({{u"FUND_AMT"_s, FieldType::Number}, {u"FUND_TYP_CD"_s, FieldType::Text}});
  funds.addNew({u"10.00"_s, u"R"_s});
  funds.addNew({QVariant(), u""_s});
  funds.addNew({u"2.5"_s, u"line\r\nbreak \"quoted\" \x01 é"_s});
  reply.sections.insert(u"FUND"_s, funds);
  reply.sections.insert(u"OVERPAYMENT"_s, RecordSet({{u"OVR_PYMT_AMT"_s, FieldType::Number}}));

  const Reply decoded = decodeReply(encodeReply(reply));
  ASSERT_TRUE(decoded.ok()) << decoded.error.toStdString();
  EXPECT_EQ(decoded.replyTo, reply.replyTo);
  EXPECT_EQ(decoded.requestId, reply.requestId);
  ASSERT_EQ(decoded.sections.keys(), reply.sections.keys());
  const RecordSet& back = decoded.sections[u"FUND"_s];
  EXPECT_EQ(back.fields(), funds.fields());
  ASSERT_EQ(back.recordCount(), 3);
  for (int row = 0; row < 3; ++row) {
    for (int field = 0; field < 2; ++field) {
      EXPECT_EQ(back.isNullAt(row, field), funds.isNullAt(row, field)) << row << "," << field;
      EXPECT_EQ(back.valueAt(row, field), funds.valueAt(row, field)) << row << "," << field;
    }
  }
  EXPECT_EQ(decoded.sections[u"OVERPAYMENT"_s].recordCount(), 0);
}

TEST(ReplyEncoding, WritesTheRowsTheSetShows) {
  Reply reply;
  RecordSet set({{u"RCPT_NBR"_s, FieldType::Text}});
  for (const char* number : {"3", "1", "2"})
    set.addNew({QString::fromLatin1(number)});
  ASSERT_FALSE(set.setSort(u"RCPT_NBR"_s).has_value());
  ASSERT_FALSE(set.setFilter(u"RCPT_NBR <> '2'"_s).has_value());
  reply.sections.insert(u"RECEIPT"_s, set);
  const RecordSet back = decodeReply(encodeReply(reply)).sections.value(u"RECEIPT"_s);
  ASSERT_EQ(back.recordCount(), 2);
  EXPECT_EQ(back.valueAt(0, 0).toString(), u"1"_s);
  EXPECT_EQ(back.valueAt(1, 0).toString(), u"3"_s);
}

Request sampleRequest() {
  Request request;
  request.replyTo = u"AdjustAccAccDetail"_s;
  request.version = u"1.0"_s;
  request.code = 41;
  request.user = u"OFC123"_s;
  request.requestId = u"7d1c2f4e-0000-4000-8000-000000000001"_s;
  request.params = {{u"MARVENTO"_s, u"key:REF_TYP_CD"_s, u"="_s, u"C"_s},
                    {u"MARVENTO"_s, u"key:REF_NBR"_s, u"="_s, u"0001234-4"_s},
                    {u"MARVENTO"_s, u"key:LPO"_s, u"="_s, u""_s}};
  SaveRecord adjust;
  adjust.setField(u"ACTION"_s, u"ADD"_s);
  adjust.setField(u"ADJSTMT_TYP_CD"_s, u""_s);
  adjust.setField(u"ADJST_CMMT_TXT"_s, QVariant());
  adjust.setField(u"CUST_ID"_s, u"C-\"9\"\n"_s);
  SaveRecord first;
  first.setField(u"VLTN_ASSMT_STTS_CD"_s, u"I"_s);
  first.setField(u"ACTION"_s, u"UPD"_s);
  SaveRecord second;
  second.setField(u"ACTION"_s, u"UPD"_s);
  second.setField(u"BAL_DUE_AMT"_s, u"0"_s);
  // Record-set names out of alphabetical order, fields out of alphabetical order.
  request.records = {{u"ASSESSMENT"_s, {first, second}}, {u"ADJUSTAR"_s, {adjust}}, {u"CTTNADTNINFO"_s, {}}};
  return request;
}

TEST(RequestCoding, RoundTripKeepsEveryOrderAndNullApartFromEmpty) {
  const Request request = sampleRequest();
  const Result<Request> decoded = decodeRequest(encodeRequest(request));
  ASSERT_TRUE(decoded.ok()) << decoded.error().toStdString();
  EXPECT_EQ(decoded.value(), request);
  const SaveRecord& adjust = decoded->records[1].records[0];
  EXPECT_TRUE(adjust.field(u"ADJST_CMMT_TXT"_s).isNull());
  EXPECT_TRUE(adjust.hasField(u"ADJST_CMMT_TXT"_s));
  EXPECT_FALSE(adjust.field(u"ADJSTMT_TYP_CD"_s).isNull());
  EXPECT_EQ(adjust.field(u"ADJSTMT_TYP_CD"_s), QVariant(u""_s));
  EXPECT_EQ(decoded->params[0].key, u"key:REF_TYP_CD"_s);
}

struct BadRequest {
  const char* name;
  QByteArray json;
  const char* expected;
};

class RequestMalformed : public ::testing::TestWithParam<BadRequest> {};

TEST_P(RequestMalformed, IsRefusedWithItsReason) {
  const Result<Request> decoded = decodeRequest(GetParam().json);
  ASSERT_FALSE(decoded.ok());
  EXPECT_TRUE(decoded.error().startsWith(u"The request could not be read: "_s));
  EXPECT_TRUE(decoded.error().contains(QString::fromUtf8(GetParam().expected))) << decoded.error().toStdString();
}

QByteArray requestJson(const QByteArray& code, const QByteArray& params, const QByteArray& records) {
  return R"({"replyTo":"A","version":"1.0","code":)" + code + R"(,"user":"U","requestId":"I","params":)" + params +
         R"(,"records":)" + records + "}";
}

INSTANTIATE_TEST_SUITE_P(
    EachKind, RequestMalformed,
    ::testing::Values(
        BadRequest{"CodeAsText", requestJson(R"("47")", "[]", "{}"), "\"code\": a number is expected"},
        BadRequest{"CodeWithFraction", requestJson("47.5", "[]", "{}"), "a whole number is expected"},
        BadRequest{"CodeLeadingZero", requestJson("047", "[]", "{}"), "not written as JSON allows"},
        BadRequest{"CodeTooLarge", requestJson("2147483648", "[]", "{}"), "the number is too large"},
        BadRequest{"MissingRecords",
                   R"({"replyTo":"A","version":"1.0","code":1,"user":"U","requestId":"I","params":[]})",
                   "the member \"records\" is missing"},
        BadRequest{"ParamWithoutOp", requestJson("1", R"([{"system":"S","key":"k","value":"v"}])", "{}"),
                   "parameter 1: the member \"op\" is missing"},
        BadRequest{"ParamValueNull", requestJson("1", R"([{"system":"S","key":"k","op":"=","value":null}])", "{}"),
                   "parameter 1, \"value\": text in double quotes is expected"},
        BadRequest{"RecordValueNumber", requestJson("1", "[]", R"({"REFUND":[{"RFND_AMT":12}]})"),
                   "record set \"REFUND\", record 1, field \"RFND_AMT\""},
        BadRequest{"RecordFieldTwice", requestJson("1", "[]", R"({"REFUND":[{"A":"1","A":"2"}]})"),
                   "the field \"A\" appears twice"},
        BadRequest{"RecordSetTwice", requestJson("1", "[]", R"({"REFUND":[],"REFUND":[]})"),
                   "the record set \"REFUND\" appears twice"}),
    [](const ::testing::TestParamInfo<BadRequest>& row) { return std::string(row.param.name); });

TEST(RequestCoding, EnforcesSizeBounds) {
  QByteArray params = "[";
  for (qsizetype i = 0; i <= jsonlimits::kMaxParams; ++i)
    params += (i ? "," : "") + QByteArray(R"({"system":"S","key":"k","op":"=","value":"v"})");
  EXPECT_TRUE(decodeRequest(requestJson("1", params + "]", "{}")).error().contains(u"more than 256 parameters"_s));

  QByteArray fields = "{";
  for (qsizetype i = 0; i <= jsonlimits::kMaxFieldsPerRecord; ++i)
    fields += (i ? ",\"F" : "\"F") + QByteArray::number(i) + "\":null";
  EXPECT_TRUE(decodeRequest(requestJson("1", "[]", R"({"R":[)" + fields + "}]}"))
                  .error()
                  .contains(u"more than 256 fields"_s));

  const QByteArray oversized(jsonlimits::kMaxRequestBytes + 1, ' ');
  EXPECT_TRUE(decodeRequest(oversized).error().contains(u"more than the 4194304 bytes"_s));
}

}  // namespace
}  // namespace adjustacc::messaging
