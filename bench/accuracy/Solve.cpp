/// Calls the engine's computations.
#include "Solve.h"

#include "Calibrator.h"
#include "model/LensModel.h"
#include "model/TargetGeometry.h"
#include "solver/SparsePair.h"

using namespace velmora;

namespace accuracy {

const cv::Size GRID(4, 11);
const float UNIT = 0.02F;

namespace {

std::vector<std::vector<cv::Point3d>> Targets(std::size_t count) {
  return std::vector<std::vector<cv::Point3d>>(count, MakeObjectTemplate(GRID, UNIT));
}

/// With as many coefficients as result files have.
cv::Mat Padded(const cv::Mat& D) {
  cv::Mat padded = cv::Mat::zeros(1, 14, CV_64F);
  D.copyTo(padded.colRange(0, D.cols));
  return padded;
}

}  // namespace

std::string NameOfModel(int model) {
  return ModelChoice::NameOf(model);
}

std::string NameOfSolver(int solver) {
  return solver == Calibrator::SOLVER_SPARSE ? "sparse" : "opencv";
}

int ParametersOfModel(int model) {
  return velmora::LensModelOf(model).parameters;
}

SparseResult Solve(const Points& views, const cv::Size& imageSize, int model, int solver, double discRadius,
                   const std::vector<std::vector<double>>& deviations) {
  SparseResult result;
  if (solver == Calibrator::SOLVER_OPENCV) {
    static_cast<IntrinsicsResult&>(result) = SolveIntrinsics(Targets(views.size()), views, imageSize, model);
    return result;
  }
  SparseOptions options;
  options.discRadius = discRadius;
  options.deviations = deviations;
  options.threads = 1;
  return SolveIntrinsicsSparsely(Targets(views.size()), views, imageSize, model, options);
}

PairResult SolvePair(const Points& left, const Points& right, const cv::Size& imageSize, int model,
                     int solver) {
  PairResult result;
  result.left = Solve(left, imageSize, model, solver);
  result.right = Solve(right, imageSize, model, solver);
  const StereoIntrinsics pairIntrinsics{result.left.K, Padded(result.left.D), result.right.K,
                                        Padded(result.right.D)};
  const auto targets = Targets(left.size());
  result.pair = solver == Calibrator::SOLVER_OPENCV
                    ? SolveExtrinsics(targets, left, right, pairIntrinsics, imageSize, model)
                    : SolveExtrinsicsSparsely(targets, left, right, pairIntrinsics, model);
  return result;
}

PairResult RefinedPair(const PairResult& fixed, const Points& left, const Points& right,
                       const cv::Size& imageSize, int model) {
  PairResult result = fixed;
  result.pair = RefinePairSparsely(Targets(left.size()), left, right,
                                   {fixed.left.K, Padded(fixed.left.D), fixed.right.K, Padded(fixed.right.D)},
                                   imageSize, model);
  result.left.K = result.pair.refined.K;
  result.left.D = result.pair.refined.D;
  result.right.K = result.pair.refined.KRight;
  result.right.D = result.pair.refined.DRight;
  return result;
}

}  // namespace accuracy
