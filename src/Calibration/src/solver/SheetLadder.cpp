/// Estimates the shape of a sheet, from flat to free, each level from where the one before ended.
#include "solver/SheetLadder.h"

#include <Eigen/QR>
#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <tuple>
#include <utility>

#include "solver/KnownSheet.h"
#include "solver/NormalEquations.h"
#include "solver/PoseGroups.h"
#include "solver/ScaledSystem.h"
#include "solver/ShapedEquations.h"

namespace velmora::solver {

namespace {

using Eigen::Index;

/// Of targets with fewer points too little is seen of a bend.
constexpr size_t FEWEST_POINTS = 12;
constexpr int MOST_ROUNDS = 8;
/// Enough from the level below; a level that lacks what the sheet has may wander on, and will not be taken.
constexpr int ITERATIONS_OF_A_ROUND = 20;
/// Noise and own bends that change by less from round to round are known.
constexpr double SETTLED = 0.05;
/// The first guess at the views' own bends, in half the target's longer side: 0.3 mm of 100.
constexpr double FIRST_OWN_BEND = 0.003;
/// Smaller ones are never told from noise, and would hold the search up.
constexpr double LEAST_OWN_BEND = 1e-5;
/// Prints are not nearer to their places than 10 um of 100 mm, nor farther from them than 1 mm.
constexpr double LEAST_MISPRINT = 1e-4;
constexpr double MOST_MISPRINT = 1e-2;

struct ByPlace {
  bool operator()(const cv::Point3d& a, const cv::Point3d& b) const {
    return std::tie(a.x, a.y) < std::tie(b.x, b.y);
  }
};
using Places = std::map<cv::Point3d, size_t, ByPlace>;

const Observation& LargestOf(const std::vector<TargetView>& views) {
  const Observation* largest = &views.front().observations.front();
  for (const TargetView& view : views) {
    for (const Observation& observation : view.observations) {
      if (observation.object.size() > largest->object.size()) largest = &observation;
    }
  }
  return *largest;
}

Places PlacesOn(const std::vector<cv::Point3d>& target) {
  Places places;
  for (size_t i = 0; i < target.size(); ++i) places[target[i]] = i;
  return places;
}

double HalfSideOf(const std::vector<cv::Point3d>& target) {
  cv::Point3d least = target.front();
  cv::Point3d most = target.front();
  for (const cv::Point3d& p : target) {
    least = {std::min(least.x, p.x), std::min(least.y, p.y), 0.0};
    most = {std::max(most.x, p.x), std::max(most.y, p.y), 0.0};
  }
  return 0.5 * std::max(most.x - least.x, most.y - least.y);
}

/// How much of each term the views tell: one, less what is known beforehand takes off. Infinite where nothing
/// tells them.
Eigen::VectorXd ToldOf(const Solution& solution) {
  const Index terms = solution.sheet.terms.Count();
  if (terms == 0) return {};
  const ReducedSystem system = SystemOf(solution);
  ScaledSystem scaled;
  if (!system.solvable || !scaled.Decompose(system.matrix))
    return Eigen::VectorXd::Constant(terms, std::numeric_limits<double>::infinity());
  const Index size = system.matrix.rows();
  Eigen::MatrixXd unit = Eigen::MatrixXd::Zero(size, terms);
  unit.bottomRows(terms).setIdentity();
  const Eigen::VectorXd variances = scaled.Solve(unit).bottomRows(terms).diagonal();
  return 1.0 - PullsOf(solution.sheet.terms, solution.sheet.variance).cwiseProduct(variances).array();
}

double CountedBends(const Solution& solution) {
  if (!solution.sheet.HasOwnBends()) return 0.0;
  const Eigen::VectorXd pulls = PullsOf(solution.sheet.ownBend, solution.sheet.variance);
  double counted = 0.0;
  for (const ViewEquations& equations : solution.equations) {
    counted += 3.0 - pulls.dot(BendCovarianceOf(equations).diagonal());
  }
  return counted;
}

/// The mean squares of the views' own bends, each with its variance.
Eigen::Vector3d SquaresOfBends(const Solution& solution) {
  Eigen::Vector3d squares = Eigen::Vector3d::Zero();
  for (size_t i = 0; i < solution.views.size(); ++i) {
    const Eigen::Map<const Eigen::Vector3d> value(solution.views[i].bend.val);
    squares +=
        value.cwiseAbs2() + BendCovarianceOf(solution.equations[i]).diagonal() * solution.sheet.variance;
  }
  return squares / static_cast<double>(solution.views.size());
}

/// How far the print has its points beside their places, by the free places that were found: their squares
/// for each that the views tell (D. MacKay, Bayesian interpolation, 1992).
double DeviationOfPlaces(const Sheet& sheet, const Eigen::VectorXd& told) {
  const double half = HalfSideOf(sheet.target);
  const double number = told.segment(sheet.terms.firstFreePlace, sheet.terms.freePlaces).sum();
  const double squares =
      sheet.values.segment(sheet.terms.firstFreePlace, sheet.terms.freePlaces).squaredNorm();
  return std::clamp(std::sqrt(squares / std::max(number, 1.0)), LEAST_MISPRINT * half, MOST_MISPRINT * half);
}

bool IsOther(double now, double before) {
  return !(std::abs(now - before) <= SETTLED * before);
}

/// Takes what the solution tells of noise, bends and print for what is known of them. False when it is
/// nothing new. `told` is how much of each term it tells.
bool Renew(const Solution& solution, const Eigen::VectorXd& told, Sheet& sheet) {
  const double variance = NoiseVariance(solution);
  bool isNew = IsOther(std::sqrt(variance), std::sqrt(sheet.variance));
  if (sheet.HasOwnBends()) {
    const double least = LEAST_OWN_BEND * HalfSideOf(sheet.target);
    const Eigen::Vector3d deviations = SquaresOfBends(solution).cwiseSqrt().cwiseMax(least);
    for (Index i = 0; i < 3; ++i) isNew = isNew || IsOther(deviations(i), sheet.ownBend.deviations(i));
    sheet.ownBend.deviations = deviations;
  }
  if (sheet.terms.freePlaces > 0 && told.allFinite()) {
    auto deviations = sheet.terms.deviations.segment(sheet.terms.firstFreePlace, sheet.terms.freePlaces);
    const double deviation = DeviationOfPlaces(solution.sheet, told);
    isNew = isNew || IsOther(deviation, deviations(0));
    deviations.setConstant(deviation);
  }
  sheet.variance = variance;
  return isNew;
}

CalibrationProblem ProblemFrom(const Solution& solution) {
  return {solution.rig, solution.views, solution.estimated, solution.priors, solution.sheet};
}

SheetRung RungOf(SheetLevel level, bool ownBends, Solution solution) {
  // Views of like poses repeat each other's errors, and count as one.
  const auto views = static_cast<double>(solution.views.size());
  const auto poses = static_cast<double>(CountOfGroups(GroupsOf(solution.views, solution.rig)));
  const double share = poses / views;
  const double numbers = 2.0 * CountOf(solution.views) * share;
  const double bends = CountedBends(solution);
  const double unknowns =
      LayoutOf(solution).sheet + (solution.sheet.counted - bends) + bends * share + POSE_PARAMETERS * poses;
  SheetRung rung{level, ownBends, std::move(solution), 0.0};
  rung.criterion = numbers * std::log(rung.solution.cost * share / numbers) + unknowns * std::log(numbers);
  return rung;
}

/// Whether each shape of the first level is one of the second, or stood for by one.
bool IsWithin(SheetLevel smaller, SheetLevel larger) {
  return (!HasProportions(smaller) || HasProportions(larger)) && (!HasBend(smaller) || HasBend(larger)) &&
         (!HasFreePoints(smaller) || HasFreePoints(larger));
}

bool HasLessFreedom(const SheetRung& smaller, const SheetRung& larger) {
  const bool isOther = smaller.level != larger.level || smaller.ownBends != larger.ownBends;
  return isOther && IsWithin(smaller.level, larger.level) && (larger.ownBends || !smaller.ownBends);
}

/// Puts the terms of another level in the place of the sheet's, at the shape that it has.
CalibrationProblem Enlarged(const Solution& from, SheetLevel level, bool ownBends) {
  CalibrationProblem problem = ProblemFrom(from);
  Sheet& sheet = problem.sheet;
  const Eigen::VectorXd moves = MovesOf(sheet.terms, sheet.values);
  sheet.level = level;
  sheet.terms = TermsOf(sheet.target, level);
  sheet.values.setZero(sheet.terms.Count());
  // Each level has the terms of those below it, or terms that can stand for them.
  if (moves.size() > 0) sheet.values = sheet.terms.columns.colPivHouseholderQr().solve(moves);
  if (ownBends && !sheet.HasOwnBends()) AddOwnBends(sheet);
  return problem;
}

CalibrationProblem WithOwnBends(const Solution& from) {
  CalibrationProblem problem = ProblemFrom(from);
  AddOwnBends(problem.sheet);
  return problem;
}

class Ladder {
 public:
  Ladder(const Solution& flat, const BundleOptions& options) : options_(options) {
    rungs_.push_back(RungOf(SheetLevel::Flat, false, flat));
  }

