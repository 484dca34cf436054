// The services object as a screen gets it, and the small services it bundles.

#include "support/serviceset.h"

#include "messaging/scriptedlink.h"
#include "platform/checkdigit.h"
#include "platform/clock.h"
#include "platform/codetablesource.h"
#include "platform/control.h"
#include "platform/errorreporter.h"
#include "platform/errortrap.h"
#include "platform/fieldmarking.h"
#include "platform/formnumbervalidator.h"
#include "platform/keyfilters.h"
#include "platform/memorycodelookup.h"
#include "platform/modmessagetitle.h"
#include "platform/nextnumber.h"
#include "platform/printing.h"
#include "platform/scriptedui.h"
#include "platform/services.h"
#include "platform/sessionsettings.h"
#include "platform/statusbar.h"
#include "platform/troopdistricts.h"
#include "platform/user.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <stdexcept>

using namespace adjustacc;
using namespace adjustacc::platform;

namespace {

using testsupport::ServiceSet;

TEST(ServicesTrap, AnswersTheBodysValueOrTheFallback) {
  ServiceSet set;
  set.session.setApplicationName(QStringLiteral("AdjustAcc"));
  EXPECT_TRUE(trapValue(set.services, QStringLiteral("QORVA_AccDetail.DataChanged"), false, [] { return true; }));
  EXPECT_FALSE(trapValue(set.services, QStringLiteral("QORVA_AccDetail.DataChanged"), false, []() -> bool {
    raise(AppError::LeaveEarly);
  }));
  EXPECT_EQ(set.ui.boxCount(), 0);
  EXPECT_EQ(trapValue(set.services, QStringLiteral("QORVA_AccDetail.LPOFee"), -1, []() -> int {
              throw std::runtime_error("grid has no such column");
            }),
            -1);
  ASSERT_EQ(set.ui.boxCount(), 1);
  EXPECT_TRUE(set.ui.lastBox().text.endsWith(u"Source: QORVA_AccDetail.LPOFee"));
}

TEST(ServicesTrap, ReportsUnderTheSessionsApplicationName) {
  ServiceSet set;
  modMessageTitle::setMessageTitle(QString());
  set.session.setApplicationName(QStringLiteral("Adjust_Account_Receivable"));
  trap(set.services, QStringLiteral("QORVA_AdjustAcc.FileOpen"), [] { throw std::runtime_error("boom"); });
  EXPECT_EQ(set.ui.lastBox().title, u"Adjust_Account_Receivable");
}

TEST(StatusBarService, SignalsOnlyRealChanges) {
  StatusBar bar;
  QSignalSpy text(&bar, &StatusBar::textChanged);
  QSignalSpy ready(&bar, &StatusBar::readyChanged);
  QSignalSpy tag(&bar, &StatusBar::containerTagChanged);
  bar.initialize(QStringLiteral("DOC-17"));
  bar.setText(modMessageTitle::LoadingInformation);
  bar.setText(modMessageTitle::LoadingInformation);
  bar.setText(modMessageTitle::Ready);
  bar.setReady(true);  // already ready
  bar.setReady(false);
  bar.setReady(true);
  EXPECT_EQ(tag.count(), 1);
  EXPECT_EQ(bar.containerTag(), u"DOC-17");
  ASSERT_EQ(text.count(), 2);
  EXPECT_EQ(text.at(0).at(0).toString(), u"Loading information");
  EXPECT_EQ(text.at(1).at(0).toString(), u"Ready");
  ASSERT_EQ(ready.count(), 2);
  EXPECT_FALSE(ready.at(0).at(0).toBool());
  EXPECT_TRUE(bar.isReady());
}

TEST(UserService, RegionAndRightsAsTheScreensAskForThem) {
  User user(QStringLiteral("OFC7"), QStringLiteral("Pat Officer"), QStringLiteral("  north "),
            {QStringLiteral("adjustar"), QStringLiteral("QORVA_ACTVITYUPDATE")});
  EXPECT_EQ(user.regionCode(), u"NORTH");
  EXPECT_TRUE(user.hasRight(rights::AdjustAR));
  EXPECT_TRUE(user.hasRight(rights::ActivityUpdate));
  EXPECT_FALSE(user.hasRight(rights::AdjustReceipt));
  EXPECT_FALSE(user.hasRight(QString()));
  user.revoke(rights::AdjustAR);
  EXPECT_FALSE(user.hasRight(QStringLiteral("ADJUSTAR")));
  EXPECT_EQ(user.rights(), QStringList{QStringLiteral("QORVA_ACTVITYUPDATE")});
}

TEST(SessionSettingsService, FolderVersionAndTimeOut) {
  SessionSettings session;
  session.setSessionFolder(QStringLiteral("/var/tmp/adjustacc"));
  EXPECT_EQ(session.sessionFolder() + QStringLiteral("DOC-17.xml"), u"/var/tmp/adjustacc/DOC-17.xml");
  session.setSessionFolder(QStringLiteral("/var/tmp/"));
  EXPECT_EQ(session.sessionFolder(), u"/var/tmp/");
  session.setVersion(2, 14);
  EXPECT_EQ(session.versionText(), u"2.14");
  EXPECT_FALSE(session.setUpdateTimeoutMs(0));
  EXPECT_EQ(session.updateTimeoutMs(), 60000);
  EXPECT_TRUE(session.setUpdateTimeoutMs(1500));
  EXPECT_EQ(session.updateTimeoutMs(), 1500);
}

TEST(FieldMarkingService, MarksAndRestores) {
  FieldMarking marking;
  Control box(QStringLiteral("mTxtDocNbr"));
  QSignalSpy changed(&box, &Control::changed);
  marking.markError(box);
  EXPECT_TRUE(marking.isMarked(box));
  EXPECT_EQ(box.backColor(), FieldMarking::defaultErrorColor());
  marking.restore(box);
  EXPECT_FALSE(marking.isMarked(box));
  EXPECT_FALSE(box.backColor().isValid());  // the view's own colour
  EXPECT_EQ(changed.count(), 2);
}

TEST(TroopDistrictService, ValidWhenTheCodeTablesDescribeThem) {
  MemoryCodeLookup codes;
  codes.add(QStringLiteral("TROOP"), QStringLiteral("A"), QStringLiteral("Troop A"));
  codes.add(QStringLiteral("TRPDSTRCT"), QStringLiteral("A12"), QStringLiteral("Troop A District 12"));
  TroopDistricts troops(codes);
  EXPECT_TRUE(troops.isValidTroop(QStringLiteral("A")));
  EXPECT_FALSE(troops.isValidTroop(QStringLiteral("B")));
  EXPECT_FALSE(troops.isValidTroop(QString()));
  EXPECT_TRUE(troops.isValidPair(QStringLiteral("A"), QStringLiteral("12")));
  EXPECT_FALSE(troops.isValidPair(QStringLiteral("A"), QStringLiteral("13")));
  EXPECT_FALSE(troops.isValidPair(QStringLiteral("A"), QString()));
}

}  // namespace
