/// What a camera observed of the target.
#include "model/Observation.h"

#include <algorithm>

namespace velmora {

double Observation::Count() const {
  if (weights.empty()) return static_cast<double>(object.size());
  return static_cast<double>(
      std::count_if(weights.begin(), weights.end(), [](double weight) { return weight > 0.0; }));
}

double CountOf(const std::vector<Observation>& observations) {
  double count = 0.0;
  for (const Observation& observation : observations) count += observation.Count();
  return count;
}

}  // namespace velmora
