/// Images without distortion: what is straight is straight in them.
#include "guided/Undistortion.h"

#include <gtest/gtest.h>

#include <cmath>

#include "GuidedScenes.h"
#include "Matchers.h"

namespace {

using guided::Undistortion;

/// A straight edge in the world: dark where a x + b y < c z, bright elsewhere.
struct Edge {
  double a, b, c;

  bool IsAlongRows() const { return std::abs(b) > std::abs(a); }
  double Off(const cv::Point3d& way) const { return a * way.x + b * way.y - c * way.z; }
  /// Where a camera matrix has it in a row (or, along rows, in a column).
  double At(const cv::Matx33d& K, int row) const {
    if (IsAlongRows()) return K(1, 1) * (c - a * (row - K(0, 2)) / K(0, 0)) / b + K(1, 2);
    return K(0, 0) * (c - b * (row - K(1, 2)) / K(1, 1)) / a + K(0, 2);
  }
};

constexpr double MIDDLE = 140.0;

/// How the camera sees the edge, a few pixels soft: grey is where the edge is.
cv::Mat Picturing(const world::Camera& camera, const Edge& edge) {
  constexpr double SOFTNESS = 1.5;
  cv::Mat image(camera.size, CV_8UC1, cv::Scalar(0));
  const cv::Point2d aside = edge.IsAlongRows() ? cv::Point2d(0.0, 1.0) : cv::Point2d(1.0, 0.0);
  for (int y = 0; y < image.rows; ++y) {
    for (int x = 0; x < image.cols; ++x) {
      const cv::Point2d pixel(x, y);
      cv::Point3d way;
      cv::Point3d beside;
      if (!camera.lens.Unproject(pixel, way) || !camera.lens.Unproject(pixel + aside, beside)) continue;
      const double pixels = edge.Off(way) / std::abs(edge.Off(beside) - edge.Off(way));
      image.at<unsigned char>(y, x) =
          cv::saturate_cast<unsigned char>(MIDDLE + 80.0 * std::erf(pixels / SOFTNESS));
    }
  }
  return image;
}

/// Whether the image ends near there: beyond is black.
bool IsAtTheEnd(const cv::Mat& row, int x) {
  double least = 0.0;
  cv::minMaxLoc(row.colRange(std::max(0, x - 6), std::min(row.cols, x + 7)), &least);
  return least < 50.0;
}

/// Where the edge is in each row (along rows: in each column), as (row, place): within some pixels of where
/// it should be.
std::vector<cv::Point2d> PlacesOf(const cv::Mat& image, const Edge& edge, const cv::Matx33d& K, int within) {
  const cv::Mat rows = edge.IsAlongRows() ? cv::Mat(image.t()) : image;
  std::vector<cv::Point2d> places;
  for (int y = 0; y < rows.rows; ++y) {
    const int expected = cvRound(edge.At(K, y));
    for (int x = std::max(0, expected - within); x < std::min(rows.cols - 1, expected + within); ++x) {
      const double here = rows.at<unsigned char>(y, x);
      const double next = rows.at<unsigned char>(y, x + 1);
      if (here >= MIDDLE || next < MIDDLE || IsAtTheEnd(rows.row(y), x)) continue;
      places.emplace_back(y, x + (MIDDLE - here) / (next - here));
      break;
    }
  }
  return places;
}

/// The farthest of the places from the straight line that fits them best.
double Bend(const std::vector<cv::Point2d>& places) {
  cv::Mat design(static_cast<int>(places.size()), 2, CV_64F, cv::Scalar(1.0));
  cv::Mat values(design.rows, 1, CV_64F);
  for (int i = 0; i < design.rows; ++i) {
    design.at<double>(i, 0) = places[static_cast<size_t>(i)].x;
    values.at<double>(i) = places[static_cast<size_t>(i)].y;
  }
  cv::Mat line;
  cv::solve(design, values, line, cv::DECOMP_SVD);
  return cv::norm(design * line, values, cv::NORM_INF);
}

common::Report ReportOf(const world::Camera& camera) {
  common::Report report;
  report.frame = camera.size;
  report.K = cv::Mat(camera.lens.K(), true);
  report.fisheye = camera.lens.IsFisheye();
  if (!report.fisheye) report.D = cv::Mat(camera.lens.D(), true).reshape(1, 1);
  return report;
}

const std::vector<Edge> EDGES = {
    {1.0, 0.0, -0.42}, {1.0, 0.1, 0.3}, {1.0, -0.2, 0.0}, {0.0, 1.0, 0.3}, {0.1, 1.0, -0.25}};

/// Expects the edges, of which the camera bends one by that many pixels at least, to be straight, and where
/// that camera matrix has them.
void ExpectStraightEdges(const world::Camera& camera, const common::Report& report, const cv::Matx33d& shown,
                         double least) {
  const Undistortion undistortion(report);
  double most = 0.0;
  for (const Edge& edge : EDGES) {
    SCOPED_TRACE(testing::Message() << edge.a << " x + " << edge.b << " y = " << edge.c);
    const cv::Mat seen = Picturing(camera, edge);
    const auto before = PlacesOf(seen, edge, camera.lens.K(), 100);
    const auto after = PlacesOf(undistortion.Of(seen), edge, shown, 3);
    ASSERT_GT(before.size(), 200U);
    ASSERT_GT(after.size(), 200U);
    most = std::max(most, Bend(before));
    EXPECT_LT(Bend(after), 0.3);
    for (const cv::Point2d& place : after)
      ASSERT_NEAR(place.y, edge.At(shown, cvRound(place.x)), 0.3) << place;
  }
  EXPECT_GT(most, least) << "they were not straight before";
}

TEST(Undistortion, MakesStraightEdgesStraight) {
  const world::Camera camera = unit::DistortedCamera();
  ExpectStraightEdges(camera, ReportOf(camera), camera.lens.K(), 2.0);
}

TEST(Undistortion, MakesEdgesStraightThatAFisheyeSees) {
  const world::Camera camera = guided_test::Fisheye();
  common::Report report = ReportOf(camera);
  report.D = (cv::Mat_<double>(1, 4) << -0.01, 0.002, 0.0, 0.0);
  cv::Matx33d shown = camera.lens.K();
  shown(0, 0) *= 0.5;
  shown(1, 1) *= 0.5;
  ExpectStraightEdges(camera, report, shown, 10.0);
}

TEST(Undistortion, TakesColourImagesAndLeavesThemAsTheyWere) {
  const Undistortion undistortion(ReportOf(unit::DistortedCamera()));
  const cv::Mat image = unit::ImageWithGrid();
  const cv::Mat shown = undistortion.Of(image);
  EXPECT_EQ(shown.size(), image.size());
  EXPECT_EQ(shown.type(), image.type());
  EXPECT_SAME_MAT(image, unit::ImageWithGrid());
  EXPECT_GT(cv::norm(shown, image, cv::NORM_INF), 50.0);
}

TEST(Undistortion, WithoutDistortionChangesNothing) {
  const Undistortion undistortion(
      ReportOf(world::CameraFromFieldOfView(unit::FRAME, 62.0, {0.0, 0.0, 0.0, 0.0, 0.0})));
  const cv::Mat image = unit::ImageWithGrid();
  EXPECT_SAME_MAT(undistortion.Of(image), image);
}

TEST(Undistortion, OfAResultThatWasComputedMakesItsGridStraight) {
  for (const bool fisheye : {false, true}) {
    const world::Camera camera = fisheye ? guided_test::Fisheye() : unit::DistortedCamera();
    const auto outcome = guided::Compute(guided_test::Named(guided_test::ViewsBy(camera, 12)),
                                         guided_test::SettingsOfPoints(), guided_test::JustCompute);
    ASSERT_FALSE(outcome.Failed()) << outcome.fault;
    ASSERT_EQ(outcome.cameras[0].report.fisheye, fisheye);
    cv::Matx33d shown = camera.lens.K();
    if (fisheye) shown = cv::Matx33d::diag({0.5, 0.5, 1.0}) * shown;
    shown(0, 2) = camera.lens.K()(0, 2);
    shown(1, 2) = camera.lens.K()(1, 2);
    const Edge edge = {1.0, 0.1, 0.3};
    const cv::Mat straight = Undistortion(outcome.cameras[0].report).Of(Picturing(camera, edge));
    const auto places = PlacesOf(straight, edge, shown, 6);
    ASSERT_GT(places.size(), 200U);
    EXPECT_LT(Bend(places), 0.3);
  }
}

}  // namespace