  /// From the best of those that are there, with terms of this level; true when that could be solved.
  bool Climb(SheetLevel level, bool ownBends, size_t from) {
    if (options_.progress.IsGivenUp()) return false;
    const Solution& start = rungs_[from].solution;
    Solution solution = SolveShaped(
        from == 0 ? ShapedProblem(start, level, ownBends) : Enlarged(start, level, ownBends), options_);
    if (!solution.usable || !std::isfinite(solution.sheet.counted)) return false;
    rungs_.push_back(RungOf(level, ownBends, std::move(solution)));
    return true;
  }

  size_t BestFrom(size_t first) const {
    const auto best =
        std::min_element(rungs_.begin() + static_cast<std::ptrdiff_t>(first), rungs_.end(),
                         [](const SheetRung& a, const SheetRung& b) { return a.criterion < b.criterion; });
    return static_cast<size_t>(best - rungs_.begin());
  }

  size_t Count() const { return rungs_.size(); }
  SheetLevel LevelOf(size_t rung) const { return rungs_[rung].level; }
  std::vector<SheetRung> Rungs() { return std::move(rungs_); }

 private:
  const BundleOptions& options_;
  std::vector<SheetRung> rungs_;
};

}  // namespace

bool NotePlaces(const std::vector<cv::Point3d>& target, std::vector<TargetView>& views) {
  const Places places = PlacesOn(target);
  for (TargetView& view : views) {
    for (Observation& observation : view.observations) {
      observation.places.clear();
      for (const cv::Point3d& point : observation.object) {
        const auto place = places.find(point);
        if (place == places.end()) return false;
        observation.places.push_back(place->second);
      }
    }
  }
  return true;
}

bool HasOneTarget(const std::vector<TargetView>& views) {
  if (views.empty() || views.front().observations.empty()) return false;
  std::vector<TargetView> copies = views;
  const std::vector<cv::Point3d> target = LargestOf(views).object;
  return target.size() >= FEWEST_POINTS && NotePlaces(target, copies);
}

void AddOwnBends(Sheet& sheet) {
  sheet.ownBend = OwnBendOf(sheet.target);
  sheet.ownBend.deviations.setConstant(FIRST_OWN_BEND * HalfSideOf(sheet.target));
}

CalibrationProblem KnownProblem(const Solution& flat, const std::vector<cv::Point3d>& known, bool ownBends) {
  CalibrationProblem problem = ProblemFrom(flat);
  if (!NoteNearestPlaces(known, problem.views))
    CV_Error(cv::Error::StsBadArg, "The known shape of the sheet is that of another grid.");
  problem.sheet.target = known;
  problem.sheet.variance = NoiseVariance(flat);
  if (ownBends) AddOwnBends(problem.sheet);
  return problem;
}

CalibrationProblem ShapedProblem(const Solution& flat, SheetLevel level, bool ownBends) {
  CalibrationProblem problem = ProblemFrom(flat);
  problem.sheet.level = level;
  problem.sheet.target = LargestOf(flat.views).object;
  NotePlaces(problem.sheet.target, problem.views);
  problem.sheet.variance = NoiseVariance(flat);
  problem.sheet.terms = TermsOf(problem.sheet.target, level);
  problem.sheet.values.setZero(problem.sheet.terms.Count());
  if (ownBends) AddOwnBends(problem.sheet);
  return problem;
}

Solution SolveShaped(CalibrationProblem problem, const BundleOptions& options) {
  SolveOptions solve;
  solve.threads = options.threads;
  solve.mostIterations = std::min(options.mostIterations, ITERATIONS_OF_A_ROUND);
  solve.progress = options.progress;
  solve.firstDamping = 1e-6;
  solve.precision = 1e-3;
  Solution solution;
  for (int round = 0; round < MOST_ROUNDS; ++round) {
    solution = Minimise(std::move(problem), solve);
    if (!solution.usable || options.progress.IsGivenUp()) break;
    const Eigen::VectorXd told = ToldOf(solution);
    solution.sheet.counted = told.sum() + CountedBends(solution);
    problem = ProblemFrom(solution);
    if (!Renew(solution, told, problem.sheet)) break;
  }
  return solution;
}

std::vector<SheetRung> ClimbSheet(const Solution& flat, SheetLevel most, const BundleOptions& options) {
  Ladder ladder(flat, options);
  if (most == SheetLevel::Flat) return ladder.Rungs();
  ladder.Climb(SheetLevel::Proportions, false, 0);
  const size_t bent = ladder.Count();
  if (!ladder.Climb(SheetLevel::Bent, false, 0)) return ladder.Rungs();
  ladder.Climb(SheetLevel::BentProportions, false, bent);
  const size_t bestBent = ladder.BestFrom(bent);
  const size_t last = ladder.Count() - 1;
  const size_t free = ladder.Count();
  if (most >= SheetLevel::FreePoints && ladder.Climb(SheetLevel::FreePoints, false, last)) {
    ladder.Climb(SheetLevel::FreePointsProportions, false, free);
  }
  const size_t bestFree = free < ladder.Count() ? ladder.BestFrom(free) : free;
  const size_t ends = ladder.Count();
  ladder.Climb(ladder.LevelOf(bestBent), true, bestBent);
  if (bestFree < ends) ladder.Climb(ladder.LevelOf(bestFree), true, bestFree);
  return ladder.Rungs();
}

std::vector<SheetRung> ClimbKnown(const Solution& flat, const std::vector<cv::Point3d>& known,
                                  const BundleOptions& options) {
  std::vector<SheetRung> rungs;
  rungs.push_back(RungOf(SheetLevel::Flat, false, flat));
  for (const bool ownBends : {false, true}) {
    if (options.progress.IsGivenUp()) break;
    const CalibrationProblem problem =
        rungs.size() == 1 ? KnownProblem(flat, known, ownBends) : WithOwnBends(rungs.back().solution);
    Solution solution = SolveShaped(problem, options);
    if (!solution.usable || !std::isfinite(solution.sheet.counted)) continue;
    rungs.push_back(RungOf(SheetLevel::Flat, ownBends, std::move(solution)));
  }
  return rungs;
}

std::vector<size_t> AllowedOf(const std::vector<SheetRung>& rungs) {
  std::vector<size_t> allowed;
  for (size_t i = 0; i < rungs.size(); ++i) {
    const bool isBest = std::all_of(rungs.begin(), rungs.end(), [&](const SheetRung& other) {
      return !HasLessFreedom(other, rungs[i]) || rungs[i].criterion < other.criterion;
    });
    if (isBest) allowed.push_back(i);
  }
  return allowed;
}

Sheet HeldShapeOf(const Sheet& sheet) {
  Sheet held = sheet;
  held.level = SheetLevel::Flat;
  held.target = Moved(sheet.target, MovesOf(sheet.terms, sheet.values));
  held.terms = {};
  held.values.resize(0);
  held.counted = 0.0;
  return held;
}

}  // namespace velmora::solver
