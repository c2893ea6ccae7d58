/// Computations of a collection of snapshots, without a calibrator.
#include "calibrator/Computations.h"

#include <gtest/gtest.h>

#include <future>

#include "TemporaryFolder.h"
#include "model/LensModel.h"
#include "model/TargetGeometry.h"
#include "unit/Scopes.h"
#include "unit/StereoCollection.h"

using namespace velmora;

namespace {

class ComputingOneCamera : public ::testing::Test {
 protected:
  void Collect(int count) {
    for (const auto& points : unit::NoisyViews(count)) {
      snapshots_.Add({{points, cv::Mat(), {}}}, Snapshots::EarlierRms::Drop);
    }
  }

  Snapshots snapshots_{MakeObjectTemplate(unit::GRID, unit::UNIT), 1};
  int begun_ = 0;
  Computations computations_{snapshots_, unit::FRAME, [this] {
                               EXPECT_EQ(snapshots_.Status(), STATUS_PROGRESS);
                               ++begun_;
                             }};
};

TEST_F(ComputingOneCamera, PublishesWhatTheSolverFinds) {
  Collect(6);
  const float rms = computations_.ComputeCamera(MODEL_CLASSIC);
  const Snapshots::Moment now = snapshots_.Current();
  ASSERT_NE(now.result, nullptr);
  EXPECT_EQ(now.rms, rms);
  EXPECT_NEAR(rms, unit::SolveDirectly(unit::NoisyViews(6), 0).rms, 1e-6);
  EXPECT_EQ(now.result->snapshots, 6U);
  EXPECT_EQ(now.result->model, MODEL_CLASSIC);
  EXPECT_EQ(begun_, 1);
}

TEST_F(ComputingOneCamera, RefusesTooFewSnapshotsAndPairs) {
  Collect(4);
  EXPECT_NE(unit::PrintedBy([&] { EXPECT_EQ(computations_.ComputeCamera(MODEL_CLASSIC), -1.0F); }), "");
  Collect(1);
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_EQ(computations_.ComputePair({}, MODEL_CLASSIC), -1.0F); }), "");
  EXPECT_EQ(begun_, 0);
}

TEST_F(ComputingOneCamera, TellsTheListenerOfEachIterationAndCanBeCancelled) {
  Collect(6);
  computations_.Choice().SetSolver(SOLVER_SPARSE);
  std::vector<int> told;
  computations_.SetProgressListener([&](int iterations, double rms) {
    told.push_back(iterations);
    EXPECT_GT(rms, 0.0);
    if (told.size() == 2) snapshots_.Cancel();
  });
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_EQ(computations_.ComputeCamera(MODEL_RATIONAL), -1.0F); }),
            "WARN  : The computation was cancelled.\n");
  EXPECT_EQ(told, (std::vector<int>{1, 2}));
  EXPECT_EQ(snapshots_.Current().result, nullptr);
  EXPECT_EQ(snapshots_.Status(), STATUS_READY);
  EXPECT_TRUE(snapshots_.HasFailed());
}

TEST_F(ComputingOneCamera, CountsIterationsOverAllItsMinimisations) {
  Collect(8);
  computations_.Choice().SetSolver(SOLVER_SPARSE);
  computations_.Choice().SetRobust(true);
  std::vector<int> told;
  computations_.SetProgressListener([&](int iterations, double) { told.push_back(iterations); });
  EXPECT_GT(computations_.ComputeCamera(MODEL_RATIONAL), 0.0F);
  for (size_t i = 0; i < told.size(); ++i) EXPECT_EQ(told[i], static_cast<int>(i) + 1);
  EXPECT_GT(told.size(), 3U);
}

TEST_F(ComputingOneCamera, LeavesEverythingAsItWasWhenAListenerThrows) {
  Collect(6);
  const float rms = computations_.ComputeCamera(MODEL_CLASSIC);
  computations_.Choice().SetSolver(SOLVER_SPARSE);
  computations_.SetProgressListener([](int, double) { throw 7; });
  EXPECT_THROW(computations_.ComputeCamera(MODEL_CLASSIC), int);
  EXPECT_EQ(snapshots_.Status(), STATUS_COMPLETED);
  EXPECT_EQ(snapshots_.Current().rms, rms);
}

TEST_F(ComputingOneCamera, IsBusyInTheBackgroundUntilTheResultIsThere) {
  Collect(6);
  computations_.Choice().SetSolver(SOLVER_SPARSE);
  std::promise<void> reached;
  std::promise<void> release;
  std::shared_future<void> released = release.get_future().share();
  std::once_flag once;
  computations_.SetProgressListener([&](int, double) {
    std::call_once(once, [&] { reached.set_value(); });
    released.wait();
  });
  computations_.ComputeCameraInBackground(MODEL_CLASSIC);
  reached.get_future().wait();
  EXPECT_TRUE(computations_.Busy());
  EXPECT_EQ(snapshots_.Status(), STATUS_PROGRESS);
  EXPECT_EQ(computations_.AssessCamera().grade, CalibrationVerdict::Grade::None);
  release.set_value();
  computations_.AwaitBackground();
  EXPECT_FALSE(computations_.Busy());
  EXPECT_EQ(snapshots_.Status(), STATUS_COMPLETED);
}

