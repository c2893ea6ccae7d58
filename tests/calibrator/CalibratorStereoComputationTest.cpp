/// A stereo calibrator's computation: the solver's own numbers, what it reads, the statuses around it, its
/// worker thread, and how its results leave the calibrator.
#include <gtest/gtest.h>

#include <filesystem>
#include <future>
#include <nlohmann/json.hpp>
#include <opencv2/calib3d.hpp>
#include <thread>

#include "Calibrator.h"
#include "CapturedStdout.h"
#include "JSON.h"
#include "Matchers.h"
#include "TemporaryFolder.h"
#include "foundation/OneLine.h"
#include "unit/Scopes.h"
#include "unit/StereoCollection.h"

using namespace velmora;

namespace {

const char* const UNREACHABLE = "ERROR : Cannot perform any action while computing calibration.\n";
const char* const WARNINGS =
    "WARN  : The classic model ignores the distortion coefficients of the left camera beyond the fifth.\n"
    "WARN  : The classic model ignores the distortion coefficients of the right camera beyond the fifth.\n";

std::string CannotOpen(const std::string& argument) {
  return "ERROR : Cannot open file: " + argument + "\n";
}

std::string NotRational(const std::string& argument) {
  return "ERROR : ERROR: The calibration model of '" + argument +
         "' is not rational. Stereo calibration cannot be processed.\n";
}

std::string TooFew(int count) {
  return "ERROR : Can't compute stereo calibration. At least 5 pictures are needed. Current: " +
         std::to_string(count) + "\n";
}

/// The result with as many coefficients.
std::string WithCoefficients(const unit::KnownIntrinsics& intrinsics, int count) {
  return unit::MonocularResult({intrinsics.K, intrinsics.D.colRange(0, count).clone()});
}

std::string Without(const std::string& result, const char* member) {
  nlohmann::json document = nlohmann::json::parse(result);
  document.erase(member);
  return document.dump();
}

void ExpectSolution(Calibrator& calibrator, const unit::DirectStereoSolution& direct) {
  EXPECT_TRUE(unit::SameResult(static_cast<double>(calibrator.GetRMS()),
                               static_cast<double>(static_cast<float>(direct.rms))));
  EXPECT_TRUE(unit::SameResult(calibrator.GetR(), direct.R));
  EXPECT_TRUE(unit::SameResult(calibrator.GetStereoTranslation(), direct.T));
  EXPECT_TRUE(unit::SameResult(calibrator.GetEssentialMatrix(), direct.E));
  EXPECT_TRUE(unit::SameResult(calibrator.GetFundamentalMatrix(), direct.F));
}

void ExpectLoaded(Calibrator& calibrator, const unit::KnownIntrinsics& left,
                  const unit::KnownIntrinsics& right) {
  EXPECT_SAME_MAT(calibrator.GetKLeft(), left.K);
  EXPECT_SAME_MAT(calibrator.GetDistCoefsLeft(), left.D);
  EXPECT_SAME_MAT(calibrator.GetKRight(), right.K);
  EXPECT_SAME_MAT(calibrator.GetDistCoefsRight(), right.D);
}

void ExpectNothingLoaded(Calibrator& calibrator) {
  EXPECT_TRUE(calibrator.GetKLeft().empty());
  EXPECT_TRUE(calibrator.GetDistCoefsLeft().empty());
  EXPECT_TRUE(calibrator.GetKRight().empty());
  EXPECT_TRUE(calibrator.GetDistCoefsRight().empty());
}

void ExpectNothingSolved(Calibrator& calibrator) {
  EXPECT_TRUE(calibrator.GetR().empty());
  EXPECT_TRUE(calibrator.GetStereoTranslation().empty());
  EXPECT_TRUE(calibrator.GetEssentialMatrix().empty());
  EXPECT_TRUE(calibrator.GetFundamentalMatrix().empty());
  EXPECT_EQ(calibrator.GetRMS(), -1.0F);
}

/// Pairs of which one lacks a centre on the right: the solver refuses them.
unit::PointPairs UnevenPairs() {
  auto pairs = unit::NoisyPairs(6);
  pairs.right.back().pop_back();
  return pairs;
}

/// What the solver says to the pairs.
std::string RefusalOf(const unit::PointPairs& pairs) {
  try {
    unit::SolveDirectly(pairs, unit::RATIONAL_FLAGS);
  } catch (const cv::Exception& refusal) {
    return refusal.what();
  }
  ADD_FAILURE() << "the solver takes the pairs";
  return "";
}

class StereoComputation : public ::testing::Test {
 protected:
  float Compute(Calibrator& calibrator, int model = Calibrator::MODEL_RATIONAL) {
    return calibrator.ComputeCalibrationStereo(leftText_, rightText_, model, false);
  }

  /// Expects a computation from texts or files that prints and returns as told and leaves the status, the
  /// snapshots and the assistant alone.
  void ExpectRefusal(Calibrator& calibrator, const std::string& left, const std::string& right,
                     bool fromFiles, const std::string& message, float result) {
    const int status = calibrator.GetStatus();
    const int count = calibrator.GetNumberOfRecords();
    calibrator.EnableAssistant(model_);
    ASSERT_EQ(calibrator.GetAssistantGoal(), 7);
    float rms = 1.0F;
    EXPECT_EQ(unit::PrintedBy([&] {
                rms = calibrator.ComputeCalibrationStereo(left, right, Calibrator::MODEL_RATIONAL, fromFiles);
              }),
              message);
    EXPECT_EQ(rms, result);
    EXPECT_EQ(calibrator.GetStatus(), status);
    EXPECT_EQ(calibrator.GetNumberOfRecords(), count);
    EXPECT_EQ(calibrator.GetAssistantGoal(), 7);
  }

