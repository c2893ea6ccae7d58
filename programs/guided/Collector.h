/// Searches the grid in what the cameras show, and keeps what is found: one camera or two.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Calibrator.h"
#include "guided/Outcome.h"

namespace guided {

/// What is found of the grid in one camera's image.
struct Finding {
  std::vector<cv::Point2d> centres;  ///< of all circles, pixels; empty: it is not found
  /// Of each circle 1, or 0 where it was not seen and is only where it would be. Empty: all were seen.
  std::vector<double> weights;
};

/// The engine behind the window. Used by one thread.
class Collector {
 public:
  Collector(const ComputationSettings& settings, size_t cameras);

  size_t Cameras() const { return cameras_; }
  /// Of each camera; the images are of the processing size, and stay as they are.
  std::vector<Finding> Search(const std::vector<cv::Mat>& images);
  /// Why the last search found nothing, or not in all images; empty when it did.
  std::string WhyNotFound();

  /// Makes what the last search saw a snapshot, also a part of the grid, once. False when there is nothing.
  bool Keep();
  void Add(const velmora::GridSnapshot& snapshot);
  void RemoveLast();
  void Clear();
  /// What was kept last.
  velmora::GridSnapshot Last();
  int Count();

  /// The pose that tells most after what is kept, for that model (one of common::LensModels).
  PoseProposal Propose(int model);

 private:
  const size_t cameras_;
  Calibrator calibrator_;
};

}  // namespace guided
