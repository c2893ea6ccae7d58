/// Opens a source and runs a guided calibration over it.
#pragma once

#include "guided/Arguments.h"
#include "guided/GuidedLoop.h"

namespace guided {

/// Tells of its course on standard output and of what is wrong on standard error. Raises batch::InputError
/// when the result file could not be written.
ExitStatus Run(const Arguments& arguments);

}  // namespace guided
