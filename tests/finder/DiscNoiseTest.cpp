/// The noise of ink, paper and rim.
#include "finder/DiscNoise.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace velmora;

namespace {

using finder::DiscModel;
using finder::DiscNoise;
using finder::DiscPixels;

constexpr float STEEP = 60.0F;
constexpr double CONTRAST = 150.0;

/// What a model leaves of pixels: ink at the left, then the rim, then paper.
class DiscNoiseOf : public testing::Test {
 protected:
  DiscNoiseOf() {
    finder::FoundDisc found;
    found.centre = {40.0, 40.0};
    found.outline = {0.05, 0.0, 0.0, 0.05};
    DiscModel::Unknowns unknowns = DiscModel::Unknowns::Zero();
    unknowns(DiscModel::XX) = unknowns(DiscModel::YY) = 20.0;
    unknowns(DiscModel::BLUR) = 1.0;
    pixels_ = DiscPixels(image_, found, {40, 40}, unknowns, 20.0, DiscPixels::Choice::All);
    noise_.Begin(pixels_.Chunks().size());
  }

  static float ShareAt(float x) { return x < -5.0F ? 1.0F : x > 5.0F ? 0.0F : 0.5F; }

  /// `rest` is called with the pixel's x and gives what is left of it.
  template <typename Rest>
  void Leave(Rest rest) {
    DiscModel::Equations equations = DiscModel::Equations::Zero();
    for (size_t chunk = 0; chunk < pixels_.Chunks().size(); ++chunk) {
      for (Eigen::Index k = 0; k < DiscModel::CHUNK; ++k) {
        const float x = pixels_.Chunks()[chunk].x(k);
        noise_.Shares(chunk)(k) = ShareAt(x);
        equations(k, DiscModel::CENTRE_X) = ShareAt(x) == 0.5F ? STEEP : 0.0F;
        equations(k, DiscModel::REST) = static_cast<float>(rest(x, pixels_.Chunks()[chunk].y(k)));
      }
      noise_.Keep(chunk, equations);
    }
    noise_.Estimate(pixels_);
  }

  /// The mean root of the weights of the pixels between two places.
  double RootWeightBetween(float from, float to) const {
    double sum = 0.0;
    double count = 0.0;
    for (size_t chunk = 0; chunk < pixels_.Chunks().size(); ++chunk) {
      const DiscModel::Floats roots = noise_.RootWeights(chunk);
      for (Eigen::Index k = 0; k < pixels_.CountIn(chunk); ++k) {
        const float x = pixels_.Chunks()[chunk].x(k);
        if (x < from || x > to) continue;
        sum += static_cast<double>(roots(k));
        count += 1.0;
      }
    }
    return sum / count;
  }

  const cv::Mat image_ = cv::Mat::zeros(80, 80, CV_8U);
  cv::RNG random_{4};
  DiscPixels pixels_;
  DiscNoise noise_;
};

/// The mean of Tukey's root weight, for normal errors.
constexpr double ROOT = 0.96;

TEST_F(DiscNoiseOf, InkAndPaperHaveTheirOwn) {
  Leave([&](float x, float) { return random_.gaussian(x < 0.0F ? 2.0 : 5.0); });
  EXPECT_NEAR(RootWeightBetween(-40.0F, -6.0F), ROOT / 2.0, 0.05);
  EXPECT_NEAR(RootWeightBetween(6.0F, 40.0F), ROOT / 5.0, 0.02);
  EXPECT_NEAR(noise_.Excess(pixels_, 0), 1.0, 0.15);
  EXPECT_TRUE(noise_.IsNoise(pixels_, CONTRAST));
}

TEST_F(DiscNoiseOf, ARaggedRimHasMore) {
  Leave([&](float x, float) { return random_.gaussian(ShareAt(x) == 0.5F ? 20.0 : 2.0); });
  EXPECT_NEAR(RootWeightBetween(-5.0F, 5.0F), ROOT / 20.0, 0.01);
  EXPECT_NEAR(RootWeightBetween(6.0F, 40.0F), ROOT / 2.0, 0.05);
  EXPECT_TRUE(noise_.IsNoise(pixels_, CONTRAST));
}

TEST_F(DiscNoiseOf, GrossPixelsHaveNoWeightAndFewOfThemAreBorne) {
  const auto withGross = [&](float beyond) {
    Leave([&](float x, float) { return x > beyond ? 80.0 : random_.gaussian(2.0); });
  };
  withGross(25.0F);
  EXPECT_EQ(RootWeightBetween(25.5F, 40.0F), 0.0);
  EXPECT_GT(noise_.Excess(pixels_, 0), 1.2);
  EXPECT_TRUE(noise_.IsNoise(pixels_, CONTRAST));
  withGross(14.0F);
  EXPECT_FALSE(noise_.IsNoise(pixels_, CONTRAST));
}

TEST_F(DiscNoiseOf, MuchIsNoneWhereItChangesSlowly) {
  Leave([&](float x, float y) {
    return 60.0 * std::sin(0.2F * x) * std::cos(0.2F * y) + random_.gaussian(2.0);
  });
  EXPECT_FALSE(noise_.IsNoise(pixels_, CONTRAST));
  EXPECT_TRUE(noise_.IsNoise(pixels_, 10.0 * CONTRAST)) << "it is little beside that contrast";
  Leave([&](float, float) { return random_.gaussian(30.0); });
  EXPECT_TRUE(noise_.IsNoise(pixels_, CONTRAST));
}

TEST_F(DiscNoiseOf, IsThatOfRoundingAtLeast) {
  Leave([](float, float) { return 0.0; });
  EXPECT_NEAR(RootWeightBetween(-40.0F, 40.0F), 1.0 / 0.3, 0.01);
}

}  // namespace
