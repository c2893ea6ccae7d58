/// Who gets the processed frames.
#pragma once

#include <memory>
#include <mutex>

#include "Calibrator.h"

class JavaListener;

/// Up to two listeners, a C++ and a Java one. Callers work on a copy of the registration, which keeps the
/// listeners alive while they are called without any lock: they may register others meanwhile.
class FrameListeners {
 public:
  struct Registered {
    std::shared_ptr<const Calibrator::FrameListener> native;
    std::shared_ptr<const JavaListener> java;
  };

  Registered Current() const {
    const std::lock_guard<std::mutex> lock(lock_);
    return registered_;
  }
  void SetNative(std::shared_ptr<const Calibrator::FrameListener> listener) {
    const std::lock_guard<std::mutex> lock(lock_);
    registered_.native.swap(listener);
  }
  void SetJava(std::shared_ptr<const JavaListener> listener) {
    const std::lock_guard<std::mutex> lock(lock_);
    registered_.java.swap(listener);
  }

 private:
  mutable std::mutex lock_;
  Registered registered_;
};
