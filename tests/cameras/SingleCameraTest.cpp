/// A calibrator with one camera.
#include <chrono>
#include <opencv2/imgproc.hpp>

#include "cameras/FakeCameras.h"
#include "unit/Collection.h"

namespace {

using SingleCamera = cameras::CameraTest;

constexpr int FPS = 30;

bool Open(Calibrator& calibrator, int index = 0) {
  return calibrator.OpenNativeCamera(index, 640, 480, FPS, 0);
}

bool Detects(Calibrator& calibrator) {
  return unit::Eventually([&] { return calibrator.IsDetected(); });
}

TEST_F(SingleCamera, IsCalibratedFromWhatItShows) {
  const auto& views = unit::Rendered();
  cameras_.Provide(0, {views.images.begin(), views.images.begin() + 10});
  const auto calibrator = unit::MakeCalibrator();
  const unit::ScopedLogLevel silent(0);
  ASSERT_TRUE(Open(*calibrator));
  ASSERT_TRUE(unit::Eventually([&] {
    if (calibrator->IsDetected()) calibrator->AddPoints();
    return calibrator->GetNumberOfRecords() >= 10;
  }));
  calibrator->CloseNativeCamera();
  EXPECT_LT(calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC), 0.5F);
  const cv::Matx33d truth = views.scene.camera.lens.K();
  const cv::Mat K = calibrator->GetK();
  ASSERT_FALSE(K.empty());
  EXPECT_NEAR(K.at<double>(0, 0), truth(0, 0), 0.01 * truth(0, 0));
  EXPECT_NEAR(K.at<double>(1, 1), truth(1, 1), 0.01 * truth(1, 1));
}

TEST_F(SingleCamera, ANegativeIndexOpensTheFirst) {
  cameras_.Provide(0, {unit::ImageWithGrid()});
  const auto calibrator = unit::MakeCalibrator();
  ASSERT_TRUE(Open(*calibrator, -5));
  EXPECT_TRUE(Detects(*calibrator));
}

TEST_F(SingleCamera, OneThatIsNotThereIsReportedByItsNumber) {
  const auto calibrator = unit::MakeCalibrator();
  EXPECT_FALSE(Open(*calibrator, 1));
  EXPECT_FALSE(Open(*calibrator, -1));
  EXPECT_EQ(Printed(), "ERROR : Could not open camera 1\nERROR : Could not open camera 0\n");
}

TEST_F(SingleCamera, ASecondOpenIsRefusedAndTheFirstGoesOn) {
  cameras_.Provide(0, {unit::ImageWithGrid()});
  const auto calibrator = unit::MakeCalibrator();
  ASSERT_TRUE(Open(*calibrator));
  EXPECT_FALSE(Open(*calibrator));
  EXPECT_EQ(Printed(), "ERROR : Native camera is already opened.\n");
  EXPECT_TRUE(Detects(*calibrator));
}

TEST_F(SingleCamera, IsReadAgainAfterItWasClosed) {
  cameras_.Provide(0, {unit::ImageWithGrid()});
  const auto calibrator = unit::MakeCalibrator();
  for (int round = 1; round <= 3; ++round) {
    ASSERT_TRUE(Open(*calibrator));
    ASSERT_TRUE(Detects(*calibrator));
    calibrator->CloseNativeCamera();
    ASSERT_TRUE(calibrator->AddPoints());
    EXPECT_FALSE(calibrator->IsDetected());
  }
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 3);
  EXPECT_EQ(CountOf("DEBUG : Release camera\nDEBUG : Camera closed\n"), 3);
}

TEST_F(SingleCamera, ClosingWithoutAnOpenPrintsNothing) {
  const auto calibrator = unit::MakeCalibrator();
  calibrator->CloseNativeCamera();
  EXPECT_EQ(Printed(), "");
}

TEST_F(SingleCamera, ASizeThatItRefusesIsBroughtToTheProcessingSize) {
  cv::Mat large;
  cv::resize(unit::ImageWithGrid(), large, {800, 600});
  cameras_.Provide(0, {large});
  const auto calibrator = unit::MakeCalibrator();
  ASSERT_TRUE(Open(*calibrator));
  EXPECT_TRUE(Detects(*calibrator));
  EXPECT_EQ(Printed(), "");
}

TEST_F(SingleCamera, TwoCalibratorsReadTwoCameras) {
  cameras_.Provide(0, {unit::ImageWithGrid()});
  cameras_.Provide(1, {unit::ImageWithoutGrid()});
  const auto first = unit::MakeCalibrator();
  const auto second = unit::MakeCalibrator();
  ASSERT_TRUE(Open(*first, 0));
  ASSERT_TRUE(Open(*second, 1));
  EXPECT_TRUE(Detects(*first));
  EXPECT_FALSE(second->IsDetected());
}

TEST_F(SingleCamera, ClosesWithinAFramesTime) {
  cameras_.Provide(0, {Blank({640, 480})});
  const auto calibrator = unit::MakeCalibrator();
  std::vector<std::chrono::duration<double>> waits;
  for (int round = 0; round < 5; ++round) {
    ASSERT_TRUE(Open(*calibrator));
    const auto start = std::chrono::steady_clock::now();
    calibrator->CloseNativeCamera();
    waits.push_back(std::chrono::steady_clock::now() - start);
  }
  // The best of several: the machine may be busy with other things.
  EXPECT_LT(std::min_element(waits.begin(), waits.end())->count(), 0.2);
}

}  // namespace
