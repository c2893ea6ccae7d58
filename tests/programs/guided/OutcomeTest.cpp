/// What views come to: a camera, a pair, or a fault.
#include "guided/Outcome.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <limits>

#include "GuidedScenes.h"
#include "LensError.h"
#include "Matchers.h"
#include "TemporaryFolder.h"
#include "common/LensModels.h"
#include "velmora/Session.h"

namespace {

namespace fs = std::filesystem;

using guided::Compute;
using guided::NamedSnapshot;
using guided::Outcome;
using guided_test::JustCompute;
using guided_test::Named;
using guided_test::SettingsOfPoints;
using guided_test::WithAPart;

double LargestDifference(const cv::Mat& a, const cv::Mat& b) {
  return a.size() == b.size() ? cv::norm(a, b, cv::NORM_INF) : std::numeric_limits<double>::infinity();
}

void ExpectSame(const Outcome& a, const Outcome& b, double tolerance) {
  ASSERT_FALSE(a.Failed() || b.Failed()) << a.fault << b.fault;
  EXPECT_EQ(a.numbers, b.numbers);
  ASSERT_EQ(a.cameras.size(), b.cameras.size());
  for (size_t i = 0; i < a.cameras.size(); ++i) {
    const common::Report& one = a.cameras[i].report;
    const common::Report& other = b.cameras[i].report;
    EXPECT_EQ(one.model, other.model);
    EXPECT_NEAR(one.rms, other.rms, tolerance);
    EXPECT_LE(LargestDifference(one.K, other.K), tolerance);
    EXPECT_LE(LargestDifference(one.D, other.D), tolerance);
    EXPECT_LE(LargestDifference(one.viewErrors, other.viewErrors), tolerance);
    EXPECT_EQ(a.cameras[i].seen, b.cameras[i].seen);
  }
  ASSERT_EQ(a.pair == nullptr, b.pair == nullptr);
  if (!a.pair) return;
  EXPECT_LE(LargestDifference(a.pair->report.R, b.pair->report.R), tolerance);
  EXPECT_LE(LargestDifference(a.pair->report.T, b.pair->report.T), tolerance);
}

TEST(Outcome, OfOneCameraIsWhatACalibratorOfItsOwnGives) {
  const auto views = unit::NoisyViews(9);
  const Outcome outcome = Compute(Named(views), SettingsOfPoints(), JustCompute);
  ASSERT_FALSE(outcome.Failed()) << outcome.fault;

  Calibrator own(unit::GRID, unit::UNIT, Calibrator::MONOCULAR, unit::FRAME.width, unit::FRAME.height);
  own.SetSolver(Calibrator::SOLVER_SPARSE);
  own.SetRobust(true);
  own.SetSheetShape(Calibrator::SHEET_AUTO);
  for (const auto& view : views) own.AddPoints(view);
  const ModelChoice choice = own.ChooseModel();
  ASSERT_FALSE(choice.prefersFisheye);
  own.ComputeCalibration(choice.model);

  ASSERT_EQ(outcome.cameras.size(), 1U);
  const common::Report& report = outcome.cameras[0].report;
  EXPECT_EQ(report.model, common::NameOfModel(choice.model));
  EXPECT_EQ(report.modelReasons, choice.reasons);
  EXPECT_EQ(report.rms, static_cast<double>(own.GetRMS()));
  EXPECT_SAME_MAT(report.K, own.GetK());
  EXPECT_SAME_MAT(report.D, own.GetDistCoefs());
  EXPECT_SAME_MAT(report.stdDevs, own.GetStdDevIntrinsics());
  EXPECT_SAME_MAT(report.viewErrors, own.GetPerViewErrors());
  EXPECT_EQ(outcome.cameras[0].verdict.ToJson(), own.GetVerdict().ToJson());
  EXPECT_EQ(report.frame, unit::FRAME);
  EXPECT_EQ(report.used.front(), "pose 1");
  EXPECT_EQ(report.used.size(), 9U);
  EXPECT_EQ(outcome.numbers, (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
  EXPECT_EQ(outcome.cameras[0].seen, views);
  EXPECT_FALSE(outcome.pair);
  EXPECT_FALSE(outcome.IsWorthless());
}

TEST(Outcome, GoesByTheEngineOptions) {
  auto settings = SettingsOfPoints(Calibrator::MODEL_CLASSIC);
  settings.engine.solver = Calibrator::SOLVER_OPENCV;
  const auto views = unit::NoisyViews(6);
  const Outcome outcome = Compute(Named(views), settings, JustCompute);
  ASSERT_FALSE(outcome.Failed()) << outcome.fault;
  EXPECT_EQ(outcome.cameras[0].engine->GetSolver(), Calibrator::SOLVER_OPENCV);
  const auto direct = unit::SolveDirectly(views, 0);
  EXPECT_TRUE(unit::SameResult(outcome.cameras[0].report.K, direct.K));
}

TEST(Outcome, IsAFisheyeWhereTheViewsAskForOneAndWhereItIsAskedFor) {
  const auto views = Named(guided_test::ViewsBy(guided_test::Fisheye(), 12));
  for (const int model : {common::MODEL_AUTO, common::MODEL_FISHEYE}) {
    const Outcome outcome = Compute(views, SettingsOfPoints(model), JustCompute);
    ASSERT_FALSE(outcome.Failed()) << outcome.fault;
    const common::Report& report = outcome.cameras[0].report;
    EXPECT_TRUE(report.fisheye);
    EXPECT_EQ(report.model, "fisheye");
    EXPECT_EQ(report.modelReasons.empty(), model == common::MODEL_FISHEYE);
    const auto error =
        world::MeanProjectionDistance(guided_test::Fisheye().lens, world::FisheyeFrom(report.K, report.D),
                                      unit::FRAME, {}, world::Alignment::Rotated);
    EXPECT_LT(error.mean, 0.1);

    const support::TemporaryFolder folder;
    const std::string name = folder.File("camera");
    common::OutputFiles files;
    EXPECT_EQ(Save(outcome, name, files), "");
    EXPECT_EQ(files.Names(), (std::vector<std::string>{name + "_fisheye.json", name + "_fisheye_verdict.json",
                                                       name + "_fisheye_uncertainty.png"}));
    for (const std::string& file : files.Names()) EXPECT_TRUE(fs::exists(file)) << file;
    EXPECT_FALSE(fs::exists(name + ".json"));
  }
}

TEST(Outcome, IsNoFisheyeWhereAnotherModelIsAskedFor) {
  const auto views = Named(unit::NoisyViews(6));
  for (const int model : {Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL, Calibrator::MODEL_FULL}) {
    const Outcome outcome = Compute(views, SettingsOfPoints(model), JustCompute);
    ASSERT_FALSE(outcome.Failed()) << outcome.fault;
    EXPECT_EQ(outcome.cameras[0].report.model, common::NameOfModel(model));
    EXPECT_TRUE(outcome.cameras[0].report.modelReasons.empty());
  }
}

TEST(Outcome, TakesPartsOfGridsForWhatWasSeenOfThem) {
  const auto views = WithAPart(Named(unit::NoisyViews(8)), 2, 0, 4);
  const Outcome outcome = Compute(views, SettingsOfPoints(Calibrator::MODEL_CLASSIC), JustCompute);
  ASSERT_FALSE(outcome.Failed()) << outcome.fault;
  const guided::CameraOutcome& camera = outcome.cameras[0];
  EXPECT_EQ(camera.report.parts.of, 44U);
  EXPECT_EQ(camera.report.parts.circles, std::vector<size_t>{40});
  EXPECT_EQ(camera.seen[2].size(), 40U);
  EXPECT_EQ(camera.seen[2].front(), views[2].snapshot.cameras[0].centres[4]);
  EXPECT_EQ(camera.seen[3].size(), 44U);
}

TEST(Outcome, OfViewsThatAgreeWithNoCameraIsAFault) {
  cv::RNG random(5);
  unit::PointLists nonsense(6);
  unit::PointLists still(6, std::vector<cv::Point2d>(44, cv::Point2d(320.0, 240.0)));
  for (auto& view : nonsense) {
    for (int k = 0; k < 44; ++k) view.emplace_back(random.uniform(0.0, 640.0), random.uniform(0.0, 480.0));
  }
  for (const auto& views : {nonsense, still}) {
    for (const int model : {common::MODEL_AUTO, Calibrator::MODEL_CLASSIC, common::MODEL_FISHEYE}) {
      Outcome outcome;
      ASSERT_NO_THROW(outcome = Compute(Named(views), SettingsOfPoints(model), JustCompute));
      EXPECT_TRUE(outcome.Failed() || outcome.IsWorthless()) << model;
      EXPECT_EQ(outcome.cameras.empty(), outcome.Failed());
      // A clause, without the place in a library's source.
      for (const char* foreign : {"\n", "OpenCV", ".cpp", "error", "in function", "(", "Assertion"})
        EXPECT_EQ(outcome.fault.find(foreign), std::string::npos) << outcome.fault;
      if (!outcome.Failed()) continue;
      EXPECT_TRUE(std::islower(outcome.fault.front())) << outcome.fault;
      EXPECT_NE(outcome.fault.back(), '.') << outcome.fault;
    }
  }
}

TEST(Outcome, OfTooFewViewsSaysHowManyThereAre) {
  EXPECT_EQ(Compute({}, SettingsOfPoints(), JustCompute).fault, "there are no views");
  const Outcome four = Compute(Named(unit::NoisyViews(4)), SettingsOfPoints(), JustCompute);
  EXPECT_EQ(four.fault, "there are 4 views, and at least five are needed");
  EXPECT_FALSE(four.IsWorthless());
  EXPECT_TRUE(four.cameras.empty());
  EXPECT_EQ(four.numbers.size(), 4U);
}

TEST(Outcome, IsWorthlessWhenNothingIsKnownByIt) {
  const Outcome outcome =
      Compute(Named(guided_test::FacingViews(6)), SettingsOfPoints(Calibrator::MODEL_CLASSIC), JustCompute);
  ASSERT_FALSE(outcome.Failed()) << outcome.fault;
  EXPECT_TRUE(outcome.IsWorthless()) << outcome.cameras[0].verdict.ToString();
}

TEST(Outcome, SaysWhichFileCannotBeWritten) {
  const Outcome outcome =
      Compute(Named(unit::NoisyViews(6)), SettingsOfPoints(Calibrator::MODEL_CLASSIC), JustCompute);
  ASSERT_FALSE(outcome.Failed()) << outcome.fault;
  common::OutputFiles files;
  EXPECT_EQ(Save(outcome, "/nowhere/camera", files), "/nowhere/camera.json");
  EXPECT_TRUE(files.Names().empty());
  for (const char* end : {".json", "_verdict.json", "_uncertainty.png"}) {
    const support::TemporaryFolder folder;
    const std::string name = folder.File("camera");
    fs::create_directory(name + end);
    common::OutputFiles some;
    EXPECT_EQ(Save(outcome, name, some), name + end);
  }
}

TEST(Outcome, IsTheSameHoweverOftenItIsComputed) {
  for (const auto& views : {Named(unit::NoisyViews(8)), Named(unit::NoisyPairs(8))})
    ExpectSame(Compute(views, SettingsOfPoints(), JustCompute),
               Compute(views, SettingsOfPoints(), JustCompute), 0.0);
}

TEST(Outcome, IsTheSameFromViewsThatWereStored) {
  for (auto views : {Named(unit::NoisyViews(8)), Named(unit::NoisyPairs(8))}) {
    views = WithAPart(views, 3, 0, 4);
    auto& seen = views[5].snapshot.cameras[0];
    seen.deviations.assign(44, 0.031);
    const support::TemporaryFolder folder;
    velmora::SessionSettings kept;
    kept.grid = unit::GRID;
    kept.unit = static_cast<double>(unit::UNIT);
    kept.imageSizes.assign(views[0].snapshot.cameras.size(), unit::FRAME);
    {
      const auto session = velmora::Session::Create(folder.File("a.velmora"), kept);
      for (const NamedSnapshot& view : views) session->Add(velmora::ToBeStored(view.snapshot));
    }
    const auto session = velmora::Session::Open(folder.File("a.velmora"));
    auto stored = views;
    for (NamedSnapshot& view : stored) view.snapshot = velmora::FromStored(session->Snapshot(view.number));
    ExpectSame(Compute(stored, SettingsOfPoints(), JustCompute),
               Compute(views, SettingsOfPoints(), JustCompute), 1e-12);
  }
}

TEST(Outcome, WithoutAComputationIsAFault) {
  const auto views = Named(unit::NoisyViews(6));
  const Outcome refused = Compute(views, SettingsOfPoints(), [](const std::shared_ptr<Calibrator>&) {
    throw std::runtime_error("it was cancelled");
  });
  EXPECT_EQ(refused.fault, "it was cancelled");
  EXPECT_TRUE(refused.cameras.empty());
  int iterations = 0;
  const Outcome cancelled =
      Compute(views, SettingsOfPoints(Calibrator::MODEL_CLASSIC),
              [&iterations](const std::shared_ptr<Calibrator>& engine) {
                engine->SetProgressListener([&iterations, raw = engine.get()](int, double) {
                  ++iterations;
                  raw->CancelComputation();
                });
              });
  EXPECT_TRUE(cancelled.Failed());
  EXPECT_EQ(iterations, 1);
}

}  // namespace
