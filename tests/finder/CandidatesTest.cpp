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

/// Noise of which a level or two lie in, and in which levels are given up half way down.
cv::Mat NoisySheet() {
  cv::Mat image(480, 640, CV_8UC1, cv::Scalar(150));
  const cv::Mat sheet = unit::FlatGrid({4, 11}, 0.4, 24.0);
  sheet.copyTo(image(cv::Rect(60, 60, sheet.cols, sheet.rows)));
  cv::Mat noise(image.size(), CV_16SC1);
  cv::RNG(4).fill(noise, cv::RNG::NORMAL, 0.0, 8.0);
  cv::add(image, noise, image, cv::noArray(), CV_8U);
  return image;
}

TEST(Candidates, OfAPartAreThoseOfTheWhole) {
  for (const cv::Mat& image : {NoisySheet(), unit::FlatGrid({4, 11})}) {
    const cv::Rect box(20, 30, std::min(440, image.cols - 40), std::min(400, image.rows - 40));
    finder::ImagePart part;
    part.top = box.y;
    part.rows.assign(static_cast<size_t>(box.height), cv::Range(box.x, box.x + box.width));
    const std::vector<finder::DiscCandidate> ofPart =
        finder::FindCandidatesIn(image, part, finder::ChooseLevels(image), 44);
    EXPECT_GE(ofPart.size(), 44U);
    // Some are small, at the part's own border, where others continue them.
    size_t same = 0;
    for (const finder::DiscCandidate& disc : finder::FindCandidates(image, 44).discs) {
      if (disc.radius < 5.0) continue;
      same += static_cast<size_t>(
          std::count_if(ofPart.begin(), ofPart.end(), [&](const finder::DiscCandidate& other) {
            return other.centre == disc.centre && other.radius == disc.radius && other.levels == disc.levels;
          }));
    }
    EXPECT_EQ(same, 44U);
  }
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
