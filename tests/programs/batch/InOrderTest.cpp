/// Work on a sequence that several threads share.
#include "batch/InOrder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using batch::InOrder;
constexpr std::chrono::minutes LONG_ENOUGH{2};

struct Number {
  int value = 0;
  int square = 0;
};

/// Opens once that many have come; the deadline makes a failure of what would be a standstill.
class Latch {
 public:
  explicit Latch(int count) : left_(count) {}
  void CountDown() {
    if (--left_ == 0) open_.set_value();
  }
  void Pass() const {
    if (opened_.wait_for(LONG_ENOUGH) != std::future_status::ready) throw std::runtime_error("a standstill");
  }

 private:
  std::atomic<int> left_;
  std::promise<void> open_;
  std::shared_future<void> opened_{open_.get_future()};
};

/// The numbers from 0 up to a count.
class Counting {
 public:
  explicit Counting(int count) : count_(count) {}
  bool operator()(Number& number) {
    if (next_ == count_) return false;
    number.value = next_++;
    return true;
  }
  int Got() const { return next_; }

 private:
  const int count_;
  int next_ = 0;
};

std::vector<int> UpTo(int count) {
  std::vector<int> numbers;
  for (int i = 0; i < count; ++i) numbers.push_back(i);
  return numbers;
}

TEST(WorkInOrder, GivesTheSameOnAnyNumberOfThreads) {
  for (const size_t threads : {1, 2, 3, 8, 256}) {
    std::vector<int> squares;
    InOrder<Number>(
        threads, Counting(100), [](Number& number) { number.square = number.value * number.value; },
        [&](Number& number) { squares.push_back(number.square); });
    ASSERT_EQ(squares.size(), 100U);
    for (int i = 0; i < 100; ++i) EXPECT_EQ(squares.at(static_cast<size_t>(i)), i * i);
  }
}

TEST(WorkInOrder, IsHandedOverInOrderWhenTheFirstIsTheSlowest) {
  constexpr int THREADS = 3;
  constexpr int HELD = THREADS * static_cast<int>(batch::HELD_PER_THREAD);
  Latch others(HELD - 1);
  std::vector<int> taken;
  InOrder<Number>(
      THREADS, Counting(20),
      [&](Number& number) {
        if (number.value == 0) others.Pass();
        if (number.value > 0 && number.value < HELD) others.CountDown();
      },
      [&](Number& number) { taken.push_back(number.value); });
  EXPECT_EQ(taken, UpTo(20));
}

TEST(WorkInOrder, HoldsAsManyItemsAtATimeAsItSaysAndNoMore) {
  for (const int threads : {1, 2, 5}) {
    const int bound = threads * static_cast<int>(batch::HELD_PER_THREAD);
    Latch gotAll(bound);
    Counting source(200);
    int held = 0;
    int most = 0;
    InOrder<Number>(
        static_cast<size_t>(threads),
        [&](Number& number) {
          if (!source(number)) return false;
          most = std::max(most, ++held);
          if (number.value < bound) gotAll.CountDown();
          return true;
        },
        [&](Number& number) {
          if (number.value == 0) gotAll.Pass();
        },
        [&](Number& /*number*/) { --held; });
    EXPECT_EQ(most, bound) << threads;
    EXPECT_EQ(held, 0);
  }
}

TEST(WorkInOrder, HandsOverWhatIsDoneBeforeItAsksForMore) {
  // As where frames come from a camera: nobody waits for the next one to hear of those that are done.
  constexpr int THREADS = 3;
  Latch begun(THREADS);
  Counting source(8);
  bool told = false;
  InOrder<Number>(
      THREADS,
      [&](Number& number) {
        if (source.Got() == 4) begun.Pass();  // with all threads at 1 to 3, 0 is done
        if (source.Got() == 5) {
          EXPECT_TRUE(told);
        }
        return source(number);
      },
      [&](Number& number) {
        if (number.value < 1 || number.value > THREADS) return;
        begun.CountDown();
        begun.Pass();
      },
      [&](Number& /*number*/) { told = true; });
  EXPECT_EQ(source.Got(), 8);
}

TEST(WorkInOrder, RaisesWhatTheWorkOnAnItemRaisedWhenItIsItsTurn) {
  for (const size_t threads : {1, 2, 8}) {
    std::vector<int> taken;
    const auto run = [&] {
      InOrder<Number>(
          threads, Counting(50),
          [](Number& number) {
            if (number.value == 7) throw std::out_of_range("seven");
          },
          [&](Number& number) { taken.push_back(number.value); });
    };
    EXPECT_THROW(run(), std::out_of_range);
    EXPECT_EQ(taken, UpTo(7));
  }
}

TEST(WorkInOrder, RaisesWhatTheSourceRaisedAfterAllThatCameBefore) {
  for (const size_t threads : {1, 2, 8}) {
    Counting source(50);
    std::vector<int> taken;
    const auto run = [&] {
      InOrder<Number>(
          threads,
          [&](Number& number) {
            if (source.Got() == 5) throw std::out_of_range("no more");
            return source(number);
          },
          [](Number& /*number*/) {}, [&](Number& number) { taken.push_back(number.value); });
    };
    EXPECT_THROW(run(), std::out_of_range);
    EXPECT_EQ(taken, UpTo(5));
  }
}

TEST(WorkInOrder, EndsWithItsWorkersWhenWhoTakesHasEnough) {
  std::atomic<int> underWay{0};
  const auto run = [&] {
    InOrder<Number>(
        4, Counting(50),
        [&](Number& /*number*/) {
          ++underWay;
          std::this_thread::yield();
          --underWay;
        },
        [](Number& number) {
          if (number.value == 3) throw std::out_of_range("enough");
        });
  };
  EXPECT_THROW(run(), std::out_of_range);
  EXPECT_EQ(underWay, 0) << "a thread outlives it";
}

TEST(WorkInOrder, OfNothingTakesNothing) {
  InOrder<Number>(
      4, Counting(0), [](Number& /*number*/) { ADD_FAILURE(); }, [](Number& /*number*/) { ADD_FAILURE(); });
}

}  // namespace
