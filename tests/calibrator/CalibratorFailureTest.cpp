/// How a calibrator tells that the computation that ended last brought no result.
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <limits>

#include "Calibrator.h"
#include "Matchers.h"
#include "TemporaryFolder.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"
#include "unit/StereoCollection.h"

namespace {

constexpr int CLASSIC = Calibrator::MODEL_CLASSIC;

/// A view that lacks a centre: solvers refuse it.
std::vector<cv::Point2d> UnevenView() {
  auto view = unit::NoisyViews(1).front();
  view.pop_back();
  return view;
}

/// Computes on a thread of the calibrator's own, waits for the end, and asks what became of it.
bool FailsInBackground(Calibrator& calibrator, int model = CLASSIC) {
  bool ended = false;
  unit::PrintedBy([&] {
    calibrator.ComputeCalibrationMultithread(model);
    ended = unit::Eventually([&] { return !calibrator.IsComputing(); });
  });
  EXPECT_TRUE(ended);
  return calibrator.HasFailed();
}

constexpr std::chrono::seconds PATIENCE{60};

/// A calibrator whose sparse solver waits in its first iteration until it is let go on.
class HeldComputation {
 public:
  HeldComputation() : calibrator(unit::CompletedCalibrator()) {
    calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
    calibrator->SetProgressListener([this](int iterations, double) {
      if (iterations != 1) return;
      begun_.set_value();
      goOn_.get_future().wait_for(PATIENCE);
    });
    calibrator->ComputeCalibrationMultithread(CLASSIC);
    EXPECT_EQ(begun_.get_future().wait_for(PATIENCE), std::future_status::ready);
  }

  void GoOnToItsEnd() {
    calibrator->SetProgressListener({});
    goOn_.set_value();
    EXPECT_TRUE(unit::Eventually([&] { return !calibrator->IsComputing(); }));
  }

  const std::unique_ptr<Calibrator> calibrator;

 private:
  std::promise<void> begun_;
  std::promise<void> goOn_;
};

TEST(Failure, IsNoneBeforeAnythingWasComputed) {
  EXPECT_FALSE(unit::MakeCalibrator()->HasFailed());
}

TEST(Failure, IsNoneAfterAResult) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(6));
  EXPECT_FALSE(FailsInBackground(*calibrator));
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
}

TEST(Failure, OfTheSolverIsToldBesideTheEarlierResult) {
  const auto calibrator = unit::CompletedCalibrator();
  const cv::Mat K = calibrator->GetK().clone();
  calibrator->AddPoints(UnevenView());
  EXPECT_TRUE(FailsInBackground(*calibrator));
  EXPECT_SAME_MAT(calibrator->GetK(), K);
}

TEST(Failure, IsAResultThatIsNotFinite) {
  const auto calibrator = unit::CompletedCalibrator();
  const cv::Mat K = calibrator->GetK().clone();
  auto view = unit::NoisyViews(1).front();
  view[7].x = std::numeric_limits<double>::quiet_NaN();
  calibrator->AddPoints(view);
  for (const int status : {Calibrator::STATUS_READY, Calibrator::STATUS_COMPLETED}) {
    calibrator->SetStatus(status);
    EXPECT_THROW(calibrator->ComputeCalibration(CLASSIC), cv::Exception);
    EXPECT_TRUE(calibrator->HasFailed());
    EXPECT_EQ(calibrator->GetStatus(), status);
    EXPECT_SAME_MAT(calibrator->GetK(), K);
    EXPECT_EQ(calibrator->GetRMS(), -1.0F);
  }
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 7);
}

TEST(Failure, IsAResultOfASheetWithoutASize) {
  // As NewCalibrator makes a calibrator of: its answer is that a computation fails.
  Calibrator calibrator(unit::GRID, 1e-30F, Calibrator::MONOCULAR, unit::FRAME.width, unit::FRAME.height);
  for (const auto& view : unit::NoisyViews(6)) calibrator.AddPoints(view);
  EXPECT_TRUE(FailsInBackground(calibrator));
  EXPECT_EQ(calibrator.GetStatus(), Calibrator::STATUS_READY);
}

TEST(Failure, IsAPairsResultThatIsNotFinite) {
  const auto calibrator = unit::CompletedStereoCalibrator();
  const cv::Mat R = calibrator->GetR().clone();
  const cv::Mat K = calibrator->GetKLeft().clone();
  const float rms = calibrator->GetRMS();
  auto pairs = unit::NoisyPairs(1);
  pairs.right[0][7].y = std::numeric_limits<double>::quiet_NaN();
  calibrator->AddStereoPoints(pairs.left[0], pairs.right[0]);
  EXPECT_THROW(calibrator->ComputeCalibrationStereo(unit::RightResult(), unit::LeftResult(), CLASSIC, false),
               cv::Exception);
  EXPECT_TRUE(calibrator->HasFailed());
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_READY);
  EXPECT_SAME_MAT(calibrator->GetR(), R);
  EXPECT_SAME_MAT(calibrator->GetKLeft(), K);
  EXPECT_EQ(calibrator->GetRMS(), rms);
}

