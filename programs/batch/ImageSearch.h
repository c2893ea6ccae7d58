/// The search of the grid in one camera's images.
#pragma once

#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Calibrator.h"
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

/// How many circles make a view: three quarters of the grid.
int FewestCircles(const cv::Size& grid);

/// The distance between adjacent rows, metres.
float UnitOf(const Arguments& arguments);

/// Searches images with the calibrator that is made for the size of the first one; the others must agree.
class ImageSearch {
 public:
  explicit ImageSearch(const Arguments& arguments) : arguments_(arguments) {}

  /// Searches the grid in the image, which is changed. Why there are no centres, else an empty text.
  std::string FaultOf(NamedImage& input, Centres& centres);
  /// Searches parts of it too, where the arguments say that these are views.
  std::string FaultOf(NamedImage& input, GridView& view);

  /// Null as long as no image could be decoded.
  Calibrator* Engine() const { return calibrator_.get(); }
  /// After a search for another grid that found none: a line when the images show the supplied one, which the
  /// default options look for; else an empty text.
  std::string OtherGridText();
  /// The processing size.
  cv::Size FrameSize() const;

 private:
  /// Why the image cannot be searched, else an empty text; there is a calibrator then.
  std::string FaultBeforeSearch(const NamedImage& input);
  /// Why nothing was found in it.
  std::string FaultWithoutGrid(const NamedImage& input);

  const Arguments& arguments_;
  cv::Size inputSize_;
  std::unique_ptr<Calibrator> calibrator_;
  std::vector<cv::Mat> withoutGrid_;  ///< the first of them, when the grid is not the supplied one
};

}  // namespace batch
