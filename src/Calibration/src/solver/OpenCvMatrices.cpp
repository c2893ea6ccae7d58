/// Solutions as the matrices that a calibrator hands out, and back.
#include "solver/OpenCvMatrices.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/calib3d.hpp>
#include <utility>

#include "solver/BundleAdjustment.h"
#include "solver/Covariance.h"
#include "solver/Eccentricity.h"
#include "solver/Initialisation.h"
#include "solver/KnownSheet.h"
#include "solver/ObservationEquations.h"
#include "solver/SheetLadder.h"
#include "solver/WeakPrior.h"

namespace velmora::solver {

namespace {

using Matrix6 = Eigen::Matrix<double, POSE_PARAMETERS, POSE_PARAMETERS>;

constexpr int CAMERA_PARAMETERS = 4;
constexpr int CLASSIC_COEFFICIENTS = CLASSIC_PARAMETERS - CAMERA_PARAMETERS;
constexpr int MOST_COEFFICIENTS = FULL_PARAMETERS - CAMERA_PARAMETERS;

/// Distortion coefficients in as many columns as asked for; the rational model has 14 too, with zeros at the
/// end.
cv::Mat CoefficientsOf(const Intrinsics& intrinsics, int columns, int known) {
  cv::Mat D = cv::Mat::zeros(1, columns, CV_64F);
  for (int i = 0; i < std::min(columns, known - CAMERA_PARAMETERS); ++i) {
    D.at<double>(i) = intrinsics.values[static_cast<size_t>(i + CAMERA_PARAMETERS)];
  }
  return D;
}

/// How many coefficients a result has.
int ColumnsFor(const Intrinsics& intrinsics) {
  if (intrinsics.IsFisheye()) return FISHEYE_COEFFICIENTS;
  return intrinsics.estimated == CLASSIC_PARAMETERS ? CLASSIC_COEFFICIENTS : MOST_COEFFICIENTS;
}

/// From small rotations and translations about the middle of the target to rotation vector and translation of
/// its origin.
Matrix6 OriginFrom(const RigidTransform& pose, const cv::Vec3d& rotation, const cv::Vec3d& middle) {
  Matrix6 change = Matrix6::Identity();
  constexpr double STEP = 1e-6;
  const cv::Vec3d away = pose.R * middle;
  for (int i = 0; i < 3; ++i) {
    cv::Vec3d rotationVector;
    rotationVector[i] = STEP;
    cv::Vec3d ahead;
    cv::Vec3d behind;
    cv::Rodrigues(RotationOf(rotationVector) * pose.R, ahead);
    cv::Rodrigues(RotationOf(-rotationVector) * pose.R, behind);
    // A rotation by half a circle has two vectors: the nearer one is meant.
    if (ahead.dot(rotation) < 0.0) ahead = ahead * (1.0 - 2.0 * CV_PI / cv::norm(ahead));
    if (behind.dot(rotation) < 0.0) behind = behind * (1.0 - 2.0 * CV_PI / cv::norm(behind));
    const cv::Vec3d byRotation = (ahead - behind) * (0.5 / STEP);
    const cv::Vec3d translation = away.cross(rotationVector) * (1.0 / STEP);
    for (int k = 0; k < 3; ++k) {
      change(k, i) = byRotation[k];
      change(3 + k, i) = translation[k];
    }
  }
  return change;
}

/// The pose before a fisheye that fits the view best. False when the view determines none.
bool PoseBeforeFisheye(const Camera& camera, const Observation& observation, RigidTransform& pose) {
  if (!HasPose(observation, camera.intrinsics)) return false;
  TargetView view{KnownPoseOf(observation, camera.intrinsics), {observation}, {}};
  const Solution solution = SolvePoses({{camera}}, {std::move(view)});
  if (!solution.usable) return false;
  pose = solution.views.front().rigFromTarget;
  return true;
}

/// The pose of a view that the intrinsics were not computed from.
RigidTransform PoseBefore(const IntrinsicsResult& result, const Observation& observation) {
  cv::Vec3d rotation;
  RigidTransform pose;
  cv::solvePnP(observation.object, observation.image, result.K, result.D, rotation, pose.t);
  pose.R = RotationOf(rotation);
  return pose;
}

void WriteView(const RigidTransform& pose, const cv::Vec3d& middle, int row, IntrinsicsResult& result) {
  cv::Vec3d rotation;
  cv::Rodrigues(pose.R, rotation);
  result.rvecs.at<cv::Vec3d>(row) = rotation;
  result.tvecs.at<cv::Vec3d>(row) = pose.t - pose.R * middle;
}

void CopyKept(const Solution& solution, const Target& target, IntrinsicsResult& result) {
  for (size_t i = 0; i < solution.kept.size(); ++i) {
    const int row = static_cast<int>(solution.kept[i]);
    const TargetView& view = solution.views[i];
    WriteView(view.rigFromTarget, target.middles[solution.kept[i]], row, result);
    result.perViewErrors.at<double>(row) =
        std::sqrt(solution.equations[i].pixelCosts.front() / CountOf(view.observations));
  }
  result.rms = RmsOf(solution);
}

/// Makes the pose that of the sheet as it is, from one of a flat sheet; nothing where that cannot be found.
void TakeShape(const Solution& solution, const Observation& observation, RigidTransform& pose, double& cost) {
  const Sheet held = HeldShapeOf(solution.sheet);
  std::vector<TargetView> views = {{pose, {observation}, {}}};
  if (!NoteNearestPlaces(held.target, views)) return;
  const Solution shaped = SolvePoses(solution.rig, std::move(views), held);
  if (!shaped.usable) return;
  pose = shaped.views.front().rigFromTarget;
  cost = PixelCostOf(shaped);
}

/// The pose of a view that the intrinsics were not computed from, and the sum of its squared residuals:
/// infinite where it has none before a fisheye, and the identity is answered.
RigidTransform PlaceRejected(const Solution& solution, const IntrinsicsResult& result,
                             const Observation& observation, double& cost) {
  const Camera& camera = solution.rig.cameras.front();
  RigidTransform pose;
  cost = std::numeric_limits<double>::infinity();
  if (!camera.intrinsics.IsFisheye()) {
    pose = PoseBefore(result, observation);
  } else if (!PoseBeforeFisheye(camera, observation, pose)) {
    return pose;
  }
  cost = EquationsOf(observation, camera.intrinsics, pose).pixelCost;
  if (!solution.sheet.IsFlat()) TakeShape(solution, observation, pose, cost);
  return pose;
}

void WriteRejected(const Solution& solution, const Target& target, IntrinsicsResult& result) {
  for (size_t i = 0; i < target.views.size(); ++i) {
    if (std::binary_search(solution.kept.begin(), solution.kept.end(), i)) continue;
    const Observation& observation = target.views[i].observations.front();
    double cost = 0.0;
    const RigidTransform pose = PlaceRejected(solution, result, observation, cost);
    WriteView(pose, target.middles[i], static_cast<int>(i), result);
    result.perViewErrors.at<double>(static_cast<int>(i)) = std::sqrt(cost / observation.Count());
  }
}

void CopyDeviations(const Solution& solution, const Target& target, IntrinsicsResult& result) {
  const Eigen::MatrixXd covariance = SharedCovariance(solution);
  if (covariance.size() == 0) return;
  for (int i = 0; i < solution.rig.cameras.front().intrinsics.estimated; ++i)
    result.stdDevIntrinsics.at<double>(i) = std::sqrt(covariance(i, i));
  const double variance = NoiseVariance(solution);
  for (size_t k = 0; k < solution.kept.size(); ++k) {
    const int view = static_cast<int>(solution.kept[k]);
    const Matrix6 change = OriginFrom(solution.views[k].rigFromTarget, result.rvecs.at<cv::Vec3d>(view),
                                      target.middles[solution.kept[k]]);
    const Matrix6 ofPose =
        change * PoseCovariance(solution.equations[k], variance, covariance) * change.transpose();
    for (int i = 0; i < POSE_PARAMETERS; ++i) {
      result.stdDevExtrinsics.at<double>(POSE_PARAMETERS * view + i) = std::sqrt(ofPose(i, i));
    }
  }
}

/// The view without its rejected points. False when no point is left.
bool TakeRejected(const std::vector<Rejected>& rejected, size_t number, TargetView& view) {
  Observation& observation = view.observations.front();
  for (const Rejected& item : rejected) {
    if (item.view != number) continue;
    if (item.point == Rejected::WHOLE_VIEW) return false;
    if (observation.weights.empty()) observation.weights.assign(observation.object.size(), 1.0);
    observation.weights[static_cast<size_t>(item.point)] = 0.0;
  }
  return true;
}

/// The views that the result is of, with their poses; rejected points have no weight.
void CollectKept(const Target& target, const SparseResult& result, Solution& solution) {
  for (size_t i = 0; i < target.views.size(); ++i) {
    TargetView view = target.views[i];
    if (!TakeRejected(result.rejected, i, view)) continue;
    RigidTransform& pose = view.rigFromTarget;
    pose.R = RotationOf(result.rvecs.at<cv::Vec3d>(static_cast<int>(i)));
    pose.t = result.tvecs.at<cv::Vec3d>(static_cast<int>(i)) + pose.R * target.middles[i];
    solution.kept.push_back(i);
    solution.views.push_back(std::move(view));
  }
}

}  // namespace

cv::Mat MatrixOf(const Eigen::MatrixXd& matrix) {
  cv::Mat copy(static_cast<int>(matrix.rows()), static_cast<int>(matrix.cols()), CV_64F);
  for (int i = 0; i < copy.rows; ++i) {
    for (int j = 0; j < copy.cols; ++j) copy.at<double>(i, j) = matrix(i, j);
  }
  return copy;
}

cv::Mat CameraMatrixOf(const Intrinsics& intrinsics) {
  const auto& p = intrinsics.values;
  return (cv::Mat_<double>(3, 3) << p[FX], 0.0, p[CX], 0.0, p[FY], p[CY], 0.0, 0.0, 1.0);
}

cv::Mat CoefficientsOf(const Intrinsics& intrinsics) {
  if (intrinsics.IsFisheye()) return CoefficientsOf(intrinsics, FISHEYE_COEFFICIENTS, FISHEYE_PARAMETERS);
  return CoefficientsOf(intrinsics, MOST_COEFFICIENTS, FULL_PARAMETERS);
}

Intrinsics IntrinsicsOf(const IntrinsicsResult& result) {
  const cv::Mat_<double> K(result.K);
  const cv::Mat_<double> D(result.D);
  Intrinsics intrinsics;
  intrinsics.values = {K(0, 0), K(1, 1), K(0, 2), K(1, 2)};
  for (int i = 0; i < D.cols; ++i) intrinsics.values[static_cast<size_t>(i + CAMERA_PARAMETERS)] = D(i);
  if (D.cols > CLASSIC_COEFFICIENTS) {
    constexpr int RATIONAL_COEFFICIENTS = RATIONAL_PARAMETERS - CAMERA_PARAMETERS;
    const bool full = cv::countNonZero(D.colRange(RATIONAL_COEFFICIENTS, D.cols)) > 0;
    intrinsics.estimated = full ? FULL_PARAMETERS : RATIONAL_PARAMETERS;
  }
  return intrinsics;
}

IntrinsicsResult MatricesOf(const Solution& solution, const Target& target) {
  IntrinsicsResult result;
  const int count = static_cast<int>(target.views.size());
  result.rvecs.create(count, 1, CV_64FC3);
  result.tvecs.create(count, 1, CV_64FC3);
  result.perViewErrors.create(count, 1, CV_64F);
  result.stdDevIntrinsics = cv::Mat::zeros(FULL_PARAMETERS, 1, CV_64F);
  result.stdDevExtrinsics = cv::Mat::zeros(POSE_PARAMETERS * count, 1, CV_64F);
  const Intrinsics& intrinsics = solution.rig.cameras.front().intrinsics;
  result.K = CameraMatrixOf(intrinsics);
  result.D = CoefficientsOf(intrinsics, ColumnsFor(intrinsics), intrinsics.estimated);
  CopyKept(solution, target, result);
  WriteRejected(solution, target, result);
  CopyDeviations(solution, target, result);
  return result;
}

Solution SolutionFrom(const Target& target, const SparseResult& result, const cv::Size& imageSize,
                      double discRadius) {
  Solution from;
  Camera camera;
  camera.intrinsics = IntrinsicsOf(result);
  camera.imageSize = imageSize;
  from.rig.cameras = {camera};
  CollectKept(target, result, from);
  if (discRadius > 0.0) from.views = CorrectedForEccentricity(from.views, from.rig, from.views, discRadius);
  Solution solution = EvaluatedAt({from.rig, from.views, {}, {}});
  if (camera.intrinsics.estimated > CLASSIC_PARAMETERS) {
    solution.priors = WeakPriors(solution.rig, solution.views, NoiseVariance(solution));
  }
  solution.kept = std::move(from.kept);
  solution.rejected = result.rejected;
  solution.robust = result.robust;
  solution.tooFewAgree = result.tooFewAgree;
  solution.discRadius = discRadius;
  return solution;
}

Intrinsics KnownIntrinsics(const cv::Mat& K, const cv::Mat& D, int model) {
  CV_Assert(K.rows == 3 && K.cols == 3 && K.channels() == 1 && D.channels() == 1 && !D.empty());
  const cv::Mat_<double> matrix(K);
  const cv::Mat_<double> coefficients(D.reshape(1, 1));
  Intrinsics intrinsics;
  const bool classic = LensModelOf(model).parameters == CLASSIC_PARAMETERS;
  intrinsics.estimated = classic ? CLASSIC_PARAMETERS : FULL_PARAMETERS;
  intrinsics.values = {matrix(0, 0), matrix(1, 1), matrix(0, 2), matrix(1, 2)};
  for (int i = 0; i < std::min(coefficients.cols, intrinsics.estimated - CAMERA_PARAMETERS); ++i) {
    intrinsics.values[static_cast<size_t>(i + CAMERA_PARAMETERS)] = coefficients(i);
  }
  return intrinsics;
}

Intrinsics KnownFisheye(const cv::Mat& K, const cv::Mat& D) {
  CV_Assert(K.rows == 3 && K.cols == 3 && K.channels() == 1 && D.total() == FISHEYE_COEFFICIENTS);
  const cv::Mat_<double> matrix(K);
  const cv::Mat_<double> coefficients(D.reshape(1, 1));
  Intrinsics intrinsics;
  intrinsics.family = LensFamily::Angle;
  intrinsics.estimated = FISHEYE_PARAMETERS;
  intrinsics.values = {matrix(0, 0), matrix(1, 1), matrix(0, 2), matrix(1, 2)};
  for (int i = 0; i < FISHEYE_COEFFICIENTS; ++i)
    intrinsics.values[static_cast<size_t>(FISHEYE_K + i)] = coefficients(i);
  return intrinsics;
}

Rig KnownPair(const StereoIntrinsics& intrinsics, int model) {
  Rig pair;
  pair.cameras.resize(2);
  pair.cameras[0].intrinsics = KnownIntrinsics(intrinsics.K, intrinsics.D, model);
  pair.cameras[1].intrinsics = KnownIntrinsics(intrinsics.KRight, intrinsics.DRight, model);
  return pair;
}

StereoIntrinsics PairIntrinsicsOf(const Rig& pair) {
  const Intrinsics& left = pair.cameras[0].intrinsics;
  const Intrinsics& right = pair.cameras[1].intrinsics;
  return {CameraMatrixOf(left), CoefficientsOf(left), CameraMatrixOf(right), CoefficientsOf(right)};
}

ExtrinsicsResult PairMatricesOf(const StereoIntrinsics& intrinsics, const RigidTransform& rightFromLeft) {
  const cv::Vec3d& t = rightFromLeft.t;
  const cv::Matx33d essential =
      cv::Matx33d(0.0, -t[2], t[1], t[2], 0.0, -t[0], -t[1], t[0], 0.0) * rightFromLeft.R;
  const cv::Matx33d leftK = cv::Mat_<double>(intrinsics.K);
  const cv::Matx33d rightK = cv::Mat_<double>(intrinsics.KRight);
  cv::Matx33d fundamental = rightK.inv().t() * essential * leftK.inv();
  if (fundamental(2, 2) != 0.0) fundamental = fundamental * (1.0 / fundamental(2, 2));
  ExtrinsicsResult result;
  result.R = cv::Mat(rightFromLeft.R).clone();
  result.T = cv::Mat(rightFromLeft.t).clone();
  result.E = cv::Mat(essential).clone();
  result.F = cv::Mat(fundamental).clone();
  return result;
}

}  // namespace velmora::solver
