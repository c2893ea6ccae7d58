/// Opening the planned captures, and which of them frames come from.
#include "common/Captures.h"

#include <gtest/gtest.h>

#include <sstream>

#include "common/LibraryNoise.h"

using common::Camera;
using common::Captures;
using common::Split;

namespace {

/// What happened to the captures of a test, in order.
using Journal = std::vector<std::string>;

/// A capture that writes down what it is told and delivers frames of one colour.
class RecordedCapture final : public common::Capture {
 public:
  RecordedCapture(Journal& journal, int number, bool opens)
      : journal_(journal), number_(number), opens_(opens) {}

  bool Open(const common::CaptureRequest& request) override {
    Note("open " + request.name);
    return opens_;
  }
  void Set(int property, double value) override {
    std::ostringstream text;
    text << "set " << property << " to " << value;
    Note(text.str());
  }
  double Get(int) override { return 0.0; }
  bool Skip() override { return true; }
  bool Read(cv::Mat& frame) override {
    if (frameSize.empty()) return false;
    frame.create(frameSize, CV_8UC1);
    frame.setTo(number_);
    frame.colRange(frame.cols / 2, frame.cols).setTo(number_ + 100);
    return true;
  }

  cv::Size frameSize{4, 2};

 private:
  void Note(const std::string& event) { journal_.push_back(std::to_string(number_) + ": " + event); }

  Journal& journal_;
  const int number_;
  const bool opens_;
};

class CapturesTest : public testing::Test {
 protected:
  /// Opens the plan with captures of which the one with this number, if any, does not open.
  Captures Open(const common::SourcePlan& plan, int broken = -1) {
    int number = 0;
    return common::OpenCaptures(
        plan,
        [&] {
          ++number;
          return std::make_unique<RecordedCapture>(journal_, number, number != broken);
        },
        err_);
  }

  static common::SourcePlan PairOfWebcams() {
    common::SourceSettings settings;
    settings.webcam = 5;
    settings.webcamRight = 7;
    settings.width = 800;
    settings.height = 600;
    settings.fps = 25;
    return common::PlanSources(settings);
  }

  /// The colour of the first pixel that the camera's source delivers.
  static int FirstPixel(const Captures& captures, Split split, Camera camera) {
    cv::Mat frame;
    return common::MonocularSource(captures, split, camera)(frame) && !frame.empty() ? frame.at<uchar>(0, 0)
                                                                                     : -1;
  }

