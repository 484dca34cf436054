#include "templateprinting.h"

#include "logging.h"

#include <QAction>
#include <QCoreApplication>
#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPageLayout>
#include <QPdfWriter>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTextDocument>
#include <QToolBar>

namespace adjustacc::desktop {

namespace {

const QRegularExpression& fieldPattern() {
  static const QRegularExpression pattern(QStringLiteral("\\{\\{([A-Za-z_][A-Za-z0-9_]*)\\}\\}"));
  return pattern;
}

QString escaped(const QString& value) {
  QString html = value.toHtmlEscaped();
  html.replace(QStringLiteral("\r\n"), QStringLiteral("<br>"));
  html.replace(u'\n', QStringLiteral("<br>"));
  return html;
}

void render(const QString& html, QPagedPaintDevice& device) {
  QTextDocument document;
  document.setHtml(html);
  document.print(&device);
}

}  // namespace

PrintValues readPrintDocument(const QString& xml) {
  PrintValues result;
  QDomDocument document;
  QString problem;
  int line = 0;
  if (!document.setContent(xml, false, &problem, &line)) {
    result.error = QStringLiteral("The worksheet could not be read for printing (line %1: %2).").arg(line).arg(problem);
    return result;
  }
  for (QDomElement child = document.documentElement().firstChildElement(); !child.isNull();
       child = child.nextSiblingElement()) {
    result.names.append(child.tagName());
    result.values.insert(child.tagName(), child.text());
  }
  return result;
}

QString fillTemplate(const QString& templateText, const PrintValues& values) {
  QString filled;
  qsizetype from = 0;
  QRegularExpressionMatchIterator it = fieldPattern().globalMatch(templateText);
  while (it.hasNext()) {
    const QRegularExpressionMatch match = it.next();
    filled += templateText.mid(from, match.capturedStart() - from);
    filled += escaped(values.values.value(match.captured(1)));
    from = match.capturedEnd();
  }
  filled += templateText.mid(from);
  return filled;
}

QStringList templateFields(const QString& templateText) {
  QStringList names;
  QRegularExpressionMatchIterator it = fieldPattern().globalMatch(templateText);
  while (it.hasNext()) {
    names.append(it.next().captured(1));
  }
  return names;
}

// --- the component ----------------------------------------------------------------------------------------------

TemplatePrintComponent::TemplatePrintComponent(QWidget* parent) : m_parent(parent) {}

void TemplatePrintComponent::setTemplatePath(const QString& path) { m_templatePath = path; }

void TemplatePrintComponent::setDocumentText(const QString& xml) { m_document = xml; }

void TemplatePrintComponent::close() {
  m_templatePath.clear();
  m_document.clear();
}

QString TemplatePrintComponent::filledHtml(QString* error) const {
  QFile file(m_templatePath);
  if (!file.open(QIODevice::ReadOnly)) {
    *error = QStringLiteral("The print template %1 could not be read: %2. Contact your system administrator.")
                 .arg(QDir::toNativeSeparators(m_templatePath), file.errorString());
    return {};
  }
  const PrintValues values = readPrintDocument(m_document);
  if (!values.error.isEmpty()) {
    *error = values.error;
    return {};
  }
  return fillTemplate(QString::fromUtf8(file.readAll()), values);
}

QString TemplatePrintComponent::savePdf(const QString& path) const {
  QString error;
  const QString html = filledHtml(&error);
  if (html.isEmpty()) {
    return error;
  }
  QPdfWriter writer(path);
  writer.setPageSize(QPageSize(QPageSize::Letter));
  writer.setPageMargins(QMarginsF(18, 18, 18, 18), QPageLayout::Millimeter);
  writer.setTitle(QStringLiteral("Refund Worksheet"));
  writer.setCreator(QCoreApplication::applicationName());
  render(html, writer);
  if (!QFileInfo(path).exists()) {
    return QStringLiteral("The PDF file %1 could not be written.").arg(QDir::toNativeSeparators(path));
  }
  return {};
}

QString TemplatePrintComponent::print(bool show, int copies) {
  QString error;
  const QString html = filledHtml(&error);
  if (html.isEmpty()) {
    qCWarning(lcDesktop).noquote() << "print:" << error;
    QMessageBox::warning(m_parent, QStringLiteral("Print"), error);
    return error;
  }
  QPrinter printer(QPrinter::HighResolution);
  printer.setCopyCount(copies);
  printer.setPageSize(QPageSize(QPageSize::Letter));
  printer.setDocName(QStringLiteral("Refund Worksheet"));
  if (!show) {
    render(html, printer);
    return printer.printerState() == QPrinter::Error ? QStringLiteral("The printer reported an error.") : QString();
  }
  QPrintPreviewDialog preview(&printer, m_parent);
  preview.setWindowTitle(QStringLiteral("Print Preview - Refund Worksheet"));
  QObject::connect(&preview, &QPrintPreviewDialog::paintRequested, &preview,
                   [&html](QPrinter* target) { render(html, *target); });
  QString saved;
  // The preview's own Print button offers the system's printers; this one saves the worksheet as a PDF file.
  if (QToolBar* bar = preview.findChild<QToolBar*>()) {
    QAction* savePdfAction = bar->addAction(QIcon::fromTheme(QStringLiteral("document-save-as")),
                                            QStringLiteral("Save as PDF..."));
    savePdfAction->setObjectName(QStringLiteral("savePdfAction"));
    QObject::connect(savePdfAction, &QAction::triggered, &preview, [&] {
      const QString path = QFileDialog::getSaveFileName(
          &preview, QStringLiteral("Save as PDF"),
          QDir(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation)).filePath(QStringLiteral("refund-worksheet.pdf")),
          QStringLiteral("PDF files (*.pdf)"));
      if (path.isEmpty()) {
        return;
      }
      if (const QString problem = savePdf(path); !problem.isEmpty()) {
        QMessageBox::warning(&preview, QStringLiteral("Save as PDF"), problem);
        return;
      }
      saved = path;
      preview.accept();
    });
  }
  const int answer = preview.exec();
  if (!saved.isEmpty()) {
    return {};
  }
  return answer == QDialog::Accepted ? QString() : QStringLiteral("The print was cancelled.");
}