TEST(Failure, ForWantOfSnapshotsIsToldToo) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(4));
  EXPECT_TRUE(FailsInBackground(*calibrator));
}

TEST(Failure, OfACallOnTheCallersThreadIsToldToo) {
  const auto calibrator = unit::CompletedCalibrator();
  calibrator->AddPoints(UnevenView());
  EXPECT_THROW(calibrator->ComputeCalibration(CLASSIC), cv::Exception);
  EXPECT_TRUE(calibrator->HasFailed());
}

TEST(Failure, IsWhateverAProgressListenerThrows) {
  const auto calibrator = unit::CompletedCalibrator();
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  calibrator->SetProgressListener([](int, double) { throw 42; });
  EXPECT_EQ(unit::PrintedBy([&] {
              calibrator->ComputeCalibrationMultithread(CLASSIC);
              EXPECT_TRUE(unit::Eventually([&] { return !calibrator->IsComputing(); }));
            }),
            "ERROR : Calibration failed.\n");
  EXPECT_TRUE(calibrator->HasFailed());
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
}

TEST(Failure, OfAPairGivesTheEarlierIntrinsicsBackWhateverWasThrown) {
  const auto calibrator = unit::CompletedStereoCalibrator();
  const cv::Mat K = calibrator->GetKLeft().clone();
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  calibrator->SetProgressListener([](int, double) { throw 42; });
  EXPECT_THROW(calibrator->ComputeCalibrationStereo(unit::RightResult(), unit::LeftResult(), CLASSIC, false),
               int);
  EXPECT_SAME_MAT(calibrator->GetKLeft(), K);
  EXPECT_TRUE(calibrator->HasFailed());
}

TEST(Failure, IsForgottenWithTheNextResult) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(4));
  ASSERT_TRUE(FailsInBackground(*calibrator));
  for (const auto& view : unit::NoisyViews(2)) calibrator->AddPoints(view);
  EXPECT_TRUE(calibrator->HasFailed()) << "snapshots alone are no result";
  EXPECT_FALSE(FailsInBackground(*calibrator));
}

TEST(Failure, IsForgottenByAResetAndByANewAssistant) {
  const support::TemporaryFolder folder;
  unit::WriteAssistantModel(folder.File("model.json"), unit::NoisyViews(7));
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(4));
  ASSERT_TRUE(FailsInBackground(*calibrator));
  calibrator->EnableAssistant(folder.File("model.json"));
  EXPECT_FALSE(calibrator->HasFailed());
  ASSERT_TRUE(FailsInBackground(*calibrator));
  calibrator->Reset();
  EXPECT_FALSE(calibrator->HasFailed());
}

TEST(Failure, IsWhatACancelledComputationEndsIn) {
  HeldComputation held;
  held.calibrator->CancelComputation();
  unit::PrintedBy([&] { held.GoOnToItsEnd(); });
  EXPECT_TRUE(held.calibrator->HasFailed());
  EXPECT_EQ(held.calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
  EXPECT_FALSE(FailsInBackground(*held.calibrator));
}

TEST(Failure, IsNoneForACallThatComesDuringAnother) {
  HeldComputation held;
  held.calibrator->ComputeCalibrationMultithread(CLASSIC);
  EXPECT_EQ(held.calibrator->ComputeCalibration(CLASSIC), -1.0F);
  held.GoOnToItsEnd();
  EXPECT_FALSE(held.calibrator->HasFailed());
}

TEST(Failure, OfAPairIsToldBesideTheEarlierResult) {
  const auto calibrator = unit::CompletedStereoCalibrator();
  EXPECT_FALSE(calibrator->HasFailed());
  unit::PrintedBy([&] {
    calibrator->ComputeCalibrationStereoMultithread("nonsense", unit::RightResult(), CLASSIC);
    EXPECT_TRUE(unit::Eventually([&] { return !calibrator->IsComputing(); }));
  });
  EXPECT_TRUE(calibrator->HasFailed());
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
  calibrator->ComputeCalibrationStereoMultithread(unit::LeftResult(), unit::RightResult(), CLASSIC);
  EXPECT_TRUE(unit::Eventually([&] { return !calibrator->IsComputing(); }));
  EXPECT_FALSE(calibrator->HasFailed());
}

TEST(Failure, IsNeverMissedNorInventedBetweenComputations) {
  // Whoever sees that nothing is computed any more sees what became of it.
  const auto calibrator = unit::CompletedCalibrator();
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  for (int round = 0; round < 100; ++round) {
    const bool shallFail = round % 2 == 1;
    calibrator->SetProgressListener([&](int, double) {
      if (shallFail) throw std::runtime_error("as asked for");
    });
    ASSERT_EQ(FailsInBackground(*calibrator), shallFail) << "round " << round;
  }
}

}  // namespace
