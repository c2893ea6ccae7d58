/// Views of two cameras with known lenses, in terms of how they stand to each other.
#pragma once

#include <vector>

#include "solver/LevenbergMarquardt.h"

namespace velmora::solver {

/// The shared parameters are turn and shift of the right camera; poses are those before the left one.
class PairMeasurements : public Measurements {
 public:
  /// Views of both cameras in the same order, of the same points. Keeps references.
  PairMeasurements(const std::vector<View>& left, const std::vector<View>& right, const Lens& leftLens,
                   const Lens& rightLens);

  size_t Views() const override { return left_.size(); }
  int Shared() const override { return POSE_PARAMETERS; }
  double Coordinates() const override { return coordinates_; }
  ViewEquations EquationsAt(size_t view, const Estimate& estimate) const override;
  void MoveShared(Estimate& estimate, const Step& step) const override;

 private:
  const std::vector<View>& left_;
  const std::vector<View>& right_;
  const Projection leftLens_;
  const Projection rightLens_;
  double coordinates_ = 0.0;
};

}  // namespace velmora::solver
