/// The distance across the printed grid, as the tools take it.
#pragma once

#include <string>

namespace common {

/// That of the sheet which velmora-render writes, printed at full size, metres.
constexpr float SUPPLIED_HDIST = 0.2F;

/// A line about a distance that hardly any sheet has, such as one in millimetres; else an empty text.
std::string HdistWarning(float metres);

}  // namespace common
