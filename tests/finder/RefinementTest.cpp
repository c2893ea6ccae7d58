/// Centres by the grey values.
#include "finder/Refinement.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "finder/FinderScenes.h"
#include "finder/FlatDiscs.h"

using namespace velmora;

namespace {

using finder::GridProjection;
using finder::LabelledDiscs;
using unit::FLAT_GRID;
using unit::FLAT_RADIUS;
using unit::FLAT_STEP;
using unit::InFlatGrid;

TEST(Refinement, MovesCentresToThoseOfTheDarkness) {
  cv::Mat image = unit::FlatGrid(FLAT_GRID, 0.4, FLAT_STEP);
  cv::GaussianBlur(image, image, {}, 1.5);
  LabelledDiscs discs = unit::FlatDiscs();
  const GridProjection projection = unit::PlaneOf(discs);
  for (cv::Point2d& centre : discs.centres) centre += cv::Point2d(0.8, -0.6);
  finder::RefineDiscs(projection, image, discs);
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    EXPECT_LT(cv::norm(discs.centres[k] - InFlatGrid(discs.gridIndices[k])), 0.05);
    EXPECT_NEAR(discs.radii[k], FLAT_RADIUS, 0.3);
  }
}

/// Discs of ink, by the share of each pixel that they cover.
cv::Mat Painted(const std::vector<cv::Point2d>& centres, double radius) {
  constexpr int PARTS = 16;
  cv::Mat image(360, 300, CV_8UC1, cv::Scalar(235));
  for (const cv::Point2d& centre : centres) {
    for (int y = cvFloor(centre.y - radius); y <= cvCeil(centre.y + radius); ++y) {
      for (int x = cvFloor(centre.x - radius); x <= cvCeil(centre.x + radius); ++x) {
        int covered = 0;
        for (int part = 0; part < PARTS * PARTS; ++part) {
          const cv::Point2d at(x - 0.5 + (part % PARTS + 0.5) / PARTS,
                               y - 0.5 + (part / PARTS + 0.5) / PARTS);
          if (cv::norm(at - centre) < radius) ++covered;
        }
        const auto tone = cv::saturate_cast<unsigned char>(235 - 210 * covered / (1.0 * PARTS * PARTS));
        unsigned char& pixel = image.at<unsigned char>(y, x);
        pixel = std::min(pixel, tone);
      }
    }
  }
  return image;
}

/// The true centre may be anywhere in its pixel, and the paper of any tone.
TEST(Refinement, KnowsCentresToHundredthsOfAPixel) {
  for (const cv::Point2d& moved : {cv::Point2d(0.3, 0.0), cv::Point2d(0.0, -0.45), cv::Point2d(0.27, 0.71)}) {
    LabelledDiscs discs = unit::FlatDiscs();
    const GridProjection projection = unit::PlaneOf(discs);
    std::vector<cv::Point2d> truth = discs.centres;
    for (cv::Point2d& centre : truth) centre += moved;
    cv::Mat image;
    cv::GaussianBlur(Painted(truth, FLAT_RADIUS), image, {}, 1.0);
    image = 40 + image / 2;
    finder::RefineDiscs(projection, image, discs);
    for (size_t k = 0; k < discs.gridIndices.size(); ++k)
      EXPECT_LT(cv::norm(discs.centres[k] - truth[k]), 0.02) << moved;
  }
}

/// Windows that are off cut large discs, or reach their neighbours: the second round is the better one.
TEST(Refinement, ReachesLargeDiscsFromPixelsAway) {
  constexpr double LARGE = 0.62;
  cv::Mat image;
  cv::GaussianBlur(Painted(unit::FlatDiscs().centres, LARGE * FLAT_STEP), image, {}, 0.7);
  LabelledDiscs discs = unit::FlatDiscs();
  std::fill(discs.radii.begin(), discs.radii.end(), LARGE * FLAT_STEP);
  const GridProjection projection = unit::PlaneOf(discs);
  for (cv::Point2d& centre : discs.centres) centre += cv::Point2d(2.0, 2.0);
  finder::RefineDiscs(projection, image, discs);
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    EXPECT_LT(cv::norm(discs.centres[k] - InFlatGrid(discs.gridIndices[k])), 0.12) << k;
  }
}

TEST(Refinement, TakesTheRadiusOfAsMuchDarkness) {
  for (const double share : {0.25, 0.45}) {
    cv::Mat image = unit::FlatGrid(FLAT_GRID, share, FLAT_STEP);
    cv::GaussianBlur(image, image, {}, 1.0);
    LabelledDiscs discs = unit::FlatDiscs();
    finder::RefineDiscs(unit::PlaneOf(discs), image, discs);
    for (const double radius : discs.radii) EXPECT_NEAR(radius, share * FLAT_STEP, 0.15) << share;
  }
}

TEST(Refinement, LeavesDiscsAloneThatCannotBeTold) {
  LabelledDiscs discs = unit::FlatDiscs();
  finder::RefineDiscs(unit::PlaneOf(discs), cv::Mat(360, 300, CV_8UC1, cv::Scalar(100)), discs);
  EXPECT_EQ(discs.centres, unit::FlatDiscs().centres);
  EXPECT_EQ(discs.radii, unit::FlatDiscs().radii);
}

/// Something dark beside a disc draws its darkness farther away than the disc can have been.
TEST(Refinement, MovesNoCentreFar) {
  const cv::Point2d at = unit::FlatDiscs().centres[17];
  cv::Mat image(360, 300, CV_8UC1, cv::Scalar(235));
  image(cv::Rect(cvRound(at.x) - 4, cvRound(at.y) - 12, 20, 25)).setTo(25);
  LabelledDiscs discs = unit::FlatDiscs();
  finder::RefineDiscs(unit::PlaneOf(discs), image, discs);
  EXPECT_EQ(discs.centres[17], at);
  EXPECT_EQ(discs.radii[17], FLAT_RADIUS);
}

}  // namespace
