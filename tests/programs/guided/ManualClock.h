/// A clock that a test sets.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

namespace guided_test {

/// Read by any thread. Copies show the same time.
class ManualClock {
 public:
  std::chrono::steady_clock::time_point operator()() const {
    return std::chrono::steady_clock::time_point(std::chrono::milliseconds(milliseconds_->load()));
  }
  void Advance(std::chrono::milliseconds time) { *milliseconds_ += time.count(); }

 private:
  std::shared_ptr<std::atomic<std::chrono::milliseconds::rep>> milliseconds_ =
      std::make_shared<std::atomic<std::chrono::milliseconds::rep>>(1000000);
};

}  // namespace guided_test
