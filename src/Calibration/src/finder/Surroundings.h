/// What the discs around a grid point say about the disc on it.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "finder/GridProjection.h"
#include "finder/Rim.h"

namespace velmora::finder {

/// The disc at a grid index as those around it predict it, itself left aside: position and size by
/// polynomials, whatever the lens; the contrast is left alone. False when there are too few.
bool ExpectDisc(const GridProjection& projection, const LabelledDiscs& discs, size_t k,
                ExpectedDisc& expected);

/// The contrasts of the discs around grid points, each found when it is asked for first. Projection, image
/// and discs must outlive it and stay as they are. For one thread.
class Contrasts {
 public:
  Contrasts(const GridProjection& projection, const cv::Mat& grey, const LabelledDiscs& discs);

  /// The median contrast between paper and ink of the nearest discs, grey levels; 0 when they have none.
  double Around(size_t k);

 private:
  double Of(size_t k);

  const GridProjection& projection_;
  const cv::Mat& grey_;
  const LabelledDiscs& discs_;
  std::vector<double> known_;  ///< 0 for discs without contrast, negative for those that nobody asked for
};

}  // namespace velmora::finder
