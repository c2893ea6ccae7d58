/// How near a stereo calibration comes to the true pair of cameras, from rendered images with noise.
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/calib3d.hpp>

#include "Calibrator.h"
#include "LensError.h"
#include "Renderer.h"
#include "Rig.h"
#include "Sheet.h"
#include "unit/Scopes.h"
#include "unit/StereoCollection.h"

namespace {

constexpr int PAIRS = 12;

/// Two real cameras of five coefficients each; the right one a little turned and out of line.
struct TrueRig {
  world::Camera left =
      world::CameraFromFieldOfView(unit::FRAME, 62.0, {-0.21, 0.06, 0.0008, -0.0006, -0.008});
  world::Camera right =
      world::CameraFromFieldOfView(unit::FRAME, 60.0, {-0.18, 0.04, -0.0005, 0.0004, -0.004});
  cv::Vec3d rotation{0.012, 0.09, -0.015};
  cv::Vec3d T{-0.118, 0.003, 0.007};
  world::Sheet sheet{unit::GRID, static_cast<double>(unit::UNIT)};

  cv::Matx33d R() const {
    cv::Matx33d matrix;
    cv::Rodrigues(rotation, matrix);
    return matrix;
  }
  double Baseline() const { return cv::norm(T); }

  /// x_right = R x_left + T, and x_left = R_grid x_grid + t_grid.
  world::Pose RightOf(const world::Pose& leftPose) const {
    cv::Matx33d grid;
    cv::Rodrigues(leftPose.rvec, grid);
    cv::Vec3d rvec;
    cv::Rodrigues(R() * grid, rvec);
    return {rvec, R() * leftPose.tvec + T};
  }

  world::Pair Cameras() const {
    world::Pair rig;
    rig.left = left;
    rig.right = right;
    rig.R = R();
    rig.T = T;
    return rig;
  }
};

world::Renderer RendererOf(const world::Camera& camera, const world::Sheet& sheet, std::uint64_t seed) {
  world::Scene scene;
  scene.camera = camera;
  scene.sheet = sheet;
  scene.blur = 0.6;
  scene.noise = 2.0;
  scene.light = 0.2;
  scene.seed = seed;
  return world::Renderer(scene);
}

struct CalibratedCamera {
  double rms = 0.0;
  std::string result;
};

/// A pair of cameras calibrated as a user does: each alone first, from the images that the pair took.
struct CalibratedPair {
  TrueRig truth;
  unit::PointPairs detected;
  std::unique_ptr<Calibrator> stereo = unit::MakeCalibrator(Calibrator::STEREO);
  CalibratedCamera left;
  CalibratedCamera right;
  double rms = 0.0;

  CalibratedPair() {
    const unit::ScopedLogLevel quiet(1);
    world::Renderer leftRenderer = RendererOf(truth.left, truth.sheet, 5);
    world::Renderer rightRenderer = RendererOf(truth.right, truth.sheet, 6);
    std::uint64_t number = 0;
    for (const world::Pose& pose : world::RigViews(truth.Cameras(), PAIRS, truth.sheet)) {
      cv::Mat leftFrame = leftRenderer.Render(pose, number);
      cv::Mat rightFrame = rightRenderer.Render(truth.RightOf(pose), number);
      ++number;
      std::vector<cv::Point2d> leftPoints;
      std::vector<cv::Point2d> rightPoints;
      EXPECT_TRUE(stereo->DetectStereoPoints(leftFrame, rightFrame, leftPoints, rightPoints, true));
      EXPECT_TRUE(stereo->AddStereoPoints());
      detected.left.push_back(leftPoints);
      detected.right.push_back(rightPoints);
    }
    left = Calibrate(detected.left);
    right = Calibrate(detected.right);
    rms = static_cast<double>(
        stereo->ComputeCalibrationStereo(left.result, right.result, Calibrator::MODEL_RATIONAL, false));
  }

  static CalibratedCamera Calibrate(const unit::PointLists& views) {
    const auto mono = unit::CalibratorWith(views);
    const double rms = static_cast<double>(mono->ComputeCalibration(Calibrator::MODEL_RATIONAL));
    return {rms, mono->SaveResult(false, "")};
  }
};

class StereoAccuracy : public ::testing::Test {
 protected:
  static const CalibratedPair& Pair() {
    static const CalibratedPair pair;
    return pair;
  }
  static Calibrator& Stereo() { return *Pair().stereo; }

