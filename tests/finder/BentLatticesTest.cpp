/// Grids that a wide lens bends too much for a plane.
#include "finder/BentLattices.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "Renderer.h"
#include "finder/WholeGrid.h"
#include "finder/WideSheets.h"

using namespace velmora;

namespace {

using finder::BentLattices;
using finder::CandidateIndex;
using finder::LabelledDiscs;
using finder::Lattice;

const cv::Size GRID(4, 11);

/// A near sheet at the rim of what a fisheye of 180 degrees sees.
class BentSheet : public testing::Test {
 protected:
  void SetUp() override {
    scene_.camera = world::FisheyeFromFieldOfView({640, 480}, 180.0, {0.012, -0.021, 0.009, -0.001});
    scene_.blur = 0.5;
    cv::RNG random(2);
    world::Pose pose;
    ASSERT_TRUE(unit::PlaceWideSheet(scene_.camera, scene_.sheet, 1.0, 55.0, 20.0, random, pose));
    cv::cvtColor(world::Renderer(scene_).Render(pose), grey_, cv::COLOR_BGR2GRAY);
    truth_ = unit::DiscsSeen(scene_.camera, scene_.sheet, pose);
    for (size_t k = 0; k < truth_.gridIndices.size(); ++k)
      candidates_.push_back({truth_.centres[k], truth_.radii[k], 5});
  }

  /// The lattices of all the candidates that a search meets.
  std::vector<Lattice> Lattices() const {
    std::vector<Lattice> lattices;
    const auto keep = [&](const Lattice& lattice) {
      if (lattice.points.size() == candidates_.size()) lattices.push_back(lattice);
      return false;
    };
    const CandidateIndex index(candidates_, grey_.size());
    finder::SearchBudget budget{300000};
    finder::SearchLattices(index, candidates_.size(), 200, budget, keep, keep);
    return lattices;
  }

  bool Find(const std::vector<Lattice>& lattices, LabelledDiscs& discs, const cv::Size& grid = GRID) const {
    BentLattices bent(grid);
    for (const Lattice& lattice : lattices) bent.Keep(lattice);
    return bent.FindGrid(CandidateIndex(candidates_, grey_.size()), grey_, discs);
  }

  world::Scene scene_;
  cv::Mat grey_;
  LabelledDiscs truth_;
  std::vector<finder::DiscCandidate> candidates_;
};

TEST_F(BentSheet, IsFoundInOrderThoughItIsOnNoPlane) {
  const CandidateIndex index(candidates_, grey_.size());
  finder::SearchBudget budget{100000};
  finder::GridProjection plane;
  LabelledDiscs discs = truth_;
  EXPECT_FALSE(plane.Fit(discs) &&
               finder::CompleteGrid(plane, discs, index, grey_, budget) == GridFault::None);
  ASSERT_FALSE(Lattices().empty());
  ASSERT_TRUE(Find(Lattices(), discs));
  ASSERT_EQ(discs.centres.size(), 44U);
  for (size_t k = 0; k < 44; ++k) EXPECT_LT(cv::norm(discs.centres[k] - truth_.centres[k]), 0.5) << k;
}

TEST_F(BentSheet, IsNoGridOfAnotherSize) {
  LabelledDiscs discs;
  EXPECT_FALSE(Find(Lattices(), discs, {4, 9}));
  EXPECT_FALSE(Find(Lattices(), discs, {3, 11}));
}

TEST_F(BentSheet, IsNotFoundWithoutAllItsDiscs) {
  candidates_.pop_back();
  LabelledDiscs discs;
  ASSERT_FALSE(Lattices().empty());
  EXPECT_FALSE(Find(Lattices(), discs));
}

TEST_F(BentSheet, IsNotFoundWhereADiscIsCovered) {
  // Half of it.
  const int radius = cvRound(truth_.radii[21]);
  const cv::Point corner(cvRound(truth_.centres[21].x), cvRound(truth_.centres[21].y) - 2 * radius);
  candidates_[21].centre.x -= 0.42 * radius;
  candidates_[21].radius *= 0.7;
  grey_(cv::Rect(corner, cv::Size(2 * radius, 4 * radius)) & cv::Rect({}, grey_.size())).setTo(225);
  LabelledDiscs discs;
  EXPECT_FALSE(Find(Lattices(), discs));
}

TEST_F(BentSheet, IsNotFoundAmongNoLattices) {
  LabelledDiscs discs;
  EXPECT_FALSE(Find({}, discs));
}

}  // namespace
