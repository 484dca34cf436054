#pragma once
// The Ui port: everything that needs a person. The desktop answers with real dialogs; tests answer from
// a script. Screens and services reach people only through this port.

#include <QString>

#include <functional>

namespace adjustacc::platform {

enum class MsgButtons { Ok, OkCancel, YesNo, YesNoCancel, RetryCancel, AbortRetryIgnore };
enum class MsgIcon { None, Critical, Exclamation, Information, Question };
enum class MsgAnswer { Ok, Cancel, Yes, No, Retry, Abort, Ignore };
enum class Pointer { Default, Hourglass };

// A form that can be shown modally: the Ui shows it and returns when the form hides itself.
class ModalForm {
public:
  virtual ~ModalForm();
  virtual QString formName() const = 0;  // "QORVA_FormInq"
  virtual QString caption() const = 0;   // "Open Account"
  virtual bool isVisible() const = 0;
  virtual void setVisible(bool visible) = 0;  // Hide() is setVisible(false)
};

class Ui {
public:
  virtual ~Ui();
  virtual MsgAnswer messageBox(const QString& text, MsgButtons buttons, MsgIcon icon, const QString& title) = 0;
  // Shows the form modally; returns when the form hid itself (or the person closed it).
  virtual void showModal(ModalForm& form) = 0;
  virtual void setPointer(Pointer pointer) = 0;
  virtual Pointer pointer() const = 0;
  virtual void beep() = 0;
};

}  // namespace adjustacc::platform
