/// How far two results of one camera are apart.
#include "velmora/ResultComparison.h"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "model/RigidTransform.h"
#include "quality/ProjectionUncertainty.h"
#include "quality/ResultLens.h"
#include "solver/Projection.h"

namespace velmora {

namespace {

constexpr double USUAL_CELLS = 40.0;  // along the longer side
constexpr double MOST_CELLS = 2000.0;
constexpr int MOST_STEPS = 50;
constexpr double SETTLED = 1e-12;  // radians

/// A cell of the map, with the first lens' ray of its middle.
struct Probe {
  int row, column;
  cv::Point2d pixel;
  cv::Vec3d ray;
  bool counts;  ///< for the rotation and the numbers
};

/// The cells along a side.
int CellsOf(int side, double step) {
  return std::max(1, static_cast<int>(std::lround(std::min(MOST_CELLS, side / step))));
}

/// The pixel of a ray with its derivatives; false where the lens does not image it, or past a fold of it.
bool Images(const solver::Projection& lens, bool fisheye, const cv::Vec3d& ray, solver::Coordinate& u,
            solver::Coordinate& v) {
  if (!lens.Differentiate(ray, u, v) || !std::isfinite(u.value) || !std::isfinite(v.value)) return false;
  return fisheye || u.byPoint[0] * v.byPoint[1] - u.byPoint[1] * v.byPoint[0] > 0.0;
}

/// The sum of squares for a rotation, with the equations of a small one after it.
struct Fit {
  double cost = 0.0;
  int count = 0;
  Eigen::Matrix3d products = Eigen::Matrix3d::Zero();
  Eigen::Vector3d slope = Eigen::Vector3d::Zero();
};

class Comparison {
 public:
  Comparison(const CameraResult& first, const CameraResult& second, const ComparisonOptions& options)
      : first_(IntrinsicsOf(first)),
        second_(IntrinsicsOf(second)),
        projection_(second_),
        cells_(CellsFor(first.imageSize, options)),
        stepX_(static_cast<double>(first.imageSize.width) / cells_.width),
        stepY_(static_cast<double>(first.imageSize.height) / cells_.height) {
    FindRays(options);
  }

  ResultComparison Run() {
    ResultComparison result;
    result.rotation = BestRotation();
    result.angle = std::acos(std::clamp(0.5 * (cv::trace(result.rotation) - 1.0), -1.0, 1.0)) * 180.0 / CV_PI;
    result.stepX = stepX_;
    result.stepY = stepY_;
    const double nan = std::numeric_limits<double>::quiet_NaN();
    result.map = cv::Mat(cells_, CV_64FC2, cv::Scalar(nan, nan));
    for (const Probe& probe : probes_) Measure(probe, result);
    if (result.compared == 0) throw std::invalid_argument("no part of the image is seen by both lenses");
    result.mean /= result.compared;
    result.rms = std::sqrt(result.rms / result.compared);
    result.incomparable = 1.0 - static_cast<double>(result.compared) / wanted_;
    return result;
  }

 private:
  static cv::Size CellsFor(const cv::Size& image, const ComparisonOptions& options) {
    const double step = options.step > 0.0 ? options.step : std::max(image.width, image.height) / USUAL_CELLS;
    return {CellsOf(image.width, step), CellsOf(image.height, step)};
  }

  void FindRays(const ComparisonOptions& options) {
    const solver::Projection first(first_);
    probes_.reserve(static_cast<size_t>(cells_.area()));
    for (int row = 0; row < cells_.height; ++row) {
      for (int column = 0; column < cells_.width; ++column) {
        Probe probe{row, column, {(column + 0.5) * stepX_ - 0.5, (row + 0.5) * stepY_ - 0.5}, {}, true};
        probe.counts = options.area.size() < 3 ||
                       cv::pointPolygonTest(options.area, cv::Point2f(probe.pixel), false) >= 0.0;
        wanted_ += probe.counts ? 1 : 0;
        if (RayOf(first, first_, probe.pixel, probe.ray)) probes_.push_back(probe);
      }
    }
    if (wanted_ == 0) throw std::invalid_argument("the area of the data is outside the image");
  }

  Fit FitOf(const cv::Matx33d& rotation) const {
    Fit fit;
    solver::Coordinate u;
    solver::Coordinate v;
    for (const Probe& probe : probes_) {
      const cv::Vec3d ray = rotation * probe.ray;
      if (!probe.counts || !Images(projection_, second_.IsFisheye(), ray, u, v)) continue;
      ++fit.count;
      Add(u, probe.pixel.x, ray, fit);
      Add(v, probe.pixel.y, ray, fit);
    }
    return fit;
  }