  void SetUp() override {
    unit::WriteAssistantModel(model_, unit::NoisyViews(7));
    support::WriteText(leftPath_, leftText_);
    support::WriteText(rightPath_, rightText_);
  }

  support::TemporaryFolder folder_;
  const std::string model_ = folder_.File("model.json");
  const std::string leftPath_ = folder_.File("left.json");
  const std::string rightPath_ = folder_.File("right.json");
  const unit::KnownIntrinsics left_ = unit::IntrinsicsOf(unit::PairOfCameras().left);
  const unit::KnownIntrinsics right_ = unit::IntrinsicsOf(unit::PairOfCameras().right);
  const std::string leftText_ = unit::LeftResult();
  const std::string rightText_ = unit::RightResult();
};

struct ModelFlags {
  int model;
  int flags;
};

class StereoComputationWithModel : public StereoComputation,
                                   public ::testing::WithParamInterface<ModelFlags> {};

TEST_P(StereoComputationWithModel, GivesTheSolversNumbersBitForBitAndKeepsTheIntrinsics) {
  const unit::ScopedLogLevel quiet(1);
  const auto pairs = unit::NoisyPairs(7);
  const auto direct = unit::SolveDirectly(pairs, GetParam().flags);
  for (const bool fromFiles : {true, false}) {
    const auto calibrator = unit::StereoCalibratorWith(pairs);
    const float rms = calibrator->ComputeCalibrationStereo(
        fromFiles ? leftPath_ : leftText_, fromFiles ? rightPath_ : rightText_, GetParam().model, fromFiles);
    EXPECT_EQ(rms, static_cast<float>(direct.rms));
    EXPECT_GT(rms, 0.0F);
    ExpectSolution(*calibrator, direct);
    ExpectLoaded(*calibrator, left_, right_);
    EXPECT_EQ(calibrator->GetDistCoefsLeft().size(), cv::Size(14, 1));
    EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
    EXPECT_EQ(calibrator->GetNumberOfRecords(), 7);
  }
}

INSTANTIATE_TEST_SUITE_P(Models, StereoComputationWithModel,
                         ::testing::Values(ModelFlags{Calibrator::MODEL_CLASSIC, unit::CLASSIC_FLAGS},
                                           ModelFlags{Calibrator::MODEL_RATIONAL, unit::RATIONAL_FLAGS},
                                           ModelFlags{Calibrator::MODEL_FULL, unit::FULL_FLAGS},
                                           ModelFlags{0, unit::CLASSIC_FLAGS},
                                           ModelFlags{15, unit::CLASSIC_FLAGS}));

TEST_F(StereoComputation, HoldsTheIntrinsicsFixedWithTheClassicModelAndWarns) {
  const auto pairs = unit::NoisyPairs(6);
  const auto classic = unit::SolveDirectly(pairs, unit::CLASSIC_FLAGS);
  // The flags tell in the result, so it tells which of them were used.
  ASSERT_NE(classic.rms, unit::SolveDirectly(pairs, unit::RATIONAL_FLAGS).rms);
  ASSERT_NE(classic.rms, unit::SolveDirectly(pairs, 0).rms);
  const auto calibrator = unit::StereoCalibratorWith(pairs);
  EXPECT_EQ(unit::PrintedBy([&] { Compute(*calibrator, Calibrator::MODEL_CLASSIC); }), WARNINGS);
  ExpectSolution(*calibrator, classic);
}

TEST_F(StereoComputation, PrintsNothingWithTheRicherModels) {
  const unit::ScopedLogLevel everything(5);
  for (const int model : {Calibrator::MODEL_RATIONAL, Calibrator::MODEL_FULL}) {
    const auto calibrator = unit::StereoCalibratorWith(unit::NoisyPairs(5));
    EXPECT_EQ(unit::PrintedBy([&] { Compute(*calibrator, model); }), "");
    EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
  }
}

TEST_F(StereoComputation, NeedsFiveSnapshotsBeforeItLooksAtTheResults) {
  for (const int count : {0, 4}) {
    const auto calibrator = unit::StereoCalibratorWith(unit::NoisyPairs(count));
    ExpectRefusal(*calibrator, folder_.File("missing"), "", true, TooFew(count), -1.0F);
    ExpectRefusal(*calibrator, leftText_, rightText_, false, TooFew(count), -1.0F);
    EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_NOT_READY);
    ExpectNothingLoaded(*calibrator);
  }
}

TEST_F(StereoComputation, IsDoneWithFiveSnapshots) {
  const auto calibrator = unit::StereoCalibratorWith(unit::NoisyPairs(5));
  EXPECT_GT(Compute(*calibrator), 0.0F);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
}

