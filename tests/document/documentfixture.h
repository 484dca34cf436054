#pragma once
// The account adjustment document under test: scripted services, a container, a toolbar and detail screens
// that record what the document hands them.

#include "support/screentest.h"
#include "support/serviceset.h"

#include "ardetail/accdetail.h"
#include "document/adjustacc.h"
#include "document/documenthost.h"
#include "inquiry/forminq.h"
#include "messaging/requestmessage.h"
#include "platform/modmessagetitle.h"

#include <QMap>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <tuple>
#include <utility>

namespace adjustacc::document::testing {

using namespace Qt::Literals::StringLiterals;

class FakeContainer : public DocumentContainer {
public:
  QString caption() const override { return QStringLiteral("Adjust Account"); }
  QString tag() const override { return QStringLiteral("DOC-17"); }
  QString name() const override { return QStringLiteral("AdjustAcc1"); }
};

class FakeToolbar : public ToolbarHost {
public:
  void addEntry(const ToolbarEntry& entry) override { entries.insert(entry.key, entry); }
  void removeEntry(const QString& key) override { entries.remove(key); }
  bool hasEntry(const QString& key) const override { return entries.contains(key); }
  QMap<QString, ToolbarEntry> entries;
};

class FakeHost : public DocumentHost {
public:
  ToolbarHost* toolbarHost() override { return &toolbar; }
  FakeToolbar toolbar;
};

// Reply rows by field name. The section has the fields the rows name; the record-set builder adds the rest of
// its layout as null.
using Row = QMap<QString, QVariant>;

inline messaging::RecordSet rowsOf(const QList<Row>& rows) {
  QStringList fields;
  for (const Row& row : rows) {
    for (const QString& field : row.keys()) {
      if (!fields.contains(field)) {
        fields.append(field);
      }
    }
  }
  QList<QList<QVariant>> values;
  for (const Row& row : rows) {
    QList<QVariant> cells;
    for (const QString& field : fields) {
      cells.append(row.value(field));
    }
    values.append(cells);
  }
  return testsupport::section(fields, values);
}

inline Row receivable(const QString& number, const QString& status = u"U"_s) {
  return {{u"CUST_NAME"_s, u"SMITH TRUCKING LLC"_s}, {u"ACCT_RCVBL_NBR"_s, number}, {u"ACCT_RCVBL_CK_NBR"_s, u"3"_s},
          {u"ACCT_STTS_CD"_s, status}, {u"ACCT_RCVBL_TYP_CD"_s, u"C"_s}, {u"ACTV_STTS_CD"_s, u"A"_s},
          {u"CUST_ID"_s, u"100001"_s}, {u"ACCT_RCVBL_BAL_AMT"_s, u"126.50"_s}};
}

inline Row receipt(const QString& number, const QVariant& excess = QVariant()) {
  return {{u"RCPT_DT"_s, u"2024-02-12"_s}, {u"RCPT_NBR"_s, number},      {u"RCPT_STTS_CD"_s, u"O"_s},
          {u"TOT_PYMT_AMT"_s, u"150.00"_s}, {u"OVR_PYMT_AMT"_s, excess}, {u"CUST_ID"_s, u"100001"_s}};
}

class DocumentTest : public ::testing::Test {
protected:
  DocumentTest() {
    m_set.session.setSessionFolder(m_dir.path());
    for (const auto& [table, code, description] :
         {std::tuple{u"REFDOCTYP"_s, u"C"_s, u"CITATION ENF001"_s}, {u"REFDOCTYP"_s, u"P"_s, u"PAYMENT PLAN"_s},
          {u"FORMDOC"_s, u"C"_s, u"CITATION ENF001"_s}, {u"FORMDOC"_s, u"P"_s, u"PAYMENT PLAN"_s},
          {u"CSTATUS"_s, u"U"_s, u"UNPAID"_s}, {u"CSTATUS"_s, u"V"_s, u"VOID"_s}, {u"REFUNDTYP"_s, u"O"_s, u"OPEN"_s},
          {u"ACCADJUST"_s, u"V"_s, u"VOID"_s}, {u"ACCADJUST"_s, u"D"_s, u"DELETE"_s}}) {
      m_set.codes.add(table, code, description);
      m_set.codeTables.add(table, code, description);
    }
    m_set.user.grant(u"ADJUSTAR"_s);
    m_document = std::make_unique<QORVA_AdjustAcc>(m_set.services, m_container, m_host);
  }

  QORVA_AdjustAcc& doc() { return *m_document; }
  platform::Grid& list(int index) { return doc().mSdgDBGrid[index]; }

  // FileOpen with Open Account answered by the clerk: the type code and number typed, then OK or Cancel.
  void fileOpen(const QString& type, const QString& number, bool ok = true) {
    m_set.ui.queueModal([=](platform::ModalForm& form) {
      auto& inq = dynamic_cast<inquiry::QORVA_FormInq&>(form);
      inq.mFtcboDocType.setCode(type);
      inq.mTxtDocNbr.setText(number);
      inq.mCmdBttn[ok ? inquiry::QORVA_FormInq::OkButton : inquiry::QORVA_FormInq::CancelButton].click();
    });
    doc().FileOpen();
  }
  // Answers the document's last request and waits until its handler ran.
  void answer(messaging::Reply reply) {
    ASSERT_TRUE(doc().requestOutstanding());
    ASSERT_TRUE(m_set.link.answerLast(std::move(reply)));
    ASSERT_TRUE(testsupport::waitFor([&] { return !doc().requestOutstanding() || m_set.ui.boxCount() > 0; }));
  }
  static messaging::Reply accountReply(const QList<Row>& receivables, const QList<Row>& receipts) {
    return testsupport::replyWith({{u"ACNTSRCVBL"_s, rowsOf(receivables)}, {u"RECEIPT"_s, rowsOf(receipts)}});
  }
  // Opens citation 1234-4 with the given rows.
  void openAccount(const QList<Row>& receivables, const QList<Row>& receipts) {
    fileOpen(u"C"_s, u"1234-4"_s);
    answer(accountReply(receivables, receipts));
  }
  QStringList column(int index, const char* name) {
    QStringList values;
    for (int row = 0; row < list(index).rows(); ++row) {
      values.append(list(index).column(QLatin1String(name)).cellValue(row).toString());
    }
    return values;
  }

  QTemporaryDir m_dir;
  testsupport::ServiceSet m_set;
  FakeContainer m_container;
  FakeHost m_host;
  std::unique_ptr<QORVA_AdjustAcc> m_document;
};

}  // namespace adjustacc::document::testing
