/// A small accuracy report with bounds: errors are as small, and standard deviations as true, as the page on
/// accuracy says.
#include <gtest/gtest.h>

#include <cmath>

#include "ImageTrial.h"
#include "PairTrial.h"
#include "Statistics.h"

using accuracy::Case;
using accuracy::Honesty;
using accuracy::LensKind;
using accuracy::Trial;

namespace {

using Trials = std::vector<Trial>;

Case Classic(int views = 12) {
  Case what;
  what.views = views;
  return what;
}

Case WideAngle(int model) {
  Case what;
  what.lens = LensKind::WideAngle;
  what.fieldOfView = 100.0;
  what.model = model;
  return what;
}

double MedianTurned(const Trials& trials) {
  return accuracy::Median(accuracy::Each(trials, [](const Trial& t) { return t.turnedError; }));
}

double MedianInData(const Trials& trials) {
  return accuracy::Median(accuracy::Each(trials, [](const Trial& t) { return t.dataError; }));
}

double MedianOf(const Trials& trials, std::size_t parameter) {
  return accuracy::Median(
      accuracy::Each(trials, [parameter](const Trial& t) { return std::abs(t.errors[parameter]); }));
}

/// Many calibrations with the classic model and the sparse solver, once in a process.
const Trials& ClassicTrials() {
  static const Trials trials = accuracy::RunTrials(Classic(), 150);
  return trials;
}

TEST(AccuracyReport, OfTheClassicModelIsAFractionOfAPixel) {
  const Trials& trials = ClassicTrials();
  ASSERT_EQ(accuracy::Succeeded(trials).size(), trials.size());
  for (std::size_t i = 0; i < 2; ++i) EXPECT_LT(MedianOf(trials, i), 0.4) << accuracy::PARAMETER_NAMES[i];
  for (std::size_t i = 2; i < 4; ++i) EXPECT_LT(MedianOf(trials, i), 0.6) << accuracy::PARAMETER_NAMES[i];
  EXPECT_LT(MedianTurned(trials), 0.25);
  EXPECT_LT(MedianInData(trials), 0.1);
}

TEST(AccuracyReport, RmsIsThatOfTheNoise) {
  const Trials& trials = ClassicTrials();
  // Two coordinates a point, less what the unknowns take up.
  const double points = 12.0 * 44.0;
  const double expected = Classic().noise * std::sqrt((2.0 * points - 9.0 - 6.0 * 12.0) / points);
  EXPECT_NEAR(accuracy::Median(accuracy::Each(trials, [](const Trial& t) { return t.rms; })), expected,
              0.01 * expected);
}

TEST(AccuracyReport, StandardDeviationsOfTheClassicModelTellTheTruth) {
  const Trials& trials = ClassicTrials();
  // The shares expected of 150 trials: 68 % and 95 %, give or take three standard errors.
  for (std::size_t i = 0; i < 9; ++i) {
    const Honesty honesty = accuracy::HonestyOf(trials, i, i + 1);
    EXPECT_NEAR(honesty.within1, 0.683, 0.114) << accuracy::PARAMETER_NAMES[i];
    EXPECT_NEAR(honesty.within2, 0.954, 0.051) << accuracy::PARAMETER_NAMES[i];
  }
  const Honesty all = accuracy::HonestyOf(trials, 0, 9);
  EXPECT_NEAR(all.within1, 0.683, 0.04);
  EXPECT_NEAR(all.within2, 0.954, 0.02);
}

TEST(AccuracyReport, VerdictForecastsTheErrorsOfProjections) {
  const Trials& trials = ClassicTrials();
  const double over =
      accuracy::RootMeanSquare(accuracy::Each(trials, [](const Trial& t) { return t.overFormal; }));
  EXPECT_NEAR(over, 1.0, 0.15);
}

TEST(AccuracyReport, LargerModelsAreNotSurerOfALensThatTheClassicOneHolds) {
  // Both are computed from the same points, trial by trial: errors themselves are too much a matter of chance
  // to tell. The noise that is estimated differs by parts of a percent.
  Case full = Classic();
  full.model = Calibrator::MODEL_FULL;
  Case rational = Classic();
  rational.model = Calibrator::MODEL_RATIONAL;
  for (std::uint64_t seed = 1; seed <= 30; ++seed) {
    const double classic = ClassicTrials()[seed - 1].deviationInData;
    EXPECT_GT(accuracy::RunTrial(rational, seed).deviationInData, 0.99 * classic) << "seed " << seed;
    EXPECT_GT(accuracy::RunTrial(full, seed).deviationInData, 0.99 * classic) << "seed " << seed;
  }
}

TEST(AccuracyReport, StandardDeviationsOfOpenCVAreTooLarge) {
  Case what = Classic(8);
  what.solver = Calibrator::SOLVER_OPENCV;
  const Trials trials = accuracy::RunTrials(what, 40);
  const Honesty honesty = accuracy::HonestyOf(trials, 0, 9);
  EXPECT_GT(honesty.within1, 0.78);
  EXPECT_GT(honesty.within2, 0.97);
  EXPECT_NEAR(honesty.ratio, std::sqrt(0.5), 0.1);
}

TEST(AccuracyReport, GrowsWithTheViews) {
  EXPECT_LT(MedianTurned(accuracy::RunTrials(Classic(24), 20)),
            0.6 * MedianTurned(accuracy::RunTrials(Classic(6), 20)));
}

TEST(AccuracyReport, OfAWideLensTakesTheRationalModel) {
  const Trials classic = accuracy::RunTrials(WideAngle(Calibrator::MODEL_CLASSIC), 15);
  const Trials rational = accuracy::RunTrials(WideAngle(Calibrator::MODEL_RATIONAL), 15);
  EXPECT_LT(MedianTurned(rational), 0.2 * MedianTurned(classic));
  EXPECT_LT(MedianTurned(rational), 0.5);
  EXPECT_GT(accuracy::HonestyOf(rational, 0, 2).within2, accuracy::HonestyOf(classic, 0, 2).within2);
}

TEST(AccuracyReport, StandardDeviationsMisleadWhenTheSheetIsBent) {
  Case what = Classic();
  what.sag = 0.002;
  const Trials trials = accuracy::RunTrials(what, 20);
  EXPECT_LT(accuracy::HonestyOf(trials, 0, 4).within2, 0.4);
}

TEST(AccuracyReport, VerdictForecastsTheErrorsThatABentSheetMakes) {
  for (const double sag : {0.0005, 0.002}) {
    Case what = Classic();
    what.sag = sag;
    const Trials trials = accuracy::RunTrials(what, 20);
    EXPECT_NEAR(
        accuracy::RootMeanSquare(accuracy::Each(trials, [](const Trial& t) { return t.overVerdict; })), 1.0,
        0.2);
    for (const Trial& trial : trials) EXPECT_NE(trial.grade, CalibrationVerdict::Grade::Good);
  }
}

/// Cameras, sheets and numbers of views of all kinds.
Case AnyCase(int number) {
  constexpr double SAGS[] = {0.0, 0.0, 0.0001, 0.00025, 0.0005};
  constexpr LensKind LENSES[] = {LensKind::Light, LensKind::Strong, LensKind::WideAngle, LensKind::Tilted};
  Case what;
  what.lens = LENSES[number % 4];
  what.fieldOfView = what.lens == LensKind::WideAngle ? 100.0 : 50.0 + 4.0 * (number % 7);
  what.views = 4 + number % 17;
  what.sag = SAGS[number % 5];
  what.noise = number % 3 == 0 ? 0.3 : 0.1;
  what.model = number % 11 == 0 ? Calibrator::MODEL_FULL : Calibrator::MODEL_CLASSIC;
  return what;
}

TEST(AccuracyReport, VerdictCallsNothingGoodThatIsFarWorseThanForecast) {
  int good = 0;
  for (int i = 0; i < 200; ++i) {
    const Trial trial = accuracy::RunTrial(AnyCase(i), static_cast<std::uint64_t>(1000 + i));
    if (trial.failed || trial.grade != CalibrationVerdict::Grade::Good) continue;
    ++good;
    EXPECT_LT(trial.overVerdict, 3.0) << i;
  }
  EXPECT_GT(good, 60);
}

TEST(AccuracyReport, OfPairsIsTenthsOfDegreesAndMillimetres) {
  std::vector<double> rotationError;
  std::vector<double> translationError;
  std::vector<double> depth;
  for (std::uint64_t seed = 1; seed <= 15; ++seed) {
    const accuracy::PairTrial trial = accuracy::RunPairTrial({}, seed);
    ASSERT_FALSE(trial.failed);
    rotationError.push_back(trial.rotationError);
    translationError.push_back(trial.translationError);
    depth.push_back(trial.depth);
    EXPECT_LT(std::abs(trial.baseline), 0.004);
  }
  EXPECT_LT(accuracy::Median(rotationError), 0.2);
  EXPECT_LT(accuracy::Median(translationError), 0.6);
  EXPECT_LT(accuracy::Median(depth), 0.001);
}

TEST(AccuracyReport, OfPairsIsBetterWithRefinedIntrinsics) {
  std::vector<double> rotationError[2];
  std::vector<double> depth[2];
  for (const bool refined : {false, true}) {
    accuracy::PairCase what;
    what.refined = refined;
    for (std::uint64_t seed = 1; seed <= 15; ++seed) {
      const accuracy::PairTrial trial = accuracy::RunPairTrial(what, seed);
      ASSERT_FALSE(trial.failed);
      rotationError[refined].push_back(trial.rotationError);
      depth[refined].push_back(trial.depth);
    }
  }
  EXPECT_LT(accuracy::Median(rotationError[1]), accuracy::Median(rotationError[0]));
  EXPECT_LT(accuracy::Median(depth[1]), accuracy::Median(depth[0]));
}

TEST(AccuracyReport, OfPicturesTakesTheCorrectionOfDiscs) {
  const accuracy::ImageCase what;
  const accuracy::SearchedImages searched = accuracy::SearchImages(what, 1);
  ASSERT_EQ(searched.robust.found.size(), static_cast<std::size_t>(what.views));
  EXPECT_LT(searched.robust.CentreError(), 0.3);
  const auto trial = [&](bool correctDiscs) {
    return accuracy::RunImageTrial(searched.camera, searched.robust, Calibrator::MODEL_CLASSIC,
                                   Calibrator::SOLVER_SPARSE, correctDiscs);
  };
  const Trial plain = trial(false);
  const Trial corrected = trial(true);
  ASSERT_FALSE(plain.failed);
  ASSERT_FALSE(corrected.failed);
  EXPECT_LT(plain.imageError, 0.5);
  EXPECT_LT(corrected.imageError, 0.1);
  EXPECT_LT(corrected.turnedError, 0.3 * plain.turnedError);
}

TEST(AccuracyReport, IsTheSameForTheSameSeed) {
  const Trial first = accuracy::RunTrial(Classic(6), 3);
  const Trial again = accuracy::RunTrial(Classic(6), 3);
  const Trial other = accuracy::RunTrial(Classic(6), 4);
  EXPECT_EQ(first.errors, again.errors);
  EXPECT_EQ(first.imageError, again.imageError);
  EXPECT_NE(first.errors, other.errors);
}

TEST(AccuracyReport, CountsComputationsThatFail) {
  Case what = Classic(1);
  what.viewKind = accuracy::ViewKind::Frontal;
  what.noise = std::nan("");
  EXPECT_TRUE(accuracy::RunTrial(what, 1).failed);
}

TEST(AccuracyReport, CamerasSeeWhatTheySay) {
  for (const LensKind kind : {LensKind::Light, LensKind::Strong, LensKind::WideAngle, LensKind::Tilted}) {
    for (const double degrees : {40.0, 70.0, 100.0}) {
      const world::Camera camera = accuracy::MakeCamera(kind, degrees);
      for (const cv::Point2d& corner : {cv::Point2d(0, 0), cv::Point2d(639, 0), cv::Point2d(639, 479)}) {
        cv::Point2d ray;
        EXPECT_TRUE(camera.lens.Unproject(corner, ray)) << accuracy::NameOf(kind) << degrees;
      }
      const double y = camera.lens.K()(1, 2);
      cv::Point2d left;
      cv::Point2d right;
      ASSERT_TRUE(camera.lens.Unproject({-0.5, y}, left));
      ASSERT_TRUE(camera.lens.Unproject({639.5, y}, right));
      const double observed = (std::atan(right.x) - std::atan(left.x)) * 180.0 / CV_PI;
      // The principal point is off the middle, and a tilt moves the image.
      EXPECT_NEAR(observed, degrees, 0.03 * degrees) << accuracy::NameOf(kind);
    }
  }
}

}  // namespace
