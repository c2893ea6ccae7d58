/// Sources of frames that do as they are told, for tests of the reader.
#pragma once

#include <algorithm>
#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <opencv2/core.hpp>
#include <opencv2/videoio.hpp>
#include <string>
#include <vector>

#include "capture/FrameSource.h"

namespace unit {

using namespace velmora;

/// What a fake source does, and what was done to it. Tests keep it while the reader owns the source.
struct FakeDevice {
  /// To be set before the source is opened.
  std::function<bool(const std::string& address)> opens = [](const std::string&) { return true; };
  /// Called on the reader's thread; an empty frame is one that was not delivered.
  std::function<cv::Mat()> deliver = [] { return cv::Mat(); };
  /// The size reported in place of the one asked for.
  std::map<int, double> reported;

  std::atomic<bool> opened{false};
  std::atomic<int> grabs{0};
  std::atomic<int> sources{0};  ///< how many there are of it

  void Note(const std::string& call) {
    const std::lock_guard<std::mutex> lock(lock_);
    calls_.push_back(call);
  }
  /// Every call but grab, retrieve and what only asks.
  std::vector<std::string> Calls() const {
    const std::lock_guard<std::mutex> lock(lock_);
    return calls_;
  }
  bool Called(const std::string& call) const {
    const auto calls = Calls();
    return std::find(calls.begin(), calls.end(), call) != calls.end();
  }

 private:
  mutable std::mutex lock_;
  std::vector<std::string> calls_;
};

class FakeSource final : public FrameSource {
 public:
  explicit FakeSource(std::shared_ptr<FakeDevice> device) : device_(std::move(device)) { ++device_->sources; }
  ~FakeSource() override { --device_->sources; }
  FakeSource(const FakeSource&) = delete;
  FakeSource& operator=(const FakeSource&) = delete;

  bool Open(int device) override { return Open("device " + std::to_string(device), 0); }

  bool Open(const std::string& address, int backEnd) override {
    device_->Note("open " + address + (backEnd == 0 ? "" : " with " + std::to_string(backEnd)));
    return device_->opened = device_->opens(address);
  }

  bool IsOpened() const override { return device_->opened; }

  void Set(int property, double value) override {
    device_->Note("set " + NameOf(property) + " " + std::to_string(static_cast<int>(value)));
    asked_[property] = value;
  }

  double Get(int property) const override {
    device_->Note("get " + NameOf(property));
    const std::map<int, double>& reported = device_->reported;
    for (const auto* values : {&reported, &asked_}) {
      const auto value = values->find(property);
      if (value != values->end()) return value->second;
    }
    return 0.0;
  }

  bool Grab() override {
    ++device_->grabs;
    grabbed_ = device_->deliver();
    return !grabbed_.empty();
  }

  bool Retrieve(cv::Mat& frame) override {
    frame = grabbed_;
    return !frame.empty();
  }

  void Release() override {
    device_->Note("release");
    device_->opened = false;
  }

 private:
  static std::string NameOf(int property) {
    switch (property) {
      case cv::CAP_PROP_FOURCC:
        return "coding";
      case cv::CAP_PROP_FRAME_WIDTH:
        return "width";
      case cv::CAP_PROP_FRAME_HEIGHT:
        return "height";
      case cv::CAP_PROP_FPS:
        return "rate";
      case cv::CAP_PROP_POS_FRAMES:
        return "position";
      default:
        return std::to_string(property);
    }
  }

  const std::shared_ptr<FakeDevice> device_;
  std::map<int, double> asked_;
  cv::Mat grabbed_;
};

/// Motion JPEG's four letters as a number.
inline std::string MotionJpeg() {
  return std::to_string(cv::VideoWriter::fourcc('M', 'J', 'P', 'G'));
}

}  // namespace unit
