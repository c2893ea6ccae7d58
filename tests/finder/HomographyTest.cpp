/// The homography of points on a plane.
#include "finder/Homography.h"

#include <gtest/gtest.h>

#include <limits>

#include "finder/Elimination.h"
#include "finder/Pattern.h"

using namespace velmora;

namespace {

using Points = std::vector<cv::Point2d>;

const cv::Matx33d FROM_THE_FRONT(24.0, 0.0, 48.0, 0.0, 24.0, 48.0, 0.0, 0.0, 1.0);
const cv::Matx33d OBLIQUE(38.0, 6.0, 120.0, -9.0, 30.0, 100.0, 0.01, 0.012, 1.0);
/// The far side is a tenth of the near one.
const cv::Matx33d STEEP(800.0, 90.0, 3000.0, -200.0, 500.0, 2000.0, 0.4, 0.6, 1.0);

Points GridPoints(const cv::Size& grid) {
  Points gridPoints;
  for (const cv::Point& gridIndex : finder::PatternIndices(grid)) gridPoints.emplace_back(gridIndex);
  return gridPoints;
}

Points ObservedBy(const cv::Matx33d& H, const Points& gridPoints) {
  Points observed;
  for (const cv::Point2d& gridIndex : gridPoints) {
    const cv::Vec3d p = H * cv::Vec3d(gridIndex.x, gridIndex.y, 1.0);
    observed.emplace_back(p[0] / p[2], p[1] / p[2]);
  }
  return observed;
}

double FarthestApart(const Points& some, const Points& others) {
  double farthest = 0.0;
  for (size_t k = 0; k < some.size(); ++k) farthest = std::max(farthest, cv::norm(some[k] - others[k]));
  return farthest;
}

/// The homography of the least sum of squared distances, by Gauss's steps from one near it.
cv::Matx33d LeastSquares(const Points& from, const Points& to, const cv::Matx33d& near) {
  std::vector<unit::Wide> h(near.val, near.val + 8);
  for (int round = 0; round < 40; ++round) {
    unit::WideEquations equations(8, 1);
    for (size_t k = 0; k < from.size(); ++k) {
      const unit::Wide u = from[k].x;
      const unit::Wide v = from[k].y;
      const unit::Wide w = 1.0L / (h[6] * u + h[7] * v + 1.0L);
      const unit::Wide x = (h[0] * u + h[1] * v + h[2]) * w;
      const unit::Wide y = (h[3] * u + h[4] * v + h[5]) * w;
      equations.Add({u * w, v * w, w, 0.0L, 0.0L, 0.0L, -x * u * w, -x * v * w}, {to[k].x - x});
      equations.Add({0.0L, 0.0L, 0.0L, u * w, v * w, w, -y * u * w, -y * v * w}, {to[k].y - y});
    }
    const unit::WideMatrix step = equations.Solve();
    for (size_t k = 0; k < 8; ++k) h[k] += step[k][0];
  }
  cv::Matx33d H = near;
  for (size_t k = 0; k < 8; ++k) H.val[k] = static_cast<double>(h[k]);
  return H;
}

TEST(Homography, OfPointsInPerspectiveIsTheirs) {
  for (const cv::Matx33d& truth : {FROM_THE_FRONT, OBLIQUE, STEEP}) {
    for (const cv::Size& grid : {cv::Size(2, 5), cv::Size(4, 11), cv::Size(20, 29)}) {
      const Points gridPoints = GridPoints(grid);
      const Points observed = ObservedBy(truth, gridPoints);
      cv::Matx33d H;
      ASSERT_TRUE(finder::FitHomography(gridPoints, observed, H));
      EXPECT_LT(FarthestApart(ObservedBy(H, gridPoints), observed), 1e-9) << truth << grid;
      EXPECT_EQ(H(2, 2), 1.0);
      for (int k = 0; k < 8; ++k) EXPECT_NEAR(H.val[k], truth.val[k], 1e-9 * (1.0 + std::abs(truth.val[k])));
    }
  }
}

TEST(Homography, OfFourPointsLeadsThroughAllOfThem) {
  const Points from = {{0.0, 0.0}, {7.0, 1.0}, {6.0, 10.0}, {-1.0, 9.0}};
  const Points to = {{100.0, 50.0}, {420.0, 90.0}, {380.0, 400.0}, {130.0, 300.0}};
  cv::Matx33d H;
  ASSERT_TRUE(finder::FitHomography(from, to, H));
  EXPECT_LT(FarthestApart(ObservedBy(H, from), to), 1e-9);
}

TEST(Homography, OfNoisyPointsHasTheLeastSumOfSquaredDistances) {
  cv::RNG random(3);
  for (const cv::Matx33d& truth : {FROM_THE_FRONT, OBLIQUE, STEEP}) {
    for (const double noise : {0.01, 0.5, 2.0}) {
      const Points gridPoints = GridPoints({4, 11});
      Points observed = ObservedBy(truth, gridPoints);
      for (cv::Point2d& point : observed)
        point += cv::Point2d(random.gaussian(noise), random.gaussian(noise));
      cv::Matx33d H;
      ASSERT_TRUE(finder::FitHomography(gridPoints, observed, H));
      EXPECT_LT(FarthestApart(ObservedBy(H, gridPoints),
                              ObservedBy(LeastSquares(gridPoints, observed, truth), gridPoints)),
                1e-8)
          << truth << noise;
    }
  }
}

TEST(Homography, OfPointsWithOutliersHasTheLeastSumToo) {
  const Points gridPoints = GridPoints({4, 11});
  Points observed = ObservedBy(OBLIQUE, gridPoints);
  observed[5] += cv::Point2d(25.0, -10.0);
  observed[30] += cv::Point2d(-8.0, 30.0);
  cv::Matx33d H;
  ASSERT_TRUE(finder::FitHomography(gridPoints, observed, H));
  EXPECT_LT(FarthestApart(ObservedBy(H, gridPoints),
                          ObservedBy(LeastSquares(gridPoints, observed, OBLIQUE), gridPoints)),
            1e-7);
}

/// The last digits of centres far from the origin count as well.
TEST(Homography, TakesPointsAsTheyAre) {
  const Points gridPoints = GridPoints({4, 11});
  const Points observed = ObservedBy(cv::Matx33d(24.0, 0.0, 1e5, 0.0, 24.0, 1e5, 0.0, 0.0, 1.0), gridPoints);
  cv::Matx33d H;
  ASSERT_TRUE(finder::FitHomography(gridPoints, observed, H));
  EXPECT_LT(FarthestApart(ObservedBy(H, gridPoints), observed), 1e-8);
}

TEST(Homography, IsNoneOfPointsThatDetermineNone) {
  const cv::Matx33d before = cv::Matx33d::diag({3.0, 4.0, 5.0});
  cv::Matx33d H = before;
  const Points gridPoints = GridPoints({4, 11});
  const Points observed = ObservedBy(OBLIQUE, gridPoints);
  EXPECT_FALSE(finder::FitHomography({}, {}, H));
  EXPECT_FALSE(finder::FitHomography({gridPoints[0], gridPoints[1], gridPoints[9]},
                                     {observed[0], observed[1], observed[9]}, H));
  Points line;
  for (int k = 0; k < 20; ++k) line.emplace_back(2.0 * k, 3.0 * k + 1.0);
  EXPECT_FALSE(finder::FitHomography(line, ObservedBy(OBLIQUE, line), H));
  EXPECT_FALSE(
      finder::FitHomography(Points(9, {3.0, 4.0}), Points(observed.begin(), observed.begin() + 9), H));
  EXPECT_FALSE(finder::FitHomography(gridPoints, Points(gridPoints.size(), {300.0, 200.0}), H));
  for (const double value :
       {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(), 1e300}) {
    Points broken = observed;
    broken[7].y = value;
    EXPECT_FALSE(finder::FitHomography(gridPoints, broken, H)) << value;
  }
  EXPECT_EQ(H, before);
}

}  // namespace
