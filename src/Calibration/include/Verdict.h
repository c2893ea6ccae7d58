/// How good a calibration is, in numbers and in words.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Export.h"

/// What is known of a camera computed from views. "Deviations" are standard deviations; those of projections
/// are of a pixel's coordinate, in pixels of the processing size, after the best common rotation of the
/// camera's frame, which no view of a grid can tell from a rotation of all poses. Formal ones follow from the
/// noise of the points; those of the jackknife from leaving out each view in turn, which also shows errors of
/// the model.
struct VELMORA_API CalibrationVerdict {
  enum class Grade { None, Good, WithCare, Worthless };
  struct Remark {
    std::string reason;
    std::string advice;
  };

  /// What the computation did not use.
  struct LeftOut {
    size_t view = 0;
    int point = -1;         ///< -1: the whole view
    double residual = 0.0;  ///< pixels
    std::string reason;
  };

  Grade grade = Grade::None;  ///< None: there is no result to assess
  std::vector<Remark> remarks;
  std::vector<LeftOut> leftOut;
  int views = 0;
  double focalDeviation = 0.0;   ///< formal, relative to the focal length
  double focalJackknife = 0.0;   ///< the same by the jackknife
  double deviationInData = 0.0;  ///< formal, of projections, root of the mean square where there are data
  double jackknifeInData = 0.0;
  /// By how much projections are moved, where there are data, by what the residuals show to be no noise: a
  /// sheet that is bent or out of proportion, or a lens that the model does not hold. 0 when they show none
  /// of these.
  double systematicInData = 0.0;
  double sheetBend = 0.0;  ///< metres from the sheet's lowest dot to its highest, where that is the cause
  /// The share by which the sheet is longer than it should be, where proportions are the cause.
  double sheetStretch = 0.0;
  double deviationInImage = 0.0;      ///< formal, over the whole image
  double coverage = 0.0;              ///< share of the image within the data's convex hull
  std::vector<cv::Point2f> dataArea;  ///< that hull
  cv::Mat deviationMap;  ///< CV_64F, 30 x 40 cells over the image; NaN where the lens has no ray for a pixel

  /// What projections may be off by where there are data, all in all: the larger of both deviations, and what
  /// is no noise.
  double ExpectedInData() const;
  /// The grade: "good", "usable with care", "worthless" or "no result".
  std::string ToString() const;
  /// All but the map, with the remarks, as a JSON text.
  std::string ToJson() const;
};
