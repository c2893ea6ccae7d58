/// A calibrator's computation: the solver's own numbers, the statuses around it, and its worker thread.
#include <gtest/gtest.h>

#include <future>
#include <opencv2/calib3d.hpp>
#include <thread>

#include "Calibrator.h"
#include "CapturedStdout.h"
#include "Matchers.h"
#include "TemporaryFolder.h"
#include "foundation/OneLine.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

void ExpectResultsOf(Calibrator& calibrator, const unit::DirectSolution& direct) {
  EXPECT_TRUE(unit::SameResult(static_cast<double>(calibrator.GetRMS()),
                               static_cast<double>(static_cast<float>(direct.rms))));
  EXPECT_TRUE(unit::SameResult(calibrator.GetK(), direct.K));
  EXPECT_TRUE(unit::SameResult(calibrator.GetDistCoefs(), direct.D));
  EXPECT_TRUE(unit::SameResult(calibrator.GetRotationVectors(), direct.rvecs));
  EXPECT_TRUE(unit::SameResult(calibrator.GetTranslationVectors(), direct.tvecs));
  EXPECT_TRUE(unit::SameResult(calibrator.GetStdDevIntrinsics(), direct.stdDevIntrinsics));
  EXPECT_TRUE(unit::SameResult(calibrator.GetPerViewErrors(), direct.perViewErrors));
}

/// Views of which one lacks a centre: the solver refuses them.
unit::PointLists UnevenViews() {
  auto views = unit::NoisyViews(6);
  views.back().pop_back();
  return views;
}

/// What the solver says to the views.
std::string RefusalOf(const unit::PointLists& views) {
  try {
    unit::SolveDirectly(views, 0);
  } catch (const cv::Exception& refusal) {
    return refusal.what();
  }
  ADD_FAILURE() << "the solver takes the views";
  return "";
}

TEST(Computation, GivesTheSolversClassicNumbersBitForBit) {
  const auto views = unit::NoisyViews(8);
  const auto calibrator = unit::CalibratorWith(views);
  const auto direct = unit::SolveDirectly(views, 0);
  EXPECT_EQ(calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC), static_cast<float>(direct.rms));
  ExpectResultsOf(*calibrator, direct);
  EXPECT_EQ(calibrator->GetDistCoefs().size(), cv::Size(5, 1));
}

TEST(Computation, GivesTheSolversRationalNumbersBitForBit) {
  const auto views = unit::NoisyViews(8);
  const auto calibrator = unit::CalibratorWith(views);
  const auto direct = unit::SolveDirectly(views, cv::CALIB_RATIONAL_MODEL);
  EXPECT_EQ(calibrator->ComputeCalibration(Calibrator::MODEL_RATIONAL), static_cast<float>(direct.rms));
  ExpectResultsOf(*calibrator, direct);
  ASSERT_EQ(calibrator->GetDistCoefs().size(), cv::Size(14, 1));
  EXPECT_EQ(cv::countNonZero(calibrator->GetDistCoefs().colRange(0, 8)), 8);
  EXPECT_EQ(cv::countNonZero(calibrator->GetDistCoefs().colRange(8, 14)), 0);
}

TEST(Computation, GivesTheSolversFullNumbers) {
  const auto views = unit::NoisyViews(6);
  const auto calibrator = unit::CalibratorWith(views);
  const auto direct = unit::SolveDirectly(
      views, cv::CALIB_RATIONAL_MODEL + cv::CALIB_THIN_PRISM_MODEL + cv::CALIB_TILTED_MODEL);
  // The solver itself ends in one of two neighbouring results.
  EXPECT_NEAR(calibrator->ComputeCalibration(Calibrator::MODEL_FULL), direct.rms, 1e-6 * direct.rms);
  const double tolerance = unit::OpenCvRepeatsItself() ? 1e-6 : 1e-4;
  EXPECT_MAT_NEAR(calibrator->GetK(), direct.K, tolerance * direct.K.at<double>(0, 0));
  ASSERT_EQ(calibrator->GetDistCoefs().size(), cv::Size(14, 1));
  EXPECT_EQ(cv::countNonZero(calibrator->GetDistCoefs()), 14);
}

TEST(Computation, IsClassicForUnknownModels) {
  const auto views = unit::NoisyViews(6);
  const auto direct = unit::SolveDirectly(views, 0);
  for (const int model : {0, 15}) {
    const auto calibrator = unit::CalibratorWith(views);
    calibrator->ComputeCalibration(model);
    ExpectResultsOf(*calibrator, direct);
  }
}

TEST(Computation, NeedsFiveSnapshots) {
  for (const int count : {0, 4}) {
    const auto calibrator = unit::CalibratorWith(unit::NoisyViews(count));
    float rms = 0.0F;
    EXPECT_EQ(unit::PrintedBy([&] { rms = calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC); }),
              "ERROR : Can't compute calibration. At least 5 pictures are needed. Current: " +
                  std::to_string(count) + "\n");
    EXPECT_EQ(rms, -1.0F);
    EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_NOT_READY);
    EXPECT_TRUE(calibrator->GetK().empty());
  }
}

