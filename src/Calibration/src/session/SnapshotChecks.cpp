/// Whether a snapshot is one of a session.
#include "session/SnapshotChecks.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "session/UtcTime.h"

namespace velmora {

namespace {

std::string Of(size_t camera) {
  return " of camera " + std::to_string(camera);
}

bool AreWithin(const std::vector<double>& numbers, double most) {
  return std::all_of(numbers.begin(), numbers.end(), [most](double number) {
    return std::isfinite(number) && number >= 0.0 && number <= most;
  });
}

std::string FaultOf(const SessionObservation& seen, size_t camera, size_t points) {
  const auto fits = [&](const auto& list) { return list.empty() || list.size() == seen.centres.size(); };
  if (!seen.centres.empty() && seen.centres.size() != points) {
    return "There are " + std::to_string(seen.centres.size()) + " centres" + Of(camera) +
           ", where the grid has " + std::to_string(points) + ".";
  }
  if (!fits(seen.weights) || !fits(seen.deviations) || !fits(seen.radii)) {
    return "There are not as many weights, deviations or radii" + Of(camera) + " as centres.";
  }
  const bool finite = std::all_of(seen.centres.begin(), seen.centres.end(), [](const cv::Point2d& centre) {
    return std::isfinite(centre.x) && std::isfinite(centre.y);
  });
  if (!finite) return "A centre" + Of(camera) + " is no finite number.";
  constexpr double MOST = std::numeric_limits<double>::max();
  if (!AreWithin(seen.weights, 1.0)) return "A weight" + Of(camera) + " is not from 0 to 1.";
  if (!AreWithin(seen.deviations, MOST) || !AreWithin(seen.radii, MOST)) {
    return "A deviation or radius" + Of(camera) + " is negative or no finite number.";
  }
  return "";
}

std::string FaultOf(const SessionImage& image, size_t camera, const cv::Size& size) {
  if (image.pixels.empty()) return "";
  if (!image.path.empty()) return "The image" + Of(camera) + " is given as pixels and as a file.";
  const int depth = image.pixels.depth();
  const int channels = image.pixels.channels();
  if (image.pixels.dims != 2 || (depth != CV_8U && depth != CV_16U) ||
      (channels != 1 && channels != 3 && channels != 4)) {
    return "The image" + Of(camera) + " is not one of 8 or 16 bits and 1, 3 or 4 channels.";
  }
  if (image.pixels.size() != size) {
    return "The image" + Of(camera) + " has " + std::to_string(image.pixels.cols) + " x " +
           std::to_string(image.pixels.rows) + " pixels, not " + std::to_string(size.width) + " x " +
           std::to_string(size.height) + ".";
  }
  return "";
}

}  // namespace

std::string FaultOf(const std::vector<SessionObservation>& observations, const SessionSettings& settings) {
  const size_t cameras = settings.imageSizes.size();
  if (observations.size() != cameras) {
    return "There are observations of " + std::to_string(observations.size()) + " cameras, not of " +
           std::to_string(cameras) + ".";
  }
  const auto points = static_cast<size_t>(settings.grid.width) * static_cast<size_t>(settings.grid.height);
  bool seen = false;
  for (size_t i = 0; i < cameras; ++i) {
    std::string fault = FaultOf(observations[i], i, points);
    if (!fault.empty()) return fault;
    seen = seen || !observations[i].centres.empty();
  }
  return seen ? "" : "No camera saw the grid.";
}

std::string FaultOf(const SessionSnapshot& snapshot, const SessionSettings& settings) {
  std::string fault = FaultOf(snapshot.observations, settings);
  if (!fault.empty()) return fault;
  const size_t cameras = settings.imageSizes.size();
  if (!snapshot.images.empty() && snapshot.images.size() != cameras) {
    return "There are images of " + std::to_string(snapshot.images.size()) + " cameras, not of " +
           std::to_string(cameras) + ".";
  }
  if (!snapshot.origins.empty() && snapshot.origins.size() != cameras) {
    return "There are origins of " + std::to_string(snapshot.origins.size()) + " cameras, not of " +
           std::to_string(cameras) + ".";
  }
  for (size_t i = 0; i < snapshot.images.size() && fault.empty(); ++i) {
    fault = FaultOf(snapshot.images[i], i, settings.imageSizes[i]);
  }
  if (!fault.empty()) return fault;
  if (!snapshot.takenAt.empty() && !IsUtcText(snapshot.takenAt)) {
    return "\"" + snapshot.takenAt + "\" is no moment such as 2026-05-04T12:30:00Z.";
  }
  if (snapshot.score && !std::isfinite(*snapshot.score)) return "The score is no finite number.";
  return "";
}

}  // namespace velmora
