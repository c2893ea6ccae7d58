/// Ends a program in order when it is asked to end: Ctrl-C, or SIGTERM.
#pragma once

#include <signal.h>

namespace common {

/// While it lives, the first SIGINT or SIGTERM is only noted, so that the program can come to an end by
/// itself; the second ends the process at once, as either does without this. A signal that the process was
/// told to ignore stays ignored, as by nohup. One at a time; it may be asked from any thread.
class Interruption {
 public:
  Interruption();
  /// The former handlers are back.
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  /// Whether the program has been asked to end.
  bool Requested() const;
  /// 128 and the number of the signal: 130 of SIGINT, 143 of SIGTERM, as shells have it; 0 without a request.
  int ExitStatus() const;

 private:
  struct sigaction formerInterrupt_ {};
  struct sigaction formerTerminate_ {};
};

}  // namespace common
