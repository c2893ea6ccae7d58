/// Which source is chosen, and what exactly is to be opened.
#include "common/Sources.h"

#include <gtest/gtest.h>

#include "velmora/Options.h"

using common::CaptureRequest;
using common::SourcePlan;

namespace {

SourcePlan PlanOf(const std::vector<std::string>& arguments) {
  std::ostringstream out;
  std::ostringstream err;
  return common::PlanSources(app::ReadCommandLine(arguments, out, err).settings);
}

using Properties = std::vector<std::pair<int, double>>;

void ExpectText(const CaptureRequest& request, const std::string& text, int backend) {
  ASSERT_TRUE(std::holds_alternative<std::string>(request.address));
  EXPECT_EQ(std::get<std::string>(request.address), text);
  EXPECT_EQ(request.backend, backend);
}

void ExpectIndex(const CaptureRequest& request, int index) {
  ASSERT_TRUE(std::holds_alternative<int>(request.address));
  EXPECT_EQ(std::get<int>(request.address), index);
  EXPECT_EQ(request.backend, cv::CAP_ANY);
}

TEST(Sources, NothingIsPlannedWithoutASource) {
  const SourcePlan plan = PlanOf({"--width", "320"});
  EXPECT_TRUE(plan.captures.empty());
  EXPECT_FALSE(plan.stereo);
  EXPECT_FALSE(plan.videoFile);
}

TEST(Sources, TheH264PipelineIsTheDefaultOfAGStreamerHost) {
  const SourcePlan plan = PlanOf({"--gstreamer", "10.0.0.7"});
  ASSERT_EQ(plan.captures.size(), 1U);
  ExpectText(plan.captures[0],
             "tcpclientsrc host=10.0.0.7 port=5000 ! gdpdepay !  rtph264depay ! avdec_h264 ! videoconvert ! "
             "appsink sync=false",
             cv::CAP_ANY);
  EXPECT_TRUE(plan.captures[0].properties.empty());
  EXPECT_FALSE(plan.stereo);
  EXPECT_FALSE(plan.videoFile);
}

TEST(Sources, TheMjpegPipelineDemultiplexesPictures) {
  const SourcePlan plan = PlanOf({"--gstreamer", "camera.local", "--codec", "mjpeg", "--port", "8554"});
  ASSERT_EQ(plan.captures.size(), 1U);
  ExpectText(
      plan.captures[0],
      "tcpclientsrc host=camera.local port=8554 ! multipartdemux ! image/jpeg, framerate=30/1  ! jpegparse ! "
      "jpegdec ! videoconvert  ! appsink sync=false",
      cv::CAP_ANY);
  EXPECT_TRUE(plan.captures[0].properties.empty());
}

TEST(Sources, AnUnknownCodecIsReadAsH264) {
  EXPECT_EQ(PlanOf({"--gstreamer", "h", "--codec", "MJPEG"}).captures.at(0).address,
            PlanOf({"--gstreamer", "h", "--codec", "h264"}).captures.at(0).address);
}

TEST(Sources, RtmpIsReadThroughGStreamer) {
  const SourcePlan plan = PlanOf({"--rtmp", "rtmp://127.0.0.1/live/myrtmp"});
  ASSERT_EQ(plan.captures.size(), 1U);
  ExpectText(plan.captures[0],
             "rtmpsrc location=rtmp://127.0.0.1/live/myrtmp ! decodebin ! videoconvert ! appsink sync=false",
             1800);
  EXPECT_TRUE(plan.captures[0].properties.empty());
  EXPECT_FALSE(plan.videoFile);
}

TEST(Sources, AVideoIsRewoundAndMarkedAsAFile) {
  const SourcePlan plan = PlanOf({"--video", "a.mp4"});
  ASSERT_EQ(plan.captures.size(), 1U);
  ExpectText(plan.captures[0], "a.mp4", cv::CAP_ANY);
  EXPECT_EQ(plan.captures[0].properties, (Properties{{1, 0.0}}));
  EXPECT_EQ(plan.captures[0].name, "video 'a.mp4'");
  EXPECT_TRUE(plan.videoFile);
  EXPECT_FALSE(plan.stereo);
}

TEST(Sources, TwoVideosAreAStereoInput) {
  const SourcePlan plan = PlanOf({"--video_right", "b.mp4", "--video", "a.mp4"});
  ASSERT_EQ(plan.captures.size(), 2U);
  ExpectText(plan.captures[0], "a.mp4", cv::CAP_ANY);
  ExpectText(plan.captures[1], "b.mp4", cv::CAP_ANY);
  EXPECT_EQ(plan.captures[0].properties, (Properties{{1, 0.0}}));
  EXPECT_EQ(plan.captures[1].properties, (Properties{{1, 0.0}}));
  EXPECT_TRUE(plan.videoFile);
  EXPECT_TRUE(plan.stereo);
}

TEST(Sources, AWebcamIsAskedForWidthHeightAndRateInThisOrder) {
  const SourcePlan plan = PlanOf({"--webcam", "3", "--fps", "25", "--height", "600", "--width", "800"});
  ASSERT_EQ(plan.captures.size(), 1U);
  ExpectIndex(plan.captures[0], 3);
  EXPECT_EQ(plan.captures[0].properties, (Properties{{3, 800.0}, {4, 600.0}, {5, 25.0}}));
  EXPECT_EQ(plan.captures[0].name, "webcam 3");
  EXPECT_FALSE(plan.videoFile);
  EXPECT_FALSE(plan.stereo);
}

TEST(Sources, TwoWebcamsAreAStereoInput) {
  const SourcePlan plan = PlanOf({"--webcam", "1", "--webcam_right", "2"});
  ASSERT_EQ(plan.captures.size(), 2U);
  ExpectIndex(plan.captures[0], 1);
  ExpectIndex(plan.captures[1], 2);
  const Properties expected{{3, 640.0}, {4, 480.0}, {5, 60.0}};
  EXPECT_EQ(plan.captures[0].properties, expected);
  EXPECT_EQ(plan.captures[1].properties, expected);
  EXPECT_TRUE(plan.stereo);
}

TEST(Sources, ASplitWebcamIgnoresTheRightOne) {
  const SourcePlan plan = PlanOf({"--webcam", "0", "--webcam_right", "1", "--split", "vertical"});
  ASSERT_EQ(plan.captures.size(), 1U);
  ExpectIndex(plan.captures[0], 0);
  EXPECT_TRUE(plan.stereo);
}

TEST(Sources, ASplitVideoIgnoresTheRightOne) {
  const SourcePlan plan = PlanOf({"--video", "a.mp4", "--video_right", "b.mp4", "--split", "horizontal"});
  ASSERT_EQ(plan.captures.size(), 1U);
  ExpectText(plan.captures[0], "a.mp4", cv::CAP_ANY);
  EXPECT_TRUE(plan.stereo);
}

TEST(Sources, ASplitAloneMakesTheInputStereo) {
  const SourcePlan plan = PlanOf({"--split", "vertical"});
  EXPECT_TRUE(plan.captures.empty());
  EXPECT_TRUE(plan.stereo);
}

TEST(Sources, RightSourcesAloneOpenNothing) {
  EXPECT_TRUE(PlanOf({"--video_right", "b.mp4"}).captures.empty());
  EXPECT_TRUE(PlanOf({"--webcam_right", "1"}).captures.empty());
}

TEST(Sources, AWebcamComesBeforeAVideo) {
  const SourcePlan plan = PlanOf({"--video", "a.mp4", "--webcam", "0"});
  ASSERT_EQ(plan.captures.size(), 1U);
  ExpectIndex(plan.captures[0], 0);
  EXPECT_FALSE(plan.videoFile);
}

TEST(Sources, TheRightVideoIsNoPartnerOfAWebcam) {
  const SourcePlan plan = PlanOf({"--video", "a.mp4", "--video_right", "b.mp4", "--webcam", "0"});
  EXPECT_EQ(plan.captures.size(), 1U);
  EXPECT_FALSE(plan.stereo);
}

TEST(Sources, TheRightWebcamIsNoPartnerOfAVideo) {
  const SourcePlan plan = PlanOf({"--video", "a.mp4", "--webcam_right", "1"});
  ASSERT_EQ(plan.captures.size(), 1U);
  ExpectText(plan.captures[0], "a.mp4", cv::CAP_ANY);
  EXPECT_FALSE(plan.stereo);
}

TEST(Sources, RtmpComesBeforeAWebcam) {
  const SourcePlan plan = PlanOf({"--webcam", "0", "--webcam_right", "1", "--rtmp", "rtmp://host/app"});
  ASSERT_EQ(plan.captures.size(), 1U);
  EXPECT_EQ(plan.captures[0].backend, cv::CAP_GSTREAMER);
  EXPECT_FALSE(plan.stereo);
}

TEST(Sources, AGStreamerHostComesBeforeAllOthers) {
  const SourcePlan plan =
      PlanOf({"--rtmp", "rtmp://host/app", "--webcam", "0", "--video", "a.mp4", "--gstreamer", "host"});
  ASSERT_EQ(plan.captures.size(), 1U);
  EXPECT_EQ(plan.captures[0].address, PlanOf({"--gstreamer", "host"}).captures.at(0).address);
  EXPECT_FALSE(plan.videoFile);
}

TEST(Sources, ASplitStreamIsAStereoInput) {
  EXPECT_TRUE(PlanOf({"--gstreamer", "host", "--split", "vertical"}).stereo);
  EXPECT_TRUE(PlanOf({"--rtmp", "rtmp://host/app", "--split", "vertical"}).stereo);
}

}  // namespace