TEST_F(StereoComputation, ReturnsTheErrorAndEndsTheAssistant) {
  const auto calibrator = unit::StereoCalibratorWith(unit::NoisyPairs(6));
  calibrator->EnableAssistant(model_);
  ASSERT_EQ(calibrator->GetAssistantGoal(), 7);
  const float rms = Compute(*calibrator);
  EXPECT_GT(rms, 0.0F);
  EXPECT_EQ(calibrator->GetRMS(), rms);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
  EXPECT_EQ(calibrator->GetAssistantGoal(), -1);
}

TEST_F(StereoComputation, IsRefusedDuringProgressWithoutAMessage) {
  for (const int count : {0, 6}) {
    const auto calibrator = unit::StereoCalibratorWith(unit::NoisyPairs(count));
    calibrator->SetStatus(Calibrator::STATUS_PROGRESS);
    ExpectRefusal(*calibrator, folder_.File("missing"), "", true, "", -1.0F);
    ExpectRefusal(*calibrator, leftText_, rightText_, false, "", -1.0F);
    calibrator->SetStatus(Calibrator::STATUS_READY);
    ExpectNothingLoaded(*calibrator);
  }
}

TEST_F(StereoComputation, IsRefusedInOtherCalibratorsWithoutAMessage) {
  const auto completed = unit::CompletedCalibrator();
  const cv::Mat K = completed->GetK().clone();
  ExpectRefusal(*completed, leftText_, rightText_, false, "", -1.0F);
  ExpectRefusal(*completed, folder_.File("missing"), "", true, "", -1.0F);
  EXPECT_SAME_MAT(completed->GetK(), K);
  ExpectRefusal(*unit::MakeCalibrator(2), leftText_, rightText_, false, "", -1.0F);
}

TEST_F(StereoComputation, ReportsAFileThatCannotBeOpened) {
  const std::string missing = folder_.File("100% missing.json");
  for (const int status :
       {Calibrator::STATUS_READY, Calibrator::STATUS_COMPLETED, Calibrator::STATUS_NOT_READY}) {
    const auto calibrator = unit::StereoCalibratorWith(unit::NoisyPairs(6));
    calibrator->SetStatus(status);
    ExpectRefusal(*calibrator, missing, rightPath_, true, CannotOpen(missing), 0.0F);
    ExpectRefusal(*calibrator, leftPath_, missing, true, CannotOpen(missing), 0.0F);
    ExpectRefusal(*calibrator, missing, "other", true, CannotOpen(missing), 0.0F);
    ExpectRefusal(*calibrator, folder_.Path(), rightPath_, true, CannotOpen(folder_.Path()), 0.0F);
    ExpectRefusal(*calibrator, "", rightPath_, true, CannotOpen(""), 0.0F);
    ExpectNothingLoaded(*calibrator);
    ExpectNothingSolved(*calibrator);
  }
}

TEST_F(StereoComputation, OpensBothResultsBeforeItLooksIntoEither) {
  const auto calibrator = unit::StereoCalibratorWith(unit::NoisyPairs(6));
  const std::string incomplete = folder_.File("incomplete.json");
  const std::string missing = folder_.File("missing.json");
  support::WriteText(incomplete, Without(leftText_, "cameraMatrix"));
  ExpectRefusal(*calibrator, incomplete, missing, true, CannotOpen(missing), 0.0F);
  ExpectRefusal(*calibrator, incomplete, incomplete, true, CannotOpen(incomplete), 0.0F);
  ExpectRefusal(*calibrator, missing, incomplete, true, CannotOpen(missing), 0.0F);
}

TEST_F(StereoComputation, TakesTextsForPathsAndPathsForTextsAsUnreadable) {
  const auto calibrator = unit::StereoCalibratorWith(unit::NoisyPairs(6));
  ExpectRefusal(*calibrator, leftText_, rightText_, true, CannotOpen(leftText_), 0.0F);
  ExpectRefusal(*calibrator, leftPath_, rightPath_, false, CannotOpen(leftPath_), 0.0F);
}

/// Texts that are no monocular result.
class UnreadableResult : public StereoComputation, public ::testing::WithParamInterface<std::string> {};

TEST_P(UnreadableResult, IsReportedAsAFileThatCannotBeOpened) {
  const auto calibrator = unit::StereoCalibratorWith(unit::NoisyPairs(6));
  const std::string path = folder_.File("broken.json");
  support::WriteText(path, GetParam());
  ExpectRefusal(*calibrator, GetParam(), rightText_, false, CannotOpen(GetParam()), 0.0F);
  ExpectRefusal(*calibrator, leftText_, GetParam(), false, CannotOpen(GetParam()), 0.0F);
  ExpectRefusal(*calibrator, path, rightPath_, true, CannotOpen(path), 0.0F);
  ExpectRefusal(*calibrator, leftPath_, path, true, CannotOpen(path), 0.0F);
  ExpectNothingSolved(*calibrator);
  // The calibrator is usable all the same.
  EXPECT_GT(Compute(*calibrator), 0.0F);
}

std::string WithMatrix(const char* matrix) {
  nlohmann::json document = nlohmann::json::parse(unit::LeftResult());
  document["cameraMatrix"] = nlohmann::json::parse(matrix);
  return document.dump();
}

