/// A reader over two fake sources.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

#include "capture/CaptureReader.h"
#include "capture/FakeSource.h"
#include "unit/Scopes.h"

namespace unit {

using namespace velmora;

/// A reader whose first source is `left` and whose second is `right`. What it processes can be waited for.
class ReaderFixture : public testing::Test {
 protected:
  std::unique_ptr<CaptureReader> MakeReader() {
    auto made = std::make_unique<CaptureReader>(
        [this] { reader_->Read([this](CapturedViews& views) { Keep(views); }, [this] { ++ends; }); },
        [this, sources = 0]() mutable -> std::unique_ptr<FrameSource> {
          return std::make_unique<FakeSource>(sources++ == 0 ? left : right);
        });
    reader_ = made.get();
    return made;
  }

  /// Frames of one value and size, over and over.
  static std::function<cv::Mat()> Frames(const cv::Size& size, int value = 1) {
    return [size, value] { return cv::Mat(size, CV_8UC3, cv::Scalar::all(value)); };
  }

  static FrameFormat Vga() { return {640, 480, 30}; }

  bool OpenCamera(int index = 0, int splitMode = 0) { return reader->OpenCamera(index, Vga(), splitMode); }

  /// What was processed last; empty when nothing arrives.
  CapturedViews NextViews() {
    const int before = processed;
    if (!Eventually([&] { return processed > before; })) return {};
    const std::lock_guard<std::mutex> lock(lock_);
    return CopyOf(last_);
  }

  /// Counts what is processed; tests may do more, on the reader's thread.
  std::function<void(CapturedViews&)> onViews = [](CapturedViews&) {};
  std::atomic<int> processed{0};
  std::atomic<int> ends{0};  ///< of sources, as they were told

  CaptureReader* reader_ = nullptr;  ///< stays while `reader` is being reset
  std::mutex lock_;                  ///< guards last_
  CapturedViews last_;

  const std::shared_ptr<FakeDevice> left = std::make_shared<FakeDevice>();
  const std::shared_ptr<FakeDevice> right = std::make_shared<FakeDevice>();
  std::unique_ptr<CaptureReader> reader = MakeReader();

  const CloseMessages words = {"waiting", "releasing", "closed", "not opened"};

 private:
  /// The thread sanitizer does not see how pictures that two threads share are counted.
  static CapturedViews CopyOf(const CapturedViews& views) {
    return {views.frame.clone(), views.right.clone(), views.pair};
  }

  void Keep(CapturedViews& views) {
    {
      const std::lock_guard<std::mutex> lock(lock_);
      last_ = CopyOf(views);
    }
    ++processed;
    onViews(views);
  }
};

}  // namespace unit
