/// What of a rig did not stay the same from view to view.
#include "quality/Changes.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <set>
#include <utility>

#include "quality/EnlargedEquations.h"
#include "solver/ClusterCovariance.h"
#include "solver/PoseGroups.h"

namespace velmora {

namespace {

using Eigen::Index;
using Kind = Change::Kind;
using solver::ReducedSystem;

/// With fewer poses a change and a faulty view cannot be told apart.
constexpr size_t FEWEST_ON_A_SIDE = 2;
constexpr size_t FEWEST_VIEWS = 5;

/// What a choice of weights for the views sums up to.
struct Sums {
  Eigen::MatrixXd coupling;  ///< with what all views share
  Eigen::MatrixXd own;
  Eigen::VectorXd gradient;

  void Add(const Sums& other, double weight) {
    coupling += weight * other.coupling;
    own += weight * weight * other.own;
    gradient += weight * other.gradient;
  }
};

class Search {
 public:
  Search(const Solution& solution, const Eigen::MatrixXd& changing, size_t camera)
      : solution_(solution), changing_(changing), camera_(camera) {
    std::vector<size_t> each(solution.equations.size());
    std::iota(each.begin(), each.end(), size_t{0});
    views_ = solver::PartsOf(solution, each);
    const ReducedSystem all = solver::SystemOf(solution);
    matrix_ = all.matrix;
    slope_ = Eigen::VectorXd::Zero(matrix_.rows());
    usable_ = all.solvable;
    for (const ReducedSystem& view : views_) {
      slope_ += view.gradient;
      const Eigen::MatrixXd coupling = view.matrix * changing;
      sums_.push_back({coupling, changing.transpose() * coupling, changing.transpose() * view.gradient});
    }
    // Views that have nothing to do with what may change are of no side.
    for (size_t i = 0; i < views_.size(); ++i) {
      if (sums_[i].own.trace() > 0.0) seen_.push_back(i);
    }
    groups_ = solver::GroupsOf(solution.views, solution.rig);
    usable_ = usable_ && seen_.size() >= FEWEST_VIEWS;
  }

  Change Find(Kind kind, double sure) {
    // How few poses scatter says little of how far they would.
    sure_ = IsRepeated() ? std::max(sure, SURE) : sure;
    if (!usable_) return {};
    switch (kind) {
      case Kind::Step:
        return Step();
      case Kind::Drift:
        return Changed(Kind::Drift, Shares([](size_t i) { return static_cast<double>(i); }), 0.0);
      case Kind::Distance:
        return Changed(Kind::Distance, Shares([this](size_t i) { return 1.0 / DistanceOf(i); }), 0.0);
      case Kind::Mixture:
        return Mixture();
    }
    return {};
  }

 private:
  /// Whether some views are of one pose.
  bool IsRepeated() const { return solver::CountOfGroups(groups_) < groups_.size(); }

  double DistanceOf(size_t view) const {
    const RigidTransform pose =
        solution_.rig.cameras[camera_].cameraFromRig * solution_.views[view].rigFromTarget;
    return std::max(pose.t[2], 1e-9);
  }

  /// From 0 for the least of what the views have to 1 for the most.
  template <typename Quantity>
  std::vector<double> Shares(const Quantity& quantity) const {
    std::vector<double> values;
    for (const size_t view : seen_) values.push_back(quantity(view));
    const auto [least, most] = std::minmax_element(values.begin(), values.end());
    const double from = *least;
    const double range = std::max(*most - from, 1e-300);
    std::vector<double> weights(views_.size(), 0.0);
    for (size_t i = 0; i < seen_.size(); ++i) weights[seen_[i]] = (values[i] - from) / range;
    return weights;
  }

  Sums Nothing() const {
    return {Eigen::MatrixXd::Zero(changing_.rows(), changing_.cols()),
            Eigen::MatrixXd::Zero(changing_.cols(), changing_.cols()),
            Eigen::VectorXd::Zero(changing_.cols())};
  }

