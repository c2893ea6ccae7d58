/// What views of two cameras come to.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <utility>

#include "GuidedScenes.h"
#include "LensError.h"
#include "TemporaryFolder.h"
#include "common/LensModels.h"
#include "guided/Outcome.h"

namespace {

namespace fs = std::filesystem;

using guided::Compute;
using guided::Outcome;
using guided_test::JustCompute;
using guided_test::Named;
using guided_test::SettingsOfPoints;
using guided_test::WithAPart;

TEST(PairOutcome, IsNearTheTruth) {
  const Outcome outcome = Compute(Named(unit::NoisyPairs(14)), SettingsOfPoints(), JustCompute);
  ASSERT_FALSE(outcome.Failed()) << outcome.fault;
  ASSERT_TRUE(outcome.pair);
  const world::Pair& truth = unit::PairOfCameras();
  EXPECT_EQ(outcome.pair->report.model, "rational");
  EXPECT_EQ(outcome.cameras[0].report.model, "rational");
  EXPECT_NEAR(cv::norm(outcome.pair->report.T), cv::norm(truth.T), 0.001);
  const cv::Matx33d turned = cv::Matx33d(outcome.pair->report.R) * truth.R.t();
  const double degrees = std::acos(std::min(1.0, (cv::trace(turned) - 1.0) / 2.0)) * 180.0 / CV_PI;
  EXPECT_LT(degrees, 0.6);
  EXPECT_LT(outcome.pair->report.rms, 0.1);
  EXPECT_GT(outcome.pair->report.rms, 0.02);
  EXPECT_LT(outcome.pair->report.epipolarDistance, 0.2);
  EXPECT_GT(outcome.pair->report.epipolarDistance, 0.0);
  EXPECT_NE(outcome.pair->verdict.grade, PairVerdict::Grade::None);
  for (size_t camera : {0U, 1U}) {
    const world::Camera& seen = camera == 0 ? truth.left : truth.right;
    const common::Report& report = outcome.cameras.at(camera).report;
    const auto error = world::MeanProjectionDistance(
        seen.lens, world::LensFrom(report.K, report.D), unit::FRAME,
        world::CoveredRegion(outcome.cameras[camera].seen), world::Alignment::Rotated);
    EXPECT_LT(error.mean, 0.1) << camera;
  }
}

TEST(PairOutcome, IsSavedWithBothCameras) {
  const Outcome outcome = Compute(Named(unit::NoisyPairs(8)), SettingsOfPoints(), JustCompute);
  ASSERT_FALSE(outcome.Failed()) << outcome.fault;
  const support::TemporaryFolder folder;
  const std::string name = folder.File("rig");
  common::OutputFiles files;
  EXPECT_EQ(Save(outcome, name, files), "");
  std::vector<std::string> expected;
  for (const char* end : {"_left.json", "_left_verdict.json", "_left_uncertainty.png", "_right.json",
                          "_right_verdict.json", "_right_uncertainty.png", ".json", "_verdict.json",
                          "_uncertainty_left.png", "_uncertainty_right.png"})
    expected.push_back(name + end);
  EXPECT_EQ(files.Names(), expected);
  for (const std::string& file : expected) EXPECT_TRUE(fs::exists(file)) << file;
  const std::string text = TextOf(outcome);
  const size_t left = text.find("== left camera\n");
  const size_t right = text.find("== right camera\n");
  const size_t pair = text.find("== pair\n");
  EXPECT_LT(left, right);
  EXPECT_LT(right, pair);
  EXPECT_LT(pair, text.size());
}

TEST(PairOutcome, TakesTheCirclesThatBothCamerasSee) {
  auto views = WithAPart(Named(unit::NoisyPairs(8)), 1, 1, 4);  // the right one's first row
  auto& left = views[1].snapshot.cameras[0];
  left.weights.assign(44, 1.0);
  left.weights.back() = 0.0;
  const Outcome outcome = Compute(views, SettingsOfPoints(), JustCompute);
  ASSERT_FALSE(outcome.Failed()) << outcome.fault;
  EXPECT_EQ(outcome.cameras[0].report.parts.circles, std::vector<size_t>{43});
  EXPECT_EQ(outcome.cameras[1].report.parts.circles, std::vector<size_t>{40});
  EXPECT_EQ(outcome.pair->report.parts.circles, std::vector<size_t>{39});
  EXPECT_EQ(outcome.pair->seen.left[1].size(), 39U);
  EXPECT_EQ(outcome.pair->seen.right[1].size(), 39U);
  EXPECT_EQ(outcome.pair->seen.left[1].front(), left.centres[4]);
}

TEST(PairOutcome, NeedsAModelThatPairsAreComputedWith) {
  for (const int model : {Calibrator::MODEL_CLASSIC, common::MODEL_FISHEYE}) {
    const Outcome outcome = Compute(Named(unit::NoisyPairs(6)), SettingsOfPoints(model), JustCompute);
    EXPECT_EQ(outcome.fault, "a pair is computed with the rational or the full model, not the " +
                                 common::NameOfModel(model) + " one");
    EXPECT_TRUE(outcome.cameras.empty());
  }
}

TEST(PairOutcome, SaysWhichFileCannotBeWritten) {
  const Outcome outcome = Compute(Named(unit::NoisyPairs(6)), SettingsOfPoints(), JustCompute);
  ASSERT_FALSE(outcome.Failed()) << outcome.fault;
  for (const char* end : {"_left.json", "_right_verdict.json", ".json", "_uncertainty_right.png"}) {
    const support::TemporaryFolder folder;
    const std::string name = folder.File("rig");
    fs::create_directory(name + end);
    common::OutputFiles files;
    EXPECT_EQ(Save(outcome, name, files), name + end);
  }
}

TEST(PairOutcome, TellsOfEachEngineBeforeItComputes) {
  std::vector<std::shared_ptr<Calibrator>> engines;
  const Outcome outcome =
      Compute(Named(unit::NoisyPairs(6)), SettingsOfPoints(), [&](std::shared_ptr<Calibrator> engine) {
        EXPECT_EQ(engine->GetStatus(), Calibrator::STATUS_READY);
        EXPECT_EQ(engine->GetNumberOfRecords(), 6);
        engines.push_back(std::move(engine));
      });
  ASSERT_FALSE(outcome.Failed()) << outcome.fault;
  ASSERT_EQ(engines.size(), 3U);
  EXPECT_EQ(engines[0], outcome.cameras[0].engine);
  EXPECT_EQ(engines[1], outcome.cameras[1].engine);
  EXPECT_EQ(engines[2], outcome.pair->engine);
}

}  // namespace
