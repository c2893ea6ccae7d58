/// Raw camera frames as programs push them.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace velmora {

/// Converts a raw frame to BGR (8 bits, 3 channels). Formats: "8BPS" (packed RGB), "I420", "NV12", "NV21",
/// "YV12" (4:2:0); rows of the latter may be padded, which a longer buffer tells. An empty image, with an
/// error line, for another format, for a size that is not positive (or, in 4:2:0, not even), and for a buffer
/// that is too short.
cv::Mat DecodeRawFrame(std::vector<unsigned char>& data, int width, int height, const std::string& format);

}  // namespace velmora
