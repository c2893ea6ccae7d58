/// Decides whether one camera or a pair is calibrated.
#pragma once

#include <optional>
#include <ostream>

#include "common/SourceSettings.h"
#include "velmora/Settings.h"

namespace app {

/// Either an exit status, with which the application ends, or what to calibrate.
struct Selection {
  std::optional<int> exitStatus;
  int kind = Calibrator::MONOCULAR;              ///< Calibrator::MONOCULAR or Calibrator::STEREO
  common::Camera camera = common::Camera::None;  ///< the camera of a stereo input that is calibrated alone
};

/// Checks the selection against the kind of input, and that a pair has the result files of both cameras. What
/// is wrong or replaced goes to `err`.
Selection SelectCameras(const Settings& settings, bool stereoInput, std::ostream& err);

}  // namespace app
