/// A pinhole with lens distortion, or a fisheye: directions to pixels and back, in double precision.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "FisheyeCurve.h"

namespace world {

/// A camera matrix (without skew), and either 0, 4, 5, 8, 12 or 14 distortion coefficients in OpenCV's order
/// (k1, k2, p1, p2, k3, k4, k5, k6, s1, s2, s3, s4, tauX, tauY) or the curve of a fisheye. A ray (x, y)
/// stands for the direction (x, y, 1): rays hold what is before the camera, directions what is beside and
/// behind it too, which fisheyes alone image. Directions, which points of the camera's frame are as well,
/// have any length.
///
/// A strong distortion folds the ray space: past a fold, pixels move back toward the centre. Only the part
/// before the first fold, seen from the centre, counts as imaged.
class Lens {
 public:
  Lens();
  /// Throws std::invalid_argument for another number of coefficients or a focal length that is not positive.
  explicit Lens(const cv::Matx33d& K, const std::vector<double>& D = {});
  /// A fisheye. Throws std::invalid_argument for a focal length that is not positive.
  Lens(const cv::Matx33d& K, const FisheyeCurve& curve);

  const cv::Matx33d& K() const { return K_; }
  /// Without any of a fisheye.
  const std::vector<double>& D() const { return D_; }
  /// Only of a fisheye.
  const std::optional<FisheyeCurve>& Curve() const { return curve_; }
  bool IsFisheye() const { return curve_.has_value(); }

  /// This distortion or curve with another camera matrix. Throws as the constructors do.
  Lens WithMatrix(const cv::Matx33d& K) const;

  /// The pixel of a ray, by the model's formula, before and past folds alike.
  cv::Point2d Project(const cv::Point2d& ray) const;

  /// The pixel of a direction, likewise. Infinite for one that is not before the camera, unless of a fisheye.
  cv::Point2d Project(const cv::Point3d& direction) const;

  /// True when the ray or direction lies before the first fold.
  bool Images(const cv::Point2d& ray) const;
  bool Images(const cv::Point3d& direction) const;

  /// The ray of a pixel. `ray` is the start when `warm` is true. False when no ray before the first fold
  /// leads to the pixel; `ray` is then unchanged.
  bool Unproject(const cv::Point2d& pixel, cv::Point2d& ray, bool warm = false) const;

  /// The direction of a pixel: that of a ray has z = 1, that of a fisheye the length 1. Otherwise likewise.
  bool Unproject(const cv::Point2d& pixel, cv::Point3d& direction, bool warm = false) const;

 private:
  /// A distorted ray (before the tilt) and its derivatives by the ray.
  struct Bent {
    cv::Point2d at;
    double xx, xy, yx, yy;
    double denominator;
    double Determinant() const { return xx * yy - xy * yx; }
  };

  Bent Bend(const cv::Point2d& ray) const;
  bool Regular(const cv::Point2d& ray) const;
  bool Newton(const cv::Point2d& target, cv::Point2d& ray) const;
  bool Continuation(const cv::Point2d& target, cv::Point2d& ray) const;
  void FindFolds();
  double FoldAt(const cv::Point2d& ray) const;

  static constexpr int DIRECTIONS = 72;

  cv::Matx33d K_;
  std::vector<double> D_;
  std::optional<FisheyeCurve> curve_;
  std::array<double, 14> c_;
  cv::Matx33d tilt_;
  cv::Matx33d untilt_;
  bool tilted_;
  bool straight_;
  std::array<double, DIRECTIONS> folds_;
};

}  // namespace world
