/// What of the snapshots was seen: the points that solvers take when some are parts of the grid.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "calibrator/Snapshots.h"

namespace velmora {

/// Snapshots without the points that a camera did not see. Of a pair, points that one camera did not see are
/// taken from both. The lists have an entry for each snapshot.
struct ObservedPoints {
  std::vector<std::vector<cv::Point3d>> target;
  std::vector<std::vector<std::vector<cv::Point2d>>> cameras;  ///< of each camera
  /// Standard deviations of these points, of each camera: pixels; empty lists where they are not known.
  std::vector<std::vector<std::vector<double>>> deviations;
  std::vector<std::vector<int>> numbers;  ///< in the grid, of the points; empty: all of them are there

  /// From a number among the points that were seen to that in the grid. Numbers of no points stay.
  int InGrid(size_t snapshot, int point) const;

  /// Makes the points of what was left out those of the grid.
  template <typename Items>
  Items InGrid(Items items) const {
    for (auto& item : items) item.point = InGrid(item.view, item.point);
    return items;
  }
};

ObservedPoints ObservedIn(const SnapshotList& snapshots);

/// The fewest points of a grid that a snapshot may have: three quarters.
int FewestPoints(const cv::Size& grid);

/// Why the lists, of one camera or several, are no snapshot of the grid, as a sentence; empty when they are
/// one. Weights are 1 for points that were seen, 0 for others; those that all cameras saw must be enough.
std::string FaultOfSnapshot(const cv::Size& grid, const std::vector<CameraSnapshot>& views);

/// Whether a point of the snapshot was not seen.
bool IsPart(const CameraSnapshot& view);

/// The points of the snapshot that were seen.
std::vector<cv::Point2d> SeenPointsOf(const CameraSnapshot& view);

/// The snapshot without weights when all points were seen.
CameraSnapshot WithoutNeedlessWeights(CameraSnapshot view);

}  // namespace velmora
