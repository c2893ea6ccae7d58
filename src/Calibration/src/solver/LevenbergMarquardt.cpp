/// Moves what all views share, and each view's pose, to where the cost is least.
#include "solver/LevenbergMarquardt.h"

#include <utility>

#include "solver/Damping.h"
#include "solver/ScaledSystem.h"
#include "solver/ShapedEquations.h"
#include "solver/SheetShape.h"
#include "solver/Threads.h"

namespace velmora::solver {

namespace {

/// The relative rounding error of a sum of squared residuals.
constexpr double ROUNDING = 1e-14;

/// What a computation looks for.
struct Estimate {
  Rig rig;
  std::vector<RigidTransform> rigFromTarget;  ///< one for each view
  Eigen::VectorXd shape;                      ///< of the sheet
  std::vector<cv::Vec3d> bends;               ///< each view's own; none at all where views have none
};

/// An estimate with its equations.
struct Evaluation {
  Estimate estimate;
  std::vector<ViewEquations> equations;
  PriorTerms priors;
  double cost = 0.0;
  bool usable = true;

  double Total() const { return cost + priors.cost; }
};

/// A step of everything, and by how much it should reduce the cost.
struct FullStep {
  Eigen::VectorXd shared;
  std::vector<PoseStep> poses;
  std::vector<Eigen::Vector3d> bends;
  double predicted = 0.0;
};

void MoveShared(const Eigen::VectorXd& step, const Layout& layout, Rig& rig) {
  for (size_t i = 0; i < rig.cameras.size(); ++i) {
    const Layout::Block& block = layout.cameras[i];
    auto& values = rig.cameras[i].intrinsics.values;
    for (int k = 0; k < block.count; ++k) values[static_cast<size_t>(k)] += step(block.intrinsics + k);
    if (block.pose == Layout::FIXED) continue;
    rig.cameras[i].cameraFromRig = Retract(rig.cameras[i].cameraFromRig, step.data() + block.pose);
  }
}

class Minimiser {
 public:
  Minimiser(CalibrationProblem problem, const SolveOptions& options)
      : problem_(std::move(problem)),
        options_(options),
        layout_(LayoutOf(problem_.rig, problem_.estimated, problem_.sheet)),
        now_(Start()) {
    Evaluate(now_);
  }

  Solution Run() {
    while (now_.usable && !converged_ && iterations_ < options_.mostIterations &&
           !options_.progress.IsGivenUp()) {
      ++iterations_;
      Iterate();
      if (!options_.progress.Continues(iterations_, now_.cost)) break;
    }
    return Result();
  }

  Solution Result() {
    Solution solution;
    solution.rig = std::move(now_.estimate.rig);
    solution.views = std::move(problem_.views);
    for (size_t i = 0; i < solution.views.size(); ++i) {
      solution.views[i].rigFromTarget = now_.estimate.rigFromTarget[i];
    }
    solution.sheet = problem_.sheet;
    if (!solution.sheet.IsFlat()) NoteShape(solution);
    solution.estimated = problem_.estimated;
    solution.priors = std::move(problem_.priors);
    solution.priors.resize(solution.rig.cameras.size());
    solution.equations = std::move(now_.equations);
    solution.cost = now_.cost;
    solution.priorCost = now_.priors.cost;
    solution.iterations = iterations_;
    solution.converged = converged_;
    solution.usable = now_.usable;
    return solution;
  }

 private:
  Evaluation Start() const {
    Evaluation start;
    start.estimate.rig = problem_.rig;
    start.estimate.shape = problem_.sheet.values;
    if (start.estimate.shape.size() == 0) start.estimate.shape.setZero(problem_.sheet.terms.Count());
    for (const TargetView& view : problem_.views) {
      start.estimate.rigFromTarget.push_back(view.rigFromTarget);
      if (problem_.sheet.HasOwnBends()) start.estimate.bends.push_back(view.bend);
    }
    return start;
  }

  void NoteShape(Solution& solution) const {
    solution.sheet.values = now_.estimate.shape;
    for (size_t i = 0; i < now_.estimate.bends.size(); ++i) solution.views[i].bend = now_.estimate.bends[i];
    PutToShape(solution.sheet, solution.views);
  }

  /// The view as the estimate has it, with the moves that all views share.
  TargetView ViewAt(const Estimate& estimate, const std::vector<cv::Point3d>& common, size_t number) const {
    TargetView view = problem_.views[number];
    view.rigFromTarget = estimate.rigFromTarget[number];
    if (!estimate.bends.empty()) view.bend = estimate.bends[number];
    PutToShape(problem_.sheet, common, view);
    return view;
  }

  void EvaluateShaped(Evaluation& evaluation) const {
    const Estimate& estimate = evaluation.estimate;
    const ViewJacobian jacobian(estimate.rig, layout_, problem_.sheet);
    const std::vector<cv::Point3d> common =
        Moved(problem_.sheet.target, MovesOf(problem_.sheet.terms, estimate.shape));
    ForRanges(Views(), options_.threads, [&](size_t first, size_t last) {
      for (size_t i = first; i < last; ++i) {
        TakeShapedEquations(jacobian, problem_.sheet, ViewAt(estimate, common, i), evaluation.equations[i]);
      }
    });
  }

  void EvaluateFlat(Evaluation& evaluation) const {
    const Estimate& estimate = evaluation.estimate;
    ForRanges(Views(), options_.threads, [&](size_t first, size_t last) {
      for (size_t i = first; i < last; ++i) {
        TakeEquations(problem_.views[i], estimate.rigFromTarget[i], estimate.rig, layout_,
                      evaluation.equations[i]);
      }
    });
  }

