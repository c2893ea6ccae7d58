/// Lenses: the forward formulas, the folds of distortion and its inverse by Newton's method.
#include "Lens.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace world {

namespace {

/// Rays beyond this angle from the axis are never imaged.
constexpr double WIDEST_DEGREES = 88.0;

/// The homography that a tilted sensor applies to distorted rays.
cv::Matx33d TiltMatrix(double tauX, double tauY) {
  const cv::Matx33d aboutX(1, 0, 0, 0, std::cos(tauX), std::sin(tauX), 0, -std::sin(tauX), std::cos(tauX));
  const cv::Matx33d aboutY(std::cos(tauY), 0, -std::sin(tauY), 0, 1, 0, std::sin(tauY), 0, std::cos(tauY));
  const cv::Matx33d R = aboutY * aboutX;
  const cv::Matx33d onto(R(2, 2), 0, -R(0, 2), 0, R(2, 2), -R(1, 2), 0, 0, 1);
  return onto * R;
}

bool Through(const cv::Matx33d& H, cv::Point2d& point) {
  const cv::Vec3d h = H * cv::Vec3d(point.x, point.y, 1.0);
  if (!(h[2] > 0.0)) return false;
  point = {h[0] / h[2], h[1] / h[2]};
  return true;
}

}  // namespace

Lens::Lens() : Lens(cv::Matx33d::eye()) {
}

Lens::Lens(const cv::Matx33d& K, const std::vector<double>& D)
    : K_(K),
      D_(D),
      c_(),
      tilt_(cv::Matx33d::eye()),
      untilt_(cv::Matx33d::eye()),
      tilted_(false),
      straight_(true),
      folds_() {
  const std::array<std::size_t, 6> counts = {0, 4, 5, 8, 12, 14};
  if (std::find(counts.begin(), counts.end(), D.size()) == counts.end()) {
    throw std::invalid_argument("a lens has 0, 4, 5, 8, 12 or 14 distortion coefficients");
  }
  if (!(K(0, 0) > 0.0) || !(K(1, 1) > 0.0)) throw std::invalid_argument("a lens has positive focal lengths");
  std::copy(D.begin(), D.end(), c_.begin());
  straight_ = std::all_of(c_.begin(), c_.begin() + 12, [](double value) { return value == 0.0; });
  tilted_ = c_[12] != 0.0 || c_[13] != 0.0;
  if (tilted_) {
    tilt_ = TiltMatrix(c_[12], c_[13]);
    untilt_ = tilt_.inv();
  }
  FindFolds();
}

Lens::Lens(const cv::Matx33d& K, const FisheyeCurve& curve) : Lens(K) {
  curve_ = curve;
}

Lens Lens::WithMatrix(const cv::Matx33d& K) const {
  return curve_ ? Lens(K, *curve_) : Lens(K, D_);
}

Lens::Bent Lens::Bend(const cv::Point2d& ray) const {
  const double x = ray.x;
  const double y = ray.y;
  const double r2 = x * x + y * y;
  const double numerator = 1.0 + r2 * (c_[0] + r2 * (c_[1] + r2 * c_[4]));
  const double denominator = 1.0 + r2 * (c_[5] + r2 * (c_[6] + r2 * c_[7]));
  const double numeratorSlope = c_[0] + r2 * (2.0 * c_[1] + r2 * 3.0 * c_[4]);
  const double denominatorSlope = c_[5] + r2 * (2.0 * c_[6] + r2 * 3.0 * c_[7]);
  const double c = numerator / denominator;
  const double slope = (numeratorSlope - c * denominatorSlope) / denominator;
  const double p1 = c_[2];
  const double p2 = c_[3];
  const double prismX = c_[8] + 2.0 * c_[9] * r2;
  const double prismY = c_[10] + 2.0 * c_[11] * r2;

  Bent bent = {};
  bent.denominator = denominator;
  bent.at.x = x * c + 2.0 * p1 * x * y + p2 * (r2 + 2.0 * x * x) + r2 * (c_[8] + r2 * c_[9]);
  bent.at.y = y * c + p1 * (r2 + 2.0 * y * y) + 2.0 * p2 * x * y + r2 * (c_[10] + r2 * c_[11]);
  const double cross = 2.0 * x * y * slope + 2.0 * p1 * x + 2.0 * p2 * y;
  bent.xx = c + 2.0 * x * x * slope + 2.0 * p1 * y + 6.0 * p2 * x + 2.0 * x * prismX;
  bent.xy = cross + 2.0 * y * prismX;
  bent.yx = cross + 2.0 * x * prismY;
  bent.yy = c + 2.0 * y * y * slope + 6.0 * p1 * y + 2.0 * p2 * x + 2.0 * y * prismY;
  return bent;
}

