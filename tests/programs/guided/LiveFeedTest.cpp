/// When frames of recordings and live sources are handed out.
#include "guided/LiveFeed.h"

#include <gtest/gtest.h>

#include <deque>
#include <limits>

#include "ManualClock.h"

using guided::SourceKind;
using guided::SourceState;
using std::chrono::milliseconds;

namespace {

/// Hands out numbers, then none.
class NumberFeed final : public common::FrameFeed {
 public:
  bool Take(cv::Mat& frame, milliseconds) override {
    ++asked;
    if (numbers.empty()) return false;
    frame = cv::Mat(1, 1, CV_32SC1, cv::Scalar(numbers.front()));
    numbers.pop_front();
    return true;
  }
  bool FailedToStart() const override { return false; }

  std::deque<int> numbers;
  int asked = 0;
};

class LiveFeedTest : public testing::Test {
 protected:
  guided::LiveFeed<cv::Mat> Feed(std::optional<guided::Pace> pace) {
    return guided::LiveFeed<cv::Mat>(numbers_, watch_, pace, clock_);
  }
  /// The number that is handed out now; -1 when none is.
  static int Take(guided::LiveFeed<cv::Mat>& feed) {
    cv::Mat frame;
    return feed.Take(frame, milliseconds(0)) ? frame.at<int>(0, 0) : -1;
  }
  void EndTheSource() {
    watch_.ReadBegins();
    watch_.ReadEnds(true);
    for (int i = 0; i < 10; ++i) watch_.ReadEnds(false);
  }

  guided_test::ManualClock clock_;
  NumberFeed numbers_;
  guided::SourceWatch watch_{SourceKind::Recording, clock_};
};

TEST_F(LiveFeedTest, ARecordingPlaysAtItsOwnRateAndLosesNothing) {
  numbers_.numbers = {1, 2, 3, 4};
  auto feed = Feed(guided::Pace(10.0));
  EXPECT_EQ(Take(feed), 1);
  EXPECT_EQ(Take(feed), -1);
  clock_.Advance(milliseconds(99));
  EXPECT_EQ(Take(feed), -1);
  clock_.Advance(milliseconds(1));
  EXPECT_EQ(Take(feed), 2);
  EXPECT_EQ(Take(feed), -1);
  clock_.Advance(milliseconds(100));
  EXPECT_EQ(Take(feed), 3);
}

TEST_F(LiveFeedTest, ATurnThatComesLateDoesNotSlowTheRecording) {
  for (int i = 0; i <= 100; ++i) numbers_.numbers.push_back(i);
  auto feed = Feed(guided::Pace(30.0));
  int taken = 0;
  for (int turn = 0; turn < 101; ++turn) {  // one second, looked at every 10 ms
    if (Take(feed) >= 0) ++taken;
    clock_.Advance(milliseconds(10));
  }
  EXPECT_GE(taken, 30);
  EXPECT_LE(taken, 31);
}

TEST_F(LiveFeedTest, ALongPauseIsNotMadeUpFor) {
  for (int i = 0; i < 10; ++i) numbers_.numbers.push_back(i);
  auto feed = Feed(guided::Pace(10.0));
  EXPECT_EQ(Take(feed), 0);
  clock_.Advance(std::chrono::seconds(30));
  EXPECT_EQ(Take(feed), 1);
  EXPECT_EQ(Take(feed), 2) << "the one that is due by now";
  EXPECT_EQ(Take(feed), -1);
}

TEST_F(LiveFeedTest, WithoutAPaceEveryFrameIsHandedOutAtOnce) {
  numbers_.numbers = {1, 2, 3};
  auto feed = Feed(std::nullopt);
  for (const int number : {1, 2, 3, -1}) EXPECT_EQ(Take(feed), number);
}

TEST_F(LiveFeedTest, TheFrameThatWasAwaitedIsTheFirstOneTaken) {
  numbers_.numbers = {1, 2};
  auto feed = Feed(guided::Pace(10.0));
  const cv::Mat* const first = feed.AwaitFirst([] { return false; });
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->at<int>(0, 0), 1);
  EXPECT_EQ(numbers_.asked, 1);
  EXPECT_EQ(Take(feed), 1);
  clock_.Advance(milliseconds(100));
  EXPECT_EQ(Take(feed), 2);
}

TEST_F(LiveFeedTest, ASourceThatFailsToStartIsNotAwaited) {
  watch_.ReadBegins();
  watch_.ReadEnds(false);
  auto feed = Feed(std::nullopt);
  EXPECT_EQ(feed.AwaitFirst([] { return false; }), nullptr);
  EXPECT_TRUE(feed.FailedToStart());
}

TEST_F(LiveFeedTest, TheWaitForTheFirstFrameCanBeInterrupted) {
  auto feed = Feed(std::nullopt);
  int asked = 0;
  EXPECT_EQ(feed.AwaitFirst([&] { return ++asked == 3; }), nullptr);
  EXPECT_EQ(asked, 3);
  EXPECT_FALSE(feed.FailedToStart());
}

TEST_F(LiveFeedTest, ARecordingEndsOnlyOnceItsLastFrameIsTaken) {
  numbers_.numbers = {1, 2};
  auto feed = Feed(guided::Pace(10.0));
  EXPECT_EQ(Take(feed), 1);
  EXPECT_EQ(Take(feed), -1);  // the second one is there, and not due
  EndTheSource();
  EXPECT_EQ(feed.State().kind, SourceState::Kind::Live);
  clock_.Advance(milliseconds(100));
  EXPECT_EQ(Take(feed), 2);
  EXPECT_EQ(feed.State().kind, SourceState::Kind::Ended);
}

TEST(PlayingRate, IsThatOfTheRecordingUnlessThatCannotBe) {
  EXPECT_EQ(guided::PlayingRate(12.0), 12.0);
  EXPECT_EQ(guided::PlayingRate(240.0), 240.0);
  for (const double absurd : {0.0, -1.0, 0.01, 90000.0, std::numeric_limits<double>::quiet_NaN(),
                              std::numeric_limits<double>::infinity()}) {
    EXPECT_EQ(guided::PlayingRate(absurd), 30.0) << absurd;
  }
}

}  // namespace
