/// Pictures and videos of one camera.
#pragma once

#include "render/Arguments.h"

namespace render {

void RenderPictures(const Arguments& arguments);
void RenderVideo(const Arguments& arguments);

}  // namespace render
