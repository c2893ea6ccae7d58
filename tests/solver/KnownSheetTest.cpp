/// Shapes of sheets that were measured before, and the targets that they are of.
#include "solver/KnownSheet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "solver/ShapedViews.h"

using namespace velmora;

namespace {

std::vector<cv::Point3d> Places() {
  return MakeObjectTemplate(unit::GRID, unit::UNIT);
}

std::vector<cv::Point3d> BentPoints() {
  std::vector<cv::Point3d> points = Places();
  unit::Bend({0.001, -0.002, 0.005}, points);
  return points;
}

TEST(KnownSheet, HasAPlaceForEachPointOfAPart) {
  std::vector<TargetView> views(1);
  Observation observation;
  const std::vector<cv::Point3d> places = Places();
  for (size_t k = 5; k < places.size(); k += 3) observation.object.push_back(places[k]);
  views.front().observations = {observation};
  ASSERT_TRUE(solver::NoteNearestPlaces(BentPoints(), views));
  const std::vector<size_t>& noted = views.front().observations.front().places;
  ASSERT_EQ(noted.size(), observation.object.size());
  for (size_t i = 0; i < noted.size(); ++i) EXPECT_EQ(noted[i], 5 + 3 * i);
}

TEST(KnownSheet, IsNotOneOfATargetWhosePointsAreElsewhereOrMore) {
  std::vector<TargetView> views(1);
  Observation observation;
  observation.object = Places();
  observation.object[7].y += 0.6 * static_cast<double>(unit::UNIT);
  observation.object[7].x += 0.6 * static_cast<double>(unit::UNIT);
  views.front().observations = {observation};
  EXPECT_FALSE(solver::NoteNearestPlaces(BentPoints(), views));
  observation.object = Places();
  observation.object.push_back(observation.object.front());
  views.front().observations = {observation};
  EXPECT_FALSE(solver::NoteNearestPlaces(BentPoints(), views));
  observation.object = {Places().front()};
  views.front().observations = {observation};
  EXPECT_FALSE(solver::NoteNearestPlaces({Places().front()}, views)) << "one point is no target";
}

TEST(KnownSheet, IsAShapeOfTheGridItWasMeasuredOf) {
  EXPECT_TRUE(solver::IsShapeOf(Places(), Places()));
  EXPECT_TRUE(solver::IsShapeOf(Places(), BentPoints()));
  EXPECT_FALSE(solver::IsShapeOf(Places(), MakeObjectTemplate(unit::GRID, 1.5F * unit::UNIT)));
  EXPECT_FALSE(solver::IsShapeOf(Places(), MakeObjectTemplate({4, 9}, unit::UNIT)));
  std::vector<cv::Point3d> turned = BentPoints();
  std::reverse(turned.begin(), turned.end());
  EXPECT_FALSE(solver::IsShapeOf(Places(), turned));
  std::vector<cv::Point3d> broken = BentPoints();
  broken[3].z = std::numeric_limits<double>::quiet_NaN();
  EXPECT_FALSE(solver::IsShapeOf(Places(), broken));
  EXPECT_FALSE(solver::IsShapeOf(Places(), {}));
}

}  // namespace
