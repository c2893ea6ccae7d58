/// A pinhole with lens distortion: rays to pixels and back, in double precision.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <vector>

namespace world {

/// A camera matrix (without skew) and 0, 4, 5, 8, 12 or 14 distortion coefficients in OpenCV's order: k1, k2,
/// p1, p2, k3, k4, k5, k6, s1, s2, s3, s4, tauX, tauY. Rays are (x, y) of the direction (x, y, 1).
///
/// A strong distortion folds the ray space: past a fold, pixels move back toward the centre. Only the part
/// before the first fold, seen from the centre, counts as imaged.
class Lens {
 public:
  Lens();
  /// Throws std::invalid_argument for another number of coefficients or a focal length that is not positive.
  explicit Lens(const cv::Matx33d& K, const std::vector<double>& D = {});

  const cv::Matx33d& K() const { return K_; }
  const std::vector<double>& D() const { return D_; }

  /// The pixel of a ray, by the model's formula, before and past folds alike.
  cv::Point2d Project(const cv::Point2d& ray) const;

  /// True when the ray lies before the first fold.
  bool Images(const cv::Point2d& ray) const;

  /// The ray of a pixel. `ray` is the start when `warm` is true. False when no ray before the first fold
  /// leads to the pixel; `ray` is then unchanged.
  bool Unproject(const cv::Point2d& pixel, cv::Point2d& ray, bool warm = false) const;

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
  std::array<double, 14> c_;
  cv::Matx33d tilt_;
  cv::Matx33d untilt_;
  bool tilted_;
  bool straight_;
  std::array<double, DIRECTIONS> folds_;
};

}  // namespace world
