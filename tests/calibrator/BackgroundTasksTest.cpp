/// Threads of computations.
#include "calibrator/BackgroundTasks.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <stdexcept>

#include "unit/Scopes.h"

using namespace velmora;

namespace {

TEST(BackgroundTasks, AreBusyUntilTheirEndWasTold) {
  BackgroundTasks tasks;
  EXPECT_FALSE(tasks.Busy());
  std::promise<void> release;
  std::atomic<bool> busyAtEnd{false};
  tasks.Run(
      "Work", [&] { release.get_future().wait(); }, [&] { busyAtEnd = tasks.Busy(); });
  EXPECT_TRUE(tasks.Busy());
  release.set_value();
  tasks.AwaitAll();
  EXPECT_TRUE(busyAtEnd);
  EXPECT_FALSE(tasks.Busy());
}

TEST(BackgroundTasks, AreWaitedForByTheirDestruction) {
  std::atomic<int> ended{0};
  {
    BackgroundTasks tasks;
    for (int i = 0; i < 8; ++i) {
      tasks.Run(
          "Work", [] {}, [&] { ++ended; });
    }
  }
  EXPECT_EQ(ended, 8);
}

TEST(BackgroundTasks, LogWhatATaskThrowsAndEndIt) {
  bool ended = false;
  const auto run = [&](const std::function<void()>& task) {
    return unit::PrintedBy([&] {
      BackgroundTasks tasks;
      tasks.Run("Work", task, [&] { ended = true; });
    });
  };
  EXPECT_EQ(run([] { throw std::runtime_error("no luck"); }), "ERROR : Work failed: no luck\n");
  EXPECT_TRUE(ended);
  ended = false;
  EXPECT_EQ(run([] { throw 7; }), "ERROR : Work failed.\n");
  EXPECT_TRUE(ended);
}

}  // namespace
