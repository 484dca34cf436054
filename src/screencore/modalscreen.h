#pragma once
// The base of every dialogue screen: what the opener and the Ui port see of it, and what every dialogue
// repeats - its name and caption, whether it is showing, loading itself (Form_Load) the first time it is
// shown and activating itself (Form_Activate) every time, hiding to hand control back.
//
// One way for a screen to open another: the opener builds the screen, sets its properties, calls
// showModal() (the Ui port shows it and returns when the screen hides itself), then reads the properties
// it needs (AccountChanged, the chosen account...). The desktop supplies only a view per form name.
//
//   inquiry::QORVA_FormInq openAccount(m_services);
//   openAccount.mFtcboDocType.setDefaultCode(u"C"_s);
//   openAccount.showModal();
//   if (openAccount.result() == inquiry::QORVA_FormInq::kCancel) return;

#include "procedure.h"

#include "platform/ui.h"

#include <QObject>
#include <QString>

namespace adjustacc::platform {
struct Services;
}

namespace adjustacc::screencore {

class ModalScreen : public QObject, public platform::ModalForm {
  Q_OBJECT
public:
  ~ModalScreen() override;

  QString formName() const override { return m_formName; }
  QString caption() const override { return m_caption; }
  bool isVisible() const override { return m_visible; }
  // Showing loads the screen the first time (Form_Load), then activates it (Form_Activate); hiding hands
  // control back to whoever showed it.
  void setVisible(bool visible) override;
  bool isLoaded() const { return m_loaded; }

  // Shows the screen modally through the Ui port; returns when it has hidden itself.
  void showModal();

protected:
  // `formName` is also the prefix of the procedures' source names ("QORVA_FormInq").
  ModalScreen(platform::Services& services, const QString& formName, QString caption, QObject* parent);

  // What the screen does the first time it is shown, and every time it is shown.
  virtual void loaded() {}
  virtual void activated() {}
  // Hidden, and loaded afresh the next time it is shown (Form_Unload).
  void unload();

  platform::Services& m_services;
  // "QORVA_FormInq.Form_Load" from source("Form_Load").
  const ProcedureNames source;

private:
  QString m_formName;
  QString m_caption;
  bool m_visible = false;
  bool m_loaded = false;
};

}  // namespace adjustacc::screencore
