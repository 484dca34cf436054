#pragma once
// The command line of adjustacc.
//
//   adjustacc                          the embedded host over <data>/adjustacc.sqlite (made with demo data on
//                                      first start), signed on as the demo officer who holds every right
//   adjustacc --data DIR               the embedded host's database in DIR
//   adjustacc --user ID                sign on as officer ID
//   adjustacc --host URL --token T     the shared host service (adjustacc-host) instead; the token may also come
//                                      from the environment variable ADJUSTACC_TOKEN, which keeps it out of the
//                                      process list; --user names the officer the token was issued to
//   adjustacc --latency MS             hold every embedded reply back MS milliseconds (to see the waits)
//   adjustacc --duty-separation RULE   the embedded host's separation of duties on refund worksheets:
//                                      neighbouring (the default) or four-officers
//   adjustacc --no-open                do not show Open Account at start

#include "host/dutyseparation.h"
#include "messaging/result.h"

#include <QString>
#include <QStringList>
#include <QUrl>

namespace adjustacc::desktop {

struct StartOptions {
  enum class Mode { Embedded, Remote };

  Mode mode = Mode::Embedded;
  QString dataFolder;  // embedded: empty means the user's application data folder
  QString officerId;
  QUrl hostUrl;        // remote
  QString token;       // remote
  int latencyMs = 0;   // embedded
  host::DutySeparation dutySeparation = host::DutySeparation::NeighbouringSteps;  // embedded
  bool openAtStart = true;
  bool showHelp = false;
  bool showVersion = false;
};

// The demo officer with every right, signed on when no --user is given.
inline const QString kDefaultOfficer = QStringLiteral("ADMIN01");
// Environment variable that may hold the host token.
inline constexpr char kTokenVariable[] = "ADJUSTACC_TOKEN";

// Reads the arguments (the first one is the program). Usage errors come back as a text naming the option.
// Needs no application object, so the command line is read before the display is chosen.
messaging::Result<StartOptions> parseStartOptions(const QStringList& arguments);
// The --help text; needs an application object (it names the program).
QString startOptionsHelpText();

}  // namespace adjustacc::desktop
