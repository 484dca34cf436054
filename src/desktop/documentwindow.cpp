#include "documentwindow.h"

#include "adjustaccview.h"
#include "elidedlabel.h"
#include "logging.h"
#include "qtui.h"

#include "document/adjustacc.h"
#include "platform/statusbar.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QSettings>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTabWidget>
#include <QToolBar>
#include <QVBoxLayout>

namespace adjustacc::desktop {

namespace {

const QString kGeometryKey = QStringLiteral("window/geometry");
const QString kStateKey = QStringLiteral("window/state");

}  // namespace

// ===== the container ================================================================================================

DocumentTab::DocumentTab(QString caption, QString tag, QString name, QWidget* parent)
    : QWidget(parent), m_caption(std::move(caption)), m_tag(std::move(tag)), m_name(std::move(name)) {
  setObjectName(QStringLiteral("tab:") + m_name);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
}

DocumentTab::~DocumentTab() {
  // The widgets let go of the controls before the document and its controls go.
  delete m_view;
  m_document.reset();
}

void DocumentTab::setDocument(std::unique_ptr<document::QORVA_AdjustAcc> document) {
  delete m_view;
  m_view = nullptr;
  m_document = std::move(document);
  if (m_document) {
    m_view = new AdjustAccView(*m_document, this);
    layout()->addWidget(m_view);
  }
}

// ===== the window ===================================================================================================

DocumentWindow::DocumentWindow(QtUi& ui, platform::StatusBar& status, QWidget* parent)
    : QMainWindow(parent), m_ui(ui), m_statusBar(status) {
  setObjectName(QStringLiteral("documentWindow"));

  m_stack = new QStackedWidget(this);
  m_placeholderPage = new QWidget(m_stack);
  auto* placeholderLayout = new QVBoxLayout(m_placeholderPage);
  placeholderLayout->addStretch(1);
  m_placeholder = new QLabel(m_placeholderPage);
  m_placeholder->setObjectName(QStringLiteral("placeholder"));
  m_placeholder->setAlignment(Qt::AlignCenter);
  m_placeholder->setWordWrap(true);
  m_placeholder->setTextFormat(Qt::PlainText);
  placeholderLayout->addWidget(m_placeholder);
  m_retry = new QPushButton(tr("&Try Again"), m_placeholderPage);
  m_retry->setObjectName(QStringLiteral("retry"));
  m_retry->hide();
  connect(m_retry, &QPushButton::clicked, this, [this] {
    if (const std::function<void()> retry = m_retryAction) {
      retry();
    }
  });
  placeholderLayout->addWidget(m_retry, 0, Qt::AlignHCenter);
  placeholderLayout->addStretch(1);
  m_tabs = new QTabWidget(m_stack);
  m_tabs->setDocumentMode(true);
  m_tabs->setTabsClosable(true);
  m_stack->addWidget(m_placeholderPage);
  m_stack->addWidget(m_tabs);
  setCentralWidget(m_stack);
  connect(m_tabs, &QTabWidget::tabCloseRequested, this, [this](int index) {
    if (auto* tab = qobject_cast<DocumentTab*>(m_tabs->widget(index))) {
      closeTab(tab);
    }
  });
  connect(m_tabs, &QTabWidget::currentChanged, this, &DocumentWindow::updateActions);
  connect(m_tabs, &QTabWidget::currentChanged, this, &DocumentWindow::showOpenAccount);

  QMenu* file = menuBar()->addMenu(tr("&File"));
  m_openAction = file->addAction(tr("&Open Account..."), this, &DocumentWindow::openAccount);
  m_openAction->setShortcut(QKeySequence::Open);
  m_closeAction = file->addAction(tr("&Close"), this, &DocumentWindow::closeCurrentDocument);
  m_closeAction->setShortcut(QKeySequence::Close);
  file->addSeparator();
  QAction* exit = file->addAction(tr("E&xit"), this, &QWidget::close);
  exit->setShortcut(QKeySequence::Quit);
  exit->setMenuRole(QAction::QuitRole);

  m_toolBar = addToolBar(tr("Document"));
  m_toolBar->setObjectName(QStringLiteral("documentToolBar"));
  m_toolBar->setMovable(false);
  m_toolBar->setToolButtonStyle(Qt::ToolButtonTextOnly);

  m_statusText = new ElidedLabel(Qt::ElideRight, this);
  m_statusText->setObjectName(QStringLiteral("statusText"));
  m_statusText->setTextFormat(Qt::PlainText);
  m_statusText->setMinimumWidth(200);
  m_busy = new QProgressBar(this);
  m_busy->setObjectName(QStringLiteral("busyIndicator"));
  m_busy->setRange(0, 0);  // no end known: a moving bar
  m_busy->setMaximumWidth(110);
  m_busy->setMaximumHeight(14);
  m_busy->setTextVisible(false);
  m_busy->hide();
  m_account = new ElidedLabel(Qt::ElideRight, this);
  m_account->setObjectName(QStringLiteral("openAccount"));
  m_account->setTextFormat(Qt::PlainText);
  m_account->setContentsMargins(0, 0, 12, 0);
  QFont strong = m_account->font();
  strong.setBold(true);
  m_account->setFont(strong);
  m_account->hide();
  m_officer = new ElidedLabel(Qt::ElideRight, this);
  m_officer->setObjectName(QStringLiteral("officer"));
  m_host = new ElidedLabel(Qt::ElideMiddle, this);
  m_host->setObjectName(QStringLiteral("host"));
  // A data file's path can be very long: it gives way first (its middle), the officer and the account stay whole.
  m_host->setMaximumWidth(m_host->fontMetrics().averageCharWidth() * 48);
  m_officer->setContentsMargins(0, 0, 12, 0);
  statusBar()->addWidget(m_statusText, 1);
  statusBar()->addPermanentWidget(m_busy);
  statusBar()->addPermanentWidget(m_account);
  statusBar()->addPermanentWidget(m_officer);
  statusBar()->addPermanentWidget(m_host);

  m_statusText->setText(status.text());
  connect(&status, &platform::StatusBar::textChanged, m_statusText, &QLabel::setText);
  connect(&status, &platform::StatusBar::readyChanged, this, &DocumentWindow::showBusy);
  connect(&ui, &QtUi::pointerChanged, this, [this](bool busy) {
    m_pointerBusy = busy;
    showBusy();
  });

  const QSettings settings;
  if (!restoreGeometry(settings.value(kGeometryKey).toByteArray())) {
    resize(1280, 800);
  }
  restoreState(settings.value(kStateKey).toByteArray());
  setPlaceholder(tr("No account is open."));
  updateActions();
  showOpenAccount();
}

DocumentWindow::~DocumentWindow() {
  // Documents still open when the window goes (the application quitting) are closed as the host closes them.
  closeAllDocuments();
}

void DocumentWindow::setDocumentFactory(DocumentFactory factory) {
  m_factory = std::move(factory);
  updateActions();
}

void DocumentWindow::setSignedOn(const QString& officer, const QString& host) {
  m_officerText = officer;
  m_officer->setText(officer);
  m_host->setText(host);
  showOpenAccount();
}

QString DocumentWindow::openAccountText(const document::QORVA_AdjustAcc& document) {
  const QString number = document.accountNumber().trimmed();
  if (number.isEmpty() || document.accountType().trimmed().isEmpty()) {
    return {};
  }
  QString text = (document.accountTypeDescription().trimmed() + u' ' + number).trimmed();
  if (const QString customer = document.customerName(); !customer.isEmpty()) {
    text += QStringLiteral(" \u2014 ") + customer;
  }
  return text;
}

void DocumentWindow::showOpenAccount() {
  for (int index = 0; index < m_tabs->count(); ++index) {
    const auto* tab = qobject_cast<DocumentTab*>(m_tabs->widget(index));
    const QString text = tab != nullptr && tab->document() != nullptr ? openAccountText(*tab->document()) : QString();
    m_tabs->setTabToolTip(index, text.isEmpty() ? tr("No account is open") : text);
  }
  const document::QORVA_AdjustAcc* document = currentDocument();
  const QString account = document != nullptr ? openAccountText(*document) : QString();
  m_account->setText(account);
  m_account->setVisible(!account.isEmpty());
  // The window system adds the application's name ("Adjust Account") itself.
  setWindowTitle(account.isEmpty() ? m_officerText : account);
}

void DocumentWindow::setWorking(bool working) {
  m_working = working;
  showBusy();
}

void DocumentWindow::setPlaceholder(const QString& text, std::function<void()> retry) {
  m_placeholder->setText(text);
  m_retryAction = std::move(retry);
  m_retry->setVisible(static_cast<bool>(m_retryAction));
}

QString DocumentWindow::placeholderText() const { return m_placeholder->text(); }

bool DocumentWindow::isBusy() const { return m_working || m_pointerBusy || !m_statusBar.isReady(); }

void DocumentWindow::showBusy() { m_busy->setVisible(isBusy()); }

void DocumentWindow::updateActions() {
  m_openAction->setEnabled(canOpenDocuments());
  m_closeAction->setEnabled(currentTab() != nullptr);
  m_stack->setCurrentWidget(m_tabs->count() > 0 ? static_cast<QWidget*>(m_tabs) : m_placeholderPage);
}

// --- documents ----------------------------------------------------------------------------------------------------

document::QORVA_AdjustAcc* DocumentWindow::newDocument() {
  if (!m_factory) {
    return nullptr;
  }
  ++m_documentsMade;
  const QString name = QStringLiteral("AdjustAcc%1_%2").arg(QApplication::applicationPid()).arg(m_documentsMade);
  auto* tab = new DocumentTab(kCaption, kTag, name, m_tabs);
  std::unique_ptr<document::QORVA_AdjustAcc> made = m_factory(*tab, *this);
  if (!made) {
    delete tab;
    return nullptr;
  }
  document::QORVA_AdjustAcc* document = made.get();
  tab->setDocument(std::move(made));
  connect(document, &document::QORVA_AdjustAcc::accountChanged, this, &DocumentWindow::showOpenAccount);
  m_tabs->setCurrentIndex(m_tabs->addTab(tab, tab->caption()));
  updateActions();
  qCInfo(lcDesktop).noquote() << "document" << name << "opened";
  document->UserDocument_Show();
  return document;
}

DocumentTab* DocumentWindow::currentTab() const { return qobject_cast<DocumentTab*>(m_tabs->currentWidget()); }

document::QORVA_AdjustAcc* DocumentWindow::currentDocument() const {
  DocumentTab* tab = currentTab();
  return tab != nullptr ? tab->document() : nullptr;
}

AdjustAccView* DocumentWindow::currentView() const {
  DocumentTab* tab = currentTab();
  return tab != nullptr ? tab->view() : nullptr;
}

int DocumentWindow::documentCount() const { return m_tabs->count(); }

void DocumentWindow::openAccount() {
  document::QORVA_AdjustAcc* document = currentDocument();
  if (document == nullptr) {
    document = newDocument();
  }
  if (document != nullptr) {
    document->FileOpen();
  }
}

void DocumentWindow::closeTab(DocumentTab* tab) {
  if (tab == nullptr) {
    return;
  }
  if (document::QORVA_AdjustAcc* document = tab->document()) {
    if (document->DataChanged()) {
      document->SaveData();
    }
    document->BeforeUnload();
    document->CloseDocument();
  }
  qCInfo(lcDesktop).noquote() << "document" << tab->name() << "closed";
  m_tabs->removeTab(m_tabs->indexOf(tab));
  delete tab;
  updateActions();
  showOpenAccount();
}

void DocumentWindow::closeCurrentDocument() { closeTab(currentTab()); }

void DocumentWindow::closeAllDocuments() {
  while (auto* tab = qobject_cast<DocumentTab*>(m_tabs->widget(0))) {
    closeTab(tab);
  }
}

// --- toolbar host -----------------------------------------------------------------------------------------------

void DocumentWindow::addEntry(const document::ToolbarEntry& entry) {
  removeEntry(entry.key);
  auto* action = new QAction(entry.caption, this);
  action->setObjectName(entry.key);
  action->setToolTip(entry.toolTip.isEmpty() ? entry.caption : entry.toolTip);
  action->setStatusTip(entry.toolTip);
  const std::function<void()> run = entry.action;
  connect(action, &QAction::triggered, this, [run] {
    if (run) {
      run();
    }
  });
  m_toolBar->addAction(action);
  m_entries.insert(entry.key, action);
}

void DocumentWindow::removeEntry(const QString& key) {
  if (QAction* action = m_entries.take(key)) {
    m_toolBar->removeAction(action);
    action->deleteLater();
  }
}

bool DocumentWindow::hasEntry(const QString& key) const { return m_entries.contains(key); }

// --- closing ------------------------------------------------------------------------------------------------------

void DocumentWindow::closeEvent(QCloseEvent* event) {
  closeAllDocuments();
  QSettings settings;
  settings.setValue(kGeometryKey, saveGeometry());
  settings.setValue(kStateKey, saveState());
  event->accept();
}

}  // namespace adjustacc::desktop
