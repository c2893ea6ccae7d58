/// Asks for poses until the target accuracy is reached.
#pragma once

#include <string>

#include "Calibrator.h"

namespace guided {

/// Has the assistant show the most informative pose, given the snapshots so far.
class NextPoses {
 public:
  enum class State { Asked, Known, GivenUp };

  /// The target accuracy: to how many pixels projections are to be known, over the whole image; and how many
  /// snapshots may be taken for it. The model is one of common::LensModels; until it is chosen poses are
  /// asked for as the rational one needs them.
  NextPoses(Calibrator& calibrator, double target, int most, int model)
      : calibrator_(calibrator), target_(target), most_(most), model_(model) {}

  /// Asks for the next pose, or says why there is none: the target accuracy is reached, or no more may be (or
  /// can be) asked.
  State Ask();

  /// How well the camera was known at the last call, in words.
  std::string Precision() const;

 private:
  PoseProposal Propose() const;

  Calibrator& calibrator_;
  double target_;
  int most_;
  int model_;
  PoseProposal proposal_;
};

}  // namespace guided
