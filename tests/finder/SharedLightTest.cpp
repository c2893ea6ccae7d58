/// What discs tell each other about the light.
#include "finder/SharedLight.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace velmora;

namespace {

using finder::FittedDisc;

constexpr double ERROR_OF_LIGHT = 0.5;
constexpr double ERROR_OF_CENTRE = 0.01;
/// What of the centre's error goes with that of the ink's light.
constexpr double TOGETHER = 0.9;
const cv::Vec4d LIGHT(1.0, -2.0, 0.5, 0.0);

/// Fits of discs at the origin whose errors of the centre (x) and of the light on the ink (x) go together.
std::vector<FittedDisc> Fits(size_t count, double lightChanges) {
  cv::RNG random(8);
  std::vector<FittedDisc> discs(count);
  for (FittedDisc& disc : discs) {
    disc.holds = true;
    disc.deviation = ERROR_OF_CENTRE;
    const double common = random.gaussian(1.0);
    const double own = random.gaussian(1.0);
    disc.centre.x = ERROR_OF_CENTRE * (TOGETHER * common + std::sqrt(1.0 - TOGETHER * TOGETHER) * own);
    disc.centre.y = random.gaussian(ERROR_OF_CENTRE);
    for (int i = 0; i < 4; ++i) {
      const double error = i == 0 ? common : random.gaussian(1.0);
      disc.light[i] = LIGHT[i] + ERROR_OF_LIGHT * error + random.gaussian(1.0) * lightChanges;
      disc.covariance(2 + i, 2 + i) = ERROR_OF_LIGHT * ERROR_OF_LIGHT;
    }
    disc.covariance(0, 0) = disc.covariance(1, 1) = ERROR_OF_CENTRE * ERROR_OF_CENTRE;
    disc.covariance(0, 2) = disc.covariance(2, 0) = TOGETHER * ERROR_OF_CENTRE * ERROR_OF_LIGHT;
  }
  return discs;
}

double ErrorAlongX(const std::vector<FittedDisc>& discs) {
  double squares = 0.0;
  for (const FittedDisc& disc : discs) squares += disc.centre.x * disc.centre.x;
  return std::sqrt(squares / static_cast<double>(discs.size()));
}

TEST(SharedLight, LeavesOnlyWhatTheLightCannotExplain) {
  std::vector<FittedDisc> discs = Fits(200, 0.0);
  EXPECT_NEAR(ErrorAlongX(discs), ERROR_OF_CENTRE, 0.1 * ERROR_OF_CENTRE);
  finder::ShareLight(discs);
  EXPECT_LT(ErrorAlongX(discs), 0.6 * ERROR_OF_CENTRE);
  EXPECT_LT(discs[0].deviation, 0.9 * ERROR_OF_CENTRE);
}

TEST(SharedLight, LeavesDiscsToThemselvesWhereTheLightChanges) {
  std::vector<FittedDisc> discs = Fits(200, 20.0 * ERROR_OF_LIGHT);
  const std::vector<FittedDisc> before = discs;
  finder::ShareLight(discs);
  for (size_t k = 0; k < discs.size(); ++k) {
    EXPECT_LT(cv::norm(discs[k].centre - before[k].centre), 0.2 * ERROR_OF_CENTRE);
    EXPECT_NEAR(discs[k].deviation, ERROR_OF_CENTRE, 0.01 * ERROR_OF_CENTRE);
  }
}

TEST(SharedLight, LeavesADiscThatIsLitUnlikeTheOthers) {
  std::vector<FittedDisc> discs = Fits(44, 0.0);
  discs[7].light[2] += 20.0 * ERROR_OF_LIGHT;
  const FittedDisc before = discs[7];
  finder::ShareLight(discs);
  EXPECT_EQ(discs[7].centre, before.centre);
  EXPECT_EQ(discs[7].deviation, before.deviation);
}

TEST(SharedLight, LeavesFewFitsAsTheyAre) {
  std::vector<FittedDisc> discs = Fits(44, 0.0);
  for (size_t k = 11; k < discs.size(); ++k) discs[k] = {};
  const cv::Point2d before = discs[3].centre;
  finder::ShareLight(discs);
  EXPECT_EQ(discs[3].centre, before);
  EXPECT_EQ(discs[20].centre, cv::Point2d());
  EXPECT_FALSE(discs[20].holds);
}

}  // namespace
