/// The choice of the pixels around a disc.
#include "finder/DiscPixels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace velmora;

namespace {

using finder::DiscModel;
using finder::DiscPixels;

constexpr double RADIUS = 20.0;
constexpr double REACH = 1.6;
const cv::Point ORIGIN(50, 45);

finder::FoundDisc Found() {
  finder::FoundDisc found;
  found.centre = ORIGIN;
  found.outline = {1.0 / RADIUS, 0.0, 0.0, 1.0 / RADIUS};
  found.reach = REACH;
  return found;
}

DiscPixels PixelsIn(const cv::Mat& image, DiscPixels::Choice choice) {
  DiscModel::Unknowns unknowns = DiscModel::Unknowns::Zero();
  unknowns(DiscModel::XX) = unknowns(DiscModel::YY) = RADIUS;
  unknowns(DiscModel::BLUR) = 1.0;
  return DiscPixels(image, Found(), ORIGIN, unknowns, RADIUS, choice);
}

/// An image whose values say where they are.
cv::Mat Image() {
  cv::Mat image(90, 100, CV_8U);
  for (int y = 0; y < image.rows; ++y) {
    for (int x = 0; x < image.cols; ++x) image.at<unsigned char>(y, x) = static_cast<unsigned char>(x + y);
  }
  return image;
}

TEST(DiscPixels, AreAllNearTheRimAndSomeOfTheOthersWithinReach) {
  const DiscPixels pixels = PixelsIn(Image(), DiscPixels::Choice::All);
  int nearRim = 0;
  int others = 0;
  for (size_t chunk = 0; chunk < pixels.Chunks().size(); ++chunk) {
    const DiscModel::Pixels& each = pixels.Chunks()[chunk];
    for (Eigen::Index k = 0; k < pixels.CountIn(chunk); ++k) {
      const float distance = std::hypot(each.x(k), each.y(k));
      EXPECT_LE(distance, REACH * RADIUS);
      EXPECT_EQ(each.grade(k), each.x(k) + each.y(k) + 95.0F);
      (std::abs(distance - RADIUS) <= 4.0 ? nearRim : others) += 1;
    }
  }
  // Areas: of a ring of 8 pixels, and a ninth of the rest.
  EXPECT_NEAR(nearRim, CV_PI * (24.0 * 24.0 - 16.0 * 16.0), 30);
  EXPECT_NEAR(others, CV_PI * (32.0 * 32.0 - 24.0 * 24.0 + 16.0 * 16.0) / 9.0, 30);
}

TEST(DiscPixels, FillTheLastChunkWithTheLastPixel) {
  const DiscPixels pixels = PixelsIn(Image(), DiscPixels::Choice::All);
  const size_t last = pixels.Chunks().size() - 1;
  const Eigen::Index count = pixels.CountIn(last);
  EXPECT_EQ(last * DiscModel::CHUNK + static_cast<size_t>(count), pixels.Count());
  const DiscModel::Pixels& chunk = pixels.Chunks()[last];
  for (Eigen::Index k = count; k < DiscModel::CHUNK; ++k) EXPECT_EQ(chunk.x(k), chunk.x(count - 1));
}

TEST(DiscPixels, AreAFourthOfManyWhereFewAreEnough) {
  const size_t all = PixelsIn(Image(), DiscPixels::Choice::All).Count();
  const size_t few = PixelsIn(Image(), DiscPixels::Choice::Few).Count();
  EXPECT_GT(all, 1200U);
  EXPECT_NEAR(4.0 * static_cast<double>(few) / static_cast<double>(all), 1.0, 0.05);
}

TEST(DiscPixels, KnowTheirNeighbours) {
  const DiscPixels pixels = PixelsIn(Image(), DiscPixels::Choice::All);
  EXPECT_FALSE(pixels.IsBesideLast(0));
  int pairs = 0;
  for (size_t k = 1; k < pixels.Count(); ++k) {
    const auto x = [&](size_t i) {
      return pixels.Chunks()[i / DiscModel::CHUNK].x(static_cast<Eigen::Index>(i % DiscModel::CHUNK));
    };
    if (pixels.IsBesideLast(k)) {
      EXPECT_EQ(x(k), x(k - 1) + 1.0F);
      ++pairs;
    }
  }
  EXPECT_GT(pairs, 800);
}

TEST(DiscPixels, EndAtTheBorderOfTheImage) {
  const cv::Mat narrow = Image().colRange(0, 60);
  EXPECT_GT(PixelsIn(narrow, DiscPixels::Choice::All).Count(), 500U);
  EXPECT_EQ(PixelsIn(Image().rowRange(0, 10), DiscPixels::Choice::All).Count(), 0U);
}

}  // namespace
