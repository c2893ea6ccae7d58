/// Reports the progress of the rendering.
#include "render/Progress.h"

#include <unistd.h>

#include <cmath>
#include <iostream>
#include <utility>

namespace render {

Progress::Progress() : Progress(std::cerr, isatty(STDERR_FILENO) == 1) {
}

Progress::Progress(std::ostream& out, bool terminal, std::function<Clock::time_point()> now)
    : out_(out), terminal_(terminal), now_(std::move(now)), start_(now_()) {
}

Progress::~Progress() {
  if (!line_.empty()) out_ << '\r' << std::string(line_.size(), ' ') << '\r' << std::flush;
}

void Progress::Step(int done, int total) {
  if (!terminal_) return;
  const long percent = 100L * done / total;
  std::string line = std::to_string(done) + "/" + std::to_string(total) + " rendered, " +
                     std::to_string(percent) + " %" + TimeLeft(done, total);
  const std::size_t length = line.size();
  if (line.size() < line_.size()) line.resize(line_.size(), ' ');  // covers what stood there before
  out_ << '\r' << line << std::flush;
  line.resize(length);
  line_ = line;
}

/// By the pace so far, once there is one to speak of.
std::string Progress::TimeLeft(int done, int total) const {
  constexpr double SETTLED = 1.0;  // seconds
  const std::chrono::duration<double> passed = now_() - start_;
  if (done < 1 || done >= total || passed.count() < SETTLED) return "";
  const long seconds = std::lround(passed.count() / done * (total - done));
  constexpr long MINUTE = 60;
  const std::string minutes = seconds >= MINUTE ? std::to_string(seconds / MINUTE) + " min " : "";
  return ", " + minutes + std::to_string(seconds % MINUTE) + " s left";
}

}  // namespace render
