/// How strongly Levenberg-Marquardt's steps are damped.
#pragma once

#include <algorithm>

namespace velmora::solver {

class Damping {
 public:
  /// The damping of the first step, a share of the equations' diagonal.
  explicit Damping(double first) : value_(first) {}

  double Value() const { return value_; }

  /// After a step that helped; `gain` is its reduction of the cost over the predicted one.
  void Accept(double gain) {
    // Soon after a rejection the damping falls carefully, or the next step is rejected again.
    const double fall = sinceRejection_ < 3 ? 0.5 : 0.1;
    if (gain > 0.75) {
      value_ *= fall;
    } else if (gain > 0.5) {
      value_ *= 0.7;
    }
    value_ = std::max(value_, LEAST);
    raise_ = 2.0;
    ++sinceRejection_;
  }

  /// After a step that did not. False when none helps any more: rounding is all that is left.
  bool Reject() {
    value_ *= raise_;
    raise_ *= 2.0;
    sinceRejection_ = 0;
    return value_ <= MOST;
  }

 private:
  static constexpr double LEAST = 1e-15;
  static constexpr double MOST = 1e12;

  double value_;
  double raise_ = 2.0;
  int sinceRejection_ = 3;
};

}  // namespace velmora::solver
