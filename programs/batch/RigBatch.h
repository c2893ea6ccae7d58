/// The headless calibration of a rig of cameras.
#pragma once

#include "batch/Arguments.h"
#include "batch/Batch.h"
#include "common/ExitStatus.h"

namespace batch {

/// Calibrates two cameras or more together, with intrinsics that are given or are estimated too; writes
/// OUTPUT_rig.json with an image of each camera that is estimated, and prints the table. Raises InputError
/// for unusable inputs, and the engine's exception, with the cameras' names, where there is no result.
common::ExitStatus RunRig(const Arguments& arguments, const RunContext& context);

}  // namespace batch
