/// How near the truth fitted centres are: as near as the pixels allow, and as near as the fit says.
#include "finder/DiscFit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "finder/DiscPicture.h"

using namespace velmora;

namespace {

/// How far around a disc its own pixels go, radii: half-way to the next one of the usual sheet.
constexpr double REACH = 1.75;
/// The light changes in this direction.
const cv::Vec2d UPHILL(std::cos(0.6), std::sin(0.6));

enum class Light {
  Even,
  Falling,  ///< to a half from one side of the disc to the other
  OnInk,    ///< ink, but not paper, is brighter at one side by half of the contrast
  Opposed   ///< ink is brighter at one side by a quarter of the contrast, paper at the other
};

unit::DiscPicture Lit(unit::DiscPicture picture, Light light) {
  const double contrast = picture.paper.level - picture.ink.level;
  if (light == Light::Falling) {
    picture.ink.slope = UPHILL * (picture.ink.level / 3.0);
    picture.paper.slope = UPHILL * (picture.paper.level / 3.0);
  }
  if (light == Light::OnInk) picture.ink.slope = UPHILL * (0.25 * contrast);
  if (light == Light::Opposed) {
    picture.ink.slope = UPHILL * (0.125 * contrast);
    picture.paper.slope = UPHILL * (-0.125 * contrast);
  }
  return picture;
}

unit::DiscPicture Disc(double radius, double blur, Light light = Light::Even, double squeezed = 0.85) {
  unit::DiscPicture picture = unit::PictureOfDisc(radius, blur, squeezed);
  picture.ink.level = 45.0;
  picture.paper.level = 160.0;
  return Lit(picture, light);
}

/// A disc as a search finds it: off by some tenths of a pixel, and 2 % too large.
finder::FoundDisc FoundNear(const unit::DiscPicture& picture, cv::RNG& random, double off = 0.3) {
  const double angle = random.uniform(0.0, 2.0 * CV_PI);
  finder::FoundDisc found;
  found.centre = picture.centre + off * cv::Point2d(std::cos(angle), std::sin(angle));
  found.outline = picture.outline * (1.0 / 1.02);
  found.reach = REACH;
  return found;
}

/// What many fits say about the same disc, pixels.
struct Series {
  double error = 0.0;      ///< RMS along an axis
  double bias = 0.0;       ///< of the mean in the direction of the light
  double predicted = 0.0;  ///< RMS of the deviations
  int held = 0;
};

using Change = cv::Mat (*)(const cv::Mat&);

Series Fit(const unit::DiscPicture& disc, double noise, int shots, Change change = nullptr) {
  constexpr int PLACES = 5;
  cv::RNG random(static_cast<std::uint64_t>(1000.0 * disc.radius + 100.0 * disc.blur + noise));
  Series series;
  for (int place = 0; place < PLACES; ++place) {
    unit::DiscPicture picture = disc;
    picture.centre += cv::Point2d(random.uniform(-0.5, 0.5), random.uniform(-0.5, 0.5));
    const cv::Mat exposure = unit::Exposure(picture);
    for (int k = 0; k < shots / PLACES; ++k) {
      cv::Mat shot = unit::Shot(exposure, noise, random);
      if (change != nullptr) shot = change(shot);
      const finder::FittedDisc fitted = finder::FitDisc(shot, FoundNear(picture, random));
      if (!fitted.holds) continue;
      const cv::Point2d off = fitted.centre - picture.centre;
      ++series.held;
      series.error += 0.5 * off.dot(off);
      series.bias += off.x * UPHILL[0] + off.y * UPHILL[1];
      series.predicted += fitted.deviation * fitted.deviation;
    }
  }
  const double held = std::max(1, series.held);
  series.error = std::sqrt(series.error / held);
  series.predicted = std::sqrt(series.predicted / held);
  series.bias /= held;
  return series;
}

struct Case {
  double radius;
  double blur;
};

std::ostream& operator<<(std::ostream& stream, const Case& one) {
  return stream << "radius " << one.radius << ", blur " << one.blur;
}

class DiscFit : public testing::TestWithParam<Case> {};

constexpr int SHOTS = 100;

TEST_P(DiscFit, IsAsNearTheTruthAsThePixelsAllowAndKnowsIt) {
  const unit::DiscPicture disc = Disc(GetParam().radius, GetParam().blur);
  const double least = unit::LeastDeviation(disc, 1.0, REACH) / std::sqrt(1.0 + 1.0 / 12.0);
  for (const double noise : {1.0, 3.0, 10.0}) {
    const Series series = Fit(disc, noise, SHOTS);
    EXPECT_EQ(series.held, SHOTS) << noise;
    EXPECT_LT(series.error, 1.3 * least * std::sqrt(noise * noise + 1.0 / 12.0)) << noise;
    EXPECT_GT(series.predicted, 0.8 * series.error) << noise;
    EXPECT_LT(series.predicted, 1.25 * series.error) << noise;
  }
}

TEST_P(DiscFit, IsNotMovedByUnevenLight) {
  for (const Light light : {Light::Falling, Light::OnInk, Light::Opposed}) {
    const unit::DiscPicture disc = Disc(GetParam().radius, GetParam().blur, light);
    const double least = unit::LeastDeviation(disc, 1.0, REACH);
    const Series series = Fit(disc, 1.0, SHOTS);
    EXPECT_EQ(series.held, SHOTS);
    EXPECT_LT(series.error, 1.3 * least);
    // The mean of these shots is not known better than that.
    EXPECT_LT(std::abs(series.bias), 0.003 + 2.0 * least / std::sqrt(SHOTS));
  }
}

INSTANTIATE_TEST_SUITE_P(Sizes, DiscFit,
                         testing::Values(Case{6, 0.3}, Case{6, 0.8}, Case{6, 1.5}, Case{10, 0.3},
                                         Case{10, 0.8}, Case{10, 2.0}, Case{20, 0.8}, Case{20, 3.0},
                                         Case{60, 0.3}, Case{60, 2.0}));

cv::Mat ThroughJpeg(const cv::Mat& image) {
  std::vector<unsigned char> bytes;
  cv::imencode(".jpg", image, bytes, {cv::IMWRITE_JPEG_QUALITY, 80});
  return cv::imdecode(bytes, cv::IMREAD_GRAYSCALE);
}

/// What JPEG does to noisy paper counts as noise.
TEST(DiscFitThroughJpeg, IsAsNearTheTruthAsItsNoiseAllows) {
  constexpr double NOISE = 3.0;
  cv::RNG random(4);
  const cv::Mat flat(256, 256, CV_64F, cv::Scalar(160.0));
  const cv::Mat paper = unit::Shot(flat, NOISE, random);
  cv::Mat difference;
  cv::subtract(ThroughJpeg(paper), paper, difference, {}, CV_64F);
  const double ofJpeg = cv::norm(difference) / 256.0;
  for (const double radius : {6.0, 10.0, 20.0}) {
    const unit::DiscPicture disc = Disc(radius, 0.8);
    const Series series = Fit(disc, NOISE, SHOTS, ThroughJpeg);
    EXPECT_EQ(series.held, SHOTS);
    EXPECT_LT(series.error, 1.3 * unit::LeastDeviation(disc, std::hypot(NOISE, ofJpeg), REACH)) << radius;
    EXPECT_GT(series.predicted, 0.8 * series.error) << radius;
    EXPECT_LT(series.predicted, 1.25 * series.error) << radius;
  }
}

TEST(DiscFitOfOneDisc, IsTheSameForLightDiscsOnDark) {
  cv::RNG random(7);
  const unit::DiscPicture disc = Disc(9.0, 0.8, Light::Falling);
  const cv::Mat dark = unit::Shot(unit::Exposure(disc), 2.0, random);
  const finder::FoundDisc found = FoundNear(disc, random);
  const finder::FittedDisc ofDark = finder::FitDisc(dark, found);
  const finder::FittedDisc ofLight = finder::FitDisc(255 - dark, found);
  ASSERT_TRUE(ofDark.holds && ofLight.holds);
  EXPECT_LT(cv::norm(ofDark.centre - ofLight.centre), 1e-3);
  EXPECT_NEAR(ofDark.deviation, ofLight.deviation, 1e-3 * ofDark.deviation);
}

TEST(DiscFitOfOneDisc, ArrivesFromPixelsAway) {
  cv::RNG random(5);
  for (const double radius : {6.0, 10.0, 30.0}) {
    const unit::DiscPicture disc = Disc(radius, 0.8, Light::Falling);
    const double least = unit::LeastDeviation(disc, 2.0, REACH);
    const cv::Mat exposure = unit::Exposure(disc);
    for (int k = 0; k < 20; ++k) {
      const cv::Mat shot = unit::Shot(exposure, 2.0, random);
      const finder::FittedDisc fitted = finder::FitDisc(shot, FoundNear(disc, random, 1.5));
      ASSERT_TRUE(fitted.holds) << radius;
      EXPECT_LT(cv::norm(fitted.centre - disc.centre), 5.0 * least) << radius;
    }
  }
}

TEST(DiscFitOfOneDisc, KnowsTheBlurOfLensAndPixel) {
  cv::RNG random(5);
  for (const double blur : {0.5, 1.0, 2.0}) {
    const unit::DiscPicture disc = Disc(15.0, blur);
    const cv::Mat shot = unit::Shot(unit::Exposure(disc), 2.0, random);
    EXPECT_NEAR(finder::FitDisc(shot, FoundNear(disc, random)).blur, std::sqrt(blur * blur + 1.0 / 12.0),
                0.05);
  }
}

/// A print whose rim is ragged, or an image whose pixels were taken from here and there of a larger one: what
/// is off there is no noise of ink and paper.
TEST(DiscFitOfOneDisc, HoldsWhereTheRimIsRagged) {
  constexpr int FINE = 8;
  constexpr double RADIUS = 12.0;
  const unit::DiscPicture fine = Disc(RADIUS * FINE, 0.8 * FINE);
  const cv::Mat exposure = unit::Exposure(fine);
  cv::RNG random(9);
  double squares = 0.0;
  double predicted = 0.0;
  constexpr int COUNT = 60;
  for (int k = 0; k < COUNT; ++k) {
    cv::Mat ragged(fine.size / FINE, CV_64F);
    for (int y = 0; y < ragged.rows; ++y) {
      for (int x = 0; x < ragged.cols; ++x) {
        const cv::Point taken(FINE * x + random.uniform(0, FINE), FINE * y + random.uniform(0, FINE));
        ragged.at<double>(y, x) = exposure.at<double>(taken);
      }
    }
    finder::FoundDisc found;
    // The middle of each pixel's samples.
    const cv::Point2d truth = (fine.centre - 0.5 * cv::Point2d(FINE - 1, FINE - 1)) / FINE;
    found.centre = truth + cv::Point2d(0.2, -0.1);
    found.outline = fine.outline * FINE;
    found.reach = REACH;
    const finder::FittedDisc fitted = finder::FitDisc(unit::Shot(ragged, 2.0, random), found);
    ASSERT_TRUE(fitted.holds);
    squares += 0.5 * (fitted.centre - truth).dot(fitted.centre - truth);
    predicted += fitted.deviation * fitted.deviation;
  }
  EXPECT_LT(std::sqrt(squares / COUNT), 0.035);
  EXPECT_NEAR(std::sqrt(predicted / squares), 1.0, 0.25);
}

/// Something on the disc of which the fit makes the best, or says that it cannot.
class DisturbedDisc : public testing::Test {
 protected:
  DisturbedDisc() : disc_(Disc(12.0, 0.8)) {}

