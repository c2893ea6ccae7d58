/// Keeps the optics of a camera as they are while it is calibrated: a camera matrix is of one focus and one
/// zoom.
#pragma once

#include <string>

#include "guided/VideoDevice.h"

namespace guided {

/// Whether the camera focuses by itself now.
bool FocusesByItself(const VideoDevice& device);

/// Switches autofocus off, where it is on, and leaves the focus where it is. The zoom is left alone. Lines
/// that tell what was done, that it was refused, and of a zoom that is not at its default; empty where there
/// is nothing to tell.
std::string FixOptics(const VideoDevice& device);

}  // namespace guided
