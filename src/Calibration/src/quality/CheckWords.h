/// What is said of a check.
#pragma once

#include "velmora/ResultCheck.h"

namespace velmora {

/// What the words need beside the check itself.
struct CheckFacts {
  bool moved = false;           ///< beyond chance
  double termsMoved = 0.0;      ///< deviations by which the radial distortion has
  double calibrationRms = 0.0;  ///< of the result; negative where it is not known
  bool worthless = false;       ///< the verdict on the result
};

/// Standard deviations by which the principal point has moved.
double CentreSureness(const ResultCheck& check);

/// Sets the sentence and the advice for the answer.
void PutIntoWords(const CheckFacts& facts, ResultCheck& check);

}  // namespace velmora