  size_t Views() const { return problem_.views.size(); }

  /// Everything from the estimate, in the memory of the equations that were there before.
  void Evaluate(Evaluation& evaluation) const {
    const Estimate& estimate = evaluation.estimate;
    evaluation.equations.resize(Views());
    problem_.sheet.IsFlat() ? EvaluateFlat(evaluation) : EvaluateShaped(evaluation);
    evaluation.cost = 0.0;
    evaluation.usable = true;
    for (const ViewEquations& equations : evaluation.equations) {
      evaluation.cost += equations.cost;
      evaluation.usable = evaluation.usable && equations.usable;
    }
    evaluation.priors = PriorTermsOf(problem_.priors, estimate.rig, layout_);
    AddShapePrior(problem_.sheet, estimate.shape, layout_, evaluation.priors);
    for (const ViewEquations& equations : evaluation.equations) {
      evaluation.priors.cost += equations.bend.priorCost;
    }
  }

  /// The diagonal of the shared block, of all views and the priors.
  Eigen::VectorXd Diagonal() const {
    Eigen::VectorXd diagonal = now_.priors.matrix.diagonal();
    for (const ViewEquations& equations : now_.equations) {
      for (Eigen::Index i = 0; i < equations.Own(); ++i) {
        diagonal(equations.columns[static_cast<size_t>(i)]) += equations.products(i, i);
      }
    }
    return diagonal;
  }

  /// False when the damped equations cannot be solved.
  bool SharedStep(const Eigen::VectorXd& diagonal, Eigen::VectorXd& step) const {
    ReducedSystem system = SystemOf(now_.equations, now_.priors, damping_.Value(), options_.threads);
    if (!system.solvable) return false;
    system.matrix.diagonal() += damping_.Value() * diagonal;
    ScaledSystem scaled;
    if (!scaled.Decompose(system.matrix)) return false;
    step = -scaled.Solve(system.gradient);
    return true;
  }

  bool Propose(FullStep& step) const {
    const Eigen::VectorXd diagonal = Diagonal();
    if (!SharedStep(diagonal, step.shared)) return false;
    step.poses.resize(Views());
    step.bends.resize(now_.estimate.bends.size());
    std::vector<double> predicted(Views());
    ForRanges(Views(), options_.threads, [&](size_t first, size_t last) {
      Eigen::VectorXd own;
      for (size_t i = first; i < last; ++i) {
        TakeOwn(now_.equations[i], step.shared, own);
        PoseStepFor(now_.equations[i], damping_.Value(), own, step.poses[i]);
        predicted[i] = PredictedOf(now_.equations[i], own, step.poses[i]);
        if (!step.bends.empty()) step.bends[i] = BendStepFor(now_.equations[i], own, step.poses[i]);
      }
    });
    for (const double value : predicted) step.predicted += value;
    step.predicted += damping_.Value() * (diagonal.array() * step.shared.array().square()).sum();
    step.predicted -= now_.priors.gradient.dot(step.shared);
    return true;
  }

  /// With (H + damping D) d = -g, the reduction is d (damping D d - g): a view's share of it, but for the
  /// damping of what is shared.
  double PredictedOf(const ViewEquations& equations, const Eigen::VectorXd& own, const PoseStep& pose) const {
    const auto curvature = equations.products.diagonal().tail<POSE_PARAMETERS>().array();
    return equations.bend.gain + (damping_.Value() * curvature * pose.array().square()).sum() -
           PoseGradientOf(equations).dot(pose) - equations.gradient.head(own.size()).dot(own);
  }

  void Iterate() {
    FullStep step;
    if (!Propose(step)) {
      converged_ = !damping_.Reject();
      return;
    }
    const double variance = NoiseVariance(now_.cost, problem_.views, layout_.sheet + problem_.sheet.counted);
    if (step.predicted < options_.precision * variance && damping_.Value() <= options_.firstDamping) {
      converged_ = true;
      return;
    }
    trial_.estimate = After(step);
    Evaluate(trial_);
    const double gain = (now_.Total() - trial_.Total()) / step.predicted;
    if (trial_.usable && trial_.Total() < now_.Total()) {
      std::swap(now_, trial_);
      damping_.Accept(gain);
    } else {
      // A step that promises less than the cost's own rounding is the last one.
      converged_ = step.predicted < ROUNDING * now_.Total() || !damping_.Reject();
    }
  }

  Estimate After(const FullStep& step) const {
    Estimate estimate = now_.estimate;
    MoveShared(step.shared, layout_, estimate.rig);
    for (size_t i = 0; i < step.poses.size(); ++i) {
      estimate.rigFromTarget[i] = Retract(estimate.rigFromTarget[i], step.poses[i].data());
    }
    estimate.shape += step.shared.segment(layout_.sheet, estimate.shape.size());
    for (size_t i = 0; i < step.bends.size(); ++i) estimate.bends[i] += cv::Vec3d(step.bends[i].data());
    return estimate;
  }

  CalibrationProblem problem_;
  const SolveOptions& options_;
  const Layout layout_;
  Evaluation now_;
  Evaluation trial_;
  Damping damping_{options_.firstDamping};
  int iterations_ = 0;
  bool converged_ = false;
};

}  // namespace

Solution Minimise(CalibrationProblem problem, const SolveOptions& options) {
  return Minimiser(std::move(problem), options).Run();
}

Solution EvaluatedAt(CalibrationProblem problem, int threads) {
  SolveOptions options;
  options.threads = threads;
  return Minimiser(std::move(problem), options).Result();
}

}  // namespace velmora::solver
