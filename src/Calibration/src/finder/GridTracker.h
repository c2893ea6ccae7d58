/// Where the grid is expected in the next frame of a sequence, from what the last ones showed.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "finder/GridFinding.h"

namespace velmora {

namespace finder {
struct ExpectedGrid;
}

/// The last two findings of one camera. A value; for one thread at a time.
class GridTracker {
 public:
  /// Where discs are expected in a frame of this size: moved on as between the last two frames, and where
  /// they were last. Nowhere when the last frame, of the same size, did not show such a grid whole, or only
  /// a faint one.
  std::vector<finder::ExpectedGrid> Expected(const cv::Size& frame, const cv::Size& grid) const;

  /// Whether the expected discs are light ones.
  bool ExpectsLight() const { return light_; }

  /// Takes note of what a frame showed.
  void Remember(const cv::Size& frame, const cv::Size& grid, const GridFinding& finding);

 private:
  cv::Size frame_;
  cv::Size grid_;
  bool light_ = false;
  std::vector<cv::Point2d> before_;  ///< the centres of the last frame but one, if it showed any
  std::vector<cv::Point2d> last_;
  std::vector<double> radii_;  ///< of the last frame
};

}  // namespace velmora
