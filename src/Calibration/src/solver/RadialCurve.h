/// How smooth the radial curve of a lens is: what is left to tell where no data do.
#pragma once

#include <Eigen/Core>
#include <array>
#include <opencv2/core.hpp>

#include "model/Intrinsics.h"

namespace velmora::solver {

/// The coefficients of the radial distortion, numerator before denominator.
constexpr std::array<Parameter, 6> RADIAL = {K1, K2, K3, K4, K5, K6};
constexpr int RADIAL_COUNT = 6;

/// A ray at the angle a from the axis is imaged at the distance g(a) from the principal point, in focal
/// lengths. g(a) / a is an even curve and nearly a parabola over a^2, of lenses with straight lines and of
/// fisheyes of every projection alike. Roughness is its third derivative by a^2, from differences of 20
/// places spread evenly over a^2 up to the given angle, in units of that square.
struct Roughness {
  static constexpr int PLACES = 20;
  static constexpr int DIFFERENCES = 3;
  static constexpr int COUNT = PLACES - DIFFERENCES;

  Eigen::Matrix<double, COUNT, 1> values;
  Eigen::Matrix<double, COUNT, RADIAL_COUNT> slopes;  ///< by the coefficients
};

Roughness RoughnessOf(const Intrinsics& intrinsics, double angle);

/// The largest distance from the principal point, in focal lengths, of the image's corners.
double CornerRadius(const Intrinsics& intrinsics, const cv::Size& imageSize);

/// About the angle from the axis, in radians, of the rays that are imaged at the outermost corner: beyond the
/// `known` angle the image is taken to grow with the angle, as it does at least. 80 degrees at the most.
double CornerAngle(const Intrinsics& intrinsics, const cv::Size& imageSize, double known);

/// 1 + k4 r^2 + k5 r^4 + k6 r^6, for the square of the distance from the axis at depth one.
double Denominator(const Intrinsics& intrinsics, double r2);
double Numerator(const Intrinsics& intrinsics, double r2);

/// Denominators below this are taken for the neighbourhood of a pole.
constexpr double LEAST_DENOMINATOR = 0.05;

}  // namespace velmora::solver
