#pragma once
// The module modMessageTitle: the few values every form of the component shares for the life of the
// process, and the shared status and message texts. These two values are the only process-wide state
// of the component; everything else reaches a screen through its Services.

#include <QString>

namespace adjustacc::platform::modMessageTitle {

// The hosting container's caption, read when the document is shown; the title of every message box.
QString messageTitle();
void setMessageTitle(const QString& title);

// The hosting container's tag, read at the same time and handed to the status-bar service.
QString containerTag();
void setContainerTag(const QString& tag);

// Shared status texts.
inline const QString Ready = QStringLiteral("Ready");
inline const QString LoadingInformation = QStringLiteral("Loading information");
inline const QString SearchWasNotSuccessful = QStringLiteral("Search was not successful");
inline const QString SearchTimedOut = QStringLiteral("Search timed out");
inline const QString CheckingForDataChanges = QStringLiteral("Checking for data changes");
inline const QString ErrorsFound = QStringLiteral("Error(s) found");
// Save outcomes; the first one really ends with a blank.
inline const QString UpdateWasSuccessful = QStringLiteral("Update was successful ");
inline const QString UpdateFailed = QStringLiteral("Update failed");
// Asked when the account receivable detail form closes with unsaved edits (two blanks after the first stop).
inline const QString AdjustmentDataChangedQuestion =
    QStringLiteral("Adjustment data has been changed.  Do you wish to save these changes?");

// Declared by the module and read by no procedure; kept as declared names only.
inline const QString AdjustGrids;
inline const QString LastDocNbr;
inline const QString LastDocTyp;

}  // namespace adjustacc::platform::modMessageTitle
