/// The table that ends the calibration of a rig.
#pragma once

#include <string>

#include "batch/RigCameras.h"
#include "common/Report.h"
#include "common/RigNames.h"
#include "velmora/RigCalibration.h"

namespace batch {

/// The whole table: images, RMS, and of each camera RMS, views, focal length and how it stands to the first,
/// with standard deviations. `model` is its name; empty: the intrinsics were given.
std::string RigTable(const velmora::RigResult& result, const common::RigNames& names,
                     const std::vector<common::Rejection>& rejected, const std::string& model);

}  // namespace batch
