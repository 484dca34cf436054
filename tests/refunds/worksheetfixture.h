#pragma once
// The refund worksheet with a scripted Ui and host: a new worksheet for Acme Hauling's excess of $150.00 on
// receipt 8000005, or an existing worksheet opened through LoadMe and filled from a scripted "REFUND" reply.

#include "support/screentest.h"
#include "support/serviceset.h"

#include "messaging/protocolwords.h"
#include "messaging/request.h"
#include "platform/modmessagetitle.h"
#include "refunds/worksheet.h"

#include <QCoreApplication>
#include <QMap>

#include <gtest/gtest.h>

#include <memory>

namespace adjustacc::refunds::testing {

using namespace Qt::Literals::StringLiterals;
using W = QORVA_WorkSheet;

inline const QStringList kWorksheetFields = {
    u"RCPT_NBR"_s,   u"CUST_ID"_s,   u"RFND_NBR"_s,   u"RFND_AMT"_s,     u"TO"_s,           u"DT_MLD"_s,
    u"CREATED_DT"_s, u"CREATOR_ID"_s, u"VERIFY_ID"_s, u"APPROVE_ID"_s,   u"RFND_BY_ID"_s,   u"VOID_ID"_s,
    u"DMV_CMMT_TXT"_s, u"FISCAL_CMMT_TXT"_s, u"RFND_CD"_s, u"WRNT_NBR"_s, u"RFND_DT"_s,     u"STTS_CD"_s,
    u"CUST_NM"_s,    u"ADDR_1"_s,    u"ADDR_2"_s,     u"CITY"_s,         u"STATE"_s,        u"ZIP"_s,
    u"ROW_VRSN_NBR"_s,
    // who took each step and when
    u"CREATOR_NM"_s, u"CREATED_TS"_s, u"VERIFY_NM"_s, u"VERIFY_TS"_s, u"APPROVE_NM"_s, u"APPROVE_TS"_s,
    u"RFND_BY_NM"_s, u"RFND_BY_TS"_s, u"MAILED_BY_ID"_s, u"MAILED_BY_NM"_s, u"MAILED_TS"_s, u"VOID_NM"_s,
    u"VOID_TS"_s};

// A worksheet as the host answers it; fields not given are null.
inline messaging::Reply worksheetReply(const QMap<QString, QVariant>& values) {
  QList<QVariant> row;
  for (const QString& field : kWorksheetFields) {
    row.append(values.value(field));
  }
  return testsupport::replyWith({{messaging::sectionnames::Refund, testsupport::section(kWorksheetFields, {row})}});
}

// Worksheet 3000002 at `status`, with the officers of the steps before it.
inline QMap<QString, QVariant> worksheetAt(const QString& status) {
  QMap<QString, QVariant> v = {{u"RCPT_NBR"_s, u"8000005"_s},  {u"CUST_ID"_s, u"100003"_s},
                               {u"RFND_NBR"_s, u"3000002"_s},  {u"RFND_AMT"_s, u"1234.5"_s},
                               {u"TO"_s, u"1"_s},               {u"CREATED_DT"_s, u"2024-02-20"_s},
                               {u"CREATOR_ID"_s, u"ADMIN01"_s}, {u"DMV_CMMT_TXT"_s, u"Overpaid\nat the counter"_s},
                               {u"STTS_CD"_s, status},          {u"CUST_NM"_s, u"ACME HAULING INC"_s},
                               {u"ADDR_1"_s, u"900 Depot Rd"_s}, {u"ADDR_2"_s, u"Suite 4"_s},
                               {u"CITY"_s, u"Millbrook"_s},     {u"STATE"_s, u"NE"_s},
                               {u"ZIP"_s, u"68001"_s},          {u"ROW_VRSN_NBR"_s, u"3"_s}};
  const QString order = u"12345TV"_s;
  const qsizetype at = order.indexOf(status);
  if (at >= 1) v.insert(u"VERIFY_ID"_s, u"VERIFY01"_s);
  if (at >= 2) v.insert(u"APPROVE_ID"_s, u"APPROVE01"_s);
  if (status == u"4" || status == u"5") {
    v.insert(u"RFND_BY_ID"_s, u"FISCAL01"_s);
    v.insert(u"RFND_CD"_s, u"1"_s);
    v.insert(u"WRNT_NBR"_s, u"W-7781"_s);
    v.insert(u"RFND_DT"_s, u"2024-03-01"_s);
  }
  if (status == u"5") v.insert(u"DT_MLD"_s, u"2024-03-04"_s);
  if (status == u"T") {
    v.insert(u"RFND_BY_ID"_s, u"FISCAL01"_s);
    v.insert(u"RFND_CD"_s, u"0"_s);
    v.insert(u"FISCAL_CMMT_TXT"_s, u"Moved to receipt 8000006"_s);
  }
  if (status == u"V") v.insert(u"VOID_ID"_s, u"VERIFY01"_s);
  return v;
}

class WorkSheetTest : public ::testing::Test {
public:
  WorkSheetTest() {
    platform::modMessageTitle::setMessageTitle(u"Adjust Account"_s);
    for (const auto& [code, description] :
         {std::pair{u"1"_s, u"PREPARED"_s}, {u"2"_s, u"VERIFIED"_s}, {u"3"_s, u"APPROVED"_s}, {u"4"_s, u"REFUNDED"_s},
          {u"5"_s, u"MAILED"_s}, {u"T"_s, u"TRANSFERRED"_s}, {u"V"_s, u"VOIDED"_s}}) {
      m_set.codes.add(u"REFUNDTYP"_s, code, description);
    }
    m_set.user.grant(u"CREATEREFUND"_s);
  }

