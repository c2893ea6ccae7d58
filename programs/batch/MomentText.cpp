/// What is told of images of the same time.
#include "batch/MomentText.h"

namespace batch {

std::string FaultOfPair(const std::string& left, const std::string& right) {
  if (left.empty()) return "right: " + right;
  return (right.empty() ? "left: " : "both: ") + left;
}

std::string TextOf(const LoggedMoment& moment, const std::string& kind,
                   const std::vector<std::string>& cameras) {
  std::string finders;
  std::string fault;
  for (size_t i = 0; i < moment.size(); ++i) {
    if (moment[i].name.empty()) continue;
    if (!moment[i].fault.empty()) {
      if (fault.empty()) fault = moment[i].fault;
    } else if (i < cameras.size()) {
      finders += (finders.empty() ? "" : ", ") + cameras[i];
    }
  }
  if (kind == "rig") return finders.empty() ? fault : "grid found by " + finders;
  if (kind != "pair" || moment.size() != 2) return fault.empty() ? "grid found" : fault;
  return fault.empty() ? "grid found in both" : FaultOfPair(moment[0].fault, moment[1].fault);
}

}  // namespace batch
