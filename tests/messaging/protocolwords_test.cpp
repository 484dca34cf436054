// The protocol words agree with the section catalogue and with docs/protocol.md, in both directions: a word
// that names nothing, or a section, key or code that has no word, is caught here.
#include "messaging/protocolwords.h"
#include "messaging/sections.h"

#include <QFile>
#include <QRegularExpression>
#include <QSet>

#include <gtest/gtest.h>

namespace adjustacc::messaging {
namespace {

using namespace Qt::StringLiterals;

const QSet<QString> kSectionNames = {
    sectionnames::AccountActivity, sectionnames::AccountReceivables, sectionnames::Assessment,
    sectionnames::CodeTable,       sectionnames::Customer,           sectionnames::CustomerForm,
    sectionnames::Fund,            sectionnames::GetFormNumber,      sectionnames::Officer,
    sectionnames::Overpayment,     sectionnames::Receipt,            sectionnames::Refund,
    sectionnames::Rights,          sectionnames::SaveOutcome};

const QSet<QString> kSaveRecords = {
    saverecords::AccountActivity, saverecords::AccountReceivables,     saverecords::AdjustAR,
    saverecords::AdjustPay,       saverecords::Assessment,             saverecords::CitationAdditionalInfo,
    saverecords::Refund,          saverecords::TransferPay};

const QSet<QString> kParameterKeys = {
    params::AcctRcvblNbr, params::AcctRcvblTypCd, params::All,       params::AsOfDt,     params::CdTblId,
    params::CustId,       params::CustNm,         params::Lpo,       params::NbrTypCd,   params::OfficerId,
    params::OvrgRcpt,     params::RcptNbr,        params::ReceiptDetl, params::ReceiptNbr, params::RefNbr,
    params::RefTypCd,     params::RefundNbr,      params::Region,    params::Thin,       params::RequestId};

const QSet<int> kRequestCodes = {requestcodes::Account,         requestcodes::ReceivableDetail,
                                 requestcodes::NextNumber,      requestcodes::CustomerSearch,
                                 requestcodes::CodeTable,       requestcodes::Officer,
                                 requestcodes::RefundWorksheet, requestcodes::RefundWorksheetSave,
                                 requestcodes::ExcessFundTransfer, requestcodes::SaveOutcome};

// The wire names of the catalogue's layouts of one kind.
QSet<QString> catalogueSections(LayoutKind kind) {
  QSet<QString> names;
  for (const SectionLayout& layout : sections::allLayouts()) {
    if (layout.kind == kind) {
      names.insert(layout.section);
    }
  }
  return names;
}

TEST(ProtocolWords, EverySectionOfTheCatalogueHasItsWordAndNoMore) {
  EXPECT_EQ(kSectionNames, catalogueSections(LayoutKind::ReplySection));
  EXPECT_EQ(kSaveRecords, catalogueSections(LayoutKind::SaveRecord));
  for (const QString& name : kSaveRecords) {
    EXPECT_NE(sections::layout(name, LayoutKind::SaveRecord), nullptr) << name.toStdString();
  }
}

TEST(ProtocolWords, TheAgencysCodesAndTheWireTextsStayAsTheyAre) {
  // Fixed by the agency's host system: a change here breaks every desktop in the field.
  EXPECT_EQ(requestcodes::Account, 47);
  EXPECT_EQ(requestcodes::ReceivableDetail, 41);
  EXPECT_EQ(requestcodes::RefundWorksheet, 74);
  EXPECT_EQ(requestcodes::RefundWorksheetSave, 75);
  EXPECT_EQ(params::System, u"MARVENTO"_s);
  EXPECT_EQ(params::Operator, u"="_s);
  EXPECT_EQ(params::RefNbr, u"key:REF_NBR"_s);
  EXPECT_EQ(saverecords::CitationAdditionalInfo, u"CTTNADTNINFO"_s);
  EXPECT_EQ(sectionnames::GetFormNumber, u"GetFormNumber"_s);
  EXPECT_EQ(kRequestCodes.size(), 10) << "two words for one code";
  EXPECT_EQ(kParameterKeys.size(), 20) << "two words for one key";
}

QString protocolDocument() {
  QFile file(QStringLiteral(ADJUSTACC_SOURCE_DIR "/docs/protocol.md"));
  return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

TEST(ProtocolWords, TheProtocolDocumentUsesExactlyTheseKeysAndCodes) {
  const QString text = protocolDocument();
  if (text.isEmpty()) {
    GTEST_SKIP() << "docs/protocol.md not found next to the sources";
  }
  static const QRegularExpression key(u"key:[A-Z_]+"_s);
  QSet<QString> documentedKeys;
  for (auto it = key.globalMatch(text); it.hasNext();) {
    documentedKeys.insert(it.next().captured());
  }
  EXPECT_EQ(documentedKeys, kParameterKeys);

  // The table of request kinds: "| 47 | account | ...".
  static const QRegularExpression kindRow(u"^\\| ([0-9]+) \\|"_s, QRegularExpression::MultilineOption);
  QSet<int> documentedCodes;
  for (auto it = kindRow.globalMatch(text); it.hasNext();) {
    documentedCodes.insert(it.next().captured(1).toInt());
  }
  EXPECT_EQ(documentedCodes, kRequestCodes);
}

// The document lists the catalogue for people writing either side: every layout and field by its name.
TEST(ProtocolWords, TheProtocolDocumentNamesEveryLayoutAndField) {
  const QString text = protocolDocument();
  if (text.isEmpty()) {
    GTEST_SKIP() << "docs/protocol.md not found next to the sources";
  }
  for (const SectionLayout& layout : sections::allLayouts()) {
    EXPECT_TRUE(text.contains(u"`"_s + layout.name + u"`"_s)) << layout.name.toStdString();
  }
  for (const FieldInfo& info : sections::allFields()) {
    EXPECT_TRUE(text.contains(u"`"_s + info.name + u"`"_s)) << info.name.toStdString();
  }
}

}  // namespace
}  // namespace adjustacc::messaging
