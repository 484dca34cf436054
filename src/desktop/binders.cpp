#include "binders.h"

#include "dateedit.h"

#include "platform/button.h"
#include "platform/codescombo.h"
#include "platform/datepicker.h"
#include "platform/datetimes.h"
#include "platform/frame.h"
#include "platform/label.h"
#include "platform/optionbutton.h"
#include "platform/textbox.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QCompleter>
#include <QEvent>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPalette>
#include <QPointer>
#include <QRadioButton>
#include <QSignalBlocker>

#include <utility>

namespace adjustacc::desktop {

using platform::Control;

namespace {

// The common part of a binding: a child of the widget that follows the control's common state and reports
// the person's focus changes.
class ControlBinding : public QObject {
public:
  ControlBinding(Control& control, QWidget& widget)
      : QObject(&widget), m_control(&control), m_widget(&widget), m_palette(widget.palette()) {
    setObjectName(QStringLiteral("binding:") + control.name());
    widget.installEventFilter(this);
    QObject::connect(&control, &Control::changed, this, [this] { apply(); });
    QObject::connect(&control, &Control::focusRequested, this, [this] {
      if (m_widget && m_widget->isEnabled()) {
        m_widget->setFocus(Qt::OtherFocusReason);
      }
    });
    apply();
  }

protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (watched == m_widget && m_control) {
      if (event->type() == QEvent::FocusIn) {
        m_control->userFocusIn();
      } else if (event->type() == QEvent::FocusOut) {
        m_control->userFocusOut();
      }
    }
    return false;
  }

private:
  void apply() {
    if (!m_control || !m_widget) {
      return;
    }
    m_widget->setEnabled(m_control->isEnabled());
    if (!m_control->isVisible()) {
      m_widget->hide();
    } else if (m_widget->isHidden() && m_widget->parentWidget() != nullptr) {
      // Only a widget inside a window is shown here; a top-level one is shown by whoever opens it.
      m_widget->show();
    }
    QPalette palette = m_palette;
    const QColor back = m_control->backColor();
    const QColor fore = m_control->foreColor();
    if (back.isValid()) {
      palette.setColor(QPalette::Base, back);
      palette.setColor(QPalette::Window, back);
      palette.setColor(QPalette::Button, back);
    }
    if (fore.isValid()) {
      palette.setColor(QPalette::Text, fore);
      palette.setColor(QPalette::WindowText, fore);
      palette.setColor(QPalette::ButtonText, fore);
    }
    m_widget->setPalette(palette);
    // A label shows its back colour only when it paints its background.
    if (qobject_cast<QLabel*>(m_widget.data()) != nullptr) {
      m_widget->setAutoFillBackground(back.isValid());
    }
  }

  QPointer<Control> m_control;
  QPointer<QWidget> m_widget;
  QPalette m_palette;
};

// --- text box --------------------------------------------------------------------------------------------------------

class TextBoxBinding : public QObject {
public:
  TextBoxBinding(platform::TextBox& box, QLineEdit& edit) : QObject(&edit), m_box(&box), m_edit(&edit) {
    edit.installEventFilter(this);
    QObject::connect(&box, &platform::TextBox::changed, this, [this] { show(); });
    QObject::connect(&edit, &QLineEdit::textEdited, this, [this](const QString& text) { edited(text); });
    m_shown = box.text();
    show();
  }

protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (watched != m_edit || !m_box || event->type() != QEvent::KeyPress) {
      return false;
    }
    auto* key = static_cast<QKeyEvent*>(event);
    // A box the person cannot change still lets the person move, select and copy.
    if (!m_box->canEdit()) {
      return false;
    }
    if (key->matches(QKeySequence::Paste) && !m_box->isPasteAllowed()) {
      return true;
    }
    if (key->modifiers() & (Qt::ControlModifier | Qt::MetaModifier)) {
      // A command (copy, cut, paste, undo...), not a character: what it changes is filtered as pasted text.
      return false;
    }
    const QString typed = key->text();
    if (typed.isEmpty()) {
      return false;  // arrows, function keys: no character to filter
    }
    QString insert;
    bool changed = false;
    for (const QChar c : typed) {
      const int code = m_box->userKeyPress(c.unicode());
      if (code == 0) {
        return true;  // refused: the screen has beeped if it wished to
      }
      if (code != c.unicode()) {
        changed = true;
      }
      insert.append(QChar(static_cast<char16_t>(code)));
    }
    const bool printable = !insert.isEmpty() && insert.at(0).unicode() >= 0x20 && insert.at(0).unicode() != 0x7f;
    if (!printable) {
      return false;  // backspace, enter, copy...: the line edit does what it always does
    }
    if (roomFor(insert.size()) < insert.size()) {
      return true;
    }
    if (changed) {
      const bool wasTyping = std::exchange(m_typing, true);
      m_edit->insert(insert);
      m_typing = wasTyping;
      edited(m_edit->text(), true);
      return true;
    }
    const bool wasTyping = std::exchange(m_typing, true);
    m_edit->event(event);
    m_typing = wasTyping;
    return true;
  }

private:
  // How many characters may still be typed, counting the selection the typing replaces.
  int roomFor(qsizetype) const {
    const int limit = m_box->maxLength();
    if (limit <= 0) {
      return INT_MAX;
    }
    const auto kept = m_edit->text().size() - m_edit->selectedText().size();
    return limit - static_cast<int>(kept);
  }

