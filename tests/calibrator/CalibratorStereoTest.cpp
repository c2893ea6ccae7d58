/// A stereo calibrator's detection in pairs of frames, and the three ways to a snapshot.
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <opencv2/calib3d.hpp>
#include <opencv2/features2d.hpp>
#include <opencv2/imgproc.hpp>

#include "Calibrator.h"
#include "Matchers.h"
#include "imaging/Overlay.h"
#include "unit/Scopes.h"
#include "unit/StereoCollection.h"

using namespace velmora;

namespace {

using Centres = std::vector<cv::Point2d>;

const char* const NOT_DETECTED = "DEBUG : Pattern not detected in both pictures. No points added.\n";

/// Where the overlay's speed text is: the one text that is not known beforehand.
const cv::Rect SPEED_TEXT(130, 86, 510, 22);

/// The search that the engine stands for: OpenCV's own.
bool SearchedDirectly(const cv::Mat& frame, Centres& points) {
  return cv::findCirclesGrid(frame, unit::GRID, points, cv::CALIB_CB_ASYMMETRIC_GRID,
                             cv::SimpleBlobDetector::create(cv::SimpleBlobDetector::Params()));
}

/// A larger and wider frame that shows the given one once it is brought to its size again.
cv::Mat LargerAndWider(const cv::Mat& frame) {
  cv::Mat wider;
  cv::copyMakeBorder(frame, wider, 0, 0, 60, 60, cv::BORDER_CONSTANT, cv::Scalar::all(90));
  cv::Mat larger;
  cv::resize(wider, larger, wider.size() * 2, 0, 0, cv::INTER_NEAREST);
  return larger;
}

cv::Mat Mirrored(const cv::Mat& frame) {
  cv::Mat mirrored;
  cv::flip(frame, mirrored, 1);
  return mirrored;
}

cv::Mat WithCorners(const cv::Mat& frame, const Centres& points) {
  cv::Mat drawn = frame.clone();
  const std::vector<cv::Point2f> corners(points.begin(), points.end());
  cv::drawChessboardCorners(drawn, unit::GRID, cv::Mat(corners), true);
  return drawn;
}

cv::Mat WithOverlay(const cv::Mat& frame, int snapshots, int status) {
  cv::Mat drawn = frame.clone();
  OverlayState state;
  state.snapshots = snapshots;
  state.frameSize = unit::FRAME;
  state.status = status;
  state.elapsed = 1.0;
  DrawOverlay(state, drawn);
  return drawn;
}

cv::Mat WithoutSpeed(const cv::Mat& frame) {
  cv::Mat without = frame.clone();
  without(SPEED_TEXT).setTo(0);
  return without;
}

class StereoPairs : public ::testing::Test {
 protected:
  bool Detect(Calibrator& calibrator, unit::ImagePair& pair, bool draw = false) {
    return calibrator.DetectStereoPoints(pair.left, pair.right, left_, right_, draw);
  }
  bool Detect(unit::ImagePair& pair, bool draw = false) { return Detect(*calibrator_, pair, draw); }

  void DetectOnce(Calibrator& calibrator) {
    unit::ImagePair pair = unit::PairWithGrid();
    ASSERT_TRUE(Detect(calibrator, pair));
  }
  void DetectOnce() { DetectOnce(*calibrator_); }

  /// Expects that the calibrator has a detection that was not yet made a snapshot, or that it has none. A
  /// detection is used up.
  void ExpectDetectionLeft(bool expected) {
    const int count = calibrator_->GetNumberOfRecords() + 1;
    bool added = !expected;
    EXPECT_EQ(unit::PrintedBy([&] { added = calibrator_->AddStereoPoints(); }),
              expected ? "DEBUG : New points added. Snapshot count: " + std::to_string(count) + "\n"
                       : NOT_DETECTED);
    EXPECT_EQ(added, expected);
  }

