/// Pictures of a rig of any number of cameras.
#pragma once

#include "render/Arguments.h"

namespace render {

/// Each camera's pictures in a folder of its own, camera-0, camera-1, ..., with a truth of its own; pictures
/// of the same name are of the same moment. The truth of the rig in the folder above.
void RenderRigPictures(const Arguments& arguments);

}  // namespace render