  void edited(const QString& text, bool filtered = false) {
    if (!m_box) {
      return;
    }
    QString accepted = text;
    if (!m_typing && !filtered) {
      // Pasted, dropped or undone text: what came in goes through the key filter as if typed.
      accepted = filterInserted(m_shown, text);
      if (!accepted.isNull() && !m_box->isPasteAllowed() && accepted != m_shown && accepted.size() > m_shown.size()) {
        accepted = m_shown;
      }
    }
    if (accepted.isNull() || !m_box->userSetText(accepted)) {
      show(true);
      return;
    }
    show(accepted != text);
  }

  // The text with the characters inserted between `before` and `after` filtered; null when the box refuses.
  QString filterInserted(const QString& before, const QString& after) {
    qsizetype prefix = 0;
    while (prefix < before.size() && prefix < after.size() && before.at(prefix) == after.at(prefix)) {
      ++prefix;
    }
    qsizetype suffix = 0;
    while (suffix < before.size() - prefix && suffix < after.size() - prefix &&
           before.at(before.size() - 1 - suffix) == after.at(after.size() - 1 - suffix)) {
      ++suffix;
    }
    const QString inserted = after.mid(prefix, after.size() - prefix - suffix);
    QString kept;
    for (const QChar c : inserted) {
      const int code = m_box->userKeyPress(c.unicode());
      if (code != 0) {
        kept.append(QChar(static_cast<char16_t>(code)));
      }
    }
    return after.left(prefix) + kept + after.right(suffix);
  }

  void show(bool force = false) {
    if (!m_box || !m_edit) {
      return;
    }
    m_edit->setReadOnly(m_box->isLocked());
    const QString text = m_box->text();
    m_shown = text;
    if (force || m_edit->text() != text) {
      const int cursor = m_edit->cursorPosition();
      m_edit->setText(text);
      if (!force) {
        m_edit->setCursorPosition(qMin(cursor, static_cast<int>(text.size())));
      }
    }
  }

  QPointer<platform::TextBox> m_box;
  QPointer<QLineEdit> m_edit;
  QString m_shown;
  bool m_typing = false;
};

}  // namespace

void bindControl(Control& control, QWidget& widget) { new ControlBinding(control, widget); }

void bindButton(platform::Button& button, QAbstractButton& widget) {
  bindControl(button, widget);
  QPointer<platform::Button> control(&button);
  const auto show = [control, &widget] {
    if (control) {
      widget.setText(control->caption());
    }
  };
  show();
  QObject::connect(&button, &Control::changed, &widget, show);
  QObject::connect(&widget, &QAbstractButton::clicked, &button, [control] {
    if (control) {
      control->click();
    }
  });
}

void bindLabel(platform::Label& label, QLabel& widget) {
  bindControl(label, widget);
  widget.setTextFormat(Qt::PlainText);
  QPointer<platform::Label> control(&label);
  const auto show = [control, &widget] {
    if (control) {
      widget.setText(control->caption());
    }
  };
  show();
  QObject::connect(&label, &Control::changed, &widget, show);
}

void bindDateLabel(platform::Label& label, QLabel& widget) {
  bindControl(label, widget);
  widget.setTextFormat(Qt::PlainText);
  QPointer<platform::Label> control(&label);
  const auto show = [control, &widget] {
    if (!control) {
      return;
    }
    const QString caption = control->caption();
    const messaging::Result<QDate> day = platform::parseAnyDate(caption.trimmed());
    widget.setText(day ? QLocale().toString(day.value(), QLocale::ShortFormat) : caption);
  };
  show();
  QObject::connect(&label, &Control::changed, &widget, show);
}

void bindTextBox(platform::TextBox& textBox, QLineEdit& widget) {
  bindControl(textBox, widget);
  new TextBoxBinding(textBox, widget);
}

