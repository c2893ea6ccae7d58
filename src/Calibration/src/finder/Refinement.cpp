/// Moves the discs' centres to where the grey values put them.
#include "finder/Refinement.h"

#include <algorithm>
#include <cmath>

namespace finder {

namespace {

constexpr int ROUNDS = 2;
/// Darkness up to this share is the paper's noise.
constexpr double PAPER = 0.12;
constexpr double LEAST_CONTRAST = 4.0;
/// Half the distance between the centres of the nearest discs, steps.
const double HALF_WAY = std::sqrt(0.5);

/// An elliptic window around a disc, seen as a circle in steps.
struct Window {
  cv::Point2d centre;
  cv::Matx22d toSteps;
  double disc = 0.0;   ///< radius of the disc, steps
  double outer = 0.0;  ///< radius of the window, steps

  double DistanceOf(double x, double y) const {
    const cv::Vec2d apart = toSteps * cv::Vec2d(x - centre.x, y - centre.y);
    return std::sqrt(apart.dot(apart));
  }
};

struct Sample {
  int x, y;
  double distance;
  unsigned char value;
};

/// All pixels in the window; empty when it does not fit into the picture.
std::vector<Sample> SamplesIn(const cv::Mat& grey, const Window& window, const cv::Matx22d& slope) {
  std::vector<Sample> samples;
  const double halfWidth = window.outer * std::hypot(slope(0, 0), slope(0, 1));
  const double halfHeight = window.outer * std::hypot(slope(1, 0), slope(1, 1));
  const int left = std::max(0, cvFloor(window.centre.x - halfWidth));
  const int top = std::max(0, cvFloor(window.centre.y - halfHeight));
  const int right = std::min(grey.cols - 1, cvCeil(window.centre.x + halfWidth));
  const int bottom = std::min(grey.rows - 1, cvCeil(window.centre.y + halfHeight));
  for (int y = top; y <= bottom; ++y) {
    for (int x = left; x <= right; ++x) {
      const double distance = window.DistanceOf(x, y);
      if (distance <= window.outer) samples.push_back({x, y, distance, grey.at<unsigned char>(y, x)});
    }
  }
  return samples;
}

/// The middle value of the samples in a ring; -1 without any.
double RingLevel(const std::vector<Sample>& samples, double from, double to) {
  std::vector<unsigned char> values;
  for (const Sample& sample : samples) {
    if (sample.distance >= from && sample.distance <= to) values.push_back(sample.value);
  }
  if (values.empty()) return -1.0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// One round; false when paper and ink cannot be told apart.
bool Recentre(const cv::Mat& grey, const cv::Matx22d& slope, Window& window, double& area) {
  const std::vector<Sample> samples = SamplesIn(grey, window, slope);
  const double paper = RingLevel(samples, 0.45 * window.disc + 0.55 * window.outer, window.outer);
  double ink = RingLevel(samples, 0.0, 0.4 * window.disc);
  if (ink < 0.0) {
    const auto darkest = std::min_element(samples.begin(), samples.end(),
                                          [](const Sample& a, const Sample& b) { return a.value < b.value; });
    if (darkest == samples.end()) return false;
    ink = darkest->value;
  }
  if (paper < 0.0 || paper - ink < LEAST_CONTRAST) return false;
  cv::Point2d sum;
  double weights = 0.0;
  area = 0.0;
  for (const Sample& sample : samples) {
    const double dark = (paper - sample.value) / (paper - ink);
    const double weight = std::min(1.0 - PAPER, std::max(0.0, dark - PAPER));
    sum += weight * cv::Point2d(sample.x, sample.y);
    weights += weight;
    area += std::min(1.0, std::max(0.0, dark));
  }
  if (!(weights > 0.0)) return false;
  window.centre = sum / weights;
  return true;
}

}  // namespace

void RefineDiscs(const SheetPlane& plane, const cv::Mat& grey, PlacedDiscs& discs) {
  for (size_t k = 0; k < discs.places.size(); ++k) {
    const cv::Matx22d slope = plane.Slope(discs.places[k]);
    const double step = plane.Step(discs.places[k]);
    const double radius = discs.radii[k];
    Window window;
    window.centre = discs.centres[k];
    window.toSteps = slope.inv();
    window.disc = radius / step;
    window.outer = window.disc + std::min(0.32, std::max(0.1, HALF_WAY - window.disc));
    double area = 0.0;
    bool refined = true;
    for (int round = 0; round < ROUNDS && refined; ++round) refined = Recentre(grey, slope, window, area);
    if (!refined || cv::norm(window.centre - discs.centres[k]) > 0.25 * radius + 0.5) continue;
    discs.centres[k] = window.centre;
    discs.radii[k] = std::sqrt(area / CV_PI);
  }
}

}  // namespace finder
