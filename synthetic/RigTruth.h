/// The truth about rendered images of a rig, and its file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Rig.h"
#include "Truth.h"

namespace world {

/// One moment: where the sheet is for the rig, and what each camera, in the rig's order, has of it.
struct RigTruthFrame {
  /// The moment's number, from 0.
  int index = 0;
  Pose pose;
  /// Without a file where a camera's image is left out.
  std::vector<TruthView> views;
};

struct RigTruth {
  Rig rig;
  Sheet sheet;
  std::uint64_t seed = 0;
  std::vector<RigTruthFrame> frames;
};

/// A truth without frames yet; the scene's camera does not count.
RigTruth RigTruthOf(const Rig& rig, const Scene& scene);

/// Projects the sheet for a moment; the files' names are in the rig's order.
RigTruthFrame RigTruthFrameOf(const Rig& rig, const Sheet& sheet, const Pose& rigPose, int index,
                              const std::vector<std::string>& files);

/// What the truth says about the images of one camera, as a truth of its own; the seed is that of the rig.
Truth TruthOfCamera(const RigTruth& truth, std::size_t camera);

/// Writes the truth as JSON. Throws std::runtime_error, naming the file, when it cannot be written.
void SaveRigTruth(const RigTruth& truth, const std::string& path);

/// Reads what SaveRigTruth wrote. Throws std::runtime_error that names the file and the fault.
RigTruth LoadRigTruth(const std::string& path);

}  // namespace world
