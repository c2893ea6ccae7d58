/// A calibrator's choice between the solvers.
#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <nlohmann/json.hpp>
#include <thread>

#include "Calibrator.h"
#include "Matchers.h"
#include "model/TargetGeometry.h"
#include "solver/SparseIntrinsics.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

std::vector<std::string> KeysOf(const std::string& text) {
  std::vector<std::string> keys;
  const nlohmann::json document = nlohmann::json::parse(text);
  for (const auto& item : document.items()) keys.push_back(item.key());
  return keys;
}

TEST(Solver, IsOpenCVsUnlessAnotherIsChosen) {
  const auto calibrator = unit::MakeCalibrator();
  EXPECT_EQ(calibrator->GetSolver(), Calibrator::SOLVER_OPENCV);
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  EXPECT_EQ(calibrator->GetSolver(), Calibrator::SOLVER_SPARSE);
  calibrator->SetSolver(Calibrator::SOLVER_OPENCV);
  EXPECT_EQ(calibrator->GetSolver(), Calibrator::SOLVER_OPENCV);
}

TEST(Solver, StaysWhenAnUnknownOneIsAskedFor) {
  const auto calibrator = unit::MakeCalibrator();
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  EXPECT_EQ(unit::PrintedBy([&] { calibrator->SetSolver(7); }), "ERROR : There is no solver 7.\n");
  EXPECT_EQ(calibrator->GetSolver(), Calibrator::SOLVER_SPARSE);
}

TEST(Solver, GoesByTheShapeOfTheSheetThatIsKnown) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(9));
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  const float flat = calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  std::vector<cv::Point3d> points = MakeObjectTemplate(unit::GRID, unit::UNIT);
  calibrator->SetSheetShape(points);
  EXPECT_NEAR(calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC), flat, 1e-4F);
  EXPECT_EQ(calibrator->GetVerdict().sheet.model, "known");
  EXPECT_LT(calibrator->GetVerdict().sheet.bend, 1e-9);
  for (size_t k = 0; k < points.size(); ++k) points[k].z = k < 22 ? 0.004 : -0.004;
  calibrator->SetSheetShape(points);
  EXPECT_GT(calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC), 2.0F * flat);
  const CalibrationVerdict wrong = calibrator->GetVerdict();
  EXPECT_TRUE(std::any_of(wrong.remarks.begin(), wrong.remarks.end(), [](const auto& remark) {
    return remark.reason == "The given shape of the sheet fits worse than a flat one.";
  })) << wrong.ToJson();
  EXPECT_NE(wrong.grade, CalibrationVerdict::Grade::Good);
  points.pop_back();
  EXPECT_EQ(unit::PrintedBy([&] { calibrator->SetSheetShape(points); }),
            "ERROR : The shape of the sheet is not one of this grid: a point near each of the 44 places is "
            "needed.\n");
  calibrator->SetSheetShape(Calibrator::SHEET_FLAT);
  EXPECT_EQ(calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC), flat);
}

TEST(Solver, OfTheSparseKindGivesItsNumbersToTheAccessors) {
  const auto views = unit::NoisyViews(7);
  const auto calibrator = unit::CalibratorWith(views);
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  const float rms = calibrator->ComputeCalibration(Calibrator::MODEL_RATIONAL);
  const IntrinsicsResult expected =
      SolveIntrinsicsSparsely({views.size(), MakeObjectTemplate(unit::GRID, unit::UNIT)}, views, unit::FRAME,
                              Calibrator::MODEL_RATIONAL);
  EXPECT_EQ(rms, static_cast<float>(expected.rms));
  EXPECT_SAME_MAT(calibrator->GetK(), expected.K);
  EXPECT_SAME_MAT(calibrator->GetDistCoefs(), expected.D);
  EXPECT_SAME_MAT(calibrator->GetStdDevIntrinsics(), expected.stdDevIntrinsics);
  EXPECT_SAME_MAT(calibrator->GetPerViewErrors(), expected.perViewErrors);
  EXPECT_SAME_MAT(calibrator->GetRotationVectors(), expected.rvecs);
  EXPECT_SAME_MAT(calibrator->GetTranslationVectors(), expected.tvecs);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
}

