// The document against the real host system on a demo database: a demo account opened through Open Account
// and its list filled and described from the code tables. A penalty removed on the detail screen and the list
// read again with the new balance is the desktop scenario in the end-to-end suite.
#include "documentfixture.h"

#include "host/demodata.h"
#include "host/embeddedlink.h"
#include "host/hostsystem.h"
#include "platform/sqlcodeservices.h"

#include <QSqlDatabase>

namespace adjustacc::document::testing {
namespace {

TEST(EmbeddedDocument, OpensADemoCitationAndDescribesItsReceivable) {
  const QString connection = u"document-embedded"_s;
  QTemporaryDir dir;
  host::DatabaseOptions options;
  options.databaseName = dir.filePath(u"adjustacc.sqlite"_s);
  const QDate day(2024, 3, 7);
  ASSERT_TRUE(host::openDatabase(options, connection).ok());
  ASSERT_TRUE(host::createSchema(connection).ok());
  ASSERT_TRUE(host::loadDemoData(connection, day).ok());
  {
    testsupport::ServiceSet set;
    host::EmbeddedLink link({dir.path(), u"adjustacc.sqlite"_s, host::demo::Admin, day});
    platform::User officer(host::demo::Admin, u"Avery Lindqvist"_s, u"NE"_s, {u"ADJUSTAR"_s});
    platform::SqlCodeServices codeServices(connection, officer, set.clock, link, set.session);
    platform::Services services = codeServices.services(set.ui, link, set.clock, officer, set.session,
                                                        set.statusBar, set.errors, set.printing, set.templates);
    FakeContainer container;
    FakeHost host;
    QORVA_AdjustAcc doc(services, container, host);
    doc.UserDocument_Show();
    set.ui.queueModal([](platform::ModalForm& form) {
      auto& inq = dynamic_cast<inquiry::QORVA_FormInq&>(form);
      inq.mTxtDocNbr.setText(u"1000011"_s);  // the default type, citation
      inq.mCmdBttn[inquiry::QORVA_FormInq::OkButton].click();
    });
    doc.FileOpen();
    EXPECT_EQ(set.statusBar.text(), u"Searching for CITATION ENF001 number 1000011-5");
    ASSERT_TRUE(testsupport::waitFor([&] { return !doc.requestOutstanding(); }));
    ASSERT_EQ(set.ui.boxCount(), 0) << set.ui.lastBox().text.toStdString();
    platform::Grid& receivables = doc.mSdgDBGrid[0];
    ASSERT_EQ(receivables.rows(), 1);
    EXPECT_EQ(receivables.column(u"FORM_DESC"_s).cellValue(0), u"CITATION ENF001"_s);
    EXPECT_EQ(receivables.column(u"CUST_NAME"_s).cellValue(0), u"SMITH TRUCKING LLC"_s);
    EXPECT_EQ(set.statusBar.text(), u"Ready");
  }
  QSqlDatabase::database(connection, false).close();
  QSqlDatabase::removeDatabase(connection);
}

}  // namespace
}  // namespace adjustacc::document::testing
