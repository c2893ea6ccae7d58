/// What the command line asks for, in terms of the synthetic world.
#pragma once

#include <vector>

#include "Rig.h"
#include "Scene.h"
#include "Trajectory.h"
#include "render/Arguments.h"

namespace render {

// All of these throw std::invalid_argument for arguments that make no sense.

world::Sheet SheetOf(const Arguments& arguments);

/// The scene of the only or left camera.
world::Scene SceneOf(const Arguments& arguments);
world::Pair PairOf(const Arguments& arguments);
/// The rig of a number of cameras.
world::Rig RigOf(const Arguments& arguments);

/// Views of the sheet, listed or random ones.
std::vector<world::Pose> ViewsOf(const Arguments& arguments, const world::Scene& scene, int count);
std::vector<world::Pose> ViewsOf(const Arguments& arguments, const world::Pair& rig,
                                 const world::Sheet& sheet, int count);

/// Where the sheet is for the rig at each moment, listed or random.
std::vector<world::Pose> ShotsOf(const Arguments& arguments, const world::Rig& rig,
                                 const world::Sheet& sheet);

/// How many frames the video has.
int FramesOf(const Arguments& arguments);

/// How many views the video passes through.
int KeysOf(const Arguments& arguments);

}  // namespace render
