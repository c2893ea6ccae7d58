/// How much a wide lens bends the image of a grid.
#include "finder/WideFit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "finder/Checks.h"
#include "finder/FlatDiscs.h"
#include "finder/WideSheets.h"

using namespace velmora;

namespace {

using finder::GridProjection;
using finder::LabelledDiscs;

const cv::Size IMAGE(1280, 960);

/// The farthest disc from where the plane and the lens put it, without the polynomial; steps.
double FarthestOff(const GridProjection& projection, const LabelledDiscs& discs) {
  double farthest = 0.0;
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    const cv::Point2d gridIndex = discs.gridIndices[k];
    farthest = std::max(
        farthest, cv::norm(discs.centres[k] - projection.Project(gridIndex)) / projection.Step(gridIndex));
  }
  return farthest;
}

TEST(WideFit, FollowsFisheyesBetterThanPlanesDo) {
  const world::Sheet sheet;
  cv::RNG random(3);
  // Equidistant, equisolid, stereographic ones, and one between them.
  for (const world::FisheyeCurve::Coefficients& curve : {world::FisheyeCurve::Coefficients{},
                                                         {-0.0417, 0.00052, 0.0, 0.0},
                                                         {0.0833, 0.00833, 0.00084, 0.0},
                                                         {0.012, -0.021, 0.009, -0.001}}) {
    for (const double field : {120.0, 150.0, 180.0}) {
      const world::Camera camera = world::FisheyeFromFieldOfView(IMAGE, field, curve);
      for (int k = 0; k < 8; ++k) {
        SCOPED_TRACE(testing::Message() << field << ", " << k);
        world::Pose pose;
        ASSERT_TRUE(unit::PlaceWideSheet(camera, sheet, 1.0, k < 4 ? 45.0 : 60.0, 30.0, random, pose));
        const LabelledDiscs discs = unit::DiscsSeen(camera, sheet, pose);
        GridProjection plane;
        ASSERT_TRUE(plane.Fit(discs));
        GridProjection projection;
        ASSERT_TRUE(finder::FitWide(projection, discs, IMAGE));
        EXPECT_TRUE(finder::FitsProjection(projection, discs));
        EXPECT_LT(FarthestOff(projection, discs), 0.2);
        EXPECT_LT(FarthestOff(projection, discs), 0.5 * FarthestOff(plane, discs));
      }
    }
  }
}

TEST(WideFit, NeedsNoLensForWhatIsOnAPlane) {
  const LabelledDiscs discs =
      unit::DiscsProjectedBy({38.0, 6.0, 120.0, -9.0, 26.0, 100.0, 0.01, 0.03, 1.0}, {4, 11});
  GridProjection projection;
  EXPECT_FALSE(finder::FitWide(projection, discs, {640, 480}));
}

TEST(WideFit, FindsNoLensThatBendsAPlaneLikeRolledPaper) {
  LabelledDiscs discs = unit::FlatDiscs();
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    const double v = (discs.gridIndices[k].y - 5.0) / 5.0;
    discs.centres[k].x += 1.2 * unit::FLAT_STEP * v * v;
  }
  GridProjection projection;
  EXPECT_FALSE(finder::FitWide(projection, discs, {300, 360}));
}

TEST(WideFit, FindsNoLensForDiscsOutOfPlace) {
  LabelledDiscs discs = unit::FlatDiscs();
  cv::RNG random(4);
  for (cv::Point2d& centre : discs.centres) {
    centre += 0.3 * unit::FLAT_STEP * cv::Point2d(random.gaussian(1.0), random.gaussian(1.0));
  }
  GridProjection projection;
  EXPECT_FALSE(finder::FitWide(projection, discs, {300, 360}));
}

TEST(WideFit, FindsNoLensForMirroredDiscs) {
  LabelledDiscs discs = unit::FlatDiscs();
  for (cv::Point2d& centre : discs.centres) centre.x = 299.0 - centre.x;
  GridProjection projection;
  EXPECT_FALSE(finder::FitWide(projection, discs, {300, 360}));
}

}  // namespace
