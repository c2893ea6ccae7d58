/// The lens models and what they ask of OpenCV's calibration.
#include "LensModel.h"

#include <cfloat>
#include <opencv2/calib3d.hpp>

#include "Calibrator.h"

int FlagsOfModel(int model) {
  switch (model) {
    case Calibrator::MODEL_RATIONAL:
      return cv::CALIB_RATIONAL_MODEL;
    case Calibrator::MODEL_FULL:
      return cv::CALIB_RATIONAL_MODEL | cv::CALIB_THIN_PRISM_MODEL | cv::CALIB_TILTED_MODEL;
    default:
      return 0;
  }
}

cv::TermCriteria SolverCriteria() {
  return {cv::TermCriteria::COUNT + cv::TermCriteria::EPS, 200, DBL_EPSILON};
}
