/// Where a computation begins.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "model/Solution.h"

namespace velmora::solver {

/// The plane-to-image map that fits the points best in the algebraic sense, for pixels. False when they do
/// not determine one.
bool HomographyOf(const Observation& observation, cv::Matx33d& homography);

/// The root of the mean squared distance between the observed points and those of the homography; infinite
/// when there is none.
double HomographyResidual(const Observation& observation);

/// One camera that nothing is known of: intrinsics without distortion, the principal point in the middle of
/// the image, and the poses that belong to them. Raises cv::Exception when an observation's points do not
/// determine its pose.
CalibrationProblem StartOf(std::vector<TargetView> views, const cv::Size& imageSize);

/// Whether the observation determines a pose before the camera.
bool HasPose(const Observation& observation, const Intrinsics& intrinsics);

/// The pose of the target before a camera, of which only the camera matrix counts.
RigidTransform StartPoseOf(const Observation& observation, const Intrinsics& intrinsics);

/// The pose of the target before a camera with all of its coefficients. Raises cv::Exception when there is
/// none.
RigidTransform KnownPoseOf(const Observation& observation, const Intrinsics& intrinsics);

}  // namespace velmora::solver
