/// The cameras that accuracy is measured with.
#pragma once

#include <string>

#include "Camera.h"
#include "Rig.h"

namespace accuracy {

/// What the true lens is like: polynomials that the classic model holds, with little and with much barrel
/// distortion; one that images angles evenly as fisheyes do, which takes the rational model; one on a tilted
/// sensor, which takes the full model.
enum class LensKind { Light, Strong, WideAngle, Tilted };

std::string NameOf(LensKind kind);

/// A camera of 640 x 480 pixels, not quite square ones, with its principal point off the middle, which sees
/// `degrees` from its left to its right edge, distortion included. Light and strong distortion are shares of
/// the image, the same for any field of view: 4 % and 25 % at the corners.
world::Camera MakeCamera(LensKind kind, double degrees);

/// Two of them side by side, the right one a little different, a little turned and out of line, both turned
/// to each other by `toeIn` degrees in all.
world::Pair MakeRig(LensKind kind, double degrees, double baseline, double toeIn);

}  // namespace accuracy
