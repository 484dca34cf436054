#include "licpurchopt.h"

#include "platform/clock.h"
#include "platform/currency.h"
#include "platform/datetimes.h"
#include "platform/errortrap.h"
#include "platform/fieldmarking.h"
#include "platform/keyfilters.h"
#include "platform/modmessagetitle.h"
#include "platform/services.h"
#include "platform/statusbar.h"
#include "platform/troopdistricts.h"
#include "platform/ui.h"

#include <QScopedValueRollback>

namespace adjustacc::ardetail {

using platform::trap;

namespace {

const QString kLineBreak = QStringLiteral("\r\n");
// Purchase options were first sold in 1993.
const QDate kEarliestPurchase(1993, 1, 1);
// The largest amount the Amount Paid field takes: $9,999,999.99.
const platform::Currency kLargestAmount = platform::Currency::fromCents(999'999'999);

// Field sizes of the stored particulars: a plate of 12, a troop letter and a district of up to 4, a weight
// that fits an integer.
constexpr int kPlateLength = 12;
constexpr int kTroopDistrictLength = 5;
constexpr int kWeightLength = 9;
constexpr int kCommentLength = 2000;

QChar keyChar(int keyAscii) { return QChar(static_cast<char16_t>(keyAscii)); }

// The amount without its dollar sign and thousands separators; "." and "0.00" are no amount at all.
QString normalisedAmount(const QString& text) {
  QString amount = text.trimmed();
  amount.remove(u'$');
  amount.remove(u',');
  if (amount == u"." || amount == u"0.00") {
    amount.clear();
  }
  return amount;
}

QORVA_LicPurchOpt::TroopAndDistrict split(const QString& field) {
  const QString text = field.trimmed();
  return {text.left(1), text.mid(1)};
}

}  // namespace

QORVA_LicPurchOpt::QORVA_LicPurchOpt(platform::Services& services, QObject* parent)
    : ModalScreen(services, kFormName, kCaption, parent) {
  mRdo.add(InState, QStringLiteral("In State"));
  mRdo.add(OutOfState, QStringLiteral("Out of State"));
  platform::OptionButton::makeGroup({&mRdo[InState], &mRdo[OutOfState]});

  for (const int index : {Plate, Weight, Amount, Comments, TroopDistrict}) {
    platform::TextBox& box = mTxt.add(index);
    // Every entry is typed: pasted text would pass by the key rules.
    box.setPasteAllowed(false);
    box.setKeyPressHandler([this, index](int& key) { mTxt_KeyPress(index, key); });
    connect(&box, &platform::TextBox::textChanged, this, [this, index] { mTxt_Change(index); });
    connect(&box, &platform::Control::lostFocus, this, [this, index] { mTxt_LostFocus(index); });
  }
  mTxt[Plate].setMaxLength(kPlateLength);
  mTxt[TroopDistrict].setMaxLength(kTroopDistrictLength);
  mTxt[Weight].setMaxLength(kWeightLength);
  mTxt[Comments].setMaxLength(kCommentLength);
  mTxt[Comments].setMultiLine(true);

  QORVA_DTP1.add(DatePurchased, platform::QORVA_DTP::Mode::Date);
  QORVA_DTP1.add(TimePurchased, platform::QORVA_DTP::Mode::Time);
  QORVA_DTP1[TimePurchased].setDisplayFormat(QStringLiteral("hh:mm"));

  mCmd.add(SaveButton, QStringLiteral("Save"));
  mCmd.add(CancelButton, QStringLiteral("Cancel"));

  mLblText.add(Plate, QStringLiteral("Plate #:"));
  mLblText.add(Weight, QStringLiteral("Weight:"));
  mLblText.add(Amount, QStringLiteral("Amount Paid:"));
  mLblText.add(Comments, QStringLiteral("Comments:"));
  mLblText.add(TroopDistrict, QStringLiteral("Troop/District:"));
  mLblPicker.add(DatePurchased, QStringLiteral("Date Purchased:"));
  mLblPicker.add(TimePurchased, QStringLiteral("Time Purchased:"));

  mRdo.forEach([this](int index, platform::OptionButton& option) {
    connect(&option, &platform::OptionButton::clicked, this, [this, index] { mRdo_Click(index); });
  });
  QORVA_DTP1.forEach([this](int index, platform::QORVA_DTP& picker) {
    connect(&picker, &platform::QORVA_DTP::valueChanged, this, [this, index] { QORVA_DTP1_Change(index); });
  });
  mCmd.forEach([this](int index, platform::Button& button) {
    connect(&button, &platform::Button::clicked, this, [this, index] { mCmd_Click(index); });
  });

  // The keyboard goes down the screen as the clerk reads it.
  int tab = 0;
  mRdo[InState].setTabIndex(tab++);
  mRdo[OutOfState].setTabIndex(tab++);
  mTxt[Plate].setTabIndex(tab++);
  QORVA_DTP1[DatePurchased].setTabIndex(tab++);
  QORVA_DTP1[TimePurchased].setTabIndex(tab++);
  mTxt[TroopDistrict].setTabIndex(tab++);
  mTxt[Weight].setTabIndex(tab++);
  mTxt[Amount].setTabIndex(tab++);
  mTxt[Comments].setTabIndex(tab++);
  mCmd[SaveButton].setTabIndex(tab++);
  mCmd[CancelButton].setTabIndex(tab);
}

QORVA_LicPurchOpt::~QORVA_LicPurchOpt() = default;

void QORVA_LicPurchOpt::Form_Load() {
  trap(m_services, m_source("Form_Load"), [&] {
    const QScopedValueRollback filling(m_filling, true);
    // Both pickers start empty: the clerk states when the option was bought.
    platform::QORVA_DTP& date = QORVA_DTP1[DatePurchased];
    platform::QORVA_DTP& time = QORVA_DTP1[TimePurchased];
    date.setDate(m_services.clock.today());
    time.setTime(m_services.clock.timeOfDay());
    date.clear();
    time.clear();
    date.setMinDate(kEarliestPurchase);
    mRdo.forEach([](int, platform::OptionButton& option) { option.setValue(false); });
    mTxt.forEach([](int, platform::TextBox& box) { box.setText(QString()); });
    m_acceptedAmount.clear();
    m_changed = false;
  });
}

void QORVA_LicPurchOpt::mCmd_Click(int index) {
  trap(m_services, m_source("mCmd_Click"), [&] {
    switch (index) {
      case SaveButton:
        save();
        break;
      case CancelButton:
        if (!m_changed) {
          m_cancelClicked = true;
          setVisible(false);
          break;
        }
        switch (m_services.ui.messageBox(kChangedQuestion, platform::MsgButtons::YesNoCancel,
                                         platform::MsgIcon::Question, platform::modMessageTitle::messageTitle())) {
          case platform::MsgAnswer::Yes:
            save();
            break;
          case platform::MsgAnswer::No:
            m_cancelClicked = true;
            setVisible(false);
            break;
          default:
            break;  // the clerk goes on with the entry
        }
        break;
      default:
        break;
    }
  });
}

// Hands the entry back when it is valid; otherwise shows what is wrong and stays.
void QORVA_LicPurchOpt::save() {
  CheckEdit();
  if (!m_errorText.isEmpty()) {
    m_services.statusBar.setText(platform::modMessageTitle::ErrorsFound);
    m_services.ui.messageBox(m_errorText, platform::MsgButtons::Ok, platform::MsgIcon::Exclamation,
                             platform::modMessageTitle::messageTitle());
    return;
  }
  m_cancelClicked = false;
  setVisible(false);
}

void QORVA_LicPurchOpt::DefaultFieldColor() {
  trap(m_services, m_source("DefaultFieldColor"), [&] {
    const platform::FieldMarking& marking = m_services.fieldMarking;
    mRdo.forEach([&](int, platform::OptionButton& option) { marking.restore(option); });
    mTxt.forEach([&](int, platform::TextBox& box) { marking.restore(box); });
    QORVA_DTP1.forEach([&](int, platform::QORVA_DTP& picker) { marking.restore(picker); });
  });
}

bool QORVA_LicPurchOpt::CheckEdit() {
  m_errorText.clear();
  return platform::trapValue(m_services, m_source("CheckEdit"), false, [&] {
    DefaultFieldColor();
    const auto fail = [&](const QString& message, platform::Control& control) {
      m_errorText += message + kLineBreak;
      m_services.fieldMarking.markError(control);
    };
    const bool noComment = mTxt[Comments].text().trimmed().isEmpty();
    const QString amount = normalisedAmount(mTxt[Amount].text());
    const bool noPlate = mTxt[Plate].text().trimmed().isEmpty();
    const bool noDate = QORVA_DTP1[DatePurchased].isEmpty();
    const bool noTime = QORVA_DTP1[TimePurchased].isEmpty();
    const bool noTroopDistrict = mTxt[TroopDistrict].text().trimmed().isEmpty();
    const bool noWeight = mTxt[Weight].text().trimmed().isEmpty();

    const bool inState = mRdo[InState].value();
    const bool outOfState = mRdo[OutOfState].value();
    if (!inState && !outOfState) {
      fail(QStringLiteral("In or Out of State is required"), mRdo[InState]);
      m_services.fieldMarking.markError(mRdo[OutOfState]);
    }
    if (noPlate && noDate && noTime && noTroopDistrict && noWeight && amount.isEmpty() && noComment) {
      fail(QStringLiteral("Enter a Comment or the In-State Fields"), mTxt[Comments]);
    }
    if (inState) {
      if (noPlate) {
        fail(QStringLiteral("Plate is required"), mTxt[Plate]);
      }
      if (noDate) {
        fail(QStringLiteral("Date Purchased is required"), QORVA_DTP1[DatePurchased]);
      }
      if (noTime) {
        fail(QStringLiteral("Time Purchased is required"), QORVA_DTP1[TimePurchased]);
      }
      if (noTroopDistrict) {
        fail(QStringLiteral("Troop/District is required"), mTxt[TroopDistrict]);
      } else if (!TroopDistrictCheck()) {
        fail(QStringLiteral("Troop/District is incorrect"), mTxt[TroopDistrict]);
      }
      if (noWeight) {
        fail(QStringLiteral("Weight is required"), mTxt[Weight]);
      }
      if (amount.isEmpty()) {
        fail(QStringLiteral("Amount required for In-State LPO"), mTxt[Amount]);
      } else if (!platform::Currency::parse(mTxt[Amount].text()).ok()) {
        fail(QStringLiteral("Amount must be a dollar value for In-State LPO"), mTxt[Amount]);
      }
    } else if (outOfState && noComment) {
      fail(QStringLiteral("Comment required for Out-of-State LPO"), mTxt[Comments]);
    }
    return m_errorText.isEmpty();
  });
}

QORVA_LicPurchOpt::TroopAndDistrict QORVA_LicPurchOpt::GetTroopDistrict() {
  return platform::trapValue(m_services, m_source("GetTroopDistrict"), TroopAndDistrict{}, [&] {
    TroopDistrictSplit();
    return TroopAndDistrict{StrTroop, StrTroopDistrict};
  });
}

void QORVA_LicPurchOpt::TroopDistrictSplit() {
  trap(m_services, m_source("TroopDistrictSplit"), [&] {
    const TroopAndDistrict parts = split(mTxt[TroopDistrict].text());
    StrTroop = parts.troop;
    StrTroopDistrict = parts.district;
  });
}

bool QORVA_LicPurchOpt::TroopDistrictCheck() {
  return platform::trapValue(m_services, m_source("TroopDistrictCheck"), false, [&] {
    TroopDistrictSplit();
    bool valid = true;
    if (!StrTroopDistrict.isEmpty()) {
      valid = m_services.troopDistricts.isValidPair(StrTroop, StrTroopDistrict);
    } else if (!StrTroop.isEmpty()) {
      valid = m_services.troopDistricts.isValidTroop(StrTroop);
    }
    if (valid) {
      m_services.fieldMarking.restore(mTxt[TroopDistrict]);
    } else {
      m_services.fieldMarking.markError(mTxt[TroopDistrict]);
    }
    return valid;
  });
}

void QORVA_LicPurchOpt::mTxt_KeyPress(int index, int& keyAscii) {
  trap(m_services, m_source("mTxt_KeyPress"), [&] {
    if (keyAscii <= 0 || keyAscii > 0xFFFF) {
      return;
    }
    const QChar key = keyChar(keyAscii);
    const platform::KeyFilters& filters = m_services.keyFilters;
    const platform::KeyContext context{mTxt[index].text(), -1, 0};
    bool accepted = true;
    switch (index) {
      case Plate:
        accepted = key == u'-' || filters.accepts(platform::KeyRule::Alphanumeric, key, context);
        break;
      case Weight:
        accepted = filters.accepts(platform::KeyRule::Numeric, key, context);
        break;
      case Amount:
        accepted = filters.accepts(platform::KeyRule::Money, key, context);
        break;
      case TroopDistrict:
        accepted = filters.accepts(platform::KeyRule::TroopDistrict, key, context);
        if (accepted) {
          keyAscii = platform::KeyFilters::troopDistrictKey(key).unicode();
        }
        break;
      default:
        break;  // the comment is free text
    }
    if (!accepted) {
      m_services.ui.beep();
      keyAscii = 0;
    }
  });
}

void QORVA_LicPurchOpt::mTxt_Change(int index) {
  trap(m_services, m_source("mTxt_Change"), [&] {
    if (m_filling) {
      if (index == Amount) {
        m_acceptedAmount = mTxt[Amount].text();
      }
      return;
    }
    if (index == Amount) {
      const QString text = mTxt[Amount].text();
      if (!platform::KeyFilters::isMoneyTextAllowed(text, kLargestAmount)) {
        m_services.ui.beep();
        const QScopedValueRollback reverting(m_filling, true);
        mTxt[Amount].setText(m_acceptedAmount);
        return;
      }
      m_acceptedAmount = text;
    }
    m_changed = true;
  });
}

void QORVA_LicPurchOpt::mTxt_LostFocus(int index) {
  trap(m_services, m_source("mTxt_LostFocus"), [&] {
    if (index == Amount) {
      formatAmount();
    } else if (index == TroopDistrict) {
      TroopDistrictCheck();
    }
  });
}

// The amount left as the clerk will read it back: "$1,234.50", "$0.00" for none. A text that is no amount
// stays as typed, for CheckEdit to name.
void QORVA_LicPurchOpt::formatAmount() {
  QString text = mTxt[Amount].text().trimmed();
  if (text.isEmpty()) {
    text = QStringLiteral("0.00");
  }
  const messaging::Result<platform::Currency> value = platform::Currency::parse(text);
  if (!value.ok()) {
    return;
  }
  // Formatting shows the same amount: it is not a change of the clerk's.
  const QScopedValueRollback formatting(m_filling, true);
  mTxt[Amount].setText(value.value().toDisplayText());
}

void QORVA_LicPurchOpt::mRdo_Click(int /*index*/) {
  trap(m_services, m_source("mRdo_Click"), [&] {
    if (!m_filling) {
      m_changed = true;
    }
  });
}

void QORVA_LicPurchOpt::QORVA_DTP1_Change(int /*index*/) {
  trap(m_services, m_source("QORVA_DTP1_Change"), [&] {
    if (!m_filling) {
      m_changed = true;
    }
  });
}

LpoRecordValues QORVA_LicPurchOpt::recordValues() const {
  LpoRecordValues values;
  const auto text = [this](int index) { return mTxt.find(index)->text().trimmed(); };
  if (mRdo.find(InState)->value()) {
    values.stateCode = QStringLiteral("0");
  } else if (mRdo.find(OutOfState)->value()) {
    values.stateCode = QStringLiteral("1");
  }
  values.plate = text(Plate);
  values.purchaseDate = platform::formatDate(QORVA_DTP1.find(DatePurchased)->date(), platform::DateFormat::Iso);
  values.purchaseTime = platform::formatTime(QORVA_DTP1.find(TimePurchased)->time(), platform::TimeFormat::Hours24);
  const TroopAndDistrict parts = split(text(TroopDistrict));
  values.troop = parts.troop;
  values.district = parts.district;
  values.weight = text(Weight);
  const QString amount = text(Amount);
  const messaging::Result<platform::Currency> paid = platform::Currency::parse(amount);
  if (paid.ok()) {
    values.amount = paid.value().toHostText();
  } else {
    values.amount = amount;
    values.amount.remove(u'$');
    values.amount.remove(u',');
  }
  values.comment = text(Comments);
  return values;
}

}  // namespace adjustacc::ardetail
