/// Which lens model the snapshots ask for, in numbers and in words.
#pragma once

#include <string>
#include <vector>

#include "Export.h"

/// The lens models side by side. A larger one always fits the points more closely; it is chosen only when the
/// closer fit justifies its coefficients and it predicts views better that it was not fitted to.
struct VELMORA_API ModelChoice {
  struct Candidate {
    int model = 0;           ///< of Calibrator
    double rms = 0.0;        ///< pixels
    double criterion = 0.0;  ///< Bayesian information criterion; the smaller the better
    double unseen = 0.0;     ///< RMS of views that were left out in turn, their poses fitted; pixels
    bool poleFree = false;   ///< the denominator of the distortion has no root within the image
  };

  int model = 0;  ///< of Calibrator, the best but for the fisheye; 0: there was nothing to choose from
  /// The fisheye (Calibrator::ComputeFisheye) is better than that model. It is no model with a number.
  bool prefersFisheye = false;
  std::vector<Candidate> candidates;  ///< the classic, the rational and the full model
  Candidate fisheye;  ///< from points that `model` was compared with it by; `rms` 0: there was none
  std::vector<std::string>
      reasons;  ///< for each of the larger models and the fisheye, why it is chosen or not

  /// "classic", "rational", "full", "fisheye", or "none".
  std::string Name() const;
  static std::string NameOf(int model);
  /// The model of that name; 0 when there is none.
  static int NumberOf(const std::string& name);
};
