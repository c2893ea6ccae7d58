/// Recognises the pattern that is shown by mistake most often.
#pragma once

#include <opencv2/core.hpp>

namespace batch {

/// True of an image (CV_8UC1 or CV_8UC3) that shows a chessboard: a lattice of corners at which two dark and
/// two light fields meet. Meant for images in which no grid of circles was found.
bool ShowsChessboard(const cv::Mat& image);

}  // namespace batch
