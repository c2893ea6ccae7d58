/// The curve of a fisheye, where it ends, and its inverse.
#include "FisheyeCurve.h"

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>
#include <stdexcept>

namespace world {

FisheyeCurve::FisheyeCurve(const Coefficients& k) : k_(k), widest_(CV_PI) {
  if (!std::all_of(k.begin(), k.end(), [](double value) { return std::isfinite(value); })) {
    throw std::invalid_argument("the coefficients of a fisheye are finite");
  }
  constexpr int STEPS = 3600;
  for (int step = 1; step <= STEPS; ++step) {
    double beyond = CV_PI * step / STEPS;
    if (Slope(beyond) > 0.0) continue;
    double before = CV_PI * (step - 1) / STEPS;
    for (int halving = 0; halving < 45; ++halving) {
      const double middle = 0.5 * (before + beyond);
      (Slope(middle) > 0.0 ? before : beyond) = middle;
    }
    widest_ = before;
    break;
  }
}

double FisheyeCurve::Distance(double angle) const {
  const double square = angle * angle;
  return angle * (1.0 + square * (k_[0] + square * (k_[1] + square * (k_[2] + square * k_[3]))));
}

double FisheyeCurve::Slope(double angle) const {
  const double square = angle * angle;
  return 1.0 +
         square * (3.0 * k_[0] + square * (5.0 * k_[1] + square * (7.0 * k_[2] + square * 9.0 * k_[3])));
}

bool FisheyeCurve::AngleAt(double distance, double& angle) const {
  if (!(distance >= 0.0) || !(distance < Distance(widest_))) return false;
  // The angle lies between these. Where a step of Newton's method would leave them, they are halved instead.
  double low = 0.0;
  double high = widest_;
  double guess = std::min(distance, 0.5 * widest_);
  for (int step = 0; step < 100; ++step) {
    const double error = Distance(guess) - distance;
    (error > 0.0 ? high : low) = guess;
    const double newton = guess - error / Slope(guess);
    const double next = newton >= low && newton <= high ? newton : 0.5 * (low + high);
    const double move = std::abs(next - guess);
    guess = next;
    if (move <= 1e-15) break;
  }
  angle = guess;
  return true;
}

}  // namespace world
