/// How many of a lens' parameters a model leaves free.
#include "solver/ModelParameters.h"

#include "Calibrator.h"
#include "solver/Projection.h"

namespace sparse {

int FreeParametersOf(int model) {
  switch (model) {
    case Calibrator::MODEL_RATIONAL:
      return RATIONAL_PARAMETERS;
    case Calibrator::MODEL_FULL:
      return FULL_PARAMETERS;
    default:
      return CLASSIC_PARAMETERS;
  }
}

}  // namespace sparse
