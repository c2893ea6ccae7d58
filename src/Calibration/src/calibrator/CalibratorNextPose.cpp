/// The calibrator's proposal of a pose, and the assistant that asks for it.
#include <limits>
#include <opencv2/calib3d.hpp>

#include "CalibAssistant.h"
#include "Calibrator.h"
#include "Log.h"
#include "calibrator/SolverChoice.h"
#include "finder/FinderChoice.h"
#include "foundation/OneLine.h"
#include "quality/NextPose.h"
#include "solver/SparseIntrinsics.h"
#include "solver/Target.h"

using namespace velmora;

namespace {

/// What the snapshots say of a lens; nothing when they do not agree with any camera.
struct Seen {
  solver::Target target;
  Solution solution;
};

Seen SeenIn(const std::vector<std::vector<cv::Point3d>>& objectPoints,
            const std::vector<std::vector<cv::Point2d>>& imagePoints, const cv::Size& imageSize, int model,
            const SparseOptions& options) {
  constexpr size_t ENOUGH_FOR_A_LENS = 3;
  Seen seen;
  if (imagePoints.empty()) return seen;
  try {
    seen.target = solver::TargetOf(objectPoints, imagePoints);
    if (imagePoints.size() < ENOUGH_FOR_A_LENS) return seen;
    seen.solution = *SolveIntrinsicsSparsely(objectPoints, imagePoints, imageSize, model, options).solution;
  } catch (const cv::Exception& fault) {
    Log::debug("No camera for a proposal: %s", OneLine(fault.what()).c_str());
  }
  return seen;
}

/// A calibrator's template with the middle of its points in the place of its origin.
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
  return finder == Calibrator::FINDER_STANDARD ? 5.0 * LARGEST_RADIUS
                                               : std::numeric_limits<double>::infinity();
}

}  // namespace

PoseProposal Calibrator::ProposePose(const int& model) {
  if (kind_ != MONOCULAR || GetStatus() == STATUS_PROGRESS) return {};
  std::unique_lock<std::mutex> data(dataLock_);
  const auto objectPoints = records_.objectRecords;
  const auto imagePoints = records_.imageRecords;
  data.unlock();
  SparseOptions options;
  options.robust = solver_->robust;
  options.discRadius = solver_->discRadius;
  const cv::Size imageSize(frameWidth_, frameHeight_);

  const Seen seen = SeenIn(objectPoints, imagePoints, imageSize, model, options);
  const solver::Knowledge knowledge = solver::KnowledgeFrom(seen.solution, seen.target.views, imageSize);
  cv::Vec3d middle;
  const solver::NextPose next = solver::ChooseNextPose(knowledge, Centred(objectTemplate_, middle), imageSize,
                                                       MostSpacing(finder_->Get()));

  PoseProposal proposal;
  proposal.centres = next.candidate.view.image;
  cv::Rodrigues(next.candidate.pose.R, proposal.rvec);
  proposal.tvec = next.candidate.pose.t - next.candidate.pose.R * middle;
  proposal.deviation = next.now;
  proposal.deviationThen = next.then;
  proposal.nominal = knowledge.nominal;
  return proposal;
}

bool Calibrator::AskForPose(const std::vector<cv::Point2d>& centres) {
  if (kind_ != MONOCULAR) {
    Log::error("A stereo calibrator has no assistant for a pose.");
    return false;
  }
  auto assistant =
      std::make_shared<CalibAssistant>(frameWidth_, frameHeight_, patternSize_.width, patternSize_.height);
  if (!assistant->StartAt(centres)) return false;
  const std::lock_guard<std::mutex> lock(dataLock_);
  assistant_ = std::move(assistant);
  return true;
}