INSTANTIATE_TEST_SUITE_P(
    Texts, UnreadableResult,
    ::testing::Values("", "   ", "no JSON", "{", "null", "[]", "17", "\"text\"", "{}",
                      "{\"cameraMatrix\": 3}", unit::LeftResult().substr(0, 200), unit::LeftResult() + "}",
                      Without(unit::LeftResult(), "cameraMatrix"), Without(unit::LeftResult(), "distCoefs"),
                      WithMatrix("{}"), WithMatrix("null"), WithMatrix("[1, 2, 3]"),
                      WithMatrix(R"({"rows": 3, "cols": 3, "type": 6, "depth": 6})"),
                      WithMatrix(R"({"rows": 3, "cols": 3, "type": 6, "depth": 6, "data": [1, "two"]})"),
                      WithMatrix(R"({"rows": "3", "cols": 3, "type": 6, "depth": 6, "data": []})"),
                      WithMatrix(R"({"rows": 2147483647, "cols": 2147483647, "type": 4094, "depth": 6,
                                     "data": []})")));

TEST_F(StereoComputation, RefusesAClassicResultOnTheLeftByItsNameButTakesTheMatrices) {
  const unit::KnownIntrinsics classic{left_.K, left_.D.colRange(0, 5).clone()};
  const std::string text = unit::MonocularResult(classic);
  const std::string path = folder_.File("classic.json");
  support::WriteText(path, text);
  for (const bool fromFiles : {true, false}) {
    const auto calibrator = unit::StereoCalibratorWith(unit::NoisyPairs(6));
    ExpectRefusal(*calibrator, fromFiles ? path : text, fromFiles ? rightPath_ : rightText_, fromFiles,
                  NotRational(fromFiles ? path : text), -1.0F);
    ExpectLoaded(*calibrator, classic, right_);
    ExpectNothingSolved(*calibrator);
  }
}

TEST_F(StereoComputation, RefusesAClassicResultOnTheRightByItsNameButTakesTheMatrices) {
  const unit::KnownIntrinsics classic{right_.K, right_.D.colRange(0, 5).clone()};
  const std::string text = unit::MonocularResult(classic);
  const std::string path = folder_.File("classic.json");
  support::WriteText(path, text);
  for (const bool fromFiles : {true, false}) {
    const auto calibrator = unit::StereoCalibratorWith(unit::NoisyPairs(6));
    ExpectRefusal(*calibrator, fromFiles ? leftPath_ : leftText_, fromFiles ? path : text, fromFiles,
                  NotRational(fromFiles ? path : text), -1.0F);
    ExpectLoaded(*calibrator, left_, classic);
    ExpectNothingSolved(*calibrator);
  }
}

TEST_F(StereoComputation, NamesTheLeftOfTwoClassicResults) {
  const auto calibrator = unit::StereoCalibratorWith(unit::NoisyPairs(6));
  const std::string left = WithCoefficients(left_, 5);
  ExpectRefusal(*calibrator, left, WithCoefficients(right_, 5), false, NotRational(left), -1.0F);
}

TEST_F(StereoComputation, CountsTheCoefficientsUpToFourteen) {
  const auto calibrator = unit::StereoCalibratorWith(unit::NoisyPairs(6));
  for (const int count : {4, 8, 12, 13}) {
    const std::string left = WithCoefficients(left_, count);
    ExpectRefusal(*calibrator, left, rightText_, false, NotRational(left), -1.0F);
  }
  EXPECT_GT(calibrator->ComputeCalibrationStereo(WithCoefficients(left_, 14), rightText_,
                                                 Calibrator::MODEL_RATIONAL, false),
            0.0F);
}

TEST_F(StereoComputation, ReplacesTheMatricesOfACompletedCalibratorEvenWhenItRefuses) {
  const auto calibrator = unit::CompletedStereoCalibrator();
  const float rms = calibrator->GetRMS();
  const cv::Mat R = calibrator->GetR().clone();
  const unit::KnownIntrinsics classic{2.0 * left_.K, left_.D.colRange(0, 5).clone()};
  const std::string text = unit::MonocularResult(classic);
  ExpectRefusal(*calibrator, text, rightText_, false, NotRational(text), -1.0F);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
  ExpectLoaded(*calibrator, classic, right_);
  EXPECT_SAME_MAT(calibrator->GetR(), R);
  EXPECT_EQ(calibrator->GetRMS(), rms);
}

TEST_F(StereoComputation, SavesTheIntrinsicsOfItsResultWhateverWasReadAndRefusedSince) {
  const auto calibrator = unit::CompletedStereoCalibrator();
  const std::string saved = calibrator->SaveResult(false, "");
  const std::string status = calibrator->GetStatus_QVX();
  const std::string other = unit::MonocularResult({2.0 * left_.K, left_.D.colRange(0, 5).clone()});
  unit::PrintedBy([&] { EXPECT_EQ(calibrator->ComputeCalibrationStereo(other, other, 20, false), -1.0F); });
  EXPECT_SAME_MAT(calibrator->GetKLeft(), 2.0 * left_.K);
  EXPECT_EQ(calibrator->SaveResult(false, ""), saved);
  EXPECT_EQ(calibrator->GetStatus_QVX(), status);
}

TEST_F(StereoComputation, ReplacesNothingWhenAFileCannotBeOpened) {
  const auto calibrator = unit::CompletedStereoCalibrator();
  const std::string other = unit::MonocularResult({2.0 * left_.K, left_.D});
  const std::string path = folder_.File("other.json");
  support::WriteText(path, other);
  ExpectRefusal(*calibrator, path, "missing", true, CannotOpen("missing"), 0.0F);
  ExpectLoaded(*calibrator, left_, right_);
}

TEST_F(StereoComputation, IsRepeatedWithAnotherModelAndMoreSnapshots) {
  const unit::ScopedLogLevel quiet(1);
  const auto pairs = unit::NoisyPairs(7);
  unit::PointPairs first = pairs;
  first.left.pop_back();
  first.right.pop_back();
  const auto calibrator = unit::StereoCalibratorWith(first);
  Compute(*calibrator, Calibrator::MODEL_RATIONAL);
  ExpectSolution(*calibrator, unit::SolveDirectly(first, unit::RATIONAL_FLAGS));
  Compute(*calibrator, Calibrator::MODEL_CLASSIC);
  ExpectSolution(*calibrator, unit::SolveDirectly(first, unit::CLASSIC_FLAGS));
  calibrator->AddStereoPoints(pairs.left.back(), pairs.right.back());
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_READY);
  Compute(*calibrator, Calibrator::MODEL_RATIONAL);
  ExpectSolution(*calibrator, unit::SolveDirectly(pairs, unit::RATIONAL_FLAGS));
  ExpectLoaded(*calibrator, left_, right_);
}