  std::unique_ptr<Calibrator> calibrator_ = unit::MakeCalibrator(Calibrator::STEREO);
  Centres left_;
  Centres right_;
};

class StereoDetection : public StereoPairs {
 protected:
  /// A pair of which one frame or both lack the grid.
  static unit::ImagePair PairWith(bool gridLeft, bool gridRight) {
    unit::ImagePair pair = unit::PairWithGrid();
    const unit::ImagePair without = unit::PairWithoutGrid();
    if (!gridLeft) pair.left = without.left;
    if (!gridRight) pair.right = without.right;
    return pair;
  }
};

TEST_F(StereoDetection, FindsTheTrueCentresOfBothFrames) {
  for (int view = 0; view < 4; ++view) {
    SCOPED_TRACE(view);
    unit::ImagePair pair = unit::PairWithGrid(view);
    ASSERT_TRUE(Detect(pair, view % 2 == 0));
    ASSERT_EQ(left_.size(), 44U);
    ASSERT_EQ(right_.size(), 44U);
    for (size_t i = 0; i < 44; ++i) {
      EXPECT_LT(cv::norm(left_[i] - pair.leftCentres[i]), 0.7);
      EXPECT_LT(cv::norm(right_[i] - pair.rightCentres[i]), 0.7);
    }
  }
}

TEST_F(StereoDetection, GivesWhatTwoSearchesInTurnGive) {
  for (int view = 0; view < 4; ++view) {
    SCOPED_TRACE(view);
    unit::ImagePair pair = unit::PairWithGrid(view);
    Centres left;
    Centres right;
    ASSERT_TRUE(SearchedDirectly(pair.left, left));
    ASSERT_TRUE(SearchedDirectly(pair.right, right));
    ASSERT_TRUE(Detect(pair));
    EXPECT_EQ(left_, left);
    EXPECT_EQ(right_, right);
  }
}

TEST_F(StereoDetection, SearchesBothFramesEvenWhenOneHasNoGrid) {
  unit::ImagePair pair = unit::PairWithGrid();
  Centres left;
  Centres right;
  ASSERT_TRUE(SearchedDirectly(pair.left, left));
  ASSERT_TRUE(SearchedDirectly(pair.right, right));
  unit::ImagePair onlyRight = PairWith(false, true);
  EXPECT_FALSE(Detect(onlyRight));
  EXPECT_NE(left_, left);
  EXPECT_EQ(right_, right);
  unit::ImagePair onlyLeft = PairWith(true, false);
  EXPECT_FALSE(Detect(onlyLeft));
  EXPECT_EQ(left_, left);
  EXPECT_NE(right_, right);
}

TEST_F(StereoDetection, FillsOneListGivenForBothAsTwoSearchesInTurnWould) {
  unit::ImagePair pair = unit::PairWithGrid();
  Centres right;
  ASSERT_TRUE(SearchedDirectly(pair.right, right));
  Centres both;
  EXPECT_TRUE(calibrator_->DetectStereoPoints(pair.left, pair.right, both, both, false));
  EXPECT_EQ(both, right);
}

TEST_F(StereoDetection, TakesOneFrameForBoth) {
  cv::Mat frame = unit::PairWithGrid().left;
  EXPECT_TRUE(calibrator_->DetectStereoPoints(frame, frame, left_, right_, true));
  EXPECT_EQ(left_, right_);
}

TEST_F(StereoDetection, PrintsNothing) {
  const unit::ScopedLogLevel everything(5);
  unit::ImagePair with = unit::PairWithGrid();
  unit::ImagePair without = unit::PairWithoutGrid();
  bool found = false;
  bool foundWithout = true;
  EXPECT_EQ(unit::PrintedBy([&] {
              found = Detect(with, true);
              foundWithout = Detect(without, true);
            }),
            "");
  EXPECT_TRUE(found);
  EXPECT_FALSE(foundWithout);
}

TEST_F(StereoDetection, LeavesThePixelsAloneWithoutDrawing) {
  for (const bool grid : {true, false}) {
    const unit::ImagePair pair = PairWith(grid, grid);
    unit::ImagePair shown = PairWith(grid, grid);
    EXPECT_EQ(Detect(shown), grid);
    EXPECT_SAME_MAT(shown.left, pair.left);
    EXPECT_SAME_MAT(shown.right, pair.right);
  }
}

TEST_F(StereoDetection, BringsBothFramesToTheProcessingSize) {
  for (const bool grid : {true, false}) {
    const unit::ImagePair expected = PairWith(grid, grid);
    unit::ImagePair pair{LargerAndWider(expected.left), LargerAndWider(expected.right), {}, {}};
    ASSERT_EQ(Detect(pair), grid);
    EXPECT_SAME_MAT(pair.left, expected.left);
    EXPECT_SAME_MAT(pair.right, expected.right);
    if (!grid) continue;
    Centres left;
    Centres right;
    ASSERT_TRUE(SearchedDirectly(expected.left, left));
    ASSERT_TRUE(SearchedDirectly(expected.right, right));
    EXPECT_EQ(left_, left);
    EXPECT_EQ(right_, right);
  }
}

TEST_F(StereoDetection, DrawsCornersOnBothFramesAndTheOverlayOnTheLeftOne) {
  const unit::ImagePair plain = unit::PairWithGrid();
  unit::ImagePair shown = unit::PairWithGrid();
  ASSERT_TRUE(Detect(shown, true));
  const cv::Mat left = WithOverlay(WithCorners(plain.left, left_), 0, Calibrator::STATUS_NOT_READY);
  EXPECT_SAME_MAT(WithoutSpeed(shown.left), WithoutSpeed(left));
  EXPECT_FALSE(support::SameMat(shown.left(SPEED_TEXT), WithCorners(plain.left, left_)(SPEED_TEXT)))
      << "the speed is missing";
  EXPECT_SAME_MAT(shown.right, WithCorners(plain.right, right_));
}

TEST_F(StereoDetection, DrawsTheOverlayAloneWhenAFrameHasNoGrid) {
  for (const bool gridLeft : {false, true}) {
    for (const bool gridRight : {false, true}) {
      if (gridLeft && gridRight) continue;
      SCOPED_TRACE(std::to_string(gridLeft) + std::to_string(gridRight));
      const unit::ImagePair plain = PairWith(gridLeft, gridRight);
      unit::ImagePair shown = PairWith(gridLeft, gridRight);
      ASSERT_FALSE(Detect(shown, true));
      const cv::Mat left = WithOverlay(plain.left, 0, Calibrator::STATUS_NOT_READY);
      EXPECT_SAME_MAT(WithoutSpeed(shown.left), WithoutSpeed(left));
      EXPECT_FALSE(support::SameMat(shown.left(SPEED_TEXT), plain.left(SPEED_TEXT)))
          << "the speed is missing";
      EXPECT_SAME_MAT(shown.right, plain.right);
    }
  }
}

TEST_F(StereoDetection, ShowsSnapshotsAndStatusInTheOverlay) {
  const auto pairs = unit::NoisyPairs(5);
  calibrator_ = unit::StereoCalibratorWith(pairs);
  const unit::ImagePair plain = unit::PairWithoutGrid();
  unit::ImagePair shown = unit::PairWithoutGrid();
  Detect(shown, true);
  EXPECT_SAME_MAT(WithoutSpeed(shown.left),
                  WithoutSpeed(WithOverlay(plain.left, 5, Calibrator::STATUS_READY)));
}

TEST_F(StereoDetection, MirrorsBothFramesAfterAllDrawing) {
  for (const bool grid : {true, false}) {
    for (const bool draw : {true, false}) {
      SCOPED_TRACE(std::to_string(grid) + std::to_string(draw));
      unit::ImagePair unmirrored = PairWith(grid, grid);
      calibrator_->SetFlipImage(false);
      ASSERT_EQ(Detect(unmirrored, draw), grid);
      const Centres left = left_;
      const Centres right = right_;

      unit::ImagePair mirrored = PairWith(grid, grid);
      calibrator_->SetFlipImage(true);
      ASSERT_EQ(Detect(mirrored, draw), grid);
      EXPECT_EQ(left_, left);
      EXPECT_EQ(right_, right);
      EXPECT_SAME_MAT(WithoutSpeed(Mirrored(mirrored.left)), WithoutSpeed(unmirrored.left));
      EXPECT_SAME_MAT(Mirrored(mirrored.right), unmirrored.right);
      EXPECT_FALSE(support::SameMat(mirrored.left, unmirrored.left));
    }
  }
}

/// The seconds that the speed text tells, read by drawing all texts that it could be. Negative when it is
/// none.
double ShownElapsed(const cv::Mat& frame, const cv::Mat& background) {
  OverlayState state;
  for (const double unit : {0.001, 0.01, 0.1, 1.0, 10.0}) {
    for (int digits = 100; digits < 1000; ++digits) {
      state.elapsed = 1.0 / (unit * digits);
      const OverlayText text = OverlayTexts(state).back();
      cv::Mat drawn = background(SPEED_TEXT).clone();
      cv::putText(drawn, text.text, text.origin - SPEED_TEXT.tl(), cv::FONT_HERSHEY_DUPLEX, 0.5, text.colour,
                  1, cv::LINE_AA);
      if (support::SameMat(drawn, frame(SPEED_TEXT))) return state.elapsed;
    }
  }
  return -1.0;
}

TEST_F(StereoDetection, ShowsTheSecondsOfItsSearches) {
  constexpr int TRIES = 20;
  const cv::Mat black(unit::FRAME, CV_8UC3, cv::Scalar::all(0));
  double largestShare = 0.0;
  for (int i = 0; i < TRIES && largestShare < 0.5; ++i) {
    unit::ImagePair pair{black.clone(), black.clone(), {}, {}};
    const auto start = std::chrono::steady_clock::now();
    Detect(pair, true);
    const std::chrono::duration<double> whole = std::chrono::steady_clock::now() - start;
    const double elapsed = ShownElapsed(pair.left, black);
    ASSERT_GT(elapsed, 0.0) << "no text that shows a rate";
    // Three digits are shown.
    EXPECT_LE(elapsed, 1.006 * whole.count());
    largestShare = std::max(largestShare, elapsed / whole.count());
  }
  EXPECT_GE(largestShare, 0.5) << "the searches are most of a detection";
}

TEST_F(StereoDetection, TakesFramesOfOtherAndOfDifferentKinds) {
  unit::ImagePair colour = unit::PairWithGrid();
  ASSERT_TRUE(Detect(colour));
  const Centres left = left_;
  const Centres right = right_;
  const auto grey = [](cv::Mat& frame) { cv::cvtColor(frame, frame, cv::COLOR_BGR2GRAY); };
  const auto withAlpha = [](cv::Mat& frame) { cv::cvtColor(frame, frame, cv::COLOR_BGR2BGRA); };
  const auto unchanged = [](cv::Mat& /*frame*/) {};
  const std::function<void(cv::Mat&)> conversions[] = {unchanged, grey, withAlpha};
  for (const auto& ofLeft : conversions) {
    for (const auto& ofRight : conversions) {
      unit::ImagePair pair = unit::PairWithGrid();
      ofLeft(pair.left);
      ofRight(pair.right);
      EXPECT_TRUE(Detect(pair, true));
      EXPECT_EQ(left_, left);
      EXPECT_EQ(right_, right);
    }
  }
}

TEST_F(StereoDetection, RefusesFramesWithoutDataQuietlyAndForgetsTheLastDetection) {
  DetectOnce();
  unit::ImagePair nothing;
  bool found = true;
  EXPECT_EQ(unit::PrintedBy([&] { found = Detect(nothing, true); }), "");
  EXPECT_FALSE(found);
  EXPECT_TRUE(nothing.left.empty());
  ExpectDetectionLeft(false);
}

TEST_F(StereoDetection, RefusesFramesOfOtherPixelsWithAMessage) {
  for (const bool badLeft : {true, false}) {
    DetectOnce();
    unit::ImagePair pair = unit::PairWithGrid();
    cv::Mat& bad = badLeft ? pair.left : pair.right;
    bad.convertTo(bad, CV_16U);
    const cv::Mat image = bad.clone();
    bool found = true;
    EXPECT_EQ(
        unit::PrintedBy([&] { found = Detect(pair, true); }),
        "ERROR : Cannot process a frame of OpenCV type 18: 8 bits and 1, 3 or 4 channels are needed.\n");
    EXPECT_FALSE(found);
    EXPECT_SAME_MAT(bad, image);
    ExpectDetectionLeft(false);
  }
}

TEST_F(StereoDetection, IsForgottenAtAPairWithoutAGridInBothFrames) {
  for (const bool gridLeft : {false, true}) {
    DetectOnce();
    unit::ImagePair without = PairWith(gridLeft, !gridLeft);
    ASSERT_FALSE(Detect(without));
    ExpectDetectionLeft(false);
  }
}

TEST_F(StereoDetection, ChangesNeitherSnapshotsNorStatus) {
  unit::ImagePair pair = unit::PairWithGrid();
  ASSERT_TRUE(Detect(pair, true));
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 0);
  EXPECT_EQ(calibrator_->GetStatus(), Calibrator::STATUS_NOT_READY);
  EXPECT_FALSE(calibrator_->IsDetected());
}

