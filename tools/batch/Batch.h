/// The headless calibration of one camera.
#pragma once

#include "batch/Arguments.h"

namespace batch {

enum ExitStatus { CALIBRATED = 0, TOO_FEW_VIEWS = 1, UNUSABLE_INPUT = 2 };

/// Reads the pictures, calibrates, writes the result file and prints the table. Progress and errors go to standard
/// error, the table to standard output. Raises InputError for unusable inputs.
ExitStatus Run(const Arguments& arguments);

}  // namespace batch
