/// What there is to say of the machine's cameras.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace guided {

struct CameraSize {
  cv::Size size;
  double rate = 0.0;  ///< frames per second at most; 0: not told
};

struct CameraSizes {
  std::vector<CameraSize> listed;  ///< once for each format of pixels that has it, in any order
  cv::Size smallest;               ///< of a range of sizes, in place of a list; empty: there is none
  cv::Size largest;
};

struct CameraDevice {
  int number = 0;
  std::string path;
  std::string name;   ///< as the device calls itself; empty when it could not be asked
  int fault = 0;      ///< of errno: why it cannot be used
  CameraSizes sizes;  ///< none when it could not be asked, or does not tell
};

/// A paragraph for each camera with its number, name and sizes, or why it cannot be used; one line when there
/// is no camera in the folder.
std::string CameraListText(const std::vector<CameraDevice>& cameras, const std::string& folder);

/// The largest size in pixels that the camera offers; empty when it tells none.
cv::Size LargestSize(const CameraSizes& sizes);

}  // namespace guided
