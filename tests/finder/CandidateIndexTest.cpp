/// Candidates by their position in the image.
#include "finder/CandidateIndex.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace velmora;

namespace {

using finder::CandidateIndex;
using finder::DiscCandidate;
using finder::SearchBudget;

const cv::Size FRAME_SIZE(640, 480);

std::vector<DiscCandidate> Strewn(int count) {
  cv::RNG random(12);
  std::vector<DiscCandidate> candidates;
  for (int k = 0; k < count; ++k) {
    candidates.push_back({{random.uniform(0.0, 640.0), random.uniform(0.0, 480.0)}, 5.0, 3});
  }
  return candidates;
}

bool Any(int) {
  return true;
}

/// What Nearest() is to find, by a comparison with every candidate.
template <typename Wanted>
int NearestOfAll(const std::vector<DiscCandidate>& candidates, const cv::Point2d& at, double reach,
                 Wanted wanted) {
  int nearest = -1;
  double least = reach;
  for (size_t k = 0; k < candidates.size(); ++k) {
    const double distance = cv::norm(candidates[k].centre - at);
    if (distance > least || !wanted(static_cast<int>(k))) continue;
    nearest = static_cast<int>(k);
    least = distance;
  }
  return nearest;
}

TEST(CandidateIndex, FindsTheNearestOneAsALookupOfAllDoes) {
  for (const int count : {1, 40, 2000}) {
    const std::vector<DiscCandidate> candidates = Strewn(count);
    const CandidateIndex index(candidates, FRAME_SIZE);
    cv::RNG random(5);
    SearchBudget budget{1 << 30};
    int found = 0;
    for (int look = 0; look < 300; ++look) {
      const cv::Point2d at(random.uniform(-60.0, 700.0), random.uniform(-60.0, 540.0));
      const double reach = random.uniform(0.0, 150.0);
      const int expected = NearestOfAll(candidates, at, reach, Any);
      EXPECT_EQ(index.Nearest(at, reach, budget, Any), expected) << count << at << reach;
      if (expected >= 0) ++found;
    }
    EXPECT_GT(found, 5);
  }
}

TEST(CandidateIndex, PassesOverTheUnwanted) {
  const std::vector<DiscCandidate> candidates = Strewn(500);
  const CandidateIndex index(candidates, FRAME_SIZE);
  const auto third = [](int k) { return k % 3 == 0; };
  cv::RNG random(6);
  SearchBudget budget{1 << 30};
  for (int look = 0; look < 200; ++look) {
    const cv::Point2d at(random.uniform(0.0, 640.0), random.uniform(0.0, 480.0));
    EXPECT_EQ(index.Nearest(at, 60.0, budget, third), NearestOfAll(candidates, at, 60.0, third)) << at;
  }
  EXPECT_EQ(index.Nearest({320.0, 240.0}, 900.0, budget, [](int) { return false; }), -1);
}

TEST(CandidateIndex, ReachesToItsReachAndNoFarther) {
  const CandidateIndex index({{{100.0, 100.0}, 5.0, 3}}, FRAME_SIZE);
  SearchBudget budget{1000};
  EXPECT_EQ(index.Nearest({110.0, 100.0}, 10.0, budget, Any), 0);
  EXPECT_EQ(index.Nearest({110.0, 100.0}, 9.99, budget, Any), -1);
  EXPECT_EQ(index.Nearest({100.0, 100.0}, 0.0, budget, Any), 0);
}

TEST(CandidateIndex, VisitsEachOneOfACircleOnce) {
  const std::vector<DiscCandidate> candidates = Strewn(800);
  const CandidateIndex index(candidates, FRAME_SIZE);
  const cv::Point2d at(300.0, 200.0);
  constexpr double REACH = 70.0;
  std::vector<int> visits(candidates.size(), 0);
  SearchBudget budget{1 << 30};
  index.Visit(at, REACH, budget, [&](int k) { ++visits[static_cast<size_t>(k)]; });
  size_t inside = 0;
  for (size_t k = 0; k < candidates.size(); ++k) {
    const bool within = cv::norm(candidates[k].centre - at) <= REACH;
    if (within) {
      ++inside;
      EXPECT_EQ(visits[k], 1) << candidates[k].centre;
    }
    EXPECT_LE(visits[k], 1) << candidates[k].centre;
  }
  EXPECT_GT(inside, 20U);
  // Not all of the image's either: that would be no index.
  EXPECT_LT(std::count(visits.begin(), visits.end(), 1), 200);
}

TEST(CandidateIndex, FindsWhatLiesBeyondThePicture) {
  const CandidateIndex index({{{-30.0, 20.0}, 5.0, 3}, {{700.0, 500.0}, 5.0, 3}}, FRAME_SIZE);
  SearchBudget budget{1000};
  EXPECT_EQ(index.Nearest({-25.0, 20.0}, 10.0, budget, Any), 0);
  EXPECT_EQ(index.Nearest({695.0, 495.0}, 10.0, budget, Any), 1);
}

TEST(CandidateIndex, HasOneCellAtLeast) {
  const CandidateIndex index({{{4.0, 4.0}, 2.0, 3}}, {9, 9});
  SearchBudget budget{1000};
  EXPECT_EQ(index.Nearest({8.0, 8.0}, 6.0, budget, Any), 0);
  EXPECT_GE(budget.left, 990);
}

TEST(CandidateIndex, SpendsBudgetOnWhatItLooksUp) {
  const CandidateIndex none({}, FRAME_SIZE);
  SearchBudget budget{100};
  EXPECT_EQ(none.Nearest({50.0, 50.0}, 5.0, budget, Any), -1);
  EXPECT_LT(budget.left, 100);
  const CandidateIndex threadGroup(std::vector<DiscCandidate>(70, {{50.0, 50.0}, 5.0, 3}), FRAME_SIZE);
  EXPECT_FALSE(budget.Spent());
  threadGroup.Nearest({50.0, 50.0}, 0.5, budget, Any);
  EXPECT_LE(budget.left, 29);
  threadGroup.Nearest({50.0, 50.0}, 0.5, budget, Any);
  EXPECT_TRUE(budget.Spent());
}

TEST(CandidateIndex, KeepsACopyOfTheList) {
  std::vector<DiscCandidate> candidates = Strewn(10);
  const CandidateIndex index(candidates, FRAME_SIZE);
  const cv::Point2d first = candidates[0].centre;
  candidates.clear();
  EXPECT_EQ(index.Count(), 10);
  EXPECT_EQ(index[0].centre, first);
  EXPECT_EQ(index.All().size(), 10U);
}

}  // namespace
