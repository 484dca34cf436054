#pragma once
// The save watch of a saving screen (account receivable detail, receipt detail, transfer payment, refund
// worksheet): what happens between sending a save request and knowing how it ended.
//
// A save is a request like every other; its answer comes later through the screen's reply handler, or the
// request object first reports a time-out, or the screen's update timer ticks, or the clerk closes the
// screen. From the send until one of these concludes it, the screen is in the save-pending state: SaveState
// is "SAVEPENDING", its inputs are locked and the host's status area shows that it is busy. SaveState is
// the only guard: whichever conclusion comes first clears it, and the later ones find it empty and skip
// their save steps. AccountChanged is set by every conclusion that may have changed the account (answered,
// assumed applied after a time-out or the timer, closed while pending) and never set back, so the opener
// knows after the screen closed that it must read the account again.
//
// A screen binds the watch to its own controls and keeps its own procedure names around it:
//
//   SaveWatch m_watch{services, {.pendingSave = [this](bool on) { PendingSave(on); },
//                               .initializeData = [this] { InitializeData(); },
//                               .assumeApplied = [this] { removeMovedRows(); },
//                               .updateTimeout = [this] { UpdateTimeout(); }},
//                     &mTimUpdateTimeout};
//
//   SaveData:                  ... send ...; m_watch.saveSent();
//   mNcsbMessage_MsgTimeout:   m_watch.timeoutNoticed();
//   mNcsbMessage_DataReady:    (reply for this screen) m_watch.replyArrived();
//                              error text -> m_watch.failed(text), leave;
//                              m_watch.answered() -> the screen's own after-save steps; then the data
//   UpdateTimeout:             m_watch.updateTimeout();
//   mTimUpdateTimeout_Timer:   m_watch.timerTicked();
//   Close:                     m_watch.closing();
//
// Every call runs on the screen's thread; replies, time-out notices and ticks arrive as events one at a
// time, and a message box (which runs a nested event loop) may let another one in: each step reads
// SaveState only after its box has been answered.

#include <QObject>
#include <QString>

#include <functional>

namespace adjustacc::platform {
struct Services;
class Timer;
}  // namespace adjustacc::platform

namespace adjustacc::screencore {

class SaveWatch : public QObject {
  Q_OBJECT
public:
  static inline const QString kSavePending = QStringLiteral("SAVEPENDING");
  // The warning of the update timer; the first sentence ends with two blanks before the line break.
  static inline const QString kNoResponseWarning =
      QStringLiteral("The system has not responded to your save request.  \r\nYour request will be processed as "
                     "soon as possible.");
  // The status of a save that the update timer concluded, unless the screen gives its own.
  static inline const QString kUpdateSuccessful = QStringLiteral("Update successful");

  struct Binding {
    // The screen's PendingSave: false locks the inputs a pending save must not change, true unlocks them.
    std::function<void(bool enable)> pendingSave;
    // The screen's InitializeData: resets the save's inputs once the save is concluded.
    std::function<void()> initializeData;
    // What the screen shows of a save it must assume the host applied (after a time-out or the timer):
    // rows the save moved are taken out, a control is reset. May be empty.
    std::function<void()> assumeApplied;
    // The screen's UpdateTimeout, run by failed() after a time-out notice; empty runs updateTimeout().
    std::function<void()> updateTimeout;
    // The status text when the update timer concludes the save.
    QString tickStatus = kUpdateSuccessful;
  };

  // `timer` is the screen's update timer (mTimUpdateTimeout), or null for a screen that has none. Its
  // interval is taken from the session's update time-out here; saveSent() starts it, a tick stops it.
  SaveWatch(platform::Services& services, Binding binding, platform::Timer* timer = nullptr,
            QObject* parent = nullptr);
  ~SaveWatch() override;

  // --- state --------------------------------------------------------------------------------------------
  // "SAVEPENDING" while a save is unanswered, empty otherwise.
  QString SaveState() const { return m_pending ? kSavePending : QString(); }
  bool isPending() const { return m_pending; }
  bool AccountChanged() const { return m_accountChanged; }
  bool MsgTimedOut() const { return m_timedOut; }

  // --- the save is sent -----------------------------------------------------------------------------------
  // Called once the request has gone: the time-out flag cleared, SaveState "SAVEPENDING", the inputs locked
  // (pendingSave(false)), the host status area busy, the update timer started. Given the save's request id
  // and what it saves in the clerk's words, a save concluded as applied without its answer (a time-out, the
  // timer) is followed by the question to the host of what became of it (saveoutcomecheck.h).
  void saveSent(const QString& requestId = {}, const QString& what = {});

  // --- events ---------------------------------------------------------------------------------------------
  // The request object's time-out notice: the final outcome still comes through the reply handler.
  void timeoutNoticed() { m_timedOut = true; }
  // Another request of the screen (an inquiry, not a save) has gone: the time-out flag is its own now, so an
  // error reply to it reads as a failed search, not as a timed-out save.
  void requestSent() { m_timedOut = false; }
  // First step of every reply for this screen: the host status area is no longer busy.
  void replyArrived();

  // --- the conclusions ------------------------------------------------------------------------------------
  // The reply answered the save: AccountChanged set, SaveState cleared, inputs unlocked. Answers whether a
  // save was pending, so that the screen runs its own after-save steps only then.
  bool answered();
  // An error reply: the pointer back to normal and the text in a critical message box; then, after a time-out notice, the screen's
  // UpdateTimeout and "Search timed out"; otherwise the save is refused (SaveState cleared, AccountChanged
  // untouched), the inputs unlocked and "Search was not successful" shown. Runs whether or not a save was
  // pending: an error reply while idle unlocks inputs that another step left locked.
  void failed(const QString& errorText);
  // The request timed out (UpdateTimeout): the pointer back to normal; a pending save is concluded as if
  // applied: AccountChanged, SaveState cleared, inputs unlocked, initializeData, assumeApplied. No text.
  void updateTimeout();
  // The update timer ticked: the pointer back, the timer stopped, the warning shown; a save still pending
  // is then concluded as if applied, with the binding's tick status.
  void timerTicked();
  // The screen closes: a save still pending is concluded unanswered (AccountChanged set, the timer
  // stopped), so the opener reads the account again and a late reply changes nothing here.
  void closing();

  // --- the two primitive endings, for screens whose own steps differ from the ones above ----------------
  // Ends a pending save as possibly applied: AccountChanged set, SaveState cleared, timer stopped. Answers
  // whether a save was pending.
  bool conclude();
  // Ends a pending save as refused: SaveState cleared, timer stopped, AccountChanged untouched.
  bool cancel();

Q_SIGNALS:
  // SaveState changed (to "SAVEPENDING" or back to empty).
  void saveStateChanged(const QString& saveState);

private:
  void unlockAfter();
  void concludeAsApplied();
  void stopTimer();

  platform::Services& m_services;
  Binding m_binding;
  platform::Timer* m_timer;
  bool m_pending = false;
  bool m_accountChanged = false;
  bool m_timedOut = false;
  QString m_requestId;
  QString m_what;
};

}  // namespace adjustacc::screencore
