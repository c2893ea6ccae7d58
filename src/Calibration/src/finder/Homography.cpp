/// The view of a plane, from points on it.
#include "finder/Homography.h"

#include <Eigen/Cholesky>
#include <Eigen/Eigenvalues>
#include <cmath>

namespace velmora::finder {

namespace {

using Points = Eigen::Matrix2Xd;
using Matrix8 = Eigen::Matrix<double, 8, 8>;
using Matrix9 = Eigen::Matrix<double, 9, 9>;
using Vector8 = Eigen::Matrix<double, 8, 1>;
using Vector9 = Eigen::Matrix<double, 9, 1>;

constexpr int ROUNDS = 30;
/// A step this small is the last one, in units of the points' spread.
constexpr double SETTLED = 1e-12;
/// A step this small leads to the least sum; rounding hides whether the sum became less.
constexpr double CLOSE = 1e-6;
/// The damping of a first step that led away.
constexpr double DAMPING = 1e-3;
/// With a second eigenvalue of a smaller share of the largest, more than one homography does.
constexpr double AMBIGUOUS = 1e-11;

/// Points moved and scaled to lie around the origin, about 1 away, which keeps all sums of one size.
struct Centred {
  explicit Centred(const std::vector<cv::Point2d>& all) : points(2, static_cast<Eigen::Index>(all.size())) {
    for (size_t k = 0; k < all.size(); ++k) points.col(static_cast<Eigen::Index>(k)) << all[k].x, all[k].y;
    middle = points.rowwise().mean();
    points.colwise() -= middle;
    spread = std::sqrt(points.squaredNorm() / static_cast<double>(all.size()));
    points /= spread;
  }

  Points points;
  Eigen::Vector2d middle;
  double spread = 0.0;
};

/// The homography, but for its scale, with the least algebraic error: near enough for Refine(). False when
/// there are several.
bool Start(const Points& from, const Points& to, Vector9& h) {
  Matrix9 normal = Matrix9::Zero();
  for (Eigen::Index k = 0; k < from.cols(); ++k) {
    const double u = from(0, k);
    const double v = from(1, k);
    Vector9 x;
    Vector9 y;
    x << u, v, 1.0, 0.0, 0.0, 0.0, -to(0, k) * u, -to(0, k) * v, -to(0, k);
    y << 0.0, 0.0, 0.0, u, v, 1.0, -to(1, k) * u, -to(1, k) * v, -to(1, k);
    normal += x * x.transpose() + y * y.transpose();
  }
  const Eigen::SelfAdjointEigenSolver<Matrix9> solver(normal);
  if (solver.info() != Eigen::Success) return false;
  h = solver.eigenvectors().col(0);
  return solver.eigenvalues()(1) > AMBIGUOUS * solver.eigenvalues()(8);
}

/// The normal equations of a step of the homography's first eight elements; the last one stays 1.
struct Equations {
  Matrix8 normal = Matrix8::Zero();
  Vector8 right = Vector8::Zero();
};

/// The sum of squared distances; adds up the equations of the next step too when there are any.
double SumOf(const Points& from, const Points& to, const Vector8& h, Equations* equations) {
  double sum = 0.0;
  for (Eigen::Index k = 0; k < from.cols(); ++k) {
    const double u = from(0, k);
    const double v = from(1, k);
    const double w = 1.0 / (h(6) * u + h(7) * v + 1.0);
    const double x = (h(0) * u + h(1) * v + h(2)) * w;
    const double y = (h(3) * u + h(4) * v + h(5)) * w;
    const Eigen::Vector2d left(to(0, k) - x, to(1, k) - y);
    sum += left.squaredNorm();
    if (equations == nullptr) continue;
    Vector8 ofX;
    Vector8 ofY;
    ofX << u * w, v * w, w, 0.0, 0.0, 0.0, -x * u * w, -x * v * w;
    ofY << 0.0, 0.0, 0.0, u * w, v * w, w, -y * u * w, -y * v * w;
    equations->normal += ofX * ofX.transpose() + ofY * ofY.transpose();
    equations->right += left(0) * ofX + left(1) * ofY;
  }
  return sum;
}

/// Gauss's steps to the least sum, damped where they lead away from it.
bool Refine(const Points& from, const Points& to, Vector8& h) {
  double damping = 0.0;
  for (int round = 0; round < ROUNDS; ++round) {
    Equations equations;
    const double sum = SumOf(from, to, h, &equations);
    equations.normal.diagonal() *= 1.0 + damping;
    const Vector8 step = equations.normal.ldlt().solve(equations.right);
    if (!step.allFinite()) return false;
    const Vector8 next = h + step;
    const double length = step.lpNorm<Eigen::Infinity>();
    if (length < CLOSE || SumOf(from, to, next, nullptr) <= sum) {
      h = next;
      damping = damping > DAMPING ? 0.1 * damping : 0.0;
    } else {
      damping = damping > 0.0 ? 10.0 * damping : DAMPING;
    }
    if (length < SETTLED) break;
  }
  return true;
}

Eigen::Matrix3d InRows(const Vector9& h) {
  Eigen::Matrix3d rows;
  rows << h(0), h(1), h(2), h(3), h(4), h(5), h(6), h(7), h(8);
  return rows;
}

}  // namespace

bool FitHomography(const std::vector<cv::Point2d>& from, const std::vector<cv::Point2d>& to, cv::Matx33d& H) {
  if (from.size() < 4) return false;
  const Centred projection(from);
  const Centred view(to);
  // All at one point, or not finite.
  if (!projection.points.allFinite() || !view.points.allFinite()) return false;
  Vector9 start;
  if (!Start(projection.points, view.points, start)) return false;
  Vector8 h = start.head<8>() / start(8);
  if (!h.allFinite() || !Refine(projection.points, view.points, h)) return false;
  Vector9 refined;
  refined << h, 1.0;
  Eigen::Matrix3d into = Eigen::Matrix3d::Identity() / projection.spread;
  into.col(2) << -projection.middle / projection.spread, 1.0;
  Eigen::Matrix3d outOf = Eigen::Matrix3d::Identity() * view.spread;
  outOf.col(2) << view.middle, 1.0;
  Eigen::Matrix3d whole = outOf * InRows(refined) * into;
  whole /= whole(2, 2);
  if (!whole.allFinite()) return false;
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) H(row, column) = whole(row, column);
  }
  return true;
}

}  // namespace velmora::finder
