#include "startoptions.h"

#include <QCommandLineParser>

namespace adjustacc::desktop {

using messaging::Result;

namespace {

struct Parser {
  QCommandLineParser parser;
  QCommandLineOption help;
  QCommandLineOption version;
  QCommandLineOption data{QStringLiteral("data"),
                          QStringLiteral("Folder of the local database (embedded host). Default: the user's "
                                         "application data folder."),
                          QStringLiteral("DIR")};
  QCommandLineOption user{QStringLiteral("user"), QStringLiteral("Officer to sign on as. Default: %1.").arg(kDefaultOfficer),
                          QStringLiteral("ID")};
  QCommandLineOption host{QStringLiteral("host"),
                          QStringLiteral("Address of the shared host service (adjustacc-host), e.g. "
                                         "http://hostname:8470."),
                          QStringLiteral("URL")};
  QCommandLineOption token{QStringLiteral("token"),
                           QStringLiteral("The officer's sign-on token for --host (or set %1).")
                               .arg(QLatin1String(kTokenVariable)),
                           QStringLiteral("T")};
  QCommandLineOption latency{QStringLiteral("latency"),
                             QStringLiteral("Hold every reply of the local host back this long (milliseconds)."),
                             QStringLiteral("MS")};
  QCommandLineOption noOpen{QStringLiteral("no-open"), QStringLiteral("Do not ask for an account at start.")};
  QCommandLineOption duties{QStringLiteral("duty-separation"),
                            QStringLiteral("Which refund worksheet officers the local host keeps apart: neighbouring "
                                           "(the default) or four-officers."),
                            QStringLiteral("RULE")};

  Parser() : help(parser.addHelpOption()), version(parser.addVersionOption()) {
    parser.setApplicationDescription(
        QStringLiteral("Account adjustment: open an account, see its receivables and receipts, and correct it."));
    parser.addOptions({data, user, host, token, latency, noOpen, duties});
  }
};

}  // namespace

QString startOptionsHelpText() { return Parser().parser.helpText(); }

Result<StartOptions> parseStartOptions(const QStringList& arguments) {
  Parser p;
  QCommandLineParser& parser = p.parser;
  const QCommandLineOption& help = p.help;
  const QCommandLineOption& version = p.version;
  const QCommandLineOption& data = p.data;
  const QCommandLineOption& user = p.user;
  const QCommandLineOption& host = p.host;
  const QCommandLineOption& token = p.token;
  const QCommandLineOption& latency = p.latency;
  const QCommandLineOption& noOpen = p.noOpen;
  const QCommandLineOption& duties = p.duties;
  if (!parser.parse(arguments)) {
    return Result<StartOptions>::failure(parser.errorText());
  }
  StartOptions options;
  if (parser.isSet(help)) {
    options.showHelp = true;
    return options;
  }
  if (parser.isSet(version)) {
    options.showVersion = true;
    return options;
  }
  if (!parser.positionalArguments().isEmpty()) {
    return Result<StartOptions>::failure(
        QStringLiteral("Unexpected argument \"%1\".").arg(parser.positionalArguments().constFirst()));
  }
  options.officerId = parser.isSet(user) ? parser.value(user).trimmed() : kDefaultOfficer;
  if (options.officerId.isEmpty()) {
    return Result<StartOptions>::failure(QStringLiteral("--user needs an officer id."));
  }
  options.openAtStart = !parser.isSet(noOpen);

  if (parser.isSet(host)) {
    options.mode = StartOptions::Mode::Remote;
    options.hostUrl = QUrl(parser.value(host).trimmed(), QUrl::StrictMode);
    const QString scheme = options.hostUrl.scheme();
    if (!options.hostUrl.isValid() || options.hostUrl.host().isEmpty() ||
        (scheme != u"http" && scheme != u"https")) {
      return Result<StartOptions>::failure(
          QStringLiteral("--host \"%1\" is not an http:// or https:// address.").arg(parser.value(host)));
    }
    options.token = parser.isSet(token) ? parser.value(token).trimmed()
                                        : qEnvironmentVariable(kTokenVariable).trimmed();
    if (options.token.isEmpty()) {
      return Result<StartOptions>::failure(
          QStringLiteral("--host needs the officer's sign-on token: --token T, or the environment variable %1.")
              .arg(QLatin1String(kTokenVariable)));
    }
    if (parser.isSet(data) || parser.isSet(latency) || parser.isSet(duties)) {
      return Result<StartOptions>::failure(QStringLiteral(
          "--data, --latency and --duty-separation apply to the local database only, not to --host."));
    }
    return options;
  }
  if (parser.isSet(token)) {
    return Result<StartOptions>::failure(QStringLiteral("--token is only used with --host."));
  }
  if (parser.isSet(data)) {
    options.dataFolder = parser.value(data).trimmed();
    if (options.dataFolder.isEmpty()) {
      return Result<StartOptions>::failure(QStringLiteral("--data needs a folder."));
    }
  }
  if (parser.isSet(latency)) {
    bool number = false;
    const int value = parser.value(latency).toInt(&number);
    if (!number || value < 0 || value > 600000) {
      return Result<StartOptions>::failure(
          QStringLiteral("--latency \"%1\" is not a number of milliseconds from 0 to 600000.")
              .arg(parser.value(latency)));
    }
    options.latencyMs = value;
  }
  if (parser.isSet(duties)) {
    const std::optional<host::DutySeparation> separation = host::dutySeparationFromName(parser.value(duties));
    if (!separation) {
      return Result<StartOptions>::failure(
          QStringLiteral("--duty-separation \"%1\" is neither neighbouring nor four-officers.").arg(parser.value(duties)));
    }
    options.dutySeparation = *separation;
  }
  return options;
}

}  // namespace adjustacc::desktop
