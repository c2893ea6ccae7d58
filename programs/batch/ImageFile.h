/// Reads an image file as the sensor saw it.
#pragma once

#include <opencv2/core.hpp>
#include <string>

namespace batch {

struct ImageFile {
  cv::Mat image;                    ///< CV_8UC3; empty when it cannot be decoded
  bool orientationIgnored = false;  ///< the file asks for a rotation or a mirror image, which it did not get
  bool endsTooEarly = false;        ///< the end of the file is missing; the image may be a part of it
};

/// Pixels stay where the sensor has them, whichever way up the camera was held: that is what is calibrated.
/// What the decoders write to standard error is kept from it.
ImageFile ReadImageFile(const std::string& path);

}  // namespace batch
