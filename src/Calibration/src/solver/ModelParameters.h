/// How many of a lens' parameters a model leaves free.
#pragma once

namespace sparse {

/// Of MODEL_RATIONAL and MODEL_FULL; any other model is classic.
int FreeParametersOf(int model);

}  // namespace sparse
