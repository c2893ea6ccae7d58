/// The result files of a pair's cameras that a user gives.
#pragma once

#include <string>

namespace batch {

/// Raises InputError, which names the file and the fault, for a camera matrix or coefficients of a shape that
/// no camera has: that should be known before pictures are looked at. Whatever cannot be read at all is left
/// to the engine to report.
void CheckCameraFile(const std::string& path);

}  // namespace batch