  static void Add(const solver::Coordinate& coordinate, double observed, const cv::Vec3d& ray, Fit& fit) {
    const double difference = coordinate.value - observed;
    const cv::Vec3d by = ray.cross(coordinate.byPoint);
    const Eigen::Vector3d slope(by[0], by[1], by[2]);
    fit.cost += difference * difference;
    fit.products += slope * slope.transpose();
    fit.slope += slope * difference;
  }

  /// Levenberg and Marquardt's search. Fewer rays that are imaged are no progress.
  cv::Matx33d BestRotation() const {
    cv::Matx33d best = cv::Matx33d::eye();
    Fit fit = FitOf(best);
    double damping = 1e-6;
    for (int i = 0; i < MOST_STEPS && fit.count > 2; ++i) {
      Eigen::Matrix3d damped = fit.products;
      damped.diagonal() *= 1.0 + damping;
      const Eigen::Vector3d step = -damped.ldlt().solve(fit.slope);
      if (!step.allFinite()) break;
      const cv::Matx33d candidate = RotationOf({step(0), step(1), step(2)}) * best;
      const Fit next = FitOf(candidate);
      const bool better = 2 * next.count > fit.count && next.cost / next.count <= fit.cost / fit.count;
      damping = better ? std::max(0.1 * damping, 1e-9) : 10.0 * std::max(damping, 1e-6);
      if (better) {
        best = candidate;
        fit = next;
      }
      if (step.norm() < SETTLED || damping > 1e9) break;
    }
    return best;
  }

  void Measure(const Probe& probe, ResultComparison& result) const {
    solver::Coordinate u;
    solver::Coordinate v;
    if (!Images(projection_, second_.IsFisheye(), result.rotation * probe.ray, u, v)) return;
    const cv::Vec2d difference(u.value - probe.pixel.x, v.value - probe.pixel.y);
    result.map.at<cv::Vec2d>(probe.row, probe.column) = difference;
    if (!probe.counts) return;
    const double length = cv::norm(difference);
    ++result.compared;
    result.mean += length;
    result.rms += length * length;
    if (result.compared > 1 && !(length > result.largest)) return;
    result.largest = length;
    result.where = probe.pixel;
  }

  const Intrinsics first_;
  const Intrinsics second_;
  const solver::Projection projection_;  ///< of the second
  const cv::Size cells_;
  const double stepX_;
  const double stepY_;
  std::vector<Probe> probes_;
  int wanted_ = 0;  ///< cells that should count
};

std::string SizeText(const cv::Size& size) {
  return std::to_string(size.width) + " x " + std::to_string(size.height);
}

}  // namespace

cv::Mat ResultComparison::Lengths() const {
  cv::Mat lengths(map.size(), CV_64F);
  for (int row = 0; row < map.rows; ++row) {
    for (int column = 0; column < map.cols; ++column) {
      lengths.at<double>(row, column) = cv::norm(map.at<cv::Vec2d>(row, column));
    }
  }
  return lengths;
}

cv::Mat ResultComparison::Picture(const cv::Size& size) const {
  constexpr int GREY = 128;
  if (map.empty() || size.width < 1 || size.height < 1) return {};
  const cv::Mat lengths = Lengths();
  const cv::Mat known = lengths == lengths;
  double most = 0.0;
  cv::minMaxLoc(lengths, nullptr, &most, nullptr, nullptr, known);
  cv::Mat levels = cv::Mat::zeros(lengths.size(), CV_8U);
  lengths.convertTo(levels, CV_8U, most > 0.0 ? 255.0 / most : 0.0);
  cv::Mat colours;
  cv::applyColorMap(levels, colours, cv::COLORMAP_JET);
  colours.setTo(cv::Scalar::all(GREY), ~known);
  cv::Mat picture;
  cv::resize(colours, picture, size, 0.0, 0.0, cv::INTER_NEAREST);
  cv::putText(picture, cv::format("largest %.2f px", most), {10, size.height - 10}, cv::FONT_HERSHEY_SIMPLEX,
              0.6, cv::Scalar::all(255), 2, cv::LINE_AA);
  return picture;
}

ResultComparison CompareResults(const CameraResult& first, const CameraResult& second,
                                const ComparisonOptions& options) {
  first.Check();
  second.Check();
  if (first.imageSize != second.imageSize) {
    throw std::invalid_argument("The results are of images of different sizes, " + SizeText(first.imageSize) +
                                " and " + SizeText(second.imageSize) + ": only those of one size compare.");
  }
  if (!std::isfinite(options.step) || options.step < 0.0)
    throw std::invalid_argument("The step of a comparison is negative or not finite.");
  return Comparison(first, second, options).Run();
}

}  // namespace velmora
