/// What the command line asks for, converted and with the defaults filled in.
#pragma once

#include <optional>
#include <string>

#include "Calibrator.h"
#include "common/SourceSettings.h"

namespace app {

/// The settings of a run. Options that were not given are empty or at their default.
struct Settings : common::SourceSettings {
  /// The grid's unit as the calibrator receives it, metres. The default is handed over as it stands; a value
  /// from the command line is a tenth of what was typed.
  float hdist = 0.19F;
  int model = Calibrator::MODEL_RATIONAL;
  std::optional<std::string> select;  ///< as typed; checked once it is known whether the input is stereo
  std::string output;                 ///< path of the result file, without its extension

  std::optional<std::string> calibLeft;
  std::optional<std::string> calibRight;
};

}  // namespace app
