/// Grids of little contrast in pictures that have much of it elsewhere.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "Renderer.h"
#include "Truth.h"
#include "Views.h"
#include "finder/Candidates.h"
#include "finder/FinderScenes.h"
#include "finder/RobustFinder.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

constexpr int CONTRAST = 10;

struct FaintFrame {
  cv::Mat image;
  std::vector<cv::Point2d> centres;
};

/// The greys of the scene reach from black to white: things behind the sheet, and patches in the corners.
FaintFrame RandomFaintFrame(int number, double noise) {
  cv::RNG random(5501U * static_cast<unsigned>(number + 1));
  for (;;) {
    world::Scene scene;
    scene.camera = world::CameraFromFieldOfView(unit::FRAME, 60.0, {-0.2, 0.05, 0.0, 0.0, 0.0});
    scene.blur = 0.7;
    scene.noise = noise;
    scene.clutter = 25;
    scene.light = 0.2;
    scene.paperLevel = 140;
    scene.inkLevel = 140 - CONTRAST;
    scene.seed = random.next();
    world::Appearance appearance;
    appearance.x = random.uniform(-0.7, 0.7);
    appearance.y = random.uniform(-0.7, 0.7);
    appearance.span = random.uniform(0.35, 0.85);
    const double direction = random.uniform(0.0, 2.0 * CV_PI);
    const double tilt = random.uniform(0.0, 40.0);
    appearance.tiltX = tilt * std::cos(direction);
    appearance.tiltY = tilt * std::sin(direction);
    appearance.roll = random.uniform(-180.0, 180.0);
    world::Pose pose;
    if (!world::PlaceGrid(scene.camera, scene.sheet, appearance, 1.0, pose)) continue;
    FaintFrame frame;
    frame.image = world::Renderer(scene).Render(pose);
    frame.centres = world::TrueCentres(scene.camera.lens, scene.sheet, pose);
    for (int corner = 0; corner < 4; ++corner) {
      const cv::Rect patch(corner % 2 * 610, corner / 2 * 450, 30, 30);
      const cv::Point2d middle(patch.x + 15.0, patch.y + 15.0);
      const bool covers =
          std::any_of(frame.centres.begin(), frame.centres.end(),
                      [&](const cv::Point2d& centre) { return cv::norm(centre - middle) < 70.0; });
      if (!covers) frame.image(patch).setTo(cv::Scalar::all(corner % 3 == 0 ? 0.0 : 255.0));
    }
    return frame;
  }
}

TEST(FaintGrids, AreFoundInScenesOfAllGreys) {
  int found = 0;
  double squaredErrors = 0.0;
  for (int number = 0; number < 40; ++number) {
    const FaintFrame frame = RandomFaintFrame(number, 1.0 + number % 2);
    const GridFinding finding = SearchGridRobust(frame.image, unit::GRID);
    if (!finding.Found()) continue;
    ++found;
    EXPECT_TRUE(unit::InOrder(finding.centres, frame.centres)) << number;
    squaredErrors += std::pow(cv::norm(finding.centres, frame.centres, cv::NORM_L2), 2);
  }
  EXPECT_GE(found, 38);
  // Little contrast costs exactness.
  EXPECT_LT(std::sqrt(squaredErrors / (44.0 * std::max(1, found))), 0.45);
}

TEST(FaintGrids, AreFoundLightOnDarkToo) {
  int found = 0;
  for (int number = 0; number < 10; ++number) {
    const FaintFrame frame = RandomFaintFrame(number, 1.0);
    const GridFinding finding = SearchGridRobust(cv::Scalar::all(255) - frame.image, unit::GRID);
    if (finding.Found() && unit::InOrder(finding.centres, frame.centres)) ++found;
  }
  EXPECT_GE(found, 9);
}

TEST(FaintCandidates, AreTheDiscsWithCentresAndRadii) {
  cv::Mat image(480, 640, CV_8UC1, cv::Scalar(140));
  const cv::Rect place(40, 40, 560, 400);
  cv::Mat faint;
  unit::FlatGrid(unit::GRID, 0.4, 24.0).convertTo(faint, CV_8U, 10.0 / 210.0, 129.0);
  faint.copyTo(image(cv::Rect(place.tl(), faint.size())));
  image(cv::Rect(0, 0, 30, 30)).setTo(0);
  image(cv::Rect(610, 0, 30, 30)).setTo(255);
  const std::vector<finder::DiscCandidate> discs = finder::FindFaintCandidates(image, 44);
  ASSERT_EQ(discs.size(), 44U);
  for (const finder::DiscCandidate& disc : discs) {
    EXPECT_NEAR(disc.radius, 0.4 * 24.0, 0.8);
    EXPECT_NEAR(std::remainder(disc.centre.x - place.x, 24.0), 0.0, 0.3);
    EXPECT_NEAR(std::remainder(disc.centre.y - place.y, 24.0), 0.0, 0.3);
  }
}

TEST(FaintCandidates, AreNoneThatTheOrdinaryLevelsSeeWell) {
  EXPECT_TRUE(finder::FindFaintCandidates(unit::FlatGrid(unit::GRID, 0.4, 30.0), 44).empty());
}

TEST(FaintCandidates, AreNoneWhereTheWholeImageIsFaint) {
  cv::Mat image;
  unit::FlatGrid(unit::GRID, 0.4, 30.0).convertTo(image, CV_8U, 0.2, 100.0);
  EXPECT_TRUE(finder::FindFaintCandidates(image, 44).empty());
}

}  // namespace
