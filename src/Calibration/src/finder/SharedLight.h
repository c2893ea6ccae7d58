/// What the discs of a grid tell each other about the light.
#pragma once

#include <vector>

#include "finder/DiscFit.h"

namespace velmora::finder {

/// Improves the centres of fits that hold by what the others say of the light: one disc alone cannot tell
/// well whether it is unevenly lit or somewhere else, but the light on a sheet changes little from disc to
/// disc. How little is measured, so that light which does change is left to each disc, as is a disc whose
/// light is unlike the others'. Too few fits stay as they are.
void ShareLight(std::vector<FittedDisc>& discs);

}  // namespace velmora::finder
