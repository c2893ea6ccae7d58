/// Takes the sheet through the poses of a model of the assistant.
#pragma once

#include <string>
#include <vector>

#include "Scene.h"

namespace render {

/// The poses in which the sheet comes nearest to those of the model file. Throws std::invalid_argument for a
/// file that cannot be read or is no model for pictures of the camera's size.
std::vector<world::Pose> FollowedViews(const std::string& model, const world::Scene& scene);

}  // namespace render
