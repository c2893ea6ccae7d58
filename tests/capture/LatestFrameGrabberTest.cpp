/// The thread that works on the newest frame.
#include "capture/LatestFrameGrabber.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <vector>

using namespace velmora;

namespace {

using Clock = std::chrono::steady_clock;

/// A grabber of numbers that keeps what its thread took.
class Numbers {
 public:
  ~Numbers() { grabber.End(); }

  /// Waits until `count` were taken; false when the deadline passes.
  bool Await(size_t count) {
    std::unique_lock<std::mutex> lock(lock_);
    return changed_.wait_for(lock, std::chrono::seconds(60), [&] { return taken_.size() >= count; });
  }
  std::vector<int> Taken() {
    const std::lock_guard<std::mutex> lock(lock_);
    return taken_;
  }
  std::vector<int> Tags() {
    const std::lock_guard<std::mutex> lock(lock_);
    return tags_;
  }
  Clock::time_point LastTime() {
    const std::lock_guard<std::mutex> lock(lock_);
    return lastTime_;
  }

  std::atomic<int> openings{0};
  LatestFrameGrabber<int> grabber{[this] { Body(); }};

 private:
  void Body() {
    ++openings;
    int number = 0;
    int tag = 0;
    while (grabber.Take(number, tag)) {
      const std::lock_guard<std::mutex> lock(lock_);
      lastTime_ = Clock::now();
      taken_.push_back(number);
      tags_.push_back(tag);
      changed_.notify_all();
    }
  }

  std::mutex lock_;
  std::condition_variable changed_;
  std::vector<int> taken_;
  std::vector<int> tags_;
  Clock::time_point lastTime_;
};

TEST(LatestFrameGrabber, TakesTheNewestOfSeveralOfferedAtOnceWithItsTag) {
  // Offers that the machine tore apart prove nothing: they are made again.
  for (Clock::duration span = Clock::duration::max(); span > LatestFrameGrabber<int>::GATHERING / 2;) {
    Numbers numbers;
    ASSERT_TRUE(numbers.grabber.Open());
    const Clock::time_point first = Clock::now();
    for (int i = 1; i <= 3; ++i) EXPECT_TRUE(numbers.grabber.Offer(i, 10 * i));
    span = Clock::now() - first;
    ASSERT_TRUE(numbers.Await(1));
    numbers.grabber.End();
    if (span > LatestFrameGrabber<int>::GATHERING / 2) continue;
    EXPECT_EQ(numbers.Taken(), std::vector<int>({3}));
    EXPECT_EQ(numbers.Tags(), std::vector<int>({30}));
  }
}

TEST(LatestFrameGrabber, TakesAFrameWithinTenMillisecondsWhenIdle) {
  constexpr size_t FRAMES = 31;
  Numbers numbers;
  ASSERT_TRUE(numbers.grabber.Open());
  std::vector<double> waits;
  while (waits.size() < FRAMES) {
    const Clock::time_point offered = Clock::now();
    ASSERT_TRUE(numbers.grabber.Offer(1, 0));
    ASSERT_TRUE(numbers.Await(waits.size() + 1));
    waits.push_back(std::chrono::duration<double, std::milli>(numbers.LastTime() - offered).count());
  }
  // The median: how soon a busy machine lets a thread run is not the grabber's doing.
  std::nth_element(waits.begin(), waits.begin() + FRAMES / 2, waits.end());
  EXPECT_LT(waits[FRAMES / 2], 10.0);
}

TEST(LatestFrameGrabber, RefusesFramesAndASecondOpening) {
  Numbers numbers;
  EXPECT_FALSE(numbers.grabber.Offer(1, 0));
  EXPECT_TRUE(numbers.grabber.Open());
  EXPECT_FALSE(numbers.grabber.Open());
  numbers.grabber.Close();
  EXPECT_FALSE(numbers.grabber.Offer(2, 0));
  numbers.grabber.End();
  EXPECT_EQ(numbers.Taken(), std::vector<int>());
  EXPECT_FALSE(numbers.grabber.Open());
}

TEST(LatestFrameGrabber, RunsItsBodyOnceForEachOpeningHoweverShort) {
  Numbers numbers;
  numbers.grabber.Close();
  for (int i = 0; i < 50; ++i) {
    ASSERT_TRUE(numbers.grabber.Open());
    numbers.grabber.Close();
    numbers.grabber.Close();
  }
  numbers.grabber.End();
  EXPECT_EQ(numbers.openings, 50);
}

TEST(LatestFrameGrabber, StartsAgainAfterItsThreadHasEnded) {
  Numbers numbers;
  for (size_t round = 1; round <= 20; ++round) {
    ASSERT_TRUE(numbers.grabber.Open());
    ASSERT_TRUE(numbers.grabber.Offer(static_cast<int>(round), 0));
    ASSERT_TRUE(numbers.Await(round));
    numbers.grabber.Close();
  }
  EXPECT_EQ(numbers.Taken().size(), 20U);
}

TEST(LatestFrameGrabber, LeavesAFrameOfAClosedOpeningAlone) {
  Numbers numbers;
  ASSERT_TRUE(numbers.grabber.Open());
  ASSERT_TRUE(numbers.grabber.Offer(1, 0));
  numbers.grabber.Close();
  ASSERT_TRUE(numbers.grabber.Open());
  ASSERT_TRUE(numbers.grabber.Offer(2, 0));
  ASSERT_TRUE(numbers.Await(1));
  numbers.grabber.End();
  EXPECT_EQ(numbers.Taken().back(), 2);
  EXPECT_LE(numbers.Taken().size(), 2U);
}

TEST(LatestFrameGrabber, WaitsForItsBodyWhenItEnds) {
  std::promise<void> entered;
  std::promise<void> leave;
  std::atomic<bool> left{false};
  LatestFrameGrabber<int> grabber([&] {
    entered.set_value();
    leave.get_future().wait();
    left = true;
  });
  ASSERT_TRUE(grabber.Open());
  entered.get_future().wait();
  grabber.Close();
  EXPECT_FALSE(left);
  leave.set_value();
  grabber.End();
  EXPECT_TRUE(left);
}

TEST(LatestFrameGrabber, MayBeEndedBySeveralAtOnce) {
  // In turns of its own, as two that meet at the wrong moment used to wait for ever.
  for (int round = 0; round < 50; ++round) {
    std::promise<void> leave;
    const std::shared_future<void> left = leave.get_future().share();
    LatestFrameGrabber<int> grabber([left] { left.wait(); });
    ASSERT_TRUE(grabber.Open());
    const auto end = [&grabber] { grabber.End(); };
    auto first = std::async(std::launch::async, end);
    auto second = std::async(std::launch::async, end);
    leave.set_value();
    const auto deadline = Clock::now() + std::chrono::seconds(60);
    ASSERT_EQ(first.wait_until(deadline), std::future_status::ready) << "round " << round;
    ASSERT_EQ(second.wait_until(deadline), std::future_status::ready) << "round " << round;
  }
}

TEST(LatestFrameGrabber, EndsThoughItsBodyOpensItAgain) {
  std::atomic<int> runs{0};
  std::promise<void> running;
  std::promise<void> ending;
  LatestFrameGrabber<int>* self = nullptr;
  LatestFrameGrabber<int> grabber([&] {
    if (++runs == 1) {
      running.set_value();
      ending.get_future().wait();
    }
    self->Close();
    self->Open();
  });
  self = &grabber;
  ASSERT_TRUE(grabber.Open());
  running.get_future().wait();
  ending.set_value();
  grabber.End();
  EXPECT_GE(runs, 1);
}

}  // namespace
