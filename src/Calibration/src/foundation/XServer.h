/// A connection to an X server, to find out whether one answers.
#pragma once

#include <chrono>
#include <string>

namespace velmora {

/// True when the server of that name accepts a connection in time. A server that resets itself as its last
/// client leaves refuses connections meanwhile, so a refused one is tried again for up to a second. The
/// connection is kept until another one is asked for, so that the window library finds the server at rest.
/// Thread-safe.
bool XServerAnswers(const std::string& display, std::chrono::milliseconds patience);

}  // namespace velmora