void bindOptionButton(platform::OptionButton& option, QRadioButton& widget) {
  bindControl(option, widget);
  // The controls' group keeps the options exclusive; Qt's own exclusivity could not show "none chosen".
  widget.setAutoExclusive(false);
  QPointer<platform::OptionButton> control(&option);
  const auto show = [control, &widget] {
    if (control) {
      widget.setText(control->caption());
      widget.setChecked(control->value());
    }
  };
  show();
  QObject::connect(&option, &Control::changed, &widget, show);
  QObject::connect(&widget, &QAbstractButton::clicked, &option, [control, show] {
    if (control) {
      control->userChoose();
    }
    // A click on a chosen option (or a refused one) must not leave the widget unlike the control.
    show();
  });
}

void bindFrame(platform::Frame& frame, QGroupBox& widget) {
  bindControl(frame, widget);
  QPointer<platform::Frame> control(&frame);
  const auto show = [control, &widget] {
    if (control) {
      widget.setTitle(control->caption());
    }
  };
  show();
  QObject::connect(&frame, &Control::changed, &widget, show);
}

void bindCodesCombo(platform::CodesCombo& box, QComboBox& widget) {
  bindControl(box, widget);
  widget.setEditable(true);
  widget.setInsertPolicy(QComboBox::NoInsert);
  // Typing part of a description offers the matching rows; the text is never completed behind the person.
  auto* completer = new QCompleter(widget.model(), &widget);
  completer->setCaseSensitivity(Qt::CaseInsensitive);
  completer->setFilterMode(Qt::MatchContains);
  completer->setCompletionMode(QCompleter::PopupCompletion);
  widget.setCompleter(completer);

  QPointer<platform::CodesCombo> control(&box);
  const auto fill = [control, &widget] {
    if (!control) {
      return;
    }
    const QSignalBlocker blocker(widget);
    widget.clear();
    for (int row = 0; row < control->rowCount(); ++row) {
      widget.addItem(control->descriptionAt(row), control->codeAt(row));
    }
  };
  const auto show = [control, &widget] {
    if (!control) {
      return;
    }
    const QSignalBlocker blocker(widget);
    if (QLineEdit* edit = widget.lineEdit()) {
      edit->setReadOnly(control->isLocked());
    }
    const int cursor = widget.lineEdit() != nullptr ? widget.lineEdit()->cursorPosition() : 0;
    const bool sameText = widget.currentText() == control->text();
    if (widget.currentIndex() != control->currentRow()) {
      widget.setCurrentIndex(control->currentRow());
    }
    if (widget.currentText() != control->text()) {
      widget.setEditText(control->text());
      if (sameText && widget.lineEdit() != nullptr) {
        widget.lineEdit()->setCursorPosition(cursor);
      }
    }
  };
  fill();
  show();
  QObject::connect(&box, &platform::CodesCombo::rowsChanged, &widget, [fill, show] {
    fill();
    show();
  });
  QObject::connect(&box, &Control::changed, &widget, show);
  QObject::connect(&widget, &QComboBox::editTextChanged, &box, [control, show](const QString& text) {
    if (control && !control->userSetText(text)) {
      show();
    }
  });
  QObject::connect(&widget, &QComboBox::activated, &box, [control, show](int row) {
    if (control && !control->userChooseRow(row)) {
      show();
    }
    show();
  });
}

void bindDatePicker(platform::DatePicker& picker, DateEdit& widget) {
  bindControl(picker, widget);
  QPointer<platform::DatePicker> control(&picker);
  const auto show = [control, &widget] {
    if (!control) {
      return;
    }
    const bool time = control->mode() == platform::DatePicker::Mode::Time;
    widget.setMode(time ? DateEdit::Mode::Time : DateEdit::Mode::Date);
    QString format = control->displayFormat();
    if (format.isEmpty() || format.compare(QLatin1String("Short Date"), Qt::CaseInsensitive) == 0) {
      format = time ? QStringLiteral("hh:mm") : QStringLiteral("MM/dd/yyyy");
    } else if (format.compare(QLatin1String("Long Date"), Qt::CaseInsensitive) == 0) {
      format = QStringLiteral("dddd, MMMM d, yyyy");
    }
    widget.setPattern(format);
    widget.setLimits(control->minDate(), control->maxDate());
    if (control->isEmpty()) {
      widget.showValue(QDateTime());
    } else {
      widget.showValue(QDateTime(control->date().isValid() ? control->date() : QDate(2000, 1, 2), control->time()));
    }
  };
  show();
  QObject::connect(&picker, &Control::changed, &widget, show);
  QObject::connect(&widget, &DateEdit::valueEdited, &picker, [control, show](const QDateTime& value) {
    if (!control) {
      return;
    }
    const bool accepted = value.isValid() ? control->userSetDateTime(value) : control->userClear();
    if (!accepted) {
      show();
    }
  });
}

}  // namespace adjustacc::desktop
