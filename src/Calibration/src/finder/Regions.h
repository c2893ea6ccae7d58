/// Dark connected regions of an image, at several grey levels in one pass over it.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace velmora::finder {

/// A connected set of pixels darker than a level.
struct Region {
  int level = 0;         ///< number of the level, from 0
  double area = 0.0;     ///< pixels
  cv::Point2d centroid;  ///< pixels
  double xx = 0.0;       ///< central second moments, divided by the area
  double xy = 0.0;
  double yy = 0.0;
  cv::Rect box;
};

/// Rows of an image, from `top` on, and of each the columns that belong to the part: one at least.
struct ImagePart {
  int top = 0;
  std::vector<cv::Range> rows;

  static ImagePart Whole(const cv::Size& size);
  int Bottom() const { return top + static_cast<int>(rows.size()); }
};

struct RegionLimits {
  double minArea = 0.0;
  double maxArea = 1e9;
  /// A level with more runs of dark pixels than this is given up where it happens: it lies in the noise.
  int maxRunsPerLevel = 1 << 30;
  /// Of each level the row before which it is given up in any case; none is when there are no such rows.
  std::vector<int> endOfLevel;
  /// Regions that reach the part's outermost pixels are passed over: they go on outside.
  bool skipCut = true;
  /// Other regions are passed over too, unless it is null.
  bool (*wanted)(const Region&) = nullptr;
};

/// The regions of pixels with a value below each of the levels, which ascend, in the limits. Pixels are
/// connected along rows and columns only, so that discs stay apart as long as they can. `grey` is CV_8UC1.
std::vector<Region> FindDarkRegions(const cv::Mat& grey, const std::vector<int>& levels,
                                    const RegionLimits& limits);

/// How many regions there are below the least area.
struct SmallRegions {
  double leastArea = 0.0;  ///< smaller ones do not count
  int count = 0;
};

/// Those within a part of the image. `small` may be null.
std::vector<Region> FindDarkRegions(const cv::Mat& grey, const ImagePart& part,
                                    const std::vector<int>& levels, const RegionLimits& limits,
                                    SmallRegions* small = nullptr);

}  // namespace velmora::finder
