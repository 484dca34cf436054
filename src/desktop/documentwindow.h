#pragma once
// The document host: the main window. Each document is shown in a tab whose caption is the container's
// caption ("Adjust Account"), which the document makes the title of every message box. The window offers the
// toolbar the document adds its entries to, a status bar showing the status-bar service's text with a busy
// indicator, and the File menu (Open Account..., Close, Exit).
//
// The host's calls on a document, in order: created; UserDocument_Show when its tab is shown; FileOpen from
// File > Open Account... (and once at start); on closing its tab or the window: SaveData when DataChanged says
// an account is open, then BeforeUnload, then CloseDocument.
//
// The open account (type, number with check digit, customer) is named in the window title, the tab's tooltip
// and the status bar; the tab's text stays the container's caption. The window title leaves out the
// application's name, which the window system adds.

#include "document/documenthost.h"

#include <QMainWindow>
#include <QMap>
#include <QPointer>

#include <functional>
#include <memory>

class QAction;
class QLabel;
class QProgressBar;
class QPushButton;
class QStackedWidget;
class QTabWidget;
class QToolBar;

namespace adjustacc::document {
class QORVA_AdjustAcc;
}
namespace adjustacc::platform {
class StatusBar;
}

namespace adjustacc::desktop {

class AdjustAccView;
class QtUi;

// The container one document lives in: a tab of the window.
class DocumentTab : public QWidget, public document::DocumentContainer {
  Q_OBJECT
public:
  DocumentTab(QString caption, QString tag, QString name, QWidget* parent = nullptr);
  ~DocumentTab() override;

  QString caption() const override { return m_caption; }
  QString tag() const override { return m_tag; }
  QString name() const override { return m_name; }

  document::QORVA_AdjustAcc* document() const { return m_document.get(); }
  AdjustAccView* view() const { return m_view; }
  void setDocument(std::unique_ptr<document::QORVA_AdjustAcc> document);

private:
  QString m_caption;
  QString m_tag;
  QString m_name;
  std::unique_ptr<document::QORVA_AdjustAcc> m_document;
  AdjustAccView* m_view = nullptr;
};

class DocumentWindow : public QMainWindow, public document::DocumentHost, public document::ToolbarHost {
  Q_OBJECT
public:
  static inline const QString kCaption = QStringLiteral("Adjust Account");
  static inline const QString kTag = QStringLiteral("AdjustAcc");

  using DocumentFactory = std::function<std::unique_ptr<document::QORVA_AdjustAcc>(
      document::DocumentContainer& container, document::DocumentHost& host)>;

  DocumentWindow(QtUi& ui, platform::StatusBar& statusBar, QWidget* parent = nullptr);
  ~DocumentWindow() override;

  // How documents are made; until it is set (the officer is signed on), no document can be opened.
  void setDocumentFactory(DocumentFactory factory);
  bool canOpenDocuments() const { return static_cast<bool>(m_factory); }
  // The signed-on officer and the host, shown in the status bar (the officer also in the title while no account
  // is open).
  void setSignedOn(const QString& officer, const QString& host);
  // "CITATION ENF001 1000011-4 — SMITH TRUCKING LLC": the document's open account; empty when none is open.
  static QString openAccountText(const document::QORVA_AdjustAcc& document);
  // Shows the busy indicator for the window's own work (signing on).
  void setWorking(bool working);
  // Text shown where the documents go while there is none; with a retry, a "Try Again" button under it runs it.
  void setPlaceholder(const QString& text, std::function<void()> retry = {});
  QPushButton* retryButton() const { return m_retry; }
  QString placeholderText() const;

  // --- documents -------------------------------------------------------------------------------------------
  // Creates a document in a new tab and shows it (UserDocument_Show); null when documents cannot be made yet.
  document::QORVA_AdjustAcc* newDocument();
  document::QORVA_AdjustAcc* currentDocument() const;
  AdjustAccView* currentView() const;
  DocumentTab* currentTab() const;
  int documentCount() const;
  // File > Open Account...: FileOpen on the current document, a new one if there is none.
  void openAccount();
  // Closes the current document: SaveData when an account is open, BeforeUnload, CloseDocument.
  void closeCurrentDocument();
  void closeAllDocuments();

  // --- toolbar host ------------------------------------------------------------------------------------------
  document::ToolbarHost* toolbarHost() override { return this; }
  void addEntry(const document::ToolbarEntry& entry) override;
  void removeEntry(const QString& key) override;
  bool hasEntry(const QString& key) const override;
  QAction* entryAction(const QString& key) const { return m_entries.value(key); }

  // --- status bar -----------------------------------------------------------------------------------------------
  QLabel* statusText() const { return m_statusText; }
  bool isBusy() const;
  QLabel* openAccountLabel() const { return m_account; }
  QToolBar* toolBar() const { return m_toolBar; }
  QTabWidget* tabs() const { return m_tabs; }

protected:
  void closeEvent(QCloseEvent* event) override;

private:
  void closeTab(DocumentTab* tab);
  void showBusy();
  void updateActions();
  void showOpenAccount();

  QtUi& m_ui;
  platform::StatusBar& m_statusBar;
  DocumentFactory m_factory;
  QStackedWidget* m_stack;
  QWidget* m_placeholderPage;
  QLabel* m_placeholder;
  QPushButton* m_retry;
  std::function<void()> m_retryAction;
  QTabWidget* m_tabs;
  QToolBar* m_toolBar;
  QLabel* m_statusText;
  QProgressBar* m_busy;
  QLabel* m_account;
  QLabel* m_officer;
  QLabel* m_host;
  QString m_officerText;
  QAction* m_openAction;
  QAction* m_closeAction;
  QMap<QString, QAction*> m_entries;
  bool m_pointerBusy = false;
  bool m_working = false;
  int m_documentsMade = 0;
};

}  // namespace adjustacc::desktop
