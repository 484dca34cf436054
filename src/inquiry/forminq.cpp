#include "forminq.h"

#include "screencore/codetablequerytext.h"
#include "selectcustforminq.h"

#include "platform/checkdigit.h"
#include "platform/clock.h"
#include "platform/codetablesource.h"
#include "platform/errortrap.h"
#include "platform/fieldmarking.h"
#include "platform/formnumbervalidator.h"
#include "platform/keyfilters.h"
#include "platform/modmessagetitle.h"
#include "platform/services.h"
#include "platform/statusbar.h"
#include "platform/user.h"

#include <algorithm>

namespace adjustacc::inquiry {

using platform::trap;

namespace {

const QString kLineBreak = QStringLiteral("\r\n");
// Longest account number a clerk may type: check numbers run up to 30 letters and digits.
constexpr int kMaxNumberLength = 30;
constexpr int kFormNumberDigits = 7;

bool allDigits(const QString& text) {
  return !text.isEmpty() && std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c >= u'0' && c <= u'9'; });
}

}  // namespace

QORVA_FormInq::QORVA_FormInq(platform::Services& services, QObject* parent)
    : ModalScreen(services, kFormName, kCaption, parent) {
  mFtcboDocType.setSource(&services.codeTables);
  mTxtDocNbr.setMaxLength(kMaxNumberLength);
  mCmdBttn.add(OkButton, QStringLiteral("OK"));
  mCmdBttn.add(CancelButton, QStringLiteral("Cancel"));
  mCmdBttn.add(SelectAccountButton, QStringLiteral("Select Account"));

  connect(&mFtcboDocType, &platform::CodesCombo::textChanged, this, &QORVA_FormInq::mFtcboDocType_Change);
  connect(&mTxtDocNbr, &platform::TextBox::textChanged, this, &QORVA_FormInq::mTxtDocNbr_Change);
  mTxtDocNbr.setKeyPressHandler([this](int& key) { mTxtDocNbr_KeyPress(key); });
  mCmdBttn.forEach([this](int index, platform::Button& button) {
    connect(&button, &platform::Button::clicked, this, [this, index] { mCmdBttn_Click(index); });
  });

  mFtcboDocType.setTabIndex(0);
  mTxtDocNbr.setTabIndex(1);
  mCmdBttn[OkButton].setTabIndex(2);
  mCmdBttn[CancelButton].setTabIndex(3);
  mCmdBttn[SelectAccountButton].setTabIndex(4);
}

QORVA_FormInq::~QORVA_FormInq() = default;

void QORVA_FormInq::Form_Load() {
  trap(m_services, source("Form_Load"), [&] {
    // The box keeps the code table its opener named; the types it offers are those of the form documents.
    screencore::valueOrFail(mFtcboDocType.fill(screencore::codeTableQueryText(
        m_services.user.region(), QStringLiteral("FORMDOC"), m_services.clock.today())));
  });
}

void QORVA_FormInq::Form_Activate() {
  trap(m_services, source("Form_Activate"), [&] {
    if (mFtcboDocType.selectedCode().isEmpty()) {
      mFtcboDocType.setFocus();
    } else {
      mTxtDocNbr.setFocus();
    }
  });
}

void QORVA_FormInq::Form_Unload() {
  trap(m_services, source("Form_Unload"), [&] { unload(); });
}

void QORVA_FormInq::mCmdBttn_Click(int index) {
  trap(m_services, source("mCmdBttn_Click"), [&] {
    switch (index) {
      case OkButton:
        if (CheckEdit()) {
          m_result = kConfirmed;
          setVisible(false);
        }
        break;
      case CancelButton:
        m_result = kCancel;
        setVisible(false);
        break;
      case SelectAccountButton: {
        QORVA_SelectCustFormInq selectAccount(m_services);
        selectAccount.showModal();
        if (!selectAccount.isCancelled() && !selectAccount.DocumentNumber().isEmpty()) {
          mTxtDocNbr.setText(selectAccount.DocumentNumber());
        }
        break;
      }
      default:
        break;
    }
  });
}

void QORVA_FormInq::DefaultFieldColor() {
  trap(m_services, source("DefaultFieldColor"), [&] {
    m_services.fieldMarking.restore(mFtcboDocType);
    m_services.fieldMarking.restore(mTxtDocNbr);
  });
}

