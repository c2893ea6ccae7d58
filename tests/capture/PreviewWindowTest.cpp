/// The shared window: one thread, the newest picture, nobody waits.
#include "capture/PreviewWindow.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>

#include "capture/FakeWindow.h"
#include "unit/Scopes.h"
#include "unit/ThreadGroup.h"

using namespace velmora;

namespace {

class SharedWindow : public testing::Test {
 protected:
  static cv::Mat Picture(int value) { return {4, 4, CV_8UC3, cv::Scalar::all(value)}; }

  bool Open(const void* owner) {
    std::string reason;
    return window.Open(owner, reason);
  }

  bool EventuallyShown(int value) {
    return unit::Eventually([&] {
      const auto shown = log->Shown();
      return !shown.empty() && shown.back() == value;
    });
  }

  const std::shared_ptr<unit::WindowLog> log = std::make_shared<unit::WindowLog>();
  PreviewWindow window{std::make_unique<unit::FakeBackend>(log)};
  const int first = 1;
  const int second = 2;
};

TEST_F(SharedWindow, MakesAllItsCallsOnOneThreadOfItsOwn) {
  ASSERT_TRUE(Open(&first));
  std::thread([&] { window.Show(&first, Picture(7)); }).join();
  ASSERT_TRUE(EventuallyShown(7));
  std::thread([&] { window.Close(&first); }).join();
  ASSERT_TRUE(unit::Eventually([&] { return !log->exists; }));
  ASSERT_EQ(log->Threads().size(), 1U);
  EXPECT_EQ(log->Threads().count(std::this_thread::get_id()), 0U);
}

TEST_F(SharedWindow, ASlowWindowSkipsToTheNewestPictureAndHoldsNobodyUp) {
  ASSERT_TRUE(Open(&first));
  log->slow = true;
  window.Show(&first, Picture(1));
  ASSERT_TRUE(unit::Eventually([&] { return log->entered == 1; }));
  for (int value = 2; value <= 9; ++value) window.Show(&first, Picture(value));  // would hang if it waited
  window.Close(&second);
  ASSERT_TRUE(Open(&second));
  log->slow = false;
  ASSERT_TRUE(EventuallyShown(9));
  EXPECT_EQ(log->Shown(), (std::vector<int>{1, 9}));
}

TEST_F(SharedWindow, StaysOpenUntilTheLastOwnerClosesIt) {
  ASSERT_TRUE(Open(&first));
  ASSERT_TRUE(Open(&second));
  ASSERT_TRUE(unit::Eventually([&] { return log->exists.load(); }));
  window.Close(&first);
  window.Show(&second, Picture(5));
  ASSERT_TRUE(EventuallyShown(5));
  EXPECT_TRUE(log->exists);
  window.Close(&second);
  EXPECT_TRUE(unit::Eventually([&] { return !log->exists; }));
  EXPECT_EQ(log->created, 1);
}

TEST_F(SharedWindow, ShowsNothingOfThoseWhoDoNotWantIt) {
  window.Show(&second, Picture(1));
  ASSERT_TRUE(Open(&first));
  window.Show(&second, Picture(2));
  window.Show(&first, Picture(3));
  ASSERT_TRUE(EventuallyShown(3));
  EXPECT_EQ(log->Shown(), std::vector<int>{3});
}

TEST_F(SharedWindow, APictureOfOneWhoLeftIsNotShown) {
  ASSERT_TRUE(Open(&first));
  ASSERT_TRUE(Open(&second));
  log->slow = true;
  window.Show(&second, Picture(1));
  ASSERT_TRUE(unit::Eventually([&] { return log->entered == 1; }));
  window.Show(&first, Picture(2));
  window.Close(&first);
  log->slow = false;
  const int before = log->tended;
  ASSERT_TRUE(unit::Eventually([&] { return log->tended >= before + 3; }));
  EXPECT_EQ(log->Shown(), std::vector<int>{1});
}

TEST_F(SharedWindow, PumpsEventsWithoutPictures) {
  ASSERT_TRUE(Open(&first));
  EXPECT_TRUE(unit::Eventually([&] { return log->tended >= 5; }));
}

TEST_F(SharedWindow, OpensAgainAfterItWasClosed) {
  for (int round = 1; round <= 3; ++round) {
    ASSERT_TRUE(Open(&first));
    ASSERT_TRUE(unit::Eventually([&] { return log->exists.load(); }));
    window.Close(&first);
    ASSERT_TRUE(unit::Eventually([&] { return !log->exists; }));
    EXPECT_EQ(log->created, round);
  }
  EXPECT_EQ(log->Threads().size(), 1U);
  EXPECT_EQ(log->questions, 1) << "a display that answered once is not asked again";
}

TEST_F(SharedWindow, IsNotOpenedWithoutADisplay) {
  log->displayAvailable = false;
  std::string reason;
  EXPECT_FALSE(window.Open(&first, reason));
  EXPECT_EQ(reason, "No display.");
  EXPECT_TRUE(log->Threads().empty());
}

TEST_F(SharedWindow, AWindowThatFailsIsReportedOnce) {
  log->createFails = true;
  const std::string printed = unit::PrintedBy([&] {
    for (int round = 1; round <= 2; ++round) {
      ASSERT_TRUE(Open(&first));
      ASSERT_TRUE(unit::Eventually([&] { return log->created == round; }));
      window.Close(&first);
      ASSERT_TRUE(unit::Eventually([&] { return log->destroyed == round; }));
    }
  });
  EXPECT_EQ(printed, "ERROR : The preview failed: no window\n");
}

TEST_F(SharedWindow, IsThereWhenTheFirstOpeningReturns) {
  log->createWaits = true;
  auto opening = std::async(std::launch::async, [&] { return Open(&first); });
  ASSERT_TRUE(unit::Eventually([&] { return log->created == 1; }));
  EXPECT_EQ(opening.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
  log->createWaits = false;
  EXPECT_TRUE(opening.get());
  EXPECT_TRUE(log->exists);
  EXPECT_GE(log->tended, 1);
}

TEST_F(SharedWindow, ThatIsNeverThereIsWaitedForOnceAndNotForEver) {
  log->createWaits = true;
  EXPECT_TRUE(Open(&first));
  const auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(Open(&second));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(4));
  log->createWaits = false;
}

TEST_F(SharedWindow, AnOpeningThatIsTakenBackIsNotWaitedFor) {
  log->createWaits = true;
  auto opening = std::async(std::launch::async, [&] { return Open(&first); });
  ASSERT_TRUE(unit::Eventually([&] { return log->created == 1; }));
  window.Close(&first);
  EXPECT_EQ(opening.wait_for(std::chrono::seconds(4)), std::future_status::ready);
  log->createWaits = false;
}

TEST_F(SharedWindow, OpensNoMoreAfterItsEnd) {
  ASSERT_TRUE(Open(&first));
  window.End(std::chrono::minutes(1));
  std::string reason;
  EXPECT_FALSE(window.Open(&first, reason));
  EXPECT_EQ(reason, "The process is exiting.");
  window.Show(&first, Picture(1));
  window.Close(&first);
}

TEST_F(SharedWindow, ManyMayUseItAtOnce) {
  constexpr int THREADS = 4;
  std::vector<int> owners(THREADS);
  unit::ThreadGroup threadGroup;
  for (int& owner : owners) {
    threadGroup.Add([&] {
      for (int round = 0; round < 50; ++round) {
        EXPECT_TRUE(Open(&owner));
        window.Show(&owner, Picture(round));
        window.Close(&owner);
      }
    });
  }
  threadGroup.RunToTheEnd();
  EXPECT_TRUE(unit::Eventually([&] { return !log->exists; }));
}

}  // namespace