TEST_F(ComputingOneCamera, NotesAFailureOfAComputationThatNeverBegan) {
  unit::PrintedBy([&] {
    computations_.ComputeCameraInBackground(MODEL_CLASSIC);
    computations_.AwaitBackground();
  });
  EXPECT_TRUE(snapshots_.HasFailed());
}

TEST_F(ComputingOneCamera, JudgesTheResultOfTheseSnapshotsOnly) {
  Collect(8);
  computations_.ComputeCamera(MODEL_CLASSIC);
  EXPECT_NE(computations_.AssessCamera().grade, CalibrationVerdict::Grade::None);
  Collect(1);
  EXPECT_EQ(computations_.AssessCamera().grade, CalibrationVerdict::Grade::None);
}

TEST_F(ComputingOneCamera, ChoosesAModelWithoutTouchingTheState) {
  Collect(8);
  EXPECT_FALSE(computations_.ChooseModel().candidates.empty());
  EXPECT_EQ(snapshots_.Status(), STATUS_READY);
  EXPECT_EQ(snapshots_.Current().result, nullptr);
}

class ComputingAPair : public ::testing::Test {
 protected:
  void SetUp() override {
    const unit::PointPairs pairs = unit::NoisyPairs(6);
    for (size_t i = 0; i < pairs.left.size(); ++i) {
      snapshots_.Add({{pairs.left[i], cv::Mat(), {}}, {pairs.right[i], cv::Mat(), {}}},
                     Snapshots::EarlierRms::Drop);
    }
  }
  float Compute(const std::string& left, const std::string& right) {
    return computations_.ComputePair({left, right, false}, MODEL_RATIONAL);
  }
  /// A result with five coefficients, which a pair refuses.
  static std::string ClassicResult() {
    return unit::MonocularResult({cv::Mat::eye(3, 3, CV_64F) * 3.0, cv::Mat::zeros(1, 5, CV_64F)});
  }

  Snapshots snapshots_{MakeObjectTemplate(unit::GRID, unit::UNIT), 2};
  Computations computations_{snapshots_, unit::FRAME, [] {}};
};

TEST_F(ComputingAPair, PublishesWhatTheSolverFinds) {
  const float rms = Compute(unit::LeftResult(), unit::RightResult());
  const Snapshots::Moment now = snapshots_.Current();
  ASSERT_NE(now.result, nullptr);
  EXPECT_EQ(now.rms, rms);
  EXPECT_LT(cv::norm(now.result->pair.R, unit::SolveDirectly(unit::NoisyPairs(6), unit::RATIONAL_FLAGS).R,
                     cv::NORM_INF),
            1e-6);
  EXPECT_NE(computations_.AssessPair().grade, CalibrationVerdict::Grade::None);
}

TEST_F(ComputingAPair, KeepsWhatItReadAndRefused) {
  unit::PrintedBy([&] { EXPECT_EQ(Compute(ClassicResult(), unit::RightResult()), -1.0F); });
  const Snapshots::Moment now = snapshots_.Current();
  EXPECT_EQ(now.result, nullptr);
  ASSERT_TRUE(now.refused.has_value());
  EXPECT_EQ(now.refused->K.at<double>(0, 0), 3.0);
}

TEST_F(ComputingAPair, AnswersZeroForWhatCannotBeRead) {
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_EQ(Compute("no result", unit::RightResult()), 0.0F); }),
            "ERROR : Cannot open file: no result\n");
  EXPECT_FALSE(snapshots_.Current().refused.has_value());
}

TEST_F(ComputingAPair, LeavesAnEarlierResultWhenItFails) {
  Compute(unit::LeftResult(), unit::RightResult());
  const auto earlier = snapshots_.Current().result;
  computations_.Choice().SetSolver(SOLVER_SPARSE);
  computations_.SetProgressListener([](int, double) { throw 7; });
  EXPECT_THROW(Compute(unit::RightResult(), unit::LeftResult()), int);
  EXPECT_EQ(snapshots_.Current().result, earlier);
  EXPECT_FALSE(snapshots_.Current().refused.has_value());
}

TEST_F(ComputingAPair, KeepsWhatItReadWhenTheFirstComputationFails) {
  computations_.Choice().SetSolver(SOLVER_SPARSE);
  computations_.SetProgressListener([](int, double) { throw 7; });
  EXPECT_THROW(Compute(unit::LeftResult(), unit::RightResult()), int);
  EXPECT_TRUE(snapshots_.Current().refused.has_value());
}

}  // namespace
