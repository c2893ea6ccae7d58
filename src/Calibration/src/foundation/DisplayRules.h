/// What is made of the window systems that answer and of what the window probe says.
#pragma once

#include <string>

#include "foundation/WindowProbe.h"

namespace velmora {

/// Which servers accept connections.
struct Servers {
  bool x = false;
  bool wayland = false;
};

/// True unless the platform, as QT_QPA_PLATFORM names it or several of them, draws without a server.
bool NeedsServer(const std::string& platform);

/// Whether a window can be opened: as the probe found. Without its word only what is certain counts: an X
/// server for a platform that uses one, and, when the probe cannot be run at all, a platform whose device or
/// whose plugin is there.
bool Usable(const std::string& platform, const Servers& servers, ProbeAnswer probe);

}  // namespace velmora
