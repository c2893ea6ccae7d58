/// Spreads independent pieces of work over threads.
#include "solver/Threads.h"

#include <algorithm>
#include <future>
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
  for (std::size_t i = 1; i < ranges; ++i) {
    others.push_back(std::async(std::launch::async, work, i * count / ranges, (i + 1) * count / ranges));
  }
  work(0, count / ranges);
  for (auto& other : others) other.get();
}

int ThreadsFor(std::size_t images) {
  constexpr std::size_t WORTH_THREADS = 80;
  constexpr unsigned MOST = 8;
  return images < WORTH_THREADS ? 1
                                : static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, MOST));
}

}  // namespace velmora::solver
