/// Looks for discs that are not among the candidates, where the others predict them.
#include "finder/MissingDiscs.h"

#include <cmath>
#include <opencv2/imgproc.hpp>

#include "finder/Regions.h"

namespace velmora::finder {

namespace {

constexpr double LEAST_CONTRAST = 20.0;
constexpr double FARTHEST_OFF = 0.30;  ///< steps

/// The window around a grid point, which shows its disc and no whole neighbour.
cv::Rect WindowAround(const cv::Point2d& at, const cv::Matx22d& slope, const cv::Size& size) {
  const double halfWidth = 0.75 * (std::abs(slope(0, 0)) + std::abs(slope(0, 1))) + 2.0;
  const double halfHeight = 0.75 * (std::abs(slope(1, 0)) + std::abs(slope(1, 1))) + 2.0;
  const cv::Rect2d wanted(at.x - halfWidth, at.y - halfHeight, 2.0 * halfWidth, 2.0 * halfHeight);
  const cv::Rect2d inside = wanted & cv::Rect2d(0.0, 0.0, size.width, size.height);
  return {static_cast<int>(inside.x), static_cast<int>(inside.y), static_cast<int>(inside.width),
          static_cast<int>(inside.height)};
}

/// The spot nearest to a point; its area is 0 without one.
Region NearestSpot(const cv::Mat& grey, const cv::Rect& window, const cv::Point2d& at) {
  Region nearest;
  double low = 0.0;
  double high = 0.0;
  const cv::Mat part = grey(window);
  cv::minMaxLoc(part, &low, &high);
  if (high - low < LEAST_CONTRAST) return nearest;
  for (Region& region : FindDarkRegions(part, {cvRound(0.5 * (low + high))}, RegionLimits())) {
    region.centroid += cv::Point2d(window.tl());
    if (nearest.area == 0.0 || cv::norm(region.centroid - at) < cv::norm(nearest.centroid - at)) {
      nearest = region;
    }
  }
  return nearest;
}

}  // namespace

void RecoverMissing(const GridProjection& projection, const cv::Mat& grey, LabelledDiscs& discs) {
  const LabelledDiscs known = discs;
  const double usual = known.MedianRadius();
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    if (known.Has(k)) continue;
    const cv::Point2d at = projection.Predict(known.gridIndices[k]);
    const cv::Rect window = WindowAround(at, projection.Slope(known.gridIndices[k]), grey.size());
    if (window.width < 4 || window.height < 4) continue;
    const Region spot = NearestSpot(grey, window, at);
    const double radius = std::sqrt(spot.area / CV_PI);
    const bool fits =
        radius > 0.5 * usual && radius < 1.8 * usual &&
        cv::norm(spot.centroid - at) < FARTHEST_OFF * projection.Step(known.gridIndices[k]) + 0.5;
    if (!fits) continue;
    discs.centres[k] = spot.centroid;
    discs.radii[k] = radius;
  }
}

bool ReachesEdge(const GridProjection& projection, const LabelledDiscs& discs, const cv::Size& size) {
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    if (!discs.Has(k)) continue;
    const double room = projection.Step(discs.gridIndices[k]) + discs.radii[k];
    const cv::Point2d& at = discs.centres[k];
    if (at.x < room || at.y < room || at.x > size.width - 1 - room || at.y > size.height - 1 - room)
      return true;
  }
  return false;
}

bool MissesOutside(const GridProjection& projection, const LabelledDiscs& discs, const cv::Size& size) {
  const double margin = discs.MedianRadius() + 1.0;
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    if (discs.Has(k)) continue;
    const cv::Point2d at = projection.Predict(discs.gridIndices[k]);
    const bool inside =
        at.x > margin && at.y > margin && at.x < size.width - 1 - margin && at.y < size.height - 1 - margin;
    if (!inside) return true;
  }
  return false;
}

}  // namespace velmora::finder
