/// Which hint is shown, so that it can be read and obeyed.
#pragma once

#include <array>
#include <string>

#include "assistant/GuidePose.h"
#include "velmora/Guide.h"

namespace velmora {

/// The hint in a picture that is mirrored.
GuideHint Mirrored(GuideHint hint);

/// The hint that undoes a move; None for others.
GuideHint Opposite(GuideHint hint);

/// The way back into the picture for a grid that has just left it: away from the edge that it was nearest to.
/// Where it was not near to any, or near to two opposite ones, there is no such way.
GuideHint HintInto(const std::vector<cv::Point2d>& centres, const cv::Size& frame);

/// Chooses among hints from frame to frame. One that is shown stays until it was obeyed, or until another one
/// matters much more, or more for long: a line that changes all the time cannot be followed.
class GuideLine {
 public:
  /// The largest of the differences; `reach` is the distance at which they no longer matter, `turn` what is
  /// to be turned in the picture, radians, -pi to pi.
  GuideHint ChooseMove(const std::array<GuideDifference, 6>& differences, double turn, double reach,
                       double time);
  /// The grid has just left the picture: what leads back into it is this, and what is its opposite comes
  /// after everything else for a while.
  void LeftThePicture(GuideHint back, double time);
  /// A hint that holds as soon as it has held for a while: what a search says of single frames wavers.
  GuideHint Await(GuideHint hint, double time);
  /// A hint that holds from now on.
  GuideHint Show(GuideHint hint, double time);

  void Forget() { *this = GuideLine(); }

 private:
  double WorthOf(const GuideDifference& difference, double time) const;

  GuideHint shown_ = GuideHint::None;
  double shownSince_ = 0.0;
  GuideHint other_ = GuideHint::None;  ///< that would be shown, if it lasts
  double otherSince_ = 0.0;
  GuideHint ledOut_ = GuideHint::None;
  double ledOutAt_ = 0.0;
};

}  // namespace velmora
