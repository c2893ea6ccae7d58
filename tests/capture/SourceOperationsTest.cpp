/// Opening and closing pairs of cameras, content and pipelines.
#include <gtest/gtest.h>

#include "capture/ReaderFixture.h"

using namespace velmora;

namespace {

using Calls = std::vector<std::string>;

const char* const LEFT_CLOSED =
    "TRACE : Waiting for camera thread to finish\nDEBUG : Release left camera\nDEBUG : Left camera closed\n";
const char* const RIGHT_CLOSED = "DEBUG : Release right camera\nDEBUG : Right camera closed\n";
const char* const LEFT_NOT_OPENED = "ERROR : Can't close left native camera. Left camera is not opened.\n";
const char* const RIGHT_NOT_OPENED = "ERROR : Can't close right native camera. Right camera is not opened.\n";

class SourceOperations : public unit::ReaderFixture {
 protected:
  SourceOperations() {
    left->deliver = Frames({640, 480}, 1);
    right->deliver = Frames({640, 480}, 2);
  }

  bool OpenPair(int leftIndex = 0, int rightIndex = 1) {
    return reader->OpenCameraPair(leftIndex, rightIndex, Vga());
  }

  static std::string Printed(bool expected, const std::function<bool()>& operation) {
    return unit::PrintedBy([&] { EXPECT_EQ(operation(), expected); });
  }

  std::string PrintedByClosingPair() {
    return unit::PrintedBy([&] { reader->ClosePair(); });
  }

