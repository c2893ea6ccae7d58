/// A calibrator under many threads at once. Meant for the thread sanitizer as much as for its own checks.
#include <gtest/gtest.h>

#include <atomic>
#include <nlohmann/json.hpp>
#include <set>
#include <thread>

#include "Calibrator.h"
#include "Log.h"
#include "TemporaryFolder.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"
#include "unit/ThreadGroup.h"

namespace {

const std::set<int> STATUSES = {Calibrator::STATUS_NOT_READY, Calibrator::STATUS_READY,
                                Calibrator::STATUS_COMPLETED, Calibrator::STATUS_PROGRESS};

/// Reads everything that may be read at any time, and checks that it makes sense.
void ReadEverything(Calibrator& calibrator) {
  EXPECT_EQ(STATUSES.count(calibrator.GetStatus()), 1U);
  EXPECT_GE(calibrator.GetNumberOfRecords(), 0);
  calibrator.IsDetected();
  calibrator.isCalibrating();
  calibrator.GetAssistantGoal();
  const float rms = calibrator.GetRMS();
  EXPECT_TRUE(rms == -1.0F || rms > 0.0F) << rms;
  const cv::Mat K = calibrator.GetK();
  EXPECT_TRUE(K.empty() || K.size() == cv::Size(3, 3));
  const cv::Mat errors = calibrator.GetPerViewErrors();
  EXPECT_TRUE(errors.empty() || errors.rows >= 5);
  const nlohmann::json answer = nlohmann::json::parse(calibrator.GetStatus_QVX());
  EXPECT_EQ(STATUSES.count(answer.at("ii").get<int>()), 1U);
  EXPECT_EQ(answer.count("cj"), answer.at("ii") == Calibrator::STATUS_COMPLETED ? 1U : 0U);
  const std::string text = calibrator.SaveResult(false, "");
  if (!text.empty()) {
    EXPECT_GT(nlohmann::json::parse(text).at("error").get<double>(), 0.0);
  }
}

TEST(CalibratorConcurrency, AnswersWithStatusCountAndResultOfOneMoment) {
  constexpr int ROUNDS = 3000;
  const unit::ScopedLogLevel silent(0);
  const auto views = unit::NoisyViews(5);
  const auto calibrator = unit::MakeCalibrator();
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  std::atomic<bool> changing{true};

  unit::ThreadGroup threadGroup;
  threadGroup.Add([&] {
    for (int round = 0; round < ROUNDS; ++round) {
      for (const auto& view : views) calibrator->AddPoints(view);
      if (round % 10 == 0) calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
      calibrator->Reset();
    }
    changing = false;
  });
  threadGroup.Add([&] {
    while (changing) {
      const nlohmann::json answer = nlohmann::json::parse(calibrator->GetStatus_QVX());
      const int status = answer.at("ii");
      ASSERT_EQ(answer.at("ni") == 5, status != Calibrator::STATUS_NOT_READY) << answer;
      if (status == Calibrator::STATUS_COMPLETED) {
        ASSERT_NE(answer.at("cj"), "") << answer;
      }
    }
  });
  threadGroup.RunToTheEnd();
}

TEST(CalibratorConcurrency, DetectsWhileOthersReadAddResetComputeAndSwitchTheAssistant) {
  constexpr int DETECTIONS = 16;
  const support::TemporaryFolder folder;
  const unit::ScopedCurrentFolder current(folder.Path());
  const unit::ScopedLogLevel silent(0);
  const auto views = unit::NoisyViews(8);
  unit::WriteAssistantModel(folder.File("model.json"), unit::NoisyViews(7));
  unit::Rendered();
  const auto calibrator = unit::MakeCalibrator();
  std::atomic<int> found{0};
  std::atomic<bool> detecting{true};

  unit::ThreadGroup threadGroup;
  threadGroup.Add([&] {
    for (size_t i = 0; i < DETECTIONS; ++i) {
      cv::Mat frame = unit::Rendered().images[i % 12].clone();
      std::vector<cv::Point2d> points;
      if (calibrator->DetectPoints(frame, points, i % 2 == 0)) ++found;
      if (i % 3 == 0) calibrator->AddPoints();
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
      for (const auto& view : views) {
        calibrator->AddPoints(view);
        std::this_thread::yield();
      }
      const float rms = calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
      EXPECT_TRUE(rms == -1.0F || rms > 0.0F) << rms;
      if (round % 2 == 1) calibrator->Reset();
    }
  });
  threadGroup.Add([&] {
    for (int round = 0; round < 6; ++round) {
      calibrator->ComputeCalibrationMultithread(Calibrator::MODEL_CLASSIC);
      calibrator->SetFlipImage(round % 2 == 0);
      calibrator->Reset();
      std::this_thread::yield();
    }
  });
  threadGroup.Add([&] {
    for (int round = 0; round < 12; ++round) {
      calibrator->EnableAssistant(folder.File("model.json"));
      calibrator->StartModelRecording();
      std::this_thread::yield();
      calibrator->DisableAssistant();
      calibrator->StopModelRecording();
    }
  });
  threadGroup.RunToTheEnd();

  EXPECT_EQ(found, DETECTIONS);
  // Whatever happened, the calibrator works as before.
  ASSERT_TRUE(unit::Eventually([&] {
    calibrator->Reset();
    return calibrator->GetNumberOfRecords() == 0 && calibrator->GetStatus() == Calibrator::STATUS_NOT_READY;
  }));
}

TEST(CalibratorConcurrency, CountsEachSnapshotOfSeveralThreadsOnce) {
  constexpr int THREADS = 4;
  constexpr int EACH = 50;
  const auto view = unit::NoisyViews(1).front();
  const auto calibrator = unit::MakeCalibrator();
  unit::ThreadGroup threadGroup;
  for (int thread = 0; thread < THREADS; ++thread) {
    threadGroup.Add([&] {
      for (int i = 0; i < EACH; ++i) calibrator->AddPoints(view);
    });
  }
  threadGroup.RunToTheEnd();
  EXPECT_EQ(calibrator->GetNumberOfRecords(), THREADS * EACH);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_READY);
}

