#pragma once
// What the benchmarks that drive the document share: the services a desktop hands the document, over the
// embedded host link on the benchmark's database, with a scripted Ui that answers the dialogues, and the
// document itself, shown. Made once the database holds its data.

#include "benchsupport.h"

#include "document/adjustacc.h"
#include "platform/clock.h"
#include "platform/errorreporter.h"
#include "platform/printing.h"
#include "platform/scriptedui.h"
#include "platform/services.h"
#include "platform/sessionsettings.h"
#include "platform/sqlcodeservices.h"
#include "platform/statusbar.h"
#include "platform/user.h"

#include <memory>

namespace adjustacc::benchsupport {

class NoPrinting : public platform::PrintComponentFactory {
public:
  std::unique_ptr<platform::PrintComponent> createPrintComponent() override { return nullptr; }
};
class NoTemplates : public platform::TemplateLookup {
public:
  QString templatePath(int) override { return {}; }
};
class BenchContainer : public document::DocumentContainer {
public:
  QString caption() const override { return QStringLiteral("Adjust Account"); }
  QString tag() const override { return QStringLiteral("BENCH"); }
  QString name() const override { return QStringLiteral("AdjustAccBench"); }
};
class NoToolbar : public document::DocumentHost {
public:
  document::ToolbarHost* toolbarHost() override { return nullptr; }
};

struct DocumentBench {
  // `connection` reads the code tables; `dataFolder` holds the database file the embedded host opens.
  DocumentBench(const QString& connection, const QString& dataFolder, platform::User officer)
      : link(embeddedLink(dataFolder, officer.officerId())), user(std::move(officer)) {
    codeServices = std::make_unique<platform::SqlCodeServices>(connection, user, clock, *link, session);
    services = std::make_unique<platform::Services>(
        codeServices->services(ui, *link, clock, user, session, statusBar, errors, printing, templates));
  }
  // The document, shown; the dialogues it opens are answered by what the benchmark scripted on `ui`.
  document::QORVA_AdjustAcc& showDocument() {
    document = std::make_unique<document::QORVA_AdjustAcc>(*services, container, host);
    document->UserDocument_Show();
    return *document;
  }
  // The document goes before the link it sends through.
  ~DocumentBench() { document.reset(); }

  std::unique_ptr<host::EmbeddedLink> link;
  platform::ScriptedUi ui;
  platform::Clock clock;
  platform::User user;
  platform::SessionSettings session;
  platform::StatusBar statusBar;
  platform::ErrorReporter errors{ui};
  std::unique_ptr<platform::SqlCodeServices> codeServices;
  NoPrinting printing;
  NoTemplates templates;
  std::unique_ptr<platform::Services> services;
  BenchContainer container;
  NoToolbar host;
  std::unique_ptr<document::QORVA_AdjustAcc> document;
};

}  // namespace adjustacc::benchsupport
