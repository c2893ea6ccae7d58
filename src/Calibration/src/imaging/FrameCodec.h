/// Pictures as they travel: Base64 text of a JPEG in, JPEG bytes out.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace velmora {

/// The picture (8-bit BGR) that the Base64 text holds; empty when it holds none.
cv::Mat DecodeJpegB64(const std::string& text);

/// JPEG bytes of the picture, scaled to the size when both sides of that are positive. None for an empty
/// picture. Raises cv::Exception when the picture cannot be encoded.
std::vector<unsigned char> EncodeJpeg(const cv::Mat& picture, const cv::Size& size);

}  // namespace velmora