TEST(Solver, DoesNotChangeTheResultFilesForm) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(6));
  calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  const std::string dense = calibrator->SaveResult(false, "");
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  const std::string sparse = calibrator->SaveResult(false, "");
  EXPECT_EQ(KeysOf(sparse), KeysOf(dense));
  for (const char* const name : {"cameraMatrix", "distCoefs"}) {
    const auto a = nlohmann::json::parse(sparse)[name];
    const auto b = nlohmann::json::parse(dense)[name];
    for (const char* const key : {"rows", "cols", "type", "depth"}) EXPECT_EQ(a[key], b[key]) << name << key;
  }
}

TEST(Solver, GivesTheStatusBackWhenItFails) {
  auto views = unit::NoisyViews(6);
  views.back().pop_back();
  const auto calibrator = unit::CalibratorWith(views);
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  EXPECT_THROW(calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC), cv::Exception);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_READY);
}

TEST(Solver, MayBeChosenWhileAComputationRuns) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(8));
  std::promise<void> chosen;
  std::thread chooser([&] {
    for (int i = 0; i < 1000; ++i) {
      calibrator->SetSolver(i % 2 == 0 ? Calibrator::SOLVER_OPENCV : Calibrator::SOLVER_SPARSE);
    }
    chosen.set_value();
  });
  const float first = calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  chosen.get_future().wait();
  chooser.join();
  const float second = calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  EXPECT_GT(first, 0.0F);
  EXPECT_NEAR(first, second, 1e-6F);
}

TEST(Solver, TellsTheListenerOfItsIterations) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(6));
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  std::vector<std::pair<int, double>> told;
  calibrator->SetProgressListener([&](int iterations, double rms) { told.emplace_back(iterations, rms); });
  const float rms = calibrator->ComputeCalibration(Calibrator::MODEL_RATIONAL);
  ASSERT_GE(told.size(), 5U);
  for (size_t i = 0; i < told.size(); ++i) EXPECT_EQ(told[i].first, static_cast<int>(i) + 1);
  EXPECT_EQ(static_cast<float>(told.back().second), rms);
  calibrator->SetProgressListener({});
  const size_t before = told.size();
  calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  EXPECT_EQ(told.size(), before);
}

TEST(Solver, LeavesEverythingAsItWasWhenItIsCancelled) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(6));
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  const float rms = calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  const cv::Mat K = calibrator->GetK().clone();
  const cv::Mat poses = calibrator->GetRotationVectors().clone();
  std::promise<void> started;
  std::promise<void> goOn;
  calibrator->SetProgressListener([&](int iterations, double) {
    if (iterations != 1) return;
    started.set_value();
    goOn.get_future().wait();
  });
  auto second =
      std::async(std::launch::async, [&] { return calibrator->ComputeCalibration(Calibrator::MODEL_FULL); });
  started.get_future().wait();
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_PROGRESS);
  calibrator->CancelComputation();
  goOn.set_value();
  EXPECT_EQ(second.get(), -1.0F);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
  EXPECT_EQ(calibrator->GetRMS(), rms);
  EXPECT_SAME_MAT(calibrator->GetK(), K);
  EXPECT_SAME_MAT(calibrator->GetRotationVectors(), poses);
  // A cancellation does not outlive what it ended.
  calibrator->SetProgressListener({});
  EXPECT_GT(calibrator->ComputeCalibration(Calibrator::MODEL_FULL), 0.0F);
}

TEST(Solver, IsCancelledByItsListenerToo) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(6));
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  calibrator->SetRobust(true);
  calibrator->SetProgressListener([&](int, double) { calibrator->CancelComputation(); });
  EXPECT_EQ(
      unit::PrintedBy([&] { EXPECT_EQ(calibrator->ComputeCalibration(Calibrator::MODEL_RATIONAL), -1.0F); }),
      "WARN  : The computation was cancelled.\n");
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_READY);
  EXPECT_TRUE(calibrator->GetK().empty());
}

TEST(Solver, IsNotCancelledAheadOfTime) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(6));
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  calibrator->CancelComputation();
  EXPECT_GT(calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC), 0.0F);
}

TEST(Solver, FailsWithItsListener) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(6));
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  calibrator->SetProgressListener([](int, double) { throw std::runtime_error("no"); });
  EXPECT_THROW(calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC), std::runtime_error);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_READY);
}

}  // namespace
