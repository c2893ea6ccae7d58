/// Computes cameras and pairs with Ceres: derivatives and search share nothing with the engine's.
#include "CeresProblem.h"

#include <ceres/ceres.h>
#include <ceres/rotation.h>

#include <opencv2/calib3d.hpp>

namespace independent {

namespace {

/// The classic model: a pixel minus where it was observed.
template <typename T>
void Distance(const T* camera, const T* point, const cv::Point2d& observed, T* residual) {
  const T x = point[0] / point[2];
  const T y = point[1] / point[2];
  const T r2 = x * x + y * y;
  const T radial = 1.0 + camera[4] * r2 + camera[5] * r2 * r2 + camera[8] * r2 * r2 * r2;
  const T across = x * radial + 2.0 * camera[6] * x * y + camera[7] * (r2 + 2.0 * x * x);
  const T down = y * radial + camera[6] * (r2 + 2.0 * y * y) + 2.0 * camera[7] * x * y;
  residual[0] = camera[0] * across + camera[2] - observed.x;
  residual[1] = camera[1] * down + camera[3] - observed.y;
}

template <typename T>
void Transform(const T* pose, const T* point, T* moved) {
  ceres::AngleAxisRotatePoint(pose, point, moved);
  for (int i = 0; i < 3; ++i) moved[i] += pose[3 + i];
}

struct ObservedPoint {
  cv::Point3d object;
  cv::Point2d observed;

  template <typename T>
  bool operator()(const T* camera, const T* pose, T* residual) const {
    const T point[3] = {T(object.x), T(object.y), T(object.z)};
    T before[3];
    Transform(pose, point, before);
    Distance(camera, before, observed, residual);
    return true;
  }

  /// The residual of a point in the right camera.
  template <typename T>
  bool operator()(const T* camera, const T* relative, const T* pose, T* residual) const {
    const T point[3] = {T(object.x), T(object.y), T(object.z)};
    T left[3];
    T before[3];
    Transform(pose, point, left);
    Transform(relative, left, before);
    Distance(camera, before, observed, residual);
    return true;
  }
};

double Solve(ceres::Problem& problem) {
  ceres::Solver::Options options;
  options.linear_solver_type = ceres::DENSE_SCHUR;
  options.max_num_iterations = 300;
  options.function_tolerance = 1e-18;
  options.parameter_tolerance = 1e-16;
  options.gradient_tolerance = 1e-16;
  options.num_threads = 1;
  options.logging_type = ceres::SILENT;
  ceres::Solver::Summary summary;
  ceres::Solve(options, &problem, &summary);
  return 2.0 * summary.final_cost;
}

void AddCamera(const std::vector<cv::Point3d>& object, const Views& views, Camera& camera,
               std::vector<Pose>& poses, ceres::Problem& problem) {
  for (size_t i = 0; i < views.size(); ++i) {
    for (size_t k = 0; k < object.size(); ++k) {
      problem.AddResidualBlock(
          new ceres::AutoDiffCostFunction<ObservedPoint, 2, 9, 6>(new ObservedPoint{object[k], views[i][k]}),
          nullptr, camera.data(), poses[i].data());
    }
  }
}

void Start(const std::vector<cv::Point3d>& object, const Views& views, cv::Size imageSize,
           Solution& solution) {
  const std::vector<cv::Point3f> points(object.begin(), object.end());
  std::vector<std::vector<cv::Point2f>> observed;
  for (const auto& view : views) observed.emplace_back(view.begin(), view.end());
  const cv::Mat K = cv::initCameraMatrix2D(std::vector<std::vector<cv::Point3f>>(views.size(), points),
                                           observed, imageSize);
  solution.left = {K.at<double>(0, 0), K.at<double>(1, 1), K.at<double>(0, 2), K.at<double>(1, 2)};
  for (const auto& view : observed) {
    cv::Vec3d rotationVector;
    cv::Vec3d translation;
    cv::solvePnP(points, view, K, cv::noArray(), rotationVector, translation);
    solution.poses.push_back({rotationVector[0], rotationVector[1], rotationVector[2], translation[0],
                              translation[1], translation[2]});
  }
}

/// The right camera's pose by the first view.
Pose Between(const Pose& left, const Pose& right) {
  cv::Matx33d ofLeft;
  cv::Matx33d ofRight;
  cv::Rodrigues(cv::Vec3d(left.data()), ofLeft);
  cv::Rodrigues(cv::Vec3d(right.data()), ofRight);
  const cv::Matx33d rotationMatrix = ofRight * ofLeft.t();
  const cv::Vec3d translation = cv::Vec3d(right.data() + 3) - rotationMatrix * cv::Vec3d(left.data() + 3);
  cv::Vec3d rotation;
  cv::Rodrigues(rotationMatrix, rotation);
  return {rotation[0], rotation[1], rotation[2], translation[0], translation[1], translation[2]};
}

}  // namespace

Solution SolveCamera(const std::vector<cv::Point3d>& object, const Views& views, cv::Size imageSize) {
  Solution solution;
  Start(object, views, imageSize, solution);
  ceres::Problem problem;
  AddCamera(object, views, solution.left, solution.poses, problem);
  solution.cost = Solve(problem);
  return solution;
}

Solution SolvePair(const std::vector<cv::Point3d>& object, const Views& left, const Views& right,
                   cv::Size imageSize) {
  Solution solution = SolveCamera(object, left, imageSize);
  const Solution other = SolveCamera(object, right, imageSize);
  solution.right = other.left;
  solution.relative = Between(solution.poses.front(), other.poses.front());
  ceres::Problem problem;
  AddCamera(object, left, solution.left, solution.poses, problem);
  for (size_t i = 0; i < right.size(); ++i) {
    for (size_t k = 0; k < object.size(); ++k) {
      problem.AddResidualBlock(new ceres::AutoDiffCostFunction<ObservedPoint, 2, 9, 6, 6>(
                                   new ObservedPoint{object[k], right[i][k]}),
                               nullptr, solution.right.data(), solution.relative.data(),
                               solution.poses[i].data());
    }
  }
  solution.cost = Solve(problem);
  return solution;
}

}  // namespace independent