TEST_F(StereoDetection, RaisesWhatTheSearchRaisesAndIsUsableAgain) {
  // No grid has a negative size: the search itself refuses it.
  Calibrator impossible({-4, -11}, unit::UNIT, Calibrator::STEREO, unit::FRAME.width, unit::FRAME.height);
  for (int repetition = 0; repetition < 2; ++repetition) {
    unit::ImagePair pair = unit::PairWithGrid();
    EXPECT_THROW(Detect(impossible, pair), cv::Exception);
    EXPECT_THROW(impossible.AddStereoPoints(pair.left, pair.right, true), cv::Exception);
  }
  EXPECT_EQ(impossible.GetNumberOfRecords(), 0);
}

/// Frames of different sizes.
class StereoFramesOfDifferentSizes : public StereoPairs {
 protected:
  /// Expects the whole error of a call.
  static void ExpectAssertion(const std::function<void()>& call, const std::string& function, int line) {
    try {
      call();
      ADD_FAILURE() << "no error";
    } catch (const cv::Exception& error) {
      EXPECT_EQ(error.code, -215);
      EXPECT_EQ(error.err, "mFrameLeft.size() == mFrameRight.size()");
      EXPECT_EQ(error.func, function);
      EXPECT_EQ(error.file, "src/Calibration/src/Calibrator");
      EXPECT_EQ(error.line, line);
      EXPECT_NE(
          std::string(error.what())
              .find("src/Calibration/src/Calibrator:" + std::to_string(line) +
                    ": error: (-215:Assertion failed) mFrameLeft.size() == mFrameRight.size() in function '" +
                    function + "'"),
          std::string::npos)
          << error.what();
    }
  }

