#pragma once
// Names of the officers' rights, as the agency spells them: the screens ask about them and the host
// enforces them, so both sides read them from here.

#include <QString>

namespace adjustacc::messaging::rights {

inline const QString AdjustAR = QStringLiteral("ADJUSTAR");
inline const QString AdjustReceipt = QStringLiteral("ADJUSTRECEIPT");
inline const QString CreateRefund = QStringLiteral("CREATEREFUND");
inline const QString AdjustReceiptCancelOnly = QStringLiteral("ADJUSTRCPTCANCELONLY");
inline const QString ActivityUpdate = QStringLiteral("QORVA_ActvityUpdate");  // spelled so by the agency

}  // namespace adjustacc::messaging::rights
