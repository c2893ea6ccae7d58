/// Poses in which the target could be shown next: they can be held and found, and are all over the image.
#include "quality/PoseCandidates.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

#include "Calibrator.h"
#include "Renderer.h"
#include "Views.h"
#include "finder/FinderChoice.h"
#include "finder/StandardFinder.h"
#include "quality/RigSolutions.h"

using namespace velmora;
using unit::Paper;

namespace {

std::vector<cv::Point3d> CentredGrid() {
  return unit::FlatShape();
}

Intrinsics TrueIntrinsics() {
  return unit::IntrinsicsOf(unit::DistortedCamera().lens, CLASSIC_PARAMETERS);
}

world::Pose PoseOf(const RigidTransform& centred) {
  world::Pose pose;
  cv::Rodrigues(centred.R, pose.rvec);
  const cv::Vec3d middle = MakeObjectTemplate(unit::GRID, unit::UNIT).front() - CentredGrid().front();
  pose.tvec = centred.t - centred.R * middle;
  return pose;
}

TEST(PoseCandidates, AreWholeInTheImageAndNotTiltedByMoreThan45Degrees) {
  const auto candidates = CandidatesFor(TrueIntrinsics(), CentredGrid(), unit::FRAME, 500);
  ASSERT_EQ(candidates.size(), 500U);
  for (const PoseCandidate& candidate : candidates) {
    const world::Pose pose = PoseOf(candidate.pose);
    EXPECT_TRUE(world::DiscsInside(unit::DistortedCamera(), Paper(), pose));
    EXPECT_LE(std::acos(candidate.pose.R(2, 2)) * 180.0 / CV_PI, 45.0);
    EXPECT_TRUE(world::FacesCamera(pose));
    const auto centres = world::TrueCentres(unit::DistortedCamera().lens, Paper(), pose);
    EXPECT_LT(cv::norm(candidate.view.image, centres, cv::NORM_INF),
              1e-4);  // the unit is in single precision
  }
}

TEST(PoseCandidates, AreFoundByBothSearchesInTheirOrder) {
  world::Scene scene;
  scene.camera = unit::DistortedCamera();
  scene.sheet = Paper();
  scene.blur = 0.6;
  scene.noise = 2.0;
  world::Renderer renderer(scene);
  FinderChoice robust;
  ASSERT_TRUE(robust.Set(Calibrator::FINDER_ROBUST));
  const auto candidates = CandidatesFor(TrueIntrinsics(), CentredGrid(), unit::FRAME, 24);
  int standard = 0;
  for (const PoseCandidate& candidate : candidates) {
    const cv::Mat image = renderer.Render(PoseOf(candidate.pose));
    std::vector<cv::Point2d> points;
    EXPECT_TRUE(robust.Find(image, unit::GRID, points));
    EXPECT_LT(cv::norm(points, candidate.view.image, cv::NORM_INF), 2.0);
    if (!FindGridStandard(image, unit::GRID, points)) continue;
    ++standard;
    EXPECT_LT(cv::norm(points, candidate.view.image, cv::NORM_INF), 2.0);
  }
  EXPECT_GE(standard, 22);
}

TEST(PoseCandidates, KeepToTheLargestSpacing) {
  const cv::Size large(1920, 1080);
  Intrinsics intrinsics;
  intrinsics.values = {1600.0, 1600.0, 960.0, 540.0};
  const auto largest = [&](double most) {
    double spacing = 0.0;
    const auto candidates = CandidatesFor(intrinsics, CentredGrid(), large, 200, most);
    EXPECT_GE(candidates.size(), 100U);
    for (const PoseCandidate& candidate : candidates) {
      for (size_t i = 1; i < 4; ++i) {
        spacing = std::max(spacing, cv::norm(candidate.view.image[i] - candidate.view.image[i - 1]));
      }
    }
    return spacing;
  };
  EXPECT_LE(largest(185.0), 185.0);
  EXPECT_GT(largest(std::numeric_limits<double>::infinity()), 230.0);
}

/// The share of the image's width or height that the discs' centres take, whichever is more.
double SpanOf(const Observation& view) {
  const cv::Rect2d box = cv::boundingRect(std::vector<cv::Point2f>(view.image.begin(), view.image.end()));
  return std::max(box.width / unit::FRAME.width, box.height / unit::FRAME.height);
}

TEST(PoseCandidates, AreNearAndFarAndTiltedToAllSides) {
  const auto candidates = CandidatesFor(TrueIntrinsics(), CentredGrid(), unit::FRAME, 300);
  ASSERT_EQ(candidates.size(), 300U);
  double least = 1.0;
  double largest = 0.0;
  int sides[2][2] = {};
  for (const PoseCandidate& candidate : candidates) {
    least = std::min(least, SpanOf(candidate.view));
    largest = std::max(largest, SpanOf(candidate.view));
    const cv::Matx33d& R = candidate.pose.R;
    ++sides[R(0, 2) > 0.0 ? 1 : 0][R(1, 2) > 0.0 ? 1 : 0];
    // Upright: columns of the sheet run across the image, rows down it.
    EXPECT_GT(R(1, 0), std::cos(60.0 * CV_PI / 180.0));
    EXPECT_LT(R(0, 1), -std::cos(60.0 * CV_PI / 180.0));
  }
  EXPECT_GT(least, 0.2);
  EXPECT_LT(least, 0.35);
  EXPECT_GT(largest, 0.75);
  EXPECT_LT(largest, 0.9);
  for (const auto& side : sides) {
    for (const int count : side) EXPECT_GT(count, 40);
  }
}

TEST(PoseCandidates, ReachEachCornerOfTheImage) {
  std::vector<cv::Point2f> points;
  for (const auto& candidate : CandidatesFor(TrueIntrinsics(), CentredGrid(), unit::FRAME, 500)) {
    points.insert(points.end(), candidate.view.image.begin(), candidate.view.image.end());
  }
  for (const cv::Point2f& corner :
       {cv::Point2f(0, 0), cv::Point2f(639, 0), cv::Point2f(0, 479), cv::Point2f(639, 479)}) {
    double nearest = std::numeric_limits<double>::infinity();
    for (const cv::Point2f& point : points) nearest = std::min(nearest, cv::norm(point - corner));
    EXPECT_LT(nearest, 64.0) << corner;
  }
}

TEST(PoseCandidates, AreTheFirstOfTheSameListHoweverManyAreAskedFor) {
  const auto few = CandidatesFor(TrueIntrinsics(), CentredGrid(), unit::FRAME, 20);
  const auto many = CandidatesFor(TrueIntrinsics(), CentredGrid(), unit::FRAME, 60);
  ASSERT_EQ(few.size(), 20U);
  ASSERT_EQ(many.size(), 60U);
  for (size_t i = 0; i < few.size(); ++i) EXPECT_EQ(few[i].view.image, many[i].view.image);
  for (size_t i = 0; i < many.size(); ++i) {
    for (size_t k = 0; k < i; ++k) EXPECT_NE(many[i].view.image, many[k].view.image);
  }
}

TEST(PoseCandidates, AreNotMirroredByALensThatFolds) {
  // It folds at a ray of 0.61, which is imaged 244 pixels from the middle: what is beyond shows nothing.
  Intrinsics folding;
  folding.values = {600.0, 600.0, 319.5, 239.5, -0.9};
  const world::Lens truth({600.0, 0.0, 319.5, 0.0, 600.0, 239.5, 0.0, 0.0, 1.0}, {-0.9, 0.0, 0.0, 0.0});
  const auto candidates = CandidatesFor(folding, CentredGrid(), unit::FRAME, 100);
  ASSERT_GE(candidates.size(), 20U);
  for (const PoseCandidate& candidate : candidates) {
    for (const cv::Point3d& point : CentredGrid()) {
      const cv::Vec3d inCamera = candidate.pose * point;
      EXPECT_TRUE(truth.Images({inCamera[0] / inCamera[2], inCamera[1] / inCamera[2]}));
    }
  }
}

TEST(PoseCandidates, AreNoneOfALensThatImagesNothing) {
  Intrinsics none = TrueIntrinsics();
  none.values[FX] = std::nan("");
  EXPECT_TRUE(CandidatesFor(none, CentredGrid(), unit::FRAME, 10).empty());
}

}  // namespace
