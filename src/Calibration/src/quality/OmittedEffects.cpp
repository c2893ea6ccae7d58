/// What a solution did not reckon with, as its residuals show it.
#include "quality/OmittedEffects.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace velmora::solver {

namespace {

/// A point of the target as a view's camera sees it.
struct Sight {
  const cv::Point3d& point;
  const cv::Matx33d& turn;
};

/// The derivatives of a coordinate by the effect's parameters.
using Columns = std::function<void(const Sight& sight, const Coordinate& coordinate, double* columns)>;

cv::Vec3d ByTarget(const Sight& sight, const Coordinate& coordinate) {
  return sight.turn.t() * coordinate.byPoint;
}

/// One row of a view's Jacobian: the lens, the effect, the pose, the residual.
void FillRow(const Sight& sight, const Coordinate& coordinate, int free, int effects, const Columns& columns,
             double* row) {
  std::copy_n(coordinate.byLens.begin(), free, row);
  columns(sight, coordinate, row + free);
  const cv::Vec3d turned = sight.turn * cv::Vec3d(sight.point.x, sight.point.y, sight.point.z);
  const cv::Vec3d byTurn = turned.cross(coordinate.byPoint);
  for (int i = 0; i < 3; ++i) {
    row[free + effects + i] = byTurn[i];
    row[free + effects + 3 + i] = coordinate.byPoint[i];
  }
}

/// The normal equations of the lens and an effect, the poses eliminated; the last column is the gradient's.
class EnlargedSystem {
 public:
  EnlargedSystem(const Solved& solved, int effects, const Columns& columns)
      : solved_(solved),
        free_(solved.staged.solution.estimate.lens.free),
        effects_(effects),
        columns_(columns),
        sums_(cv::Mat::zeros(free_ + effects_, free_ + effects_ + 1, CV_64F)) {
    Lens lens = solved.staged.solution.estimate.lens;
    lens.free = FULL_PARAMETERS;  // derivatives by terms that were not estimated are asked for, too
    const Projection projection(lens);
    for (size_t i = 0; i < solved.views.size() && solvable_; ++i) AddView(projection, i);
    for (int i = 0; i < free_; ++i) sums_.at<double>(i, i) += solved.staged.prior[static_cast<size_t>(i)];
  }

  /// Pulls the effect's parameters toward zero.
  void Restrain(int parameter, double weight) {
    sums_.at<double>(free_ + parameter, free_ + parameter) += weight;
  }

  OmittedEffect Effect() const {
    OmittedEffect effect;
    const cv::Range lens(0, free_);
    const cv::Range own(free_, free_ + effects_);
    cv::Mat spread;
    cv::Mat values;
    if (!solvable_ || !SolveScaled(sums_(lens, lens), sums_(lens, own), spread)) return effect;
    const cv::Mat matrix = sums_(own, own) - spread.t() * sums_(lens, own);
    const cv::Mat slope = sums_.col(sums_.cols - 1);
    // The data's own slope at the lens is not zero: a prior pulls, and the corrections of the discs may be
    // newer than the solution. What the lens alone would gain by following it is not the effect's.
    const cv::Mat gradient = slope.rowRange(own) - spread.t() * slope.rowRange(lens);
    if (!SolveScaled(matrix, gradient, values)) return effect;
    effect.values = -values;
    effect.lensShift = spread * values;
    effect.squares = gradient.dot(values) / NoiseVariance(solved_.staged.solution, solved_.views);
    effect.significant = effect.squares > Threshold(effects_);
    return effect;
  }

 private:
  void AddView(const Projection& projection, size_t index) {
    const cv::Mat jacobian = JacobianOf(projection, index);
    cv::Mat products;
    cv::mulTransposed(jacobian, products, true);
    const cv::Range kept(0, free_ + effects_);
    const cv::Range pose(free_ + effects_, free_ + effects_ + POSE_PARAMETERS);
    cv::Mat coupled(POSE_PARAMETERS, free_ + effects_ + 1, CV_64F);
    products(pose, kept).copyTo(coupled(cv::Range::all(), kept));
    products(pose, cv::Range(products.cols - 1, products.cols)).copyTo(coupled.col(coupled.cols - 1));
    cv::Mat spread;
    solvable_ = SolveScaled(products(pose, pose), coupled, spread);
    if (!solvable_) return;
    sums_ -= coupled(cv::Range::all(), kept).t() * spread;
    sums_(kept, kept) += products(kept, kept);
    sums_.col(sums_.cols - 1) += products(kept, cv::Range(products.cols - 1, products.cols));
  }

