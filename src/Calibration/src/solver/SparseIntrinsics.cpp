/// Computes one camera's intrinsics in time that grows with the number of views, not its cube.
#include "solver/SparseIntrinsics.h"

#include <algorithm>
#include <cmath>
#include <thread>

#include "model/LensModel.h"
#include "solver/SelectedViews.h"

namespace velmora {

namespace {

/// Starting threads takes as long as dozens of views.
int ThreadsFor(size_t views) {
  constexpr size_t WORTH_THREADS = 80;
  constexpr unsigned MOST = 8;
  return views < WORTH_THREADS ? 1
                               : static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, MOST));
}

double PointsOf(const solver::Target& target) {
  double points = 0.0;
  for (const solver::View& view : target.views) points += static_cast<double>(view.object.size());
  return points;
}

class Computation {
 public:
  Computation(const solver::Target& target, const cv::Size& imageSize, int model,
              const SparseOptions& options)
      : target_(target), options_(options) {
    stages_.free = velmora::LensModelOf(model).parameters;
    stages_.imageSize = imageSize;
    stages_.threads = options.threads > 0 ? options.threads : ThreadsFor(target.views.size());
    stages_.progress = [this, points = PointsOf(target)](int iteration, double squares) {
      givenUp_ =
          givenUp_ || (options_.progress && !options_.progress(iteration, std::sqrt(squares / points)));
      return !givenUp_;
    };
  }

  SparseResult Run() {
    solver::Selection selection =
        solver::SelectedFrom(target_.views, stages_, {options_.robust, options_.discRadius});
    const solver::Solved solved = solver::SolveSelected(selection, stages_, options_.discRadius);
    if (givenUp_) CV_Error(cv::Error::StsError, "The computation was given up.");
    if (!solved.staged.solution.usable) {
      CV_Error(cv::Error::StsNoConv, "The views do not agree with any camera.");
    }
    SparseResult result;
    static_cast<IntrinsicsResult&>(result) = solver::MatricesOf(solved, target_);
    result.rejected = std::move(selection.rejected);
    result.robust = options_.robust;
    result.tooFewAgree = selection.tooFewAgree;
    return result;
  }

 private:
  const solver::Target& target_;
  const SparseOptions& options_;
  solver::StageOptions stages_;
  bool givenUp_ = false;
};

}  // namespace

SparseResult SolveIntrinsicsSparsely(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                     const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                     const cv::Size& imageSize, int model, const SparseOptions& options) {
  const solver::Target target = solver::TargetOf(objectPoints, imagePoints);
  return Computation(target, imageSize, model, options).Run();
}

}  // namespace velmora
