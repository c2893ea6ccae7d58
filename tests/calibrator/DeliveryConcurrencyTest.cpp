/// Frames pushed from many threads while everything else changes. Meant for the thread sanitizer as much as
/// for its own checks.
#include <gtest/gtest.h>

#include <atomic>

#include "calibrator/Pushes.h"
#include "unit/Scopes.h"
#include "unit/ThreadGroup.h"

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds DURATION{3};

/// A calibrator with what its users do to it until time is up.
class Traffic {
 public:
  void PushJpegs() {
    const std::string grid = unit::JpegB64(unit::ImageWithGrid());
    const std::string plain = unit::JpegB64(unit::PlainImage(90));
    Repeat([&](int round) {
      std::string text = round % 8 == 7 ? "no picture" : round % 2 == 0 ? grid : plain;
      calibrator_->NextFrameJpegB64(text, round, nullptr, false);
    });
  }
  void PushImages() {
    Repeat([&](int round) {
      cv::Mat image = round % 8 == 7 ? cv::Mat() : unit::ImageWithGrid();
      calibrator_->NextFrameRGB(image, round, nullptr, false);
    });
  }
  void Read() {
    Repeat([&](int) {
      const nlohmann::json answer = nlohmann::json::parse(calibrator_->GetStatus_QVX());
      EXPECT_EQ(answer.at("op"), "cs");
      EXPECT_GE(calibrator_->GetNumberOfRecords(), 0);
    });
  }
  void Collect() {
    const auto views = unit::NoisyViews(1);
    Repeat([&](int round) {
      calibrator_->AddPoints();
      calibrator_->AddPoints(views.front());
      if (round % 10 == 9) calibrator_->Reset();
      calibrator_->setBypassProcessing(round % 4 == 0);
    });
  }
  void ChangeListeners() {
    Repeat([&](int round) {
      calibrator_->SetFrameListener(round % 5 == 4 ? nullptr : Counting(round));
      calibrator_->RegisterCalibrationListener(nullptr, nullptr, 1, 0, 0);
    });
    calibrator_->SetFrameListener(Counting(0));
  }
  void OpenAndClose() {
    Repeat([&](int round) {
      round % 2 == 0 ? calibrator_->OpenJpegB64FrameGrabber() : calibrator_->CloseJpegB64FrameGrabber();
      round % 3 == 0 ? calibrator_->OpenRGBFrameGrabber() : calibrator_->CloseRGBFrameGrabber();
    });
  }

  int Deliveries() const { return deliveries_; }
  /// One more frame after all the trouble.
  void PushOneMore() {
    calibrator_->CloseJpegB64FrameGrabber();
    std::string text = unit::JpegB64(unit::PlainImage(90));
    const int before = deliveries_;
    EXPECT_TRUE(unit::Eventually([&] {
      calibrator_->NextFrameJpegB64(text, 0, nullptr, false);
      return deliveries_ > before;
    }));
  }

 private:
  template <typename Action>
  void Repeat(Action action) {
    for (int round = 0; Clock::now() < end_; ++round) {
      action(round);
      std::this_thread::yield();
    }
  }
  Calibrator::FrameListener Counting(int round) {
    return [this, round](const std::vector<unsigned char>& jpeg, const std::string& status) {
      EXPECT_EQ(nlohmann::json::parse(status).at("c"), "success");
      EXPECT_TRUE(jpeg.empty() || jpeg[0] == 0xFF);
      ++deliveries_;
      if (round % 3 == 0) calibrator_->SetFrameListener(Counting(1));
      if (round % 7 == 0) calibrator_->CloseRGBFrameGrabber();
      if (round % 11 == 0) throw std::runtime_error("not today");
    };
  }

  const Clock::time_point end_ = Clock::now() + DURATION;
  std::atomic<int> deliveries_{0};
  std::unique_ptr<Calibrator> calibrator_ = unit::MakeCalibrator();  // last: it ends its threads first
};

TEST(DeliveryConcurrency, KeepsDeliveringWhileAllChanges) {
  const unit::ScopedLogLevel silent(0);
  unit::Rendered();
  Traffic traffic;
  unit::ThreadGroup threadGroup;
  for (int i = 0; i < 2; ++i) {
    threadGroup.Add([&] { traffic.PushJpegs(); });
    threadGroup.Add([&] { traffic.PushImages(); });
  }
  threadGroup.Add([&] { traffic.Read(); });
  threadGroup.Add([&] { traffic.Collect(); });
  threadGroup.Add([&] { traffic.ChangeListeners(); });
  threadGroup.Add([&] { traffic.OpenAndClose(); });
  threadGroup.RunToTheEnd();
  EXPECT_GT(traffic.Deliveries(), 0);
  traffic.PushOneMore();
}

}  // namespace
