/// The middle of several numbers.
#pragma once

#include <algorithm>
#include <vector>

namespace velmora {

/// The upper one of an even number; 0 of none.
inline double MedianOf(std::vector<double> values) {
  if (values.empty()) return 0.0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace velmora
