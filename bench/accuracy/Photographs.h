/// Real photographs of sheets, as far as they are at hand.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Solve.h"

namespace accuracy {

/// Photographs of a sheet, as a camera saw it.
struct Photographs {
  cv::Size size;
  std::vector<std::vector<cv::Point3d>> targets;  ///< the circles that are seen of each
  Points views;
  std::vector<std::vector<double>> deviations;  ///< of their points; none of plain centres
};

/// The sets that are measured with.
constexpr const char* PHOTOGRAPHS[] = {"office-4x11", "endoscope-stereo-4x11/left",
                                       "endoscope-stereo-4x11/right"};

/// One of the sets, with fine centres or plain ones; null, with a line that says so, where it is not at hand.
std::unique_ptr<Photographs> PhotographsAtHand(const std::string& name, bool fine = true);

/// Some of the views.
Photographs Chosen(const Photographs& all, const std::vector<std::size_t>& which);

/// The numbers from 0 to before `count`, in an order of the seed.
std::vector<std::size_t> Shuffled(std::size_t count, std::uint64_t seed);

}  // namespace accuracy
