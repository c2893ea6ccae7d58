/// What tells the grid from other things.
#include "finder/Checks.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "finder/FinderScenes.h"
#include "finder/FlatDiscs.h"

using namespace velmora;

namespace {

using finder::DiscCandidate;
using finder::GridProjection;
using finder::LabelledDiscs;
using unit::FLAT_GRID;
using unit::FLAT_RADIUS;
using unit::FLAT_STEP;
using unit::InFlatGrid;
using unit::PlaneOf;

/// Candidates that the discs were taken from.
std::vector<DiscCandidate> CandidatesOf(const LabelledDiscs& discs) {
  std::vector<DiscCandidate> candidates;
  for (size_t k = 0; k < discs.gridIndices.size(); ++k)
    candidates.push_back({discs.centres[k], discs.radii[k], 5});
  return candidates;
}

bool GoOn(const std::vector<DiscCandidate>& candidates) {
  const LabelledDiscs discs = unit::FlatDiscs();
  finder::SearchBudget budget{100000};
  const finder::CandidateIndex index(candidates, {640, 480});
  return finder::GoesOn(PlaneOf(discs), discs, index, budget);
}

TEST(Checks, RejectTheOutlierAndKeepWhatTheLensDistorts) {
  LabelledDiscs discs = unit::BentDiscs();
  GridProjection projection = PlaneOf(discs);
  EXPECT_TRUE(finder::RejectOutliers(projection, discs, 6));
  EXPECT_EQ(discs.Missing(), 0);
  EXPECT_TRUE(finder::FitsProjection(projection, discs));
  discs.centres[21] += cv::Point2d(0.35 * FLAT_STEP, 0.0);
  ASSERT_TRUE(projection.Fit(discs));
  EXPECT_FALSE(finder::FitsProjection(projection, discs));
  EXPECT_TRUE(finder::RejectOutliers(projection, discs, 6));
  EXPECT_EQ(discs.Missing(), 1);
  EXPECT_FALSE(discs.Has(21));
}

TEST(Checks, RejectAllOutliersAndNothingElse) {
  LabelledDiscs discs = unit::FlatDiscs();
  for (const size_t outlier : {3U, 18U, 40U})
    discs.centres[outlier] += cv::Point2d(-0.4 * FLAT_STEP, 0.3 * FLAT_STEP);
  GridProjection projection = PlaneOf(discs);
  EXPECT_TRUE(finder::RejectOutliers(projection, discs, 3));
  for (size_t k = 0; k < 44; ++k) EXPECT_EQ(discs.Has(k), k != 3 && k != 18 && k != 40) << k;
  // What is left agrees with the projection again.
  for (size_t k = 0; k < 44; ++k) {
    EXPECT_LT(cv::norm(projection.Predict(discs.gridIndices[k]) - InFlatGrid(discs.gridIndices[k])), 1e-6)
        << k;
  }
}

TEST(Checks, LookPastDiscsThatAreMissingAlready) {
  LabelledDiscs discs = unit::FlatDiscs();
  discs.radii[10] = 0.0;
  discs.centres[10] = {};
  GridProjection projection = PlaneOf(discs);
  EXPECT_TRUE(finder::RejectOutliers(projection, discs, 6));
  EXPECT_EQ(discs.Missing(), 1);
}

TEST(Checks, GiveUpWhenTooManyDiscsAreOutliers) {
  LabelledDiscs discs = unit::FlatDiscs();
  for (size_t k = 1; k < 44; k += 4)
    discs.centres[k + k % 3] += cv::Point2d(0.4 * FLAT_STEP, k % 8 == 1 ? 12.0 : -12.0);
  GridProjection projection = PlaneOf(discs);
  EXPECT_FALSE(finder::RejectOutliers(projection, discs, 6));
}

TEST(Checks, TakeNoGridThatIsOffThePlaneTogether) {
  LabelledDiscs discs = unit::FlatDiscs();
  const GridProjection flat = PlaneOf(discs);
  EXPECT_TRUE(finder::FitsProjection(flat, discs));
  // A distortion that the polynomial follows, so that none is an outlier, but which no lens has.
  for (size_t k = 0; k < 44; ++k) {
    const double v = (discs.gridIndices[k].y - 5.0) / 5.0;
    discs.centres[k].x += 1.1 * FLAT_STEP * v * v;
  }
  GridProjection projection;
  ASSERT_TRUE(projection.Fit(discs));
  for (size_t k = 0; k < 44; ++k) EXPECT_LT(projection.ScaledResidual(discs, k), 0.05) << k;
  EXPECT_FALSE(finder::FitsProjection(projection, discs));
}

TEST(Checks, SeeThatThePatternGoesOn) {
  std::vector<DiscCandidate> candidates = CandidatesOf(unit::FlatDiscs());
  EXPECT_FALSE(GoOn(candidates));
  for (int k = 0; k < 3; ++k) candidates.push_back({InFlatGrid({2 * k + 1, 11}), FLAT_RADIUS, 5});
  EXPECT_FALSE(GoOn(candidates)) << "three may be an accident";
  candidates.push_back({InFlatGrid({7, 11}), FLAT_RADIUS, 5});
  EXPECT_TRUE(GoOn(candidates));
}

TEST(Checks, SeeThatThePatternGoesOnAtAnySide) {
  const std::vector<std::vector<cv::Point>> sides = {{{1, -1}, {3, -1}, {5, -1}, {7, -1}},
                                                     {{-1, 1}, {-1, 3}, {-1, 5}, {-1, 7}},
                                                     {{-2, 0}, {-2, 2}, {-2, 4}, {-2, 6}},
                                                     {{8, 0}, {8, 2}, {8, 4}, {8, 6}},
                                                     {{9, 1}, {9, 3}, {9, 5}, {9, 7}}};
  for (const std::vector<cv::Point>& side : sides) {
    std::vector<DiscCandidate> candidates = CandidatesOf(unit::FlatDiscs());
    for (const cv::Point& gridIndex : side) candidates.push_back({InFlatGrid(gridIndex), FLAT_RADIUS, 5});
    EXPECT_TRUE(GoOn(candidates)) << side;
  }
}

TEST(Checks, SeeNoPatternInSpotsOfOtherSizesAndPositions) {
  const std::vector<DiscCandidate> grid = CandidatesOf(unit::FlatDiscs());
  for (const double radius : {0.5 * FLAT_RADIUS, 1.6 * FLAT_RADIUS}) {
    std::vector<DiscCandidate> candidates = grid;
    for (int k = 0; k < 4; ++k) candidates.push_back({InFlatGrid({2 * k + 1, 11}), radius, 5});
    EXPECT_FALSE(GoOn(candidates)) << radius;
  }
  std::vector<DiscCandidate> candidates = grid;
  for (int k = 0; k < 4; ++k) {
    candidates.push_back({InFlatGrid({2 * k + 1, 11}) + cv::Point2d(0.0, 0.3 * FLAT_STEP), FLAT_RADIUS, 5});
  }
  EXPECT_FALSE(GoOn(candidates)) << "beside the places";
}

TEST(Checks, TellAChessboardFromDiscs) {
  const LabelledDiscs discs = unit::FlatDiscs();
  const GridProjection projection = PlaneOf(discs);
  EXPECT_FALSE(finder::IsChessboard(projection, discs, unit::FlatGrid(FLAT_GRID, 0.4, FLAT_STEP)));
  EXPECT_FALSE(finder::IsChessboard(projection, discs, unit::FlatGrid(FLAT_GRID, 0.5, FLAT_STEP)));
  cv::Mat board(360, 300, CV_8UC1, cv::Scalar(235));
  for (const cv::Point2d& centre : discs.centres) {
    const cv::Point corner(cvRound(centre.x - FLAT_STEP / 2), cvRound(centre.y - FLAT_STEP / 2));
    board(cv::Rect(corner, cv::Size(24, 24))).setTo(25);
  }
  cv::GaussianBlur(board, board, {}, 1.0);
  EXPECT_TRUE(finder::IsChessboard(projection, discs, board));
}

TEST(Checks, SayNothingOfDiscsThatAreMissing) {
  LabelledDiscs discs = unit::FlatDiscs();
  for (const size_t k : {0U, 9U, 30U, 43U}) {
    discs.radii[k] = 0.0;
    discs.centres[k] = {-1000.0, 5000.0};
  }
  const GridProjection projection = PlaneOf(discs);
  EXPECT_TRUE(finder::FitsProjection(projection, discs));
  EXPECT_FALSE(finder::IsChessboard(projection, discs, unit::FlatGrid(FLAT_GRID)));
}

TEST(Checks, CountDiscsAroundTheGrid) {
  const LabelledDiscs discs = unit::FlatDiscs();
  std::vector<DiscCandidate> candidates = CandidatesOf(discs);
  for (const int x : {1, 5}) candidates.push_back({InFlatGrid({x, -1}), FLAT_RADIUS, 5});
  candidates.push_back({InFlatGrid({3, -1}), 0.5 * FLAT_RADIUS, 5});
  finder::SearchBudget budget{100000};
  const finder::CandidateIndex index(candidates, {640, 480});
  EXPECT_EQ(finder::CountBeyond(PlaneOf(discs), discs, index, budget), 2);
}

}  // namespace
