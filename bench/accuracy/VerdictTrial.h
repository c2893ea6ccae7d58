/// One set of data, right or spoilt in a known way, what its verdict says, and how far off its result is.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Verdict.h"

namespace accuracy {

/// Kinds of data sets. Everything about a set but its kind is random: lens, field of view, number of views,
/// noise, and how large the fault is.
enum class DataKind {
  Clean,
  CleanWide,       ///< fisheyes, by the rational model
  FewViews,        ///< four to seven
  Repeated,        ///< few poses, each of them often
  Bent,            ///< a sheet that sags by 0.3 to 3 mm
  ZoomedLittle,    ///< in the second half of the views, by less than 1 %
  Zoomed,          ///< by 1 to 10 %
  Drifting,        ///< by 1 to 10 % from the first view to the last
  OutlyingPoints,  ///< 5 to 40 % of the points
  OutlyingViews,   ///< 5 to 45 % of the views
  PairHeld,        ///< two cameras, each from its own images, then the pair
  PairRefined,     ///< the same with the intrinsics refined together with the pair
};

const std::vector<DataKind>& AllDataKinds();
std::string NameOf(DataKind kind);

struct VerdictTrial {
  bool failed = false;  ///< the computation raised; nothing else counts then
  CalibrationVerdict::Grade grade = CalibrationVerdict::Grade::None;
  /// Of one camera: of a coordinate of projections where the views were, in pixels, from the camera that made
  /// them, the nearer one where there were two. Of a pair: of the rotation, degrees.
  double truth = 0.0;
  double told = 0.0;  ///< by the verdict
  /// Reasons that say more than how sure the numbers are and how many views there are.
  std::vector<std::string> causes;
};

/// Trials of one kind and seed are the same trial.
VerdictTrial RunVerdictTrial(DataKind kind, std::uint64_t seed);

}  // namespace accuracy
