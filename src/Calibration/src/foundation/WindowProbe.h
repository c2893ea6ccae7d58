/// Lets a child process try whether the window library can work.
#pragma once

#include <chrono>
#include <string>

namespace velmora {

/// The program that tries it, see window_probe.cpp.
constexpr char WINDOW_PROBE[] = "velmora-window-probe";

/// What the program prints when it runs, and when the window library is at work.
constexpr char WINDOW_PROBE_RUNS = 'r';
constexpr char WINDOW_PROBE_WORKS = 'w';

enum class ProbeAnswer {
  Works,
  Fails,    ///< the window library ended the program, or said no
  Silent,   ///< no word of it in time
  Unknown,  ///< the program is missing, or cannot be run
};

/// Where the program is: in the folder "velmora" beside the engine's library, wherever that was moved, or in
/// "lib/velmora" beside the folder of this process's program. Empty when it is in neither.
std::string FindWindowProbe();

/// Runs the program and returns what it tells. The program is ended when time runs out. Thread-safe, and safe
/// in a process that has other children and threads.
ProbeAnswer AskWindowProbe(const std::string& program, std::chrono::milliseconds patience);

}  // namespace velmora
