/// The truth about rendered pictures, and its file.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Scene.h"

namespace world {

/// One picture or video frame.
struct TruthFrame {
  /// File name of the picture; empty for frames of a video.
  std::string file;
  /// The picture's number, from 0.
  int index = 0;
  Pose pose;
  /// True projections of the disc centres, row by row; NaN where the lens images none.
  std::vector<cv::Point2d> centres;
  /// Every disc is wholly inside the image.
  bool whole = false;
};

struct Truth {
  cv::Size imageSize;
  Lens lens;
  Sheet sheet;
  std::uint64_t seed = 0;
  std::vector<TruthFrame> frames;
};

/// A truth without frames yet.
Truth TruthOf(const Scene& scene);

/// Projects the sheet for a frame of the scene.
TruthFrame TruthFrameOf(const Scene& scene, const Pose& pose, int index, const std::string& file = "");

/// Writes the truth as JSON. Throws std::runtime_error, naming the file, when it cannot be written.
void SaveTruth(const Truth& truth, const std::string& path);

/// Reads what SaveTruth wrote. Throws std::runtime_error that names the file and the fault.
Truth LoadTruth(const std::string& path);

}  // namespace world
