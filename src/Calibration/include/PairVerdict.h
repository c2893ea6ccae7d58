/// How good the calibration of a pair of cameras is, in numbers and in words.
#pragma once

#include <string>
#include <vector>

#include "Export.h"
#include "Verdict.h"

/// What is known of how the right camera stands to the left one. Deviations are standard deviations: of the
/// rotation's angle and of the translation's direction in degrees, of the baseline as a share of it. Formal
/// ones follow from the noise of the points; those of the jackknife from leaving out each view in turn. Of
/// lenses that were held these are the deviations beside those lenses.
struct VELMORA_API PairVerdict {
  using Grade = CalibrationVerdict::Grade;
  using Remark = CalibrationVerdict::Remark;

  struct Deviations {
    double rotation = 0.0;   ///< degrees
    double baseline = 0.0;   ///< share of the baseline
    double direction = 0.0;  ///< degrees
  };

  /// A view whose two pictures do not show the sheet at the same place.
  struct Disagreement {
    size_t view = 0;
    double factor = 0.0;  ///< how far apart they put it, in units of the noise; 1 is usual
  };

  /// What the computation did not use.
  struct LeftOut {
    size_t view = 0;
    bool right = false;     ///< of the right camera, else of the left one
    int point = -1;         ///< -1: the whole image
    double residual = 0.0;  ///< pixels
    std::string reason;
  };

  Grade grade = Grade::None;  ///< None: there is no result to judge
  std::vector<Remark> remarks;
  std::vector<LeftOut> leftOut;
  int views = 0;               ///< of which both images were used
  bool lensesRefined = false;  ///< with the pair
  Deviations formal;
  Deviations jackknife;
  /// Formal, with lenses that are no better known than these views tell; the same as formal of refined ones.
  Deviations withLenses;
  double disagreement = 0.0;  ///< the median of that of all views
  std::vector<Disagreement> disagreements;
  /// Metres from the sheet's lowest dot to its highest, where its bend moves the result; else 0.
  double sheetBend = 0.0;

  /// Takes a camera's own verdict into account, where the lenses of the pair are those of that result and
  /// held. `side` is "left" or "right".
  void Consider(const CalibrationVerdict& camera, const std::string& side);

  /// The words of the grade, as of a CalibrationVerdict.
  std::string Words() const;
  /// All of it as a JSON text.
  std::string ToJson() const;
};