  Journal journal_;
  std::ostringstream err_;
};

TEST_F(CapturesTest, BothWebcamsAreOpenedBeforeEitherIsSet) {
  EXPECT_EQ(Open(PairOfWebcams()).size(), 2U);
  EXPECT_EQ(journal_, (Journal{"1: open webcam 5", "2: open webcam 7", "1: set 3 to 800", "1: set 4 to 600",
                               "1: set 5 to 25", "2: set 3 to 800", "2: set 4 to 600", "2: set 5 to 25"}));
  EXPECT_EQ(err_.str(), "");
}

TEST_F(CapturesTest, NoSourceIsReported) {
  EXPECT_TRUE(Open({}).empty());
  EXPECT_EQ(err_.str(), "ERROR: no video source given. Please use '--help' for more information.\n");
}

TEST_F(CapturesTest, TheFirstCaptureThatDoesNotOpenIsNamed) {
  EXPECT_TRUE(Open(PairOfWebcams(), 1).empty());
  EXPECT_EQ(err_.str(), "ERROR: cannot open webcam 5.\n");
  EXPECT_EQ(journal_, (Journal{"1: open webcam 5"}));
}

TEST_F(CapturesTest, TheSecondCaptureHasToOpenToo) {
  EXPECT_TRUE(Open(PairOfWebcams(), 2).empty());
  EXPECT_EQ(err_.str(), "ERROR: cannot open webcam 7.\n");
  EXPECT_EQ(journal_, (Journal{"1: open webcam 5", "2: open webcam 7"}));
}

TEST_F(CapturesTest, AMissingFileDoesNotOpen) {
  common::SilenceLibraries();
  common::SourceSettings settings;
  settings.video = testing::TempDir() + "no such video.mp4";
  EXPECT_TRUE(common::OpenCaptures(common::PlanSources(settings), common::NewVideoCapture, err_).empty());
  EXPECT_EQ(err_.str(), "ERROR: cannot open video '" + *settings.video + "'.\n");
}

TEST_F(CapturesTest, APlainInputIsItsOnlyCapture) {
  common::SourceSettings settings;
  settings.webcam = 0;
  EXPECT_EQ(FirstPixel(Open(common::PlanSources(settings)), Split::None, Camera::None), 1);
}

TEST_F(CapturesTest, TheSelectedOfTwoCapturesIsRead) {
  const Captures captures = Open(PairOfWebcams());
  EXPECT_EQ(FirstPixel(captures, Split::None, Camera::Left), 1);
  EXPECT_EQ(FirstPixel(captures, Split::None, Camera::Right), 2);
}

TEST_F(CapturesTest, TheSelectedHalfOfASplitFrameIsRead) {
  common::SourceSettings settings;
  settings.webcam = 0;
  const Captures captures = Open(common::PlanSources(settings));
  EXPECT_EQ(FirstPixel(captures, Split::Vertical, Camera::Left), 1);
  EXPECT_EQ(FirstPixel(captures, Split::Vertical, Camera::Right), 101);
}

TEST_F(CapturesTest, AFailedReadOfASplitFrameIsAFailedRead) {
  auto capture = std::make_shared<RecordedCapture>(journal_, 1, true);
  capture->frameSize = {};
  cv::Mat frame;
  EXPECT_FALSE(common::MonocularSource({capture}, Split::Vertical, Camera::Left)(frame));
}

TEST_F(CapturesTest, AFrameOnePixelWideHasNoHalves) {
  auto capture = std::make_shared<RecordedCapture>(journal_, 1, true);
  capture->frameSize = {1, 4};
  EXPECT_EQ(FirstPixel({capture}, Split::Vertical, Camera::Right), -1);
}

TEST_F(CapturesTest, TheSourceKeepsTheCapturesOpen) {
  auto capture = std::make_shared<RecordedCapture>(journal_, 1, true);
  const std::weak_ptr<RecordedCapture> watch = capture;
  common::FrameReader::Source source = common::MonocularSource({capture}, Split::None, Camera::None);
  capture.reset();
  EXPECT_FALSE(watch.expired());
  source = nullptr;
  EXPECT_TRUE(watch.expired());
}

TEST_F(CapturesTest, APairIsTheFramesOfBothCaptures) {
  common::FramePair pair;
  ASSERT_TRUE(common::StereoSource(Open(PairOfWebcams()), Split::None)(pair));
  EXPECT_EQ(pair.left.at<uchar>(0, 0), 1);
  EXPECT_EQ(pair.right.at<uchar>(0, 0), 2);
}

TEST_F(CapturesTest, APairOfASplitFrameIsItsHalves) {
  common::SourceSettings settings;
  settings.webcam = 0;
  common::FramePair pair;
  ASSERT_TRUE(common::StereoSource(Open(common::PlanSources(settings)), Split::Vertical)(pair));
  EXPECT_EQ(pair.left.at<uchar>(0, 0), 1);
  EXPECT_EQ(pair.right.at<uchar>(0, 0), 101);
}

TEST_F(CapturesTest, APairLacksNothingOrCountsAsEmpty) {
  auto left = std::make_shared<RecordedCapture>(journal_, 1, true);
  auto right = std::make_shared<RecordedCapture>(journal_, 2, true);
  left->frameSize = {};
  common::FramePair pair;
  const bool read = common::StereoSource({left, right}, Split::None)(pair);
  EXPECT_TRUE(!read || pair.empty());
}

}  // namespace
