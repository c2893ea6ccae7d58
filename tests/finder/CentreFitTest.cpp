/// Centres of whole grids, measured anew.
#include "finder/CentreFit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "finder/DiscPicture.h"
#include "finder/FlatDiscs.h"
#include "finder/Refinement.h"

using namespace velmora;

namespace {

using finder::LabelledDiscs;
using unit::FLAT_GRID;
using unit::FLAT_RADIUS;
using unit::FLAT_STEP;

const cv::Size IMAGE(300, 360);

/// The flat grid in light that falls from one side of each disc to the other by a share, as a lamp near the
/// sheet and the sheet's own gloss make it.
cv::Mat GridPicture(const std::vector<cv::Point2d>& centres, const std::vector<double>& radii, double fall,
                    double noise, std::uint64_t seed) {
  constexpr double PAPER = 150.0;
  cv::Mat exposure(IMAGE, CV_64F, cv::Scalar(PAPER));
  for (size_t k = 0; k < centres.size(); ++k) {
    unit::DiscPicture disc = unit::PictureOfDisc(radii[k], 0.8);
    disc.size = IMAGE;
    disc.centre = centres[k];
    disc.paper.level = 0.0;
    disc.ink.level = -110.0;
    disc.ink.slope = cv::Vec2d(0.8, 0.6) * (110.0 * fall / 2.0);
    exposure += unit::Exposure(disc);
  }
  cv::RNG random(seed);
  return unit::Shot(exposure, noise, random);
}

/// Where the discs are, and where a search that knows only their darkness puts them.
struct Grid {
  explicit Grid(double radius = FLAT_RADIUS, double fall = 0.2, double noise = 2.0, std::uint64_t seed = 6)
      : discs(unit::FlatDiscs()) {
    cv::RNG random(seed + 1);
    for (cv::Point2d& centre : discs.centres) {
      centre += cv::Point2d(random.uniform(-0.5, 0.5), random.uniform(-0.5, 0.5));
    }
    truth = discs.centres;
    std::fill(discs.radii.begin(), discs.radii.end(), radius);
    image = GridPicture(truth, discs.radii, fall, noise, seed);
  }

  void Search() { finder::RefineDiscs(unit::PlaneOf(discs), image, discs); }
  MeasuredCentres Measure() const { return MeasureCentres(image, FLAT_GRID, discs.centres, discs.radii); }

