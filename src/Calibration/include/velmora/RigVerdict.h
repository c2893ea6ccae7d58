/// How far the calibration of a rig of cameras can be believed, in numbers and in words.
#pragma once

#include <string>
#include <vector>

#include "Export.h"
#include "PairVerdict.h"
#include "Verdict.h"

namespace velmora {

/// How far a rig can be believed, in numbers and in words.
struct VELMORA_API RigVerdict {
  using Grade = CalibrationVerdict::Grade;

  Grade grade = Grade::None;
  std::vector<CalibrationVerdict::Remark> remarks;
  /// The standard deviations of the pose of each camera but the first relative to the first: formal, and by
  /// leaving out each view in turn.
  std::vector<PairVerdict::Deviations> formal;
  std::vector<PairVerdict::Deviations> jackknife;
  double disagreement =
      0.0;  ///< the median over the views of how far apart their images put the sheet; 1 is usual
  std::vector<PairVerdict::Disagreement>
      disagreements;  ///< views whose images do not show the sheet at the same place
  /// Metres from the sheet's lowest dot to its highest, where its bend moves the result; else 0.
  double sheetBend = 0.0;
  /// The shape of the sheet, where it was estimated with the rig.
  CalibrationVerdict::Sheet sheet;
  /// The verdict on each camera's intrinsics; the list is empty where these were given.
  std::vector<CalibrationVerdict> cameras;

  /// The words of the grade, as of a CalibrationVerdict.
  std::string ToString() const;
};

}  // namespace velmora
