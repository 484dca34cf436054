// The command line: the embedded default, the choices it offers and the usage errors it names.
#include "desktop/startoptions.h"

#include <gtest/gtest.h>

namespace adjustacc::desktop {
namespace {

using namespace Qt::Literals::StringLiterals;
using Mode = StartOptions::Mode;

struct Accepted {
  const char* name;
  QStringList arguments;
  Mode mode;
  QString officer;
  QString dataFolder;
  QString host;
  int latency;
  bool openAtStart;
  host::DutySeparation duties = host::DutySeparation::NeighbouringSteps;
};

class AcceptedOptions : public ::testing::TestWithParam<Accepted> {};

TEST_P(AcceptedOptions, AreRead) {
  const Accepted& c = GetParam();
  qunsetenv(kTokenVariable);
  const auto options = parseStartOptions(QStringList{u"adjustacc"_s} + c.arguments);
  ASSERT_TRUE(options) << options.error().toStdString();
  EXPECT_EQ(options->mode, c.mode);
  EXPECT_EQ(options->officerId, c.officer);
  EXPECT_EQ(options->dataFolder, c.dataFolder);
  EXPECT_EQ(options->hostUrl.toString(), c.host);
  EXPECT_EQ(options->latencyMs, c.latency);
  EXPECT_EQ(options->openAtStart, c.openAtStart);
  EXPECT_EQ(options->dutySeparation, c.duties);
}

INSTANTIATE_TEST_SUITE_P(
    CommandLine, AcceptedOptions,
    ::testing::Values(
        Accepted{"Default", {}, Mode::Embedded, u"ADMIN01"_s, {}, {}, 0, true},
        Accepted{"DataAndUser", {u"--data"_s, u"/tmp/x"_s, u"--user"_s, u" CLERK01 "_s}, Mode::Embedded,
                 u"CLERK01"_s, u"/tmp/x"_s, {}, 0, true},
        Accepted{"Latency", {u"--latency=300"_s, u"--no-open"_s}, Mode::Embedded, u"ADMIN01"_s, {}, {}, 300, false},
        Accepted{"FourOfficers", {u"--duty-separation"_s, u"four-officers"_s}, Mode::Embedded, u"ADMIN01"_s, {}, {}, 0,
                 true, host::DutySeparation::FourOfficers},
        Accepted{"Remote", {u"--host"_s, u"http://hq:8470"_s, u"--token"_s, u"abc.def"_s, u"--user"_s, u"VERIFY01"_s},
                 Mode::Remote, u"VERIFY01"_s, {}, u"http://hq:8470"_s, 0, true}),
    [](const ::testing::TestParamInfo<Accepted>& param) { return std::string(param.param.name); });

struct Refused {
  const char* name;
  QStringList arguments;
  QString errorPart;
};

class RefusedOptions : public ::testing::TestWithParam<Refused> {};

TEST_P(RefusedOptions, AreNamedInTheError) {
  const Refused& c = GetParam();
  qunsetenv(kTokenVariable);
  const auto options = parseStartOptions(QStringList{u"adjustacc"_s} + c.arguments);
  ASSERT_FALSE(options);
  EXPECT_TRUE(options.error().contains(c.errorPart)) << options.error().toStdString();
}

INSTANTIATE_TEST_SUITE_P(
    CommandLine, RefusedOptions,
    ::testing::Values(Refused{"UnknownOption", {u"--colour"_s}, u"colour"_s},
                      Refused{"HostWithoutToken", {u"--host"_s, u"http://hq:8470"_s}, u"token"_s},
                      Refused{"HostNotHttp", {u"--host"_s, u"ftp://hq"_s, u"--token"_s, u"t"_s}, u"ftp://hq"_s},
                      Refused{"HostWithData", {u"--host"_s, u"http://hq"_s, u"--token"_s, u"t"_s, u"--data"_s, u"/x"_s},
                              u"--data"_s},
                      Refused{"TokenWithoutHost", {u"--token"_s, u"t"_s}, u"--host"_s},
                      Refused{"EmptyUser", {u"--user"_s, u"  "_s}, u"--user"_s},
                      Refused{"LatencyNotANumber", {u"--latency"_s, u"soon"_s}, u"soon"_s},
                      Refused{"LatencyNegative", {u"--latency"_s, u"-5"_s}, u"-5"_s},
                      Refused{"StrayArgument", {u"account.xml"_s}, u"account.xml"_s},
                      Refused{"UnknownDutySeparation", {u"--duty-separation"_s, u"three"_s}, u"\"three\""_s},
                      Refused{"HostWithDutySeparation",
                              {u"--host"_s, u"http://hq"_s, u"--token"_s, u"t"_s, u"--duty-separation"_s, u"neighbouring"_s},
                              u"--duty-separation apply to the local database only"_s}),
    [](const ::testing::TestParamInfo<Refused>& param) { return std::string(param.param.name); });

TEST(StartOptionsTest, TheTokenMayComeFromTheEnvironment) {
  qputenv(kTokenVariable, "0123.secret");
  const auto options = parseStartOptions({u"adjustacc"_s, u"--host"_s, u"https://hq.example:8470/api"_s});
  qunsetenv(kTokenVariable);
  ASSERT_TRUE(options) << options.error().toStdString();
  EXPECT_EQ(options->token, u"0123.secret"_s);
  EXPECT_EQ(options->hostUrl.path(), u"/api"_s);
}

TEST(StartOptionsTest, HelpIsOfferedWithEveryOption) {
  const auto options = parseStartOptions({u"adjustacc"_s, u"--help"_s});
  ASSERT_TRUE(options);
  EXPECT_TRUE(options->showHelp);
  const QString help = startOptionsHelpText();
  for (const QString& option :
       {u"--data"_s, u"--user"_s, u"--host"_s, u"--token"_s, u"--latency"_s, u"--duty-separation"_s}) {
    EXPECT_TRUE(help.contains(option)) << option.toStdString();
  }
}

}  // namespace
}  // namespace adjustacc::desktop
