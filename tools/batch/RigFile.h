/// The result file of a rig.
#pragma once

#include <string>

#include "batch/RigViews.h"

namespace batch {

/// All of the result as a JSON text; cameras and images have their names. Bytes of names that are no UTF-8
/// are replaced.
std::string RigJson(const velmora::RigResult& result, const RigViews& views, const std::string& model);

/// Writes the text to the file, where an earlier one stays whole until the new one is complete, and reads it
/// back. False when that failed.
bool SaveRig(const std::string& json, const std::string& path);

}  // namespace batch
