/// The images of snapshots: pixels or files on their way into a session, and back.
#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "velmora/Session.h"

namespace velmora {

/// What is to be kept of an image: what is noted, and the bytes to be written at its path, none of a
/// reference.
struct ImageToKeep {
  StoredImage stored;
  std::string bytes;
};

/// `folder` is that of the snapshot. Raises std::runtime_error, or std::invalid_argument for what is no file,
/// when a file cannot be read or the pixels not be encoded.
ImageToKeep Kept(const SessionImage& image, size_t camera, const std::string& folder);

/// What is wrong with the image's file, as the end of a sentence: "is missing", "has changed since it was
/// stored"; empty when nothing is. Content is compared only when it is to be.
std::string FaultOf(const StoredImage& image, bool content);

/// The image; see Session::LoadImage. Raises std::runtime_error.
cv::Mat Loaded(const StoredImage& image);

}  // namespace velmora
