/// Opens a source and runs a guided calibration over it.
#pragma once

#include "guided/Arguments.h"
#include "guided/GuidedLoop.h"

namespace guided {

/// Reports its progress on standard output and errors on standard error. Raises common::InputError when the
/// result file could not be written.
int Run(const Arguments& arguments);

}  // namespace guided
