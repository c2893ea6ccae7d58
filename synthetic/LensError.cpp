/// Compares camera models by the pixels of common rays.
#include "LensError.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

namespace world {

namespace {

constexpr int GRID_COLUMNS = 40;
constexpr int GRID_ROWS = 30;

struct Probe {
  cv::Point2d pixel;
  cv::Point3d direction;

  /// From the axis, degrees.
  double Angle() const {
    return std::atan2(std::hypot(direction.x, direction.y), direction.z) * 180.0 / CV_PI;
  }
};

std::vector<Probe> MakeProbes(const Lens& truth, cv::Size size, const std::vector<cv::Point2f>& region) {
  std::vector<Probe> probes;
  for (int row = 0; row < GRID_ROWS; ++row) {
    for (int column = 0; column < GRID_COLUMNS; ++column) {
      Probe probe;
      probe.pixel = {(size.width - 1.0) * column / (GRID_COLUMNS - 1),
                     (size.height - 1.0) * row / (GRID_ROWS - 1)};
      const cv::Point2f at(static_cast<float>(probe.pixel.x), static_cast<float>(probe.pixel.y));
      if (!region.empty() && cv::pointPolygonTest(region, at, false) < 0.0) continue;
      if (truth.Unproject(probe.pixel, probe.direction)) probes.push_back(probe);
    }
  }
  if (probes.empty()) throw std::runtime_error("no pixel remains to compare the models at");
  return probes;
}

cv::Point2d TurnedPixel(const Lens& lens, const cv::Matx33d& R, const cv::Point3d& direction) {
  return lens.Project(cv::Point3d(R * cv::Vec3d(direction.x, direction.y, direction.z)));
}

double SumOfSquares(const std::vector<Probe>& probes, const Lens& lens, const cv::Matx33d& R) {
  double sum = 0.0;
  for (const Probe& probe : probes) {
    const cv::Point2d error = TurnedPixel(lens, R, probe.direction) - probe.pixel;
    sum += error.dot(error);
  }
  return sum;
}

/// One Gauss-Newton step for a rotation that follows R.
cv::Matx33d Improved(const std::vector<Probe>& probes, const Lens& lens, const cv::Matx33d& R) {
  constexpr double SMALL = 1e-6;
  cv::Matx33d turns[3];
  for (int k = 0; k < 3; ++k) {
    cv::Vec3d axis(0, 0, 0);
    axis[k] = SMALL;
    cv::Rodrigues(axis, turns[k]);
  }
  cv::Matx33d normal = cv::Matx33d::zeros();
  cv::Vec3d right(0, 0, 0);
  for (const Probe& probe : probes) {
    const cv::Point2d at = TurnedPixel(lens, R, probe.direction);
    const cv::Point2d error = at - probe.pixel;
    cv::Vec3d slopeX;
    cv::Vec3d slopeY;
    for (int k = 0; k < 3; ++k) {
      const cv::Point2d moved = (TurnedPixel(lens, turns[k] * R, probe.direction) - at) / SMALL;
      slopeX[k] = moved.x;
      slopeY[k] = moved.y;
    }
    normal += slopeX * slopeX.t() + slopeY * slopeY.t();
    right -= slopeX * error.x + slopeY * error.y;
  }
  const cv::Vec3d step = normal.solve(right, cv::DECOMP_SVD);
  cv::Matx33d rotation;
  cv::Rodrigues(step, rotation);
  return rotation * R;
}

cv::Matx33d BestRotation(const std::vector<Probe>& probes, const Lens& lens) {
  cv::Matx33d best = cv::Matx33d::eye();
  double least = SumOfSquares(probes, lens, best);
  if (!std::isfinite(least)) return best;
  for (int step = 0; step < 20; ++step) {
    const cv::Matx33d candidate = Improved(probes, lens, best);
    const double sum = SumOfSquares(probes, lens, candidate);
    if (!(sum < least)) break;
    best = candidate;
    least = sum;
  }
  return best;
}

/// Of probes of which there may be none.
ProjectionDistance DistanceOf(const std::vector<Probe>& probes, const Lens& estimate, const cv::Matx33d& R) {
  ProjectionDistance distance;
  for (const Probe& probe : probes) {
    const double error = cv::norm(TurnedPixel(estimate, R, probe.direction) - probe.pixel);
    distance.mean += error;
    distance.rms += error * error;
    distance.max = std::max(distance.max, error);
  }
  distance.count = static_cast<int>(probes.size());
  if (distance.count == 0) return distance;
  distance.mean /= distance.count;
  distance.rms = std::sqrt(distance.rms / distance.count);
  return distance;
}

cv::Matx33d RotationFor(Alignment alignment, const std::vector<Probe>& probes, const Lens& estimate) {
  return alignment == Alignment::Rotated ? BestRotation(probes, estimate) : cv::Matx33d::eye();
}

}  // namespace

ProjectionDistance MeanProjectionDistance(const Lens& truth, const Lens& estimate, cv::Size imageSize,
                                          const std::vector<cv::Point2f>& region, Alignment alignment) {
  const std::vector<Probe> probes = MakeProbes(truth, imageSize, region);
  return DistanceOf(probes, estimate, RotationFor(alignment, probes, estimate));
}

std::vector<ProjectionDistance> ProjectionDistancesByAngle(const Lens& truth, const Lens& estimate,
                                                           cv::Size imageSize,
                                                           const std::vector<double>& limits,
                                                           const std::vector<cv::Point2f>& region,
                                                           Alignment alignment) {
  const std::vector<Probe> probes = MakeProbes(truth, imageSize, region);
  const cv::Matx33d R = RotationFor(alignment, probes, estimate);
  std::vector<ProjectionDistance> distances;
  for (std::size_t band = 0; band + 1 < limits.size(); ++band) {
    std::vector<Probe> inside;
    std::copy_if(probes.begin(), probes.end(), std::back_inserter(inside), [&](const Probe& probe) {
      return probe.Angle() >= limits[band] && probe.Angle() < limits[band + 1];
    });
    distances.push_back(DistanceOf(inside, estimate, R));
  }
  return distances;
}

ProjectionDistance MeanProjectionDistance(const cv::Mat& trueK, const cv::Mat& trueD,
                                          const cv::Mat& estimatedK, const cv::Mat& estimatedD,
                                          cv::Size imageSize, const std::vector<cv::Point2f>& region,
                                          Alignment alignment) {
  return MeanProjectionDistance(LensFrom(trueK, trueD), LensFrom(estimatedK, estimatedD), imageSize, region,
                                alignment);
}

Lens LensFrom(const cv::Mat& K, const cv::Mat& D) {
  if (K.rows != 3 || K.cols != 3 || K.type() != CV_64FC1 || (!D.empty() && D.type() != CV_64FC1)) {
    throw std::invalid_argument("a camera matrix is 3 x 3, and both matrices hold doubles");
  }
  std::vector<double> coefficients;
  for (int i = 0; i < D.rows; ++i)
    coefficients.insert(coefficients.end(), D.ptr<double>(i), D.ptr<double>(i) + D.cols);
  return Lens(cv::Matx33d(K), coefficients);
}

Lens FisheyeFrom(const cv::Mat& K, const cv::Mat& D) {
  if (K.rows != 3 || K.cols != 3 || K.type() != CV_64FC1 || D.total() != 4 || D.type() != CV_64FC1) {
    throw std::invalid_argument(
        "a fisheye has a 3 x 3 camera matrix and four coefficients, all of them doubles");
  }
  const cv::Mat k = D.reshape(1, 1);
  return Lens(cv::Matx33d(K),
              FisheyeCurve({k.at<double>(0), k.at<double>(1), k.at<double>(2), k.at<double>(3)}));
}

std::vector<cv::Point2f> CoveredRegion(const std::vector<std::vector<cv::Point2d>>& views) {
  std::vector<cv::Point2f> points;
  for (const std::vector<cv::Point2d>& view : views) {
    for (const cv::Point2d& p : view) {
      if (std::isfinite(p.x) && std::isfinite(p.y)) {
        points.emplace_back(static_cast<float>(p.x), static_cast<float>(p.y));
      }
    }
  }
  if (points.empty()) return {};
  std::vector<cv::Point2f> hull;
  cv::convexHull(points, hull);
  return hull;
}

Lens Resized(const Lens& lens, cv::Size from, cv::Size to) {
  const double x = static_cast<double>(to.width) / from.width;
  const double y = static_cast<double>(to.height) / from.height;
  cv::Matx33d K = lens.K();
  K(0, 0) *= x;
  K(1, 1) *= y;
  K(0, 2) = (K(0, 2) + 0.5) * x - 0.5;
  K(1, 2) = (K(1, 2) + 0.5) * y - 0.5;
  return lens.WithMatrix(K);
}

}  // namespace world
