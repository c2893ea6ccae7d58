/// The list of poses that a model of the assistant is made from.
#pragma once

#include <istream>
#include <string>
#include <vector>

#include "Placement.h"

namespace poses {

/// One pose a line: x, y, span, tiltY, tiltX, roll (see world::Appearance; tilts and roll in degrees), then a
/// remark. Empty lines and lines that begin with # are left out. Raises std::runtime_error that names the
/// line for one that does not hold six numbers or one out of range, and for a list without a pose.
std::vector<world::Appearance> ReadPoseList(std::istream& text);

/// Reads the list from a file.
std::vector<world::Appearance> ReadPoseList(const std::string& path);

}  // namespace poses
