#pragma once
// Printing through the templates the administrators keep: the template lookup finds template <n> as the file
// "template-<n>.html" in the first of these folders that has it:
//   1. <data folder>/templates      the folder of the local data (--data, or the user's application data
//                                   folder): the application copies its templates there when they are
//                                   missing, and an administrator edits or replaces them there
//   2. <program>/../share/adjustacc/templates   installed with the application
//   3. <program>/templates          beside the program in the build tree
// The print component fills the template with the print document's values (every "{{NAME}}" becomes the text
// of the document's element NAME) and renders it with Qt's printing: a print preview from which the clerk
// prints on any of the system's printers or saves a PDF, or straight to the default printer.

#include "platform/printing.h"

#include <QMap>
#include <QString>
#include <QStringList>

class QWidget;

namespace adjustacc::desktop {

// The print document's values by element name, in document order; what went wrong when the text is no
// print document.
struct PrintValues {
  QStringList names;
  QMap<QString, QString> values;
  QString error;
};
PrintValues readPrintDocument(const QString& xml);

// The template's text with each "{{NAME}}" replaced by the escaped value (line breaks kept); a name the
// document does not hold prints empty.
QString fillTemplate(const QString& templateText, const PrintValues& values);

// The names of the template's fields, in the order the template places them.
QStringList templateFields(const QString& templateText);

class TemplatePrintComponent : public platform::PrintComponent {
public:
  explicit TemplatePrintComponent(QWidget* parent = nullptr);
  void setTemplatePath(const QString& path) override;
  void setDocumentText(const QString& xml) override;
  // show: a print preview (print on a chosen printer, or save as PDF); otherwise the default printer. Empty
  // when printed or saved; otherwise what went wrong, or that the clerk cancelled.
  QString print(bool show, int copies) override;
  void close() override;

  // The filled template as HTML; empty with `error` set when the template or document cannot be read.
  QString filledHtml(QString* error) const;
  // Renders the filled template to a PDF file (what "Save as PDF" does). Empty on success.
  QString savePdf(const QString& path) const;

private:
  QWidget* m_parent;
  QString m_templatePath;
  QString m_document;
};

class TemplatePrinting : public platform::PrintComponentFactory, public platform::TemplateLookup {
public:
  // `dataFolder`: the local data folder (empty: the user's application data folder).
  explicit TemplatePrinting(QString dataFolder = {});
  void setDialogParent(QWidget* parent) { m_parent = parent; }

  std::unique_ptr<platform::PrintComponent> createPrintComponent() override;
  QString templatePath(int templateNumber) override;
  // The folders searched, first first.
  QStringList templateFolders() const;
  // Copies each template the application ships into the data folder's templates folder, unless a file of
  // that name is already there (an administrator's copy is never overwritten). Answers what went wrong.
  QString installShippedTemplates() const;

private:
  QString m_dataFolder;
  QWidget* m_parent = nullptr;
};

}  // namespace adjustacc::desktop