// --- the lookup --------------------------------------------------------------------------------------------------

TemplatePrinting::TemplatePrinting(QString dataFolder) : m_dataFolder(std::move(dataFolder)) {}

std::unique_ptr<platform::PrintComponent> TemplatePrinting::createPrintComponent() {
  return std::make_unique<TemplatePrintComponent>(m_parent);
}

QStringList TemplatePrinting::templateFolders() const {
  const QString data =
      m_dataFolder.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) : m_dataFolder;
  const QDir program(QCoreApplication::applicationDirPath());
  return {QDir(data).filePath(QStringLiteral("templates")),
          QDir::cleanPath(program.filePath(QStringLiteral("../share/adjustacc/templates"))),
          program.filePath(QStringLiteral("templates"))};
}

QString TemplatePrinting::installShippedTemplates() const {
  const QStringList folders = templateFolders();
  const QDir target(folders.first());
  bool shippedAny = false;
  for (const QString& shipped : folders.mid(1)) {
    const QFileInfoList files = QDir(shipped).entryInfoList({QStringLiteral("template-*.html")}, QDir::Files);
    if (files.isEmpty()) {
      continue;
    }
    shippedAny = true;
    if (!target.mkpath(QStringLiteral("."))) {
      return QStringLiteral("The templates folder %1 could not be made.").arg(QDir::toNativeSeparators(target.path()));
    }
    for (const QFileInfo& file : files) {
      const QString copy = target.filePath(file.fileName());
      if (!QFileInfo::exists(copy) && !QFile::copy(file.absoluteFilePath(), copy)) {
        return QStringLiteral("The print template %1 could not be copied to %2.")
            .arg(file.fileName(), QDir::toNativeSeparators(target.path()));
      }
    }
  }
  return shippedAny ? QString()
                    : QStringLiteral("No print templates were found in %1.").arg(folders.mid(1).join(QStringLiteral(", ")));
}

QString TemplatePrinting::templatePath(int templateNumber) {
  const QString name = QStringLiteral("template-%1.html").arg(templateNumber);
  for (const QString& folder : templateFolders()) {
    const QFileInfo candidate(QDir(folder).filePath(name));
    if (candidate.isFile() && candidate.isReadable()) {
      return candidate.absoluteFilePath();
    }
  }
  qCWarning(lcDesktop).noquote() << "no print template" << name << "in" << templateFolders().join(QStringLiteral(", "));
  return {};
}

}  // namespace adjustacc::desktop