  const unit::ScopedLogLevel everything{5};
};

TEST_F(SourceOperations, APairSetsTheCodingTwiceOnTheLeftAndNeverOnTheRight) {
  EXPECT_EQ(Printed(true, [&] { return OpenPair(4, 5); }), "");
  const std::string coding = "set coding " + unit::MotionJpeg();
  EXPECT_EQ(left->Calls(), (Calls{"open device 4", coding, "set width 640", "set height 480", "set rate 30",
                                  coding, "get width", "get height", "get rate"}));
  EXPECT_EQ(right->Calls(), (Calls{"open device 5", "set width 640", "set height 480", "set rate 30"}));
  EXPECT_EQ(reader->Format().width, 640);
}

TEST_F(SourceOperations, APairIsReadAsAPair) {
  ASSERT_TRUE(OpenPair());
  const CapturedViews views = NextViews();
  EXPECT_TRUE(views.pair);
  ASSERT_EQ(views.frame.size(), cv::Size(640, 480));
  ASSERT_EQ(views.right.size(), cv::Size(640, 480));
  EXPECT_EQ(views.frame.data[0], 1);
  EXPECT_EQ(views.right.data[0], 2);
}

TEST_F(SourceOperations, NegativeIndexesOfAPairMeanZero) {
  ASSERT_TRUE(OpenPair(-1, -2));
  EXPECT_TRUE(left->Called("open device 0"));
  EXPECT_TRUE(right->Called("open device 0"));
}

TEST_F(SourceOperations, ALeftCameraThatDoesNotOpenIsReported) {
  left->opens = [](const std::string&) { return false; };
  EXPECT_EQ(Printed(false, [&] { return OpenPair(-1, 5); }), "ERROR : Could not open left camera 0\n");
  EXPECT_EQ(right->Calls(), Calls{});
}

TEST_F(SourceOperations, ARightCameraThatDoesNotOpenReleasesTheLeftOne) {
  right->opens = [](const std::string&) { return false; };
  EXPECT_EQ(Printed(false, [&] { return OpenPair(4, 5); }), "ERROR : Could not open right camera 5\n");
  EXPECT_EQ(left->Calls().back(), "release");
  EXPECT_FALSE(left->opened);
}

TEST_F(SourceOperations, APairClosesBothInOrder) {
  ASSERT_TRUE(OpenPair());
  EXPECT_EQ(PrintedByClosingPair(), std::string(LEFT_CLOSED) + RIGHT_CLOSED);
  EXPECT_FALSE(left->opened);
  EXPECT_FALSE(right->opened);
}

TEST_F(SourceOperations, ClosingAPairThatWasNeverOpenedIsAnErrorForBoth) {
  EXPECT_EQ(PrintedByClosingPair(), std::string(LEFT_NOT_OPENED) + RIGHT_NOT_OPENED);
}

TEST_F(SourceOperations, ClosingAPairClosesASingleCameraAsItsLeftOne) {
  ASSERT_TRUE(OpenCamera());
  EXPECT_EQ(PrintedByClosingPair(), std::string(LEFT_CLOSED) + RIGHT_NOT_OPENED);
}

TEST_F(SourceOperations, ClosingOneCameraOfAPairLeavesTheRightOneOpen) {
  ASSERT_TRUE(OpenPair());
  EXPECT_TRUE(reader->Close(words));
  EXPECT_TRUE(right->opened);
  EXPECT_EQ(Printed(false, [&] { return OpenPair(); }), "ERROR : Native right camera is already opened.\n");
  EXPECT_EQ(PrintedByClosingPair(), std::string(LEFT_NOT_OPENED) + RIGHT_CLOSED);
  EXPECT_TRUE(OpenPair());
}

TEST_F(SourceOperations, ARightCameraLeftOpenMakesAPairWithTheNextSource) {
  ASSERT_TRUE(OpenPair());
  ASSERT_TRUE(reader->Close(words));
  ASSERT_TRUE(OpenCamera());
  EXPECT_TRUE(NextViews().pair);
}

TEST_F(SourceOperations, ASecondPairIsRefused) {
  ASSERT_TRUE(OpenPair());
  EXPECT_EQ(Printed(false, [&] { return OpenPair(); }), "ERROR : Native left camera is already opened.\n");
}

TEST_F(SourceOperations, EveryOpenIsRefusedWhileASourceIsOpen) {
  ASSERT_TRUE(reader->OpenPipe("videotestsrc ! appsink"));
  EXPECT_EQ(Printed(false, [&] { return OpenCamera(); }), "ERROR : Native camera is already opened.\n");
  EXPECT_EQ(Printed(false, [&] { return OpenPair(); }), "ERROR : Native left camera is already opened.\n");
  EXPECT_EQ(Printed(false, [&] { return reader->OpenContent("v startingFrame=1"); }),
            "ERROR : FFmpeg content is already opened.\n");
  EXPECT_EQ(Printed(false, [&] { return reader->OpenPipe("p"); }),
            "ERROR : Gstreamer pipe is already opened.\n");
}

TEST_F(SourceOperations, ContentIsSoughtAfterItsSizeAndRateAreRead) {
  EXPECT_EQ(Printed(true, [&] { return reader->OpenContent("video.mp4 startingFrame=120"); }),
            "INFO  : Start frame position set to 120\n");
  EXPECT_EQ(left->Calls(),
            (Calls{"open video.mp4", "get width", "get height", "get rate", "set position 120"}));
}

TEST_F(SourceOperations, ContentWithoutAStartFrameIsNotSought) {
  ASSERT_TRUE(reader->OpenContent("my video.mp4"));
  EXPECT_EQ(left->Calls(), (Calls{"open my", "get width", "get height", "get rate"}));
}

TEST_F(SourceOperations, ContentThatDoesNotOpenIsReportedWhole) {
  left->opens = [](const std::string&) { return false; };
  EXPECT_EQ(Printed(false, [&] { return reader->OpenContent("my 100%s.mp4"); }),
            "ERROR : Could not open content my 100%s.mp4\n");
}

TEST_F(SourceOperations, APipelineIsOpenedWholeWithItsBackEnd) {
  ASSERT_TRUE(reader->OpenPipe("videotestsrc ! appsink startingFrame=3"));
  EXPECT_EQ(left->Calls(), (Calls{"open videotestsrc ! appsink startingFrame=3 with 1800", "get width",
                                  "get height", "get rate"}));
}

TEST_F(SourceOperations, APipelineThatDoesNotOpenIsReported) {
  left->opens = [](const std::string&) { return false; };
  EXPECT_EQ(Printed(false, [&] { return reader->OpenPipe("nothing ! appsink"); }),
            "ERROR : Could not open pipe nothing ! appsink\n");
}

TEST_F(SourceOperations, ContentAfterASideBySideCameraIsStillSplit) {
  left->reported[cv::CAP_PROP_FRAME_WIDTH] = 1280;
  left->deliver = Frames({1280, 480});
  ASSERT_TRUE(OpenCamera(0, -1));
  ASSERT_TRUE(reader->Close(words));
  ASSERT_TRUE(reader->OpenContent("video.mp4"));
  EXPECT_EQ(NextViews().frame.size(), cv::Size(640, 480));
}

TEST_F(SourceOperations, APairAfterASideBySideCameraIsNotSplit) {
  left->reported[cv::CAP_PROP_FRAME_WIDTH] = 1280;
  ASSERT_TRUE(OpenCamera());
  ASSERT_TRUE(reader->Close(words));
  ASSERT_TRUE(OpenPair());
  EXPECT_EQ(NextViews().frame.size(), cv::Size(640, 480));
}

}  // namespace
