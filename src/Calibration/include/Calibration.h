/// Process-wide services of the engine: verbosity and version.
#pragma once

#include <string>

/// A class of static functions. All of them are thread-safe.
class Calibration {
 public:
  /// Sets the verbosity of the log: 0 (silent) to 5 (trace). Any other value sets 3 (information).
  static void SetLogLevel(int level);

  /// Kept for callers of builds that logged through an external library: prints a warning, changes nothing.
  static void DisableConsoleLogger();

  /// Kept for callers of builds that logged through an external library: prints a warning, changes nothing.
  static void DisableFileLogger();

  /// The version of the engine, "5.1.0".
  static std::string GetVersion();
};