cv::Point2d Lens::Project(const cv::Point3d& direction) const {
  if (!curve_) {
    const double none = std::numeric_limits<double>::infinity();
    return direction.z > 0.0 ? Project(cv::Point2d(direction.x / direction.z, direction.y / direction.z))
                             : cv::Point2d(none, none);
  }
  const double off = std::hypot(direction.x, direction.y);
  const double scale = off > 0.0 ? curve_->Distance(std::atan2(off, direction.z)) / off : 0.0;
  return {K_(0, 0) * scale * direction.x + K_(0, 2), K_(1, 1) * scale * direction.y + K_(1, 2)};
}

cv::Point2d Lens::Project(const cv::Point2d& ray) const {
  if (curve_) return Project(cv::Point3d(ray.x, ray.y, 1.0));
  cv::Point2d bent = straight_ ? ray : Bend(ray).at;
  if (tilted_) {
    const cv::Vec3d h = tilt_ * cv::Vec3d(bent.x, bent.y, 1.0);
    bent = {h[0] / h[2], h[1] / h[2]};
  }
  return {K_(0, 0) * bent.x + K_(0, 2), K_(1, 1) * bent.y + K_(1, 2)};
}

bool Lens::Regular(const cv::Point2d& ray) const {
  const Bent bent = Bend(ray);
  return bent.denominator > 0.0 && bent.Determinant() > 0.0;
}

void Lens::FindFolds() {
  const double widest = std::tan(WIDEST_DEGREES * CV_PI / 180.0);
  folds_.fill(widest);
  if (straight_) return;
  for (int k = 0; k < DIRECTIONS; ++k) {
    const double angle = 2.0 * CV_PI * k / DIRECTIONS;
    const cv::Point2d direction(std::cos(angle), std::sin(angle));
    double before = 0.0;
    for (double degrees = 0.25; degrees <= WIDEST_DEGREES; degrees += 0.25) {
      double beyond = std::tan(degrees * CV_PI / 180.0);
      if (Regular(direction * beyond)) {
        before = beyond;
        continue;
      }
      for (int step = 0; step < 40; ++step) {
        const double middle = 0.5 * (before + beyond);
        (Regular(direction * middle) ? before : beyond) = middle;
      }
      folds_[static_cast<std::size_t>(k)] = before;
      break;
    }
  }
}

double Lens::FoldAt(const cv::Point2d& ray) const {
  if (straight_) return folds_[0];
  const double turn = std::atan2(ray.y, ray.x) / (2.0 * CV_PI) * DIRECTIONS + DIRECTIONS;
  const double whole = std::floor(turn);
  const double rest = turn - whole;
  const std::size_t k = static_cast<std::size_t>(whole);
  return (1.0 - rest) * folds_[k % DIRECTIONS] + rest * folds_[(k + 1) % DIRECTIONS];
}

bool Lens::Images(const cv::Point3d& direction) const {
  if (!curve_) {
    return direction.z > 0.0 && Images(cv::Point2d(direction.x / direction.z, direction.y / direction.z));
  }
  const double off = std::hypot(direction.x, direction.y);
  return (off > 0.0 || direction.z > 0.0) && std::atan2(off, direction.z) < curve_->WidestAngle();
}

