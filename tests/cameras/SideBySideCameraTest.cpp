/// A calibrator with a camera that delivers two views side by side.
#include <opencv2/imgproc.hpp>
#include <thread>

#include "JSON.h"
#include "Matchers.h"
#include "cameras/FakeCameras.h"
#include "unit/Collection.h"
#include "unit/StereoCollection.h"

namespace {

constexpr char REOPENED[] =
    "WARN  : The camera has been detected as a concatenated frame stereo camera. Will be reopened as "
    "stereo.\n";

class SideBySideCamera : public cameras::CameraTest {
 protected:
  static cv::Mat Beside(const cv::Mat& left, const cv::Mat& right) {
    cv::Mat both;
    cv::hconcat(left, right, both);
    return both;
  }

  static bool Open(Calibrator& calibrator, int splitMode) {
    return calibrator.OpenNativeCamera(0, 640, 480, 30, splitMode);
  }

  /// The mean distance of the centres that are found to those of a rendered view.
  double DistanceOfDetected(int splitMode, size_t view) {
    const unit::ScopedCurrentFolder current(folder_.Path());
    const auto calibrator = unit::MakeCalibrator();
    calibrator->StartModelRecording();
    EXPECT_TRUE(Open(*calibrator, splitMode));
    EXPECT_TRUE(unit::Eventually([&] { return calibrator->IsDetected() && calibrator->AddPoints(); }));
    calibrator->CloseNativeCamera();
    calibrator->StopModelRecording();
    JSON model;
    EXPECT_TRUE(model.load("model_tmp.json"));
    const cv::Mat found = model.readMat("points0");
    const std::vector<cv::Point2d>& truth = unit::Rendered().centres[view];
    double sum = 0.0;
    for (size_t i = 0; i < truth.size(); ++i) {
      sum += cv::norm(truth[i] - cv::Point2d(found.at<cv::Point2f>(static_cast<int>(i))));
    }
    return sum / static_cast<double>(truth.size());
  }

  static constexpr size_t LEFT = 0;
  static constexpr size_t RIGHT = 4;
  static constexpr double SAME = 0.5;  ///< pixels

  support::TemporaryFolder folder_;
};

TEST_F(SideBySideCamera, OneThatIsFourTimesAsWideIsReopenedAtTwiceTheWidth) {
  cameras_.Provide(0, {Blank({2560, 480})});
  const cv::Mat grid = unit::ImageWithGrid();
  cameras_.Provide(0, {Beside(grid, grid)});
  const auto calibrator = unit::MakeCalibrator();
  ASSERT_TRUE(Open(*calibrator, -1));
  EXPECT_TRUE(unit::Eventually([&] { return calibrator->IsDetected(); }))
      << "only the smaller size has a grid";
  EXPECT_EQ(Printed(), REOPENED);
}

TEST_F(SideBySideCamera, OneThatRefusesTwiceTheWidthIsSplitAsItIs) {
  const cv::Mat grid = unit::ImageWithGrid();
  cv::Mat wide;
  cv::resize(Beside(grid, grid), wide, {2560, 960});
  cameras_.Provide(0, {wide});
  const auto calibrator = unit::MakeCalibrator();
  ASSERT_TRUE(Open(*calibrator, -1));
  EXPECT_TRUE(unit::Eventually([&] { return calibrator->IsDetected(); }));
  EXPECT_EQ(Printed(), REOPENED);
}

TEST_F(SideBySideCamera, TheSplitModeChoosesTheHalfThatIsSearched) {
  const auto& views = unit::Rendered();
  cameras_.Provide(0, {Beside(views.images[LEFT], views.images[RIGHT])});
  EXPECT_LT(DistanceOfDetected(-1, LEFT), SAME);
  EXPECT_LT(DistanceOfDetected(1, RIGHT), SAME);
  EXPECT_LT(DistanceOfDetected(2, LEFT), SAME);
  EXPECT_GT(DistanceOfDetected(2, RIGHT), SAME);
}

TEST_F(SideBySideCamera, BothHalvesAreCalibratedAsAPair) {
  std::vector<cv::Mat> images;
  for (int view = 0; view < 8; ++view) {
    const unit::ImagePair pair = unit::PairWithGrid(view);
    images.push_back(Beside(pair.left, pair.right));
  }
  cameras_.Provide(0, images);
  const auto calibrator = unit::MakeCalibrator(Calibrator::STEREO);
  const unit::ScopedLogLevel silent(0);
  ASSERT_TRUE(Open(*calibrator, 0));
  ASSERT_TRUE(unit::Eventually([&] {
    calibrator->AddStereoPoints();
    std::this_thread::yield();
    return calibrator->GetNumberOfRecords() >= 8;
  }));
  calibrator->CloseNativeCamera();
  const float rms = calibrator->ComputeCalibrationStereo(unit::LeftResult(), unit::RightResult(),
                                                         Calibrator::MODEL_FULL, false);
  EXPECT_GT(rms, 0.0F);
  EXPECT_LT(rms, 0.5F);
  const cv::Vec3d truth = unit::PairOfCameras().T;
  const cv::Mat found = calibrator->GetStereoTranslation();
  ASSERT_FALSE(found.empty());
  EXPECT_LT(cv::norm(cv::Mat(truth), found), 0.02 * cv::norm(truth));
}

}  // namespace
