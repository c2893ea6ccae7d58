/// How a result agrees with single snapshots.
#include "calibrator/SnapshotFits.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <optional>

#include "calibrator/ObservedPoints.h"
#include "calibrator/Result.h"
#include "solver/OpenCvMatrices.h"
#include "solver/Projection.h"

namespace velmora {

namespace {

const cv::Point2d NOT_SEEN(std::numeric_limits<double>::quiet_NaN(),
                           std::numeric_limits<double>::quiet_NaN());

/// That snapshot alone.
ObservedPoints ObservedAt(const SnapshotList& snapshots, size_t number) {
  SnapshotList single;
  single.target.push_back(snapshots.target[number]);
  single.cameras.reserve(snapshots.cameras.size());
  for (const SnapshotList::Camera& camera : snapshots.cameras) {
    single.cameras.push_back(
        {{camera.points[number]}, {cv::Mat()}, {camera.weights[number]}, {camera.deviations[number]}});
  }
  return ObservedIn(single);
}

/// Which of the given points each point of the image is.
std::vector<size_t> OrderOf(const Solution& solution, size_t number, size_t camera, size_t points) {
  for (const Recounted& recounted : solution.recounted) {
    if (recounted.view == number && recounted.camera == camera) return recounted.order;
  }
  std::vector<size_t> order(points);
  std::iota(order.begin(), order.end(), size_t{0});
  return order;
}

/// Collects the residuals of one image.
class Collector {
 public:
  Collector(size_t circles, SnapshotFit::Camera& fit) : fit_(fit) {
    fit_.residuals.assign(circles, NOT_SEEN);
  }

  void Add(size_t circle, const cv::Point2d& residual, bool used) {
    fit_.residuals.at(circle) = residual;
    if (!used) {
      fit_.outliers.push_back(static_cast<int>(circle));
      return;
    }
    squares_ += residual.dot(residual);
    count_ += 1.0;
  }

  void End() {
    if (count_ > 0.0) fit_.rms = std::sqrt(squares_ / count_);
    std::sort(fit_.outliers.begin(), fit_.outliers.end());
  }

 private:
  SnapshotFit::Camera& fit_;
  double squares_ = 0.0;
  double count_ = 0.0;
};

/// Of an image as the solver used it: its points are where the sheet has them, its pixels corrected.
SnapshotFit::Camera FitOfUsed(const Solution& solution, size_t view, size_t camera,
                              const ObservedPoints& seen, size_t circles) {
  SnapshotFit::Camera fit;
  const Observation& observation = solution.views[view].observations[camera];
  if (observation.IsEmpty()) return fit;
  Collector collector(circles, fit);
  const Camera& of = solution.rig.cameras[camera];
  const solver::Projection projection(of.intrinsics);
  const RigidTransform pose = of.cameraFromRig * solution.views[view].rigFromTarget;
  const auto order = OrderOf(solution, solution.kept[view], camera, observation.object.size());
  for (size_t k = 0; k < observation.object.size(); ++k) {
    cv::Point2d pixel;
    if (!projection.Project(pose * observation.object[k], pixel)) pixel = NOT_SEEN;
    const auto circle = static_cast<size_t>(seen.InGrid(0, static_cast<int>(order[k])));
    collector.Add(circle, observation.image[k] - pixel, observation.Weight(k) > 0.0);
  }
  collector.End();
  return fit;
}

/// Of an image by the pose that the result has for it, as of a flat sheet.
SnapshotFit::Camera FitOfPose(const SparseResult& result, size_t number, const ObservedPoints& seen,
                              size_t circles) {
  SnapshotFit::Camera fit;
  const auto row = static_cast<int>(number);
  if (row >= result.rvecs.rows || row >= result.tvecs.rows) return fit;
  Collector collector(circles, fit);
  const solver::Projection projection(result.solution ? result.solution->rig.cameras.front().intrinsics
                                                      : solver::IntrinsicsOf(result));
  const RigidTransform pose{RotationOf(result.rvecs.at<cv::Vec3d>(row)), result.tvecs.at<cv::Vec3d>(row)};
  const std::vector<cv::Point2d>& observed = seen.cameras.front().front();
  for (size_t k = 0; k < observed.size(); ++k) {
    cv::Point2d pixel;
    if (!projection.Project(pose * seen.target.front()[k], pixel)) pixel = NOT_SEEN;
    collector.Add(static_cast<size_t>(seen.InGrid(0, static_cast<int>(k))), observed[k] - pixel, true);
  }
  collector.End();
  return fit;
}

/// The place of the snapshot among the views that the solution is of.
std::optional<size_t> PlaceIn(const Solution& solution, size_t number) {
  const auto place = std::find(solution.kept.begin(), solution.kept.end(), number);
  if (place == solution.kept.end()) return std::nullopt;
  return static_cast<size_t>(place - solution.kept.begin());
}

std::string ReasonOf(const Solution& solution, size_t number) {
  for (const Rejected& rejected : solution.rejected) {
    if (rejected.view == number && rejected.point == Rejected::WHOLE_VIEW) return rejected.reason;
  }
  return "not used";
}

}  // namespace

SnapshotFit FitOf(const Snapshots::Moment& moment, size_t number) {
  const SnapshotList& snapshots = *moment.snapshots;
  const Result* result = moment.result.get();
  if (result == nullptr || result->removals != snapshots.removals || number >= result->snapshots) return {};
  const ObservedPoints seen = ObservedAt(snapshots, number);
  const size_t circles = snapshots.target[number].size();
  const bool isPair = snapshots.cameras.size() > 1;
  const Solution* solution = (isPair ? result->pair.solution : result->camera.solution).get();
  if (solution == nullptr && isPair) return {};
  SnapshotFit fit;
  const std::optional<size_t> view = solution == nullptr ? std::nullopt : PlaceIn(*solution, number);
  if (view) {
    for (size_t camera = 0; camera < snapshots.cameras.size(); ++camera)
      fit.cameras.push_back(FitOfUsed(*solution, *view, camera, seen, circles));
    return fit;
  }
  fit.cameras.resize(snapshots.cameras.size());
  if (!isPair) fit.cameras.front() = FitOfPose(result->camera, number, seen, circles);
  if (solution == nullptr) return fit;
  fit.rejected = true;
  fit.reason = ReasonOf(*solution, number);
  return fit;
}

}  // namespace velmora
