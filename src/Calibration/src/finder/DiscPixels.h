/// The pixels that say where a disc is.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "finder/DiscFit.h"
#include "finder/DiscModel.h"

namespace velmora::finder {

/// Pixels around a disc, row by row, in chunks for DiscModel. The last pixel fills the last chunk.
class DiscPixels {
 public:
  enum class Choice { Few, All };

  /// Takes the pixels near the rim that the unknowns describe, from `origin`, and some of the others, as far
  /// as nothing else is around the disc. Few leaves out up to three of four where that leaves enough.
  DiscPixels(const cv::Mat& grey, const FoundDisc& found, const cv::Point& origin,
             const DiscModel::Unknowns& unknowns, double radius, Choice choice);
  DiscPixels() = default;

  size_t Count() const { return places_.size(); }
  const std::vector<DiscModel::Pixels>& Chunks() const { return chunks_; }
  /// How many pixels of a chunk count.
  Eigen::Index CountIn(size_t chunk) const;
  /// Whether a pixel is the right neighbour of the one before it.
  bool IsBesideLast(size_t pixel) const;

 private:
  std::vector<cv::Point> places_;
  std::vector<DiscModel::Pixels> chunks_;
};

}  // namespace velmora::finder
