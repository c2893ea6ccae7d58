/// A calibrator that reads files, addresses and pipelines by itself, calibrated from each to the end.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <functional>
#include <memory>
#include <opencv2/imgcodecs.hpp>
#include <thread>

#include "Calibrator.h"
#include "CapturedStdout.h"
#include "Footage.h"
#include "Log.h"
#include "Servers.h"
#include "VirtualDisplay.h"

using namespace system_test;  // NOLINT

namespace {

constexpr int VIEWS = 12;
constexpr int HELD = 5;        ///< how often a video and a sequence show each view
constexpr int SNAPSHOTS = 10;  ///< nearly as many as there are views: few of them may be too much alike

class Capture : public testing::Test {
 protected:
  /// Takes snapshots of what will be read, each of another view: as many frames apart as each is shown. On
  /// the reader's thread, which waits for them.
  void TakeSnapshotsOf(int hold) {
    calibrator_.SetFrameListener([this, hold, apart = 0](const auto&, const auto&) mutable {
      if (++apart >= hold && calibrator_.AddPoints()) apart = 0;
    });
  }

  /// Numbered pictures of the sheet, each as often as told; the pattern of their paths.
  std::string Pictures(const std::string& extension, int hold) {
    TakeSnapshotsOf(hold);
    int number = 0;
    for (const cv::Mat& view : ViewsOf(camera_, VIEWS)) {
      for (int i = 0; i < hold; ++i) {
        cv::imwrite(folder_.File(cv::format("view-%03d.", number++) + extension), view);
      }
    }
    return folder_.File("view-%03d." + extension);
  }

  std::string Video() {
    TakeSnapshotsOf(HELD);
    WriteVideo(folder_.File("sheet.avi"), ViewsOf(camera_, VIEWS), HELD);
    return folder_.File("sheet.avi");
  }

  bool Collects() {
    return WaitUntil([&] { return calibrator_.GetNumberOfRecords() >= SNAPSHOTS; });
  }

  /// Calibrates from what is being read.
  void ExpectCalibration() {
    ASSERT_TRUE(Collects()) << output_.Text();
    calibrator_.CloseFFmpegContent();
    EXPECT_LT(calibrator_.ComputeCalibration(Calibrator::MODEL_CLASSIC), 0.7F);
    const cv::Mat K = calibrator_.GetK();
    ASSERT_FALSE(K.empty());
    const cv::Matx33d truth = camera_.lens.K();
    EXPECT_NEAR(K.at<double>(0, 0), truth(0, 0), 0.03 * truth(0, 0));
    EXPECT_NEAR(K.at<double>(1, 1), truth(1, 1), 0.03 * truth(1, 1));
    EXPECT_EQ(output_.Text().find("ERROR"), std::string::npos) << output_.Text();
  }

  bool EventuallyPrinted(const std::string& text) {
    return WaitUntil([&] { return output_.Text().find(text) != std::string::npos; });
  }

