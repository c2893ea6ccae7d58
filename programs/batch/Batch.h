/// The headless calibration of one camera.
#pragma once

#include <functional>
#include <string>

#include "batch/Arguments.h"
#include "batch/RunContext.h"
#include "batch/SingleSearch.h"
#include "common/ExitStatus.h"
#include "common/OutputFiles.h"

namespace batch {

/// Reads the images, calibrates, writes the result file and prints the table. Progress and errors go to
/// standard error, the table to standard output. Raises InputError for unusable inputs, and Interrupted.
common::ExitStatus Run(const Arguments& arguments, const RunContext& context);

/// Searches one camera's images as SearchShared does. `take` is told of each in their order and returns why
/// an image gave no view, else an empty text.
void SearchImages(const Arguments& arguments, Wanted wanted,
                  const std::function<std::string(NamedImage&, const SearchOutcome&)>& take,
                  const RunContext& context);

/// Prints on standard error that too few of the images (or pairs) held the grid, and a hint if there is one.
/// `whose` tells, with a blank before it, whose images these are.
common::ExitStatus ReportTooFewViews(const std::string& what, size_t found, const std::string& hint,
                                     const std::string& whose = "");

/// Prints the list of written files; how a run ends whose result is of that worth.
common::ExitStatus EndWithFiles(const common::OutputFiles& files, bool worthless, const Arguments& arguments);

/// Prints on standard error that the file could not be written.
common::ExitStatus ReportUnwritten(const std::string& file);

}  // namespace batch
