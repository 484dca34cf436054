#pragma once
// The truth about a save whose answer never came. The save watch concludes such a save as if the host had
// applied it (the clerk's screen shows it applied and the opener reads the account again); right after, it
// asks the host in the background, by the save's request id, what really became of it. The host answers
// from its record of applied saves, and settles an id it finds nowhere so that the save can no longer be
// applied later. Then the clerk is told:
//   applied      -> the status bar says so;
//   not applied  -> a message box names what was not saved, so that the clerk can enter it again;
//   no answer    -> the status bar says that it could not be confirmed.
// The question outlives the screen: a clerk who closed it at once is told all the same.

#include <QString>

namespace adjustacc::platform {
struct Services;
}

namespace adjustacc::screencore {

// The reply-to name of the question.
inline const QString kSaveOutcomeReplyTo = QStringLiteral("SaveOutcome");

// Texts; %1 names what was saved ("the Fees/Penalties of CITATION ENF001 number 1000011").
inline const QString kSaveConfirmedText = QStringLiteral("The host confirms that %1 was saved.");
inline const QString kSaveNotAppliedText =
    QStringLiteral("The host did not save %1: its answer never came, and the host has no record of the save.\r\n"
                   "Nothing of it was saved. Please open the account again and enter the changes again.");
inline const QString kSaveUnconfirmedText =
    QStringLiteral("Whether %1 was saved could not be confirmed: %2 Check the account before entering the changes "
                   "again.");

// Sends the question for the save `requestId`; `what` names the save for the clerk.
void checkSaveOutcome(platform::Services& services, const QString& requestId, const QString& what);

}  // namespace adjustacc::screencore
