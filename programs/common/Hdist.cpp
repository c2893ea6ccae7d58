/// The distance across the printed grid, as the tools take it.
#include "common/Hdist.h"

#include <sstream>

namespace common {

namespace {

constexpr float LEAST = 0.02F;
constexpr float MOST = 5.0F;

}  // namespace

std::string HdistWarning(float metres) {
  if (metres >= LEAST && metres <= MOST) return "";
  std::ostringstream text;
  text << "Warning: --hdist is in metres, and " << metres
       << " m is unusual for a grid (the supplied sheet has " << SUPPLIED_HDIST
       << "). All lengths follow it.\n";
  return text.str();
}

}  // namespace common