bool QORVA_FormInq::CheckEdit() {
  m_errorText.clear();
  return platform::trapValue(m_services, source("CheckEdit"), false, [&] {
    DefaultFieldColor();
    const auto fail = [&](const QString& message, platform::Control& control) {
      m_errorText += message + kLineBreak;
      m_services.fieldMarking.markError(control);
    };
    if (mFtcboDocType.isEmpty()) {
      fail(QStringLiteral("Account Type is required"), mFtcboDocType);
    } else if (mFtcboDocType.matchesNoCode()) {
      fail(QStringLiteral("Select or enter a valid Account Type"), mFtcboDocType);
    }
    const QString number = mTxtDocNbr.text().trimmed();
    if (number.isEmpty()) {
      fail(QStringLiteral("Account Number is required"), mTxtDocNbr);
    } else {
      const QString type = mFtcboDocType.description().toUpper();
      if (type == u"PAYMENT PLAN" || type == u"ALERT") {
        if (!allDigits(number)) {
          fail(QStringLiteral("Only numeric is allowed"), mTxtDocNbr);
        }
      } else if (type == u"CHECK NUMBER") {
        if (number.contains(u'-')) {
          fail(QStringLiteral("Only AlphaNumeric is allowed"), mTxtDocNbr);
        }
      } else {
        checkNumber(number);
      }
    }
    if (m_errorText.isEmpty()) {
      return true;
    }
    m_services.statusBar.setText(platform::modMessageTitle::ErrorsFound);
    m_services.ui.messageBox(m_errorText, platform::MsgButtons::Ok, platform::MsgIcon::Exclamation,
                             platform::modMessageTitle::messageTitle());
    return false;
  });
}

// A form number: seven digits at most, optionally written with "-" and its check digit.
void QORVA_FormInq::checkNumber(const QString& number) {
  const QString typeCode = mFtcboDocType.selectedCode();
  QString problem;
  if (number.contains(u'-') || number.size() > kFormNumberDigits || !allDigits(number)) {
    if (!number.contains(u'-')) {
      problem = QStringLiteral("Account Number is Invalid");
    } else {
      problem = m_services.formNumbers.validate(number.rightJustified(kFormNumberDigits + 2, u'0'), typeCode);
    }
  } else {
    const QString digits = number.rightJustified(kFormNumberDigits, u'0');
    const QString digit = screencore::valueOrFail(m_services.checkDigit.compute(digits));
    // The clerk sees the number completed with its check digit.
    mTxtDocNbr.setText(number + u'-' + digit);
    problem = m_services.formNumbers.validate(digits + u'-' + digit, typeCode);
  }
  if (!problem.isEmpty()) {
    m_errorText += problem + kLineBreak;
    m_services.fieldMarking.markError(mTxtDocNbr);
  }
}

void QORVA_FormInq::mFtcboDocType_Change() {
  trap(m_services, source("mFtcboDocType_Change"), [&] {
    const QString code = mFtcboDocType.selectedCode();
    if (code.isEmpty()) {
      return;
    }
    // The box settles on the row of its code (filter CD_TBL_CD = 'code').
    const int row = mFtcboDocType.findCode(code);
    if (row >= 0 && row != mFtcboDocType.currentRow()) {
      mFtcboDocType.setCurrentRow(row);
    }
  });
}

void QORVA_FormInq::mTxtDocNbr_Change() {
  trap(m_services, source("mTxtDocNbr_Change"), [&] {
    // Blanks and control characters are never part of an account number: a pasted or scanned number loses
    // them at once, so the checks and the request see the number itself.
    const QString text = mTxtDocNbr.text();
    QString cleaned;
    cleaned.reserve(text.size());
    for (const QChar c : text) {
      if (!c.isSpace() && c.category() != QChar::Other_Control) {
        cleaned.append(c);
      }
    }
    if (cleaned != text) {
      mTxtDocNbr.setText(cleaned);
    }
  });
}

void QORVA_FormInq::mTxtDocNbr_KeyPress(int& keyAscii) {
  trap(m_services, source("mTxtDocNbr_KeyPress"), [&] {
    if (keyAscii <= 0 || keyAscii > 0xFFFF) {
      return;
    }
    const platform::KeyContext context{mTxtDocNbr.text(), -1, 0};
    if (!m_services.keyFilters.acceptsAccountNumberKey(QChar(static_cast<char16_t>(keyAscii)),
                                                       mFtcboDocType.selectedCode(), context)) {
      m_services.ui.beep();
      keyAscii = 0;
    }
  });
}

}  // namespace adjustacc::inquiry
