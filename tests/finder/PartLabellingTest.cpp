/// Which discs of the grid a part shows.
#include "finder/PartLabelling.h"

#include <gtest/gtest.h>

#include "finder/FinderScenes.h"
#include "finder/FlatDiscs.h"
#include "finder/Pattern.h"

using namespace velmora;

namespace {

using finder::DiscCandidate;
using finder::LabelledDiscs;
using finder::Lattice;
using unit::FLAT_GRID;
using unit::FLAT_RADIUS;
using unit::InFlatGrid;

/// The image of the flat grid without its last row, and with other grid indices for it beyond the border.
cv::Mat WithoutLastRow() {
  const cv::Mat flat = unit::FlatGrid(FLAT_GRID);
  return flat.rowRange(0, cvRound(InFlatGrid({0, 9}).y) + 13);
}

LabelledDiscs Without(const std::vector<size_t>& missing) {
  LabelledDiscs discs = unit::FlatDiscs();
  for (const size_t k : missing) discs.radii[k] = 0.0;
  return discs;
}

bool IsOnly(const LabelledDiscs& discs, const cv::Mat& grey) {
  finder::SearchBudget budget{1000000};
  return finder::IsOnlyLabelling(discs, grey, budget);
}

/// The lattice of discs that are not missing, and of more candidates on grid indices around them.
LabelledDiscs Placed(const LabelledDiscs& discs, const std::vector<std::pair<cv::Point, DiscCandidate>>& more,
                     const cv::Mat& grey, bool& labelled) {
  Lattice lattice;
  lattice.clockwise = false;
  std::vector<DiscCandidate> candidates;
  const auto put = [&](const cv::Point& gridIndex, const DiscCandidate& candidate) {
    lattice.points.push_back({finder::LatticeIndex(gridIndex), static_cast<int>(candidates.size())});
    candidates.push_back(candidate);
  };
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    if (discs.Has(k)) put(discs.gridIndices[k], {discs.centres[k], discs.radii[k], 5});
  }
  for (const auto& [gridIndex, candidate] : more) put(gridIndex, candidate);
  const finder::CandidateIndex index(candidates, grey.size());
  finder::SearchBudget budget{1000000};
  LabelledDiscs found;
  labelled = finder::LabelPart(lattice, index, grey, FLAT_GRID, budget, found);
  return found;
}

TEST(PartLabelling, TakesThreeQuartersOfAGrid) {
  EXPECT_EQ(finder::FewestOfPart({4, 11}), 33);
  EXPECT_EQ(finder::FewestOfPart({5, 5}), 19);
  EXPECT_EQ(finder::FewestOfPart({3, 9}), 21);
}

TEST(PartLabelling, PutsEachDiscOnItsPlace) {
  bool labelled = false;
  const LabelledDiscs discs = Without({40, 41, 42, 43});
  const LabelledDiscs found = Placed(discs, {}, WithoutLastRow(), labelled);
  ASSERT_TRUE(labelled);
  EXPECT_EQ(found.radii, discs.radii);
  for (size_t k = 0; k < 40; ++k) EXPECT_EQ(found.centres[k], discs.centres[k]);
}

TEST(PartLabelling, IsNotMisledBySpecksOnPlacesOfTheLattice) {
  // As many in the row before the first as would make it the last one, if they were discs.
  std::vector<std::pair<cv::Point, DiscCandidate>> specks;
  for (const int x : {1, 3, 5, 7}) specks.push_back({{x, -1}, {InFlatGrid({x, -1}), 0.6 * FLAT_RADIUS, 5}});
  bool labelled = false;
  const LabelledDiscs discs = Without({40, 41, 42, 43});
  const LabelledDiscs found = Placed(discs, specks, WithoutLastRow(), labelled);
  ASSERT_TRUE(labelled);
  EXPECT_EQ(found.radii, discs.radii);
}

TEST(PartLabelling, DropsAStrayBeforeItCounts) {
  const cv::Point2d at = InFlatGrid({3, -1}) + cv::Point2d(0.31 * unit::FLAT_STEP, 0.0);
  bool labelled = false;
  const LabelledDiscs discs = Without({40, 41, 42, 43});
  const LabelledDiscs found = Placed(discs, {{{3, -1}, {at, FLAT_RADIUS, 5}}}, WithoutLastRow(), labelled);
  ASSERT_TRUE(labelled);
  EXPECT_EQ(found.radii, discs.radii);
}

TEST(PartLabelling, IsNotTheOnlyOneWhenWhatSpeaksForItIsNotThere) {
  // As if spots in the row before the first were discs, which there is none of in the image.
  LabelledDiscs discs = unit::FlatDiscs();
  for (size_t k = 0; k < 44; ++k) {
    discs.centres[k] = InFlatGrid(cv::Point(7, 9) - discs.gridIndices[k]);
    if (k >= 40) discs.radii[k] *= k == 43 ? 0.0 : 1.0;
  }
  EXPECT_FALSE(IsOnly(discs, WithoutLastRow()));
}

TEST(PartLabelling, IsNoneOfALargerLattice) {
  std::vector<std::pair<cv::Point, DiscCandidate>> more;
  for (const int x : {1, 3, 5}) more.push_back({{x, -1}, {InFlatGrid({x, -1}), FLAT_RADIUS, 5}});
  bool labelled = true;
  Placed(Without({}), more, unit::FlatGrid(FLAT_GRID), labelled);
  EXPECT_FALSE(labelled);
}

TEST(PartLabelling, IsTheOnlyOneWhileTheRowMissesByTheBorder) {
  EXPECT_TRUE(IsOnly(Without({40, 41, 42, 43}), WithoutLastRow()));
  EXPECT_TRUE(IsOnly(Without({3, 17, 22, 40, 41, 42, 43}), WithoutLastRow())) << "others may be hidden";
}

TEST(PartLabelling, IsNotTheOnlyOneOnceARowIsDroppedInsideThePicture) {
  EXPECT_FALSE(IsOnly(Without({0, 1, 2, 3}), unit::FlatGrid(FLAT_GRID)));
  // As if its last row was the border's: in that image the discs of the first one are missing.
  EXPECT_FALSE(IsOnly(Without({40, 41, 42, 43}), unit::FlatGrid(FLAT_GRID)));
}

TEST(PartLabelling, IsNoneOfLessThanThreeQuarters) {
  std::vector<size_t> missing;
  for (size_t k = 1; k < 44; k += 4) missing.push_back(k);
  ASSERT_EQ(missing.size(), 11U);
  missing.push_back(2);
  EXPECT_FALSE(IsOnly(Without(missing), unit::FlatGrid(FLAT_GRID)));
}

}  // namespace