  const std::vector<std::pair<cv::Size, cv::Size>> sizes_ = {
      {{640, 480}, {640, 479}}, {{640, 480}, {639, 480}}, {{640, 480}, {480, 640}}, {{0, 0}, {640, 480}}};
};

TEST_F(StereoFramesOfDifferentSizes, RaiseTheWholeAssertionErrorInDetection) {
  for (const auto& size : sizes_) {
    cv::Mat left(size.first, CV_8UC3, cv::Scalar::all(50));
    cv::Mat right(size.second, CV_8UC3, cv::Scalar::all(50));
    ExpectAssertion([&] { calibrator_->DetectStereoPoints(left, right, left_, right_, true); },
                    "DetectStereoPoints", 346);
  }
}

TEST_F(StereoFramesOfDifferentSizes, RaiseTheWholeAssertionErrorInAddition) {
  for (const auto& size : sizes_) {
    cv::Mat left(size.first, CV_8UC3, cv::Scalar::all(50));
    cv::Mat right(size.second, CV_8UC3, cv::Scalar::all(50));
    ExpectAssertion([&] { calibrator_->AddStereoPoints(left, right, true); }, "AddStereoPoints", 483);
  }
}

TEST_F(StereoFramesOfDifferentSizes, ChangeNothing) {
  DetectOnce();
  const Centres leftPoints = left_;
  const Centres rightPoints = right_;
  const unit::ImagePair pair = unit::PairWithGrid();
  cv::Mat left = pair.left.clone();
  const cv::Mat cut = pair.right.rowRange(0, 479).clone();
  cv::Mat right = cut.clone();
  calibrator_->SetFlipImage(true);
  EXPECT_EQ(unit::PrintedBy([&] {
              EXPECT_THROW(calibrator_->DetectStereoPoints(left, right, left_, right_, true), cv::Exception);
              EXPECT_THROW(calibrator_->AddStereoPoints(left, right, true), cv::Exception);
            }),
            "");
  EXPECT_SAME_MAT(left, pair.left);
  EXPECT_SAME_MAT(right, cut);
  EXPECT_EQ(left_, leftPoints);
  EXPECT_EQ(right_, rightPoints);
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 0);
  EXPECT_EQ(calibrator_->GetStatus(), Calibrator::STATUS_NOT_READY);
  ExpectDetectionLeft(true);
  // The locks are free again.
  calibrator_->SetFlipImage(false);
  DetectOnce();
}

