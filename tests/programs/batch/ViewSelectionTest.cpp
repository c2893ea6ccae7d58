/// The choice of few views that tell as much as many.
#include "batch/ViewSelection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "Views.h"

namespace {

using Views = std::vector<std::vector<cv::Point2d>>;

const cv::Size GRID(4, 11);
const cv::Size FRAME(640, 480);

Views Project(const world::Camera& camera, const std::vector<world::Pose>& poses) {
  Views views;
  for (const world::Pose& pose : poses)
    views.push_back(world::TrueCentres(camera.lens, world::Sheet(), pose));
  return views;
}

Views RandomViews(int count, std::uint64_t seed) {
  const world::Camera camera = world::CameraFromFieldOfView(FRAME, 60.0);
  return Project(camera, world::SampleViews(camera, count, seed));
}

/// Distance of the middle of each chosen view to its nearest other one, on average.
double SpreadOfCentres(const Views& views, const std::vector<size_t>& chosen) {
  std::vector<cv::Point2d> centres;
  for (const size_t i : chosen) {
    centres.push_back(std::accumulate(views[i].begin(), views[i].end(), cv::Point2d()) /
                      static_cast<double>(views[i].size()));
  }
  double sum = 0.0;
  for (size_t i = 0; i < centres.size(); ++i) {
    double nearest = 1e9;
    for (size_t j = 0; j < centres.size(); ++j) {
      if (i != j) nearest = std::min(nearest, cv::norm(centres[i] - centres[j]));
    }
    sum += nearest;
  }
  return sum / static_cast<double>(centres.size());
}

TEST(ViewSelection, FewerViewsThanWantedAreAllTaken) {
  const auto chosen = batch::SelectSpreadViews(RandomViews(7, 1), GRID, FRAME, 10);
  EXPECT_EQ(chosen, (std::vector<size_t>{0, 1, 2, 3, 4, 5, 6}));
  EXPECT_TRUE(batch::SelectSpreadViews({}, GRID, FRAME, 10).empty());
}

TEST(ViewSelection, ExactlyAsManyDifferentViewsAsWantedComeInOrder) {
  const auto chosen = batch::SelectSpreadViews(RandomViews(60, 2), GRID, FRAME, 15);
  ASSERT_EQ(chosen.size(), 15u);
  EXPECT_TRUE(std::is_sorted(chosen.begin(), chosen.end()));
  EXPECT_EQ(std::adjacent_find(chosen.begin(), chosen.end()), chosen.end());
}

TEST(ViewSelection, CopiesOfAViewAreTakenOnce) {
  const Views different = RandomViews(8, 3);
  Views views;
  for (int copies = 0; copies < 5; ++copies) views.insert(views.end(), different.begin(), different.end());
  const auto chosen = batch::SelectSpreadViews(views, GRID, FRAME, 8);
  std::vector<size_t> originals;
  for (const size_t i : chosen) originals.push_back(i % 8);
  std::sort(originals.begin(), originals.end());
  EXPECT_EQ(originals, (std::vector<size_t>{0, 1, 2, 3, 4, 5, 6, 7}));
}

TEST(ViewSelection, ChosenViewsLieFurtherApartThanTheFirstOnes) {
  const Views views = RandomViews(120, 4);
  const auto chosen = batch::SelectSpreadViews(views, GRID, FRAME, 12);
  std::vector<size_t> first(12);
  std::iota(first.begin(), first.end(), size_t{0});
  EXPECT_GT(SpreadOfCentres(views, chosen), SpreadOfCentres(views, first));
}

TEST(ViewSelection, TheTiltedViewAmongFrontalOnesIsTaken) {
  const world::Camera camera = world::CameraFromFieldOfView(FRAME, 60.0);
  std::vector<world::Pose> poses = world::FrontalViews(camera, 20);
  world::Pose tilted;
  ASSERT_TRUE(world::PlaceGrid(camera, world::Sheet(), {0.0, 0.0, 0.5, 35.0, 0.0, 0.0}, 5.0, tilted));
  poses.insert(poses.begin() + 9, tilted);
  const auto chosen = batch::SelectSpreadViews(Project(camera, poses), GRID, FRAME, 6);
  EXPECT_NE(std::find(chosen.begin(), chosen.end(), 9u), chosen.end());
}

TEST(ViewSelection, OneCameraOfARigIsChosenFromAsACameraAlone) {
  const Views views = RandomViews(40, 7);
  EXPECT_EQ(batch::SelectSpreadViews({views}, GRID, std::vector<cv::Size>{FRAME}, 9),
            batch::SelectSpreadViews(views, GRID, FRAME, 9));
}

TEST(ViewSelection, TheOnlyViewThatLinksTwoCamerasIsTaken) {
  const Views views = RandomViews(60, 8);
  std::vector<Views> cameras(3, views);
  // The last camera sees the sheet in the second half of the views, of which only one links it.
  const size_t link = 41;
  for (size_t i = 0; i < views.size(); ++i) {
    if (i < 30) cameras[2][i].clear();
    if (i < 30 || i == link) continue;
    cameras[0][i].clear();
    cameras[1][i].clear();
  }
  const std::vector<cv::Size> frames(3, FRAME);
  for (const size_t count : {5U, 8U, 20U}) {
    const auto chosen = batch::SelectSpreadViews(cameras, GRID, frames, count);
    ASSERT_EQ(chosen.size(), count);
    EXPECT_TRUE(std::is_sorted(chosen.begin(), chosen.end()));
    EXPECT_EQ(std::count(chosen.begin(), chosen.end(), link), 1);
    const auto late = std::count_if(chosen.begin(), chosen.end(), [](size_t i) { return i >= 30; });
    EXPECT_GE(late, 2);
    EXPECT_LE(late, static_cast<std::ptrdiff_t>(count) - 2);
  }
}

TEST(ViewSelection, ViewsThatDifferForOneCameraOnlyAreApartToo) {
  // The first camera sees the sheet always at the same place, the second one at three.
  const Views places = RandomViews(3, 9);
  std::vector<Views> cameras(2);
  for (size_t i = 0; i < 30; ++i) {
    cameras[0].push_back(places[0]);
    cameras[1].push_back(places[i / 10]);
  }
  const auto chosen = batch::SelectSpreadViews(cameras, GRID, std::vector<cv::Size>(2, FRAME), 3);
  ASSERT_EQ(chosen.size(), 3U);
  EXPECT_EQ(chosen[0] / 10, 0U);
  EXPECT_EQ(chosen[1] / 10, 1U);
  EXPECT_EQ(chosen[2] / 10, 2U);
}

TEST(ViewSelection, ACameraWhoseViewsAreAllAlikeGetsEnoughOfThemToo) {
  const Views views = RandomViews(60, 10);
  std::vector<Views> cameras(2, views);
  for (size_t i = 0; i < views.size(); ++i) {
    if (i < 50) cameras[1][i].clear();
    if (i >= 50) cameras[0][i] = cameras[1][i] = views[50];
  }
  const auto chosen = batch::SelectSpreadViews(cameras, GRID, std::vector<cv::Size>(2, FRAME), 12);
  ASSERT_EQ(chosen.size(), 12U);
  EXPECT_EQ(std::adjacent_find(chosen.begin(), chosen.end()), chosen.end());
  EXPECT_EQ(std::count_if(chosen.begin(), chosen.end(), [](size_t i) { return i >= 50; }), 5);
}

}  // namespace
