/// Recognises the pattern that is shown by mistake most often.
#include "batch/Chessboard.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <vector>

namespace batch {

namespace {

constexpr int LONG_SIDE = 640;
constexpr int RING = 16;   ///< places on a circle around a corner
constexpr int NEAR = 3;    ///< radius of one circle, pixels
constexpr int RADIUS = 6;  ///< of the other one
constexpr size_t ENOUGH_CORNERS = 8;

/// A place where two dark and two light fields meet.
struct Corner {
  cv::Point place;
  double strength = 0.0;  ///< grey levels
  cv::Vec2d axis;         ///< twice the angle towards the dark fields, as a unit vector
};

cv::Mat SmallGrey(const cv::Mat& image) {
  cv::Mat grey = image;
  if (image.channels() == 3) cv::cvtColor(image, grey, cv::COLOR_BGR2GRAY);
  const double scale = static_cast<double>(LONG_SIDE) / std::max(grey.cols, grey.rows);
  if (scale < 1.0) cv::resize(grey, grey, cv::Size(), scale, scale, cv::INTER_AREA);
  cv::Mat smooth;
  cv::GaussianBlur(grey, smooth, cv::Size(5, 5), 1.0);
  return smooth;
}

/// The places of the ring, and a swing of two periods around it.
struct Ring {
  std::array<cv::Point, RING> places;
  std::array<double, RING> cosine;  ///< of twice the angle
  std::array<double, RING> sine;

  explicit Ring(int radius) {
    for (size_t i = 0; i < RING; ++i) {
      const double angle = 2.0 * CV_PI * static_cast<double>(i) / RING;
      places[i] = {cvRound(radius * std::cos(angle)), cvRound(radius * std::sin(angle))};
      cosine[i] = std::cos(2.0 * angle);
      sine[i] = std::sin(2.0 * angle);
    }
  }
};

/// Around a corner the grey values swing twice, at an edge once, and around a dot not at all: of all their
/// variation (a sum of squares) nearly all is in the swing of two periods.
Corner CornerAt(const cv::Mat& grey, const cv::Point& place, const Ring& ring) {
  double sum = 0.0;
  double squares = 0.0;
  cv::Vec2d twice;
  for (size_t i = 0; i < RING; ++i) {
    const double value = grey.at<unsigned char>(place + ring.places[i]);
    sum += value;
    squares += value * value;
    twice += cv::Vec2d(value * ring.cosine[i], value * ring.sine[i]) * (2.0 / RING);
  }
  const double variance = squares / RING - sum * sum / (RING * RING);
  const double strength = cv::norm(twice);
  constexpr double SHARE = 0.7;  // of sharp fields it is 0.81, of blurred ones more
  Corner corner;
  if (0.5 * strength * strength < SHARE * variance || variance <= 0.0) return corner;
  corner.place = place;
  corner.strength = strength;
  corner.axis = twice / strength;
  return corner;
}

/// The strongest corners, none near another.
std::vector<Corner> CornersIn(const cv::Mat& grey) {
  constexpr double STRONG = 20.0;
  const Ring near(NEAR);
  const Ring far(RADIUS);
  std::vector<Corner> all;
  for (int y = RADIUS; y < grey.rows - RADIUS; ++y) {
    for (int x = RADIUS; x < grey.cols - RADIUS; ++x) {
      const Corner corner = CornerAt(grey, {x, y}, far);
      if (corner.strength < STRONG) continue;
      // Fields meet in a point; between dots dark and light come apart the nearer one looks.
      const Corner centre = CornerAt(grey, {x, y}, near);
      if (centre.strength > 0.6 * corner.strength && centre.axis.dot(corner.axis) > 0.9)
        all.push_back(corner);
    }
  }
  std::sort(all.begin(), all.end(), [](const Corner& a, const Corner& b) { return a.strength > b.strength; });
  std::vector<Corner> apart;
  cv::Mat taken(grey.size(), CV_8U, cv::Scalar(0));
  for (const Corner& corner : all) {
    if (taken.at<unsigned char>(corner.place) != 0) continue;
    cv::circle(taken, corner.place, RADIUS + 1, cv::Scalar(1), cv::FILLED);
    apart.push_back(corner);
  }
  return apart;
}

/// At its neighbours along the edges of the fields, dark and light have changed places.
bool HasOppositeNeighbours(const Corner& corner, const std::vector<Corner>& all) {
  std::vector<std::pair<double, const Corner*>> others;
  for (const Corner& other : all) {
    const double distance = cv::norm(other.place - corner.place);
    if (distance > 0.0) others.emplace_back(distance, &other);
  }
  constexpr size_t NEIGHBOURS = 4;
  if (others.size() < NEIGHBOURS) return false;
  std::partial_sort(others.begin(), others.begin() + NEIGHBOURS, others.end());
  // On a lattice they are about equally far, however much it is foreshortened.
  if (others[NEIGHBOURS - 1].first > 2.5 * others[0].first) return false;
  const auto opposite = std::count_if(others.begin(), others.begin() + NEIGHBOURS, [&](const auto& other) {
    return other.second->axis.dot(corner.axis) < -0.7;
  });
  return opposite >= 3;
}

}  // namespace

bool ShowsChessboard(const cv::Mat& image) {
  if (image.depth() != CV_8U || (image.channels() != 1 && image.channels() != 3)) return false;
  if (std::min(image.rows, image.cols) < 4 * RADIUS) return false;
  const std::vector<Corner> corners = CornersIn(SmallGrey(image));
  constexpr size_t MOST_CORNERS = 2000;  // a texture, and pairs of them by the million
  if (corners.size() > MOST_CORNERS) return false;
  const auto count = std::count_if(corners.begin(), corners.end(), [&](const Corner& corner) {
    return HasOppositeNeighbours(corner, corners);
  });
  return static_cast<size_t>(count) >= ENOUGH_CORNERS && 3 * static_cast<size_t>(count) > corners.size();
}

}  // namespace batch