TEST(Computation, IsDoneWithFiveSnapshots) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(5));
  EXPECT_GT(calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC), 0.0F);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
}

TEST(Computation, KeepsTheSnapshotsAndPrintsNothing) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(6));
  const unit::ScopedLogLevel everything(5);
  EXPECT_EQ(unit::PrintedBy([&] { calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC); }), "");
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 6);
}

TEST(Computation, EndsTheAssistant) {
  const support::TemporaryFolder folder;
  unit::WriteAssistantModel(folder.File("model.json"), unit::NoisyViews(7));
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(6));
  calibrator->EnableAssistant(folder.File("model.json"));
  ASSERT_EQ(calibrator->GetAssistantGoal(), 7);
  calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  EXPECT_EQ(calibrator->GetAssistantGoal(), -1);
}

TEST(Computation, LeavesTheAssistantWhenItIsRefused) {
  const support::TemporaryFolder folder;
  unit::WriteAssistantModel(folder.File("model.json"), unit::NoisyViews(7));
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(4));
  calibrator->EnableAssistant(folder.File("model.json"));
  unit::PrintedBy([&] { calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC); });
  EXPECT_EQ(calibrator->GetAssistantGoal(), 7);
}

TEST(Computation, IsRefusedDuringProgressWithoutAMessage) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(6));
  calibrator->SetStatus(Calibrator::STATUS_PROGRESS);
  float rms = 0.0F;
  EXPECT_EQ(unit::PrintedBy([&] { rms = calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC); }), "");
  EXPECT_EQ(rms, -1.0F);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_PROGRESS);
}

TEST(Computation, IsRefusedInAStereoCalibratorWithoutAMessage) {
  const auto stereo = unit::MakeCalibrator(Calibrator::STEREO);
  float rms = 0.0F;
  EXPECT_EQ(unit::PrintedBy([&] { rms = stereo->ComputeCalibration(Calibrator::MODEL_CLASSIC); }), "");
  EXPECT_EQ(rms, -1.0F);
  EXPECT_EQ(stereo->GetStatus(), Calibrator::STATUS_NOT_READY);
}

TEST(Computation, RunsOnceAtATime) {
  // A computation that lasts, so that the second call comes while it is under way.
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(12));
  std::future<float> first =
      std::async(std::launch::async, [&] { return calibrator->ComputeCalibration(Calibrator::MODEL_FULL); });
  ASSERT_TRUE(unit::Eventually([&] { return calibrator->isCalibrating(); }));
  const float second = calibrator->ComputeCalibration(Calibrator::MODEL_FULL);
  const bool atOnce = calibrator->isCalibrating();
  const float rmsMeanwhile = calibrator->GetRMS();
  const cv::Mat KMeanwhile = calibrator->GetK();
  calibrator->AddPoints(unit::NoisyViews(1).front());
  calibrator->Reset();
  const bool stillRunning = calibrator->isCalibrating();
  const float rms = first.get();

  EXPECT_EQ(second, -1.0F);
  EXPECT_TRUE(atOnce) << "the second call waited for the first";
  EXPECT_TRUE(stillRunning) << "the first ended too early for this test";
  EXPECT_EQ(rmsMeanwhile, -1.0F);
  EXPECT_TRUE(KMeanwhile.empty());
  EXPECT_GT(rms, 0.0F);
  EXPECT_EQ(calibrator->GetRMS(), rms);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 12);
}

TEST(Computation, OnAWorkerGivesTheSameNumbers) {
  const auto views = unit::NoisyViews(8);
  const auto calibrator = unit::CalibratorWith(views);
  calibrator->ComputeCalibrationMultithread(Calibrator::MODEL_RATIONAL);
  ASSERT_TRUE(unit::Eventually([&] { return calibrator->GetStatus() == Calibrator::STATUS_COMPLETED; }));
  ExpectResultsOf(*calibrator, unit::SolveDirectly(views, cv::CALIB_RATIONAL_MODEL));
}

TEST(Computation, OnAWorkerNeedsFiveSnapshotsToo) {
  auto calibrator = unit::CalibratorWith(unit::NoisyViews(4));
  const std::string printed = unit::PrintedBy([&] {
    calibrator->ComputeCalibrationMultithread(Calibrator::MODEL_CLASSIC);
    calibrator.reset();  // waits for the worker
  });
  EXPECT_EQ(printed, "ERROR : Can't compute calibration. At least 5 pictures are needed. Current: 4\n");
}

