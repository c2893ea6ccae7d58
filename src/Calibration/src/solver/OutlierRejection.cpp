/// Finds the views and points that do not belong to the image of a rig that the others give.
#include "solver/OutlierRejection.h"

#include <cmath>
#include <utility>

#include "solver/DiscBias.h"
#include "solver/Initialisation.h"
#include "solver/Outliers.h"
#include "solver/Readmission.h"
#include "solver/Screening.h"

namespace velmora::solver {

namespace {

constexpr int ROUNDS = 15;
constexpr double CAUCHY = 3.0;  // in standard deviations
/// Of an image's points: with fewer left it goes. A little more than half, since of a grid in reverse order
/// 24 of 44 points fit another pose.
constexpr double ABOUT_HALF = 0.55;
/// The same where too few views agree.
constexpr double HARDLY_ANY = 0.25;

void Weigh(std::vector<TargetView>& views, const Residuals& residuals, double scale) {
  for (size_t i = 0; i < views.size(); ++i) {
    for (size_t camera = 0; camera < views[i].observations.size(); ++camera) {
      const std::vector<double>& own = residuals[i][camera];
      std::vector<double>& weights = views[i].observations[camera].weights;
      weights.resize(own.size());
      for (size_t k = 0; k < own.size(); ++k) {
        const double relative = own[k] / scale;
        weights[k] = 1.0 / (1.0 + relative * relative);
      }
    }
  }
}

void CopyPoses(const std::vector<TargetView>& from, std::vector<TargetView>& to) {
  for (size_t i = 0; i < to.size(); ++i) to[i].rigFromTarget = from[i].rigFromTarget;
}

/// The solution in which points weigh the less the further they are off.
struct Weighted {
  Solution solution;
  Residuals residuals;
  double deviation = 0.0;
};

/// Weighs and solves in turn, until the deviation stays. The start's views have the poses of the given ones.
Weighted Settled(const std::vector<TargetView>& views, Solution start, const BundleOptions& options) {
  Weighted weighted;
  weighted.solution = std::move(start);
  for (int round = 0; round < ROUNDS; ++round) {
    const Solution& now = weighted.solution;
    std::vector<TargetView> corrected =
        options.discRadius > 0.0 ? WithoutDiscBias(views, now.rig, now.views, options.discRadius) : views;
    CopyPoses(now.views, corrected);
    weighted.residuals = ResidualsOf(corrected, now.rig);
    const double deviation = DeviationOf(weighted.residuals);
    if (std::abs(deviation - weighted.deviation) < 1e-4 * deviation) break;
    weighted.deviation = deviation;
    Weigh(corrected, weighted.residuals, CAUCHY * deviation);
    weighted.solution = SolveAgain(now, std::move(corrected), options);
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

Selection Selected(const std::vector<TargetView>& views, const cv::Size& imageSize,
                   const BundleOptions& options) {
  Selection screened = Screened(views, imageSize);
  Solution start = SolveModels(StartOf(screened.views, imageSize), options);
  if (!start.usable) return screened;
  Weighted weighted = Settled(screened.views, std::move(start), options);
  CopyPoses(weighted.solution.views, screened.views);
  if (Readmit(views, weighted.solution.rig.cameras.front(), screened)) {
    // Before the rig that is known, the views that came back count as they are from here on.
    weighted.solution.views = screened.views;
    weighted = Settled(screened.views, std::move(weighted.solution), options);
  }
  return WithoutOutliers(screened, weighted, views.size());
}

Selection Selected(const CalibrationProblem& start, const BundleOptions& options) {
  const Selection all = AllOf(start.views);
  BundleOptions first = options;
  first.discRadius = 0.0;
  Solution solution = Adjust(start, first);
  if (!solution.usable) return all;
  const Weighted weighted = Settled(all.views, std::move(solution), options);
  return WithoutOutliers(all, weighted, start.views.size());
}

}  // namespace velmora::solver