TEST(CalibratorConcurrency, TakesADetectionForOneThreadOnly) {
  const unit::ScopedLogLevel silent(0);
  const auto calibrator = unit::MakeCalibrator();
  cv::Mat frame = unit::ImageWithGrid();
  std::vector<cv::Point2d> points;
  ASSERT_TRUE(calibrator->DetectPoints(frame, points, false));
  std::atomic<int> added{0};
  unit::ThreadGroup threadGroup;
  for (int thread = 0; thread < 4; ++thread) {
    threadGroup.Add([&] { added += calibrator->AddPoints() ? 1 : 0; });
  }
  threadGroup.RunToTheEnd();
  EXPECT_EQ(added, 1);
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 1);
}

TEST(CalibratorConcurrency, EndsCompletedWhenSeveralComputationsAreAskedFor) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(10));
  std::atomic<int> computed{0};
  std::atomic<int> refused{0};
  std::atomic<int> waiting{3};
  unit::ThreadGroup threadGroup;
  for (int thread = 0; thread < 3; ++thread) {
    threadGroup.Add([&] {
      --waiting;
      while (waiting > 0) std::this_thread::yield();
      const float rms = calibrator->ComputeCalibration(Calibrator::MODEL_RATIONAL);
      ++(rms == -1.0F ? refused : computed);
    });
  }
  threadGroup.RunToTheEnd();
  EXPECT_EQ(computed + refused, 3);
  EXPECT_GE(computed, 1);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
}

TEST(CalibratorConcurrency, WorksWithSeveralCalibratorsSideBySide) {
  const auto views = unit::NoisyViews(6);
  const auto direct = unit::SolveDirectly(views, 0);
  std::atomic<int> equal{0};
  unit::ThreadGroup threadGroup;
  for (int thread = 0; thread < 3; ++thread) {
    threadGroup.Add([&] {
      const auto calibrator = unit::CalibratorWith(views);
      calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
      equal += unit::SameResult(calibrator->GetK(), direct.K) ? 1 : 0;
    });
  }
  threadGroup.RunToTheEnd();
  EXPECT_EQ(equal, 3);
}

}  // namespace
