/// Reports the progress of the rendering.
#pragma once

#include <chrono>
#include <functional>
#include <ostream>
#include <string>

namespace render {

/// One line that is drawn anew in its place; it is wiped at the end. Nothing where there is no terminal.
class Progress {
 public:
  using Clock = std::chrono::steady_clock;

  /// On standard error.
  Progress();
  Progress(std::ostream& out, bool terminal, std::function<Clock::time_point()> now = Clock::now);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// `done` of `total` pictures are there.
  void Step(int done, int total);

 private:
  std::string TimeLeft(int done, int total) const;

  std::ostream& out_;
  const bool terminal_;
  const std::function<Clock::time_point()> now_;
  const Clock::time_point start_;
  std::string line_;
};

}  // namespace render