TEST_F(StereoFramesOfDifferentSizes, AreNotLookedAtWhereTheOperationIsRefused) {
  cv::Mat left(480, 640, CV_8UC3, cv::Scalar::all(50));
  cv::Mat right(479, 640, CV_8UC3, cv::Scalar::all(50));
  const auto mono = unit::MakeCalibrator();
  calibrator_->SetStatus(Calibrator::STATUS_PROGRESS);
  for (Calibrator* calibrator : {mono.get(), calibrator_.get()}) {
    EXPECT_FALSE(calibrator->DetectStereoPoints(left, right, left_, right_, true));
    EXPECT_FALSE(calibrator->AddStereoPoints(left, right, true));
  }
}

/// Operations where they are refused: nothing happens and nothing is said.
class RefusedStereo : public StereoPairs {
 protected:
  static void ExpectNothingHappens(Calibrator& calibrator) {
    const unit::ScopedLogLevel everything(5);
    const int status = calibrator.GetStatus();
    const int count = calibrator.GetNumberOfRecords();
    unit::ImagePair pair = unit::PairWithGrid();
    cv::resize(pair.left, pair.left, {800, 600});
    cv::resize(pair.right, pair.right, {800, 600});
    const cv::Mat left = pair.left.clone();
    const cv::Mat right = pair.right.clone();
    Centres leftPoints = {{1.0, 2.0}};
    Centres rightPoints = {{3.0, 4.0}};
    bool detected = true;
    bool added = true;
    bool detectedAndAdded = true;
    EXPECT_EQ(unit::PrintedBy([&] {
                detected =
                    calibrator.DetectStereoPoints(pair.left, pair.right, leftPoints, rightPoints, true);
                added = calibrator.AddStereoPoints();
                calibrator.AddStereoPoints(leftPoints, rightPoints);
                detectedAndAdded = calibrator.AddStereoPoints(pair.left, pair.right, true);
              }),
              "");
    EXPECT_FALSE(detected);
    EXPECT_FALSE(added);
    EXPECT_FALSE(detectedAndAdded);
    EXPECT_SAME_MAT(pair.left, left);
    EXPECT_SAME_MAT(pair.right, right);
    EXPECT_EQ(leftPoints, (Centres{{1.0, 2.0}}));
    EXPECT_EQ(rightPoints, (Centres{{3.0, 4.0}}));
    EXPECT_EQ(calibrator.GetStatus(), status);
    EXPECT_EQ(calibrator.GetNumberOfRecords(), count);
  }
};

