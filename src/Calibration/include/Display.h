/// Tells whether windows can be opened, before the window library is asked to, and opens them.
#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "Export.h"

/// True when the window library comes up: on the X server of DISPLAY, a Wayland socket, or a Qt platform that
/// needs neither (such as QT_QPA_PLATFORM=offscreen). The library ends the process on its first call when it
/// does not, so everything that opens a window asks here first. Whether it would is tried in a child process:
/// the program velmora-window-probe, in the folder "velmora" beside the engine's library. Where that is
/// missing, only what is certain counts: an X server that answers, a platform that needs none, one whose
/// device or plugin is there.
///
/// A server that does not answer within three seconds counts as absent; the child has three seconds, too. One
/// connection to the X server stays open. When the result is false and `reason` is given, it receives one
/// sentence for the user. Thread-safe.
///
/// It is an answer for now: should the server go away later, with a window open, the window library ends the
/// process by itself (Qt: with status 1), which nothing here can prevent.
VELMORA_API bool DisplayAvailable(std::string* reason = nullptr);

/// True for a picture that a window can show at its own size on nearly every screen: of up to 1280 x 720
/// pixels. Thread-safe.
VELMORA_API bool FitsAScreen(const cv::Size& picture);

/// Opens a window for pictures of that size: as large as they are when they fit a screen, otherwise one that
/// shows them scaled down and can be resized. Window thread: the one thread of the process that makes window
/// calls.
VELMORA_API void OpenPictureWindow(const std::string& title, const cv::Size& picture);
