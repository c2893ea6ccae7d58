/// Who gets the processed frames, and is told of a source's end.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace velmora {

class JavaListener;

/// Gets a processed frame as JPEG (empty when there is no image) and the status answer.
using FrameListener = std::function<void(const std::vector<unsigned char>& jpeg, const std::string& status)>;

/// Is told that a source has ended.
using SourceEndListener = std::function<void()>;

/// Up to two listeners of frames, a C++ and a Java one, and one of a source's end. Callers work on a copy of
/// the registration, which keeps the listeners alive while they are called without any lock: they may
/// register others meanwhile.
class FrameListeners {
 public:
  struct Registered {
    std::shared_ptr<const FrameListener> native;
    std::shared_ptr<const JavaListener> java;
    std::shared_ptr<const SourceEndListener> sourceEnd;
  };

  Registered Current() const {
    const std::lock_guard<std::mutex> lock(lock_);
    return registered_;
  }
  void SetNative(std::shared_ptr<const FrameListener> listener) {
    const std::lock_guard<std::mutex> lock(lock_);
    registered_.native.swap(listener);
  }
  void SetJava(std::shared_ptr<const JavaListener> listener) {
    const std::lock_guard<std::mutex> lock(lock_);
    registered_.java.swap(listener);
  }

  void SetSourceEnd(std::shared_ptr<const SourceEndListener> listener) {
    const std::lock_guard<std::mutex> lock(lock_);
    registered_.sourceEnd.swap(listener);
  }

 private:
  mutable std::mutex lock_;
  Registered registered_;
};

}  // namespace velmora
