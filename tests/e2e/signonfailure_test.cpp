// A sign-on that fails, as the clerk meets it: the box and the window say what failed and where, name the officer
// id and the host's address the clerk can check, and offer to try again; trying again signs on afresh.
#include "desktopfixture.h"

#include <QHostAddress>
#include <QLabel>
#include <QPushButton>
#include <QTcpServer>

namespace adjustacc::desktop::testing {
namespace {

using namespace Qt::Literals::StringLiterals;

// A loopback port nobody listens on: connections to it are refused at once.
quint16 closedPort() {
  QTcpServer probe;
  if (!probe.listen(QHostAddress::LocalHost, 0)) {
    return 0;
  }
  const quint16 port = probe.serverPort();
  probe.close();
  return port;
}

TEST(SignOnFailure, NamesTheOfficerAndTheHostAndOffersToTryAgain) {
  const quint16 port = closedPort();
  ASSERT_NE(port, 0);
  StartOptions options;
  options.mode = StartOptions::Mode::Remote;
  options.hostUrl = QUrl(u"http://127.0.0.1:%1"_s.arg(port));
  options.token = u"not-used"_s;
  options.officerId = u"CLERK01"_s;
  options.openAtStart = false;
  Application app(options);
  QSignalSpy failed(&app, &Application::signOnFailed);

  // The first box is answered with its retry, the next ones are closed.
  QStringList texts;
  QList<QStringList> buttons;
  QTimer answer;
  answer.setInterval(20);
  QObject::connect(&answer, &QTimer::timeout, [&] {
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (box == nullptr || !box->isVisible()) {
      return;
    }
    texts.append(box->text());
    QStringList shown;
    for (QAbstractButton* button : box->buttons()) {
      shown.append(button->text().remove(u'&'));
    }
    buttons.append(shown);
    QAbstractButton* retry = box->button(QMessageBox::Retry);
    QAbstractButton* cancel = box->button(QMessageBox::Cancel);
    if (texts.size() == 1 && retry != nullptr) {
      retry->click();
    } else if (cancel != nullptr) {
      cancel->click();
    } else {
      box->close();
    }
  });
  answer.start();

  app.start();
  ASSERT_TRUE(waitFor([&] { return failed.count() == 2 && texts.size() == 2; }, 30000)) << failed.count();
  const QString address = u"127.0.0.1:%1"_s.arg(port);
  for (const QString& text : std::as_const(texts)) {
    EXPECT_TRUE(text.contains(u"CLERK01"_s)) << text.toStdString();
    EXPECT_TRUE(text.contains(address)) << text.toStdString();
    EXPECT_TRUE(text.contains(u"try again"_s)) << text.toStdString();
    EXPECT_FALSE(text.contains(u"--"_s)) << text.toStdString();
    EXPECT_FALSE(text.contains(u"account"_s)) << text.toStdString();
  }
  EXPECT_TRUE(buttons.first().contains(u"Retry"_s)) << buttons.first().join(u", "_s).toStdString();

  // Once the box is closed, the window keeps the reason and a way to try again.
  DocumentWindow& window = app.window();
  EXPECT_EQ(window.placeholderText(), texts.last());
  ASSERT_TRUE(window.retryButton()->isVisible());
  screenshot(window, u"00-sign-on-failed"_s);
  QTest::mouseClick(window.retryButton(), Qt::LeftButton);
  EXPECT_TRUE(waitFor([&] { return failed.count() == 3 && texts.size() == 3; }, 30000)) << failed.count();
  answer.stop();
}

}  // namespace
}  // namespace adjustacc::desktop::testing