TEST_F(RefusedStereo, InAMonocularCalibratorChangesNothing) {
  const auto mono = unit::MakeCalibrator();
  mono->SetFlipImage(true);
  cv::Mat frame = unit::ImageWithGrid();
  ASSERT_TRUE(mono->DetectPoints(frame, left_, false));
  ExpectNothingHappens(*mono);
  EXPECT_TRUE(mono->IsDetected()) << "its own detection is lost";
}

TEST_F(RefusedStereo, InACalibratorOfAnUnknownKindChangesNothing) {
  for (const int kind : {2, -1}) ExpectNothingHappens(*unit::MakeCalibrator(kind));
}

TEST_F(RefusedStereo, DuringProgressChangesNothing) {
  DetectOnce();
  calibrator_->SetFlipImage(true);
  calibrator_->SetStatus(Calibrator::STATUS_PROGRESS);
  ExpectNothingHappens(*calibrator_);
  calibrator_->SetStatus(Calibrator::STATUS_NOT_READY);
  ExpectDetectionLeft(true);
}

class StereoSnapshots : public StereoPairs {
 protected:
  /// Expects the five pairs to be snapshots from which a result is computed.
  static void ExpectSnapshots(Calibrator& calibrator, const unit::PointPairs& pairs) {
    ASSERT_EQ(static_cast<size_t>(calibrator.GetNumberOfRecords()), pairs.left.size());
    const auto direct = unit::SolveDirectly(pairs, unit::RATIONAL_FLAGS);
    EXPECT_EQ(calibrator.ComputeCalibrationStereo(unit::LeftResult(), unit::RightResult(),
                                                  Calibrator::MODEL_RATIONAL, false),
              static_cast<float>(direct.rms));
    EXPECT_SAME_MAT(calibrator.GetR(), direct.R);
    EXPECT_SAME_MAT(calibrator.GetStereoTranslation(), direct.T);
  }

  const unit::PointPairs pairs_ = unit::NoisyPairs(8);
};

TEST_F(StereoSnapshots, AreTakenOncePerDetection) {
  DetectOnce();
  bool first = false;
  bool second = true;
  EXPECT_EQ(unit::PrintedBy([&] {
              first = calibrator_->AddStereoPoints();
              second = calibrator_->AddStereoPoints();
            }),
            std::string("DEBUG : New points added. Snapshot count: 1\n") + NOT_DETECTED);
  EXPECT_TRUE(first);
  EXPECT_FALSE(second);
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 1);
}

TEST_F(StereoSnapshots, AreRefusedWithoutADetection) {
  bool added = true;
  EXPECT_EQ(unit::PrintedBy([&] { added = calibrator_->AddStereoPoints(); }), NOT_DETECTED);
  EXPECT_FALSE(added);
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 0);
}

TEST_F(StereoSnapshots, AreRefusedRightAfterAFailedDetection) {
  DetectOnce();
  unit::ImagePair without = unit::PairWithoutGrid();
  ASSERT_FALSE(Detect(without));
  bool added = true;
  EXPECT_EQ(unit::PrintedBy([&] { added = calibrator_->AddStereoPoints(); }), NOT_DETECTED);
  EXPECT_FALSE(added);
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 0);
}

TEST_F(StereoSnapshots, AreReportedAtDebugLevelOnly) {
  const unit::ScopedLogLevel info(3);
  DetectOnce();
  EXPECT_EQ(unit::PrintedBy([&] {
              calibrator_->AddStereoPoints();
              calibrator_->AddStereoPoints();
            }),
            "");
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 1);
}

TEST_F(StereoSnapshots, MakeTheCalibratorReadyFromTheFifthOn) {
  for (int count = 1; count <= 6; ++count) {
    DetectOnce();
    EXPECT_EQ(unit::PrintedBy([&] { calibrator_->AddStereoPoints(); }),
              "DEBUG : New points added. Snapshot count: " + std::to_string(count) + "\n");
    EXPECT_EQ(calibrator_->GetStatus(), count < 5 ? 100 : 200);
    EXPECT_EQ(calibrator_->GetNumberOfRecords(), count);
  }
}