  finder::FittedDisc FitTo(const cv::Mat& exposure) {
    return finder::FitDisc(unit::Shot(exposure, 2.0, random_), FoundNear(disc_, random_));
  }

  cv::RNG random_{3};
  unit::DiscPicture disc_;
};

TEST_F(DisturbedDisc, IsHardlyMovedByASmallReflectionOnItsRim) {
  for (int k = 0; k < 12; ++k) {
    const double angle = k * CV_PI / 6.0;
    cv::Mat exposure = unit::Exposure(disc_);
    const cv::Point2d at = disc_.centre + 12.0 * cv::Point2d(std::cos(angle), std::sin(angle));
    cv::circle(exposure, at, 3, cv::Scalar(250.0), cv::FILLED);
    const finder::FittedDisc fitted = FitTo(exposure);
    if (!fitted.holds) continue;
    EXPECT_LT(cv::norm(fitted.centre - disc_.centre), 0.06) << k;
  }
}

TEST_F(DisturbedDisc, IsHardlyMovedBySpecksAndScratches) {
  for (int k = 0; k < 12; ++k) {
    cv::Mat exposure = unit::Exposure(disc_);
    for (int speck = 0; speck < 4; ++speck) {
      const cv::Point2d at =
          disc_.centre + cv::Point2d(random_.uniform(-16.0, 16.0), random_.uniform(-16.0, 16.0));
      cv::circle(exposure, at, 1, cv::Scalar(random_.uniform(0.0, 255.0)), cv::FILLED);
    }
    const cv::Point2d left = disc_.centre + cv::Point2d(-18.0, random_.uniform(-8.0, 8.0));
    cv::line(exposure, left, left + cv::Point2d(36.0, random_.uniform(-6.0, 6.0)), cv::Scalar(140.0));
    const finder::FittedDisc fitted = FitTo(exposure);
    if (!fitted.holds) continue;
    EXPECT_LT(cv::norm(fitted.centre - disc_.centre), 0.06) << k;
  }
}

TEST_F(DisturbedDisc, DoesNotHoldWhereALargePartOfItIsHidden) {
  for (int k = 0; k < 8; ++k) {
    const double angle = k * CV_PI / 4.0;
    const cv::Vec2d normal(std::cos(angle), std::sin(angle));
    for (const double level : {15.0, 100.0, 240.0}) {
      cv::Mat exposure = unit::Exposure(disc_);
      for (int y = 0; y < exposure.rows; ++y) {
        for (int x = 0; x < exposure.cols; ++x) {
          if (normal.dot({x - disc_.centre.x, y - disc_.centre.y}) > 5.0) exposure.at<double>(y, x) = level;
        }
      }
      const finder::FittedDisc fitted = FitTo(exposure);
      // What is left of the rim may tell the rest: then the centre is right.
      if (!fitted.holds) continue;
      EXPECT_LT(cv::norm(fitted.centre - disc_.centre), 4.0 * fitted.deviation) << k << " " << level;
    }
  }
}

TEST_F(DisturbedDisc, DoesNotHoldAtTheBorderOfTheImage) {
  const cv::Mat shot = unit::Shot(unit::Exposure(disc_), 2.0, random_);
  const cv::Mat cut = shot.colRange(0, cvRound(disc_.centre.x + 9.0));
  EXPECT_FALSE(finder::FitDisc(cut, FoundNear(disc_, random_)).holds);
}

TEST_F(DisturbedDisc, DoesNotHoldWithoutADisc) {
  EXPECT_FALSE(FitTo(cv::Mat(disc_.size, CV_64F, cv::Scalar(128.0))).holds);
  cv::Mat edge(disc_.size, CV_64F, cv::Scalar(50.0));
  edge.colRange(0, edge.cols / 2).setTo(180.0);
  EXPECT_FALSE(FitTo(edge).holds);
}

TEST_F(DisturbedDisc, DoesNotHoldWithAnOutlineThatIsNone) {
  finder::FoundDisc found = FoundNear(disc_, random_);
  found.outline = cv::Matx22d::zeros();
  const cv::Mat shot = unit::Shot(unit::Exposure(disc_), 2.0, random_);
  EXPECT_FALSE(finder::FitDisc(shot, found).holds);
  found = FoundNear(disc_, random_);
  found.centre.x = std::nan("");
  EXPECT_FALSE(finder::FitDisc(shot, found).holds);
}

}  // namespace
