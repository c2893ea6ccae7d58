/// Views of the grid for calibrators: as point lists, and as rendered images with their truth.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Calibrator.h"
#include "Scene.h"

namespace unit {

/// The grid and the processing size of all calibrators here.
const cv::Size GRID(4, 11);
constexpr float UNIT = 0.02F;
const cv::Size FRAME(640, 480);

using PointLists = std::vector<std::vector<cv::Point2d>>;

/// A camera of the processing size with a moderate distortion of five coefficients.
world::Camera DistortedCamera();

/// Centres of the grid in `count` different views of that camera, with a little noise. Made without images.
PointLists NoisyViews(int count);

/// An empty calibrator.
std::unique_ptr<Calibrator> MakeCalibrator(int kind = Calibrator::MONOCULAR);

/// A monocular calibrator with the views as snapshots.
std::unique_ptr<Calibrator> CalibratorWith(const PointLists& views);

/// A calibrator with a classic computation done, on six views.
std::unique_ptr<Calibrator> CompletedCalibrator();

/// Images of well spread views, rendered once in a process.
struct RenderedViews {
  world::Scene scene;
  std::vector<cv::Mat> images;  ///< never to be drawn on: clone them
  PointLists centres;           ///< the truth
};
const RenderedViews& Rendered();

/// The first of them.
cv::Mat ImageWithGrid();
/// One without a grid.
cv::Mat ImageWithoutGrid();

/// A model file of the assistant with the point lists as its poses.
void WriteAssistantModel(const std::string& path, const PointLists& poses);

/// The points of the target, in the order of the grid search.
std::vector<cv::Point3f> TargetPoints();

/// What the solver itself says of the views: the direct call that the engine is compared with.
struct DirectSolution {
  double rms;
  cv::Mat K, D, rvecs, tvecs, stdDevIntrinsics, stdDevExtrinsics, perViewErrors;
};
DirectSolution SolveDirectly(const PointLists& views, int flags);

/// Whether OpenCV repeats its own results to the last bit, wherever its matrices lie in memory: with every
/// BLAS but ATLAS.
bool OpenCvRepeatsItself();

/// The same bits or, where OpenCV does not repeat itself, about the same numbers. Of results of its solvers.
::testing::AssertionResult SameResult(const cv::Mat& actual, const cv::Mat& expected);
::testing::AssertionResult SameResult(double actual, double expected);

}  // namespace unit
