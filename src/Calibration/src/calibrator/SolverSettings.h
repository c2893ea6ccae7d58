/// Which solver computations use, and how.
#pragma once

#include <atomic>

#include "model/Codes.h"
#include "model/Sheet.h"

namespace velmora {

/// What a computation goes by from its start to its end.
struct SolverSettings {
  int solver = SOLVER_OPENCV;
  bool robust = false;
  double discRadius = 0.0;        ///< metres; 0 takes centres as they are
  bool refineIntrinsics = false;  ///< of pairs
  int sheetShape = SHEET_FLAT;

  bool IsSparse() const { return solver == SOLVER_SPARSE; }
  /// Zero for a solver that does not correct eccentricity.
  double UsedDiscRadius() const { return IsSparse() ? discRadius : 0.0; }
  /// Flat for a solver that knows no other.
  SheetShape UsedSheetShape() const { return IsSparse() ? SheetShapeOf(sheetShape) : SheetShape::Flat; }
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

  SolverSettings Current() const { return {solver_, robust_, discRadius_, refineIntrinsics_, sheetShape_}; }

 private:
  std::atomic<int> solver_{SOLVER_OPENCV};
  std::atomic<bool> robust_{false};
  std::atomic<double> discRadius_{0.0};
  std::atomic<bool> refineIntrinsics_{false};
  std::atomic<int> sheetShape_{SHEET_FLAT};
};

}  // namespace velmora
