/// Seeds of independent random sequences out of one.
#pragma once

#include <cstdint>

namespace world {

/// A seed that depends on every bit of both numbers.
inline std::uint64_t MixSeeds(std::uint64_t seed, std::uint64_t number) {
  std::uint64_t z = seed + 0x9e3779b97f4a7c15ULL * (number + 1);
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
  z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
  return z ^ (z >> 31);
}

}  // namespace world