  /// What the change takes off the cost, in squared pixels; 0 when it cannot be told.
  double SquaresOf(const Sums& sums) const {
    Eigen::MatrixXd spread;
    Eigen::MatrixXd values;
    if (!SolveScaled(matrix_, sums.coupling, spread)) return 0.0;
    const Eigen::MatrixXd own = sums.own - spread.transpose() * sums.coupling;
    const Eigen::VectorXd slope = sums.gradient - spread.transpose() * slope_;
    return SolveScaled(own, slope, values) ? slope.dot(values.col(0)) : 0.0;
  }

  /// From which split on, in that order, `least` different poses come before it. Views that repeat one
  /// share its errors: what sets them apart from all others need not be a change.
  template <typename Iterator>
  size_t FirstWith(Iterator from, Iterator to, size_t least) const {
    std::set<size_t> poses;
    size_t count = 0;
    for (Iterator i = from; i != to && poses.size() < least; ++i, ++count) poses.insert(groups_[*i]);
    return poses.size() < least ? static_cast<size_t>(to - from) : count;
  }

  /// How many of the views, in that order, to take for the others: those that take most off; 0 of none.
  size_t BestSplit(const std::vector<size_t>& order, size_t least) const {
    Sums sums = Nothing();
    size_t best = 0;
    double most = 0.0;
    const size_t first = FirstWith(order.begin(), order.end(), least);
    const size_t after = FirstWith(order.rbegin(), order.rend(), least);
    for (size_t count = 1; count + after <= order.size(); ++count) {
      sums.Add(sums_[order[count - 1]], 1.0);
      if (count < first) continue;
      const double squares = SquaresOf(sums);
      if (!(squares > most)) continue;
      most = squares;
      best = count;
    }
    return best;
  }

  Change Step() const {
    const size_t split = BestSplit(seen_, FEWEST_ON_A_SIDE);
    if (split == 0) return {};
    std::vector<double> weights(views_.size(), 0.0);
    for (size_t i = split; i < seen_.size(); ++i) weights[seen_[i]] = 1.0;
    Change change = Changed(Kind::Step, weights, std::log(static_cast<double>(seen_.size())));
    change.last = seen_[split - 1];
    return change;
  }

  /// By how much the first number that may change would be another in one view alone.
  double OwnValueOf(size_t view) const {
    const Sums& sums = sums_[view];
    Eigen::MatrixXd spread;
    if (!SolveScaled(matrix_, sums.coupling.col(0), spread)) return 0.0;
    const double own = sums.own(0, 0) - spread.col(0).dot(sums.coupling.col(0));
    return own > 0.0 ? -(sums.gradient(0) - spread.col(0).dot(slope_)) / own : 0.0;
  }

  Change Mixture() const {
    std::vector<std::pair<double, size_t>> values;
    for (const size_t view : seen_) values.emplace_back(OwnValueOf(view), view);
    std::sort(values.begin(), values.end());
    std::vector<size_t> order;
    order.reserve(values.size());
    for (const auto& value : values) order.push_back(value.second);
    const size_t split = BestSplit(order, IsRepeated() ? FEWEST_ON_A_SIDE : 1);
    if (split == 0) return {};
    const auto middle = order.begin() + static_cast<std::ptrdiff_t>(split);
    std::vector<size_t> apart = 2 * split > order.size() ? std::vector<size_t>(middle, order.end())
                                                         : std::vector<size_t>(order.begin(), middle);
    std::sort(apart.begin(), apart.end());
    std::vector<double> weights(views_.size(), 0.0);
    for (const size_t view : apart) weights[view] = 1.0;
    // Any of the views could have been the others.
    Change change = Changed(Kind::Mixture, weights, static_cast<double>(order.size()) * std::log(2.0));
    change.apart = std::move(apart);
    return change;
  }

