/// Who gets the processed frames, and is told of a source's end.
#pragma once

#include <memory>
#include <mutex>

#include "Calibrator.h"

namespace velmora {

class JavaListener;

/// Up to two listeners of frames, a C++ and a Java one, and one of a source's end. Callers work on a copy of
/// the registration, which keeps the listeners alive while they are called without any lock: they may
/// register others meanwhile.
class FrameListeners {
 public:
  struct Registered {
    std::shared_ptr<const Calibrator::FrameListener> native;
    std::shared_ptr<const JavaListener> java;
    std::shared_ptr<const Calibrator::SourceEndListener> sourceEnd;
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

  void SetSourceEnd(std::shared_ptr<const Calibrator::SourceEndListener> listener) {
    const std::lock_guard<std::mutex> lock(lock_);
    registered_.sourceEnd.swap(listener);
  }

 private:
  mutable std::mutex lock_;
  Registered registered_;
};

}  // namespace velmora