  LabelledDiscs discs;
  std::vector<cv::Point2d> truth;
  cv::Mat image;
};

double RmsOf(const std::vector<cv::Point2d>& centres, const std::vector<cv::Point2d>& truth) {
  double squares = 0.0;
  for (size_t k = 0; k < centres.size(); ++k)
    squares += 0.5 * (centres[k] - truth[k]).dot(centres[k] - truth[k]);
  return std::sqrt(squares / static_cast<double>(centres.size()));
}

TEST(CentreFit, TakesBackWhatUnevenLightDidToTheCentroids) {
  Grid grid;
  grid.Search();
  const MeasuredCentres measured = grid.Measure();
  EXPECT_EQ(std::count(measured.fitted.begin(), measured.fitted.end(), true), FLAT_GRID.area());
  EXPECT_GT(RmsOf(grid.discs.centres, grid.truth), 0.04);
  EXPECT_LT(RmsOf(measured.centres, grid.truth), 0.008);
}

TEST(CentreFit, IsNoWorseThanCentroidsInEvenLight) {
  Grid grid(FLAT_RADIUS, 0.0);
  grid.Search();
  EXPECT_LT(RmsOf(grid.Measure().centres, grid.truth), 1.15 * RmsOf(grid.discs.centres, grid.truth));
}

TEST(CentreFit, KnowsHowFarOffTheCentresAre) {
  for (const double noise : {1.0, 8.0}) {
    double squares = 0.0;
    double predicted = 0.0;
    for (const std::uint64_t seed : {1U, 2U, 3U, 4U}) {
      Grid grid(FLAT_RADIUS, 0.2, noise, seed);
      grid.Search();
      const MeasuredCentres measured = grid.Measure();
      squares += std::pow(RmsOf(measured.centres, grid.truth), 2.0);
      for (const double deviation : measured.deviations)
        predicted += deviation * deviation / FLAT_GRID.area();
    }
    EXPECT_GT(std::sqrt(predicted / squares), 0.8) << noise;
    EXPECT_LT(std::sqrt(predicted / squares), 1.25) << noise;
  }
}

TEST(CentreFit, IsTheSameForLightDiscsOnDark) {
  Grid grid;
  grid.Search();
  const MeasuredCentres dark = grid.Measure();
  grid.image = 255 - grid.image;
  const MeasuredCentres light = grid.Measure();
  EXPECT_LT(RmsOf(light.centres, dark.centres), 1e-3);
}

TEST(CentreFit, GivesTheSameForTheSameImage) {
  const Grid grid;
  EXPECT_EQ(grid.Measure().centres, grid.Measure().centres);
  EXPECT_EQ(grid.Measure().deviations, grid.Measure().deviations);
}

TEST(CentreFit, LeavesSmallDiscsWhereTheyAre) {
  Grid grid(0.9 * LEAST_FITTED_RADIUS);
  grid.Search();
  std::fill(grid.discs.radii.begin(), grid.discs.radii.end(), 0.9 * LEAST_FITTED_RADIUS);
  const MeasuredCentres measured = grid.Measure();
  EXPECT_EQ(measured.centres, grid.discs.centres);
  EXPECT_EQ(std::count(measured.fitted.begin(), measured.fitted.end(), true), 0);
  for (const double deviation : measured.deviations) EXPECT_EQ(deviation, measured.deviations.front());
}

/// A finger's tip over the middle of a disc.
TEST(CentreFit, LeavesADiscThatIsNoneAndLetsItHardlyCount) {
  Grid grid;
  grid.Search();
  constexpr size_t HIDDEN = 20;
  cv::circle(grid.image, grid.truth[HIDDEN] + cv::Point2d(3.0, 1.0), 9, cv::Scalar(120), cv::FILLED);
  const MeasuredCentres measured = grid.Measure();
  EXPECT_FALSE(measured.fitted[HIDDEN]);
  EXPECT_EQ(measured.centres[HIDDEN], grid.discs.centres[HIDDEN]);
  EXPECT_GT(measured.deviations[HIDDEN], 0.1);
  EXPECT_LT(measured.deviations[HIDDEN + 1], 0.02);
}

TEST(CentreFit, LeavesDiscsAloneThatAreNotSeen) {
  Grid grid;
  grid.discs.radii[0] = 0.0;
  grid.discs.radii[43] = 0.0;
  const MeasuredCentres measured = grid.Measure();
  for (const size_t k : {0U, 43U}) {
    EXPECT_EQ(measured.centres[k], grid.discs.centres[k]);
    EXPECT_EQ(measured.deviations[k], 0.0);
  }
  EXPECT_TRUE(measured.fitted[1]);
}

TEST(CentreFit, LeavesEverythingAsItIsWhereThereIsNoGrid) {
  const Grid grid;
  const std::vector<cv::Point2d>& centres = grid.discs.centres;
  const auto isLeft = [&](const MeasuredCentres& measured) {
    return measured.centres == centres && measured.deviations.size() == centres.size() &&
           std::count(measured.fitted.begin(), measured.fitted.end(), true) == 0;
  };
  EXPECT_TRUE(isLeft(MeasureCentres(grid.image, {4, 9}, centres, grid.discs.radii)));
  EXPECT_TRUE(isLeft(MeasureCentres(grid.image, FLAT_GRID, centres, {1.0, 2.0})));
  EXPECT_TRUE(isLeft(MeasureCentres(cv::Mat(), FLAT_GRID, centres, grid.discs.radii)));
  cv::Mat colour;
  cv::cvtColor(grid.image, colour, cv::COLOR_GRAY2BGR);
  EXPECT_TRUE(isLeft(MeasureCentres(colour, FLAT_GRID, centres, grid.discs.radii)));
  const std::vector<cv::Point2d> oneSpot(centres.size(), {100.0, 100.0});
  EXPECT_EQ(MeasureCentres(grid.image, FLAT_GRID, oneSpot, grid.discs.radii).centres, oneSpot);
}

}  // namespace
