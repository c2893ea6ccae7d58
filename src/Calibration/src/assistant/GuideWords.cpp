/// What the guide says.
#include "velmora/Guide.h"

namespace velmora {

std::string Guide::Words(GuideHint hint) {
  switch (hint) {
    case GuideHint::None:
      return "";
    case GuideHint::ShowGrid:
      return "show the grid";
    case GuideHint::PartOutside:
      return "part of the grid is outside the picture";
    case GuideHint::PartHidden:
      return "part of the grid is hidden";
    case GuideHint::ShowRightToo:
      return "the right camera does not see the grid";
    case GuideHint::TurnRound:
      return "turn it round";
    case GuideHint::Left:
      return "left";
    case GuideHint::Right:
      return "right";
    case GuideHint::Up:
      return "up";
    case GuideHint::Down:
      return "down";
    case GuideHint::Closer:
      return "closer";
    case GuideHint::Farther:
      return "farther";
    case GuideHint::Clockwise:
      return "turn it clockwise";
    case GuideHint::Anticlockwise:
      return "turn it anticlockwise";
    case GuideHint::LeftEdgeAway:
      return "tilt the left edge away from the camera";
    case GuideHint::RightEdgeAway:
      return "tilt the right edge away from the camera";
    case GuideHint::TopEdgeAway:
      return "tilt the top edge away from the camera";
    case GuideHint::BottomEdgeAway:
      return "tilt the bottom edge away from the camera";
    case GuideHint::HoldStill:
      return "hold still";
    case GuideHint::Sharpen:
      return "out of focus: set the focus";
    case GuideHint::Skip:
      return "taken already: skip it";
  }
  return "";
}

}  // namespace velmora
