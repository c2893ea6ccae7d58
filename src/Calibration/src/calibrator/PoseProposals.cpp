/// Proposes the pose of the next snapshot.
#include "calibrator/PoseProposals.h"

#include <limits>
#include <opencv2/calib3d.hpp>

#include "Log.h"
#include "calibrator/ObservedPoints.h"
#include "foundation/OneLine.h"
#include "quality/NextPose.h"
#include "quality/SheetChoice.h"
#include "solver/Target.h"

namespace velmora {

namespace {

/// What the snapshots say of a camera; no solution when they do not agree with any.
struct Known {
  solver::Target target;
  Solution solution;
};

Known KnownFrom(const SnapshotList& snapshots, const ProposalSettings& settings) {
  constexpr size_t ENOUGH_FOR_A_CAMERA = 3;
  Known known;
  const ObservedPoints seen = ObservedIn(snapshots);
  const auto& points = seen.cameras.front();
  if (points.empty()) return known;
  try {
    SparseOptions options = settings.solver;
    options.deviations = seen.deviations.front();
    known.target = solver::TargetOf(seen.target, points, options.deviations);
    if (points.size() < ENOUGH_FOR_A_CAMERA) return known;
    known.solution =
        *(settings.fisheye
              ? SolveFisheyeWithSheet(seen.target, points, settings.imageSize, options)
              : SolveIntrinsicsWithSheet(seen.target, points, settings.imageSize, settings.model, options))
             .solution;
  } catch (const cv::Exception& fault) {
    Log::debug("No camera for a proposal: %s", OneLine(fault.what()).c_str());
  }
  return known;
}

/// The target with the middle of its points in the place of its origin.
std::vector<cv::Point3d> Centred(std::vector<cv::Point3d> points, cv::Vec3d& middle) {
  cv::Point3d sum;
  for (const cv::Point3d& point : points) sum += point;
  const cv::Point3d mean = sum * (1.0 / static_cast<double>(points.size()));
  for (cv::Point3d& point : points) point -= mean;
  middle = {mean.x, mean.y, mean.z};
  return points;
}

/// The standard search passes over discs of more than 5000 pixels. Neighbours in a row are five radii apart.
double MostSpacing(int finder) {
  constexpr double LARGEST_RADIUS = 37.0;
  return finder == FINDER_STANDARD ? 5.0 * LARGEST_RADIUS : std::numeric_limits<double>::infinity();
}

}  // namespace

PoseProposal ProposePose(const SnapshotList& snapshots, const ProposalSettings& settings) {
  const Known known = KnownFrom(snapshots, settings);
  const CameraInformation cameraInformation =
      CameraInformationFrom(known.solution, known.target.views, settings.imageSize);
  cv::Vec3d middle;
  const NextPose next = ChooseNextPose(cameraInformation, Centred(settings.target, middle),
                                       settings.imageSize, MostSpacing(settings.finder));

  PoseProposal proposal;
  proposal.centres = next.candidate.view.image;
  cv::Rodrigues(next.candidate.pose.R, proposal.rvec);
  proposal.tvec = next.candidate.pose.t - next.candidate.pose.R * middle;
  proposal.deviation = next.now;
  proposal.deviationThen = next.then;
  proposal.nominal = cameraInformation.nominal;
  return proposal;
}

}  // namespace velmora
