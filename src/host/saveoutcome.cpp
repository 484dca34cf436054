// Whether a save whose answer never reached the clerk was applied. The screens conclude such a save as if it
// had been; they then ask here, by the save's request id, to tell the clerk the truth.
#include "handlers.h"
#include "requestcheck.h"
#include "requestlog.h"

namespace adjustacc::host {

using messaging::Result;

namespace {

// Request ids are the screens' own (a few dozen characters); anything much longer is no id of theirs.
constexpr qsizetype kMaxRequestIdLength = 128;

}  // namespace

Outcome saveOutcomeInquiry(const Context& context) {
  static const SectionBuilder builder(sectionnames::SaveOutcome, {{u"REQUEST_ID"}, {u"OUTCOME"}});
  const QString kind = QStringLiteral("The save outcome inquiry");
  if (const QString problem = checkParams(context.request, kind, {params::RequestId}); !problem.isEmpty()) {
    return refuse(problem);
  }
  const QString asked = context.param(params::RequestId).trimmed();
  if (asked.isEmpty() || asked.size() > kMaxRequestIdLength) {
    return refuse(QStringLiteral("%1 needs the request id of a save (key:REQUEST_ID).").arg(kind));
  }
  if (asked == context.request.requestId) {
    return refuse(QStringLiteral("%1 can not ask about itself.").arg(kind));
  }
  Result<std::optional<ProcessedRequest>> recorded = findProcessedRequest(context.sql, asked);
  if (!recorded) {
    return refuse(recorded.error());
  }
  QString outcome;
  if (recorded.value()) {
    // Only the officer who sent a save learns what became of it.
    if (recorded.value()->officerId.compare(context.officer.id, Qt::CaseInsensitive) != 0) {
      return refuse(QStringLiteral("Request %1 is not a save of officer %2.").arg(asked, context.officer.id));
    }
    outcome = recorded.value()->digest == kWithdrawnDigest ? messaging::saveoutcomes::NotApplied
                                                           : messaging::saveoutcomes::Applied;
  } else {
    // Not applied, and now never will be: the save, should it still arrive, is refused as a reuse of its id.
    if (Result<bool> withdrawn = withdrawRequest(context.sql, asked, context.officer.id, context.now); !withdrawn) {
      return refuse(withdrawn.error());
    }
    outcome = messaging::saveoutcomes::NotApplied;
  }
  Sections sections;
  messaging::RecordSet set = builder.empty();
  set.addNew({asked, outcome});
  set.moveFirst();
  sections.insert(builder.sectionName(), set);
  return sections;
}

}  // namespace adjustacc::host