TEST_F(StereoComputation, LeavesOutCentresBeyondThoseOfTheGrid) {
  auto pairs = unit::NoisyPairs(6);
  const auto direct = unit::SolveDirectly(pairs, unit::RATIONAL_FLAGS);
  pairs.left[0].emplace_back(5.0, 6.0);
  pairs.right[5].insert(pairs.right[5].end(), 30, {7.0, 8.0});
  const auto calibrator = unit::StereoCalibratorWith(pairs);
  Compute(*calibrator);
  ExpectSolution(*calibrator, direct);
}

TEST_F(StereoComputation, LetsTheSolversExceptionThroughAndIsUsableAgain) {
  auto shortLeft = unit::NoisyPairs(6);
  shortLeft.left.front().pop_back();
  auto withoutRight = unit::NoisyPairs(6);
  withoutRight.right.front().clear();
  auto withoutAny = unit::NoisyPairs(6);
  for (auto& view : withoutAny.left) view.clear();
  for (auto& view : withoutAny.right) view.clear();
  for (const auto& pairs : {UnevenPairs(), shortLeft, withoutRight, withoutAny}) {
    const std::string refusal = RefusalOf(pairs);
    const auto calibrator = unit::StereoCalibratorWith(pairs);
    try {
      Compute(*calibrator);
      ADD_FAILURE() << "no exception";
    } catch (const cv::Exception& exception) {
      EXPECT_EQ(exception.what(), refusal);
    }
    EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_READY);
    EXPECT_EQ(calibrator->GetNumberOfRecords(), 6);
    ExpectNothingSolved(*calibrator);
    ExpectLoaded(*calibrator, left_, right_);

    calibrator->Reset();
    const auto complete = unit::NoisyPairs(5);
    for (size_t i = 0; i < 5; ++i) calibrator->AddStereoPoints(complete.left[i], complete.right[i]);
    Compute(*calibrator);
    ExpectSolution(*calibrator, unit::SolveDirectly(complete, unit::RATIONAL_FLAGS));
    EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
  }
}

TEST_F(StereoComputation, KeepsStatusAndEarlierResultsWhenTheNextOneFails) {
  const auto calibrator = unit::CompletedStereoCalibrator();
  const float rms = calibrator->GetRMS();
  const cv::Mat R = calibrator->GetR().clone();
  const cv::Mat T = calibrator->GetStereoTranslation().clone();
  const auto uneven = UnevenPairs();
  calibrator->AddStereoPoints(uneven.left.back(), uneven.right.back());
  for (const int status :
       {Calibrator::STATUS_READY, Calibrator::STATUS_COMPLETED, Calibrator::STATUS_NOT_READY}) {
    calibrator->SetStatus(status);
    EXPECT_THROW(Compute(*calibrator), cv::Exception);
    EXPECT_EQ(calibrator->GetStatus(), status);
    EXPECT_EQ(calibrator->GetRMS(), rms);
    EXPECT_SAME_MAT(calibrator->GetR(), R);
    EXPECT_SAME_MAT(calibrator->GetStereoTranslation(), T);
  }
}

TEST_F(StereoComputation, RunsOnceAtATime) {
  // A computation that lasts, so that the other calls come while it is under way.
  const auto pairs = unit::NoisyPairs(30);
  const auto calibrator = unit::StereoCalibratorWith(pairs);
  unit::ImagePair frames = unit::PairWithGrid();
  std::future<float> first = std::async(std::launch::async, [&] { return Compute(*calibrator); });
  ASSERT_TRUE(unit::Eventually([&] { return calibrator->isCalibrating(); }));
  float second = 0.0F;
  bool added = true;
  bool detected = true;
  cv::Mat K;
  float rmsMeanwhile = 0.0F;
  const std::string printed = unit::PrintedBy([&] {
    second = Compute(*calibrator);
    calibrator->AddStereoPoints(pairs.left.front(), pairs.right.front());
    added = calibrator->AddStereoPoints();
    std::vector<cv::Point2d> points;
    detected = calibrator->DetectStereoPoints(frames.left, frames.right, points, points, true);
    calibrator->Reset();
    K = calibrator->GetKLeft();
    rmsMeanwhile = calibrator->GetRMS();
  });
  const bool stillRunning = calibrator->isCalibrating();
  const float rms = first.get();

  EXPECT_TRUE(stillRunning) << "the first ended too early for this test";
  EXPECT_EQ(printed, "");
  EXPECT_EQ(second, -1.0F);
  EXPECT_FALSE(added);
  EXPECT_FALSE(detected);
  EXPECT_TRUE(K.empty());
  EXPECT_EQ(rmsMeanwhile, -1.0F);
  EXPECT_GT(rms, 0.0F);
  EXPECT_EQ(calibrator->GetRMS(), rms);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 30);
}

