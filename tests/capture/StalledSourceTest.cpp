/// Sources that are asked for a frame and do not answer: nobody waits for them for ever.
#include <gtest/gtest.h>

#include <chrono>
#include <future>

#include "capture/ReaderFixture.h"

using namespace velmora;

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds SOON{3};

const char* const LEFT_BEHIND = "WARN  : The source does not answer; its thread is left behind.\n";

/// The first source stalls until it is let go on; those after it deliver.
class StalledSource : public unit::ReaderFixture {
 protected:
  StalledSource() {
    left->deliver = [this] {
      asked_ = true;
      goOn_.wait();
      return cv::Mat(480, 640, CV_8UC3, cv::Scalar::all(9));
    };
    right->deliver = Frames({640, 480}, 2);
  }

  ~StalledSource() override {
    LetGoOn();
    reader.reset();
  }

  /// Returns when whoever was left behind with the source has ended.
  void LetGoOn() {
    if (!released_) release_.set_value();
    released_ = true;
    EXPECT_TRUE(unit::Eventually([&] { return !asked_ || left->sources == 0; }));
  }

  void OpenAndStall() {
    ASSERT_TRUE(OpenCamera());
    ASSERT_TRUE(unit::Eventually([&] { return asked_.load(); }));
  }

  static Clock::duration TimeOf(const std::function<void()>& action) {
    const auto start = Clock::now();
    action();
    return Clock::now() - start;
  }

  const unit::ScopedLogLevel warnings_{2};
  std::atomic<bool> asked_{false};

 private:
  std::promise<void> release_;
  const std::shared_future<void> goOn_{release_.get_future()};
  bool released_ = false;
};

TEST_F(StalledSource, IsLeftBehindByAClose) {
  const unit::ScopedLogLevel everything{5};
  OpenAndStall();
  const std::string printed =
      unit::PrintedBy([&] { EXPECT_LT(TimeOf([&] { EXPECT_TRUE(reader->Close(words)); }), SOON); });
  EXPECT_EQ(printed, std::string("TRACE : waiting\n") + LEFT_BEHIND + "DEBUG : releasing\nDEBUG : closed\n");
  EXPECT_FALSE(reader->Running());
  EXPECT_TRUE(left->opened) << "it is the thread's that is stuck in it";
}

TEST_F(StalledSource, IsFollowedByAFreshOne) {
  OpenAndStall();
  EXPECT_EQ(unit::PrintedBy([&] { reader->Close(words); }), LEFT_BEHIND);
  EXPECT_EQ(unit::PrintedBy([&] { reader->Close(words); }), "ERROR : not opened\n");
  ASSERT_TRUE(OpenCamera());
  const CapturedViews views = NextViews();
  ASSERT_FALSE(views.frame.empty());
  EXPECT_EQ(views.frame.data[0], 2);
}

TEST_F(StalledSource, TouchesNothingWhenItAnswersAfterTheReaderIsGone) {
  OpenAndStall();
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_LT(TimeOf([&] { reader.reset(); }), SOON); }), LEFT_BEHIND);
  reader_ = nullptr;
  EXPECT_EQ(unit::PrintedBy([&] { LetGoOn(); }), "");
  EXPECT_EQ(processed, 0);
}

TEST_F(StalledSource, DisturbsNoLaterSourceWhenItAnswers) {
  OpenAndStall();
  unit::PrintedBy([&] { reader->Close(words); });
  ASSERT_TRUE(OpenCamera());
  ASSERT_FALSE(NextViews().frame.empty());
  LetGoOn();
  EXPECT_TRUE(reader->Running());
  const CapturedViews views = NextViews();
  ASSERT_FALSE(views.frame.empty());
  EXPECT_EQ(views.frame.data[0], 2);
}

TEST_F(StalledSource, OfAPairTakesTheOtherCameraAlong) {
  ASSERT_TRUE(reader->OpenCameraPair(0, 1, Vga()));
  ASSERT_TRUE(unit::Eventually([&] { return asked_.load(); }));
  const std::string printed = unit::PrintedBy([&] { EXPECT_LT(TimeOf([&] { reader->ClosePair(); }), SOON); });
  EXPECT_EQ(printed, std::string(LEFT_BEHIND));
  ASSERT_TRUE(reader->OpenCameraPair(0, 1, Vga())) << "neither counts as open any more";
  EXPECT_TRUE(NextViews().pair);
}

TEST_F(StalledSource, HoldsUpNobodyElse) {
  OpenAndStall();
  unit::PrintedBy([&] {
    const auto close = [&] { return TimeOf([&] { reader->Stop(); }); };
    auto first = std::async(std::launch::async, close);
    auto second = std::async(std::launch::async, close);
    EXPECT_LT(first.get(), SOON);
    EXPECT_LT(second.get(), SOON);
  });
}

TEST_F(StalledSource, IsNotAFrameThatTakesLongToProcess) {
  std::promise<void> entered;
  std::promise<void> leave;
  left->deliver = Frames({640, 480});
  bool first = true;
  onViews = [&](CapturedViews&) {
    if (!first) return;
    first = false;
    entered.set_value();
    leave.get_future().wait();
  };
  ASSERT_TRUE(OpenCamera());
  entered.get_future().wait();
  EXPECT_EQ(unit::PrintedBy([&] {
              auto closing = std::async(std::launch::async, [&] { reader->Close(words); });
              EXPECT_EQ(closing.wait_for(SOON), std::future_status::timeout);
              leave.set_value();
            }),
            "");
  EXPECT_FALSE(left->opened);
}

}  // namespace
