#pragma once
// The "License Purchase Option" screen (QORVA_LicPurchOpt) that the Account Receivable Detail screen opens
// when an adjustment removes a License Purchase Option fee. The clerk says whether the option was bought in
// state or out of state and, in state, the purchase particulars (plate, date and time, troop/district,
// weight, amount paid); out of state a comment is enough. Save checks the entry and hides the screen; the
// opener then reads CancelClicked and, when it is false, the entry (recordValues(), or the controls).
//
// Its procedures report under "QORVA_LicPurchOptFrm." + the procedure's name, not under the screen's own
// name: that is the name the error reports have always carried.

#include "screencore/modalscreen.h"

#include "platform/button.h"
#include "platform/controlarray.h"
#include "platform/datepicker.h"
#include "platform/label.h"
#include "platform/optionbutton.h"
#include "platform/textbox.h"

#include <QString>

namespace adjustacc::platform {
struct Services;
}

namespace adjustacc::ardetail {

// The entry as the "CTTNADTNINFO" record carries it, field by field; an empty input gives an empty text.
struct LpoRecordValues {
  QString stateCode;     // PRCHS_OPTN_ST_CD: "0" in state, "1" out of state, empty when neither is chosen
  QString plate;         // PRCHS_OPTN_TAG_NBR, trimmed
  QString purchaseDate;  // PRCHS_OPTN_DT, "yyyy-mm-dd"
  QString purchaseTime;  // PRCHS_OPTN_TM, "HH:MM"
  QString troop;         // PO_TRP_ID: the first character of Troop/District
  QString district;      // PO_TRP_DSTRCT_ID: the rest of it
  QString weight;        // PRCHS_OPTN_WGT, trimmed
  QString amount;        // TOT_PRCHS_OPTN_AMT: "1234.50"; a text that is no amount, without its "$" and ","
  QString comment;       // PRCHS_OPTN_TXT, trimmed

  friend bool operator==(const LpoRecordValues&, const LpoRecordValues&) = default;
};

class QORVA_LicPurchOpt : public screencore::ModalScreen {
  Q_OBJECT
public:
  static inline const QString kFormName = QStringLiteral("QORVA_LicPurchOpt");
  static inline const QString kCaption = QStringLiteral("License Purchase Option");
  static inline const QString kErrorSource = QStringLiteral("QORVA_LicPurchOptFrm");
  static inline const QString kChangedQuestion =
      QStringLiteral("Information has changed. Would you like to save your changes?");

  // Indexes of mRdo, mTxt, QORVA_DTP1 and mCmd.
  enum Options { InState = 0, OutOfState = 1 };
  enum Texts { Plate = 0, Weight = 1, Amount = 2, Comments = 3, TroopDistrict = 4 };
  enum Pickers { DatePurchased = 0, TimePurchased = 1 };
  enum Buttons { SaveButton = 0, CancelButton = 1 };

  struct TroopAndDistrict {
    QString troop;
    QString district;
  };

  explicit QORVA_LicPurchOpt(platform::Services& services, QObject* parent = nullptr);
  ~QORVA_LicPurchOpt() override;

  // True unless Save closed the screen: Cancel, and a screen closed any other way, hand back nothing.
  bool CancelClicked() const { return m_cancelClicked; }
  // The entry in the form the "CTTNADTNINFO" record sends it.
  LpoRecordValues recordValues() const;

  // --- procedures ----------------------------------------------------------------------------------------
  void Form_Load();
  void mCmd_Click(int index);
  // Whether the entry is valid; errorText() holds the messages of the rules that failed, in order.
  bool CheckEdit();
  void DefaultFieldColor();
  // Troop and district of the Troop/District field, split by TroopDistrictSplit; both empty for an empty field.
  TroopAndDistrict GetTroopDistrict();
  // StrTroop = the first character of the trimmed field, StrTroopDistrict = the rest.
  void TroopDistrictSplit();
  // Whether the troop (or troop and district) is one the troop/district table holds; marks the field if not.
  bool TroopDistrictCheck();
  void mTxt_KeyPress(int index, int& keyAscii);
  void mTxt_Change(int index);
  void mTxt_LostFocus(int index);
  void mRdo_Click(int index);
  void QORVA_DTP1_Change(int index);

  // The messages of the last CheckEdit, each followed by a carriage return and line feed.
  QString errorText() const { return m_errorText; }
  // Whether the clerk changed an input since the screen was filled.
  bool isChanged() const { return m_changed; }

  // The split of the last TroopDistrictSplit.
  QString StrTroop;
  QString StrTroopDistrict;

  // --- controls ------------------------------------------------------------------------------------------
  platform::Label mLblPrompt{QStringLiteral("mLblPrompt"), QStringLiteral("Please enter the following LPO fields:")};
  platform::ControlArray<platform::OptionButton> mRdo{QStringLiteral("mRdo")};
  platform::ControlArray<platform::TextBox> mTxt{QStringLiteral("mTxt")};
  platform::ControlArray<platform::QORVA_DTP> QORVA_DTP1{QStringLiteral("QORVA_DTP1")};
  platform::ControlArray<platform::Button> mCmd{QStringLiteral("mCmd")};
  // The captions of the inputs, by the index of their text box or picker.
  platform::ControlArray<platform::Label> mLblText{QStringLiteral("mLblText")};
  platform::ControlArray<platform::Label> mLblPicker{QStringLiteral("mLblPicker")};

private:
  void loaded() override { Form_Load(); }
  void save();
  void formatAmount();

  // The error reports' prefix differs from the form name the views know the screen by.
  const screencore::ProcedureNames m_source{kErrorSource};
  bool m_cancelClicked = true;
  bool m_changed = false;
  // Set while the screen writes its own inputs (filling, reverting, formatting): not the clerk's change.
  bool m_filling = false;
  // The last amount text that was a possible amount, for reverting one that is not.
  QString m_acceptedAmount;
  QString m_errorText;
};

}  // namespace adjustacc::ardetail
