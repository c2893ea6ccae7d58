/// Calibrations and later images of the same camera, or of one that moved, with their truth.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Calibrator.h"
#include "quality/Assessment.h"
#include "quality/SheetChoice.h"
#include "solver/ShapedViews.h"
#include "velmora/ResultCheck.h"

namespace unit {

/// A result with its verdict.
struct Calibrated {
  velmora::CameraResult result;
  CalibrationVerdict verdict;
};

inline Calibrated CalibratedFrom(const PointLists& views, int model = Calibrator::MODEL_CLASSIC,
                                 bool fisheye = false) {
  velmora::SparseOptions options;
  options.robust = true;
  options.sheet = velmora::SheetShape::Auto;
  const velmora::SparseResult solved =
      fisheye ? velmora::SolveFisheyeWithSheet(Targets(views), views, FRAME, options)
              : velmora::SolveIntrinsicsWithSheet(Targets(views), views, FRAME, model, options);
  Calibrated calibrated;
  calibrated.result.K = solved.K;
  calibrated.result.D = solved.D;
  calibrated.result.fisheye = fisheye;
  calibrated.result.imageSize = FRAME;
  calibrated.result.rms = solved.rms;
  calibrated.verdict = velmora::AssessIntrinsics(Targets(views), views, FRAME, solved);
  return calibrated;
}

inline std::vector<velmora::CheckImage> CheckImages(const PointLists& views) {
  std::vector<velmora::CheckImage> images;
  images.reserve(views.size());
  for (const auto& points : views) images.push_back({points, {}, {}});
  return images;
}

inline velmora::CheckOptions GridOptions() {
  velmora::CheckOptions options;
  options.grid = GRID;
  options.unit = static_cast<double>(UNIT);
  return options;
}

/// The camera with another focal length (share) and principal point (pixels).
inline world::Camera MovedCamera(const world::Camera& camera, double focal, const cv::Point2d& centre) {
  world::Camera moved = camera;
  cv::Matx33d K = camera.lens.K();
  K(0, 0) *= 1.0 + focal;
  K(1, 1) *= 1.0 + focal;
  K(0, 2) += centre.x;
  K(1, 2) += centre.y;
  moved.lens = camera.lens.WithMatrix(K);
  return moved;
}

}  // namespace unit
