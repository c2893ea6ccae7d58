/// Pictures that hold their resolution.
#pragma once

#include <opencv2/core.hpp>
#include <string>

namespace render {

/// Writes a picture as a PNG that says how large it is to be printed. Throws std::runtime_error when it
/// cannot be written.
void WritePng(const std::string& path, const cv::Mat& picture, double pixelsPerMetre);

}  // namespace render
