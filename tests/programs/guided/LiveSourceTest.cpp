/// What a guided calibration is fed from, with captures of the test's own.
#include "guided/LiveSource.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <opencv2/videoio.hpp>
#include <sstream>
#include <stdexcept>

#include "ManualClock.h"
#include "TemporaryFolder.h"

using guided::SourceKind;
using guided::SourceState;
using std::chrono::milliseconds;

namespace {

constexpr milliseconds LONG{30000};

/// What the captures of a test deliver, by the names of their sources.
struct Script {
  cv::Size size{64, 48};
  int frames = 1000000;
  double rate = 0.0;
  bool opens = true;
  bool obeys = false;  ///< delivers the size that it is asked for
};

/// Frames are all of one number: 1 for the first, 2 for the second...
class ScriptedCapture final : public common::Capture {
 public:
  ScriptedCapture(const std::map<std::string, Script>& scripts, std::vector<int>& set,
                  const std::function<void()>& tick)
      : scripts_(scripts), set_(set), tick_(tick) {}

  bool Open(const common::CaptureRequest& request) override {
    script_ = scripts_.at(request.name);
    return script_.opens;
  }
  void Set(int property, double value) override {
    set_.push_back(property);
    if (script_.obeys && property == cv::CAP_PROP_FRAME_WIDTH) script_.size.width = static_cast<int>(value);
    if (script_.obeys && property == cv::CAP_PROP_FRAME_HEIGHT) script_.size.height = static_cast<int>(value);
  }
  double Get(int property) override { return property == cv::CAP_PROP_FPS ? script_.rate : 0.0; }
  bool Read(cv::Mat& frame) override {
    tick_();
    if (number_ == script_.frames) return false;
    frame = cv::Mat(script_.size, CV_8UC1, cv::Scalar(++number_ % 256));
    frame.colRange(frame.cols / 2, frame.cols).setTo(100 + number_ % 100);
    return true;
  }
  bool Skip() override { return true; }

 private:
  const std::map<std::string, Script>& scripts_;
  std::vector<int>& set_;
  const std::function<void()> tick_;
  Script script_;
  int number_ = 0;
};

class LiveSourceTest : public testing::Test {
 protected:
  LiveSourceTest() {
    around_.newCapture = [this] { return std::make_unique<ScriptedCapture>(scripts_, set_, tick_); };
    around_.devices = devices_.Path();
    around_.clock = clock_;
    around_.wait = [](milliseconds) { FAIL() << "no camera here focuses by itself"; };
    for (const int number : {0, 1}) support::WriteText(devices_.File("video" + std::to_string(number)), "");
  }

  std::unique_ptr<guided::LiveSource> Open(std::vector<const char*> words) {
    words.insert(words.begin(), "velmora-guided");
    const guided::Parsed parsed =
        guided::ParseArguments(static_cast<int>(words.size()), words.data(), "shipped.json");
    EXPECT_TRUE(parsed.run);
    return guided::OpenLiveSource(parsed.arguments, around_, out_, err_);
  }
  static int NumberOf(const cv::Mat& frame) { return frame.empty() ? -1 : frame.at<uchar>(0, 0); }
  static int Take(guided::LiveSource& source, milliseconds patience = LONG) {
    cv::Mat frame;
    source.Frames().Take(frame, patience);
    return NumberOf(frame);
  }
  static bool Becomes(const guided::LiveSource& source, SourceState::Kind kind) {
    const auto deadline = std::chrono::steady_clock::now() + LONG;
    while (source.State().kind != kind) {
      if (std::chrono::steady_clock::now() > deadline) return false;
      std::this_thread::yield();
    }
    return true;
  }

