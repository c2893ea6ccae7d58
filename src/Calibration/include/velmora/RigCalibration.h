/// Calibrates cameras that are fixed to each other: two, three or more.
#pragma once

#include <functional>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Export.h"
#include "velmora/RigVerdict.h"

namespace velmora {

/// What the cameras of a rig saw. A view is one position of the target (or of the rig), of which all images
/// were taken at the same time.
struct RigRecords {
  /// The points of each view: at least four of the plane target, at z = 0, in metres.
  std::vector<std::vector<cv::Point3d>> objectPoints;
  /// For each camera and each view, where it observed these points, in pixels (the centre of the top-left
  /// pixel is (0, 0)), in the same order; an empty list when it did not observe the target.
  std::vector<std::vector<std::vector<cv::Point2d>>> imagePoints;
  std::vector<cv::Size> imageSizes;  ///< of each camera
  /// For each camera and each view, 1 for points that it saw and 0 for others, wherever these are in the
  /// list. Empty lists, of a view, of a camera or at all, say that all were seen. At least four must be.
  std::vector<std::vector<std::vector<double>>> weights;
  /// For each camera and each view, the standard deviations of the points' errors along an axis, in pixels: 0
  /// where that is not known. Points that are known better count more, beside each other; three times as much
  /// as usual ones at the most. Empty lists, of a view, of a camera or at all, say that nothing is known.
  std::vector<std::vector<std::vector<double>>> deviations{};
};

/// A camera's intrinsics that are known from elsewhere.
struct KnownIntrinsics {
  cv::Mat K;  ///< 3 x 3
  cv::Mat D;  ///< 1 x n, OpenCV's order, n up to 14; of a fisheye k1 to k4
  bool fisheye = false;
};

struct RigOptions {
  /// Called after each iteration with the number of iterations and the RMS in pixels; false gives up.
  using ProgressListener = std::function<bool(int iterations, double rms)>;

  int model = 20;  ///< lens model, a number of Calibrator's: MODEL_CLASSIC, MODEL_RATIONAL, MODEL_FULL
  /// All cameras are fisheyes, then `model` does not count. Intrinsics that are given say it themselves.
  bool fisheye = false;
  bool robust = true;       ///< leave out points and images that disagree with the others
  double discRadius = 0.0;  ///< of the target's discs, metres; 0 takes image points for images of the centres
  /// What the sheet may be taken for, a number of Calibrator's: SHEET_FLAT, SHEET_BENT, SHEET_FREE,
  /// SHEET_AUTO.
  int sheetShape = 0;
  /// The sheet's shape where it was measured before: where the target's points are, metres, in its frame (a
  /// verdict's sheet.points). Nothing of it is estimated then but a bend of its own for each view, where the
  /// views ask for one. Empty: sheetShape counts.
  std::vector<cv::Point3d> sheetPoints;
  int threads = 0;  ///< 0: as many as pay
  /// One for each camera: these stay as they are. Empty: the intrinsics are estimated together with the rig.
  std::vector<KnownIntrinsics> intrinsics;
  ProgressListener progress;
};

/// One camera of a rig. Deviations are standard deviations.
struct RigCamera {
  cv::Size imageSize;
  cv::Mat K;  ///< 3 x 3
  cv::Mat D;  ///< 1 x 14; of a fisheye 1 x 4
  bool fisheye = false;
  cv::Mat
      stdDevIntrinsics;  ///< 18 x 1: of fx, fy, cx, cy and the coefficients; zeros for what was not estimated
  /// camera_from_rig: x_camera = R x_rig + T. The frame of the rig is that of the first camera.
  cv::Matx33d R = cv::Matx33d::eye();
  cv::Vec3d T;                     ///< metres
  cv::Vec3d rotationDeviation;     ///< degrees, about the camera's axes; zeros for the first camera
  cv::Vec3d translationDeviation;  ///< metres
  double rms = 0.0;                ///< pixels
  int views = 0;                   ///< in which it was used
};

/// One position of the target.
struct RigView {
  cv::Vec3d rvec,
      tvec;  ///< rig_from_target, of the origin of the object points; zeros of a view that was left out
  std::vector<double> rms;  ///< of each camera, pixels; -1 where it did not see the target or was left out
  bool used = false;
};

/// An image, or a point of it, that was left out.
struct RigLeftOut {
  size_t view = 0;
  size_t camera = 0;
  int point = -1;         ///< -1: the whole image
  double residual = 0.0;  ///< pixels; of an image the root of the mean square
  std::string reason;
};

/// An image that was put right: its points were counted from another end of the target than those of the
/// other cameras' images.
struct RigRecounted {
  size_t view = 0;
  size_t camera = 0;
};

struct RigResult {
  double rms = 0.0;  ///< pixels, over all points of all images
  std::vector<RigCamera> cameras;
  std::vector<RigView> views;  ///< one for each of the records
  std::vector<RigLeftOut> leftOut;
  std::vector<RigRecounted> recounted;
  RigVerdict verdict;
};

/// Calibrates the rig: each camera for itself, where intrinsics are not given, then all cameras, all poses
/// and (where not given) all intrinsics together. Cameras that never see the target together are linked
/// through others. Thread-safe.
///
/// Raises cv::Exception with a text in plain English for records that do not match; for a camera without
/// known intrinsics that saw fewer than three views; for one that is linked to no other by common views
/// (cameras are numbered from 0 in the text); when the views agree with no rig; and when `progress` gave up.
VELMORA_API RigResult CalibrateRig(const RigRecords& records, const RigOptions& options = {});

}  // namespace velmora
