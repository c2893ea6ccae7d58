/// Images as they travel: Base64 text of a JPEG in, JPEG bytes out.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace velmora {

/// The image (8-bit BGR) that the Base64 text holds; empty when it holds none.
cv::Mat DecodeJpegB64(const std::string& text);

/// JPEG bytes of the image, scaled to the size when both sides of that are positive. None for an empty
/// image. Raises cv::Exception when the image cannot be encoded.
std::vector<unsigned char> EncodeJpeg(const cv::Mat& image, const cv::Size& size);

}  // namespace velmora
