#pragma once
// The services and code tables the inquiry dialogues are tested with.

#include "support/screentest.h"
#include "support/serviceset.h"

#include "platform/modmessagetitle.h"

#include <gtest/gtest.h>

namespace adjustacc::inquiry::testing {

using namespace Qt::Literals::StringLiterals;

class InquiryTest : public ::testing::Test {
protected:
  InquiryTest() {
    platform::modMessageTitle::setMessageTitle(QStringLiteral("Adjust Account"));
    struct Type {
      const char16_t* code;
      const char16_t* description;
    };
    for (const Type& type : {Type{u"C", u"CITATION ENF001"}, Type{u"P", u"PAYMENT PLAN"}, Type{u"A", u"ALERT"},
                             Type{u"K", u"CHECK NUMBER"}}) {
      for (const QString& table : {QStringLiteral("FORMDOC"), QStringLiteral("REFDOCTYP")}) {
        m_set.codeTables.add(table, QString::fromUtf16(type.code), QString::fromUtf16(type.description));
        m_set.codes.add(table, QString::fromUtf16(type.code), QString::fromUtf16(type.description));
      }
    }
    for (const auto& [code, description] : {std::pair{u"U", u"UNPAID"}, std::pair{u"Y", u"PAID IN FULL"},
                                            std::pair{u"V", u"VOID"}}) {
      m_set.codeTables.add(QStringLiteral("CSTATUS"), QString::fromUtf16(code), QString::fromUtf16(description));
      m_set.codes.add(QStringLiteral("CSTATUS"), QString::fromUtf16(code), QString::fromUtf16(description));
    }
  }

  testsupport::ServiceSet m_set;
};

}  // namespace adjustacc::inquiry::testing
