/// The assistant within a calibrator: switching it, what it draws, and guided collection to its end.
#include <gtest/gtest.h>

#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "Calibrator.h"
#include "Matchers.h"
#include "TemporaryFolder.h"
#include "imaging/Overlay.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

class Guided : public ::testing::Test {
 protected:
  /// A model of the poses of the first rendered views, as detected.
  std::string ModelOf(size_t poses) {
    unit::PointLists detected;
    for (size_t view = 0; view < poses; ++view) {
      cv::Mat frame = unit::Rendered().images[view].clone();
      std::vector<cv::Point2d> points;
      EXPECT_TRUE(unit::MakeCalibrator()->DetectPoints(frame, points, false));
      detected.push_back(points);
    }
    const std::string path = folder_.File("model" + std::to_string(poses) + ".json");
    unit::WriteAssistantModel(path, detected);
    return path;
  }

  /// Shows a view to the calibrator and returns the decorated frame.
  cv::Mat Show(size_t view, bool draw = false) {
    cv::Mat frame = unit::Rendered().images[view].clone();
    EXPECT_TRUE(calibrator_->DetectPoints(frame, points_, draw));
    return frame;
  }

  /// The overlay's fixed texts on black.
  static cv::Mat FixedTexts(int snapshots, int goal) {
    OverlayState state;
    state.snapshots = snapshots;
    state.goal = goal;
    state.frameSize = unit::FRAME;
    state.status = Calibrator::STATUS_NOT_READY;
    state.elapsed = 1.0;
    cv::Mat canvas = cv::Mat::zeros(unit::FRAME, CV_8UC3);
    DrawOverlay(state, canvas);
    canvas(cv::Rect(130, 86, 510, 22)).setTo(0);
    return canvas;
  }

  /// True when the frame is at least as bright as the texts where these are nearly white. No paper is as
  /// bright.
  static bool ShowsText(const cv::Mat& frame, const cv::Mat& texts) {
    const cv::Mat strokes = texts.reshape(1) > 235;
    const cv::Mat darker = frame.reshape(1) < texts.reshape(1) - cv::Scalar(3);
    return cv::countNonZero(strokes) > 100 && cv::countNonZero(strokes & darker) == 0;
  }

  support::TemporaryFolder folder_;
  std::unique_ptr<Calibrator> calibrator_ = unit::MakeCalibrator();
  std::vector<cv::Point2d> points_;
};

TEST_F(Guided, HasTheModelsGoalUntilItIsDisabled) {
  const std::string model = ModelOf(7);
  EXPECT_EQ(unit::PrintedBy([&] { calibrator_->EnableAssistant(model); }), "");
  EXPECT_EQ(calibrator_->GetAssistantGoal(), 7);
  calibrator_->DisableAssistant();
  EXPECT_EQ(calibrator_->GetAssistantGoal(), -1);
  calibrator_->DisableAssistant();
  EXPECT_EQ(calibrator_->GetAssistantGoal(), -1);
}

TEST_F(Guided, TakesTheLatestModel) {
  calibrator_->EnableAssistant(ModelOf(2));
  calibrator_->EnableAssistant(ModelOf(3));
  EXPECT_EQ(calibrator_->GetAssistantGoal(), 3);
}

TEST_F(Guided, DrawsCornersAndOverlayEvenWithoutDraw) {
  const cv::Mat text = FixedTexts(0, 6);
  const cv::Mat plain = Show(1);
  EXPECT_FALSE(ShowsText(plain, text));
  calibrator_->EnableAssistant(ModelOf(6));
  const cv::Mat frame = Show(1);
  EXPECT_TRUE(ShowsText(frame, text));
  EXPECT_FALSE(ShowsText(frame, FixedTexts(0, 7))) << "the goal is not the one of the model";
}

TEST_F(Guided, DrawsTheTargetOnFramesWithoutAGrid) {
  calibrator_->EnableAssistant(ModelOf(6));
  const cv::Mat image = unit::ImageWithoutGrid();
  cv::Mat frame = image.clone();
  EXPECT_FALSE(calibrator_->DetectPoints(frame, points_, false));
  EXPECT_FALSE(support::SameMat(frame, image));
  // The score of no comparison: a bar over the whole width.
  for (const int x : {0, 320, 639}) EXPECT_EQ(frame.at<cv::Vec3b>(478, x), cv::Vec3b(0, 255, 0));
  EXPECT_FALSE(ShowsText(frame, FixedTexts(0, 6)));

  frame = image.clone();
  EXPECT_FALSE(calibrator_->DetectPoints(frame, points_, true));
  EXPECT_TRUE(ShowsText(frame, FixedTexts(0, 6)));
}

TEST_F(Guided, FindsTheGridUnderTheDrawnTarget) {
  const cv::Mat plain = Show(1);
  const std::vector<cv::Point2d> expected = points_;
  calibrator_->EnableAssistant(ModelOf(6));
  Show(1);
  EXPECT_EQ(points_, expected);
}

