/// Reading on a thread of its own: order, loss, failure, shutdown.
#include "common/FrameReader.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <stdexcept>

using common::Delivery;
using common::FrameReader;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

namespace {

/// Far more than anything here takes; reached only when a test fails.
constexpr milliseconds LONG{30000};

cv::Mat Numbered(int number) {
  return cv::Mat(1, 1, CV_32SC1, cv::Scalar(number));
}

int NumberOf(const cv::Mat& frame) {
  return frame.empty() ? -1 : frame.at<int>(0, 0);
}

/// The number of the next frame, -1 when none comes.
int TakeNumber(FrameReader& reader, milliseconds patience = LONG) {
  cv::Mat frame;
  return reader.Take(frame, patience) ? NumberOf(frame) : -1;
}

/// A door on which threads wait until it is opened.
class Door {
 public:
  ~Door() { Open(); }
  void Open() {
    const std::lock_guard<std::mutex> guard(lock_);
    open_ = true;
    changed_.notify_all();
  }
  void Pass() {
    std::unique_lock<std::mutex> guard(lock_);
    reached_ = true;
    changed_.notify_all();
    changed_.wait(guard, [this] { return open_; });
  }
  /// True once a thread stands before the door.
  bool AwaitVisitor() {
    std::unique_lock<std::mutex> guard(lock_);
    return changed_.wait_for(guard, LONG, [this] { return reached_; });
  }

