/// Grids that fisheyes see: the robust search finds them at moderate angles, and beyond 90 degrees.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>
#include <sstream>

#include "Placement.h"
#include "Renderer.h"
#include "Views.h"
#include "finder/CentreFit.h"
#include "finder/FinderScenes.h"
#include "finder/Grey.h"
#include "finder/RobustFinder.h"
#include "finder/WideSheets.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

const cv::Size IMAGE(1280, 960);

/// The centroid of each disc's image, by points on its rim.
std::vector<cv::Point2d> CentroidsOf(const world::Scene& scene, const world::Pose& pose) {
  constexpr size_t RIM = 64;
  const std::vector<cv::Point2d> rims =
      world::ProjectPoints(scene.camera.lens, scene.sheet.RimPoints(static_cast<int>(RIM)), pose);
  std::vector<cv::Point2d> centroids;
  for (size_t first = 0; first < rims.size(); first += RIM) {
    double area = 0.0;
    cv::Point2d moment;
    for (size_t i = 0; i < RIM; ++i) {
      const cv::Point2d a = rims[first + i] - rims[first];
      const cv::Point2d b = rims[first + (i + 1) % RIM] - rims[first];
      area += a.cross(b);
      moment += a.cross(b) * (a + b);
    }
    centroids.push_back(rims[first] + moment / (3.0 * area));
  }
  return centroids;
}

/// What was found of the grids whose middle is in a ring of the image.
struct Tally {
  int frames = 0;
  int found = 0;
  double worst = 0.0;        ///< of all centres, pixels
  double plainErrors = 0.0;  ///< summed up as squares; and of centres that were measured anew
  double fineErrors = 0.0;
  int fitted = 0;
};

/// Measures the centres of a grid anew.
void Measure(const cv::Mat& image, const GridFinding& finding, const std::vector<cv::Point2d>& expected,
             Tally& tally) {
  const MeasuredCentres measured =
      MeasureCentres(finder::GreyOf(image), unit::GRID, finding.centres, finding.radii);
  for (size_t k = 0; k < expected.size(); ++k) {
    const cv::Point2d plain = finding.centres[k] - expected[k];
    const cv::Point2d fine = measured.centres[k] - expected[k];
    tally.plainErrors += plain.dot(plain);
    tally.fineErrors += fine.dot(fine);
    tally.fitted += measured.fitted[k] ? 1 : 0;
  }
}

void Search(world::Renderer& renderer, const world::Pose& pose, Tally& tally) {
  const world::Scene& scene = renderer.GetScene();
  const cv::Mat image = renderer.Render(pose, static_cast<std::uint64_t>(tally.frames));
  ++tally.frames;
  const GridFinding finding = SearchGridRobust(image, unit::GRID);
  const std::vector<cv::Point2d>& centres = finding.centres;
  if (!finding.Found()) return;
  ++tally.found;
  const std::vector<cv::Point2d> truth = world::TrueCentres(scene.camera.lens, scene.sheet, pose);
  EXPECT_TRUE(unit::InOrder(centres, truth));
  // What is found is the middle of a disc's image, which is beside the image of its middle.
  const std::vector<cv::Point2d> expected = CentroidsOf(scene, pose);
  for (size_t k = 0; k < centres.size(); ++k) {
    tally.worst = std::max(tally.worst, cv::norm(centres[k] - expected[k]));
  }
  Measure(image, finding, expected, tally);
}

/// Sheets 0.3 to 0.4 m away, which span less than 40 degrees, tilted to 30 degrees against the line of sight,
/// with their middle at angles from the axis from `least` to `most` degrees.
Tally Search(const world::Scene& scene, double least, double most, int frames) {
  world::Renderer renderer(scene);
  cv::RNG random(17);
  Tally tally;
  while (tally.frames < frames) {
    const double angle = random.uniform(least, most) * CV_PI / 180.0;
    const double turn = random.uniform(0.0, 2.0 * CV_PI);
    const cv::Point3d middle(std::sin(angle) * std::cos(turn), std::sin(angle) * std::sin(turn),
                             std::cos(angle));
    world::Appearance appearance;
    const double direction = random.uniform(0.0, 2.0 * CV_PI);
    const double tilt = random.uniform(0.0, 30.0);
    appearance.tiltX = tilt * std::cos(direction);
    appearance.tiltY = tilt * std::sin(direction);
    appearance.roll = random.uniform(-180.0, 180.0);
    world::Pose pose;
    if (!world::PoseAt(scene.camera.lens, scene.sheet, world::RotationFor(appearance),
                       scene.camera.lens.Project(middle), random.uniform(0.3, 0.4), pose) ||
        !world::DiscsInside(scene.camera, scene.sheet, pose, 10.0)) {
      continue;
    }
    Search(renderer, pose, tally);
  }
  return tally;
}

world::Scene SceneOf(double degrees) {
  world::Scene scene;
  scene.camera = world::FisheyeFromFieldOfView(IMAGE, degrees, {0.012, -0.021, 0.009, -0.001});
  scene.blur = 0.5;
  scene.noise = 2.0;
  return scene;
}

class FisheyeGrids : public testing::TestWithParam<double> {};

TEST_P(FisheyeGrids, AreFoundAtModerateAngles) {
  const Tally tally = Search(SceneOf(GetParam()), 0.0, 0.3 * GetParam(), 20);
  EXPECT_GE(tally.found, 19);
  EXPECT_LT(tally.worst, 0.2);
}

/// In the middle, half way to the rim and as far out as they are seen whole.
TEST_P(FisheyeGrids, AreFoundThoughTheySpanEightyDegrees) {
  const world::Scene scene = SceneOf(GetParam());
  world::Renderer renderer(scene);
  cv::RNG random(23);
  Tally tally;
  std::ostringstream missed;
  for (const double share : {0.0, 0.5, 1.0}) {
    for (const double span : {50.0, 60.0, 70.0, 80.0}) {
      for (const double mostTilt : {20.0, 45.0}) {
        world::Pose pose;
        ASSERT_TRUE(unit::PlaceWideSheet(scene.camera, scene.sheet, share, span, mostTilt, random, pose));
        const int before = tally.found;
        Search(renderer, pose, tally);
        if (tally.found == before) missed << "; " << share << ", " << span << ", " << mostTilt;
      }
    }
  }
  EXPECT_EQ(tally.frames, 24);
  EXPECT_GE(tally.found, 23) << missed.str();
  EXPECT_LT(tally.worst, 0.2);
  const double points = static_cast<double>(unit::GRID.area()) * tally.found;
  EXPECT_GE(tally.fitted, 0.97 * points);
  EXPECT_LT(std::sqrt(tally.plainErrors / points), 0.008);
  EXPECT_LT(std::sqrt(tally.fineErrors / points), 0.008);
}

INSTANTIATE_TEST_SUITE_P(Fields, FisheyeGrids, testing::Values(120.0, 150.0, 180.0));

TEST(FisheyeGrid, IsFoundBeyondNinetyDegrees) {
  const Tally tally = Search(SceneOf(210.0), 80.0, 92.0, 10);
  EXPECT_GE(tally.found, 8);
  EXPECT_LT(tally.worst, 0.2);
}

}  // namespace
