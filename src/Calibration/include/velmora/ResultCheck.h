/// Whether a camera is still as its calibration found it.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Export.h"
#include "Verdict.h"
#include "velmora/CameraResult.h"

namespace velmora {

/// The grid in one new image of the camera, in pixels of the result's image size.
struct CheckImage {
  std::vector<cv::Point2d> points;  ///< of all circles, row by row
  std::vector<double> weights;      ///< 1 for those that are seen, 0 for others; empty: all are seen
  std::vector<double> deviations;   ///< standard deviations along an axis, pixels; empty: not known
};

struct CheckOptions {
  cv::Size grid{4, 11};     ///< circles per row and rows
  double unit = 0.02;       ///< between adjacent rows, metres
  double discRadius = 0.0;  ///< metres; 0 takes points for images of the discs' centres
  /// Pixels by which projections may have moved (root of the mean square where the grid was seen). 0: as
  /// little as the images can tell from noise and from the result's own uncertainty; 0.05 at the least, and
  /// what the verdict says that they are off by; but the principal point no more than 0.001 focal lengths.
  double tolerance = 0.0;
  /// Where the circles of the sheet are, metres (a verdict's sheet.points); empty: the verdict's own, or
  /// flat.
  std::vector<cv::Point3d> sheetPoints;
};

/// What new images say of a result.
struct VELMORA_API ResultCheck {
  enum class Answer { Calibrated, NotCalibrated, CannotTell };

  struct Image {
    bool used = false;     ///< false: the grid in it is not where that of any camera like this can be
    double rms = -1.0;     ///< of its points, pixels, by the lens of the result
    double largest = 0.0;  ///< of its points, outliers too, pixels
    int largestPoint = -1;
    int outliers = 0;      ///< points that do not agree with the others, and do not count
    double tilt = 0.0;     ///< of the sheet against the ray to its middle, degrees
    cv::Vec3d rvec, tvec;  ///< camera_from_target, of the first circle
  };

  Answer answer = Answer::CannotTell;
  std::string sentence;  ///< "Still calibrated: ...", "No longer calibrated: ...", "Cannot tell: ..."
  std::string advice;    ///< what to do; empty where nothing is to be done
  std::vector<Image> images;
  double rms = 0.0;    ///< of all points that count, pixels, by the lens of the result
  double noise = 0.0;  ///< the same by the lens that suits the images best: what is left is no matter of it

  /// Pixels by which projections have moved, root of the mean square over where the grid was seen, after the
  /// best rotation of the camera's frame: the most likely ones, with their standard deviation.
  double shift = 0.0;
  double shiftDeviation = 0.0;
  double tolerance = 0.0;  ///< pixels that are allowed
  /// Pixels by which projections may have moved without these images showing it, in 19 of 20 cases.
  double unseen = 0.0;
  /// By how much better a lens that moved explains the images, over the most that noise and the result's own
  /// uncertainty do by chance, once in a hundred thousand checks: real paper has errors that are no noise.
  double evidence = 0.0;
  /// Share by which the focal length has grown, and pixels by which the principal point has moved, with
  /// standard deviations.
  double focalChange = 0.0;
  double focalDeviation = 0.0;
  cv::Point2d principalPointChange;
  cv::Point2d principalPointDeviation;
  double coverage = 0.0;  ///< share of the image where the grid was seen

  bool Passed() const { return answer == Answer::Calibrated; }
};

/// Checks the result by new images, one or more of them. `verdict` is that on the result, for how sure it is
/// and for the sheet's shape; with grade None (a default one) the result is taken to be as sure as the new
/// images could make it. A worthless result cannot be checked. Each image's sheet may be bent in its own way.
///
/// Raises std::invalid_argument in plain English for a result that is none, an empty list of images, lists of
/// points that do not match the grid, numbers that are not finite, and when in none of the images the grid
/// is where the camera could see it. Thread-safe.
VELMORA_API ResultCheck CheckResult(const CameraResult& result, const CalibrationVerdict& verdict,
                                    const std::vector<CheckImage>& images, const CheckOptions& options = {});

}  // namespace velmora
