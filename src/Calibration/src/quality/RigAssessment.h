/// Assesses a computed rig of cameras.
#pragma once

#include "model/Solution.h"
#include "velmora/RigVerdict.h"

namespace velmora {

/// Assesses a solution of two cameras or more. Cameras are numbered from 0 in its remarks.
RigVerdict AssessRig(const Solution& solution);

}  // namespace velmora
