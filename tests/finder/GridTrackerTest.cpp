/// Following the grid from frame to frame.
#include "finder/GridTracker.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "Renderer.h"
#include "Views.h"
#include "finder/FinderScenes.h"
#include "finder/NearbyGrid.h"
#include "finder/RobustFinder.h"
#include "finder/Sequences.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

/// Centres may differ by this much from those of a search that does not follow, pixels.
constexpr double SAME = 1e-3;

GridFinding FoundAt(const cv::Point2d& offset) {
  GridFinding finding;
  finding.fault = GridFault::None;
  for (int k = 0; k < unit::GRID.area(); ++k) {
    finding.centres.push_back(offset + cv::Point2d(10.0 * k, 3.0 * k));
    finding.radii.push_back(5.0);
  }
  return finding;
}

TEST(GridTracker, ExpectsTheGridWhereItWasAndWhereItWasGoing) {
  GridTracker tracker;
  EXPECT_TRUE(tracker.Expected(unit::FRAME, unit::GRID).empty());
  tracker.Remember(unit::FRAME, unit::GRID, FoundAt({0.0, 0.0}));
  ASSERT_EQ(tracker.Expected(unit::FRAME, unit::GRID).size(), 1U);
  tracker.Remember(unit::FRAME, unit::GRID, FoundAt({8.0, -6.0}));
  const std::vector<finder::ExpectedGrid> expected = tracker.Expected(unit::FRAME, unit::GRID);
  ASSERT_EQ(expected.size(), 2U);
  EXPECT_EQ(expected[0].discs.centres, FoundAt({16.0, -12.0}).centres);
  EXPECT_EQ(expected[1].discs.centres, FoundAt({8.0, -6.0}).centres);
  EXPECT_EQ(expected[0].discs.radii, FoundAt({}).radii);
}

TEST(GridTracker, ExpectsNothingAfterAFrameWithoutTheGridOrOfAnotherSize) {
  GridTracker tracker;
  tracker.Remember(unit::FRAME, unit::GRID, FoundAt({0.0, 0.0}));
  EXPECT_TRUE(tracker.Expected({1280, 720}, unit::GRID).empty());
  EXPECT_TRUE(tracker.Expected(unit::FRAME, {5, 11}).empty());
  tracker.Remember(unit::FRAME, unit::GRID, GridFinding());
  EXPECT_TRUE(tracker.Expected(unit::FRAME, unit::GRID).empty());
  GridFinding faint = FoundAt({0.0, 0.0});
  faint.tone = DiscTone::Faint;
  tracker.Remember(unit::FRAME, unit::GRID, faint);
  EXPECT_TRUE(tracker.Expected(unit::FRAME, unit::GRID).empty());
}

TEST(GridTracker, FollowsAMovingSheetAndFindsWhatASearchOfEachFrameFinds) {
  struct Look {
    double blur, noise, light, k1;
    int clutter;
  };
  for (const Look& look :
       {Look{0.0, 0.0, 0.0, 0.0, 0}, Look{0.7, 2.0, 0.3, -0.25, 30}, Look{1.8, 6.0, 0.4, 0.2, 10}}) {
    SCOPED_TRACE(look.noise);
    world::Scene scene;
    scene.camera = world::CameraFromFieldOfView(unit::FRAME, 60.0, {look.k1, 0.0, 0.0, 0.0, 0.0});
    scene.blur = look.blur;
    scene.noise = look.noise;
    scene.light = look.light;
    scene.clutter = look.clutter;
    world::Renderer renderer(scene);
    const unit::MovingSheet sheet(scene);
    constexpr int COUNT = 80;
    const unit::FollowedFrames all = unit::Follow(COUNT, [&](int k) {
      return renderer.Render(sheet.PoseAt(static_cast<double>(k) / COUNT), static_cast<std::uint64_t>(k));
    });
    EXPECT_EQ(all.otherFaults, 0);
    EXPECT_LT(all.farthest, SAME);
    EXPECT_GT(all.found, 0.9 * COUNT);
    EXPECT_GT(all.followed, 0.75 * all.found);
  }
}

TEST(GridTracker, LosesASheetThatLeavesAndFindsItAgain) {
  world::Scene scene;
  scene.noise = 2.0;
  world::Renderer renderer(scene);
  const world::Pose pose = world::FrontalViews(scene.camera, 1).front();
  const unit::FollowedFrames all = unit::Follow(60, [&](int k) {
    world::Pose moved = pose;
    // Out of the picture on one side, faster and faster, and back.
    const int away = std::min(k, 60 - k);
    moved.tvec[0] += 0.0005 * away * away;
    return renderer.Render(moved, static_cast<std::uint64_t>(k));
  });
  EXPECT_EQ(all.otherFaults, 0);
  EXPECT_LT(all.farthest, SAME);
  EXPECT_GT(all.found, 10);
  EXPECT_LT(all.found, 50) << "cut, and then out of sight";
  EXPECT_GT(all.followed, 0.5 * all.found);
}

