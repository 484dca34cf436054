#pragma once
// Which troops and troop/district pairs exist, for the License Purchase Option's "Troop/District:" field.
// They are code tables like any other: "TROOP" holds the troop letters ("A"), "TRPDSTRCT" the pairs
// written together ("A12"). A troop or pair is valid when its table holds it in effect today.

#include <QString>

namespace adjustacc::platform {

class CodeLookup;

inline const QString kTroopTable = QStringLiteral("TROOP");
inline const QString kTroopDistrictTable = QStringLiteral("TRPDSTRCT");

class TroopDistricts {
public:
  explicit TroopDistricts(CodeLookup& codes) : m_codes(codes) {}

  bool isValidTroop(const QString& troop) const;
  bool isValidPair(const QString& troop, const QString& district) const;

private:
  CodeLookup& m_codes;
};

}  // namespace adjustacc::platform
