/// What is said of a search for the least cost that was not finished.
#pragma once

#include "model/Solution.h"

namespace velmora {

constexpr const char* EARLY_END = "The search for the result ended before it had settled.";
constexpr const char* EARLY_END_ADVICE = "Take more views, tilted more, and compute the result again.";

/// Other solvers' results, which take no steps here, do not say whether they are finished.
inline bool EndedEarly(const Solution& solution) {
  return solution.iterations > 0 && !solution.converged;
}

}  // namespace velmora
