/// The result file of a rig.
#pragma once

#include <string>

#include "batch/RigCameras.h"
#include "common/RigNames.h"
#include "velmora/RigCalibration.h"

namespace batch {

/// All of the result as a JSON text; `model` is its name, empty where the intrinsics were given. Bytes of
/// names that are no UTF-8 are replaced.
std::string RigJson(const velmora::RigResult& result, const common::RigNames& names,
                    const std::string& model);

/// Writes the text to the file, where an earlier one stays whole until the new one is complete, and reads it
/// back. False when that failed.
bool SaveRig(const std::string& json, const std::string& path);

}  // namespace batch
