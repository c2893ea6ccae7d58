/// The weak prior, and the poles that it keeps out of the image.
#include "solver/WeakPrior.h"

#include <gtest/gtest.h>

#include <cmath>

#include "unit/Collection.h"

using namespace velmora;

namespace {

TEST(Poles, AreSeenWithinTheImageOnly) {
  Intrinsics lens;
  lens.estimated = RATIONAL_PARAMETERS;
  lens.values = {500.0, 500.0, 319.5, 239.5};
  EXPECT_TRUE(solver::IsFreeOfPoles(lens, unit::FRAME));
  // A zero hides the pole but for its neighbourhood. Corners are at 0.8.
  lens.values[K1] = -2.77;
  lens.values[K4] = -1.0 / (0.6 * 0.6);
  EXPECT_FALSE(solver::IsFreeOfPoles(lens, unit::FRAME));
  lens.values[K1] = 0.0;
  lens.values[K4] = -1.0 / (4.0 * 4.0);
  EXPECT_TRUE(solver::IsFreeOfPoles(lens, unit::FRAME));
}

}  // namespace
