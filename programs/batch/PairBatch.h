/// The headless calibration of a pair of cameras.
#pragma once

#include "batch/Arguments.h"
#include "batch/Batch.h"
#include "common/ExitStatus.h"

namespace batch {

/// Calibrates each camera from its images, unless result files are given, then the pair; writes
/// OUTPUT_left.json, OUTPUT_right.json and OUTPUT.json with a verdict and images beside each, and prints
/// the tables. Raises InputError for unusable inputs, and Interrupted.
common::ExitStatus RunPair(const Arguments& arguments, const RunContext& context);

}  // namespace batch
