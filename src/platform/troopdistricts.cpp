#include "troopdistricts.h"

#include "codelookup.h"

namespace adjustacc::platform {

bool TroopDistricts::isValidTroop(const QString& troop) const {
  const QString code = troop.trimmed();
  return !code.isEmpty() && m_codes.inEffect(kTroopTable, code);
}

bool TroopDistricts::isValidPair(const QString& troop, const QString& district) const {
  const QString t = troop.trimmed();
  const QString d = district.trimmed();
  return !t.isEmpty() && !d.isEmpty() && m_codes.inEffect(kTroopDistrictTable, t + d);
}

}  // namespace adjustacc::platform