TEST(Computation, OnAWorkerLogsAFailureAndGivesTheStatusBack) {
  const auto views = UnevenViews();
  const std::string refusal = RefusalOf(views);
  const auto calibrator = unit::CalibratorWith(views);
  const std::string expected = "ERROR : Calibration failed: " + OneLine(refusal) + "\n";
  std::string printed;
  {
    const support::CapturedStdout captured;
    calibrator->ComputeCalibrationMultithread(Calibrator::MODEL_CLASSIC);
    unit::Eventually([&] { return captured.Text().size() >= expected.size(); });
    printed = captured.Text();
  }
  EXPECT_EQ(printed, expected);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_READY);
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 6);
}

TEST(Computation, OnAWorkerIsWaitedForByTheCalibratorsEnd) {
  const auto views = UnevenViews();
  const std::string refusal = RefusalOf(views);
  for (int repetition = 0; repetition < 20; ++repetition) {
    auto calibrator = unit::CalibratorWith(views);
    // The failure's line is there by the end of the destructor because that waits for the worker.
    const std::string printed = unit::PrintedBy([&] {
      calibrator->ComputeCalibrationMultithread(Calibrator::MODEL_CLASSIC);
      calibrator.reset();
    });
    ASSERT_EQ(printed, "ERROR : Calibration failed: " + OneLine(refusal) + "\n");
  }
}

TEST(Computation, OnAWorkerOutlivesItsCaller) {
  const auto views = unit::NoisyViews(6);
  const auto calibrator = unit::CalibratorWith(views);
  std::thread caller([&] {
    const int model = Calibrator::MODEL_CLASSIC;
    calibrator->ComputeCalibrationMultithread(model);
  });
  caller.join();
  ASSERT_TRUE(unit::Eventually([&] { return calibrator->GetStatus() == Calibrator::STATUS_COMPLETED; }));
  ExpectResultsOf(*calibrator, unit::SolveDirectly(views, 0));
}

TEST(Computation, LetsTheSolversExceptionThroughAndIsUsableAgain) {
  const auto calibrator = unit::CalibratorWith(UnevenViews());
  EXPECT_THROW(calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC), cv::Exception);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_READY);
  EXPECT_EQ(calibrator->GetRMS(), -1.0F);
  EXPECT_TRUE(calibrator->GetK().empty());

  calibrator->Reset();
  for (const auto& view : unit::NoisyViews(5)) calibrator->AddPoints(view);
  EXPECT_GT(calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC), 0.0F);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
}

TEST(Computation, KeepsEarlierResultsWhenTheNextOneFails) {
  const auto calibrator = unit::CompletedCalibrator();
  const cv::Mat K = calibrator->GetK().clone();
  const cv::Mat errors = calibrator->GetPerViewErrors().clone();
  calibrator->AddPoints(UnevenViews().back());
  EXPECT_THROW(calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC), cv::Exception);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_READY);
  EXPECT_SAME_MAT(calibrator->GetK(), K);
  EXPECT_SAME_MAT(calibrator->GetPerViewErrors(), errors);
}

/// Everything that a calibrator hands out, shared with it.
std::vector<cv::Mat> HeldResults(Calibrator& calibrator) {
  return {calibrator.GetK(),
          calibrator.GetDistCoefs(),
          calibrator.GetRotationVectors(),
          calibrator.GetTranslationVectors(),
          calibrator.GetStdDevIntrinsics(),
          calibrator.GetPerViewErrors()};
}

std::vector<cv::Mat> CopiesOf(const std::vector<cv::Mat>& matrices) {
  std::vector<cv::Mat> copies;
  for (const cv::Mat& matrix : matrices) copies.push_back(matrix.clone());
  return copies;
}

TEST(Computation, NeverWritesIntoMatricesThatCallersHold) {
  // Everything but the coefficients would fit into the buffers of the first computation, all into the
  // second's.
  const auto calibrator = unit::CompletedCalibrator();
  const auto first = HeldResults(*calibrator);
  const auto firstCopies = CopiesOf(first);
  ASSERT_GT(calibrator->ComputeCalibration(Calibrator::MODEL_RATIONAL), 0.0F);
  const auto second = HeldResults(*calibrator);
  const auto secondCopies = CopiesOf(second);
  calibrator->AddPoints(unit::NoisyViews(8).back());
  ASSERT_GT(calibrator->ComputeCalibration(Calibrator::MODEL_RATIONAL), 0.0F);
  const auto third = HeldResults(*calibrator);

  for (size_t i = 0; i < first.size(); ++i) {
    SCOPED_TRACE(i);
    EXPECT_FALSE(support::SameMat(second[i], first[i]));
    EXPECT_FALSE(support::SameMat(third[i], second[i]));
    EXPECT_SAME_MAT(first[i], firstCopies[i]);
    EXPECT_SAME_MAT(second[i], secondCopies[i]);
  }
}

TEST(Computation, StartsFromScratchEachTime) {
  const auto views = unit::NoisyViews(7);
  const auto calibrator = unit::CalibratorWith(views);
  calibrator->ComputeCalibration(Calibrator::MODEL_FULL);
  calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  ExpectResultsOf(*calibrator, unit::SolveDirectly(views, 0));
}

}  // namespace
