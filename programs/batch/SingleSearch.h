/// What is seen of the grid in one image, whatever others show.
#pragma once

#include <functional>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "batch/Arguments.h"
#include "batch/ImageStream.h"

namespace batch {

using Centres = std::vector<cv::Point2d>;

/// The grid in an image, or a part of it: points of all circles, row by row.
struct GridView {
  Centres points;
  std::vector<double> weights;  ///< 1 for circles that are seen, 0 for others, which would be there
  /// Standard deviations of the points along an axis, pixels; empty where they are not known.
  std::vector<double> deviations{};

  bool IsPart() const;
  /// The points that are seen.
  Centres Seen() const;
};

/// Both views with weights for circles that both see.
void KeepCommon(GridView& left, GridView& right);

/// What a search is for: views, which are parts of the grid too where the arguments say so, or the points of
/// whole grids only, as the search finds them.
enum class Wanted { Views, WholeGrids };

struct SearchOutcome {
  std::string fault;  ///< why there is no view; empty when there is one
  GridView view;
  cv::Size size;  ///< of the image; empty when it could not be decoded
};

/// The distance between adjacent rows, metres.
float UnitOf(const Arguments& arguments);

/// The processing size of images of that size.
cv::Size FrameSizeOf(const Arguments& arguments, const cv::Size& imageSize);

/// Reads the image, where that is still to be done, and searches the grid in it; it is brought to the
/// processing size. Nothing is remembered from image to image: an image always gives the same, whichever
/// thread looks at it and after which others. What an image makes the search raise is its fault. Thread-safe.
SearchOutcome SearchImage(NamedImage& input, const Arguments& arguments, Wanted wanted);

/// What `look` made of an empty one; when it raises an exception, with that as the fault.
SearchOutcome OutcomeOf(const std::function<void(SearchOutcome&)>& look);

}  // namespace batch
