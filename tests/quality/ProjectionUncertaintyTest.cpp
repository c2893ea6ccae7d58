/// How far the pixels of rays may be off, given the covariance of the intrinsics.
#include "quality/ProjectionUncertainty.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace velmora;

namespace {

const cv::Size FRAME(640, 480);
const std::vector<cv::Point2f> MIDDLE = {{160, 120}, {480, 120}, {480, 360}, {160, 360}};

Intrinsics Barrel() {
  Intrinsics intrinsics;
  intrinsics.values = {500.0, 501.0, 320.0, 240.0, -0.2, 0.05};
  return intrinsics;
}

/// Parameters that vary independently, each in its own way.
Eigen::MatrixXd SomeCovariance() {
  Eigen::MatrixXd covariance = Eigen::MatrixXd::Zero(CLASSIC_PARAMETERS, CLASSIC_PARAMETERS);
  for (int i = 0; i < CLASSIC_PARAMETERS; ++i) covariance(i, i) = i < 4 ? 0.01 * (1 + i) : 1e-6 * i;
  return covariance;
}

double SquareOf(double value) {
  return value * value;
}

TEST(ProjectionUncertainty, OfTheImageIsThatOfItsCells) {
  const ProjectionUncertainty uncertainty(Barrel(), FRAME, MIDDLE);
  const cv::Mat map = uncertainty.Map(SomeCovariance());
  double sum = 0.0;
  double sumInside = 0.0;
  int inside = 0;
  for (int row = 0; row < map.rows; ++row) {
    for (int column = 0; column < map.cols; ++column) {
      const double square = SquareOf(map.at<double>(row, column));
      sum += square;
      const double x = (column + 0.5) * FRAME.width / map.cols - 0.5;
      const double y = (row + 0.5) * FRAME.height / map.rows - 0.5;
      if (x < 160.0 || x > 480.0 || y < 120.0 || y > 360.0) continue;
      sumInside += square;
      ++inside;
    }
  }
  EXPECT_NEAR(uncertainty.InImage(SomeCovariance()), std::sqrt(sum / static_cast<double>(map.total())), 1e-9);
  EXPECT_NEAR(uncertainty.InArea(SomeCovariance()), std::sqrt(sumInside / inside), 1e-9);
  EXPECT_LT(uncertainty.InArea(SomeCovariance()), uncertainty.InImage(SomeCovariance()));
  const Eigen::MatrixXd product = uncertainty.MeanProduct() * SomeCovariance();
  EXPECT_NEAR(std::sqrt(0.5 * product.trace()), uncertainty.InImage(SomeCovariance()), 1e-9);
}

TEST(ProjectionUncertainty, IsMeasuredWithoutTheRotationThatTheAreaAllows) {
  // A shift of the principal point is nearly a rotation of the camera.
  Eigen::MatrixXd shift = Eigen::MatrixXd::Zero(CLASSIC_PARAMETERS, CLASSIC_PARAMETERS);
  shift(CX, CX) = 1.0;
  const ProjectionUncertainty turned(Barrel(), FRAME, MIDDLE);
  const ProjectionUncertainty raw(Barrel(), FRAME, {});
  EXPECT_NEAR(raw.InImage(shift), std::sqrt(0.5), 1e-9);
  EXPECT_LT(turned.InArea(shift), 0.1 * raw.InImage(shift));
}

TEST(ProjectionUncertainty, IsANumberHoweverRoundingTurnsOut) {
  // Covariances of points without noise cancel to a few parts in 1e17, of either sign.
  const ProjectionUncertainty uncertainty(Barrel(), FRAME, MIDDLE);
  const Eigen::MatrixXd less = -1e-20 * Eigen::MatrixXd::Identity(CLASSIC_PARAMETERS, CLASSIC_PARAMETERS);
  EXPECT_EQ(uncertainty.InArea(less), 0.0);
  EXPECT_EQ(uncertainty.InImage(less), 0.0);
  EXPECT_EQ(cv::countNonZero(uncertainty.Map(less)), 0);
}

TEST(ProjectionUncertainty, IsBoundlessWhereThereIsNothingToMeasure) {
  EXPECT_TRUE(std::isinf(ProjectionUncertainty(Barrel(), FRAME, {}).InArea(SomeCovariance())));
  Intrinsics none = Barrel();
  none.values[0] = std::nan("");  // no pixel has a ray
  const ProjectionUncertainty nowhere(none, FRAME, MIDDLE);
  EXPECT_TRUE(std::isinf(nowhere.InImage(SomeCovariance())));
  EXPECT_TRUE(std::isinf(nowhere.InArea(SomeCovariance())));
  EXPECT_EQ(nowhere.MeanProduct().size(), 0);
  const cv::Mat map = nowhere.Map(SomeCovariance());
  EXPECT_EQ(cv::countNonZero(map == map), 0);
}

}  // namespace
