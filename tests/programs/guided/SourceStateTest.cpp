/// What a source is said to be doing.
#include "guided/SourceState.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "ManualClock.h"

using guided::SourceKind;
using guided::SourceState;
using Kind = guided::SourceState::Kind;
using std::chrono::milliseconds;

namespace {

class SourceWatchTest : public testing::Test {
 protected:
  /// A watch of a source that has delivered a frame, and of which the next one is awaited.
  std::shared_ptr<guided::SourceWatch> Delivering(SourceKind kind) {
    auto watch = std::make_shared<guided::SourceWatch>(kind, clock_);
    watch->ReadBegins();
    watch->ReadEnds(true);
    watch->ReadBegins();
    return watch;
  }

  guided_test::ManualClock clock_;
};

TEST_F(SourceWatchTest, ALiveSourceStallsWhenNoFrameComesForLongerThanTwoSeconds) {
  const auto watch = Delivering(SourceKind::Camera);
  clock_.Advance(milliseconds(2000));
  EXPECT_EQ(watch->State().kind, Kind::Live);
  clock_.Advance(milliseconds(1));
  EXPECT_EQ(watch->State().kind, Kind::Stalled);
  clock_.Advance(milliseconds(3000));
  EXPECT_EQ(watch->State().silence, milliseconds(5001));
  watch->ReadEnds(true);
  EXPECT_EQ(watch->State().kind, Kind::Live);
  EXPECT_EQ(watch->State().silence, milliseconds(0));
}

TEST_F(SourceWatchTest, ReadsThatFailAreWaitedForAsIfTheyWereOne) {
  const auto watch = Delivering(SourceKind::Stream);
  for (int i = 0; i < 30; ++i) {
    clock_.Advance(milliseconds(100));
    watch->ReadEnds(false);
    watch->ReadBegins();
  }
  EXPECT_EQ(watch->State().kind, Kind::Stalled);
  EXPECT_EQ(watch->State().silence, milliseconds(3000));
}

TEST_F(SourceWatchTest, AUserWhoTakesHisTimeIsNoStall) {
  guided::SourceWatch watch(SourceKind::Recording, clock_);
  watch.ReadBegins();
  watch.ReadEnds(true);
  clock_.Advance(std::chrono::minutes(5));
  EXPECT_EQ(watch.State().kind, Kind::Live);
}

TEST_F(SourceWatchTest, ARecordingEndsWhenItsReadsFailAgainAndAgain) {
  const auto watch = Delivering(SourceKind::Recording);
  watch->ReadEnds(false);
  EXPECT_EQ(watch->State().kind, Kind::Live) << "one frame may be damaged";
  for (int i = 0; i < 10; ++i) watch->ReadEnds(false);
  EXPECT_EQ(watch->State().kind, Kind::Ended);
  watch->ReadEnds(true);
  EXPECT_EQ(watch->State().kind, Kind::Live);
}

TEST_F(SourceWatchTest, ARecordingWhoseFirstReadFailsHasFailedToStart) {
  guided::SourceWatch watch(SourceKind::Recording, clock_);
  watch.ReadBegins();
  EXPECT_EQ(watch.State().kind, Kind::Live);
  watch.ReadEnds(false);
  EXPECT_EQ(watch.State().kind, Kind::FailedToStart);
}

TEST_F(SourceWatchTest, ALiveSourceHasTenSecondsToStart) {
  guided::SourceWatch watch(SourceKind::Camera, clock_);
  watch.ReadBegins();
  watch.ReadEnds(false);
  clock_.Advance(milliseconds(10000));
  EXPECT_EQ(watch.State().kind, Kind::Stalled);
  clock_.Advance(milliseconds(1));
  EXPECT_EQ(watch.State().kind, Kind::FailedToStart);
}

TEST_F(SourceWatchTest, ACameraThatIsGoneIsNamedUntilItIsBack) {
  const auto watch = Delivering(SourceKind::Camera);
  watch->SetGone("webcam 2", true);
  EXPECT_EQ(watch->State().kind, Kind::Unplugged);
  EXPECT_EQ(watch->State().gone, "webcam 2");
  watch->SetGone("webcam 2", false);
  EXPECT_EQ(watch->State().kind, Kind::Live);
}

TEST_F(SourceWatchTest, LearnsWhatBecomesOfReads) {
  const auto watch = std::make_shared<guided::SourceWatch>(SourceKind::Recording, clock_);
  int reads = 0;
  const auto source = guided::Watched<cv::Mat>(
      [&](cv::Mat& frame) -> bool {
        if (++reads == 1) frame = cv::Mat::zeros(2, 2, CV_8UC1);
        if (reads == 3) throw std::runtime_error("a damaged frame");
        return reads < 3;
      },
      watch);
  cv::Mat frame;
  EXPECT_TRUE(source(frame));
  cv::Mat none;
  EXPECT_FALSE(source(none)) << "an empty frame is none";
  EXPECT_FALSE(source(none)) << "an exception is a read that failed";
  EXPECT_EQ(watch->State().kind, Kind::Live);
  for (int i = 0; i < 3; ++i) source(none);
  EXPECT_EQ(watch->State().kind, Kind::Ended);
}

TEST(WordsOfSources, TellWhatToDoAboutASilence) {
  SourceState state;
  EXPECT_EQ(WordsOf(state, SourceKind::Camera), "");
  state.kind = Kind::Stalled;
  state.silence = milliseconds(5900);
  EXPECT_EQ(WordsOf(state, SourceKind::Camera), "No picture for 5 s: is the camera still plugged in?");
  EXPECT_EQ(WordsOf(state, SourceKind::Stream), "No picture for 5 s: is the stream still sent?");
  EXPECT_EQ(WordsOf(state, SourceKind::Recording), "No picture for 5 s.");
  state.kind = Kind::Unplugged;
  state.gone = "webcam 2";
  EXPECT_EQ(WordsOf(state, SourceKind::Camera), "The camera (webcam 2) is gone: plug it in again.");
  state.kind = Kind::Ended;
  EXPECT_EQ(WordsOf(state, SourceKind::Recording), "The recording has ended.");
  state.kind = Kind::FailedToStart;
  EXPECT_EQ(WordsOf(state, SourceKind::Recording), "There is no picture.");
}

}  // namespace