TEST_F(StereoComputation, NeverWritesIntoMatricesThatCallersHold) {
  const auto calibrator = unit::CompletedStereoCalibrator();
  const std::vector<cv::Mat> held = {calibrator->GetKLeft(),
                                     calibrator->GetDistCoefsLeft(),
                                     calibrator->GetKRight(),
                                     calibrator->GetDistCoefsRight(),
                                     calibrator->GetR(),
                                     calibrator->GetStereoTranslation(),
                                     calibrator->GetEssentialMatrix(),
                                     calibrator->GetFundamentalMatrix()};
  std::vector<cv::Mat> copies;
  for (const cv::Mat& matrix : held) copies.push_back(matrix.clone());

  const unit::ScopedLogLevel quiet(1);
  const std::string other = unit::MonocularResult({1.1 * left_.K, 0.9 * left_.D});
  const std::string another = unit::MonocularResult({1.1 * right_.K, 0.9 * right_.D});
  for (const int model : {Calibrator::MODEL_RATIONAL, Calibrator::MODEL_CLASSIC}) {
    ASSERT_GT(calibrator->ComputeCalibrationStereo(other, another, model, false), 0.0F);
    EXPECT_FALSE(support::SameMat(calibrator->GetR(), copies[4]));
    for (size_t i = 0; i < held.size(); ++i) EXPECT_SAME_MAT(held[i], copies[i]);
  }
  calibrator->Reset();
  for (size_t i = 0; i < held.size(); ++i) EXPECT_SAME_MAT(held[i], copies[i]);
}

TEST_F(StereoComputation, IsForgottenByAReset) {
  const auto calibrator = unit::CompletedStereoCalibrator();
  calibrator->Reset();
  ExpectNothingLoaded(*calibrator);
  ExpectNothingSolved(*calibrator);
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 0);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_NOT_READY);
}

class StereoComputationOnAWorker : public StereoComputation {};

TEST_F(StereoComputationOnAWorker, GivesTheSameNumbers) {
  const auto pairs = unit::NoisyPairs(6);
  const auto calibrator = unit::StereoCalibratorWith(pairs);
  calibrator->EnableAssistant(model_);
  calibrator->ComputeCalibrationStereoMultithread(leftText_, rightText_, Calibrator::MODEL_RATIONAL);
  ASSERT_TRUE(unit::Eventually([&] { return calibrator->GetStatus() == Calibrator::STATUS_COMPLETED; }));
  ExpectSolution(*calibrator, unit::SolveDirectly(pairs, unit::RATIONAL_FLAGS));
  ExpectLoaded(*calibrator, left_, right_);
  EXPECT_EQ(calibrator->GetAssistantGoal(), -1);
}

TEST_F(StereoComputationOnAWorker, OutlivesItsCallerAndTheTexts) {
  const auto pairs = unit::NoisyPairs(6);
  const auto calibrator = unit::StereoCalibratorWith(pairs);
  std::thread caller([&] {
    const std::string left = unit::LeftResult();
    const std::string right = unit::RightResult();
    const int model = Calibrator::MODEL_FULL;
    calibrator->ComputeCalibrationStereoMultithread(left, right, model);
  });
  caller.join();
  ASSERT_TRUE(unit::Eventually([&] { return calibrator->GetStatus() == Calibrator::STATUS_COMPLETED; }));
  ExpectSolution(*calibrator, unit::SolveDirectly(pairs, unit::FULL_FLAGS));
}

TEST_F(StereoComputationOnAWorker, ReportsWhatItRefuses) {
  // The end of a calibrator waits for its worker, so all lines are there afterwards.
  const auto printedOf = [](int count, const std::string& left, const std::string& right) {
    auto calibrator = unit::StereoCalibratorWith(unit::NoisyPairs(count));
    return unit::PrintedBy([&] {
      calibrator->ComputeCalibrationStereoMultithread(left, right, Calibrator::MODEL_RATIONAL);
      calibrator.reset();
    });
  };
  EXPECT_EQ(printedOf(4, leftText_, rightText_), TooFew(4));
  EXPECT_EQ(printedOf(5, "no JSON", rightText_), CannotOpen("no JSON"));
  // Texts are expected, not paths.
  EXPECT_EQ(printedOf(5, leftPath_, rightPath_), CannotOpen(leftPath_));
  const std::string incomplete = Without(rightText_, "distCoefs");
  EXPECT_EQ(printedOf(5, leftText_, incomplete), CannotOpen(incomplete));
  const std::string classic = WithCoefficients(left_, 5);
  EXPECT_EQ(printedOf(5, classic, rightText_), NotRational(classic));
  EXPECT_EQ(printedOf(5, leftText_, rightText_), "");
}

