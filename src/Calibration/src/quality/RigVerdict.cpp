/// The words of a rig's verdict.
#include "velmora/RigVerdict.h"

namespace velmora {

std::string RigVerdict::ToString() const {
  CalibrationVerdict same;
  same.grade = grade;
  return same.ToString();
}

}  // namespace velmora
