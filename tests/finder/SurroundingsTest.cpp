/// What the discs around a grid point say about it.
#include "finder/Surroundings.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "finder/Elimination.h"
#include "finder/FinderScenes.h"
#include "finder/FlatDiscs.h"

using namespace velmora;

namespace {

using finder::ExpectedDisc;
using finder::GridProjection;
using finder::LabelledDiscs;
using unit::FLAT_GRID;
using unit::FLAT_RADIUS;
using unit::FLAT_STEP;
using unit::Wide;

constexpr size_t MIDDLE = 21;

bool Expect(const LabelledDiscs& discs, size_t k, ExpectedDisc& expected) {
  return finder::ExpectDisc(unit::PlaneOf(discs), discs, k, expected);
}

/// Discs whose centres are polynomials of second degree of their grid indices, and whose radii grow by a
/// share a step.
LabelledDiscs CurvedDiscs() {
  LabelledDiscs discs = unit::FlatDiscs();
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    const double x = discs.gridIndices[k].x;
    const double y = discs.gridIndices[k].y;
    discs.centres[k] = {100.0 + 30.0 * x + 2.0 * y + 0.3 * x * x - 0.2 * x * y + 0.1 * y * y,
                        60.0 - 3.0 * x + 26.0 * y - 0.1 * x * x + 0.25 * x * y - 0.15 * y * y};
    discs.radii[k] = 8.0 * std::exp(0.03 * x - 0.02 * y);
  }
  return discs;
}

TEST(Surroundings, ContinueTheDiscsAroundAGridPoint) {
  const LabelledDiscs discs = CurvedDiscs();
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    ExpectedDisc expected;
    ASSERT_TRUE(Expect(discs, k, expected)) << k;
    const double x = discs.gridIndices[k].x;
    const double y = discs.gridIndices[k].y;
    EXPECT_LT(cv::norm(expected.centre - discs.centres[k]), 1e-5) << k;
    const cv::Matx22d slope(30.0 + 0.6 * x - 0.2 * y, 2.0 - 0.2 * x + 0.2 * y, -3.0 - 0.2 * x + 0.25 * y,
                            26.0 + 0.25 * x - 0.3 * y);
    EXPECT_LT(cv::norm(expected.slope - slope), 1e-5) << k;
    EXPECT_NEAR(expected.radius * std::sqrt(cv::determinant(slope)), discs.radii[k], 1e-5) << k;
  }
}

TEST(Surroundings, TakeNoWordFromTheDiscItself) {
  LabelledDiscs discs = CurvedDiscs();
  const GridProjection projection = unit::PlaneOf(discs);
  ExpectedDisc before;
  ASSERT_TRUE(finder::ExpectDisc(projection, discs, MIDDLE, before));
  discs.centres[MIDDLE] += cv::Point2d(9.0, -7.0);
  discs.radii[MIDDLE] *= 1.3;
  ExpectedDisc after;
  ASSERT_TRUE(finder::ExpectDisc(projection, discs, MIDDLE, after));
  EXPECT_EQ(before.centre, after.centre);
  EXPECT_EQ(before.radius, after.radius);
}

TEST(Surroundings, HardlyListenToOneThatDisagrees) {
  LabelledDiscs discs = unit::FlatDiscs();
  const GridProjection projection = unit::PlaneOf(discs);
  const int neighbour = discs.At(discs.gridIndices[MIDDLE] + cv::Point(1, 1));
  ASSERT_GE(neighbour, 0);
  discs.centres[static_cast<size_t>(neighbour)] += cv::Point2d(0.4 * FLAT_STEP, 0.2 * FLAT_STEP);
  ExpectedDisc expected;
  ASSERT_TRUE(finder::ExpectDisc(projection, discs, MIDDLE, expected));
  EXPECT_LT(cv::norm(expected.centre - discs.centres[MIDDLE]), 0.1);
}

TEST(Surroundings, SayNothingWhenTheyAreTooFewOrTooLarge) {
  LabelledDiscs discs = unit::FlatDiscs();
  const GridProjection projection = unit::PlaneOf(discs);
  ExpectedDisc expected;
  int known = 0;
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    const cv::Point apart = discs.gridIndices[k] - discs.gridIndices[MIDDLE];
    const bool near = k != MIDDLE && std::max(std::abs(apart.x), std::abs(apart.y)) <= 4;
    if (near && ++known > 8) discs.radii[k] = 0.0;
  }
  ASSERT_GT(known, 20);
  EXPECT_FALSE(finder::ExpectDisc(projection, discs, MIDDLE, expected))
      << "eight around it, and others far away";
  discs = unit::FlatDiscs();
  std::fill(discs.radii.begin(), discs.radii.end(), 1.05 * FLAT_STEP);
  EXPECT_FALSE(finder::ExpectDisc(projection, discs, MIDDLE, expected)) << "discs that overlap are none";
}

