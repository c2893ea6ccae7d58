/// Reads an image file as the sensor saw it.
#include "batch/ImageFile.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <vector>

#include "batch/ImageHeaders.h"
#include "common/LibraryNoise.h"

namespace batch {

namespace {

constexpr int AS_THE_SENSOR_SAW_IT = cv::IMREAD_COLOR | cv::IMREAD_IGNORE_ORIENTATION;

/// All bytes of a file of a format that can be told something of; those of others, such as videos of
/// gigabytes, are not read.
std::string BytesOf(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return "";
  std::ifstream file(path, std::ios::binary);
  constexpr size_t START = 8;
  std::string bytes(START, '\0');
  if (!file.read(bytes.data(), START) || !HasKnownHeader(bytes)) return "";
  file.seekg(0, std::ios::end);
  bytes.resize(static_cast<size_t>(std::max<std::streamoff>(0, file.tellg())));
  file.seekg(0);
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<size_t>(file.gcount()));
  return bytes;
}

/// OpenCV turns TIFF images whatever it is told, unless they do not ask for it.
cv::Mat DecodeUprightTiff(const std::string& bytes) {
  std::vector<unsigned char> changed(bytes.begin(), bytes.end());
  changed[PlaceOfTiffOrientation(bytes)] = UPRIGHT;
  return cv::imdecode(changed, AS_THE_SENSOR_SAW_IT);
}

}  // namespace

ImageFile ReadImageFile(const std::string& path) {
  ImageFile file;
  const std::string bytes = BytesOf(path);
  file.orientationIgnored = OrientationOf(bytes) != UPRIGHT;
  file.endsTooEarly = EndsTooEarly(bytes);
  const common::MutedStandardError muted;
  try {
    file.image = file.orientationIgnored && IsTiff(bytes) ? DecodeUprightTiff(bytes)
                                                          : cv::imread(path, AS_THE_SENSOR_SAW_IT);
  } catch (const cv::Exception&) {
    // One that claims an enormous size.
    file.image.release();
  }
  return file;
}

}  // namespace batch
