/// Snapshots of which some points were not seen, as solvers take them.
#include "calibrator/ObservedPoints.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "model/TargetGeometry.h"

using namespace velmora;

namespace {

const cv::Size GRID(4, 11);

CameraSnapshot ViewWithout(const std::vector<size_t>& unseen) {
  CameraSnapshot view;
  for (int i = 0; i < GRID.area(); ++i) view.points.emplace_back(10.0 * i, 5.0);
  view.weights.assign(view.points.size(), 1.0);
  for (const size_t point : unseen) view.weights[point] = 0.0;
  return view;
}

SnapshotList ListOf(const std::vector<std::vector<CameraSnapshot>>& snapshots) {
  Snapshots collection(MakeObjectTemplate(GRID, 0.02F), snapshots.front().size());
  for (const auto& views : snapshots) collection.Add(views, Snapshots::EarlierRms::Drop);
  return *collection.Current().snapshots;
}

TEST(ObservedPoints, AreAllThatThereAreWithoutWeights) {
  CameraSnapshot view = ViewWithout({});
  view.weights.clear();
  const SnapshotList list = ListOf({{view}, {view}});
  const ObservedPoints seen = ObservedIn(list);
  EXPECT_EQ(seen.target, list.target);
  EXPECT_EQ(seen.cameras.front(), list.cameras.front().points);
  EXPECT_EQ(seen.InGrid(1, 17), 17);
}

TEST(ObservedPoints, LackThoseWithoutWeightAndKeepTheirNumbers) {
  const SnapshotList list = ListOf({{ViewWithout({})}, {ViewWithout({0, 1, 20})}});
  const ObservedPoints seen = ObservedIn(list);
  EXPECT_EQ(seen.target[0], list.target[0]);
  ASSERT_EQ(seen.target[1].size(), 41U);
  ASSERT_EQ(seen.cameras.front()[1].size(), 41U);
  for (const auto& [now, before] : {std::pair{0, 2}, {17, 19}, {18, 21}, {40, 43}}) {
    EXPECT_EQ(seen.InGrid(1, now), before);
    EXPECT_EQ(seen.target[1][static_cast<size_t>(now)], list.target[1][static_cast<size_t>(before)]);
    EXPECT_EQ(seen.cameras.front()[1][static_cast<size_t>(now)].x, 10.0 * before);
  }
  EXPECT_EQ(seen.InGrid(1, -1), -1);
}

TEST(ObservedPoints, HaveTheirDeviations) {
  CameraSnapshot measured = ViewWithout({0, 20});
  for (int i = 0; i < GRID.area(); ++i) measured.deviations.push_back(0.01 * i);
  const ObservedPoints seen = ObservedIn(ListOf({{ViewWithout({})}, {measured}}));
  ASSERT_EQ(seen.deviations.front().size(), 2U);
  EXPECT_TRUE(seen.deviations.front()[0].empty());
  ASSERT_EQ(seen.deviations.front()[1].size(), 42U);
  EXPECT_EQ(seen.deviations.front()[1][0], 0.01);
  EXPECT_EQ(seen.deviations.front()[1][19], 0.01 * 21);
}

TEST(ObservedPoints, OfAPairAreThoseThatBothCamerasSaw) {
  const ObservedPoints seen = ObservedIn(ListOf({{ViewWithout({3}), ViewWithout({3, 8, 43})}}));
  ASSERT_EQ(seen.target[0].size(), 41U);
  for (const auto& camera : seen.cameras) {
    ASSERT_EQ(camera[0].size(), 41U);
    EXPECT_EQ(camera[0][7].x, 90.0);
  }
}

TEST(FaultOfSnapshot, IsNoneFromThreeQuartersOn) {
  EXPECT_EQ(FaultOfSnapshot(GRID, {ViewWithout({})}), "");
  EXPECT_EQ(FaultOfSnapshot(GRID, {ViewWithout({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10})}), "");
  EXPECT_EQ(FaultOfSnapshot(GRID, {ViewWithout({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11})}),
            "Only 32 of 44 circles are seen: 33 are the fewest.");
  EXPECT_EQ(FaultOfSnapshot(GRID, {ViewWithout({0, 1, 2, 3, 4, 5}), ViewWithout({38, 39, 40, 41, 42, 43})}),
            "Only 32 of 44 circles are seen by both cameras: 33 are the fewest.");
}

TEST(FaultOfSnapshot, NamesDeviationsThatAreNone) {
  CameraSnapshot view = ViewWithout({7});
  view.deviations.assign(44, 0.02);
  EXPECT_EQ(FaultOfSnapshot(GRID, {view}), "");
  view.deviations[7] = 0.0;
  EXPECT_EQ(FaultOfSnapshot(GRID, {view}), "");
  for (const double wrong : {-0.01, std::numeric_limits<double>::infinity(), std::nan("")}) {
    view.deviations[8] = wrong;
    EXPECT_EQ(FaultOfSnapshot(GRID, {view}), "A deviation is negative or not finite.");
  }
  view.deviations.assign(43, 0.02);
  EXPECT_EQ(FaultOfSnapshot(GRID, {view}),
            "A deviation of each of the grid's 44 circles is needed, or none.");
}

TEST(FaultOfSnapshot, NamesListsThatAreNone) {
  CameraSnapshot view = ViewWithout({7});
  view.points.pop_back();
  EXPECT_EQ(FaultOfSnapshot(GRID, {view}),
            "A point and a weight of each of the grid's 44 circles are needed.");
  view = ViewWithout({7});
  view.weights.pop_back();
  EXPECT_EQ(FaultOfSnapshot(GRID, {view}),
            "A point and a weight of each of the grid's 44 circles are needed.");
  view = ViewWithout({7});
  view.points[7].y = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(FaultOfSnapshot(GRID, {view}), "A point is not finite.");
  for (const double weight : {0.5, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
    view = ViewWithout({7});
    view.weights[3] = weight;
    EXPECT_EQ(FaultOfSnapshot(GRID, {view}), "A weight is neither 0 nor 1.") << weight;
  }
}

}  // namespace
