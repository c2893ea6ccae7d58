/// Sheets before fisheyes, as near as to span a wide angle.
#pragma once

#include <opencv2/core.hpp>

#include "Camera.h"
#include "finder/GridProjection.h"

namespace unit {

/// Where a sheet is before a fisheye; degrees.
struct WideView {
  double angle = 0.0;   ///< of the sheet's middle, from the axis
  double turn = 0.0;    ///< of the sheet's middle, about the axis
  double span = 50.0;   ///< the largest angle between lines of sight to two discs
  double tilt = 0.0;    ///< against the line of sight
  double toward = 0.0;  ///< the direction of the tilt
  double roll = 0.0;
};

/// The largest angle between lines of sight to two discs, degrees.
double SpanOf(const world::Sheet& sheet, const world::Pose& pose);

/// False when a sheet that is there is not all inside the image, or spans no such angle.
bool PlaceWideSheet(const world::Camera& camera, const world::Sheet& sheet, const WideView& view,
                    world::Pose& pose);

/// A view of any roll, tilted by less than `mostTilt`; its middle is a share of the way from the axis to the
/// farthest place where the sheet is inside the image. False where there is none.
bool PlaceWideSheet(const world::Camera& camera, const world::Sheet& sheet, double share, double span,
                    double mostTilt, cv::RNG& random, world::Pose& pose);

/// The discs of a view, as a search would have labelled them.
velmora::finder::LabelledDiscs DiscsSeen(const world::Camera& camera, const world::Sheet& sheet,
                                         const world::Pose& pose);

}  // namespace unit
