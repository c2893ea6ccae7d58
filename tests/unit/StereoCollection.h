/// Pairs of views of the grid for stereo calibrators: as point lists, and as rendered images with their
/// truth.
#pragma once

#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Calibrator.h"
#include "Rig.h"
#include "unit/Collection.h"

namespace unit {

/// Centres in the left and the right camera, one list per pair of views.
struct PointPairs {
  PointLists left;
  PointLists right;
};

/// Two cameras of the processing size that differ in their lenses. All 14 distortion coefficients of both are
/// other than zero, so every lens model sees other cameras.
const world::Pair& PairOfCameras();

/// Centres of the grid in `count` different pairs of views, with a little noise. Made without images.
PointPairs NoisyPairs(int count);

/// A stereo calibrator with the pairs as snapshots.
std::unique_ptr<Calibrator> StereoCalibratorWith(const PointPairs& pairs);

/// A pair of images, rendered once in a process.
struct ImagePair {
  cv::Mat left, right;  ///< clones
  std::vector<cv::Point2d> leftCentres, rightCentres;
};
ImagePair PairWithGrid(int view = 0);
/// Without a grid in either.
ImagePair PairWithoutGrid();

/// K and D of a camera as one row, as monocular results hold them.
struct KnownIntrinsics {
  cv::Mat K, D;
};
KnownIntrinsics IntrinsicsOf(const world::Camera& camera);

/// The text of a monocular result with the matrices.
std::string MonocularResult(const KnownIntrinsics& intrinsics);
/// Those of the pair of cameras.
std::string LeftResult();
std::string RightResult();

/// Six pairs, solved with the rational model.
std::unique_ptr<Calibrator> CompletedStereoCalibrator();

/// What the solver itself says of the pairs with the intrinsics of the pair of cameras held fixed: the direct
/// call that the engine is compared with.
struct DirectStereoSolution {
  double rms;
  cv::Mat R, T, E, F;
};
DirectStereoSolution SolveDirectly(const PointPairs& pairs, int flags);

/// The flags of the lens models in a stereo computation.
constexpr int CLASSIC_FLAGS = 0x100;
constexpr int RATIONAL_FLAGS = 0x4100;
constexpr int FULL_FLAGS = 0x4c100;

}  // namespace unit
