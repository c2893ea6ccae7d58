/// Solutions as matrices, and back.
#include "solver/OpenCvMatrices.h"

#include <gtest/gtest.h>

#include <opencv2/calib3d.hpp>

#include "Calibrator.h"
#include "Matchers.h"
#include "model/TargetGeometry.h"
#include "solver/CameraCalibration.h"
#include "solver/PairViews.h"

using namespace velmora;

namespace {

Intrinsics Numbered(int estimated) {
  Intrinsics intrinsics;
  intrinsics.estimated = estimated;
  for (size_t i = 0; i < static_cast<size_t>(estimated); ++i)
    intrinsics.values[i] = static_cast<double>(i + 1);
  return intrinsics;
}

cv::Mat Coefficients(std::initializer_list<double> values) {
  return cv::Mat(std::vector<double>(values), true).reshape(1, 1);
}

TEST(OpenCvMatrices, AreCopiesOfTheirNumbers) {
  Eigen::MatrixXd matrix(2, 3);
  matrix << 1, 2, 3, 4, 5, 6;
  EXPECT_SAME_MAT(solver::MatrixOf(matrix), (cv::Mat_<double>(2, 3) << 1, 2, 3, 4, 5, 6));
  EXPECT_TRUE(solver::MatrixOf(Eigen::MatrixXd()).empty());
}

TEST(OpenCvMatrices, HaveFocalLengthsAndPrincipalPointInTheirPositions) {
  EXPECT_SAME_MAT(solver::CameraMatrixOf(Numbered(CLASSIC_PARAMETERS)),
                  (cv::Mat_<double>(3, 3) << 1, 0, 3, 0, 2, 4, 0, 0, 1));
}

TEST(OpenCvMatrices, OfAResultTellItsModel) {
  IntrinsicsResult result;
  result.K = (cv::Mat_<double>(3, 3) << 1, 0, 3, 0, 2, 4, 0, 0, 1);
  result.D = Coefficients({5, 6, 7, 8, 9});
  EXPECT_EQ(solver::IntrinsicsOf(result).estimated, CLASSIC_PARAMETERS);
  EXPECT_EQ(solver::IntrinsicsOf(result).values, Numbered(CLASSIC_PARAMETERS).values);
  result.D = Coefficients({5, 6, 7, 8, 9, 10, 11, 12, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(solver::IntrinsicsOf(result).estimated, RATIONAL_PARAMETERS);
  EXPECT_EQ(solver::IntrinsicsOf(result).values, Numbered(RATIONAL_PARAMETERS).values);
  result.D = Coefficients({5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18});
  EXPECT_EQ(solver::IntrinsicsOf(result).estimated, FULL_PARAMETERS);
  EXPECT_EQ(solver::IntrinsicsOf(result).values, Numbered(FULL_PARAMETERS).values);
}

TEST(OpenCvMatrices, OfKnownIntrinsicsKeepAllCoefficientsButThoseThatTheClassicModelHasNot) {
  const cv::Mat K = (cv::Mat_<double>(3, 3) << 1, 0, 3, 0, 2, 4, 0, 0, 1);
  const cv::Mat D = Coefficients({5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18});
  for (const cv::Mat& shape : {D, cv::Mat(D.t())}) {
    EXPECT_EQ(solver::KnownIntrinsics(K, shape, MODEL_RATIONAL).values, Numbered(FULL_PARAMETERS).values);
    EXPECT_EQ(solver::KnownIntrinsics(K, shape, MODEL_CLASSIC).values, Numbered(CLASSIC_PARAMETERS).values);
  }
  const Intrinsics few = solver::KnownIntrinsics(K, D.colRange(0, 4), MODEL_CLASSIC);
  EXPECT_EQ(few.values[P2], 8.0);
  EXPECT_EQ(few.values[K3], 0.0);
  EXPECT_THROW(solver::KnownIntrinsics(K, cv::Mat(), MODEL_CLASSIC), cv::Exception);
  EXPECT_THROW(solver::KnownIntrinsics(K.rowRange(0, 2), D, MODEL_CLASSIC), cv::Exception);
}

TEST(OpenCvMatrices, OfAPairAreThoseThatItWasMadeOf) {
  const StereoIntrinsics given = unit::TruePairIntrinsics(unit::RigFor(MODEL_FULL));
  const StereoIntrinsics back = solver::PairIntrinsicsOf(solver::KnownPair(given, MODEL_FULL));
  EXPECT_SAME_MAT(back.K, given.K);
  EXPECT_SAME_MAT(back.D, given.D);
  EXPECT_SAME_MAT(back.KRight, given.KRight);
  EXPECT_SAME_MAT(back.DRight, given.DRight);
}

TEST(OpenCvMatrices, OfAPairRelatePointsOfBothImages) {
  const world::Pair rig = unit::RigFor(MODEL_CLASSIC);
  const ExtrinsicsResult result = solver::PairMatricesOf(unit::TruePairIntrinsics(rig), {rig.R, rig.T});
  EXPECT_MAT_NEAR(result.R, cv::Mat(rig.R), 0.0);
  EXPECT_MAT_NEAR(result.T, cv::Mat(rig.T), 0.0);
  EXPECT_EQ(result.F.at<double>(2, 2), 1.0);
  for (const cv::Vec3d& left : {cv::Vec3d(0.1, 0.2, 1.5), cv::Vec3d(-0.3, 0.1, 0.9)}) {
    const cv::Vec3d right = rig.R * left + rig.T;
    EXPECT_NEAR(right.dot(cv::Vec3d(cv::Mat(result.E * cv::Mat(left)))), 0.0, 1e-15);
    const cv::Vec3d a = rig.left.lens.K() * left * (1.0 / left[2]);
    const cv::Vec3d b = rig.right.lens.K() * right * (1.0 / right[2]);
    const cv::Vec3d line(cv::Mat(result.F * cv::Mat(a)));
    EXPECT_NEAR(b.dot(line) / std::hypot(line[0], line[1]), 0.0, 1e-9);  // pixels from the epipolar line
  }
}

/// Ten views of which one is no grid, and another has a point that is far off.
unit::PointLists Spoilt() {
  unit::PointLists views = unit::NoisyViews(10);
  std::reverse(views[4].begin(), views[4].end());
  views[7][20] += cv::Point2d(9.0, -7.0);
  return views;
}

TEST(OpenCvMatrices, OfASolutionLeadToItAgain) {
  const solver::Target target = solver::TargetOf(unit::Targets(10), Spoilt());
  for (const int model : {MODEL_CLASSIC, MODEL_RATIONAL, MODEL_FULL}) {
    solver::BundleOptions options;
    options.parameters = LensModelOf(model).parameters;
    options.discRadius = 0.008;
    const Solution solution = solver::CalibrateCamera(target.views, unit::FRAME, true, options);
    SparseResult result;
    static_cast<IntrinsicsResult&>(result) = solver::MatricesOf(solution, target);
    result.rejected = solution.rejected;
    result.robust = true;
    const Solution back = solver::SolutionFrom(target, result, unit::FRAME, options.discRadius);
    EXPECT_EQ(back.kept, solution.kept);
    EXPECT_EQ(back.kept.size(), 9U);
    EXPECT_TRUE(back.robust);
    EXPECT_EQ(back.discRadius, 0.008);
    EXPECT_EQ(back.rig.cameras[0].intrinsics.values, solution.rig.cameras[0].intrinsics.values);
    EXPECT_EQ(back.rig.cameras[0].intrinsics.estimated, options.parameters);
    // The pixels were corrected for a camera that then moved a little.
    EXPECT_NEAR(back.cost, solution.cost, 1e-3 * solution.cost) << model;
    EXPECT_EQ(back.views[6].observations[0].weights, solution.views[6].observations[0].weights);
    EXPECT_EQ(back.priors[0].pulls[K4] > 0.0, model != MODEL_CLASSIC);
  }
}

TEST(OpenCvMatrices, OfASolutionHaveARowForEachViewAndThePosesOfTheTargetsOrigin) {
  const unit::PointLists views = Spoilt();
  const solver::Target target = solver::TargetOf(unit::Targets(10), views);
  const Solution solution = solver::CalibrateCamera(target.views, unit::FRAME, true, {});
  const IntrinsicsResult result = solver::MatricesOf(solution, target);
  ASSERT_EQ(result.rvecs.rows, 10);
  ASSERT_EQ(result.stdDevExtrinsics.rows, 60);
  EXPECT_EQ(cv::countNonZero(result.stdDevExtrinsics), 54);  // none of the view that was left out
  EXPECT_EQ(result.stdDevExtrinsics.at<double>(6 * 4), 0.0);
  EXPECT_GT(result.perViewErrors.at<double>(4), 5.0);
  EXPECT_EQ(result.rms, RmsOf(solution));
  EXPECT_EQ(result.D.cols, 5);
  for (const int view : {0, 9}) {
    std::vector<cv::Point2d> pixels;
    cv::projectPoints(unit::Targets(1).front(), result.rvecs.at<cv::Vec3d>(view),
                      result.tvecs.at<cv::Vec3d>(view), result.K, result.D, pixels);
    double squaredDistances = 0.0;
    for (size_t k = 0; k < pixels.size(); ++k) {
      const cv::Point2d away = pixels[k] - views[static_cast<size_t>(view)][k];
      squaredDistances += away.dot(away);
    }
    EXPECT_NEAR(std::sqrt(squaredDistances / 44.0), result.perViewErrors.at<double>(view), 1e-5);
  }
}

}  // namespace
