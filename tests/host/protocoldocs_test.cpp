// The request examples of docs/protocol.md are requests this host takes: they decode, fit the catalogue
// and reach a handler (which may still refuse them for their dates or versions on the day the test runs).
#include "hostfixture.h"

#include "messaging/jsoncodec.h"

#include <QFile>
#include <QRegularExpression>
#include <QUuid>

namespace adjustacc::host::testing {
namespace {

using namespace Qt::Literals::StringLiterals;

class ProtocolDocs : public HostTest {};

QStringList requestExamples() {
  QFile file(QStringLiteral(ADJUSTACC_SOURCE_DIR "/docs/protocol.md"));
  if (!file.open(QIODevice::ReadOnly)) {
    return {};
  }
  const QString text = QString::fromUtf8(file.readAll());
  const qsizetype kinds = text.indexOf(u"\n## Request kinds"_s);
  QStringList examples;
  static const QRegularExpression block(u"```json\\n(.*?)```"_s, QRegularExpression::DotMatchesEverythingOption);
  for (auto it = block.globalMatch(text, kinds < 0 ? 0 : kinds); it.hasNext();) {
    examples.append(it.next().captured(1));
  }
  return examples;
}

TEST_P(ProtocolDocs, EveryRequestExampleReachesItsHandler) {
  const QStringList examples = requestExamples();
  if (examples.isEmpty()) {
    GTEST_SKIP() << "docs/protocol.md not found next to the sources";
  }
  EXPECT_GE(examples.size(), 6);
  for (QString example : examples) {
    example.replace(u"\"…\""_s, u'"' + QUuid::createUuid().toString(QUuid::WithoutBraces) + u'"');
    SCOPED_TRACE(example.left(120).toStdString());
    auto decoded = messaging::decodeRequest(example.toUtf8());
    ASSERT_TRUE(decoded.ok()) << decoded.error().toStdString();
    const messaging::Reply reply = send(decoded.value());
    for (const char* structural : {"is not a request this host answers", "does not take the parameter", "needs the parameter",
                                   "which this system does not save", "that a", "is not valid:", "is not known to the host"}) {
      EXPECT_FALSE(reply.error.contains(QString::fromLatin1(structural))) << reply.error.toStdString();
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Databases, ProtocolDocs, ::testing::Values(Backend::Sqlite), backendName);

}  // namespace
}  // namespace adjustacc::host::testing
