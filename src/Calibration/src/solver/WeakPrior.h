/// The weak prior that keeps the larger lens models' coefficients small and their curves smooth, and what it
/// must not let pass.
#pragma once

#include <vector>

#include "model/Rig.h"

namespace velmora::solver {

/// The largest distance from the axis, at depth one, of any point that the camera (by its number) observed.
double DataRadius(const Camera& camera, size_t number, const std::vector<TargetView>& views);

/// How far from the axis a camera sees.
struct Spread {
  double radius = 0.0;  ///< of the data, at depth one
  double angle = 0.0;   ///< of the image, radians
};

/// Whether the image reaches so far from the axis that the prior is one of the curve.
bool IsWide(const Spread& spread);

Spread SpreadOf(const Camera& camera, size_t number, const std::vector<TargetView>& views);

/// Standard deviations that leave the coefficients room for whatever real lenses do: the denominator may
/// change by half at the rim of the data, prisms by a hundredth, and the sensor may lean by a degree. Far
/// from the axis, where that would hold fisheyes back, coefficients may be what those need, and the curve of
/// the lens is smooth over the whole image instead. `strength` is how much stronger the prior of the
/// denominator is, and its square that of the curve.
Prior PriorFor(const Spread& spread, double variance, double strength);

/// True when the denominator of the radial distortion stays well above zero over the whole image.
bool IsFreeOfPoles(const Intrinsics& intrinsics, const cv::Size& imageSize);

}  // namespace velmora::solver
