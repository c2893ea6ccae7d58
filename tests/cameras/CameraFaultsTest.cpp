/// What cameras may do to the reader.
#include <chrono>
#include <future>
#include <opencv2/imgproc.hpp>

#include "cameras/FakeCameras.h"
#include "unit/Collection.h"
#include "unit/ThreadGroup.h"

namespace {

using Clock = std::chrono::steady_clock;

class CameraFaults : public cameras::CameraTest {
 protected:
  void OpenWithGrid() {
    cameras_.Provide(0, {unit::ImageWithGrid()});
    ASSERT_TRUE(Open());
    ASSERT_TRUE(Detects());
  }

  bool Open() { return calibrator_->OpenNativeCamera(0, 640, 480, 30, 0); }
  bool Detects() {
    return unit::Eventually([&] { return calibrator_->IsDetected(); });
  }
  /// Whether the grid is detected in a frame that comes from now on.
  bool DetectsAnew() {
    calibrator_->AddPoints();
    return Detects();
  }

  const std::unique_ptr<Calibrator> calibrator_ = unit::MakeCalibrator();
};

TEST_F(CameraFaults, BuffersWithoutDataAreReportedOnceAndReadOver) {
  OpenWithGrid();
  cameras_.Behave(0, "empty");
  ASSERT_TRUE(EventuallyPrinted("ERROR : The source failed: ")) << "the library raises an exception";
  cameras_.Behave(0, "");
  EXPECT_TRUE(DetectsAnew());
  EXPECT_EQ(CountOf("The source failed"), 1) << Printed();
}

TEST_F(CameraFaults, ACameraThatVanishesIsReportedOnceAndClosesAtOnce) {
  OpenWithGrid();
  cameras_.Behave(0, "gone");
  ASSERT_TRUE(EventuallyPrinted("WARN  : The source delivers no frames.\n"));
  const auto start = Clock::now();
  calibrator_->CloseNativeCamera();
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(2));
  EXPECT_EQ(CountOf("The source delivers no frames."), 1);
  EXPECT_FALSE(Open());
  cameras_.Behave(0, "");
  ASSERT_TRUE(Open()) << "it is back";
  EXPECT_TRUE(DetectsAnew());
}

TEST_F(CameraFaults, ASilentCameraHoldsACloseOnlyUntilItSpeaks) {
  OpenWithGrid();
  cameras_.Behave(0, "silent");
  auto closing = std::async(std::launch::async, [&] { calibrator_->CloseNativeCamera(); });
  cameras_.Behave(0, "");
  EXPECT_EQ(closing.wait_for(std::chrono::seconds(30)), std::future_status::ready);
}

TEST_F(CameraFaults, ACameraThatStaysSilentIsLeftBehindByAClose) {
  OpenWithGrid();
  std::atomic<int> frames{0};
  calibrator_->SetFrameListener([&](const auto&, const auto&) { ++frames; });
  cameras_.Behave(0, "silent");
  ASSERT_TRUE(unit::Eventually([&] {  // the frames on their way have arrived
    const int before = frames;
    return !unit::Eventually([&] { return frames > before; }, std::chrono::seconds(1));
  }));
  const auto start = Clock::now();
  calibrator_->CloseNativeCamera();
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(4));
  calibrator_->SetFrameListener({});
  EXPECT_EQ(CountOf("WARN  : The source does not answer; its thread is left behind.\n"), 1) << Printed();
  cameras_.Behave(0, "");
  ASSERT_TRUE(unit::Eventually([&] { return Open(); })) << "as soon as it lets go of whom it held";
  EXPECT_TRUE(DetectsAnew());
}

TEST_F(CameraFaults, PicturesThatAreNotOfTheCamerasSizeAreReadOver) {
  const cv::Mat grid = unit::ImageWithGrid();
  cv::Mat large;
  cv::Mat odd;
  cv::Mat grey;
  cv::resize(grid, large, {1280, 960});
  cv::resize(grid, odd, {641, 479});
  cv::cvtColor(grid, grey, cv::COLOR_BGR2GRAY);
  const cv::Mat one(1, 1, CV_8UC3, cv::Scalar::all(0));
  const std::vector<cv::Mat> images = {grid, large, odd, grey, one};
  cameras_.Provide(0, {640, 480}, images);
  ASSERT_TRUE(Open());
  for (int snapshot = 1; snapshot <= 10; ++snapshot) {
    ASSERT_TRUE(unit::Eventually([&] { return calibrator_->IsDetected() && calibrator_->AddPoints(); }));
  }
  EXPECT_EQ(CountOf("ERROR"), 0) << Printed();
}

TEST_F(CameraFaults, DestroyingTheCalibratorStopsItsReaderFirst) {
  cameras_.Provide(0, {unit::ImageWithGrid()});
  for (int round = 0; round < 3; ++round) {
    const auto calibrator = unit::MakeCalibrator();
    ASSERT_TRUE(calibrator->OpenNativeCamera(0, 640, 480, 30, 0));
    ASSERT_TRUE(unit::Eventually([&] { return calibrator->IsDetected(); }));
  }
  EXPECT_EQ(Printed(), "");
}

TEST_F(CameraFaults, ReadingGoesOnWhileOthersAskAddResetOpenAndClose) {
  cameras_.Provide(0, {unit::ImageWithGrid()});
  const unit::ScopedLogLevel silent(0);
  std::atomic<bool> reading{true};
  std::atomic<int> added{0};
  unit::ThreadGroup threadGroup;
  threadGroup.Add([&] {
    for (int round = 0; round < 6; ++round) {
      Open();
      EXPECT_TRUE(unit::Eventually([&, before = added.load()] { return added > before; }));
      calibrator_->CloseNativeCamera();
    }
    reading = false;
  });
  threadGroup.Add([&] {
    while (reading) {
      added += calibrator_->AddPoints() ? 1 : 0;
      std::this_thread::yield();
    }
  });
  threadGroup.Add([&] {
    while (reading) {
      calibrator_->GetStatus_QVX();
      calibrator_->GetNumberOfRecords();
      calibrator_->Reset();
      calibrator_->SetFlipImage(!calibrator_->GetFlipImage());
      std::this_thread::yield();
    }
  });
  threadGroup.Add([&] {
    while (reading) {
      calibrator_->OpenNativeCamera(0, 640, 480, 30, 0);
      std::this_thread::yield();
    }
  });
  threadGroup.RunToTheEnd();
  EXPECT_GE(added, 6);
}

}  // namespace
