/// Tells how far a long run has come.
#include "batch/Progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace batch {

Progress::Progress() : terminal_(isatty(STDERR_FILENO) == 1) {
}

void Progress::Step(int done, int total, const std::string& what) {
  const std::string count = std::to_string(done) + (total > 0 ? "/" + std::to_string(total) : "");
  if (!terminal_) {
    std::fprintf(stderr, "%s %s\n", count.c_str(), what.c_str());
    return;
  }
  constexpr int WIDTH = 30;
  const int filled = total > 0 ? std::min(WIDTH, WIDTH * done / total) : done % (WIDTH + 1);
  const std::string bar =
      std::string(static_cast<size_t>(filled), '#') + std::string(static_cast<size_t>(WIDTH - filled), ' ');
  std::fprintf(stderr, "\r[%s] %s  %-40.40s", bar.c_str(), count.c_str(), what.c_str());
  std::fflush(stderr);
  drawn_ = true;
}

void Progress::Finish() {
  if (terminal_ && drawn_) std::fputc('\n', stderr);
  drawn_ = false;
}

}  // namespace batch
