/// A stereo calibrator under many threads at once. Meant for the thread sanitizer as much as for its own
/// checks.
#include <gtest/gtest.h>

#include <atomic>
#include <nlohmann/json.hpp>
#include <set>
#include <thread>

#include "Calibrator.h"
#include "unit/Scopes.h"
#include "unit/StereoCollection.h"
#include "unit/ThreadGroup.h"

namespace {

const std::set<int> STATUSES = {Calibrator::STATUS_NOT_READY, Calibrator::STATUS_READY,
                                Calibrator::STATUS_COMPLETED, Calibrator::STATUS_PROGRESS};

/// Reads everything that may be read at any time, and checks that it makes sense.
void ReadEverything(Calibrator& calibrator) {
  EXPECT_EQ(STATUSES.count(calibrator.GetStatus()), 1U);
  EXPECT_GE(calibrator.GetNumberOfRecords(), 0);
  EXPECT_FALSE(calibrator.IsDetected());
  const float rms = calibrator.GetRMS();
  EXPECT_TRUE(rms == -1.0F || rms > 0.0F) << rms;
  for (const cv::Mat& matrix : {calibrator.GetKLeft(), calibrator.GetKRight(), calibrator.GetR(),
                                calibrator.GetEssentialMatrix(), calibrator.GetFundamentalMatrix()}) {
    EXPECT_TRUE(matrix.empty() || (matrix.size() == cv::Size(3, 3) && cv::norm(matrix) > 0.0));
  }
  for (const cv::Mat& matrix : {calibrator.GetDistCoefsLeft(), calibrator.GetDistCoefsRight()}) {
    EXPECT_TRUE(matrix.empty() || matrix.size() == cv::Size(14, 1));
  }
  const cv::Mat T = calibrator.GetStereoTranslation();
  EXPECT_TRUE(T.empty() || cv::norm(T) > 0.0);
  EXPECT_TRUE(calibrator.GetT().empty());
  EXPECT_LE(calibrator.GetBaseline(), 0.0);
  const nlohmann::json answer = nlohmann::json::parse(calibrator.GetStatus_QVX());
  EXPECT_EQ(STATUSES.count(answer.at("ii").get<int>()), 1U);
  const std::string text = calibrator.SaveResult(false, "");
  if (!text.empty()) {
    EXPECT_EQ(nlohmann::json::parse(text).size(), 10U);
  }
}

TEST(StereoConcurrency, DetectsAndAddsWhileOthersReadAddResetAndCompute) {
  constexpr int DETECTIONS = 10;
  const unit::ScopedLogLevel silent(0);
  const auto pairs = unit::NoisyPairs(6);
  const auto calibrator = unit::MakeCalibrator(Calibrator::STEREO);
  for (int view = 0; view < 2; ++view) unit::PairWithGrid(view);
  std::atomic<int> refused{0};
  std::atomic<int> found{0};
  std::atomic<bool> detecting{true};

  unit::ThreadGroup threadGroup;
  threadGroup.Add([&] {
    for (int i = 0; i < DETECTIONS; ++i) {
      unit::ImagePair pair = unit::PairWithGrid(i % 2);
      std::vector<cv::Point2d> left;
      std::vector<cv::Point2d> right;
      const bool detected = calibrator->DetectStereoPoints(pair.left, pair.right, left, right, i % 2 == 0);
      ++(detected ? found : refused);
      EXPECT_EQ(left.size(), detected ? 44U : 0U);
      EXPECT_EQ(right.size(), left.size());
      if (i % 3 == 0) calibrator->AddStereoPoints();
      if (i % 3 == 1) calibrator->AddStereoPoints(pair.left, pair.right, true);
    }
    detecting = false;
  });
  threadGroup.Add([&] {
    do {
      ReadEverything(*calibrator);
      std::this_thread::yield();
    } while (detecting);
  });
  threadGroup.Add([&] {
    for (int round = 0; round < 6; ++round) {
      for (size_t i = 0; i < pairs.left.size(); ++i) {
        calibrator->AddStereoPoints(pairs.left[i], pairs.right[i]);
        std::this_thread::yield();
      }
      const float rms = calibrator->ComputeCalibrationStereo(unit::LeftResult(), unit::RightResult(),
                                                             Calibrator::MODEL_RATIONAL, false);
      EXPECT_TRUE(rms == -1.0F || rms > 0.0F) << rms;
      if (round % 2 == 1) calibrator->Reset();
    }
  });
  threadGroup.Add([&] {
    for (int round = 0; round < 6; ++round) {
      calibrator->ComputeCalibrationStereoMultithread(unit::LeftResult(), unit::RightResult(),
                                                      Calibrator::MODEL_CLASSIC);
      calibrator->SetFlipImage(round % 2 == 0);
      calibrator->Reset();
      std::this_thread::yield();
    }
  });
  threadGroup.RunToTheEnd();

  EXPECT_EQ(found + refused, DETECTIONS);
  // Whatever happened, the calibrator works as before.
  ASSERT_TRUE(unit::Eventually([&] {
    calibrator->Reset();
    return calibrator->GetNumberOfRecords() == 0 && calibrator->GetStatus() == Calibrator::STATUS_NOT_READY;
  }));
}

TEST(StereoConcurrency, CountsEachSnapshotOfSeveralThreadsOnceAndKeepsItsListsTogether) {
  constexpr int THREADS = 4;
  constexpr int EACH = 2;
  const auto pairs = unit::NoisyPairs(THREADS);
  const auto calibrator = unit::MakeCalibrator(Calibrator::STEREO);
  unit::ThreadGroup threadGroup;
  for (size_t thread = 0; thread < THREADS; ++thread) {
    threadGroup.Add([&, thread] {
      for (int i = 0; i < EACH; ++i) calibrator->AddStereoPoints(pairs.left[thread], pairs.right[thread]);
    });
  }
  threadGroup.RunToTheEnd();
  EXPECT_EQ(calibrator->GetNumberOfRecords(), THREADS * EACH);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_READY);
  // A left list beside another pair's right one would not fit at all.
  const float rms = calibrator->ComputeCalibrationStereo(unit::LeftResult(), unit::RightResult(),
                                                         Calibrator::MODEL_RATIONAL, false);
  EXPECT_GT(rms, 0.0F);
  EXPECT_LT(rms, 0.2F);
}

