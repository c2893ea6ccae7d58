/// What the result of a pair says of each of its cameras.
#include "quality/PairCameras.h"

#include <algorithm>
#include <limits>
#include <opencv2/imgproc.hpp>

#include "quality/ProjectionUncertainty.h"
#include "solver/Covariance.h"

namespace velmora {

namespace {

std::vector<double> RmsOfSnapshots(const Solution& solution, size_t number, size_t snapshots) {
  std::vector<double> rms(snapshots, -1.0);
  for (size_t i = 0; i < solution.views.size(); ++i) rms[solution.kept[i]] = RmsOfImage(solution, i, number);
  return rms;
}

void MeasureProjections(const Solution& solution, size_t number, const Eigen::MatrixXd& covariance,
                        PairVerdict::Camera& camera) {
  const Camera& of = solution.rig.cameras[number];
  const Eigen::MatrixXd own = solver::IntrinsicsCovariance(covariance, LayoutOf(solution).cameras[number]);
  if (own.size() == 0 || of.imageSize.empty()) return;
  const ProjectionUncertainty uncertainty(of.intrinsics, of.imageSize, camera.dataArea);
  camera.deviationInData = uncertainty.InArea(own);
  camera.deviationInImage = uncertainty.InImage(own);
  camera.deviationMap = uncertainty.Map(own);
}

}  // namespace

PairVerdict::Camera PairCameraOf(const Solution& solution, size_t number, const Eigen::MatrixXd& covariance,
                                 size_t snapshots) {
  const double unknown = std::numeric_limits<double>::infinity();
  PairVerdict::Camera camera;
  camera.deviationInData = camera.deviationInImage = unknown;
  if (!solution.usable) {
    camera.rms = unknown;
    camera.viewRms.assign(snapshots, unknown);
    return camera;
  }
  camera.rms = RmsOfCamera(solution, number);
  camera.viewRms = RmsOfSnapshots(solution, number, snapshots);
  camera.dataArea = DataAreaOf(solution.views, number);
  const cv::Size& imageSize = solution.rig.cameras[number].imageSize;
  if (!camera.dataArea.empty() && !imageSize.empty()) {
    camera.coverage = std::min(1.0, cv::contourArea(camera.dataArea) / imageSize.area());
  }
  MeasureProjections(solution, number, covariance, camera);
  return camera;
}

}  // namespace velmora
