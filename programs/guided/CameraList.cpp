/// What there is to say of the machine's cameras.
#include "guided/CameraList.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iomanip>
#include <map>
#include <sstream>
#include <utility>

namespace guided {

namespace {

constexpr size_t SIZES_PER_LINE = 4;

std::string TextOf(const cv::Size& size) {
  return std::to_string(size.width) + "x" + std::to_string(size.height);
}

std::string RateText(double rate) {
  std::ostringstream text;
  text << std::setprecision(3) << rate;
  return text.str();
}

/// By pixels, then by width; the rate is the fastest of those with that size.
std::vector<CameraSize> LargestFirst(const std::vector<CameraSize>& listed) {
  std::map<std::pair<int, int>, double> rates;  // by pixels and width
  for (const CameraSize& each : listed) {
    double& rate = rates[{each.size.area(), each.size.width}];
    rate = std::max(rate, each.rate);
  }
  std::vector<CameraSize> sizes;
  sizes.reserve(rates.size());
  for (auto entry = rates.rbegin(); entry != rates.rend(); ++entry) {
    const auto& [pixels, width] = entry->first;
    sizes.push_back({cv::Size(width, width > 0 ? pixels / width : 0), entry->second});
  }
  return sizes;
}

std::string SizesText(const CameraSizes& sizes) {
  const std::string indent = "\n     ";
  std::string text;
  if (!sizes.largest.empty()) {
    text += indent + "any size from " + TextOf(sizes.smallest) + " to " + TextOf(sizes.largest);
  }
  const std::vector<CameraSize> ordered = LargestFirst(sizes.listed);
  for (size_t i = 0; i < ordered.size(); ++i) {
    text += i % SIZES_PER_LINE == 0 ? indent : " ";
    text += TextOf(ordered[i].size);
    if (ordered[i].rate > 0.0) text += " (" + RateText(ordered[i].rate) + "/s)";
    if (i + 1 < ordered.size()) text += ",";
  }
  return text.empty() ? indent + "sizes not told" : text;
}

std::string FaultText(int fault) {
  if (fault == EACCES || fault == EPERM) return "you have no permission to use it";
  if (fault == EBUSY) return "in use by another program";
  return std::strerror(fault);
}

std::string TextOf(const CameraDevice& camera) {
  std::ostringstream text;
  text << std::setw(3) << camera.number << "  " << (camera.name.empty() ? camera.path : camera.name);
  if (camera.fault != 0) text << ": " << FaultText(camera.fault);
  // A camera in use still tells its sizes; one that may not be opened tells nothing.
  if (!camera.name.empty()) text << SizesText(camera.sizes);
  return text.str() + "\n";
}

}  // namespace

std::string CameraListText(const std::vector<CameraDevice>& cameras, const std::string& folder) {
  if (cameras.empty()) return "There is no camera: no " + folder + "/video* delivers pictures.\n";
  std::string text = "Cameras (--webcam NUMBER; sizes with the most frames per second):\n";
  for (const CameraDevice& camera : cameras) text += TextOf(camera);
  return text;
}

cv::Size LargestSize(const CameraSizes& sizes) {
  cv::Size largest = sizes.largest;
  for (const CameraSize& each : sizes.listed) {
    if (each.size.area() > largest.area()) largest = each.size;
  }
  return largest;
}

}  // namespace guided
