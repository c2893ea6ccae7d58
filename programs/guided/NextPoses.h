/// Asks for poses until the camera is known as well as it was wished.
#pragma once

#include <string>

#include "Calibrator.h"

namespace guided {

/// Has the assistant show the pose that tells most about the camera, given the snapshots so far.
class NextPoses {
 public:
  enum class State { Asked, Known, GivenUp };

  /// The wish: to how many pixels projections are to be known, over the whole image; and how many snapshots
  /// may be taken for it.
  NextPoses(Calibrator& calibrator, double wish, int most)
      : calibrator_(calibrator), wish_(wish), most_(most) {}

  /// Asks for the next pose, or says why there is none: the wish is met, or no more may be (or can be) asked.
  State Ask();

  /// How well the camera was known at the last call, in words.
  std::string Precision() const;

 private:
  Calibrator& calibrator_;
  double wish_;
  int most_;
  PoseProposal proposal_;
};

}  // namespace guided
