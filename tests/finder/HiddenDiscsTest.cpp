/// Discs that are partly hidden, and discs that only look so.
#include "finder/HiddenDiscs.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "Renderer.h"
#include "Views.h"
#include "finder/FinderScenes.h"
#include "finder/Pattern.h"
#include "finder/RobustFinder.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

constexpr double STEP = 36.0;
constexpr int PAPER = 235;
constexpr int INK = 25;

cv::Point2d CentreOf(size_t disc) {
  const cv::Point gridIndex = finder::PatternIndices(unit::GRID)[disc];
  return {2.0 * STEP + STEP * gridIndex.x, 2.0 * STEP + STEP * gridIndex.y};
}

/// A sheet from the front; `direction` and `beyond` (radii from its middle) say what of a disc is covered in
/// `tone`.
cv::Mat Covered(size_t disc, double direction, double beyond, int tone) {
  cv::Mat image = unit::FlatGrid(unit::GRID, 0.4, STEP);
  const cv::Point2d normal(std::cos(direction), std::sin(direction));
  const cv::Point2d along(-normal.y, normal.x);
  const double radius = 0.4 * STEP;
  std::vector<cv::Point> outline;
  for (const auto& [out, side] :
       {std::pair(beyond, -1.2), std::pair(1.25, -1.2), std::pair(1.25, 1.2), std::pair(beyond, 1.2)}) {
    const cv::Point2d at = CentreOf(disc) + normal * (out * radius) + along * (side * radius);
    outline.emplace_back(cvRound(16.0 * at.x), cvRound(16.0 * at.y));
  }
  cv::fillConvexPoly(image, outline, cv::Scalar(tone), cv::LINE_AA, 4);
  cv::GaussianBlur(image, image, cv::Size(), 0.7);
  return image;
}

/// The largest distance of a disc from its true position.
double WorstOf(const GridFinding& finding) {
  double worst = 0.0;
  for (size_t k = 0; k < finding.centres.size(); ++k) {
    worst = std::max(worst, cv::norm(finding.centres[k] - CentreOf(k)));
  }
  return worst;
}

TEST(HiddenDiscs, OneThatPaperOrGlareHidesAPartOfIsRefused) {
  for (const double beyond : {0.0, 0.3, 0.5}) {
    for (size_t disc = 0; disc < 44; disc += 3) {
      const double direction = 0.7 * static_cast<double>(disc);
      const GridFinding finding = SearchGridRobust(Covered(disc, direction, beyond, PAPER), unit::GRID);
      EXPECT_EQ(finding.fault, GridFault::PartlyHidden) << disc << ", " << beyond;
      EXPECT_TRUE(finding.centres.empty());
    }
  }
  EXPECT_EQ(DescribeFault(GridFault::PartlyHidden), "a disc is partly hidden");
}

TEST(HiddenDiscs, OneThatAFingerReachesIntoIsNeverFoundOffItsPlace) {
  int told = 0;
  for (const double beyond : {0.0, 0.3, 0.5}) {
    for (size_t disc = 0; disc < 44; disc += 3) {
      const double direction = 0.7 * static_cast<double>(disc);
      const GridFinding finding = SearchGridRobust(Covered(disc, direction, beyond, INK), unit::GRID);
      EXPECT_LT(WorstOf(finding), 0.5) << disc << ", " << beyond;
      if (finding.fault == GridFault::PartlyHidden) ++told;
    }
  }
  EXPECT_GT(told, 20);
}

TEST(HiddenDiscs, AShadowsEdgeMovesNoDiscByAPixel) {
  for (int number = 0; number < 12; ++number) {
    cv::Mat image = unit::FlatGrid(unit::GRID, 0.4, STEP);
    const double angle = 0.5 * number;
    const cv::Point2d middle(image.cols * 0.5 + 3.0 * number, image.rows * 0.5);
    for (int y = 0; y < image.rows; ++y) {
      for (int x = 0; x < image.cols; ++x) {
        const double out = (x - middle.x) * std::cos(angle) + (y - middle.y) * std::sin(angle);
        const double dark = std::min(1.0, std::max(0.0, 0.5 + out / 3.0));
        unsigned char& pixel = image.at<unsigned char>(y, x);
        pixel = cv::saturate_cast<unsigned char>(pixel * (1.0 - 0.65 * dark));
      }
    }
    cv::GaussianBlur(image, image, cv::Size(), 0.7);
    const GridFinding finding = SearchGridRobust(image, unit::GRID);
    ASSERT_TRUE(finding.Found()) << number << ": " << DescribeFault(finding.fault);
    EXPECT_LT(WorstOf(finding), 0.9) << number;
  }
}

TEST(HiddenDiscs, ACornerThatTheLensDistortsAwayFromItsNeighboursIsNotTakenForHidden) {
  for (const int number : {121, 500, 594, 1404, 1663}) {
    const unit::FinderFrame frame = unit::RandomFinderFrame(number);
    const GridFinding finding = SearchGridRobust(frame.image, unit::GRID);
    ASSERT_TRUE(finding.Found()) << number << ": " << DescribeFault(finding.fault);
    EXPECT_TRUE(unit::InOrder(finding.centres, frame.centres)) << number;
  }
}

/// The middle of the image of a disc, which is not the image of its middle.
cv::Point2d MiddleOfDisc(const world::Scene& scene, const world::Pose& pose, size_t disc) {
  constexpr int POINTS = 180;
  const std::vector<cv::Point3d> rims = scene.sheet.RimPoints(POINTS);
  const auto first = rims.begin() + static_cast<std::ptrdiff_t>(disc) * POINTS;
  const std::vector<cv::Point3d> rim(first, first + POINTS);
  std::vector<cv::Point2f> outline;
  for (const cv::Point2d& pixel : world::ProjectPoints(scene.camera.lens, rim, pose))
    outline.push_back(pixel);
  const cv::Moments moments = cv::moments(outline);
  return {moments.m10 / moments.m00, moments.m01 / moments.m00};
}

TEST(HiddenDiscs, WholeOnesStayWhereTheirDarknessIs) {
  world::Scene scene;
  scene.camera = world::CameraFromFieldOfView({640, 480}, 60.0, {-0.1, 0.02, 0.0, 0.0, 0.0});
  scene.noise = 2.0;
  world::Renderer renderer(scene);
  std::uint64_t number = 0;
  for (const world::Pose& pose : world::SpreadViews(scene.camera, 24)) {
    const GridFinding finding = SearchGridRobust(renderer.Render(pose, number++), unit::GRID);
    ASSERT_TRUE(finding.Found()) << number << ": " << DescribeFault(finding.fault);
    for (size_t k = 0; k < finding.centres.size(); ++k) {
      const cv::Point2d middle = MiddleOfDisc(scene, pose, k);
      EXPECT_LT(cv::norm(finding.centres[k] - middle), 0.1) << "view " << number << ", disc " << k;
    }
  }
}

}  // namespace
