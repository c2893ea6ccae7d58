/// Views of which some points, or whole images, are not what the cameras saw.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <opencv2/core.hpp>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include "model/Solution.h"

namespace unit {

using namespace velmora;

using ImageNumbers = std::set<std::pair<size_t, size_t>>;           ///< view and camera
using PointNumbers = std::set<std::tuple<size_t, size_t, size_t>>;  ///< view, camera and point

struct Spoilt {
  std::vector<TargetView> views;
  ImageNumbers images;
  PointNumbers points;
};

/// Moves that share of every image's points by 15 to 40 pixels, and puts the points of some images in reverse
/// order.
inline Spoilt Spoil(std::vector<TargetView> views, double share, const ImageNumbers& reversed,
                    std::uint64_t seed) {
  cv::RNG random(seed);
  Spoilt spoilt{std::move(views), reversed, {}};
  for (size_t i = 0; i < spoilt.views.size(); ++i) {
    for (size_t camera = 0; camera < spoilt.views[i].observations.size(); ++camera) {
      auto& image = spoilt.views[i].observations[camera].image;
      if (reversed.count({i, camera}) > 0) {
        std::reverse(image.begin(), image.end());
        continue;
      }
      const auto count = static_cast<size_t>(std::lround(share * static_cast<double>(image.size())));
      std::set<size_t> chosen;
      while (chosen.size() < count) {
        chosen.insert(static_cast<size_t>(random.uniform(0, static_cast<int>(image.size()))));
      }
      for (const size_t point : chosen) {
        const double angle = random.uniform(0.0, 2.0 * CV_PI);
        image[point] += random.uniform(15.0, 40.0) * cv::Point2d(std::cos(angle), std::sin(angle));
        spoilt.points.insert({i, camera, point});
      }
    }
  }
  return spoilt;
}

inline ImageNumbers ImagesOf(const std::vector<Rejected>& rejected) {
  ImageNumbers images;
  for (const Rejected& item : rejected) {
    if (item.point == Rejected::WHOLE_VIEW) images.insert({item.view, item.camera});
  }
  return images;
}

inline PointNumbers PointsOf(const std::vector<Rejected>& rejected) {
  PointNumbers points;
  for (const Rejected& item : rejected) {
    if (item.point != Rejected::WHOLE_VIEW) {
      points.insert({item.view, item.camera, static_cast<size_t>(item.point)});
    }
  }
  return points;
}

}  // namespace unit
