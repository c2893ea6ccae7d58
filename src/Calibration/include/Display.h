/// Tells whether windows can be opened, before the window library is asked to.
#pragma once

#include <string>

#include "Export.h"

/// True when a window system answers: an X server on DISPLAY, a Wayland socket, or a Qt platform that needs
/// neither (such as QT_QPA_PLATFORM=offscreen). The window library aborts the process on its first call
/// without one, so everything that opens a window asks here first. A server that does not answer within three
/// seconds counts as absent. When the result is false and `reason` is given, it receives one sentence for the
/// user. Thread-safe.
VELMORA_API bool DisplayAvailable(std::string* reason = nullptr);