TEST_F(StereoSnapshots, OfSuppliedCentresMakeTheCalibratorReadyFromTheFifthOnQuietly) {
  const unit::ScopedLogLevel everything(5);
  EXPECT_EQ(unit::PrintedBy([&] {
              for (size_t i = 0; i < 6; ++i) {
                calibrator_->AddStereoPoints(pairs_.left[i], pairs_.right[i]);
                EXPECT_EQ(calibrator_->GetStatus(), i < 4 ? 100 : 200);
              }
            }),
            "");
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 6);
}

TEST_F(StereoSnapshots, OfFramesMakeTheCalibratorReadyFromTheFifthOnQuietly) {
  const unit::ScopedLogLevel everything(5);
  EXPECT_EQ(unit::PrintedBy([&] {
              for (int count = 1; count <= 6; ++count) {
                unit::ImagePair pair = unit::PairWithGrid();
                EXPECT_TRUE(calibrator_->AddStereoPoints(pair.left, pair.right, false));
                EXPECT_EQ(calibrator_->GetStatus(), count < 5 ? 100 : 200);
              }
            }),
            "");
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 6);
}

TEST_F(StereoSnapshots, NeverLeadBackToNotReady) {
  calibrator_->SetStatus(Calibrator::STATUS_READY);
  calibrator_->AddStereoPoints(pairs_.left[0], pairs_.right[0]);
  EXPECT_EQ(calibrator_->GetStatus(), Calibrator::STATUS_READY);
}

TEST_F(StereoSnapshots, OfAnyCentresAreTaken) {
  calibrator_->AddStereoPoints(Centres(), Centres());
  calibrator_->AddStereoPoints({{1.0, 2.0}}, Centres());
  calibrator_->AddStereoPoints(Centres(), Centres(100));
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 3);
}

TEST_F(StereoSnapshots, OfSuppliedCentresLeaveTheLastDetection) {
  DetectOnce();
  calibrator_->AddStereoPoints(pairs_.left[0], pairs_.right[0]);
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 1);
  ExpectDetectionLeft(true);
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 2);
}

TEST_F(StereoSnapshots, OfFramesLeaveTheLastDetection) {
  DetectOnce();
  unit::ImagePair pair = unit::PairWithGrid(1);
  ASSERT_TRUE(calibrator_->AddStereoPoints(pair.left, pair.right, false));
  ExpectDetectionLeft(true);
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 2);

  DetectOnce();
  unit::ImagePair without = unit::PairWithoutGrid();
  ASSERT_FALSE(calibrator_->AddStereoPoints(without.left, without.right, false));
  ExpectDetectionLeft(true);
}

TEST_F(StereoSnapshots, OfFramesAreNotADetection) {
  unit::ImagePair pair = unit::PairWithGrid();
  ASSERT_TRUE(calibrator_->AddStereoPoints(pair.left, pair.right, false));
  ExpectDetectionLeft(false);
}

TEST_F(StereoSnapshots, OfFramesDrawCornersWithoutOverlayAndMirroring) {
  calibrator_->SetFlipImage(true);
  const unit::ImagePair plain = unit::PairWithGrid();
  Centres left;
  Centres right;
  ASSERT_TRUE(SearchedDirectly(plain.left, left));
  ASSERT_TRUE(SearchedDirectly(plain.right, right));
  unit::ImagePair drawn = unit::PairWithGrid();
  ASSERT_TRUE(calibrator_->AddStereoPoints(drawn.left, drawn.right, true));
  EXPECT_SAME_MAT(drawn.left, WithCorners(plain.left, left));
  EXPECT_SAME_MAT(drawn.right, WithCorners(plain.right, right));

  unit::ImagePair undrawn = unit::PairWithGrid();
  ASSERT_TRUE(calibrator_->AddStereoPoints(undrawn.left, undrawn.right, false));
  EXPECT_SAME_MAT(undrawn.left, plain.left);
  EXPECT_SAME_MAT(undrawn.right, plain.right);
}

TEST_F(StereoSnapshots, OfFramesAreTakenAtTheProcessingSize) {
  const unit::ImagePair expected = unit::PairWithGrid();
  unit::ImagePair pair{LargerAndWider(expected.left), LargerAndWider(expected.right), {}, {}};
  ASSERT_TRUE(calibrator_->AddStereoPoints(pair.left, pair.right, false));
  EXPECT_SAME_MAT(pair.left, expected.left);
  EXPECT_SAME_MAT(pair.right, expected.right);
}

