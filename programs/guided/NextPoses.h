/// Asks for poses until the target accuracy is reached.
#pragma once

#include <functional>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "PoseProposal.h"

namespace guided {

/// Asks for the pose that tells most after the views so far.
class NextPoses {
 public:
  enum class State { Asked, Known, GivenUp };

  /// What proposes a pose, given the views that are there.
  using Proposing = std::function<PoseProposal()>;

  /// The target accuracy: to how many pixels projections are to be known, over the whole image; and how many
  /// views may be taken for it.
  NextPoses(Proposing propose, double target, int most)
      : propose_(std::move(propose)), target_(target), most_(most) {}

  /// Asks for the next pose, with that many views there, or says why there is none: the target accuracy is
  /// reached, or no more may be (or can be) asked.
  State Ask(int taken);

  /// The centres of the pose that was asked for.
  const std::vector<cv::Point2d>& Pose() const { return proposal_.centres; }
  /// How well the camera was known at the last call, in words.
  std::string Precision() const;

 private:
  const Proposing propose_;
  const double target_;
  const int most_;
  PoseProposal proposal_;
};

}  // namespace guided
