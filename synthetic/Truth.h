/// The truth about rendered images, and its file.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "Rig.h"
#include "Scene.h"

namespace world {

/// What a camera has of an image or video frame.
struct TruthView {
  /// File name of the image; empty for frames of a video.
  std::string file;
  Pose pose;
  /// True projections of the disc centres, row by row; NaN where the lens images none.
  std::vector<cv::Point2d> centres;
  /// Every disc is wholly inside the image, and the print's side is seen.
  bool whole = false;
};

/// One image or video frame: of the only camera, or of the left one with the right one's beside it. Both
/// files of a pair are the same when one image shows both cameras; centres still count in a camera's own
/// half.
struct TruthFrame : TruthView {
  /// The image's number, from 0.
  int index = 0;
  std::optional<TruthView> right;
};

struct Truth {
  /// The image size of the only or left camera.
  cv::Size imageSize;
  Lens lens;
  Sheet sheet;
  std::uint64_t seed = 0;
  /// With it, every frame has a right view, and without it none.
  std::optional<RigCamera> right;
  std::vector<TruthFrame> frames;
};

/// Projects the sheet for an image.
TruthView ViewOf(const Camera& camera, const Sheet& sheet, const Pose& pose, const std::string& file);

/// A truth without frames yet.
Truth TruthOf(const Scene& scene);

/// Projects the sheet for a frame of the scene.
TruthFrame TruthFrameOf(const Scene& scene, const Pose& pose, int index, const std::string& file = "");

/// The truth of a pair; the scene's camera does not count.
Truth TruthOf(const Pair& pair, const Scene& scene);

/// Projects the sheet for a pair of frames of the scene.
TruthFrame TruthFrameOf(const Pair& pair, const Scene& scene, const Pose& leftPose, int index,
                        const std::string& leftFile = "", const std::string& rightFile = "");

/// The pair of a truth. Throws std::invalid_argument when it is of one camera.
Pair PairOf(const Truth& truth);

/// What the truth of a pair says about one camera, as a truth of its own; the seed is that of the pair.
/// Throws std::invalid_argument when the truth is of one camera.
Truth LeftOf(const Truth& truth);
Truth RightOf(const Truth& truth);

/// Writes the truth as JSON. Throws std::runtime_error, naming the file, when it cannot be written.
void SaveTruth(const Truth& truth, const std::string& path);

/// Reads what SaveTruth wrote. Throws std::runtime_error that names the file and the fault.
Truth LoadTruth(const std::string& path);

}  // namespace world
