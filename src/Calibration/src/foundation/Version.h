/// The version of the engine.
#pragma once

namespace velmora {

constexpr const char* VERSION = "5.1.0";

}  // namespace velmora
