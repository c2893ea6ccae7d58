/// Which frames the engine works on.
#pragma once

#include <opencv2/core.hpp>

namespace velmora {

/// True for 8-bit images of 1, 3 or 4 channels.
inline bool IsSupportedFrame(const cv::Mat& frame) {
  const int channels = frame.channels();
  return frame.dims == 2 && frame.depth() == CV_8U && (channels == 1 || channels == 3 || channels == 4);
}

}  // namespace velmora
