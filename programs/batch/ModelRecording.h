/// Records a pose model of the assistant from images.
#pragma once

#include "batch/Batch.h"
#include "common/ExitStatus.h"

namespace batch {

/// Writes the model file of the arguments: one pose for each image in which the grid is found. Progress and
/// errors go to standard error, the table to standard output. Raises InputError for unusable inputs.
common::ExitStatus RecordModel(const Arguments& arguments, const RunContext& context);

}  // namespace batch
