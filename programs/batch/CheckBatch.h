/// The check of an earlier result by new images.
#pragma once

#include "batch/Arguments.h"
#include "batch/RunContext.h"
#include "common/ExitStatus.h"

namespace batch {

/// Searches the grid in the images, checks the result that --check names by them, and prints a table of the
/// images and the answer in words. Success when the camera is still calibrated; no result when it is not, and
/// when the images do not tell. Raises InputError for unusable inputs.
common::ExitStatus RunCheck(const Arguments& arguments, const RunContext& context);

}  // namespace batch
