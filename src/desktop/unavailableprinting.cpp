#include "unavailableprinting.h"

#include "logging.h"

namespace adjustacc::desktop {

namespace {

class RefusingPrintComponent : public platform::PrintComponent {
public:
  void setTemplatePath(const QString&) override {}
  void setDocumentText(const QString&) override {}
  QString print(bool, int) override {
    qCWarning(lcDesktop).noquote() << "print refused:" << kPrintingUnavailable;
    return kPrintingUnavailable;
  }
  void close() override {}
};

}  // namespace

std::unique_ptr<platform::PrintComponent> UnavailablePrinting::createPrintComponent() {
  return std::make_unique<RefusingPrintComponent>();
}

QString UnavailablePrinting::templatePath(int templateNumber) {
  qCWarning(lcDesktop) << "print template" << templateNumber << "asked for; no print templates are installed";
  return {};
}

}  // namespace adjustacc::desktop
