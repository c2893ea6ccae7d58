/// The lens of a result, as the solver has it.
#pragma once

#include "model/Intrinsics.h"
#include "velmora/CameraResult.h"

namespace velmora {

/// With all of the model's parameters estimated: 9, 12 or 18, of a fisheye 8. The result must be a checked
/// one.
Intrinsics IntrinsicsOf(const CameraResult& result);

}  // namespace velmora
