/// Opening and closing one camera.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "capture/ReaderFixture.h"

namespace {

using Calls = std::vector<std::string>;

const char* const REOPENED =
    "WARN  : The camera has been detected as a concatenated frame stereo camera. Will be reopened as "
    "stereo.\n";

class CameraOperations : public unit::ReaderFixture {
 protected:
  /// A camera that reports this size whatever it is asked for.
  void Reports(int width, int height) {
    left->reported = {{cv::CAP_PROP_FRAME_WIDTH, width}, {cv::CAP_PROP_FRAME_HEIGHT, height}};
  }

  std::string PrintedByOpening(bool expected, int index = 0) {
    return unit::PrintedBy([&] { EXPECT_EQ(OpenCamera(index), expected); });
  }

  const unit::ScopedLogLevel everything{5};
};

TEST_F(CameraOperations, AsksForTheFormatInOrderAndReadsItBack) {
  left->deliver = Frames({640, 480});
  EXPECT_EQ(PrintedByOpening(true, 3), "");
  EXPECT_EQ(left->Calls(), (Calls{"open device 3", "set coding " + unit::MotionJpeg(), "set width 640",
                                  "set height 480", "set rate 30", "get width", "get height", "get rate"}));
  EXPECT_EQ(reader->Format().width, 640);
  EXPECT_EQ(reader->Format().height, 480);
  EXPECT_EQ(reader->Format().rate, 30);
  EXPECT_FALSE(reader->Concatenated());
}

TEST_F(CameraOperations, TheFormatIsWhatTheDeviceReportsTruncated) {
  left->deliver = Frames({800, 600});
  left->reported = {
      {cv::CAP_PROP_FRAME_WIDTH, 800.9}, {cv::CAP_PROP_FRAME_HEIGHT, 600.9}, {cv::CAP_PROP_FPS, 29.97}};
  ASSERT_TRUE(OpenCamera());
  EXPECT_EQ(reader->Format().width, 800);
  EXPECT_EQ(reader->Format().height, 600);
  EXPECT_EQ(reader->Format().rate, 29);
}

TEST_F(CameraOperations, ReportedNumbersBeyondTheIntegersAreHeldWithinThem) {
  left->deliver = Frames({800, 600});
  left->reported[cv::CAP_PROP_FPS] = 1e300;
  ASSERT_TRUE(OpenCamera());
  EXPECT_EQ(reader->Format().rate, std::numeric_limits<int>::max());
  reader->Close(words);
  left->reported[cv::CAP_PROP_FPS] = std::nan("");
  ASSERT_TRUE(OpenCamera());
  EXPECT_EQ(reader->Format().rate, 0);
}

TEST_F(CameraOperations, ANegativeIndexMeansZero) {
  left->opens = [](const std::string&) { return false; };
  EXPECT_EQ(PrintedByOpening(false, -7), "ERROR : Could not open camera 0\n");
  EXPECT_TRUE(left->Called("open device 0"));
}

TEST_F(CameraOperations, ACameraThatDoesNotOpenIsReported) {
  left->opens = [](const std::string&) { return false; };
  EXPECT_EQ(PrintedByOpening(false, 4), "ERROR : Could not open camera 4\n");
  EXPECT_FALSE(reader->Running());
}

TEST_F(CameraOperations, AnExceptionOfTheLibraryIsReported) {
  left->opens = [](const std::string&) -> bool { throw std::runtime_error("no such\nthing\n"); };
  EXPECT_EQ(PrintedByOpening(false),
            "ERROR : The capture library failed: no such thing\n"
            "ERROR : Could not open camera 0\n");
}

TEST_F(CameraOperations, ASecondOpenIsRefused) {
  left->deliver = Frames({640, 480});
  ASSERT_TRUE(OpenCamera());
  const auto calls = left->Calls();
  EXPECT_EQ(PrintedByOpening(false), "ERROR : Native camera is already opened.\n");
  EXPECT_EQ(left->Calls(), calls);
  EXPECT_FALSE(NextViews().frame.empty()) << "the first one goes on";
}

TEST_F(CameraOperations, AFrameFourTimesAsWideIsReopenedAtTwiceTheWidth) {
  Reports(2560, 480);
  left->deliver = Frames({2560, 480});
  EXPECT_EQ(PrintedByOpening(true), REOPENED);
  EXPECT_TRUE(reader->Concatenated());
  const Calls calls = left->Calls();
  ASSERT_EQ(calls.size(), 17U);
  EXPECT_EQ(Calls(calls.begin() + 8, calls.begin() + 14),
            (Calls{"release", "open device 0", "set coding " + unit::MotionJpeg(), "set width 1280",
                   "set height 480", "set rate 30"}));
}

TEST_F(CameraOperations, AFrameExactlyTwiceAsWideCountsAsTwoViews) {
  Reports(1280, 480);
  left->deliver = Frames({1280, 480});
  EXPECT_EQ(PrintedByOpening(true), REOPENED);
  EXPECT_TRUE(reader->Concatenated());
}

TEST_F(CameraOperations, AFrameALittleLessThanTwiceAsWideIsOneView) {
  Reports(1279, 480);
  left->deliver = Frames({1279, 480});
  EXPECT_EQ(PrintedByOpening(true), "");
  EXPECT_FALSE(reader->Concatenated());
}

TEST_F(CameraOperations, ASideBySideCameraThatDoesNotReopenIsReported) {
  Reports(1280, 480);
  int opens = 0;
  left->opens = [&](const std::string&) { return ++opens == 1; };
  EXPECT_EQ(PrintedByOpening(false, 2), std::string(REOPENED) + "ERROR : Could not open camera 2\n");
  EXPECT_FALSE(reader->Concatenated());
}

TEST_F(CameraOperations, AWidthThatCannotBeDoubledIsHeldWithinTheIntegers) {
  const int most = std::numeric_limits<int>::max();
  Reports(most, 1);
  left->deliver = Frames({8, 1});
  ASSERT_TRUE(reader->OpenCamera(0, {most, most, 1}, 0));
  EXPECT_TRUE(left->Called("set width " + std::to_string(most)));
}

TEST_F(CameraOperations, ADeviceThatReportsNoSizeIsTakenForTwoViews) {
  Reports(0, 0);
  left->deliver = Frames({640, 480});
  EXPECT_EQ(PrintedByOpening(true), REOPENED);
}

TEST_F(CameraOperations, ClosingSaysWhatItDoes) {
  left->deliver = Frames({640, 480});
  ASSERT_TRUE(OpenCamera());
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_TRUE(reader->Close(words)); }),
            "TRACE : waiting\nDEBUG : releasing\nDEBUG : closed\n");
  EXPECT_FALSE(left->opened);
  EXPECT_FALSE(reader->Running());
  EXPECT_TRUE(reader->StopRequested());
}

TEST_F(CameraOperations, ClosingBeforeAnyOpenSaysNothing) {
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_FALSE(reader->Close(words)); }), "");
}

TEST_F(CameraOperations, ClosingTwiceIsAnError) {
  left->deliver = Frames({640, 480});
  ASSERT_TRUE(OpenCamera());
  reader->Close(words);
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_FALSE(reader->Close(words)); }), "ERROR : not opened\n");
}

TEST_F(CameraOperations, ClosingAfterAnOpenThatFailedIsAnError) {
  left->opens = [](const std::string&) { return false; };
  ASSERT_FALSE(OpenCamera());
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_FALSE(reader->Close(words)); }), "ERROR : not opened\n");
}

TEST_F(CameraOperations, ASourceOpenedAfterAClosedOneIsRead) {
  left->deliver = Frames({640, 480});
  for (int round = 0; round < 3; ++round) {
    ASSERT_TRUE(OpenCamera());
    EXPECT_FALSE(reader->StopRequested());
    EXPECT_FALSE(NextViews().frame.empty()) << round;
    ASSERT_TRUE(reader->Close(words));
  }
}

}  // namespace
