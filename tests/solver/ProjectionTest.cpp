/// Projection by intrinsics: the pixels of OpenCV's, and derivatives like differences.
#include "solver/Projection.h"

#include <gtest/gtest.h>

#include <opencv2/calib3d.hpp>

using namespace velmora;

namespace {

using solver::Coordinate;
using solver::Projection;

Intrinsics SampleIntrinsics(int estimated) {
  const std::array<double, FULL_PARAMETERS> all = {520.0,  510.0,   321.0,  236.0,  -0.21, 0.06,
                                                   0.0008, -0.0006, -0.008, 0.11,   -0.03, 0.012,
                                                   0.003,  -0.002,  0.001,  0.0015, 0.03,  -0.02};
  Intrinsics intrinsics;
  intrinsics.estimated = estimated;
  std::copy(all.begin(), all.begin() + estimated, intrinsics.values.begin());
  return intrinsics;
}

const std::vector<cv::Vec3d>& Points() {
  static const std::vector<cv::Vec3d> points = {
      {0.0, 0.0, 0.4}, {0.1, -0.05, 0.3}, {-0.2, 0.15, 0.35}, {0.3, 0.2, 0.5}, {-1e-3, 0.21, 0.3}};
  return points;
}

class ProjectionOfIntrinsics : public ::testing::TestWithParam<int> {
 protected:
  const Intrinsics intrinsics_ = SampleIntrinsics(GetParam());

  cv::Point2d Pixel(const Intrinsics& intrinsics, const cv::Vec3d& point) const {
    cv::Point2d pixel;
    EXPECT_TRUE(Projection(intrinsics).Project(point, pixel));
    return pixel;
  }
};

TEST_P(ProjectionOfIntrinsics, GivesThePixelsOfOpenCV) {
  const auto& p = intrinsics_.values;
  const cv::Matx33d K(p[0], 0, p[2], 0, p[1], p[3], 0, 0, 1);
  const cv::Mat D = cv::Mat(1, 14, CV_64F, const_cast<double*>(p.data() + 4)).clone();
  std::vector<cv::Point2d> expected;
  cv::projectPoints(Points(), cv::Vec3d(), cv::Vec3d(), K, D, expected);
  for (size_t i = 0; i < Points().size(); ++i) {
    const cv::Point2d pixel = Pixel(intrinsics_, Points()[i]);
    EXPECT_NEAR(pixel.x, expected[i].x, 1e-10);
    EXPECT_NEAR(pixel.y, expected[i].y, 1e-10);
  }
}

TEST_P(ProjectionOfIntrinsics, GivesTheSamePixelsWithDerivatives) {
  for (const cv::Vec3d& point : Points()) {
    Coordinate u;
    Coordinate v;
    ASSERT_TRUE(Projection(intrinsics_).Differentiate(point, u, v));
    EXPECT_EQ(cv::Point2d(u.value, v.value), Pixel(intrinsics_, point));
  }
}

TEST_P(ProjectionOfIntrinsics, HasTheDerivativesThatDifferencesByTheIntrinsicsShow) {
  for (const cv::Vec3d& point : Points()) {
    Coordinate u;
    Coordinate v;
    ASSERT_TRUE(Projection(intrinsics_).Differentiate(point, u, v));
    for (size_t i = 0; i < static_cast<size_t>(GetParam()); ++i) {
      const double step = 1e-6 * std::max(1.0, std::abs(intrinsics_.values[i]));
      Intrinsics more = intrinsics_;
      Intrinsics less = intrinsics_;
      more.values[i] += step;
      less.values[i] -= step;
      const cv::Point2d difference = (Pixel(more, point) - Pixel(less, point)) / (2.0 * step);
      EXPECT_NEAR(u.byIntrinsics[i], difference.x, 1e-5) << "parameter " << i;
      EXPECT_NEAR(v.byIntrinsics[i], difference.y, 1e-5) << "parameter " << i;
    }
  }
}

TEST_P(ProjectionOfIntrinsics, HasTheDerivativesThatDifferencesByThePointShow) {
  constexpr double STEP = 1e-7;
  for (const cv::Vec3d& point : Points()) {
    Coordinate u;
    Coordinate v;
    ASSERT_TRUE(Projection(intrinsics_).Differentiate(point, u, v));
    for (int i = 0; i < 3; ++i) {
      cv::Vec3d shift;
      shift[i] = STEP;
      const cv::Point2d difference =
          (Pixel(intrinsics_, point + shift) - Pixel(intrinsics_, point - shift)) / (2 * STEP);
      EXPECT_NEAR(u.byPoint[i], difference.x, 1e-4) << "axis " << i;
      EXPECT_NEAR(v.byPoint[i], difference.y, 1e-4) << "axis " << i;
    }
  }
}

TEST_P(ProjectionOfIntrinsics, RefusesWhatIsNotInFrontOfTheCamera) {
  cv::Point2d pixel;
  Coordinate u;
  Coordinate v;
  for (const double depth : {0.0, -0.3, std::nan("")}) {
    EXPECT_FALSE(Projection(intrinsics_).Project({0.1, 0.1, depth}, pixel));
    EXPECT_FALSE(Projection(intrinsics_).Differentiate({0.1, 0.1, depth}, u, v));
  }
}

INSTANTIATE_TEST_SUITE_P(Models, ProjectionOfIntrinsics,
                         ::testing::Values(CLASSIC_PARAMETERS, RATIONAL_PARAMETERS, FULL_PARAMETERS));

TEST(Projection, RefusesAPointOnAPole) {
  Intrinsics intrinsics = SampleIntrinsics(RATIONAL_PARAMETERS);
  intrinsics.values[9] = -4.0;  // 1 + k4 r^2 is zero at r = 0.5
  intrinsics.values[10] = intrinsics.values[11] = 0.0;
  cv::Point2d pixel;
  EXPECT_FALSE(Projection(intrinsics).Project({0.5, 0.0, 1.0}, pixel));
  EXPECT_TRUE(Projection(intrinsics).Project({0.4, 0.0, 1.0}, pixel));
}

}  // namespace
