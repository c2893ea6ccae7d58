/// Where the cameras of a rig stand, as far as single views tell.
#include "solver/RigStart.h"

#include <opencv2/calib3d.hpp>
#include <optional>
#include <string>
#include <utility>

#include "foundation/Median.h"
#include "solver/Initialisation.h"

namespace velmora::solver {

namespace {

/// The pose of the target before each camera, of each view; none where the camera did not see it.
using CameraPoses = std::vector<std::vector<std::optional<RigidTransform>>>;

RigidTransform PoseBefore(size_t camera, const Rig& rig, const Observation& observation) {
  if (!HasPose(observation, rig.cameras[camera].intrinsics)) {
    CV_Error(cv::Error::StsBadArg,
             "Camera " + std::to_string(camera) +
                 " saw points that determine no pose of the target in one of the views.");
  }
  return KnownPoseOf(observation, rig.cameras[camera].intrinsics);
}

CameraPoses PosesOf(const Rig& rig, const std::vector<TargetView>& views) {
  CameraPoses poses(views.size());
  for (size_t i = 0; i < views.size(); ++i) {
    for (size_t camera = 0; camera < rig.cameras.size(); ++camera) {
      const Observation& observation = views[i].observations[camera];
      poses[i].emplace_back();
      if (!observation.IsEmpty()) poses[i].back() = PoseBefore(camera, rig, observation);
    }
  }
  return poses;
}

size_t SharedViews(const std::vector<TargetView>& views, size_t a, size_t b) {
  size_t shared = 0;
  for (const TargetView& view : views) {
    if (!view.observations[a].IsEmpty() && !view.observations[b].IsEmpty()) ++shared;
  }
  return shared;
}

/// The median, number by number, of what each shared view says.
RigidTransform Between(const CameraPoses& poses, size_t to, size_t from) {
  std::vector<double> numbers[POSE_PARAMETERS];
  for (const auto& view : poses) {
    if (!view[to] || !view[from]) continue;
    const cv::Matx33d R = view[to]->R * view[from]->R.t();
    const cv::Vec3d t = view[to]->t - R * view[from]->t;
    cv::Vec3d rotation;
    cv::Rodrigues(R, rotation);
    for (int k = 0; k < 3; ++k) {
      numbers[k].push_back(rotation[k]);
      numbers[k + 3].push_back(t[k]);
    }
  }
  return {RotationOf({MedianOf(numbers[0]), MedianOf(numbers[1]), MedianOf(numbers[2])}),
          {MedianOf(numbers[3]), MedianOf(numbers[4]), MedianOf(numbers[5])}};
}

/// A camera that is linked to one whose pose is known.
struct Link {
  size_t camera = 0;
  size_t by = 0;
};

/// Each camera but the first once, in an order in which the linking one comes before: the strongest link
/// first.
std::vector<Link> LinksOf(const std::vector<TargetView>& views, size_t cameras) {
  std::vector<Link> links;
  std::vector<bool> located(cameras, false);
  if (cameras > 0) located[0] = true;
  while (true) {
    Link best;
    size_t most = 0;
    for (size_t a = 0; a < cameras; ++a) {
      for (size_t b = 0; b < cameras && !located[a]; ++b) {
        const size_t shared = located[b] ? SharedViews(views, a, b) : 0;
        if (shared <= most) continue;
        most = shared;
        best = {a, b};
      }
    }
    if (most == 0) return links;
    located[best.camera] = true;
    links.push_back(best);
  }
}

/// By the first camera that saw it.
RigidTransform RigFromTarget(const std::vector<std::optional<RigidTransform>>& view, const Rig& rig) {
  for (size_t camera = 0; camera < view.size(); ++camera) {
    if (!view[camera]) continue;
    return camera == 0 ? *view[camera] : Inverse(rig.cameras[camera].cameraFromRig) * *view[camera];
  }
  CV_Error(cv::Error::StsBadArg, "No camera saw the target in one of the views.");
}

}  // namespace

std::vector<size_t> UnlinkedCameras(const std::vector<TargetView>& views, size_t cameras) {
  std::vector<bool> linked(cameras, false);
  if (cameras > 0) linked[0] = true;
  for (const Link& link : LinksOf(views, cameras)) linked[link.camera] = true;
  std::vector<size_t> unlinked;
  for (size_t i = 0; i < cameras; ++i) {
    if (!linked[i]) unlinked.push_back(i);
  }
  return unlinked;
}

CalibrationProblem StartOf(Rig rig, std::vector<TargetView> views) {
  for (const size_t camera : UnlinkedCameras(views, rig.cameras.size())) {
    CV_Error(cv::Error::StsBadArg,
             "Camera " + std::to_string(camera) +
                 " never saw the target together with a camera that is linked to the first.");
  }
  const CameraPoses poses = PosesOf(rig, views);
  rig.cameras.front().cameraFromRig = {};
  for (const Link& link : LinksOf(views, rig.cameras.size())) {
    rig.cameras[link.camera].cameraFromRig =
        Between(poses, link.camera, link.by) * rig.cameras[link.by].cameraFromRig;
  }
  for (size_t i = 0; i < views.size(); ++i) views[i].rigFromTarget = RigFromTarget(poses[i], rig);
  return {std::move(rig), std::move(views), {}, {}};
}

}  // namespace velmora::solver
