#pragma once
// Printing a document through a template kept by the system's administrators: the template lookup finds
// the template file by its number, the print component fills it with an XML document's values and prints.
// The desktop supplies both; screens only use these interfaces.

#include <QString>

#include <memory>

namespace adjustacc::platform {

class PrintComponent {
public:
  virtual ~PrintComponent();
  virtual void setTemplatePath(const QString& path) = 0;
  virtual void setDocumentText(const QString& xml) = 0;
  // Prints `copies` copies, first showing the print dialog when `show` is true. Empty when printed; otherwise
  // what went wrong (including a print the person cancelled).
  virtual QString print(bool show, int copies) = 0;
  virtual void close() = 0;
};

// Makes a fresh print component for each print.
class PrintComponentFactory {
public:
  virtual ~PrintComponentFactory();
  virtual std::unique_ptr<PrintComponent> createPrintComponent() = 0;
};

class TemplateLookup {
public:
  virtual ~TemplateLookup();
  // Path of the template file with this number (the refund worksheet's is 36); empty when there is none.
  virtual QString templatePath(int templateNumber) = 0;
};

inline constexpr int kRefundWorksheetTemplate = 36;

}  // namespace adjustacc::platform
