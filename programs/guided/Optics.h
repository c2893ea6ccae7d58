/// Keeps the optics of cameras as they are while they are calibrated: a camera matrix is of one focus and one
/// zoom.
#pragma once

#include <map>
#include <mutex>
#include <string>

#include "guided/VideoDevice.h"

namespace guided {

/// Whether the camera focuses by itself now.
bool FocusesByItself(const VideoDevice& device);

/// Of the cameras of a machine, by number. Thread-safe.
class Optics {
 public:
  /// Switches autofocus off, where it is on, and leaves the focus where it is. The zoom is left alone. Lines
  /// that tell what was done, that it was refused, and of a zoom that is not at its default; empty where
  /// there is nothing to tell.
  std::string Fix(int camera, const VideoDevice& device);

  /// Brings a camera that was unplugged back to the focus that it was fixed at.
  void Restore(int camera, const VideoDevice& device);

 private:
  std::mutex lock_;
  std::map<int, int> focus_;  ///< of the cameras whose autofocus was switched off and whose focus can be set
};

}  // namespace guided
