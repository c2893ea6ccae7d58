/// What of a rig did not stay as it was from view to view, or else is wrong with the sheet.
#pragma once

#include <string>
#include <vector>

#include "quality/SheetEffect.h"

namespace velmora {

/// Of a solution of two cameras or more: a camera that moved in the rig, a focal length or a principal point
/// that changed where intrinsics are estimated, or what EffectOfSheet tells. Of several that move a camera of
/// the rig by enough to matter, the one that takes most off the residuals. `names` are those of the cameras,
/// as in "the right camera".
SheetEffect EffectOnRig(const Solution& solution, const std::vector<std::string>& names);

}  // namespace velmora
