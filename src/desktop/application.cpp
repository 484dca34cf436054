#include "application.h"

#include "accdetailview.h"
#include "activityview.h"
#include "documentwindow.h"
#include "forminqview.h"
#include "licpurchoptview.h"
#include "logging.h"
#include "paydetailview.h"
#include "selectcustforminqview.h"
#include "transpaymentview.h"
#include "worksheetview.h"

#include "activity/activity.h"
#include "ardetail/accdetail.h"
#include "ardetail/licpurchopt.h"
#include "document/adjustacc.h"
#include "host/embeddedlink.h"
#include "inquiry/forminq.h"
#include "inquiry/selectcustforminq.h"
#include "messaging/remotelink.h"
#include "payments/paydetail.h"
#include "payments/transpayment.h"
#include "refunds/worksheet.h"
#include "platform/modmessagetitle.h"

#include <QGuiApplication>
#include <QTimer>

namespace adjustacc::desktop {

namespace {

std::unique_ptr<messaging::HostLink> makeLink(const StartOptions& options) {
  if (options.mode == StartOptions::Mode::Remote) {
    return std::make_unique<messaging::RemoteLink>(options.hostUrl, options.token);
  }
  host::EmbeddedLinkOptions embedded;
  embedded.dataFolder = options.dataFolder;
  embedded.officerId = options.officerId;
  embedded.latencyMs = options.latencyMs;
  embedded.dutySeparation = options.dutySeparation;
  return std::make_unique<host::EmbeddedLink>(embedded);
}

// Each application object has its own connection, so tests may run several one after the other.
QString codeConnectionName(const void* owner) {
  return QStringLiteral("adjustacc.codes.%1").arg(reinterpret_cast<quintptr>(owner), 0, 16);
}

}  // namespace

Application::Application(StartOptions options, QObject* parent)
    : QObject(parent),
      m_options(std::move(options)),
      m_errors(m_ui),
      m_link(makeLink(m_options)),
      m_store(codeConnectionName(this)),
      m_codeServices(m_store.connectionName(), m_user, m_clock, *m_link, m_session),
      m_printing(m_options.mode == StartOptions::Mode::Remote ? QString() : m_options.dataFolder),
      m_services(m_codeServices.services(m_ui, *m_link, m_clock, m_user, m_session, m_statusBar, m_errors,
                                         m_printing, m_printing)) {
  registerViews(m_ui);
  m_window = std::make_unique<DocumentWindow>(m_ui, m_statusBar);
  m_ui.setMainWindow(m_window.get());
  m_printing.setDialogParent(m_window.get());
  if (const QString problem = m_printing.installShippedTemplates(); !problem.isEmpty()) {
    qCWarning(lcDesktop).noquote() << "print templates:" << problem;
  }
  m_signOn = std::make_unique<SignOn>(*m_link, m_session, m_options.officerId, m_store);
  connect(m_signOn.get(), &SignOn::finished, this, &Application::signedOn);
  if (auto* embedded = embeddedLink()) {
    connect(embedded, &host::EmbeddedLink::databaseError, this, [](const QString& text) {
      qCCritical(lcDesktop).noquote() << "local database:" << text;
    });
  }
  if (!m_store.isOpen()) {
    qCCritical(lcDesktop).noquote() << m_store.openError();
  }
}

Application::~Application() {
  // Documents close while the services they use still exist.
  m_window.reset();
  m_signOn.reset();
}

void Application::registerViews(QtUi& ui) {
  ui.registerView<ardetail::QORVA_AccDetail, AccDetailView>(ardetail::QORVA_AccDetail::kFormName);
  ui.registerView<activity::QORVA_Activity, ActivityView>(activity::QORVA_Activity::kFormName);
  ui.registerView<ardetail::QORVA_LicPurchOpt, LicPurchOptView>(ardetail::QORVA_LicPurchOpt::kFormName);
  ui.registerView<payments::QORVA_PayDetail, PayDetailView>(payments::QORVA_PayDetail::kFormName);
  ui.registerView<payments::QORVA_TransPayment, TransPaymentView>(payments::QORVA_TransPayment::kFormName);
  ui.registerView<refunds::QORVA_WorkSheet, WorkSheetView>(refunds::QORVA_WorkSheet::kFormName);
  ui.registerView<inquiry::QORVA_FormInq, FormInqView>(inquiry::QORVA_FormInq::kFormName);
  ui.registerView<inquiry::QORVA_SelectCustFormInq, SelectCustFormInqView>(
      inquiry::QORVA_SelectCustFormInq::kFormName);
}

host::EmbeddedLink* Application::embeddedLink() const { return qobject_cast<host::EmbeddedLink*>(m_link.get()); }

QString Application::hostDescription() const {
  if (const host::EmbeddedLink* embedded = embeddedLink()) {
    return tr("Local data: %1").arg(embedded->databasePath());
  }
  return tr("Host: %1").arg(m_options.hostUrl.toDisplayString());
}

void Application::start() {
  m_window->show();
  qCInfo(lcDesktop).noquote() << "starting;" << hostDescription();
  startSignOn();
}

void Application::startSignOn() {
  m_window->setWorking(true);
  m_window->setPlaceholder(tr("Signing on as %1...").arg(m_options.officerId));
  m_statusBar.setText(platform::modMessageTitle::LoadingInformation);
  m_signOn->start();
}

QString Application::signOnAdvice() const {
  // What the clerk can check or tell the administrator: the officer id and where the host is.
  const QString where = embeddedLink() != nullptr
                            ? tr("the local data in %1").arg(embeddedLink()->databasePath())
                            : tr("the host system at %1").arg(m_options.hostUrl.toDisplayString());
  return tr("Check that %1 is your officer id and that %2 can be reached, or call the administrator; then try "
            "again.")
      .arg(m_options.officerId, where);
}

void Application::signedOn(bool ok) {
  m_window->setWorking(false);
  if (!ok) {
    const QString error = m_signOn->error();
    const QString text = error + QStringLiteral("\n\n") + signOnAdvice();
    m_statusBar.setText(tr("Sign-on failed"));
    // Trying again is always at hand: in the box, and in the window once the box is closed.
    m_window->setPlaceholder(text, [this] { startSignOn(); });
    Q_EMIT signOnFailed(error);
    const platform::MsgAnswer answer = m_ui.messageBox(text, platform::MsgButtons::RetryCancel,
                                                       platform::MsgIcon::Critical,
                                                       QGuiApplication::applicationDisplayName());
    if (answer == platform::MsgAnswer::Retry) {
      // From the event loop: the sign-on that just failed is still reporting.
      QTimer::singleShot(0, this, &Application::startSignOn);
    }
    return;
  }
  m_user = m_signOn->user();
  m_codeServices.codes.clearCache();
  m_window->setSignedOn(tr("%1 (%2, region %3)").arg(m_user.name(), m_user.officerId(), m_user.region()),
                        hostDescription());
  m_window->setPlaceholder(tr("No account is open. Use File > Open Account... to open one."));
  m_window->setDocumentFactory([this](document::DocumentContainer& container, document::DocumentHost& host) {
    return std::make_unique<document::QORVA_AdjustAcc>(m_services, container, host);
  });
  if (!m_signOn->warnings().isEmpty()) {
    m_ui.messageBox(m_signOn->warnings().join(u'\n'), platform::MsgButtons::Ok, platform::MsgIcon::Exclamation,
                    QGuiApplication::applicationDisplayName());
  }
  m_window->newDocument();
  Q_EMIT ready();
  if (m_options.openAtStart) {
    QTimer::singleShot(0, m_window.get(), [window = m_window.get()] { window->openAccount(); });
  }
}

}  // namespace adjustacc::desktop
