/// Threads that do pieces of work.
#include "batch/Workers.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <future>
#include <stdexcept>
#include <thread>

namespace {

using batch::Workers;
constexpr std::chrono::minutes LONG_ENOUGH{2};

/// Passed by whoever comes once it is open; the deadline makes a failure of what would be a standstill.
class Gate {
 public:
  void Open() { open_.set_value(); }
  void Pass() const {
    if (opened_.wait_for(LONG_ENOUGH) != std::future_status::ready) throw std::runtime_error("a standstill");
  }

 private:
  std::promise<void> open_;
  std::shared_future<void> opened_{open_.get_future()};
};

TEST(WorkersOfTasks, AreSeveralAtATime) {
  Gate here;
  Gate there;
  Workers::Task first;
  Workers::Task second;
  Workers workers(2);
  workers.Begin(first, [&] {
    here.Open();
    there.Pass();
  });
  workers.Begin(second, [&] {
    there.Open();
    here.Pass();
  });
  EXPECT_NO_THROW(workers.Finish(first));
  EXPECT_NO_THROW(workers.Finish(second));
}

TEST(WorkersOfTasks, TakeThemInTheOrderInWhichTheyBegan) {
  std::vector<int> done;
  std::array<Workers::Task, 20> tasks;
  Workers workers(1);
  for (int i = 0; i < 20; ++i) workers.Begin(tasks.at(static_cast<size_t>(i)), [&, i] { done.push_back(i); });
  for (Workers::Task& task : tasks) workers.Finish(task);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(done.at(static_cast<size_t>(i)), i);
}

TEST(WorkersOfTasks, WorkOnAThreadOfTheirOwn) {
  std::thread::id thread;
  Workers::Task task;
  Workers workers(1);
  workers.Begin(task, [&] { thread = std::this_thread::get_id(); });
  workers.Finish(task);
  EXPECT_NE(thread, std::thread::id());
  EXPECT_NE(thread, std::this_thread::get_id());
}

TEST(WorkersOfTasks, TellWhatIsDone) {
  Gate gate;
  Workers::Task task;
  Workers workers(1);
  workers.Begin(task, [&] { gate.Pass(); });
  EXPECT_FALSE(workers.IsDone(task));
  gate.Open();
  workers.Finish(task);
  EXPECT_TRUE(workers.IsDone(task));
}

TEST(WorkersOfTasks, RaiseWhereATaskIsFinishedWhatItsWorkRaised) {
  Workers::Task bad;
  Workers::Task good;
  Workers workers(1);
  workers.Begin(bad, [] { throw std::out_of_range("there is none"); });
  workers.Begin(good, [] {});
  EXPECT_NO_THROW(workers.Finish(good));
  EXPECT_THROW(workers.Finish(bad), std::out_of_range);
}

TEST(WorkersOfTasks, EndWhileTheyWaitForMore) {
  Workers::Task task;
  {
    Workers workers(4);
    workers.Begin(task, [] {});
    workers.Finish(task);
  }
  const Workers idle(4);
}

TEST(WorkersOfTasks, EndAfterTheTaskUnderWay) {
  Gate begun;
  bool ended = false;
  Workers::Task task;
  {
    Workers workers(1);
    workers.Begin(task, [&] {
      begun.Open();
      std::this_thread::yield();
      ended = true;
    });
    begun.Pass();
  }
  EXPECT_TRUE(ended);
}

}  // namespace