  const world::Camera camera_ = SmallCamera();
  support::TemporaryFolder folder_;
  support::CapturedStdout output_;
  Calibrator calibrator_{cv::Size(4, 11), 0.02F, Calibrator::MONOCULAR, 640, 480};
};

TEST_F(Capture, AVideoFileIsCalibrated) {
  ASSERT_TRUE(calibrator_.OpenFFmpegContent(Video()));
  ExpectCalibration();
}

TEST_F(Capture, ASequenceOfPicturesIsCalibrated) {
  ASSERT_TRUE(calibrator_.OpenFFmpegContent(Pictures("png", HELD)));
  ExpectCalibration();
}

TEST_F(Capture, AFileOverHttpIsCalibrated) {
  Video();
  const WebServer server(folder_.Path());
  ASSERT_TRUE(calibrator_.OpenFFmpegContent(server.Http("sheet.avi")));
  ExpectCalibration();
}

TEST_F(Capture, AFileThatTheServerDoesNotHaveIsReported) {
  const WebServer server(folder_.Path());
  EXPECT_FALSE(calibrator_.OpenFFmpegContent(server.Http("missing.avi") + " startingFrame=3"));
  EXPECT_EQ(output_.Text(), "INFO  : Start frame position set to 3\nERROR : Could not open content " +
                                server.Http("missing.avi") + " startingFrame=3\n");
}

TEST_F(Capture, AVideoStartsWithTheFrameAskedFor) {
  std::vector<cv::Mat> pictures(10, ViewsOf(camera_, 1).front());
  pictures.resize(20, EmptyView(camera_));
  WriteVideo(folder_.File("sheet.avi"), pictures, 1);
  ASSERT_TRUE(calibrator_.OpenFFmpegContent(folder_.File("sheet.avi") + " startingFrame=10"));
  bool detected = false;
  ASSERT_TRUE(WaitUntil([&] {
    detected = detected || calibrator_.IsDetected();
    return output_.Text().find("The source delivers no frames.") != std::string::npos;
  }));
  EXPECT_FALSE(detected);
}

TEST_F(Capture, StartFramesOutsideOfTheVideoDoNoHarm) {
  const std::string video = Video();
  for (const char* const frame : {"-1", "-2147483648", "1000000", "2147483647"}) {
    ASSERT_TRUE(calibrator_.OpenFFmpegContent(video + " startingFrame=" + frame));
    calibrator_.CloseFFmpegContent();
  }
  ASSERT_TRUE(calibrator_.OpenFFmpegContent(video));
  ExpectCalibration();
}

TEST_F(Capture, APipelineOfAFileIsCalibrated) {
  ASSERT_TRUE(calibrator_.OpenGstreamerPipe("filesrc location=" + Video() +
                                            " ! avidemux ! jpegdec ! videoconvert ! appsink sync=false"));
  ExpectCalibration();
}

TEST_F(Capture, APipelineOfATcpStreamIsCalibrated) {
  const StreamServer server(PicturesInALoop(Pictures("jpg", 1), 4), H264);
  ASSERT_TRUE(calibrator_.OpenGstreamerPipe(
      "tcpclientsrc host=127.0.0.1 port=" + server.Port() +
      " ! gdpdepay ! rtph264depay ! avdec_h264 ! videoconvert ! appsink sync=false"));
  ExpectCalibration();
}

TEST_F(Capture, AnRtmpStreamIsCalibrated) {
  const WebServer server(folder_.Path());
  VideoSender sender(Video(), server.Rtmp("sheet"));
  ASSERT_TRUE(WaitUntil([&] { return calibrator_.OpenFFmpegContent(server.Rtmp("sheet")); }));
  ASSERT_TRUE(Collects()) << sender.Program().Errors();
}

TEST_F(Capture, ATestPictureIsReadToItsEndAndTheNextPipelineIsOpened) {
  const std::string end = "WARN  : The source delivers no frames.\n";
  const std::string closed = "DEBUG : Release gstreamer pipe\nDEBUG : Gstreamer pipe closed\n";
  std::string expected;
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(calibrator_.OpenGstreamerPipe(
        "videotestsrc num-buffers=5 ! video/x-raw,width=320,height=240 ! videoconvert ! appsink"));
    ASSERT_TRUE(EventuallyPrinted(expected + end));
    calibrator_.CloseGstreamerPipe();
    expected += end + closed;
    EXPECT_EQ(output_.Text(), expected);
  }
}

TEST_F(Capture, APipelineThatCannotBeBuiltIsReported) {
  EXPECT_FALSE(calibrator_.OpenGstreamerPipe("nosuchelement ! appsink"));
  EXPECT_EQ(output_.Text(), "ERROR : Could not open pipe nosuchelement ! appsink\n");
}

