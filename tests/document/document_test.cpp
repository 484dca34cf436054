// The document's life in the host: showing, opening an account (and not opening one), the account request,
// its reply in every outcome, and closing.
#include "documentfixture.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>

namespace adjustacc::document::testing {
namespace {

using platform::Pointer;

TEST_F(DocumentTest, ShowReadsTheContainerAndPreparesTheLists) {
  QSignalSpy status(&m_set.statusBar, &platform::StatusBar::textChanged);
  doc().UserDocument_Show();
  EXPECT_EQ(platform::modMessageTitle::messageTitle(), u"Adjust Account");
  EXPECT_EQ(m_set.statusBar.containerTag(), u"DOC-17");
  ASSERT_EQ(status.count(), 2);
  EXPECT_EQ(status.at(0).at(0).toString(), u"Loading information");
  EXPECT_EQ(status.at(1).at(0).toString(), u"Ready");
  EXPECT_EQ(m_set.ui.pointerChanges(), (QList<Pointer>{Pointer::Hourglass, Pointer::Default}));
  EXPECT_EQ(doc().workFilePath(), QDir(m_dir.path()).filePath(u"AdjustAcc1.xml"_s));
  EXPECT_TRUE(m_host.toolbar.hasEntry(QORVA_AdjustAcc::kOpenAccountEntry));
  EXPECT_FALSE(doc().mCmdButton[0].isEnabled());
  EXPECT_FALSE(doc().mCmdButton[1].isEnabled());
  EXPECT_FALSE(doc().DataChanged());
  for (const int index : {0, 1}) {
    EXPECT_TRUE(list(index).font().bold());  // the caption; headings and cells are not
    EXPECT_FALSE(list(index).cellFont(2).bold());
    EXPECT_FALSE(list(index).headFont(2).bold());
  }
}

TEST_F(DocumentTest, FileOpenSendsTheAccountRequestAndTheReplyFillsBothListsSorted) {
  doc().UserDocument_Show();
  fileOpen(u"C"_s, u"  1234-4 "_s);
  const messaging::Request request = m_set.link.lastRequest();
  EXPECT_EQ(request.replyTo, u"AdjustAcc");
  EXPECT_EQ(request.version, u"1.0");
  EXPECT_EQ(request.code, 47);
  EXPECT_EQ(request.user, u"OFC7");
  EXPECT_EQ(request.params, (QList<messaging::RequestParameter>{{u"MARVENTO"_s, u"key:REF_NBR"_s, u"="_s, u"1234-4"_s},
                                                                {u"MARVENTO"_s, u"key:REF_TYP_CD"_s, u"="_s, u"C"_s}}));
  EXPECT_EQ(doc().requestId(), request.requestId);
  EXPECT_TRUE(doc().DataChanged());
  EXPECT_EQ(m_set.statusBar.text(), u"Searching for CITATION ENF001 number 1234-4");
  EXPECT_EQ(m_set.ui.pointer(), Pointer::Hourglass);
  EXPECT_EQ(list(0).rows(), 0);
  EXPECT_GT(list(0).recordset()->fieldCount(), 0);  // the columns show before the reply

  Row otherCustomer = receivable(u"1000035"_s);
  otherCustomer[u"CUST_ID"_s] = u"100002"_s;
  answer(accountReply({otherCustomer, receivable(u"1000042"_s), receivable(u"1000011"_s)},
                      {receipt(u"0004712"_s), receipt(u"0004711"_s, u"12.50"_s)}));
  EXPECT_EQ(column(0, "ACCT_RCVBL_NBR"), (QStringList{u"1000011"_s, u"1000042"_s, u"1000035"_s}));
  EXPECT_EQ(column(1, "RCPT_NBR"), (QStringList{u"0004711"_s, u"0004712"_s}));
  EXPECT_EQ(doc().receivables()->recordCount(), 3);
  EXPECT_EQ(m_set.statusBar.text(), u"Ready");
  EXPECT_EQ(m_set.ui.pointer(), Pointer::Default);
  EXPECT_FALSE(doc().requestOutstanding());
}

TEST_F(DocumentTest, RowsAreDescribedAsTheyLoad) {
  Row noCodes = receivable(u"1000059"_s);
  noCodes[u"ACCT_RCVBL_TYP_CD"_s] = QVariant();
  noCodes[u"ACCT_STTS_CD"_s] = QVariant();
  openAccount({receivable(u"1000011"_s, u"V"_s), noCodes}, {receipt(u"0004711"_s), receipt(u"0004712"_s, u"12.50"_s)});
  EXPECT_EQ(column(0, "FORM_DESC"), (QStringList{u"CITATION ENF001"_s, QString()}));
  EXPECT_EQ(column(0, "STTS_DESC"), (QStringList{u"VOID"_s, QString()}));
  EXPECT_EQ(column(0, "FORM_TYP_CD"), (QStringList{u"V"_s, QString()}));  // the status code, kept so
  EXPECT_EQ(column(1, "STTS_DESC"), (QStringList{u"OPEN"_s, u"OPEN"_s}));
  EXPECT_EQ(column(1, "OVR_PYMT_AMT"), (QStringList{u"0.00"_s, u"12.50"_s}));
  EXPECT_TRUE(doc().receipts()->valueAt(0, u"OVR_PYMT_AMT"_s).isNull());  // shown, not written into the reply
}

TEST_F(DocumentTest, NotFoundOrOnlyReceipts) {
  openAccount({}, {});
  EXPECT_EQ(m_set.statusBar.text(), u"CITATION ENF001 number 1234-4 not found");
  openAccount({}, {receipt(u"0004711"_s)});
  EXPECT_EQ(list(0).rows(), 0);
  EXPECT_EQ(list(1).rows(), 1);
  EXPECT_EQ(m_set.statusBar.text(), u"Ready");
}

TEST_F(DocumentTest, RepliesForAnotherNameOrAnEarlierRequestAreNotTheDocuments) {
  fileOpen(u"C"_s, u"1234-4"_s);
  messaging::Reply other = accountReply({receivable(u"1000011"_s)}, {});
  other.replyTo = u"AdjustAccPayDetail0"_s;
  ASSERT_TRUE(m_set.link.answerLast(other));
  fileOpen(u"P"_s, u"500001"_s);
  ASSERT_TRUE(m_set.link.answer(m_set.link.requests().first().requestId, accountReply({receivable(u"1000011"_s)}, {})));
  QTest::qWait(20);
  EXPECT_EQ(m_set.ui.boxCount(), 0);
  EXPECT_EQ(list(0).rows(), 0);
  EXPECT_TRUE(doc().requestOutstanding());
  EXPECT_EQ(m_set.statusBar.text(), u"Searching for PAYMENT PLAN number 500001");
}

TEST_F(DocumentTest, AFailedReplyIsShownAndClosesTheAccount) {
  doc().UserDocument_Show();
  fileOpen(u"C"_s, u"1234-4"_s);
  messaging::Reply refused;
  refused.error = u"Account Number \"1234-4\" is not on file."_s;
  answer(refused);
  ASSERT_EQ(m_set.ui.boxCount(), 1);
  EXPECT_EQ(m_set.ui.lastBox().icon, platform::MsgIcon::Critical);
  EXPECT_EQ(m_set.ui.lastBox().title, u"Adjust Account");
  EXPECT_TRUE(m_set.ui.lastBox().text.contains(u"is not on file."));
  EXPECT_TRUE(m_set.ui.lastBox().text.endsWith(u"Source: QORVA_AdjustAcc.mNcsbMessage_DataReady"));
  EXPECT_EQ(m_set.statusBar.text(), u"Search was not successful");
  EXPECT_FALSE(doc().DataChanged());

  ASSERT_TRUE(m_set.session.setUpdateTimeoutMs(30));
  fileOpen(u"C"_s, u"1234-4"_s);
  ASSERT_TRUE(testsupport::waitFor([&] { return m_set.ui.boxCount() == 2; }));
  EXPECT_TRUE(doc().timedOut());
  EXPECT_EQ(m_set.statusBar.text(), u"Search timed out");
}

TEST_F(DocumentTest, ACancelledOpenAccountKeepsEverything) {
  openAccount({receivable(u"1000011"_s)}, {receipt(u"0004711"_s)});
  const messaging::RecordSetPtr receivables = doc().receivables();
  ASSERT_TRUE(list(0).userClickRow(0));
  fileOpen(u"P"_s, u"500001"_s, /*ok=*/false);
  EXPECT_EQ(m_set.link.requestCount(), 1);
  EXPECT_EQ(doc().accountNumber(), u"1234-4");
  EXPECT_EQ(doc().accountType(), u"C");
  EXPECT_EQ(doc().receivables(), receivables);
  EXPECT_TRUE(receivables->isOpen());
  EXPECT_EQ(list(0).rows(), 1);
  EXPECT_EQ(list(1).rows(), 1);
  EXPECT_TRUE(doc().mCmdButton[0].isEnabled());

  fileOpen(u"P"_s, u"500001"_s);  // confirmed: the old sets are closed and let go
  EXPECT_FALSE(receivables->isOpen());
  EXPECT_FALSE(doc().receivables());
  EXPECT_FALSE(doc().mCmdButton[0].isEnabled());
}

TEST_F(DocumentTest, SaveDataDoesNothingAndCloseDocumentEndsTheDocument) {
  doc().UserDocument_Show();
  doc().SaveData();
  EXPECT_EQ(m_set.link.requestCount(), 0);
  QFile work(doc().workFilePath());
  ASSERT_TRUE(work.open(QIODevice::WriteOnly));
  work.close();
  EXPECT_TRUE(doc().CloseDocument());
  EXPECT_FALSE(QFile::exists(doc().workFilePath()));
  EXPECT_FALSE(m_host.toolbar.hasEntry(QORVA_AdjustAcc::kOpenAccountEntry));
  EXPECT_EQ(m_set.ui.boxCount(), 0);

  // A work file that cannot be deleted is reported; the document closes all the same.
  doc().UserDocument_Show();
  ASSERT_TRUE(QDir(m_dir.path()).mkpath(u"AdjustAcc1.xml/locked"_s));
  EXPECT_TRUE(doc().CloseDocument());
  EXPECT_TRUE(m_set.ui.lastBox().text.endsWith(u"Source: QORVA_AdjustAcc.CloseDocument"));
  EXPECT_FALSE(m_host.toolbar.hasEntry(QORVA_AdjustAcc::kOpenAccountEntry));
}

TEST_F(DocumentTest, TheToolbarEntryOpensAnotherAccountUntilUnload) {
  doc().UserDocument_Show();
  const ToolbarEntry entry = m_host.toolbar.entries.value(QORVA_AdjustAcc::kOpenAccountEntry);
  m_set.ui.onModal(inquiry::QORVA_FormInq::kFormName, [](platform::ModalForm& form) { form.setVisible(false); });
  entry.action();
  EXPECT_EQ(m_set.ui.shownForms().size(), 1);
  doc().BeforeUnload();
  EXPECT_TRUE(m_host.toolbar.entries.isEmpty());
  EXPECT_EQ(doc().toolbarHost(), nullptr);
  m_document.reset();
  entry.action();  // left behind by a document that is gone: nothing
  EXPECT_EQ(m_set.ui.shownForms().size(), 1);
}

}  // namespace
}  // namespace adjustacc::document::testing
