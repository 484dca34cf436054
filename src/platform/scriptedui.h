#pragma once
// The Ui for tests: records every message box (text, buttons, icon, title) in order and answers from a
// queue; records pointer changes and beeps; runs a test-supplied callback when a form is shown modally.
//
// With the queue empty a box gets the default answer: the first button of its set (OK, Yes, Retry,
// Abort), or the answer set by setDefaultAnswer() when the box offers it. An answer the box does not
// offer is a mistake in the test's script: the box gets its first button instead and the mistake is kept
// in scriptErrors(), which a test can check is empty.

#include "platform/ui.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <deque>
#include <functional>
#include <map>
#include <optional>

namespace adjustacc::platform {

class ScriptedUi : public Ui {
public:
  struct Box {
    QString text;
    MsgButtons buttons = MsgButtons::Ok;
    MsgIcon icon = MsgIcon::None;
    QString title;
    MsgAnswer answer = MsgAnswer::Ok;
  };
  struct ShownForm {
    QString formName;
    QString caption;
    bool hiddenByUi = false;  // still visible after the callback: the scripted Ui hid it
  };
  using FormCallback = std::function<void(ModalForm&)>;

  ScriptedUi();
  ~ScriptedUi() override;

  // --- the port ---------------------------------------------------------------------------------------
  MsgAnswer messageBox(const QString& text, MsgButtons buttons, MsgIcon icon, const QString& title) override;
  void showModal(ModalForm& form) override;
  void setPointer(Pointer pointer) override;
  Pointer pointer() const override { return m_pointer; }
  void beep() override { ++m_beeps; m_events.append(QStringLiteral("beep")); }

  // --- script -----------------------------------------------------------------------------------------
  void queueAnswer(MsgAnswer answer) { m_answers.push_back(answer); }
  void queueAnswers(std::initializer_list<MsgAnswer> answers);
  int pendingAnswers() const { return static_cast<int>(m_answers.size()); }
  void setDefaultAnswer(std::optional<MsgAnswer> answer) { m_defaultAnswer = answer; }
  // Runs while the next message box is open, standing in for the events (replies, time-outs, ticks) that a
  // real box's event loop delivers before the person answers it.
  void duringNextBox(std::function<void()> callback) { m_duringBox.push_back(std::move(callback)); }

  // Runs for the next modal form shown (in order; these come before the per-name handlers).
  void queueModal(FormCallback callback) { m_modalQueue.push_back(std::move(callback)); }
  // Runs for every modal showing of the named form while nothing is queued.
  void onModal(const QString& formName, FormCallback callback);

  // --- record -----------------------------------------------------------------------------------------
  const QList<Box>& boxes() const { return m_boxes; }
  int boxCount() const { return static_cast<int>(m_boxes.size()); }
  // The last box; an empty box (text empty) when none was shown.
  Box lastBox() const { return m_boxes.isEmpty() ? Box{} : m_boxes.constLast(); }
  QStringList boxTexts() const;
  const QList<ShownForm>& shownForms() const { return m_forms; }
  const QList<Pointer>& pointerChanges() const { return m_pointerChanges; }
  int beepCount() const { return m_beeps; }
  // Everything in the order it happened: "box: <text>", "form: <name>", "pointer: hourglass", "beep".
  const QStringList& events() const { return m_events; }
  const QStringList& scriptErrors() const { return m_errors; }
  // Forgets what was recorded (the script stays).
  void clearRecord();

  static QList<MsgAnswer> offeredAnswers(MsgButtons buttons);

private:
  std::deque<MsgAnswer> m_answers;
  std::optional<MsgAnswer> m_defaultAnswer;
  std::deque<std::function<void()>> m_duringBox;
  std::deque<FormCallback> m_modalQueue;
  std::map<QString, FormCallback> m_modalByName;
  QList<Box> m_boxes;
  QList<ShownForm> m_forms;
  QList<Pointer> m_pointerChanges;
  Pointer m_pointer = Pointer::Default;
  int m_beeps = 0;
  QStringList m_events;
  QStringList m_errors;
};

}  // namespace adjustacc::platform