  cv::Mat JacobianOf(const Projection& projection, size_t index) const {
    const View& view = solved_.views[index];
    const Pose& pose = solved_.staged.solution.estimate.poses[index];
    cv::Mat jacobian = cv::Mat::zeros(2 * static_cast<int>(view.object.size()),
                                      free_ + effects_ + POSE_PARAMETERS + 1, CV_64F);
    for (size_t k = 0; k < view.object.size(); ++k) {
      const double weight = view.weights.empty() ? 1.0 : std::sqrt(view.weights[k]);
      const Sight sight{view.object[k], pose.R};
      Coordinate u;
      Coordinate v;
      const cv::Point3d& point = view.object[k];
      if (!projection.Differentiate(pose.R * cv::Vec3d(point.x, point.y, point.z) + pose.t, u, v)) continue;
      const int row = 2 * static_cast<int>(k);
      FillRow(sight, u, free_, effects_, columns_, jacobian.ptr<double>(row));
      FillRow(sight, v, free_, effects_, columns_, jacobian.ptr<double>(row + 1));
      jacobian.at<double>(row, jacobian.cols - 1) = u.value - view.image[k].x;
      jacobian.at<double>(row + 1, jacobian.cols - 1) = v.value - view.image[k].y;
      jacobian.rowRange(row, row + 2) *= weight;
    }
    return jacobian;
  }

  /// Scaled to a diagonal of ones: the parameters' sizes lie many orders of magnitude apart.
  static bool SolveScaled(const cv::Mat& matrix, const cv::Mat& right, cv::Mat& solution) {
    cv::Mat scale(matrix.rows, 1, CV_64F);
    for (int i = 0; i < matrix.rows; ++i) {
      if (!(matrix.at<double>(i, i) > 0.0)) return false;
      scale.at<double>(i) = 1.0 / std::sqrt(matrix.at<double>(i, i));
    }
    const cv::Mat scaled = matrix.mul(scale * scale.t());
    const cv::Mat rows = cv::repeat(scale, 1, right.cols);
    if (!cv::solve(scaled, right.mul(rows), solution, cv::DECOMP_CHOLESKY)) return false;
    solution = solution.mul(rows);
    return true;
  }

  /// Wilson and Hilferty's approximation to the chi-squared distribution, four deviations above its middle.
  static double Threshold(int degrees) {
    const double variance = 2.0 / (9.0 * degrees);
    return degrees * std::pow(1.0 - variance + 4.0 * std::sqrt(variance), 3.0);
  }

  const Solved& solved_;
  const int free_;
  const int effects_;
  const Columns& columns_;
  cv::Mat sums_;
  bool solvable_ = true;
};

}  // namespace

OmittedEffect OmittedBend(const Solved& solved) {
  const Columns columns = [](const Sight& sight, const Coordinate& coordinate, double* to) {
    const double byDepth = ByTarget(sight, coordinate)[2];
    to[0] = byDepth * sight.point.x * sight.point.x;
    to[1] = byDepth * sight.point.x * sight.point.y;
    to[2] = byDepth * sight.point.y * sight.point.y;
  };
  return EnlargedSystem(solved, 3, columns).Effect();
}

OmittedEffect OmittedProportions(const Solved& solved) {
  const Columns columns = [](const Sight& sight, const Coordinate& coordinate, double* to) {
    const cv::Vec3d byTarget = ByTarget(sight, coordinate);
    to[0] = byTarget[1] * sight.point.y;
    to[1] = byTarget[0] * sight.point.y;
  };
  return EnlargedSystem(solved, 2, columns).Effect();
}

OmittedEffect OmittedLensTerms(const Solved& solved) {
  const Solution& solution = solved.staged.solution;
  const int free = solution.estimate.lens.free;
  const int terms = FULL_PARAMETERS - free;
  if (terms == 0) return {};
  const Columns columns = [&](const Sight& /*sight*/, const Coordinate& coordinate, double* to) {
    std::copy_n(coordinate.byLens.begin() + free, terms, to);
  };
  EnlargedSystem system(solved, terms, columns);
  const Prior prior = WeakPrior(solved.views, solution.estimate, NoiseVariance(solution, solved.views));
  for (int i = 0; i < terms; ++i) system.Restrain(i, prior[static_cast<size_t>(free + i)]);
  OmittedEffect effect = system.Effect();
  if (!effect.values.empty()) cv::vconcat(effect.lensShift, effect.values, effect.lensShift);
  return effect;
}

double DepthOfBend(const OmittedEffect& bend, const View& view) {
  const auto count = static_cast<int>(view.object.size());
  cv::Mat depths(count, 1, CV_64F);
  cv::Mat plane(count, 3, CV_64F);
  for (int i = 0; i < count; ++i) {
    const cv::Point3d& point = view.object[static_cast<size_t>(i)];
    depths.at<double>(i) = bend.values.at<double>(0) * point.x * point.x +
                           bend.values.at<double>(1) * point.x * point.y +
                           bend.values.at<double>(2) * point.y * point.y;
    plane.at<double>(i, 0) = point.x;
    plane.at<double>(i, 1) = point.y;
    plane.at<double>(i, 2) = 1.0;
  }
  cv::Mat best;
  if (!cv::solve(plane, depths, best, cv::DECOMP_SVD)) return 0.0;
  double lowest = 0.0;
  double highest = 0.0;
  cv::minMaxLoc(depths - plane * best, &lowest, &highest);
  return highest - lowest;
}

}  // namespace velmora::solver
