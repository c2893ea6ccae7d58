/// The search of the grid in one camera's pictures.
#pragma once

#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Calibrator.h"
#include "batch/Arguments.h"
#include "batch/Pictures.h"

namespace batch {

using Centres = std::vector<cv::Point2d>;

/// The distance between adjacent rows, metres.
float UnitOf(const Arguments& arguments);

/// Searches pictures with the calibrator that is made for the size of the first one; the others must agree.
class PictureSearch {
 public:
  explicit PictureSearch(const Arguments& arguments) : arguments_(arguments) {}

  /// Searches the grid in the picture, which is changed. Why there are no centres, else an empty text.
  std::string FaultOf(Picture& picture, Centres& centres);

  /// Null as long as no picture could be decoded.
  Calibrator* Engine() const { return calibrator_.get(); }
  /// After a search for another grid that found none: a line when the images show the supplied one, which the
  /// default options look for; else an empty text.
  std::string OtherGridText();
  /// The processing size.
  cv::Size FrameSize() const;

 private:
  const Arguments& arguments_;
  cv::Size inputSize_;
  std::unique_ptr<Calibrator> calibrator_;
  std::vector<cv::Mat> withoutGrid_;  ///< the first of them, when the grid is not the supplied one
};

}  // namespace batch
