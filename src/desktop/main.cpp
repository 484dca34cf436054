// adjustacc: the account adjustment desktop. See startoptions.h for the command line.
#include "desktop/application.h"
#include "desktop/logging.h"
#include "desktop/startoptions.h"

#include <QApplication>
#include <QHostAddress>
#include <QTcpServer>

#include <cstdio>

namespace {

// First free port on the loopback address from `from` on; 0 when none of the next hundred is free.
quint16 freeLoopbackPort(quint16 from) {
  for (quint16 port = from; port < from + 100; ++port) {
    QTcpServer probe;
    if (probe.listen(QHostAddress::LocalHost, port)) {
      return port;
    }
  }
  return 0;
}

// Without a display (no X11, no Wayland, no platform chosen) the window is shown on Qt's own VNC server,
// listening on the loopback address only, so that a viewer (through an SSH tunnel from elsewhere) can use it.
void chooseVncWithoutDisplay() {
  if (!qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") || !qEnvironmentVariableIsEmpty("DISPLAY") ||
      !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
    return;
  }
  const quint16 port = freeLoopbackPort(5900);
  if (port == 0) {
    std::fprintf(stderr, "adjustacc: no display, and no free port from 5900 for a VNC server.\n");
    return;
  }
  qputenv("QT_QPA_PLATFORM", QStringLiteral("vnc:addr=127.0.0.1:port=%1:size=1280x800").arg(port).toUtf8());
  std::fprintf(stderr,
               "adjustacc: no display was found, so the application is shown through a VNC server on "
               "127.0.0.1 port %d.\n"
               "  Connect a viewer on this machine:   vncviewer 127.0.0.1::%d\n"
               "  From another machine, tunnel first: ssh -L %d:127.0.0.1:%d <this machine>\n",
               port, port, port, port);
}

}  // namespace

int main(int argc, char** argv) {
  adjustacc::desktop::applyDefaultLogRules();
  QCoreApplication::setOrganizationName(QStringLiteral("adjustacc"));
  QCoreApplication::setApplicationName(QStringLiteral("adjustacc"));
  QCoreApplication::setApplicationVersion(QStringLiteral("1.0"));
  QStringList arguments;
  for (int i = 0; i < argc; ++i) {
    arguments.append(QString::fromLocal8Bit(argv[i]));
  }
  // The command line is read before any display is chosen: a usage error or --help needs none.
  const auto options = adjustacc::desktop::parseStartOptions(arguments);
  if (!options) {
    std::fprintf(stderr, "adjustacc: %s\nTry 'adjustacc --help'.\n", qUtf8Printable(options.error()));
    return 2;
  }
  if (options->showHelp || options->showVersion) {
    QCoreApplication core(argc, argv);
    if (options->showHelp) {
      std::fprintf(stdout, "%s", qUtf8Printable(adjustacc::desktop::startOptionsHelpText()));
    } else {
      std::fprintf(stdout, "adjustacc %s\n", qUtf8Printable(QCoreApplication::applicationVersion()));
    }
    return 0;
  }

  chooseVncWithoutDisplay();
  QApplication app(argc, argv);
  QApplication::setApplicationDisplayName(QStringLiteral("Adjust Account"));
  const QString logFile = adjustacc::desktop::installLogHandler();
  if (!logFile.isEmpty()) {
    std::fprintf(stderr, "adjustacc: logging to %s\n", qUtf8Printable(logFile));
  }

  int result = 0;
  {
    adjustacc::desktop::Application application(options.value());
    application.start();
    result = QApplication::exec();
  }
  adjustacc::desktop::removeLogHandler();
  return result;
}
