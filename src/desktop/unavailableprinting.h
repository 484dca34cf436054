#pragma once
// Printing as this build of the desktop offers it: not yet. The print component refuses every print with a
// text that says so, and no template is installed, so a screen that prints tells the clerk plainly instead of
// failing quietly.

#include "platform/printing.h"

namespace adjustacc::desktop {

inline const QString kPrintingUnavailable =
    QStringLiteral("Printing is not available in this version of the application.");

class UnavailablePrinting : public platform::PrintComponentFactory, public platform::TemplateLookup {
public:
  std::unique_ptr<platform::PrintComponent> createPrintComponent() override;
  // Always empty: no print templates are installed.
  QString templatePath(int templateNumber) override;
};

}  // namespace adjustacc::desktop