  support::TemporaryFolder devices_;
  guided_test::ManualClock clock_;
  std::map<std::string, Script> scripts_;
  std::vector<int> set_;
  std::function<void()> tick_ = [] {};
  guided::Surroundings around_;
  std::ostringstream out_;
  std::ostringstream err_;
};

TEST_F(LiveSourceTest, IsAsLargeAsWhatArrives) {
  scripts_["webcam 0"] = {{320, 200}, 1};
  const auto source = Open({"--webcam", "0"});
  ASSERT_NE(source, nullptr) << err_.str();
  EXPECT_EQ(source->FrameSize(), cv::Size(320, 200));
  EXPECT_EQ(source->Name(), "webcam 0");
  EXPECT_EQ(source->Kind(), SourceKind::Camera);
  EXPECT_EQ(out_.str(), "Frames of webcam 0: 320x200.\n");
  EXPECT_EQ(set_, (std::vector<int>{cv::CAP_PROP_FPS})) << "no size was asked of the camera";
  EXPECT_EQ(source->State().kind, SourceState::Kind::Live);
  EXPECT_EQ(source->Remark(), "");
  EXPECT_EQ(Take(*source), 1) << "the first frame is not lost";
  EXPECT_THROW(source->Pairs(), std::logic_error);
}

TEST_F(LiveSourceTest, ACameraIsAskedForTheSizeThatIsWanted) {
  scripts_["webcam 0"].obeys = true;
  scripts_["webcam 1"].size = {640, 480};
  EXPECT_EQ(Open({"--webcam", "0", "--width", "320", "--height", "200"})->FrameSize(), cv::Size(320, 200));
  EXPECT_EQ(Open({"--webcam", "1", "--width", "320", "--height", "200"})->FrameSize(), cv::Size(640, 480));
  EXPECT_EQ(out_.str(),
            "Frames of webcam 0: 320x200.\n"
            "Frames of webcam 1: 640x480, although 320x200 was asked for.\n");
}

TEST_F(LiveSourceTest, ARecordingIsHandedOutFrameByFrameAtItsRate) {
  scripts_["video 'a.avi'"] = {{64, 48}, 3, 10.0};
  const auto source = Open({"--video", "a.avi"});
  ASSERT_NE(source, nullptr) << err_.str();
  EXPECT_EQ(source->Kind(), SourceKind::Recording);
  EXPECT_EQ(Take(*source), 1);
  for (int number = 2; number <= 3; ++number) {
    EXPECT_EQ(Take(*source, milliseconds(1)), -1) << number;
    clock_.Advance(milliseconds(100));
    EXPECT_EQ(Take(*source), number);
  }
  EXPECT_TRUE(Becomes(*source, SourceState::Kind::Ended));
  EXPECT_EQ(source->Remark(), "The recording has ended.");
}

TEST_F(LiveSourceTest, ARecordingIsHandedOutFastOnDemand) {
  scripts_["video 'a.avi'"] = {{64, 48}, 50, 10.0};
  const auto source = Open({"--video", "a.avi", "--fast"});
  ASSERT_NE(source, nullptr) << err_.str();
  for (int number = 1; number <= 50; ++number) EXPECT_EQ(Take(*source), number);
  EXPECT_TRUE(Becomes(*source, SourceState::Kind::Ended));
}

TEST_F(LiveSourceTest, AnAddressOfLivePicturesIsNoRecording) {
  scripts_["video 'rtsp://here/a'"] = {{64, 48}, 1, 10.0};
  const auto source = Open({"--video", "rtsp://here/a"});
  ASSERT_NE(source, nullptr) << err_.str();
  EXPECT_EQ(source->Kind(), SourceKind::Stream);
  EXPECT_EQ(Take(*source), 1);
  EXPECT_TRUE(Becomes(*source, SourceState::Kind::Live));
  clock_.Advance(milliseconds(5000));
  EXPECT_TRUE(Becomes(*source, SourceState::Kind::Stalled));
}

TEST_F(LiveSourceTest, TwoCamerasAreAPair) {
  for (const char* name : {"webcam 0", "webcam 1"}) scripts_[name] = {{64, 48}, 1};
  const auto source = Open({"--webcam", "0", "--webcam_right", "1"});
  ASSERT_NE(source, nullptr) << err_.str();
  EXPECT_TRUE(source->IsPair());
  EXPECT_EQ(source->Name(), "webcam 0 and webcam 1");
  common::FramePair pair;
  ASSERT_TRUE(source->Pairs().Take(pair, LONG));
  EXPECT_EQ(NumberOf(pair.left), 1);
  EXPECT_EQ(NumberOf(pair.right), 1);
  EXPECT_THROW(source->Frames(), std::logic_error);
}

TEST_F(LiveSourceTest, TwoCamerasHaveTheSameSize) {
  scripts_["webcam 0"].size = {64, 48};
  scripts_["webcam 1"].size = {640, 480};
  EXPECT_EQ(Open({"--webcam", "0", "--webcam_right", "1"}), nullptr);
  EXPECT_EQ(
      err_.str(),
      "ERROR: webcam 0 and webcam 1 deliver frames of different sizes, 64x48 and 640x480: ask for one that "
      "both have, with --width and --height.\n");
  EXPECT_EQ(out_.str(), "");
}

TEST_F(LiveSourceTest, TwoRecordingsAreAPairAtTheRateOfTheFirst) {
  scripts_["video 'l.avi'"] = {{64, 48}, 5, 10.0};
  scripts_["video 'r.avi'"] = {{128, 96}, 4, 99.0};
  const auto source = Open({"--video", "l.avi", "--video_right", "r.avi", "--width", "64", "--height", "64"});
  ASSERT_NE(source, nullptr) << err_.str();
  EXPECT_EQ(source->FrameSize(), cv::Size(64, 64)) << "both are brought to it";
  common::FramePair pair;
  for (int number = 1; number <= 4; ++number) {
    ASSERT_TRUE(source->Pairs().Take(pair, LONG)) << number;
    EXPECT_FALSE(source->Pairs().Take(pair, milliseconds(1))) << number;
    clock_.Advance(milliseconds(100));
  }
  EXPECT_TRUE(Becomes(*source, SourceState::Kind::Ended)) << "with the shorter one";
}

TEST_F(LiveSourceTest, RecordingsOfDifferentSizesAreBroughtToTheOneThatIsWanted) {
  scripts_["video 'l.avi'"].size = {64, 64};
  scripts_["video 'r.avi'"].size = {128, 96};
  EXPECT_EQ(Open({"--video", "l.avi", "--video_right", "r.avi"}), nullptr);
  EXPECT_NE(Open({"--video", "l.avi", "--video_right", "r.avi", "--width", "64", "--height", "64"}), nullptr);
}

TEST_F(LiveSourceTest, ASplitSourceIsAPairOfHalves) {
  scripts_["video 'both.avi'"] = {{128, 48}, 5, 10.0};
  const auto source = Open({"--video", "both.avi", "--split", "vertical"});
  ASSERT_NE(source, nullptr) << err_.str();
  EXPECT_TRUE(source->IsPair());
  EXPECT_EQ(source->FrameSize(), cv::Size(64, 48));
  EXPECT_EQ(out_.str(), "Frames of video 'both.avi': 128x48, two halves of 64x48.\n");
  common::FramePair pair;
  ASSERT_TRUE(source->Pairs().Take(pair, LONG));
  EXPECT_EQ(NumberOf(pair.left), 1);
  EXPECT_EQ(NumberOf(pair.right), 101);
}

TEST_F(LiveSourceTest, TheSelectedCameraOfAPairIsOneCamera) {
  scripts_["video 'both.avi'"] = {{128, 48}, 5, 10.0};
  const auto half = Open({"--video", "both.avi", "--split", "vertical", "--select", "right"});
  ASSERT_NE(half, nullptr) << err_.str();
  EXPECT_FALSE(half->IsPair());
  EXPECT_EQ(half->FrameSize(), cv::Size(64, 48));
  EXPECT_EQ(Take(*half), 101);
  scripts_["webcam 0"] = {};
  scripts_["webcam 1"] = {{128, 96}};
  const auto right = Open({"--webcam", "0", "--webcam_right", "1", "--select", "right"});
  ASSERT_NE(right, nullptr) << err_.str();
  EXPECT_EQ(right->Name(), "webcam 1");
  EXPECT_EQ(right->FrameSize(), cv::Size(128, 96));
}

TEST_F(LiveSourceTest, ASourceThatDoesNotOpenIsNamedAndCamerasAreTold) {
  scripts_["webcam 3"].opens = false;
  EXPECT_EQ(Open({"--webcam", "3"}), nullptr);
  EXPECT_EQ(err_.str(), "ERROR: cannot open webcam 3.\n  There is no " + devices_.File("video3") +
                            "; there are " + devices_.File("video0") + ", " + devices_.File("video1") +
                            ".\n");
}

TEST_F(LiveSourceTest, TheRightCameraThatDoesNotOpenIsTheOneThatIsTold) {
  scripts_["webcam 0"] = {};
  scripts_["webcam 7"].opens = false;
  EXPECT_EQ(Open({"--webcam", "0", "--webcam_right", "7"}), nullptr);
  EXPECT_EQ(err_.str(), "ERROR: cannot open webcam 7.\n  There is no " + devices_.File("video7") +
                            "; there are " + devices_.File("video0") + ", " + devices_.File("video1") +
                            ".\n");
}

TEST_F(LiveSourceTest, ARecordingWithoutFramesIsReported) {
  scripts_["video 'a.avi'"].frames = 0;
  EXPECT_EQ(Open({"--video", "a.avi"}), nullptr);
  EXPECT_EQ(err_.str(), "ERROR: cannot read video 'a.avi'.\n");
}

TEST_F(LiveSourceTest, ACameraThatDeliversNothingIsReportedAfterTenSeconds) {
  scripts_["webcam 0"].frames = 0;
  tick_ = [this] { clock_.Advance(milliseconds(1000)); };
  EXPECT_EQ(Open({"--webcam", "0"}), nullptr);
  EXPECT_EQ(err_.str(),
            "ERROR: webcam 0 has delivered no picture for 10 s: another program may be using it, or it needs "
            "another size.\n");
}

TEST_F(LiveSourceTest, AnInterruptedWaitSaysNothing) {
  scripts_["webcam 0"].frames = 0;
  around_.interrupted = [] { return true; };
  EXPECT_EQ(Open({"--webcam", "0"}), nullptr);
  EXPECT_EQ(err_.str(), "");
}

TEST_F(LiveSourceTest, ACameraThatIsUnpluggedGoesOnOnceItIsBack) {
  scripts_["webcam 0"].frames = 3;
  const auto source = Open({"--webcam", "0"});
  ASSERT_NE(source, nullptr) << err_.str();
  std::filesystem::remove(devices_.File("video0"));
  while (Take(*source, milliseconds(0)) >= 0) {
  }
  EXPECT_TRUE(Becomes(*source, SourceState::Kind::Unplugged));
  EXPECT_EQ(source->Remark(), "The camera (webcam 0) is gone: plug it in again.");
  support::WriteText(devices_.File("video0"), "");
  EXPECT_GE(Take(*source), 1) << "it was opened again";
}

TEST_F(LiveSourceTest, EndsWithTheStatusOfItsUser) {
  scripts_["webcam 0"] = {};
  auto source = Open({"--webcam", "0"});
  ASSERT_NE(source, nullptr) << err_.str();
  EXPECT_EQ(guided::Finish(std::move(source), 3), 3);
}

}  // namespace
