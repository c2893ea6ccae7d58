/// How far two results of one camera are apart.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Export.h"
#include "velmora/CameraResult.h"

namespace velmora {

struct ComparisonOptions {
  /// Pixels from one place of the map to the next; 0: a fortieth of the image's longer side.
  double step = 0.0;
  /// A convex polygon, pixels: where there were data (a verdict's dataArea). The rotation is then the best
  /// one within it, and the differences are those within it; the map is of the whole image all the same.
  /// Empty: all of the image counts.
  std::vector<cv::Point2f> area;
};

/// The differences between the pixels where two lenses put the same rays, after the best rotation between
/// both cameras' frames, which no calibration can tell from a rotation of all poses: the one that makes the
/// sum of their squares least. They are taken at the middles of the cells of a regular grid over the image:
/// each is a pixel of the first lens. Where a lens images nothing, or no ray as far from the axis, there is
/// no difference.
struct VELMORA_API ResultComparison {
  double mean = 0.0;     ///< pixels
  double rms = 0.0;      ///< root of the mean square, pixels
  double largest = 0.0;  ///< pixels
  cv::Point2d where;     ///< the pixel of the first lens with the largest
  /// What a ray of the first camera's frame is in the second's.
  cv::Matx33d rotation = cv::Matx33d::eye();
  double angle = 0.0;  ///< of that rotation, degrees
  int compared = 0;    ///< cells that count
  /// Share of the cells that should have counted, for which one of the lenses has no ray.
  double incomparable = 0.0;
  double stepX = 0.0;  ///< from one cell to the next, pixels
  double stepY = 0.0;
  /// CV_64FC2, an element for each cell: by how much the second lens puts the ray to the right and below of
  /// where the first has it, pixels; NaN where that is not known.
  cv::Mat map;

  /// The lengths of the map's differences, CV_64F; NaN where they are not known.
  cv::Mat Lengths() const;
  /// An 8-bit picture of the image's size in colours, the lengths with a scale from 0 to the largest one;
  /// grey where they are not known.
  cv::Mat Picture(const cv::Size& size) const;
};

/// Compares the second result with the first one; a plain lens with a fisheye, too. Raises
/// std::invalid_argument in plain English for results that are none, images of different sizes, and where no
/// place is seen by both. Thread-safe.
VELMORA_API ResultComparison CompareResults(const CameraResult& first, const CameraResult& second,
                                            const ComparisonOptions& options = {});

}  // namespace velmora
