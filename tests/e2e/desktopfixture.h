#pragma once
// The whole desktop on a fresh embedded database in a temporary folder, driven through its real widgets the
// way a clerk drives it: typing into the dialogs, clicking buttons and rows. Dialogs run modally, so the steps
// that act inside one are queued to run once it shows; a watchdog closes anything left open so that a failing
// step fails the test instead of hanging it.

#include "desktop/application.h"
#include "desktop/documentwindow.h"
#include "desktop/qtui.h"
#include "desktop/startoptions.h"

#include <QApplication>
#include <QDir>
#include <QMessageBox>
#include <QPointer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QWidget>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace adjustacc::desktop::testing {

// Lets the event loop run until the condition holds; false after `milliseconds`.
template <typename Condition>
bool waitFor(Condition condition, int milliseconds = 20000) {
  return QTest::qWaitFor(condition, milliseconds);
}

// Runs `step` once a modal dialog of type View is showing, from inside its event loop.
template <typename View>
void whenShown(std::function<void(View&)> step) {
  auto* poll = new QTimer(QApplication::instance());
  poll->setInterval(10);
  QObject::connect(poll, &QTimer::timeout, [poll, step] {
    auto* view = qobject_cast<View*>(QApplication::activeModalWidget());
    if (view != nullptr && view->isVisible()) {
      poll->stop();
      poll->deleteLater();
      step(*view);
    }
  });
  poll->start();
}

// Saves a picture of the widget under the build tree's screenshots folder.
inline void screenshot(QWidget& widget, const QString& name) {
  const QString folder = QStringLiteral(ADJUSTACC_SCREENSHOT_DIR);
  ASSERT_TRUE(QDir().mkpath(folder));
  QCoreApplication::processEvents();
  const QString path = QDir(folder).filePath(name + QStringLiteral(".png"));
  EXPECT_TRUE(widget.grab().save(path)) << path.toStdString();
}

class DesktopFixture : public ::testing::Test {
protected:
  void SetUp() override {
    ASSERT_TRUE(data.isValid());
    // Whatever a failed step leaves open is closed, so the test ends with its failures instead of hanging.
    watchdog.setInterval(90000);
    QObject::connect(&watchdog, &QTimer::timeout, [] {
      ADD_FAILURE() << "a dialog was still open after 90 seconds";
      while (QWidget* modal = QApplication::activeModalWidget()) {
        modal->close();
        QCoreApplication::processEvents();
        if (QApplication::activeModalWidget() == modal) {
          modal->hide();
        }
      }
    });
    watchdog.start();
    // No message box is expected in these scenarios: one that appears is a failure, noted with its text and
    // closed, so the step that raised it goes on.
    boxWatch.setInterval(50);
    QObject::connect(&boxWatch, &QTimer::timeout, [] {
      if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()); box && box->isVisible()) {
        ADD_FAILURE() << "message box: " << box->text().toStdString();
        box->close();
      }
    });
    boxWatch.start();
  }

  void TearDown() override {
    watchdog.stop();
    boxWatch.stop();
    app.reset();
  }

  // Starts the application and waits until it is signed on with its first document shown.
  void start(int latencyMs = 0, const QString& officer = kDefaultOfficer) {
    StartOptions options;
    options.dataFolder = data.path();
    options.officerId = officer;
    options.latencyMs = latencyMs;
    options.openAtStart = false;
    app = std::make_unique<Application>(options);
    QSignalSpy ready(app.get(), &Application::ready);
    QSignalSpy failed(app.get(), &Application::signOnFailed);
    app->start();
    ASSERT_TRUE(waitFor([&] { return !ready.isEmpty() || !failed.isEmpty(); }, 60000));
    ASSERT_TRUE(failed.isEmpty()) << failed.constFirst().at(0).toString().toStdString();
    window().resize(1280, 760);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window()));
  }

  DocumentWindow& window() { return app->window(); }

  QTemporaryDir data;
  std::unique_ptr<Application> app;
  QTimer watchdog;
  QTimer boxWatch;
};

}  // namespace adjustacc::desktop::testing
