#pragma once
// The running desktop: the services every screen is handed, the link to the host, the local code tables,
// the Qt Ui with every form's view registered, and the document window.
//
// start() shows the window at once with "Loading information" and signs on in the background (officer,
// rights, code tables: SignOn). A failed sign-on says why, names the officer id and the host, and offers to try
// again (in its message box, and with a button in the window). When that is done the first document is created in its tab, shown, and -
// from the event loop, once the window has been drawn - asked to open an account (FileOpen).

#include "codetablestore.h"
#include "qtui.h"
#include "signon.h"
#include "startoptions.h"
#include "templateprinting.h"

#include "platform/clock.h"
#include "platform/errorreporter.h"
#include "platform/services.h"
#include "platform/sessionsettings.h"
#include "platform/sqlcodeservices.h"
#include "platform/statusbar.h"
#include "platform/user.h"

#include <QObject>

#include <memory>

namespace adjustacc::host {
class EmbeddedLink;
}
namespace adjustacc::messaging {
class HostLink;
}

namespace adjustacc::desktop {

class DocumentWindow;

class Application : public QObject {
  Q_OBJECT
public:
  explicit Application(StartOptions options, QObject* parent = nullptr);
  ~Application() override;

  // Shows the window and starts signing on.
  void start();

  const StartOptions& options() const { return m_options; }
  DocumentWindow& window() { return *m_window; }
  QtUi& ui() { return m_ui; }
  platform::Services& services() { return m_services; }
  platform::StatusBar& statusBar() { return m_statusBar; }
  const platform::User& user() const { return m_user; }
  messaging::HostLink& hostLink() { return *m_link; }
  // The embedded link, or null when the host is remote.
  host::EmbeddedLink* embeddedLink() const;
  CodeTableStore& codeTableStore() { return m_store; }
  SignOn& signOn() { return *m_signOn; }
  // "Local data: <file>" or "Host: <url>".
  QString hostDescription() const;

  // Registers the view of every form this build can show.
  static void registerViews(QtUi& ui);

Q_SIGNALS:
  // Signed on; the first document is open and shown (FileOpen follows from the event loop).
  void ready();
  void signOnFailed(const QString& error);

private:
  // Shows the window busy and signs on (again).
  void startSignOn();
  void signedOn(bool ok);
  // What the clerk can do about a failed sign-on.
  QString signOnAdvice() const;

  StartOptions m_options;
  platform::Clock m_clock;
  platform::SessionSettings m_session;
  platform::StatusBar m_statusBar;
  platform::User m_user;
  QtUi m_ui;
  platform::ErrorReporter m_errors;
  std::unique_ptr<messaging::HostLink> m_link;
  CodeTableStore m_store;
  platform::SqlCodeServices m_codeServices;  // on the local copy of the code tables
  TemplatePrinting m_printing;
  platform::Services m_services;
  std::unique_ptr<DocumentWindow> m_window;
  std::unique_ptr<SignOn> m_signOn;
};

}  // namespace adjustacc::desktop
