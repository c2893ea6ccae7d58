/// What is taken for a disc.
#include "finder/Candidates.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "finder/FinderScenes.h"

using namespace velmora;

namespace {

using finder::Candidates;

TEST(Candidates, AreTheDiscsWithCentresAndRadii) {
  const double step = 24.0;
  const Candidates candidates = finder::FindCandidates(unit::FlatGrid({4, 11}, 0.4, step), 44);
  ASSERT_EQ(candidates.discs.size(), 44U);
  for (const finder::DiscCandidate& disc : candidates.discs) {
    EXPECT_NEAR(disc.radius, 0.4 * step, 0.4);
    EXPECT_NEAR(std::remainder(disc.centre.x, step), 0.0, 0.1);
    EXPECT_NEAR(std::remainder(disc.centre.y, step), 0.0, 0.1);
    EXPECT_GE(disc.levels, 2);
  }
}

TEST(Candidates, AreEllipsesButNoBarsAndNoCorners) {
  cv::Mat image(300, 400, CV_8UC1, cv::Scalar(220));
  cv::ellipse(image, {80, 80}, {30, 9}, 25.0, 0.0, 360.0, cv::Scalar(30), cv::FILLED, cv::LINE_AA);
  cv::rectangle(image, {150, 60}, {290, 66}, cv::Scalar(30), cv::FILLED);
  const std::vector<std::vector<cv::Point>> corner = {
      {{60, 160}, {140, 160}, {140, 175}, {75, 175}, {75, 260}, {60, 260}}};
  cv::fillPoly(image, corner, cv::Scalar(30));
  const Candidates candidates = finder::FindCandidates(image, 44);
  ASSERT_EQ(candidates.discs.size(), 1U);
  EXPECT_LT(cv::norm(candidates.discs[0].centre - cv::Point2d(80.0, 80.0)), 0.3);
}

TEST(Candidates, CountRoundSpotsThatAreTooSmallOrTooLarge) {
  cv::Mat image(480, 640, CV_8UC1, cv::Scalar(220));
  for (int k = 0; k < 30; ++k) image(cv::Rect(20 + 20 * k, 20, 2, 1)).setTo(30);
  cv::circle(image, {300, 250}, 120, cv::Scalar(30), cv::FILLED);
  const Candidates candidates = finder::FindCandidates(image, 44);
  EXPECT_TRUE(candidates.discs.empty());
  EXPECT_GT(candidates.tooSmall, 25);
  EXPECT_GE(candidates.tooLarge, 1);
}

TEST(Candidates, OfNoiseAreNoMoreThanTheMost) {
  cv::Mat noise(1080, 1920, CV_8UC1);
  cv::RNG random(9);
  random.fill(noise, cv::RNG::UNIFORM, 0, 256);
  cv::blur(noise, noise, {4, 4});
  cv::normalize(noise, noise, 0.0, 255.0, cv::NORM_MINMAX);
  EXPECT_EQ(finder::FindCandidates(noise, 44).discs.size(), finder::MAX_CANDIDATES);
}

TEST(Candidates, LevelsLieBetweenDarkAndBrightAndThereAreNoneWithoutContrast) {
  const std::vector<int> levels = finder::ChooseLevels(unit::FlatGrid({4, 11}));
  ASSERT_GT(levels.size(), 10U);
  EXPECT_GT(levels.front(), 25);
  EXPECT_LT(levels.back(), 235);
  EXPECT_TRUE(std::is_sorted(levels.begin(), levels.end()));
  EXPECT_TRUE(finder::ChooseLevels(cv::Mat(100, 100, CV_8UC1, cv::Scalar(90))).empty());
}

}  // namespace
