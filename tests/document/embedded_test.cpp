// The document against the real host system on a demo database: opening a demo account through Open
// Account, the lists filled and described from the code tables, and the assessments of a receivable.
#include "support/screentest.h"
#include "support/serviceset.h"

#include "document/adjustacc.h"
#include "host/demodata.h"
#include "host/embeddedlink.h"
#include "host/hostsystem.h"
#include "inquiry/forminq.h"
#include "platform/sqlcodelookup.h"
#include "platform/sqlcodetablesource.h"

#include <QSqlDatabase>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace adjustacc::document {
namespace {

using namespace Qt::Literals::StringLiterals;
using testsupport::waitFor;

class Container : public DocumentContainer {
public:
  QString caption() const override { return u"Adjust Account"_s; }
  QString tag() const override { return u"DOC-1"_s; }
  QString name() const override { return u"AdjustAcc1"_s; }
};

class NoToolbar : public DocumentHost {
public:
  ToolbarHost* toolbarHost() override { return nullptr; }
};

class Lines : public DetailScreens {
public:
  void loadArDetail(const ArDetailOpening& opening) override { openings.append(opening); }
  void showArDetail() override {}
  void addAssessmentLine(int gridIndex, const QString& line) override { lines.append({gridIndex, line}); }
  void openReceiptDetail(const ReceiptDetailOpening&, std::unique_ptr<messaging::RequestMessage>) override {}
  QList<ArDetailOpening> openings;
  QList<std::pair<int, QString>> lines;
};

class EmbeddedDocument : public ::testing::Test {
protected:
  void SetUp() override {
    ASSERT_TRUE(m_dir.isValid());
    host::DatabaseOptions options;
    options.databaseName = m_dir.filePath(u"adjustacc.sqlite"_s);
    ASSERT_TRUE(host::openDatabase(options, kCodes).ok());
    ASSERT_TRUE(host::createSchema(kCodes).ok());
    ASSERT_TRUE(host::loadDemoData(kCodes, m_day).ok());
    host::EmbeddedLinkOptions linkOptions;
    linkOptions.dataFolder = m_dir.path();
    linkOptions.officerId = host::demo::Admin;
    linkOptions.demoDay = m_day;
    m_link = std::make_unique<host::EmbeddedLink>(linkOptions);
    m_lookup = std::make_unique<platform::SqlCodeLookup>(kCodes, m_user);
    m_tables = std::make_unique<platform::SqlCodeTableSource>(kCodes, m_set.clock);
    m_services = std::make_unique<platform::Services>(platform::Services{
        m_set.ui, *m_link, m_set.clock, m_user, m_set.session, m_set.statusBar, m_set.errors, *m_lookup, *m_tables,
        m_set.keyFilters, m_set.checkDigit, m_set.formNumbers, m_set.troopDistricts, m_set.numbers,
        m_set.fieldMarking, m_set.printing, m_set.templates});
    m_document = std::make_unique<QORVA_AdjustAcc>(*m_services, m_container, m_host, &m_details);
    m_document->UserDocument_Show();
  }
  void TearDown() override {
    m_document.reset();
    m_link.reset();
    m_tables.reset();
    m_lookup.reset();
    QSqlDatabase::database(kCodes, false).close();
    QSqlDatabase::removeDatabase(kCodes);
  }
  void openAccount(const QString& type, const QString& number) {
    m_set.ui.queueModal([=](platform::ModalForm& form) {
      auto& inq = dynamic_cast<inquiry::QORVA_FormInq&>(form);
      EXPECT_TRUE(inq.mFtcboDocType.setCode(type));
      inq.mTxtDocNbr.setText(number);
      inq.mCmdBttn[inquiry::QORVA_FormInq::OkButton].click();
    });
    m_document->FileOpen();
  }
  QStringList column(int list, const char* name) {
    platform::Grid& grid = m_document->mSdgDBGrid[list];
    QStringList values;
    for (int row = 0; row < grid.rows(); ++row) {
      values.append(grid.column(QLatin1String(name)).cellValue(row).toString());
    }
    return values;
  }

  static inline const QString kCodes = u"document-embedded"_s;
  QDate m_day{2024, 3, 7};
  QTemporaryDir m_dir;
  testsupport::ServiceSet m_set;
  platform::User m_user{host::demo::Admin, u"Avery Lindqvist"_s, u"NE"_s};
  std::unique_ptr<host::EmbeddedLink> m_link;
  std::unique_ptr<platform::SqlCodeLookup> m_lookup;
  std::unique_ptr<platform::SqlCodeTableSource> m_tables;
  std::unique_ptr<platform::Services> m_services;
  Container m_container;
  NoToolbar m_host;
  Lines m_details;
  std::unique_ptr<QORVA_AdjustAcc> m_document;
};

TEST_F(EmbeddedDocument, OpensADemoCitationAndItsAssessments) {
  openAccount(u"C"_s, u"1000011"_s);
  EXPECT_EQ(m_set.statusBar.text(), u"Searching for CITATION ENF001 number 1000011-5");
  ASSERT_TRUE(waitFor([&] { return !m_document->requestOutstanding(); }));
  ASSERT_EQ(m_set.ui.boxCount(), 0) << m_set.ui.lastBox().text.toStdString();
  EXPECT_EQ(m_set.statusBar.text(), u"Ready");
  EXPECT_EQ(column(0, "ACCT_RCVBL_NBR"), QStringList{u"1000011"_s});
  EXPECT_EQ(column(0, "FORM_DESC"), QStringList{u"CITATION ENF001"_s});
  EXPECT_FALSE(column(0, "STTS_DESC").first().isEmpty());
  EXPECT_EQ(column(0, "CUST_NAME"), QStringList{u"SMITH TRUCKING LLC"_s});

  ASSERT_TRUE(m_document->mSdgDBGrid[0].userClickRow(0));
  ASSERT_TRUE(m_document->mCmdButton[QORVA_AdjustAcc::ArDetailButton].click());
  EXPECT_EQ(m_set.statusBar.text(), u"Searching for account receivable number 1000011-5");
  ASSERT_TRUE(waitFor([&] { return !m_document->requestOutstanding(); }));
  ASSERT_EQ(m_set.ui.boxCount(), 0) << m_set.ui.lastBox().text.toStdString();
  ASSERT_EQ(m_details.lines.size(), 8);
  // Sorted by code: the fees first; the removed log book penalty goes to the adjusted grid.
  EXPECT_TRUE(m_details.lines.first().second.contains(u"\tF01\tLPO FEE 30 DAY\t"));
  int adjusted = 0;
  for (const auto& [grid, line] : m_details.lines) {
    adjusted += grid;
    if (line.contains(u"\tP02\t")) {
      EXPECT_EQ(grid, 1);
    }
  }
  EXPECT_EQ(adjusted, 1);
  EXPECT_TRUE(m_details.lines.last().second.contains(u"\tp04\tlate registration penalty\t"));
  EXPECT_EQ(m_set.statusBar.text(), u"Ready");
}

}  // namespace
}  // namespace adjustacc::document
