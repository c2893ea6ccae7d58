/// Rigs of many cameras: in a row, and in a ring around what they look at.
#pragma once

#include <cstdint>

#include "Rig.h"

namespace world {

// Camera 0 is the given one. Each of the others has a lens that differs a little (focal length to 2 %,
// principal point to 1.5 % of the image, distortion to 10 %), is turned up to 3 degrees about each axis and
// moved up to a twentieth of the baseline or radius, so that nothing is symmetric. The same seed gives the
// same rig. All throw std::invalid_argument for fewer than two cameras, and for lengths and angles that are
// not positive.

/// Cameras that look the same way, each `baseline` metres to the right of the one before.
Rig RowRig(const Camera& camera, int count, double baseline, std::uint64_t seed = 1);

/// Cameras on a circle of that radius (metres), each turned by `degrees` against the one before, all looking
/// at the circle's middle, which is `radius` before camera 0. All together they take no more than the whole
/// circle.
Rig RingRig(const Camera& camera, int count, double radius, double degrees, std::uint64_t seed = 1);

/// The angle between neighbours of a ring whose ends, with three cameras or more, do not see a sheet's front
/// together (SeesSheet): 40 degrees for five to nine cameras, more for fewer, less for more.
double RingAngle(int count);

/// The radius at which the grid, in the middle of the ring, spans about half the image.
double RingRadius(const Camera& camera, const Sheet& sheet = Sheet());

}  // namespace world