TEST(GridTracker, IsNotMisledByAnotherSheetInTheSamePlace) {
  for (const cv::Size& grid : {cv::Size(4, 9), cv::Size(4, 12), cv::Size(4, 13), cv::Size(5, 11)}) {
    SCOPED_TRACE(grid);
    const cv::Mat ours = unit::FlatGrid(unit::GRID);
    cv::Mat other = unit::FlatGrid(grid);
    cv::Mat frame(other.size() + cv::Size(200, 200), CV_8UC1, cv::Scalar(235));
    const cv::Rect at(60, 60, ours.cols, ours.rows);
    GridTracker tracker;
    ours.copyTo(frame(at));
    ASSERT_TRUE(SearchGridRobust(frame, unit::GRID, tracker).Found());
    frame.setTo(235);
    other.copyTo(frame(cv::Rect(at.tl(), other.size())));
    const GridFinding whole = SearchGridRobust(frame, unit::GRID);
    EXPECT_FALSE(whole.Found());
    EXPECT_EQ(SearchGridRobust(frame, unit::GRID, tracker).fault, whole.fault);
  }
}

TEST(GridTracker, SeesThatADiscIsPartlyHidden) {
  const cv::Mat image = unit::FlatGrid(unit::GRID);
  GridTracker tracker;
  const GridFinding found = SearchGridRobust(image, unit::GRID, tracker);
  ASSERT_TRUE(found.Found());
  for (const size_t disc : {size_t{0}, size_t{18}, size_t{43}}) {
    cv::Mat covered = image.clone();
    const cv::Point2d corner = found.centres[disc] - cv::Point2d(12.0, 12.0);
    cv::rectangle(covered, cv::Rect(cvRound(corner.x), cvRound(corner.y), 24, 11), cv::Scalar(235),
                  cv::FILLED);
    const GridFinding whole = SearchGridRobust(covered, unit::GRID);
    EXPECT_FALSE(whole.Found());
    GridTracker copy = tracker;
    EXPECT_EQ(SearchGridRobust(covered, unit::GRID, copy).fault, whole.fault) << disc;
  }
}

TEST(GridTracker, FollowsThroughChangingLight) {
  world::Scene scene;
  scene.noise = 2.0;
  world::Renderer renderer(scene);
  const unit::MovingSheet sheet(scene);
  constexpr int COUNT = 40;
  const unit::FollowedFrames all = unit::Follow(COUNT, [&](int k) {
    cv::Mat frame = renderer.Render(sheet.PoseAt(0.2 + 0.002 * k), static_cast<std::uint64_t>(k));
    // Dimmed, and from frame to frame by as much as half.
    frame.convertTo(frame, -1, k % 3 == 0 ? 0.5 : 0.75 + 0.006 * k, k % 2 == 0 ? 0.0 : 20.0);
    return frame;
  });
  EXPECT_EQ(all.otherFaults, 0);
  EXPECT_LT(all.farthest, SAME);
  EXPECT_EQ(all.found, COUNT);
  EXPECT_GT(all.followed, 0.75 * COUNT);
}

TEST(GridTracker, FollowsLightDiscsToo) {
  world::Scene scene;
  scene.noise = 2.0;
  world::Renderer renderer(scene);
  const unit::MovingSheet sheet(scene);
  constexpr int COUNT = 20;
  const unit::FollowedFrames all = unit::Follow(COUNT, [&](int k) {
    return cv::Mat(cv::Scalar::all(255) -
                   renderer.Render(sheet.PoseAt(0.01 * k), static_cast<std::uint64_t>(k)));
  });
  EXPECT_EQ(all.otherFaults, 0);
  EXPECT_LT(all.farthest, SAME);
  EXPECT_EQ(all.found, COUNT);
  EXPECT_GT(all.followed, 0.75 * COUNT);
}

TEST(GridTracker, FindsNothingInFramesOfOtherThingsWhereTheGridWas) {
  for (int number = 0; number < 40; ++number) {
    GridTracker tracker;
    for (int view = number;; ++view) {
      const cv::Mat image = unit::RandomFinderFrame(view).image;
      if (SearchGridRobust(image, unit::GRID, tracker).Found()) break;
    }
    cv::Mat other = unit::RandomForeignFrame(number);
    if (other.size() != unit::FRAME) cv::resize(other, other, unit::FRAME);
    EXPECT_FALSE(SearchGridRobust(other, unit::GRID, tracker).Found()) << number;
  }
}

TEST(GridTracker, StaysWithTheGridWhenAPartIsAskedForToo) {
  const cv::Mat image = unit::ImageWithGrid();
  GridTracker tracker;
  PartialGrid part;
  for (int frame = 0; frame < 3; ++frame) {
    part.points.resize(3);
    EXPECT_TRUE(SearchGridRobust(image, unit::GRID, tracker, &part).Found());
    EXPECT_FALSE(part.Found());
  }
}

}  // namespace
