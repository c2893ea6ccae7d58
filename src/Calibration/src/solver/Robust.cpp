/// Finds the views and points that do not belong to the picture of a camera that the others give.
#include "solver/Robust.h"

#include <algorithm>
#include <cmath>

#include "solver/Outliers.h"
#include "solver/Readmission.h"
#include "solver/Screening.h"
#include "solver/Start.h"

namespace velmora::solver {

namespace {

constexpr int ROUNDS = 15;
constexpr double CAUCHY = 3.0;  // in standard deviations
/// Of a view's points: with fewer left it goes. A little more than half, since of a grid in reverse order 24
/// of 44 points fit another pose.
constexpr double ABOUT_HALF = 0.55;
/// The same where too few views agree.
constexpr double HARDLY_ANY = 0.25;

using Correction = std::function<std::vector<View>(const std::vector<View>&, const Estimate&)>;

void Weigh(std::vector<View>& views, const Residuals& residuals, double scale) {
  for (size_t i = 0; i < views.size(); ++i) {
    views[i].weights.resize(residuals[i].size());
    for (size_t k = 0; k < residuals[i].size(); ++k) {
      const double relative = residuals[i][k] / scale;
      views[i].weights[k] = 1.0 / (1.0 + relative * relative);
    }
  }
}

/// The solution in which points weigh the less the further they are off.
struct Weighted {
  StagedSolution staged;
  Residuals residuals;
  double deviation = 0.0;
};

/// Weighs and solves in turn, until the deviation stays.
Weighted Settled(const std::vector<View>& views, StagedSolution start, const StageOptions& options,
                 const Correction& correct) {
  Weighted weighted;
  weighted.staged = std::move(start);
  for (int round = 0; round < ROUNDS; ++round) {
    std::vector<View> corrected = correct(views, weighted.staged.solution.estimate);
    weighted.residuals = ResidualsOf(corrected, weighted.staged.solution.estimate);
    const double now = DeviationOf(weighted.residuals);
    if (std::abs(now - weighted.deviation) < 1e-4 * now) break;
    weighted.deviation = now;
    Weigh(corrected, weighted.residuals, CAUCHY * weighted.deviation);
    weighted.staged = SolveAgain(corrected, weighted.staged, options);
  }
  return weighted;
}

Selection WithoutOutliers(const Selection& screened, const Weighted& weighted, size_t of) {
  Selection selection = WithoutOutliers(screened, weighted.residuals, weighted.deviation, ABOUT_HALF);
  if (AreEnough(selection.kept.size(), of)) return selection;
  selection = WithoutOutliers(screened, weighted.residuals, weighted.deviation, HARDLY_ANY);
  if (!AreEnough(selection.kept.size(), of)) selection = screened;
  selection.tooFewAgree = true;
  return selection;
}

}  // namespace

Selection Selected(const std::vector<View>& views, const StageOptions& options, const Correction& correct) {
  Selection screened = Screened(views, options.imageSize);
  const StagedSolution start =
      SolveStages(screened.views, StartOf(screened.views, options.imageSize), options);
  if (!start.solution.usable) return screened;
  Weighted weighted = Settled(screened.views, start, options, correct);
  if (Readmit(views, options.imageSize, screened, weighted.staged.solution.estimate)) {
    weighted = Settled(screened.views, std::move(weighted.staged), options, correct);
  }
  return WithoutOutliers(screened, weighted, views.size());
}

}  // namespace velmora::solver
