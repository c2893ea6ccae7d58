/// Finds where the grid has to be to appear in images as asked for; what lists of views are made with.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "Camera.h"

namespace world {

/// How the grid appears in the image. Upright, the print is as drawn: its long side along the image's x axis.
struct Appearance {
  /// Where the discs' bounding box is in the room that the image leaves it: -1 (left, top) to 1 (right,
  /// bottom).
  double x = 0.0;
  double y = 0.0;
  /// The larger share of the image's width or height that the discs' bounding box takes.
  double span = 0.6;
  /// Rotations of the grid about the camera's axes in this order: y, x, z; degrees. Before a fisheye the axes
  /// are those of the camera turned by the shortest way to look at the grid's middle.
  double tiltY = 0.0;
  double tiltX = 0.0;
  double roll = 0.0;
};

/// A camera of a rig whose frame is the first viewer's, and the margin (pixels) around the discs in its
/// image.
struct Viewer {
  RigCamera camera;
  double margin = 0.0;
};

/// The grid's rotation, without that of the upright print against the camera, for an appearance.
cv::Matx33d RotationFor(const Appearance& appearance);

/// The rotation that brings the z axis to a direction by the shortest way.
cv::Matx33d RotationToward(const cv::Vec3d& direction);

/// Finds where a grid of this rotation has its middle in a pixel, at a depth; before a fisheye, at a
/// distance. False when the lens has no direction for the pixel.
bool PoseAt(const Lens& lens, const Sheet& sheet, const cv::Matx33d& rotation, const cv::Point2d& pixel,
            double depth, Pose& pose);

/// Finds the pose, in the first viewer's frame, of a grid of this rotation that has the place and the span of
/// the appearance: the room is what all the images leave together, the span the largest of all. False when
/// there is none with all discs inside every image.
bool Place(const std::vector<Viewer>& viewers, const Sheet& sheet, const cv::Matx33d& rotation,
           const Appearance& appearance, Pose& pose);

/// The angle between the line of sight to the grid's middle and the paper's normal, degrees.
double Obliqueness(const Sheet& sheet, const Pose& pose);

/// The largest angle between the line of sight to a disc and the paper's normal, degrees.
double LargestObliqueness(const Sheet& sheet, const Pose& pose);

/// No line of sight of random views is as oblique, degrees.
constexpr double MOST_OBLIQUE = 55.0;

/// Element k of the sequence of fractions in a base; k from 1.
double Halton(int k, int base);

/// A sequence of random, well spread appearances; the same seed gives the same ones.
class RandomAppearances {
 public:
  explicit RandomAppearances(std::uint64_t seed);
  Appearance Next();

 private:
  std::vector<double> shift_;
  int number_ = 0;
};

/// A sequence of random, well spread poses before a fisheye: the grid's middle anywhere in the image, as far
/// away as the sheet is long at most twice and at least half of it; tilts to +-40 degrees about both axes,
/// any roll. The same seed gives the same poses.
class RandomFisheyeViews {
 public:
  RandomFisheyeViews(const Camera& camera, const Sheet& sheet, std::uint64_t seed);
  /// False when there is no such view in the sequence's next place of the image.
  bool Next(Pose& pose);

 private:
  Camera camera_;
  Sheet sheet_;
  std::vector<double> shift_;
  int number_ = 0;
};

/// Element k, from 0, of the fixed, well-conditioned list, for a camera of that width: that of half its image
/// at distance 1.
Appearance SpreadAppearance(int k, double halfWidth);

/// What the spans of the lists are multiplied by for a camera: as much of a fisheye's image is as wide as
/// that of a usual pinhole; the share of that is the lists'. Of a pinhole: 1.
double SpanShare(const Camera& camera);

/// Half the width of the undistorted image at distance 1; of a fisheye, of its SpanShare.
double HalfWidth(const Camera& camera);

/// Moves the sheet sideways by a stride, or, around a camera that sees what is beside it, toward its back and
/// a little away from it.
void MoveAside(bool around, const Sheet& sheet, Pose& pose);

}  // namespace world