TEST_F(Guided, DrawsNothingAnyMoreOnceDisabled) {
  calibrator_->EnableAssistant(ModelOf(6));
  calibrator_->DisableAssistant();
  EXPECT_SAME_MAT(Show(1), unit::Rendered().images[1]);
}

TEST_F(Guided, TakesASnapshotOnlyAtTheTargetPose) {
  calibrator_->EnableAssistant(ModelOf(6));
  EXPECT_EQ(unit::PrintedBy([&] { Show(3); }), "");
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 0);
  EXPECT_EQ(unit::PrintedBy([&] { Show(0); }), "DEBUG : New points added. Snapshot count: 1\n");
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 1);
  // The next pose is wanted now.
  EXPECT_EQ(unit::PrintedBy([&] { Show(0); }), "");
  EXPECT_EQ(unit::PrintedBy([&] { Show(1); }), "DEBUG : New points added. Snapshot count: 2\n");
}

TEST_F(Guided, DecidesAloneInTheCallThatDetectsAndAdds) {
  calibrator_->EnableAssistant(ModelOf(6));
  cv::Mat frame = unit::Rendered().images[3].clone();
  bool result = false;
  EXPECT_EQ(unit::PrintedBy([&] { result = calibrator_->AddPoints(frame, false); }), "");
  EXPECT_TRUE(result);
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 0);
  frame = unit::Rendered().images[0].clone();
  EXPECT_EQ(unit::PrintedBy([&] { calibrator_->AddPoints(frame, false); }),
            "DEBUG : New points added. Snapshot count: 1\n");
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 1);
}

TEST_F(Guided, StartsTheRationalComputationAtTheLastPose) {
  constexpr size_t POSES = 6;
  calibrator_->EnableAssistant(ModelOf(POSES));
  unit::PointLists shown;
  const unit::ScopedLogLevel quiet(1);
  for (size_t view = 0; view < POSES; ++view) {
    EXPECT_NE(calibrator_->GetStatus(), Calibrator::STATUS_COMPLETED);
    Show(view);
    shown.push_back(points_);
  }
  ASSERT_TRUE(unit::Eventually([&] { return calibrator_->GetStatus() == Calibrator::STATUS_COMPLETED; }));
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 6);
  EXPECT_EQ(calibrator_->GetAssistantGoal(), -1);
  const auto expected = unit::CalibratorWith(shown);
  expected->ComputeCalibration(Calibrator::MODEL_RATIONAL);
  EXPECT_TRUE(unit::SameResult(calibrator_->GetK(), expected->GetK()));
  EXPECT_TRUE(unit::SameResult(calibrator_->GetDistCoefs(), expected->GetDistCoefs()));
  EXPECT_EQ(calibrator_->GetDistCoefs().cols, 14);
}

TEST_F(Guided, ReportsASequenceTooShortForAComputation) {
  calibrator_->EnableAssistant(ModelOf(1));
  const std::string printed = unit::PrintedBy([&] {
    Show(0);
    calibrator_.reset();  // waits for the worker
  });
  EXPECT_EQ(printed,
            "DEBUG : New points added. Snapshot count: 1\n"
            "ERROR : Can't compute calibration. At least 5 pictures are needed. Current: 1\n");
}

TEST_F(Guided, MirrorsTheDrawingToo) {
  calibrator_->EnableAssistant(ModelOf(6));
  calibrator_->SetFlipImage(true);
  const cv::Mat frame = Show(1);
  cv::Mat back;
  cv::flip(frame, back, 1);
  EXPECT_TRUE(ShowsText(back, FixedTexts(0, 6)));
  EXPECT_FALSE(ShowsText(frame, FixedTexts(0, 6)));
}

TEST_F(Guided, ReportsAModelThatCannotBeReadAndGoesOnDetecting) {
  const std::string missing = folder_.File("missing.json");
  EXPECT_EQ(unit::PrintedBy([&] { calibrator_->EnableAssistant(missing); }),
            "ERROR : Cannot use assistant model '" + missing + "': it cannot be read\n");
  EXPECT_EQ(calibrator_->GetAssistantGoal(), -1);
  EXPECT_EQ(unit::PrintedBy([&] { Show(0); }), "");
  EXPECT_EQ(points_.size(), 44U);
  EXPECT_EQ(calibrator_->GetNumberOfRecords(), 0);
}

TEST_F(Guided, ReportsBrokenModelsByName) {
  for (const char* text : {"", "no JSON", "{}", "[]", R"({"count": 0, "imgWidth": 640, "imgHeight": 480})",
                           R"({"count": 1, "imgWidth": 640, "imgHeight": 480})"}) {
    const std::string path = folder_.File("broken.json");
    support::WriteText(path, text);
    const std::string printed = unit::PrintedBy([&] { calibrator_->EnableAssistant(path); });
    EXPECT_EQ(printed.rfind("ERROR : Cannot use assistant model '" + path + "': ", 0), 0U) << printed;
    EXPECT_EQ(std::count(printed.begin(), printed.end(), '\n'), 1) << printed;
    EXPECT_EQ(calibrator_->GetAssistantGoal(), -1);
    Show(0);
    EXPECT_EQ(points_.size(), 44U);
  }
}

}  // namespace
