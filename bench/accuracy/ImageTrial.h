/// Calibrations from rendered images: the search of the grid counts too.
#pragma once

#include <cstdint>
#include <vector>

#include "Trial.h"

namespace accuracy {

/// What the images are like.
struct ImageCase {
  LensKind lens = LensKind::Strong;
  double fieldOfView = 65.0;
  int views = 12;
  double blur = 0.6;   ///< sigma, pixels
  double grain = 2.0;  ///< sigma of the sensor's noise, grey levels
};

/// Points found in images, with the poses' true ones beside them.
struct FoundPoints {
  Points found;
  Points truth;
  std::vector<std::vector<double>> deviations;  ///< of fine centres
  int images = 0;

  /// Root of the mean square of the distances from the truth, pixels; of the found grids.
  double CentreError() const;
};

/// The results of both finders for one set of images, and of centres that were measured anew.
struct SearchedImages {
  world::Camera camera;
  FoundPoints standard;
  FoundPoints robust;
  FoundPoints fine;
};

/// Renders and searches. The same case and seed give the same points.
SearchedImages SearchImages(const ImageCase& what, std::uint64_t seed);

/// Calibrates from what was found, with fewer views if some were missed; with four or less it fails.
Trial RunImageTrial(const world::Camera& camera, const FoundPoints& points, int model, int solver,
                    bool correctDiscs);

}  // namespace accuracy
