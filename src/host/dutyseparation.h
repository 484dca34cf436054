#pragma once
// Separation of duties on a refund worksheet: which of the officers who prepare, verify, approve and refund
// (or transfer) it must be different people. A setting of the host (HostSystem::setDutySeparation), chosen
// by the agency for the shared service and the embedded host alike.

#include <QString>

#include <optional>

namespace adjustacc::host {

enum class DutySeparation {
  // Neighbouring steps only, as the screens check: the preparer does not verify, the verifier does not
  // approve. The preparer may approve and refund. The default.
  NeighbouringSteps,
  // Four different officers prepare, verify, approve and refund or transfer.
  FourOfficers,
};

// The setting as written on command lines and in logs.
inline QString dutySeparationName(DutySeparation separation) {
  return separation == DutySeparation::FourOfficers ? QStringLiteral("four-officers")
                                                    : QStringLiteral("neighbouring");
}

// "neighbouring" or "four-officers" (without regard to case or surrounding blanks); nothing for other text.
inline std::optional<DutySeparation> dutySeparationFromName(const QString& name) {
  const QString word = name.trimmed().toLower();
  if (word == u"neighbouring") {
    return DutySeparation::NeighbouringSteps;
  }
  if (word == u"four-officers") {
    return DutySeparation::FourOfficers;
  }
  return std::nullopt;
}

}  // namespace adjustacc::host
