/// Finds the poses of views that a lens already known has seen.
#include "solver/KnownLens.h"

#include <algorithm>

namespace velmora::solver {

namespace {

double PointsOf(const View& view) {
  return view.weights.empty()
             ? static_cast<double>(view.object.size())
             : static_cast<double>(std::count_if(view.weights.begin(), view.weights.end(),
                                                 [](double weight) { return weight > 0.0; }));
}

/// Views with a lens that stays as it is: what is left is their poses.
class PoseMeasurements : public Measurements {
 public:
  explicit PoseMeasurements(const std::vector<View>& views) : views_(views) {
    for (const View& view : views) coordinates_ += 2.0 * PointsOf(view);
  }

  size_t Views() const override { return views_.size(); }
  int Shared() const override { return 0; }
  double Coordinates() const override { return coordinates_; }
  ViewEquations EquationsAt(size_t view, const Estimate& estimate) const override {
    return PoseEquationsOf(views_[view], estimate.lens, estimate.poses[view]);
  }
  void MoveShared(Estimate& /*estimate*/, const Step& /*step*/) const override {}

 private:
  const std::vector<View>& views_;
  double coordinates_ = 0.0;
};

}  // namespace

Solution SolvePoses(const std::vector<View>& views, const Estimate& start) {
  return Minimise(PoseMeasurements(views), start, {});
}

}  // namespace velmora::solver
