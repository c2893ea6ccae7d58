/// Searches for the asymmetric circles grid in a frame.
#include "finder/StandardFinder.h"

#include <opencv2/calib3d.hpp>
#include <opencv2/features2d.hpp>
#include <opencv2/imgproc.hpp>

namespace velmora {

bool FindGridStandard(const cv::Mat& frame, const cv::Size& patternSize, std::vector<cv::Point2d>& points) {
  if (patternSize.area() < 2) {
    points.clear();
    return false;  // one circle is no grid, and asked for one the library reads beyond its own lists
  }
  cv::Mat image = frame;
  // Not every version of the blob detector takes four channels; the grey values are the same either way.
  if (frame.channels() == 4) cv::cvtColor(frame, image, cv::COLOR_BGRA2GRAY);
  const cv::Ptr<cv::SimpleBlobDetector> detector =
      cv::SimpleBlobDetector::create(cv::SimpleBlobDetector::Params());
  return cv::findCirclesGrid(image, patternSize, points, cv::CALIB_CB_ASYMMETRIC_GRID, detector);
}

}  // namespace velmora
