/// Work spread over threads.
#include "solver/Threads.h"

#include <gtest/gtest.h>

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

}  // namespace
