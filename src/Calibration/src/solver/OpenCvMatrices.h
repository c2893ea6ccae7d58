/// Solutions as the matrices that a calibrator hands out, and back.
#pragma once

#include <Eigen/Core>
#include <opencv2/core.hpp>

#include "model/Solution.h"
#include "solver/OpenCvExtrinsics.h"
#include "solver/OpenCvIntrinsics.h"
#include "solver/SparseIntrinsics.h"
#include "solver/Target.h"

namespace velmora::solver {

/// A copy, of 64-bit reals; an empty matrix stays one.
cv::Mat MatrixOf(const Eigen::MatrixXd& matrix);

/// 3 x 3.
cv::Mat CameraMatrixOf(const Intrinsics& intrinsics);

/// 1 x 14, with zeros for coefficients that the model does not have; 1 x 4 of a fisheye.
cv::Mat CoefficientsOf(const Intrinsics& intrinsics);

/// In the form of SolveIntrinsics, with a row for each view of the target, of a solution of one camera.
/// Rejected views have the pose that fits the camera best, its error and no standard deviations. D of a
/// fisheye is 1 x 4, k1 to k4 of its own, of which the standard deviations are those after cx and cy; a
/// rejected view that has no pose before it has the identity and an infinite error.
IntrinsicsResult MatricesOf(const Solution& solution, const Target& target);

/// The intrinsics of a result. D of 14 coefficients is the rational model's where those beyond it are zero.
Intrinsics IntrinsicsOf(const IntrinsicsResult& result);

/// The solution that either solver's result for the target's views is, with the equations at it. What the
/// result rejected is not used here either; `discRadius` is that of the computation.
Solution SolutionFrom(const Target& target, const SparseResult& result, const cv::Size& imageSize,
                      double discRadius);

/// Intrinsics that are known. All coefficients of D count, but for those that the classic model does not
/// have.
Intrinsics KnownIntrinsics(const cv::Mat& K, const cv::Mat& D, int model);

/// Those of a fisheye, of four coefficients.
Intrinsics KnownFisheye(const cv::Mat& K, const cv::Mat& D);

/// A rig of two with these intrinsics; where the right camera stands is not known yet.
Rig KnownPair(const StereoIntrinsics& intrinsics, int model);

/// Both cameras' intrinsics in the form of result files: D of 1 x 14.
StereoIntrinsics PairIntrinsicsOf(const Rig& pair);

/// Rotation, translation, essential and fundamental matrix, the latter with a one in its corner where it can
/// have it.
ExtrinsicsResult PairMatricesOf(const StereoIntrinsics& intrinsics, const RigidTransform& rightFromLeft);

}  // namespace velmora::solver