  Change Changed(Kind kind, const std::vector<double>& weights, double logOfChoices) const {
    const Index shared = changing_.rows();
    const Index count = changing_.cols();
    std::vector<ReducedSystem> enlarged;
    for (size_t i = 0; i < views_.size(); ++i) {
      ReducedSystem view{Eigen::MatrixXd(shared + count, shared + count), Eigen::VectorXd(shared + count),
                         views_[i].solvable};
      view.matrix << views_[i].matrix, weights[i] * sums_[i].coupling,
          weights[i] * sums_[i].coupling.transpose(), weights[i] * weights[i] * sums_[i].own;
      view.gradient << views_[i].gradient, weights[i] * sums_[i].gradient;
      enlarged.push_back(std::move(view));
    }
    Change change;
    change.kind = kind;
    change.effect =
        EnlargedEquations(solution_, std::move(enlarged), count).EffectOf(0, count, logOfChoices, sure_);
    if (change.effect.values.size() == 0) return change;
    change.before = change.effect.shift;
    change.after = change.before + changing_ * change.effect.values;
    return change;
  }

  const Solution& solution_;
  const Eigen::MatrixXd& changing_;
  const size_t camera_;
  std::vector<ReducedSystem> views_;
  std::vector<Sums> sums_;
  std::vector<size_t> groups_;
  std::vector<size_t> seen_;  ///< views that what may change has to do with
  Eigen::MatrixXd matrix_;
  Eigen::VectorXd slope_;  ///< of the data alone
  bool usable_ = false;
  double sure_ = FAIRLY_SURE;
};

}  // namespace

Eigen::MatrixXd ChangingLens(const Solution& solution, size_t camera) {
  const Layout layout = LayoutOf(solution);
  const Layout::Block& block = layout.cameras[camera];
  if (block.count == 0) return {};
  const auto& values = solution.rig.cameras[camera].intrinsics.values;
  Eigen::MatrixXd changing = Eigen::MatrixXd::Zero(layout.shared, 3);
  changing(block.intrinsics + FX, 0) = values[FX];
  changing(block.intrinsics + FY, 0) = values[FY];
  changing(block.intrinsics + CX, 1) = 1.0;
  changing(block.intrinsics + CY, 2) = 1.0;
  return changing;
}

Eigen::MatrixXd ChangingFocalLength(const Solution& solution, size_t camera) {
  const Eigen::MatrixXd lens = ChangingLens(solution, camera);
  return lens.size() == 0 ? lens : Eigen::MatrixXd(lens.col(0));
}

Eigen::MatrixXd ChangingMount(const Solution& solution, size_t camera) {
  const Layout layout = LayoutOf(solution);
  const int pose = layout.cameras[camera].pose;
  if (pose == Layout::FIXED) return {};
  Eigen::MatrixXd changing = Eigen::MatrixXd::Zero(layout.shared, POSE_PARAMETERS);
  for (int i = 0; i < POSE_PARAMETERS; ++i) changing(pose + i, i) = 1.0;
  return changing;
}

std::vector<Change> ChangesOf(const Solution& solution, const Eigen::MatrixXd& changing, size_t camera,
                              const std::vector<Kind>& kinds, double sure) {
  std::vector<Change> changes;
  if (changing.size() == 0) return changes;
  Search search(solution, changing, camera);
  for (const Kind kind : kinds) {
    Change change = search.Find(kind, sure);
    if (change.effect.significant) changes.push_back(std::move(change));
  }
  return changes;
}

Change LargestChangeOf(const Solution& solution, const Eigen::MatrixXd& changing, size_t camera,
                       const std::vector<Kind>& kinds) {
  Change largest;
  for (Change& change : ChangesOf(solution, changing, camera, kinds)) {
    if (change.effect.Excess() > largest.effect.Excess()) largest = std::move(change);
  }
  return largest;
}

}  // namespace velmora
