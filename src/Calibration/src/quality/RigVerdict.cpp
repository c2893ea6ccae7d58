/// The words of a rig's verdict.
#include "velmora/RigVerdict.h"

namespace velmora {

std::string RigVerdict::Words() const {
  CalibrationVerdict same;
  same.grade = grade;
  return same.Words();
}

}  // namespace velmora
