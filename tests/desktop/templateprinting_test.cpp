// Printing through the shipped template: the lookup finds template 36 in the data folder before the shipped
// copy, the document's values fill the template escaped, and the PDF the component writes holds every value
// of the demo worksheet in the template's order (read back with poppler's pdftotext).
#include "desktop/templateprinting.h"

#include "support/screentest.h"
#include "support/serviceset.h"

#include "messaging/protocolwords.h"
#include "refunds/worksheet.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace adjustacc::desktop {
namespace {

using namespace Qt::Literals::StringLiterals;
using refunds::QORVA_WorkSheet;

const QString kShippedTemplate = QStringLiteral(ADJUSTACC_SOURCE_DIR "/src/desktop/templates/template-36.html");

QString readText(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// Demo worksheet 3000006 of Acme Hauling, mailed, as the host answers it.
QString demoWorksheetDocument(testsupport::ServiceSet& set) {
  const QStringList fields = {u"RCPT_NBR"_s,   u"CUST_ID"_s,    u"RFND_NBR"_s,   u"RFND_AMT"_s,   u"TO"_s,
                              u"DT_MLD"_s,     u"CREATOR_ID"_s, u"VERIFY_ID"_s,  u"APPROVE_ID"_s, u"RFND_BY_ID"_s,
                              u"DMV_CMMT_TXT"_s, u"FISCAL_CMMT_TXT"_s, u"RFND_CD"_s, u"WRNT_NBR"_s, u"RFND_DT"_s,
                              u"STTS_CD"_s,    u"CUST_NM"_s,    u"ADDR_1"_s,     u"ADDR_2"_s,     u"CITY"_s,
                              u"STATE"_s,      u"ZIP"_s};
  const QList<QVariant> row = {
      u"8000005"_s, u"100003"_s, u"3000006"_s, u"30.00"_s, u"2"_s, u"2024-03-04"_s, u"ADMIN01"_s, u"VERIFY01"_s,
      u"APPROVE01"_s, u"FISCAL01"_s, u"Overpayment on receipt 8000005 returned\nto the taxpayer & agent"_s,
      u"Warrant mailed <certified>"_s, u"1"_s, u"W-2024-0117"_s, u"2024-03-01"_s, u"5"_s, u"ACME HAULING INC"_s,
      u"900 Depot Rd"_s, QVariant(), u"Millbrook"_s, u"NE"_s, u"68001"_s};
  set.codes.add(u"REFUNDTYP"_s, u"5"_s, u"MAILED"_s);
  QORVA_WorkSheet sheet(set.services);
  sheet.SetLoadedFromOutSide(true);
  sheet.LoadMe(u"100003"_s, u"5"_s, u"3000006"_s, QString());
  sheet.setVisible(true);
  EXPECT_TRUE(set.link.answerLast(testsupport::replyWith(
      {{messaging::sectionnames::Refund, testsupport::section(fields, {row})}})));
  EXPECT_TRUE(testsupport::waitFor([&] { return sheet.mLblData[QORVA_WorkSheet::NameLabel].caption() != u""; }));
  return sheet.GetWorkSheetforPrint();
}

TEST(TemplatePrinting, TheDataFoldersTemplateComesBeforeTheShippedOne) {
  QTemporaryDir data;
  TemplatePrinting printing(data.path());
  EXPECT_EQ(printing.templateFolders().first(), QDir(data.path()).filePath(u"templates"_s));
  EXPECT_EQ(printing.templatePath(99), u"");  // no such template anywhere
  ASSERT_TRUE(QDir(data.path()).mkpath(u"templates"_s));
  QFile replacement(QDir(data.path()).filePath(u"templates/template-99.html"_s));
  ASSERT_TRUE(replacement.open(QIODevice::WriteOnly));
  replacement.write("<p>{{REFUNDNO}}</p>");
  replacement.close();
  EXPECT_EQ(printing.templatePath(99), QFileInfo(replacement).absoluteFilePath());
}

TEST(TemplatePrinting, TheShippedTemplatesAreCopiedIntoTheDataFolderButNeverOverAnAdministratorsCopy) {
  QTemporaryDir data;
  TemplatePrinting printing(data.path());
  const QString shipped = QCoreApplication::applicationDirPath() + u"/templates"_s;
  const QString shippedFile = shipped + u"/template-98.html"_s;
  QFile::remove(shippedFile);
  EXPECT_EQ(printing.templatePath(98), u"");
  // A template shipped beside the program.
  const bool made = QDir().mkpath(shipped);
  ASSERT_TRUE(made);
  ASSERT_TRUE(QFile::copy(kShippedTemplate, shippedFile));
  const QString installed = QDir(data.path()).filePath(u"templates/template-98.html"_s);
  EXPECT_EQ(printing.installShippedTemplates(), u"");
  EXPECT_EQ(readText(installed), readText(kShippedTemplate));
  QFile administrators(installed);
  ASSERT_TRUE(administrators.open(QIODevice::WriteOnly | QIODevice::Truncate));
  administrators.write("<p>{{REFUNDNO}}</p>");
  administrators.close();
  EXPECT_EQ(printing.installShippedTemplates(), u"");
  EXPECT_EQ(readText(installed), u"<p>{{REFUNDNO}}</p>");
  EXPECT_EQ(printing.templatePath(98), QFileInfo(installed).absoluteFilePath());
  QFile::remove(shippedFile);
}

TEST(TemplatePrinting, ValuesAreEscapedAndKeepTheirLineBreaks) {
  const PrintValues values =
      readPrintDocument(u"<AdjustAccount><A>1 &lt; 2 &amp; 3</A><B>one&#xd;\ntwo</B><C></C></AdjustAccount>"_s);
  ASSERT_EQ(values.error, u"");
  EXPECT_EQ(values.names, (QStringList{u"A"_s, u"B"_s, u"C"_s}));
  EXPECT_EQ(fillTemplate(u"<p>{{A}}|{{B}}|{{C}}|{{MISSING}}|{{A}}</p>"_s, values),
            u"<p>1 &lt; 2 &amp; 3|one<br>two|||1 &lt; 2 &amp; 3</p>");
  EXPECT_NE(readPrintDocument(u"<AdjustAccount><A>"_s).error, u"");
}

TEST(TemplatePrinting, TheShippedTemplatePlacesEveryElementOfTheWorksheetOnce) {
  const QStringList fields = templateFields(readText(kShippedTemplate));
  EXPECT_EQ(fields, (QStringList{u"REFUNDNO"_s, u"REFUNDAMT"_s, u"REFUNDSTAT"_s, u"REFUNDTO"_s, u"CUSTNAME"_s,
                                 u"CUSTADDR"_s, u"CUSTSTATE"_s, u"CUSTCITY"_s, u"CUSTZIP"_s, u"PREPAREDBY"_s,
                                 u"VERIFIEDBY"_s, u"APPROVEDBY"_s, u"DATEMAILED"_s, u"HEADQUARTERCOMMENT"_s,
                                 u"OVERAGE"_s, u"WARRANTNO"_s, u"REFUNDDATE"_s, u"REFUNDBY"_s, u"FISCALCOMMENT"_s}));
}

TEST(TemplatePrinting, TheDemoWorksheetsPdfHoldsEveryValueInTheTemplatesOrder) {
  const QString pdftotext = QStandardPaths::findExecutable(u"pdftotext"_s);
  if (pdftotext.isEmpty()) {
    GTEST_SKIP() << "pdftotext (poppler-utils) is not installed; scripts/setup-deps.sh installs it";
  }
  testsupport::ServiceSet set;
  const QString document = demoWorksheetDocument(set);
  const PrintValues values = readPrintDocument(document);
  ASSERT_EQ(values.error, u"");

  QTemporaryDir out;
  TemplatePrintComponent component;
  component.setTemplatePath(kShippedTemplate);
  component.setDocumentText(document);
  const QString pdf = out.filePath(u"worksheet.pdf"_s);
  ASSERT_EQ(component.savePdf(pdf), u"");
  QFile written(pdf);
  ASSERT_TRUE(written.open(QIODevice::ReadOnly));
  EXPECT_TRUE(written.read(5).startsWith("%PDF-"));

  QProcess toText;
  toText.start(pdftotext, {u"-layout"_s, pdf, u"-"_s});
  ASSERT_TRUE(toText.waitForFinished(30000));
  ASSERT_EQ(toText.exitCode(), 0) << toText.readAllStandardError().toStdString();
  // Words as the PDF holds them, so that line breaks inside a comment do not matter; the font's ligatures
  // ("fi") read back as their letters.
  const QString text =
      QString::fromUtf8(toText.readAllStandardOutput()).normalized(QString::NormalizationForm_KC).simplified();
  qsizetype at = 0;
  int nonEmpty = 0;
  for (const QString& field : templateFields(readText(kShippedTemplate))) {
    const QString value = values.values.value(field).simplified();
    if (value.isEmpty()) {
      continue;
    }
    ++nonEmpty;
    const qsizetype found = text.indexOf(value, at);
    ASSERT_GE(found, 0) << field.toStdString() << " \"" << value.toStdString() << "\" not found after position "
                        << at << " in: " << text.toStdString();
    at = found + value.size();
  }
  EXPECT_EQ(nonEmpty, 19);

#ifdef ADJUSTACC_SCREENSHOT_DIR
  // The first page as a picture, for people to look at.
  const QString pdftoppm = QStandardPaths::findExecutable(u"pdftoppm"_s);
  if (!pdftoppm.isEmpty() && QDir().mkpath(QStringLiteral(ADJUSTACC_SCREENSHOT_DIR))) {
    QProcess::execute(pdftoppm, {u"-png"_s, u"-r"_s, u"60"_s, u"-singlefile"_s, pdf,
                                 QStringLiteral(ADJUSTACC_SCREENSHOT_DIR "/refund-worksheet-pdf")});
  }
#endif
}

}  // namespace
}  // namespace adjustacc::desktop