  /// The mean distance, in pixels of the undistorted images, of points to the epipolar lines of their
  /// counterparts.
  static double MeanEpipolarDistance(const unit::PointPairs& pairs) {
    const cv::Matx33d F = Stereo().GetFundamentalMatrix();
    const auto lefts = Undistorted(pairs.left, Stereo().GetKLeft(), Stereo().GetDistCoefsLeft());
    const auto rights = Undistorted(pairs.right, Stereo().GetKRight(), Stereo().GetDistCoefsRight());
    double sum = 0.0;
    for (size_t i = 0; i < lefts.size(); ++i) {
      const cv::Vec3d lineRight = F * lefts[i];
      const cv::Vec3d lineLeft = F.t() * rights[i];
      const double product = std::abs(rights[i].dot(lineRight));
      sum += 0.5 * (product / std::hypot(lineRight[0], lineRight[1]) +
                    product / std::hypot(lineLeft[0], lineLeft[1]));
    }
    return sum / static_cast<double>(lefts.size());
  }

 private:
  /// All points where a pinhole with the same camera matrix would see them, homogeneous.
  static std::vector<cv::Vec3d> Undistorted(const unit::PointLists& views, const cv::Mat& K,
                                            const cv::Mat& D) {
    const world::Lens lens = world::LensFrom(K, D);
    std::vector<cv::Vec3d> undistorted;
    for (const auto& view : views) {
      for (const cv::Point2d& pixel : view) {
        cv::Point2d ray;
        EXPECT_TRUE(lens.Unproject(pixel, ray));
        undistorted.push_back(lens.K() * cv::Vec3d(ray.x, ray.y, 1.0));
      }
    }
    return undistorted;
  }
};

TEST_F(StereoAccuracy, OfTheSolutionIsNearlyThatOfTheCamerasAlone) {
  EXPECT_EQ(Stereo().GetStatus(), Calibrator::STATUS_COMPLETED);
  // Each camera alone may choose its intrinsics and its own pose in each view, so it cannot fit worse.
  const double alone =
      std::sqrt(0.5 * (Pair().left.rms * Pair().left.rms + Pair().right.rms * Pair().right.rms));
  ASSERT_GT(alone, 0.0);
  EXPECT_GT(Pair().rms, 0.999 * alone);
  EXPECT_LT(Pair().rms, 2.0 * alone);
  EXPECT_LT(Pair().rms, 0.3);
}

TEST_F(StereoAccuracy, OfTheBaselineIsHalfAPercent) {
  const double truth = Pair().truth.Baseline();
  const cv::Mat T = Stereo().GetStereoTranslation();
  ASSERT_EQ(T.size(), cv::Size(1, 3));
  EXPECT_NEAR(cv::norm(T), truth, 0.005 * truth);
}

TEST_F(StereoAccuracy, OfTheTranslationsDirectionIsAFractionOfADegree) {
  const cv::Vec3d T = Stereo().GetStereoTranslation();
  const cv::Vec3d truth = Pair().truth.T;
  const double angle = std::atan2(cv::norm(T.cross(truth)), T.dot(truth)) * 180.0 / CV_PI;
  EXPECT_LT(angle, 0.5);
}

TEST_F(StereoAccuracy, OfTheRotationIsATenthOfADegree) {
  const cv::Matx33d R = Stereo().GetR();
  cv::Vec3d difference;
  cv::Rodrigues(R * Pair().truth.R().t(), difference);
  EXPECT_LT(cv::norm(difference) * 180.0 / CV_PI, 0.1);
}

TEST_F(StereoAccuracy, OfEpipolarLinesIsAFractionOfAPixel) {
  EXPECT_LT(MeanEpipolarDistance(Pair().detected), 0.3);
}

TEST_F(StereoAccuracy, OfEpipolarLinesHoldsForViewsThatWereNotUsed) {
  const TrueRig& truth = Pair().truth;
  unit::PointPairs others;
  for (const world::Pose& pose : world::SampleRigViews(truth.Cameras(), 8, 3, truth.sheet)) {
    others.left.push_back(world::TrueCentres(truth.left.lens, truth.sheet, pose));
    others.right.push_back(world::TrueCentres(truth.right.lens, truth.sheet, truth.RightOf(pose)));
  }
  EXPECT_LT(MeanEpipolarDistance(others), 0.3);
  // The measure tells when points do not belong together.
  std::swap(others.right.front(), others.right.back());
  EXPECT_GT(MeanEpipolarDistance(others), 1.0);
}

}  // namespace
