/// The calibrator's judgement of a pair.
#include "Calibrator.h"
#include "calibrator/SolverChoice.h"
#include "quality/PairJudge.h"

using namespace velmora;

PairVerdict Calibrator::GetPairVerdict() {
  if (kind_ != STEREO || GetStatus() == STATUS_PROGRESS) return {};
  std::unique_lock<std::mutex> data(dataLock_);
  if (solver_->usedPairs != records_.objectRecords.size()) return {};
  const PairRecords records{records_.objectRecords, records_.imageRecords,   records_.imageRecordsRight,
                            solver_->usedPairModel, solver_->usedRefinement, solver_->usedDiscRadius,
                            solver_->pairSolution};
  const StereoIntrinsics lenses = solver_->usedLenses;
  const cv::Mat R = results_.R;
  const cv::Mat T = results_.T;
  data.unlock();
  return JudgePair(records, lenses, R, T);
}
