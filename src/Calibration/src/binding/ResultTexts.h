/// What programs on texts exchange with the comparison and the check of results, as JSON.
#pragma once

#include <string>
#include <vector>

#include "velmora/ResultCheck.h"
#include "velmora/ResultComparison.h"

namespace velmora {

/// As CameraResult::FromJson, with sentences about the text that `what` names ("first text").
CameraResult ResultFrom(const std::string& text, const std::string& what);

/// An object of `step` and `area` (pairs of numbers). Raises std::invalid_argument for other texts.
ComparisonOptions ComparisonOptionsFrom(const std::string& text);

/// The members of the comparison but for the map: `rotation` row by row, `where` a pair; then `rows`,
/// `columns` and `differences`, a pair for each cell, row by row, null where it is not known.
std::string AnswerOf(const ResultComparison& comparison);

/// What a result is to be checked by.
struct CheckRequest {
  std::vector<CheckImage> images;
  CheckOptions options;
};

/// An object of `images` (each with centres, weights, deviations and radii, as of snapshots), `grid` with
/// columns and rows, `unit`, `discRadius`, `tolerance`, and `sheetPoints` of three numbers each. Raises
/// std::invalid_argument for other texts.
CheckRequest CheckRequestFrom(const std::string& text);

/// The members of the check: `answer` is "calibrated", "not calibrated" or "cannot tell", points are pairs,
/// and null stands for infinite numbers.
std::string AnswerOf(const ResultCheck& check);

}  // namespace velmora