TEST_F(StereoSnapshots, OfFramesNeedTheGridInBoth) {
  const unit::ScopedLogLevel everything(5);
  calibrator_->SetFlipImage(true);
  for (const bool gridLeft : {true, false}) {
    unit::ImagePair pair = unit::PairWithGrid();
    const unit::ImagePair without = unit::PairWithoutGrid();
    (gridLeft ? pair.right : pair.left) = gridLeft ? without.right : without.left;
    const cv::Mat left = pair.left.clone();
    const cv::Mat right = pair.right.clone();
    bool added = true;
    EXPECT_EQ(unit::PrintedBy([&] { added = calibrator_->AddStereoPoints(pair.left, pair.right, true); }),
              "");
    EXPECT_FALSE(added);
    EXPECT_SAME_MAT(pair.left, left);
    EXPECT_SAME_MAT(pair.right, right);
  }
  cv::Mat nothing;
  cv::Mat neither;
  EXPECT_FALSE(calibrator_->AddStereoPoints(nothing, neither, true));
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 0);
  EXPECT_EQ(calibrator_->GetStatus(), Calibrator::STATUS_NOT_READY);
}

TEST_F(StereoSnapshots, LeadACompletedCalibratorBackToReadyAndKeepItsMatrices) {
  const unit::ScopedLogLevel quiet(1);
  const std::function<void(Calibrator&)> ways[] = {
      [this](Calibrator& calibrator) {
        DetectOnce(calibrator);
        EXPECT_TRUE(calibrator.AddStereoPoints());
      },
      [this](Calibrator& calibrator) { calibrator.AddStereoPoints(pairs_.left[0], pairs_.right[0]); },
      [](Calibrator& calibrator) {
        unit::ImagePair pair = unit::PairWithGrid();
        EXPECT_TRUE(calibrator.AddStereoPoints(pair.left, pair.right, true));
      }};
  for (size_t way = 0; way < 3; ++way) {
    SCOPED_TRACE(way);
    const auto calibrator = unit::CompletedStereoCalibrator();
    const float rms = calibrator->GetRMS();
    const cv::Mat R = calibrator->GetR().clone();
    ASSERT_GT(rms, 0.0F);
    ways[way](*calibrator);
    EXPECT_EQ(calibrator->GetNumberOfRecords(), 7);
    EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_READY);
    // Only the snapshot of the last detection says that the error describes other snapshots.
    EXPECT_EQ(calibrator->GetRMS(), way == 0 ? -1.0F : rms);
    EXPECT_SAME_MAT(calibrator->GetR(), R);
  }
}

TEST_F(StereoSnapshots, HoldLeftAndRightCentresInTheOrderOfTheCalls) {
  const unit::ScopedLogLevel quiet(1);
  unit::PointPairs expected;
  for (int view = 0; view < 6; ++view) {
    unit::ImagePair pair = unit::PairWithGrid(view);
    if (view % 3 == 1) {
      left_ = pairs_.left[static_cast<size_t>(view)];
      right_ = pairs_.right[static_cast<size_t>(view)];
      calibrator_->AddStereoPoints(left_, right_);
    } else {
      ASSERT_TRUE(SearchedDirectly(pair.left, left_));
      ASSERT_TRUE(SearchedDirectly(pair.right, right_));
      Centres left;
      Centres right;
      if (view % 3 == 0) {
        ASSERT_TRUE(calibrator_->DetectStereoPoints(pair.left, pair.right, left, right, true));
        ASSERT_TRUE(calibrator_->AddStereoPoints());
      } else {
        ASSERT_TRUE(calibrator_->AddStereoPoints(pair.left, pair.right, true));
      }
    }
    expected.left.push_back(left_);
    expected.right.push_back(right_);
  }
  ExpectSnapshots(*calibrator_, expected);
}

TEST_F(StereoSnapshots, HoldUnmirroredCentres) {
  const unit::ScopedLogLevel quiet(1);
  calibrator_->SetFlipImage(true);
  unit::PointPairs expected;
  for (int view = 0; view < 5; ++view) {
    unit::ImagePair pair = unit::PairWithGrid(view);
    Centres left;
    Centres right;
    ASSERT_TRUE(SearchedDirectly(pair.left, left));
    ASSERT_TRUE(SearchedDirectly(pair.right, right));
    expected.left.push_back(left);
    expected.right.push_back(right);
    ASSERT_TRUE(Detect(pair, true));
    ASSERT_TRUE(calibrator_->AddStereoPoints());
  }
  ExpectSnapshots(*calibrator_, expected);
}

TEST_F(StereoSnapshots, AreDroppedByAResetButNotTheLastDetection) {
  calibrator_ = unit::StereoCalibratorWith(pairs_);
  DetectOnce();
  calibrator_->Reset();
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 0);
  EXPECT_EQ(calibrator_->GetStatus(), Calibrator::STATUS_NOT_READY);
  ExpectDetectionLeft(true);
}

}  // namespace