/// Squares weighted by how far off the polynomial each disc was before: four rounds of them, by elimination.
cv::Vec3d WordByElimination(const GridProjection& projection, const LabelledDiscs& discs, size_t k) {
  struct Neighbour {
    std::vector<Wide> terms, says;
  };
  std::vector<Neighbour> neighbours;
  for (size_t other = 0; other < discs.gridIndices.size(); ++other) {
    const cv::Point apart = discs.gridIndices[other] - discs.gridIndices[k];
    if (other == k || std::abs(apart.x) > 4 || std::abs(apart.y) > 4 || !discs.Has(other)) continue;
    const Wide x = apart.x;
    const Wide y = apart.y;
    neighbours.push_back({{1.0L, x, y, x * x, x * y, y * y},
                          {discs.centres[other].x, discs.centres[other].y, std::log(discs.radii[other])}});
  }
  const double limit = 0.02 * projection.Step(discs.gridIndices[k]);
  unit::WideMatrix says(6, std::vector<Wide>(2, 0.0L));
  Wide radius = 0.0L;
  for (int round = 0; round < 4; ++round) {
    unit::WideEquations gridIndices(6, 2, 1e-9L);
    unit::WideEquations sizes(3, 1, 1e-9L);
    for (const Neighbour& neighbour : neighbours) {
      Wide square = 0.0L;
      for (size_t axis = 0; axis < 2; ++axis) {
        Wide left = neighbour.says[axis];
        for (size_t term = 0; term < 6; ++term) left -= says[term][axis] * neighbour.terms[term];
        square += left * left / (limit * limit);
      }
      const Wide weight = round == 0 ? 1.0L : 1.0L / (1.0L + square);
      gridIndices.Add(neighbour.terms, {neighbour.says[0], neighbour.says[1]}, weight);
      sizes.Add({1.0L, neighbour.terms[1], neighbour.terms[2]}, {neighbour.says[2]}, weight);
    }
    says = gridIndices.Solve();
    radius = std::exp(sizes.Solve()[0][0]);
  }
  return {static_cast<double>(says[0][0]), static_cast<double>(says[0][1]), static_cast<double>(radius)};
}

TEST(Surroundings, SayWhatEliminationDoesAtCornersAndWithGapsAndOutliers) {
  const cv::Matx33d H(38.0, 6.0, 120.0, -9.0, 26.0, 100.0, 0.01, 0.03, 1.0);
  cv::RNG random(8);
  for (int trial = 0; trial < 20; ++trial) {
    LabelledDiscs discs = unit::DiscsProjectedBy(H, FLAT_GRID);
    const GridProjection projection = unit::PlaneOf(discs);
    for (cv::Point2d& centre : discs.centres)
      centre += cv::Point2d(random.gaussian(0.3), random.gaussian(0.3));
    for (double& radius : discs.radii) radius *= random.uniform(0.95, 1.05);
    for (int gap = 0; gap < 10; ++gap) discs.radii[static_cast<size_t>(random.uniform(0, 44))] = 0.0;
    discs.centres[static_cast<size_t>(random.uniform(0, 44))].x += 6.0;
    int told = 0;
    for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
      ExpectedDisc expected;
      if (!finder::ExpectDisc(projection, discs, k, expected)) continue;
      ++told;
      const cv::Vec3d word = WordByElimination(projection, discs, k);
      EXPECT_LT(cv::norm(expected.centre - cv::Point2d(word[0], word[1])), 1e-7) << trial << ", " << k;
      const double radius = expected.radius * std::sqrt(std::abs(cv::determinant(expected.slope)));
      EXPECT_NEAR(radius, word[2], 1e-7) << trial << ", " << k;
    }
    EXPECT_GT(told, 30) << trial;
  }
}

TEST(Surroundings, HaveTheMedianContrastOfTheNearestDiscs) {
  const LabelledDiscs discs = unit::FlatDiscs();
  const GridProjection projection = unit::PlaneOf(discs);
  cv::Mat image = unit::FlatGrid(FLAT_GRID, 0.4, FLAT_STEP);
  EXPECT_EQ(finder::Contrasts(projection, image, discs).Around(MIDDLE), 210.0);
  // Neither the disc itself, nor one of its neighbours, nor far ones change it.
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    const cv::Point apart = discs.gridIndices[k] - discs.gridIndices[MIDDLE];
    const bool near = std::max(std::abs(apart.x), std::abs(apart.y)) <= 2;
    if (near && k != MIDDLE && apart != cv::Point(1, 1)) continue;
    cv::circle(image, discs.centres[k], cvCeil(FLAT_RADIUS), cv::Scalar(135), cv::FILLED);
  }
  EXPECT_EQ(finder::Contrasts(projection, image, discs).Around(MIDDLE), 210.0);
}

TEST(Surroundings, HaveNoContrastWithoutDiscs) {
  LabelledDiscs discs = unit::FlatDiscs();
  const GridProjection projection = unit::PlaneOf(discs);
  const cv::Mat image = unit::FlatGrid(FLAT_GRID, 0.4, FLAT_STEP);
  EXPECT_EQ(finder::Contrasts(projection, cv::Mat(360, 300, CV_8UC1, cv::Scalar(90)), discs).Around(MIDDLE),
            0.0);
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    if (k != MIDDLE) discs.radii[k] = 0.0;
  }
  EXPECT_EQ(finder::Contrasts(projection, image, discs).Around(MIDDLE), 0.0);
}

}  // namespace
