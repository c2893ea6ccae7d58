/// Judges a computed pair of cameras.
#include "quality/PairJudge.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "foundation/Median.h"
#include "model/LensModel.h"
#include "solver/PairCovariance.h"

namespace velmora {

namespace {

using Grade = PairVerdict::Grade;
using Deviations = PairVerdict::Deviations;

constexpr double DEGREES = 180.0 / CV_PI;
/// A direction that is off by 5 degrees leads a tenth of the disparity away from epipolar lines.
constexpr Deviations WORTHLESS = {1.0, 0.03, 5.0};
constexpr Deviations CAREFUL = {0.2, 0.01, 0.5};
constexpr double DISAGREEMENT = 2.5;  // jackknife over formal
constexpr double MOVED = 3.0;         // pictures of a view apart, in units of the noise
constexpr double MOVED_BESIDE = 3.0;  // the same over the median of all views
constexpr double MANY_MOVED = 0.25;   // share of the views
constexpr double APART = 5.0;         // the median of all views
constexpr int FEW_VIEWS = 8;

bool Beyond(const Deviations& deviations, const Deviations& limits) {
  return !(deviations.rotation <= limits.rotation) || !(deviations.baseline <= limits.baseline) ||
         !(deviations.direction <= limits.direction);
}

Deviations Larger(const Deviations& a, const Deviations& b) {
  return {std::max(a.rotation, b.rotation), std::max(a.baseline, b.baseline),
          std::max(a.direction, b.direction)};
}

constexpr double NOTHING = std::numeric_limits<double>::infinity();
constexpr Deviations UNKNOWN{NOTHING, NOTHING, NOTHING};

/// From the covariance whose last six rows are turn and shift of the right camera.
Deviations DeviationsOf(const cv::Mat& covariance, const cv::Vec3d& T) {
  if (covariance.empty()) return UNKNOWN;
  const cv::Mat own = covariance(cv::Rect(covariance.cols - 6, covariance.rows - 6, 6, 6));
  const double length = cv::norm(T);
  const cv::Matx33d shift = own(cv::Rect(3, 3, 3, 3));
  const cv::Vec3d along = T * (1.0 / length);
  const double onAxis = along.dot(shift * along);
  const double turn = own.at<double>(0, 0) + own.at<double>(1, 1) + own.at<double>(2, 2);
  return {std::sqrt(turn) * DEGREES, std::sqrt(onAxis) / length,
          std::sqrt(std::max(cv::trace(shift) - onAxis, 0.0)) / length * DEGREES};
}

/// The result with the poses that fit it best, and the image points that count.
struct Judged {
  solver::PairTarget target;
  solver::PairSolution solution;
  solver::PairOptions options;  ///< with the priors
};

Judged SolutionOf(const PairRecords& records, const StereoIntrinsics& lenses, const solver::Pose& relative) {
  Judged judged;
  judged.target = solver::PairTargetOf(records.objectPoints, records.leftPoints, records.rightPoints);
  solver::PairEstimate estimate = StartOf(judged.target, solver::KnownLens(lenses.K, lenses.D, records.model),
                                          solver::KnownLens(lenses.KRight, lenses.DRight, records.model));
  estimate.relative = relative;
  estimate.left.free = velmora::LensModelOf(records.model).parameters;
  estimate.right.free = estimate.left.free;
  judged.solution = WithBestPoses(judged.target, estimate);
  if (records.discRadius > 0.0) {
    judged.target = WithoutDiscBias(judged.target, judged.solution.estimate, records.discRadius);
    judged.solution = WithBestPoses(judged.target, judged.solution.estimate);
  }
  const int shared = records.lensesRefined ? LayoutOf(estimate).Shared() : solver::POSE_PARAMETERS;
  SetWeakPriors(judged.target, judged.solution.estimate,
                NoiseVariance(judged.solution, judged.target.left.views, shared), judged.options);
  return judged;
}

void Measure(const Judged& judged, PairVerdict& verdict) {
  const cv::Vec3d& T = judged.solution.estimate.relative.t;
  const int first = verdict.lensesRefined ? 0 : LayoutOf(judged.solution.estimate).Lenses();
  const auto formal = [&](int from) {
    return DeviationsOf(SharedCovariance(judged.solution, judged.target, judged.options, from), T);
  };
  verdict.formal = formal(first);
  verdict.withLenses = formal(0);
  verdict.jackknife = DeviationsOf(SharedJackknife(judged.solution, judged.options, first), T);
  const std::vector<double> apart = DisagreementsOf(judged.solution, judged.target);
  verdict.disagreement = solver::MedianOf(apart);
  for (size_t i = 0; i < apart.size(); ++i) {
    if (apart[i] > MOVED && apart[i] > MOVED_BESIDE * verdict.disagreement) {
      verdict.disagreements.push_back({i, apart[i]});
    }
  }
}

void Grant(PairVerdict& verdict, Grade grade, const char* reason, const char* advice) {
  verdict.grade = std::max(verdict.grade, grade);
  verdict.remarks.push_back({reason, advice});
}

/// The tilt of a full model's sensor can stand for a turn of its camera: rotation and direction are then
/// right with the lenses of the same result only, and say nothing about the pair.
Deviations BesideTilt(Deviations deviations, bool fullModel) {
  if (fullModel) deviations.rotation = deviations.direction = 0.0;
  return deviations;
}

void JudgeDeviations(bool fullModel, PairVerdict& verdict) {
  const char* const more = "Take more common views, tilted to all sides, near and far.";
  const Deviations known = Larger(verdict.formal, verdict.jackknife);
  if (Beyond(BesideTilt(known, fullModel && verdict.lensesRefined), WORTHLESS)) {
    Grant(verdict, Grade::Worthless, "The views do not determine how the cameras stand to each other.", more);
  } else if (Beyond(known, WORTHLESS)) {
    Grant(verdict, Grade::WithCare,
          "Rotation and translation are right together with the refined lenses only.",
          "Use the lenses of the same result, or choose the rational model.");
  } else if (Beyond(known, CAREFUL)) {
    Grant(verdict, Grade::WithCare, "Rotation or translation is known only roughly.", more);
  } else if (Beyond(BesideTilt(verdict.withLenses, fullModel), CAREFUL)) {
    Grant(verdict, Grade::WithCare,
          "The result is as good as the lenses that were given: these views would not show their errors.",
          "Make sure that the lenses come from more views, tilted to all sides, or take such views here.");
  }
}

/// Much more than the noise lets expect, and enough to matter.
bool IsDisagreement(double jackknife, double usual, double limit) {
  return jackknife > DISAGREEMENT * usual && jackknife > limit / 3.0;
}

void JudgeAgreement(PairVerdict& verdict) {
  const auto count = static_cast<double>(verdict.disagreements.size());
  if (count > MANY_MOVED * verdict.views) {
    Grant(verdict, Grade::Worthless,
          "The two pictures of many views do not show the sheet at the same place.",
          "Have both cameras take their pictures at the same time, and hold the sheet still.");
  } else if (count > 0.0) {
    Grant(verdict, Grade::WithCare, "The two pictures of a view do not show the sheet at the same place.",
          "Leave that view out: the sheet or a camera moved, or the pictures are not of the same time.");
  }
  const Deviations& jackknife = verdict.jackknife;
  // Lenses that these views do not determine at all are no measure of what is usual.
  const Deviations usual =
      Beyond(verdict.withLenses, WORTHLESS) ? verdict.formal : Larger(verdict.formal, verdict.withLenses);
  if (verdict.disagreement > APART || IsDisagreement(jackknife.rotation, usual.rotation, CAREFUL.rotation) ||
      IsDisagreement(jackknife.baseline, usual.baseline, CAREFUL.baseline) ||
      IsDisagreement(jackknife.direction, usual.direction, CAREFUL.direction)) {
    Grant(verdict, Grade::WithCare, "The views disagree more than noise explains.",
          "Check that the cameras are fixed to each other and take their pictures at the same time, that the "
          "sheet is flat, and that the lenses are those of these cameras.");
  }
  if (verdict.views < FEW_VIEWS) {
    Grant(verdict, Grade::WithCare, "There are few views: the deviations are themselves unsure.",
          "Take ten common views or more.");
  }
}

}  // namespace

PairVerdict JudgePair(const PairRecords& records, const StereoIntrinsics& lenses, const cv::Mat& R,
                      const cv::Mat& T) {
  PairVerdict verdict;
  if (R.empty() || T.empty() || lenses.K.empty() || lenses.KRight.empty() || records.objectPoints.empty()) {
    return verdict;
  }
  const Judged judged = SolutionOf(records, lenses, {cv::Matx33d(R), cv::Vec3d(T.ptr<double>())});
  verdict.grade = judged.solution.usable ? Grade::Good : Grade::Worthless;
  verdict.views = static_cast<int>(records.objectPoints.size());
  verdict.lensesRefined = records.lensesRefined;
  if (!judged.solution.usable) {
    verdict.formal = verdict.jackknife = verdict.withLenses = UNKNOWN;
    Grant(verdict, Grade::Worthless, "The views do not agree with this pair of cameras.",
          "Check that the result and the views belong together.");
    return verdict;
  }
  Measure(judged, verdict);
  JudgeDeviations(velmora::LensModelOf(records.model).parameters == solver::FULL_PARAMETERS, verdict);
  JudgeAgreement(verdict);
  return verdict;
}

}  // namespace velmora
