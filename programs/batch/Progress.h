/// Reports the progress of a long run.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <ostream>
#include <string>

namespace batch {

/// One line that is redrawn in place on a terminal, with the share that is done, how many are done in a
/// second and the time that is left; plain lines elsewhere: one per image, of more than a hundred images
/// twenty in all, which tell as much. On standard error, so that the table on standard output can be
/// redirected, and whether libraries are kept from that meanwhile or not.
class Progress {
 public:
  using Clock = std::chrono::steady_clock;

  /// Where to, and how.
  struct Terminal {
    std::ostream& out;
    int columns = 0;  ///< 0: no terminal
    std::function<Clock::time_point()> now = Clock::now;
  };

  Progress();
  explicit Progress(Terminal terminal);

  /// `total` may be 0 (unknown) and may become known later.
  void Step(int done, int total, const std::string& what);
  /// Says what is to stay on the screen; nothing for an empty text. It ends with its own line end.
  void Tell(const std::string& text);
  /// Ends the line.
  void Finish();

 private:
  /// Behind the share, with a comma before each; empty as long as there is no pace to speak of.
  std::string Pace(int done, int total) const;
  void Draw(int done, int total, const std::string& what);

  std::unique_ptr<std::ostream> own_;  ///< standard error, unless another terminal is given
  Terminal terminal_;
  Clock::time_point start_;
  bool drawn_ = false;
};

}  // namespace batch
