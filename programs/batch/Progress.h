/// Reports the progress of a long run.
#pragma once

#include <chrono>
#include <functional>
#include <ostream>
#include <string>

namespace batch {

/// One line that is redrawn in place on a terminal, with the share that is done and the time that is left;
/// plain lines elsewhere: one per image, of more than a hundred images twenty in all. On standard error,
/// so that the table on standard output can be redirected.
class Progress {
 public:
  using Clock = std::chrono::steady_clock;

  /// Where to, and how.
  struct Terminal {
    std::ostream& out;
    int columns = 0;  ///< 0: no terminal
    std::function<Clock::time_point()> now = Clock::now;
  };

  /// On standard error.
  Progress();
  explicit Progress(Terminal terminal);

  /// `total` may be 0 (unknown) and may become known later.
  void Step(int done, int total, const std::string& what);
  /// Ends the line.
  void Finish();

 private:
  std::string TimeLeft(int done, int total) const;
  void Draw(int done, int total, const std::string& what);

  Terminal terminal_;
  Clock::time_point start_;
  bool drawn_ = false;
};

}  // namespace batch
