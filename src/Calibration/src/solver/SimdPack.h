/// Several numbers that arithmetic is done on at once.
#pragma once

#include <cstddef>

namespace velmora::solver {

/// Two, as every 64-bit processor that this is built for has them: their number is fixed, as the order of
/// sums depends on it.
constexpr size_t LANES = 2;
using SimdPack = double __attribute__((vector_size(LANES * sizeof(double))));

}  // namespace velmora::solver
