/// The weak prior that keeps the larger lens models' coefficients small, and what it must not let pass.
#pragma once

#include <vector>

#include "model/Rig.h"

namespace velmora::solver {

/// The largest distance from the axis, at depth one, of any point that the camera (by its number) observed.
double DataRadius(const Camera& camera, size_t number, const std::vector<TargetView>& views);

/// Standard deviations that leave the coefficients room for whatever real lenses do: at the rim of the data
/// the denominator may change by half, prisms by a hundredth, and the sensor may lean by a degree.
/// `denominator` is how much stronger that of the denominator is.
Prior PriorFor(double radius, double variance, double denominator);

/// True when the denominator of the radial distortion stays well above zero over the whole image.
bool IsFreeOfPoles(const Intrinsics& intrinsics, const cv::Size& imageSize);

}  // namespace velmora::solver
