/// The lens of a result, as the solver has it.
#include "quality/ResultLens.h"

#include <algorithm>

#include "model/LensModel.h"
#include "solver/OpenCvMatrices.h"

namespace velmora {

Intrinsics IntrinsicsOf(const CameraResult& result) {
  if (result.fisheye) return solver::KnownFisheye(result.K, result.D);
  Intrinsics intrinsics = solver::KnownIntrinsics(result.K, result.D, MODEL_FULL);
  const auto used = [&intrinsics](int from) {
    return std::any_of(intrinsics.values.begin() + from, intrinsics.values.end(),
                       [](double value) { return value != 0.0; });
  };
  // Files of the rational model have zeros for what it does not hold.
  intrinsics.estimated = used(RATIONAL_PARAMETERS) ? FULL_PARAMETERS
                         : result.D.total() > 5    ? RATIONAL_PARAMETERS
                                                   : CLASSIC_PARAMETERS;
  return intrinsics;
}

}  // namespace velmora
