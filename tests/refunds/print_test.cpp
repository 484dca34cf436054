// The printed worksheet: the nineteen-element document the template is filled from, and how the Print button
// hands it to the print component.
#include "worksheetfixture.h"

#include <QFile>

namespace adjustacc::refunds::testing {
namespace {

QString golden(const QString& name) {
  QFile file(QStringLiteral(ADJUSTACC_SOURCE_DIR "/tests/refunds/golden/") + name);
  if (!file.open(QIODevice::ReadOnly)) {
    ADD_FAILURE() << "no golden file " << name.toStdString();
    return {};
  }
  return QString::fromUtf8(file.readAll()).trimmed();
}

// Remembers what the screen handed over and answers as a person who cancelled the print dialog would.
class RecordingPrinting : public platform::PrintComponentFactory, public platform::TemplateLookup {
public:
  struct Print {
    QString templatePath;
    QString document;
    bool show = false;
    int copies = 0;
    bool closed = false;
  };
  class Component : public platform::PrintComponent {
  public:
    explicit Component(Print& print) : m_print(print) {}
    void setTemplatePath(const QString& path) override { m_print.templatePath = path; }
    void setDocumentText(const QString& xml) override { m_print.document = xml; }
    QString print(bool show, int copies) override {
      m_print.show = show;
      m_print.copies = copies;
      return u"The print was cancelled."_s;
    }
    void close() override { m_print.closed = true; }

  private:
    Print& m_print;
  };

  std::unique_ptr<platform::PrintComponent> createPrintComponent() override {
    prints.append(std::make_shared<Print>());
    return std::make_unique<Component>(*prints.last());
  }
  QString templatePath(int number) override {
    asked.append(number);
    return path;
  }

  QString path;
  QList<int> asked;
  QList<std::shared_ptr<Print>> prints;
};

class WorkSheetPrintTest : public WorkSheetTest {
public:
  WorkSheetPrintTest() {
    m_set.user.setDocumentName(u"Adjust Account"_s);
  }
};

TEST_F(WorkSheetPrintTest, AMailedWorksheetPrintsEveryValueInTheTemplatesOrder) {
  W& s = openExisting(u"5"_s, u""_s, {{u"FISCAL_CMMT_TXT"_s, u"Warrant & stub mailed <certified>"_s}});
  EXPECT_EQ(s.GetWorkSheetforPrint(), golden(u"worksheet-mailed.xml"_s));
}

TEST_F(WorkSheetPrintTest, HiddenDatesAndNoReceiverPrintAsEmptyElements) {
  W& s = openExisting(u"1"_s, u"O"_s, {{u"TO"_s, QVariant()}});
  const QString xml = s.GetWorkSheetforPrint();
  EXPECT_TRUE(xml.startsWith(u"<AdjustAccount><REFUNDNO>3000002</REFUNDNO><REFUNDAMT>$1,234.50</REFUNDAMT>"
                             "<REFUNDSTAT>PREPARED</REFUNDSTAT><REFUNDTO></REFUNDTO><CUSTNAME>"_s))
      << xml.toStdString();
  EXPECT_TRUE(xml.contains(u"<DATEMAILED></DATEMAILED>"_s)) << xml.toStdString();
  EXPECT_TRUE(xml.contains(u"<REFUNDDATE></REFUNDDATE>"_s));
  EXPECT_TRUE(xml.contains(u"<OVERAGE></OVERAGE>"_s));
}

TEST_F(WorkSheetPrintTest, PrintHandsTheDocumentAndTemplateToTheComponentAndIgnoresACancel) {
  RecordingPrinting printing;
  printing.path = u"/srv/templates/refund-worksheet-36.html"_s;
  testsupport::ServiceSet& t = m_set;
  platform::Services withPrinting{t.ui,         t.link,      t.clock,          t.user,       t.session,
                                  t.statusBar,  t.errors,    t.codes,          t.codeTables, t.keyFilters,
                                  t.checkDigit, t.formNumbers, t.troopDistricts, t.numbers,  t.fieldMarking,
                                  printing,     printing};
  W s(withPrinting);
  s.SetLoadedFromOutSide(true);
  s.LoadMe(u"100003"_s, u"V"_s, u"3000002"_s, u""_s);
  s.setVisible(true);
  answer(worksheetReply(worksheetAt(u"V"_s)));
  const int boxes = m_set.ui.boxCount();
  ASSERT_TRUE(s.mCmdButton[W::PrintButton].click());
  EXPECT_EQ(printing.asked, QList<int>{36});
  ASSERT_EQ(printing.prints.size(), 1);
  const RecordingPrinting::Print& print = *printing.prints.first();
  EXPECT_EQ(print.templatePath, printing.path);
  EXPECT_EQ(print.document, s.GetWorkSheetforPrint());
  EXPECT_TRUE(print.show);
  EXPECT_EQ(print.copies, 1);
  EXPECT_TRUE(print.closed);
  EXPECT_EQ(m_set.ui.boxCount(), boxes);  // the cancel is not reported
  EXPECT_TRUE(s.isVisible());
  EXPECT_TRUE(s.mCmdButton[W::PrintButton].isEnabled());
}

TEST_F(WorkSheetPrintTest, WithoutATemplateNothingIsPrintedAndTheClerkIsTold) {
  W& s = openExisting(u"5"_s);
  ASSERT_TRUE(s.mCmdButton[W::PrintButton].click());
  EXPECT_EQ(m_set.ui.lastBox().text, u"No template file is available for print. Contact your system "
                                     "administrator.\r\n\r\nSource: QORVA_WorkSheet.PrintWorksheet");
  EXPECT_EQ(m_set.ui.lastBox().icon, platform::MsgIcon::Critical);
}

}  // namespace
}  // namespace adjustacc::refunds::testing
