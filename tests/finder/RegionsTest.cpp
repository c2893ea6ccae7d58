/// Dark regions against the library's own labelling.
#include "finder/Regions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <opencv2/imgproc.hpp>

using namespace velmora;

namespace {

using finder::Region;

bool Before(const Region& a, const Region& b) {
  return std::tie(a.box.y, a.box.x, a.area) < std::tie(b.box.y, b.box.x, b.area);
}

/// All regions below a level by connected components of the thresholded image.
std::vector<Region> Labelled(const cv::Mat& grey, int level) {
  cv::Mat labels, stats, centroids;
  const int count = cv::connectedComponentsWithStats(grey < level, labels, stats, centroids, 4, CV_32S);
  std::vector<Region> regions;
  for (int k = 1; k < count; ++k) {
    Region region;
    region.area = stats.at<int>(k, cv::CC_STAT_AREA);
    region.box = {stats.at<int>(k, cv::CC_STAT_LEFT), stats.at<int>(k, cv::CC_STAT_TOP),
                  stats.at<int>(k, cv::CC_STAT_WIDTH), stats.at<int>(k, cv::CC_STAT_HEIGHT)};
    region.centroid = {centroids.at<double>(k, 0), centroids.at<double>(k, 1)};
    const cv::Moments moments = cv::moments(labels == k, true);
    region.xx = moments.mu20 / moments.m00;
    region.xy = moments.mu11 / moments.m00;
    region.yy = moments.mu02 / moments.m00;
    regions.push_back(region);
  }
  std::sort(regions.begin(), regions.end(), Before);
  return regions;
}

cv::Mat Texture(const cv::Size& size) {
  cv::RNG random(5);
  cv::Mat grey(size, CV_8UC1);
  random.fill(grey, cv::RNG::UNIFORM, 0, 256);
  cv::blur(grey, grey, {3, 3});
  return grey;
}

TEST(Regions, AreThoseOfConnectedComponentsAtEveryLevel) {
  for (const cv::Size& size : {cv::Size(61, 47), cv::Size(64, 9), cv::Size(7, 30), cv::Size(1, 5)}) {
    SCOPED_TRACE(size);
    const cv::Mat grey = Texture(size);
    const std::vector<int> levels = {70, 120, 121, 160, 256};
    finder::RegionLimits limits;
    limits.skipCut = false;
    const std::vector<Region> all = finder::FindDarkRegions(grey, levels, limits);
    for (size_t level = 0; level < levels.size(); ++level) {
      std::vector<Region> regions;
      std::copy_if(all.begin(), all.end(), std::back_inserter(regions),
                   [&](const Region& region) { return region.level == static_cast<int>(level); });
      std::sort(regions.begin(), regions.end(), Before);
      const std::vector<Region> expected = Labelled(grey, levels[level]);
      ASSERT_EQ(regions.size(), expected.size()) << level;
      for (size_t k = 0; k < regions.size(); ++k) {
        EXPECT_EQ(regions[k].area, expected[k].area);
        EXPECT_EQ(regions[k].box, expected[k].box);
        EXPECT_LT(cv::norm(regions[k].centroid - expected[k].centroid), 1e-9);
        EXPECT_NEAR(regions[k].xx, expected[k].xx, 1e-6);
        EXPECT_NEAR(regions[k].xy, expected[k].xy, 1e-6);
        EXPECT_NEAR(regions[k].yy, expected[k].yy, 1e-6);
      }
    }
  }
}

TEST(Regions, ThatReachTheEdgeOrAreOutsideTheLimitsArePassedOver) {
  cv::Mat grey(40, 60, CV_8UC1, cv::Scalar(200));
  grey(cv::Rect(0, 10, 5, 5)).setTo(10);
  grey(cv::Rect(55, 10, 5, 5)).setTo(10);
  grey(cv::Rect(20, 35, 5, 5)).setTo(10);
  grey(cv::Rect(10, 10, 2, 2)).setTo(10);
  grey(cv::Rect(20, 10, 4, 4)).setTo(10);
  grey(cv::Rect(30, 10, 10, 10)).setTo(10);
  finder::RegionLimits limits;
  limits.minArea = 5.0;
  limits.maxArea = 50.0;
  const std::vector<Region> regions = finder::FindDarkRegions(grey, {100}, limits);
  ASSERT_EQ(regions.size(), 1U);
  EXPECT_EQ(regions[0].box, cv::Rect(20, 10, 4, 4));
}

TEST(Regions, OfALevelInTheNoiseAreGivenUpAndThoseOfOthersAreNot) {
  cv::Mat grey(200, 200, CV_8UC1);
  cv::RNG random(3);
  random.fill(grey, cv::RNG::UNIFORM, 100, 200);
  cv::circle(grey, {100, 100}, 12, cv::Scalar(20), cv::FILLED);
  finder::RegionLimits limits;
  limits.maxRunsPerLevel = 400;
  const std::vector<Region> regions = finder::FindDarkRegions(grey, {60, 150}, limits);
  EXPECT_EQ(std::count_if(regions.begin(), regions.end(), [](const Region& r) { return r.level == 0; }), 1);
  EXPECT_LE(regions.size(), 401U);
}

bool IsWithin(const Region& region, const finder::ImagePart& part) {
  // All of its box, with a pixel around it, which is more than must be.
  for (int row = region.box.y - 1; row <= region.box.y + region.box.height; ++row) {
    if (row < part.top || row >= part.Bottom()) return false;
    const cv::Range& columns = part.rows[static_cast<size_t>(row - part.top)];
    if (region.box.x - 1 < columns.start || region.box.x + region.box.width >= columns.end) return false;
  }
  return true;
}

TEST(Regions, OfAPartAreThoseOfTheWholeThatLieInIt) {
  const cv::Mat grey = Texture({120, 90});
  const std::vector<int> levels = {90, 120, 150};
  finder::ImagePart part;
  part.top = 12;
  for (int row = 0; row < 60; ++row) part.rows.emplace_back(10 + std::abs(row - 30), 110 - row % 17);
  const std::vector<Region> ofPart = finder::FindDarkRegions(grey, part, levels, {});
  std::vector<Region> within;
  for (const Region& region : finder::FindDarkRegions(grey, levels, {})) {
    if (IsWithin(region, part)) within.push_back(region);
  }
  EXPECT_GT(within.size(), 100U);
  EXPECT_GE(ofPart.size(), within.size());
  const auto same = [](const Region& a, const Region& b) {
    return a.level == b.level && a.box == b.box && a.area == b.area && a.centroid == b.centroid &&
           a.xx == b.xx && a.xy == b.xy && a.yy == b.yy;
  };
  const std::vector<Region> whole = finder::FindDarkRegions(grey, levels, {});
  const auto isIn = [&](const std::vector<Region>& all, const Region& region) {
    return std::any_of(all.begin(), all.end(), [&](const Region& other) { return same(region, other); });
  };
  for (const Region& region : within) EXPECT_TRUE(isIn(ofPart, region)) << region.box;
  for (const Region& region : ofPart) EXPECT_TRUE(isIn(whole, region)) << "cut: " << region.box;
}

TEST(Regions, BelowTheLeastAreaAreCountedAndThoseThatNobodyWantsAreLeftOut) {
  cv::Mat grey(40, 60, CV_8UC1, cv::Scalar(200));
  grey(cv::Rect(5, 5, 1, 1)).setTo(10);
  grey(cv::Rect(10, 5, 2, 1)).setTo(10);
  grey(cv::Rect(20, 5, 3, 1)).setTo(10);
  grey(cv::Rect(0, 20, 2, 1)).setTo(10);
  grey(cv::Rect(10, 20, 4, 4)).setTo(10);
  grey(cv::Rect(30, 20, 9, 1)).setTo(10);
  finder::RegionLimits limits;
  limits.minArea = 4.0;
  limits.wanted = [](const Region& region) { return region.box.height > 1; };
  finder::SmallRegions small;
  small.leastArea = 2.0;
  const std::vector<Region> regions =
      finder::FindDarkRegions(grey, finder::ImagePart::Whole(grey.size()), {100}, limits, &small);
  ASSERT_EQ(regions.size(), 1U);
  EXPECT_EQ(regions[0].box, cv::Rect(10, 20, 4, 4));
  EXPECT_EQ(small.count, 2) << "neither the one that is cut nor the single pixel";
}

TEST(Regions, OfALevelEndAtItsRow) {
  cv::Mat grey(60, 60, CV_8UC1, cv::Scalar(200));
  for (const int y : {5, 25, 45}) grey(cv::Rect(20, y, 6, 6)).setTo(10);
  finder::RegionLimits limits;
  limits.endOfLevel = {28, 60};
  const std::vector<Region> regions = finder::FindDarkRegions(grey, {100, 150}, limits);
  EXPECT_EQ(std::count_if(regions.begin(), regions.end(), [](const Region& r) { return r.level == 0; }), 1);
  EXPECT_EQ(std::count_if(regions.begin(), regions.end(), [](const Region& r) { return r.level == 1; }), 3);
}

TEST(Regions, OfAPictureWithoutPixelsAreNone) {
  EXPECT_TRUE(finder::FindDarkRegions(cv::Mat(0, 0, CV_8UC1), {100}, {}).empty());
}

}  // namespace
