/// A calibrator with two cameras.
#include <opencv2/imgproc.hpp>

#include "cameras/FakeCameras.h"
#include "unit/Collection.h"
#include "unit/StereoCollection.h"

namespace {

constexpr char LEFT_CLOSED[] = "DEBUG : Release left camera\nDEBUG : Left camera closed\n";
constexpr char RIGHT_CLOSED[] = "DEBUG : Release right camera\nDEBUG : Right camera closed\n";
constexpr char LEFT_NOT_OPENED[] = "ERROR : Can't close left native camera. Left camera is not opened.\n";
constexpr char RIGHT_NOT_OPENED[] = "ERROR : Can't close right native camera. Right camera is not opened.\n";

class CameraPair : public cameras::CameraTest {
 protected:
  void ProvidePair() {
    const unit::ImagePair pair = unit::PairWithGrid();
    cameras_.Provide(0, {pair.left});
    cameras_.Provide(1, {pair.right});
  }

  bool Open(int left = 0, int right = 1) {
    return calibrator_->OpenNativeStereoCamera(left, right, 640, 480, 30);
  }
  bool Detects() {
    return unit::Eventually([&] { return calibrator_->AddStereoPoints(); });
  }

  const std::unique_ptr<Calibrator> calibrator_ = unit::MakeCalibrator(Calibrator::STEREO);
};

TEST_F(CameraPair, IsDetectedInAndReadAgainAfterItWasClosed) {
  ProvidePair();
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(Open());
    EXPECT_TRUE(Detects());
    calibrator_->CloseStereoNativeCamera();
  }
  EXPECT_EQ(CountOf(std::string(LEFT_CLOSED) + RIGHT_CLOSED), 2);
}

TEST_F(CameraPair, IsClosedWholeByTheCloseOfWhateverIsOpen) {
  ProvidePair();
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(Open());
    EXPECT_TRUE(Detects());
    calibrator_->CloseSource();
  }
  EXPECT_EQ(CountOf(std::string(LEFT_CLOSED) + RIGHT_CLOSED), 2);
  ASSERT_TRUE(calibrator_->OpenNativeCamera(0, 640, 480, 30, 0));
  calibrator_->CloseSource();
  EXPECT_EQ(CountOf("DEBUG : Camera closed\n"), 1);
}

/// Light discs on dark: only the robust search finds them.
TEST_F(CameraPair, IsDetectedInByTheSearchThatIsChosenWhileItIsRead) {
  const unit::ImagePair pair = unit::PairWithGrid();
  cameras_.Provide(0, {cv::Scalar::all(255) - pair.left});
  cameras_.Provide(1, {cv::Scalar::all(255) - pair.right});
  ASSERT_TRUE(Open());
  EXPECT_FALSE(calibrator_->AddStereoPoints());
  calibrator_->SetFinder(Calibrator::FINDER_ROBUST);
  EXPECT_TRUE(Detects());
}

TEST_F(CameraPair, AMissingCameraIsReportedByItsSideAndNumber) {
  EXPECT_FALSE(Open(-3, 1));
  cameras_.Provide(0, {Blank({640, 480})});
  EXPECT_FALSE(Open(0, 1));
  EXPECT_EQ(Printed(), "ERROR : Could not open left camera 0\nERROR : Could not open right camera 1\n");
  cameras_.Provide(1, {Blank({640, 480})});
  EXPECT_TRUE(Open()) << "the left one was released";
}

TEST_F(CameraPair, ASecondOpenIsRefused) {
  ProvidePair();
  ASSERT_TRUE(Open());
  EXPECT_FALSE(Open());
  EXPECT_EQ(Printed(), "ERROR : Native left camera is already opened.\n");
}

TEST_F(CameraPair, ClosingItTwiceIsAnErrorForBoth) {
  ProvidePair();
  ASSERT_TRUE(Open());
  calibrator_->CloseStereoNativeCamera();
  calibrator_->CloseStereoNativeCamera();
  EXPECT_EQ(Printed(), std::string(LEFT_CLOSED) + RIGHT_CLOSED + LEFT_NOT_OPENED + RIGHT_NOT_OPENED);
}

TEST_F(CameraPair, ClosingOneCameraLeavesTheRightOneToBeClosed) {
  ProvidePair();
  ASSERT_TRUE(Open());
  calibrator_->CloseNativeCamera();
  EXPECT_FALSE(Open());
  calibrator_->CloseStereoNativeCamera();
  EXPECT_EQ(Printed(), std::string("DEBUG : Release camera\nDEBUG : Camera closed\n"
                                   "ERROR : Native right camera is already opened.\n") +
                           LEFT_NOT_OPENED + RIGHT_CLOSED);
  EXPECT_TRUE(Open());
}

TEST_F(CameraPair, FramesOfDifferentSizesAreReportedOnceAndReadOver) {
  const unit::ImagePair pair = unit::PairWithGrid();
  cv::Mat small;
  cv::resize(pair.right, small, {320, 240});
  cameras_.Provide(0, {pair.left});
  cameras_.Provide(1, {small});
  ASSERT_TRUE(Open());
  ASSERT_TRUE(EventuallyPrinted("ERROR : A frame was left out: "));
  cameras_.Behave(0, "gone");
  EXPECT_TRUE(EventuallyPrinted("WARN  : The source delivers no frames.\n")) << "reading went on";
  calibrator_->CloseStereoNativeCamera();
  EXPECT_EQ(CountOf("ERROR"), 1) << Printed();
  EXPECT_EQ(CountOf("mFrameLeft.size() == mFrameRight.size()"), 1);
}

TEST_F(CameraPair, AMonocularCalibratorReadsItWithoutDetecting) {
  ProvidePair();
  const auto monocular = unit::MakeCalibrator();
  ASSERT_TRUE(monocular->OpenNativeStereoCamera(0, 1, 640, 480, 30));
  monocular->CloseStereoNativeCamera();
  EXPECT_FALSE(monocular->IsDetected());
  EXPECT_EQ(CountOf("ERROR"), 0) << Printed();
}

}  // namespace
