/// Work spread over threads.
#include "solver/Threads.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

using namespace velmora;

namespace {

TEST(Threads, DoEachPieceOnce) {
  for (const size_t count : {0U, 1U, 2U, 7U, 100U}) {
    for (const int threads : {1, 2, 3, 16}) {
      std::vector<int> done(count, 0);  // each piece is one thread's alone
      solver::ForRanges(count, threads, [&](size_t first, size_t last) {
        for (size_t i = first; i < last; ++i) ++done[i];
      });
      EXPECT_EQ(done, std::vector<int>(count, 1)) << count << ' ' << threads;
    }
  }
}

TEST(Threads, AreAsManyAsWereAskedFor) {
  std::mutex mutex;
  std::set<std::thread::id> ids;
  solver::ForRanges(100, 4, [&](size_t, size_t) {
    const std::lock_guard<std::mutex> lock(mutex);
    ids.insert(std::this_thread::get_id());
  });
  EXPECT_EQ(ids.size(), 4U);
}

#if defined(__linux__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

/// Leaves no room for the stack of another thread.
void LeaveNoRoomForThreads() {
  std::ifstream statistics("/proc/self/statm");
  rlim_t pages = 0;
  statistics >> pages;
  rlimit limit{};
  getrlimit(RLIMIT_AS, &limit);
  limit.rlim_cur = pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + (1U << 20U);
  setrlimit(RLIMIT_AS, &limit);
}

/// The exit status: 0 when each of a hundred pieces was done once though no thread could be started.
int DoneWithoutThreads() {
  std::vector<int> done(100, 0);
  std::set<std::thread::id> ids;
  LeaveNoRoomForThreads();
  solver::ForRanges(done.size(), 8, [&](size_t first, size_t last) {
    for (size_t i = first; i < last; ++i) ++done[i];
    ids.insert(std::this_thread::get_id());
  });
  if (done != std::vector<int>(100, 1)) return 1;
  return ids.size() == 1 ? 0 : 2;
}

TEST(Threads, ThatCannotBeStartedLeaveTheirWorkToTheOthers) {
  // Anew, without the stacks of threads that have ended.
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(std::exit(DoneWithoutThreads()), testing::ExitedWithCode(0), "");
}

#endif

}  // namespace
