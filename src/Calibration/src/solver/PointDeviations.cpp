/// How far the errors of observed points reach, one beside the other.
#include "solver/PointDeviations.h"

#include <cmath>
#include <opencv2/core.hpp>

#include "foundation/Median.h"

namespace velmora::solver {

namespace {

/// Of the usual variance; with it the weights of points are below three.
constexpr double COMMON = 0.5;

std::vector<double> KnownOf(const std::vector<PointDeviations>& cameras) {
  std::vector<double> known;
  for (const PointDeviations& camera : cameras) {
    for (const std::vector<double>& view : camera) {
      for (const double deviation : view) {
        CV_Assert(std::isfinite(deviation) && deviation >= 0.0);
        if (deviation > 0.0) known.push_back(deviation);
      }
    }
  }
  return known;
}

}  // namespace

std::vector<PointDeviations> RelativeDeviations(const std::vector<PointDeviations>& cameras) {
  const std::vector<double> known = KnownOf(cameras);
  if (known.empty()) return {};
  const double usual = MedianOf(known);
  std::vector<PointDeviations> relative = cameras;
  for (PointDeviations& camera : relative) {
    for (std::vector<double>& view : camera) {
      for (double& deviation : view) {
        const double ratio = deviation > 0.0 ? deviation / usual : 1.0;
        deviation = std::sqrt((ratio * ratio + COMMON) / (1.0 + COMMON));
      }
    }
  }
  return relative;
}

}  // namespace velmora::solver
