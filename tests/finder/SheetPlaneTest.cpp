/// The plane of the discs, and what is checked against it.
#include "finder/SheetPlane.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "finder/Checks.h"
#include "finder/FinderScenes.h"
#include "finder/MissingDiscs.h"
#include "finder/Pattern.h"
#include "finder/Refinement.h"

using namespace velmora;

namespace {

using finder::PlacedDiscs;
using finder::SheetPlane;

const cv::Size GRID(4, 11);
constexpr double STEP = 24.0;

cv::Point2d InFlatGrid(const cv::Point& place) {
  return {STEP * (2.0 + place.x), STEP * (2.0 + place.y)};
}

/// The discs of the flat grid's picture.
PlacedDiscs FlatDiscs() {
  PlacedDiscs discs;
  discs.grid = GRID;
  discs.places = finder::PatternPlaces(GRID);
  for (const cv::Point& place : discs.places) discs.centres.push_back(InFlatGrid(place));
  discs.radii.assign(discs.places.size(), 0.4 * STEP);
  return discs;
}

/// The same as a lens of much distortion has them.
PlacedDiscs BentDiscs() {
  PlacedDiscs discs = FlatDiscs();
  const cv::Point2d middle(5.0 * STEP, 7.0 * STEP);
  for (cv::Point2d& centre : discs.centres) {
    const cv::Point2d ray = (centre - middle) / (7.0 * STEP);
    centre = middle + 7.0 * STEP * (1.0 - 0.2 * ray.dot(ray)) * ray;
  }
  return discs;
}

TEST(SheetPlane, ProjectsAndPredictsPlaces) {
  PlacedDiscs discs = FlatDiscs();
  SheetPlane plane;
  ASSERT_TRUE(plane.Fit(discs));
  EXPECT_LT(cv::norm(plane.Project({3.0, 5.0}) - InFlatGrid({3, 5})), 1e-6);
  EXPECT_NEAR(plane.Step({3.0, 5.0}), STEP, 1e-6);
  discs = BentDiscs();
  ASSERT_TRUE(plane.Fit(discs));
  for (size_t k = 0; k < discs.places.size(); ++k) {
    EXPECT_LT(cv::norm(plane.Predict(discs.places[k]) - discs.centres[k]), 0.02 * STEP);
  }
}

TEST(SheetPlane, IsNoneThroughTooFewOrMirroredDiscs) {
  PlacedDiscs discs = FlatDiscs();
  std::fill(discs.radii.begin() + 6, discs.radii.end(), 0.0);
  SheetPlane plane;
  EXPECT_FALSE(plane.Fit(discs));
  discs = FlatDiscs();
  for (cv::Point2d& centre : discs.centres) centre.x = 400.0 - centre.x;
  EXPECT_FALSE(plane.Fit(discs));
}

TEST(Checks, DropTheStrayAndKeepWhatTheLensBends) {
  PlacedDiscs discs = BentDiscs();
  SheetPlane plane;
  ASSERT_TRUE(plane.Fit(discs));
  EXPECT_TRUE(finder::DropStrays(plane, discs, 6));
  EXPECT_EQ(discs.Missing(), 0);
  EXPECT_TRUE(finder::LiesOnPlane(plane, discs));
  discs.centres[21] += cv::Point2d(0.35 * STEP, 0.0);
  ASSERT_TRUE(plane.Fit(discs));
  EXPECT_FALSE(finder::LiesOnPlane(plane, discs));
  EXPECT_TRUE(finder::DropStrays(plane, discs, 6));
  EXPECT_EQ(discs.Missing(), 1);
  EXPECT_FALSE(discs.Has(21));
}

TEST(Checks, GiveUpWhenTooManyDiscsAreStrays) {
  PlacedDiscs discs = FlatDiscs();
  for (size_t k = 1; k < 44; k += 4)
    discs.centres[k + k % 3] += cv::Point2d(0.4 * STEP, k % 8 == 1 ? 12.0 : -12.0);
  SheetPlane plane;
  ASSERT_TRUE(plane.Fit(discs));
  EXPECT_FALSE(finder::DropStrays(plane, discs, 6));
}

TEST(Checks, SeeThatThePatternGoesOn) {
  const PlacedDiscs discs = FlatDiscs();
  SheetPlane plane;
  ASSERT_TRUE(plane.Fit(discs));
  finder::Effort effort{100000};
  std::vector<finder::Candidate> candidates;
  for (const cv::Point2d& centre : discs.centres) candidates.push_back({centre, 0.4 * STEP, 5});
  EXPECT_FALSE(finder::GoesOn(plane, discs, finder::CandidateIndex(candidates, {640, 480}), effort));
  for (int k = 0; k < 4; ++k) candidates.push_back({InFlatGrid({2 * k + 1, 11}), 0.4 * STEP, 5});
  EXPECT_TRUE(finder::GoesOn(plane, discs, finder::CandidateIndex(candidates, {640, 480}), effort));
}

TEST(Checks, TellAChessboardFromDiscs) {
  const PlacedDiscs discs = FlatDiscs();
  SheetPlane plane;
  ASSERT_TRUE(plane.Fit(discs));
  EXPECT_FALSE(finder::IsChessboard(plane, discs, unit::FlatGrid(GRID, 0.4, STEP)));
  EXPECT_FALSE(finder::IsChessboard(plane, discs, unit::FlatGrid(GRID, 0.5, STEP)));
  cv::Mat board(360, 300, CV_8UC1, cv::Scalar(235));
  for (const cv::Point2d& centre : discs.centres) {
    const cv::Point corner(cvRound(centre.x - STEP / 2), cvRound(centre.y - STEP / 2));
    board(cv::Rect(corner, cv::Size(24, 24))).setTo(25);
  }
  cv::GaussianBlur(board, board, {}, 1.0);
  EXPECT_TRUE(finder::IsChessboard(plane, discs, board));
}

TEST(MissingDiscs, AreRecoveredWhereTheyAreAndNowhereElse) {
  cv::Mat picture = unit::FlatGrid(GRID, 0.4, STEP);
  cv::circle(picture, InFlatGrid({3, 3}), 12, cv::Scalar(235), cv::FILLED);
  PlacedDiscs discs = FlatDiscs();
  const size_t shown = 20;
  const size_t hidden = 13;
  ASSERT_EQ(discs.places[hidden], cv::Point(3, 3));
  discs.radii[shown] = discs.radii[hidden] = 0.0;
  const cv::Point2d truth = discs.centres[shown];
  discs.centres[shown] = {};
  SheetPlane plane;
  ASSERT_TRUE(plane.Fit(discs));
  finder::RecoverMissing(plane, picture, discs);
  EXPECT_EQ(discs.Missing(), 1);
  EXPECT_FALSE(discs.Has(hidden));
  EXPECT_LT(cv::norm(discs.centres[shown] - truth), 0.2);
  EXPECT_NEAR(discs.radii[shown], 0.4 * STEP, 0.4);
  EXPECT_FALSE(finder::MissesOutside(plane, discs, picture.size()));
  EXPECT_TRUE(finder::MissesOutside(plane, discs, {picture.cols, cvRound(InFlatGrid({3, 3}).y)}));
}

TEST(Refinement, MovesCentresToThoseOfTheDarkness) {
  cv::Mat picture = unit::FlatGrid(GRID, 0.4, STEP);
  cv::GaussianBlur(picture, picture, {}, 1.5);
  PlacedDiscs discs = FlatDiscs();
  SheetPlane plane;
  ASSERT_TRUE(plane.Fit(discs));
  for (cv::Point2d& centre : discs.centres) centre += cv::Point2d(0.8, -0.6);
  finder::RefineDiscs(plane, picture, discs);
  for (size_t k = 0; k < discs.places.size(); ++k) {
    EXPECT_LT(cv::norm(discs.centres[k] - InFlatGrid(discs.places[k])), 0.05);
    EXPECT_NEAR(discs.radii[k], 0.4 * STEP, 0.3);
  }
}

TEST(Refinement, LeavesDiscsAloneThatCannotBeTold) {
  PlacedDiscs discs = FlatDiscs();
  SheetPlane plane;
  ASSERT_TRUE(plane.Fit(discs));
  finder::RefineDiscs(plane, cv::Mat(360, 300, CV_8UC1, cv::Scalar(100)), discs);
  EXPECT_EQ(discs.centres, FlatDiscs().centres);
}

}  // namespace
