/// Frames pushed to an open grabber: the newest is processed on its thread.
#include <gtest/gtest.h>

#include "calibrator/Pushes.h"
#include "unit/Scopes.h"

namespace {

using unit::Kind;
class Grabber : public unit::Pushes {};
class ImageGrabber : public unit::Pushes {};

std::string NameOf(const ::testing::TestParamInfo<Kind>& info) {
  return ::testing::PrintToString(info.param);
}

INSTANTIATE_TEST_SUITE_P(Kinds, Grabber, ::testing::Values(Kind::JPEG, Kind::RGB), NameOf);

TEST_P(Grabber, ProcessesOnAThreadOfItsOwn) {
  Open();
  Push(unit::ImageWithGrid());
  ASSERT_TRUE(audience_.AwaitCalls(1));
  EXPECT_NE(audience_.Calls().front().thread, std::this_thread::get_id());
  EXPECT_TRUE(calibrator_->IsDetected());
}

TEST_P(Grabber, HasABodyThatReturnsAtOnceOnAnyOtherThread) {
  const auto body = [this] {
    GetParam() == Kind::JPEG ? calibrator_->jpegB64grabber() : calibrator_->RGBgrabber();
  };
  EXPECT_EQ(unit::PrintedBy(body), "");
  const std::string printed = unit::PrintedBy([&] {
    Open();
    body();
    Push(unit::PlainImage(50));
    EXPECT_TRUE(audience_.AwaitCalls(1));
    Destroy();
  });
  EXPECT_EQ(printed, StartedLine() + ExitedLine());
  EXPECT_NE(audience_.Calls().front().thread, std::this_thread::get_id());
}

TEST_P(Grabber, ProcessesOnlyTheLastOfThreePushedAtOnce) {
  const int levels[] = {50, 100, 150};
  cv::Mat images[3];
  std::string texts[3];
  for (int i = 0; i < 3; ++i) {
    images[i] = unit::PlainImage(levels[i]);
    texts[i] = unit::JpegB64(images[i]);
  }
  using Clock = std::chrono::steady_clock;
  constexpr Clock::duration AT_ONCE = std::chrono::milliseconds(3);
  Clock::duration span;
  do {  // pushes that the machine tore apart prove nothing: they are made again
    unit::Audience audience;
    calibrator_ = unit::MakeCalibrator();
    calibrator_->SetFrameListener(audience.Listener());
    Bypass();
    Open();
    const Clock::time_point first = Clock::now();
    for (int i = 0; i < 3; ++i) {
      if (GetParam() == Kind::JPEG) {
        calibrator_->NextFrameJpegB64(texts[i], i, nullptr, false);
      } else {
        calibrator_->NextFrameRGB(images[i], i, nullptr, false);
      }
    }
    span = Clock::now() - first;
    ASSERT_TRUE(audience.AwaitCalls(1));
    Destroy();
    if (span <= AT_ONCE) {
      EXPECT_EQ(audience.Levels(), std::vector<int>({150}));
    }
  } while (span > AT_ONCE);
}

TEST_P(Grabber, ProcessesOnlyTheNewestOfThosePushedWhileItWorks) {
  Bypass();
  Open();
  audience_.HoldUpNext();
  Push(unit::PlainImage(50));
  ASSERT_TRUE(audience_.AwaitHeld());
  for (const int level : {100, 150, 200}) Push(unit::PlainImage(level));
  audience_.Release();
  ASSERT_TRUE(audience_.AwaitCalls(2));
  Destroy();
  EXPECT_EQ(audience_.Levels(), std::vector<int>({50, 200}));
}

TEST_P(Grabber, PrintsWhenItStartsAndExits) {
  EXPECT_EQ(unit::PrintedBy([&] {
              Open();
              Close();
              Destroy();
            }),
            StartedLine() + ExitedLine());
}

TEST_P(Grabber, IsClosedWithoutAnyEffectWhenItIsNotRunning) {
  EXPECT_EQ(unit::PrintedBy([&] {
              Close();
              Destroy();
            }),
            "");
}

TEST_P(Grabber, IsOpenedOnceOnly) {
  const unit::ScopedLogLevel warnings(2);
  const std::string printed = unit::PrintedBy([&] {
    Open();
    Open();
    Destroy();
  });
  EXPECT_EQ(printed, GetParam() == Kind::JPEG ? "" : "WARN  : Frame grabber already running.\n");
}

TEST_P(Grabber, LeavesPushesToTheCallersThreadOnceClosed) {
  Bypass();
  Open();
  Close();
  Push(unit::PlainImage(50));
  ASSERT_EQ(audience_.Calls().size(), 1U);
  EXPECT_EQ(audience_.Calls().front().thread, std::this_thread::get_id());
}

TEST_P(Grabber, DropsThePendingFrameWhenClosed) {
  Bypass();
  Open();
  audience_.HoldUpNext();
  Push(unit::PlainImage(50));
  ASSERT_TRUE(audience_.AwaitHeld());
  Push(unit::PlainImage(100));
  Close();
  audience_.Release();
  Destroy();
  EXPECT_EQ(audience_.Levels(), std::vector<int>({50}));
}

TEST_P(Grabber, CanBeOpenedAgainWhileItsLastFrameIsProcessed) {
  Bypass();
  const std::string printed = unit::PrintedBy([&] {
    Open();
    audience_.HoldUpNext();
    Push(unit::PlainImage(50));
    ASSERT_TRUE(audience_.AwaitHeld());
    Close();
    Open();
    Push(unit::PlainImage(100));
    audience_.Release();
    ASSERT_TRUE(audience_.AwaitCalls(2));
    Destroy();
  });
  EXPECT_EQ(audience_.Levels(), std::vector<int>({50, 100}));
  EXPECT_EQ(printed, StartedLine() + ExitedLine() + StartedLine() + ExitedLine());
}

TEST_P(Grabber, CanBeClosedAndOpenedFromWithinTheListener) {
  Bypass();
  calibrator_->SetFrameListener([&](const std::vector<unsigned char>& jpeg, const std::string& status) {
    Close();
    Open();
    audience_.Listener()(jpeg, status);
  });
  Open();
  for (size_t i = 1; i <= 10; ++i) {
    Push(unit::PlainImage(50));
    ASSERT_TRUE(audience_.AwaitCalls(i));
  }
}

TEST_P(Grabber, IsEndedByTheDestructorThoughTheListenerOpensItAgain) {
  Bypass();
  audience_.HoldUpNext();
  calibrator_->SetFrameListener(
      [&, &calibrator = *calibrator_](const std::vector<unsigned char>& jpeg, const std::string& status) {
        audience_.Listener()(jpeg, status);
        for (int i = 0; i < 3; ++i) {
          calibrator.CloseJpegB64FrameGrabber();
          calibrator.CloseRGBFrameGrabber();
          calibrator.OpenJpegB64FrameGrabber();
          calibrator.OpenRGBFrameGrabber();
        }
      });
  Open();
  Push(unit::PlainImage(50));
  ASSERT_TRUE(audience_.AwaitHeld());
  std::thread releases([&] { audience_.Release(); });
  Destroy();
  releases.join();
  EXPECT_EQ(audience_.Calls().size(), 1U);
}

TEST_P(Grabber, GoesOnAfterAListenerThatThrows) {
  Bypass();
  const unit::ScopedLogLevel silent(0);
  calibrator_->SetFrameListener([&](const std::vector<unsigned char>& jpeg, const std::string& status) {
    audience_.Listener()(jpeg, status);
    throw std::runtime_error("not today");
  });
  Open();
  for (size_t i = 1; i <= 3; ++i) {
    Push(unit::PlainImage(50));
    ASSERT_TRUE(audience_.AwaitCalls(i));
  }
}

TEST_P(Grabber, PassesOverAnEmptyFrameInPlaceOfThePendingOne) {
  Bypass();
  const std::string printed = unit::PrintedBy([&] {
    const unit::ScopedLogLevel errors(1);
    Open();
    audience_.HoldUpNext();
    Push(unit::PlainImage(50));
    ASSERT_TRUE(audience_.AwaitHeld());
    Push(unit::PlainImage(100));
    PushNothing();
    audience_.Release();
    Push(unit::PlainImage(150));
    ASSERT_TRUE(audience_.AwaitCalls(2));
    Destroy();
  });
  EXPECT_EQ(audience_.Levels(), std::vector<int>({50, 150}));
  EXPECT_EQ(printed, "");
}

TEST_F(ImageGrabber, SharesThePixelsOfAnImageUntilItIsProcessed) {
  Bypass();
  Open(Kind::RGB);
  audience_.HoldUpNext();
  Push(Kind::RGB, unit::PlainImage(50));
  ASSERT_TRUE(audience_.AwaitHeld());
  cv::Mat image = unit::PlainImage(100);
  calibrator_->NextFrameRGB(image, 0, nullptr, false);
  EXPECT_EQ(image.u->refcount, 2);
  image.setTo(cv::Scalar::all(200));
  audience_.Release();
  ASSERT_TRUE(audience_.AwaitCalls(2));
  Destroy();
  EXPECT_EQ(audience_.Levels(), std::vector<int>({50, 200}));
  EXPECT_EQ(image.u->refcount, 1);
}

TEST_F(ImageGrabber, OfOneKindLeavesTheOtherAlone) {
  Bypass();
  Open(Kind::RGB);
  Push(Kind::JPEG, unit::PlainImage(50));
  ASSERT_EQ(audience_.Calls().size(), 1U);
  EXPECT_EQ(audience_.Calls().front().thread, std::this_thread::get_id());
}

}  // namespace