TEST_F(StereoComputationOnAWorker, LogsAFailureGivesTheStatusBackAndIsUsableAgain) {
  const auto pairs = UnevenPairs();
  const std::string expected = "ERROR : Stereo calibration failed: " + OneLine(RefusalOf(pairs)) + "\n";
  const auto calibrator = unit::StereoCalibratorWith(pairs);
  std::string printed;
  {
    const support::CapturedStdout captured;
    calibrator->ComputeCalibrationStereoMultithread(leftText_, rightText_, Calibrator::MODEL_RATIONAL);
    unit::Eventually([&] { return captured.Text().size() >= expected.size(); });
    printed = captured.Text();
  }
  EXPECT_EQ(printed, expected);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_READY);
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 6);
  ExpectNothingSolved(*calibrator);

  calibrator->Reset();
  const auto complete = unit::NoisyPairs(5);
  for (size_t i = 0; i < 5; ++i) calibrator->AddStereoPoints(complete.left[i], complete.right[i]);
  calibrator->ComputeCalibrationStereoMultithread(leftText_, rightText_, Calibrator::MODEL_RATIONAL);
  ASSERT_TRUE(unit::Eventually([&] { return calibrator->GetStatus() == Calibrator::STATUS_COMPLETED; }));
  ExpectSolution(*calibrator, unit::SolveDirectly(complete, unit::RATIONAL_FLAGS));
}

TEST_F(StereoComputationOnAWorker, IsRefusedQuietlyDuringProgressAndInAMonocularCalibrator) {
  auto stereo = unit::StereoCalibratorWith(unit::NoisyPairs(5));
  stereo->SetStatus(Calibrator::STATUS_PROGRESS);
  auto mono = unit::CompletedCalibrator();
  for (auto* calibrator : {&stereo, &mono}) {
    EXPECT_EQ(unit::PrintedBy([&] {
                (*calibrator)
                    ->ComputeCalibrationStereoMultithread(leftText_, rightText_, Calibrator::MODEL_RATIONAL);
                calibrator->reset();
              }),
              "");
  }
}

class StereoResults : public StereoComputation {
 protected:
  unit::ScopedCurrentFolder current_{folder_.Path()};
  std::unique_ptr<Calibrator> completed_ = unit::CompletedStereoCalibrator();
};

TEST_F(StereoResults, AreNeverGivenByTheGuardedGetters) {
  ASSERT_EQ(completed_->GetStatus(), Calibrator::STATUS_COMPLETED);
  bool empty = false;
  EXPECT_EQ(unit::PrintedBy([&] { empty = completed_->GetT().empty(); }), UNREACHABLE);
  EXPECT_TRUE(empty);
  EXPECT_EQ(unit::PrintedBy([&] { empty = completed_->GetE().empty(); }), UNREACHABLE);
  EXPECT_TRUE(empty);
  EXPECT_EQ(unit::PrintedBy([&] { empty = completed_->GetF().empty(); }), UNREACHABLE);
  EXPECT_TRUE(empty);
  double baseline = -7.0;
  EXPECT_EQ(unit::PrintedBy([&] { baseline = completed_->GetBaseline(); }), UNREACHABLE);
  EXPECT_EQ(baseline, 0.0);
}

TEST_F(StereoResults, AreGivenByTheGuardedGettersAboveTheGuardOnly) {
  // No computation leads to such a status; the guard is about numbers.
  completed_->SetStatus(401);
  EXPECT_EQ(unit::PrintedBy([&] {
              EXPECT_TRUE(completed_->GetT().empty());
              EXPECT_SAME_MAT(completed_->GetE(), completed_->GetEssentialMatrix());
              EXPECT_SAME_MAT(completed_->GetF(), completed_->GetFundamentalMatrix());
              EXPECT_EQ(completed_->GetBaseline(), cv::norm(completed_->GetStereoTranslation()));
              EXPECT_GT(completed_->GetBaseline(), 0.0);
            }),
            "");
  completed_->SetStatus(Calibrator::STATUS_PROGRESS);
  EXPECT_EQ(unit::PrintedBy([&] {
              EXPECT_TRUE(completed_->GetE().empty());
              EXPECT_TRUE(completed_->GetF().empty());
              EXPECT_EQ(completed_->GetBaseline(), -1.0);
            }),
            "");
}

TEST_F(StereoResults, AreGivenInEveryStatusButProgress) {
  const auto matrices = [this] {
    return std::vector<cv::Mat>{completed_->GetKLeft(),
                                completed_->GetDistCoefsLeft(),
                                completed_->GetKRight(),
                                completed_->GetDistCoefsRight(),
                                completed_->GetR(),
                                completed_->GetStereoTranslation(),
                                completed_->GetEssentialMatrix(),
                                completed_->GetFundamentalMatrix()};
  };
  EXPECT_EQ(unit::PrintedBy([&] {
              for (const int status : {100, 200, 300, 401}) {
                completed_->SetStatus(status);
                for (const cv::Mat& matrix : matrices()) EXPECT_FALSE(matrix.empty()) << status;
                EXPECT_GT(completed_->GetRMS(), 0.0F);
              }
              completed_->SetStatus(Calibrator::STATUS_PROGRESS);
              for (const cv::Mat& matrix : matrices()) EXPECT_TRUE(matrix.empty());
              EXPECT_EQ(completed_->GetRMS(), -1.0F);
            }),
            "");
}

