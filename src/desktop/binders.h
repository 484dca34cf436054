#pragma once
// Binders: each ties one control of a screen to the widget that shows it, both ways.
//
//   control -> widget  the widget always shows the control's state (text, caption, value, enabled, visible,
//                      locked, colours, focus requests), whoever changed it;
//   widget -> control  what the person does goes through the control's user...() setters, so the screen's
//                      events (Click, Change, KeyPress, GotFocus/LostFocus) fire exactly as the person caused
//                      them, and a refusal (locked, disabled, a key the screen's filter drops) puts the widget
//                      back to what the control holds.
//
// A binding lives as long as both sides: it is a child of the widget and lets go when the control goes.
// Controls inside a frame must be shown by widgets inside the frame's group box, so that a disabled or hidden
// frame disables or hides them as it does for the person.

class QAbstractButton;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QRadioButton;
class QWidget;

namespace adjustacc::platform {
class Button;
class CodesCombo;
class Control;
class DatePicker;
class Frame;
class Label;
class OptionButton;
class TextBox;
}  // namespace adjustacc::platform

namespace adjustacc::desktop {

class DateEdit;

// What every control has: enabled, visible, back and fore colours, focus requests, and the person's focus
// moving in and out (GotFocus/LostFocus). The specific binders below call it themselves.
void bindControl(platform::Control& control, QWidget& widget);

void bindButton(platform::Button& button, QAbstractButton& widget);
void bindLabel(platform::Label& label, QLabel& widget);
// A label whose caption is a day as the host or a screen writes it: shown in the clerk's short date; a caption
// that is no day is shown as it is.
void bindDateLabel(platform::Label& label, QLabel& widget);
// Typed keys go through the box's KeyPress filter one by one (a refused key is dropped; a changed key is
// inserted as changed); pasted or dropped text goes through the same filter; the maximum length limits what
// the person types; a locked box is read-only.
void bindTextBox(platform::TextBox& textBox, QLineEdit& widget);
// Options are kept exclusive by their controls' group, not by Qt's auto-exclusivity.
void bindOptionButton(platform::OptionButton& option, QRadioButton& widget);
void bindFrame(platform::Frame& frame, QGroupBox& widget);
// An editable combo box listing the descriptions; the person picks a row or types a description or code.
void bindCodesCombo(platform::CodesCombo& box, QComboBox& widget);
void bindDatePicker(platform::DatePicker& picker, DateEdit& widget);

}  // namespace adjustacc::desktop
