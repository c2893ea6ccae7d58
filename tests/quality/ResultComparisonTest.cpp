/// How far results are said to be apart.
#include "velmora/ResultComparison.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <string>

#include "LensError.h"

using namespace velmora;

namespace {

const cv::Size SIZE(640, 480);

CameraResult Plain(double focal, const cv::Point2d& centre, const cv::Mat& D) {
  CameraResult result;
  result.K = (cv::Mat_<double>(3, 3) << focal, 0.0, centre.x, 0.0, focal, centre.y, 0.0, 0.0, 1.0);
  result.D = D;
  result.imageSize = SIZE;
  return result;
}

CameraResult Usual() {
  return Plain(550.0, {320.0, 240.0}, (cv::Mat_<double>(1, 5) << -0.2, 0.05, 0.001, -0.0005, 0.0));
}

CameraResult Fisheye(double focal, const cv::Mat& coefficients) {
  CameraResult result = Plain(focal, {319.5, 239.5}, coefficients);
  result.fisheye = true;
  return result;
}

/// What the synthetic world says, which knows nothing of the engine.
world::ProjectionDistance WorldDistance(const CameraResult& first, const CameraResult& second) {
  const auto lens = [](const CameraResult& result) {
    return result.fisheye ? world::FisheyeFrom(result.K, result.D) : world::LensFrom(result.K, result.D);
  };
  return world::MeanProjectionDistance(lens(first), lens(second), SIZE, {}, world::Alignment::Rotated);
}

std::string FaultOf(const CameraResult& first, const CameraResult& second,
                    const ComparisonOptions& options = {}) {
  try {
    CompareResults(first, second, options);
  } catch (const std::invalid_argument& fault) {
    return fault.what();
  }
  return "";
}

TEST(ResultComparison, OfAResultWithItselfIsNothing) {
  for (const CameraResult& result : {Usual(), Plain(550.0, {320.0, 240.0}, cv::Mat::zeros(1, 14, CV_64F)),
                                     Fisheye(200.0, (cv::Mat_<double>(1, 4) << 0.02, -0.01, 0.002, 0.0))}) {
    const ResultComparison comparison = CompareResults(result, result);
    EXPECT_LT(comparison.largest, 1e-5);
    EXPECT_LT(comparison.angle, 1e-6);
    EXPECT_EQ(comparison.compared, 40 * 30);
    EXPECT_EQ(comparison.incomparable, 0.0);
    EXPECT_EQ(comparison.map.size(), cv::Size(40, 30));
    EXPECT_EQ(comparison.stepX, 16.0);
  }
}

TEST(ResultComparison, AgreesWithTheSyntheticWorldAfterTheBestRotation) {
  const CameraResult first = Usual();
  const CameraResult second =
      Plain(553.0, {325.0, 236.0}, (cv::Mat_<double>(1, 5) << -0.21, 0.06, 0.002, 0.0, 0.0));
  const ResultComparison comparison = CompareResults(first, second, {4.0, {}});
  const world::ProjectionDistance distance = WorldDistance(first, second);
  EXPECT_NEAR(comparison.rms, distance.rms, 0.05 * distance.rms);
  EXPECT_NEAR(comparison.mean, distance.mean, 0.05 * distance.mean);
  EXPECT_NEAR(comparison.largest, distance.max, 0.1 * distance.max);
  EXPECT_GT(distance.rms, 0.5);
}

TEST(ResultComparison, TakesAPrincipalPointThatMovedForARotation) {
  const CameraResult first = Plain(550.0, {320.0, 240.0}, cv::Mat::zeros(1, 5, CV_64F));
  const ResultComparison comparison =
      CompareResults(first, Plain(550.0, {323.0, 240.0}, cv::Mat::zeros(1, 5, CV_64F)));
  EXPECT_LT(comparison.rms, 0.6);
  EXPECT_GT(comparison.largest, comparison.rms);
  EXPECT_NEAR(comparison.angle, 3.0 / 550.0 * 180.0 / CV_PI, 0.05);
  EXPECT_NEAR(cv::determinant(comparison.rotation), 1.0, 1e-9);
  // Farthest from the middle, where the differences grow with the square of the distance.
  EXPECT_GT(std::abs(comparison.where.x - 319.5), 250.0);
}

TEST(ResultComparison, FindsWhereTheDifferenceIsLargest) {
  const CameraResult second = Plain(555.0, {320.0, 240.0}, Usual().D);
  const ResultComparison comparison = CompareResults(Usual(), second, {10.0, {}});
  EXPECT_EQ(comparison.map.size(), cv::Size(64, 48));
  double largest = 0.0;
  cv::Point cell;
  cv::minMaxLoc(comparison.Lengths(), nullptr, &largest, nullptr, &cell);
  EXPECT_NEAR(largest, comparison.largest, 1e-12);
  EXPECT_NEAR(comparison.where.x, (cell.x + 0.5) * comparison.stepX - 0.5, 1e-9);
  EXPECT_NEAR(comparison.where.y, (cell.y + 0.5) * comparison.stepY - 0.5, 1e-9);
  // A longer focal length takes pixels away from the middle.
  EXPECT_LT(comparison.map.at<cv::Vec2d>(24, 0)[0], -1.0);
  EXPECT_GT(comparison.map.at<cv::Vec2d>(24, 63)[0], 1.0);
}

TEST(ResultComparison, OfAnAreaHasItsNumbersAndItsRotation) {
  const CameraResult second = Plain(555.0, {320.0, 240.0}, Usual().D);
  ComparisonOptions options;
  options.area = {{220.0F, 160.0F}, {420.0F, 160.0F}, {420.0F, 320.0F}, {220.0F, 320.0F}};
  const ResultComparison inside = CompareResults(Usual(), second, options);
  const ResultComparison whole = CompareResults(Usual(), second);
  EXPECT_LT(inside.rms, 0.5 * whole.rms);
  EXPECT_LT(inside.largest, 0.5 * whole.largest);
  EXPECT_LT(inside.compared, whole.compared / 5);
  EXPECT_TRUE(cv::Rect2d(220.0, 160.0, 200.0, 160.0).contains(inside.where));
  EXPECT_TRUE(cv::checkRange(inside.map)) << "the map is of the whole image";
}

TEST(ResultComparison, SetsAPlainLensBesideAFisheyeOfTheSameRays) {
  // The tangent's series.
  const CameraResult fisheye =
      Fisheye(1500.0, (cv::Mat_<double>(1, 4) << 1.0 / 3.0, 2.0 / 15.0, 17.0 / 315.0, 62.0 / 2835.0));
  const CameraResult plain = Plain(1500.0, {319.5, 239.5}, cv::Mat::zeros(1, 5, CV_64F));
  EXPECT_LT(CompareResults(fisheye, plain).largest, 1e-3);
  EXPECT_LT(CompareResults(plain, fisheye).largest, 1e-3);
}

TEST(ResultComparison, LeavesOutWhatOneOfTheLensesDoesNotImage) {
  // 200 degrees along the diagonal: a plain lens has nothing beyond 90 from the axis.
  const CameraResult fisheye = Fisheye(230.0, cv::Mat::zeros(1, 4, CV_64F));
  const CameraResult plain = Plain(230.0, {319.5, 239.5}, cv::Mat::zeros(1, 5, CV_64F));
  const ResultComparison comparison = CompareResults(fisheye, plain);
  EXPECT_GT(comparison.incomparable, 0.01);
  EXPECT_LT(comparison.incomparable, 0.5);
  EXPECT_TRUE(std::isfinite(comparison.rms));
  EXPECT_TRUE(std::isnan(comparison.Lengths().at<double>(0, 0)));
  EXPECT_FALSE(std::isnan(comparison.Lengths().at<double>(15, 20)));
  const cv::Mat picture = comparison.Picture(SIZE);
  EXPECT_EQ(picture.size(), SIZE);
  EXPECT_EQ(picture.type(), CV_8UC3);
  EXPECT_EQ(picture.at<cv::Vec3b>(2, 2), cv::Vec3b(128, 128, 128));
  EXPECT_NE(picture.at<cv::Vec3b>(240, 320), cv::Vec3b(128, 128, 128));
}

TEST(ResultComparison, RefusesWhatCannotBeCompared) {
  CameraResult other = Usual();
  other.imageSize = {1280, 960};
  EXPECT_NE(FaultOf(Usual(), other).find("640 x 480 and 1280 x 960"), std::string::npos);
  CameraResult none;
  EXPECT_NE(FaultOf(Usual(), none).find("camera matrix"), std::string::npos);
  EXPECT_NE(FaultOf(Usual(), Usual(), {-1.0, {}}).find("step"), std::string::npos);
  ComparisonOptions outside;
  outside.area = {{1000.0F, 1000.0F}, {1100.0F, 1000.0F}, {1000.0F, 1100.0F}};
  EXPECT_NE(FaultOf(Usual(), Usual(), outside).find("outside the image"), std::string::npos);
}

}  // namespace