TEST_F(StereoResults, AreNotThoseOfAMonocularCalibrator) {
  const auto mono = unit::CompletedCalibrator();
  EXPECT_EQ(unit::PrintedBy([&] {
              EXPECT_TRUE(mono->GetStereoTranslation().empty());
              EXPECT_TRUE(mono->GetEssentialMatrix().empty());
              EXPECT_TRUE(mono->GetFundamentalMatrix().empty());
              EXPECT_TRUE(completed_->GetK().empty());
              EXPECT_TRUE(completed_->GetDistCoefs().empty());
              EXPECT_TRUE(completed_->GetPerViewErrors().empty());
              EXPECT_TRUE(completed_->GetStdDevIntrinsics().empty());
              EXPECT_TRUE(completed_->GetRotationVectors().empty());
              EXPECT_TRUE(completed_->GetTranslationVectors().empty());
            }),
            "");
}

TEST_F(StereoResults, AreTheMembersOfTheResultFile) {
  std::string text;
  EXPECT_EQ(unit::PrintedBy([&] { text = completed_->SaveResult(true, "pair"); }), "");
  EXPECT_EQ(support::ReadText("pair.json"), text);
  const nlohmann::json members = nlohmann::json::parse(text);
  std::vector<std::string> keys;
  for (const auto& member : members.items()) keys.push_back(member.key());
  EXPECT_EQ(keys, (std::vector<std::string>{"R", "T", "cameraMatrix", "cameraMatrix2", "distCoefs",
                                            "distCoefs2", "error", "imgHeight", "imgWidth", "sensor"}));
  EXPECT_EQ(members.at("sensor"), 1);
  EXPECT_EQ(members.at("imgWidth"), 640);
  EXPECT_EQ(members.at("imgHeight"), 480);
  EXPECT_EQ(members.at("error").get<double>(), static_cast<double>(completed_->GetRMS()));
  JSON file;
  ASSERT_TRUE(file.load("pair.json"));
  EXPECT_SAME_MAT(file.readMat("cameraMatrix"), completed_->GetKLeft());
  EXPECT_SAME_MAT(file.readMat("distCoefs"), completed_->GetDistCoefsLeft());
  EXPECT_SAME_MAT(file.readMat("cameraMatrix2"), completed_->GetKRight());
  EXPECT_SAME_MAT(file.readMat("distCoefs2"), completed_->GetDistCoefsRight());
  EXPECT_SAME_MAT(file.readMat("R"), completed_->GetR());
  EXPECT_SAME_MAT(file.readMat("T"), completed_->GetStereoTranslation());
  EXPECT_EQ(members.at("T").at("rows"), 3);
  EXPECT_EQ(members.at("T").at("cols"), 1);
}

TEST_F(StereoResults, AreWrittenUnderKindDateAndTimeWithoutAPath) {
  std::filesystem::create_directory("empty");
  const unit::ScopedCurrentFolder empty(folder_.File("empty"));
  const std::string text = completed_->SaveResult(true, "");
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(".")) {
    names.push_back(entry.path().filename().string());
  }
  ASSERT_EQ(names.size(), 1U);
  EXPECT_EQ(unit::WithDigitsHidden(names[0]), "stereo9999999999:99:99.json");
  EXPECT_EQ(support::ReadText(names[0]), text);
}

TEST_F(StereoResults, KeepTheMatricesOfTheClassicModelWhole) {
  const unit::ScopedLogLevel quiet(1);
  Compute(*completed_, Calibrator::MODEL_CLASSIC);
  completed_->SaveResult(true, "pair");
  JSON file;
  ASSERT_TRUE(file.load("pair.json"));
  EXPECT_SAME_MAT(file.readMat("distCoefs"), left_.D);
  EXPECT_SAME_MAT(file.readMat("distCoefs2"), right_.D);
}

TEST_F(StereoResults, AreInTheStatusAnswer) {
  const nlohmann::json answer = nlohmann::json::parse(completed_->GetStatus_QVX());
  EXPECT_EQ(answer.at("ii"), 300);
  EXPECT_EQ(answer.at("ni"), 6);
  EXPECT_EQ(answer.at("cj"), completed_->SaveResult(false, ""));
  EXPECT_FALSE(answer.at("cj").get<std::string>().empty());
}

TEST_F(StereoResults, AreNotWrittenWithoutAComputation) {
  const auto classic = WithCoefficients(left_, 5);
  const auto calibrator = unit::StereoCalibratorWith(unit::NoisyPairs(5));
  unit::PrintedBy(
      [&] { calibrator->ComputeCalibrationStereo(classic, rightText_, Calibrator::MODEL_RATIONAL, false); });
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_EQ(calibrator->SaveResult(true, "pair"), ""); }),
            "ERROR : The calibration process has not been performed yet.\n");
  // The intrinsics alone are no result.
  calibrator->SetStatus(Calibrator::STATUS_COMPLETED);
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_EQ(calibrator->SaveResult(true, "pair"), ""); }), "");
  EXPECT_FALSE(std::filesystem::exists("pair.json"));
}

}  // namespace
