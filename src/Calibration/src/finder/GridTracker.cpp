/// Where the grid is expected in the next frame of a sequence, from what the last ones showed.
#include "finder/GridTracker.h"

#include <algorithm>

#include "finder/NearbyGrid.h"
#include "finder/Pattern.h"

namespace velmora {

namespace {

/// How far off its expected place a disc may be, steps: neighbours are 1.4 steps apart.
constexpr double SLACK = 0.3;
/// What moves by less between two frames stands still, pixels.
constexpr double STILL = 1.0;

}  // namespace

std::vector<finder::ExpectedGrid> GridTracker::Expected(const cv::Size& frame, const cv::Size& grid) const {
  if (last_.empty() || frame != frame_ || grid != grid_) return {};
  finder::ExpectedGrid still;
  still.slack = SLACK;
  still.discs = {grid_, finder::PatternIndices(grid_), last_, radii_};
  double farthest = 0.0;
  for (size_t k = 0; k < before_.size(); ++k) {
    farthest = std::max(farthest, cv::norm(last_[k] - before_[k]));
  }
  if (farthest < STILL) return {still};
  finder::ExpectedGrid moving = still;
  for (size_t k = 0; k < before_.size(); ++k) moving.discs.centres[k] += last_[k] - before_[k];
  return {moving, still};
}

void GridTracker::Remember(const cv::Size& frame, const cv::Size& grid, const GridFinding& finding) {
  const bool same = frame == frame_ && grid == grid_;
  before_.clear();
  if (same) before_.swap(last_);
  last_.clear();
  frame_ = frame;
  grid_ = grid;
  if (!finding.Found() || finding.tone == DiscTone::Faint) return;
  light_ = finding.tone == DiscTone::Light;
  last_ = finding.centres;
  radii_ = finding.radii;
}

}  // namespace velmora
