/// Spreads independent pieces of work over threads.
#include "solver/Threads.h"

#include <algorithm>
#include <future>
#include <system_error>
#include <thread>
#include <vector>

namespace velmora::solver {

void ForRanges(std::size_t count, int threads, const std::function<void(std::size_t, std::size_t)>& work) {
  const std::size_t ranges = std::min(count, static_cast<std::size_t>(std::max(threads, 1)));
  if (ranges <= 1) {
    work(0, count);
    return;
  }
  std::vector<std::future<void>> others;
  others.reserve(ranges);
  std::size_t started = 1;
  try {
    for (; started < ranges; ++started) {
      others.push_back(
          std::async(std::launch::async, work, started * count / ranges, (started + 1) * count / ranges));
    }
  } catch (const std::system_error&) {
    // The system starts no more threads: this one does what is left.
  }
  work(0, count / ranges);
  if (started < ranges) work(started * count / ranges, count);
  for (auto& other : others) other.get();
}

int ThreadsFor(std::size_t images) {
  constexpr std::size_t WORTH_THREADS = 80;
  constexpr unsigned MOST = 8;
  return images < WORTH_THREADS ? 1
                                : static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, MOST));
}

}  // namespace velmora::solver
