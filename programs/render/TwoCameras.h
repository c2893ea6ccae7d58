/// Pictures and videos of two cameras.
#pragma once

#include "render/Arguments.h"

namespace render {

/// Each camera's pictures in a folder of its own with a truth of its own, or both in one picture; the truth
/// of the pair in the folder above.
void RenderPicturePairs(const Arguments& arguments);

/// Renders videos and their truths: _left and _right at the end of the name tell the cameras apart.
void RenderVideoPair(const Arguments& arguments);

}  // namespace render
