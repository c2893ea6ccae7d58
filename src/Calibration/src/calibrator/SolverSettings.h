/// Which solver computations use, and how.
#pragma once

#include <atomic>
#include <mutex>
#include <opencv2/core.hpp>
#include <vector>

#include "model/Codes.h"
#include "model/Sheet.h"

namespace velmora {

/// What a computation goes by from its start to its end.
struct SolverSettings {
  int solver = SOLVER_OPENCV;
  bool robust = false;
  double discRadius = 0.0;        ///< metres; 0 takes centres as they are
  bool refineIntrinsics = false;  ///< of pairs
  SheetAssumption sheet;

  bool IsSparse() const { return solver == SOLVER_SPARSE; }
  /// Zero for a solver that does not correct eccentricity.
  double UsedDiscRadius() const { return IsSparse() ? discRadius : 0.0; }
  /// Flat for a solver that knows no other.
  SheetAssumption UsedSheet() const { return IsSparse() ? sheet : SheetAssumption(); }
  /// False for a solver that does not refine.
  bool RefinesIntrinsics() const { return IsSparse() && refineIntrinsics; }
};

/// The settings of the next computation, changed at any time from any thread. What is refused gets an error
/// line and changes nothing.
class SolverChoice {
 public:
  void SetSolver(int solver);
  void SetRobust(bool robust) { robust_ = robust; }
  void SetDiscRadius(double radius);
  void SetRefineIntrinsics(bool refine) { refineIntrinsics_ = refine; }
  void SetSheetShape(int shape);
  /// Points of the calibrator's target, in its frame.
  void SetSheetShape(std::vector<cv::Point3d> points);

  SolverSettings Current() const;

 private:
  std::atomic<int> solver_{SOLVER_OPENCV};
  std::atomic<bool> robust_{false};
  std::atomic<double> discRadius_{0.0};
  std::atomic<bool> refineIntrinsics_{false};
  mutable std::mutex lock_;  ///< guards the sheet
  SheetAssumption sheet_;
};

}  // namespace velmora
