#pragma once
// The "Open Account" dialogue (QORVA_FormInq) that the document shows when it opens an account: the clerk
// picks an account type and types the account number, or finds the account through a customer with
// "Select Account". OK checks the entry and closes; the opener then reads the type box and the number box.
// The result is "Cancel" unless the clerk confirmed with OK, so a dialogue closed any other way opens nothing.

#include "messaging/recordset.h"
#include "screencore/modalscreen.h"
#include "platform/button.h"
#include "platform/codescombo.h"
#include "platform/controlarray.h"
#include "platform/label.h"
#include "platform/textbox.h"

#include <QString>

namespace adjustacc::platform {
struct Services;
}

namespace adjustacc::inquiry {

class QORVA_FormInq : public screencore::ModalScreen {
  Q_OBJECT
public:
  static inline const QString kFormName = QStringLiteral("QORVA_FormInq");
  static inline const QString kCaption = QStringLiteral("Open Account");
  static inline const QString kCancel = QStringLiteral("Cancel");
  static inline const QString kConfirmed = QStringLiteral("OK");
  // Indexes of mCmdBttn.
  enum Buttons { OkButton = 0, CancelButton = 1, SelectAccountButton = 2 };

  explicit QORVA_FormInq(platform::Services& services, QObject* parent = nullptr);
  ~QORVA_FormInq() override;

  // "Cancel" unless OK closed the dialogue ("OK").
  QString result() const { return m_result; }

  // --- procedures ----------------------------------------------------------------------------------------
  void Form_Load();
  void Form_Activate();
  void Form_Unload();
  void mCmdBttn_Click(int index);
  // Whether the entry is valid; when not, the messages were shown and the inputs in error are marked.
  bool CheckEdit();
  void DefaultFieldColor();
  void mFtcboDocType_Change();
  void mTxtDocNbr_Change();
  void mTxtDocNbr_KeyPress(int& keyAscii);

  // The messages of the last CheckEdit, each followed by a carriage return and line feed.
  QString errorText() const { return m_errorText; }

  // --- controls ------------------------------------------------------------------------------------------
  platform::Label mLblDocType{QStringLiteral("mLblDocType"), QStringLiteral("Account Type:")};
  platform::QORVA_CodesCombo mFtcboDocType{QStringLiteral("mFtcboDocType")};
  platform::Label mLblDocNbr{QStringLiteral("mLblDocNbr"), QStringLiteral("Account #:")};
  platform::TextBox mTxtDocNbr{QStringLiteral("mTxtDocNbr")};
  platform::ControlArray<platform::Button> mCmdBttn{QStringLiteral("mCmdBttn")};

private:
  // Showing loads the dialogue the first time (Form_Load), then brings it forward (Form_Activate).
  void loaded() override { Form_Load(); }
  void activated() override { Form_Activate(); }
  void checkNumber(const QString& number);

  QString m_result = kCancel;
  QString m_errorText;
};

}  // namespace adjustacc::inquiry
