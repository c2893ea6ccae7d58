/// What the discs of a grid tell each other about the light.
#include "finder/SharedLight.h"

#include <algorithm>
#include <cmath>

#include "foundation/Median.h"

namespace velmora::finder {

namespace {

constexpr int LIGHTS = 4;
constexpr size_t FEWEST = 12;
constexpr double MEDIAN_TO_DEVIATION = 1.4826;
/// How much the light changes from disc to disc is not known better than that, in variances of a fit.
constexpr double LEAST_CHANGE = 0.1;
/// A disc whose light is farther from the others' than that, in standard deviations, is lit unlike them.
constexpr double UNLIKE = 3.5;

/// What the light is on most discs, and the variance of that from disc to disc.
struct CommonLight {
  cv::Vec4d mean;
  cv::Vec4d variance;
};

CommonLight LightOn(const std::vector<FittedDisc>& discs) {
  CommonLight common;
  for (int i = 0; i < LIGHTS; ++i) {
    std::vector<double> lights;
    std::vector<double> variances;
    for (const FittedDisc& disc : discs) {
      if (!disc.holds) continue;
      lights.push_back(disc.light[i]);
      variances.push_back(disc.covariance(2 + i, 2 + i));
    }
    common.mean[i] = MedianOf(lights);
    for (double& light : lights) light = std::abs(light - common.mean[i]);
    const double spread = MEDIAN_TO_DEVIATION * MedianOf(lights);
    const double ofFit = MedianOf(variances);
    common.variance[i] = std::max(LEAST_CHANGE * ofFit, spread * spread - ofFit);
  }
  return common;
}

void Improve(const CommonLight& common, FittedDisc& disc) {
  const cv::Vec4d off = disc.light - common.mean;
  // Of the light as fitted, around the common one.
  cv::Matx44d spread = disc.covariance.get_minor<4, 4>(2, 2);
  for (int i = 0; i < LIGHTS; ++i) {
    spread(i, i) += common.variance[i];
    if (std::abs(off[i]) > UNLIKE * std::sqrt(spread(i, i))) return;
  }
  bool solved = false;
  const cv::Matx44d inverse = spread.inv(cv::DECOMP_CHOLESKY, &solved);
  if (!solved) return;
  const cv::Matx<double, 2, 4> withLight = disc.covariance.get_minor<2, 4>(0, 2);
  const cv::Matx<double, 2, 4> gain = withLight * inverse;
  const cv::Vec2d shift = gain * off;
  const cv::Matx22d less = gain * withLight.t();
  const double variance = disc.covariance(0, 0) + disc.covariance(1, 1) - less(0, 0) - less(1, 1);
  if (!(variance > 0.0)) return;
  disc.centre -= cv::Point2d(shift);
  disc.deviation = std::sqrt(0.5 * variance);
}

}  // namespace

void ShareLight(std::vector<FittedDisc>& discs) {
  const auto holds = [](const FittedDisc& disc) { return disc.holds; };
  if (static_cast<size_t>(std::count_if(discs.begin(), discs.end(), holds)) < FEWEST) return;
  const CommonLight common = LightOn(discs);
  for (FittedDisc& disc : discs) {
    if (disc.holds) Improve(common, disc);
  }
}

}  // namespace velmora::finder