TEST_F(Capture, PicturesOfSixteenBitsAreReportedOnceAndReadToTheEnd) {
  ASSERT_TRUE(calibrator_.OpenGstreamerPipe(
      "videotestsrc num-buffers=5 ! video/x-raw,format=GRAY16_LE,width=64,height=48 ! appsink"));
  ASSERT_TRUE(EventuallyPrinted("WARN  : The source delivers no frames.\n"));
  EXPECT_EQ(output_.Text(),
            "ERROR : A frame was left out: Cannot process a frame of OpenCV type 2: 8 bits and 1, 3 or 4 "
            "channels are needed.\nWARN  : The source delivers no frames.\n");
}

TEST_F(Capture, AGreyPipelineIsCalibrated) {
  ASSERT_TRUE(calibrator_.OpenGstreamerPipe("filesrc location=" + Video() +
                                            " ! avidemux ! jpegdec ! videoconvert ! "
                                            "video/x-raw,format=GRAY8 ! appsink sync=false"));
  ExpectCalibration();
}

TEST_F(Capture, AServerThatIsKilledEndsNothing) {
  StreamServer server("videotestsrc is-live=true ! video/x-raw,format=I420,width=320,height=240", MJPEG);
  ASSERT_TRUE(
      calibrator_.OpenGstreamerPipe("tcpclientsrc host=127.0.0.1 port=" + server.Port() +
                                    " ! multipartdemux ! jpegdec ! videoconvert ! appsink sync=false"));
  server.Program().Kill();
  EXPECT_TRUE(EventuallyPrinted("WARN  : The source delivers no frames.\n"));
  calibrator_.CloseGstreamerPipe();
}

/// A pipeline that a calibrator reads until its server freezes: no more frames, and no end of the connection.
class FreezingStream {
 public:
  explicit FreezingStream(Calibrator& calibrator) {
    calibrator.SetFrameListener([frames = frames_](const auto&, const auto&) { ++*frames; });
    opened_ = calibrator.OpenGstreamerPipe("tcpclientsrc host=127.0.0.1 port=" + server_.Port() +
                                           " ! multipartdemux ! jpegdec ! videoconvert ! appsink sync=false");
  }

  /// True when frames came, and stopped coming.
  bool Freeze() {
    if (!opened_ || !WaitUntil([&] { return *frames_ >= 3; })) return false;
    server_.Program().Signal(SIGSTOP);
    return WaitUntil([&] {  // what was under way arrives still
      const int before = *frames_;
      return !WaitUntil([&] { return *frames_ > before; }, std::chrono::milliseconds(1000));
    });
  }

 private:
  StreamServer server_{"videotestsrc is-live=true ! video/x-raw,format=I420,width=320,height=240", MJPEG};
  const std::shared_ptr<std::atomic<int>> frames_ = std::make_shared<std::atomic<int>>(0);
  bool opened_ = false;
};

std::chrono::steady_clock::duration TimeOf(const std::function<void()>& action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::steady_clock::now() - start;
}

constexpr std::chrono::seconds SOON{3};
const char* const LEFT_BEHIND = "WARN  : The source does not answer; its thread is left behind.\n";

TEST_F(Capture, AStreamThatStallsHoldsUpNoClose) {
  FreezingStream stream(calibrator_);
  ASSERT_TRUE(stream.Freeze());
  EXPECT_LT(TimeOf([&] { calibrator_.CloseGstreamerPipe(); }), SOON);
  EXPECT_EQ(output_.Text(),
            std::string(LEFT_BEHIND) + "DEBUG : Release gstreamer pipe\nDEBUG : Gstreamer pipe closed\n");
  ASSERT_TRUE(calibrator_.OpenFFmpegContent(Video())) << "a fresh source";
  ASSERT_TRUE(Collects());
}

TEST_F(Capture, AStreamThatStallsHoldsUpNoEndOfItsCalibrator) {
  auto calibrator = std::make_unique<Calibrator>(cv::Size(4, 11), 0.02F, Calibrator::MONOCULAR, 640, 480);
  FreezingStream stream(*calibrator);
  ASSERT_TRUE(stream.Freeze());
  EXPECT_LT(TimeOf([&] { calibrator.reset(); }), SOON);
  EXPECT_EQ(output_.Text(), LEFT_BEHIND);
}

}  // namespace
