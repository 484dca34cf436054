#include "platform/scriptedui.h"

#include <QDebug>

#include <utility>

namespace adjustacc::platform {

namespace {
QString answerName(MsgAnswer answer) {
  switch (answer) {
    case MsgAnswer::Ok:
      return QStringLiteral("OK");
    case MsgAnswer::Cancel:
      return QStringLiteral("Cancel");
    case MsgAnswer::Yes:
      return QStringLiteral("Yes");
    case MsgAnswer::No:
      return QStringLiteral("No");
    case MsgAnswer::Retry:
      return QStringLiteral("Retry");
    case MsgAnswer::Abort:
      return QStringLiteral("Abort");
    case MsgAnswer::Ignore:
      return QStringLiteral("Ignore");
  }
  return QStringLiteral("?");
}
}  // namespace

ScriptedUi::ScriptedUi() = default;
ScriptedUi::~ScriptedUi() = default;

QList<MsgAnswer> ScriptedUi::offeredAnswers(MsgButtons buttons) {
  switch (buttons) {
    case MsgButtons::Ok:
      return {MsgAnswer::Ok};
    case MsgButtons::OkCancel:
      return {MsgAnswer::Ok, MsgAnswer::Cancel};
    case MsgButtons::YesNo:
      return {MsgAnswer::Yes, MsgAnswer::No};
    case MsgButtons::YesNoCancel:
      return {MsgAnswer::Yes, MsgAnswer::No, MsgAnswer::Cancel};
    case MsgButtons::RetryCancel:
      return {MsgAnswer::Retry, MsgAnswer::Cancel};
    case MsgButtons::AbortRetryIgnore:
      return {MsgAnswer::Abort, MsgAnswer::Retry, MsgAnswer::Ignore};
  }
  return {MsgAnswer::Ok};
}

void ScriptedUi::queueAnswers(std::initializer_list<MsgAnswer> answers) {
  for (const MsgAnswer answer : answers) {
    m_answers.push_back(answer);
  }
}

MsgAnswer ScriptedUi::messageBox(const QString& text, MsgButtons buttons, MsgIcon icon, const QString& title) {
  const QList<MsgAnswer> offered = offeredAnswers(buttons);
  MsgAnswer answer = offered.constFirst();
  if (!m_answers.empty()) {
    const MsgAnswer scripted = m_answers.front();
    m_answers.pop_front();
    if (offered.contains(scripted)) {
      answer = scripted;
    } else {
      const QString error = QStringLiteral("box \"%1\" does not offer the scripted answer %2").arg(text, answerName(scripted));
      qWarning().noquote() << "ScriptedUi:" << error;
      m_errors.append(error);
    }
  } else if (m_defaultAnswer && offered.contains(*m_defaultAnswer)) {
    answer = *m_defaultAnswer;
  }
  m_boxes.append(Box{text, buttons, icon, title, answer});
  m_events.append(QStringLiteral("box: ") + text);
  if (!m_duringBox.empty()) {
    const std::function<void()> during = std::move(m_duringBox.front());
    m_duringBox.pop_front();
    during();
  }
  return answer;
}

void ScriptedUi::onModal(const QString& formName, FormCallback callback) {
  m_modalByName[formName] = std::move(callback);
}

void ScriptedUi::showModal(ModalForm& form) {
  const int record = static_cast<int>(m_forms.size());
  m_forms.append(ShownForm{form.formName(), form.caption(), false});
  m_events.append(QStringLiteral("form: ") + form.formName());
  form.setVisible(true);

  FormCallback callback;
  if (!m_modalQueue.empty()) {
    callback = std::move(m_modalQueue.front());
    m_modalQueue.pop_front();
  } else if (const auto it = m_modalByName.find(form.formName()); it != m_modalByName.end()) {
    callback = it->second;
  }
  if (callback) {
    callback(form);  // may show further forms modally, as a person working in the dialogue would
  }
  if (form.isVisible()) {
    // A real dialogue would still be open; the script ends it so the opener can go on.
    form.setVisible(false);
    m_forms[record].hiddenByUi = true;
  }
}

void ScriptedUi::setPointer(Pointer pointer) {
  m_pointer = pointer;
  m_pointerChanges.append(pointer);
  m_events.append(pointer == Pointer::Hourglass ? QStringLiteral("pointer: hourglass")
                                                : QStringLiteral("pointer: default"));
}

QStringList ScriptedUi::boxTexts() const {
  QStringList texts;
  for (const Box& box : m_boxes) {
    texts.append(box.text);
  }
  return texts;
}

void ScriptedUi::clearRecord() {
  m_boxes.clear();
  m_forms.clear();
  m_pointerChanges.clear();
  m_beeps = 0;
  m_events.clear();
  m_errors.clear();
}

}  // namespace adjustacc::platform
