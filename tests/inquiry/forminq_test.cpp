// Open Account: loading the types, every rule of its check, the key filter, and how it closes.
#include "inquiryfixture.h"

#include "inquiry/forminq.h"

namespace adjustacc::inquiry::testing {
namespace {

class FormInqTest : public InquiryTest {
protected:
  FormInqTest() : m_form(m_set.services) { m_form.mFtcboDocType.setDefaultCode(QStringLiteral("C")); }
  QORVA_FormInq m_form;
};

TEST_F(FormInqTest, ShowingLoadsTheFormTypesOnceWithTheDefaultChosen) {
  m_form.setVisible(true);
  m_form.setVisible(false);
  m_form.setVisible(true);
  ASSERT_EQ(m_set.codeTables.queries().size(), 1);
  EXPECT_TRUE(m_set.codeTables.queries().first().contains(u"REGION='NORTH' And (CD_TBL_ID = 'FORMDOC'"));
  EXPECT_EQ(m_form.mFtcboDocType.rowCount(), 4);
  EXPECT_EQ(m_form.mFtcboDocType.selectedCode(), u"C");
}

struct CheckCase {
  const char* name;
  QString type;    // code to choose; a text that is no code is typed instead
  QString number;  // typed into the number box
  QString errors;  // the whole error text, empty when the entry passes
  QString boxAfter;
  bool typeMarked;
  bool numberMarked;
};

void PrintTo(const CheckCase& c, std::ostream* os) { *os << c.name; }

class FormInqCheckEdit : public FormInqTest, public ::testing::WithParamInterface<CheckCase> {};

TEST_P(FormInqCheckEdit, FindsTheErrorsInOrder) {
  const CheckCase& c = GetParam();
  m_form.setVisible(true);
  // A number left marked by an earlier check is put back first.
  m_set.fieldMarking.markError(m_form.mTxtDocNbr);
  if (c.type.isEmpty()) {
    m_form.mFtcboDocType.clear();
  } else if (!m_form.mFtcboDocType.setCode(c.type)) {
    m_form.mFtcboDocType.setText(c.type);
  }
  m_form.mTxtDocNbr.setText(c.number);

  EXPECT_EQ(m_form.CheckEdit(), c.errors.isEmpty());
  EXPECT_EQ(m_form.errorText(), c.errors);
  EXPECT_EQ(m_form.mTxtDocNbr.text(), c.boxAfter);
  EXPECT_EQ(m_set.fieldMarking.isMarked(m_form.mFtcboDocType), c.typeMarked);
  EXPECT_EQ(m_set.fieldMarking.isMarked(m_form.mTxtDocNbr), c.numberMarked);
  EXPECT_EQ(m_set.ui.boxTexts(), c.errors.isEmpty() ? QStringList() : QStringList{c.errors});
  if (!c.errors.isEmpty()) {
    EXPECT_EQ(m_set.ui.lastBox().icon, platform::MsgIcon::Exclamation);
    EXPECT_EQ(m_set.statusBar.text(), u"Error(s) found");
  }
}

INSTANTIATE_TEST_SUITE_P(
    Rules, FormInqCheckEdit,
    ::testing::Values(
        CheckCase{"NothingEntered", {}, {}, u"Account Type is required\r\nAccount Number is required\r\n"_s, {}, true,
                  true},
        CheckCase{"TypeMatchingNoCode", u"BOGUS"_s, u"1234"_s, u"Select or enter a valid Account Type\r\n"_s,
                  u"1234-4"_s, true, false},
        CheckCase{"PaymentPlanLetters", u"P"_s, u"12A"_s, u"Only numeric is allowed\r\n"_s, u"12A"_s, false, true},
        CheckCase{"AlertWithDash", u"A"_s, u"12-3"_s, u"Only numeric is allowed\r\n"_s, u"12-3"_s, false, true},
        CheckCase{"PaymentPlanLongNumber", u"P"_s, u"0500011234"_s, {}, u"0500011234"_s, false, false},
        CheckCase{"CheckNumberWithDash", u"K"_s, u"12-3"_s, u"Only AlphaNumeric is allowed\r\n"_s, u"12-3"_s, false,
                  true},
        CheckCase{"CheckNumberLetters", u"K"_s, u"CHK4711"_s, {}, u"CHK4711"_s, false, false},
        CheckCase{"FormNumberTooLong", u"C"_s, u"12345678"_s, u"Account Number is Invalid\r\n"_s, u"12345678"_s, false,
                  true},
        CheckCase{"FormNumberLetters", u"C"_s, u"12A"_s, u"Account Number is Invalid\r\n"_s, u"12A"_s, false, true},
        CheckCase{"FormNumberWrongCheckDigit", u"C"_s, u"1234-5"_s,
                  u"Check digit is not valid for account number 0001234-5\r\n"_s, u"1234-5"_s, false, true},
        CheckCase{"FormNumberBadShape", u"C"_s, u"12-34"_s,
                  u"Account Number 000012-34 is Invalid: a form number is 7 digits, \"-\" and a check digit\r\n"_s,
                  u"12-34"_s, false, true},
        CheckCase{"FormNumberWithItsCheckDigit", u"C"_s, u"1234-4"_s, {}, u"1234-4"_s, false, false},
        CheckCase{"FormNumberGetsItsCheckDigit", u"C"_s, u"1234"_s, {}, u"1234-4"_s, false, false},
        CheckCase{"FormNumberZero", u"C"_s, u"0"_s,
                  u"Account Number 0000000-0 is Invalid: form numbers start at 0000001\r\n"_s, u"0-0"_s, false, true},
        CheckCase{"NumberBlank", u"C"_s, u"   "_s, u"Account Number is required\r\n"_s, {}, false, true}),
    [](const ::testing::TestParamInfo<CheckCase>& param) { return std::string(param.param.name); });

TEST_F(FormInqTest, OkClosesOnlyAValidEntryAndAnyOtherWayOutIsCancel) {
  m_set.ui.queueModal([](platform::ModalForm& form) {
    auto& inq = dynamic_cast<QORVA_FormInq&>(form);
    inq.mTxtDocNbr.setText(QStringLiteral("12A"));
    EXPECT_TRUE(inq.mCmdBttn[QORVA_FormInq::OkButton].click());
    EXPECT_TRUE(inq.isVisible());  // the error keeps it open
    inq.mTxtDocNbr.setText(QStringLiteral("1234"));
    inq.mCmdBttn[QORVA_FormInq::OkButton].click();
  });
  m_set.ui.showModal(m_form);
  EXPECT_FALSE(m_set.ui.shownForms().first().hiddenByUi);
  EXPECT_EQ(m_form.result(), u"OK");

  for (const bool pressCancel : {true, false}) {
    QORVA_FormInq other(m_set.services);
    m_set.ui.queueModal([pressCancel](platform::ModalForm& form) {
      auto& inq = dynamic_cast<QORVA_FormInq&>(form);
      inq.mTxtDocNbr.setText(QStringLiteral("1234-4"));
      if (pressCancel) {
        inq.mCmdBttn[QORVA_FormInq::CancelButton].click();
      }
    });
    m_set.ui.showModal(other);
    EXPECT_EQ(other.result(), u"Cancel");
  }
}

TEST_F(FormInqTest, KeysTheAccountTypeRefusesBeepAndAreDropped) {
  m_form.setVisible(true);
  const auto type = [&](const QString& keys) {
    m_form.mTxtDocNbr.setText(QString());
    for (const QChar key : keys) {  // one key at a time, as the person types
      m_form.mTxtDocNbr.userType(QString(key));
    }
    return m_form.mTxtDocNbr.text();
  };
  EXPECT_EQ(type(u"12A34567-89"_s), u"1234567-8");  // a form number stops at its check digit
  EXPECT_EQ(m_set.ui.beepCount(), 2);
  ASSERT_TRUE(m_form.mFtcboDocType.setCode(u"K"_s));
  EXPECT_EQ(type(u"AB-12"_s), u"AB12");
  EXPECT_EQ(m_set.ui.beepCount(), 3);
  // Pasted text loses its blanks and line breaks.
  m_form.mTxtDocNbr.userSetText(u" 0001234-4\r\n"_s);
  EXPECT_EQ(m_form.mTxtDocNbr.text(), u"0001234-4");
}

}  // namespace
}  // namespace adjustacc::inquiry::testing
