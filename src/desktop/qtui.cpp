#include "qtui.h"

#include "formview.h"
#include "logging.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QGuiApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

namespace adjustacc::desktop {

using platform::MsgAnswer;
using platform::MsgButtons;
using platform::MsgIcon;

namespace {

QList<std::pair<QMessageBox::StandardButton, MsgAnswer>> buttonsOf(MsgButtons buttons) {
  using B = QMessageBox::StandardButton;
  switch (buttons) {
    case MsgButtons::Ok:
      return {{B::Ok, MsgAnswer::Ok}};
    case MsgButtons::OkCancel:
      return {{B::Ok, MsgAnswer::Ok}, {B::Cancel, MsgAnswer::Cancel}};
    case MsgButtons::YesNo:
      return {{B::Yes, MsgAnswer::Yes}, {B::No, MsgAnswer::No}};
    case MsgButtons::YesNoCancel:
      return {{B::Yes, MsgAnswer::Yes}, {B::No, MsgAnswer::No}, {B::Cancel, MsgAnswer::Cancel}};
    case MsgButtons::RetryCancel:
      return {{B::Retry, MsgAnswer::Retry}, {B::Cancel, MsgAnswer::Cancel}};
    case MsgButtons::AbortRetryIgnore:
      return {{B::Abort, MsgAnswer::Abort}, {B::Retry, MsgAnswer::Retry}, {B::Ignore, MsgAnswer::Ignore}};
  }
  return {{B::Ok, MsgAnswer::Ok}};
}

QMessageBox::Icon iconOf(MsgIcon icon) {
  switch (icon) {
    case MsgIcon::Critical:
      return QMessageBox::Critical;
    case MsgIcon::Exclamation:
      return QMessageBox::Warning;
    case MsgIcon::Information:
      return QMessageBox::Information;
    case MsgIcon::Question:
      return QMessageBox::Question;
    case MsgIcon::None:
      break;
  }
  return QMessageBox::NoIcon;
}

}  // namespace

QtUi::QtUi(QObject* parent) : QObject(parent) {}

QtUi::~QtUi() {
  if (m_pointer == platform::Pointer::Hourglass) {
    QGuiApplication::restoreOverrideCursor();
  }
}

void QtUi::registerView(const QString& formName, ViewFactory factory) { m_views[formName] = std::move(factory); }

QList<FormView*> QtUi::openViews() const {
  QList<FormView*> result;
  for (const QPointer<FormView>& view : m_open) {
    if (view) {
      result.append(view.data());
    }
  }
  return result;
}

QWidget* QtUi::dialogParent() const {
  for (auto it = m_open.crbegin(); it != m_open.crend(); ++it) {
    if (*it && (*it)->isVisible()) {
      return it->data();
    }
  }
  if (QWidget* modal = QApplication::activeModalWidget()) {
    return modal;
  }
  return m_mainWindow.data();
}

MsgAnswer QtUi::messageBox(const QString& text, MsgButtons buttons, MsgIcon icon, const QString& title) {
  QMessageBox box(dialogParent());
  box.setObjectName(QStringLiteral("messageBox"));
  box.setWindowTitle(title.isEmpty() ? QGuiApplication::applicationDisplayName() : title);
  box.setIcon(iconOf(icon));
  box.setTextFormat(Qt::PlainText);
  // The screens end their lines with carriage return and line feed.
  QString shown = text;
  shown.replace(QLatin1String("\r\n"), QLatin1String("\n"));
  box.setText(shown);
  const auto offered = buttonsOf(buttons);
  for (const auto& [button, answer] : offered) {
    box.addButton(button);
  }
  box.setDefaultButton(offered.first().first);
  // A busy pointer must not hide the arrow the clerk needs to answer.
  const bool busy = m_pointer == platform::Pointer::Hourglass;
  if (busy) {
    QGuiApplication::setOverrideCursor(Qt::ArrowCursor);
  }
  qCInfo(lcDesktop).noquote() << "message box:" << title << "-" << shown.simplified();
  box.exec();
  if (busy) {
    QGuiApplication::restoreOverrideCursor();
  }
  const QMessageBox::StandardButton clicked = box.standardButton(box.clickedButton());
  for (const auto& [button, answer] : offered) {
    if (button == clicked) {
      return answer;
    }
  }
  // Closed without a button (only possible where Escape has a meaning): the box's way out.
  for (const auto& [button, answer] : offered) {
    if (answer == MsgAnswer::Cancel || answer == MsgAnswer::No) {
      return answer;
    }
  }
  return offered.first().second;
}

void QtUi::showModal(platform::ModalForm& form) {
  const auto found = m_views.find(form.formName());
  std::unique_ptr<FormView> view;
  if (found != m_views.end()) {
    view = found->second(form, dialogParent());
  }
  if (!view) {
    qCWarning(lcDesktop).noquote() << "no view for form" << form.formName();
    messageBox(QStringLiteral("The screen \"%1\" is not available in this version of the application.")
                   .arg(form.caption()),
               MsgButtons::Ok, MsgIcon::Information, QGuiApplication::applicationDisplayName());
    return;
  }
  FormView* dialog = view.get();
  m_open.append(dialog);
  Q_EMIT viewOpened(dialog);
  qCDebug(lcDesktop).noquote() << "showing" << form.formName();

  form.setVisible(true);  // loads the form the first time, then activates it
  if (form.isVisible()) {
    // The form hides itself in answer to something the person did or a reply that came: whenever the event
    // loop has nothing left to do, the dialog ends if its form is no longer visible.
    QMetaObject::Connection idle;
    if (QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance()) {
      idle = connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, dialog, [dialog] { dialog->closeIfHidden(); });
    }
    // And in case the event loop never idles (a stream of timer ticks), a slow look as well.
    QTimer watch;
    watch.setInterval(200);
    connect(&watch, &QTimer::timeout, dialog, [dialog] { dialog->closeIfHidden(); });
    watch.start();
    dialog->exec();
    disconnect(idle);
  }
  if (form.isVisible()) {
    // The dialog went away by some other means (the application quitting): the form is no longer shown.
    form.setVisible(false);
  }
  m_open.removeAll(dialog);
  view.reset();
  Q_EMIT viewClosed(form.formName());
}

void QtUi::setPointer(platform::Pointer pointer) {
  if (pointer == m_pointer) {
    return;
  }
  m_pointer = pointer;
  if (pointer == platform::Pointer::Hourglass) {
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
  } else {
    QGuiApplication::restoreOverrideCursor();
  }
  Q_EMIT pointerChanged(pointer == platform::Pointer::Hourglass);
}

void QtUi::beep() { QApplication::beep(); }

}  // namespace adjustacc::desktop
