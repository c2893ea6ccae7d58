/// What the image shows at grid indices where a disc could be, and where none is.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "finder/DiscWindow.h"
#include "finder/GridProjection.h"

namespace velmora::finder {

enum class PointState {
  Beyond,  ///< a disc would be cut by the image's border, or lie beyond it
  Paper,   ///< blank: a disc would be seen
  Other    ///< anything that may hide a disc
};

/// Looks at grid indices of the pattern and around it. Projection and image must outlive it. For one thread.
class Sights {
 public:
  Sights(const GridProjection& projection, const LabelledDiscs& discs, const cv::Mat& grey);

  /// What is at a grid index of which no disc is known. Where the border would cut less than half of a disc,
  /// blank paper counts too.
  PointState At(const cv::Point& gridIndex) const;

  /// Whether At() is PointState::Beyond, in less time.
  bool IsBeyond(const cv::Point& gridIndex) const;

  /// True when the middle of a known disc is as dark as that of the others around it.
  bool ShowsDisc(const cv::Point2d& centre, const cv::Point& gridIndex) const;

  /// True when a disc of the grid's usual size at this pixel, by the image's slope around the grid index, is
  /// nearer to the border than its blur reaches, or than `steps`.
  bool IsCut(const cv::Point2d& centre, const cv::Point& gridIndex, double steps) const;

  /// What paper and ink look like around a grid index, by the discs next to it. False when none can tell.
  bool TonesAround(const cv::Point& gridIndex, Tones& tones) const;

 private:
  enum class Told { NotYet, Yes, No };

  /// A disc that says what paper and ink look like, when it is asked for the first time.
  struct Witness {
    DiscWindow window;
    Told told = Told::NotYet;
    Tones tones;
  };

  cv::Matx22d SlopeAt(const cv::Point& gridIndex) const;
  bool Ask(size_t k, Tones& tones) const;
  bool IsAll(double darkness, const cv::Point2d& centre, const cv::Matx22d& reach, const Tones& tones) const;

  const GridProjection& projection_;
  const cv::Mat& grey_;
  std::vector<cv::Point> gridIndices_;      ///< of the known discs
  mutable std::vector<Witness> witnesses_;  ///< as many
  double radius_ = 0.0;                     ///< of the discs, steps
};

}  // namespace velmora::finder
