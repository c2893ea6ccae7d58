/// The search of the grid in one camera's images.
#pragma once

#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Calibrator.h"
#include "batch/Arguments.h"
#include "batch/SingleSearch.h"

namespace batch {

/// How many circles make a view: three quarters of the grid.
int FewestCircles(const cv::Size& grid);

/// Takes what was seen in images, in their order. Their camera's calibrator is made for the size of the first
/// one; the others must agree.
class ImageSearch {
 public:
  explicit ImageSearch(const Arguments& arguments) : arguments_(arguments) {}

  /// Why the image gives no view, else an empty text.
  std::string FaultOf(const NamedImage& input, const SearchOutcome& outcome);

  /// Null as long as no image could be decoded.
  Calibrator* Engine() const { return calibrator_.get(); }
  /// After a search for another grid that found none: a line when the images show the supplied one, which the
  /// default options look for; else an empty text.
  std::string OtherGridText();
  /// The processing size.
  cv::Size FrameSize() const { return FrameSizeOf(arguments_, inputSize_); }

 private:
  const Arguments& arguments_;
  cv::Size inputSize_;
  std::unique_ptr<Calibrator> calibrator_;
  std::vector<cv::Mat> withoutGrid_;  ///< the first of them, when the grid is not the supplied one
};

}  // namespace batch