TEST(StereoConcurrency, TakesADetectionForOneThreadOnly) {
  const unit::ScopedLogLevel silent(0);
  const auto calibrator = unit::MakeCalibrator(Calibrator::STEREO);
  unit::ImagePair pair = unit::PairWithGrid();
  std::vector<cv::Point2d> left;
  std::vector<cv::Point2d> right;
  ASSERT_TRUE(calibrator->DetectStereoPoints(pair.left, pair.right, left, right, false));
  std::atomic<int> added{0};
  unit::ThreadGroup threadGroup;
  for (int thread = 0; thread < 4; ++thread) {
    threadGroup.Add([&] { added += calibrator->AddStereoPoints() ? 1 : 0; });
  }
  threadGroup.RunToTheEnd();
  EXPECT_EQ(added, 1);
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 1);
}

TEST(StereoConcurrency, EndsCompletedWhenSeveralComputationsAreAskedFor) {
  const auto pairs = unit::NoisyPairs(8);
  const auto direct = unit::SolveDirectly(pairs, unit::RATIONAL_FLAGS);
  const auto calibrator = unit::StereoCalibratorWith(pairs);
  std::atomic<int> computed{0};
  std::atomic<int> refused{0};
  unit::ThreadGroup threadGroup;
  for (int thread = 0; thread < 3; ++thread) {
    threadGroup.Add([&] {
      const float rms = calibrator->ComputeCalibrationStereo(unit::LeftResult(), unit::RightResult(),
                                                             Calibrator::MODEL_RATIONAL, false);
      ++(rms == -1.0F ? refused : computed);
    });
  }
  threadGroup.RunToTheEnd();
  EXPECT_EQ(computed + refused, 3);
  EXPECT_GE(computed, 1);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
  EXPECT_EQ(calibrator->GetRMS(), static_cast<float>(direct.rms));
}

}  // namespace