  // A new worksheet as the receipt screen opens it, loaded, its number request answered with `number`.
  W& openNew(const QString& number = u"3000009-4"_s) {
    m_screen = std::make_unique<W>(m_set.services);
    W& s = *m_screen;
    s.setCustomerID(u"100003"_s);
    s.mLblData[W::NameLabel].setCaption(u"ACME HAULING INC"_s);
    s.mLblData[W::AddressLabel].setCaption(u"900 Depot Rd"_s);
    s.mLblData[W::CityLabel].setCaption(u"Millbrook"_s);
    s.mLblData[W::StateLabel].setCaption(u"NE"_s);
    s.mLblData[W::ZipLabel].setCaption(u"68001"_s);
    s.mLblData[W::RefundAmountLabel].setCaption(u"$1,234.50"_s);
    s.mLblData[W::ReceiptNumberLabel].setCaption(u"8000005"_s);
    s.setVisible(true);
    if (!number.isEmpty()) {
      answer(testsupport::replyWith({{messaging::sectionnames::GetFormNumber,
                                      testsupport::section({u"U"_s}, {{number}})}}));
    }
    return s;
  }

  // An existing worksheet opened through LoadMe and filled from the host's answer.
  W& openExisting(const QString& status, const QString& editMode = u"O"_s,
                  const QMap<QString, QVariant>& changes = {}) {
    m_screen = std::make_unique<W>(m_set.services);
    W& s = *m_screen;
    s.SetLoadedFromOutSide(true);
    s.LoadMe(u"100003"_s, status, u"3000002"_s, editMode);
    s.setVisible(true);
    QMap<QString, QVariant> values = worksheetAt(status);
    for (auto it = changes.begin(); it != changes.end(); ++it) {
      values.insert(it.key(), it.value());
    }
    answer(worksheetReply(values));
    return s;
  }

  W& screen() { return *m_screen; }
  QString label(int index) { return screen().mLblData[index].caption(); }
  bool enabled(int button) { return screen().mCmdButton[button].isEffectivelyEnabled(); }

  // Answers the screen's last request and lets the event loop deliver it.
  void answer(messaging::Reply reply) {
    ASSERT_TRUE(m_set.link.answerLast(std::move(reply)));
    settle();
  }
  void answerError(const QString& error) {
    messaging::Reply reply;
    reply.error = error;
    answer(reply);
  }
  static void settle() {
    for (int round = 0; round < 3; ++round) {
      QCoreApplication::processEvents();
    }
  }
  // The REFUND record of the last request the screen sent.
  messaging::SaveRecord sentRecord() {
    const messaging::Request request = m_set.link.lastRequest();
    const messaging::RecordList* list = request.recordList(messaging::saverecords::Refund);
    if (!list || list->records.size() != 1) {
      ADD_FAILURE() << "the last request carries no single REFUND record";
      return {};
    }
    return list->records.first();
  }
  static QString fieldText(const messaging::SaveRecord& record, const QString& field) {
    return record.field(field).toString();
  }
  static QStringList fieldNames(const messaging::SaveRecord& record) {
    QStringList names;
    for (const auto& [name, value] : record.fields()) {
      names.append(name);
    }
    return names;
  }

  testsupport::ServiceSet m_set;
  std::unique_ptr<W> m_screen;
};

}  // namespace adjustacc::refunds::testing
