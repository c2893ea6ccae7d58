/// Searches the grid in what the cameras show, and keeps what is found: one camera or two.
#include "guided/Collector.h"

#include "common/LensModels.h"

namespace guided {

Collector::Collector(const ComputationSettings& settings, size_t cameras)
    : cameras_(cameras),
      calibrator_(settings.grid, settings.unit, cameras > 1 ? Calibrator::STEREO : Calibrator::MONOCULAR,
                  settings.frame.width, settings.frame.height) {
  common::ApplyEngineOptions(settings.engine, settings.unit, calibrator_);
  calibrator_.SetPartialGrids(true);
}

std::vector<Finding> Collector::Search(const std::vector<cv::Mat>& images) {
  std::vector<Finding> found(cameras_);
  // A search may draw on its frames.
  cv::Mat first = images.at(0).clone();
  if (cameras_ == 1) {
    calibrator_.DetectPartial(first, found[0].centres, found[0].weights, false);
    return found;
  }
  cv::Mat second = images.at(1).clone();
  calibrator_.DetectStereoPoints(first, second, found[0].centres, found[1].centres, false);
  return found;
}

std::string Collector::WhyNotFound() {
  return calibrator_.WhyNotFound();
}

bool Collector::Keep() {
  std::vector<cv::Point2d> left;
  std::vector<cv::Point2d> right;
  return cameras_ == 1 ? calibrator_.AddSeen(left) : calibrator_.AddSeen(left, right);
}

void Collector::Add(const velmora::GridSnapshot& snapshot) {
  calibrator_.AddSnapshot(snapshot);
}

void Collector::RemoveLast() {
  calibrator_.RemoveSnapshot(Count() - 1);
}

void Collector::Clear() {
  calibrator_.Reset();
}

velmora::GridSnapshot Collector::Last() {
  return calibrator_.GetSnapshot(Count() - 1);
}

int Collector::Count() {
  return calibrator_.GetNumberOfRecords();
}

PoseProposal Collector::Propose(int model) {
  if (model == common::MODEL_FISHEYE) return calibrator_.ProposeFisheyePose();
  return calibrator_.ProposePose(model == common::MODEL_AUTO ? Calibrator::MODEL_RATIONAL : model);
}

}  // namespace guided
