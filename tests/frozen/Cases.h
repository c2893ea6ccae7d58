/// The calibrations whose numbers are written down.
#pragma once

#include <string>

#include "frozen/Writer.h"

namespace frozen {

/// Cameras from points: lens models, numbers of views, outliers, discs, bent sheets, both solvers.
void WriteCameras(Writer& writer);

/// Pairs from points: intrinsics fixed and refined, each lens model, both solvers.
void WritePairs(Writer& writer);

/// Cameras and a pair from the photographs below the folder.
void WritePhotographs(Writer& writer, const std::string& folder);

}  // namespace frozen