bool Lens::Images(const cv::Point2d& ray) const {
  if (curve_) return Images(cv::Point3d(ray.x, ray.y, 1.0));
  if (!(std::hypot(ray.x, ray.y) < FoldAt(ray))) return false;
  if (straight_ && !tilted_) return true;
  if (!Regular(ray)) return false;
  cv::Point2d bent = Bend(ray).at;
  return Through(tilt_, bent);
}

bool Lens::Newton(const cv::Point2d& target, cv::Point2d& ray) const {
  constexpr double GOOD = 1e-14;
  constexpr double ENOUGH = 1e-11;
  cv::Point2d guess = ray;
  for (int step = 0; step < 25; ++step) {
    const Bent bent = Bend(guess);
    const cv::Point2d error = bent.at - target;
    const double determinant = bent.Determinant();
    if (!(bent.denominator > 0.0) || !(determinant > 0.0)) return false;
    const cv::Point2d move((bent.yy * error.x - bent.xy * error.y) / determinant,
                           (bent.xx * error.y - bent.yx * error.x) / determinant);
    guess -= move;
    const double size = std::abs(move.x) + std::abs(move.y);
    const double scale = 1.0 + std::abs(guess.x) + std::abs(guess.y);
    if (size < GOOD * scale || (step > 8 && size < ENOUGH * scale)) {
      if (!Images(guess)) return false;
      ray = guess;
      return true;
    }
    if (!(size < 100.0)) return false;
  }
  return false;
}

bool Lens::Continuation(const cv::Point2d& target, cv::Point2d& ray) const {
  // Follows the branch from the centre toward the target, with steps that shrink where Newton fails.
  cv::Point2d at(0.0, 0.0);
  const cv::Point2d origin = Bend(at).at;
  double reached = 0.0;
  double stride = 0.25;
  while (reached < 1.0) {
    const double next = std::min(1.0, reached + stride);
    if (Newton(origin + next * (target - origin), at)) {
      reached = next;
      stride *= 1.5;
    } else {
      stride *= 0.5;
      if (stride < 1e-3) return false;
    }
  }
  ray = at;
  return true;
}

bool Lens::Unproject(const cv::Point2d& pixel, cv::Point3d& direction, bool warm) const {
  if (!curve_) {
    cv::Point2d ray =
        warm ? cv::Point2d(direction.x / direction.z, direction.y / direction.z) : cv::Point2d();
    if (!Unproject(pixel, ray, warm)) return false;
    direction = {ray.x, ray.y, 1.0};
    return true;
  }
  const cv::Point2d target((pixel.x - K_(0, 2)) / K_(0, 0), (pixel.y - K_(1, 2)) / K_(1, 1));
  const double distance = cv::norm(target);
  double angle = 0.0;
  if (!curve_->AngleAt(distance, angle)) return false;
  const double scale = distance > 0.0 ? std::sin(angle) / distance : 0.0;
  direction = {scale * target.x, scale * target.y, std::cos(angle)};
  return true;
}

bool Lens::Unproject(const cv::Point2d& pixel, cv::Point2d& ray, bool warm) const {
  if (curve_) {
    cv::Point3d direction;
    if (!Unproject(pixel, direction) || !(direction.z > 0.0)) return false;
    ray = {direction.x / direction.z, direction.y / direction.z};
    return true;
  }
  cv::Point2d target((pixel.x - K_(0, 2)) / K_(0, 0), (pixel.y - K_(1, 2)) / K_(1, 1));
  if (tilted_ && !Through(untilt_, target)) return false;
  if (straight_) {
    if (!Images(target)) return false;
    ray = target;
    return true;
  }
  cv::Point2d guess = ray;
  if ((warm && Newton(target, guess)) || Newton(target, guess = target) || Continuation(target, guess)) {
    ray = guess;
    return true;
  }
  return false;
}

}  // namespace world
