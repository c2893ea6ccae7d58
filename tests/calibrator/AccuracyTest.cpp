/// How near a calibration comes to the true lens, from rendered images with noise.
#include <gtest/gtest.h>

#include <cmath>

#include "Calibrator.h"
#include "LensError.h"
#include "unit/Collection.h"

namespace {

/// The centres that a calibrator detects in the rendered views, once in a process.
const unit::PointLists& DetectedViews() {
  static const unit::PointLists detected = [] {
    unit::PointLists lists;
    const auto calibrator = unit::MakeCalibrator();
    for (const cv::Mat& image : unit::Rendered().images) {
      cv::Mat frame = image.clone();
      std::vector<cv::Point2d> points;
      EXPECT_TRUE(calibrator->DetectPoints(frame, points, false));
      lists.push_back(points);
    }
    return lists;
  }();
  return detected;
}

class Accuracy : public ::testing::Test {
 protected:
  /// The RMS of a computation from the rendered views.
  double Calibrate(int model) {
    calibrator_ = unit::CalibratorWith(DetectedViews());
    return static_cast<double>(calibrator_->ComputeCalibration(model));
  }

  world::ProjectionDistance DistanceToTruth(const std::vector<cv::Point2f>& region = {},
                                            world::Alignment alignment = world::Alignment::Raw) const {
    const world::Lens estimate = world::LensFrom(calibrator_->GetK(), calibrator_->GetDistCoefs());
    return world::MeanProjectionDistance(unit::Rendered().scene.camera.lens, estimate, unit::FRAME, region,
                                         alignment);
  }

  std::unique_ptr<Calibrator> calibrator_;
};

TEST_F(Accuracy, OfTheClassicModelCoversTheWholeImage) {
  const double rms = Calibrate(Calibrator::MODEL_CLASSIC);
  const cv::Matx33d trueK = unit::Rendered().scene.camera.lens.K();
  const cv::Mat K = calibrator_->GetK();
  EXPECT_GT(rms, 0.0);
  EXPECT_LT(rms, 0.2);
  EXPECT_NEAR(K.at<double>(0, 0), trueK(0, 0), 0.003 * trueK(0, 0));
  EXPECT_NEAR(K.at<double>(1, 1), trueK(1, 1), 0.003 * trueK(1, 1));
  EXPECT_NEAR(K.at<double>(0, 2), trueK(0, 2), 2.0);
  EXPECT_NEAR(K.at<double>(1, 2), trueK(1, 2), 2.0);
  EXPECT_LT(DistanceToTruth().mean, 0.5);
}

TEST_F(Accuracy, OfTheRicherModelsIsNotWorseWhereTheViewsAre) {
  const double classic = Calibrate(Calibrator::MODEL_CLASSIC);
  const auto region = world::CoveredRegion(DetectedViews());
  for (const int model : {Calibrator::MODEL_RATIONAL, Calibrator::MODEL_FULL}) {
    const double rms = Calibrate(model);
    EXPECT_GT(rms, 0.0) << model;
    EXPECT_LE(rms, classic) << model;
    // A tilted sensor and the principal point make up for each other under a rotation of all poses, which no
    // view of a grid can tell apart: the models are compared but for that rotation.
    EXPECT_LT(DistanceToTruth(region, world::Alignment::Rotated).mean, 0.5) << model;
    if (model == Calibrator::MODEL_RATIONAL) {
      EXPECT_LT(DistanceToTruth(region).mean, 0.5);
    }
  }
}

TEST_F(Accuracy, IsToldByTheStandardDeviations) {
  Calibrate(Calibrator::MODEL_CLASSIC);
  const cv::Matx33d trueK = unit::Rendered().scene.camera.lens.K();
  const cv::Mat deviations = calibrator_->GetStdDevIntrinsics();
  ASSERT_EQ(deviations.size(), cv::Size(1, 18));
  const cv::Mat K = calibrator_->GetK();
  EXPECT_GT(deviations.at<double>(0), 0.0);
  EXPECT_LT(deviations.at<double>(0), 0.003 * trueK(0, 0));
  EXPECT_NEAR(K.at<double>(0, 0), trueK(0, 0), 6.0 * deviations.at<double>(0));
  // What the classic model does not estimate has no deviation.
  EXPECT_EQ(cv::countNonZero(deviations.rowRange(9, 18)), 0);
}

TEST_F(Accuracy, OfEachViewMakesUpTheWhole) {
  const double rms = Calibrate(Calibrator::MODEL_CLASSIC);
  const cv::Mat errors = calibrator_->GetPerViewErrors();
  ASSERT_EQ(errors.rows, static_cast<int>(DetectedViews().size()));
  // All views have as many centres, so the whole is the root of the mean of the squares.
  EXPECT_NEAR(std::sqrt(errors.dot(errors) / errors.rows), rms, 1e-5);
}

TEST_F(Accuracy, OfThePosesIsThatOfTheTruth) {
  Calibrate(Calibrator::MODEL_CLASSIC);
  const cv::Mat tvecs = calibrator_->GetTranslationVectors();
  ASSERT_EQ(tvecs.rows, static_cast<int>(DetectedViews().size()));
  for (int view = 0; view < tvecs.rows; ++view) {
    // The sheet is in front of the camera, some tenths of a metre away.
    const cv::Vec3d t = tvecs.at<cv::Vec3d>(view);
    EXPECT_GT(t[2], 0.1);
    EXPECT_LT(t[2], 2.0);
  }
}

}  // namespace