 private:
  std::mutex lock_;
  std::condition_variable changed_;
  bool open_ = false;
  bool reached_ = false;
};

/// Delivers the frames 1 to `count` and then blocks at the door.
FrameReader::Source CountThenBlock(int count, std::shared_ptr<Door> door) {
  return [count, door, number = 0](cv::Mat& frame) mutable {
    if (number == count) {
      door->Pass();
      return false;
    }
    frame = Numbered(++number);
    return true;
  };
}

TEST(FrameReader, ARecordingIsDeliveredFrameByFrameInOrder) {
  constexpr int COUNT = 200;
  const auto door = std::make_shared<Door>();
  FrameReader reader(CountThenBlock(COUNT, door), Delivery::EveryFrame);
  for (int expected = 1; expected <= COUNT; ++expected) ASSERT_EQ(TakeNumber(reader), expected);
  EXPECT_EQ(TakeNumber(reader, milliseconds(0)), -1);
  door->Open();
}

TEST(FrameReader, ARecordingIsReadNoFurtherThanItIsTaken) {
  constexpr int COUNT = 100;
  std::atomic<int> takesBegun{0};
  std::atomic<int> readAhead{0};
  const auto door = std::make_shared<Door>();
  FrameReader reader(
      [&, number = 0, count = CountThenBlock(COUNT, door)](cv::Mat& frame) mutable {
        if (takesBegun < number++) ++readAhead;
        return count(frame);
      },
      Delivery::EveryFrame);
  for (int i = 0; i < COUNT; ++i) {
    ++takesBegun;
    ASSERT_EQ(TakeNumber(reader), i + 1);
  }
  EXPECT_EQ(readAhead, 0);
  door->Open();
  EXPECT_TRUE(reader.Stop(LONG));
}

TEST(FrameReader, OfALiveSourceTheNewestFrameIsTakenOnce) {
  const auto door = std::make_shared<Door>();
  FrameReader reader(CountThenBlock(5, door), Delivery::NewestFrame);
  ASSERT_TRUE(door->AwaitVisitor());
  EXPECT_EQ(TakeNumber(reader), 5);
  EXPECT_EQ(TakeNumber(reader, milliseconds(0)), -1);
  door->Open();
}

TEST(FrameReader, FramesTakenAreNotWrittenToByLaterReads) {
  const auto door = std::make_shared<Door>();
  cv::Mat buffer = Numbered(0);
  FrameReader reader(
      [&, number = 0](cv::Mat& frame) mutable {
        if (number == 2) {
          door->Pass();
          return false;
        }
        Numbered(++number).copyTo(frame);
        return true;
      },
      Delivery::EveryFrame);
  cv::Mat first;
  cv::Mat second;
  ASSERT_TRUE(reader.Take(first, LONG));
  ASSERT_TRUE(reader.Take(second, LONG));
  EXPECT_EQ(NumberOf(first), 1);
  EXPECT_EQ(NumberOf(second), 2);
  door->Open();
}

TEST(FrameReader, TakingWithoutAFrameWaitsAndLeavesTheFrameAlone) {
  const auto door = std::make_shared<Door>();
  FrameReader reader(CountThenBlock(0, door), Delivery::NewestFrame);
  cv::Mat frame = Numbered(7);
  const auto start = Clock::now();
  EXPECT_FALSE(reader.Take(frame, milliseconds(30)));
  EXPECT_GE(Clock::now() - start, milliseconds(30));
  EXPECT_EQ(NumberOf(frame), 7);
  door->Open();
}

TEST(FrameReader, FailedReadsAreRepeatedAfterAPause) {
  for (const Delivery delivery : {Delivery::EveryFrame, Delivery::NewestFrame}) {
    const auto door = std::make_shared<Door>();
    const auto start = Clock::now();
    FrameReader reader([failures = 0, count = CountThenBlock(1, door)](
                           cv::Mat& frame) mutable { return failures++ < 4 ? false : count(frame); },
                       delivery);
    int number = -1;
    while (number == -1 && Clock::now() - start < LONG) number = TakeNumber(reader, milliseconds(5));
    EXPECT_EQ(number, 1);
    EXPECT_GE(Clock::now() - start, milliseconds(40));
    door->Open();
  }
}

TEST(FrameReader, AnExceptionOfTheSourceIsAFailedRead) {
  const auto door = std::make_shared<Door>();
  FrameReader reader(
      [calls = 0, count = CountThenBlock(1, door)](cv::Mat& frame) mutable {
        if (calls++ == 0) CV_Error(cv::Error::StsAssert, "a buffer without data");
        if (calls == 2) throw std::runtime_error("a device gone");
        return count(frame);
      },
      Delivery::NewestFrame);
  EXPECT_EQ(TakeNumber(reader), 1);
  door->Open();
}

TEST(FrameReader, AnEmptyFrameIsAFailedRead) {
  const auto door = std::make_shared<Door>();
  FrameReader reader([calls = 0, count = CountThenBlock(1, door)](
                         cv::Mat& frame) mutable { return calls++ == 0 ? true : count(frame); },
                     Delivery::NewestFrame);
  EXPECT_EQ(TakeNumber(reader), 1);
  door->Open();
}

TEST(FrameReader, ARecordingWhoseFirstReadFailsIsNotWaitedFor) {
  FrameReader reader([](cv::Mat&) { return false; }, Delivery::EveryFrame);
  const auto start = Clock::now();
  EXPECT_EQ(TakeNumber(reader, LONG), -1);
  EXPECT_LT(Clock::now() - start, LONG);
  EXPECT_TRUE(reader.FailedToStart());
}

TEST(FrameReader, ARecordingWhoseFirstFrameIsEmptyHasFailedToStart) {
  FrameReader reader([](cv::Mat&) { return true; }, Delivery::EveryFrame);
  EXPECT_EQ(TakeNumber(reader, LONG), -1);
  EXPECT_TRUE(reader.FailedToStart());
}

TEST(FrameReader, ARecordingThatEndsHasNotFailedToStart) {
  std::atomic<int> failures{0};
  FrameReader reader(
      [&, number = 0](cv::Mat& frame) mutable {
        if (number == 1) {
          ++failures;
          return false;
        }
        frame = Numbered(++number);
        return true;
      },
      Delivery::EveryFrame);
  EXPECT_EQ(TakeNumber(reader), 1);
  // The second failure comes after the first one has been noted.
  const auto start = Clock::now();
  while (failures < 2 && Clock::now() - start < LONG) EXPECT_EQ(TakeNumber(reader, milliseconds(5)), -1);
  EXPECT_GE(failures, 2);
  EXPECT_FALSE(reader.FailedToStart());
}

TEST(FrameReader, ALiveSourceMayFailAsLongAsItLikes) {
  std::atomic<int> failures{0};
  FrameReader reader(
      [&](cv::Mat&) {
        ++failures;
        return false;
      },
      Delivery::NewestFrame);
  const auto start = Clock::now();
  while (failures < 3 && Clock::now() - start < LONG) EXPECT_EQ(TakeNumber(reader, milliseconds(5)), -1);
  EXPECT_GE(failures, 3);
  EXPECT_FALSE(reader.FailedToStart());
}

TEST(FrameReader, StoppingDestroysTheSource) {
  for (const Delivery delivery : {Delivery::EveryFrame, Delivery::NewestFrame}) {
    auto device = std::make_shared<int>(0);
    const std::weak_ptr<int> watch = device;
    FrameReader reader(
        [device](cv::Mat& frame) {
          frame = Numbered(1);
          return true;
        },
        delivery);
    device.reset();
    ASSERT_EQ(TakeNumber(reader), 1);
    EXPECT_TRUE(reader.Stop(LONG));
    EXPECT_TRUE(watch.expired());
  }
}

TEST(FrameReader, StoppingTwiceIsHarmless) {
  FrameReader reader([](cv::Mat&) { return false; }, Delivery::NewestFrame);
  EXPECT_TRUE(reader.Stop(LONG));
  EXPECT_TRUE(reader.Stop(LONG));
}

TEST(FrameReader, AStuckSourceDoesNotHoldUpTheEnd) {
  const auto door = std::make_shared<Door>();
  const std::weak_ptr<Door> watch = door;
  {
    FrameReader reader(CountThenBlock(0, door), Delivery::NewestFrame);
    ASSERT_TRUE(door->AwaitVisitor());
    EXPECT_FALSE(reader.Stop(milliseconds(20)));
    EXPECT_EQ(TakeNumber(reader, milliseconds(0)), -1);
  }
  EXPECT_GT(watch.use_count(), 1) << "the thread left behind must keep what it uses";
  door->Open();
  const auto start = Clock::now();
  while (watch.use_count() > 1 && Clock::now() - start < LONG) std::this_thread::yield();
  EXPECT_EQ(watch.use_count(), 1) << "the thread left behind ends once its source lets it";
}

TEST(FrameReader, ASourceThatDoesNotCloseDoesNotHoldUpTheEnd) {
  const auto door = std::make_shared<Door>();
  auto device = std::shared_ptr<int>(new int(0), [door](const int* number) {
    door->Pass();
    delete number;
  });
  FrameReader reader([device](cv::Mat&) { return false; }, Delivery::NewestFrame);
  device.reset();
  EXPECT_FALSE(reader.Stop(milliseconds(20)));
  ASSERT_TRUE(door->AwaitVisitor());
  EXPECT_FALSE(reader.Stop(milliseconds(0)));
  door->Open();
  EXPECT_TRUE(reader.Stop(LONG));
}

TEST(FrameReader, ASourceThatComesBackInTimeIsJoined) {
  const auto door = std::make_shared<Door>();
  FrameReader reader(CountThenBlock(0, door), Delivery::NewestFrame);
  ASSERT_TRUE(door->AwaitVisitor());
  EXPECT_FALSE(reader.Stop(milliseconds(1)));
  door->Open();
  EXPECT_TRUE(reader.Stop(LONG));
}

}  // namespace
